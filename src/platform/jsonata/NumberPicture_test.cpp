#include "platform/jsonata/NumberPicture.h"

#include <cmath>
#include <limits>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tn61131::jsonata {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The text, or "!" and the code of the failure.
std::string Shown(const Result<std::string>& result) {
    return result ? *result : "!" + std::string(result.GetFailure().code);
}

struct Row {
    double value;
    std::string_view picture;
    std::string_view expected;
    std::string_view why;
};

TEST(FormatNumber, FollowsThePicture) {
    constexpr Row kRows[] = {
        // The examples of XPath Functions 3.1, section 4.7.6.
        {12345.6, "#,###.00", "12,345.60", "grouping and fraction"},
        {12345678.9, "9,999.99", "12,345,678.90", "any digit of the family is a digit"},
        {123.9, "9999", "0124", "rounded"},
        {0.14, "01%", "14%", "percent"},
        {0.14, "001\u2030", "140\u2030", "per mille"},
        {-6, "000", "-006", "minus sign before the digits"},
        {1234.5678, "00.000e0", "12.346e2", "exponent by the digits of the whole part"},
        {0.234, "0.0e0", "2.3e-1", "negative exponent"},
        {0.234, "#.00e0", "0.23e0", "no scaling without mandatory digits"},
        {0.234, ".00e0", ".23e0", "no whole part at all"},
        // Whole part.
        {0, "#", "0", "at least one digit"},
        {0, "#.#", ".0", "at least one digit"},
        {0.5, "#.0", ".5", "whole part may vanish"},
        {5, "123", "005", "all digits count alike"},
        {1234567, "#,##0", "1,234,567", "regular groups repeat"},
        {1234567, "000,00", "1,23,45,67", "one separator is regular"},
        {1234567, "0,000,00", "12,345,67", "irregular ones do not repeat"},
        {12, "0,000,00", "0,000,12", "irregular ones in a short number"},
        {1234.5, "0000", "1234", "half to even"},
        {1235.5, "0000", "1236", "half to even"},
        // Fraction.
        {1.005, "0.00", "1.00", "half to even on the decimal digits"},
        {0.135, "0.00", "0.14", "half to even on the decimal digits"},
        {1234.56789, "9,999.999,999", "1,234.567,890", "groups of the fraction"},
        {0.1, "0.###,#", "0.1", "no group behind the last digit"},
        {12, "0.##", "12", "no point without digits behind it"},
        {12, "0.", "12", "no point without digits behind it"},
        {99.996, "0.00", "100.00", "carries into the whole part"},
        // Exponents.
        {0, "0.00e0", "0.00e0", "zero"},
        {-42, "0e0", "-4e1", "sign"},
        {9.99, "0.0e0", "10.0e0", "rounded after scaling"},
        {1234, "#e0", "0.1e4", "one digit of the fraction where there are none"},
        {0.00012, "0.0e00", "1.2e-04", "digits of the exponent"},
        {5, "e0", "e5", "an exponent separator without mantissa is text"},
        // Prefix and suffix.
        {185.2812, "PREFIX##00.000###SUFFIX", "PREFIX185.2812SUFFIX", "text around the digits"},
        {-5, "0;(0)", "(5)", "a picture of its own for negative numbers"},
        {5, "0;(0)", "5", "a picture of its own for negative numbers"},
        {-5, "$0", "-$5", "minus sign before the prefix"},
        {5, "0 euro", "5 euro", "a letter behind text is text"},
        // What is no usual number.
        {kNaN, "$0", "NaN", "no prefix"},
        {kInfinity, "$0.00 x", "$Infinity x", "prefix and suffix"},
        {-kInfinity, "0", "-Infinity", "minus sign"},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(Shown(FormatNumber(row.value, row.picture, {})), row.expected) << row.picture << ": " << row.why;
    }
}

TEST(FormatNumber, LargestAndSmallestNumbersShowAllTheirDigits) {
    EXPECT_EQ(Shown(FormatNumber(1e21, "0", {})), "1000000000000000000000");
    EXPECT_EQ(Shown(FormatNumber(std::numeric_limits<double>::max(), "#,##0", {})).size(), 309U + 102U);
    EXPECT_EQ(Shown(FormatNumber(std::numeric_limits<double>::max(), "0%", {})), "Infinity%") << "times 100";
    EXPECT_EQ(Shown(FormatNumber(5e-324, "0.0e0", {})), "5.0e-324");
    EXPECT_EQ(Shown(FormatNumber(5e-324, "0.00", {})), "0.00");
}

TEST(FormatNumber, RefusesWhatIsNoPicture) {
    constexpr Row kRows[] = {
        {20, "0;0;0", "!D3080", "three sub-pictures"},
        {20, "0.0.0", "!D3081", "two points"},
        {20, "#0%%", "!D3082", "two percent signs"},
        {20, "#0\u2030\u2030", "!D3083", "two per-mille signs"},
        {20, "#0%\u2030", "!D3084", "both"},
        {20, ".e0", "!D3085", "no digit"},
        {20, "", "!D3085", "no digit"},
        {20, "0;", "!D3085", "no digit in the second"},
        {20, "0+.e0", "!D3086", "text between digits"},
        {20, "---", "!D3086", "text alone"},
        {20, "%%", "!D3086", "text alone"},
        {20, "0,.0", "!D3087", "separators side by side"},
        {20, "0.,0", "!D3087", "separators side by side"},
        {20, "0,", "!D3088", "separator at the end"},
        {20, "0,,0", "!D3089", "two separators side by side"},
        {20, "0#.0", "!D3090", "optional digit behind a mandatory one"},
        {20, "0.#0", "!D3091", "mandatory digit behind an optional one"},
        {20, "#0.0e0%", "!D3092", "percent and exponent"},
        {20, "0.0e", "!D3093", "no digit in the exponent"},
        {20, "0.0e0,0", "!D3093", "separator in the exponent"},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(Shown(FormatNumber(row.value, row.picture, {})), row.expected) << row.picture << ": " << row.why;
    }
}

TEST(FormatNumber, TakesTheCharactersOfTheFormat) {
    DecimalFormat format;
    ASSERT_TRUE(format.Set("decimal-separator", ","));
    ASSERT_TRUE(format.Set("grouping-separator", "."));
    ASSERT_TRUE(format.Set("minus-sign", "\u2212"));
    EXPECT_EQ(Shown(FormatNumber(-1234567.891, "#.##0,00", format)), "\u22121.234.567,89");

    DecimalFormat circled;
    ASSERT_TRUE(circled.Set("zero-digit", "\u245F"));
    EXPECT_EQ(Shown(FormatNumber(1234.5678, "\u2460\u2460.\u2460\u2460\u2460e\u2460", circled)),
              "\u2460\u2461.\u2462\u2463\u2465e\u2461");
    DecimalFormat letters;
    ASSERT_TRUE(letters.Set("zero-digit", "A"));
    EXPECT_EQ(Shown(FormatNumber(2, "AAA.AAA", letters)), "AAC.AAA");
    EXPECT_FALSE(letters.Set("zero", "0"));
}

}  // namespace
}  // namespace tn61131::jsonata
