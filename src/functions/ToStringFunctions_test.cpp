#include "functions/ToStringFunctions.h"

#include <string>

#include <gtest/gtest.h>

#include "functions/FormatCache.h"
#include "functions/FunctionContext.h"
#include "support/FunctionCall.h"

namespace {

using function_test::CallCase;
using function_test::Declare;
using function_test::ExpectCalls;
using function_test::FunctionCaller;
using function_test::ParseLiteral;

TEST(ToStringFunctions, QualityCodes) {
    const CallCase cases[] = {
        {"QUALITY_TO_STRING(INT#16#C0, TRUE)", "STRING#'Good'"},
        {"QUALITY_TO_STRING(INT#16#C3, TRUE)", "STRING#'Good'", "limit bits are ignored"},
        {"QUALITY_TO_STRING(INT#16#80, TRUE)", "STRING#'Unknown'"},
        {"QUALITY_TO_STRING(192, FALSE)", "STRING#'192 (Good)'"},
        {"QUALITY_TO_STRING(INT#16#1C0, FALSE)", "STRING#'448 (Good)'"},
        {"QUALITY_TO_STRING(-1, 0)", "STRING#'65535 (Good, unknown/invalid status)'"},
        {"QUALITY_TO_STRING(DINT#65728, 1)", "STRING#'Good'", "16 bits are read"},
        {"QUALITY_TO_STRING('8', 'TRUE')", "STRING#'Bad, not connected'"},
        {"QUALITY_TO_STRING('x', TRUE)", "Failed 224 [Function QUALITY_TO_STRING]", "no parameter is named"},
        {"QUALITY_TO_STRING(0, 'x')", "Failed 201 [Function QUALITY_TO_STRING]"},
        {"QUALITY_TO_STRING(0)", "Failed 242 [Function QUALITY_TO_STRING]"},
        {"QUALITY_TO_STRING(0, TRUE, 1)", "Failed 242 [Function QUALITY_TO_STRING]"},
    };
    ExpectCalls(cases);
}

TEST(ToStringFunctions, ChangeReasons) {
    const CallCase cases[] = {
        {"LOG_REASON_TO_STRING(1)", "STRING#'Start recording'"},
        {"LOG_REASON_TO_STRING(6)", "STRING#'Tag value'"},
        {"LOG_REASON_TO_STRING(8)", "STRING#'Loaded value'"},
        {"LOG_REASON_TO_STRING(0)", "STRING#'Unknown value 0'"},
        {"LOG_REASON_TO_STRING(INT#262)", "STRING#'Tag value'", "the low byte counts"},
        {"LOG_REASON_TO_STRING(-1)", "STRING#'Unknown value 255'"},
        {"LOG_REASON_TO_STRING('x')", "Failed 224 [Function LOG_REASON_TO_STRING]"},
        {"LOG_REASON_TO_STRING()", "Failed 242 [Function LOG_REASON_TO_STRING]"},
        {"LOG_REASON_TO_STRING(1, 2)", "Failed 242 [Function LOG_REASON_TO_STRING]"},
    };
    ExpectCalls(cases);
}

TEST(ToStringFunctions, SqlLiterals) {
    const CallCase cases[] = {
        {"TO_SQL_LITERAL(5)", "STRING#'5'"},
        {"TO_SQL_LITERAL(\"O'Brien\")", "STRING#'$'O$'$'Brien$''"},
        {"TO_SQL_LITERAL(Undefined)", "STRING#'NULL'"},
        {"TO_SQL_LITERAL(BYTE#16#FF)", "STRING#'255'"},
        {"TO_SQL_LITERAL(T#-90s)", "STRING#'INTERVAL -$'1:30$' MINUTE TO SECOND'"},
        {"TO_SQL_LITERAL(CHAR#'a')", "Failed 228 [Function TO_SQL_LITERAL]"},
        {"TO_SQL_LITERAL()", "Failed 242 [Function TO_SQL_LITERAL]"},
        {"TO_SQL_LITERAL(1, 2)", "Failed 242 [Function TO_SQL_LITERAL]"},
    };
    ExpectCalls(cases);
}

TEST(ToStringFunctions, NumbersTakeTheTypeOfTheFormat) {
    const CallCase cases[] = {
        {"FORMAT_NUMBER(1234.5, '#,##0.00')", "STRING#'1,234.50'"},
        {"FORMAT_NUMBER(1234.5, \"#,##0.00\")", "WSTRING#\"1,234.50\""},
        {"FORMAT_NUMBER(REAL#0.5, '0.0')", "STRING#'0.5'"},
        {"FORMAT_NUMBER(REAL#0.1, '0.000000000')", "STRING#'0.100000001'", "a REAL is widened first"},
        {"FORMAT_NUMBER(LREAL#2.5, '0')", "STRING#'2'", "halves to even"},
        {"FORMAT_NUMBER(SINT#-5, '0')", "STRING#'-5'"},
        {"FORMAT_NUMBER(INT#-32768, '0')", "STRING#'-32768'"},
        {"FORMAT_NUMBER(LINT#9223372036854775807, '0')", "STRING#'9223372036854775807'"},
        {"FORMAT_NUMBER(USINT#255, '0')", "STRING#'255'"},
        {"FORMAT_NUMBER(BYTE#16#FF, '0')", "STRING#'255'"},
        {"FORMAT_NUMBER(WORD#16#FFFF, '0')", "STRING#'65535'"},
        {"FORMAT_NUMBER(DWORD#16#FFFFFFFF, '0')", "STRING#'4294967295'"},
        {"FORMAT_NUMBER(LWORD#16#FFFFFFFFFFFFFFFF, '0')", "STRING#'18446744073709551615'"},
        {"FORMAT_NUMBER(ULINT#18446744073709551615, '#,##0')", "STRING#'18,446,744,073,709,551,615'"},
        {"FORMAT_NUMBER(-5, '0;(0)')", "STRING#'(5)'"},
        {"FORMAT_NUMBER(0.25, '0%')", "STRING#'25%'"},
        {"FORMAT_NUMBER(12345, '0.0E0')", "STRING#'1.2E4'"},
        {"FORMAT_NUMBER(5, '0 \xE2\x82\xAC')", "STRING#'5 \xE2\x82\xAC'"},
        {"FORMAT_NUMBER(5, \"0 \xE2\x82\xAC\")", "WSTRING#\"5 \xE2\x82\xAC\""},
    };
    ExpectCalls(cases);
}

TEST(ToStringFunctions, WrongNumberCallsAreReported) {
    const CallCase cases[] = {
        {"FORMAT_NUMBER(TRUE, '0')", "Failed 259 [Function FORMAT_NUMBER Parameter 1]"},
        {"FORMAT_NUMBER(T#1s, '0')", "Failed 259 [Function FORMAT_NUMBER Parameter 1]"},
        {"FORMAT_NUMBER('5', '0')", "Failed 259 [Function FORMAT_NUMBER Parameter 1]"},
        {"FORMAT_NUMBER(CHAR#'5', '0')", "Failed 259 [Function FORMAT_NUMBER Parameter 1]"},
        {"FORMAT_NUMBER(Undefined, '0')", "Failed 259 [Function FORMAT_NUMBER Parameter 1]"},
        {"FORMAT_NUMBER(5, 0)", "Failed 259 [Function FORMAT_NUMBER Parameter 2]"},
        {"FORMAT_NUMBER(5, CHAR#'0')", "Failed 259 [Function FORMAT_NUMBER Parameter 2]"},
        {"FORMAT_NUMBER(TRUE, 0)", "Failed 259 [Function FORMAT_NUMBER Parameter 2]", "FORMAT is looked at first"},
        {"FORMAT_NUMBER(5, 'abc')", "Failed 260 [Function FORMAT_NUMBER Parameter 2]"},
        {"FORMAT_NUMBER(5, '')", "Failed 260 [Function FORMAT_NUMBER Parameter 2]"},
        {"FORMAT_NUMBER(TRUE, \"0.0.0\")", "Failed 260 [Function FORMAT_NUMBER Parameter 2]"},
        {"FORMAT_NUMBER(5)", "Failed 242 [Function FORMAT_NUMBER]"},
        {"FORMAT_NUMBER(5, '0', 1)", "Failed 242 [Function FORMAT_NUMBER]"},
    };
    ExpectCalls(cases);
}

TEST(ToStringFunctions, DatesAndTimesTakeTheTypeOfTheFormat) {
    const CallCase cases[] = {
        {"FORMAT_DATE_TIME(DT#2024-01-31-13:05:09.250, 'yyyy-MM-dd HH:mm:ss.SSS')", "STRING#'2024-01-31 13:05:09.250'"},
        {"FORMAT_DATE_TIME(DT#2024-01-31-13:05:09.250, \"d MMMM yyyy\")", "WSTRING#\"31 January 2024\""},
        {"FORMAT_DATE_TIME(D#2024-01-31, 'EEEE, MMM d')", "STRING#'Wednesday, Jan 31'"},
        {"FORMAT_DATE_TIME(TOD#13:05:09, 'h:mm a')", "STRING#'1:05 PM'"},
        {"FORMAT_DATE_TIME(TOD#25:00:00, 'HH')", "STRING#'01'", "beyond a day it is the next day's"},
        {"FORMAT_DATE_TIME(D#2024-01-31, '$'day$' d')", "STRING#'day 31'"},
    };
    ExpectCalls(cases);
}

TEST(ToStringFunctions, WrongDateCallsAreReported) {
    const CallCase cases[] = {
        {"FORMAT_DATE_TIME(T#1s, 'HH')", "Failed 259 [Function FORMAT_DATE_TIME Parameter 1]"},
        {"FORMAT_DATE_TIME(5, 'HH')", "Failed 259 [Function FORMAT_DATE_TIME Parameter 1]"},
        {"FORMAT_DATE_TIME(Undefined, 'HH')", "Failed 259 [Function FORMAT_DATE_TIME Parameter 1]"},
        {"FORMAT_DATE_TIME(T#1s, 5)", "Failed 259 [Function FORMAT_DATE_TIME Parameter 1]", "VALUE is looked at first"},
        {"FORMAT_DATE_TIME(D#2024-01-31, 5)", "Failed 259 [Function FORMAT_DATE_TIME Parameter 2]"},
        {"FORMAT_DATE_TIME(D#2024-01-31, 'Tag')", "Failed 260 [Function FORMAT_DATE_TIME Parameter 2]"},
        {"FORMAT_DATE_TIME(D#2024-01-31, '')", "Failed 260 [Function FORMAT_DATE_TIME Parameter 2]"},
        {"FORMAT_DATE_TIME(D#2024-01-31)", "Failed 242 [Function FORMAT_DATE_TIME]"},
        {"FORMAT_DATE_TIME(D#2024-01-31, 'HH', 1)", "Failed 242 [Function FORMAT_DATE_TIME]"},
        {"9.5()", "Invalid 243 []"},
        {"9.255()", "Invalid 243 []"},
    };
    ExpectCalls(cases);
}

TEST(ToStringFunctions, MessagesNameTypeAndPattern) {
    struct Case {
        const char* call;
        const char* text;
    };
    const Case cases[] = {
        {"FORMAT_NUMBER(TRUE, '0')", "Type 'BOOL' not supported."},
        {"FORMAT_NUMBER(D#2024-01-31, '0')", "Type 'DATE' not supported."},
        {"FORMAT_NUMBER(5, TOD#00:00:00)", "Type 'TIME_OF_DAY' not supported."},
        {"FORMAT_DATE_TIME(T#1s, 'HH')", "Type 'TIME' not supported."},
        {"FORMAT_NUMBER(5, 'abc')", "Invalid format string 'abc'."},
        {"FORMAT_NUMBER(5, \"\xC3\xA4\")", "Invalid format string '\xC3\xA4'."},
        {"FORMAT_DATE_TIME(D#2024-01-31, '%s n')", "Invalid format string '%s n'."},
        {"TO_SQL_LITERAL(CHAR#'a')", "Type 'CHAR', cannot convert to an SQL Literal."},
        {"QUALITY_TO_STRING()", "Function requires 2 argument(s)."},
        {"FORMAT_NUMBER()", "Function requires 2 argument(s)."},
        {"9.5()", "Invalid ToString function code '5'."},
    };
    for (const Case& row : cases) {
        FunctionCaller caller;
        caller.Call(row.call);
        ASSERT_EQ(caller.GetLog().GetErrorCount(), 1U) << row.call;
        EXPECT_EQ(caller.GetLog().GetEntries()[0].text, row.text) << row.call;
    }
}

TEST(ToStringFunctions, TextsFollowTheClientsLocaleAndZone) {
    struct Case {
        const char* locale;
        const char* zone;
        const char* call;
        const char* text;
    };
    const Case cases[] = {
        {"en-US", "UTC", "FORMAT_NUMBER(1234567.5, '#,##0.00')", "1,234,567.50"},
        {"de-DE", "UTC", "FORMAT_NUMBER(1234567.5, '#,##0.00')", "1.234.567,50"},
        {"fr-FR", "UTC", "FORMAT_NUMBER(1234567.5, '#,##0.00')", "1\u202F234\u202F567,50"},
        {"de-CH", "UTC", "FORMAT_NUMBER(1234567.5, '#,##0.00')", "1’234’567.50"},
        {"hi-IN", "UTC", "FORMAT_NUMBER(1234567.5, '#,##,##0.00')", "12,34,567.50"},
        {"ar-EG", "UTC", "FORMAT_NUMBER(1234567.5, '#,##0.00')", "١٬٢٣٤٬٥٦٧٫٥٠"},
        {"de-DE", "UTC", "FORMAT_NUMBER(INT#-1234, '#,##0;(#,##0)')", "(1.234)"},
        {"fr-FR", "UTC", "FORMAT_DATE_TIME(D#2024-01-31, 'EEEE d MMMM y')", "mercredi 31 janvier 2024"},
        {"ar-EG", "UTC", "FORMAT_DATE_TIME(D#2024-01-31, 'd/M/yyyy')", "٣١/١/٢٠٢٤"},
        {"de-DE", "Europe/Berlin", "FORMAT_DATE_TIME(DT#2024-03-31-00:59:00, 'dd.MM.yyyy HH:mm')", "31.03.2024 01:59"},
        {"de-DE", "Europe/Berlin", "FORMAT_DATE_TIME(DT#2024-03-31-01:00:00, 'dd.MM.yyyy HH:mm')", "31.03.2024 03:00"},
        {"de-DE", "Europe/Berlin", "FORMAT_DATE_TIME(DT#2024-10-27-00:30:00, 'HH:mm xxx')", "02:30 +02:00"},
        {"de-DE", "Europe/Berlin", "FORMAT_DATE_TIME(DT#2024-10-27-01:30:00, 'HH:mm xxx')", "02:30 +01:00"},
        {"en-US", "America/New_York", "FORMAT_DATE_TIME(D#2024-01-31, 'yyyy-MM-dd HH:mm')", "2024-01-30 19:00"},
        {"en-US", "America/New_York", "FORMAT_DATE_TIME(TOD#13:05:09, 'HH:mm')", "13:05"},
        {"en-AU", "Australia/Lord_Howe", "FORMAT_DATE_TIME(DT#2024-04-06-15:00:00, 'HH:mm xxx')", "01:30 +10:30"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(std::string(row.locale) + ' ' + row.call);
        FunctionCaller caller;
        caller.GetSettings().SetLocale(CTNLocale(row.locale));
        caller.GetSettings().SetTimeZone(CTNTimeZone(row.zone));
        caller.Call(row.call);
        std::string text;
        caller.GetResult().GetStringValue(text);
        EXPECT_EQ(text, row.text) << caller.Describe();
    }
}

TEST(ToStringFunctions, AContextParsesEachPatternOnce) {
    FunctionCaller caller;
    for (int scan = 0; scan < 5; ++scan) {
        EXPECT_EQ(caller.Call("FORMAT_NUMBER(1.5, '0.00')"), "STRING#'1.50'");
        EXPECT_EQ(caller.Call("FORMAT_NUMBER(DINT#7, '0.00')"), "STRING#'7.00'");
        EXPECT_EQ(caller.Call("FORMAT_NUMBER(1.5, \"0.00\")"), "WSTRING#\"1.50\"");
        EXPECT_EQ(caller.Call("FORMAT_DATE_TIME(D#2024-01-31, 'yyyy')"), "STRING#'2024'");
        EXPECT_EQ(caller.Call("FORMAT_DATE_TIME(TOD#13:05:09, 'HH')"), "STRING#'13'");
        EXPECT_EQ(caller.Call("FORMAT_DATE_TIME(DT#2024-01-31-14:00:00, 'HH')"), "STRING#'14'");
    }
    EXPECT_EQ(caller.GetContext().GetFormatCache().GetParseCount(), 3U);
}

TEST(ToStringFunctions, WithoutSettingsNothingIsFormatted) {
    struct Case {
        unsigned char id;
        unsigned char argumentCount;
        CallStatus status;
        unsigned int messages;
    };
    const Case cases[] = {
        {0, 2, CallStatus::Continue, 0}, {1, 1, CallStatus::Invalid, 0}, {2, 1, CallStatus::Continue, 0},
        {3, 2, CallStatus::Failed, 1},   {4, 2, CallStatus::Failed, 1},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(int{row.id});
        CBuiltInFunctions registry;
        CBuiltInFunctionContext context(nullptr, nullptr, registry);
        CErrorLog log;
        CValue arguments[] = {CValue(1), CValue(0)};
        CValue result;
        context.SetCurrentFunction(0, false, 9, row.id);
        EXPECT_EQ(registry.Execute(log, context, row.argumentCount, arguments, result), row.status);
        EXPECT_EQ(log.GetErrorCount(), row.messages);
        for (const CErrorLog::Entry& entry : log.GetEntries())
            EXPECT_EQ(entry.text, "Internal logic error: No data format settings.");
    }
}

TEST(ToStringFunctions, LongTextsAreCutToWhatAStringHolds) {
    FunctionCaller caller;
    CValue pattern;
    pattern.SetString("0 " + std::string(65'000, 'x'), ElementaryType::String);
    caller.Call({9, 4}, {CValue(1.0e300), pattern});
    EXPECT_EQ(caller.GetStatus(), CallStatus::Continue);
    EXPECT_EQ(caller.GetResult().GetRawDataSize(), 65'302U + 2U);
    pattern.SetString("0 " + std::string(65'500, 'x'), ElementaryType::String);
    caller.Call({9, 4}, {CValue(1.0e300), pattern});
    EXPECT_EQ(caller.GetResult().GetRawDataSize(), 65'535U + 2U);
}

}  // namespace
