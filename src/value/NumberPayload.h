#pragma once

#include <cstdint>
#include <limits>

#include "value/ValueLiteral.h"

// Payloads read as numbers, and numbers fitted into integers; the common ground of conversions and operators.

namespace tn61131 {

/// Whether the payload is a whole number: BOOL, integers, bit strings, characters, times and dates.
[[nodiscard]] inline bool HoldsCount(const CValueType& value) noexcept {
    const PayloadKind kind = GetTypeInfo(value.GetType()).payload;
    return kind == PayloadKind::Signed || kind == PayloadKind::Unsigned || kind == PayloadKind::Bool;
}

/// CHAR and WCHAR: numbers to integers, but to nothing else.
[[nodiscard]] inline bool IsCharacter(const CValueType& value) noexcept {
    return value.GetType() == ElementaryType::Char || value.GetType() == ElementaryType::WChar;
}

[[nodiscard]] inline bool IsText(const CValueType& value) noexcept {
    return value.GetType() == ElementaryType::String || value.GetType() == ElementaryType::WString;
}

/// The number of a value that HoldsCount(), extended to 64 bits by the sign of its type; 0 or 1 for a BOOL.
[[nodiscard]] inline std::uint64_t ReadCount(const CValueLiteral& value) noexcept {
    const TypeInfo& info = GetTypeInfo(value.GetType());
    const unsigned int unused = (64U - info.size * 8U) & 63U;
    const std::uint64_t top = value.GetPayload<std::uint64_t>() << unused;
    if (info.payload == PayloadKind::Signed) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(top) >> unused);
    }
    const std::uint64_t bits = top >> unused;
    return info.payload == PayloadKind::Bool ? static_cast<std::uint64_t>(bits != 0) : bits;
}

/// The number of a REAL or LREAL.
[[nodiscard]] inline double ReadReal(const CValueLiteral& value) noexcept {
    if (value.GetType() == ElementaryType::Real) return static_cast<double>(value.GetPayload<float>());
    return value.GetPayload<double>();
}

/// Truncated toward zero; the nearest limit of T for what lies beyond it, 0 for NaN.
template <typename T>
[[nodiscard]] T SaturateTo(double number) noexcept {
    constexpr T kMin = std::numeric_limits<T>::min();
    constexpr T kMax = std::numeric_limits<T>::max();
    constexpr T kHalf = kMax / 2 + 1;  // a power of two, so exact as a floating-point number
    constexpr double kBeyond = 2.0 * static_cast<double>(kHalf);
    if (number != number) return 0;
    if (number <= static_cast<double>(kMin)) return kMin;
    if (number >= kBeyond) return kMax;
    return static_cast<T>(number);
}

}  // namespace tn61131
