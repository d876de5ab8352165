#include "platform/CharTable.h"

#include <cstdint>

#include <unicode/uchar.h>

namespace {

bool IsCodePoint(char32_t codePoint) noexcept {
    return codePoint <= UCHAR_MAX_VALUE;
}
UChar32 ToICU(char32_t codePoint) noexcept {
    return static_cast<UChar32>(codePoint);
}

}  // namespace

char32_t UnicodeCharTable::ToUpper(char32_t codePoint) noexcept {
    return IsCodePoint(codePoint) ? static_cast<char32_t>(u_toupper(ToICU(codePoint))) : codePoint;
}

char32_t UnicodeCharTable::ToLower(char32_t codePoint) noexcept {
    return IsCodePoint(codePoint) ? static_cast<char32_t>(u_tolower(ToICU(codePoint))) : codePoint;
}

bool UnicodeCharTable::IsLetter(char32_t codePoint) noexcept {
    return IsCodePoint(codePoint) && u_isalpha(ToICU(codePoint)) != 0;
}

bool UnicodeCharTable::IsWhiteSpace(char32_t codePoint) noexcept {
    return IsCodePoint(codePoint) && u_isUWhiteSpace(ToICU(codePoint)) != 0;
}

bool UnicodeCharTable::IsPrintable(char32_t codePoint) noexcept {
    constexpr std::uint32_t kNeverPrinted = U_GC_C_MASK | U_GC_Z_MASK;
    if (!IsCodePoint(codePoint)) return false;
    return codePoint == U' ' || (U_GET_GC_MASK(ToICU(codePoint)) & kNeverPrinted) == 0;
}
