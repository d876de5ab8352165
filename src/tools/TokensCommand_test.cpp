#include "tools/TokensCommand.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace tn61131 {
namespace {

struct Shown {
    int exitStatus;
    std::string output;
    std::string messages;
};

Shown Show(const std::string& source, bool json) {
    std::istringstream input(source);
    std::ostringstream output;
    std::ostringstream messages;
    const int exitStatus = ShowTokens({"-", json}, input, output, messages);
    return {exitStatus, output.str(), messages.str()};
}

TEST(TokensCommand, JsonHasALinePerTokenAfterWhiteSpace) {
    const Shown shown = Show("if x :=\n  16#FF; '\xC3\xA4' y", true);
    EXPECT_EQ(shown.output, R"({"type":207,"name":"IF","text":"if","line":1,"column":1,"keyword":true})"
                            "\n"
                            R"({"type":6,"name":"Identifier","text":"x","line":1,"column":4})"
                            "\n"
                            R"({"type":140,"name":null,"text":":=","line":1,"column":6})"
                            "\n"
                            R"({"type":133,"name":"Integer","text":"16#FF","line":2,"column":3})"
                            "\n"
                            R"({"type":59,"name":";","text":";","line":2,"column":8})"
                            "\n"
                            "{\"type\":131,\"name\":\"String\",\"text\":\"'\xC3\xA4'\",\"line\":2,\"column\":10}\n"
                            R"({"type":6,"name":"Identifier","text":"y","line":2,"column":14})"
                            "\n");
    EXPECT_EQ(shown.exitStatus, 0);
    EXPECT_EQ(shown.messages, "");
}

TEST(TokensCommand, WhatIsNotTerminatedIsMarkedAndNoFailure) {
    const Shown shown = Show("(* \"\xE4\n", true);
    EXPECT_EQ(shown.output,
              "{\"type\":128,\"name\":\"Comment\",\"text\":\"(* \\\"\xEF\xBF\xBD\\n\",\"line\":1,"
              "\"column\":1,\"terminated\":false}\n");
    EXPECT_EQ(shown.exitStatus, 0);
}

TEST(TokensCommand, AnEmptySourceHasNoTokens) {
    EXPECT_EQ(Show("", true).output, "");
    EXPECT_EQ(Show(" \r\n", false).output, "");
    EXPECT_EQ(Show("\xEF\xBB\xBF", true).output, "");
}

TEST(TokensCommand, HumanTextHasPlaceNameAndText) {
    EXPECT_EQ(Show("x =>\n'a\x1B", false).output,
              "1:1  Identifier  x\n1:3  141  =>\n2:1  String  'a\\x1B  (not terminated)\n");
}

TEST(TokensCommand, ReadsAFile) {
    const std::string path = testing::TempDir() + "tokens_command_test.st";
    std::ofstream(path) << "END_IF";
    std::istringstream input("not read");
    std::ostringstream output;
    std::ostringstream messages;
    EXPECT_EQ(ShowTokens({path, false}, input, output, messages), 0);
    EXPECT_EQ(output.str(), "1:1  END_IF  END_IF\n");
    EXPECT_EQ(std::remove(path.c_str()), 0);
}

TEST(TokensCommand, AFileThatCannotBeReadIsAFailure) {
    std::istringstream input;
    std::ostringstream output;
    std::ostringstream messages;
    EXPECT_EQ(ShowTokens({"/no/such/file.st", true}, input, output, messages), 1);
    EXPECT_EQ(output.str(), "");
    EXPECT_EQ(messages.str(), "tn61131: /no/such/file.st: cannot be read\n");
}

// The example of docs/tools.md: the indented line that the section shows, and the lines that it gives.
TEST(TokensPage, TheExampleHolds) {
    std::ifstream page("docs/tools.md");
    ASSERT_TRUE(page.is_open()) << "run from the project's folder";
    bool inSection = false;
    std::string block;
    std::string source;
    std::string expected;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("## ")) inSection = line == "## `tokens`";
        if (!inSection) continue;
        if (line.starts_with("    ")) {
            block += line.substr(4) + '\n';
        } else if (!block.empty() && !line.empty()) {
            if (line == "gives") source = block.substr(0, block.size() - 1);
            if (line.starts_with("| Member")) expected = block;
            block.clear();
        }
    }
    ASSERT_NE(source, "");
    ASSERT_NE(expected, "");
    EXPECT_EQ(Show(source, true).output, expected);
}

}  // namespace
}  // namespace tn61131
