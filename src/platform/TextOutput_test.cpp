#include "platform/TextOutput.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/Time.h"

namespace {

template <typename Action>
std::string Written(Action action) {
    CTextOutputString output;
    action(output);
    return output.GetText();
}

template <typename T>
struct NumberCase {
    T value;
    const char* expected;
};

TEST(PrintDouble, ShortestDigitsInTheDocumentedLayout) {
    const std::vector<NumberCase<double>> rows = {
        {0.0, "0.0"},
        {-0.0, "-0.0"},
        {1.0, "1.0"},
        {-1.0, "-1.0"},
        {1.5, "1.5"},
        {0.1, "0.1"},
        {123.456, "123.456"},
        {0.00001, "0.00001"},
        {0.000012345, "0.000012345"},
        {0.00000999, "9.99E-06"},
        {0.0000001, "1.0E-07"},
        {1e15, "1000000000000000.0"},
        {9999999999999998.0, "9999999999999998.0"},
        {1e16, "1.0E+16"},
        {1.5e20, "1.5E+20"},
        {1e100, "1.0E+100"},
        {2.2250738585072014e-308, "2.2250738585072014E-308"},
        {5e-324, "5.0E-324"},
        {1.7976931348623157e308, "1.7976931348623157E+308"},
        {std::numeric_limits<double>::infinity(), "inf"},
        {-std::numeric_limits<double>::infinity(), "-inf"},
        {std::numeric_limits<double>::quiet_NaN(), "nan"},
        {-std::numeric_limits<double>::quiet_NaN(), "nan"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Written([&](CTextOutput& output) { output.PrintDouble(row.value); }), row.expected);
    }
}

TEST(PrintFloat, ShortestDigitsOfTheSinglePrecision) {
    const std::vector<NumberCase<float>> rows = {
        {0.1f, "0.1"},
        {3.1415927f, "3.1415927"},
        {16777216.0f, "16777216.0"},
        {1e15f, "1000000000000000.0"},
        {1e16f, "1.0E+16"},
        {1e-5f, "0.00001"},
        {1e-6f, "1.0E-06"},
        {3.4028235e38f, "3.4028235E+38"},
        {1e-45f, "1.0E-45"},
        {-std::numeric_limits<float>::infinity(), "-inf"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Written([&](CTextOutput& output) { output.PrintFloat(row.value); }), row.expected);
    }
}

TEST(PrintDouble, ReadsBackToTheSameBits) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value)) continue;
        const std::string text = Written([&](CTextOutput& output) { output.PrintDouble(value); });
        double back = 0;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), back);
        ASSERT_EQ(result.ptr, text.data() + text.size()) << text;
        ASSERT_EQ(std::memcmp(&back, &value, sizeof value), 0) << text;
        ASSERT_NE(text.find('.'), std::string::npos) << text;
    }
}

