#include "vm/VirtualMachineExec.h"

#include "vm/TestImage.h"

namespace {

using namespace vmtest;

using Ids = std::vector<unsigned int>;

TEST(ExecuteUntilCompleteOrSuspended, RetAloneCompletesWithTheBottomEntry) {
    Machine machine(Ret());
    EXPECT_EQ(machine.Run(), RunResult::Completed);
    EXPECT_EQ(machine.Result(), "Undefined");
    EXPECT_EQ(machine.Ids(), Ids());
    EXPECT_EQ(machine.exec->GetCurrentPC(), 0U);
    EXPECT_EQ(machine.exec->GetFinishOffset(), 0U);
    EXPECT_EQ(machine.exec->GetInstructionCount(), 1U);
}

TEST(ExecuteUntilCompleteOrSuspended, CountsToTheLimit) {
    const Bytes code = Join({Push(), Push(), Pop(), Ret()});
    struct Case {
        const char* why;
        unsigned int limit;
        RunResult result;
        unsigned int pc;
        unsigned int count;
    };
    const Case cases[] = {
        {"the first instruction always runs", 0, RunResult::Failed, 1, 2},
        {"limit 1 as well", 1, RunResult::Failed, 1, 2},
        {"limit 2: one instruction", 2, RunResult::Failed, 1, 2},
        {"limit 3: two instructions", 3, RunResult::Failed, 2, 3},
        {"limit 4: three instructions", 4, RunResult::Failed, 3, 4},
        {"limit 5: all four", 5, RunResult::Completed, 3, 4},
        {"the largest limit", 0xFFFFFFFF, RunResult::Completed, 3, 4},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        Machine machine(code);
        EXPECT_EQ(machine.Run(0, row.limit), row.result);
        EXPECT_EQ(machine.exec->GetCurrentPC(), row.pc);
        EXPECT_EQ(machine.exec->GetFinishOffset(), row.pc);
        EXPECT_EQ(machine.exec->GetInstructionCount(), row.count);
        EXPECT_EQ(machine.Ids(), row.result == RunResult::Completed ? Ids() : Ids{229});
    }
}

TEST(ExecuteUntilCompleteOrSuspended, NamesTheLimit) {
    Machine machine(Jmp(-5));
    EXPECT_EQ(machine.Run(0, 1000), RunResult::Failed);
    EXPECT_EQ(machine.MessageText(), "Instruction limit reached.  Program is limited to 1000 instructions.");
    EXPECT_EQ(machine.exec->GetInstructionCount(), 1000U);
}

TEST(ExecuteUntilCompleteOrSuspended, LimitsTo100000ByDefault) {
    Machine machine(Jmp(-5));
    EXPECT_EQ(machine.exec->ExecuteUntilCompleteOrSuspended(machine.log), RunResult::Failed);
    EXPECT_EQ(machine.exec->GetInstructionCount(), 100000U);
}

TEST(ExecuteUntilCompleteOrSuspended, SuspendsAndGoesOnBehindTheCall) {
    // 0 PUSH; 1 LD 1; 7 call 10.6 ArgCount 1 (suspends); 11 call again; 15 RET
    Machine machine(Join({Push(), LdDint(1), CallFunction(10, 6, 1), CallFunction(10, 6, 1), Ret()}));
    EXPECT_EQ(machine.Run(), RunResult::Suspended);
    EXPECT_EQ(machine.exec->GetCurrentPC(), 7U);
    EXPECT_EQ(machine.exec->GetStackSize(), 2U);
    EXPECT_EQ(machine.exec->GetInstructionCount(), 3U);
    EXPECT_EQ(machine.Result(), "Undefined") << "a suspended run has no result";
    EXPECT_EQ(machine.exec->ExecuteUntilCompleteOrSuspended(machine.log), RunResult::Suspended);
    EXPECT_EQ(machine.exec->GetCurrentPC(), 11U);
    EXPECT_EQ(machine.exec->ExecuteUntilCompleteOrSuspended(machine.log), RunResult::Completed);
    EXPECT_EQ(machine.exec->GetCurrentPC(), 15U);
    EXPECT_EQ(machine.exec->GetInstructionCount(), 5U);
    EXPECT_EQ(machine.Result(), "UDINT#0");
    EXPECT_EQ(machine.functions.calls, 2U);
}

TEST(ExecuteUntilCompleteOrSuspended, CountsAcrossResumptions) {
    Machine machine(Join({CallFunction(10, 6, 1), Push(), Push(), Ret()}));
    EXPECT_EQ(machine.Run(0, 3), RunResult::Suspended);
    EXPECT_EQ(machine.exec->ExecuteUntilCompleteOrSuspended(machine.log), RunResult::Failed);
    EXPECT_EQ(machine.Ids(), Ids{229});
    EXPECT_EQ(machine.exec->GetCurrentPC(), 5U);
}

TEST(ExecuteUntilCompleteOrSuspended, TurnsEveryStatusIntoARunResult) {
    struct Case {
        const char* why;
        unsigned char status;
        RunResult result;
        Ids messages;
    };
    const Case cases[] = {
        {"continue", 0, RunResult::Completed, {}},   {"complete", 1, RunResult::Completed, {}},
        {"failed", 2, RunResult::Failed, {}},        {"invalid without a message", 3, RunResult::Invalid, {256}},
        {"corrupted", 4, RunResult::Failed, {}},     {"limit", 5, RunResult::Failed, {}},
        {"suspend", 6, RunResult::Suspended, {}},    {"without a name", 7, RunResult::Failed, {}},
        {"the largest", 255, RunResult::Failed, {}},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        Machine machine(Join({CallFunction(10, row.status, 1), Ret()}));
        EXPECT_EQ(machine.Run(), row.result);
        EXPECT_EQ(machine.Ids(), row.messages);
        EXPECT_EQ(machine.exec->GetCurrentPC(), row.status == 0 ? 4U : 0U);
    }
}

TEST(ExecuteUntilCompleteOrSuspended, SaysNothingMoreAfterAMessage) {
    Machine machine(Join({LdStatus(9)}));
    machine.exec->StartNewProgram(0, 100, 0, nullptr);
    machine.log.LogError(GetVMModule(), 204);
    EXPECT_EQ(machine.exec->ExecuteUntilCompleteOrSuspended(machine.log), RunResult::Invalid);
    EXPECT_EQ(machine.Ids(), Ids{204});
}

TEST(ExecuteUntilCompleteOrSuspended, StopsAtInvalidCode) {
    struct Case {
        const char* why;
        Bytes code;
        unsigned int start;
        std::string text;
        unsigned int pc;
    };
    const Case cases[] = {
        {"opcode 0", {10, 0, 12}, 0, "Invalid instruction '0'.", 1},
        {"opcode 29", {29}, 0, "Invalid instruction '29'.", 0},
        {"opcode 255", {255}, 0, "Invalid instruction '255'.", 0},
        {"running off the end", {10}, 0, "Invalid instruction '0'.", 1},
        {"no code at all", {}, 0, "Invalid instruction '0'.", 0},
        {"a start at the end", {12}, 1, "Invalid instruction '0'.", 1},
        {"a start far beyond", {12, 12}, 0xFFFFFFFF, "Invalid instruction '0'.", 2},
        {"a call beyond", Call(1, 0xFFFFFFF0), 0, "Invalid instruction '0'.", 6},
        {"JMP cut short", {10, 16, 0, 0, 0}, 0, "Invalid instruction '16'.", 1},
        {"LD without a type", {1}, 0, "Invalid instruction '1'.", 0},
        {"LD DINT cut short", {1, 8, 1, 2, 3}, 0, "Invalid instruction '1'.", 0},
        {"LD STRING without its count", {1, 20, 1}, 0, "Invalid instruction '1'.", 0},
        {"LD STRING cut short", {1, 20, 2, 0, 'a'}, 0, "Invalid instruction '1'.", 0},
        {"LD WSTRING cut short", {1, 21, 0xFF, 0xFF, 'a', 0}, 0, "Invalid instruction '1'.", 0},
        {"INIT_TEMP_DATA cut short", {22, 2, 0, 0, 0, 1}, 0, "Invalid instruction '22'.", 0},
        {"INIT_TEMP_DATA of 4 GiB", {22, 0xFF, 0xFF, 0xFF, 0xFF, 1}, 0, "Invalid instruction '22'.", 0},
        {"function block cut short", {24, 1, 1, 1, 1, 1, 1}, 0, "Invalid instruction '24'.", 0},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        Machine machine(row.code);
        EXPECT_EQ(machine.Run(row.start), RunResult::Invalid);
        EXPECT_EQ(machine.Ids(), Ids{210});
        EXPECT_EQ(machine.MessageText(), row.text);
        EXPECT_EQ(machine.log.GetEntries().front().location, "");
        EXPECT_EQ(machine.exec->GetCurrentPC(), row.pc);
    }
}

TEST(ExecuteUntilCompleteOrSuspended, EveryInstructionCutAnywhereFailsCleanly) {
    const Bytes instructions[] = {LdDint(1),        LdString("abc"),
                                  LdAddr(1, 0),     LdTagAddr(0, 1),
                                  PtrLd(1, 1),      PtrSt(1, 1),
                                  LdStack(0),       StStack(0),
                                  LdStatus(1),      PtrLdArray(1, 1),
                                  Convert(1),       Unary(1),
                                  Binary(1),        Jmp(0),
                                  Jmpz(0),          Jmpnz(0),
                                  Jmpu(0),          CallFunction(1, 1, 1),
                                  Call(1, 0),       InitTempData({1, 2, 3}),
                                  InitLocalData(0), CallBlock(1, 1, 1, 4),
                                  PtrStEdge(0),     CallFunctionEno(1, 1, 1),
                                  Truncate(1),      Sfc(1, 18)};
    for (const Bytes& instruction : instructions) {
        for (std::size_t length = 1; length < instruction.size(); ++length) {
            SCOPED_TRACE(testing::Message() << "opcode " << +instruction[0] << " cut to " << length);
            Machine machine(Bytes(instruction.begin(), instruction.begin() + static_cast<std::ptrdiff_t>(length)));
            EXPECT_EQ(machine.Run(), RunResult::Invalid);
            EXPECT_EQ(machine.Ids(), Ids{210});
            EXPECT_EQ(machine.exec->GetCurrentPC(), 0U);
        }
    }
}

TEST(ExecuteUntilCompleteOrSuspended, NoticesWritesIntoTheGuardAfterTheInstruction) {
    // A DINT through a pointer checked for 1 byte, at the last byte of the global data.
    Machine machine(Join({LdDint(-1), Push(), LdAddr(kGlobal, 15), PtrSt(kDInt, 1), Push(), Ret()}));
    EXPECT_EQ(machine.Run(), RunResult::Failed);
    EXPECT_EQ(machine.Ids(), Ids{216});
    EXPECT_EQ(machine.MessageText(), "Global memory corruption.");
    EXPECT_EQ(machine.exec->GetCurrentPC(), 6U + 1 + 6 + 4) << "the instruction behind the write is next";
    EXPECT_FALSE(machine.exec->CheckGlobalMemoryGuardBytes());
}

TEST(ExecuteUntilCompleteOrSuspended, NoticesWritesIntoTheGuardOfTheConstants) {
    Machine machine(Join({LdDint(-1), Push(), LdAddr(kConstant, 3), PtrSt(kDInt, 1), Ret()}), 16, Bytes(4));
    EXPECT_EQ(machine.Run(), RunResult::Failed);
    EXPECT_EQ(machine.Ids(), Ids{216});
}

TEST(ExecuteUntilCompleteOrSuspended, LetsALastInstructionPassTheGuard) {
    Machine machine(Ret());
    machine.globalData.GetVMData()[16] = 0;
    EXPECT_EQ(machine.Run(), RunResult::Completed);
}

TEST(ExecuteInstruction, RunsOneWithoutCountingOrChecking) {
    Machine machine(Join({Push(), Pop(), Ret()}));
    machine.globalData.GetVMData()[16] = 0;
    machine.exec->StartNewProgram(0, 1, 0, nullptr);
    EXPECT_EQ(machine.exec->ExecuteInstruction(machine.log), InstructionResult::Continue);
    EXPECT_EQ(machine.exec->GetCurrentPC(), 1U);
    EXPECT_EQ(machine.exec->GetStackSize(), 2U);
    EXPECT_EQ(machine.exec->ExecuteInstruction(machine.log), InstructionResult::Continue);
    EXPECT_EQ(machine.exec->ExecuteInstruction(machine.log), InstructionResult::Complete);
    EXPECT_EQ(machine.exec->GetCurrentPC(), 2U);
    EXPECT_EQ(machine.exec->GetInstructionCount(), 0U);
    EXPECT_EQ(machine.Ids(), Ids());
}

TEST(CVirtualMachineExec, IsReadyWhenNew) {
    Machine machine(Ret());
    EXPECT_EQ(machine.exec->GetStackSize(), 1U);
    EXPECT_EQ(machine.exec->GetCodeStackSize(), 0U);
    EXPECT_EQ(machine.exec->GetCurrentPC(), 0U);
    EXPECT_EQ(machine.exec->GetHostTagName(), "HostTag");
    machine.exec->SetHostTagName("Other");
    EXPECT_EQ(machine.exec->GetHostTagName(), "Other");
    EXPECT_EQ(&machine.exec->GetClientAccessContext(), &machine.access);
    EXPECT_TRUE(machine.exec->CheckGlobalMemoryGuardBytes());
}

TEST(CVirtualMachineExec, KeepsTheCallChainAfterAFailure) {
    // 0 CALL 7, ArgCount 1; 6 RET; 7 CALL 13, ArgCount 1; 13 PTR LD on an undefined top
    Machine machine(Join({Call(1, 7), Ret(), Call(1, 13), PtrLd(kBool, 1)}));
    EXPECT_EQ(machine.Run(), RunResult::Failed);
    EXPECT_EQ(machine.Ids(), Ids{217});
    EXPECT_EQ(machine.exec->GetCodeStackSize(), 2U);
    EXPECT_EQ(machine.exec->GetCodeStackReturnPC(0), 6U);
    EXPECT_EQ(machine.exec->GetCodeStackReturnPC(1), 13U);
    EXPECT_EQ(machine.exec->GetCurrentPC(), 13U);
    EXPECT_THROW((void)machine.exec->GetCodeStackReturnPC(2), std::out_of_range);
    EXPECT_THROW((void)machine.exec->GetCodeStackReturnPC(-1), std::out_of_range);
    machine.exec->StartNewProgram(0, 100, 0, nullptr);
    EXPECT_EQ(machine.exec->GetCodeStackSize(), 0U);
    EXPECT_THROW((void)machine.exec->GetCodeStackReturnPC(0), std::out_of_range);
}

TEST(CVirtualMachineExec, StackEntriesCountFromTheFrame) {
    // 0 LD 5; 6 PUSH; 7 LD 6; 13 CALL 19, ArgCount 1; 19 call 10.6 (suspends)
    Machine machine(Join({LdDint(5), Push(), LdDint(6), Call(1, 19), CallFunction(10, 6, 1)}));
    ASSERT_EQ(machine.Run(), RunResult::Suspended);
    CValue value;
    EXPECT_TRUE(machine.exec->GetStackEntry(0, value));
    EXPECT_EQ(Declaration(value), "UDINT#0");
    EXPECT_TRUE(machine.exec->GetStackEntry(-1, value));
    EXPECT_EQ(Declaration(value), "DINT#5");
    EXPECT_FALSE(machine.exec->GetStackEntry(1, value));
    EXPECT_FALSE(machine.exec->GetStackEntry(-2, value));
    EXPECT_FALSE(machine.exec->GetStackEntry(std::numeric_limits<int>::max(), value));
    EXPECT_FALSE(machine.exec->GetStackEntry(std::numeric_limits<int>::min(), value));
    EXPECT_TRUE(machine.exec->SetStackEntry(0, CValue(true)));
    EXPECT_FALSE(machine.exec->SetStackEntry(1, CValue(true)));
    EXPECT_FALSE(machine.exec->SetStackEntry(-2, CValue(true)));
    EXPECT_TRUE(machine.exec->GetStackTop(value));
    EXPECT_EQ(Declaration(value), "BOOL#TRUE");
    machine.exec->GetStackTop() = CValue(3);
    EXPECT_TRUE(machine.exec->GetStackEntry(0, value));
    EXPECT_EQ(Declaration(value), "DINT#3");
}

TEST(CVirtualMachineExec, BottomEntryPersistsBetweenScans) {
    // 0 JMPU +10 (first scan); 5 PUSH; 6 LD 1; 12 ADD; 14 RET; 15 LD 10; 21 RET
    Machine machine(Join({Jmpu(10), Push(), LdDint(1), Binary(1), Ret(), LdDint(10), Ret()}));
    for (const char* expected : {"DINT#10", "DINT#11", "DINT#12"}) {
        EXPECT_EQ(machine.Run(), RunResult::Completed);
        EXPECT_EQ(machine.Result(), expected);
        EXPECT_EQ(machine.exec->GetStackSize(), 1U);
    }
}

TEST(CVirtualMachineExec, StaysUsableAfterAFailure) {
    Machine machine(Join({Push(), Push(), LdStack(9), Ret(), Ret()}));
    EXPECT_EQ(machine.Run(), RunResult::Failed);
    EXPECT_EQ(machine.exec->GetStackSize(), 1U);
    EXPECT_EQ(machine.Run(4), RunResult::Completed);
}

TEST(CVirtualMachineExec, HandsTheCallerWordToEveryCall) {
    Machine machine(Join({CallFunction(10, 0, 1), Ret()}));
    machine.Run();
    EXPECT_EQ(machine.functions.callPosition, 77U);
}

TEST(StartNewProgram, SetsTheTime) {
    Machine machine(Ret());
    machine.timestamp = 123456;
    machine.Run();
    EXPECT_EQ(machine.exec->GetCurrentTimestampMS(), 123456);
    machine.exec->StartNewProgram(0, 100, 0, nullptr);
    EXPECT_GT(machine.exec->GetCurrentTimestampMS(), 1600000000000);
}

TEST(ExecLimits, StopAValueStackOneEntryTooHigh) {
    Machine machine(Join({Push(), Jmp(-6)}));
    machine.exec->SetLimits({.maxStackEntries = 10});
    EXPECT_EQ(machine.Run(), RunResult::Failed);
    EXPECT_EQ(machine.MessageText(), "Internal logic error: Value stack overflow.");
    EXPECT_EQ(machine.Ids(), Ids{227});
    Machine fits(Join({Push(), Push(), Ret()}));
    fits.exec->SetLimits({.maxStackEntries = 3});
    EXPECT_EQ(fits.Run(), RunResult::Completed);
    fits.exec->SetLimits({.maxStackEntries = 2});
    EXPECT_EQ(fits.Run(), RunResult::Failed);
}

TEST(ExecLimits, StopTheDefaultValueStackAtItsLimit) {
    Machine machine(Join({Push(), Jmp(-6)}));
    EXPECT_EQ(machine.Run(0, 3000000), RunResult::Failed);
    EXPECT_EQ(machine.Ids(), Ids{227});
    EXPECT_EQ(machine.exec->GetInstructionCount(), 2 * 1048576U - 1);
}

TEST(ExecLimits, StopStringsOfTheStackOneByteTooMany) {
    // 0 LD 'abcd' (8 bytes); 8 PUSH; 9 LD STACK[0]; 11 JMP to 8: four more bytes in each round.
    Machine machine(Join({Ld(kString, {4, 0, 'a', 'b', 'c', 'd'}), Push(), LdStack(0), Jmp(-8)}));
    machine.exec->SetLimits({.maxValueData = 40});
    for (int scan = 0; scan < 3; ++scan) {
        EXPECT_EQ(machine.Run(), RunResult::Failed);
        EXPECT_EQ(machine.MessageText(), "Internal logic error: Value data overflow.");
        EXPECT_EQ(machine.Ids(), Ids{227});
        // The literal, nine rounds that fit, and the PUSH and LD STACK of the tenth.
        EXPECT_EQ(machine.exec->GetInstructionCount(), 1U + 9 * 3 + 2);
    }
}

TEST(ExecLimits, StopCompositesAndFunctionResultsToo) {
    const Bytes pointer = LdAddr(kGlobal, 0);
    Machine arrays(Join({pointer, PtrLdArray(kByte, 10), Push(), Jmp(-18)}), 10);
    arrays.exec->SetLimits({.maxValueData = 35});
    EXPECT_EQ(arrays.Run(), RunResult::Failed);
    EXPECT_EQ(arrays.MessageText(), "Internal logic error: Value data overflow.");
    EXPECT_EQ(arrays.exec->GetInstructionCount(), 3 * 4 + 2U);

    // CONCAT('abcd', 1234567) has eleven bytes: at the limit, then one over.
    Machine concat(Join({Push(), Ld(kString, {4, 0, 'a', 'b', 'c', 'd'}), Push(), Ld(kDInt, U32(1234567)),
                         CallFunction(7, 5, 3), Ret()}));
    concat.exec->SetLimits({.maxValueData = 11});
    EXPECT_EQ(concat.Run(), RunResult::Completed);
    concat.exec->SetLimits({.maxValueData = 10});
    EXPECT_EQ(concat.Run(), RunResult::Failed);
    EXPECT_EQ(concat.MessageText(), "Internal logic error: Value data overflow.");
}

TEST(ExecLimits, DoNotCountValueDataThatIsGone) {
    // The same entry takes a string over and over.
    Machine machine(Join({Ld(kString, {4, 0, 'a', 'b', 'c', 'd'}), Jmp(-13)}));
    machine.exec->SetLimits({.maxValueData = 4});
    EXPECT_EQ(machine.Run(0, 10000), RunResult::Failed);
    EXPECT_EQ(machine.Ids(), Ids{229});
}

}  // namespace
