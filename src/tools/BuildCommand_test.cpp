#include "tools/BuildCommand.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "assembler/SymbolMap.h"
#include "platform/BinaryStream.h"
#include "platform/ErrorLog.h"
#include "tools/Tool.h"
#include "vm/VirtualMachine.h"

namespace tn61131 {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
namespace fs = std::filesystem;

constexpr const char* kCounter = "PROGRAM Main\nVAR\n    scans : DINT;\nEND_VAR\nscans := scans + 1;\nEND_PROGRAM\n";
constexpr const char* kWrong = "PROGRAM Main\nx := 1;\nEND_PROGRAM\n";
constexpr const char* kWarned = "PROGRAM Main\nVAR\n    n : UINT;\n    b : BOOL;\nEND_VAR\nb := n >= 0;\nEND_PROGRAM\n";

/// A folder for the files of one test, and the command run in it.
class BuildCommandTest : public testing::Test {
 protected:
    void SetUp() override {
        const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
        folder_ = fs::temp_directory_path() / ("tn61131-build-" + std::string(test->name()) + std::to_string(getpid()));
        fs::create_directories(folder_);
        options_.image = PathOf("a.vmi");
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string PathOf(const std::string& name) const { return (folder_ / name).string(); }
    std::string Write(const std::string& name, const std::string& content) {
        fs::create_directories((folder_ / name).parent_path());
        std::ofstream(PathOf(name), std::ios::binary) << content;
        return PathOf(name);
    }
    std::string Read(const std::string& name) const {
        std::ifstream file(PathOf(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    int Build(std::vector<std::string> sources) {
        std::ostringstream output;
        std::ostringstream messages;
        options_.sources = std::move(sources);
        const int status = BuildProject(options_, output, messages);
        output_ = output.str();
        messages_ = messages.str();
        return status;
    }
    /// Loads the image that was written.
    bool Load(CVirtualMachine& machine) const {
        const std::string bytes = Read("a.vmi");
        CBinaryInputMemory input({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
        CErrorLog log;
        return machine.LoadVMImage(log, input) && !input.HasFailed();
    }

    BuildOptions options_;
    fs::path folder_;
    std::string output_;
    std::string messages_;
};

TEST_F(BuildCommandTest, ImageAndMapAreWritten) {
    ASSERT_EQ(Build({Write("a.st", kCounter)}), kExitSuccess) << messages_;
    EXPECT_EQ(output_, "");
    EXPECT_EQ(messages_, "");
    CVirtualMachine machine;
    ASSERT_TRUE(Load(machine));
    unsigned int entry = 0;
    EXPECT_TRUE(machine.FindProgram("main", entry));
    CSymbolMap map;
    std::string error;
    ASSERT_TRUE(map.Load(Read("a.vmi.map"), error)) << error;
    SymbolReference reference;
    EXPECT_TRUE(map.Find("Main.scans", reference, error)) << error;
    EXPECT_EQ(map.GetFiles(), std::vector<std::string>{PathOf("a.st")});
}

TEST_F(BuildCommandTest, ErrorsAreShownAndNothingIsWritten) {
    EXPECT_EQ(Build({Write("a.st", kWrong)}), kExitFailure);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(messages_, PathOf("a.st") +
                             ":2:1: error[ST0401]: unknown name 'x'\n"
                             "x := 1;\n"
                             "^\n"
                             "1 error, 0 warnings\n");
    EXPECT_FALSE(fs::exists(PathOf("a.vmi")));
    EXPECT_FALSE(fs::exists(PathOf("a.vmi.map")));
}

TEST_F(BuildCommandTest, AnOlderImageStaysWhenTheSourcesAreWrong) {
    Write("a.vmi", "older");
    EXPECT_EQ(Build({Write("a.st", kWrong)}), kExitFailure);
    EXPECT_EQ(Read("a.vmi"), "older");
}

TEST_F(BuildCommandTest, WarningsDoNotKeepTheImageFromBeingWritten) {
    EXPECT_EQ(Build({Write("a.st", kWarned)}), kExitSuccess);
    EXPECT_THAT(messages_, StartsWith(PathOf("a.st") + ":6:6: warning[ST0419]: this comparison is always TRUE\n"));
    EXPECT_THAT(messages_, HasSubstr("\n0 errors, 1 warning\n"));
    EXPECT_TRUE(fs::exists(PathOf("a.vmi")));
}

TEST_F(BuildCommandTest, CheckingWritesNothing) {
    options_.image.clear();
    EXPECT_EQ(Build({Write("a.st", kCounter)}), kExitSuccess);
    EXPECT_EQ(Build({Write("a.st", kWrong)}), kExitFailure);
    EXPECT_FALSE(fs::exists(PathOf("a.vmi")));
}

TEST_F(BuildCommandTest, DiagnosticsAsJsonAreALineEach) {
    options_.json = true;
    const std::string path =
        Write("a.st", "PROGRAM Main\nVAR\n    a : INT;\n    a : INT;\nEND_VAR\nx := 1;\nEND_PROGRAM\n");
    EXPECT_EQ(Build({path}), kExitFailure);
    EXPECT_EQ(messages_, "");
    EXPECT_EQ(output_, R"({"file":")" + path +
                           R"(","line":4,"column":5,"severity":"error","code":"ST0201","text":"'a' is declared twice",)"
                           R"("notes":[{"file":")" +
                           path +
                           R"(","line":3,"column":5,"text":"declared here"}]})"
                           "\n"
                           R"({"file":")" +
                           path +
                           R"(","line":6,"column":1,"severity":"error","code":"ST0401","text":"unknown name 'x'"})"
                           "\n");
}

