#pragma once

#include <span>

#include "functions/BuiltInFunctions.h"

struct FunctionRow;

/// AND, OR and XOR (IEC 61131-3, table 31): bit by bit on bit strings and integers, logical on BOOL.
class TN61131_API CVMFuncBitwiseBoolean final : public CVMFunc {
 public:
    static constexpr unsigned char kGroupNumber = 4;
    static constexpr const char* kGroupWord = "Bitwise Boolean";
    [[nodiscard]] static std::span<const FunctionRow> GetTable() noexcept;

    CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override;
    [[nodiscard]] const char* GetFunctionName(unsigned char id) const override;
};
