#include <cmath>

#include "compiler/BodyChecker.h"
#include "functions/FunctionContext.h"

// Constants: computed by the operators and functions of the machine itself.

namespace tn61131::st {

namespace {

/// Whether the exact result of an operation on numbers of an integer type is not a value of the type.
[[nodiscard]] bool Overflows(BinaryOperator op, const Type* type, std::int64_t left, std::int64_t right) noexcept {
    std::int64_t exact = 0;
    std::uint64_t exactUnsigned = 0;
    const bool isUnsigned = FamilyOf(type) != Family::Signed;
    const auto a = static_cast<std::uint64_t>(left);
    const auto b = static_cast<std::uint64_t>(right);
    bool overflows = false;
    switch (op) {
        case BinaryOperator::Add:
            overflows =
                isUnsigned ? __builtin_add_overflow(a, b, &exactUnsigned) : __builtin_add_overflow(left, right, &exact);
            break;
        case BinaryOperator::Sub:
            overflows =
                isUnsigned ? __builtin_sub_overflow(a, b, &exactUnsigned) : __builtin_sub_overflow(left, right, &exact);
            break;
        case BinaryOperator::Mul:
            overflows =
                isUnsigned ? __builtin_mul_overflow(a, b, &exactUnsigned) : __builtin_mul_overflow(left, right, &exact);
            break;
        default: return false;
    }
    if (overflows) return true;
    const int bits = GetTypeInfo(type->storage).size * 8;
    if (bits == 64) return false;
    if (isUnsigned) return exactUnsigned >> bits != 0;
    const std::int64_t limit = std::int64_t{1} << (bits - 1);
    return exact < -limit || exact >= limit;
}

}  // namespace

Expr* BodyChecker::FoldUnary(UnaryOperator op, ConstantExpr* operand, SourceRange range) {
    if (operand->untyped && op == UnaryOperator::Negate) {
        if (const std::optional<std::int64_t> value = GetInteger(operand)) {
            const ElementaryType type = operand->value->GetType();
            const bool isUnsigned = type == ElementaryType::ULInt || type == ElementaryType::LWord;
            const bool negative = !isUnsigned && *value < 0;
            const auto bits = static_cast<std::uint64_t>(*value);
            return UntypedFromInteger(!negative, negative ? 0 - bits : bits, false, range);
        }
    }
    CErrorLogToNull log;
    CValue value = *operand->value;
    if (!value.UnaryOperation(log, ErrorLocationNull::Get(), static_cast<unsigned char>(op))) return nullptr;
    return NewConstant(operand->type, std::move(value), range, operand->untyped);
}

Expr* BodyChecker::FoldUntyped(BinaryOperator op, ConstantExpr* left, ConstantExpr* right, SourceRange range) {
    const std::optional<std::int64_t> a = GetInteger(left);
    const std::optional<std::int64_t> b = GetInteger(right);
    if (!a || !b) return nullptr;
    const auto isLarge = [](const ConstantExpr& constant) {
        const ElementaryType type = constant.value->GetType();
        return type == ElementaryType::ULInt || (type == ElementaryType::LWord && GetInteger(&constant).value() < 0);
    };
    const bool isBased = FamilyOf(left->type) == Family::Bits && FamilyOf(right->type) == Family::Bits;
    const ElementaryType computed = isLarge(*left) || isLarge(*right) ? ElementaryType::ULInt : ElementaryType::LInt;
    const Type* type = Elementary(computed);
    if (Overflows(op, type, *a, *b))
        return Fail(DiagnosticCode::ValueOutOfRange, range, {SourceText(range), Text(type)});
    CErrorLogToNull log;
    CValue value(static_cast<long long>(*a), computed);
    CValue other(static_cast<long long>(*b), computed);
    if (!value.BinaryOperation(log, ErrorLocationNull::Get(), static_cast<unsigned char>(op), other)) return nullptr;
    const auto result = value.GetPayload<std::int64_t>();
    const bool negative = computed == ElementaryType::LInt && result < 0;
    const auto bits = static_cast<std::uint64_t>(result);
    return UntypedFromInteger(negative, negative ? 0 - bits : bits, isBased, range);
}

Expr* BodyChecker::FoldBinary(BinaryOperator op, const Type* type, ConstantExpr* left, ConstantExpr* right,
                              SourceRange range) {
    if (op == BinaryOperator::Div && right->value->IsZero()) return Fail(DiagnosticCode::DivisionByZero, range);
    CErrorLogToNull log;
    CValue value = *left->value;
    CValue other = *right->value;
    if (!value.BinaryOperation(log, ErrorLocationNull::Get(), static_cast<unsigned char>(op), other)) return nullptr;
    if (value.GetType() != type->storage) return nullptr;
    const bool untyped = left->untyped && right->untyped && type->storage != ElementaryType::Bool;
    ConstantExpr* folded = NewConstant(type, std::move(value), range, untyped);
    const Family family = FamilyOf(type);
    if (!untyped && (IsIntegerFamily(family) || family == Family::Bits) &&
        Overflows(op, type, *GetInteger(left), *GetInteger(right))) {
        project_.diagnostics.Report(DiagnosticCode::ConstantOverflow, range, {Text(type), ValueText(*folded)});
    }
    return folded;
}

Expr* BodyChecker::FoldBuiltIn(const BuiltInSignature& signature, const Type* type, std::span<Expr*> arguments,
                               SourceRange range) {
    constexpr std::uint8_t kToStringGroup = 9;
    if (signature.group == kToStringGroup || signature.form == CallForm::Split) return nullptr;
    for (const Expr* argument : arguments) {
        if (argument->kind != ExprKind::Constant) return nullptr;
    }
    CBuiltInFunctions functions;
    CBuiltInFunctionContext context(nullptr, nullptr, functions);
    context.SetCurrentFunction(0, false, signature.group, signature.id);
    if (!functions.IsInvariant(context)) return nullptr;
    std::vector<CValue> values;
    values.reserve(arguments.size());
    for (const Expr* argument : arguments)
        values.push_back(*static_cast<const ConstantExpr*>(argument)->value);
    CErrorLogToNull log;
    CValue result;
    const CallStatus status =
        functions.Execute(log, context, static_cast<unsigned char>(values.size()), values.data(), result);
    if (status != CallStatus::Continue || result.GetType() != type->storage) return nullptr;
    return NewConstant(type, std::move(result), range);
}

}  // namespace tn61131::st
