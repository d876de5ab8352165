#include "functions/DateTimeFunctions.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "functions/FunctionContext.h"
#include "support/FunctionCall.h"
#include "support/TestMachine.h"

namespace {

using function_test::CallCase;
using function_test::Declare;
using function_test::ExpectCalls;
using function_test::FindByName;
using function_test::FunctionCaller;
using function_test::ParseLiteral;
using function_test::TestMachine;

TEST(DateTimeFunctions, DatesAreBuiltAndTested) {
    const CallCase cases[] = {
        {"CONCAT_DATE(1970, 1, 1)", "D#1970-01-01"},
        {"CONCAT_DATE(2024, 2, 29)", "D#2024-02-29"},
        {"CONCAT_DATE(9999, 12, 31)", "D#9999-12-31"},
        {"CONCAT_DATE('2024', INT#2, 29.4)", "D#2024-02-29", "parts are converted"},
        {"CONCAT_DATE(2021, 2, 29)", "Failed 257 [Function CONCAT_DATE]"},
        {"CONCAT_DATE(1969, 12, 31)", "Failed 257 [Function CONCAT_DATE]"},
        {"CONCAT_DATE(10000, 1, 1)", "Failed 257 [Function CONCAT_DATE]"},
        {"CONCAT_DATE(2024, 13, 1)", "Failed 257 [Function CONCAT_DATE]"},
        {"CONCAT_DATE(2147483647, -2147483648, 0)", "Failed 257 [Function CONCAT_DATE]"},
        {"CONCAT_DATE('x', 1, 1)", "Failed 224 [Function CONCAT_DATE Parameter 1]"},
        {"CONCAT_DATE(2024, 'x', 1)", "Failed 224 [Function CONCAT_DATE Parameter 2]"},
        {"CONCAT_DATE(2024, 1, 'x')", "Failed 224 [Function CONCAT_DATE Parameter 3]"},
        {"CONCAT_DATE(2024, 1)", "Failed 242 [Function CONCAT_DATE]"},
        {"CONCAT_DATE(2024, 1, 1, 1)", "Failed 242 [Function CONCAT_DATE]"},
        {"CONCAT_DATE()", "Failed 242 [Function CONCAT_DATE]"},
    };
    ExpectCalls(cases);
}

TEST(DateTimeFunctions, TimesOfDayAreAddedUpWithoutATest) {
    const CallCase cases[] = {
        {"CONCAT_TOD(13, 5, 9, 250)", "TOD#13:05:09.250"},
        {"CONCAT_TOD(0, 0, 0, 0)", "TOD#00:00:00.000"},
        {"CONCAT_TOD(25, 0, 0, 0)", "TOD#25:00:00.000"},
        {"CONCAT_TOD(0, 0, 0, 5000)", "TOD#00:00:05.000"},
        {"CONCAT_TOD(1, -1, 0, 0)", "TOD#00:59:00.000"},
        {"CONCAT_TOD(0, 0, 0, -1)", "TOD#1193:02:47.295", "wraps in 32 bits"},
        {"CONCAT_TOD(2147483647, 0, 0, 0)", "TOD#1192:02:47.296", "-3600000 in 32 bits"},
        {"CONCAT_TOD(1, 2, 3, 'x')", "Failed 224 [Function CONCAT_TOD Parameter 4]"},
        {"CONCAT_TOD(1, 2, 3)", "Failed 242 [Function CONCAT_TOD]"},
        {"CONCAT_TOD(1, 2, 3, 4, 5)", "Failed 242 [Function CONCAT_TOD]"},
    };
    ExpectCalls(cases);
}

TEST(DateTimeFunctions, DatesWithTimesAreBuiltAndTested) {
    const CallCase cases[] = {
        {"CONCAT_DT(2024, 1, 31, 13, 5, 9, 250)", "DT#2024-01-31-13:05:09.250"},
        {"CONCAT_DT(1970, 1, 1, 0, 0, 0, 0)", "DT#1970-01-01-00:00:00.000"},
        {"CONCAT_DT(2021, 2, 29, 0, 0, 0, 0)", "Failed 258 [Function CONCAT_DT Parameter 7]"},
        {"CONCAT_DT(2024, 1, 1, 24, 0, 0, 0)", "Failed 258 [Function CONCAT_DT Parameter 7]"},
        {"CONCAT_DT(2024, 1, 1, 0, 60, 0, 0)", "Failed 258 [Function CONCAT_DT Parameter 7]"},
        {"CONCAT_DT(2024, 1, 1, 0, 0, 60, 0)", "Failed 258 [Function CONCAT_DT Parameter 7]"},
        {"CONCAT_DT(2024, 1, 1, 0, 0, 0, 1000)", "Failed 258 [Function CONCAT_DT Parameter 7]"},
        {"CONCAT_DT(2024, 1, 1, 'x', 0, 0, 0)", "Failed 224 [Function CONCAT_DT Parameter 4]"},
        {"CONCAT_DT(2024, 1, 1, 0, 0, 0)", "Failed 242 [Function CONCAT_DT]"},
        {"CONCAT_DT(2024, 1, 1, 0, 0, 0, 0, 0)", "Failed 242 [Function CONCAT_DT]"},
    };
    ExpectCalls(cases);
}

TEST(DateTimeFunctions, MessagesNameTheParts) {
    struct Case {
        const char* call;
        const char* text;
    };
    const Case cases[] = {
        {"CONCAT_DATE(2021, 2, 29)", "Invalid date value '2021-02-29'."},
        {"CONCAT_DATE(-5, 0, 100)", "Invalid date value '-5-00-100'."},
        {"CONCAT_DT(2024, 1, 1, 24, 5, 9, 7)", "Invalid date and time value '2024-01-01 24:05:09.007'."},
        {"CONCAT_DATE(1)", "Function requires 3 argument(s)."},
        {"CONCAT_TOD(1)", "Function requires 4 argument(s)."},
        {"CONCAT_DT(1)", "Function requires 7 argument(s)."},
        {"SPLIT_DATE(1)", "Function requires 4 argument(s)."},
        {"SPLIT_TOD(1)", "Function requires 5 argument(s)."},
        {"SPLIT_DT(1, 2, 3, 4, 5, 6, 7, 8)", "Function requires 7 argument(s)."},
        {"DAY_OF_WEEK()", "Function requires 1 argument(s)."},
        {"14.8()", "Invalid Date and Time function code '8'."},
    };
    for (const Case& row : cases) {
        FunctionCaller caller;
        caller.Call(row.call);
        ASSERT_EQ(caller.GetLog().GetErrorCount(), 1U) << row.call;
        EXPECT_EQ(caller.GetLog().GetEntries()[0].text, row.text) << row.call;
    }
}

TEST(DateTimeFunctions, DayOfWeekCountsFromSunday) {
    const CallCase cases[] = {
        {"DAY_OF_WEEK(D#1970-01-01)", "INT#4", "Thursday"},
        {"DAY_OF_WEEK(D#2024-02-03)", "INT#6", "Saturday"},
        {"DAY_OF_WEEK(D#2024-02-04)", "INT#0", "Sunday"},
        {"DAY_OF_WEEK(DT#2024-02-04-23:59:59.999)", "INT#0"},
        {"DAY_OF_WEEK(DT#2024-02-05-00:00:00)", "INT#1"},
        {"DAY_OF_WEEK(0)", "INT#4", "a number counts milliseconds"},
        {"DAY_OF_WEEK('DT#2024-02-05-00:00:00')", "INT#1", "a text is parsed"},
        {"DAY_OF_WEEK(ULINT#18446744073709551615)", "INT#3", "the last millisecond before the epoch, a Wednesday"},
        {"DAY_OF_WEEK(ULINT#9223372036854775807)", "INT#0", "beyond the last timestamp, which is a Sunday"},
        {"DAY_OF_WEEK()", "Failed 242 [Function DAY_OF_WEEK]"},
        {"DAY_OF_WEEK(1, 2)", "Failed 242 [Function DAY_OF_WEEK]"},
        {"14.0()", "Invalid 243 []"},
        {"14.8()", "Invalid 243 []"},
        {"14.255()", "Invalid 243 []"},
    };
    ExpectCalls(cases);
}

/// Calls of SPLIT functions with INT outputs at 0, 2, 4 and so on in the global data.
class Split : public testing::Test {
 protected:
    /// The written outputs, a blank between them, or what the call says when it fails.
    std::string Call(const char* name, const char* in, unsigned int outputs) {
        FunctionCaller caller(&machine_.GetExec());
        std::vector<CValue> arguments;
        arguments.push_back(ParseLiteral(in));
        for (unsigned int i = 0; i < outputs; ++i) {
            arguments.push_back(ParseLiteral("'not read'"));
            arguments.push_back(i == skipped_ ? CValue() : TestMachine::PointerTo(i == broken_ ? 255 : 2 * i));
        }
        caller.Call(FindByName(name), arguments);
        const std::string outcome = caller.Describe();
        return outcome == "Undefined" ? Outputs(outputs) : outcome;
    }
    std::string Outputs(unsigned int count) {
        std::string text;
        for (unsigned int i = 0; i < count; ++i)
            text += (i == 0 ? "" : " ") + std::to_string(machine_.Read(2 * i, ElementaryType::Int).GetPayload<short>());
        return text;
    }
    TestMachine machine_;
    unsigned int skipped_ = 99;
    unsigned int broken_ = 99;
};

TEST_F(Split, WritesThePartsInOrder) {
    struct Case {
        const char* name;
        const char* in;
        unsigned int outputs;
        const char* expected;
    };
    const Case cases[] = {
        {"SPLIT_DATE", "D#2024-02-29", 3, "2024 2 29"},
        {"SPLIT_DATE", "DT#2024-12-31-23:59:59.999", 3, "2024 12 31"},
        {"SPLIT_DATE", "0", 3, "1970 1 1"},
        {"SPLIT_DATE", "'x'", 3, "Failed 204 [Function SPLIT_DATE Parameter 1]"},
        {"SPLIT_DATE", "ULINT#9223372036854775807", 3, "31197 9 14"},
        {"SPLIT_DATE", "ULINT#9223372036854775808", 3, "-27258 4 19"},
        {"SPLIT_TOD", "DINT#3723004", 4, "1 2 3 4"},
        {"SPLIT_TOD", "TOD#23:59:59.999", 4, "23 59 59 999"},
        {"SPLIT_TOD", "TOD#00:00:00", 4, "0 0 0 0"},
        {"SPLIT_TOD", "DINT#-3723004", 4, "-1 -2 -3 -4"},
        {"SPLIT_TOD", "UDINT#4294967295", 4, "0 0 0 -1"},
        {"SPLIT_TOD", "DINT#-2147483648", 4, "-596 -31 -23 -648"},
        {"SPLIT_TOD", "'x'", 4, "Failed 224 [Function SPLIT_TOD Parameter 1]"},
        {"SPLIT_DT", "DT#2024-01-31-13:05:09.250", 7, "2024 1 31 13 5 9 250"},
        {"SPLIT_DT", "D#2024-01-31", 7, "2024 1 31 0 0 0 0"},
        {"SPLIT_DATE", "0", 2, "Failed 242 [Function SPLIT_DATE]"},
        {"SPLIT_DATE", "0", 4, "Failed 242 [Function SPLIT_DATE]"},
        {"SPLIT_TOD", "0", 3, "Failed 242 [Function SPLIT_TOD]"},
        {"SPLIT_TOD", "0", 5, "Failed 242 [Function SPLIT_TOD]"},
        {"SPLIT_DT", "0", 6, "Failed 242 [Function SPLIT_DT]"},
        {"SPLIT_DT", "0", 8, "Failed 242 [Function SPLIT_DT]"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(std::string(row.name) + ' ' + row.in);
        EXPECT_EQ(Call(row.name, row.in, row.outputs), row.expected);
    }
}

TEST_F(Split, OutputThatIsNotConnectedIsSkipped) {
    skipped_ = 1;
    EXPECT_EQ(Call("SPLIT_DATE", "D#2024-02-29", 3), "2024 0 29");
}

TEST_F(Split, FailingOutputLeavesTheOnesBefore) {
    broken_ = 1;
    EXPECT_EQ(Call("SPLIT_DATE", "D#2024-02-29", 3), "Failed 212 []");
    EXPECT_EQ(Outputs(3), "2024 0 0");
}

TEST_F(Split, OutputThatIsNoPointerFails) {
    FunctionCaller caller(&machine_.GetExec());
    EXPECT_EQ(caller.Call("SPLIT_DATE(D#2024-02-29, 1, 1, 1, 1, 1, 1)"), "Failed 227 []");
}

TEST_F(Split, WithoutAMachineFailsWithoutAMessage) {
    FunctionCaller caller;
    EXPECT_EQ(caller.Call("SPLIT_DATE(D#2024-02-29, 1, 1, 1, 1, 1, 1)"), "Failed");
}

TEST_F(Split, SplittingWhatWasConcatenatedGivesItBack) {
    FunctionCaller caller(&machine_.GetExec());
    for (int year = 1970; year <= 9999; year += 73) {
        const std::string parts = std::to_string(year) + ", 2, 28, 23, 59, 58, 57";
        caller.Call("CONCAT_DT(" + parts + ')');
        EXPECT_EQ(Call("SPLIT_DT", Declare(caller.GetResult()).c_str(), 7), std::to_string(year) + " 2 28 23 59 58 57");
    }
}

TEST(DateTimeFunctions, AreInvariant) {
    VMFuncDateTime group;
    EXPECT_TRUE(group.IsInvariant(1));
    EXPECT_TRUE(group.IsInvariant(99));
}

}  // namespace
