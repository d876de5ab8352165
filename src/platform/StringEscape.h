#pragma once

#include <optional>
#include <string_view>

/// The value of a hexadecimal digit; -1 for any other character.
[[nodiscard]] constexpr int HexDigitValue(char c) noexcept {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

/// The unit that the escape at the start of `escape`, which begins with `$`, stands for in a string between quotes of
/// this kind (IEC 61131-3, 6.3.3): two hexadecimal digits between single quotes, four between double quotes. Nothing
/// when the escape is not valid. Either way `escape` shrinks to the characters that were looked at: `$` and one
/// character, or `$` and hexadecimal digits.
[[nodiscard]] std::optional<unsigned short> ReadStringEscape(std::string_view& escape, char quote) noexcept;
