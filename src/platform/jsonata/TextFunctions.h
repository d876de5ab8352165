#pragma once

#include <compare>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/jsonata/Failure.h"

namespace tn61131::jsonata {

// Texts are UTF-8. A surrogate without its partner, which an escape in a string literal can make, stands as the three
// bytes that UTF-8 would give its number; every other invalid byte counts as one character.

/// The number of code points.
std::size_t CountCodePoints(std::string_view text) noexcept;
/// The number of UTF-16 units, in which JavaScript counts positions.
std::size_t CountUTF16Units(std::string_view text) noexcept;

/// $substring, in code points: `start` from the end where negative; all that follows without `length`.
std::string_view Substring(std::string_view text, double start, std::optional<double> length) noexcept;

/// $pad to |width| code points, on the left where `width` is negative. `fill` is repeated, a blank where it is empty.
/// Fails with D1001 where the padding would be longer than the memory that one text may take.
Result<std::string> Pad(std::string_view text, double width, std::string_view fill);

/// $trim: runs of blanks, tabs and line ends become one blank each, those at the ends vanish.
std::string Trim(std::string_view text);

/// Unicode's full mappings without the rules of a language.
std::string ToUpperCase(std::string_view text);
std::string ToLowerCase(std::string_view text);

/// The order of < and > and of sorting: by UTF-16 units, where U+FFFF stands above U+10000.
std::strong_ordering CompareTexts(std::string_view left, std::string_view right) noexcept;

}  // namespace tn61131::jsonata