TEST(WriteCodePoint, WritesUtf8AndReplacesWhatIsNoCharacter) {
    EXPECT_EQ(Written([](CTextOutput& output) {
                  for (const char32_t c : {U'a', U'\u00E4', U'\u20AC', U'\U0001F600'})
                      output.WriteCodePoint(c);
              }),
              "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
    for (const char32_t c : {0xD800u, 0xDFFFu, 0x110000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Written([&](CTextOutput& output) { output.WriteCodePoint(c); }), "\xEF\xBF\xBD");
    }
}

TEST(Print, FillsPlaceholders) {
    EXPECT_EQ(Written([](CTextOutput& output) {
                  output.Print("plain ");
                  output.Print("%04X %s", 0x2Au, "text");
                  output.WriteChar('!');
              }),
              "plain 002A text!");
}

struct DateCase {
    std::int64_t ticks;
    const char* date;
    const char* time;
};

TEST(PrintDate, WritesTheCalendarDateOfAnyTickCount) {
    const std::vector<DateCase> rows = {
        {0, "1970-01-01", "00:00:00.000"},
        {17'067'063'092'500'000, "2024-01-31", "13:05:09.250"},
        {kTicksPerDay - 1, "1970-01-01", "23:59:59.999"},
        {-1, "1969-12-31", "23:59:59.999"},
        {-621'355'968'000'000'000, "0001-01-01", "00:00:00.000"},
        {-621'355'968'000'000'000 - 366 * kTicksPerDay, "0000-01-01", "00:00:00.000"},
        {-621'355'968'000'000'000 - 367 * kTicksPerDay, "-0001-12-31", "00:00:00.000"},
        {2'534'022'144'000'000'000, "9999-12-31", "00:00:00.000"},
        {2'534'022'144'000'000'000 + kTicksPerDay, "10000-01-01", "00:00:00.000"},
        {std::numeric_limits<std::int64_t>::max(), "31197-09-14", "02:48:05.477"},
        {std::numeric_limits<std::int64_t>::min(), "-27258-04-19", "21:11:54.522"},
    };
    for (const DateCase& row : rows) {
        SCOPED_TRACE(row.ticks);
        EXPECT_EQ(Written([&](CTextOutput& output) { output.PrintDate(nullptr, row.ticks); }), row.date);
        EXPECT_EQ(Written([&](CTextOutput& output) { output.PrintDateAndTime(nullptr, row.ticks, '-'); }),
                  std::string(row.date) + "-" + row.time);
    }
}

TEST(PrintDate, ZoneGivesLocalTime) {
    const CTNTimeZone berlin("Europe/Berlin");
    EXPECT_EQ(Written([&](CTextOutput& output) { output.PrintDateAndTime(&berlin, 0, ' '); }),
              "1970-01-01 01:00:00.000");
    EXPECT_EQ(Written([&](CTextOutput& output) { output.PrintDate(&berlin, kTicksPerDay - 1); }), "1970-01-02");
}

struct Utf8Case {
    std::string text;
    std::string expected;
    const char* why;
};

TEST(Print61131String, EscapesUtf8) {
    const std::vector<Utf8Case> rows = {
        {"", "''", "empty"},
        {"abc", "'abc'", "plain"},
        {"a$b", "'a$$b'", "dollar"},
        {"it's", "'it$'s'", "the delimiter"},
        {"\"", "'\"'", "the other delimiter"},
        {"\n\r\t", "'$L$R$T'", "short escapes"},
        {std::string("\0\x01\x0C\x1F\x7F", 5), "'$00$01$0C$1F$7F'", "controls"},
        {" ~", "' ~'", "ends of the printable range"},
        {"\xC2\x80\xC2\x9F", "'$C2$80$C2$9F'", "C1 controls, byte by byte"},
        {"\xC2\xA0", "'\xC2\xA0'", "first behind the controls"},
        {"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", "'\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80'", "characters"},
        {"\xEF\xBF\xBD", "'\xEF\xBF\xBD'", "a genuine replacement character"},
        {"\x80", "'$80'", "stray continuation"},
        {"a\xE2\x82", "'a$E2$82'", "cut sequence"},
        {"\xE2\x82z", "'$E2$82z'", "cut sequence"},
        {"\xC0\x80", "'$C0$80'", "overlong"},
        {"\xED\xA0\x80", "'$ED$A0$80'", "surrogate"},
        {"\xEF\xBFz", "'$EF$BFz'", "cut sequence"},
        {"\xF0\x9F\x98", "'$F0$9F$98'", "cut sequence of three bytes"},
        {"\xF5\xFF", "'$F5$FF'", "never valid"},
    };
    for (const Utf8Case& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(Written([&](CTextOutput& output) {
                      output.Print61131String(reinterpret_cast<const unsigned char*>(row.text.data()),
                                              static_cast<unsigned int>(row.text.size()));
                  }),
                  row.expected);
    }
}

struct Utf16Case {
    std::vector<unsigned short> units;
    std::string expected;
    const char* why;
};

TEST(Print61131String, EscapesUtf16) {
    const std::vector<Utf16Case> rows = {
        {{}, "\"\"", "empty"},
        {{'a', '$', '"', '\''}, "\"a$$$\"'\"", "dollar and delimiter"},
        {{10, 13, 9}, "\"$L$R$T\"", "short escapes"},
        {{0, 0x1F, 0x7F, 0x80, 0x9F}, "\"$0000$001F$007F$0080$009F\"", "controls"},
        {{0xA0, 0xE4, 0x20AC}, "\"\xC2\xA0\xC3\xA4\xE2\x82\xAC\"", "characters"},
        {{0xD83D, 0xDE00}, "\"\xF0\x9F\x98\x80\"", "pair"},
        {{0xD83D}, "\"$D83D\"", "high surrogate at the end"},
        {{0xD83D, 'a'}, "\"$D83Da\"", "high surrogate alone"},
        {{0xDE00, 0xD83D}, "\"$DE00$D83D\"", "wrong order"},
        {{0xFFFD, 0xFFFF}, "\"\xEF\xBF\xBD\xEF\xBF\xBF\"", "everything else as it is"},
    };
    for (const Utf16Case& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(Written([&](CTextOutput& output) {
                      output.Print61131String(row.units.data(), static_cast<unsigned int>(row.units.size()));
                  }),
                  row.expected);
    }
}

TEST(Print61131String, LongTextsPassTheInternalBuffer) {
    const std::string text(5000, 'x');
    EXPECT_EQ(Written([&](CTextOutput& output) {
                  output.Print61131String(reinterpret_cast<const unsigned char*>(text.data()), 5000);
              }),
              "'" + text + "'");
    const std::vector<unsigned short> euros(3000, 0x20AC);
    std::string expected = "\"";
    for (int i = 0; i < 3000; ++i)
        expected += "\xE2\x82\xAC";
    EXPECT_EQ(Written([&](CTextOutput& output) { output.Print61131String(euros.data(), 3000); }), expected + "\"");
}

struct CodePointCase {
    unsigned int codePoint;
    bool wide;
    const char* expected;
};

TEST(PrintCodePoint00ToFF, EscapesByWidth) {
    const std::vector<CodePointCase> rows = {
        {'a', false, "a"},    {'a', true, "a"},         {'$', false, "$$"},   {'$', true, "$$"},
        {'\'', false, "$'"},  {'\'', true, "'"},        {'"', false, "\""},   {'"', true, "$\""},
        {10, false, "$L"},    {13, false, "$R"},        {9, false, "$T"},     {10, true, "$L"},
        {13, true, "$R"},     {9, true, "$T"},          {0, false, "$00"},    {0, true, "$0000"},
        {0x1F, false, "$1F"}, {0x1F, true, "$001F"},    {0x20, false, " "},   {0x20, true, " "},
        {0x7E, false, "~"},   {0x7E, true, "~"},        {0x7F, false, "$7F"}, {0x7F, true, "$007F"},
        {0x9F, false, "$9F"}, {0x9F, true, "$009F"},    {0xA0, false, "$A0"}, {0xA0, true, "\xC2\xA0"},
        {0xFF, false, "$FF"}, {0xFF, true, "\xC3\xBF"},
    };
    for (const CodePointCase& row : rows) {
        SCOPED_TRACE(std::to_string(row.codePoint) + (row.wide ? " wide" : ""));
        EXPECT_EQ(Written([&](CTextOutput& output) { output.PrintCodePoint00ToFF(row.codePoint, row.wide); }),
                  row.expected);
    }
}

TEST(TextOutputToUtf8String, TakesTheTextAndStartsAgain) {
    TextOutputToUtf8String output;
    output.Print("%d\xFF", 5);
    Utf8String* const first = output.TakeString();
    EXPECT_EQ(std::string(first->bytes, first->bytes + first->length), "5\xFF");
    Utf8StringFree(first);
    Utf8String* const second = output.TakeString();
    EXPECT_EQ(second->length, 0);
    Utf8StringFree(second);
}

TEST(TextOutputToUtf8String, CutsBetweenCharacters) {
    TextOutputToUtf8String output;
    output.Write(std::string(kMaxStringUnits - 1, 'x') + "\xC3\xA4");
    Utf8String* const text = output.TakeString();
    EXPECT_EQ(text->length, kMaxStringUnits - 1);
    Utf8StringFree(text);
}

TEST(TextOutputToUtf16String, ReplacesInvalidSequences) {
    TextOutputToUtf16String output;
    output.Write("\xF0\x9F\x98\x80\xFFz");
    Utf16String* const text = output.TakeString();
    EXPECT_EQ(std::vector<unsigned short>(text->units, text->units + text->length),
              (std::vector<unsigned short>{0xD83D, 0xDE00, 0xFFFD, 'z'}));
    Utf16StringFree(text);
}

TEST(TextOutputToUtf16String, HoldsTheMostUnitsOfTheLongestCharacters) {
    TextOutputToUtf16String output;
    for (unsigned int i = 0; i < kMaxStringUnits + 10; ++i)
        output.Write("\xE2\x82\xAC");
    Utf16String* const text = output.TakeString();
    EXPECT_EQ(text->length, kMaxStringUnits);
    Utf16StringFree(text);
}

}  // namespace
