#include "platform/Round.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

namespace {

/// The shortest decimal digits of a number without its sign: digits[0].digits[1]... x 10^exponent, the first not zero.
struct Decimal {
    std::array<char, 24> digits;
    int count;
    int exponent;
};

template <typename Float>
Decimal ShortestDecimal(Float magnitude) noexcept {
    std::array<char, 40> text{};
    const char* const end =
        std::to_chars(text.data(), text.data() + text.size(), magnitude, std::chars_format::scientific).ptr;
    Decimal decimal{};
    const char* at = text.data();
    for (; *at != 'e'; ++at) {
        if (*at != '.') decimal.digits[static_cast<std::size_t>(decimal.count++)] = *at;
    }
    ++at;
    if (*at == '+') ++at;  // from_chars() takes no plus sign
    std::from_chars(at, end, decimal.exponent);
    return decimal;
}

/// Keeps `count` digits, at least 0 and fewer than there are; half away from zero. No digit is left for a zero.
void RoundDigits(Decimal& decimal, int count) noexcept {
    const bool up = decimal.digits[static_cast<std::size_t>(count)] >= '5';
    decimal.count = count;
    if (!up) return;
    while (decimal.count > 0 && decimal.digits[static_cast<std::size_t>(decimal.count - 1)] == '9')
        --decimal.count;
    if (decimal.count > 0) {
        ++decimal.digits[static_cast<std::size_t>(decimal.count - 1)];
        return;
    }
    decimal.digits[0] = '1';
    decimal.count = 1;
    ++decimal.exponent;
}

template <typename Float>
Float ReadBack(const Decimal& decimal) noexcept {
    std::array<char, 40> text{};
    char* at = text.data();
    for (int i = 0; i < decimal.count; ++i)
        *at++ = decimal.digits[static_cast<std::size_t>(i)];
    *at++ = 'e';
    at = std::to_chars(at, text.data() + text.size(), decimal.exponent - (decimal.count - 1)).ptr;
    Float value = 0;
    if (std::from_chars(text.data(), at, value).ec == std::errc::result_out_of_range)
        return std::numeric_limits<Float>::infinity();
    return value;
}

template <typename Float>
Float Round(Float value, int digits, bool decimalPlaces) noexcept {
    if (!std::isfinite(value)) return value;
    if (!decimalPlaces && digits <= 0) return 0;
    if (value == 0) return value;
    Decimal decimal = ShortestDecimal(std::fabs(value));
    const std::int64_t kept = decimalPlaces ? std::int64_t{decimal.exponent} + 1 + digits : digits;
    if (kept >= decimal.count) return value;
    if (kept < 0) return std::copysign(Float{0}, value);
    RoundDigits(decimal, static_cast<int>(kept));
    return std::copysign(decimal.count == 0 ? Float{0} : ReadBack<Float>(decimal), value);
}

}  // namespace

float TNRoundFloat::RoundFloat(float value, int digits, bool decimalPlaces) noexcept {
    return Round(value, digits, decimalPlaces);
}

double TNRoundFloat::RoundDouble(double value, int digits, bool decimalPlaces) noexcept {
    return Round(value, digits, decimalPlaces);
}