TEST_F(BuildCommandTest, WithoutDiagnosticsThereIsNoJson) {
    options_.json = true;
    EXPECT_EQ(Build({Write("a.st", kCounter)}), kExitSuccess);
    EXPECT_EQ(output_, "");
    EXPECT_TRUE(fs::exists(PathOf("a.vmi")));
}

TEST_F(BuildCommandTest, AWrongCommandLineIsToldApartFromWrongSources) {
    struct Row {
        const char* profile;
        std::vector<std::string> switches;
        const char* message;
    };
    const Row rows[] = {
        {"pascal", {}, "tn61131: unknown profile 'pascal'\n"},
        {"", {"speed=on"}, "tn61131: there is no switch 'speed'\n"},
        {"", {"hints"}, "tn61131: 'hints': hints takes on|off\n"},
        {"codesys", {"bounds=trap", "bounds=maybe"}, "tn61131: 'bounds=maybe': bounds takes trap|clamp|off\n"},
        {"", {"string-length=0"}, "tn61131: 'string-length=0': string-length takes 1..32766\n"},
    };
    const std::string source = Write("a.st", kCounter);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.message);
        options_.compile.profile = row.profile;
        options_.compile.switches = row.switches;
        EXPECT_EQ(Build({source}), kExitUsage);
        EXPECT_EQ(messages_, row.message);
        EXPECT_FALSE(fs::exists(PathOf("a.vmi")));
    }
}

TEST_F(BuildCommandTest, ProfileAndSwitchesReachTheCompiler) {
    const std::string source =
        Write("a.st", "PROGRAM Main\nVAR\n    i : INT;\n    d : DINT;\nEND_VAR\ni := d;\nEND_PROGRAM\n");
    EXPECT_EQ(Build({source}), kExitFailure);
    EXPECT_THAT(messages_, HasSubstr("error[ST0414]"));
    options_.compile.profile = "CODESYS";
    EXPECT_EQ(Build({source}), kExitSuccess);
    EXPECT_THAT(messages_, HasSubstr("warning[ST0414]"));
    options_.compile.switches = {"Narrowing=Silent"};
    EXPECT_EQ(Build({source}), kExitSuccess);
    EXPECT_EQ(messages_, "");
    // A switch is set over the profile, whatever their order on the command line.
    options_.compile.switches = {"narrowing=error"};
    EXPECT_EQ(Build({source}), kExitFailure);
}

