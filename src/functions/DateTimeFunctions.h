#pragma once

#include <span>

#include "functions/BuiltInFunctions.h"

struct FunctionRow;

/// Builds dates and times from their parts and takes them apart (IEC 61131-3, table 35). An output of a SPLIT function
/// is two argument values: the value is written through the pointer that is the second, the first is not read.
class TN61131_API VMFuncDateTime final : public CVMFunc {
 public:
    static constexpr unsigned char kGroupNumber = 14;
    static constexpr const char* kGroupWord = "Date and Time";
    [[nodiscard]] static std::span<const FunctionRow> GetTable() noexcept;

    CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override;
    [[nodiscard]] const char* GetFunctionName(unsigned char id) const override;
};
