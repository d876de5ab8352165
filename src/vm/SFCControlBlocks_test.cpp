#include "vm/SFCControlBlocks.h"

#include "vm/TestImage.h"

namespace {

using namespace vmtest;

// Offsets of the action control block.
enum : unsigned int { kN = 0, kR = 1, kS = 2, kL = 3, kD = 4, kP = 5, kP1 = 6, kP0 = 7, kSD = 8, kDS = 9, kSL = 10 };
enum : unsigned int { kT = 11, kQ = 19, kA = 20 };

/// A chart's block in global data that an SFC instruction runs once per scan.
class Chart {
 public:
    Chart(unsigned char type, unsigned int size)
        : machine_(Join({LdAddr(kGlobal, 3), Sfc(type, size), Ret()}), 3 + size), block_(machine_.globalData, 3) {}
    void Scan(long long time) {
        machine_.timestamp = time;
        ASSERT_EQ(machine_.Run(), RunResult::Completed);
    }
    void Set(unsigned int offset, bool value) { block_.SetBOOLAtOffset(offset, value); }
    [[nodiscard]] bool Get(unsigned int offset) const { return block_.GetBOOLAtOffset(offset); }
    void SetTime(unsigned int offset, long long value) { block_.SetLINTAtOffset(offset, value); }
    [[nodiscard]] long long GetTime(unsigned int offset) const { return block_.GetLINTAtOffset(offset); }
    [[nodiscard]] CVirtualMachineExec& Exec() { return *machine_.exec; }
    [[nodiscard]] CMemoryRef& Block() { return block_; }

