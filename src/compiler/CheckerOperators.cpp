#include <algorithm>
#include <array>

#include "compiler/BodyChecker.h"

// Operators (IEC 61131-3, 7.3.2). The type of every operation is decided here and both operands are brought to it, so
// that the machine never promotes on its own.

namespace tn61131::st {

namespace {

struct OperatorRow {
    std::string_view text;
    BinaryOperator code;
};

/// Index = ast::BinaryOp.
constexpr std::array<OperatorRow, 17> kOperators = {{
    {"OR", BinaryOperator::Or},
    {"OR_ELSE", BinaryOperator::Or},
    {"XOR", BinaryOperator::Xor},
    {"AND", BinaryOperator::And},
    {"AND_THEN", BinaryOperator::And},
    {"=", BinaryOperator::EQ},
    {"<>", BinaryOperator::NE},
    {"<", BinaryOperator::LT},
    {">", BinaryOperator::GT},
    {"<=", BinaryOperator::LE},
    {">=", BinaryOperator::GE},
    {"+", BinaryOperator::Add},
    {"-", BinaryOperator::Sub},
    {"*", BinaryOperator::Mul},
    {"/", BinaryOperator::Div},
    {"MOD", BinaryOperator::Mod},
    {"**", BinaryOperator::Pow},
}};
static_assert(kOperators.size() == static_cast<std::size_t>(ast::BinaryOp::Power) + 1);

[[nodiscard]] const OperatorRow& RowOf(ast::BinaryOp op) noexcept {
    return kOperators[static_cast<std::size_t>(op)];
}

[[nodiscard]] bool IsComparison(ast::BinaryOp op) noexcept {
    return op >= ast::BinaryOp::Equal && op <= ast::BinaryOp::GreaterEqual;
}

[[nodiscard]] bool IsLogical(ast::BinaryOp op) noexcept {
    return op <= ast::BinaryOp::AndThen;
}

[[nodiscard]] bool IsUntyped(const Expr* expr) noexcept {
    return expr->kind == ExprKind::Constant && static_cast<const ConstantExpr*>(expr)->untyped;
}

[[nodiscard]] bool IsDateFamily(Family family) noexcept {
    return family == Family::Date || family == Family::TimeOfDay || family == Family::DateAndTime;
}

[[nodiscard]] bool IsTextFamily(Family family) noexcept {
    return family == Family::String || family == Family::WString || family == Family::Char || family == Family::WChar;
}

/// LEN and FIND count in UINT and give an integer of whatever type is wanted (see CheckRowCall).
[[nodiscard]] bool IsCount(const Expr* expr) noexcept {
    constexpr std::uint8_t kStringGroup = 7;
    if (expr->kind != ExprKind::Convert || !static_cast<const ConvertExpr*>(expr)->isImplicit) return false;
    const Expr* operand = static_cast<const ConvertExpr*>(expr)->operand;
    return operand->kind == ExprKind::CallBuiltIn &&
           static_cast<const CallBuiltInExpr*>(operand)->group == kStringGroup &&
           operand->type->storage == ElementaryType::UInt;
}

}  // namespace

Expr* BodyChecker::MakeBinary(BinaryOperator op, const Type* type, Expr* left, Expr* right, SourceRange range) {
    if (IsError(left)) return left;
    if (IsError(right)) return right;
    if (left->kind == ExprKind::Constant && right->kind == ExprKind::Constant) {
        Expr* folded = FoldBinary(op, type, static_cast<ConstantExpr*>(left), static_cast<ConstantExpr*>(right), range);
        if (folded != nullptr) return folded;
    }
    Settle(left);
    Settle(right);
    return New(BinaryExpr{{ExprKind::Binary, type, range}, op, left, right});
}

Expr* BodyChecker::RefuseOperands(std::string_view op, const Expr* left, const Expr* right, SourceRange range) {
    for (const Expr* operand : {left, right}) {
        if (FamilyOf(operand->type) == Family::Void)
            return Fail(DiagnosticCode::NoValue, operand->range, {SourceText(operand->range)});
        if (FamilyOf(operand->type) == Family::Aggregate)
            return Fail(DiagnosticCode::AggregateOperand, operand->range, {Text(operand->type)});
    }
    Diagnostic& diagnostic =
        project_.diagnostics.Report(DiagnosticCode::BinaryOperands, range, {op, Text(left->type), Text(right->type)});
    if (op == "+" && IsTextFamily(FamilyOf(left->type)) && IsTextFamily(FamilyOf(right->type)))
        diagnostic.notes.push_back({range, "CONCAT joins texts"});
    return Error(range);
}

// --- unary ---

Expr* BodyChecker::CheckUnary(const ast::UnaryExpr& unary, const Type* wanted) {
    return ApplyUnary(unary.op, Check(*unary.operand, wanted), unary.range);
}

Expr* BodyChecker::ApplyUnary(ast::UnaryOp op, Expr* operand, SourceRange range) {
    if (IsError(operand)) return operand;
    const Family family = FamilyOf(operand->type);
    const bool isNumber = IsNumberFamily(family);
    const bool isBits = family == Family::Bits || IsIntegerFamily(family);
    bool isFine = false;
    std::string_view text = "NOT";
    switch (op) {
        case ast::UnaryOp::Not: isFine = family == Family::Bool || isBits; break;
        case ast::UnaryOp::Plus:
            text = "+";
            isFine = isNumber || family == Family::Time;
            break;
        case ast::UnaryOp::Minus:
            text = "-";
            isFine = isNumber || family == Family::Time;
            break;
    }
    if (!isFine) {
        if (family == Family::Void) return Fail(DiagnosticCode::NoValue, operand->range, {SourceText(operand->range)});
        return Fail(DiagnosticCode::UnaryOperand, range, {text, Text(operand->type)});
    }
    if (op == ast::UnaryOp::Plus) {
        operand->range = range;
        return operand;
    }
    const UnaryOperator code = op == ast::UnaryOp::Not ? UnaryOperator::Not : UnaryOperator::Negate;
    const Type* type = BaseOf(operand->type);
    if (code == UnaryOperator::Negate && GetSwitches().promoteIntegers && isBits && type->size < 4 &&
        !IsUntyped(operand)) {
        type = Elementary(ElementaryType::DInt);
        operand = NewConvert(operand, type, true);
    }
    if (operand->kind == ExprKind::Constant) {
        if (Expr* folded = FoldUnary(code, static_cast<ConstantExpr*>(operand), range)) return folded;
    }
    return New(UnaryExpr{{ExprKind::Unary, type, range}, code, operand});
}

// --- numbers ---

bool BodyChecker::UnifyNumbers(std::string_view op, Expr*& left, Expr*& right, const Type* wanted, SourceRange range) {
    if (IsUntyped(left) && IsUntyped(right)) {
        const bool isReal = IsReal(left->type) || IsReal(right->type);
        if (!isReal) return true;
        const Type* lreal = Elementary(ElementaryType::LReal);
        for (Expr** side : {&left, &right}) {
            if ((*side)->type->storage == lreal->storage) continue;
            ConstantExpr* converted = FoldConvert(*static_cast<ConstantExpr*>(*side), lreal, false);
            converted->untyped = true;
            *side = converted;
        }
        return true;
    }
    if (IsUntyped(left) || IsUntyped(right)) {
        Expr*& literal = IsUntyped(left) ? left : right;
        const Expr* other = IsUntyped(left) ? right : left;
        const Type* type = BaseOf(other->type);
        if (IsReal(literal->type) && !IsReal(type)) {
            // A real number next to an integer: REAL where REAL is wanted, else LREAL.
            const bool isReal = wanted != nullptr && BaseOf(wanted)->storage == ElementaryType::Real;
            literal = CoerceUntyped(static_cast<ConstantExpr*>(literal),
                                    Elementary(isReal ? ElementaryType::Real : ElementaryType::LReal));
        } else if (IsReal(type)) {
            literal = CoerceUntyped(static_cast<ConstantExpr*>(literal), type);
        } else {
            const std::int64_t value = *GetInteger(literal);
            const auto& constant = *static_cast<const ConstantExpr*>(literal);
            const bool isUnsigned64 = constant.value->GetType() == ElementaryType::ULInt ||
                                      constant.value->GetType() == ElementaryType::LWord;
            const int bits = GetTypeInfo(type->storage).size * 8;
            const bool isSigned = FamilyOf(type) == Family::Signed;
            const bool isBitPattern = FamilyOf(literal->type) == Family::Bits;
            bool fits =
                bits == 64 ? (isUnsigned64 && value < 0 ? !isSigned : isSigned || value >= 0)
                           : !(isUnsigned64 && value < 0) && (isSigned ? value >= -(std::int64_t{1} << (bits - 1)) &&
                                                                             value < std::int64_t{1} << (bits - 1)
                                                                       : value >= 0 && value < std::int64_t{1} << bits);
            // 16#FFFF next to an INT means these bits where the dialect says so.
            if (!fits && isBitPattern && isSigned && GetSwitches().bitInteger && bits < 64 && value >= 0 &&
                value < std::int64_t{1} << bits)
                fits = true;
            if (fits) {
                CValue number;
                number.SetInteger(value, type->storage);
                literal = NewConstant(type, std::move(number), literal->range);
            } else if (FamilyOf(type) == Family::Bits && (value >= 0 || isUnsigned64)) {
                const auto magnitude = static_cast<std::uint64_t>(value);
                ElementaryType wider = ElementaryType::LWord;
                if (magnitude <= 0xFFFFFFFF) wider = ElementaryType::DWord;
                if (magnitude <= 0xFFFF) wider = ElementaryType::Word;
                literal = NewInteger(Elementary(wider), value, literal->range);
            } else if (FamilyOf(type) == Family::Bits && !GetSwitches().bitInteger) {
                Fail(DiagnosticCode::ValueOutOfRange, literal->range,
                     {NumberText(*static_cast<ConstantExpr*>(literal)), Text(type)});
                return false;
            } else if (isBitPattern) {
                // The number itself, not its bits.
                ElementaryType number = isUnsigned64 && value < 0 ? ElementaryType::ULInt : ElementaryType::LInt;
                if (value >= 0 && value <= 0x7FFFFFFF) number = ElementaryType::DInt;
                literal = NewInteger(Elementary(number), value, literal->range);
            }
            Settle(literal);
        }
        if (IsError(literal)) return false;
    }
    for (auto [count, other] : {std::pair{&left, right}, std::pair{&right, left}}) {
        if (IsCount(*count) && IsIntegerFamily(FamilyOf(other->type)) && other->type->size >= 2 && !IsCount(other)) {
            Expr* counted = static_cast<ConvertExpr*>(*count)->operand;
            *count = NewConvert(counted, BaseOf(other->type), true);
        }
    }
    const Type* leftType = BaseOf(left->type);
    const Type* rightType = BaseOf(right->type);
    const bool mixesBits = IsBitString(leftType) != IsBitString(rightType);
    if (mixesBits && !GetSwitches().bitInteger) {
        RefuseOperands(op, left, right, range);
        return false;
    }
    const Type* common = CommonNumber(leftType, rightType);
    if (common == nullptr) {
        // Constants that are not negative are at home in both.
        const Expr* constant = left->kind == ExprKind::Constant ? left : right;
        const std::optional<std::int64_t> value = GetInteger(constant);
        const bool isHarmless = value && *value >= 0;
        if (!isHarmless &&
            !Allow(GetSwitches().narrowing, DiagnosticCode::NoCommonType, range, {Text(leftType), Text(rightType)}))
            return false;
        common = isHarmless ? BaseOf((constant == left ? right : left)->type) : Elementary(ElementaryType::LInt);
    }
    if (leftType->storage != common->storage) left = NewConvert(left, common, true);
    if (rightType->storage != common->storage) right = NewConvert(right, common, true);
    return true;
}

Expr* BodyChecker::ApplyArithmetic(ast::BinaryOp op, Expr* left, Expr* right, SourceRange range, const Type* wanted) {
    if (FamilyOf(left->type) == Family::Pointer || FamilyOf(right->type) == Family::Pointer)
        return ApplyPointerArithmetic(op, left, right, range);
    left = DropEnum(left, false);
    right = DropEnum(right, false);
    if (IsError(left)) return left;
    if (IsError(right)) return right;
    const Family leftFamily = FamilyOf(left->type);
    const Family rightFamily = FamilyOf(right->type);
    const auto isTime = [](Family family) { return family == Family::Time || IsDateFamily(family); };
    if (isTime(leftFamily) || isTime(rightFamily)) return ApplyTimeArithmetic(op, left, right, range);
    if (!IsNumberFamily(leftFamily) || !IsNumberFamily(rightFamily))
        return RefuseOperands(RowOf(op).text, left, right, range);
    if (op == ast::BinaryOp::Power) return ApplyPower(left, right, range, wanted);
    if (op == ast::BinaryOp::Modulo && (IsReal(left->type) || IsReal(right->type)))
        return RefuseOperands(RowOf(op).text, left, right, range);
    const BinaryOperator code = RowOf(op).code;
    if (!UnifyNumbers(RowOf(op).text, left, right, wanted, range)) return Error(range);
    if (right->kind == ExprKind::Constant && static_cast<ConstantExpr*>(right)->value->IsZero()) {
        if (op == ast::BinaryOp::Divide) return Fail(DiagnosticCode::DivisionByZero, right->range);
        if (op == ast::BinaryOp::Modulo)
            project_.diagnostics.Report(DiagnosticCode::DivisionByZero, Severity::Warning, right->range);
    }
    if (IsUntyped(left) && IsUntyped(right) && !IsReal(left->type)) {
        Expr* folded = FoldUntyped(code, static_cast<ConstantExpr*>(left), static_cast<ConstantExpr*>(right), range);
        if (folded != nullptr) {
            const std::optional<std::int64_t> quotient = GetInteger(folded);
            if (op == ast::BinaryOp::Divide && quotient && wanted != nullptr && IsReal(wanted) &&
                *quotient * *GetInteger(right) != *GetInteger(left)) {
                project_.diagnostics.Report(DiagnosticCode::IntegerQuotient, range, {std::to_string(*quotient)});
            }
            return folded;
        }
    }
    const Type* type = BaseOf(left->type);
    if (GetSwitches().promoteIntegers && type->size < 4 && !IsUntyped(left)) {
        ElementaryType wider = ElementaryType::UDInt;
        if (IsSigned(type)) wider = ElementaryType::DInt;
        if (IsBitString(type)) wider = ElementaryType::DWord;
        type = Elementary(wider);
        left = NewConvert(left, type, true);
        right = NewConvert(right, type, true);
    }
    return MakeBinary(code, type, left, right, range);
}

Expr* BodyChecker::ApplyPower(Expr* left, Expr* right, SourceRange range, const Type* wanted) {
    const auto isReal = [](const Expr* expr) { return BaseOf(expr->type)->storage == ElementaryType::Real; };
    const bool areIntegers = !IsReal(left->type) && !IsReal(right->type);
    const Type* lreal = Elementary(ElementaryType::LReal);
    const Type* real = Elementary(ElementaryType::Real);
    // Small exponents do not widen a REAL.
    const bool inReal =
        (isReal(left) && (isReal(right) || IsUntyped(right) || IsLossless(right->type, real))) ||
        (isReal(right) && (IsUntyped(left) || IsLossless(left->type, real))) ||
        (wanted != nullptr && BaseOf(wanted)->storage == ElementaryType::Real && IsUntyped(left) && IsUntyped(right));
    const Type* type = inReal ? real : lreal;
    const auto bring = [&](Expr* operand) {
        return operand->type->storage == type->storage ? Settle(operand) : NewConvert(operand, type, true);
    };
    const bool isUntyped = IsUntyped(left) && IsUntyped(right);
    Expr* power = MakeBinary(BinaryOperator::Pow, type, bring(left), bring(right), range);
    // Integers are wanted back where integers went in.
    if (areIntegers && wanted != nullptr && IsInteger(wanted)) return NewConvert(power, BaseOf(wanted), false);
    if (isUntyped && !areIntegers && power->kind == ExprKind::Constant && type == lreal)
        static_cast<ConstantExpr*>(power)->untyped = true;
    return power;
}

Expr* BodyChecker::ApplyTimeArithmetic(ast::BinaryOp op, Expr* left, Expr* right, SourceRange range) {
    const Family leftFamily = FamilyOf(left->type);
    const Family rightFamily = FamilyOf(right->type);
    const Type* time = Elementary(ElementaryType::Time);
    const BinaryOperator code = RowOf(op).code;
    const bool isSum = op == ast::BinaryOp::Add;
    const bool isDifference = op == ast::BinaryOp::Subtract;
    if (isSum || isDifference) {
        if (rightFamily == Family::Time && (leftFamily == Family::Time || IsDateFamily(leftFamily)))
            return MakeBinary(code, BaseOf(left->type), left, right, range);
        if (isSum && leftFamily == Family::Date && rightFamily == Family::TimeOfDay)
            return MakeBinary(code, Elementary(ElementaryType::DateAndTime), left, right, range);
        if (isDifference && leftFamily == rightFamily && IsDateFamily(leftFamily))
            return MakeBinary(code, time, left, right, range);
        return RefuseOperands(RowOf(op).text, left, right, range);
    }
    const bool isProduct = op == ast::BinaryOp::Multiply;
    if (isProduct && rightFamily == Family::Time && IsNumberFamily(leftFamily)) {
        std::swap(left, right);
    } else if (leftFamily != Family::Time || !IsNumberFamily(rightFamily) ||
               (!isProduct && op != ast::BinaryOp::Divide)) {
        return RefuseOperands(RowOf(op).text, left, right, range);
    }
    if (IsBitString(right->type) && !IsUntyped(right) && !GetSwitches().bitInteger)
        return RefuseOperands(RowOf(op).text, left, right, range);
    if (!isProduct && right->kind == ExprKind::Constant && static_cast<ConstantExpr*>(right)->value->IsZero())
        return Fail(DiagnosticCode::DivisionByZero, right->range);
    Settle(right);
    // A whole number scales the count of milliseconds; a real one is taken as it is.
    if (!IsReal(right->type)) right = NewConvert(right, time, true);
    return MakeBinary(code, time, left, right, range);
}

Expr* BodyChecker::ApplyPointerArithmetic(ast::BinaryOp op, Expr* left, Expr* right, SourceRange range) {
    const bool isSum = op == ast::BinaryOp::Add;
    if (isSum && FamilyOf(right->type) == Family::Pointer) std::swap(left, right);
    const Family rightFamily = FamilyOf(right->type);
    if (op == ast::BinaryOp::Subtract && rightFamily == Family::Pointer && FamilyOf(left->type) == Family::Pointer)
        return Fail(DiagnosticCode::PointerDifference, range);
    const bool isCount = IsIntegerFamily(rightFamily) || rightFamily == Family::Bits;
    if ((!isSum && op != ast::BinaryOp::Subtract) || FamilyOf(left->type) != Family::Pointer || !isCount)
        return RefuseOperands(RowOf(op).text, left, right, range);
    // The machine adds in 32 bits, so that negative distances work out.
    const Type* dint = Elementary(ElementaryType::DInt);
    Settle(right);
    if (right->type->storage != dint->storage) right = NewConvert(right, dint, true);
    if (!isSum) right = ApplyUnary(ast::UnaryOp::Minus, right, right->range);
    if (IsError(right)) return right;
    return New(AddPointerExpr{{ExprKind::AddPointer, left->type, range}, left, right});
}

// --- comparison ---

void BodyChecker::WarnOfComparison(ast::BinaryOp op, const Expr* left, const Expr* right, SourceRange range) {
    const bool isEquality = op == ast::BinaryOp::Equal || op == ast::BinaryOp::NotEqual;
    const bool hasConstant = left->kind == ExprKind::Constant || right->kind == ExprKind::Constant;
    if (isEquality && IsReal(left->type) && !hasConstant) {
        project_.diagnostics.Report(DiagnosticCode::RealEquality, range, {RowOf(op).text, Text(left->type)});
        return;
    }
    const auto isZero = [](const Expr* expr) {
        return expr->kind == ExprKind::Constant && static_cast<const ConstantExpr*>(expr)->value->IsZero();
    };
    const auto isUnsigned = [](const Expr* expr) {
        return expr->kind != ExprKind::Constant && (IsUnsigned(expr->type) || IsBitString(expr->type));
    };
    std::string_view always;
    if (isUnsigned(left) && isZero(right)) {
        if (op == ast::BinaryOp::GreaterEqual) always = "TRUE";
        if (op == ast::BinaryOp::Less) always = "FALSE";
    }
    if (isUnsigned(right) && isZero(left)) {
        if (op == ast::BinaryOp::LessEqual) always = "TRUE";
        if (op == ast::BinaryOp::Greater) always = "FALSE";
    }
    if (!always.empty()) project_.diagnostics.Report(DiagnosticCode::ConstantComparison, range, {always});
}

Expr* BodyChecker::ApplyComparison(ast::BinaryOp op, Expr* left, Expr* right, SourceRange range) {
    const std::string_view text = RowOf(op).text;
    const BinaryOperator code = RowOf(op).code;
    const Type* boolean = project_.types.Bool();
    const bool isEquality = op == ast::BinaryOp::Equal || op == ast::BinaryOp::NotEqual;
    Family leftFamily = FamilyOf(left->type);
    Family rightFamily = FamilyOf(right->type);
    if (leftFamily == Family::Enum && rightFamily == Family::Enum) {
        if (BaseOf(left->type) != BaseOf(right->type))
            return Fail(DiagnosticCode::EnumerationMix, range, {Text(left->type), Text(right->type)});
        return MakeBinary(code, boolean, left, right, range);
    }
    left = DropEnum(left, false);
    right = DropEnum(right, false);
    if (IsError(left)) return left;
    if (IsError(right)) return right;
    leftFamily = FamilyOf(left->type);
    rightFamily = FamilyOf(right->type);
    const auto isAddress = [](Family family) { return family == Family::Pointer || family == Family::Null; };
    if (isAddress(leftFamily) || isAddress(rightFamily)) {
        if (!isEquality) return Fail(DiagnosticCode::PointerOrder, range);
        const Type* type = leftFamily == Family::Pointer ? left->type : right->type;
        if (!isAddress(leftFamily) && !IsUntyped(left)) return RefuseOperands(text, left, right, range);
        if (!isAddress(rightFamily) && !IsUntyped(right)) return RefuseOperands(text, left, right, range);
        left = Coerce(left, type);
        right = Coerce(right, type);
        if (IsError(left)) return left;
        if (IsError(right)) return right;
        return New(BinaryExpr{{ExprKind::Binary, boolean, range}, code, left, right});
    }
    if (IsNumberFamily(leftFamily) && IsNumberFamily(rightFamily)) {
        if (!UnifyNumbers(text, left, right, nullptr, range)) return Error(range);
        if (left->kind == ExprKind::Constant && right->kind == ExprKind::Constant && IsUntyped(left) &&
            left->type->storage != right->type->storage) {
            const Type* lint = Elementary(ElementaryType::LInt);
            left = NewConvert(left, lint, true);
            right = NewConvert(right, lint, true);
        }
        WarnOfComparison(op, left, right, range);
        return MakeBinary(code, boolean, left, right, range);
    }
    if (IsUntyped(left) && rightFamily == Family::Bool) left = Coerce(left, right->type);
    if (IsUntyped(right) && leftFamily == Family::Bool) right = Coerce(right, left->type);
    if (IsTextFamily(leftFamily) && IsTextFamily(rightFamily)) {
        // A character compares with a text of one unit as a character, with any other text as a text.
        if (leftFamily != rightFamily) {
            const bool leftIsChar = leftFamily == Family::Char || leftFamily == Family::WChar;
            Expr*& character = leftIsChar ? left : right;
            Expr*& string = leftIsChar ? right : left;
            const bool isOneUnit = IsUntyped(string) &&
                                   static_cast<const StringType*>(BaseOf(string->type))->capacity == 1 &&
                                   !static_cast<const ConstantExpr*>(string)->value->IsZero();
            if (isOneUnit) {
                string = Coerce(string, character->type);
            } else {
                character = Coerce(character, string->type);
            }
        }
        if (IsError(left)) return left;
        if (IsError(right)) return right;
        return MakeBinary(code, boolean, left, right, range);
    }
    if (IsError(left)) return left;
    if (IsError(right)) return right;
    if (FamilyOf(left->type) != FamilyOf(right->type) || FamilyOf(left->type) == Family::Void ||
        FamilyOf(left->type) == Family::Aggregate)
        return RefuseOperands(text, left, right, range);
    return MakeBinary(code, boolean, left, right, range);
}

// --- AND, OR, XOR ---

Expr* BodyChecker::ApplyLogical(ast::BinaryOp op, Expr* left, Expr* right, SourceRange range) {
    left = DropEnum(left, false);
    right = DropEnum(right, false);
    if (IsError(left)) return left;
    if (IsError(right)) return right;
    const Type* boolean = project_.types.Bool();
    if (IsUntyped(left) && IsBool(right->type)) left = Coerce(left, boolean);
    if (IsUntyped(right) && IsBool(left->type)) right = Coerce(right, boolean);
    if (IsError(left)) return left;
    if (IsError(right)) return right;
    const std::string_view text = RowOf(op).text;
    const BinaryOperator code = RowOf(op).code;
    const bool mustShortCircuit = op == ast::BinaryOp::AndThen || op == ast::BinaryOp::OrElse;
    if (IsBool(left->type) && IsBool(right->type)) {
        const bool areConstant = left->kind == ExprKind::Constant && right->kind == ExprKind::Constant;
        if (op == ast::BinaryOp::Xor || areConstant) return MakeBinary(code, boolean, left, right, range);
        return New(LogicalExpr{{ExprKind::Logical, boolean, range}, code == BinaryOperator::And, left, right});
    }
    const auto isBits = [](const Expr* expr) { return IsBitString(expr->type) || IsInteger(expr->type); };
    if (mustShortCircuit || !isBits(left) || !isBits(right)) return RefuseOperands(text, left, right, range);
    if (IsBitString(left->type) != IsBitString(right->type) && !IsUntyped(left) && !IsUntyped(right) &&
        GetSwitches().bitInteger) {
        // The bits are meant, not the numbers.
        ElementaryType bits = ElementaryType::Byte;
        const std::uint32_t size = std::max(left->type->size, right->type->size);
        if (size == 2) bits = ElementaryType::Word;
        if (size == 4) bits = ElementaryType::DWord;
        if (size == 8) bits = ElementaryType::LWord;
        for (Expr** side : {&left, &right}) {
            if ((*side)->type->storage != bits) *side = NewConvert(*side, Elementary(bits), true);
        }
        return MakeBinary(code, Elementary(bits), left, right, range);
    }
    if (!UnifyNumbers(text, left, right, nullptr, range)) return Error(range);
    if (IsUntyped(left) && IsUntyped(right)) {
        if (Expr* folded =
                FoldUntyped(code, static_cast<ConstantExpr*>(left), static_cast<ConstantExpr*>(right), range))
            return folded;
    }
    return MakeBinary(code, BaseOf(left->type), left, right, range);
}

Expr* BodyChecker::ApplyBinary(ast::BinaryOp op, Expr* left, Expr* right, SourceRange range, const Type* wanted) {
    if (IsError(left)) return left;
    if (IsError(right)) return right;
    if (IsComparison(op)) return ApplyComparison(op, left, right, range);
    if (IsLogical(op)) return ApplyLogical(op, left, right, range);
    return ApplyArithmetic(op, left, right, range, wanted);
}

Expr* BodyChecker::CheckBinaryChain(const ast::BinaryExpr& binary, const Type* wanted) {
    // a + b + c + ... leans to the left and may be as long as the file: that side is walked, not descended.
    std::vector<const ast::BinaryExpr*> chain;
    const ast::Expr* leftmost = &binary;
    while (leftmost->kind == ast::ExprKind::Binary) {
        chain.push_back(static_cast<const ast::BinaryExpr*>(leftmost));
        leftmost = chain.back()->left;
    }
    // What is wanted of a comparison is not wanted of its operands.
    const auto firstComparison = std::ranges::find_if(chain, [](const auto* link) { return IsComparison(link->op); });
    const auto isInside = [&](std::size_t index) {
        return static_cast<std::ptrdiff_t>(index) >= firstComparison - chain.begin();
    };
    Expr* left = Check(*leftmost, isInside(chain.size() - 1) ? nullptr : wanted);
    for (std::size_t i = chain.size(); i-- > 0;) {
        const ast::BinaryExpr& node = *chain[i];
        const Type* wish = isInside(i) ? nullptr : wanted;
        const Type* rightWish = wish;
        if (IsComparison(node.op) && FamilyOf(left->type) == Family::Enum) rightWish = left->type;
        const std::size_t callsBefore = context_.calls.size();
        Expr* right = Check(*node.right, rightWish);
        left = ApplyBinary(node.op, left, right, {leftmost->range.begin, node.range.end}, wish);
        const bool isPlain = node.op == ast::BinaryOp::And || node.op == ast::BinaryOp::Or;
        if (isPlain && left->kind == ExprKind::Logical && context_.calls.size() > callsBefore) {
            // Whether the calls on the right have effects is known when all bodies are.
            const auto first = context_.calls.begin() + static_cast<std::ptrdiff_t>(callsBefore);
            shortCircuits_.push_back({static_cast<LogicalExpr*>(left), {first, context_.calls.end()}});
        }
    }
    return left;
}

// --- expressions ---

Expr* BodyChecker::CheckTypePrefix(const ast::TypePrefixExpr& prefix) {
    // Only a type can stand in front of the sign, so that a variable of the same name does not hide it.
    ast::Identifier path[] = {prefix.type};
    const Type* prefixed = declarations_->ResolveType(
        ast::NamedTypeSpec{{ast::TypeSpecKind::Named, prefix.type.range}, path}, context_.scope);
    if (prefixed->kind == TypeKind::Error) return Error(prefix.range);
    const Type* type = BaseOf(prefixed);
    if (type->kind == TypeKind::Enum && prefix.operand->kind == ast::ExprKind::Name) {
        const auto& enumeration = *static_cast<const EnumType*>(type);
        const NameId name = static_cast<const ast::NameExpr*>(prefix.operand)->name;
        if (const EnumMember* member = enumeration.Find(name)) return FromEnumMember(type, *member, prefix.range).value;
        std::vector<std::string_view> candidates;
        for (const EnumMember& known : enumeration.members)
            candidates.push_back(project_.names.GetFolded(known.name));
        Diagnostic& diagnostic = project_.diagnostics.Report(DiagnosticCode::NoSuchMember, prefix.operand->range,
                                                             {Text(type), SourceText(prefix.operand->range)});
        const std::string_view nearest = FindNearestName(project_.names.GetFolded(name), candidates);
        if (!nearest.empty())
            diagnostic.notes.push_back({prefix.operand->range, "did you mean '" + std::string(nearest) + "'?"});
        return Error(prefix.range);
    }
    Expr* operand = Check(*prefix.operand, prefixed);
    if (IsError(operand)) return operand;
    if (IsUntyped(operand)) {
        Expr* typed = Coerce(operand, prefixed);
        typed->range = prefix.range;
        return typed;
    }
    return ConvertExplicitly(operand, prefixed, false, prefix.range);
}

Expr* BodyChecker::Check(const ast::Expr& expression, const Type* wanted) {
    constexpr std::uint32_t kMaxDepth = 1000;
    if (depth_ >= kMaxDepth) return Fail(DiagnosticCode::NestingTooDeep, expression.range, {std::to_string(kMaxDepth)});
    ++depth_;
    Expr* result = nullptr;
    switch (expression.kind) {
        case ast::ExprKind::Literal: result = CheckLiteral(static_cast<const ast::LiteralExpr&>(expression)); break;
        case ast::ExprKind::Unary: result = CheckUnary(static_cast<const ast::UnaryExpr&>(expression), wanted); break;
        case ast::ExprKind::Binary:
            result = CheckBinaryChain(static_cast<const ast::BinaryExpr&>(expression), wanted);
            break;
        case ast::ExprKind::Call: result = CheckCall(static_cast<const ast::CallExpr&>(expression), wanted); break;
        case ast::ExprKind::TypePrefix:
            result = CheckTypePrefix(static_cast<const ast::TypePrefixExpr&>(expression));
            break;
        case ast::ExprKind::ArrayInit:
        case ast::ExprKind::StructInit: result = CheckInitializer(expression, wanted); break;
        case ast::ExprKind::Error: result = Error(expression.range); break;
        default: result = ToValue(Resolve(expression, wanted), expression.range); break;
    }
    --depth_;
    return result;
}

Expr* BodyChecker::CheckAs(const ast::Expr& expression, const Type* target) {
    return Coerce(Check(expression, target), target);
}

Expr* BodyChecker::CheckCondition(const ast::Expr& expression) {
    Expr* condition = Check(expression, project_.types.Bool());
    if (IsError(condition)) return condition;
    if (IsUntyped(condition)) return Coerce(condition, project_.types.Bool());
    if (IsBool(condition->type)) return condition;
    return Fail(DiagnosticCode::ConditionType, expression.range, {Text(condition->type)});
}

}  // namespace tn61131::st
