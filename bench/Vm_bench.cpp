// Kernels per instruction family. Each program is a loop with a counter in global data; "instructions" is the rate.
#include <cstring>
#include <initializer_list>
#include <vector>

#include <benchmark/benchmark.h>

#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "platform/ErrorLog.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kIterations = 1000;
constexpr unsigned int kGlobalSize = 256;

Bytes Join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes U32(unsigned int value) {
    Bytes bytes(sizeof(value));
    std::memcpy(bytes.data(), &value, sizeof(value));
    return bytes;
}

Bytes Block(unsigned int size) {
    return Join({U32(size + 4), Bytes(size), {0xEF, 0xBE, 0x0D, 0x60}});
}

const Bytes kPush = {10};
const Bytes kPop = {11};
const Bytes kRet = {12};
const Bytes kAdd = {15, 1};
const Bytes kLess = {15, 11};

Bytes LdDint(int value) {
    return Join({{1, 8}, U32(static_cast<unsigned int>(value))});
}
Bytes LdAddr(unsigned char kind, unsigned int offset) {
    return Join({{2, kind}, U32(offset)});
}
Bytes Load(unsigned int offset) {
    return Join({LdAddr(1, offset), {4, 8, 4, 0}});  // LD ADDR Global, PTR LD DINT
}
Bytes Store(unsigned int offset) {
    return Join({kPush, LdAddr(1, offset), {5, 8, 4, 0}});  // PUSH, LD ADDR Global, PTR ST DINT
}
Bytes Jump(unsigned char opcode, int offset) {
    return Join({{opcode}, U32(static_cast<unsigned int>(offset))});
}

/// FOR i := 0 TO kIterations: body (which leaves the stack as it was), with i in global bytes 0 to 3; `functions`
/// stands behind the loop.
Bytes Loop(const Bytes& body, const Bytes& functions = {}) {
    const Bytes start = Join({LdDint(0), Store(0)});
    const Bytes count = Join({Load(0), kPush, LdDint(1), kAdd, Store(0), kPush, LdDint(kIterations), kLess});
    const Bytes loop = Join({body, count});
    const int back = -static_cast<int>(loop.size() + 5);
    return Join({start, loop, Jump(18, back), kRet, functions});
}

/// Where the functions behind a loop with this body begin.
unsigned int FunctionsAt(const Bytes& body) {
    return static_cast<unsigned int>(Loop(body).size());
}

void RunProgram(benchmark::State& state, const Bytes& code) {
    const Bytes bytes = Join({{'V', 'I', 5, 0},
                              Block(kGlobalSize),
                              Block(0),
                              U32(static_cast<unsigned int>(code.size())),
                              code,
                              U32(0),
                              U32(0),
                              U32(0)});
    CBinaryInputMemory input(bytes);
    CErrorLog log;
    CVirtualMachine image;
    if (!image.LoadVMImage(log, input)) return state.SkipWithError("no image");
    CMemoryBlock globalData = image.GetGlobalData();
    const CClientAccessContext access;
    CVirtualMachineExec exec(access, "", &image, &globalData, nullptr);
    const long long timestamp = 1000;
    std::int64_t instructions = 0;
    for (auto _ : state) {
        exec.StartNewProgram(0, 10000000, 0, &timestamp);
        if (exec.ExecuteUntilCompleteOrSuspended(log) != RunResult::Completed) return state.SkipWithError("failed");
        instructions += exec.GetInstructionCount();
    }
    state.counters["instructions"] = benchmark::Counter(static_cast<double>(instructions), benchmark::Counter::kIsRate);
}

void Vm_EmptyLoop(benchmark::State& state) {
    RunProgram(state, Loop({}));
}
BENCHMARK(Vm_EmptyLoop);

void Vm_LoadAddStore(benchmark::State& state) {
    RunProgram(state, Loop(Join({Load(4), kPush, Load(8), kAdd, kPush, Load(12), kAdd, Store(4)})));
}
BENCHMARK(Vm_LoadAddStore);

void Vm_StackMoves(benchmark::State& state) {
    RunProgram(state, Loop({10, 6, 0, 10, 6, 0, 10, 6, 1, 7, 0, 11, 11, 11}));
}
BENCHMARK(Vm_StackMoves);

void Vm_Jumps(benchmark::State& state) {
    const Bytes skip = Join({Jump(17, 0), Jump(16, 1), kRet, Jump(19, 0)});
    RunProgram(state, Loop(Join({skip, skip, skip, skip})));
}
BENCHMARK(Vm_Jumps);

void Vm_CallWithTempData(benchmark::State& state) {
    const auto call = [](unsigned int offset) { return Join({kPush, LdDint(5), {21, 1}, U32(offset), kPop}); };
    // Temporary data; temp := argument; return it.
    const Bytes function = Join({{22}, U32(8), Bytes(8), kPush, {6, 0}, kPush, LdAddr(3, 4), {5, 8, 4, 0}, kRet});
    RunProgram(state, Loop(call(FunctionsAt(call(0))), function));
}
BENCHMARK(Vm_CallWithTempData);

void Vm_BuiltInFunction(benchmark::State& state) {
    // ABS(-5)
    RunProgram(state, Loop(Join({kPush, kPush, LdDint(-5), {20, 1, 1, 2}, kPop})));
}
BENCHMARK(Vm_BuiltInFunction);

void Vm_FunctionBlock(benchmark::State& state) {
    // SR: EN, no ENO, S1, R, Q1 not connected, instance at 16
    RunProgram(state, Loop(Join({kPush,
                                 {1, 1, 1},
                                 kPush,
                                 kPush,
                                 {1, 1, 1},
                                 kPush,
                                 {1, 1, 0},
                                 kPush,
                                 kPush,
                                 LdAddr(1, 16),
                                 {24, 1, 1, 6},
                                 U32(5),
                                 kPop})));
}
BENCHMARK(Vm_FunctionBlock);

void Vm_SfcAction(benchmark::State& state) {
    RunProgram(state, Loop(Join({kPush, LdAddr(1, 16), {28, 2, 180, 0}, kPop})));
}
BENCHMARK(Vm_SfcAction);

void Vm_StringCopy(benchmark::State& state) {
    const Bytes text = {1, 20, 5, 0, 'h', 'e', 'l', 'l', 'o'};
    RunProgram(state,
               Loop(Join({kPush, text, kPush, LdAddr(1, 16), {5, 20, 20, 0}, LdAddr(1, 16), {4, 20, 20, 0}, kPop})));
}
BENCHMARK(Vm_StringCopy);

void Vm_Scan(benchmark::State& state) {
    RunProgram(state, kRet);
}
BENCHMARK(Vm_Scan);

}  // namespace
