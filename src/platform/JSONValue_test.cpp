#include "platform/JSONValue.h"

#include <bit>
#include <clocale>
#include <cmath>
#include <limits>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/ErrorLog.h"
#include "platform/TextOutput.h"

namespace {

using Array = JSONValue::Array;
using Object = JSONValue::Object;

struct Parsed {
    bool ok;
    JSONValue value;
    std::string errors;
};

Parsed Parse(std::string_view text) {
    COutputLogString log;
    JSONParseContext context(text, log);
    Parsed parsed{false, JSONValue("unchanged"), {}};
    parsed.ok = parsed.value.Parse(context);
    parsed.errors = log.GetText();
    EXPECT_EQ(log.GetErrorCount(), parsed.ok ? 0U : 1U);
    return parsed;
}

std::string Write(const JSONValue& value) {
    CTextOutputString output;
    value.Write(output);
    return output.TakeText();
}

std::string Nested(std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
}

TEST(JSONParse, EveryKindOfValue) {
    const struct {
        std::string_view text;
        JSONValue expected;
    } kRows[] = {
        {"null", JSONValue()},
        {"true", JSONValue(true)},
        {" false\r\n\t", JSONValue(false)},
        {"0", JSONValue(0.0)},
        {"-12.5e-1", JSONValue(-1.25)},
        {"1E+2", JSONValue(100.0)},
        {R"("")", JSONValue("")},
        {R"("a\"\\\/\b\f\n\r\tb")", JSONValue("a\"\\/\b\f\n\r\tb")},
        {R"("\u0041\u00e9\u20AC\ud83d\uDE00")", JSONValue("A\u00e9\u20ac\U0001F600")},
        {"\"\u00e9\U0001F600\x7f\"", JSONValue("\u00e9\U0001F600\x7f")},
        {R"("a\u0000b")", JSONValue(std::string("a\0b", 3))},
        {"[]", JSONValue(Array{})},
        {"{}", JSONValue(Object{})},
        {"[1,[2,{}],\"x\"]",
         JSONValue(Array{JSONValue(1.0), JSONValue(Array{JSONValue(2.0), JSONValue(Object{})}), JSONValue("x")})},
        {R"({"b":1,"a":{"":null}})",
         JSONValue(Object{{"b", JSONValue(1.0)}, {"a", JSONValue(Object{{"", JSONValue()}})}})},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        const Parsed parsed = Parse(row.text);
        EXPECT_TRUE(parsed.ok) << parsed.errors;
        EXPECT_EQ(parsed.value, row.expected);
    }
}

