#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace random_programs {

enum class NumberType : std::uint8_t {
    Bool,
    SInt,
    Int,
    DInt,
    LInt,
    USInt,
    UInt,
    UDInt,
    ULInt,
    Byte,
    Word,
    DWord,
    LWord,
    Real,
    LReal
};
inline constexpr unsigned kNumberTypes = 15;

enum class NumberFamily : std::uint8_t { Bool, Signed, Unsigned, Bits, Real };

[[nodiscard]] const char* GetName(NumberType type) noexcept;
[[nodiscard]] NumberFamily GetFamily(NumberType type) noexcept;
[[nodiscard]] unsigned GetBits(NumberType type) noexcept;  ///< 1 for BOOL
[[nodiscard]] NumberType GetNumberType(NumberFamily family, unsigned bits) noexcept;
[[nodiscard]] inline bool IsInteger(NumberType type) noexcept {
    return GetFamily(type) == NumberFamily::Signed || GetFamily(type) == NumberFamily::Unsigned;
}
[[nodiscard]] inline bool IsBits(NumberType type) noexcept {
    return GetFamily(type) == NumberFamily::Bits;
}
[[nodiscard]] inline bool IsReal(NumberType type) noexcept {
    return GetFamily(type) == NumberFamily::Real;
}

/// A value of an elementary type. Whole numbers are kept as the 64-bit pattern of their extended value, REAL as the
/// double of the same value.
struct Number {
    NumberType type = NumberType::Bool;
    std::uint64_t bits = 0;
    double real = 0;

    [[nodiscard]] static Number Whole(NumberType type, std::uint64_t pattern);  ///< cut to the type
    [[nodiscard]] static Number Floating(NumberType type, double value);
    [[nodiscard]] std::int64_t Signed() const noexcept { return static_cast<std::int64_t>(bits); }
    [[nodiscard]] bool IsZero() const noexcept { return random_programs::IsReal(type) ? real == 0 : bits == 0; }
};

enum class Operator : std::uint8_t { Add, Sub, Mul, Div, Mod, And, Or, Xor, EQ, NE, LT, GT, LE, GE };

/// Both operands are of one type; a divisor of Div is not zero.
[[nodiscard]] Number Apply(Operator op, const Number& left, const Number& right);
[[nodiscard]] Number Negate(const Number& value);
[[nodiscard]] Number Complement(const Number& value);
enum class Shift : std::uint8_t { Left, Right, RotateRight, RotateLeft };
/// A negative count shifts the other way.
[[nodiscard]] Number ApplyShift(Shift shift, const Number& value, std::int64_t count);
/// What X_TO_Y gives. A REAL or LREAL must lie inside of the 64-bit integers when it becomes one.
[[nodiscard]] Number Convert(const Number& value, NumberType type);

/// The type in which two operands of different types meet; nothing where the language refuses them.
[[nodiscard]] std::optional<NumberType> FindCommonType(NumberType left, NumberType right, bool mixesBits);
/// Whether a value converts without being asked, whatever the dialect.
[[nodiscard]] bool ConvertsImplicitly(NumberType from, NumberType to);

/// A literal; with a type prefix unless `plain`.
[[nodiscard]] std::string FormatLiteral(const Number& value, bool plain);

}  // namespace random_programs
