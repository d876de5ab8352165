#include "functions/SystemFunctions.h"

#include <limits>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "functions/FunctionContext.h"
#include "support/FunctionCall.h"
#include "support/TestMachine.h"

namespace {

using function_test::FunctionCaller;
using function_test::TestMachine;

constexpr const char* kCalls[] = {"SYS_GET_TIMESTAMP()",
                                  "SYS_GET_DATE()",
                                  "SYS_GET_TOD()",
                                  "SYS_GET_RANDOM_WORD()",
                                  "SYS_DATE_TIME_TO_LOCAL(DT#2024-01-31-13:05:09)",
                                  "SYS_DATE_TIME_TO_UTC(DT#2024-01-31-13:05:09)",
                                  "11.99()"};

class SystemFunctions : public testing::Test {
 protected:
    TestMachine machine;
    FunctionCaller caller{&machine.GetExec()};
};

TEST_F(SystemFunctions, TimeIsThatOfTheScan) {
    struct Case {
        long long timeMs;
        const char* timestamp;
        const char* date;
        const char* timeOfDay;
    };
    const Case cases[] = {
        {0, "DT#1970-01-01-00:00:00.000", "D#1970-01-01", "TOD#00:00:00.000"},
        {1'706'706'309'250, "DT#2024-01-31-13:05:09.250", "D#2024-01-31", "TOD#13:05:09.250"},
        {86'400'000, "DT#1970-01-02-00:00:00.000", "D#1970-01-02", "TOD#00:00:00.000"},
        {86'399'999, "DT#1970-01-01-23:59:59.999", "D#1970-01-01", "TOD#23:59:59.999"},
        {-1, "DT#1969-12-31-23:59:59.999", "D#1970-01-01", "TOD#23:59:59.999"},
    };
    for (const Case& row : cases) {
        machine.SetTime(row.timeMs);
        for (int repeat = 0; repeat < 2; ++repeat) {
            SCOPED_TRACE(row.timeMs);
            EXPECT_EQ(caller.Call("SYS_GET_TIMESTAMP()"), row.timestamp);
            EXPECT_EQ(caller.Call("SYS_GET_DATE()"), row.date);
            EXPECT_EQ(caller.Call("SYS_GET_TOD(1, 2)"), row.timeOfDay) << "arguments are not looked at";
        }
    }
}

TEST_F(SystemFunctions, AnyTimeOfTheScanIsTaken) {
    for (const long long timeMs : {std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max()}) {
        machine.SetTime(timeMs);
        for (const char* call : kCalls) {
            caller.Call(call);
            EXPECT_NE(caller.GetStatus(), CallStatus::Failed) << call;
        }
    }
}

TEST_F(SystemFunctions, RandomWordsDiffer) {
    std::set<std::string> words;
    for (int i = 0; i < 100; ++i) {
        words.insert(caller.Call("SYS_GET_RANDOM_WORD()"));
        ASSERT_EQ(caller.GetResult().GetType(), ElementaryType::Word);
    }
    EXPECT_GT(words.size(), 50U);
}

TEST_F(SystemFunctions, ConvertsBetweenUTCAndTheClientsZone) {
    struct Case {
        const char* zone;
        const char* call;
        const char* expected;
    };
    const Case cases[] = {
        {"UTC", "SYS_DATE_TIME_TO_LOCAL(DT#2024-07-01-12:00:00)", "DT#2024-07-01-12:00:00.000"},
        {"Europe/Berlin", "SYS_DATE_TIME_TO_LOCAL(DT#2024-01-01-12:00:00)", "DT#2024-01-01-13:00:00.000"},
        {"Europe/Berlin", "SYS_DATE_TIME_TO_LOCAL(DT#2024-07-01-12:00:00)", "DT#2024-07-01-14:00:00.000"},
        {"Europe/Berlin", "SYS_DATE_TIME_TO_UTC(DT#2024-07-01-14:00:00)", "DT#2024-07-01-12:00:00.000"},
        {"Europe/Berlin", "SYS_DATE_TIME_TO_UTC(DT#2024-03-31-02:30:00)", "DT#2024-03-31-01:30:00.000"},
        {"Europe/Berlin", "SYS_DATE_TIME_TO_UTC(DT#2024-10-27-02:30:00)", "DT#2024-10-27-00:30:00.000"},
        {"America/New_York", "SYS_DATE_TIME_TO_LOCAL(DT#2024-07-01-12:00:00)", "DT#2024-07-01-08:00:00.000"},
        {"America/New_York", "SYS_DATE_TIME_TO_UTC(DT#2024-11-03-01:30:00)", "DT#2024-11-03-05:30:00.000"},
        {"Asia/Kolkata", "SYS_DATE_TIME_TO_LOCAL(D#2024-07-01)", "DT#2024-07-01-05:30:00.000"},
        {"Asia/Kolkata", "SYS_DATE_TIME_TO_UTC(D#2024-07-01)", "DT#2024-06-30-18:30:00.000"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(std::string(row.zone) + ' ' + row.call);
        caller.GetSettings().SetTimeZone(CTNTimeZone(row.zone));
        EXPECT_EQ(caller.Call(row.call), row.expected);
    }
}

TEST_F(SystemFunctions, WithoutSettingsTheZoneIsUTC) {
    CBuiltInFunctions registry;
    CBuiltInFunctionContext context(nullptr, &machine.GetExec(), registry);
    CErrorLog log;
    CValue argument = function_test::ParseLiteral("DT#2024-07-01-12:00:00");
    CValue result;
    context.SetCurrentFunction(0, false, 11, 5);
    EXPECT_EQ(registry.Execute(log, context, 1, &argument, result), CallStatus::Continue);
    EXPECT_EQ(function_test::Declare(result), "DT#2024-07-01-12:00:00.000");
}

TEST_F(SystemFunctions, WrongCallsAreReported) {
    const function_test::CallCase cases[] = {
        {"SYS_DATE_TIME_TO_LOCAL()", "Failed 242 [Function SYS_DATE_TIME_TO_LOCAL]"},
        {"SYS_DATE_TIME_TO_LOCAL(1, 2)", "Failed 242 [Function SYS_DATE_TIME_TO_LOCAL]"},
        {"SYS_DATE_TIME_TO_UTC()", "Failed 242 [Function SYS_DATE_TIME_TO_UTC]"},
        {"SYS_DATE_TIME_TO_UTC('x')", "Failed 204 [Function SYS_DATE_TIME_TO_UTC Parameter 1]"},
        {"11.0()", "Invalid 243 []"},
        {"11.7()", "Invalid 243 []"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(caller.Call(row.call), row.expected) << row.call;
    EXPECT_EQ(caller.GetLog().GetEntries().back().text, "Invalid System function code '7'.");
}

TEST_F(SystemFunctions, WithoutAMachineEveryCallFailsWithoutAMessage) {
    FunctionCaller lonely;
    for (const char* call : kCalls)
        EXPECT_EQ(lonely.Call(call), "Failed") << call;
}

TEST_F(SystemFunctions, NoneIsInvariant) {
    CVMFuncSys group;
    for (int id = 0; id < 256; ++id)
        EXPECT_FALSE(group.IsInvariant(static_cast<unsigned char>(id))) << id;
}

}  // namespace
