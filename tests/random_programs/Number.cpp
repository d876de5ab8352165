#include "random_programs/Number.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace random_programs {

namespace {

struct TypeRow {
    const char* name;
    NumberFamily family;
    unsigned bits;
};

constexpr std::array<TypeRow, kNumberTypes> kTypes = {{
    {"BOOL", NumberFamily::Bool, 1},
    {"SINT", NumberFamily::Signed, 8},
    {"INT", NumberFamily::Signed, 16},
    {"DINT", NumberFamily::Signed, 32},
    {"LINT", NumberFamily::Signed, 64},
    {"USINT", NumberFamily::Unsigned, 8},
    {"UINT", NumberFamily::Unsigned, 16},
    {"UDINT", NumberFamily::Unsigned, 32},
    {"ULINT", NumberFamily::Unsigned, 64},
    {"BYTE", NumberFamily::Bits, 8},
    {"WORD", NumberFamily::Bits, 16},
    {"DWORD", NumberFamily::Bits, 32},
    {"LWORD", NumberFamily::Bits, 64},
    {"REAL", NumberFamily::Real, 32},
    {"LREAL", NumberFamily::Real, 64},
}};

const TypeRow& RowOf(NumberType type) noexcept {
    return kTypes[static_cast<std::size_t>(type)];
}

std::uint64_t MaskOf(unsigned bits) noexcept {
    return bits == 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << bits) - 1;
}

Number Truth(bool value) {
    return Number::Whole(NumberType::Bool, value ? 1 : 0);
}

/// The machine's order: whatever is not equal and not greater is less, numbers that are none included.
int Order(const Number& left, const Number& right) noexcept {
    if (IsReal(left.type)) {
        if (left.real == right.real) return 0;
        return left.real > right.real ? 1 : -1;
    }
    if (left.bits == right.bits) return 0;
    if (GetFamily(left.type) == NumberFamily::Signed) return left.Signed() > right.Signed() ? 1 : -1;
    return left.bits > right.bits ? 1 : -1;
}

Number ApplyReal(Operator op, const Number& left, const Number& right) {
    if (left.type == NumberType::Real) {
        const auto a = static_cast<float>(left.real);
        const auto b = static_cast<float>(right.real);
        float result = 0;
        if (op == Operator::Add) result = a + b;
        if (op == Operator::Sub) result = a - b;
        if (op == Operator::Mul) result = a * b;
        if (op == Operator::Div) result = a / b;
        return Number::Floating(left.type, static_cast<double>(result));
    }
    double result = 0;
    if (op == Operator::Add) result = left.real + right.real;
    if (op == Operator::Sub) result = left.real - right.real;
    if (op == Operator::Mul) result = left.real * right.real;
    if (op == Operator::Div) result = left.real / right.real;
    return Number::Floating(left.type, result);
}

std::uint64_t Divide(const Number& left, const Number& right, bool wantsRest) {
    if (GetFamily(left.type) != NumberFamily::Signed)
        return wantsRest ? left.bits % right.bits : left.bits / right.bits;
    if (right.Signed() == -1) return wantsRest ? 0 : 0 - left.bits;
    return static_cast<std::uint64_t>(wantsRest ? left.Signed() % right.Signed() : left.Signed() / right.Signed());
}

}  // namespace

const char* GetName(NumberType type) noexcept {
    return RowOf(type).name;
}
NumberFamily GetFamily(NumberType type) noexcept {
    return RowOf(type).family;
}
unsigned GetBits(NumberType type) noexcept {
    return RowOf(type).bits;
}

NumberType GetNumberType(NumberFamily family, unsigned bits) noexcept {
    for (unsigned i = 0; i < kNumberTypes; ++i) {
        if (kTypes[i].family == family && kTypes[i].bits == bits) return static_cast<NumberType>(i);
    }
    return NumberType::Bool;
}

Number Number::Whole(NumberType type, std::uint64_t pattern) {
    const unsigned width = GetBits(type);
    pattern &= MaskOf(width);
    const bool isNegative = GetFamily(type) == NumberFamily::Signed && (pattern >> (width - 1)) != 0;
    return {type, isNegative ? pattern | ~MaskOf(width) : pattern, 0};
}

Number Number::Floating(NumberType type, double value) {
    return {type, 0, type == NumberType::Real ? static_cast<double>(static_cast<float>(value)) : value};
}

Number Apply(Operator op, const Number& left, const Number& right) {
    switch (op) {
        case Operator::EQ: return Truth(Order(left, right) == 0);
        case Operator::NE: return Truth(Order(left, right) != 0);
        case Operator::LT: return Truth(Order(left, right) < 0);
        case Operator::LE: return Truth(Order(left, right) <= 0);
        case Operator::GT: return Truth(Order(left, right) > 0);
        case Operator::GE: return Truth(Order(left, right) >= 0);
        default: break;
    }
    if (IsReal(left.type)) return ApplyReal(op, left, right);
    std::uint64_t result = 0;
    switch (op) {
        case Operator::Add: result = left.bits + right.bits; break;
        case Operator::Sub: result = left.bits - right.bits; break;
        case Operator::Mul: result = left.bits * right.bits; break;
        case Operator::Div: result = Divide(left, right, false); break;
        case Operator::Mod: result = right.bits == 0 ? 0 : Divide(left, right, true); break;
        case Operator::And: result = left.bits & right.bits; break;
        case Operator::Or: result = left.bits | right.bits; break;
        case Operator::Xor: result = left.bits ^ right.bits; break;
        default: break;
    }
    return Number::Whole(left.type, result);
}

Number Negate(const Number& value) {
    return IsReal(value.type) ? Number::Floating(value.type, -value.real) : Number::Whole(value.type, 0 - value.bits);
}

