#include "compiler/NumberRange.h"

#include <cstring>

#include "value/TypeTable.h"
#include "value/Value.h"

namespace tn61131::st {

namespace {

constexpr std::uint32_t kWholeTypes =
    TypeBit(ElementaryType::Bool) | TypeBit(ElementaryType::SInt) | TypeBit(ElementaryType::USInt) |
    TypeBit(ElementaryType::Byte) | TypeBit(ElementaryType::Int) | TypeBit(ElementaryType::UInt) |
    TypeBit(ElementaryType::Word) | TypeBit(ElementaryType::DInt) | TypeBit(ElementaryType::UDInt) |
    TypeBit(ElementaryType::DWord) | TypeBit(ElementaryType::LInt) | TypeBit(ElementaryType::ULInt) |
    TypeBit(ElementaryType::LWord);

std::optional<NumberRange> GetRangeOfBinary(const BinaryExpr& expr) noexcept {
    const std::optional<Int128> right = GetConstantNumber(*expr.right);
    if (!right || *right < 0) return std::nullopt;
    // x AND mask; x MOD n of an x that is not negative.
    if (expr.op == BinaryOperator::And) return NumberRange{0, *right};
    if (expr.op != BinaryOperator::Mod || *right == 0) return std::nullopt;
    const std::optional<NumberRange> left = GetRange(*expr.left);
    if (!left) return std::nullopt;
    return NumberRange{left->lower < 0 ? 1 - *right : 0, *right - 1};
}

std::optional<NumberRange> GetRangeOfType(const Type* type) noexcept {
    type = Strip(type);
    if (type->kind != TypeKind::Subrange) return GetRangeOfStorage(type->storage);
    const auto& subrange = static_cast<const SubrangeType&>(*type);
    return NumberRange{ToNumber(type->storage, subrange.lower), ToNumber(type->storage, subrange.upper)};
}

}  // namespace

bool IsSignedStorage(ElementaryType type) noexcept {
    return GetTypeInfo(type).payload == PayloadKind::Signed;
}

ElementaryType GetUnsignedStorage(ElementaryType type) noexcept {
    switch (GetTypeInfo(type).size) {
        case 1: return ElementaryType::USInt;
        case 2: return ElementaryType::UInt;
        case 4: return ElementaryType::UDInt;
        default: return ElementaryType::ULInt;
    }
}

std::optional<NumberRange> GetRangeOfStorage(ElementaryType type) noexcept {
    if ((TypeBit(type) & kWholeTypes) == 0) return std::nullopt;
    if (type == ElementaryType::Bool) return NumberRange{0, 1};
    const unsigned int bits = GetTypeInfo(type).size * 8U;
    if (IsSignedStorage(type)) return NumberRange{-(Int128{1} << (bits - 1)), (Int128{1} << (bits - 1)) - 1};
    return NumberRange{0, (Int128{1} << bits) - 1};
}

Int128 ToNumber(ElementaryType type, std::int64_t bits) noexcept {
    const unsigned int unused = 64U - GetTypeInfo(type).size * 8U;
    const auto shifted = static_cast<std::uint64_t>(bits) << unused;
    if (IsSignedStorage(type)) return static_cast<std::int64_t>(shifted) >> unused;
    return shifted >> unused;
}

std::optional<Int128> GetConstantNumber(const Expr& expr) noexcept {
    if (expr.kind != ExprKind::Constant) return std::nullopt;
    const CValue& value = *static_cast<const ConstantExpr&>(expr).value;
    if ((TypeBit(value.GetType()) & kWholeTypes) == 0) return std::nullopt;
    if (value.GetType() == ElementaryType::Bool) return value.IsZero() ? 0 : 1;
    return ToNumber(value.GetType(), value.GetPayload<std::int64_t>());
}

std::optional<NumberRange> GetRange(const Expr& expr) noexcept {
    const std::optional<NumberRange> all = GetRangeOfType(expr.type);
    if (!all) return std::nullopt;
    std::optional<NumberRange> some;
    switch (expr.kind) {
        case ExprKind::Constant:
            if (const std::optional<Int128> number = GetConstantNumber(expr)) some = NumberRange{*number, *number};
            break;
        case ExprKind::Convert: some = GetRange(*static_cast<const ConvertExpr&>(expr).operand); break;
        case ExprKind::Binary: some = GetRangeOfBinary(static_cast<const BinaryExpr&>(expr)); break;
        default: break;
    }
    return some && all->Contains(*some) ? some : all;
}

}  // namespace tn61131::st
