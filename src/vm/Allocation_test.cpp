// That running allocates nothing and that no number of scans grows anything.
#include <cstdlib>
#include <new>

#include "vm/TestImage.h"

namespace {

std::size_t allocationCount = 0;

}  // namespace

// Not inlined, so that no compiler sees memory of malloc() meet another release function.
[[gnu::noinline]] void* operator new(std::size_t size) {
    ++allocationCount;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new[](std::size_t size) {
    return operator new(size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete[](void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

using namespace vmtest;

/// Allocations of the second of two equal runs.
std::size_t AllocationsOfRun(Machine& machine, RunResult expected, unsigned int limit) {
    EXPECT_EQ(machine.Run(0, limit), expected);
    machine.log.Clear();
    machine.exec->StartNewProgram(0, limit, 0, &machine.timestamp);
    const std::size_t before = allocationCount;
    const RunResult result = machine.exec->ExecuteUntilCompleteOrSuspended(machine.log);
    const std::size_t count = allocationCount - before;
    EXPECT_EQ(result, expected);
    return count;
}

TEST(Allocation, AScalarLoopAllocatesNothing) {
    // 0: PUSH; LD ADDR; PTR LD; PUSH; LD 1; ADD; PUSH; LD ADDR; PTR ST; PUSH; LD 2000; LT; JMPZ end; POP; JMP 0; RET
    const Bytes head = Join({Push(), LdAddr(kGlobal, 0), PtrLd(kDInt, 4), Push(), LdDint(1), Binary(1), Push(),
                             LdAddr(kGlobal, 0), PtrSt(kDInt, 4), Push(), LdDint(2000), Binary(11)});
    const Bytes reset = Join({LdDint(0), Push(), LdAddr(kGlobal, 0), PtrSt(kDInt, 4)});
    const Bytes tail = Join({Jmpz(6), Pop()});
    const int back = -static_cast<int>(head.size() + tail.size() + 5);
    Machine machine(Join({reset, head, tail, Jmp(back), Ret()}));
    EXPECT_EQ(AllocationsOfRun(machine, RunResult::Completed, 100000), 0U);
    EXPECT_GT(machine.exec->GetInstructionCount(), 10000U);
}

TEST(Allocation, CallsWithTemporaryAndLocalDataReuseTheirFrames) {
    // 0 CALL 12; 6 JMP 0; 11 RET; 12 temporary data; local data; a function of the library; a block; RET
    const Bytes body = Join({InitTempData(Bytes(100)), Push(), LdAddr(kTemp, 0), InitLocalData(100), Push(), Push(),
                             LdDint(-5), CallFunction(1, 1, 2), Ret()});
    Machine machine(Join({Call(1, 12), Jmp(-11), Ret(), body}));
    // The limit's message is the only thing made: its entry, its texts.
    const std::size_t ofTheMessage = [] {
        Machine failing(Jmp(-5));
        return AllocationsOfRun(failing, RunResult::Failed, 1000);
    }();
    EXPECT_EQ(AllocationsOfRun(machine, RunResult::Failed, 10000), ofTheMessage);
}

TEST(Allocation, RecursionReusesItsFrames) {
    // Down 1000 frames with temporary data each, and up again. 0 CALL 7; 6 RET; 7: ...
    const Bytes body = Join(
        {InitTempData(Bytes(20)), LdStatus(3), Push(), Ld(kUDInt, U32(1000)), Binary(7), Jmpnz(6), Call(1, 7), Ret()});
    Machine machine(Join({Call(1, 7), Ret(), body}));
    EXPECT_EQ(AllocationsOfRun(machine, RunResult::Completed, 100000), 0U);
}

TEST(Allocation, AMillionScansGrowNothing) {
    // 0 PUSH; 1 CALL 8; 7 RET; 8 temporary data; RET
    Machine machine(Join({Push(), Call(1, 8), Ret(), InitTempData({1, 2, 3}), Ret()}));
    machine.Run();
    const std::size_t before = allocationCount;
    for (int scan = 0; scan < 1000000; ++scan) {
        machine.exec->StartNewProgram(0, 100, 0, &machine.timestamp);
        if (machine.exec->ExecuteUntilCompleteOrSuspended(machine.log) != RunResult::Completed) break;
    }
    EXPECT_EQ(allocationCount, before);
    EXPECT_EQ(machine.exec->GetInstructionCount(), 5U) << "the last scan ran as well";
}

}  // namespace
