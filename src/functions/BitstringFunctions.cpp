#include "functions/BitstringFunctions.h"

#include "functions/FunctionTable.h"
#include "value/Value.h"

namespace {

/// All four, and the ids that are none: the operator knows which.
CallStatus Shift(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/, CValue* arguments,
                 CValue& result) {
    result = arguments[0];
    context.SetArgumentIndex(2);
    int count = 0;
    if (!arguments[1].GetIntegerValue(log, context, count)) return CallStatus::Failed;
    context.SetArgumentIndex(1);
    return StatusOf(result.ShiftOperation(log, context, context.GetFunctionId(), count));
}

constexpr auto kRefused = SurplusArguments::Refused;

constexpr FunctionRow kRows[] = {
    {1, "SHL", 2, 2, kRefused, "IN, N", "IN shifted left by N bits, zeros enter", Shift},
    {2, "SHR", 2, 2, kRefused, "IN, N", "IN shifted right by N bits, zeros enter", Shift},
    {3, "ROR", 2, 2, kRefused, "IN, N", "IN rotated right by N bits", Shift},
    {4, "ROL", 2, 2, kRefused, "IN, N", "IN rotated left by N bits", Shift},
};
static_assert(HasConsecutiveIds(kRows));

}  // namespace

std::span<const FunctionRow> CVMFuncBitstring::GetTable() noexcept {
    return kRows;
}

CallStatus CVMFuncBitstring::ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context,
                                             unsigned char argumentCount, CValue* arguments, CValue& result) {
    // All rows count alike, so the first one stands for an id that has none.
    return CallFunction(kRows[0], log, context, argumentCount, arguments, result);
}

const char* CVMFuncBitstring::GetFunctionName(unsigned char id) const {
    return FindFunctionName(kRows, id);
}