 private:
    Machine machine_;
    CMemoryRef block_;
};

TEST(m_ControlBlockLookup, HasTheSizesOfTheImages) {
    ASSERT_EQ(VMSFCControlBlocks::m_ControlBlockLookupLength, 2U);
    EXPECT_EQ(VMSFCControlBlocks::m_ControlBlockLookup[0].type, 1);
    EXPECT_EQ(VMSFCControlBlocks::m_ControlBlockLookup[0].dataSize, 18U);
    EXPECT_EQ(VMSFCControlBlocks::m_ControlBlockLookup[1].type, 2);
    EXPECT_EQ(VMSFCControlBlocks::m_ControlBlockLookup[1].dataSize, 180U);
}

TEST(ExecuteControlBlock, RefusesOtherTypesAndSizesSilently) {
    Chart chart(2, 180);
    CErrorLog log;
    for (const auto& [type, size] : {std::pair(0, 0U), {1, 17U}, {1, 19U}, {1, 180U}, {2, 18U}, {2, 179U}, {3, 18U}}) {
        EXPECT_EQ(VMSFCControlBlocks::ExecuteControlBlock(chart.Exec(), static_cast<unsigned char>(type), size,
                                                          chart.Block(), log),
                  InstructionResult::Failed)
            << type << " " << size;
    }
    EXPECT_EQ(log.GetErrorCount(), 0U);
}

TEST(StepControlBlock, CountsTheTimeThatTheStepIsActive) {
    Chart chart(1, 18);
    struct Scan {
        long long time;
        bool active;
        long long t;
    };
    chart.SetTime(2, 77);
    for (const Scan& scan : {Scan{900, false, 77},
                             {1000, true, 0},
                             {1100, true, 100},
                             {1250, true, 250},
                             {1300, false, 250},
                             {1400, false, 250},
                             {1500, true, 0},
                             {1500, true, 0},
                             {1400, true, -100}}) {
        SCOPED_TRACE(scan.time);
        chart.Set(0, scan.active);
        chart.Scan(scan.time);
        EXPECT_EQ(chart.GetTime(2), scan.t);
        EXPECT_EQ(chart.Get(1), scan.active);
    }
    EXPECT_EQ(chart.GetTime(10), 1500);
}

TEST(StepControlBlock, TimesWrap) {
    Chart chart(1, 18);
    chart.Set(0, true);
    chart.Scan(std::numeric_limits<long long>::min());
    chart.Scan(std::numeric_limits<long long>::max());
    EXPECT_EQ(chart.GetTime(2), -1);
}

TEST(ExecuteRS, ResetDominates) {
    Chart chart(2, 180);
    for (int row = 0; row < 8; ++row) {
        const bool set = (row & 1) != 0;
        const bool reset = (row & 2) != 0;
        const bool q = (row & 4) != 0;
        chart.Set(21, set);
        chart.Set(22, reset);
        chart.Set(23, q);
        VMSFCControlBlocks::ExecuteRS(chart.Exec(), chart.Block(), 21);
        EXPECT_EQ(chart.Get(23), (set || q) && !reset) << row;
    }
}

TEST(ExecuteTON, DelaysAndStopsAtThePreset) {
    Chart chart(2, 180);
    constexpr unsigned int kBase = 33;
    struct Step {
        long long time;
        bool in;
        bool q;
        long long et;
    };
    chart.SetTime(kBase + 1, 500);
    for (const Step& step : {Step{100, false, false, 0},
                             {200, true, false, 0},
                             {699, true, false, 499},
                             {700, true, true, 500},
                             {9000, true, true, 500},
                             {9100, false, false, 0},
                             {9200, true, false, 0},
                             {9300, true, false, 100}}) {
        SCOPED_TRACE(step.time);
        chart.Exec().SetCurrentTimestamp(&step.time);
        chart.Set(kBase, step.in);
        VMSFCControlBlocks::ExecuteTON(chart.Exec(), chart.Block(), kBase);
        EXPECT_EQ(chart.Get(kBase + 9), step.q);
        EXPECT_EQ(chart.GetTime(kBase + 10), step.et);
        EXPECT_EQ(chart.Get(kBase + 26), step.in);
    }
    EXPECT_EQ(chart.GetTime(kBase + 18), 9200);
}

TEST(ExecuteTON, NegativePresetsExpireAtOnce) {
    Chart chart(2, 180);
    chart.SetTime(34, -5);
    chart.Set(33, true);
    VMSFCControlBlocks::ExecuteTON(chart.Exec(), chart.Block(), 33);
    EXPECT_FALSE(chart.Get(42)) << "the first evaluation only starts";
    VMSFCControlBlocks::ExecuteTON(chart.Exec(), chart.Block(), 33);
    EXPECT_TRUE(chart.Get(42));
    EXPECT_EQ(chart.GetTime(43), -5);
}

TEST(ExecuteTriggers, EdgesAndTheirMemory) {
    Chart chart(2, 180);
    struct Step {
        bool clk;
        bool rising;
        bool falling;
    };
    // Zeroed memory: a first FALSE is a falling edge.
    for (const Step& step : {Step{false, false, true},
                             {false, false, false},
                             {true, true, false},
                             {true, false, false},
                             {false, false, true}}) {
        chart.Set(168, step.clk);
        chart.Set(174, step.clk);
        VMSFCControlBlocks::ExecuteRTRIG(chart.Exec(), chart.Block(), 168);
        VMSFCControlBlocks::ExecuteFTRIG(chart.Exec(), chart.Block(), 174);
        EXPECT_EQ(chart.Get(169), step.rising);
        EXPECT_EQ(chart.Get(170), step.clk);
        EXPECT_EQ(chart.Get(175), step.falling);
        EXPECT_EQ(chart.Get(176), !step.clk);
    }
}

/// One scan of an action: what is set before it, and what comes out.
struct ActionScan {
    long long time;
    std::vector<unsigned int> qualifiers;
    bool q;
    bool a;
};

void ExpectActions(const char* why, long long duration, const std::vector<ActionScan>& scans) {
    SCOPED_TRACE(why);
    Chart chart(2, 180);
    chart.SetTime(kT, duration);
    for (const ActionScan& scan : scans) {
        SCOPED_TRACE(testing::Message() << "time " << scan.time);
        for (unsigned int qualifier = kN; qualifier <= kSL; ++qualifier)
            chart.Set(qualifier, false);
        for (const unsigned int qualifier : scan.qualifiers)
            chart.Set(qualifier, true);
        chart.Scan(scan.time);
        EXPECT_EQ(chart.Get(kQ), scan.q);
        EXPECT_EQ(chart.Get(kA), scan.a);
    }
}

TEST(ActionControlBlock, ZeroedDataGivesOneScanOfA) {
    // The falling edges of P0 and Q see a first FALSE.
    ExpectActions("nothing set", 0, {{0, {}, false, true}, {100, {}, false, false}, {200, {}, false, false}});
}

TEST(ActionControlBlock, EveryQualifier) {
    const ActionScan first = {0, {}, false, true};
    const ActionScan quiet = {100, {}, false, false};
    ExpectActions("N: as long as set, A one scan longer", 0,
                  {first,
                   quiet,
                   {200, {kN}, true, true},
                   {300, {kN}, true, true},
                   {400, {}, false, true},
                   {500, {}, false, false}});
    ExpectActions("S: until R", 0,
                  {first,
                   quiet,
                   {200, {kS}, true, true},
                   {300, {}, true, true},
                   {400, {kR}, false, true},
                   {500, {}, false, false}});
    ExpectActions("R overrides in the same scan", 0,
                  {first,
                   quiet,
                   {200, {kN}, true, true},
                   {300, {kN, kR}, false, true},
                   {400, {kN, kR}, false, false},
                   {500, {kN}, true, true}});
    ExpectActions("L: until the first scan at least T later", 500,
                  {first,
                   quiet,
                   {1000, {kL}, true, true},
                   {1499, {kL}, true, true},
                   {1500, {kL}, false, true},
                   {1600, {kL}, false, false},
                   {1700, {}, false, false},
                   {1800, {kL}, true, true}});
    ExpectActions("L ends with its input", 500, {first, quiet, {1000, {kL}, true, true}, {1100, {}, false, true}});
    ExpectActions("D: from T later on", 500,
                  {first,
                   quiet,
                   {1000, {kD}, false, false},
                   {1499, {kD}, false, false},
                   {1500, {kD}, true, true},
                   {1600, {kD}, true, true},
                   {1700, {}, false, true}});
    ExpectActions("P: one scan per rising edge", 0,
                  {first,
                   quiet,
                   {200, {kP}, true, true},
                   {300, {kP}, false, true},
                   {400, {kP}, false, false},
                   {500, {}, false, false},
                   {600, {kP}, true, true}});
    ExpectActions("P1: A only, on activation", 0,
                  {first, quiet, {200, {kP1}, false, true}, {300, {kP1}, false, false}, {400, {}, false, false}});
    ExpectActions("P0: A only, on deactivation", 0,
                  {first,
                   quiet,
                   {200, {kP0}, false, false},
                   {300, {kP0}, false, false},
                   {400, {}, false, true},
                   {500, {}, false, false}});
    ExpectActions("SD: stored at once, active from T later on, whatever becomes of the input", 500,
                  {first,
                   quiet,
                   {1000, {kSD}, false, false},
                   {1100, {}, false, false},
                   {1500, {}, true, true},
                   {1600, {}, true, true},
                   {1700, {kR}, false, true},
                   {1800, {}, false, false}});
    ExpectActions("DS: stored when T has passed with the input on", 500,
                  {first,
                   quiet,
                   {1000, {kDS}, false, false},
                   {1499, {kDS}, false, false},
                   {1500, {kDS}, false, false},
                   {1600, {kDS}, true, true},
                   {1700, {}, true, true},
                   {1800, {kR}, false, true}});
    ExpectActions("DS: not when the input goes before", 500,
                  {first, quiet, {1000, {kDS}, false, false}, {1400, {}, false, false}, {1600, {}, false, false}});
    ExpectActions("SL: stored, until T later", 500,
                  {first,
                   quiet,
                   {1000, {kSL}, true, true},
                   {1100, {}, true, true},
                   {1499, {}, true, true},
                   {1500, {}, false, true},
                   {1600, {}, false, false}});
}

TEST(ActionControlBlock, AnyByteButZeroIsTrue) {
    Chart chart(2, 180);
    chart.Block().SetSINTAtOffset(kN, -128);
    chart.Scan(0);
    EXPECT_EQ(chart.Block().GetSINTAtOffset(kQ), 1);
}

}  // namespace
