#include "platform/FloatText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <string_view>

#include "platform/ShortestDecimal.h"

using tn61131::ShortestDecimal;

namespace {

constexpr int kLowestFixedExponent = -5;
constexpr int kFirstScientificExponent = 16;

void AppendScientific(std::string& out, const ShortestDecimal& number) {
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

void AppendFixed(std::string& out, const ShortestDecimal& number) {
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
    const ShortestDecimal number = tn61131::ShortestDecimalOf(std::fabs(value));
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

void AppendECMAScriptNumber(std::string& out, double value) {
    const ShortestDecimal decimal = tn61131::ShortestDecimalOf(std::fabs(value));
    const std::string_view digits = decimal.View();
    if (std::signbit(value)) out += '-';
    if (decimal.exponent >= 21 || decimal.exponent < -6) {
        out.append(digits.substr(0, 1));
        if (digits.size() > 1) out.append(".").append(digits.substr(1));
        out.append(decimal.exponent < 0 ? "e-" : "e+").append(std::to_string(std::abs(decimal.exponent)));
        return;
    }
    if (decimal.exponent < 0) {
        out.append("0.").append(static_cast<std::size_t>(-decimal.exponent - 1), '0').append(digits);
        return;
    }
    const std::size_t whole = static_cast<std::size_t>(decimal.exponent) + 1;
    out.append(digits.substr(0, whole));
    if (digits.size() < whole) out.append(whole - digits.size(), '0');
    if (digits.size() > whole) out.append(".").append(digits.substr(whole));
}