Number Complement(const Number& value) {
    return Number::Whole(value.type, ~value.bits);
}

Number ApplyShift(Shift shift, const Number& value, std::int64_t count) {
    if (count < 0) {
        constexpr std::array<Shift, 4> kOpposite = {Shift::Right, Shift::Left, Shift::RotateLeft, Shift::RotateRight};
        return ApplyShift(kOpposite[static_cast<std::size_t>(shift)], value, -count);
    }
    const unsigned width = GetBits(value.type);
    const std::uint64_t pattern = value.bits & MaskOf(width);
    const auto distance = static_cast<std::uint64_t>(count);
    if (shift == Shift::Left) return Number::Whole(value.type, distance >= width ? 0 : pattern << distance);
    if (shift == Shift::Right) return Number::Whole(value.type, distance >= width ? 0 : pattern >> distance);
    std::uint64_t right = distance % width;
    if (shift == Shift::RotateLeft) right = (width - right) % width;
    if (right == 0) return value;
    return Number::Whole(value.type, (pattern >> right) | (pattern << (width - right)));
}

Number Convert(const Number& value, NumberType type) {
    if (value.type == type) return value;
    if (type == NumberType::Bool) return Truth(!value.IsZero());
    if (IsReal(type)) {
        if (IsReal(value.type)) return Number::Floating(type, value.real);
        const bool isSigned = GetFamily(value.type) == NumberFamily::Signed;
        if (type == NumberType::Real) {
            const float exact = isSigned ? static_cast<float>(value.Signed()) : static_cast<float>(value.bits);
            return Number::Floating(type, static_cast<double>(exact));
        }
        return Number::Floating(type, isSigned ? static_cast<double>(value.Signed()) : static_cast<double>(value.bits));
    }
    if (!IsReal(value.type)) return Number::Whole(type, value.bits);
    // Halves go to the even neighbour; what is infinite becomes no number.
    const double rounded = value.real - std::remainder(value.real, 1.0);
    const bool isSigned = GetFamily(type) == NumberFamily::Signed;
    if (GetBits(type) == 64) {
        return Number::Whole(type, isSigned ? static_cast<std::uint64_t>(static_cast<std::int64_t>(rounded))
                                            : static_cast<std::uint64_t>(rounded));
    }
    if (std::isnan(rounded)) return Number::Whole(type, 0);
    if (isSigned) {
        constexpr double kLeast = std::numeric_limits<std::int32_t>::min();
        constexpr double kMost = std::numeric_limits<std::int32_t>::max();
        const auto whole = static_cast<std::int32_t>(std::clamp(rounded, kLeast, kMost));
        return Number::Whole(type, static_cast<std::uint64_t>(std::int64_t{whole}));
    }
    constexpr double kMost = std::numeric_limits<std::uint32_t>::max();
    return Number::Whole(type, static_cast<std::uint32_t>(std::clamp(rounded, 0.0, kMost)));
}

std::optional<NumberType> FindCommonType(NumberType left, NumberType right, bool mixesBits) {
    if (left == right) return left;
    if (left == NumberType::Bool || right == NumberType::Bool) return std::nullopt;
    if (IsBits(left) != IsBits(right) && !mixesBits) return std::nullopt;
    if (IsReal(left) || IsReal(right)) {
        const auto fitsReal = [](NumberType type) { return type == NumberType::Real || GetBits(type) < 32; };
        return fitsReal(left) && fitsReal(right) ? NumberType::Real : NumberType::LReal;
    }
    const unsigned width = std::max(GetBits(left), GetBits(right));
    if (GetFamily(left) == GetFamily(right)) return GetNumberType(GetFamily(left), width);
    const bool leftIsSigned = GetFamily(left) == NumberFamily::Signed;
    const bool rightIsSigned = GetFamily(right) == NumberFamily::Signed;
    if (!leftIsSigned && !rightIsSigned) return GetNumberType(NumberFamily::Unsigned, width);
    const NumberType withSign = leftIsSigned ? left : right;
    const NumberType without = leftIsSigned ? right : left;
    if (GetBits(withSign) > GetBits(without)) return withSign;
    if (GetBits(without) == 64) return std::nullopt;
    return GetNumberType(NumberFamily::Signed, GetBits(without) * 2);
}

bool ConvertsImplicitly(NumberType from, NumberType to) {
    if (from == to) return true;
    if (from == NumberType::Bool || to == NumberType::Bool) return false;
    if (IsReal(from)) return to == NumberType::LReal;
    if (IsReal(to)) return IsInteger(from) && GetBits(from) < GetBits(to);
    if (GetFamily(from) == GetFamily(to)) return GetBits(from) < GetBits(to);
    return GetFamily(from) == NumberFamily::Unsigned && GetFamily(to) == NumberFamily::Signed &&
           GetBits(from) < GetBits(to);
}

std::string FormatLiteral(const Number& value, bool plain) {
    const std::string prefix = plain ? "" : std::string(GetName(value.type)) + "#";
    if (value.type == NumberType::Bool) return value.bits != 0 ? "TRUE" : "FALSE";
    if (IsReal(value.type)) {
        std::array<char, 40> text{};
        std::snprintf(text.data(), text.size(), value.type == NumberType::Real ? "%.8e" : "%.16e", value.real);
        return prefix + text.data();
    }
    if (GetFamily(value.type) == NumberFamily::Signed) return prefix + std::to_string(value.Signed());
    if (!IsBits(value.type) || value.bits % 2 == 0) return prefix + std::to_string(value.bits);
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "16#%llX", static_cast<unsigned long long>(value.bits));
    return prefix + text.data();
}

}  // namespace random_programs
