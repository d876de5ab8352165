// Calls of user functions: what each frame sees, what stays valid, and how deep it goes.
#include "vm/TestImage.h"

namespace {

using namespace vmtest;

constexpr auto kCompleted = RunResult::Completed;
constexpr auto kFailed = RunResult::Failed;

/// Code in sections with names for their offsets, because calls need them.
struct Program {
    Bytes code;
    unsigned int Add(const Bytes& section) {
        const auto offset = static_cast<unsigned int>(code.size());
        code = code + section;
        return offset;
    }
};

constexpr unsigned int kCallLength = 6;

TEST(ExecCallUserFunc, PassesEntriesAndLeavesTheFirstAsResult) {
    // main: three entries, CALL with the upper two; callee at 32 adds its two arguments into the first.
    const Bytes callee = Join({Push(), LdStack(0), Push(), LdStack(1), Binary(1), StStack(0), Ret()});
    const Bytes arguments = Join({LdDint(1), Push(), LdDint(2), Push(), LdDint(3)});
    const auto offset = static_cast<unsigned int>(arguments.size()) + kCallLength + 1;
    ExpectRuns({
        {"the result replaces the first argument",
         Join({arguments, Call(2, offset), Ret(), callee}),
         kCompleted,
         "DINT#5",
         {}},
    });
    Machine machine(Join({arguments, Call(2, offset + 2), LdStatus(2), Ret(), callee}));
    EXPECT_EQ(machine.Run(), kCompleted);
    EXPECT_EQ(machine.Result(), "UDINT#2") << "one entry below and the result";
}

TEST(ExecCallUserFunc, RefusesCounts) {
    ExpectRuns({
        {"zero", Call(0, 0), kFailed, "Undefined", {222}, "Zero arguments count in function call is not valid."},
        {"one more than there are",
         Call(2, 0),
         kFailed,
         "Undefined",
         {223},
         "Function call instruction requested 2 arguments, but there are only 1 available on the stack."},
    });
}

TEST(ExecReturn, RestoresTheStackThatTheCalleePopped) {
    // 0 PUSH; 1 LD 7; 7 CALL 16, ArgCount 1; 13 LD STATUS 2; 15 RET; 16 POP; 17 RET
    Machine machine(Join({Push(), LdDint(7), Call(1, 16), LdStatus(2), Ret(), Pop(), Ret()}));
    EXPECT_EQ(machine.Run(), kCompleted);
    EXPECT_EQ(machine.Result(), "UDINT#2");
}

TEST(ExecReturn, AtTheEndOfTheCodeTheCallerRunsOffIt) {
    // 0 JMP +1; 5 RET; 6 CALL 5, the last instruction
    Machine machine(Join({Jmp(1), Ret(), Call(1, 5)}));
    EXPECT_EQ(machine.Run(), RunResult::Invalid);
    EXPECT_EQ(machine.MessageText(), "Invalid instruction '0'.");
    EXPECT_EQ(machine.exec->GetCurrentPC(), 12U);
}

TEST(Frames, TemporaryDataComesBackAfterACall) {
    Program program;
    // main: temporary data 1 2; call; read its byte 1.
    const Bytes begin = InitTempData({1, 2});
    const Bytes end = Join({LdAddr(kTemp, 1), PtrLd(kByte, 1), Ret()});
    const auto callee = static_cast<unsigned int>(begin.size() + kCallLength + end.size());
    program.Add(Join({begin, Call(1, callee), end}));
    program.Add(Join({InitTempData({9, 9, 9}), Ret()}));
    Machine machine(program.code);
    EXPECT_EQ(machine.Run(), kCompleted);
    EXPECT_EQ(machine.Result(), "BYTE#16#2");
}

TEST(Frames, CalleeStartsWithoutTemporaryData) {
    const Bytes begin = InitTempData({1, 2});
    const auto callee = static_cast<unsigned int>(begin.size() + kCallLength + 1);
    Machine machine(Join({begin, Call(1, callee), Ret(), LdAddr(kTemp, 0), PtrLd(kByte, 1)}));
    EXPECT_EQ(machine.Run(), kFailed);
    EXPECT_EQ(machine.MessageText(), "Access violation, address Temp: Frame 1 Offset 0.");
}

TEST(Frames, PointersToCallersDataWorkInTheCallee) {
    // main: temporary data; a pointer into it as argument; the callee writes through it.
    const Bytes begin = Join({InitTempData({1, 2, 3}), LdAddr(kTemp, 1)});
    const Bytes end = Join({LdAddr(kTemp, 1), PtrLd(kByte, 1), Ret()});
    const auto callee = static_cast<unsigned int>(begin.size() + kCallLength + end.size());
    const Bytes body = Join({Push(), Ld(kByte, {7}), Push(), LdStack(0), PtrSt(kByte, 1), Ret()});
    Machine machine(Join({begin, Call(1, callee), end, body}));
    EXPECT_EQ(machine.Run(), kCompleted);
    EXPECT_EQ(machine.Result(), "BYTE#16#7");
}

TEST(Frames, PointersToCallersLocalDataWorkInTheCallee) {
    // main: local data at global byte 4; LD ADDR local 1 as argument; the callee has its own local data at byte 8.
    const Bytes begin = Join({LdAddr(kGlobal, 4), InitLocalData(4), LdAddr(kLocal, 1)});
    const auto callee = static_cast<unsigned int>(begin.size() + kCallLength + 1);
    const Bytes body = Join({Push(), LdAddr(kGlobal, 8), InitLocalData(4), Ld(kByte, {7}), Push(), LdStack(0),
                             PtrSt(kByte, 1), Ld(kByte, {8}), Push(), LdAddr(kLocal, 1), PtrSt(kByte, 1), Ret()});
    Machine machine(Join({begin, Call(1, callee), Ret(), body}));
    EXPECT_EQ(machine.Run(), kCompleted);
    EXPECT_EQ(machine.Global()[5], 7);
    EXPECT_EQ(machine.Global()[9], 8);
}

TEST(Frames, CalleeKeepsCallersLocalDataUntilItSetsItsOwn) {
    const Bytes begin = Join({LdAddr(kGlobal, 4), InitLocalData(4)});
    const Bytes end = Join({LdAddr(kLocal, 0), PtrLd(kByte, 1), Ret()});
    const auto callee = static_cast<unsigned int>(begin.size() + kCallLength + end.size());
    const Bytes body =
        Join({Ld(kByte, {7}), Push(), LdAddr(kLocal, 0), PtrSt(kByte, 1), LdAddr(kGlobal, 8), InitLocalData(4), Ret()});
    Machine machine(Join({begin, Call(1, callee), end, body}));
    EXPECT_EQ(machine.Run(), kCompleted);
    EXPECT_EQ(machine.Result(), "BYTE#16#7") << "the caller's own reference is back after the call";
    EXPECT_EQ(machine.Global()[4], 7);
}

TEST(Frames, PointersIntoAnEndedFrameFail) {
    // The callee leaves a pointer to its own data as its result.
    const auto afterReturn = [](unsigned char kind) {
        return Join({Call(1, 10), PtrLd(kByte, 1), InitTempData({1, 2, 3}), LdAddr(kind, 0), Ret()});
    };
    for (const unsigned char kind : {kTemp, kLocal}) {
        Machine machine(afterReturn(kind));
        EXPECT_EQ(machine.Run(), kFailed);
        EXPECT_EQ(machine.Ids(), std::vector<unsigned int>{218});
        EXPECT_EQ(machine.MessageText(), "Invalid pointer stack frame '1'.");
    }
}

TEST(Frames, APointerIntoAnEndedFrameMeetsTheNextFunctionOfThatDepth) {
    // main: A leaves a pointer to its temporary byte 4; B, without temporary data, then with less, reads through it.
    const auto run = [](const Bytes& prepare) {
        Program program;
        const Bytes a = Join({InitTempData({1, 2, 3, 4, 5}), LdAddr(kTemp, 4), Ret()});
        const unsigned int atA = 2 * kCallLength + 1;
        const auto atB = static_cast<unsigned int>(atA + a.size());
        program.Add(Join({Call(1, atA), Call(1, atB), Ret(), a, prepare, PtrLd(kByte, 1), Ret()}));
        Machine machine(program.code);
        machine.Run();
        return std::pair(machine.MessageText(), machine.Result());
    };
    EXPECT_EQ(run({}).first, "Access violation, address Temp: Frame 1 Offset 4.");
    EXPECT_EQ(run(InitTempData({6, 7})).first, "Access violation, address Temp: Frame 1 Offset 4.");
    EXPECT_EQ(run(InitTempData({6, 7, 8, 9, 10})).second, "BYTE#16#A");
}

TEST(Frames, LocalDataOntoOwnTemporaryDataStaysWithThatFrame) {
    // main: temporary data as local data; the callee, with temporary data of its own, writes its inherited local data.
    const Bytes begin = Join({InitTempData({1, 2, 3, 4}), LdAddr(kTemp, 1), InitLocalData(2)});
    const Bytes end = Join({LdAddr(kTemp, 2), PtrLd(kByte, 1), Ret()});
    const auto callee = static_cast<unsigned int>(begin.size() + kCallLength + end.size());
    const Bytes body =
        Join({InitTempData({8, 8, 8, 8}), Ld(kByte, {7}), Push(), LdAddr(kLocal, 1), PtrSt(kByte, 1), Ret()});
    Machine machine(Join({begin, Call(1, callee), end, body}));
    EXPECT_EQ(machine.Run(), kCompleted);
    EXPECT_EQ(machine.Result(), "BYTE#16#7");
}

TEST(Frames, LocalDataOntoShrunkTemporaryDataFailsCleanly) {
    Machine machine(Join({InitTempData(Bytes(100)), LdAddr(kTemp, 50), InitLocalData(50), InitTempData({1}),
                          LdAddr(kLocal, 0), PtrLd(kByte, 1)}));
    EXPECT_EQ(machine.Run(), kFailed);
    EXPECT_EQ(machine.MessageText(), "Access violation, address Local: Frame 0 Offset 0.");
}

TEST(Frames, OffsetsThatOnlyMeetModulo32BitsAreOutOfRange) {
    for (const unsigned int offset : {0xFFFFFFFFU, 0xFFFFFFFCU, 0xFFFFFFF0U}) {
        Machine machine(Join({LdAddr(kGlobal, 8), InitLocalData(4), LdAddr(kLocal, offset), PtrLd(kByte, 1)}));
        EXPECT_EQ(machine.Run(), kFailed) << offset;
        EXPECT_EQ(machine.Ids(), std::vector<unsigned int>{212}) << offset;
    }
}

TEST(ExecInitLocalData, ResolvesThePointerAndKeepsIt) {
    ExpectRuns({
        {"the pointer stays", Join({LdAddr(kGlobal, 4), InitLocalData(4), Ret()}), kCompleted, "POINTER#Global: 4", {}},
        {"relative to the old local data",
         Join({LdAddr(kGlobal, 4), InitLocalData(8), LdAddr(kLocal, 2), InitLocalData(2), Ld(kByte, {7}), Push(),
               LdAddr(kLocal, 1), PtrSt(kByte, 1), Ret()}),
         kCompleted,
         "BYTE#16#7",
         {},
         "",
         {0, 0, 0, 0, 0, 0, 0, 7}},
        {"too large", Join({LdAddr(kGlobal, 4), InitLocalData(13)}), kFailed, "POINTER#Global: 4", {212}},
        {"no pointer", InitLocalData(0), kFailed, "Undefined", {217}},
        {"local data reaches to the end of its block, not of the instance",
         Join({LdAddr(kGlobal, 4), InitLocalData(1), LdAddr(kLocal, 11), PtrLd(kByte, 1), Ret()}),
         kCompleted,
         "BYTE#16#0",
         {}},
        {"and no further",
         Join({LdAddr(kGlobal, 4), InitLocalData(1), LdAddr(kLocal, 12), PtrLd(kByte, 1)}),
         kFailed,
         "POINTER#Local: Frame 0 Offset 12",
         {212}},
        {"a tag",
         Join({LdTagAddr(2, 7), InitLocalData(4), LdAddr(kLocal, 1), PtrLd(kByte, 1), Ret()}),
         kCompleted,
         "BYTE#16#0",
         {}},
    });
}

TEST(ExecInitTempData, ReplacesTheData) {
    ExpectRuns({
        {"data", Join({InitTempData({1, 2}), LdAddr(kTemp, 1), PtrLd(kByte, 1), Ret()}), kCompleted, "BYTE#16#2", {}},
        {"again",
         Join({InitTempData({1, 2}), InitTempData({3}), LdAddr(kTemp, 0), PtrLd(kByte, 1), Ret()}),
         kCompleted,
         "BYTE#16#3",
         {}},
        {"shorter",
         Join({InitTempData({1, 2}), InitTempData({3}), LdAddr(kTemp, 1), PtrLd(kByte, 1)}),
         kFailed,
         "POINTER#Temp: Frame 0 Offset 1",
         {212}},
        {"none",
         Join({InitTempData({1, 2}), InitTempData({}), LdAddr(kTemp, 0), PtrLd(kByte, 1)}),
         kFailed,
         "POINTER#Temp: Frame 0 Offset 0",
         {212}},
        {"a write past its end is not checked",
         Join({InitTempData({1}), LdDint(-1), Push(), LdAddr(kTemp, 0), PtrSt(kDInt, 1), Ret()}),
         kCompleted,
         "DINT#-1",
         {}},
    });
}

TEST(Frames, TemporaryDataEndsWithTheRun) {
    Machine machine(Join({InitTempData({1, 2}), Ret(), LdAddr(kTemp, 0), PtrLd(kByte, 1), Ret()}));
    EXPECT_EQ(machine.Run(), kCompleted);
    EXPECT_EQ(machine.Run(8), kFailed);
    EXPECT_EQ(machine.Ids(), std::vector<unsigned int>{212});
}

TEST(Frames, LocalDataPersistsBetweenScans) {
    const Bytes first = Join({LdAddr(kGlobal, 4), InitLocalData(4), Ret()});
    Machine machine(first + Join({LdAddr(kLocal, 1), PtrLd(kByte, 1), Ret()}));
    machine.globalData.GetVMData()[5] = 7;
    EXPECT_EQ(machine.Run(), kCompleted);
    EXPECT_EQ(machine.Run(static_cast<unsigned int>(first.size())), kCompleted);
    EXPECT_EQ(machine.Result(), "BYTE#16#7");
}

TEST(Frames, LocalDataOfAFailedCallPersistsToo) {
    // 0 CALL 7; 6 RET; 7: local data at global byte 4, then a failing instruction; next scan: read local byte 1.
    const Bytes first = Join({Call(1, 7), Ret(), LdAddr(kGlobal, 4), InitLocalData(4), LdStack(9)});
    Machine machine(first + Join({LdAddr(kLocal, 1), PtrLd(kByte, 1), Ret()}));
    machine.globalData.GetVMData()[5] = 7;
    EXPECT_EQ(machine.Run(), kFailed);
    EXPECT_EQ(machine.exec->GetCodeStackSize(), 1U);
    EXPECT_EQ(machine.Run(static_cast<unsigned int>(first.size())), kCompleted);
    EXPECT_EQ(machine.Result(), "BYTE#16#7");
}

TEST(Frames, LocalDataOntoTemporaryDataOfAnEndedRunFailsCleanly) {
    const Bytes read = Join({LdAddr(kLocal, 0), PtrLd(kByte, 1), Ret()});
    struct Case {
        const char* why;
        Bytes first;
    };
    const Bytes fail = LdStack(99);
    const Bytes ownTemp = Join({InitTempData(Bytes(8)), LdAddr(kTemp, 0), InitLocalData(8)});
    const auto afterOwn = static_cast<unsigned int>(ownTemp.size());
    const Case cases[] = {
        {"of the program", Join({ownTemp, Ret()})},
        {"of a function", Join({Call(1, 7), Ret(), ownTemp, fail})},
        {"of the function's caller", Join({ownTemp, Call(1, afterOwn + 7), Ret(), fail})},
        {"of a caller in the middle", Join({Call(1, 7), Ret(), ownTemp, Call(1, 7 + afterOwn + 7), Ret(), fail})},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.why);
        Machine machine(row.first + read);
        machine.Run();
        EXPECT_EQ(machine.Run(static_cast<unsigned int>(row.first.size())), kFailed);
        EXPECT_EQ(machine.MessageText(), "Access violation, address Local: Frame 0 Offset 0.");
    }
}

