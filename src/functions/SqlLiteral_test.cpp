#include "functions/SqlLiteral.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "platform/DataFormat.h"
#include "platform/TextOutput.h"
#include "support/FunctionCall.h"
#include "value/Value.h"

namespace {

std::string Interval(long long milliseconds) {
    CTextOutputString output;
    StringFromValue::SqlLiteralFromTIME(milliseconds, output);
    return output.TakeText();
}

std::string SqlOf(const CValue& value) {
    CTextOutputString output;
    return StringFromValue::SqlLiteralFromValue(&value, output) ? output.TakeText() : "none: " + output.GetText();
}

constexpr long long kSecond = 1000;
constexpr long long kMinute = 60 * kSecond;
constexpr long long kHour = 60 * kMinute;
constexpr long long kDay = 24 * kHour;

TEST(SqlLiteralFromTIME, FormFollowsTheUnitsThatAreNotZero) {
    struct Case {
        long long milliseconds;
        const char* text;
    };
    const Case cases[] = {
        {0, "INTERVAL '0' SECOND"},
        {1, "INTERVAL '0.001' SECOND"},
        {-1, "INTERVAL -'0.001' SECOND"},
        {1500, "INTERVAL '1.5' SECOND"},
        {2 * kSecond, "INTERVAL '2' SECOND"},
        {59'999, "INTERVAL '59.999' SECOND"},
        {kMinute, "INTERVAL '1' MINUTE"},
        {59 * kMinute, "INTERVAL '59' MINUTE"},
        {-90 * kSecond, "INTERVAL -'1:30' MINUTE TO SECOND"},
        {kMinute + 2 * kSecond, "INTERVAL '1:02' MINUTE TO SECOND"},
        {kMinute + 1500, "INTERVAL '1:1.5' MINUTE TO SECOND"},
        {kMinute + 1, "INTERVAL '1:0.001' MINUTE TO SECOND"},
        {kHour, "INTERVAL '1' HOUR"},
        {23 * kHour, "INTERVAL '23' HOUR"},
        {kHour + 5 * kMinute, "INTERVAL '1:05' HOUR TO MINUTE"},
        {kHour + 2 * kSecond, "INTERVAL '1:00:02' HOUR TO SECOND"},
        {kHour + 5 * kMinute + 59'999, "INTERVAL '1:05:59.999' HOUR TO SECOND"},
        {kDay, "INTERVAL '1' DAY"},
        {kDay + 2 * kHour, "INTERVAL '1 2' DAY TO HOUR"},
        {kDay + 5 * kMinute, "INTERVAL '1 00:05' DAY TO MINUTE"},
        {kDay + 2 * kHour + 5 * kMinute, "INTERVAL '1 02:05' DAY TO MINUTE"},
        {kDay + 1, "INTERVAL '1 00:00:0.001' DAY TO SECOND"},
        {-(kDay + 2 * kHour + 3 * kMinute + 4 * kSecond), "INTERVAL -'1 02:03:04' DAY TO SECOND"},
        {std::numeric_limits<long long>::max(), "INTERVAL '106751991167 07:12:55.807' DAY TO SECOND"},
        {std::numeric_limits<long long>::min(), "INTERVAL -'106751991167 07:12:55.808' DAY TO SECOND"},
    };
    for (const Case& row : cases)
        EXPECT_EQ(Interval(row.milliseconds), row.text) << row.milliseconds;
}

TEST(SqlLiteralFromTOD, WritesHoursToMilliseconds) {
    struct Case {
        unsigned int milliseconds;
        const char* text;
    };
    const Case cases[] = {
        {0, "TIME '00:00:00.000'"},
        {47'109'250, "TIME '13:05:09.250'"},
        {86'399'999, "TIME '23:59:59.999'"},
        {90'000'000, "TIME '25:00:00.000'"},
        {4'294'967'295, "TIME '1193:02:47.295'"},
    };
    for (const Case& row : cases) {
        CTextOutputString output;
        StringFromValue::SqlLiteralFromTOD(row.milliseconds, output);
        EXPECT_EQ(output.GetText(), row.text);
    }
}

TEST(SqlLiteralFromValue, EveryTypeHasItsFormOrNone) {
    struct Case {
        const char* literal;
        const char* text;
    };
    const Case cases[] = {
        {"Undefined", "NULL"},
        {"TRUE", "TRUE"},
        {"FALSE", "FALSE"},
        {"SINT#-128", "-128"},
        {"USINT#255", "255"},
        {"BYTE#16#FF", "255"},
        {"INT#-32768", "-32768"},
        {"UINT#65535", "65535"},
        {"WORD#16#FFFF", "65535"},
        {"DINT#-2147483648", "-2147483648"},
        {"UDINT#4294967295", "4294967295"},
        {"DWORD#16#FFFFFFFF", "4294967295"},
        {"LINT#-9223372036854775807", "-9223372036854775807"},
        {"ULINT#18446744073709551615", "18446744073709551615"},
        {"LWORD#16#FFFFFFFFFFFFFFFF", "18446744073709551615"},
        {"LWORD#0", "0"},
        {"REAL#1.5", "1.5"},
        {"LREAL#-0.1", "-0.1"},
        {"LREAL#1E20", "1.0E+20"},
        {"T#1d2h", "INTERVAL '1 2' DAY TO HOUR"},
        {"T#0s", "INTERVAL '0' SECOND"},
        {"TOD#13:05:09.250", "TIME '13:05:09.250'"},
        {"D#2024-01-31", "DATE '2024-01-31'"},
        {"DT#2024-01-31-13:05:09.250", "TIMESTAMP '2024-01-31 13:05:09.250'"},
        {"''", "''"},
        {"'O$'Brien'", "'O''Brien'"},
        {"'$'$''", "''''''"},
        {"'a\"b$$c$L'", "'a\"b$c\n'"},
        {"'\xC3\xA4'", "'\xC3\xA4'"},
        {"'$FF'", "'\xEF\xBF\xBD'"},
        {"'$EF$BB$BFx'", "'\xEF\xBB\xBFx'"},
        {"\"O'Brien \xF0\x9F\x98\x80\"", "'O''Brien \xF0\x9F\x98\x80'"},
        {"\"$D83D\"", "'\xEF\xBF\xBD'"},
        {"CHAR#'a'", "none: "},
        {"WCHAR#\"a\"", "none: "},
    };
    for (const Case& row : cases)
        EXPECT_EQ(SqlOf(function_test::ParseLiteral(row.literal)), row.text) << row.literal;
}

TEST(SqlLiteralFromValue, PayloadsAtTheLimitsAndTypesWithoutLiteral) {
    EXPECT_EQ(SqlOf(CValue(0xFFFFFFFFU, ElementaryType::Date)), "DATE '31197-09-14'");
    EXPECT_EQ(SqlOf(CValue(9223372036854775807LL, ElementaryType::DateAndTime)),
              "TIMESTAMP '31197-09-14 02:48:05.477'");
    EXPECT_EQ(SqlOf(CValue(-1LL, ElementaryType::DateAndTime)), "TIMESTAMP '1969-12-31 23:59:59.999'");
    EXPECT_EQ(SqlOf(CValue(ElementaryType::Pointer)), "none: ");
    EXPECT_EQ(SqlOf(CValue(ElementaryType::Composite)), "none: ");
    EXPECT_EQ(SqlOf(CValue(ElementaryType::CompositeString)), "none: ");
    EXPECT_EQ(SqlOf(CValue(ElementaryType::Type)), "none: ");
    EXPECT_EQ(SqlOf(CValue(0x1234'5678'9ABC'DEF0LL, ElementaryType::Byte)), "240") << "only the type's width counts";
}

TEST(HistoricChangeReason, CodesHaveTheirTexts) {
    struct Case {
        unsigned char code;
        const char* text;
    };
    const Case cases[] = {
        {0, "Unknown value 0"}, {1, "Start recording"}, {2, "Stop recording"},      {3, "Quality change"},
        {4, "Value change"},    {5, "Time sample"},     {6, "Tag value"},           {7, "Write command"},
        {8, "Loaded value"},    {9, "Unknown value 9"}, {255, "Unknown value 255"},
    };
    for (const char* tag : {"en-US", "de-DE", "no tag"}) {
        for (const Case& row : cases) {
            SCOPED_TRACE(int{row.code});
            char text[64];
            const unsigned int length =
                StringFromValue::HistoricChangeReasonToString(CTNLocale(tag), row.code, text, sizeof(text));
            EXPECT_EQ(std::string(text, length), row.text);
            EXPECT_EQ(text[length], '\0');
        }
    }
}

TEST(HistoricChangeReason, BufferIsBounded) {
    for (const unsigned char code : {static_cast<unsigned char>(1), static_cast<unsigned char>(99)}) {
        char text[8] = "#######";
        EXPECT_EQ(StringFromValue::HistoricChangeReasonToString(CTNLocale(), code, text, 5), 4U);
        EXPECT_EQ(text[4], '\0');
        EXPECT_EQ(text[5], '#');
        EXPECT_EQ(StringFromValue::HistoricChangeReasonToString(CTNLocale(), code, nullptr, 0), 0U);
    }
}

}  // namespace
