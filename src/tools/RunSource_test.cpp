// `run` with structured text instead of images.

#include <filesystem>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tools/ProjectFiles.h"
#include "tools/RunCommand.h"
#include "tools/TestImage.h"
#include "tools/Tool.h"

namespace tn61131 {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
namespace fs = std::filesystem;

constexpr const char* kCounter = "PROGRAM Main\nVAR\n    scans : DINT;\nEND_VAR\nscans := scans + 1;\nEND_PROGRAM\n";
/// Fails in a function that a function calls.
constexpr const char* kFailing =
    "FUNCTION Divide : DINT\nVAR_INPUT\n    a, b : DINT;\nEND_VAR\n"
    "    IF b <> 5 THEN\n        Divide := a / b;\n    END_IF;\nEND_FUNCTION\n"
    "FUNCTION Share : DINT\nVAR_INPUT\n    n : DINT;\nEND_VAR\n"
    "    Share := Divide(10, n);\nEND_FUNCTION\n"
    "PROGRAM Main\nVAR\n    x, zero : DINT;\nEND_VAR\n    x := Share(zero);\nEND_PROGRAM\n";

class RunSourceTest : public testing::Test {
 protected:
    void SetUp() override {
        const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
        folder_ = fs::temp_directory_path() / ("tn61131-st-" + std::string(test->name()) + std::to_string(getpid()));
        fs::create_directories(folder_);
        options_.timestampMS = 0;
        // Calls stay calls.
        options_.compile.switches = {"optimise=none"};
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string PathOf(const std::string& name) const { return (folder_ / name).string(); }
    std::string Write(const std::string& name, const std::string& content) {
        fs::create_directories((folder_ / name).parent_path());
        std::ofstream(PathOf(name), std::ios::binary) << content;
        return PathOf(name);
    }
    int Run(std::vector<std::string> paths) {
        std::ostringstream output;
        std::ostringstream messages;
        options_.images = std::move(paths);
        const int status = RunImages(options_, output, messages);
        output_ = output.str();
        messages_ = messages.str();
        return status;
    }

    RunOptions options_;
    fs::path folder_;
    std::string output_;
    std::string messages_;
};

TEST_F(RunSourceTest, AProgramIsCompiledAndRun) {
    options_.scans = 2;
    options_.watch = {"scans"};
    options_.json = true;
    EXPECT_EQ(Run({Write("a.st", kCounter)}), kExitSuccess);
    EXPECT_EQ(messages_, "");
    EXPECT_THAT(output_, HasSubstr(R"("watch":{"scans":"DINT#1"})"));
    EXPECT_THAT(output_, HasSubstr(R"("watch":{"scans":"DINT#2"})"));
    EXPECT_THAT(output_, HasSubstr(R"("global":"02000000")"));
    EXPECT_FALSE(fs::exists(PathOf("a.vmi"))) << "nothing is written";
}

TEST_F(RunSourceTest, AllSourcesAreOneProject) {
    const std::string main = Write("a.st", "PROGRAM Main\nlevel := level + 2;\nEND_PROGRAM\n");
    Write("lib/b.st", "VAR_GLOBAL\n    level : INT := 5;\nEND_VAR\n");
    EXPECT_EQ(Run({main, PathOf("lib")}), kExitSuccess) << messages_;
    EXPECT_THAT(output_, HasSubstr("  level = INT#7\n"));
}

TEST_F(RunSourceTest, AProjectRunsWhereItsFirstFileStands) {
    const TestImage::Bytes bytes = MakeCounterImage().Save();
    const std::string image = Write("a.vmi", std::string(bytes.begin(), bytes.end()));
    const std::string first = Write("a.st", kCounter);
    const std::string second = Write("b.st", "VAR_GLOBAL\n    x : INT;\nEND_VAR\n");
    options_.json = true;
    EXPECT_EQ(Run({image, first, image, second}), kExitSuccess) << messages_;
    std::vector<std::string> paths;
    std::istringstream lines(output_);
    for (std::string line; std::getline(lines, line);)
        paths.push_back(line.substr(10, line.find('"', 10) - 10));
    EXPECT_THAT(paths, testing::ElementsAre(image, first, image));
}

TEST_F(RunSourceTest, AFailureNamesTheLineAndTheCalls) {
    const std::string path = Write("a.st", kFailing);
    EXPECT_EQ(Run({path}), kExitFailure);
    EXPECT_THAT(messages_, StartsWith("tn61131: " + path + ": error 226: Division by zero.\n  at      "));
    const std::size_t at = messages_.find("  in function Divide, " + path + ":6:");
    const std::size_t called = messages_.find("  in function Share, " + path + ":13:");
    const std::size_t main = messages_.find("  in program Main, " + path + ":19:");
    EXPECT_NE(at, std::string::npos) << messages_;
    EXPECT_NE(called, std::string::npos) << messages_;
    EXPECT_NE(main, std::string::npos) << messages_;
    EXPECT_TRUE(at < called && called < main);
}

TEST_F(RunSourceTest, TheJsonOfAFailureHasThePlaces) {
    const std::string path = Write("a.st", kFailing);
    options_.json = true;
    EXPECT_EQ(Run({path}), kExitFailure);
    EXPECT_THAT(output_, HasSubstr(R"("result":2)"));
    const std::size_t places = output_.find(R"("places":[{"in":"function Divide","file":")" + path + R"(","line":6,)");
    const std::size_t share = output_.find(R"({"in":"function Share","file":")" + path + R"(","line":13,)");
    const std::size_t main = output_.find(R"({"in":"program Main","file":")" + path + R"(","line":19,)");
    EXPECT_NE(places, std::string::npos) << output_;
    EXPECT_NE(share, std::string::npos) << output_;
    EXPECT_NE(main, std::string::npos) << output_;
    EXPECT_TRUE(places < share && share < main);
}

TEST_F(RunSourceTest, EnumerationsAreShownByName) {
    const std::string path =
        Write("a.st",
              "TYPE\n    Light : (Red, Green := 7);\nEND_TYPE\n"
              "PROGRAM Main\nVAR\n    lamp : Light;\n    all : ARRAY[1..2] OF Light := [Green, Red];\n"
              "END_VAR\nlamp := Green;\nEND_PROGRAM\n");
    EXPECT_EQ(Run({path}), kExitSuccess) << messages_;
    EXPECT_THAT(output_, HasSubstr("  Main.lamp = Light#Green\n"));
    EXPECT_THAT(output_, HasSubstr("  Main.all[1] = Light#Green\n"));
    EXPECT_THAT(output_, HasSubstr("  Main.all[2] = Light#Red\n"));
    options_.json = true;
    options_.watch = {"lamp"};
    EXPECT_EQ(Run({path}), kExitSuccess);
    EXPECT_THAT(output_, HasSubstr(R"("watch":{"lamp":"INT#7"})")) << "programs get the number";
}

TEST_F(RunSourceTest, ANumberWithoutANameIsShownAsNumber) {
    const std::string path = Write("a.st",
                                   "TYPE\n    Light : (Red, Green);\nEND_TYPE\n"
                                   "PROGRAM Main\nVAR\n    lamp : Light;\nEND_VAR\nlamp := 9;\nEND_PROGRAM\n");
    options_.compile.switches = {"narrowing=silent"};
    EXPECT_EQ(Run({path}), kExitSuccess) << messages_;
    EXPECT_THAT(output_, HasSubstr("  Main.lamp = INT#9\n"));
}

TEST_F(RunSourceTest, WarningsGoToStandardError) {
    const std::string path =
        Write("a.st", "PROGRAM Main\nVAR\n    n : UINT;\n    b : BOOL;\nEND_VAR\nb := n >= 0;\nEND_PROGRAM\n");
    options_.json = true;
    EXPECT_EQ(Run({path}), kExitSuccess);
    EXPECT_EQ(messages_, path + ":6:6: warning[ST0419]: this comparison is always TRUE\nb := n >= 0;\n     ^~~~~~\n");
    EXPECT_THAT(output_, StartsWith("{\"image\":"));
    EXPECT_THAT(output_, Not(HasSubstr("ST0419")));
}

TEST_F(RunSourceTest, ErrorsKeepItFromRunning) {
    const std::string path = Write("a.st", "PROGRAM Main\nx := 1;\nEND_PROGRAM\n");
    EXPECT_EQ(Run({path}), kExitFailure);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(messages_, path + ":2:1: error[ST0401]: unknown name 'x'\nx := 1;\n^\n");
    options_.json = true;
    EXPECT_EQ(Run({path}), kExitFailure);
    EXPECT_EQ(output_, R"({"image":")" + path + R"(","errors":[{"id":0,"location":")" + path +
                           R"(:2:1","text":"unknown name 'x'"}]})"
                           "\n");
}

TEST_F(RunSourceTest, ExpressionsAndCodeBlocksOfTheCommandLine) {
    const std::string path = Write("a.st", "VAR_GLOBAL\n    level : INT := 5;\nEND_VAR\n");
    options_.expression = 4;
    options_.compile.expressions = {"4:level * 2"};
    EXPECT_EQ(Run({path}), kExitSuccess) << messages_;
    EXPECT_THAT(output_, HasSubstr(": expression 4 at "));
    EXPECT_THAT(output_, HasSubstr("completed, value INT#10\n"));
    options_.expression.reset();
    options_.compile.expressions.clear();
    options_.codeBlock = 4;
    options_.compile.codeBlocks = {"4:level := level + 1;"};
    EXPECT_EQ(Run({path}), kExitSuccess) << messages_;
    EXPECT_THAT(output_, HasSubstr("  level = INT#6\n"));
}

TEST_F(RunSourceTest, WhatIsNotThereToRun) {
    const std::string path = Write("a.st", "VAR_GLOBAL\n    level : INT;\nEND_VAR\n");
    EXPECT_EQ(Run({path}), kExitFailure);
    EXPECT_EQ(messages_, "tn61131: " + path + ": The image has neither a program nor an expression.\n");
    options_.program = "Main";
    EXPECT_EQ(Run({path}), kExitFailure);
    EXPECT_EQ(messages_, "tn61131: " + path + ": The image has no program 'Main'.\n");
    options_.program.reset();
    options_.watch = {"nothing"};
    EXPECT_EQ(Run({Write("b.st", kCounter)}), kExitFailure);
    EXPECT_THAT(messages_, HasSubstr("nothing"));
    EXPECT_EQ(Run({PathOf("none.st")}), kExitFailure);
    EXPECT_EQ(messages_, "tn61131: " + PathOf("none.st") + ": '" + PathOf("none.st") + "' cannot be read\n");
}

TEST_F(RunSourceTest, AWrongCommandLineIsToldApart) {
    const std::string path = Write("a.st", kCounter);
    options_.compile.profile = "pascal";
    EXPECT_EQ(Run({path}), kExitUsage);
    EXPECT_EQ(messages_, "tn61131: unknown profile 'pascal'\n");
    EXPECT_EQ(output_, "");
    options_.compile.profile.clear();
    options_.compile.switches = {"bounds=maybe"};
    EXPECT_EQ(Run({path}), kExitUsage);
}

TEST_F(RunSourceTest, TagsAreReadAndWritten) {
    const std::string path =
        Write("a.st",
              "PROGRAM Main\nVAR\n    level AT %\"Level\" : INT;\n    text AT %\"Text\" : STRING[5];\n"
              "    wide AT %\"Wide\" : WSTRING[3];\nEND_VAR\n"
              "text := CONCAT('level ', INT_TO_STRING(level));\nwide := \"abcd\";\nEND_PROGRAM\n");
    options_.tagsFile = Write("tags.json",
                              R"({"7": {"name": "Level", "type": "INT", "offset": 1, "data": "ff2a0000"},
                                  "8": {"name": "Text", "type": "STRING", "length": 5},
                                  "9": {"name": "Wide", "type": "WSTRING", "length": 3}})");
    options_.watch = {"Main.level", "Main.text", "Main.wide"};
    EXPECT_EQ(Run({path}), kExitSuccess) << messages_;
    EXPECT_THAT(output_, HasSubstr("  Main.level = INT#42\n"));
    EXPECT_THAT(output_, HasSubstr("  Main.text = STRING#'level'\n")) << "cut at its length";
    EXPECT_THAT(output_, HasSubstr("  Main.wide = WSTRING#\"abc\"\n"));
    EXPECT_THAT(output_, HasSubstr("tag 7 = ff2a0000\n"));
}

TEST_F(RunSourceTest, AWaveformIsRecorded) {
    options_.traceFile = PathOf("a.vcd");
    options_.scans = 3;
    EXPECT_EQ(Run({Write("a.st", kCounter)}), kExitSuccess) << messages_;
    EXPECT_TRUE(fs::exists(PathOf("a.vcd")));
}

TEST(SourcePath, KindsOfFiles) {
    for (const char* path : {"a.st", "a.ST", "b/a.iecst", "a.exp", "a.scl", "a.b.pou"})
        EXPECT_TRUE(IsSourcePath(path)) << path;
    for (const char* path : {"a.vmi", "st", "a.st.vmi", "", "a.stx", ".st"})
        EXPECT_FALSE(IsSourcePath(path)) << path;
    EXPECT_TRUE(IsSourcePath(fs::temp_directory_path().string())) << "a folder";
}

}  // namespace
}  // namespace tn61131
