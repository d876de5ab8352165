#include <cmath>
#include <compare>

#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Evaluator.h"
#include "platform/jsonata/NumberText.h"
#include "platform/jsonata/TextFunctions.h"

namespace tn61131::jsonata {

namespace {

constexpr double kMaxRange = 1e7;

bool IsWhole(const Value& value) noexcept {
    return value.IsNumber() && std::isfinite(value.GetNumber()) && std::trunc(value.GetNumber()) == value.GetNumber();
}

// Division by zero gives an infinity or NaN, which any further calculation refuses.
double Divide(double dividend, double divisor) noexcept {
    if (divisor != 0) return dividend / divisor;
    if (dividend == 0 || std::isnan(dividend)) return NAN;
    return std::signbit(dividend) == std::signbit(divisor) ? HUGE_VAL : -HUGE_VAL;
}

// A number that can be calculated with.
void CheckFinite(const Value& value) {
    if (value.IsNumber() && !std::isfinite(value.GetNumber())) Throw("D1001", PrintNumber(value.GetNumber()));
}

}  // namespace

Value Evaluator::EvaluateBinary(const Expr& expr, const Value& input, FrameNode* frame) {
    if (expr.operation == Operation::Apply) return EvaluateApplication(expr, input, frame);
    const Value left = Evaluate(*expr.children[0], input, frame);
    const auto right = [&] { return Evaluate(*expr.children[1], input, frame); };
    switch (expr.operation) {
        case Operation::Add:
        case Operation::Subtract:
        case Operation::Multiply:
        case Operation::Divide:
        case Operation::Modulo: return EvaluateArithmetic(expr, left, right());
        case Operation::Equal:
        case Operation::NotEqual: {
            const Value other = right();
            if (left.IsUndefined() || other.IsUndefined()) return Value(false);
            return Value(Equals(left, other, *this) == (expr.operation == Operation::Equal));
        }
        case Operation::Less:
        case Operation::LessEqual:
        case Operation::Greater:
        case Operation::GreaterEqual: return EvaluateComparison(expr, left, right());
        case Operation::Concatenate: return EvaluateConcatenation(left, right());
        case Operation::And: return Value(AsBoolean(left, *this) && AsBoolean(right(), *this));
        case Operation::Or: return Value(AsBoolean(left, *this) || AsBoolean(right(), *this));
        case Operation::In: return EvaluateInclusion(left, right());
        case Operation::Range: return EvaluateRange(left, right());
        case Operation::Default: return AsBoolean(left, *this) ? left : right();
        case Operation::Coalesce: return left.IsUndefined() ? right() : left;
        case Operation::Apply: break;
    }
    return {};
}

Value Evaluator::EvaluateArithmetic(const Expr& expr, const Value& left, const Value& right) {
    CheckFinite(left);
    CheckFinite(right);
    if (!left.IsUndefined() && !left.IsNumber()) Throw("T2001", SignOf(expr.operation));
    if (!right.IsUndefined() && !right.IsNumber()) Throw("T2002", SignOf(expr.operation));
    if (left.IsUndefined() || right.IsUndefined()) return {};
    const double a = left.GetNumber();
    const double b = right.GetNumber();
    switch (expr.operation) {
        case Operation::Add: return Value(a + b);
        case Operation::Subtract: return Value(a - b);
        case Operation::Multiply: return Value(a * b);
        case Operation::Divide: return Value(Divide(a, b));
        default: return Value(std::fmod(a, b));
    }
}

Value Evaluator::EvaluateComparison(const Expr& expr, const Value& left, const Value& right) {
    const auto isComparable = [](const Value& value) {
        return value.IsUndefined() || value.IsString() || value.IsNumber();
    };
    if (!isComparable(left) || !isComparable(right)) Throw("T2010", SignOf(expr.operation));
    if (left.IsUndefined() || right.IsUndefined()) return {};
    if (left.IsString() != right.IsString()) {
        Throw("T2009", TextOf(left, *this), TextOf(right, *this));
    }
    const std::partial_ordering order = left.IsString()
                                            ? std::partial_ordering(CompareTexts(left.GetText(), right.GetText()))
                                            : left.GetNumber() <=> right.GetNumber();
    switch (expr.operation) {
        case Operation::Less: return Value(std::is_lt(order));
        case Operation::LessEqual: return Value(std::is_lteq(order));
        case Operation::Greater: return Value(std::is_gt(order));
        default: return Value(std::is_gteq(order));
    }
}

Value Evaluator::EvaluateConcatenation(const Value& left, const Value& right) {
    std::string text = left.IsUndefined() ? std::string() : TextOf(left, *this);
    if (!right.IsUndefined()) {
        if (right.IsString()) heap_.CheckText(static_cast<double>(text.size() + right.GetText().size()));
        text += TextOf(right, *this);
    }
    return MakeText(std::move(text));
}

Value Evaluator::EvaluateInclusion(const Value& left, const Value& right) {
    if (left.IsUndefined() || right.IsUndefined()) return Value(false);
    const auto isSame = [&](const Value& element) {
        const bool isSimple = !left.IsArray() && !left.IsObject();
        return isSimple && Equals(left, element, *this);
    };
    if (!right.IsArray()) return Value(isSame(right));
    for (std::size_t i = 0; i < right.GetSize(); ++i) {
        Tick();
        if (isSame(right.GetElement(i))) return Value(true);
    }
    return Value(false);
}

Value Evaluator::EvaluateRange(const Value& left, const Value& right) {
    if (!left.IsUndefined() && !IsWhole(left)) Throw("T2003", TextOf(left, *this));
    if (!right.IsUndefined() && !IsWhole(right)) Throw("T2004", TextOf(right, *this));
    if (left.IsUndefined() || right.IsUndefined() || left.GetNumber() > right.GetNumber()) return {};
    const double size = right.GetNumber() - left.GetNumber() + 1;
    if (size > kMaxRange) Throw("D2014", PrintNumber(size));
    Ref<ArrayNode> range = MakeSequence();
    range->isRange = true;
    range->rangeFirst = left.GetNumber();
    range->rangeSize = static_cast<std::size_t>(size);
    return Value(std::move(range));
}

Value Evaluator::EvaluateApplication(const Expr& expr, const Value& input, FrameNode* frame) {
    const Value left = Evaluate(*expr.children[0], input, frame);
    const Expr& target = *expr.children[1];
    if (target.kind == Expr::Kind::Call) {
        // The call gets the value as its first argument; what follows the call applies to its result.
        Value value = EvaluateCall(target, input, frame, &left);
        for (const Stage& predicate : target.predicates)
            value = Filter(*predicate.predicate, value, frame);
        if (target.group != nullptr) value = Group(target.group->pairs, value, frame);
        return value;
    }
    const Value function = Evaluate(target, input, frame);
    if (!function.IsFunction()) ThrowAt(target.offset, "T2006");
    if (!left.IsFunction()) return Call(function, {left}, {&input, frame, &target});
    Ref<FunctionNode> composition = heap_.Make<FunctionNode>(FunctionNode::Kind::Composition);
    composition->target = left;
    composition->second = function;
    return Value(std::move(composition));
}

}  // namespace tn61131::jsonata
