#pragma once

#include <span>

#include "functions/BuiltInFunctions.h"

struct FunctionRow;

/// Shifts and rotations (IEC 61131-3, table 30). The ids are the codes of CValue::ShiftOperation(), which reports those
/// that it does not know.
class TN61131_API CVMFuncBitstring final : public CVMFunc {
 public:
    static constexpr unsigned char kGroupNumber = 3;
    static constexpr const char* kGroupWord = "Bitstring";
    [[nodiscard]] static std::span<const FunctionRow> GetTable() noexcept;

    CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override;
    [[nodiscard]] const char* GetFunctionName(unsigned char id) const override;
};
