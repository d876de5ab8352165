#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/StringObject.h"

/// What decoders give for a sequence that is not valid.
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

/// Decodes the code point at the start of `count` UTF-8 bytes into `codePoint` and returns the bytes it took; 0 only
/// when `count` is 0. Each maximal invalid part gives one U+FFFD (Unicode standard, section 3.9, recommended practice).
TN61131_API unsigned int tn_decode_utf8(const unsigned char* data, unsigned int count, char32_t& codePoint) noexcept;
/// The same for UTF-16 units; an unpaired surrogate gives U+FFFD and takes one unit.
TN61131_API unsigned int tn_decode_utf16(const unsigned short* units, unsigned int count, char32_t& codePoint) noexcept;
/// Writes 1 to 4 bytes and returns how many. A surrogate or a number above 10FFFF is written as U+FFFD.
TN61131_API unsigned int tn_encode_utf8(char32_t codePoint, unsigned char* out) noexcept;
/// Writes 1 or 2 units and returns how many.
TN61131_API unsigned int tn_encode_utf16(char32_t codePoint, unsigned short* out) noexcept;
/// tn_decode_utf8() for internal text.
TN61131_API unsigned int tn_codepoint_from_tnchar(const char* text, unsigned int count, char32_t& codePoint) noexcept;

/// The largest length up to `limit` at which `text` can be cut without splitting a valid UTF-8 character; the whole
/// length when that is not above `limit`.
[[nodiscard]] TN61131_API std::size_t CutUtf8(std::string_view text, std::size_t limit) noexcept;
/// The number of UTF-16 units (UTF-8 bytes) that a text takes in the other encoding.
[[nodiscard]] TN61131_API std::size_t CountUtf16Units(const unsigned char* data, std::size_t count) noexcept;
[[nodiscard]] TN61131_API std::size_t CountUtf8Bytes(const unsigned short* units, std::size_t count) noexcept;

/// The number of code points, each invalid part counted as one.
[[nodiscard]] TN61131_API unsigned int tn_strlen_of_utf8(const unsigned char* data, unsigned int count) noexcept;
[[nodiscard]] TN61131_API unsigned int tn_strlen_of_utf16(const unsigned short* units, unsigned int count) noexcept;

// Transcoding into a bounded buffer. Each stops before a code point that does not fit and returns the units written; no
// terminator is written unless it is said so.

TN61131_API unsigned int tn_utf8_from_tnchar(unsigned char* out, unsigned int capacity, const char* text,
                                             unsigned int length) noexcept;
TN61131_API unsigned int tn_utf16_from_tnchar(unsigned short* out, unsigned int capacity, const char* text,
                                              unsigned int length) noexcept;
TN61131_API unsigned int tn_utf8_from_utf16(unsigned char* out, unsigned int capacity, const unsigned short* units,
                                            unsigned int count) noexcept;
/// Internal text of at most `outSize` - 1 bytes and a terminating zero; nothing when `outSize` is 0.
TN61131_API unsigned int tn_tnchar_from_utf8(char* out, unsigned int outSize, const unsigned char* data,
                                             unsigned int count) noexcept;
TN61131_API unsigned int tn_tnchar_from_utf16(char* out, unsigned int outSize, const unsigned short* units,
                                              unsigned int count) noexcept;
TN61131_API unsigned int WCharFromUtf8String(const Utf8String* text, char* out, unsigned int outSize) noexcept;
TN61131_API unsigned int WCharFromUtf16String(const Utf16String* text, char* out, unsigned int outSize) noexcept;

/// Appends one character in UTF-8.
TN61131_API void tn_append_codepoint_to_tnstring(std::string& text, char32_t codePoint);
/// New string objects from code points.
[[nodiscard]] TN61131_API Utf8String* tn_utf8_from_utf32(const char32_t* codePoints, unsigned int count);
[[nodiscard]] TN61131_API Utf16String* tn_utf16_from_utf32(const char32_t* codePoints, unsigned int count);
