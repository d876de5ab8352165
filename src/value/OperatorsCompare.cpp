// Comparison.
#include "value/OperatorRules.h"
#include "value/PayloadTypes.h"
#include "value/StringOrder.h"

using tn61131::CompareStrings;
using tn61131::PayloadTag;
using tn61131::WithScalar;
using Order = CValue::Order;

namespace {

/// A NaN on either side is found less.
template <typename T>
Order OrderOf(T left, T right) noexcept {
    if (left == right) return Order::Equal;
    return left > right ? Order::Greater : Order::Less;
}

Order OrderOfSign(int comparison) noexcept {
    return OrderOf(comparison, 0);
}

/// Two numbers of one type; Failed for everything else.
[[gnu::always_inline]] inline Order OrderOfScalars(const CValue& left, const CValue& right) noexcept {
    auto order = Order::Failed;
    WithScalar(left.GetType(),
               [&]<typename T>(PayloadTag<T>) { order = OrderOf(left.GetPayload<T>(), right.GetPayload<T>()); });
    return order;
}

/// Two operands of one type; Failed for types that have no comparison.
Order OrderOfSameType(const CValue& left, const CValue& right) noexcept {
    switch (left.GetType()) {
        case ElementaryType::String: return OrderOfSign(CompareStrings(left.GetUtf8String(), right.GetUtf8String()));
        case ElementaryType::WString: return OrderOfSign(CompareStrings(left.GetUtf16String(), right.GetUtf16String()));
        case ElementaryType::Pointer: {
            const bool isSame = left.GetPayload<PointerValue>() == right.GetPayload<PointerValue>();
            return isSame ? Order::Equal : Order::Unordered;
        }
        default: return OrderOfScalars(left, right);
    }
}

/// `Test` says TRUE or FALSE for an order.
template <typename Test>
[[gnu::noinline]] bool CompareAny(CErrorLog& log, const ErrorLocation& location, CValue& left, CValue& right,
                                  Test test) {
    if (tn61131::ApplyUndefinedRule(left, right)) return true;
    const Order order = left.CompareValue(log, location, right);
    if (order == Order::Failed) return false;
    left.SetBool(test(order));
    return true;
}

/// The common course of the comparison operators; two numbers of one type are its fast path.
template <typename Test>
bool Compare(CErrorLog& log, const ErrorLocation& location, CValue& left, CValue& right, Test test) {
    const Order order = left.GetType() == right.GetType() ? OrderOfScalars(left, right) : Order::Failed;
    if (order == Order::Failed) return CompareAny(log, location, left, right, test);
    left.SetBool(test(order));
    return true;
}

}  // namespace

Order CValue::CompareValue(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    if (!PromoteTypes(log, location, right)) return Order::Failed;
    const Order order = OrderOfSameType(*this, right);
    if (order == Order::Failed) {
        (void)tn61131::Fail<Message::ComparisonNotSupported>(log, location, GetTypeName(false));
    }
    return order;
}

// LT, LE and NE are the negations of GE, GT and EQ: unequal pointers, which have no order, are both GE and LE.

bool CValue::EQ(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    return Compare(log, location, *this, right, [](Order order) { return order == Order::Equal; });
}

bool CValue::NE(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    return Compare(log, location, *this, right, [](Order order) { return order != Order::Equal; });
}

bool CValue::GT(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    return Compare(log, location, *this, right, [](Order order) { return order == Order::Greater; });
}

bool CValue::GE(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    return Compare(log, location, *this, right, [](Order order) { return order != Order::Less; });
}

bool CValue::LT(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    return Compare(log, location, *this, right, [](Order order) { return order == Order::Less; });
}

bool CValue::LE(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    return Compare(log, location, *this, right, [](Order order) { return order != Order::Greater; });
}
