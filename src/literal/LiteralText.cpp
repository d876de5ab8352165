#include "literal/LiteralText.h"

#include <cmath>
#include <limits>

#include "platform/CharTable.h"

namespace {

constexpr char ToLowerAscii(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

bool EqualsIgnoringCase(std::string_view left, std::string_view right) noexcept {
    if (left.size() != right.size()) return false;
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (ToLowerAscii(left[i]) != ToLowerAscii(right[i])) return false;
    }
    return true;
}

std::uint32_t ReadUnsigned32(const char*& text) noexcept {
    constexpr std::uint64_t kLimit = std::numeric_limits<std::uint32_t>::max();
    const char* at = text;
    while (CTNChar::IsSpace(static_cast<unsigned char>(*at)))
        ++at;
    const bool negative = *at == '-';
    if (*at == '-' || *at == '+') ++at;
    if (!IsAsciiDigit(*at)) return 0;
    std::uint64_t value = 0;
    for (; IsAsciiDigit(*at); ++at) {
        if (value <= kLimit) value = value * 10 + static_cast<std::uint64_t>(*at - '0');
    }
    text = at;
    if (value > kLimit) return static_cast<std::uint32_t>(kLimit);
    const auto number = static_cast<std::uint32_t>(value);
    return negative ? 0 - number : number;
}

std::int64_t SaturateToInt64(double value) noexcept {
    constexpr double kLimit = 9223372036854775808.0;  // 2^63, the first number that does not fit
    if (std::isnan(value)) return 0;
    if (value >= kLimit) return std::numeric_limits<std::int64_t>::max();
    if (value < -kLimit) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

std::uint32_t SaturateToUInt32(double value) noexcept {
    constexpr double kLimit = 4294967296.0;  // 2^32
    if (!(value > 0)) return 0;
    if (value >= kLimit) return std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(value);
}
