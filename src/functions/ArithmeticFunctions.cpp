#include "functions/ArithmeticFunctions.h"

#include <utility>

#include "functions/FunctionTable.h"
#include "functions/OperatorFold.h"
#include "value/Value.h"

namespace {

// The group has copied the first argument into the result before it calls a body.

template <BinaryValueOperation kOperation>
CallStatus ApplyOnce(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                     CValue* arguments, CValue& result) {
    return StatusOf((result.*kOperation)(log, context, arguments[1]));
}

CallStatus Move(CErrorLog& /*log*/, CBuiltInFunctionContext& /*context*/, unsigned char /*argumentCount*/,
                CValue* /*arguments*/, CValue& /*result*/) {
    return CallStatus::Continue;
}

constexpr unsigned char kAny = FunctionRow::kAnyCount;
constexpr auto kSurplus = SurplusArguments::Ignored;

constexpr FunctionRow kRows[] = {
    {1, "ADD", 1, kAny, kSurplus, "IN1, IN2, ...", "the sum, of the highest type", FoldArguments<&CValue::Add>},
    {2, "SUB", 2, 2, kSurplus, "IN1, IN2", "IN1 - IN2", ApplyOnce<&CValue::Sub>},
    {3, "MUL", 1, kAny, kSurplus, "IN1, IN2, ...", "the product, of the highest type", FoldArguments<&CValue::Mul>},
    {4, "DIV", 2, 2, kSurplus, "IN1, IN2", "IN1 / IN2", ApplyOnce<&CValue::Div>},
    {5, "MOD", 2, 2, kSurplus, "IN1, IN2", "the remainder of IN1 / IN2; 0 for a divisor of 0", ApplyOnce<&CValue::Mod>},
    {6, "EXPT", 2, 2, kSurplus, "IN1, IN2", "IN1 to the power IN2: REAL or LREAL", ApplyOnce<&CValue::Pow>},
    {7, "MOVE", 1, 1, kSurplus, "IN", "IN", Move},
};
static_assert(HasConsecutiveIds(kRows));

}  // namespace

std::span<const FunctionRow> CVMFuncArithmetic::GetTable() noexcept {
    return kRows;
}

CallStatus CVMFuncArithmetic::ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context,
                                              unsigned char argumentCount, CValue* arguments, CValue& result) {
    if (argumentCount != 0) result = std::move(arguments[0]);
    return CallFunction(kRows, kGroupWord, log, context, argumentCount, arguments, result);
}

const char* CVMFuncArithmetic::GetFunctionName(unsigned char id) const {
    return FindFunctionName(kRows, id);
}
