// docs/structured-text.md: its programs do what they say, and its lists are those of the compiler.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "compiler/Compiler.h"
#include "documents/Examples.h"
#include "programs/ProgramFile.h"
#include "programs/ProgramRun.h"

namespace tn61131::st {
namespace {

using testing::Contains;

TEST(StructuredTextPage, ExamplesDoWhatTheySay) {
    std::size_t count = 0;
    for (const documents::Section& section : documents::ReadPage("structured-text.md")) {
        for (const documents::Example& example : section.examples) {
            SCOPED_TRACE(section.title + ", line " + std::to_string(example.line));
            program_test::ProgramFile file;
            std::string error;
            ASSERT_TRUE(program_test::ReadProgramFile("example.st", example.text, file, error)) << error;
            for (const std::string& failure : program_test::CheckProgram(file))
                ADD_FAILURE() << failure;
            ++count;
        }
    }
    EXPECT_GE(count, 9U);
}

TEST(StructuredTextPage, EverySwitchHasItsRow) {
    std::vector<std::string> rows;
    for (const documents::Section& section : documents::ReadPage("structured-text.md")) {
        if (section.title == "Profiles and switches") rows = section.lines;
    }
    for (const SwitchInfo& info : GetSwitches()) {
        std::string values;
        for (const char c : info.values)
            values += c == '|' ? std::string("`, `") : std::string(1, c);
        EXPECT_THAT(rows, Contains("| `" + std::string(info.name) + "` | `" + values + "` | `" + std::string(info.iec) +
                                   "` | `" + std::string(info.codesys) + "` | " + std::string(info.meaning) + " |"));
    }
}

}  // namespace
}  // namespace tn61131::st
