#include "functions/StandardFunctionBlocks.h"

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/BinaryStream.h"
#include "support/BlockCall.h"
#include "vm/Opcodes.h"

namespace {

using function_test::BlockInstance;
using function_test::ExpectTimeline;
using function_test::Scan;
using function_test::TestMachine;

TEST(FunctionBlockTable, NumbersSizesAndLayouts) {
    struct Field {
        const char* name;
        int offset;
    };
    struct Pin {
        unsigned char id;
        const char* name;
        unsigned int dataSize;
        unsigned int inputCount;
        std::vector<Field> fields;
    };
    const std::vector<Field> timer = {{"EN", 0}, {"ENO", 1}, {"IN", 2},     {"PT", 3},
                                      {"Q", 11}, {"ET", 12}, {"START", 20}, {"FLAG", 28}};
    const Pin pins[] = {
        {1, "SR", 5, 3, {{"EN", 0}, {"ENO", 1}, {"S1", 2}, {"R", 3}, {"Q1", 4}}},
        {2, "RS", 5, 3, {{"EN", 0}, {"ENO", 1}, {"S", 2}, {"R1", 3}, {"Q1", 4}}},
        {3, "R_TRIG", 5, 2, {{"EN", 0}, {"ENO", 1}, {"CLK", 2}, {"Q", 3}, {"M", 4}}},
        {4, "F_TRIG", 5, 2, {{"EN", 0}, {"ENO", 1}, {"CLK", 2}, {"Q", 3}, {"M", 4}}},
        {5,
         "CTU",
         11,
         5,
         {{"EN", 0}, {"ENO", 1}, {"CU_EDGE", 2}, {"CU", 3}, {"CU_M", 4}, {"R", 5}, {"PV", 6}, {"Q", 8}, {"CV", 9}}},
        {6,
         "CTD",
         11,
         5,
         {{"EN", 0}, {"ENO", 1}, {"CD_EDGE", 2}, {"CD", 3}, {"CD_M", 4}, {"LD", 5}, {"PV", 6}, {"Q", 8}, {"CV", 9}}},
        {7, "TP", 29, 4, timer},
        {8, "TON", 29, 4, timer},
        {9, "TOF", 29, 4, timer},
    };
    const CBuiltInFunctions registry;
    ASSERT_EQ(GetBlockGroups().size(), 1U);
    ASSERT_EQ(GetBlockGroups()[0].rows.size(), std::size(pins));
    for (const Pin& pin : pins) {
        SCOPED_TRACE(pin.name);
        EXPECT_STREQ(registry.GetFunctionBlockName(1, pin.id), pin.name);
        EXPECT_EQ(registry.GetFunctionBlockDataSize(1, pin.id), pin.dataSize);
        const BlockRow& row = GetBlockGroups()[0].rows[pin.id - 1U];
        EXPECT_EQ(row.inputCount, pin.inputCount);
        ASSERT_EQ(row.fields.size(), pin.fields.size());
        for (std::size_t i = 0; i < pin.fields.size(); ++i) {
            EXPECT_STREQ(row.fields[i].name, pin.fields[i].name);
            EXPECT_EQ(row.fields[i].offset, pin.fields[i].offset) << pin.fields[i].name;
        }
    }
    for (const unsigned int id : {0U, 10U, 255U}) {
        EXPECT_STREQ(registry.GetFunctionBlockName(1, static_cast<unsigned char>(id)), "???");
        EXPECT_EQ(registry.GetFunctionBlockDataSize(1, static_cast<unsigned char>(id)), 0U);
    }
}

TEST(BlockSR, SetIsDominant) {
    const Scan scans[] = {
        {0, "FALSE, FALSE", "FALSE", "00 00 00", "initial state"},
        {0, "FALSE, TRUE", "FALSE", "00 01 00"},
        {0, "TRUE, FALSE", "TRUE", "01 00 01"},
        {0, "FALSE, FALSE", "TRUE", "00 00 01", "stays set"},
        {0, "TRUE, TRUE", "TRUE", "01 01 01", "both"},
        {0, "FALSE, TRUE", "FALSE", "00 01 00"},
        {0, "TRUE, TRUE", "TRUE", "01 01 01", "both, from reset"},
    };
    ExpectTimeline("SR", scans);
}

TEST(BlockRS, ResetIsDominant) {
    const Scan scans[] = {
        {0, "FALSE, FALSE", "FALSE", "00 00 00"},
        {0, "TRUE, FALSE", "TRUE", "01 00 01"},
        {0, "FALSE, FALSE", "TRUE", "00 00 01", "stays set"},
        {0, "TRUE, TRUE", "FALSE", "01 01 00", "both"},
        {0, "TRUE, TRUE", "FALSE", "01 01 00"},
        {0, "TRUE, FALSE", "TRUE", "01 00 01"},
        {0, "FALSE, TRUE", "FALSE", "00 01 00"},
    };
    ExpectTimeline("RS", scans);
}

TEST(BlockRTrig, FiresOnRisingEdges) {
    const Scan scans[] = {
        {0, "TRUE", "TRUE", "01 01 01", "the first TRUE is an edge"},
        {0, "TRUE", "FALSE", "01 00 01", "held"},
        {0, "FALSE", "FALSE", "00 00 00"},
        {0, "FALSE", "FALSE", "00 00 00"},
        {0, "TRUE", "TRUE", "01 01 01"},
        {0, "INT#7", "FALSE", "01 00 01", "any number that is not zero is TRUE"},
    };
    ExpectTimeline("R_TRIG", scans);
}

TEST(BlockFTrig, FiresOnFallingEdgesAndOnTheFirstFalse) {
    const Scan scans[] = {
        {0, "FALSE", "TRUE", "00 01 01", "zeroed memory counts as a TRUE before"},
        {0, "FALSE", "FALSE", "00 00 01"},
        {0, "TRUE", "FALSE", "01 00 00"},
        {0, "TRUE", "FALSE", "01 00 00"},
        {0, "FALSE", "TRUE", "00 01 01"},
        {0, "FALSE", "FALSE", "00 00 01"},
    };
    ExpectTimeline("F_TRIG", scans);
    const Scan startsTrue[] = {
        {0, "TRUE", "FALSE", "01 00 00"},
        {0, "FALSE", "TRUE", "00 01 01"},
    };
    ExpectTimeline("F_TRIG", startsTrue);
}

TEST(BlockCTU, CountsUpToThePreset) {
    const Scan scans[] = {
        {0, "FALSE, FALSE, INT#3", "FALSE, 0", "00 00 00 00 0300 00 0000"},
        {0, "TRUE, FALSE, INT#3", "FALSE, 1", "01 01 01 00 0300 00 0100"},
        {0, "TRUE, FALSE, INT#3", "FALSE, 1", "00 01 01 00 0300 00 0100", "held"},
        {0, "FALSE, FALSE, INT#3", "FALSE, 1", "00 00 00 00 0300 00 0100"},
        {0, "TRUE, FALSE, INT#3", "FALSE, 2"},
        {0, "FALSE, FALSE, INT#3", "FALSE, 2"},
        {0, "TRUE, FALSE, INT#3", "TRUE, 3", "01 01 01 00 0300 01 0300"},
        {0, "FALSE, FALSE, INT#3", "TRUE, 3"},
        {0, "TRUE, FALSE, INT#3", "TRUE, 3", "01 01 01 00 0300 01 0300", "stops at the preset"},
        {0, "FALSE, FALSE, INT#3", "TRUE, 3"},
        {0, "TRUE, FALSE, INT#3", "TRUE, 3"},
        {0, "TRUE, FALSE, INT#5", "FALSE, 3", nullptr, "a higher preset"},
        {0, "FALSE, FALSE, INT#5", "FALSE, 3"},
        {0, "TRUE, FALSE, INT#5", "FALSE, 4"},
        {0, "FALSE, FALSE, INT#2", "TRUE, 4", nullptr, "a lower preset leaves the count"},
        {0, "TRUE, TRUE, INT#2", "FALSE, 0", "01 01 01 01 0200 00 0000", "reset takes the edge"},
        {0, "TRUE, FALSE, INT#2", "FALSE, 0", nullptr, "which is gone then"},
    };
    ExpectTimeline("CTU", scans);
}

TEST(BlockCTU, PresetsAtTheLimits) {
    const Scan scans[] = {
        {0, "FALSE, FALSE, INT#0", "TRUE, 0", nullptr, "reached at once"},
        {0, "TRUE, FALSE, INT#0", "TRUE, 0", nullptr, "never counts"},
        {0, "FALSE, FALSE, INT#-1", "TRUE, 0", "00 00 00 00 FFFF 01 0000"},
        {0, "TRUE, FALSE, INT#-32768", "TRUE, 0", "01 01 01 00 0080 01 0000"},
        {0, "FALSE, TRUE, INT#-1", "TRUE, 0"},
        {0, "FALSE, FALSE, DINT#70000", "FALSE, 0", "00 00 00 00 7011 00 0000", "cut to 16 bits"},
        {0, "TRUE, FALSE, '7'", "FALSE, 1", nullptr, "text is read as a number"},
    };
    ExpectTimeline("CTU", scans);
    BlockInstance full("CTU");
    full.Call(0, "FALSE, FALSE, INT#32767");
    CMemoryRef(full.GetInstance(), 0).SetINTAtOffset(9, 32766);
    EXPECT_EQ(full.Call(0, "TRUE, FALSE, INT#32767"), "TRUE, 32767");
    full.Call(0, "FALSE, FALSE, INT#32767");
    EXPECT_EQ(full.Call(0, "TRUE, FALSE, INT#32767"), "TRUE, 32767");
}

TEST(BlockCTD, CountsDownToZero) {
    const Scan scans[] = {
        {0, "FALSE, FALSE, INT#2", "TRUE, 0", "00 00 00 00 0200 01 0000", "starts at 0"},
        {0, "TRUE, FALSE, INT#2", "TRUE, 0", nullptr, "stays there"},
        {0, "FALSE, TRUE, INT#2", "FALSE, 2", "00 00 00 01 0200 00 0200"},
        {0, "TRUE, TRUE, INT#2", "FALSE, 2", nullptr, "load takes the edge"},
        {0, "FALSE, FALSE, INT#2", "FALSE, 2"},
        {0, "TRUE, FALSE, INT#2", "FALSE, 1", "01 01 01 00 0200 00 0100"},
        {0, "TRUE, FALSE, INT#9", "FALSE, 1", nullptr, "the preset matters only when it is loaded"},
        {0, "FALSE, FALSE, INT#2", "FALSE, 1"},
        {0, "TRUE, FALSE, INT#2", "TRUE, 0", "01 01 01 00 0200 01 0000"},
        {0, "FALSE, FALSE, INT#2", "TRUE, 0"},
        {0, "TRUE, FALSE, INT#2", "TRUE, 0", nullptr, "never negative"},
        {0, "FALSE, TRUE, INT#-5", "TRUE, -5", nullptr, "but a negative preset is loaded"},
        {0, "TRUE, FALSE, INT#-5", "TRUE, -5"},
    };
    ExpectTimeline("CTD", scans);
}

TEST(BlockTON, Normal) {
    const Scan scans[] = {
        {0, "FALSE, T#100ms", "FALSE, T#0s", "00 6400000000000000 00 0000000000000000 0000000000000000 00"},
        {10, "TRUE, T#100ms", "FALSE, T#0s", "01 6400000000000000 00 0000000000000000 0A00000000000000 01",
         "timing begins"},
        {10, "TRUE, T#100ms", "FALSE, T#0s", nullptr, "time stands still"},
        {60, "TRUE, T#100ms", "FALSE, T#50ms", "01 6400000000000000 00 3200000000000000 0A00000000000000 01"},
        {109, "TRUE, T#100ms", "FALSE, T#99ms"},
        {110, "TRUE, T#100ms", "TRUE, T#100ms", "01 6400000000000000 01 6400000000000000 0A00000000000000 01"},
        {500, "TRUE, T#100ms", "TRUE, T#100ms"},
        {510, "FALSE, T#100ms", "FALSE, T#0s", "00 6400000000000000 00 0000000000000000 0A00000000000000 00"},
        {520, "TRUE, T#100ms", "FALSE, T#0s", nullptr, "starts anew"},
        {619, "TRUE, T#100ms", "FALSE, T#99ms"},
        {620, "FALSE, T#100ms", "FALSE, T#0s", nullptr, "released just before the time"},
    };
    ExpectTimeline("TON", scans);
}

TEST(BlockTON, OddTimes) {
    const Scan late[] = {
        {10, "TRUE, T#100ms", "FALSE, T#0s"},
        {100000, "TRUE, T#100ms", "TRUE, T#100ms", nullptr, "catches up at once"},
    };
    ExpectTimeline("TON", late);
    const Scan zero[] = {
        {0, "TRUE, T#0ms", "FALSE, T#0s", nullptr, "the first call only starts"},
        {0, "TRUE, T#0ms", "TRUE, T#0s"},
    };
    ExpectTimeline("TON", zero);
    const Scan negative[] = {
        {0, "TRUE, T#-5ms", "FALSE, T#0s"},
        {0, "TRUE, T#-5ms", "TRUE, T#-5ms"},
    };
    ExpectTimeline("TON", negative);
    const Scan backwards[] = {
        {1000, "TRUE, T#100ms", "FALSE, T#0s"},
        {900, "TRUE, T#100ms", "FALSE, T#-100ms", nullptr, "the clock was set back"},
        {1099, "TRUE, T#100ms", "FALSE, T#99ms"},
        {1100, "TRUE, T#100ms", "TRUE, T#100ms"},
        {900, "TRUE, T#100ms", "TRUE, T#-100ms", nullptr, "Q stays once it is set"},
    };
    ExpectTimeline("TON", backwards);
    const Scan preset[] = {
        {0, "TRUE, T#100ms", "FALSE, T#0s"},
        {50, "TRUE, T#30ms", "TRUE, T#30ms", nullptr, "shortened while running"},
        {60, "TRUE, T#200ms", "TRUE, T#60ms", nullptr, "lengthened afterwards: Q stays, ET runs on"},
        {200, "TRUE, T#200ms", "TRUE, T#200ms"},
    };
    ExpectTimeline("TON", preset);
    constexpr long long kLast = std::numeric_limits<long long>::max();
    const Scan wrap[] = {
        {kLast, "TRUE, T#10ms", "FALSE, T#0s"},
        {-kLast - 1 + 8, "TRUE, T#10ms", "FALSE, T#9ms", nullptr, "elapsed time wraps with the clock"},
        {-kLast - 1 + 9, "TRUE, T#10ms", "TRUE, T#10ms"},
    };
    ExpectTimeline("TON", wrap);
}

TEST(BlockTOF, Normal) {
    const Scan scans[] = {
        {1000, "FALSE, T#100ms", "FALSE, T#100ms", "00 6400000000000000 00 6400000000000000 0000000000000000 00",
         "zeroed data count from time 0"},
        {1010, "TRUE, T#100ms", "TRUE, T#0s", "01 6400000000000000 01 0000000000000000 0000000000000000 01"},
        {1020, "TRUE, T#100ms", "TRUE, T#0s"},
        {1030, "FALSE, T#100ms", "TRUE, T#0s", "00 6400000000000000 01 0000000000000000 0604000000000000 00",
         "the delay begins"},
        {1030, "FALSE, T#100ms", "TRUE, T#0s", nullptr, "time stands still"},
        {1080, "FALSE, T#100ms", "TRUE, T#50ms"},
        {1129, "FALSE, T#100ms", "TRUE, T#99ms"},
        {1130, "FALSE, T#100ms", "FALSE, T#100ms", "00 6400000000000000 00 6400000000000000 0604000000000000 00"},
        {2000, "FALSE, T#100ms", "FALSE, T#100ms"},
        {2010, "TRUE, T#100ms", "TRUE, T#0s"},
        {2020, "FALSE, T#100ms", "TRUE, T#0s"},
        {2070, "TRUE, T#100ms", "TRUE, T#0s", nullptr, "switched on again in time"},
        {2080, "FALSE, T#100ms", "TRUE, T#0s"},
        {9999, "FALSE, T#100ms", "FALSE, T#100ms", nullptr, "called late"},
    };
    ExpectTimeline("TOF", scans);
}

TEST(BlockTOF, OddTimes) {
    const Scan young[] = {
        {50, "FALSE, T#100ms", "FALSE, T#50ms", nullptr, "zeroed data before the preset's time of the clock"},
        {100, "FALSE, T#100ms", "FALSE, T#100ms"},
    };
    ExpectTimeline("TOF", young);
    const Scan backwards[] = {
        {1000, "TRUE, T#100ms", "TRUE, T#0s"},
        {1000, "FALSE, T#100ms", "TRUE, T#0s"},
        {400, "FALSE, T#100ms", "TRUE, T#-600ms"},
        {1100, "FALSE, T#100ms", "FALSE, T#100ms"},
        {1050, "FALSE, T#100ms", "FALSE, T#50ms", nullptr, "Q stays off"},
    };
    ExpectTimeline("TOF", backwards);
    const Scan preset[] = {
        {0, "TRUE, T#100ms", "TRUE, T#0s"},
        {0, "FALSE, T#100ms", "TRUE, T#0s"},
        {50, "FALSE, T#1s", "TRUE, T#50ms"},
        {150, "FALSE, T#1s", "TRUE, T#150ms", nullptr, "lengthened while running"},
        {160, "FALSE, T#10ms", "FALSE, T#10ms", nullptr, "shortened while running"},
    };
    ExpectTimeline("TOF", preset);
}

TEST(BlockTP, Normal) {
    const Scan scans[] = {
        {0, "FALSE, T#100ms", "FALSE, T#0s"},
        {0, "TRUE, T#100ms", "TRUE, T#0s", "01 6400000000000000 01 0000000000000000 0000000000000000 01"},
        {0, "TRUE, T#100ms", "TRUE, T#0s", nullptr, "time stands still"},
        {50, "TRUE, T#100ms", "TRUE, T#50ms", "01 6400000000000000 01 3200000000000000 0000000000000000 01"},
        {150, "TRUE, T#100ms", "FALSE, T#100ms", nullptr, "late"},
        {200, "TRUE, T#100ms", "FALSE, T#100ms", nullptr, "ET stays until IN falls"},
        {210, "FALSE, T#100ms", "FALSE, T#0s", "00 6400000000000000 00 0000000000000000 0000000000000000 00"},
        {300, "TRUE, T#100ms", "TRUE, T#0s"},
        {310, "FALSE, T#100ms", "TRUE, T#10ms", nullptr, "IN falls early"},
        {320, "TRUE, T#100ms", "TRUE, T#20ms", nullptr, "not retriggered"},
        {330, "FALSE, T#100ms", "TRUE, T#30ms"},
        {399, "FALSE, T#100ms", "TRUE, T#99ms"},
        {400, "FALSE, T#100ms", "FALSE, T#0s", nullptr, "ends with IN FALSE"},
        {410, "TRUE, T#100ms", "TRUE, T#0s"},
        {420, "FALSE, T#100ms", "TRUE, T#10ms"},
        {510, "TRUE, T#100ms", "FALSE, T#100ms", nullptr, "an edge in the scan that ends the pulse is lost"},
        {520, "TRUE, T#100ms", "FALSE, T#100ms"},
        {530, "FALSE, T#100ms", "FALSE, T#0s"},
    };
    ExpectTimeline("TP", scans);
}

TEST(BlockTP, OddTimes) {
    const Scan zero[] = {
        {7, "TRUE, T#0ms", "TRUE, T#0s", nullptr, "on for one scan"},
        {7, "TRUE, T#0ms", "FALSE, T#0s"},
    };
    ExpectTimeline("TP", zero);
    const Scan backwards[] = {
        {1000, "TRUE, T#100ms", "TRUE, T#0s"},
        {500, "TRUE, T#100ms", "TRUE, T#-500ms"},
        {1100, "TRUE, T#100ms", "FALSE, T#100ms"},
    };
    ExpectTimeline("TP", backwards);
    const Scan preset[] = {
        {0, "TRUE, T#100ms", "TRUE, T#0s"},
        {50, "TRUE, T#1s", "TRUE, T#50ms"},
        {150, "TRUE, T#1s", "TRUE, T#150ms", nullptr, "lengthened while running"},
        {160, "TRUE, T#20ms", "FALSE, T#20ms", nullptr, "shortened while running"},
    };
    ExpectTimeline("TP", preset);
}

TEST(FunctionBlocks, AnyByteOtherThanZeroIsTrueInTheState) {
    struct Case {
        const char* block;
        unsigned int offset;
        const char* inputs;
        const char* outputs;
        const char* state;
    };
    const Case cases[] = {
        {"SR", 4, "FALSE, FALSE", "TRUE", "00 00 01"},
        {"R_TRIG", 4, "TRUE", "FALSE", "01 00 01"},
        {"F_TRIG", 4, "FALSE", "FALSE", "00 00 01"},
        {"CTU", 4, "TRUE, FALSE, INT#1", "FALSE, 0", "00 01 01 00 0100 00 0000"},
        {"TON", 28, "TRUE, T#0ms", "TRUE, T#0s", "01 0000000000000000 01 0000000000000000 0000000000000000 01"},
        {"TP", 11, "FALSE, T#1ms", "TRUE, T#0s", "00 0100000000000000 01 0000000000000000 0000000000000000 00"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.block);
        BlockInstance instance(row.block);
        instance.GetInstance().GetVMData()[row.offset] = 0x80;
        EXPECT_EQ(instance.Call(0, row.inputs), row.outputs);
        EXPECT_EQ(instance.DumpState(), row.state);
    }
}

TEST(FunctionBlocks, FailingInputNamesTheParameterAndLeavesTheStateAlone) {
    struct Case {
        const char* block;
        const char* inputs;
        const char* expected;
    };
    const Case cases[] = {
        {"SR", "'x', FALSE", "Invalid 201 [Function Block SR Parameter 1]"},
        {"SR", "TRUE, 'x'", "Invalid 201 [Function Block SR Parameter 2]"},
        {"RS", "POINTER#NULL, TRUE", "Invalid 214 [Function Block RS Parameter 1]"},
        {"R_TRIG", "''", "Invalid 201 [Function Block R_TRIG Parameter 1]"},
        {"F_TRIG", "Undefined", "Invalid 214 [Function Block F_TRIG Parameter 1]"},
        {"CTU", "'x', TRUE, 1", "Invalid 201 [Function Block CTU Parameter 1]"},
        {"CTU", "TRUE, 'x', 1", "Invalid 201 [Function Block CTU Parameter 2]"},
        {"CTU", "TRUE, TRUE, 'x'", "Invalid 224 [Function Block CTU Parameter 3]"},
        {"CTD", "TRUE, TRUE, '40000'", "Invalid 202 [Function Block CTD Parameter 3]"},
        {"TP", "'x', T#1s", "Invalid 201 [Function Block TP Parameter 1]"},
        {"TON", "TRUE, '5'", "Invalid 255 [Function Block TON Parameter 2]"},
        {"TOF", "TRUE, CHAR#'x'", "Invalid 214 [Function Block TOF Parameter 2]"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(std::string(row.block) + ' ' + row.inputs);
        BlockInstance instance(row.block);
        std::memset(instance.GetInstance().GetVMData(), 0x5A, instance.GetRow().dataSize);
        const std::string before = instance.DumpState();
        EXPECT_EQ(instance.Call(1000, row.inputs), row.expected);
        EXPECT_EQ(instance.DumpState(), before);
    }
}

TEST(FunctionBlocks, OutputsThatAreNotConnectedAreSkipped) {
    BlockInstance instance("TON");
    EXPECT_EQ(instance.Call(0, {CValue(true), CValue(0LL, ElementaryType::Time), CValue(), CValue()}),
              CallStatus::Continue);
    EXPECT_EQ(instance.GetLog().GetErrorCount(), 0U);
}

TEST(FunctionBlocks, FailingOutputIsInvalidAndSkipsTheNext) {
    BlockInstance instance("CTU");
    CValue null;
    null.SetAddress(0, 0, 0);
    instance.GetMachine().GetGlobals().GetVMData()[8] = BlockInstance::kUntouched;
    EXPECT_EQ(instance.Call(0, {CValue(true), CValue(false), CValue(1), null, TestMachine::PointerTo(8)}),
              CallStatus::Invalid);
    ASSERT_EQ(instance.GetLog().GetErrorCount(), 1U);
    EXPECT_EQ(instance.GetLog().GetEntries()[0].text, "Null pointer de-reference.");
    EXPECT_EQ(instance.GetLog().GetEntries()[0].location, "");
    EXPECT_EQ(instance.GetMachine().GetGlobals().GetVMData()[8], BlockInstance::kUntouched);
    EXPECT_EQ(instance.DumpState(), "01 01 01 00 0100 01 0100") << "the state was stored before";
    EXPECT_EQ(instance.Call(0, {CValue(true), CValue(false), CValue(1), TestMachine::PointerTo(0), null}),
              CallStatus::Invalid);
    EXPECT_EQ(instance.Call(0, {CValue(true), CValue(false), CValue(1), CValue(5), CValue()}), CallStatus::Invalid);
    EXPECT_EQ(instance.GetLog().GetEntries()[0].text, "Internal logic error: Pointer value expected.");
}

TEST(FunctionBlocks, TooFewInputsAreInvalidWithoutAMessage) {
    for (const BlockRow& row : GetBlockGroups()[0].rows) {
        SCOPED_TRACE(row.name);
        BlockInstance instance(row.name);
        for (unsigned char count = 0; count < row.inputCount; ++count) {
            EXPECT_EQ(instance.Call(0, std::vector<CValue>(count)), CallStatus::Invalid);
            EXPECT_EQ(instance.GetLog().GetErrorCount(), 0U);
        }
        EXPECT_EQ(instance.Call(0, std::vector<CValue>(row.inputCount)), CallStatus::Invalid);
        EXPECT_EQ(instance.GetLog().GetErrorCount(), 1U) << "undefined inputs";
    }
}

TEST(FunctionBlocks, InstanceWithoutMemoryOfItsOwnFailsTheCounter) {
    TestMachine machine;
    CBuiltInFunctions registry;
    CBuiltInFunctionContext context(nullptr, &machine.GetExec(), registry);
    CErrorLog log;
    CValue inputs[] = {CValue(true), CValue(false), CValue(1), CValue(), CValue()};
    CMemoryRef nowhere;
    context.SetCurrentFunction(0, true, 1, 5);
    EXPECT_EQ(registry.ExecuteFunctionBlock(machine.GetExec(), context, nowhere, 11, 5, inputs, log),
              CallStatus::Invalid);
}

// --- through the call instruction ---

/// A TON in the global data of a machine whose code is one call of it: instance data at 64, ENO at 0, Q at 8, ET at 16.
class CalledTimer {
 public:
    CalledTimer() {
        globals_.AllocateNewData(128);
        std::vector<unsigned char> code(kEntries, static_cast<unsigned char>(Opcode::Push));
        code.insert(code.end(), {static_cast<unsigned char>(Opcode::CallFunctionBlock), 1, 8, kEntries, 29, 0, 0, 0});
        CBinaryOutputBuffer output;
        output << static_cast<unsigned int>(code.size());
        output.WriteBytes(code.data(), code.size());
        CBinaryInputMemory input(output.GetData());
        CErrorLog log;
        image_.LoadCode(log, input);
    }

    /// EN, IN and PT; the outputs and the state afterwards: ENO, Q, ET and the byte at 64 (EN), 65 (ENO), 66 (IN).
    std::string Scan(long long timeMs, bool enable, bool in, long long presetMs) {
        exec_.StartNewProgram(0, 1000, 0, &timeMs);
        const int base = static_cast<int>(exec_.GetStackSize());
        CErrorLog log;
        for (int i = 0; i < kEntries; ++i)
            exec_.ExecuteInstruction(log);
        const CValue entries[kEntries] = {CValue(enable),
                                          TestMachine::PointerTo(0),
                                          CValue(in),
                                          CValue(presetMs, ElementaryType::Time),
                                          TestMachine::PointerTo(8),
                                          TestMachine::PointerTo(16),
                                          TestMachine::PointerTo(64)};
        for (int i = 0; i < kEntries; ++i)
            exec_.SetStackEntry(base + i, entries[i]);
        EXPECT_EQ(exec_.ExecuteInstruction(log), InstructionResult::Continue);
        EXPECT_EQ(log.GetErrorCount(), 0U);
        const CMemoryRef data(globals_, 0);
        return FormatText("ENO %d Q %d ET %lld EN %d ENO %d IN %d", data.GetBOOLAtOffset(0), data.GetBOOLAtOffset(8),
                          data.GetLINTAtOffset(16), data.GetBOOLAtOffset(64), data.GetBOOLAtOffset(65),
                          data.GetBOOLAtOffset(66));
    }

 private:
    static constexpr unsigned char kEntries = 7;
    CClientAccessContext access_{"test"};
    CVirtualMachine image_;
    CMemoryBlock globals_;
    CVirtualMachineExec exec_{access_, "test", &image_, &globals_, nullptr};
};

TEST(FunctionBlocks, SwitchedOffWhileRunningKeepsTheStateAndTheStartTime) {
    CalledTimer timer;
    EXPECT_EQ(timer.Scan(1000, true, true, 100), "ENO 1 Q 0 ET 0 EN 1 ENO 1 IN 1");
    EXPECT_EQ(timer.Scan(1050, true, true, 100), "ENO 1 Q 0 ET 50 EN 1 ENO 1 IN 1");
    EXPECT_EQ(timer.Scan(1060, false, true, 100), "ENO 0 Q 0 ET 50 EN 0 ENO 0 IN 1");
    EXPECT_EQ(timer.Scan(1090, false, false, 100), "ENO 0 Q 0 ET 50 EN 0 ENO 0 IN 1");
    EXPECT_EQ(timer.Scan(1100, true, true, 100), "ENO 1 Q 1 ET 100 EN 1 ENO 1 IN 1");
    EXPECT_EQ(timer.Scan(1110, false, false, 100), "ENO 0 Q 1 ET 100 EN 0 ENO 0 IN 1");
    EXPECT_EQ(timer.Scan(1120, true, false, 100), "ENO 1 Q 0 ET 0 EN 1 ENO 1 IN 0");
}

}  // namespace
