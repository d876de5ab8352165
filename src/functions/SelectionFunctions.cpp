#include "functions/SelectionFunctions.h"

#include <algorithm>
#include <utility>

#include "functions/FunctionTable.h"
#include "value/Value.h"

namespace {

using Order = CValue::Order;

CallStatus Select(CErrorLog& /*log*/, CBuiltInFunctionContext& /*context*/, unsigned char /*argumentCount*/,
                  CValue* arguments, CValue& result) {
    result = std::move(arguments[arguments[0].IsZero() ? 1 : 2]);
    return CallStatus::Continue;
}

/// MAX and MIN: the argument that compares as kWanted with the best so far replaces it, so the first of equals stays.
template <Order kWanted>
CallStatus Extreme(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount, CValue* arguments,
                   CValue& result) {
    result = std::move(arguments[0]);
    for (unsigned int i = 1; i < argumentCount; ++i) {
        const Order order = arguments[i].CompareValue(log, context, result);
        if (order == Order::Failed) return CallStatus::Failed;
        if (order == kWanted) result = std::move(arguments[i]);
    }
    return CallStatus::Continue;
}

/// The lower limit is tried first, so it wins where the limits contradict each other.
CallStatus Limit(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/, CValue* arguments,
                 CValue& result) {
    CValue& minimum = arguments[0];
    CValue& in = arguments[1];
    CValue& maximum = arguments[2];
    result = in;
    const Order withMinimum = minimum.CompareValue(log, context, in);
    if (withMinimum == Order::Failed) return CallStatus::Failed;
    if (withMinimum == Order::Greater) {
        result = std::move(minimum);
        return CallStatus::Continue;
    }
    const Order withMaximum = maximum.CompareValue(log, context, in);
    if (withMaximum == Order::Failed) return CallStatus::Failed;
    if (withMaximum == Order::Less) result = std::move(maximum);
    return CallStatus::Continue;
}

/// A selector outside the inputs takes the nearest one.
CallStatus Multiplex(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount, CValue* arguments,
                     CValue& result) {
    long long selector = 0;
    if (!arguments[0].GetIntegerValue(log, context, selector)) return CallStatus::Failed;
    const long long last = argumentCount - 2;
    result = std::move(arguments[1 + std::clamp(selector, 0LL, last)]);
    return CallStatus::Continue;
}

constexpr unsigned char kAny = FunctionRow::kAnyCount;
constexpr auto kRefused = SurplusArguments::Refused;
constexpr auto kSurplus = SurplusArguments::Ignored;

constexpr FunctionRow kRows[] = {
    {1, "SEL", 3, 3, kRefused, "G, IN0, IN1", "IN1 when G is not zero, else IN0", Select},
    {2, "MAX", 1, kAny, kSurplus, "IN1, IN2, ...", "the greatest argument", Extreme<Order::Greater>},
    {3, "MIN", 1, kAny, kSurplus, "IN1, IN2, ...", "the least argument", Extreme<Order::Less>},
    {4, "LIMIT", 3, 3, kRefused, "MN, IN, MX", "IN, but not below MN and not above MX", Limit},
    {5, "MUX", 2, kAny, kSurplus, "K, IN0, IN1, ...", "input number K, counted from 0", Multiplex},
};
static_assert(HasConsecutiveIds(kRows));

}  // namespace

std::span<const FunctionRow> CVMFuncSelection::GetTable() noexcept {
    return kRows;
}

CallStatus CVMFuncSelection::ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context,
                                             unsigned char argumentCount, CValue* arguments, CValue& result) {
    return CallFunction(kRows, kGroupWord, log, context, argumentCount, arguments, result);
}

const char* CVMFuncSelection::GetFunctionName(unsigned char id) const {
    return FindFunctionName(kRows, id);
}
