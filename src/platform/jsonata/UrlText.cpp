#include "platform/jsonata/UrlText.h"

#include <array>
#include <cstdint>

#include "platform/jsonata/CodePoints.h"

namespace tn61131::jsonata {

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";
/// What stands for itself besides letters and digits (ECMAScript, section 19.2.6).
constexpr std::string_view kUnreservedMarks = "-_.!~*'()";
/// What has a meaning in a URL.
constexpr std::string_view kReserved = ";/?:@&=+$,#";

bool IsAlphanumeric(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

bool Contains(std::string_view set, char c) {
    return set.find(c) != std::string_view::npos;
}

Result<std::string> Encode(std::string_view text, std::string_view kept, std::string_view function) {
    std::string encoded;
    for (std::size_t at = 0; at < text.size();) {
        const CodePoint codePoint = DecodeAt(text, at);
        if (IsSurrogate(codePoint.value)) return Failure{"D3140", std::string(text), std::string(function)};
        for (const char c : text.substr(at, codePoint.size)) {
            if (IsAlphanumeric(c) || Contains(kUnreservedMarks, c) || Contains(kept, c)) {
                encoded += c;
            } else {
                const auto byte = static_cast<unsigned char>(c);
                encoded += '%';
                encoded += kHexDigits[byte >> 4U];
                encoded += kHexDigits[byte & 0xFU];
            }
        }
        at += codePoint.size;
    }
    return encoded;
}

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

/// The byte of the escape at `at`; -1 where there is none.
int ReadEscape(std::string_view text, std::size_t at) {
    if (text.size() - at < 3 || text[at] != '%') return -1;
    const int high = HexValue(text[at + 1]);
    const int low = HexValue(text[at + 2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

/// How many bytes the UTF-8 character has that begins with `byte`; 0 for none.
std::size_t LengthFromLead(int byte) {
    if (byte < 0x80) return 1;
    if (byte < 0xC2 || byte > 0xF4) return 0;
    return byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

/// Appends the character whose escapes begin at `at`. False where they give none.
bool DecodeCharacter(std::string_view text, std::size_t& at, std::string_view kept, std::string& decoded) {
    const int lead = ReadEscape(text, at);
    const std::size_t length = lead < 0 ? 0 : LengthFromLead(lead);
    if (length == 0) return false;
    if (length == 1 && Contains(kept, static_cast<char>(lead))) {
        decoded += text.substr(at, 3);
        at += 3;
        return true;
    }
    std::array<unsigned char, 4> bytes{};
    for (std::size_t i = 0; i < length; ++i, at += 3) {
        const int byte = at < text.size() ? ReadEscape(text, at) : -1;
        if (byte < 0) return false;
        bytes[i] = static_cast<unsigned char>(byte);
    }
    char32_t codePoint = 0;
    if (tn_decode_utf8(bytes.data(), static_cast<unsigned int>(length), codePoint) != length) return false;
    decoded.append(reinterpret_cast<const char*>(bytes.data()), length);
    return true;
}

Result<std::string> Decode(std::string_view text, std::string_view kept, std::string_view function) {
    std::string decoded;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] != '%') {
            decoded += text[at++];
        } else if (!DecodeCharacter(text, at, kept, decoded)) {
            return Failure{"D3140", std::string(text), std::string(function)};
        }
    }
    return decoded;
}

constexpr std::string_view kBase64Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The six bits of a character; -1 for one outside the alphabet. The URL-safe alphabet is read too.
int Base64Value(char c) {
    if (c == '-') c = '+';
    if (c == '_') c = '/';
    const std::size_t place = kBase64Alphabet.find(c);
    return place == std::string_view::npos ? -1 : static_cast<int>(place);
}

}  // namespace

Result<std::string> EncodeUrl(std::string_view text) {
    return Encode(text, kReserved, "encodeUrl");
}

Result<std::string> EncodeUrlComponent(std::string_view text) {
    return Encode(text, {}, "encodeUrlComponent");
}

Result<std::string> DecodeUrl(std::string_view text) {
    return Decode(text, kReserved, "decodeUrl");
}

Result<std::string> DecodeUrlComponent(std::string_view text) {
    return Decode(text, {}, "decodeUrlComponent");
}

Result<std::string> EncodeBase64(std::string_view text) {
    std::string bytes;
    for (const char32_t codePoint : ToCodePoints(text)) {
        if (codePoint > 0xFF) return Failure{"T0410", std::string(text), "base64encode"};
        bytes += static_cast<char>(codePoint);
    }
    std::string encoded;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i)
            group = group << 8U | (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0U);
        for (unsigned int i = 0; i < 4; ++i)
            encoded += at + i > bytes.size() ? '=' : kBase64Alphabet[group >> (18 - 6 * i) & 0x3FU];
    }
    return encoded;
}

std::string DecodeBase64(std::string_view text) {
    std::string decoded;
    std::uint32_t group = 0;
    unsigned int bits = 0;
    for (const char c : text.substr(0, text.find('='))) {
        const int value = Base64Value(c);
        if (value < 0) continue;
        group = (group << 6U | static_cast<std::uint32_t>(value)) & 0xFFFFU;
        bits += 6;
        if (bits < 8) continue;
        bits -= 8;
        AppendCodePoint(decoded, group >> bits & 0xFFU);
    }
    return decoded;
}

}  // namespace tn61131::jsonata
