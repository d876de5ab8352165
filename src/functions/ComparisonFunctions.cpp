#include "functions/ComparisonFunctions.h"

#include "functions/FunctionTable.h"
#include "value/Value.h"

namespace {

using Order = CValue::Order;

// GE, LE and NE are the opposites of LT, GT and EQ, so that values without an order are all three.
enum class Relation : std::uint8_t { Is, IsNot };

/// Every pair is compared, also behind one that is out of relation: values that cannot be compared always fail the
/// call.
template <Relation kRelation, Order kOrder>
CallStatus CompareChain(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                        CValue* arguments, CValue& result) {
    bool holds = true;
    for (unsigned int i = 1; i < argumentCount; ++i) {
        const Order order = arguments[i - 1].CompareValue(log, context, arguments[i]);
        if (order == Order::Failed) return CallStatus::Failed;
        holds = holds && (order == kOrder) == (kRelation == Relation::Is);
    }
    result.SetBool(holds);
    return CallStatus::Continue;
}

constexpr unsigned char kAny = FunctionRow::kAnyCount;
constexpr auto kSurplus = SurplusArguments::Ignored;

constexpr FunctionRow kRows[] = {
    {1, "GT", 2, kAny, kSurplus, "IN1, IN2, ...", "BOOL: each > the next", CompareChain<Relation::Is, Order::Greater>},
    {2, "GE", 2, kAny, kSurplus, "IN1, IN2, ...", "BOOL: each >= the next", CompareChain<Relation::IsNot, Order::Less>},
    {3, "EQ", 2, kAny, kSurplus, "IN1, IN2, ...", "BOOL: each = the next", CompareChain<Relation::Is, Order::Equal>},
    {4, "LE", 2, kAny, kSurplus, "IN1, IN2, ...", "BOOL: each <= the next",
     CompareChain<Relation::IsNot, Order::Greater>},
    {5, "LT", 2, kAny, kSurplus, "IN1, IN2, ...", "BOOL: each < the next", CompareChain<Relation::Is, Order::Less>},
    {6, "NE", 2, kAny, kSurplus, "IN1, IN2, ...", "BOOL: each <> the next",
     CompareChain<Relation::IsNot, Order::Equal>},
};
static_assert(HasConsecutiveIds(kRows));

/// An id that the group does not have is found out only when the first pair has been compared.
CallStatus RefuseUnknownFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                                 CValue* arguments, CValue& result) {
    if (argumentCount < 2) {
        result.SetBool(true);
        return CallStatus::Continue;
    }
    if (arguments[0].CompareValue(log, context, arguments[1]) == Order::Failed) return CallStatus::Failed;
    CVMFunc::LogInvalidFunctionCode(log, context, CVMFuncComparison::kGroupWord, context.GetFunctionId());
    return CallStatus::Invalid;
}

}  // namespace

std::span<const FunctionRow> CVMFuncComparison::GetTable() noexcept {
    return kRows;
}

CallStatus CVMFuncComparison::ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context,
                                              unsigned char argumentCount, CValue* arguments, CValue& result) {
    const FunctionRow* row = FindFunction(kRows, context.GetFunctionId());
    if (row == nullptr) return RefuseUnknownFunction(log, context, argumentCount, arguments, result);
    // No count is wrong at run time: a chain without a pair holds.
    return row->body(log, context, argumentCount, arguments, result);
}

const char* CVMFuncComparison::GetFunctionName(unsigned char id) const {
    return FindFunctionName(kRows, id);
}
