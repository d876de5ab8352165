#include <limits>

#include <gtest/gtest.h>

#include "support/LiteralTest.h"

using literal_test::ParseOutcome;

namespace {

// The payload in its unit, or the message.
template <typename Payload>
std::string NumberOutcome(literal_test::ParserMember parser, const char* text) {
    CValue value(std::string("before"));
    CErrorLog log;
    if (!(value.*parser)(log, ErrorLocationNull::Get(), text)) return literal_test::Messages(log);
    return std::to_string(value.GetPayload<Payload>());
}

struct Row {
    const char* text;
    const char* expected;
    const char* why;
};

TEST(StringToTime, AddsComponents) {
    const Row kRows[] = {
        {"T#-1h30m", "-5400000", ""},
        {"T#1.5s", "1500", ""},
        {"T#90m", "5400000", ""},
        {"T#1.5h", "5400000", ""},
        {"T#1d_2h", "93600000", "underscore before a number"},
        {"T#500ms1s", "1500", "any order"},
        {"T#1s1s1S", "3000", "repeated, any case"},
        {"T#1_000ms", "1000", "underscore in a number"},
        {"T#1D2H3M4S5MS", "93784005", "all units"},
        {"+2s", "2000", "plus sign, no prefix"},
        {"LTIME#2s", "2000", "any word is a prefix"},
        {"foo_bar#2s", "2000", "any word is a prefix"},
        {"T#0.0004s", "0", "rounded half up"},
        {"T#0.0005s", "1", "rounded half up"},
        {"T#0.4ms0.4ms", "0", "each component for itself"},
        {"T#0.5ms0.5ms", "2", "each component for itself"},
        {"T#1.2.3s", "1200", "a second point ends the number"},
        {"T#.5s", "500", ""},
        {"T#.s", "0", "a point alone is no digit"},
        {"T#", "0", "nothing behind the prefix"},
        {"", "0", "empty"},
        {nullptr, "0", "null"},
        {"T#-", "0", "sign only"},
        {"T#106751991167d7h12m55s807ms", "9223372036854775807", "the largest"},
        {"T#-106751991167d7h12m55s808ms", "-9223372036854775808", "the smallest: the sum wraps before it is negated"},
        {"T#1000000000000d", "9223372036854775807", "a component saturates"},
        {"T#9999999999999999999999999ms", "9223372036854775807", "a component saturates"},
        {"T#1000000000000d1ms", "-9223372036854775808", "the sum wraps"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text == nullptr ? "" : row.text) + ": " + row.why);
        EXPECT_EQ(NumberOutcome<long long>(&CValueLiteral::StringToTime, row.text), row.expected);
    }
}

TEST(StringToTime, RefusesWhatIsNoComponent) {
    const Row kRows[] = {
        {"T#h", "247: 'h' is not a valid time duration.", "no number"},
        {"T#1h x", "247: ' x' is not a valid time duration.", "the rest from there"},
        {"T#1h-2m", "247: '-2m' is not a valid time duration.", "sign inside"},
        {"T#--1h", "247: '-1h' is not a valid time duration.", "two signs"},
        {" 1h", "247: ' 1h' is not a valid time duration.", "leading blank"},
        {"T#1h_", "247: '_' is not a valid time duration.", "only an underscore"},
        {"#1h", "247: '#1h' is not a valid time duration.", "prefix without a word"},
        {"T1#1h", "247: 'T1#1h' is not a valid time duration.", "a digit in the word"},
        {"T#5", "255: Missing time units after '5'. Specify 'd', 'h', 'm', 's', 'ms'.", ""},
        {"T#1h3_0", "255: Missing time units after '30'. Specify 'd', 'h', 'm', 's', 'ms'.", "underscores dropped"},
        {"T#5 s", "255: Missing time units after '5'. Specify 'd', 'h', 'm', 's', 'ms'.", "blank before the unit"},
        {"T#5sec", "203: 'sec' is not a valid time unit.", ""},
        {"T#5us", "203: 'us' is not a valid time unit.", ""},
        {"T#5ns", "203: 'ns' is not a valid time unit.", ""},
        {"T#5min", "203: 'min' is not a valid time unit.", ""},
        {"T#1e3s", "203: 'e' is not a valid time unit.", "no exponents"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text) + ": " + row.why);
        EXPECT_EQ(NumberOutcome<long long>(&CValueLiteral::StringToTime, row.text), row.expected);
    }
}

