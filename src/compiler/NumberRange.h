#pragma once

#include <cstdint>
#include <optional>

#include "compiler/Tree.h"

namespace tn61131::st {

__extension__ typedef __int128 Int128;  ///< holds every number of a 64-bit type

/// Whole numbers from lower to upper, both included.
struct NumberRange {
    Int128 lower = 0;
    Int128 upper = 0;
    [[nodiscard]] constexpr bool Contains(Int128 number) const noexcept { return lower <= number && number <= upper; }
    [[nodiscard]] constexpr bool Contains(const NumberRange& other) const noexcept {
        return lower <= other.lower && other.upper <= upper;
    }
};

/// Whether numbers of a type of the machine are two's complement; TIME is.
[[nodiscard]] bool IsSignedStorage(ElementaryType type) noexcept;
/// The unsigned type of the same width as an integer or bit string.
[[nodiscard]] ElementaryType GetUnsignedStorage(ElementaryType type) noexcept;
/// Integers, bit strings, BOOL as 0 and 1; nothing for other types.
[[nodiscard]] std::optional<NumberRange> GetRangeOfStorage(ElementaryType type) noexcept;
/// The bits of a value of a type as the number that they mean.
[[nodiscard]] Int128 ToNumber(ElementaryType type, std::int64_t bits) noexcept;
/// The value of a constant that is an integer, a bit string or a BOOL; nothing for other expressions.
[[nodiscard]] std::optional<Int128> GetConstantNumber(const Expr& expr) noexcept;
/// The numbers that an expression can give, as far as its form tells; at most those of its type. Nothing for types that
/// are no whole numbers.
[[nodiscard]] std::optional<NumberRange> GetRange(const Expr& expr) noexcept;

}  // namespace tn61131::st