TEST(Frames, StartingAfreshInACallKeepsTemporaryAndLocalData) {
    // A suspended function is abandoned: its data is the next program's, as of a context that only forgets its calls.
    const Bytes first =
        Join({Call(1, 7), Ret(), InitTempData({1, 2, 3}), LdAddr(kTemp, 1), InitLocalData(2), CallFunction(10, 6, 1)});
    const Bytes second = Join({LdAddr(kLocal, 1), PtrLd(kByte, 1), Ret()});
    const Bytes third = Join({LdAddr(kTemp, 0), PtrLd(kByte, 1), Ret()});
    for (const auto& [code, value] : {std::pair(second, "BYTE#16#3"), std::pair(third, "BYTE#16#1")}) {
        Machine machine(first + code);
        EXPECT_EQ(machine.Run(), RunResult::Suspended);
        EXPECT_EQ(machine.Run(static_cast<unsigned int>(first.size())), kCompleted);
        EXPECT_EQ(machine.Result(), value);
    }
}

TEST(ExecLimits, LetEveryFrameRunAndStopTheNextCall) {
    Machine machine(Call(1, 0));
    EXPECT_EQ(machine.Run(0, 1000000), kFailed);
    EXPECT_EQ(machine.Ids(), std::vector<unsigned int>{227});
    EXPECT_EQ(machine.MessageText(), "Internal logic error: Call stack overflow.");
    EXPECT_EQ(machine.exec->GetCodeStackSize(), 65536U);
    EXPECT_EQ(machine.exec->GetInstructionCount(), 65537U);
    EXPECT_EQ(machine.exec->GetCodeStackReturnPC(65535), 6U);
}

