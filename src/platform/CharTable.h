#pragma once

#include "platform/Export.h"

/// Properties and simple (one to one) case mappings of Unicode characters. Numbers that are no character map to
/// themselves and have no property.
class TN61131_API UnicodeCharTable {
 public:
    [[nodiscard]] static char32_t ToUpper(char32_t codePoint) noexcept;
    [[nodiscard]] static char32_t ToLower(char32_t codePoint) noexcept;
    /// General category L*.
    [[nodiscard]] static bool IsLetter(char32_t codePoint) noexcept;
    /// The White_Space property.
    [[nodiscard]] static bool IsWhiteSpace(char32_t codePoint) noexcept;
    /// Neither control, format, surrogate, private use nor unassigned, nor a separator other than the space.
    [[nodiscard]] static bool IsPrintable(char32_t codePoint) noexcept;
};

/// Classes of single storage units.
class TN61131_API CTNChar {
 public:
    /// A byte of a STRING: 9 to 13 and 32.
    [[nodiscard]] static bool IsSpace(unsigned char byte) noexcept { return (byte >= 9 && byte <= 13) || byte == 32; }
    /// A unit of a WSTRING: the White_Space property.
    [[nodiscard]] static bool IsSpace(unsigned short unit) noexcept { return UnicodeCharTable::IsWhiteSpace(unit); }
};
