#pragma once

#include <span>

#include "functions/BuiltInFunctions.h"

struct FunctionRow;

/// Binary-coded decimal bit strings to signed integers and back (IEC 61131-3, table 22). Arguments behind the first are
/// ignored.
class TN61131_API CVMFuncTypeConv final : public CVMFunc {
 public:
    static constexpr unsigned char kGroupNumber = 8;
    static constexpr const char* kGroupWord = "Conversion";
    [[nodiscard]] static std::span<const FunctionRow> GetTable() noexcept;

    CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override;
    [[nodiscard]] const char* GetFunctionName(unsigned char id) const override;
};
