#pragma once

#include <span>

#include "functions/BuiltInFunctions.h"

struct FunctionRow;

/// Arithmetic functions (IEC 61131-3, table 29) by the operators of CValue. After a failure the result holds what was
/// computed before it.
class TN61131_API CVMFuncArithmetic final : public CVMFunc {
 public:
    static constexpr unsigned char kGroupNumber = 2;
    static constexpr const char* kGroupWord = "Arithmetic";
    [[nodiscard]] static std::span<const FunctionRow> GetTable() noexcept;

    CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override;
    [[nodiscard]] const char* GetFunctionName(unsigned char id) const override;
};
