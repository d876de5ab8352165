#include "platform/TextInputFromStringToken.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "platform/ParseToken.h"
#include "platform/StringEscape.h"
#include "platform/Transcode.h"

namespace {

constexpr std::size_t kLongestCharacter = 4;

unsigned int DecodeText(std::string_view text, char32_t& codePoint) noexcept {
    const std::size_t count = std::min(text.size(), kLongestCharacter);
    return tn_codepoint_from_tnchar(text.data(), static_cast<unsigned int>(count), codePoint);
}

// What stands between the quotes; the closing one may be missing. Not terminated, a last quote is one that was escaped.
std::string_view ContentOf(const CParseToken& token, char& quote) noexcept {
    std::string_view text = token.GetText();
    const std::size_t open = text.find_first_of("'\"");
    if (open == std::string_view::npos) return {};
    quote = text[open];
    text.remove_prefix(open + 1);
    if (!token.IsNotTerminated() && text.ends_with(quote)) text.remove_suffix(1);
    return text;
}

std::string JoinBytes(std::string_view content) {
    std::string bytes;
    while (!content.empty()) {
        const std::size_t plain = std::min(content.find('$'), content.size());
        bytes.append(content.substr(0, plain));
        content.remove_prefix(plain);
        if (content.empty()) break;
        std::string_view escape = content;
        const std::optional<unsigned short> unit = ReadStringEscape(escape, '\'');
        unit ? bytes.append(1, static_cast<char>(*unit)) : bytes.append(escape);
        content.remove_prefix(escape.size());
    }
    return bytes;
}

void AppendUnits(std::vector<unsigned short>& units, std::string_view text) {
    while (!text.empty()) {
        char32_t codePoint = 0;
        text.remove_prefix(DecodeText(text, codePoint));
        unsigned short encoded[2];
        units.insert(units.end(), encoded, encoded + tn_encode_utf16(codePoint, encoded));
    }
}

std::string JoinUnits(std::string_view content) {
    std::vector<unsigned short> units;
    while (!content.empty()) {
        const std::size_t plain = std::min(content.find('$'), content.size());
        AppendUnits(units, content.substr(0, plain));
        content.remove_prefix(plain);
        if (content.empty()) break;
        std::string_view escape = content;
        if (const std::optional<unsigned short> unit = ReadStringEscape(escape, '"')) {
            units.push_back(*unit);
        } else {
            AppendUnits(units, escape);
        }
        content.remove_prefix(escape.size());
    }
    std::string text;
    const auto count = static_cast<unsigned int>(units.size());
    for (unsigned int at = 0; at < count;) {
        char32_t codePoint = 0;
        at += tn_decode_utf16(units.data() + at, count - at, codePoint);
        tn_append_codepoint_to_tnstring(text, codePoint);
    }
    return text;
}

}  // namespace

CTextInputFromStringToken::CTextInputFromStringToken(const CParseToken& token) {
    char quote = '\0';
    const std::string_view content = ContentOf(token, quote);
    content_ = quote == '"' ? JoinUnits(content) : JoinBytes(content);
}

CTextInputFromStringToken::~CTextInputFromStringToken() = default;

std::optional<char32_t> CTextInputFromStringToken::Decode() {
    if (position_ == content_.size()) return std::nullopt;
    char32_t codePoint = 0;
    position_ += DecodeText(std::string_view(content_).substr(position_), codePoint);
    return codePoint;
}
