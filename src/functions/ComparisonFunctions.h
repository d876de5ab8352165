#pragma once

#include <span>

#include "functions/BuiltInFunctions.h"

struct FunctionRow;

/// Comparison functions (IEC 61131-3, table 33), chained: TRUE when every argument and the next are in the relation.
/// Fewer than two arguments give TRUE.
class TN61131_API CVMFuncComparison final : public CVMFunc {
 public:
    static constexpr unsigned char kGroupNumber = 6;
    static constexpr const char* kGroupWord = "Comparison";
    [[nodiscard]] static std::span<const FunctionRow> GetTable() noexcept;

    CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override;
    [[nodiscard]] const char* GetFunctionName(unsigned char id) const override;
};