TEST(StringToTimeOfDay, CountsWithoutTestingRanges) {
    const Row kRows[] = {
        {"TOD#12:30:15.9999", "45015999", "cut, not rounded"},
        {"TOD#25:70", "94200000", "25 hours and 70 minutes"},
        {"TOD#7", "25200000", "hours alone"},
        {"TIME_OF_DAY#1:2:3", "3723000", "long prefix"},
        {"1:2:3", "3723000", "no prefix"},
        {"x#1:2:3", "3723000", "any word"},
        {"TOD#1:2:3:4", "3723000", "trailing text"},
        {"TOD#1:2:3 PM", "3723000", "trailing text"},
        {"TOD#1-2", "3600000", "trailing text"},
        {"TOD#", "0", "no digits"},
        {"abc", "0", "no digits"},
        {"TOD#: 1: 5", "65000", "white space before a number"},
        {"TOD#: :5", "0", "white space alone is not skipped"},
        {"TOD#::1e1", "10000", "an exponent"},
        {"TOD#::0x10", "16000", "hexadecimal"},
        {"TOD#-1", "4291367296", "a negated hour wraps in 32 bits"},
        {"TOD#::-5", "0", "negative seconds count as none"},
        {"TOD#::nan", "0", ""},
        {"TOD#::inf", "4294967295", "saturated"},
        {"TOD#99999999999", "4291367296", "saturated, then multiplied in 32 bits"},
        {"", "208: Could not convert '' to 'TIME_OF_DAY'.", "empty"},
        {nullptr, "208: Could not convert '' to 'TIME_OF_DAY'.", "null"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text == nullptr ? "" : row.text) + ": " + row.why);
        EXPECT_EQ(NumberOutcome<std::uint32_t>(&CValueLiteral::StringToTimeOfDay, row.text), row.expected);
    }
}

TEST(StringToDate, ReadsYearMonthAndDay) {
    const Row kRows[] = {
        {"D#2024-01-31", "D#2024-01-31", ""},
        {"DATE#2024-1-1", "D#2024-01-01", "one digit"},
        {"2024-02-29", "D#2024-02-29", "leap day, no prefix"},
        {"D#2024", "D#2024-01-01", "year alone"},
        {"D#2024-06", "D#2024-06-01", "year and month"},
        {"D#1970-01-01", "D#1970-01-01", "the first"},
        {"D#9999-12-31", "D#9999-12-31", "the last"},
        {"D#2024-06-15 x", "D#2024-06-15", "trailing text"},
        {"D#2024/06", "D#2024-01-01", "trailing text"},
        {"D# 2024- 6- 15", "D#2024-06-15", "white space before a number"},
        {"D#2024-02-30", "204: Invalid date.", "no such day"},
        {"D#2023-02-29", "204: Invalid date.", "no leap year"},
        {"D#2024-13-01", "204: Invalid date.", "no such month"},
        {"D#2024-00-01", "204: Invalid date.", ""},
        {"D#2024-01-00", "204: Invalid date.", ""},
        {"D#2024-", "204: Invalid date.", "no month behind the separator"},
        {"D#2024--6", "204: Invalid date.", "negative month"},
        {"D#1969-12-31", "204: Invalid date.", "before the first"},
        {"D#10000-01-01", "204: Invalid date.", "behind the last"},
        {"D#4294969320", "204: Invalid date.", "not taken modulo 2^32"},
        {"D#99999999999999999999", "204: Invalid date.", "beyond 64 bits"},
        {"D#", "204: Invalid date.", "no digits"},
        {"x", "204: Invalid date.", "no digits"},
        {"", "208: Could not convert '' to 'DATE'.", "empty"},
        {nullptr, "208: Could not convert '' to 'DATE'.", "null"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text == nullptr ? "" : row.text) + ": " + row.why);
        EXPECT_EQ(ParseOutcome(&CValueLiteral::StringToDate, row.text), row.expected);
    }
}

