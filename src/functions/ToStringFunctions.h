#pragma once

#include <span>

#include "functions/BuiltInFunctions.h"

struct FunctionRow;

/// Values as text: quality codes, change reasons, SQL literals, and dates and numbers in the client's locale.
class TN61131_API CVMFuncToString final : public CVMFunc {
 public:
    static constexpr unsigned char kGroupNumber = 9;
    static constexpr const char* kGroupWord = "ToString";
    [[nodiscard]] static std::span<const FunctionRow> GetTable() noexcept;

    CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override;
    [[nodiscard]] const char* GetFunctionName(unsigned char id) const override;
};
