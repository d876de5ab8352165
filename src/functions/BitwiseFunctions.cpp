#include "functions/BitwiseFunctions.h"

#include <utility>

#include "functions/FunctionTable.h"
#include "functions/OperatorFold.h"
#include "value/Value.h"

namespace {

constexpr unsigned char kAny = FunctionRow::kAnyCount;
constexpr auto kSurplus = SurplusArguments::Ignored;

constexpr FunctionRow kRows[] = {
    {1, "AND", 1, kAny, kSurplus, "IN1, IN2, ...", "the conjunction, of the highest type",
     FoldArguments<&CValue::LogicalAnd>},
    {2, "OR", 1, kAny, kSurplus, "IN1, IN2, ...", "the disjunction, of the highest type",
     FoldArguments<&CValue::LogicalOr>},
    {3, "XOR", 1, kAny, kSurplus, "IN1, IN2, ...", "exclusive or, of the highest type",
     FoldArguments<&CValue::LogicalXor>},
};
static_assert(HasConsecutiveIds(kRows));

}  // namespace

std::span<const FunctionRow> CVMFuncBitwiseBoolean::GetTable() noexcept {
    return kRows;
}

CallStatus CVMFuncBitwiseBoolean::ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context,
                                                  unsigned char argumentCount, CValue* arguments, CValue& result) {
    if (argumentCount == 0) {
        LogInvalidFunctionArgumentCount(log, context, 1);
        return CallStatus::Failed;
    }
    result = std::move(arguments[0]);
    // A single argument is the result, whatever the function.
    if (argumentCount == 1) return CallStatus::Continue;
    const FunctionRow* row = FindFunction(kRows, context.GetFunctionId());
    if (row == nullptr) {
        LogInvalidFunctionCode(log, context, kGroupWord, context.GetFunctionId());
        return CallStatus::Invalid;
    }
    return row->body(log, context, argumentCount, arguments, result);
}

const char* CVMFuncBitwiseBoolean::GetFunctionName(unsigned char id) const {
    return FindFunctionName(kRows, id);
}
