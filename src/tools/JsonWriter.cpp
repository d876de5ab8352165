#include "tools/JsonWriter.h"

#include "platform/FormatText.h"
#include "platform/Transcode.h"

namespace tn61131 {
namespace {

/// The two-character escape of a character below 128; 0 where it has none.
char ShortEscape(char32_t codePoint) {
    switch (codePoint) {
        case U'"': return '"';
        case U'\\': return '\\';
        case U'\b': return 'b';
        case U'\f': return 'f';
        case U'\n': return 'n';
        case U'\r': return 'r';
        case U'\t': return 't';
        default: return 0;
    }
}

void AppendJsonCharacter(std::string& out, char32_t codePoint) {
    if (const char escape = ShortEscape(codePoint); escape != 0) {
        out += '\\';
        out += escape;
    } else if (codePoint < 0x20 || codePoint == 0x7F) {
        out += FormatText("\\u%04x", static_cast<unsigned int>(codePoint));
    } else {
        tn_append_codepoint_to_tnstring(out, codePoint);
    }
}

}  // namespace

void AppendJsonString(std::string& out, std::string_view text) {
    out += '"';
    while (!text.empty()) {
        constexpr std::size_t kLongestSequence = 4;
        const auto available = static_cast<unsigned int>(std::min(text.size(), kLongestSequence));
        char32_t codePoint = 0;
        const unsigned int taken = tn_codepoint_from_tnchar(text.data(), available, codePoint);
        AppendJsonCharacter(out, codePoint);
        text.remove_prefix(taken);
    }
    out += '"';
}

std::string HexText(const unsigned char* data, std::size_t size) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * size);
    for (std::size_t i = 0; i < size; ++i) {
        text += kDigits[data[i] >> 4];
        text += kDigits[data[i] & 15];
    }
    return text;
}

void JsonWriter::Key(std::string_view name) {
    String(name);
    output_ << ':';
    commaDue_ = false;
}

void JsonWriter::String(std::string_view text) {
    Separate();
    scratch_.clear();
    AppendJsonString(scratch_, text);
    output_ << scratch_;
}

void JsonWriter::Number(std::int64_t value) {
    Separate();
    output_ << value;
}

void JsonWriter::Number(std::uint64_t value) {
    Separate();
    output_ << value;
}

void JsonWriter::Boolean(bool value) {
    Separate();
    output_ << (value ? "true" : "false");
}

void JsonWriter::Null() {
    Separate();
    output_ << "null";
}

void JsonWriter::EndLine() {
    output_ << '\n';
    commaDue_ = false;
}

void JsonWriter::Open(char bracket) {
    Separate();
    output_ << bracket;
    commaDue_ = false;
}

void JsonWriter::Close(char bracket) {
    output_ << bracket;
    commaDue_ = true;
}

void JsonWriter::Separate() {
    if (commaDue_) output_ << ',';
    commaDue_ = true;
}

}  // namespace tn61131
