#include <clocale>
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LiteralTest.h"
#include "value/VMTypeValue.h"

using enum ElementaryType;
using literal_test::AsDeclaration;
using literal_test::ParseOutcome;

namespace {

struct Row {
    const char* text;
    const char* expected;
    const char* why;
};

struct TypedRow {
    const char* text;
    ElementaryType wanted;
    const char* expected;
    const char* why;
};

TEST(SetFromText, PicksTheParserByTheWantedType) {
    const TypedRow kRows[] = {
        {"1", Bool, "BOOL#TRUE", "boolean"},
        {"1", SInt, "SINT#1", "integers"},
        {"1", USInt, "USINT#1", ""},
        {"1", Byte, "BYTE#16#1", ""},
        {"1", Int, "INT#1", ""},
        {"1", UInt, "UINT#1", ""},
        {"1", Word, "WORD#16#1", ""},
        {"1", DInt, "DINT#1", ""},
        {"1", UDInt, "UDINT#1", ""},
        {"1", DWord, "DWORD#16#1", ""},
        {"1", LInt, "LINT#1", ""},
        {"1", ULInt, "ULINT#1", ""},
        {"1", LWord, "LWORD#16#1", ""},
        {"1", Real, "REAL#1.0", "reals"},
        {"1", LReal, "LREAL#1.0", ""},
        {"1s", Time, "T#1s", "times and dates"},
        {"1", TimeOfDay, "TOD#01:00:00.000", ""},
        {"2024", Date, "D#2024-01-01", ""},
        {"2024", DateAndTime, "DT#2024-01-01-00:00:00.000", ""},
        {"'a'", String, "STRING#'a'", "characters"},
        {"CHAR#'a'", Char, "CHAR#'a'", ""},
        {"\"a\"", WString, "WSTRING#\"a\"", ""},
        {"WCHAR#\"a\"", WChar, "WCHAR#\"a\"", ""},
        {"DINT", Type, "TYPE#DINT", "a type"},
    };
    for (const TypedRow& row : kRows) {
        SCOPED_TRACE(std::string(row.text) + " " + row.why);
        EXPECT_EQ(ParseOutcome(row.text, row.wanted), row.expected);
    }
}

TEST(SetFromText, TakesTheTypeFromThePrefixWhenNoneIsWanted) {
    const Row kRows[] = {
        {"BOOL#0", "BOOL#FALSE", ""},
        {"lint#16#ff", "LINT#255", "any case"},
        {"REAL#1.5", "REAL#1.5", ""},
        {"LREAL#1.5", "LREAL#1.5", ""},
        {"T#1h", "T#1h", "short form"},
        {"TIME#1h", "T#1h", "long form"},
        {"TOD#1:2:3", "TOD#01:02:03.000", ""},
        {"D#2024-01-31", "D#2024-01-31", ""},
        {"DATE_AND_TIME#2024-01-31-01:02:03", "DT#2024-01-31-01:02:03.000", ""},
        {"STRING#'x'", "STRING#'x'", ""},
        {"CHAR#'x'", "CHAR#'x'", ""},
        {"WSTRING#\"x\"", "WSTRING#\"x\"", ""},
        {"WCHAR#\"x\"", "WCHAR#\"x\"", ""},
        {"INT#40000", "202: Value '40000' is outside the range of type 'INT'.", "the parser's own message"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(ParseOutcome(row.text, Undefined), row.expected);
    }
}

TEST(SetFromText, FailsSilentlyWhereNoParserExists) {
    for (const char* text : {"", "5", "TRUE", "'a'", "T 1s", "LTIME#1s", "FOO#1", "COMPOSITE#1"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(ParseOutcome(text, Undefined), "failed");
    }
    for (const ElementaryType type : {Composite, CompositeString, AnyInt, Any, static_cast<ElementaryType>(28)}) {
        SCOPED_TRACE(static_cast<std::uint32_t>(type));
        EXPECT_EQ(ParseOutcome("1", type), "failed");
    }
}

TEST(SetFromText, ReleasesWhatWasHeldAndLeavesNothingOnFailure) {
    for (const ElementaryType wanted : {Undefined, Bool, DInt, Time, Date, String, WString, Pointer, Type, Composite}) {
        CErrorLogToNull log;
        CValue value(std::string("before"));
        EXPECT_FALSE(value.SetFromText(log, ErrorLocationNull::Get(), "?", wanted));
        EXPECT_TRUE(value.IsUndefined());
    }
}

TEST(SetFromText, EndsAtAnEmbeddedNul) {
    EXPECT_EQ(ParseOutcome(std::string("12\0"
                                       "34",
                                       5),
                           DInt),
              "DINT#12");
    EXPECT_EQ(ParseOutcome(std::string("\0"
                                       "1",
                                       2),
                           DInt),
              "224: '' is not a valid integer.");
}

TEST(StringToBool, AcceptsFourWordsInAnyCase) {
    const Row kRows[] = {
        {"TRUE", "BOOL#TRUE", ""},
        {"true", "BOOL#TRUE", ""},
        {"1", "BOOL#TRUE", ""},
        {"FALSE", "BOOL#FALSE", ""},
        {"False", "BOOL#FALSE", ""},
        {"0", "BOOL#FALSE", ""},
        {"BOOL#0", "BOOL#FALSE", "prefix"},
        {"bool#true", "BOOL#TRUE", "prefix"},
        {"", "201: '' is not a valid boolean value.", "empty"},
        {nullptr, "201: '' is not a valid boolean value.", "null"},
        {" TRUE", "201: ' TRUE' is not a valid boolean value.", "leading blank"},
        {"TRUE ", "201: 'TRUE ' is not a valid boolean value.", "trailing blank"},
        {"2", "201: '2' is not a valid boolean value.", "another number"},
        {"01", "201: '01' is not a valid boolean value.", "two digits"},
        {"TRU", "201: 'TRU' is not a valid boolean value.", "cut"},
        {"BOOL#", "201: 'BOOL#' is not a valid boolean value.", "nothing behind the prefix"},
        {"BOOL#BOOL#1", "201: 'BOOL#BOOL#1' is not a valid boolean value.", "two prefixes"},
        {"INT#1", "201: 'INT#1' is not a valid boolean value.", "prefix of another family"},
        {"\xff", "201: '\xff' is not a valid boolean value.", "no UTF-8"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(ParseOutcome(&CValueLiteral::StringToBool, row.text), row.expected);
    }
}

std::string IntegerOutcome(const char* text, ElementaryType wanted = Undefined) {
    CValue value(std::string("before"));
    return literal_test::Outcome(
        value, [&](CErrorLog& log) { return value.StringToInteger(log, ErrorLocationNull::Get(), text, wanted); });
}

TEST(StringToInteger, ReadsSignUnderscoresAndRadix) {
    const Row kRows[] = {
        {"0", "DINT#0", ""},
        {"-0", "DINT#0", ""},
        {"+5", "DINT#5", "plus sign"},
        {"007", "DINT#7", "leading zeros"},
        {"1_000", "DINT#1000", "underscore"},
        {"1__0_", "DINT#10", "underscores anywhere behind the first digit"},
        {"16#ff", "DWORD#16#FF", "small digits"},
        {"16#FF", "DWORD#16#FF", "capital digits"},
        {"2#1010_1010", "DWORD#16#AA", "binary"},
        {"8#777", "DWORD#16#1FF", "octal"},
        {"1_6#F", "DWORD#16#F", "underscore in the radix"},
        {"10#12", "DINT#12", "explicit decimal"},
        {"12abc", "DINT#12", "rest is not looked at"},
        {"16#FFZZ", "DWORD#16#FF", "rest is not looked at"},
        {"1.9", "DINT#1", "rest is not looked at"},
        {"2#12", "DWORD#16#1", "ends at a digit of a higher radix"},
        {"8#78", "DWORD#16#7", "ends at a digit of a higher radix"},
        {"", "224: '' is not a valid integer.", "empty"},
        {nullptr, "224: '' is not a valid integer.", "null"},
        {"_1", "224: '_1' is not a valid integer.", "underscore first"},
        {"16#_1", "224: '16#_1' is not a valid integer.", "underscore first behind the radix"},
        {"2#", "224: '2#' is not a valid integer.", "no digit behind the radix"},
        {"2#2", "224: '2#2' is not a valid integer.", "no digit of the radix"},
        {"16#-FF", "224: '16#-FF' is not a valid integer.", "sign behind the radix"},
        {"+-1", "224: '+-1' is not a valid integer.", "two signs"},
        {" 1", "224: ' 1' is not a valid integer.", "leading blank"},
        {"#1", "224: '#1' is not a valid integer.", "no radix"},
        {"-", "224: '-' is not a valid integer.", "sign only"},
        {"FF", "224: 'FF' is not a valid integer.", "hexadecimal without radix"},
        {"INT#", "224: 'INT#' is not a valid integer.", "nothing behind the prefix"},
        {"REAL#5", "224: 'REAL#5' is not a valid integer.", "prefix of another family"},
        {"BOOL#1", "224: 'BOOL#1' is not a valid integer.", "prefix of another family"},
        {"T#5", "224: 'T#5' is not a valid integer.", "prefix of another family"},
        {"0#0", "224: '0#0' is not a valid integer.", "radix without digits"},
        {"1#0", "225: Integer radix '1' is not supported. Acceptable values are: 2, 8, 10 and 16.", "radix 1"},
        {"3#12", "225: Integer radix '3' is not supported. Acceptable values are: 2, 8, 10 and 16.", "radix 3"},
        {"12#FF", "225: Integer radix '12' is not supported. Acceptable values are: 2, 8, 10 and 16.", "hex digits"},
        {"36#Z", "224: '36#Z' is not a valid integer.", "no hexadecimal digit"},
        {"4294967298#1", "225: Integer radix '2147483647' is not supported. Acceptable values are: 2, 8, 10 and 16.",
         "a radix beyond int is not cut to 2"},
        {"INT#3#1", "225: Integer radix '3' is not supported. Acceptable values are: 2, 8, 10 and 16.", "with prefix"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text == nullptr ? "" : row.text) + ": " + row.why);
        EXPECT_EQ(IntegerOutcome(row.text), row.expected);
    }
}

TEST(StringToInteger, FindsATypeThatHoldsTheNumber) {
    const Row kRows[] = {
        {"-128", "DINT#-128", ""},
        {"2147483647", "DINT#2147483647", "at the limit"},
        {"2147483648", "LINT#2147483648", "one over"},
        {"-2147483648", "DINT#-2147483648", "at the limit"},
        {"-2147483649", "LINT#-2147483649", "one over"},
        {"9223372036854775807", "LINT#9223372036854775807", ""},
        {"18446744073709551616", "DINT#0", "wraps in 64 bits"},
        {"16#FFFF_FFFF", "DWORD#16#FFFFFFFF", "at the limit"},
        {"16#1_0000_0000", "LWORD#16#100000000", "one over"},
        {"10#2147483648", "LINT#2147483648", "explicit decimal"},
        {"2#0", "DWORD#16#0", ""},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text) + ": " + row.why);
        EXPECT_EQ(IntegerOutcome(row.text), row.expected);
    }
    EXPECT_EQ(IntegerOutcome("5", Bool), "DINT#5") << "no integer type is wanted";
    EXPECT_EQ(IntegerOutcome("5", AnyInt), "DINT#5") << "no integer type is wanted";
}

TEST(StringToInteger, TestsTheRangeOfTheType) {
    const TypedRow kRows[] = {
        {"127", SInt, "SINT#127", ""},
        {"128", SInt, "202: Value '128' is outside the range of type 'SINT'.", ""},
        {"-128", SInt, "SINT#-128", ""},
        {"-129", SInt, "202: Value '-129' is outside the range of type 'SINT'.", ""},
        {"SINT#-16#80", Undefined, "SINT#-128", ""},
        {"-16#FF", Int, "INT#-255", "the sign stands before the radix"},
        {"255", USInt, "USINT#255", ""},
        {"256", USInt, "202: Value '256' is outside the range of type 'USINT'.", ""},
        {"-1", USInt, "202: Value '-1' is outside the range of type 'USINT'.", "never negative"},
        {"16#FF", Byte, "BYTE#16#FF", ""},
        {"16#100", Byte, "202: Value '16#100' is outside the range of type 'BYTE'.", ""},
        {"32767", Int, "INT#32767", ""},
        {"32768", Int, "202: Value '32768' is outside the range of type 'INT'.", ""},
        {"-32768", Int, "INT#-32768", ""},
        {"-32769", Int, "202: Value '-32769' is outside the range of type 'INT'.", ""},
        {"65535", UInt, "UINT#65535", ""},
        {"65536", UInt, "202: Value '65536' is outside the range of type 'UINT'.", ""},
        {"WORD#16#FFFF", Undefined, "WORD#16#FFFF", ""},
        {"65536", Word, "202: Value '65536' is outside the range of type 'WORD'.", ""},
        {"2147483648", DInt, "202: Value '2147483648' is outside the range of type 'DINT'.", ""},
        {"-2147483648", DInt, "DINT#-2147483648", ""},
        {"4294967295", UDInt, "UDINT#4294967295", ""},
        {"4294967296", UDInt, "202: Value '4294967296' is outside the range of type 'UDINT'.", ""},
        {"4294967296", DWord, "202: Value '4294967296' is outside the range of type 'DWORD'.", ""},
        {"-9223372036854775808", LInt, "LINT#-9223372036854775808", ""},
        {"18446744073709551615", LInt, "LINT#-1", "64 bits are not tested"},
        {"18446744073709551615", ULInt, "ULINT#18446744073709551615", ""},
        {"-1", ULInt, "ULINT#1", "64 bits are not tested, the sign is not stored"},
        {"-16#F", LWord, "LWORD#16#F", "64 bits are not tested, the sign is not stored"},
        {"INT#40000", DInt, "202: Value '40000' is outside the range of type 'INT'.", "the prefix holds"},
        {"INT#5", DInt, "INT#5", "the prefix holds"},
        {"dint#16#zz", Int, "224: 'dint#16#zz' is not a valid integer.", "quotes the whole text"},
    };
    for (const TypedRow& row : kRows) {
        SCOPED_TRACE(std::string(row.text) + ": " + row.why);
        EXPECT_EQ(IntegerOutcome(row.text, row.wanted), row.expected);
    }
}

TEST(ParseSignedInteger, ReportsSignMagnitudeAndRadix) {
    bool negative = false;
    unsigned long long magnitude = 0;
    int radix = 0;
    EXPECT_TRUE(CValueLiteral::ParseSignedInteger("-16#FF rest", negative, magnitude, radix));
    EXPECT_TRUE(negative);
    EXPECT_EQ(magnitude, 255U);
    EXPECT_EQ(radix, 16);
    EXPECT_TRUE(CValueLiteral::ParseSignedInteger("+7", negative, magnitude, radix));
    EXPECT_FALSE(negative);
    EXPECT_EQ(magnitude, 7U);
    EXPECT_EQ(radix, 10);
    EXPECT_FALSE(CValueLiteral::ParseSignedInteger("", negative, magnitude, radix));
    EXPECT_FALSE(CValueLiteral::ParseSignedInteger("x", negative, magnitude, radix));
}

TEST(ParseUnsignedInteger, StopsAtTheFirstOtherCharacter) {
    const char* text = "1_0f_G";
    unsigned long long value = 0;
    EXPECT_TRUE(CValueLiteral::ParseUnsignedInteger(text, 16, value));
    EXPECT_EQ(value, 0x10FU);
    EXPECT_STREQ(text, "G");
    text = "19";
    EXPECT_TRUE(CValueLiteral::ParseUnsignedInteger(text, 9, value));
    EXPECT_EQ(value, 1U);
    EXPECT_STREQ(text, "9");
    text = "_1";
    EXPECT_FALSE(CValueLiteral::ParseUnsignedInteger(text, 10, value));
    EXPECT_STREQ(text, "_1");
}

std::string RealOutcome(const char* text, ElementaryType wanted = Undefined) {
    CValue value(std::string("before"));
    return literal_test::Outcome(
        value, [&](CErrorLog& log) { return value.StringToReal(log, ErrorLocationNull::Get(), text, wanted); });
}

TEST(StringToReal, ReadsWhatStrtodReadsWithoutUnderscores) {
    const TypedRow kRows[] = {
        {"1.5", Undefined, "LREAL#1.5", "LREAL when nothing is said"},
        {"1.5", DInt, "LREAL#1.5", "no real type is wanted"},
        {"1.5", Real, "REAL#1.5", ""},
        {"REAL#1.5", Undefined, "REAL#1.5", "prefix"},
        {"REAL#1.5", LReal, "REAL#1.5", "the prefix holds"},
        {"lreal#2", Real, "LREAL#2.0", "the prefix holds"},
        {"1_000.5", LReal, "LREAL#1000.5", "underscores"},
        {"_1_._5_", LReal, "LREAL#1.5", "underscores anywhere"},
        {"-1e3", LReal, "LREAL#-1000.0", ""},
        {"1E-07", LReal, "LREAL#1.0E-07", ""},
        {".5", LReal, "LREAL#0.5", ""},
        {"5.", LReal, "LREAL#5.0", ""},
        {" \t1.5", LReal, "LREAL#1.5", "leading white space"},
        {"0x1.8p3", LReal, "LREAL#12.0", "hexadecimal"},
        {"inf", LReal, "LREAL#inf", ""},
        {"-INFINITY", LReal, "LREAL#-inf", ""},
        {"NaN", LReal, "LREAL#nan", ""},
        {"nan(12)", Real, "REAL#nan", ""},
        {"1e400", LReal, "LREAL#inf", "beyond the range"},
        {"1e39", Real, "REAL#inf", "beyond the range of single precision"},
        {"1e-400", LReal, "LREAL#0.0", "below the range"},
        {"-0", LReal, "LREAL#-0.0", ""},
        {"16777217", Real, "REAL#16777216.0", "single precision"},
        {"1.0000000596046448", Real, "REAL#1.0", "just above a midpoint: rounded to double first"},
        {"REAL#", Undefined, "REAL#0.0", "nothing behind the prefix is consumed as a whole"},
        {"", Undefined, "208: Could not convert '' to 'LREAL'.", "empty"},
        {"", Real, "208: Could not convert '' to 'REAL'.", "empty"},
        {nullptr, DInt, "208: Could not convert '' to 'LREAL'.", "null"},
        {"1.5x", Real, "208: Could not convert '1.5x' to 'REAL'.", "text behind the number"},
        {"1.5 ", LReal, "208: Could not convert '1.5 ' to 'LREAL'.", "white space behind the number"},
        {"1,5", LReal, "208: Could not convert '1,5' to 'LREAL'.", "comma"},
        {"1e", LReal, "208: Could not convert '1e' to 'LREAL'.", "exponent without digits"},
        {"REAL#x", LReal, "208: Could not convert 'REAL#x' to 'REAL'.", "named by the prefix"},
        {"abc", Undefined, "208: Could not convert 'abc' to 'LREAL'.", ""},
        {"INT#1", Undefined, "208: Could not convert 'INT#1' to 'LREAL'.", "prefix of another family"},
        {"INT#1", Real, "208: Could not convert 'INT#1' to 'REAL'.", "prefix of another family"},
    };
    for (const TypedRow& row : kRows) {
        SCOPED_TRACE(std::string(row.text == nullptr ? "" : row.text) + ": " + row.why);
        EXPECT_EQ(RealOutcome(row.text, row.wanted), row.expected);
    }
}

TEST(StringToReal, KeepsTheNumberWhenTextFollows) {
    CErrorLogToNull log;
    CValue value;
    EXPECT_FALSE(value.StringToReal(log, ErrorLocationNull::Get(), "2.5V", Real));
    EXPECT_EQ(AsDeclaration(value), "REAL#2.5");
    EXPECT_FALSE(value.StringToReal(log, ErrorLocationNull::Get(), "INT#1", Real));
    EXPECT_TRUE(value.IsUndefined());
}

TEST(StringToReal, LocaleOfTheHostDoesNotMatter) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const char* const changed = std::setlocale(LC_ALL, "de_DE.UTF-8");
    const std::string outcome = RealOutcome("1.5");
    (void)std::setlocale(LC_ALL, before.c_str());
    EXPECT_EQ(outcome, "LREAL#1.5");
    if (changed == nullptr) GTEST_SKIP() << "no locale with a decimal comma is installed";
}

