// One test for each program in the folders beside this file.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "programs/ProgramFile.h"
#include "programs/ProgramRun.h"

namespace {

namespace fs = std::filesystem;

class ProgramTest : public testing::Test {
 public:
    explicit ProgramTest(fs::path path) : path_(std::move(path)) {}

    void TestBody() override {
        std::ifstream stream(path_, std::ios::binary);
        ASSERT_TRUE(stream) << path_;
        program_test::ProgramFile file;
        std::string error;
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        ASSERT_TRUE(program_test::ReadProgramFile(path_.filename().string(), text, file, error)) << error;
        for (const std::string& failure : program_test::CheckProgram(file))
            ADD_FAILURE() << failure;
    }

 private:
    fs::path path_;
};

/// The test's name, of letters, digits and underscores.
std::string TestName(const fs::path& path) {
    std::string name = path.stem().string();
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

void RegisterPrograms() {
    std::vector<fs::path> programs;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(TN61131_PROGRAMS)) {
        if (entry.path().extension() == ".st") programs.push_back(entry.path());
    }
    std::sort(programs.begin(), programs.end());
    for (const fs::path& path : programs) {
        const std::string suite = "Programs_" + TestName(path.parent_path());
        testing::RegisterTest(suite.c_str(), TestName(path).c_str(), nullptr, nullptr, path.c_str(), 1,
                              [path]() -> testing::Test* { return new ProgramTest(path); });
    }
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    RegisterPrograms();
    return RUN_ALL_TESTS();
}
