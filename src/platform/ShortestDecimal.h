#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>

namespace tn61131 {

/// The shortest decimal digits that read back to a number: d1.d2d3... * 10^exponent.
struct ShortestDecimal {
    std::array<char, 24> digits{};
    std::size_t count = 0;
    int exponent = 0;

    [[nodiscard]] std::string_view View() const noexcept { return {digits.data(), count}; }
};

/// The magnitude is finite and has no sign.
template <typename Float>
[[nodiscard]] ShortestDecimal ShortestDecimalOf(Float magnitude) noexcept {
    std::array<char, 32> text;
    const char* const end =
        std::to_chars(text.data(), text.data() + text.size(), magnitude, std::chars_format::scientific).ptr;
    ShortestDecimal decimal;
    const char* at = text.data();
    for (; *at != 'e'; ++at) {
        if (*at != '.') decimal.digits[decimal.count++] = *at;
    }
    ++at;
    if (*at == '+') ++at;  // from_chars() takes no plus sign
    std::from_chars(at, end, decimal.exponent);
    return decimal;
}

}  // namespace tn61131
