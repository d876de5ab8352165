#include "tools/ProjectFiles.h"

#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace tn61131 {
namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

class ProjectFilesTest : public testing::Test {
 protected:
    void SetUp() override {
        const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
        folder_ = fs::temp_directory_path() / ("tn61131-files-" + std::string(test->name()) + std::to_string(getpid()));
        fs::create_directories(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string PathOf(const std::string& name) const { return (folder_ / name).string(); }
    std::string Write(const std::string& name) {
        fs::create_directories((folder_ / name).parent_path());
        std::ofstream(PathOf(name), std::ios::binary) << "(* " << name << " *)";
        return PathOf(name);
    }
    /// The names of the sources below the folder.
    std::vector<std::string> Names(const std::vector<std::string>& paths) {
        std::vector<st::SourceText> sources;
        names_.clear();
        if (!ReadProjectFiles(paths, sources, error_)) return {"refused"};
        for (const st::SourceText& source : sources) {
            names_.push_back(source.name.substr(folder_.string().size() + 1));
            EXPECT_NE(source.text.find(fs::path(source.name).filename().string()), std::string::npos);
        }
        return names_;
    }

    fs::path folder_;
    std::vector<std::string> names_;
    std::string error_;
};

TEST_F(ProjectFilesTest, FilesStayInTheirOrderThoseOfFoldersAreSorted) {
    Write("lib/b.st");
    Write("lib/a.st");
    Write("lib/inner/c.pou");
    Write("lib/d.txt");
    EXPECT_THAT(Names({Write("z.st"), PathOf("lib"), Write("a.st")}),
                ElementsAre("z.st", "lib/a.st", "lib/b.st", "lib/inner/c.pou", "a.st"));
}

TEST_F(ProjectFilesTest, AFileIsTakenOnce) {
    Write("lib/a.st");
    EXPECT_THAT(Names({PathOf("lib/a.st"), PathOf("lib"), PathOf("lib/../lib/./a.st")}), ElementsAre("lib/a.st"));
}

TEST_F(ProjectFilesTest, AFileThatIsNamedMayBeOfAnyKind) {
    EXPECT_THAT(Names({Write("program.txt")}), ElementsAre("program.txt"));
}

TEST_F(ProjectFilesTest, WhatCannotBeRead) {
    EXPECT_THAT(Names({PathOf("none.st")}), ElementsAre("refused"));
    EXPECT_EQ(error_, "'" + PathOf("none.st") + "' cannot be read");
    fs::create_directories(PathOf("empty"));
    EXPECT_THAT(Names({PathOf("empty")}), ElementsAre("refused"));
    EXPECT_EQ(error_, "'" + PathOf("empty") + "' holds no structured text");
}

TEST_F(ProjectFilesTest, LinksToFoldersAreNotFollowed) {
    Write("lib/a.st");
    fs::create_directory_symlink(PathOf("lib"), PathOf("lib/again"));
    EXPECT_THAT(Names({PathOf("lib")}), ElementsAre("lib/a.st"));
}

}  // namespace
}  // namespace tn61131
