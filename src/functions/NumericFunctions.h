#pragma once

#include <span>

#include "functions/BuiltInFunctions.h"

struct FunctionRow;

/// Functions of one number (IEC 61131-3, table 28), ATAN2 and decimal rounding. REAL is computed in single precision,
/// everything else as LREAL; domain errors give NaN or an infinity and are not reported.
class TN61131_API CVMFuncNumeric final : public CVMFunc {
 public:
    static constexpr unsigned char kGroupNumber = 1;
    static constexpr const char* kGroupWord = "Numeric";
    [[nodiscard]] static std::span<const FunctionRow> GetTable() noexcept;

    CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override;
    [[nodiscard]] const char* GetFunctionName(unsigned char id) const override;
};