TEST(StringToDate, CountsDaysFrom1970) {
    EXPECT_EQ(NumberOutcome<std::uint32_t>(&CValueLiteral::StringToDate, "D#1970-01-01"), "0");
    EXPECT_EQ(NumberOutcome<std::uint32_t>(&CValueLiteral::StringToDate, "D#1970-01-02"), "1");
    EXPECT_EQ(NumberOutcome<std::uint32_t>(&CValueLiteral::StringToDate, "D#2000-03-01"), "11017");
}

TEST(StringToDateAndTime, ReadsEachFieldBehindItsSeparator) {
    const Row kRows[] = {
        {"DT#2024-01-02-03:04:05.5", "DT#2024-01-02-03:04:05.500", ""},
        {"DT#2024-01-02 03:04:05.5", "DT#2024-01-02-03:04:05.500", "a blank before the hour"},
        {"2024-01-02-03:04:05.5", "DT#2024-01-02-03:04:05.500", "no prefix"},
        {"DT#2024", "DT#2024-01-01-00:00:00.000", "year alone"},
        {"DT#2024-02", "DT#2024-02-01-00:00:00.000", ""},
        {"DT#2024-02-03", "DT#2024-02-03-00:00:00.000", ""},
        {"DT#2024-02-03-04", "DT#2024-02-03-04:00:00.000", ""},
        {"DT#2024-02-03-04:05", "DT#2024-02-03-04:05:00.000", ""},
        {"DT#2024-02 03:04", "DT#2024-02-01-00:00:00.000", "no hour without a day"},
        {"DT#2024-02-03T04:05", "DT#2024-02-03-00:00:00.000", "no such separator"},
        {"DT#2024-01-01-00:00:59.9999", "DT#2024-01-01-00:00:59.999", "cut, not rounded"},
        {"DT#2024-01-01-00:00:-0.0001", "DT#2024-01-01-00:00:00.000", "cut to zero"},
        {"DT#2024-01-01-00:00:nan", "DT#2024-01-01-00:00:00.000", "no number"},
        {"DT#1970-01-01-00:00:00", "DT#1970-01-01-00:00:00.000", "the first"},
        {"DT#9999-12-31-23:59:59.999", "DT#9999-12-31-23:59:59.999", "the last"},
        {"DT#2024-01-01-24:00", "204: Invalid date.", "hour"},
        {"DT#2024-01-01-00:60", "204: Invalid date.", "minute"},
        {"DT#2024-01-01-00:00:60", "204: Invalid date.", "second"},
        {"DT#2024-01-01-00:00:1e30", "204: Invalid date.", "second"},
        {"DT#2024-01-01-00:00:inf", "204: Invalid date.", "second"},
        {"DT#2024-01-01-00:00:-0.5", "204: Invalid date.", "negative"},
        {"DT#2024-01-01-00:00:-5", "204: Invalid date.", "negative"},
        {"DT#2024-01-01--1:00", "204: Invalid date.", "negative"},
        {"DT#2024-01-01-4294967296:00", "204: Invalid date.", "not taken modulo 2^32"},
        {"DT#2023-02-29", "204: Invalid date.", "no leap year"},
        {"DT#", "204: Invalid date.", "no digits"},
        {"", "208: Could not convert '' to 'DATE_AND_TIME'.", "empty"},
        {nullptr, "208: Could not convert '' to 'DATE_AND_TIME'.", "null"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text == nullptr ? "" : row.text) + ": " + row.why);
        EXPECT_EQ(ParseOutcome(&CValueLiteral::StringToDateAndTime, row.text), row.expected);
    }
}

TEST(StringToDateAndTime, CountsMillisecondsFrom1970) {
    EXPECT_EQ(NumberOutcome<std::uint64_t>(&CValueLiteral::StringToDateAndTime, "DT#1970-01-01-00:00:00.001"), "1");
    EXPECT_EQ(NumberOutcome<std::uint64_t>(&CValueLiteral::StringToDateAndTime, "DT#1970-01-02-01:02:03.004"),
              "90123004");
}

TEST(TimeLiterals, FailuresLeaveTheValueCleared) {
    CErrorLogToNull log;
    for (const auto parser :
         {&CValueLiteral::StringToTime, &CValueLiteral::StringToDate, &CValueLiteral::StringToDateAndTime}) {
        CValue value(std::string("before"));
        EXPECT_FALSE((value.*parser)(log, ErrorLocationNull::Get(), "?"));
        EXPECT_TRUE(value.IsUndefined());
    }
}

}  // namespace