TEST(ExecLimits, DeepestFrameReturns) {
    // 0 CALL 8; 6 RET; 7 RET; 8 LD STATUS 3; 10 PUSH; 11 LD UDINT limit; 17 EQ; 19 JMPNZ to 30; 24 CALL 8; 30 RET
    Machine machine(Join(
        {Call(1, 8), Ret(), Ret(), LdStatus(3), Push(), Ld(kUDInt, U32(3)), Binary(7), Jmpnz(6), Call(1, 8), Ret()}));
    machine.exec->SetLimits({.maxFrames = 3});
    EXPECT_EQ(machine.Run(), kCompleted);
    machine.exec->SetLimits({.maxFrames = 2});
    EXPECT_EQ(machine.Run(), kFailed);
    EXPECT_EQ(machine.exec->GetCodeStackSize(), 2U);
}

TEST(ExecLimits, CountTemporaryDataOfAllFrames) {
    // Each level has 10 bytes and calls itself.
    const Bytes level = InitTempData(Bytes(10));
    Machine machine(Join({level, Call(1, 0)}));
    machine.exec->SetLimits({.maxTempData = 35});
    for (int scan = 0; scan < 3; ++scan) {
        EXPECT_EQ(machine.Run(), kFailed);
        EXPECT_EQ(machine.MessageText(), "Internal logic error: Temporary data overflow.");
        EXPECT_EQ(machine.exec->GetCodeStackSize(), 3U);
    }
    machine.exec->SetLimits({.maxTempData = 40});
    EXPECT_EQ(machine.Run(), kFailed);
    EXPECT_EQ(machine.exec->GetCodeStackSize(), 4U);
}

TEST(ExecLimits, DoNotCountReplacedOrEndedTemporaryData) {
    // Twice in the same frame, then in a called one that ends, over and over.
    const Bytes body = Join({InitTempData(Bytes(10)), InitTempData(Bytes(10))});
    const auto callee = static_cast<unsigned int>(body.size() + kCallLength + 5);
    Machine machine(Join({body, Call(1, callee), Jmp(-static_cast<int>(callee)), InitTempData(Bytes(10)), Ret()}));
    machine.exec->SetLimits({.maxTempData = 20});
    EXPECT_EQ(machine.Run(0, 10000), kFailed);
    EXPECT_EQ(machine.Ids(), std::vector<unsigned int>{229});
}

TEST(ExecLimits, StopTheDefaultTemporaryDataAt256MiB) {
    constexpr unsigned int kMiB = 1024 * 1024;
    Machine machine(Join({InitTempData(Bytes(kMiB)), Call(1, 0)}));
    EXPECT_EQ(machine.Run(0, 1000000), kFailed);
    EXPECT_EQ(machine.MessageText(), "Internal logic error: Temporary data overflow.");
    EXPECT_EQ(machine.exec->GetCodeStackSize(), 256U);
}

}  // namespace
