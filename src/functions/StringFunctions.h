#pragma once

#include <span>

#include "functions/BuiltInFunctions.h"

struct FunctionRow;

/// String functions (IEC 61131-3, table 34) on STRING and WSTRING, UPPER and LOWER on CHAR and WCHAR too. The type of
/// the first argument chooses the form; further text arguments are converted to it. A failed call leaves the result
/// alone.
class TN61131_API CVMFuncString final : public CVMFunc {
 public:
    static constexpr unsigned char kGroupNumber = 7;
    static constexpr const char* kGroupWord = "String";
    [[nodiscard]] static std::span<const FunctionRow> GetTable() noexcept;

    CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override;
    [[nodiscard]] const char* GetFunctionName(unsigned char id) const override;
};