TEST_F(BuildCommandTest, FilesThatCannotBeReadOrWritten) {
    EXPECT_EQ(Build({PathOf("none.st")}), kExitFailure);
    EXPECT_EQ(messages_, "tn61131: '" + PathOf("none.st") + "' cannot be read\n");
    options_.image = PathOf("no/folder/a.vmi");
    EXPECT_EQ(Build({Write("a.st", kCounter)}), kExitFailure);
    EXPECT_EQ(messages_, "tn61131: '" + PathOf("no/folder/a.vmi") + "' cannot be written\n");
}

TEST_F(BuildCommandTest, FilesAndFoldersAreOneProject) {
    Write("lib/b.st",
          "FUNCTION Twice : DINT\nVAR_INPUT\n    n : DINT;\nEND_VAR\nTwice := 2 * n * kFactor;\nEND_FUNCTION\n");
    Write("lib/deep/a.ST", "VAR_GLOBAL CONSTANT\n    kFactor : DINT := 3;\nEND_VAR\n");
    Write("lib/readme.txt", "no structured text");
    const std::string main =
        Write("main.st", "PROGRAM Main\nVAR\n    x : DINT;\nEND_VAR\nx := Twice(x);\nEND_PROGRAM\n");
    EXPECT_EQ(Build({main, PathOf("lib")}), kExitSuccess) << messages_;
    EXPECT_EQ(Build({PathOf("lib"), main}), kExitSuccess) << messages_;
    // Named twice is there once.
    EXPECT_EQ(Build({main, PathOf("lib"), PathOf("lib/../main.st"), PathOf("lib/b.st")}), kExitSuccess) << messages_;
    EXPECT_EQ(Build({main}), kExitFailure);
    EXPECT_THAT(messages_, HasSubstr("unknown name 'Twice'"));
}

TEST_F(BuildCommandTest, DiagnosticsComeInTheOrderOfTheFiles) {
    const std::string first = Write("z.st", kWrong);
    const std::string second = Write("a.st", "PROGRAM Other\ny := 1;\nEND_PROGRAM\n");
    options_.json = true;
    EXPECT_EQ(Build({first, second}), kExitFailure);
    EXPECT_LT(output_.find("z.st"), output_.find("a.st"));
    EXPECT_EQ(Build({second, first}), kExitFailure);
    EXPECT_GT(output_.find("z.st"), output_.find("a.st"));
}

TEST_F(BuildCommandTest, AFolderWithoutSourcesIsRefused) {
    Write("empty/readme.txt", "");
    EXPECT_EQ(Build({PathOf("empty")}), kExitFailure);
    EXPECT_EQ(messages_, "tn61131: '" + PathOf("empty") + "' holds no structured text\n");
}

TEST_F(BuildCommandTest, ALinkThatLeadsNowhereHidesNothing) {
    Write("lib/a.st", kCounter);
    fs::create_symlink(PathOf("gone.st"), PathOf("lib/0.st"));
    EXPECT_EQ(Build({PathOf("lib")}), kExitSuccess) << messages_;
}

TEST_F(BuildCommandTest, ExpressionsAndCodeBlocksGetTheirTables) {
    options_.compile.expressions = {"4:level * 2", "5:level"};
    options_.compile.codeBlocks = {"7:level := 0;"};
    ASSERT_EQ(Build({Write("a.st", "VAR_GLOBAL\n    level : INT;\nEND_VAR\n")}), kExitSuccess) << messages_;
    CVirtualMachine machine;
    ASSERT_TRUE(Load(machine));
    unsigned int entry = 0;
    EXPECT_TRUE(machine.FindExpression(4, entry));
    EXPECT_TRUE(machine.FindExpression(5, entry));
    EXPECT_FALSE(machine.FindExpression(7, entry));
    EXPECT_TRUE(machine.FindStandaloneCodeBlock(7, entry));
}

TEST_F(BuildCommandTest, MistakesInExpressionsNameThem) {
    options_.compile.expressions = {"4:lvl * 2"};
    options_.compile.codeBlocks = {"7:level := ;"};
    EXPECT_EQ(Build({Write("a.st", "VAR_GLOBAL\n    level : INT;\nEND_VAR\n")}), kExitFailure);
    EXPECT_THAT(messages_, HasSubstr("<expression 4>:1:1: error[ST0401]: unknown name 'lvl'\n"));
    EXPECT_THAT(messages_, HasSubstr("<code block 7>:1:10: error[ST0101]: "));
}