TEST(StringToPointer, KnowsOnlyNull) {
    const Row kRows[] = {
        {"NULL", "POINTER#NULL", ""},
        {"null", "POINTER#NULL", "any case"},
        {"POINTER#Null", "POINTER#NULL", "prefix"},
        {"", "208: Could not convert '' to 'POINTER'.", "empty"},
        {nullptr, "208: Could not convert '' to 'POINTER'.", "null"},
        {"NUL", "208: Could not convert 'NUL' to 'POINTER'.", "cut"},
        {"NULL ", "208: Could not convert 'NULL ' to 'POINTER'.", "blank"},
        {"POINTER#0", "208: Could not convert 'POINTER#0' to 'POINTER'.", "a number"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.why);
        const std::string outcome = ParseOutcome(&CValueLiteral::StringToPointer, row.text);
        // The text of a null pointer is PointerValue's business.
        CValue null(Pointer);
        EXPECT_EQ(outcome, std::string(row.expected) == "POINTER#NULL" ? AsDeclaration(null) : row.expected);
    }
}

TEST(StringToPointer, KeepsTheValueOnFailure) {
    CErrorLogToNull log;
    CValue value(std::string("before"));
    EXPECT_FALSE(value.StringToPointer(log, ErrorLocationNull::Get(), "DINT#x"));
    EXPECT_EQ(AsDeclaration(value), "WSTRING#\"before\"");
}

