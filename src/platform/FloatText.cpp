#include "platform/FloatText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>

namespace {

constexpr int kLowestFixedExponent = -5;
constexpr int kFirstScientificExponent = 16;

/// The digits d1 d2 d3... of the value d1.d2d3... * 10^exponent.
struct ShortestDigits {
    std::array<char, 24> digits;
    std::size_t count;
    int exponent;

    [[nodiscard]] std::string_view View() const noexcept { return {digits.data(), count}; }
};

// The scientific form is "d[.ddd]e[+-]xx[x]".
template <typename T>
ShortestDigits ShortestDigitsOf(T magnitude) {
    std::array<char, 32> text;
    const char* const end =
        std::to_chars(text.data(), text.data() + text.size(), magnitude, std::chars_format::scientific).ptr;
    ShortestDigits result{};
    const char* at = text.data();
    for (; *at != 'e'; ++at) {
        if (*at != '.') result.digits[result.count++] = *at;
    }
    const bool negative = at[1] == '-';
    for (at += 2; at != end; ++at)
        result.exponent = result.exponent * 10 + (*at - '0');
    if (negative) result.exponent = -result.exponent;
    return result;
}

void AppendScientific(std::string& out, const ShortestDigits& number) {
    const std::string_view digits = number.View();
    out.push_back(digits.front());
    out.push_back('.');
    out.append(digits.size() > 1 ? digits.substr(1) : "0");
    out.append(number.exponent < 0 ? "E-" : "E+");
    const int exponent = std::abs(number.exponent);
    if (exponent < 10) out.push_back('0');
    std::array<char, 4> text;
    out.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), exponent).ptr);
}

void AppendFixed(std::string& out, const ShortestDigits& number) {
    const std::string_view digits = number.View();
    if (number.exponent < 0) {
        out.append("0.");
        out.append(static_cast<std::size_t>(-number.exponent - 1), '0');
        out.append(digits);
        return;
    }
    const std::size_t whole = static_cast<std::size_t>(number.exponent) + 1;
    if (digits.size() > whole) {
        out.append(digits.substr(0, whole));
        out.push_back('.');
        out.append(digits.substr(whole));
        return;
    }
    out.append(digits);
    out.append(whole - digits.size(), '0');
    out.append(".0");
}

template <typename T>
void AppendShortestOf(std::string& out, T value) {
    if (std::isnan(value)) {
        out.append("nan");
        return;
    }
    if (std::signbit(value)) out.push_back('-');
    if (std::isinf(value)) {
        out.append("inf");
        return;
    }
    const ShortestDigits number = ShortestDigitsOf(std::fabs(value));
    if (number.exponent >= kLowestFixedExponent && number.exponent < kFirstScientificExponent) {
        AppendFixed(out, number);
    } else {
        AppendScientific(out, number);
    }
}

}  // namespace

void AppendShortest(std::string& out, float value) {
    AppendShortestOf(out, value);
}

void AppendShortest(std::string& out, double value) {
    AppendShortestOf(out, value);
}
