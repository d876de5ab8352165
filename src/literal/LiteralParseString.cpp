#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "diag/Messages.h"
#include "platform/StringEscape.h"
#include "platform/StringObject.h"
#include "platform/Transcode.h"
#include "value/ValueLiteral.h"

using tn61131::Fail;

namespace {

// What the literals of 8-bit and 16-bit characters differ in.
struct NarrowText {
    using Unit = unsigned char;
    static constexpr char kQuote = '\'';
    static constexpr unsigned int kMaxUnits = 4;
    static constexpr ElementaryType kString = ElementaryType::String;
    static constexpr ElementaryType kChar = ElementaryType::Char;
    static constexpr Message kQuoteExpected = Message::ExpectedSingleQuote;

    static unsigned int Encode(char32_t codePoint, Unit* out) noexcept { return tn_encode_utf8(codePoint, out); }
    static unsigned int Decode(const Unit* units, unsigned int count, char32_t& codePoint) noexcept {
        return tn_decode_utf8(units, count, codePoint);
    }
    static Utf8String* MakeString(const std::vector<Unit>& units) {
        return Utf8StringCopy(units.data(), static_cast<unsigned int>(units.size()));
    }
};

struct WideText {
    using Unit = unsigned short;
    static constexpr char kQuote = '"';
    static constexpr unsigned int kMaxUnits = 2;
    static constexpr ElementaryType kString = ElementaryType::WString;
    static constexpr ElementaryType kChar = ElementaryType::WChar;
    static constexpr Message kQuoteExpected = Message::ExpectedDoubleQuote;

    static unsigned int Encode(char32_t codePoint, Unit* out) noexcept { return tn_encode_utf16(codePoint, out); }
    static unsigned int Decode(const Unit* units, unsigned int count, char32_t& codePoint) noexcept {
        return tn_decode_utf16(units, count, codePoint);
    }
    static Utf16String* MakeString(const std::vector<Unit>& units) {
        return Utf16StringCopy(units.data(), static_cast<unsigned int>(units.size()));
    }
};

unsigned int DecodeText(std::string_view text, char32_t& codePoint) noexcept {
    return tn_codepoint_from_tnchar(text.data(), static_cast<unsigned int>(text.size()), codePoint);
}

// Reads the content between the quotes into `units`. False, with the escape in `invalid`, when one is not valid. What
// an escape stands for is one unit as it is, no character to encode.
template <typename Text>
bool ReadContent(std::string_view content, std::vector<typename Text::Unit>& units, std::string_view& invalid) {
    units.reserve(content.size());
    const auto isSpecial = [](char c) { return c == '$' || static_cast<unsigned char>(c) >= 0x80; };
    while (!content.empty()) {
        const auto plainEnd = std::find_if(content.begin(), content.end(), isSpecial);
        units.insert(units.end(), content.begin(), plainEnd);
        content.remove_prefix(static_cast<std::size_t>(plainEnd - content.begin()));
        if (content.empty()) break;
        if (content.front() == '$') {
            std::string_view escape = content;
            const std::optional<unsigned short> unit = ReadStringEscape(escape, Text::kQuote);
            if (!unit.has_value()) {
                invalid = escape;
                return false;
            }
            units.push_back(static_cast<typename Text::Unit>(*unit));
            content.remove_prefix(escape.size());
            continue;
        }
        char32_t codePoint = 0;
        content.remove_prefix(DecodeText(content, codePoint));
        typename Text::Unit encoded[Text::kMaxUnits];
        units.insert(units.end(), encoded, encoded + Text::Encode(codePoint, encoded));
    }
    return true;
}

template <typename Text>
std::string ToText(const std::vector<typename Text::Unit>& units) {
    std::string text;
    const auto count = static_cast<unsigned int>(units.size());
    char32_t codePoint = 0;
    for (unsigned int at = 0; at < count;) {
        at += Text::Decode(units.data() + at, count - at, codePoint);
        tn_append_codepoint_to_tnstring(text, codePoint);
    }
    return text;
}

// Splits a literal into the type that its prefix says (Undefined without one) and the content between the quotes; the
// closing quote may be missing. False when the opening quote is missing or the prefix belongs to the other family.
template <typename Text>
bool SplitLiteral(const char* text, CValueType& type, std::string_view& content) {
    const char* rest = text == nullptr ? "" : text;
    type.ParseStringTypePrefix(rest);
    if (type.IsDefined() && type.GetType() != Text::kString && type.GetType() != Text::kChar) return false;
    if (*rest != Text::kQuote) return false;
    content = rest + 1;
    if (!content.empty() && content.back() == Text::kQuote) content.remove_suffix(1);
    return true;
}

}  // namespace

template <typename Text>
bool CValueLiteral::ParseCharacters(CErrorLog& log, const ErrorLocation& location, const char* text) {
    ClearValue();
    CValueType type;
    std::string_view content;
    if (!SplitLiteral<Text>(text, type, content)) {
        const ElementaryType named = type.GetType() == Text::kString ? Text::kString : Text::kChar;
        return Fail<Text::kQuoteExpected>(log, location, CValueType(named).GetTypeName(false));
    }
    std::vector<typename Text::Unit> units;
    std::string_view invalid;
    if (!ReadContent<Text>(content, units, invalid)) return Fail<Message::InvalidEscape>(log, location, invalid);
    if (type.GetType() != Text::kChar) {
        SetScalar(Text::kString, Text::MakeString(units));
        return true;
    }
    SetScalar(Text::kChar, units.empty() ? typename Text::Unit{0} : units.front());
    if (units.size() <= 1) return true;
    return Fail<Message::NotASingleCharacter>(log, location, ToText<Text>(units), GetTypeName(false));
}

bool CValueLiteral::StringToString(CErrorLog& log, const ErrorLocation& location, const char* text) {
    return ParseCharacters<NarrowText>(log, location, text);
}

bool CValueLiteral::StringToWString(CErrorLog& log, const ErrorLocation& location, const char* text) {
    return ParseCharacters<WideText>(log, location, text);
}
