#pragma once

#include <span>

#include "functions/BuiltInFunctions.h"

struct FunctionRow;

/// Selection functions (IEC 61131-3, table 32). Comparing promotes, so the chosen value can have the type of another
/// argument.
class TN61131_API CVMFuncSelection final : public CVMFunc {
 public:
    static constexpr unsigned char kGroupNumber = 5;
    static constexpr const char* kGroupWord = "Selection";
    [[nodiscard]] static std::span<const FunctionRow> GetTable() noexcept;

    CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override;
    [[nodiscard]] const char* GetFunctionName(unsigned char id) const override;
};
