#pragma once

#include <span>

#include "platform/Export.h"

/// The string objects of STRING and WSTRING values: an unsigned 16-bit count of units, then the units, no terminator.
/// The same layout as a string in the machine's memory. Made and released only by the functions below; never null.
/// Every function that returns a pointer returns a new object that the caller owns. No object holds more than
/// kMaxStringUnits units: what would be longer is cut, UTF-8 never inside a code point.
struct Utf8String {
    unsigned short length;   ///< bytes
    unsigned char bytes[1];  ///< `length` of them
};
struct Utf16String {
    unsigned short length;    ///< 16-bit units
    unsigned short units[1];  ///< `length` of them
};

inline constexpr unsigned int kMaxStringUnits = 65535;

/// A null object counts as the empty string.
[[nodiscard]] inline std::span<const unsigned char> GetUnits(const Utf8String* text) noexcept {
    return text == nullptr ? std::span<const unsigned char>() : std::span(&text->bytes[0], text->length);
}
[[nodiscard]] inline std::span<const unsigned short> GetUnits(const Utf16String* text) noexcept {
    return text == nullptr ? std::span<const unsigned short>() : std::span(&text->units[0], text->length);
}

/// An object of `count` units, all zero.
[[nodiscard]] TN61131_API Utf8String* Utf8StringAlloc(unsigned int count);
/// From UTF-8 bytes as they are, valid or not.
[[nodiscard]] TN61131_API Utf8String* Utf8StringCopy(const unsigned char* data, unsigned int count);
/// From internal text (UTF-8).
[[nodiscard]] TN61131_API Utf8String* Utf8StringCopy(const char* text, unsigned int length);
/// From UTF-16; an unpaired surrogate becomes U+FFFD.
[[nodiscard]] TN61131_API Utf8String* Utf8StringCopy(const unsigned short* units, unsigned int count);
[[nodiscard]] TN61131_API Utf8String* Utf8StringCopy(const Utf8String* text);
/// Null is allowed.
TN61131_API void Utf8StringFree(Utf8String* text) noexcept;

[[nodiscard]] TN61131_API Utf16String* Utf16StringAlloc(unsigned int count);
[[nodiscard]] TN61131_API Utf16String* Utf16StringCopy(const unsigned short* units, unsigned int count);
/// From UTF-8; each maximal invalid part becomes one U+FFFD.
[[nodiscard]] TN61131_API Utf16String* Utf16StringCopy(const unsigned char* data, unsigned int count);
[[nodiscard]] TN61131_API Utf16String* Utf16StringCopy(const char* text, unsigned int length);
[[nodiscard]] TN61131_API Utf16String* Utf16StringCopy(const Utf16String* text);
TN61131_API void Utf16StringFree(Utf16String* text) noexcept;

/// Unit by unit, unsigned, then by length: negative, 0 or positive.
[[nodiscard]] TN61131_API int Utf8StringCompare(const Utf8String* left, const Utf8String* right) noexcept;
[[nodiscard]] TN61131_API int Utf16StringCompare(const Utf16String* left, const Utf16String* right) noexcept;

// The string functions of IEC 61131-3 (table 29). Lengths and positions count units; positions are 1-based.

/// The number of units.
[[nodiscard]] TN61131_API unsigned int Utf8StringLen(const Utf8String* text) noexcept;
[[nodiscard]] TN61131_API unsigned int Utf16StringLen(const Utf16String* text) noexcept;
/// The first (last) `length` units; none for a length below 1, all for one beyond the end.
[[nodiscard]] TN61131_API Utf8String* Utf8StringLeft(const Utf8String* text, int length);
[[nodiscard]] TN61131_API Utf16String* Utf16StringLeft(const Utf16String* text, int length);
[[nodiscard]] TN61131_API Utf8String* Utf8StringRight(const Utf8String* text, int length);
[[nodiscard]] TN61131_API Utf16String* Utf16StringRight(const Utf16String* text, int length);
/// Those of the positions `position` to `position` + `length` - 1 that exist.
[[nodiscard]] TN61131_API Utf8String* Utf8StringMid(const Utf8String* text, int length, int position);
[[nodiscard]] TN61131_API Utf16String* Utf16StringMid(const Utf16String* text, int length, int position);
/// `inserted` behind `position`: below 1 in front, beyond the end behind everything.
[[nodiscard]] TN61131_API Utf8String* Utf8StringInsert(const Utf8String* text, const Utf8String* inserted,
                                                       int position);
[[nodiscard]] TN61131_API Utf16String* Utf16StringInsert(const Utf16String* text, const Utf16String* inserted,
                                                         int position);
/// Without those of the positions `position` to `position` + `length` - 1 that exist.
[[nodiscard]] TN61131_API Utf8String* Utf8StringDelete(const Utf8String* text, int length, int position);
[[nodiscard]] TN61131_API Utf16String* Utf16StringDelete(const Utf16String* text, int length, int position);
/// `length` units from `position` on replaced: the inserted text begins at `position`.
[[nodiscard]] TN61131_API Utf8String* Utf8StringReplace(const Utf8String* text, const Utf8String* inserted, int length,
                                                        int position);
[[nodiscard]] TN61131_API Utf16String* Utf16StringReplace(const Utf16String* text, const Utf16String* inserted,
                                                          int length, int position);
/// 0-based position of the first occurrence; -1 for none and for an empty `wanted`.
[[nodiscard]] TN61131_API int Utf8StringFind(const Utf8String* text, const Utf8String* wanted) noexcept;
[[nodiscard]] TN61131_API int Utf16StringFind(const Utf16String* text, const Utf16String* wanted) noexcept;
/// Element `index`, numbered from 1, of the text split at `separator`; empty for any other number.
[[nodiscard]] TN61131_API Utf8String* Utf8StringGetElement(const Utf8String* text, unsigned char separator, int index);
[[nodiscard]] TN61131_API Utf16String* Utf16StringGetElement(const Utf16String* text, unsigned short separator,
                                                             int index);
[[nodiscard]] TN61131_API Utf8String* Utf8StringConcat(const Utf8String* left, const Utf8String* right);
[[nodiscard]] TN61131_API Utf16String* Utf16StringConcat(const Utf16String* left, const Utf16String* right);
