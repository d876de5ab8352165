#include "tools/ScanLoop.h"

#include <limits>

#include <gtest/gtest.h>

#include "functions/BuiltInFunctions.h"
#include "platform/ClientAccess.h"
#include "tools/Interrupt.h"
#include "tools/TestImage.h"
#include "vm/VirtualMachineExec.h"

namespace tn61131 {
namespace {

/// A host's group whose only function suspends the program.
class SuspendingGroup final : public CVMFunc {
 public:
    CallStatus ExecuteFunction(CErrorLog& /*log*/, CBuiltInFunctionContext& /*context*/,
                               unsigned char /*argumentCount*/, CValue* /*arguments*/, CValue& /*result*/) override {
        return CallStatus::Suspend;
    }
    [[nodiscard]] const char* GetFunctionName(unsigned char /*id*/) const override { return "SUSPEND"; }
};

constexpr unsigned char kGroup = 16;

class ScanLoopTest : public testing::Test {
 protected:
    /// Runs the scans of a program on a fresh context and keeps their outcomes.
    ScanSummary Run(const TestImage& image) {
        const TestImage::Bytes bytes = image.Save();
        CBinaryInputMemory input(bytes);
        CVirtualMachine machine;
        EXPECT_TRUE(machine.LoadVMImage(log_, input));
        CMemoryBlock globalData = machine.GetGlobalData();
        const CClientAccessContext access;
        CVirtualMachineExec exec(access, "", &machine, &globalData, nullptr);
        SuspendingGroup group;
        exec.GetBuiltInFunctions().RegisterFunctionGroup(kGroup, &group);
        outcomes_.clear();
        return RunScans(options_, 0, exec, log_, [this](const ScanOutcome& outcome) {
            outcomes_.push_back(outcome);
            if (outcomes_.size() == interruptAfter_) Interrupt::Request();
        });
    }

    const Interrupt interrupt_;
    RunOptions options_;
    CErrorLog log_;
    std::vector<ScanOutcome> outcomes_;
    std::size_t interruptAfter_ = 0;
};

/// Suspends twice, then completes.
TestImage MakeSuspendingImage() {
    TestImage image;
    image.code = {20, kGroup, 1, 1, 20, kGroup, 1, 1, 12};
    return image;
}

TEST_F(ScanLoopTest, ASuspendedScanIsResumedUntilItCompletes) {
    const ScanSummary summary = Run(MakeSuspendingImage());
    ASSERT_TRUE(summary.last.has_value());
    EXPECT_EQ(summary.last->result, RunResult::Completed);
    EXPECT_EQ(summary.last->resumed, 2U);
}

TEST_F(ScanLoopTest, AfterTheAllowedResumesTheScanIsLeftSuspended) {
    options_.resumes = 1;
    options_.scans = 2;
    const ScanSummary summary = Run(MakeSuspendingImage());
    EXPECT_EQ(summary.last->result, RunResult::Suspended);
    EXPECT_EQ(summary.last->resumed, 1U);
    EXPECT_EQ(summary.scans, 1U);
    EXPECT_FALSE(summary.AllCompleted());
}

TEST_F(ScanLoopTest, NoScansAreASuccess) {
    options_.scans = 0;
    const ScanSummary summary = Run(MakeCounterImage());
    EXPECT_EQ(summary.scans, 0U);
    EXPECT_TRUE(summary.AllCompleted());
    EXPECT_TRUE(outcomes_.empty());
}

TEST_F(ScanLoopTest, TimestampsRunFromTheFirstByTheStep) {
    options_.scans = 3;
    options_.timestampMS = -50;
    options_.stepMS = 30;
    (void)Run(MakeCounterImage());
    ASSERT_EQ(outcomes_.size(), 3U);
    EXPECT_EQ(outcomes_[0].timestampMS, -50);
    EXPECT_EQ(outcomes_[1].timestampMS, -20);
    EXPECT_EQ(outcomes_[2].timestampMS, 10);
}

TEST_F(ScanLoopTest, AnInterruptStopsAfterTheScan) {
    options_.scans = 100;
    interruptAfter_ = 2;
    const ScanSummary summary = Run(MakeCounterImage());
    EXPECT_EQ(summary.scans, 2U);
    EXPECT_TRUE(summary.interrupted);
    EXPECT_TRUE(summary.AllCompleted());
}

TEST(AdvanceTimestamp, StaysInsideTheLimits) {
    using Limits = std::numeric_limits<long long>;
    EXPECT_EQ(AdvanceTimestamp(1, 2), 3);
    EXPECT_EQ(AdvanceTimestamp(Limits::max() - 1, 1), Limits::max());
    EXPECT_EQ(AdvanceTimestamp(Limits::max(), 1), Limits::max());
    EXPECT_EQ(AdvanceTimestamp(Limits::min() + 1, -2), Limits::min());
    EXPECT_EQ(AdvanceTimestamp(Limits::min(), Limits::max()), -1);
}

}  // namespace
}  // namespace tn61131