TEST_F(BuildCommandTest, ExpressionsHaveANumberOfTheirOwn) {
    const std::string source = Write("a.st", kCounter);
    for (const char* text : {"level", ":level", "x:level", "-1:level", "4294967296:level", "1 :level"}) {
        options_.compile.expressions = {text};
        EXPECT_EQ(Build({source}), kExitUsage) << text;
        EXPECT_EQ(messages_, "tn61131: '" + std::string(text) + "' is not of the form ID:TEXT\n");
    }
    options_.compile.expressions = {"1:1", "01:2"};
    EXPECT_EQ(Build({source}), kExitUsage);
    EXPECT_EQ(messages_, "tn61131: '01:2': the id 1 is given twice\n");
    options_.compile.expressions = {"1:1"};
    options_.compile.codeBlocks = {"1:;"};  // another table
    EXPECT_EQ(Build({source}), kExitSuccess);
}

TEST_F(BuildCommandTest, TagsAreKnownByName) {
    const std::string source = Write("a.st",
                                     "PROGRAM Main\nVAR\n    text AT %\"Text\" : STRING[5];\nEND_VAR\n"
                                     "IF %\"Level\" > 3 THEN\ntext := 'b';\nEND_IF;\n%\"Text\" := 'a';\nEND_PROGRAM\n");
    EXPECT_EQ(Build({source}), kExitFailure);
    EXPECT_THAT(messages_, HasSubstr("error[ST0206]"));
    options_.compile.tagsFile = Write("tags.json",
                                      R"({"7": {"name": "Level", "type": "INT", "access": "read-only"},
                                          "8": {"name": "Text", "type": "STRING", "length": 5}})");
    EXPECT_EQ(Build({source}), kExitSuccess) << messages_;
    CSymbolMap map;
    std::string error;
    ASSERT_TRUE(map.Load(Read("a.vmi.map"), error)) << error;
    ASSERT_EQ(map.GetTags().size(), 2U);
    for (const SymbolTag& tag : map.GetTags()) {
        EXPECT_EQ(tag.type.GetText(), tag.tagId == 7 ? "INT" : "STRING[5]");
        EXPECT_EQ(tag.isReadOnly, tag.tagId == 7);
    }
}

TEST_F(BuildCommandTest, ATagIsUsedAsItIs) {
    options_.compile.tagsFile = Write("tags.json",
                                      R"({"7": {"name": "Level", "type": "INT", "access": "read-only"},
                                          "8": {"name": "Text", "type": "STRING", "length": 5}})");
    struct Row {
        const char* variable;
        const char* statement;
        const char* message;
    };
    const Row rows[] = {
        {"x AT %\"Level\" : DINT;", "", "error[ST0208]: DINT cannot lie at 'Level', which is INT\n"},
        {"x AT %\"Text\" : STRING[6];", "", "error[ST0208]: STRING[6] cannot lie at 'Text', which is STRING[5]\n"},
        {"x AT %\"Text\" : STRING[4];", "", ""},
        {"x : INT;", "%\"Level\" := 5;", "error[ST0416]"},
        {"x : INT;", "%\"level\" := 5;", "error[ST0206]"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.message);
        const std::string text = std::string("PROGRAM Main\nVAR\n") + row.variable + "\nEND_VAR\n" + row.statement;
        EXPECT_EQ(Build({Write("a.st", text + "\nEND_PROGRAM\n")}), *row.message == 0 ? kExitSuccess : kExitFailure);
        EXPECT_THAT(messages_, HasSubstr(row.message));
    }
}

TEST_F(BuildCommandTest, TagsFilesThatCannotBeRead) {
    const std::string source = Write("a.st", kCounter);
    options_.compile.tagsFile = PathOf("none.json");
    EXPECT_EQ(Build({source}), kExitFailure);
    EXPECT_EQ(messages_, "tn61131: the tags file '" + PathOf("none.json") + "' cannot be read\n");
    options_.compile.tagsFile = Write("tags.json", R"({"7": {"name": "a"}})");
    EXPECT_EQ(Build({source}), kExitFailure);
    EXPECT_EQ(messages_, "tn61131: tags file '" + PathOf("tags.json") + "': tag 7: 'type' is no elementary type\n");
}

