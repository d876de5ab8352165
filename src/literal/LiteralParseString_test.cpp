#include <gtest/gtest.h>

#include "support/LiteralTest.h"

using literal_test::ParseOutcome;

namespace {

struct Row {
    const char* text;
    const char* expected;
    const char* why;
};

// Expectations are declarations, in which $ and quotes are escaped again.
TEST(StringToString, ReadsContentAndEscapes) {
    const Row kRows[] = {
        {"'abc'", "STRING#'abc'", ""},
        {"'abc", "STRING#'abc'", "no closing quote"},
        {"''", "STRING#''", "empty"},
        {"'", "STRING#''", "only the opening quote"},
        {"'''", "STRING#'$''", "the last quote closes"},
        {"'a'b'", "STRING#'a$'b'", "a quote inside"},
        {"STRING#'abc'", "STRING#'abc'", "prefix"},
        {"string#'abc'", "STRING#'abc'", "any case"},
        {"'it$'s'", "STRING#'it$'s'", "escaped quote"},
        {"'$$'", "STRING#'$$'", ""},
        {"'$L$l$N$n'", "STRING#'$L$L$L$L'", "line feeds"},
        {"'$R$r$T$t'", "STRING#'$R$R$T$T'", ""},
        {"'$41'", "STRING#'A'", "a byte"},
        {"'$0a$0D'", "STRING#'$L$R'", "small and capital digits"},
        {"'$412'", "STRING#'A2'", "two digits at most"},
        {"'$E9'", "STRING#'$E9'", "one raw byte, no character"},
        {"'$C3$A9'", "STRING#'\u00e9'", "two bytes make a character"},
        {"'\u00e9\U0001F600'", "STRING#'\u00e9\U0001F600'", "text outside ASCII"},
        {"'a\"b'", "STRING#'a\"b'", "the other quote"},
        {"'\xff'", "STRING#'\uFFFD'", "no UTF-8"},
        {"'\xe2\x82'", "STRING#'\uFFFD'", "cut character before the quote"},
        {"'a\nb'", "STRING#'a$Lb'", "a control character as it is"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text) + ": " + row.why);
        EXPECT_EQ(ParseOutcome(&CValueLiteral::StringToString, row.text), row.expected);
    }
}

TEST(StringToString, RefusesInvalidEscapes) {
    const Row kRows[] = {
        {"'$4'", "207: Invalid string escape sequence '$4'.", "one digit at the end"},
        {"'a$4x'", "207: Invalid string escape sequence '$4'.", "one digit"},
        {"'$P'", "207: Invalid string escape sequence '$P'.", "form feed is none"},
        {"'$p1'", "207: Invalid string escape sequence '$p'.", "form feed is none"},
        {"'$\"'", "207: Invalid string escape sequence '$\"'.", "the other quote"},
        {"'$'", "207: Invalid string escape sequence '$'.", "$ before the closing quote"},
        {"'abc$", "207: Invalid string escape sequence '$'.", "$ at the end"},
        {"'$ 41'", "207: Invalid string escape sequence '$ '.", "blank"},
        {"'$\U0001F600x'", "207: Invalid string escape sequence '$\U0001F600'.", "a character is not split"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text) + ": " + row.why);
        EXPECT_EQ(ParseOutcome(&CValueLiteral::StringToString, row.text), row.expected);
    }
}

TEST(StringToString, NeedsASingleQuoteBehindAPrefixOfItsFamily) {
    const Row kRows[] = {
        {"", "250: Expected single quote (') after type prefix 'CHAR'.", "empty"},
        {nullptr, "250: Expected single quote (') after type prefix 'CHAR'.", "null"},
        {"abc", "250: Expected single quote (') after type prefix 'CHAR'.", "no quote"},
        {"\"abc\"", "250: Expected single quote (') after type prefix 'CHAR'.", "the other quote"},
        {" 'abc'", "250: Expected single quote (') after type prefix 'CHAR'.", "leading blank"},
        {"STRING#abc", "250: Expected single quote (') after type prefix 'STRING'.", "no quote"},
        {"STRING#", "250: Expected single quote (') after type prefix 'STRING'.", "nothing"},
        {"CHAR#a", "250: Expected single quote (') after type prefix 'CHAR'.", "no quote"},
        {"WSTRING#'abc'", "250: Expected single quote (') after type prefix 'CHAR'.", "the other family"},
        {"WCHAR#'a'", "250: Expected single quote (') after type prefix 'CHAR'.", "the other family"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(ParseOutcome(&CValueLiteral::StringToString, row.text), row.expected);
    }
}

TEST(StringToString, CharHoldsOneByte) {
    const Row kRows[] = {
        {"CHAR#'a'", "CHAR#'a'", ""},
        {"char#'a", "CHAR#'a'", "no closing quote"},
        {"CHAR#''", "CHAR#'$00'", "empty is the byte 0"},
        {"CHAR#'$E9'", "CHAR#'$E9'", "a raw byte"},
        {"CHAR#'$''", "CHAR#'$''", "escaped quote"},
        {"CHAR#'ab'", "251: Character sequence 'ab' cannot be represented by a single 'CHAR'.", "two bytes"},
        {"CHAR#'\u00e9'", "251: Character sequence '\u00e9' cannot be represented by a single 'CHAR'.",
         "a character of two bytes"},
        {"CHAR#'$E9$41'", "251: Character sequence '\uFFFDA' cannot be represented by a single 'CHAR'.",
         "what is no UTF-8 is quoted as U+FFFD"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text) + ": " + row.why);
        EXPECT_EQ(ParseOutcome(&CValueLiteral::StringToString, row.text), row.expected);
    }
}

