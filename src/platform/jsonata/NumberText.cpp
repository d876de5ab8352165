#include "platform/jsonata/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "platform/FloatText.h"
#include "platform/ReadDouble.h"
#include "platform/jsonata/DecimalDigits.h"

namespace tn61131::jsonata {

namespace {

/// How many significant digits $string() keeps of a number with a fraction.
constexpr int kStringDigits = 15;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Moves behind the digits at `at`; false where there is none.
bool SkipDigits(std::string_view text, std::size_t& at) {
    const std::size_t start = at;
    while (at < text.size() && IsDigit(text[at]))
        ++at;
    return at > start;
}

/// -?digits(.digits)?([eE][+-]?digits)?
bool IsDecimal(std::string_view text) {
    std::size_t at = text.starts_with('-') ? 1 : 0;
    if (!SkipDigits(text, at)) return false;
    if (at < text.size() && text[at] == '.' && !SkipDigits(text, ++at)) return false;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        ++at;
        if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
        if (!SkipDigits(text, at)) return false;
    }
    return at == text.size();
}

/// The value of a digit up to base 36; 36 for what is none.
unsigned int DigitValue(char c) {
    if (IsDigit(c)) return static_cast<unsigned int>(c - '0');
    if (c >= 'a' && c <= 'z') return static_cast<unsigned int>(c - 'a') + 10;
    if (c >= 'A' && c <= 'Z') return static_cast<unsigned int>(c - 'A') + 10;
    return 36;
}

constexpr std::string_view kDigits = "0123456789abcdefghijklmnopqrstuvwxyz";

/// The bits of a digit of a base with a prefix: 0x, 0o, 0b; 0 for any other letter.
unsigned int BitsOfPrefix(char letter) {
    switch (letter) {
        case 'x':
        case 'X': return 4;
        case 'o':
        case 'O': return 3;
        case 'b':
        case 'B': return 1;
        default: return 0;
    }
}

/// The digits behind a prefix as hexadecimal ones, which can be read with correct rounding; empty where they are none.
std::string ToHexadecimal(std::string_view digits, unsigned int bits) {
    std::string binary;
    for (const char c : digits) {
        const unsigned int value = DigitValue(c);
        if (value >= 1U << bits) return {};
        for (unsigned int bit = bits; bit-- > 0;)
            binary += (value >> bit & 1U) != 0 ? '1' : '0';
    }
    binary.insert(0, (4 - binary.size() % 4) % 4, '0');
    std::string hexadecimal;
    for (std::size_t at = 0; at < binary.size(); at += 4) {
        unsigned int value = 0;
        for (std::size_t bit = 0; bit < 4; ++bit)
            value = value * 2 + (binary[at + bit] == '1' ? 1 : 0);
        hexadecimal += kDigits[value];
    }
    return hexadecimal;
}

double ReadWhole(const std::string& text) {
    const char* at = text.c_str();
    return tn_strtod(at);
}

}  // namespace

std::string PrintNumber(double value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
    std::string text;
    AppendECMAScriptNumber(text, value == 0 ? 0.0 : value);
    return text;
}

Result<std::string> PrintRoundedNumber(double value) {
    if (!std::isfinite(value)) return Failure{"D3001", PrintNumber(value), {}};
    if (value == std::trunc(value)) return PrintNumber(value);
    // More digits than are kept: ties go away from zero, which the exact digits decide.
    std::array<char, 64> exact{};
    std::to_chars(exact.data(), exact.data() + exact.size(), std::fabs(value), std::chars_format::scientific,
                  2 * kStringDigits);
    std::array<char, 64> rounded{};  // stays terminated
    std::to_chars(rounded.data(), rounded.data() + rounded.size() - 1, value, std::chars_format::scientific,
                  kStringDigits - 1);
    double result = ReadWhole(rounded.data());
    // "d.ddd...": the first digit that is not kept stands behind the point and the digits that are.
    const std::string_view cut(exact.data() + kStringDigits + 1, kStringDigits);
    if (cut[0] == '5' && cut.find_first_not_of('0', 1) == std::string_view::npos &&
        (exact[kStringDigits] - '0') % 2 == 0) {
        std::string up(exact.data(), kStringDigits + 1);
        ++up.back();  // an even digit: no carry
        const std::string_view all(exact.data());
        up += all.substr(all.find('e'));
        result = std::copysign(ReadWhole(up), value);
    }
    return PrintNumber(result);
}

Result<double> ParseNumber(std::string_view text) {
    const Failure failure{"D3030", std::string(text), {}};
    std::string number;
    const unsigned int bits = text.size() > 2 && text[0] == '0' ? BitsOfPrefix(text[1]) : 0;
    if (bits != 0) {
        number = ToHexadecimal(text.substr(2), bits);
        if (number.empty()) return failure;
        number.insert(0, "0x");
    } else {
        if (!IsDecimal(text)) return failure;
        number = text;
    }
    const double value = ReadWhole(number);
    if (!std::isfinite(value)) return failure;
    return value;
}

Result<std::string> FormatBase(double value, double radix) {
    radix = RoundNumber(radix, 0);
    if (!(radix >= 2 && radix <= 36)) return Failure{"D3100", PrintNumber(radix), {}};
    value = RoundNumber(value, 0);
    if (!std::isfinite(value)) return Failure{"D1001", PrintNumber(value), {}};
    std::string digits;
    if (radix == 10) {
        digits = DecimalDigits::Of(value).GetWhole();
    } else {
        // Beyond this limit the number does not tell its last digits: they are zeros, as in decimal notation.
        constexpr double kExactLimit = 9223372036854775808.0;
        double magnitude = std::fabs(value);
        for (; magnitude >= kExactLimit; magnitude /= radix)
            digits += '0';
        const auto base = static_cast<std::uint64_t>(radix);
        for (auto rest = static_cast<std::uint64_t>(magnitude); rest > 0; rest /= base)
            digits += kDigits[rest % base];
        std::reverse(digits.begin(), digits.end());
    }
    if (digits.empty()) digits = "0";
    if (value < 0) digits.insert(0, 1, '-');
    return digits;
}

double RoundNumber(double value, double precision) {
    if (!std::isfinite(value) || std::isnan(precision)) return value;
    // Beyond these places there is nothing of a double.
    constexpr double kMostPlaces = 400;
    DecimalDigits decimal = DecimalDigits::Of(value);
    decimal.RoundToPlaces(static_cast<int>(std::clamp(std::trunc(precision), -kMostPlaces, kMostPlaces)));
    const double magnitude = decimal.ToDouble();
    return value < 0 && magnitude != 0 ? -magnitude : magnitude;
}

}  // namespace tn61131::jsonata
