#include "tools/RunCommand.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "assembler/SymbolMap.h"
#include "tools/TestImage.h"
#include "tools/Tool.h"

namespace tn61131 {
namespace {

using testing::HasSubstr;
using testing::Not;
namespace fs = std::filesystem;

/// A folder for the files of one test, and the command run on them.
class RunCommandTest : public testing::Test {
 protected:
    void SetUp() override {
        const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
        folder_ = fs::temp_directory_path() / ("tn61131-" + std::string(test->name()) + std::to_string(getpid()));
        fs::create_directories(folder_);
        options_.json = true;
        options_.timestampMS = 0;
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string PathOf(const std::string& name) const { return (folder_ / name).string(); }
    std::string Write(const std::string& name, const std::string& content) {
        std::ofstream(PathOf(name), std::ios::binary) << content;
        return PathOf(name);
    }
    std::string Write(const std::string& name, const TestImage& image) {
        const TestImage::Bytes bytes = image.Save();
        return Write(name, std::string(bytes.begin(), bytes.end()));
    }
    static std::string ReadText(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// Runs the images with the options and keeps the exit status, what was written and the messages.
    void Run(std::vector<std::string> images) {
        std::ostringstream output;
        std::ostringstream messages;
        options_.images = std::move(images);
        exitStatus_ = RunImages(options_, output, messages);
        output_ = output.str();
        messages_ = messages.str();
    }
    /// The JSON line without the member "image", whose path differs from test to test.
    std::string Line() const {
        std::string line = output_;
        const std::size_t image = line.find("\"image\":");
        line.erase(image, line.find(',', image) + 1 - image);
        return line;
    }

    RunOptions options_;
    fs::path folder_;
    int exitStatus_ = -1;
    std::string output_;
    std::string messages_;
};

TEST_F(RunCommandTest, ACompletedScanGivesItsLine) {
    Run({Write("a.vmi", MakeCounterImage())});
    EXPECT_EQ(
        Line(),
        R"({"scans":[{"result":0,"resumed":0,"value":"DINT#1","pc":30,"calls":[],"errors":[]}],"global":"01000000"})"
        "\n");
    EXPECT_EQ(exitStatus_, 0);
    EXPECT_EQ(messages_, "");
}

TEST_F(RunCommandTest, ScansRunOnTheSameData) {
    options_.scans = 2;
    Run({Write("a.vmi", MakeCounterImage())});
    EXPECT_EQ(Line(),
              R"({"scans":[{"result":0,"resumed":0,"value":"DINT#1","pc":30,"calls":[],"errors":[]},)"
              R"({"result":0,"resumed":0,"value":"DINT#2","pc":30,"calls":[],"errors":[]}],"global":"02000000"})"
              "\n");
}

TEST_F(RunCommandTest, LastHoldsTheLastScanAndTheCount) {
    options_.scans = 1000;
    options_.lastOnly = true;
    Run({Write("a.vmi", MakeCounterImage())});
    EXPECT_EQ(Line(), R"({"scans":[{"result":0,"resumed":0,"value":"DINT#1000","pc":30,"calls":[],"errors":[]}],)"
                      R"("count":1000,"global":"e8030000"})"
                      "\n");
}

TEST_F(RunCommandTest, AFailureStopsTheScansAndShowsTheCalls) {
    options_.scans = 5;
    options_.lastOnly = true;
    Run({Write("a.vmi", MakeFailingImage())});
    EXPECT_EQ(Line(), R"({"scans":[{"result":2,"resumed":0,"value":"DINT#0","pc":20,"calls":[6],)"
                      R"("errors":[{"id":226,"location":"","text":"Division by zero."}]}],"count":1,"global":""})"
                      "\n");
    EXPECT_EQ(exitStatus_, 1);
    EXPECT_EQ(messages_, "tn61131: " + PathOf("a.vmi") + ": error 226: Division by zero.\n");
}

TEST_F(RunCommandTest, TheInstructionLimitIsTheContexts) {
    options_.instructionLimit = 3;
    Run({Write("a.vmi", MakeCounterImage())});
    EXPECT_THAT(output_, HasSubstr(R"("result":2)"));
    EXPECT_THAT(output_, HasSubstr(R"("text":"Instruction limit reached.  Program is limited to 3 instructions.")"));
}

TEST_F(RunCommandTest, TimeAddsTheNanoseconds) {
    options_.time = true;
    Run({Write("a.vmi", MakeCounterImage())});
    EXPECT_THAT(output_, testing::ContainsRegex(R"("ns":[1-9][0-9]*,)"));
}

TEST_F(RunCommandTest, ImagesAreHandledInTurnOnContextsOfTheirOwn) {
    const std::string counter = Write("a.vmi", MakeCounterImage());
    Run({counter, PathOf("missing.vmi"), counter});
    std::istringstream lines(output_);
    std::string first;
    std::string second;
    std::string third;
    std::getline(lines, first);
    std::getline(lines, second);
    std::getline(lines, third);
    EXPECT_THAT(first, HasSubstr(R"("value":"DINT#1")"));
    EXPECT_EQ(second, R"({"image":")" + PathOf("missing.vmi") +
                          R"(","errors":[{"id":0,"location":"","text":"The file cannot be read."}]})");
    EXPECT_EQ(third, first);
    EXPECT_EQ(exitStatus_, 1);
}

TEST_F(RunCommandTest, AnImageThatDoesNotLoadHasErrorsAndNoScans) {
    Run({Write("a.vmi", "XXXX")});
    EXPECT_EQ(Line(), R"({"errors":[{"id":254,"location":"","text":"Invalid VM Image."}]})"
                      "\n");
    EXPECT_EQ(exitStatus_, 1);
    EXPECT_THAT(messages_, HasSubstr("error 254: Invalid VM Image."));
}

TEST_F(RunCommandTest, AnImageCutAnywhereIsRefused) {
    TestImage image = MakeCounterImage();
    image.expressions = {{3, 0}};
    image.codeBlocks = {{4, 0}};
    const TestImage::Bytes bytes = image.Save();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        SCOPED_TRACE(size);
        Run({Write("a.vmi", std::string(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)))});
        EXPECT_EQ(exitStatus_, 1);
        EXPECT_THAT(output_, HasSubstr(R"("errors":[{"id":)"));
        EXPECT_THAT(output_, Not(HasSubstr("scans")));
    }
}

TEST_F(RunCommandTest, ATruncatedTableIsAnErrorWithoutId) {
    TestImage::Bytes bytes = MakeCounterImage().Save();
    bytes.pop_back();
    Run({Write("a.vmi", std::string(bytes.begin(), bytes.end()))});
    EXPECT_EQ(Line(), R"({"errors":[{"id":0,"location":"","text":"The image is truncated."}]})"
                      "\n");
}

/// An image whose entry points are told apart by their results 0 to 5.
TestImage MakeEntriesImage() {
    TestImage image;
    for (unsigned char value = 0; value < 6; ++value)
        image.code.insert(image.code.end(), {1, 3, value, 12});  // LD USINT#value, RET
    image.programs = {{"Zeta", 0}, {"alpha", 4}};
    image.expressions = {{9, 8}, {2, 12}};
    image.codeBlocks = {{1, 16}, {5, 20}};
    return image;
}

TEST_F(RunCommandTest, TheEntryIsTheOneNamedOrTheFirst) {
    struct Row {
        std::optional<std::string> program;
        std::optional<std::uint32_t> expression;
        std::optional<std::uint32_t> codeBlock;
        const char* value;
        const char* why;
    };
    const Row rows[] = {
        {{}, {}, {}, "USINT#1", "the first program without regard to case"},
        {"zETA", {}, {}, "USINT#0", "by name, in any case"},
        {{}, 9, {}, "USINT#2", "expression"},
        {{}, {}, 5, "USINT#5", "code block"},
    };
    const std::string path = Write("a.vmi", MakeEntriesImage());
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        options_.program = row.program;
        options_.expression = row.expression;
        options_.codeBlock = row.codeBlock;
        Run({path});
        EXPECT_THAT(output_, HasSubstr(std::string("\"value\":\"") + row.value + '"'));
        EXPECT_EQ(exitStatus_, 0);
    }
}

TEST_F(RunCommandTest, WithoutProgramsTheLowestExpressionRuns) {
    TestImage image = MakeEntriesImage();
    image.programs.clear();
    Run({Write("a.vmi", image)});
    EXPECT_THAT(output_, HasSubstr(R"("value":"USINT#3")"));
}

TEST_F(RunCommandTest, AnImageWithNothingToRunIsRefused) {
    TestImage image = MakeEntriesImage();
    image.programs.clear();
    image.expressions.clear();
    Run({Write("a.vmi", image)});
    EXPECT_EQ(Line(),
              R"({"errors":[{"id":0,"location":"","text":"The image has neither a program nor an expression."}]})"
              "\n");
    EXPECT_EQ(exitStatus_, 1);
}

TEST_F(RunCommandTest, AnEntryThatIsNotThereIsRefused) {
    options_.codeBlock = 2;
    Run({Write("a.vmi", MakeEntriesImage())});
    EXPECT_EQ(Line(), R"({"errors":[{"id":0,"location":"","text":"The image has no code block 2."}]})"
                      "\n");
}

TEST_F(RunCommandTest, TextThatIsNotUtf8StillMakesValidJson) {
    TestImage image;
    image.code = {1, 20, 1, 0, 0xFF, 13, 8, 12};  // LD STRING with the byte FF, CONVERT DINT
    image.programs = {{"Main", 0}};
    Run({Write("a.vmi", image)});
    EXPECT_THAT(output_, HasSubstr(R"("value":"STRING#'$FF'")"));
    EXPECT_THAT(output_, Not(HasSubstr("\xFF")));
}

TEST_F(RunCommandTest, TimestampsAdvanceByTheStep) {
    TestImage image;
    image.code = {20, 11, 1, 1, 12};  // SYS_GET_TIMESTAMP ArgCount 1, RET
    image.programs = {{"Main", 0}};
    options_.timestampMS = 86400000;
    options_.stepMS = 1500;
    options_.scans = 2;
    Run({Write("a.vmi", image)});
    EXPECT_THAT(output_, HasSubstr(R"("value":"DT#1970-01-02-00:00:00.000")"));
    EXPECT_THAT(output_, HasSubstr(R"("value":"DT#1970-01-02-00:00:01.500")"));
}

// --- tags ---

/// Copies the DINT of tag 7 to its bytes 4 to 7.
TestImage MakeTagImage() {
    TestImage image;
    image.code = {
        3,  0, 0, 7, 0, 0, 0,  // LD TAG ADDR Tag: Id 7 Offset 0
        4,  8, 4, 0,           // PTR LD DINT (4)
        10,                    // PUSH
        3,  4, 0, 7, 0, 0, 0,  // LD TAG ADDR Tag: Id 7 Offset 4
        5,  8, 4, 0,           // PTR ST DINT (4)
        12,                    // RET
    };
    image.programs = {{"Main", 0}};
    return image;
}

TEST_F(RunCommandTest, TagsAreReadWrittenAndReported) {
    options_.tagsFile = Write("tags.json", R"({"7": {"data": "0100000000000000"}, "4294967295": {"data": ""}})");
    Run({Write("a.vmi", MakeTagImage())});
    EXPECT_EQ(Line(),
              R"({"scans":[{"result":0,"resumed":0,"value":"DINT#1","pc":23,"calls":[],"errors":[]}],"global":"",)"
              R"("tags":{"7":"0100000001000000","4294967295":""}})"
              "\n");
}

TEST_F(RunCommandTest, WithoutTagsTheMachineSaysSo) {
    Run({Write("a.vmi", MakeTagImage())});
    EXPECT_THAT(output_, HasSubstr(R"("id":232)"));
    EXPECT_THAT(output_, Not(HasSubstr("\"tags\"")));
}

TEST_F(RunCommandTest, ATagsFileThatIsNoneRefusesTheImage) {
    options_.tagsFile = Write("tags.json", "{");
    Run({Write("a.vmi", MakeTagImage())});
    EXPECT_THAT(output_, HasSubstr(R"("errors":[{"id":0,)"));
    EXPECT_EQ(exitStatus_, 1);
    options_.tagsFile = PathOf("missing.json");
    Run({PathOf("a.vmi")});
    EXPECT_THAT(output_, HasSubstr("missing.json' cannot be read."));
}

// --- symbol map ---

class RunCommandWithMapTest : public RunCommandTest {
 protected:
    void SetUp() override {
        RunCommandTest::SetUp();
        CSymbolMap map;
        map.AddVariable({.scope = "Main", .name = "count", .type = SymbolType::MakeElementary(ElementaryType::DInt)});
        map.AddVariable({.scope = "Main",
                         .name = "Bytes",
                         .type = SymbolType::MakeArray({{1, 4}}, SymbolType::MakeElementary(ElementaryType::Byte))});
        map.AddVariable({.scope = "Scale",
                         .name = "t",
                         .location = LocationKind::Temp,
                         .type = SymbolType::MakeElementary(ElementaryType::DInt)});
        map.AddLabel({SymbolLabel::Kind::Program, "Main", 0});
        map.AddLabel({SymbolLabel::Kind::Function, "Scale", 7});
        const std::uint32_t file = map.AddFile("tank.tnasm");
        map.AddPosition({0, file, 3, 5});
        map.AddPosition({7, file, 9, 5});
        image_ = Write("a.vmi", MakeCounterImage());
        Write("a.vmi.map", map.Save());
        Write("b.vmi.map", map.Save());
    }

    std::string image_;
};

TEST_F(RunCommandWithMapTest, WatchedVariablesStandUnderTheNameGiven) {
    options_.watch = {"COUNT", "main.bytes[1]"};
    Run({image_});
    EXPECT_THAT(output_, HasSubstr(R"("watch":{"COUNT":"DINT#1","main.bytes[1]":"BYTE#16#1"})"));
}

TEST_F(RunCommandWithMapTest, AMapCanBeNamed) {
    options_.watch = {"count"};
    options_.mapFile = PathOf("b.vmi.map");
    Run({Write("c.vmi", MakeCounterImage())});
    EXPECT_THAT(output_, HasSubstr(R"("watch":{"count":"DINT#1"})"));
}

TEST_F(RunCommandWithMapTest, NamesThatMeanNothingRefuseTheImage) {
    for (const char* name : {"speed", "bytes[5]", "Scale.t"}) {
        SCOPED_TRACE(name);
        options_.watch = {name};
        Run({image_});
        EXPECT_EQ(exitStatus_, 1);
        EXPECT_THAT(output_, HasSubstr(R"("errors":[{"id":0,)"));
    }
}

TEST_F(RunCommandWithMapTest, WatchingNeedsAMap) {
    options_.watch = {"count"};
    Run({Write("d.vmi", MakeCounterImage())});
    EXPECT_EQ(exitStatus_, 1);
    EXPECT_THAT(output_, HasSubstr("d.vmi.map': it cannot be read."));
}

TEST_F(RunCommandWithMapTest, ADamagedMapThatNobodyAskedForIsIgnored) {
    Write("a.vmi.map", "nonsense");
    Run({image_});
    EXPECT_EQ(exitStatus_, 0);
    options_.mapFile = PathOf("a.vmi.map");
    Run({image_});
    EXPECT_EQ(exitStatus_, 1);
}

TEST_F(RunCommandWithMapTest, HumanTextShowsWhatHasChanged) {
    options_.json = false;
    options_.scans = 2;
    Run({image_});
    EXPECT_EQ(output_, image_ +
                           ": program Main at 0000\n"
                           "scan 1 at 0 ms: completed, value DINT#1\n"
                           "  Main.count = DINT#1\n"
                           "  Main.Bytes[1] = BYTE#16#1\n"
                           "  Main.Bytes[2] = BYTE#16#0\n"
                           "  Main.Bytes[3] = BYTE#16#0\n"
                           "  Main.Bytes[4] = BYTE#16#0\n"
                           "scan 2 at 100 ms: completed, value DINT#2\n"
                           "  Main.count = DINT#2\n"
                           "  Main.Bytes[1] = BYTE#16#2\n"
                           "2 scans\n");
}

TEST_F(RunCommandWithMapTest, HumanTextNamesThePlaceOfAFailure) {
    options_.json = false;
    options_.watch = {"count"};
    Run({Write("b.vmi", MakeFailingImage())});
    EXPECT_EQ(output_, PathOf("b.vmi") +
                           ": program Main at 0000\n"
                           "scan 1 at 0 ms: failed, value DINT#0\n"
                           "  count = (not there)\n");
    EXPECT_EQ(messages_,
              "tn61131: " + PathOf("b.vmi") +
                  ": error 226: Division by zero.\n"
                  "  at      0014 0F 04                    : DIV  in function Scale, tank.tnasm:9:5\n"
                  "  called  0000 15 01 07 00 00 00        : CALL 0007, ArgCount 1  in program Main, tank.tnasm:3:5\n");
}

TEST_F(RunCommandTest, HumanTextSaysWhyAnImageIsRefused) {
    options_.json = false;
    Run({Write("a.vmi", "XXXX")});
    EXPECT_EQ(output_, "");
    EXPECT_EQ(messages_, "tn61131: " + PathOf("a.vmi") + ": error 254: Invalid VM Image.\n");
}

TEST_F(RunCommandTest, AFailureWithoutAMessageIsStillTold) {
    TestImage image;
    image.code = {2, 1, 0, 0, 0, 0, 28, 1, 0, 0, 12};  // LD ADDR Global: 0, SFC Type 1, DataSize 0: a wrong size
    image.programs = {{"Main", 0}};
    for (const bool json : {false, true}) {
        options_.json = json;
        Run({Write("a.vmi", image)});
        EXPECT_EQ(exitStatus_, 1);
        EXPECT_THAT(messages_, testing::StartsWith("tn61131: " + PathOf("a.vmi") + ": The run did not complete.\n"));
    }
    EXPECT_THAT(output_, HasSubstr(R"("result":2)"));
    EXPECT_THAT(output_, HasSubstr(R"("errors":[])"));
}

TEST_F(RunCommandTest, ControlCharactersOfAProgramDoNotReachTheTerminal) {
    TestImage image;
    image.code = {1, 20, 2, 0, 27, 'x', 13, 8, 12};  // LD STRING with an escape character, CONVERT DINT
    image.programs = {{"Main", 0}};
    options_.json = false;
    Run({Write("a.vmi", image)});
    EXPECT_THAT(messages_, HasSubstr("\\x1Bx"));
    EXPECT_THAT(output_ + messages_, Not(HasSubstr("\x1B")));
}

TEST_F(RunCommandWithMapTest, TheWaveformHoldsTheScans) {
    options_.watch = {"count"};
    options_.traceFile = PathOf("trace.vcd");
    options_.scans = 3;
    options_.timestampMS = 5000;
    Run({image_});
    EXPECT_EQ(ReadText(options_.traceFile),
              "$version tn61131 $end\n$timescale 1 ms $end\n$var wire 32 ! count $end\n$enddefinitions $end\n"
              "#0\nb1 !\n#100\nb10 !\n#200\nb11 !\n");
}

TEST_F(RunCommandWithMapTest, WithoutNamesTheWaveformHoldsEverything) {
    options_.traceFile = PathOf("trace.vcd");
    Run({image_});
    EXPECT_THAT(ReadText(options_.traceFile), HasSubstr("$scope module Main $end\n"
                                                        "$var wire 32 ! count $end\n"
                                                        "$var wire 8 \" Bytes(1) $end\n"));
}

TEST_F(RunCommandWithMapTest, AWaveformThatCannotBeWrittenRefusesTheImage) {
    options_.traceFile = PathOf("missing/trace.vcd");
    Run({image_});
    EXPECT_EQ(exitStatus_, 1);
    EXPECT_THAT(output_, HasSubstr("cannot be written."));
}

// --- command line ---

int RunLine(std::vector<const char*> arguments, std::string& output, std::string& messages) {
    arguments.insert(arguments.begin(), "tn61131");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int exitStatus = RunTool(static_cast<int>(arguments.size()), arguments.data());
    output = testing::internal::GetCapturedStdout();
    messages = testing::internal::GetCapturedStderr();
    return exitStatus;
}

TEST(ToolCommandLine, WrongUsageIsTwoAndHelpIsSuccess) {
    struct Row {
        std::vector<const char*> arguments;
        int exitStatus;
    };
    const Row rows[] = {
        {{}, 2},
        {{"fly"}, 2},
        {{"run"}, 2},
        {{"run", "a.vmi", "--fly"}, 2},
        {{"run", "a.vmi", "--limit", "many"}, 2},
        {{"run", "a.vmi", "--limit", "4294967296"}, 2},
        {{"run", "a.vmi", "--scans", "-1"}, 2},
        {{"run", "a.vmi", "--program", "a", "--expression", "1"}, 2},
        {{"run", "a.vmi", "--expression", "1", "--code-block", "1"}, 2},
        {{"run", "a.vmi", "--time-zone", "Mars/Olympus"}, 2},
        {{"run", "a.vmi", "b.vmi", "--trace", "t.vcd"}, 2},
        {{"literal"}, 2},
        {{"literal", "--type", "COLOUR", "1"}, 2},
        {{"--help"}, 0},
        {{"run", "--help"}, 0},
        {{"run", "/nonexistent/a.vmi"}, 1},
        {{"literal", "x"}, 1},
        {{"literal", "1"}, 0},
    };
    for (const Row& row : rows) {
        std::string line;
        for (const char* argument : row.arguments)
            line += std::string(argument) + ' ';
        SCOPED_TRACE(line);
        std::string output;
        std::string messages;
        EXPECT_EQ(RunLine(row.arguments, output, messages), row.exitStatus);
        EXPECT_EQ(messages.empty(), row.exitStatus == 0);
    }
}

TEST(ToolCommandLine, LiteralTextsAreTakenAsTheyAre) {
    std::string output;
    std::string messages;
    EXPECT_EQ(
        RunLine({"literal", "--json", "-5", "+1.5", "-.5", "--type", "LREAL", "--", "-1", "--type"}, output, messages),
        1);
    EXPECT_THAT(output, HasSubstr(R"({"text":"-5","type":"LREAL")"));
    EXPECT_THAT(output, HasSubstr(R"({"text":"-.5","type":"LREAL")"));
    EXPECT_THAT(output, HasSubstr(R"({"text":"+1.5","type":"LREAL")"));
    EXPECT_THAT(output, HasSubstr(R"({"text":"-1","type":"LREAL")"));
    EXPECT_THAT(output, HasSubstr(R"({"text":"--type","errors")"));
    for (const char* text : {"", "{}", "[1,2]", "%%", "'a,b'", "run"}) {
        SCOPED_TRACE(text);
        (void)RunLine({"literal", "--json", text}, output, messages);
        EXPECT_THAT(output, testing::StartsWith(R"({"text":")" + std::string(text) + '"'));
        EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 1);
    }
}

}  // namespace
}  // namespace tn61131
