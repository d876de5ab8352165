// Random programs do what the same arithmetic does in C++, whatever the optimiser does.
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "compiler/Compiler.h"
#include "random_programs/ProgramCheck.h"
#include "random_programs/ProgramGenerator.h"
#include "random_programs/Reduce.h"

namespace random_programs {
namespace {

namespace st = tn61131::st;

constexpr unsigned kScans = 3;

struct PassSet {
    const char* name;
    const char* setting;
};

constexpr PassSet kPassSets[] = {{"all passes", "optimise=all"},
                                 {"no passes", "optimise=none"},
                                 {"fold-constants", "optimise=fold-constants"},
                                 {"common-addresses", "optimise=common-addresses"},
                                 {"inline-leaves", "optimise=inline-leaves"},
                                 {"dead-stores", "optimise=dead-stores"},
                                 {"jumps", "optimise=jumps"}};

/// Number of programs per profile; the environment asks for more.
std::uint64_t GetCount() {
    const char* text = std::getenv("TN61131_RANDOM_PROGRAMS");
    if (text != nullptr) return std::strtoull(text, nullptr, 10);
#if defined(__SANITIZE_ADDRESS__)
    return 20;
#else
    return 200;
#endif
}

std::uint64_t GetFirst() {
    const char* text = std::getenv("TN61131_RANDOM_SEED");
    return text == nullptr ? 1 : std::strtoull(text, nullptr, 10);
}

void CheckPrograms(const char* profile, const ProgramOptions& options) {
    unsigned failures = 0;
    unsigned ran = 0;
    const std::uint64_t end = GetFirst() + GetCount();
    for (std::uint64_t seed = GetFirst(); seed < end && failures < 5; ++seed) {
        Choices choices(seed);
        Program program;
        ProgramOptions size = options;
        size.depth = 1 + choices.Below(5);
        size.statements = 1 + choices.Below(20);
        GenerateProgram(choices, size, program);
        const ProgramCheck check(program, kScans);
        if (!check.IsShort()) continue;
        ++ran;
        for (const PassSet& passes : kPassSets) {
            st::CompileOptions compileOptions;
            std::string error;
            ASSERT_TRUE(st::SetProfile(profile, compileOptions));
            ASSERT_TRUE(st::SetSwitch(passes.setting, compileOptions, error)) << error;
            const std::string wrong = check.Run(compileOptions);
            if (wrong.empty()) continue;
            const bool isRefused = wrong.starts_with("is refused");
            Reduce(program, [&] {
                const ProgramCheck smaller(program, kScans);
                if (!smaller.IsShort()) return false;
                const std::string reason = smaller.Run(compileOptions);
                return !reason.empty() && reason.starts_with("is refused") == isRefused;
            });
            const ProgramCheck reduced(program, kScans);
            ADD_FAILURE() << "seed " << seed << ", " << profile << ", " << passes.name << ": " << wrong << "\n"
                          << reduced.GetText() << reduced.Run(compileOptions);
            ++failures;
            break;
        }
    }
    // Nearly all programs are short enough to be run.
    EXPECT_GT(ran, GetCount() * 3 / 4);
}

TEST(RandomPrograms, IecComputesInTheWidthOfTheOperands) {
    CheckPrograms("iec", {});
}

TEST(RandomPrograms, CodesysComputesSmallIntegersIn32Bits) {
    CheckPrograms("codesys", {.promotesTo32Bits = true, .mixesBits = true});
}

// --- the order of the files ---

/// The units as files of their own, turned by `turn` places.
std::vector<st::SourceText> MakeFiles(const std::vector<std::string>& units, std::size_t turn) {
    std::vector<st::SourceText> files;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const std::size_t unit = (i + turn) % units.size();
        files.push_back({"unit" + std::to_string(unit) + ".st", units[unit]});
    }
    return files;
}

std::multiset<std::string> ListMessages(const st::CompileResult& compiled) {
    std::multiset<std::string> messages;
    for (const st::Diagnostic& diagnostic : compiled.diagnostics)
        messages.insert(st::FormatDiagnostic(compiled.sources, diagnostic));
    return messages;
}

class FileOrder : public testing::TestWithParam<std::uint64_t> {
 protected:
    FileOrder() {
        Choices choices(GetParam());
        GenerateProgram(choices, {}, program_);
        units_ = Print(program_);
    }

    Program program_;
    std::vector<std::string> units_;
};

TEST_P(FileOrder, SameSourcesGiveTheSameImage) {
    const st::CompileResult first = st::Compile(MakeFiles(units_, 0), {});
    const st::CompileResult second = st::Compile(MakeFiles(units_, 0), {});
    ASSERT_TRUE(first.succeeded);
    EXPECT_EQ(CImageWriter::Write(first.image), CImageWriter::Write(second.image));
    EXPECT_EQ(ListMessages(first), ListMessages(second));
}

TEST_P(FileOrder, ChangesNeitherMessagesNorBehaviour) {
    const ProgramCheck check(program_, kScans);
    ASSERT_TRUE(check.IsShort());
    const std::multiset<std::string> messages = ListMessages(st::Compile(MakeFiles(units_, 0), {}));
    for (std::size_t turn = 1; turn < units_.size(); ++turn) {
        const st::CompileResult compiled = st::Compile(MakeFiles(units_, turn), {});
        EXPECT_EQ(ListMessages(compiled), messages) << turn;
        EXPECT_EQ(check.Run(compiled), "") << turn;
    }
}

TEST_P(FileOrder, DoesNotChangeErrors) {
    for (std::size_t missing = 0; missing < units_.size(); ++missing) {
        std::vector<std::string> broken = units_;
        broken[missing] = "FUNCTION Other : INT Other := nothing; END_FUNCTION";
        const std::multiset<std::string> messages = ListMessages(st::Compile(MakeFiles(broken, 0), {}));
        EXPECT_FALSE(messages.empty());
        for (std::size_t turn = 1; turn < broken.size(); ++turn)
            EXPECT_EQ(ListMessages(st::Compile(MakeFiles(broken, turn), {})), messages) << turn;
    }
}

// Seeds of programs that are short and have several units.
INSTANTIATE_TEST_SUITE_P(RandomPrograms, FileOrder, testing::Values(5, 11, 20, 41, 44, 63));

}  // namespace
}  // namespace random_programs
