#pragma once

#include <span>

#include "functions/BuiltInFunctions.h"

struct FunctionRow;

/// The time of the scan, random bits and local time. Calls without an execution context fail without a message.
class TN61131_API CVMFuncSys final : public CVMFunc {
 public:
    static constexpr unsigned char kGroupNumber = 11;
    static constexpr const char* kGroupWord = "System";
    [[nodiscard]] static std::span<const FunctionRow> GetTable() noexcept;

    /// False for all: what they give depends on the clock, the generator or the time zone.
    [[nodiscard]] bool IsInvariant(unsigned char id) const override;
    CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override;
    [[nodiscard]] const char* GetFunctionName(unsigned char id) const override;
};
