#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "TankPlant.h"
#include "assembler/Assembler.h"
#include "compiler/Compiler.h"
#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "platform/ErrorLog.h"
#include "tools/TagTable.h"
#include "value/Value.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace {

constexpr int kScans = 300;
constexpr int kScanTimeMS = 100;

/// What process and program do together, written down as the steps of a person at the tank, in scans and millilitres.
class TankModel {
 public:
    void BeginScan(int scan, bool startPressed) {
        const bool startEdge = startPressed && !startBefore_;
        startBefore_ = startPressed;
        SmoothLevel();
        const bool drained = step_ == Step::Drain && contents_ < 10'000;
        if (startEdge && step_ == Step::Idle) {
            batches_ = 0;
        } else if (drained) {
            ++batches_;
        }
        const int scansInStep = scan - since_;
        if (step_ == Step::Idle && startEdge) {
            Enter(Step::Fill, scan);
        } else if (step_ == Step::Fill && contents_ >= 90'000) {
            Enter(Step::Mix, scan);
        } else if (step_ == Step::Mix && scansInStep == 31) {
            // The timer sees three seconds 30 scans after the step began, and the chart sees the timer a scan later.
            Enter(Step::Drain, scan);
        } else if (drained) {
            Enter(batches_ == 3 ? Step::Idle : Step::Fill, scan);
        }
        inlet = step_ == Step::Fill;
        mixer = step_ == Step::Mix && scan - since_ < 20;
        pump = step_ == Step::Drain && scan - since_ >= 5;
    }
    void EndScan() {
        if (inlet) contents_ += 2'500;
        if (pump) contents_ -= 4'000;
    }
    [[nodiscard]] int GetContents() const { return contents_; }
    [[nodiscard]] int GetBatches() const { return batches_; }
    [[nodiscard]] float GetLevel() const { return level_; }
    [[nodiscard]] std::string GetMessage() const {
        std::array<char, 64> text{};
        std::snprintf(text.data(), text.size(), "batches %d, level %.1f l", batches_, static_cast<double>(level_));
        return text.data();
    }

    bool inlet = false;
    bool mixer = false;
    bool pump = false;

 private:
    enum class Step { Idle, Fill, Mix, Drain };

    void Enter(Step step, int scan) {
        step_ = step;
        since_ = scan;
    }
    /// In single precision, as the program.
    void SmoothLevel() {
        const int raw = contents_ * 1728 / 6250;  // 27648 of 100000
        const float litres = static_cast<float>(raw) / 27648.0F * 100.0F;
        level_ = hasLevel_ ? level_ + (litres - level_) * 0.25F : litres;
        hasLevel_ = true;
    }

    Step step_ = Step::Idle;
    int since_ = 0;
    int contents_ = 6'000;
    int batches_ = 0;
    float level_ = 0;
    bool hasLevel_ = false;
    bool startBefore_ = false;
};

/// The control program as an image with its names.
struct TankProgram {
    std::vector<unsigned char> bytes;
    CSymbolMap symbols;
};

std::string ReadText(const char* path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

void AssembleTank(TankProgram& program) {
    AssembledImage image;
    CAssembler assembler;
    ASSERT_TRUE(assembler.Assemble("tank.tnasm", ReadText(TANK_FOLDER "/tank.tnasm"), image))
        << FormatDiagnostics("tank.tnasm", assembler.GetDiagnostics());
    program = {std::move(image.bytes), std::move(image.symbols)};
}

void CompileTank(TankProgram& program) {
    std::string error;
    tn61131::TagTable tags;
    ASSERT_TRUE(tags.Load(ReadText(TANK_FOLDER "/tags.json"), error)) << error;
    tn61131::st::CompileOptions options;
    options.tags = tags.GetSymbols();
    std::vector<tn61131::st::SourceText> sources;
    sources.push_back({"tank.st", ReadText(TANK_FOLDER "/tank.st")});
    tn61131::st::CompileResult result = Compile(std::move(sources), options);
    for (const tn61131::st::Diagnostic& diagnostic : result.diagnostics)
        ADD_FAILURE() << FormatDiagnostic(result.sources, diagnostic);
    ASSERT_TRUE(result.succeeded);
    program = {CImageWriter::Write(result.image), std::move(result.map)};
}

/// How a language says that the chart waits for the start button.
struct Language {
    const char* name;
    void (*make)(TankProgram& program);
    const char* step;
    unsigned char idle;
};

class TankTest : public testing::TestWithParam<Language> {
 protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(GetParam().make(program_));
        CBinaryInputMemory input(program_.bytes);
        ASSERT_TRUE(machine_.LoadVMImage(log_, input));
        ASSERT_FALSE(input.HasFailed());
        globalData_ = machine_.GetGlobalData();
        exec_ = std::make_unique<CVirtualMachineExec>(access_, "", &machine_, &globalData_, &plant_);
    }

    void RunScan(int scan, bool startPressed) {
        unsigned int codeOffset = 0;
        ASSERT_TRUE(machine_.FindProgram("tank", codeOffset));
        plant_.PressStart(startPressed);
        plant_.UpdateInputs();
        const long long timestampMS = static_cast<long long>(scan) * kScanTimeMS;
        exec_->StartNewProgram(codeOffset, CVirtualMachineExec::kDefaultInstructionLimit, 0, &timestampMS);
        ASSERT_EQ(exec_->ExecuteUntilCompleteOrSuspended(log_), RunResult::Completed);
    }

    template <typename T>
    T ReadVariable(const std::string& path) const {
        SymbolReference reference;
        std::string error;
        EXPECT_TRUE(program_.symbols.Find(path, reference, error)) << error;
        CValue value;
        EXPECT_TRUE(CSymbolMap::ReadValue(reference, globalData_, value, error)) << error;
        return value.GetPayload<T>();
    }

    TankProgram program_;
    CErrorLog log_;
    CVirtualMachine machine_;
    CMemoryBlock globalData_;
    TankPlant plant_;
    const CClientAccessContext access_{};
    std::unique_ptr<CVirtualMachineExec> exec_;
};

