#include "platform/jsonata/TextFunctions.h"

#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tn61131::jsonata {
namespace {

constexpr std::string_view kFaces = "\U0001F602\U0001F601\U0001F600";

TEST(CountCodePoints, CountsCharactersAndUnits) {
    EXPECT_EQ(CountCodePoints(""), 0U);
    EXPECT_EQ(CountCodePoints("a\u00E9\u8D85\U0001D11E"), 4U);
    EXPECT_EQ(CountUTF16Units("a\u00E9\u8D85\U0001D11E"), 5U);
    EXPECT_EQ(CountCodePoints("\xED\xA0\x80"), 1U) << "an unpaired surrogate";
    EXPECT_EQ(CountUTF16Units("\xED\xA0\x80"), 1U);
    EXPECT_EQ(CountCodePoints("\xFF\xFE"), 2U) << "invalid bytes";
}

TEST(Substring, CountsFromEitherEnd) {
    struct Row {
        std::string_view text;
        double start;
        std::optional<double> length;
        std::string_view expected;
    };
    constexpr double kHuge = 1e300;
    constexpr Row kRows[] = {
        {"hello", 0, 2, "he"},
        {"hello", 2, std::nullopt, "llo"},
        {"hello", -2, std::nullopt, "lo"},
        {"hello", -10, 7, "hello"},
        {"hello", -10, 2, "he"},
        {"hello", 10, 1, ""},
        {"hello", 2, -1, ""},
        {"hello", 2, 0, ""},
        {"hello", 1.5, 1.5, "el"},
        {"hello", 0.9, 0.2, "h"},
        {"hello", -1.5, std::nullopt, "o"},
        {"hello", -1.5, 1, ""},
        {"hello", 1, kHuge, "ello"},
        {"hello", kHuge, kHuge, ""},
        {"hello", -kHuge, kHuge, "hello"},
        {kFaces, -2, 1, "\U0001F601"},
        {kFaces, -5, 1, "\U0001F602"},
        {"", 0, 1, ""},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(Substring(row.text, row.start, row.length), row.expected) << row.start;
    }
    EXPECT_EQ(Substring("hello", std::numeric_limits<double>::quiet_NaN(), std::nullopt), "hello");
    EXPECT_EQ(Substring("hello", 0, std::numeric_limits<double>::quiet_NaN()), "");
}

TEST(Pad, FillsToTheWidth) {
    struct Row {
        std::string_view text;
        double width;
        std::string_view fill;
        std::string_view expected;
    };
    constexpr Row kRows[] = {
        {"foo", 5, " ", "foo  "},     {"foo", -5.7, " ", "  foo"},
        {"foo", 8, "ab", "fooababa"}, {"foo", -8, "ab", "ababafoo"},
        {"foo", 5, "", "foo  "},      {"foo", 3, "#", "foo"},
        {"foo", 0, "#", "foo"},       {"\U0001D11E", 3, "\u00E9x", "\U0001D11E\u00E9x"},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(*Pad(row.text, row.width, row.fill), row.expected);
    }
    EXPECT_EQ(Pad("foo", 1e9, " ").GetFailure().code, "D1001");
    EXPECT_EQ(Pad("foo", std::numeric_limits<double>::quiet_NaN(), " ").GetFailure().code, "D1001");
}

TEST(Trim, JoinsBlanks) {
    EXPECT_EQ(Trim("  Hello \n\t World \r\n"), "Hello World");
    EXPECT_EQ(Trim(" \t "), "");
    EXPECT_EQ(Trim("\u00A0a"), "\u00A0a") << "other white space stays";
}

TEST(CaseMapping, IsThatOfUnicode) {
    EXPECT_EQ(ToUpperCase("stra\u00DFe \u0149"), "STRASSE \u02BCN");
    EXPECT_EQ(ToLowerCase("\u0391\u03A3 \u0391\u03A3\u0391"), "\u03B1\u03C2 \u03B1\u03C3\u03B1") << "final sigma";
    EXPECT_EQ(ToLowerCase("\u0130"), "i\u0307");
    EXPECT_EQ(ToUpperCase("a\xED\xA0\x80z\xED\x9F\xBFq"), "A\xED\xA0\x80Z\xED\x9F\xBFQ") << "surrogates stay";
    EXPECT_EQ(ToUpperCase(""), "");
}

TEST(CompareTexts, OrdersByUTF16Units) {
    EXPECT_TRUE(CompareTexts("a", "b") < 0);
    EXPECT_TRUE(CompareTexts("a", "ab") < 0);
    EXPECT_TRUE(CompareTexts("", "") == 0);
    EXPECT_TRUE(CompareTexts("\u00E9x", "\u00E9x") == 0);
    EXPECT_TRUE(CompareTexts("b", "aa") > 0);
    EXPECT_TRUE(CompareTexts("\uFFFF", "\U00010000") > 0) << "the unit of U+10000 is D800";
    EXPECT_TRUE(CompareTexts("\U0001F600", "\U0001F601") < 0);
    EXPECT_TRUE(CompareTexts("\xED\xA0\x80", "\U00010000") < 0) << "half of it";
}

}  // namespace
}  // namespace tn61131::jsonata
