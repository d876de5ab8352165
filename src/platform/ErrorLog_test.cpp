#include "platform/ErrorLog.h"

#include <array>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr ResourceEntry kEntries[] = {{1, "Plain."}, {2, "Number %d, text '%s'."}, {3, "%s %s %s"}};
constexpr ResourceLanguage kLanguages[] = {{1033, kEntries}};
const CTNModule& TestModule() {
    static const CTNModule module("test", kLanguages);
    return module;
}

class TextLocation final : public ErrorLocation {
 public:
    explicit TextLocation(std::string text) : text_(std::move(text)) {}
    unsigned int PrintLocation(char* buffer, unsigned int size) const override {
        return CopyBounded(buffer, size, text_);
    }

 private:
    std::string text_;
};

/// Claims to have written more than its buffer holds.
class BoastfulLocation final : public ErrorLocation {
 public:
    unsigned int PrintLocation(char* buffer, unsigned int size) const override {
        CopyBounded(buffer, size, "x");
        return std::numeric_limits<unsigned int>::max();
    }
};

TEST(CErrorLog, WritesLocationSeverityNumberAndText) {
    COutputLogString output;
    CErrorLog log(&output);
    const TextLocation location("Line 3");
    log.LogError(location, TestModule(), 2, 7, "seven");
    log.LogWarning(location, TestModule(), 1);
    log.LogError(ErrorLocationNull::Get(), TestModule(), 1);
    log.LogError(TestModule(), 1);
    EXPECT_EQ(output.GetText(),
              "Line 3: error 2: Number 7, text 'seven'.\n"
              "Line 3: warning 1: Plain.\n"
              "error 1: Plain.\n"
              "error 1: Plain.\n");
    EXPECT_EQ(output.GetErrorCount(), 0u) << "only what a parser reports straight into it";
}

TEST(CErrorLog, KeepsEntriesAndCounts) {
    CErrorLog log;
    log.LogError(TextLocation("here"), TestModule(), 2, -1, std::string("x"));
    log.LogWarning(ErrorLocationNull::Get(), TestModule(), 1);
    EXPECT_EQ(log.GetErrorCount(), 1u);
    EXPECT_EQ(log.GetWarningCount(), 1u);
    ASSERT_EQ(log.GetEntries().size(), 2u);
    const CErrorLog::Entry& error = log.GetEntries()[0];
    EXPECT_EQ(error.module, &TestModule());
    EXPECT_EQ(error.id, 2u);
    EXPECT_EQ(error.severity, CErrorLog::Severity::Error);
    EXPECT_EQ(error.location, "here");
    EXPECT_EQ(error.text, "Number -1, text 'x'.");
    EXPECT_EQ(log.GetEntries()[1].severity, CErrorLog::Severity::Warning);
    EXPECT_EQ(log.GetEntries()[1].location, "");
}

TEST(CErrorLog, ClearForgetsEverything) {
    CErrorLog log;
    log.LogError(TestModule(), 1);
    log.LogWarning(ErrorLocationNull::Get(), TestModule(), 1);
    log.Clear();
    EXPECT_EQ(log.GetErrorCount(), 0u);
    EXPECT_EQ(log.GetWarningCount(), 0u);
    EXPECT_TRUE(log.GetEntries().empty());
}

TEST(CErrorLog, UnknownNumberIsStillLogged) {
    COutputLogString output;
    CErrorLog log(&output);
    log.LogError(TestModule(), 77, "argument");
    EXPECT_EQ(output.GetText(), "error 77: Unknown message.\n");
    EXPECT_EQ(log.GetErrorCount(), 1u);
}

TEST(CErrorLog, ArgumentsThatDoNotFitAreHarmless) {
    CErrorLog log;
    log.LogError(TestModule(), 2, "%n%s", 5);
    log.LogError(TestModule(), 3, std::string_view(), static_cast<const char*>(nullptr));
    log.LogError(TestModule(), 2);
    EXPECT_EQ(log.GetEntries()[0].text, "Number %n%s, text '5'.");
    EXPECT_EQ(log.GetEntries()[1].text, "  ");
    EXPECT_EQ(log.GetEntries()[2].text, "Number , text ''.");
}

TEST(CErrorLog, LocationsAreBounded) {
    CErrorLog log;
    log.LogError(TextLocation(std::string(1000, 'x')), TestModule(), 1);
    log.LogError(BoastfulLocation(), TestModule(), 1);
    EXPECT_EQ(log.GetEntries()[0].location, std::string(255, 'x'));
    EXPECT_EQ(log.GetEntries()[1].location, "x");
}

TEST(CErrorLog, OutputIsTheGivenOneOrOneThatDrops) {
    COutputLogString output;
    CErrorLog log(&output);
    EXPECT_EQ(&log.GetOutputLog(), &output);
    CErrorLog silent;
    silent.GetOutputLog().WriteLine("dropped");
    silent.LogError(TestModule(), 1);
    EXPECT_EQ(silent.GetErrorCount(), 1u);
}

TEST(CErrorLog, CountsOfAParsersLogAreCarriedOver) {
    COutputLogNull parser;
    parser.LogError("one");
    parser.LogError("two");
    parser.LogWarning("three");
    CErrorLog log;
    log.LogError(TestModule(), 1);
    log.PropagateErrorAndWarningCount(parser);
    EXPECT_EQ(log.GetErrorCount(), 3u);
    EXPECT_EQ(log.GetWarningCount(), 1u);
    EXPECT_EQ(log.GetEntries().size(), 1u);
}

TEST(CErrorLogToNull, CountsAndDrops) {
    CErrorLogToNull log;
    log.LogError(TestModule(), 1);
    log.LogWarning(ErrorLocationNull::Get(), TestModule(), 1);
    EXPECT_EQ(log.GetErrorCount(), 1u);
    EXPECT_EQ(log.GetWarningCount(), 1u);
    EXPECT_TRUE(log.GetEntries().empty());
}

TEST(ErrorLocationNull, PrintsNothing) {
    std::array<char, 4> buffer = {'x', 'x', 'x', 'x'};
    EXPECT_EQ(ErrorLocationNull::Get().PrintLocation(buffer.data(), buffer.size()), 0u);
    EXPECT_STREQ(buffer.data(), "");
    EXPECT_EQ(ErrorLocationNull::Get().PrintLocation(nullptr, 0), 0u);
}

TEST(COutputLog, WritesAndCounts) {
    COutputLogString output;
    output.WriteLine("line");
    output.LogError("error");
    output.LogWarning("warning");
    EXPECT_EQ(output.GetText(), "line\nerror\nwarning\n");
    EXPECT_EQ(output.GetErrorCount(), 1u);
    EXPECT_EQ(output.GetWarningCount(), 1u);
}

TEST(COutputLog, DumpsDataSixteenBytesToALine) {
    COutputLogString output;
    std::vector<unsigned char> data;
    for (unsigned int i = 0; i < 18; ++i)
        data.push_back(static_cast<unsigned char>(i * 15));
    output.PrintData("GlobalData", static_cast<unsigned int>(data.size()), data.data());
    output.PrintData("Empty", 0, nullptr);
    EXPECT_EQ(output.GetText(),
              "GlobalData: 18 bytes\n"
              "00000000: 00 0F 1E 2D 3C 4B 5A 69 78 87 96 A5 B4 C3 D2 E1\n"
              "00000010: F0 FF\n"
              "Empty: 0 bytes\n");
}

}  // namespace