/// Held for four scans; once more in the middle of a run, which must change nothing.
bool IsStartPressed(int scan) {
    return (scan >= 5 && scan < 9) || (scan >= 120 && scan < 124);
}

TEST_P(TankTest, EveryScanGoesAsTheModelSays) {
    TankModel model;
    for (int scan = 0; scan < kScans; ++scan) {
        SCOPED_TRACE(scan);
        RunScan(scan, IsStartPressed(scan));
        model.BeginScan(scan, IsStartPressed(scan));
        ASSERT_EQ(plant_.GetContents(), model.GetContents());
        ASSERT_EQ(plant_.GetBool(TankPlant::kInlet), model.inlet);
        ASSERT_EQ(plant_.GetBool(TankPlant::kMixer), model.mixer);
        ASSERT_EQ(plant_.GetBool(TankPlant::kPump), model.pump);
        ASSERT_EQ(ReadVariable<short>("Tank.batches.CV"), model.GetBatches());
        ASSERT_EQ(ReadVariable<float>("Tank.level"), model.GetLevel());
        ASSERT_EQ(plant_.GetMessage(), model.GetMessage());
        plant_.Advance();
        model.EndScan();
    }
    // From 6.0 litres: 34 scans up to 91.0 and 21 down to 7.0; up to 92.0 and 21 down to 8.0; 33 up to 90.5 and 21
    // down.
    EXPECT_EQ(plant_.GetContents(), 6'500);
    EXPECT_EQ(ReadVariable<short>("Tank.batches.CV"), 3);
    EXPECT_EQ(ReadVariable<unsigned char>(GetParam().step), GetParam().idle);
}

TEST_P(TankTest, AnotherPressAfterTheLastBatchStartsAgain) {
    for (int scan = 0; scan < kScans; ++scan) {
        RunScan(scan, IsStartPressed(scan));
        plant_.Advance();
    }
    RunScan(kScans, true);
    EXPECT_EQ(ReadVariable<short>("Tank.batches.CV"), 0);
    EXPECT_TRUE(plant_.GetBool(TankPlant::kInlet));
}

TEST_P(TankTest, TheDemonstrationTellsTheOutcome) {
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("tank-" + std::to_string(getpid()) + ".vmi");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(program_.bytes.data()),
               static_cast<std::streamsize>(program_.bytes.size()));
    FILE* const demo = popen((std::string(TANK_DEMO) + " " + path.string()).c_str(), "r");
    ASSERT_NE(demo, nullptr);
    std::string output;
    for (int character = std::fgetc(demo); character != EOF; character = std::fgetc(demo))
        output += static_cast<char>(character);
    EXPECT_EQ(pclose(demo), 0);
    std::filesystem::remove(path);
    const std::string outcome = "\nAfter 300 scans: 6.5 litres in the tank, batches 3, level 6.5 l\n";
    EXPECT_TRUE(output.ends_with(outcome)) << output;
    EXPECT_NE(output.find("\n   39     3.9     91.0  -     on   on    -     on    -     batches 0,"), std::string::npos)
        << output;
}

INSTANTIATE_TEST_SUITE_P(Languages, TankTest,
                         testing::Values(Language{"Assembler", &AssembleTank, "Tank.idle.X", 1},
                                         Language{"StructuredText", &CompileTank, "Tank.active", 0}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
