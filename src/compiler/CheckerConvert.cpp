#include <cmath>

#include "compiler/BodyChecker.h"

// Implicit and explicit conversions (IEC 61131-3, 6.4.2.8 and 6.6.2.5.2).

namespace tn61131::st {

namespace {

[[nodiscard]] int WidthOf(const Type* type) noexcept {
    return GetTypeInfo(type->storage).size * 8;
}

/// The integer of a width; ElementaryType::Undefined for one wider than 64 bits.
[[nodiscard]] ElementaryType SignedOf(int bits) noexcept {
    switch (bits) {
        case 8: return ElementaryType::SInt;
        case 16: return ElementaryType::Int;
        case 32: return ElementaryType::DInt;
        case 64: return ElementaryType::LInt;
        default: return ElementaryType::Undefined;
    }
}

[[nodiscard]] ElementaryType UnsignedOf(int bits) noexcept {
    switch (bits) {
        case 8: return ElementaryType::USInt;
        case 16: return ElementaryType::UInt;
        case 32: return ElementaryType::UDInt;
        case 64: return ElementaryType::ULInt;
        default: return ElementaryType::Undefined;
    }
}

/// Whether a whole number, given as the bits of a signed or unsigned 64-bit one, is a value of the type.
[[nodiscard]] bool Holds(const Type* type, std::int64_t value, bool isUnsigned64) noexcept {
    const int bits = WidthOf(type);
    const bool isLarge = isUnsigned64 && value < 0;
    if (FamilyOf(type) == Family::Signed) {
        if (isLarge) return false;
        return bits == 64 || (value >= -(std::int64_t{1} << (bits - 1)) && value < std::int64_t{1} << (bits - 1));
    }
    if (bits == 64) return isUnsigned64 || value >= 0;
    return !isLarge && value >= 0 && value < std::int64_t{1} << bits;
}

[[nodiscard]] bool IsUnsigned64(const CValue& value) noexcept {
    return value.GetType() == ElementaryType::ULInt || value.GetType() == ElementaryType::LWord;
}

}  // namespace

bool BodyChecker::IsLossless(const Type* from, const Type* to) const {
    from = BaseOf(from);
    to = BaseOf(to);
    if (from->storage == to->storage) return true;
    const Family source = FamilyOf(from);
    const Family target = FamilyOf(to);
    if (source == Family::Real) return target == Family::Real && to->storage == ElementaryType::LReal;
    if (target == Family::Real) {
        if (source == Family::Bits && !GetSwitches().bitInteger) return false;
        return WidthOf(from) < (to->storage == ElementaryType::Real ? 32 : 64);
    }
    if (source == Family::Bits || target == Family::Bits) {
        if (source == target) return WidthOf(from) <= WidthOf(to);
        return GetSwitches().bitInteger && WidthOf(from) <= WidthOf(to);
    }
    if (source == target) return WidthOf(from) <= WidthOf(to);
    return source == Family::Unsigned && WidthOf(from) < WidthOf(to);
}

const Type* BodyChecker::CommonNumber(const Type* left, const Type* right) const {
    left = BaseOf(left);
    right = BaseOf(right);
    if (left->storage == right->storage) return left;
    const Family leftFamily = FamilyOf(left);
    const Family rightFamily = FamilyOf(right);
    if (leftFamily == Family::Real || rightFamily == Family::Real) {
        const bool isReal =
            (left->storage == ElementaryType::Real || (leftFamily != Family::Real && WidthOf(left) < 32)) &&
            (right->storage == ElementaryType::Real || (rightFamily != Family::Real && WidthOf(right) < 32));
        return Elementary(isReal ? ElementaryType::Real : ElementaryType::LReal);
    }
    if (leftFamily == rightFamily) return WidthOf(left) >= WidthOf(right) ? left : right;
    if (leftFamily != Family::Signed && rightFamily != Family::Signed)  // a bit string and an unsigned integer
        return Elementary(UnsignedOf(std::max(WidthOf(left), WidthOf(right))));
    const Type* withSign = leftFamily == Family::Signed ? left : right;
    const Type* without = leftFamily == Family::Signed ? right : left;
    if (WidthOf(withSign) > WidthOf(without)) return withSign;
    const ElementaryType wider = SignedOf(WidthOf(without) * 2);
    return wider == ElementaryType::Undefined ? nullptr : Elementary(wider);
}

const Type* BodyChecker::NaturalType(const Expr* expr) const {
    switch (expr->kind) {
        case ExprKind::Convert: {
            const auto& convert = *static_cast<const ConvertExpr*>(expr);
            if (!convert.isImplicit) break;
            const Type* inner = NaturalType(convert.operand);
            if (IsNumberFamily(FamilyOf(inner)) && IsLossless(inner, expr->type)) return inner;
            break;
        }
        case ExprKind::Unary: {
            const auto& unary = *static_cast<const UnaryExpr*>(expr);
            if (IsNumberFamily(FamilyOf(expr->type))) return NaturalType(unary.operand);
            break;
        }
        case ExprKind::Binary: {
            const auto& binary = *static_cast<const BinaryExpr*>(expr);
            if (!IsNumberFamily(FamilyOf(expr->type)) || binary.op == BinaryOperator::Pow) break;
            const Type* common = nullptr;
            // A constant takes whatever type is there.
            if (binary.right->kind == ExprKind::Constant) {
                common = NaturalType(binary.left);
            } else if (binary.left->kind == ExprKind::Constant) {
                common = NaturalType(binary.right);
            } else {
                common = CommonNumber(NaturalType(binary.left), NaturalType(binary.right));
            }
            if (common != nullptr && IsLossless(common, expr->type)) return common;
            break;
        }
        case ExprKind::Select: {
            const auto& select = *static_cast<const SelectExpr*>(expr);
            if (!IsNumberFamily(FamilyOf(expr->type))) break;
            const Type* common = CommonNumber(NaturalType(select.whenTrue), NaturalType(select.whenFalse));
            if (common != nullptr && IsLossless(common, expr->type)) return common;
            break;
        }
        default: break;
    }
    return BaseOf(expr->type);
}

// --- constants ---

ConstantExpr* BodyChecker::FoldConvert(const ConstantExpr& constant, const Type* type, bool truncate) {
    CErrorLogToNull log;
    CValue value = *constant.value;
    const bool converted = truncate ? value.Truncate(log, ErrorLocationNull::Get(), type->storage)
                                    : value.ChangeType(log, ErrorLocationNull::Get(), type->storage);
    return converted ? NewConstant(type, std::move(value), constant.range) : nullptr;
}

Expr* BodyChecker::Settle(Expr* expr) {
    if (expr->kind != ExprKind::Constant || IsError(expr)) return expr;
    static_cast<ConstantExpr*>(expr)->untyped = false;
    return expr;
}

Expr* BodyChecker::CoerceUntypedInteger(ConstantExpr* constant, const Type* target) {
    const Type* to = BaseOf(target);
    const std::int64_t value = *GetInteger(constant);
    const bool isUnsigned64 = IsUnsigned64(*constant->value);
    const std::string text = NumberText(*constant);
    switch (FamilyOf(to)) {
        case Family::Bool:
            if (value != 0 && value != 1) break;
            return NewConstant(to, CValue(value == 1), constant->range);
        case Family::Signed:
        case Family::Unsigned:
        case Family::Bits: {
            CValue number;
            number.SetInteger(value, to->storage);
            if (Holds(to, value, isUnsigned64)) return NewConstant(to, std::move(number), constant->range);
            // The bits of the number are what is meant: 16#FFFF as an INT, -1 as a WORD.
            const int bits = WidthOf(to);
            const bool fitsBits =
                bits == 64 || (isUnsigned64 && value < 0
                                   ? false
                                   : value >= -(std::int64_t{1} << (bits - 1)) && value < std::int64_t{1} << bits);
            const bool isBits = FamilyOf(constant->type) == Family::Bits || value < 0;
            if (!fitsBits || !isBits || GetSwitches().narrowing == Switches::Strictness::Error)
                return Fail(DiagnosticCode::ValueOutOfRange, constant->range, {text, Text(to)});
            if (FamilyOf(constant->type) != Family::Bits)
                Allow(GetSwitches().narrowing, DiagnosticCode::ValueOutOfRange, constant->range, {text, Text(to)});
            return NewConstant(to, std::move(number), constant->range);
        }
        case Family::Real: return FoldConvert(*constant, to, false);
        case Family::Pointer:
        case Family::Null:
            if (value != 0) break;
            {
                CValue null;
                null.SetAddress(0, 0, 0);
                return NewConstant(to, std::move(null), constant->range);
            }
        default: break;
    }
    return RefuseConversion(constant, target);
}

Expr* BodyChecker::CoerceUntyped(ConstantExpr* constant, const Type* target) {
    const Type* to = BaseOf(target);
    const Family family = FamilyOf(constant->type);
    if (IsIntegerFamily(family) || family == Family::Bits) return CoerceUntypedInteger(constant, target);
    if (family == Family::Real) {
        if (FamilyOf(to) == Family::Real) {
            ConstantExpr* folded = FoldConvert(*constant, to, false);
            const bool overflows = to->storage == ElementaryType::Real &&
                                   std::isinf(folded->value->GetPayload<float>()) &&
                                   !std::isinf(constant->value->GetPayload<double>());
            if (!overflows) return folded;
            return Fail(DiagnosticCode::ValueOutOfRange, constant->range, {NumberText(*constant), Text(to)});
        }
        if (IsNumberFamily(FamilyOf(to))) {
            constant->untyped = false;
            return CoerceNumber(constant, target);
        }
        return RefuseConversion(constant, target);
    }
    const Family wanted = FamilyOf(to);
    const bool isText =
        wanted == Family::String || wanted == Family::WString || wanted == Family::Char || wanted == Family::WChar;
    return isText ? CoerceText(constant, target) : RefuseConversion(constant, target);
}

Expr* BodyChecker::CheckSubrange(Expr* expr, const Type* target) {
    const Type* stripped = Strip(target);
    if (stripped->kind != TypeKind::Subrange || expr->kind != ExprKind::Constant || IsError(expr)) return expr;
    const auto& range = *static_cast<const SubrangeType*>(stripped);
    const std::int64_t value = *GetInteger(expr);
    const bool isInside = FamilyOf(range.base) == Family::Signed
                              ? value >= range.lower && value <= range.upper
                              : static_cast<std::uint64_t>(value) >= static_cast<std::uint64_t>(range.lower) &&
                                    static_cast<std::uint64_t>(value) <= static_cast<std::uint64_t>(range.upper);
    if (isInside) return expr;
    return Fail(DiagnosticCode::OutsideSubrange, expr->range,
                {std::to_string(value), std::to_string(range.lower), std::to_string(range.upper)});
}

// --- assignment ---

Expr* BodyChecker::RefuseConversion(Expr* expr, const Type* target) {
    const Family from = FamilyOf(expr->type);
    const Family to = FamilyOf(target);
    if (from == Family::Void) return Fail(DiagnosticCode::NoValue, expr->range, {SourceText(expr->range)});
    if (from == Family::Pointer && (IsNumberFamily(to) || to == Family::Bool))
        return Fail(DiagnosticCode::PointerIsNoNumber, expr->range);
    const bool isPlain = from != Family::Aggregate && from != Family::Pointer && from != Family::Null &&
                         from != Family::Enum && to != Family::Aggregate && to != Family::Pointer &&
                         to != Family::Null && to != Family::Enum && to != Family::Void;
    if (!isPlain) return Fail(DiagnosticCode::NoConversion, expr->range, {Text(expr->type), Text(target)});
    const auto nameOf = [&](const Type* type) {
        return std::string(GetTypeInfo(BaseOf(type)->storage).shortName == std::string_view("T")
                               ? "TIME"
                               : GetTypeInfo(BaseOf(type)->storage).shortName);
    };
    return Fail(DiagnosticCode::ExplicitConversion, expr->range,
                {Text(expr->type), Text(target), nameOf(expr->type) + "_TO_" + nameOf(target)});
}

Expr* BodyChecker::DropEnum(Expr* expr, bool silent) {
    const Type* type = BaseOf(expr->type);
    if (type->kind != TypeKind::Enum) return expr;
    const Type* base = static_cast<const EnumType*>(type)->base;
    if (!silent && !Allow(GetSwitches().narrowing, DiagnosticCode::ExplicitConversion, expr->range,
                          {Text(type), Text(base), "TO_" + Text(base)}))
        return Error(expr->range);
    // The stack holds the same value either way.
    expr->type = base;
    return expr;
}

Expr* BodyChecker::CoerceNumber(Expr* expr, const Type* target) {
    const Type* from = BaseOf(expr->type);
    const Type* to = BaseOf(target);
    if (from->storage == to->storage) return expr;
    if (IsLossless(from, to) || IsLossless(NaturalType(expr), to)) return NewConvert(expr, to, true);
    const Family source = FamilyOf(from);
    const Family wanted = FamilyOf(to);
    const bool mixesBits = (source == Family::Bits) != (wanted == Family::Bits);
    if (mixesBits && !GetSwitches().bitInteger) return RefuseConversion(expr, target);
    if (expr->kind == ExprKind::Constant && source != Family::Real) {
        const auto& constant = *static_cast<const ConstantExpr*>(expr);
        const std::int64_t value = *GetInteger(expr);
        if (wanted == Family::Real || Holds(to, value, IsUnsigned64(*constant.value)))
            return NewConvert(expr, to, true);
    }
    const std::string name = std::string(GetTypeInfo(from->storage).name) + "_TO_" + GetTypeInfo(to->storage).name;
    if (!Allow(GetSwitches().narrowing, DiagnosticCode::Narrowing, expr->range,
               {Text(NaturalType(expr)), Text(to), name}))
        return Error(expr->range);
    return NewConvert(expr, to, true);
}

Expr* BodyChecker::CoerceText(Expr* expr, const Type* target) {
    const Type* to = BaseOf(target);
    const Family from = FamilyOf(expr->type);
    const Family wanted = FamilyOf(to);
    const bool isWide = wanted == Family::WString || wanted == Family::WChar;
    const bool comesWide = from == Family::WString || from == Family::WChar;
    if (isWide != comesWide) {
        return Fail(DiagnosticCode::WrongTextKind, expr->range,
                    {Text(expr->type), Text(to),
                     std::string(GetTypeInfo(expr->type->storage).name) + "_TO_" + GetTypeInfo(to->storage).name});
    }
    const bool fromChar = from == Family::Char || from == Family::WChar;
    if (wanted == Family::String || wanted == Family::WString) {
        if (fromChar) return NewConvert(expr, to, true);
        if (expr->kind == ExprKind::Constant) {
            const unsigned capacity = static_cast<const StringType*>(to)->capacity;
            const CValue& value = *static_cast<const ConstantExpr*>(expr)->value;
            const unsigned unitSize = isWide ? 2 : 1;
            const unsigned units = value.GetRawDataSize() / unitSize - (isWide ? 1 : 2);
            if (units > capacity) {
                project_.diagnostics.Report(DiagnosticCode::StringCut, expr->range,
                                            {std::to_string(units), std::to_string(capacity)});
            }
            Settle(expr);
        }
        return expr;
    }
    // A text of one unit is a character where one is wanted.
    if (!fromChar && expr->kind == ExprKind::Constant && static_cast<ConstantExpr*>(expr)->untyped) {
        const unsigned size = static_cast<ConstantExpr*>(expr)->value->GetRawDataSize();
        if (size == (isWide ? 4U : 3U)) return FoldConvert(*static_cast<ConstantExpr*>(expr), to, false);
    }
    if (fromChar) return expr;
    return RefuseConversion(expr, target);
}

Expr* BodyChecker::CoercePointer(Expr* expr, const Type* target) {
    const Type* from = BaseOf(expr->type);
    const Type* to = BaseOf(target);
    if (from->kind == TypeKind::Null) {
        expr->type = to;
        return expr;
    }
    if (from->kind != TypeKind::Pointer) return RefuseConversion(expr, target);
    const Type* source = Strip(static_cast<const PointerType*>(from)->target);
    const Type* wanted = Strip(static_cast<const PointerType*>(to)->target);
    const auto isBaseOf = [](const Type* base, const Type* derived) {
        if (base->kind == TypeKind::Struct && derived->kind == TypeKind::Struct) {
            const auto* type = static_cast<const StructType*>(derived);
            while (type != nullptr && type != base)
                type = type->base;
            return type != nullptr;
        }
        if (base->kind == TypeKind::FunctionBlock && derived->kind == TypeKind::FunctionBlock) {
            const Pou* pou = static_cast<const FunctionBlockType*>(derived)->pou;
            while (pou != nullptr && pou->type != base)
                pou = pou->base;
            return pou != nullptr;
        }
        return false;
    };
    const bool matches = source == wanted || source->kind == TypeKind::Void || wanted->kind == TypeKind::Void ||
                         isBaseOf(wanted, source);
    if (!matches && !Allow(GetSwitches().narrowing, DiagnosticCode::NoConversion, expr->range, {Text(from), Text(to)}))
        return Error(expr->range);
    return expr;
}

Expr* BodyChecker::CoerceReference(Expr* expr, const Type* target) {
    const Type* wanted = Strip(static_cast<const PointerType*>(Strip(target))->target);
    if (expr->kind != ExprKind::Load || Strip(expr->type) != wanted)
        return Fail(DiagnosticCode::NoConversion, expr->range, {Text(expr->type), Text(target)});
    Place* place = static_cast<LoadExpr*>(expr)->place;
    MarkAddressTaken(place);
    MarkWritten(place, expr->range);
    return New(AddressExpr{{ExprKind::Address, target, expr->range}, place});
}

Expr* BodyChecker::Coerce(Expr* expr, const Type* target) {
    if (IsError(expr)) return expr;
    if (target->kind == TypeKind::Error) return Error(expr->range);
    const Type* to = BaseOf(target);
    if (to->kind == TypeKind::Reference) return CoerceReference(expr, to);
    const Type* from = BaseOf(expr->type);
    if (expr->kind == ExprKind::Constant && static_cast<ConstantExpr*>(expr)->untyped) {
        if (to->kind == TypeKind::Enum) {
            if (!Allow(GetSwitches().narrowing, DiagnosticCode::TypeMismatch, expr->range, {Text(to), Text(from)}))
                return Error(expr->range);
            Expr* value = CoerceUntyped(static_cast<ConstantExpr*>(expr), static_cast<const EnumType*>(to)->base);
            if (!IsError(value)) value->type = to;
            return value;
        }
        return CheckSubrange(CoerceUntyped(static_cast<ConstantExpr*>(expr), target), target);
    }
    if (from == to) return CheckSubrange(expr, target);
    const Family source = FamilyOf(from);
    const Family wanted = FamilyOf(to);
    if (source == Family::Enum && wanted == Family::Enum)
        return Fail(DiagnosticCode::EnumerationMix, expr->range, {Text(from), Text(to)});
    if (source == Family::Enum) {
        if (!IsNumberFamily(wanted)) return RefuseConversion(expr, target);
        expr = DropEnum(expr, false);
        return IsError(expr) ? expr : Coerce(expr, target);
    }
    if (wanted == Family::Enum) {
        if (!IsIntegerFamily(source) && source != Family::Bits) return RefuseConversion(expr, target);
        if (!Allow(GetSwitches().narrowing, DiagnosticCode::TypeMismatch, expr->range, {Text(to), Text(from)}))
            return Error(expr->range);
        Expr* value = CoerceNumber(expr, static_cast<const EnumType*>(to)->base);
        if (!IsError(value)) value->type = to;
        return value;
    }
    if (IsNumberFamily(source) && IsNumberFamily(wanted)) return CheckSubrange(CoerceNumber(expr, target), target);
    const auto isText = [](Family family) {
        return family == Family::String || family == Family::WString || family == Family::Char ||
               family == Family::WChar;
    };
    if (isText(source) && isText(wanted)) return CoerceText(expr, target);
    if (wanted == Family::Pointer) return CoercePointer(expr, target);
    return RefuseConversion(expr, target);
}

// --- X_TO_Y ---

Expr* BodyChecker::ConvertExplicitly(Expr* expr, const Type* target, bool truncate, SourceRange range) {
    expr = Settle(DropEnum(expr, true));
    if (IsError(expr)) return expr;
    const Type* to = BaseOf(target);
    const Type* from = BaseOf(expr->type);
    const Family source = FamilyOf(from);
    const Family wanted = FamilyOf(to);
    const bool fromChar = source == Family::Char || source == Family::WChar;
    const bool isRefused = source == Family::Void || source == Family::Null || source == Family::Aggregate ||
                           source == Family::Pointer || wanted == Family::Pointer || wanted == Family::Aggregate ||
                           (fromChar && (wanted == Family::Real || wanted == Family::Time || wanted == Family::Date ||
                                         wanted == Family::TimeOfDay || wanted == Family::DateAndTime));
    if (isRefused) {
        if (source == Family::Pointer && IsNumberFamily(wanted)) return RefuseConversion(expr, target);
        return Fail(DiagnosticCode::NoConversion, range, {Text(expr->type), Text(target)});
    }
    const auto convert = [&](Expr* operand, const Type* type) {
        Expr* converted =
            operand->type->storage == type->storage ? operand : NewConvert(operand, type, false, truncate);
        converted->type = type;
        converted->range = range;
        return converted;
    };
    if (GetSwitches().dateSeconds) {
        // The machine counts days and milliseconds, the program seconds.
        constexpr std::int64_t kMillisecondsPerSecond = 1000;
        constexpr std::int64_t kSecondsPerDay = 86400;
        const Type* seconds = Elementary(ElementaryType::UDInt);
        const Type* milliseconds = Elementary(ElementaryType::ULInt);
        if (source == Family::DateAndTime && IsNumberFamily(wanted)) {
            return convert(MakeBinary(BinaryOperator::Div, milliseconds, convert(expr, milliseconds),
                                      NewInteger(milliseconds, kMillisecondsPerSecond, range), range),
                           to);
        }
        if (source == Family::Date && IsNumberFamily(wanted)) {
            return convert(MakeBinary(BinaryOperator::Mul, seconds, convert(expr, seconds),
                                      NewInteger(seconds, kSecondsPerDay, range), range),
                           to);
        }
        if (IsNumberFamily(source) && wanted == Family::DateAndTime) {
            return convert(MakeBinary(BinaryOperator::Mul, milliseconds, convert(expr, milliseconds),
                                      NewInteger(milliseconds, kMillisecondsPerSecond, range), range),
                           to);
        }
        if (IsNumberFamily(source) && wanted == Family::Date) {
            return convert(MakeBinary(BinaryOperator::Div, seconds, convert(expr, seconds),
                                      NewInteger(seconds, kSecondsPerDay, range), range),
                           to);
        }
    }
    return convert(expr, to);
}

}  // namespace tn61131::st