TEST(StringToType, ReadsNameAndLength) {
    const Row kRows[] = {
        {"DINT", "TYPE#DINT", ""},
        {"bool", "TYPE#BOOL", "any case"},
        {"T", "TYPE#TIME", "short form"},
        {"Date_And_Time", "TYPE#DATE_AND_TIME", ""},
        {"TYPE", "TYPE#TYPE", "TYPE itself"},
        {"STRING[80]", "TYPE#STRING[80]", ""},
        {"WSTRING[65535]", "TYPE#WSTRING[65535]", "the largest length"},
        {"WSTRING[65537]", "TYPE#WSTRING[1]", "counted in 16 bits"},
        {"STRING[80]x", "TYPE#STRING[80]", "text behind the bracket"},
        {"DINT x", "TYPE#DINT", "text behind the name"},
        {"INT#DINT", "TYPE#DINT", "a prefix is skipped"},
        {"", "208: Could not convert '' to 'TYPE'.", "empty"},
        {nullptr, "208: Could not convert '' to 'TYPE'.", "null"},
        {"FOO", "208: Could not convert 'FOO' to 'TYPE'.", "unknown"},
        {"COMPOSITE", "208: Could not convert 'COMPOSITE' to 'TYPE'.", "not in the table"},
        {"STRING[8x]", "208: Could not convert 'STRING[8x]' to 'TYPE'.", ""},
        {"STRING[80", "208: Could not convert 'STRING[80' to 'TYPE'.", "no closing bracket"},
        {"STRING[-1]", "208: Could not convert 'STRING[-1]' to 'TYPE'.", "sign"},
        {"STRING[ 8]", "208: Could not convert 'STRING[ 8]' to 'TYPE'.", "blank"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(ParseOutcome(&CValueLiteral::StringToType, row.text), row.expected);
    }
}

TEST(StringToType, StoresCodeAndLength) {
    CErrorLogToNull log;
    CValue value;
    ASSERT_TRUE(value.StringToType(log, ErrorLocationNull::Get(), "STRING[80]"));
    EXPECT_EQ(value.GetType(), Type);
    EXPECT_EQ(value.GetPayload<CVMTypeValue>().elementType, 20);
    EXPECT_EQ(value.GetPayload<CVMTypeValue>().length, 80);
    ASSERT_TRUE(value.StringToType(log, ErrorLocationNull::Get(), "WSTRING[]"));
    EXPECT_EQ(value.GetPayload<CVMTypeValue>().elementType, 21);
    EXPECT_EQ(value.GetPayload<CVMTypeValue>().length, 0);
    EXPECT_FALSE(value.StringToType(log, ErrorLocationNull::Get(), "FOO"));
    EXPECT_EQ(value.GetPayload<CVMTypeValue>().elementType, 21) << "kept on failure";
}

}  // namespace
