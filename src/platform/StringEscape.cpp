#include "platform/StringEscape.h"

#include <algorithm>

#include "platform/Transcode.h"

namespace {

// The unit of `$` and `digits` hexadecimal digits at the start of `escape`, whose length ends where the reading ended.
std::optional<unsigned short> ReadHexEscape(std::string_view& escape, int digits) noexcept {
    unsigned int value = 0;
    std::size_t at = 1;
    for (; digits > 0 && at < escape.size() && HexDigitValue(escape[at]) >= 0; ++at, --digits)
        value = value * 16 + static_cast<unsigned int>(HexDigitValue(escape[at]));
    escape = escape.substr(0, at);
    if (digits != 0) return std::nullopt;
    return static_cast<unsigned short>(value);
}

}  // namespace

std::optional<unsigned short> ReadStringEscape(std::string_view& escape, char quote) noexcept {
    constexpr std::size_t kLongestCharacter = 4;
    const char selector = escape.size() > 1 ? escape[1] : '\0';
    if (HexDigitValue(selector) >= 0) return ReadHexEscape(escape, quote == '"' ? 4 : 2);
    const std::string_view rest = escape.substr(1, kLongestCharacter);
    char32_t ignored = 0;
    escape =
        escape.substr(0, 1 + tn_codepoint_from_tnchar(rest.data(), static_cast<unsigned int>(rest.size()), ignored));
    if (selector == '$' || selector == quote) return static_cast<unsigned char>(selector);
    switch (selector) {
        case 'L':
        case 'l':
        case 'N':
        case 'n': return static_cast<unsigned short>(10);
        case 'R':
        case 'r': return static_cast<unsigned short>(13);
        case 'T':
        case 't': return static_cast<unsigned short>(9);
        default: return std::nullopt;
    }
}
