#include "platform/Transcode.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>

namespace {

constexpr char32_t kLastCodePoint = 0x10FFFF;

constexpr bool IsSurrogate(char32_t codePoint) noexcept {
    return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}
constexpr bool IsHighSurrogate(unsigned short unit) noexcept {
    return (unit & 0xFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(unsigned short unit) noexcept {
    return (unit & 0xFC00) == 0xDC00;
}

/// What may follow a lead byte. The second byte's range excludes overlong forms, surrogates and numbers above 10FFFF;
/// all later ones are 80 to BF.
struct LeadByte {
    std::uint8_t length = 0;  // 0: not a lead byte
    std::uint8_t secondFirst = 0x80;
    std::uint8_t secondLast = 0xBF;
    std::uint8_t valueMask = 0;
};

constexpr std::array<LeadByte, 256> MakeLeadBytes() {
    std::array<LeadByte, 256> rows{};
    for (std::size_t byte = 0xC2; byte <= 0xDF; ++byte)
        rows[byte] = {2, 0x80, 0xBF, 0x1F};
    for (std::size_t byte = 0xE0; byte <= 0xEF; ++byte)
        rows[byte] = {3, 0x80, 0xBF, 0x0F};
    for (std::size_t byte = 0xF0; byte <= 0xF4; ++byte)
        rows[byte] = {4, 0x80, 0xBF, 0x07};
    rows[0xE0].secondFirst = 0xA0;
    rows[0xED].secondLast = 0x9F;
    rows[0xF0].secondFirst = 0x90;
    rows[0xF4].secondLast = 0x8F;
    return rows;
}
constexpr std::array<LeadByte, 256> kLeadBytes = MakeLeadBytes();

struct Decoded {
    char32_t codePoint;
    unsigned int size;
};

/// Decodes a sequence that does not begin with an ASCII byte; `count` is at least 1.
Decoded DecodeMultiByte(const unsigned char* data, std::size_t count) noexcept {
    const LeadByte lead = kLeadBytes[data[0]];
    if (lead.length == 0) return {kReplacementCharacter, 1};
    char32_t codePoint = static_cast<char32_t>(data[0] & lead.valueMask);
    std::uint8_t first = lead.secondFirst;
    std::uint8_t last = lead.secondLast;
    for (unsigned int i = 1; i < lead.length; ++i) {
        if (i >= count || data[i] < first || data[i] > last) return {kReplacementCharacter, i};
        codePoint = codePoint << 6 | static_cast<char32_t>(data[i] & 0x3F);
        first = 0x80;
        last = 0xBF;
    }
    return {codePoint, lead.length};
}

inline Decoded Decode(const unsigned char* data, std::size_t count) noexcept {
    return data[0] < 0x80 ? Decoded{data[0], 1} : DecodeMultiByte(data, count);
}

inline Decoded Decode(const unsigned short* units, std::size_t count) noexcept {
    const unsigned short unit = units[0];
    if (!IsSurrogate(unit)) return {unit, 1};
    if (IsHighSurrogate(unit) && count > 1 && IsLowSurrogate(units[1])) {
        const auto high = static_cast<char32_t>(unit & 0x3FF);
        const auto low = static_cast<char32_t>(units[1] & 0x3FF);
        return {0x10000 + (high << 10 | low), 2};
    }
    return {kReplacementCharacter, 1};
}

constexpr char32_t ToScalar(char32_t codePoint) noexcept {
    return IsSurrogate(codePoint) || codePoint > kLastCodePoint ? kReplacementCharacter : codePoint;
}

constexpr unsigned int EncodedSize(char32_t scalar, const unsigned char*) noexcept {
    return scalar < 0x80 ? 1 : scalar < 0x800 ? 2 : scalar < 0x10000 ? 3 : 4;
}
constexpr unsigned int EncodedSize(char32_t scalar, const unsigned short*) noexcept {
    return scalar < 0x10000 ? 1 : 2;
}

void Encode(char32_t scalar, unsigned char* out) noexcept {
    const auto continuation = [scalar](unsigned int shift) {
        return static_cast<unsigned char>(0x80 | (scalar >> shift & 0x3F));
    };
    switch (EncodedSize(scalar, out)) {
        case 1: out[0] = static_cast<unsigned char>(scalar); break;
        case 2:
            out[0] = static_cast<unsigned char>(0xC0 | scalar >> 6);
            out[1] = continuation(0);
            break;
        case 3:
            out[0] = static_cast<unsigned char>(0xE0 | scalar >> 12);
            out[1] = continuation(6);
            out[2] = continuation(0);
            break;
        default:
            out[0] = static_cast<unsigned char>(0xF0 | scalar >> 18);
            out[1] = continuation(12);
            out[2] = continuation(6);
            out[3] = continuation(0);
            break;
    }
}

void Encode(char32_t scalar, unsigned short* out) noexcept {
    if (scalar < 0x10000) {
        out[0] = static_cast<unsigned short>(scalar);
        return;
    }
    out[0] = static_cast<unsigned short>(0xD800 | (scalar - 0x10000) >> 10);
    out[1] = static_cast<unsigned short>(0xDC00 | ((scalar - 0x10000) & 0x3FF));
}

/// How many of the leading units are ASCII; looks at 8 bytes at a time.
template <typename Unit>
std::size_t AsciiPrefix(const Unit* units, std::size_t count) noexcept {
    constexpr std::size_t kStep = sizeof(std::uint64_t) / sizeof(Unit);
    constexpr std::uint64_t kBeyondAscii = sizeof(Unit) == 1 ? 0x8080808080808080 : 0xFF80FF80FF80FF80;
    std::size_t at = 0;
    for (; count - at >= kStep; at += kStep) {
        std::uint64_t block = 0;
        std::memcpy(&block, units + at, sizeof block);
        if ((block & kBeyondAscii) != 0) break;
    }
    while (at < count && units[at] < 0x80)
        ++at;
    return at;
}

template <typename To, typename From>
void CopyAscii(To* out, const From* in, std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; ++i)
        out[i] = static_cast<To>(in[i]);
}

template <typename To, typename From>
std::size_t EncodedLength(const From* in, std::size_t count) noexcept {
    std::size_t length = 0;
    for (std::size_t at = 0; at < count;) {
        const std::size_t ascii = AsciiPrefix(in + at, count - at);
        length += ascii;
        at += ascii;
        while (at < count && in[at] >= 0x80) {
            const Decoded decoded = Decode(in + at, count - at);
            length += EncodedSize(decoded.codePoint, static_cast<const To*>(nullptr));
            at += decoded.size;
        }
    }
    return length;
}

/// Stops before a code point that does not fit; returns the units written.
template <typename To, typename From>
std::size_t TranscodeBounded(To* out, std::size_t capacity, const From* in, std::size_t count) noexcept {
    std::size_t written = 0;
    for (std::size_t at = 0; at < count;) {
        const std::size_t ascii = AsciiPrefix(in + at, std::min(count - at, capacity - written));
        CopyAscii(out + written, in + at, ascii);
        written += ascii;
        at += ascii;
        if (written == capacity) break;
        while (at < count && in[at] >= 0x80) {
            const Decoded decoded = Decode(in + at, count - at);
            const std::size_t size = EncodedSize(decoded.codePoint, out);
            if (capacity - written < size) return written;
            Encode(decoded.codePoint, out + written);
            written += size;
            at += decoded.size;
        }
    }
    return written;
}

template <typename Unit>
unsigned int CountCodePoints(const Unit* units, std::size_t count) noexcept {
    std::size_t codePoints = 0;
    for (std::size_t at = 0; at < count;) {
        const std::size_t ascii = AsciiPrefix(units + at, count - at);
        codePoints += ascii;
        at += ascii;
        for (; at < count && units[at] >= 0x80; ++codePoints)
            at += Decode(units + at, count - at).size;
    }
    return static_cast<unsigned int>(codePoints);
}

template <typename Unit>
unsigned int TerminatedText(char* out, unsigned int outSize, const Unit* units, unsigned int count) noexcept {
    if (outSize == 0) return 0;
    const std::size_t written = TranscodeBounded(reinterpret_cast<unsigned char*>(out), outSize - 1, units, count);
    out[written] = '\0';
    return static_cast<unsigned int>(written);
}

template <typename To>
std::size_t FittingLength(const char32_t* codePoints, unsigned int count) noexcept {
    std::size_t length = 0;
    for (unsigned int i = 0; i < count; ++i) {
        const std::size_t size = EncodedSize(ToScalar(codePoints[i]), static_cast<const To*>(nullptr));
        if (kMaxStringUnits - length < size) break;
        length += size;
    }
    return length;
}

template <typename To>
void EncodeAll(To* out, std::size_t length, const char32_t* codePoints) noexcept {
    for (To* const end = out + length; out != end; ++codePoints) {
        const char32_t scalar = ToScalar(*codePoints);
        Encode(scalar, out);
        out += EncodedSize(scalar, out);
    }
}

const unsigned char* BytesOf(const char* text) noexcept {
    return reinterpret_cast<const unsigned char*>(text);
}

}  // namespace

unsigned int tn_decode_utf8(const unsigned char* data, unsigned int count, char32_t& codePoint) noexcept {
    if (count == 0) return 0;
    const Decoded decoded = Decode(data, count);
    codePoint = decoded.codePoint;
    return decoded.size;
}

unsigned int tn_decode_utf16(const unsigned short* units, unsigned int count, char32_t& codePoint) noexcept {
    if (count == 0) return 0;
    const Decoded decoded = Decode(units, count);
    codePoint = decoded.codePoint;
    return decoded.size;
}

unsigned int tn_encode_utf8(char32_t codePoint, unsigned char* out) noexcept {
    const char32_t scalar = ToScalar(codePoint);
    Encode(scalar, out);
    return EncodedSize(scalar, out);
}

unsigned int tn_encode_utf16(char32_t codePoint, unsigned short* out) noexcept {
    const char32_t scalar = ToScalar(codePoint);
    Encode(scalar, out);
    return EncodedSize(scalar, out);
}

unsigned int tn_codepoint_from_tnchar(const char* text, unsigned int count, char32_t& codePoint) noexcept {
    return tn_decode_utf8(BytesOf(text), count, codePoint);
}

std::size_t CutUtf8(std::string_view text, std::size_t limit) noexcept {
    if (text.size() <= limit) return text.size();
    // A character that passes the limit began in one of the three bytes before it.
    for (std::size_t start = limit; start > 0 && limit - start < 3;) {
        --start;
        const unsigned char* const data = BytesOf(text.data()) + start;
        const std::size_t length = kLeadBytes[data[0]].length;
        if (length == 0) continue;
        const bool complete = Decode(data, text.size() - start).size == length;
        return complete && start + length > limit ? start : limit;
    }
    return limit;
}

std::size_t CountUtf16Units(const unsigned char* data, std::size_t count) noexcept {
    return EncodedLength<unsigned short>(data, count);
}

std::size_t CountUtf8Bytes(const unsigned short* units, std::size_t count) noexcept {
    return EncodedLength<unsigned char>(units, count);
}

unsigned int tn_strlen_of_utf8(const unsigned char* data, unsigned int count) noexcept {
    return CountCodePoints(data, count);
}

unsigned int tn_strlen_of_utf16(const unsigned short* units, unsigned int count) noexcept {
    return CountCodePoints(units, count);
}

unsigned int tn_utf8_from_tnchar(unsigned char* out, unsigned int capacity, const char* text,
                                 unsigned int length) noexcept {
    return static_cast<unsigned int>(TranscodeBounded(out, capacity, BytesOf(text), length));
}

unsigned int tn_utf16_from_tnchar(unsigned short* out, unsigned int capacity, const char* text,
                                  unsigned int length) noexcept {
    return static_cast<unsigned int>(TranscodeBounded(out, capacity, BytesOf(text), length));
}

unsigned int tn_utf8_from_utf16(unsigned char* out, unsigned int capacity, const unsigned short* units,
                                unsigned int count) noexcept {
    return static_cast<unsigned int>(TranscodeBounded(out, capacity, units, count));
}

unsigned int tn_tnchar_from_utf8(char* out, unsigned int outSize, const unsigned char* data,
                                 unsigned int count) noexcept {
    return TerminatedText(out, outSize, data, count);
}

unsigned int tn_tnchar_from_utf16(char* out, unsigned int outSize, const unsigned short* units,
                                  unsigned int count) noexcept {
    return TerminatedText(out, outSize, units, count);
}

unsigned int WCharFromUtf8String(const Utf8String* text, char* out, unsigned int outSize) noexcept {
    const auto units = GetUnits(text);
    return TerminatedText(out, outSize, units.data(), static_cast<unsigned int>(units.size()));
}

unsigned int WCharFromUtf16String(const Utf16String* text, char* out, unsigned int outSize) noexcept {
    const auto units = GetUnits(text);
    return TerminatedText(out, outSize, units.data(), static_cast<unsigned int>(units.size()));
}

void tn_append_codepoint_to_tnstring(std::string& text, char32_t codePoint) {
    std::array<unsigned char, 4> bytes;
    const unsigned int size = tn_encode_utf8(codePoint, bytes.data());
    text.append(reinterpret_cast<const char*>(bytes.data()), size);
}

Utf8String* tn_utf8_from_utf32(const char32_t* codePoints, unsigned int count) {
    const std::size_t length = FittingLength<unsigned char>(codePoints, count);
    Utf8String* const result = Utf8StringAlloc(static_cast<unsigned int>(length));
    EncodeAll(&result->bytes[0], length, codePoints);
    return result;
}

Utf16String* tn_utf16_from_utf32(const char32_t* codePoints, unsigned int count) {
    const std::size_t length = FittingLength<unsigned short>(codePoints, count);
    Utf16String* const result = Utf16StringAlloc(static_cast<unsigned int>(length));
    EncodeAll(&result->units[0], length, codePoints);
    return result;
}
