#include "tools/AsmCommand.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tools/DisCommand.h"
#include "tools/Tool.h"

namespace tn61131 {
namespace {

using testing::HasSubstr;
using testing::Not;
namespace fs = std::filesystem;

/// A folder for the files of one test.
class AsmCommandTest : public testing::Test {
 protected:
    void SetUp() override {
        const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
        folder_ = fs::temp_directory_path() / ("tn61131-asm-" + std::string(test->name()) + std::to_string(getpid()));
        fs::create_directories(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string PathOf(const std::string& name) const { return (folder_ / name).string(); }
    std::string Write(const std::string& name, const std::string& content) {
        std::ofstream(PathOf(name), std::ios::binary) << content;
        return PathOf(name);
    }
    std::string Read(const std::string& name) const {
        std::ifstream file(PathOf(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    int Assemble(const std::string& source, const std::string& image) {
        messages_.str("");
        return AssembleFile({source, image}, messages_);
    }
    int List(const DisOptions& options) {
        messages_.str("");
        output_.str("");
        return ListImage(options, output_, messages_);
    }

    static constexpr const char* kSource =
        ".global\nlevel : REAL\n.program Main go\n.code\ngo: LD ADDR Global: level\nRET\n";
    fs::path folder_;
    std::ostringstream output_;
    std::ostringstream messages_;
};

TEST_F(AsmCommandTest, ImageAndMapAreWrittenAndListedAgain) {
    ASSERT_EQ(Assemble(Write("a.tnasm", kSource), PathOf("a.vmi")), kExitSuccess) << messages_.str();
    EXPECT_EQ(messages_.str(), "");
    EXPECT_EQ(Read("a.vmi").substr(0, 4), std::string("VI\x05\0", 4));
    EXPECT_THAT(Read("a.vmi.map"), HasSubstr("\"name\":\"level\""));
    ASSERT_EQ(List({PathOf("a.vmi"), "", false}), kExitSuccess);
    EXPECT_THAT(output_.str(), HasSubstr("LD ADDR Global: 0  ; level\n"));
    ASSERT_EQ(Assemble(Write("b.tnasm", output_.str()), PathOf("b.vmi")), kExitSuccess) << messages_.str();
    EXPECT_EQ(Read("b.vmi"), Read("a.vmi"));
}

TEST_F(AsmCommandTest, ErrorsAreReportedAndNothingIsWritten) {
    const std::string source = Write("a.tnasm", ".code\nFOO\nLD STACK[x]\n");
    EXPECT_EQ(Assemble(source, PathOf("a.vmi")), kExitFailure);
    EXPECT_EQ(messages_.str(),
              source + ":2:1: error: unknown instruction 'FOO'\n" + source + ":3:10: error: a stack index expected\n");
    EXPECT_FALSE(fs::exists(PathOf("a.vmi")));
    EXPECT_FALSE(fs::exists(PathOf("a.vmi.map")));
}

TEST_F(AsmCommandTest, FilesThatCannotBeReadOrWritten) {
    EXPECT_EQ(Assemble(PathOf("none"), PathOf("a.vmi")), kExitFailure);
    EXPECT_THAT(messages_.str(), HasSubstr("none' cannot be read"));
    EXPECT_EQ(Assemble(Write("a.tnasm", kSource), PathOf("no/folder/a.vmi")), kExitFailure);
    EXPECT_THAT(messages_.str(), HasSubstr("a.vmi' cannot be written"));
    EXPECT_EQ(List({PathOf("none"), "", false}), kExitFailure);
    EXPECT_THAT(messages_.str(), HasSubstr("the file cannot be read"));
}

TEST_F(AsmCommandTest, ListingOfWhatIsNoImageIsRefused) {
    EXPECT_EQ(List({Write("a.vmi", "no image"), "", false}), kExitFailure);
    EXPECT_EQ(output_.str(), "");
    EXPECT_THAT(messages_.str(), HasSubstr("Invalid VM Image."));
    ASSERT_EQ(Assemble(Write("a.tnasm", kSource), PathOf("b.vmi")), kExitSuccess);
    const std::string whole = Read("b.vmi");
    EXPECT_EQ(List({Write("c.vmi", whole.substr(0, whole.size() - 1)), "", false}), kExitFailure);
    EXPECT_THAT(messages_.str(), HasSubstr("ends too early"));
}

TEST_F(AsmCommandTest, MapIsOptionalUnlessItIsNamed) {
    ASSERT_EQ(Assemble(Write("a.tnasm", kSource), PathOf("a.vmi")), kExitSuccess);
    fs::rename(PathOf("a.vmi.map"), PathOf("names.map"));
    ASSERT_EQ(List({PathOf("a.vmi"), "", false}), kExitSuccess);
    EXPECT_THAT(output_.str(), Not(HasSubstr("level")));
    ASSERT_EQ(List({PathOf("a.vmi"), PathOf("names.map"), false}), kExitSuccess);
    EXPECT_THAT(output_.str(), HasSubstr("; level\n"));
    Write("a.vmi.map", "damaged");
    EXPECT_EQ(List({PathOf("a.vmi"), "", false}), kExitSuccess);
    EXPECT_EQ(List({PathOf("a.vmi"), PathOf("a.vmi.map"), false}), kExitFailure);
    EXPECT_EQ(List({PathOf("a.vmi"), PathOf("none"), false}), kExitFailure);
}

TEST_F(AsmCommandTest, CodeOnlyIsTheCodeAlone) {
    ASSERT_EQ(Assemble(Write("a.tnasm", kSource), PathOf("a.vmi")), kExitSuccess);
    ASSERT_EQ(List({PathOf("a.vmi"), "", true}), kExitSuccess);
    EXPECT_THAT(output_.str(), Not(HasSubstr(".global")));
    EXPECT_THAT(output_.str(), HasSubstr("0006 0C                       : RET\n"));
}

TEST_F(AsmCommandTest, WrongUsageHasItsOwnStatus) {
    const std::string source = Write("a.tnasm", kSource);
    const std::string image = PathOf("a.vmi");
    const auto run = [](std::vector<const char*> arguments) {
        return RunTool(static_cast<int>(arguments.size()), arguments.data());
    };
    EXPECT_EQ(run({"tn61131", "asm", source.c_str()}), kExitUsage);
    EXPECT_EQ(run({"tn61131", "dis"}), kExitUsage);
    EXPECT_EQ(run({"tn61131", "asm", source.c_str(), "-o", image.c_str()}), kExitSuccess);
    EXPECT_EQ(run({"tn61131", "asm", image.c_str(), "-o", image.c_str()}), kExitFailure);
}

}  // namespace
}  // namespace tn61131
