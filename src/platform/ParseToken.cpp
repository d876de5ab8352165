#include "platform/ParseToken.h"

#include <algorithm>
#include <array>

#include "platform/CharTable.h"
#include "platform/Transcode.h"

namespace {

constexpr bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}
constexpr char32_t FoldAscii(unsigned char c) noexcept {
    return c >= 'A' && c <= 'Z' ? c + U'a' - U'A' : c;
}

// Takes one character from the front of a text that is not empty and gives its lower-case form; what is no character
// gives its bytes, above all code points.
char32_t TakeFolded(std::string_view& text) noexcept {
    constexpr char32_t kBehindCharacters = 0x80000000;
    constexpr std::string_view kEncodedReplacement = "\xEF\xBF\xBD";
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80) {
        text.remove_prefix(1);
        return FoldAscii(first);
    }
    char32_t codePoint = 0;
    const unsigned int size = tn_codepoint_from_tnchar(
        text.data(), static_cast<unsigned int>(std::min<std::size_t>(text.size(), 4)), codePoint);
    const bool valid = codePoint != kReplacementCharacter || text.starts_with(kEncodedReplacement);
    text.remove_prefix(valid ? size : 1);
    return valid ? UnicodeCharTable::ToLower(codePoint) : kBehindCharacters + first;
}

// The texts of the one-character types.
constexpr auto kCharacterNames = [] {
    std::array<std::array<char, 2>, CParseToken::kFirstCompoundType> names{};
    for (std::size_t code = '!'; code <= '~'; ++code) {
        const char c = static_cast<char>(code);
        const char lower = static_cast<char>(FoldAscii(static_cast<unsigned char>(c)));
        if (!IsDigit(c) && (lower < 'a' || lower > 'z')) names[code][0] = c;
    }
    return names;
}();

}  // namespace

int CParseToken::CompareIdentifier(std::string_view left, std::string_view right) noexcept {
    while (!left.empty() && !right.empty()) {
        const char32_t fromLeft = TakeFolded(left);
        const char32_t fromRight = TakeFolded(right);
        if (fromLeft != fromRight) return fromLeft < fromRight ? -1 : 1;
    }
    return static_cast<int>(!left.empty()) - static_cast<int>(!right.empty());
}

bool CParseToken::IsNumberExponent(std::string_view text) noexcept {
    return (text.starts_with('E') || text.starts_with('e')) && std::all_of(text.begin() + 1, text.end(), IsDigit);
}

const char* CParseToken::GetTokenName(int type) noexcept {
    switch (type) {
        case kEndOfInput: return "End of input";
        case kLineEnd: return "Line end";
        case kWhiteSpace: return "White space";
        case kOtherCharacter: return "Character";
        case kIdentifier: return "Identifier";
        case kNumber: return "Number";
        default: break;
    }
    if (type < 0 || type >= kFirstCompoundType) return nullptr;
    const char* const name = kCharacterNames[static_cast<std::size_t>(type)].data();
    return *name != '\0' ? name : nullptr;
}
