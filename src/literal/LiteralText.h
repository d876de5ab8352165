#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/StringEscape.h"

// Steps that the literal parsers share. All of them are total over arbitrary bytes and independent of the host's
// locale.

/// A null text counts as empty.
[[nodiscard]] constexpr bool IsEmpty(const char* text) noexcept {
    return text == nullptr || *text == '\0';
}
[[nodiscard]] constexpr bool IsAsciiDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}
[[nodiscard]] constexpr bool IsAsciiLetter(char c) noexcept {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
/// Equality without regard to the case of ASCII letters.
[[nodiscard]] bool EqualsIgnoringCase(std::string_view left, std::string_view right) noexcept;

/// The decimal number at the start of `text` as a 32-bit strtoul() takes it: white space and a sign may stand in front,
/// a "-" negates modulo 2^32, numbers beyond 32 bits give 4294967295 whatever their sign. `text` moves behind it; 0 and
/// unmoved when there is none.
[[nodiscard]] std::uint32_t ReadUnsigned32(const char*& text) noexcept;

/// Toward zero, saturating at the limits of the type; NaN gives 0.
[[nodiscard]] std::int64_t SaturateToInt64(double value) noexcept;
[[nodiscard]] std::uint32_t SaturateToUInt32(double value) noexcept;