TEST(StringToWString, ReadsContentAndEscapes) {
    const Row kRows[] = {
        {"\"abc\"", "WSTRING#\"abc\"", ""},
        {"\"abc", "WSTRING#\"abc\"", "no closing quote"},
        {"\"\"", "WSTRING#\"\"", "empty"},
        {"\"", "WSTRING#\"\"", "only the opening quote"},
        {"wstring#\"abc\"", "WSTRING#\"abc\"", "prefix"},
        {"\"$0041\"", "WSTRING#\"A\"", "a unit"},
        {"\"$00e9$20AC\"", "WSTRING#\"\u00e9\u20ac\"", "small and capital digits"},
        {"\"$D83D$DE00\"", "WSTRING#\"\U0001F600\"", "two units make a character"},
        {"\"$D83D\"", "WSTRING#\"$D83D\"", "an unpaired surrogate stays"},
        {"\"$00411\"", "WSTRING#\"A1\"", "four digits at most"},
        {"\"$$ $\" $L$l$N$n$R$r$T$t\"", "WSTRING#\"$$ $\" $L$L$L$L$R$R$T$T\"", ""},
        {"\"it's\"", "WSTRING#\"it's\"", "the other quote"},
        {"\"\u00e9\U0001F600\"", "WSTRING#\"\u00e9\U0001F600\"", "text outside ASCII"},
        {"\"\xff\"", "WSTRING#\"\uFFFD\"", "no UTF-8"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text) + ": " + row.why);
        EXPECT_EQ(ParseOutcome(&CValueLiteral::StringToWString, row.text), row.expected);
    }
}

TEST(StringToWString, RefusesInvalidEscapes) {
    const Row kRows[] = {
        {"\"$00\"", "207: Invalid string escape sequence '$00'.", "two digits"},
        {"\"$004x\"", "207: Invalid string escape sequence '$004'.", "three digits"},
        {"\"$'\"", "207: Invalid string escape sequence '$''.", "the other quote"},
        {"\"$P\"", "207: Invalid string escape sequence '$P'.", "form feed is none"},
        {"\"$\"", "207: Invalid string escape sequence '$'.", "$ before the closing quote"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text) + ": " + row.why);
        EXPECT_EQ(ParseOutcome(&CValueLiteral::StringToWString, row.text), row.expected);
    }
}

TEST(StringToWString, NeedsADoubleQuoteBehindAPrefixOfItsFamily) {
    const Row kRows[] = {
        {"", "249: Expected double quote (\") after type prefix 'WCHAR'.", "empty"},
        {nullptr, "249: Expected double quote (\") after type prefix 'WCHAR'.", "null"},
        {"'abc'", "249: Expected double quote (\") after type prefix 'WCHAR'.", "the other quote"},
        {"WSTRING#'abc'", "249: Expected double quote (\") after type prefix 'WSTRING'.", "the other quote"},
        {"WCHAR#a", "249: Expected double quote (\") after type prefix 'WCHAR'.", "no quote"},
        {"STRING#\"abc\"", "249: Expected double quote (\") after type prefix 'WCHAR'.", "the other family"},
        {"CHAR#\"a\"", "249: Expected double quote (\") after type prefix 'WCHAR'.", "the other family"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(ParseOutcome(&CValueLiteral::StringToWString, row.text), row.expected);
    }
}

TEST(StringToWString, WCharHoldsOneUnit) {
    const Row kRows[] = {
        {"WCHAR#\"a\"", "WCHAR#\"a\"", ""},
        {"WCHAR#\"\u20ac\"", "WCHAR#\"\u20ac\"", ""},
        {"WCHAR#\"\"", "WCHAR#\"$0000\"", "empty is the unit 0"},
        {"WCHAR#\"$D83D\"", "WCHAR#\"$D83D\"", "a surrogate"},
        {"WCHAR#\"ab\"", "251: Character sequence 'ab' cannot be represented by a single 'WCHAR'.", "two units"},
        {"WCHAR#\"\U0001F600\"", "251: Character sequence '\U0001F600' cannot be represented by a single 'WCHAR'.",
         "a surrogate pair"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text) + ": " + row.why);
        EXPECT_EQ(ParseOutcome(&CValueLiteral::StringToWString, row.text), row.expected);
    }
}

TEST(StringToString, LeavesTheTypeOfACharacterThatIsTooLongAndNothingOtherwise) {
    CErrorLogToNull log;
    CValue value(std::string("before"));
    EXPECT_FALSE(value.StringToString(log, ErrorLocationNull::Get(), "CHAR#'ab'"));
    EXPECT_EQ(value.GetType(), ElementaryType::Char);
    EXPECT_FALSE(value.StringToWString(log, ErrorLocationNull::Get(), "WCHAR#\"ab\""));
    EXPECT_EQ(value.GetType(), ElementaryType::WChar);
    EXPECT_FALSE(value.StringToString(log, ErrorLocationNull::Get(), "CHAR#'$P'"));
    EXPECT_TRUE(value.IsUndefined());
}

TEST(StringToString, LongTextIsCutToWhatAStringHolds) {
    CErrorLogToNull log;
    CValue value;
    const std::string content(70'000, 'x');
    EXPECT_TRUE(value.StringToString(log, ErrorLocationNull::Get(), ("'" + content + "'").c_str()));
    EXPECT_EQ(GetUnits(value.GetUtf8String()).size(), kMaxStringUnits);
    EXPECT_TRUE(value.StringToWString(log, ErrorLocationNull::Get(), ("\"" + content + "\"").c_str()));
    EXPECT_EQ(GetUnits(value.GetUtf16String()).size(), kMaxStringUnits);
}

}  // namespace