TEST(JSONParse, NumbersAreTheNearestDoubles) {
    const struct {
        std::string_view text;
        double expected;
        const char* why;
    } kRows[] = {
        {"-0", -0.0, "negative zero"},
        {"9007199254740993", 9007199254740992.0, "halfway, to even"},
        {"123456789012345678901234567890", 123456789012345678901234567890.0, "beyond every integer type"},
        {"0.1", 0.1, "not exact"},
        {"5e-324", 5e-324, "the smallest"},
        {"1.7976931348623157e308", std::numeric_limits<double>::max(), "the largest"},
        {"1e-400", 0.0, "below the smallest"},
        {"-1e-400", -0.0, "below the smallest, negative"},
        {"2.4703282292062327208299e-324", 0.0, "just below half of the smallest"},
        {"2.2250738585072011e-308", 2.2250738585072011e-308, "largest subnormal"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        SCOPED_TRACE(row.why);
        const Parsed parsed = Parse(row.text);
        ASSERT_TRUE(parsed.value.IsNumber()) << parsed.errors;
        EXPECT_EQ(parsed.value.GetNumber(), row.expected);
        EXPECT_EQ(std::signbit(parsed.value.GetNumber()), std::signbit(row.expected));
    }
}

TEST(JSONParse, WhatTheGrammarDoesNotKnowIsRefused) {
    using std::string_view_literals::operator""sv;
    const struct {
        std::string_view text;
        const char* why;
    } kRows[] = {
        {""sv, "no value"},
        {"  \n"sv, "only white space"},
        {"1 2"sv, "two values"},
        {"1\0"sv, "NUL behind the value"},
        {"1\0 garbage"sv, "text behind a NUL"},
        {"\0"sv, "only a NUL"},
        {"[1,]"sv, "trailing comma"},
        {"{\"a\":1,}"sv, "trailing comma"},
        {"[1 2]"sv, "missing comma"},
        {"[,1]"sv, "leading comma"},
        {"{a:1}"sv, "name without quotes"},
        {"{\"a\" 1}"sv, "missing colon"},
        {"{1:2}"sv, "name is a number"},
        {"'a'"sv, "single quotes"},
        {"// c\n1"sv, "comment"},
        {"/* c */1"sv, "comment"},
        {"NaN"sv, "not a number"},
        {"Infinity"sv, "infinity"},
        {"-Inf"sv, "infinity"},
        {"01"sv, "leading zero"},
        {"-"sv, "sign only"},
        {"+1"sv, "plus sign"},
        {".5"sv, "no whole part"},
        {"1."sv, "no fraction"},
        {"1e"sv, "no exponent"},
        {"0x10"sv, "hexadecimal"},
        {"1e309"sv, "beyond the largest double"},
        {"-1.7976931348623159e308"sv, "rounds to infinity"},
        {"True"sv, "capital"},
        {"nul"sv, "cut"},
        {"\"abc"sv, "no closing quote"},
        {"\"a\nb\""sv, "control character"},
        {"\"a\x1f\""sv, "control character"},
        {"\"a\0b\""sv, "NUL"},
        {"\"\\x41\""sv, "unknown escape"},
        {"\"\\u12G4\""sv, "no hexadecimal digit"},
        {"\"\\u123\""sv, "three digits"},
        {"\"\\ud800\""sv, "high surrogate alone"},
        {"\"\\ud800\\u0041\""sv, "high surrogate before a letter"},
        {"\"\\udc00\""sv, "low surrogate alone"},
        {"{\"\\udfff\":1}"sv, "low surrogate alone in a name"},
        {"\"\xff\""sv, "not UTF-8"},
        {"\"\xc0\x80\""sv, "overlong"},
        {"\"\xed\xa0\x80\""sv, "surrogate in UTF-8"},
        {"\"\xf4\x90\x80\x80\""sv, "above 10FFFF"},
        {"\"\xe2\x82\""sv, "cut character"},
        {"\xef\xbb\xbf"
         "1"sv,
         "byte-order mark"},
        {"\v1"sv, "other white space"},
        {"[1}"sv, "brackets crossed"},
        {"]"sv, "closing bracket alone"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        SCOPED_TRACE(row.why);
        const Parsed parsed = Parse(row.text);
        EXPECT_FALSE(parsed.ok);
        EXPECT_EQ(parsed.value, JSONValue("unchanged"));
    }
}

TEST(JSONParse, ErrorsSayLineAndColumn) {
    const struct {
        std::string_view text;
        std::string_view expected;
    } kRows[] = {
        {"[1,\n \"\u00e9\u00e9\", x]", "JSON, line 2, column 8: Invalid value.\n"},
        // Found when the string has been read: the place is behind it.
        {"[\"\\udc00\"]", "JSON, line 1, column 10: The string escapes a surrogate without its partner.\n"},
        {"[1e999]", "JSON, line 1, column 2: "},
        {"", "JSON, line 1, column 1: The document is empty.\n"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        EXPECT_THAT(Parse(row.text).errors, testing::StartsWith(row.expected));
    }
}

TEST(JSONParse, CutAtEveryLengthIsRefused) {
    constexpr std::string_view kText = R"({"a":[true,false,null,-1.5e+3,"x\u00e9\ud83d\ude00"],"b":{}})";
    for (std::size_t length = 0; length < kText.size(); ++length) {
        SCOPED_TRACE(length);
        EXPECT_FALSE(Parse(kText.substr(0, length)).ok);
    }
    EXPECT_TRUE(Parse(kText).ok);
}

TEST(JSONParse, DepthIsLimited) {
    EXPECT_TRUE(Parse(Nested(JSONParseContext::kMaxDepth)).ok);
    const Parsed tooDeep = Parse(Nested(JSONParseContext::kMaxDepth + 1));
    EXPECT_FALSE(tooDeep.ok);
    EXPECT_EQ(tooDeep.errors, "JSON, line 1, column 1002: Nesting is deeper than 1000 levels.\n");
    EXPECT_FALSE(Parse(std::string(1'000'000, '[')).ok);
    EXPECT_FALSE(Parse(std::string(1'000'000, '{')).ok);
}

// Found by fuzzing: the parser's own stack added to a null pointer.
TEST(JSONParse, TextBehindTheFirstCharacterOfAString) {
    EXPECT_FALSE(Parse("\"\u00e9\U0001F600\\\\\\/\"\xff").ok);
    EXPECT_TRUE(Parse("\"\u00e9\U0001F600\\\\\\/\"").ok);
}

// Found by fuzzing: the parser looks for the rest of a character behind the end of the text.
TEST(JSONParse, TextThatEndsInsideACharacter) {
    for (const char* text : {"\"\xc3", "\"\xe2\x82", "\"\xf0", "\"\xf0\x9f", "\"\xf0\x9f\x98", "[0,\"\xf0,"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(Parse(text).ok);
    }
}

TEST(JSONParse, LocaleOfTheHostDoesNotMatter) {
    // Whether such a locale is installed or not, the number must come out.
    const std::string before = std::setlocale(LC_ALL, nullptr);
    (void)std::setlocale(LC_ALL, "de_DE.UTF-8");
    const double number = Parse("1.5").value.GetNumber();
    const double tiny = Parse("1.5e-400").value.GetNumber();
    (void)std::setlocale(LC_ALL, before.c_str());
    EXPECT_EQ(number, 1.5);
    EXPECT_EQ(tiny, 0.0);
}

TEST(JSONValue, MembersKeepTheirOrderAndTheLastOfANameIsFound) {
    const Parsed parsed = Parse(R"({"b":1,"a":2,"b":3})");
    ASSERT_EQ(parsed.value.GetMembers().size(), 3U);
    EXPECT_EQ(parsed.value.GetMembers()[0].name, "b");
    EXPECT_EQ(parsed.value.GetMembers()[1].name, "a");
    ASSERT_NE(parsed.value.Find("b"), nullptr);
    EXPECT_EQ(parsed.value.Find("b")->GetNumber(), 3.0);
    EXPECT_EQ(parsed.value.Find("c"), nullptr);
    EXPECT_EQ(JSONValue(1.0).Find("b"), nullptr);
}

TEST(JSONValue, AccessToAnotherKindGivesNothing) {
    const JSONValue null;
    EXPECT_FALSE(null.GetBoolean());
    EXPECT_EQ(null.GetNumber(), 0.0);
    EXPECT_EQ(null.GetString(), "");
    EXPECT_TRUE(null.GetElements().empty());
    EXPECT_TRUE(null.GetMembers().empty());
}

TEST(JSONWrite, CompactText) {
    const struct {
        JSONValue value;
        std::string_view expected;
    } kRows[] = {
        {JSONValue(), "null"},
        {JSONValue(true), "true"},
        {JSONValue(false), "false"},
        {JSONValue("a\"\\/\b\f\n\r\t\x01\x1f\x7f\u00e9"), "\"a\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001f\x7f\u00e9\""},
        {JSONValue(std::string("\0", 1)), "\"\\u0000\""},
        {JSONValue(Array{}), "[]"},
        {JSONValue(Object{}), "{}"},
        {JSONValue(Array{JSONValue(1.0), JSONValue("x"), JSONValue(Array{})}), R"([1,"x",[]])"},
        {JSONValue(Object{{"b", JSONValue()}, {"a\n", JSONValue(Object{})}}), R"({"b":null,"a\n":{}})"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.expected);
        EXPECT_EQ(Write(row.value), row.expected);
    }
}

TEST(JSONWrite, Numbers) {
    const struct {
        double number;
        std::string_view expected;
    } kRows[] = {
        {0.0, "0"},
        {-0.0, "-0"},
        {1.0, "1"},
        {-1.5, "-1.5"},
        {100000.0, "100000"},
        {1234567.0, "1234567"},
        {0.1, "0.1"},
        {123.456, "123.456"},
        {0.000001, "0.000001"},
        {0.0000001, "1e-7"},
        {1.25e-7, "1.25e-7"},
        {1e20, "100000000000000000000"},
        {123456789012345680000.0, "123456789012345680000"},
        {1e21, "1e+21"},
        {1.5e300, "1.5e+300"},
        {5e-324, "5e-324"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
        {std::numeric_limits<double>::infinity(), "null"},
        {-std::numeric_limits<double>::infinity(), "null"},
        {std::numeric_limits<double>::quiet_NaN(), "null"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.expected);
        EXPECT_EQ(Write(JSONValue(row.number)), row.expected);
    }
}

TEST(JSONWrite, NumbersReadBackToTheSameBits) {
    std::mt19937_64 random(8259);
    for (int i = 0; i < 20'000; ++i) {
        const auto number = std::bit_cast<double>(random());
        if (!std::isfinite(number)) continue;
        const std::string text = Write(JSONValue(number));
        SCOPED_TRACE(text);
        const double back = Parse(text).value.GetNumber();
        ASSERT_EQ(std::bit_cast<std::uint64_t>(back), std::bit_cast<std::uint64_t>(number));
    }
}

// A value of a random kind; containers get rarer with the depth.
JSONValue RandomValue(std::mt19937_64& random, unsigned int depth) {
    const std::uint64_t kind = random() % (depth < 5 ? 6 : 4);
    std::string text;
    for (std::uint64_t left = random() % 8; left > 0; --left)
        text.append(random() % 2 == 0 ? std::string(1, static_cast<char>(random() % 128)) : "\U0001F600");
    if (kind == 0) return JSONValue();
    if (kind == 1) return JSONValue(random() % 2 == 0);
    if (kind == 2) return JSONValue(static_cast<double>(random() % 1000) / 8.0);
    if (kind == 3) return JSONValue(text);
    Array elements;
    Object members;
    for (std::uint64_t left = random() % 5; left > 0; --left) {
        elements.push_back(RandomValue(random, depth + 1));
        members.push_back({text, elements.back()});
    }
    return kind == 4 ? JSONValue(std::move(elements)) : JSONValue(std::move(members));
}

TEST(JSONWrite, TreesReadBackEqual) {
    std::mt19937_64 random(7493);
    for (int i = 0; i < 500; ++i) {
        const JSONValue value = RandomValue(random, 0);
        const std::string text = Write(value);
        SCOPED_TRACE(text);
        const Parsed parsed = Parse(text);
        ASSERT_TRUE(parsed.ok) << parsed.errors;
        ASSERT_EQ(parsed.value, value);
        ASSERT_EQ(Write(parsed.value), text);
    }
}

}  // namespace
