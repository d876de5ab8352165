#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/Transcode.h"

namespace tn61131::jsonata {

/// One character of a text as TextFunctions.h describes them.
struct CodePoint {
    char32_t value = 0;
    std::size_t size = 0;  ///< in bytes; at least 1
};

[[nodiscard]] constexpr bool IsSurrogate(char32_t codePoint) noexcept {
    return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}

/// The character at a byte offset, which is below the text's size. A surrogate gives its own number, any other invalid
/// part U+FFFD.
[[nodiscard]] inline CodePoint DecodeAt(std::string_view text, std::size_t offset) noexcept {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data()) + offset;
    const std::size_t left = text.size() - offset;
    if (bytes[0] < 0x80) return {bytes[0], 1};
    if (bytes[0] == 0xED && left >= 3 && bytes[1] >= 0xA0 && bytes[1] <= 0xBF && (bytes[2] & 0xC0U) == 0x80) {
        return {0xD000U | ((bytes[1] & 0x3FU) << 6U) | (bytes[2] & 0x3FU), 3};
    }
    char32_t codePoint = 0;
    const unsigned int size = tn_decode_utf8(bytes, left < 4 ? static_cast<unsigned int>(left) : 4U, codePoint);
    return {codePoint, size};
}

/// Appends one character; a surrogate as three bytes.
inline void AppendCodePoint(std::string& text, char32_t codePoint) {
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
    } else if (IsSurrogate(codePoint)) {
        text += static_cast<char>(0xED);
        text += static_cast<char>(0x80U | ((codePoint >> 6U) & 0x3FU));
        text += static_cast<char>(0x80U | (codePoint & 0x3FU));
    } else {
        tn_append_codepoint_to_tnstring(text, codePoint);
    }
}

/// The text with every surrogate and every other invalid part replaced by U+FFFD.
[[nodiscard]] inline std::string ToValidUtf8(std::string_view text) {
    std::string valid;
    valid.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const CodePoint codePoint = DecodeAt(text, at);
        AppendCodePoint(valid, IsSurrogate(codePoint.value) ? kReplacementCharacter : codePoint.value);
        at += codePoint.size;
    }
    return valid;
}

/// All characters of a text.
[[nodiscard]] inline std::u32string ToCodePoints(std::string_view text) {
    std::u32string codePoints;
    codePoints.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const CodePoint codePoint = DecodeAt(text, at);
        codePoints += codePoint.value;
        at += codePoint.size;
    }
    return codePoints;
}

}  // namespace tn61131::jsonata
