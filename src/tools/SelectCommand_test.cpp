#include "tools/SelectCommand.h"

#include <cstdio>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "tools/Tool.h"

namespace tn61131 {
namespace {

struct Shown {
    int exitStatus;
    std::string output;
    std::string messages;
};

Shown Select(const std::string& document, std::vector<std::string> selectors, bool json) {
    std::istringstream input(document);
    std::ostringstream output;
    std::ostringstream messages;
    const int exitStatus = SelectFromDocument({std::move(selectors), "-", json}, input, output, messages);
    return {exitStatus, output.str(), messages.str()};
}

TEST(SelectCommand, JsonLineForEachSelector) {
    const struct {
        const char* document;
        const char* selector;
        const char* line;
    } kRows[] = {
        {"a,b\nc", "Line(1)", R"({"status":0,"type":"WSTRING","value":"WSTRING#\"a,b\""})"},
        {"a,b\nc", "CSV(B1)", R"({"status":0,"type":"WSTRING","value":"WSTRING#\"b\""})"},
        {R"({"a":[1,2]})", "JSONata($sum(a))", R"({"status":0,"type":"LREAL","value":"LREAL#3.0"})"},
        {R"({"a":[1,2]})", "JSONata(a[0] = 1)", R"({"status":0,"type":"BOOL","value":"BOOL#TRUE"})"},
        {"a\tb", "Line(1)", R"({"status":0,"type":"WSTRING","value":"WSTRING#\"a$Tb\""})"},
    };
    for (const auto& row : kRows) {
        const Shown shown = Select(row.document, {row.selector}, true);
        EXPECT_EQ(shown.output, std::string(row.line) + "\n");
        EXPECT_EQ(shown.messages, "");
        EXPECT_EQ(shown.exitStatus, kExitSuccess);
    }
}

TEST(SelectCommand, JsonErrorsHaveStatusIdAndPlace) {
    const struct {
        const char* document;
        const char* selector;
        const char* line;
    } kRows[] = {
        {"a", "Line(2)",
         R"json({"status":2,"errors":[{"id":253,"location":"","text":"Line number '2', out of text document range."}]})json"},
        {"a", "CSV(A2)", R"json({"status":2,"errors":[{"id":0,"location":"","text":"Nothing is selected."}]})json"},
        {"{", "JSONata(a)",
         R"json({"status":1,"errors":[{"id":0,"location":"JSON, line 1, column 2","text":"Missing a name for object member."}]})json"},
        {"a", "FOO(1)",
         R"json({"status":2,"errors":[{"id":230,"location":"Selector(1,1)","text":"Selector 'FOO', invalid."}]})json"},
        {"a", "Line(1",
         R"json({"status":2,"errors":[{"id":0,"location":"Selector(1,7)","text":"Unexpected end of input, expected )."}]})json"},
    };
    for (const auto& row : kRows) {
        const Shown shown = Select(row.document, {row.selector}, true);
        EXPECT_EQ(shown.output, std::string(row.line) + "\n");
        EXPECT_EQ(shown.exitStatus, kExitFailure);
        EXPECT_NE(shown.messages, "");
    }
}

TEST(SelectCommand, HumanOutputIsTheTextItself) {
    const Shown shown = Select("a\tb,\"x\ny\"", {"CSV(A1)", "CSV(B1)"}, false);
    EXPECT_EQ(shown.output, "a\tb\nx\ny\n");
    EXPECT_EQ(shown.messages, "");
    EXPECT_EQ(shown.exitStatus, kExitSuccess);
}

TEST(SelectCommand, AFailedSelectorIsReportedAndTheOthersGoOn) {
    const Shown shown = Select("a", {"Line(2)", "Line(x)", "CSV(B1)", "Line(1)"}, false);
    EXPECT_EQ(shown.output, "a\n");
    EXPECT_EQ(shown.messages,
              "tn61131: Line(2): error 253: Line number '2', out of text document range.\n"
              "tn61131: Line(x): error 231: Selector(1,6): Line number 'x', invalid. An integer value was expected "
              "here.\n"
              "tn61131: CSV(B1): Nothing is selected.\n");
    EXPECT_EQ(shown.exitStatus, kExitFailure);
}

TEST(SelectCommand, AMissingFileIsNamed) {
    std::istringstream input;
    std::ostringstream output;
    std::ostringstream messages;
    EXPECT_EQ(SelectFromDocument({{"Line(1)"}, "no/such/file", true}, input, output, messages), kExitFailure);
    EXPECT_EQ(output.str(), "");
    EXPECT_EQ(messages.str(), "tn61131: no/such/file: the file cannot be read\n");
}

int RunCommandLine(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "tn61131");
    return RunTool(static_cast<int>(arguments.size()), arguments.data());
}

TEST(SelectCommand, TheLastArgumentIsTheDocument) {
    const std::string file = testing::TempDir() + "select_command.csv";
    std::ofstream(file) << "a,b\nc";
    testing::internal::CaptureStdout();
    const int exitStatus = RunCommandLine({"select", "CSV(A2)", "Line(1)", "--json", file.c_str()});
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "{\"status\":0,\"type\":\"WSTRING\",\"value\":\"WSTRING#\\\"c\\\"\"}\n"
              "{\"status\":0,\"type\":\"WSTRING\",\"value\":\"WSTRING#\\\"a,b\\\"\"}\n");
    EXPECT_EQ(exitStatus, kExitSuccess);
    std::remove(file.c_str());
}

TEST(SelectCommand, NeedsSelectorAndDocument) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(RunCommandLine({"select"}), kExitUsage);
    EXPECT_EQ(RunCommandLine({"select", "Line(1)"}), kExitUsage);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace tn61131