TEST_F(BuildCommandTest, TheMapHoldsTheProject) {
    const char* source =
        "TYPE\n    Mode : (Off, On);\nEND_TYPE\n"
        "VAR_GLOBAL RETAIN\n    total : DINT;\nEND_VAR\n"
        "FUNCTION Next : Mode\nVAR_INPUT\n    m : Mode;\nEND_VAR\nNext := On;\nEND_FUNCTION\n"
        "PROGRAM Main\nVAR\n    m : Mode;\nEND_VAR\nm := Next(m);\ntotal := total + 1;\nEND_PROGRAM\n"
        "CONFIGURATION Plant\n    TASK Fast(INTERVAL := T#10ms, PRIORITY := 1);\n"
        "    PROGRAM P1 WITH Fast : Main;\nEND_CONFIGURATION\n";
    options_.compile.switches = {"optimise=none"};  // what is inlined everywhere has no code of its own
    ASSERT_EQ(Build({Write("a.st", source)}), kExitSuccess) << messages_;
    CSymbolMap map;
    std::string error;
    ASSERT_TRUE(map.Load(Read("a.vmi.map"), error)) << error;
    SymbolReference reference;
    EXPECT_TRUE(map.Find("P1.m", reference, error)) << error;
    ASSERT_TRUE(reference.type.IsEnum());
    EXPECT_EQ(reference.type.GetText(), "Mode");
    ASSERT_EQ(map.GetTasks().size(), 1U);
    EXPECT_EQ(map.GetTasks()[0].intervalMs, 10);
    EXPECT_EQ(map.GetTasks()[0].programs, std::vector<std::string>{"P1"});
    ASSERT_EQ(map.GetRetained().size(), 1U);
    EXPECT_EQ(map.GetRetained()[0].name, "total");
    EXPECT_EQ(map.GetRetained()[0].size, 4U);
    ASSERT_EQ(map.GetPous().size(), 2U);
    const SymbolPou* pou = map.FindPou(map.GetPous()[1].codeOffset);
    ASSERT_NE(pou, nullptr);
    EXPECT_TRUE(pou->name == "Next" || pou->name == "Main");
}

/// The options as the command line gives them.
class BuildOptionsTest : public BuildCommandTest {
 protected:
    int Parse(std::vector<std::string> arguments) {
        CLI::App app;
        int status = -1;
        AddBuildCommand(app, status);
        AddCheckCommand(app, status);
        std::reverse(arguments.begin(), arguments.end());
        try {
            app.parse(arguments);
        } catch (const CLI::ParseError&) {
            return kExitUsage;
        }
        return status;
    }
};

TEST_F(BuildOptionsTest, CommandLinesAreTaken) {
    const std::string source = Write("a.st", "VAR_GLOBAL\n    level : INT;\nEND_VAR\n");
    EXPECT_EQ(Parse({"build", source, "-o", PathOf("b.vmi"), "--set", "hints=on", "--set", "bounds=off", "--profile",
                     "codesys", "--expression", "1:level", "--expression", "2:level + 1", "--code-block", "3:;"}),
              kExitSuccess);
    EXPECT_TRUE(fs::exists(PathOf("b.vmi")));
    EXPECT_EQ(Parse({"build", "--set", "hints=on", source, "-o", PathOf("c.vmi")}), kExitSuccess)
        << "a switch takes one value";
    EXPECT_EQ(Parse({"check", source}), kExitSuccess);
    EXPECT_EQ(Parse({"build", source}), kExitUsage) << "no image";
    EXPECT_EQ(Parse({"check"}), kExitUsage) << "no source";
    EXPECT_EQ(Parse({"check", source, "-o", PathOf("d.vmi")}), kExitUsage) << "checking writes nothing";
    EXPECT_EQ(Parse({"check", source, "--set", "hints=maybe"}), kExitUsage);
    EXPECT_EQ(Parse({"check", source, "--profile", "pascal"}), kExitUsage);
}

}  // namespace
}  // namespace tn61131
