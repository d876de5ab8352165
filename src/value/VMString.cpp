#include "value/VMString.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/StringObject.h"
#include "platform/Transcode.h"

namespace {

unsigned int ClampLength(std::size_t length) noexcept {
    return static_cast<unsigned int>(std::min<std::size_t>(length, std::numeric_limits<unsigned int>::max()));
}

/// Appends the characters before the first one that is not valid.
template <typename Unit, typename Decode>
void DecodeValidPrefix(const Unit* data, unsigned int count, Decode decode, std::string& out) {
    for (unsigned int at = 0; at < count;) {
        char32_t codePoint = 0;
        at += decode(data + at, count - at, codePoint);
        if (codePoint == kReplacementCharacter) return;
        tn_append_codepoint_to_tnstring(out, codePoint);
    }
}

}  // namespace

unsigned short StoreVMString(const std::string& text, unsigned char* dest, unsigned int capacity) {
    return StoreVMString(text.data(), ClampLength(text.size()), dest, capacity);
}

unsigned short StoreVMString(const char* text, unsigned int length, unsigned char* dest, unsigned int capacity) {
    return static_cast<unsigned short>(tn_utf8_from_tnchar(dest, std::min(capacity, kMaxStringUnits), text, length));
}

unsigned short StoreVMWString(const std::string& text, unsigned short* dest, unsigned int capacity) {
    return StoreVMWString(text.data(), ClampLength(text.size()), dest, capacity);
}

unsigned short StoreVMWString(const char* text, unsigned int length, unsigned short* dest, unsigned int capacity) {
    return static_cast<unsigned short>(tn_utf16_from_tnchar(dest, std::min(capacity, kMaxStringUnits), text, length));
}

unsigned int GetNullTerminatedWStringFromVMString(char* out, unsigned int outSize, const unsigned char* data,
                                                  unsigned int count) {
    return tn_tnchar_from_utf8(out, outSize, data, count);
}

unsigned int GetNullTerminatedWStringFromVMWString(char* out, unsigned int outSize, const unsigned short* data,
                                                   unsigned int count) {
    return tn_tnchar_from_utf16(out, outSize, data, count);
}

void GetWStringFromVMString(const unsigned char* data, unsigned int count, std::string& out) {
    out.clear();
    out.reserve(tn_strlen_of_utf8(data, count));
    DecodeValidPrefix(data, count, tn_decode_utf8, out);
}

void GetWStringFromVMWString(const unsigned short* data, unsigned int count, std::string& out) {
    out.clear();
    out.reserve(tn_strlen_of_utf16(data, count));
    DecodeValidPrefix(data, count, tn_decode_utf16, out);
}

int CompareWStringWithVMWString(const char* text, unsigned int length, const unsigned short* data, unsigned int count) {
    for (unsigned int i = 0; i < std::min(length, count); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        unsigned short unit = 0;
        std::memcpy(&unit, data + i, sizeof unit);  // a string in the machine's memory may lie at an odd address
        if (byte != unit) return byte > unit ? 1 : -1;
    }
    if (length == count) return 0;
    return length > count ? 1 : -1;
}
