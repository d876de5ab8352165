#include "platform/jsonata/IntegerPicture.h"

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tn61131::jsonata {
namespace {

std::string Shown(const Result<std::string>& result) {
    return result ? *result : "!" + std::string(result.GetFailure().code);
}

struct Row {
    double value;
    std::string_view picture;
    std::string_view text;
};

// Texts that say all of the number, in both directions.
constexpr Row kBothWays[] = {
    {123, "000", "123"},
    {7, "000", "007"},
    {-3, "0000", "-0003"},
    {12, "#,##0", "12"},
    {1234567, "#,##0", "1,234,567"},
    {1234567890, "#:###,##0", "1234:567,890"},
    {1234567890, "##,##,##0", "12345,67,890"},
    {1234, "0 000", "1 234"},
    {12345, "#,\u0660\u0660\u0660", "\u0661\u0662,\u0663\u0664\u0665"},
    {1, "0;o", "1st"},
    {2, "0;o", "2nd"},
    {3, "0;o", "3rd"},
    {4, "0;o", "4th"},
    {11, "0;o", "11th"},
    {12, "0;o", "12th"},
    {13, "0;o", "13th"},
    {21, "0;o", "21st"},
    {112, "0;o", "112th"},
    {1000, "#,##0;o", "1,000th"},
    {5, "0;c", "5"},
    {1, "A", "A"},
    {26, "a", "z"},
    {27, "a", "aa"},
    {300, "A", "KN"},
    {703, "A", "AAA"},
    {0, "I", ""},
    {1984, "I", "MCMLXXXIV"},
    {99, "i", "xcix"},
    {4000, "I", "MMMM"},
    {0, "w", "zero"},
    {12, "w", "twelve"},
    {20, "w", "twenty"},
    {34, "w", "thirty-four"},
    {99, "W", "NINETY-NINE"},
    {100, "Ww", "One Hundred"},
    {101, "Ww", "One Hundred and One"},
    {555, "Ww", "Five Hundred and Fifty-Five"},
    {1000, "w", "one thousand"},
    {1001, "w", "one thousand and one"},
    {1100, "w", "one thousand, one hundred"},
    {327730, "w", "three hundred and twenty-seven thousand, seven hundred and thirty"},
    {1000001, "w", "one million and one"},
    {1e12 + 1, "w", "one trillion and one"},
    {1e15, "w", "one thousand trillion"},
    {1234567890123456, "w",
     "one thousand, two hundred and thirty-four trillion, five hundred and sixty-seven billion, eight hundred and "
     "ninety million, one hundred and twenty-three thousand, four hundred and fifty-six"},
    {12, "w;o", "twelfth"},
    {20, "w;o", "twentieth"},
    {99, "W;o", "NINETY-NINTH"},
    {730, "w;o", "seven hundred and thirtieth"},
    {1000, "w;o", "one thousandth"},
    {1e12 + 1, "w;o", "one trillion and first"},
    {115, "Ww;o", "One Hundred and Fifteenth"},
};

TEST(FormatInteger, FollowsThePicture) {
    for (const Row& row : kBothWays) {
        EXPECT_EQ(Shown(FormatInteger(row.value, row.picture)), row.text) << row.value << " by " << row.picture;
    }
}

TEST(ParseInteger, ReadsWhatIsFormatted) {
    for (const Row& row : kBothWays) {
        const Result<std::optional<double>> parsed = ParseInteger(row.text, row.picture);
        ASSERT_TRUE(parsed) << row.picture;
        EXPECT_EQ(*parsed, std::optional(row.value)) << row.text << " by " << row.picture;
    }
}

TEST(FormatInteger, RoundsDown) {
    EXPECT_EQ(Shown(FormatInteger(12.6, "###0")), "12");
    EXPECT_EQ(Shown(FormatInteger(-2.2, "0")), "-3");
    EXPECT_EQ(Shown(FormatInteger(-0.5, "w")), "-one");
}

TEST(FormatInteger, NumbersBeyondAFormatAreDigits) {
    EXPECT_EQ(Shown(FormatInteger(1e6, "I")), std::string(1000, 'M'));
    EXPECT_EQ(Shown(FormatInteger(1e6 + 1, "I")), "1000001");
    EXPECT_EQ(Shown(FormatInteger(1e30, "A")), "1000000000000000000000000000000");
    EXPECT_EQ(Shown(FormatInteger(1e21, "0")), "1000000000000000000000");
    EXPECT_EQ(Shown(FormatInteger(1e21, "w")), "one billion trillion");
    EXPECT_EQ(Shown(FormatInteger(1e27, "w;o")), "one thousand trillion trillionth");
    EXPECT_EQ(Shown(FormatInteger(std::numeric_limits<double>::infinity(), "w")), "Infinity");
    EXPECT_EQ(Shown(FormatInteger(std::numeric_limits<double>::quiet_NaN(), "I")), "NaN");
}

TEST(FormatInteger, RefusesOtherPictures) {
    for (const std::string_view picture : {"", "x", "#", "#,#", "ww", "AA", "\u03B1", ";o"}) {
        EXPECT_EQ(Shown(FormatInteger(1, picture)), "!D3130") << picture;
    }
    EXPECT_EQ(Shown(FormatInteger(1, "\u06600")), "!D3131") << "two scripts";
    EXPECT_EQ(FormatInteger(1, "#;o").GetFailure().value, "#");
}

TEST(ParseInteger, TakesLooseTexts) {
    constexpr Row kRows[] = {
        {1234, "#,##0", "1,2,3,4"}, {12, "0", "12abc"},
        {12, "0", " 12 "},          {12, "0", "+12"},
        {-12, "0", "-12"},          {1, "0", "1.5"},
        {21, "w", "twenty one"},    {101, "w", "ONE HUNDRED ONE"},
        {1, "w", "first"},          {12, "0;o", "12xx"},
        {14, "i", "XIV"},           {3730, "w", "three thousand seven hundred thirty"},
    };
    for (const Row& row : kRows) {
        const Result<std::optional<double>> parsed = ParseInteger(row.text, row.picture);
        ASSERT_TRUE(parsed) << row.picture;
        EXPECT_EQ(*parsed, std::optional(row.value)) << row.text << " by " << row.picture;
    }
}

TEST(ParseInteger, GivesNoValueForOtherTexts) {
    constexpr Row kRows[] = {
        {0, "0", ""},        {0, "0", "abc"},       {0, "0", "- 1"},     {0, "I", "Q"},   {0, "I", "xiv"},
        {0, "A", "ab"},      {0, "a", "a1"},        {0, "w", ""},        {0, "w", "foo"}, {0, "w", "and one"},
        {0, "w", "one and"}, {0, "w", "twentyone"}, {0, "w", "one_two"}, {0, "0;o", "1"}, {0, "\u0660", "12"},
    };
    for (const Row& row : kRows) {
        const Result<std::optional<double>> parsed = ParseInteger(row.text, row.picture);
        ASSERT_TRUE(parsed) << row.picture;
        EXPECT_EQ(*parsed, std::nullopt) << row.text << " by " << row.picture;
    }
    EXPECT_EQ(*ParseInteger(std::string(400, '9'), "0"), std::nullopt) << "beyond the range";
    EXPECT_EQ(*ParseInteger(std::string(400, 'z'), "a"), std::nullopt) << "beyond the range";
}

}  // namespace
}  // namespace tn61131::jsonata
