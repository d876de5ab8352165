#include "vm/SFCControlBlocks.h"

#include "vm/BooleanEdge.h"
#include "vm/MemoryRef.h"
#include "vm/VirtualMachineExec.h"

const VMSFCControlBlocks::ControlBlock VMSFCControlBlocks::m_ControlBlockLookup[m_ControlBlockLookupLength] = {
    {1, 18, StepControlBlock},
    {2, 180, ActionControlBlock},
};

namespace {

// Byte offsets, relative to the base of the block or of the element.
using Offset = unsigned int;

namespace step {
constexpr Offset kX = 0, kPreviousX = 1, kT = 2, kActivationTime = 10;
}

namespace flip_flop {
constexpr Offset kSet = 0, kReset = 1, kQ = 2;
}

namespace timer {
constexpr Offset kIN = 0, kPT = 1, kQ = 9, kET = 10, kStartTime = 18, kPreviousIN = 26;
}

namespace edge {
constexpr Offset kCLK = 0, kQ = 1, kMemory = 2;
}

namespace action {
// Qualifiers of the association, its duration, and the outputs.
constexpr Offset kN = 0, kR = 1, kS = 2, kL = 3, kD = 4, kP = 5, kP1 = 6, kP0 = 7, kSD = 8, kDS = 9, kSL = 10;
constexpr Offset kT = 11, kQ = 19, kA = 20;
// The elements.
constexpr Offset kFlipFlopS = 21, kFlipFlopSD = 24, kFlipFlopDS = 27, kFlipFlopSL = 30;
constexpr Offset kTimerL = 33, kTimerD = 60, kTimerSD = 87, kTimerDS = 114, kTimerSL = 141;
constexpr Offset kEdgeP = 168, kEdgeP1 = 171, kEdgeP0 = 174, kEdgeQ = 177;

constexpr Offset kFlipFlops[] = {kFlipFlopS, kFlipFlopSD, kFlipFlopDS, kFlipFlopSL};
constexpr Offset kTimers[] = {kTimerL, kTimerD, kTimerSD, kTimerDS, kTimerSL};
}  // namespace action

/// Times wrap in 64 bits.
long long Elapsed(long long now, long long start) noexcept {
    return static_cast<long long>(static_cast<unsigned long long>(now) - static_cast<unsigned long long>(start));
}

void CopyBool(CMemoryRef& block, Offset from, Offset to) {
    block.SetBOOLAtOffset(to, block.GetBOOLAtOffset(from));
}

BooleanEdge LoadEdge(const CMemoryRef& block, Offset base) {
    return {.output = false,
            .input = block.GetBOOLAtOffset(base + edge::kCLK),
            .memory = block.GetBOOLAtOffset(base + edge::kMemory)};
}

void StoreEdge(CMemoryRef& block, unsigned int base, const BooleanEdge& result) {
    block.SetBOOLAtOffset(base + edge::kQ, result.output);
    block.SetBOOLAtOffset(base + edge::kMemory, result.memory);
}

/// Hands the qualifiers, the reset and the duration to the elements.
void SetElementInputs(CMemoryRef& block) {
    for (const Offset flipFlop : action::kFlipFlops)
        CopyBool(block, action::kR, flipFlop + flip_flop::kReset);
    CopyBool(block, action::kS, action::kFlipFlopS + flip_flop::kSet);
    CopyBool(block, action::kL, action::kTimerL + timer::kIN);
    CopyBool(block, action::kD, action::kTimerD + timer::kIN);
    CopyBool(block, action::kP, action::kEdgeP + edge::kCLK);
    CopyBool(block, action::kP1, action::kEdgeP1 + edge::kCLK);
    CopyBool(block, action::kP0, action::kEdgeP0 + edge::kCLK);
    CopyBool(block, action::kSD, action::kFlipFlopSD + flip_flop::kSet);
    CopyBool(block, action::kDS, action::kTimerDS + timer::kIN);
    CopyBool(block, action::kSL, action::kFlipFlopSL + flip_flop::kSet);
    const long long duration = block.GetLINTAtOffset(action::kT);
    for (const Offset timerBase : action::kTimers)
        block.SetLINTAtOffset(timerBase + timer::kPT, duration);
}

/// Whether any qualifier keeps the action active.
bool IsActive(const CMemoryRef& block) {
    const auto flipFlop = [&](Offset base) { return block.GetBOOLAtOffset(base + flip_flop::kQ); };
    const auto expired = [&](Offset base) { return block.GetBOOLAtOffset(base + timer::kQ); };
    return block.GetBOOLAtOffset(action::kN) || flipFlop(action::kFlipFlopS) ||
           (block.GetBOOLAtOffset(action::kL) && !expired(action::kTimerL)) || expired(action::kTimerD) ||
           block.GetBOOLAtOffset(action::kEdgeP + edge::kQ) || expired(action::kTimerSD) ||
           flipFlop(action::kFlipFlopDS) || (flipFlop(action::kFlipFlopSL) && !expired(action::kTimerSL));
}

}  // namespace

InstructionResult VMSFCControlBlocks::ExecuteControlBlock(CVirtualMachineExec& exec, unsigned char type,
                                                          unsigned int dataSize, CMemoryRef& block, CErrorLog& log) {
    for (const ControlBlock& row : m_ControlBlockLookup) {
        if (row.type == type && row.dataSize == dataSize) return row.handler(exec, block, log);
    }
    return InstructionResult::Failed;
}

InstructionResult VMSFCControlBlocks::StepControlBlock(CVirtualMachineExec& exec, CMemoryRef& block,
                                                       CErrorLog& /*log*/) {
    const bool isActive = block.GetBOOLAtOffset(step::kX);
    if (isActive) {
        const long long now = exec.GetCurrentTimestampMS();
        if (!block.GetBOOLAtOffset(step::kPreviousX)) block.SetLINTAtOffset(step::kActivationTime, now);
        block.SetLINTAtOffset(step::kT, Elapsed(now, block.GetLINTAtOffset(step::kActivationTime)));
    }
    block.SetBOOLAtOffset(step::kPreviousX, isActive);
    return InstructionResult::Continue;
}

InstructionResult VMSFCControlBlocks::ActionControlBlock(CVirtualMachineExec& exec, CMemoryRef& block,
                                                         CErrorLog& /*log*/) {
    SetElementInputs(block);
    for (const Offset flipFlop : action::kFlipFlops)
        ExecuteRS(exec, block, flipFlop);
    for (const Offset timerBase : action::kTimers)
        ExecuteTON(exec, block, timerBase);
    ExecuteRTRIG(exec, block, action::kEdgeP);
    ExecuteRTRIG(exec, block, action::kEdgeP1);
    ExecuteFTRIG(exec, block, action::kEdgeP0);

    // The elements behind others see their outputs of this scan in a second run.
    CopyBool(block, action::kFlipFlopSD + flip_flop::kQ, action::kTimerSD + timer::kIN);
    CopyBool(block, action::kTimerDS + timer::kQ, action::kFlipFlopDS + flip_flop::kSet);
    CopyBool(block, action::kFlipFlopSL + flip_flop::kQ, action::kTimerSL + timer::kIN);
    ExecuteTON(exec, block, action::kTimerSD);
    ExecuteTON(exec, block, action::kTimerDS);
    ExecuteTON(exec, block, action::kTimerSL);

    const bool q = !block.GetBOOLAtOffset(action::kR) && IsActive(block);
    block.SetBOOLAtOffset(action::kQ, q);
    block.SetBOOLAtOffset(action::kEdgeQ + edge::kCLK, q);
    ExecuteFTRIG(exec, block, action::kEdgeQ);
    block.SetBOOLAtOffset(action::kA, q || block.GetBOOLAtOffset(action::kEdgeQ + edge::kQ) ||
                                          block.GetBOOLAtOffset(action::kEdgeP1 + edge::kQ) ||
                                          block.GetBOOLAtOffset(action::kEdgeP0 + edge::kQ));
    return InstructionResult::Continue;
}

void VMSFCControlBlocks::ExecuteRS(CVirtualMachineExec& /*exec*/, CMemoryRef& block, Offset base) {
    const bool set = block.GetBOOLAtOffset(base + flip_flop::kSet);
    const bool reset = block.GetBOOLAtOffset(base + flip_flop::kReset);
    const bool q = block.GetBOOLAtOffset(base + flip_flop::kQ);
    block.SetBOOLAtOffset(base + flip_flop::kQ, (set || q) && !reset);
}

void VMSFCControlBlocks::ExecuteTON(CVirtualMachineExec& exec, CMemoryRef& block, Offset base) {
    const bool in = block.GetBOOLAtOffset(base + timer::kIN);
    const long long now = exec.GetCurrentTimestampMS();
    bool q = false;
    long long elapsed = 0;
    if (in && !block.GetBOOLAtOffset(base + timer::kPreviousIN)) {
        block.SetLINTAtOffset(base + timer::kStartTime, now);
    } else if (in) {
        const long long preset = block.GetLINTAtOffset(base + timer::kPT);
        elapsed = Elapsed(now, block.GetLINTAtOffset(base + timer::kStartTime));
        q = elapsed >= preset;
        if (q) elapsed = preset;
    }
    block.SetBOOLAtOffset(base + timer::kPreviousIN, in);
    block.SetBOOLAtOffset(base + timer::kQ, q);
    block.SetLINTAtOffset(base + timer::kET, elapsed);
}

void VMSFCControlBlocks::ExecuteRTRIG(CVirtualMachineExec& /*exec*/, CMemoryRef& block, Offset base) {
    BooleanEdge trigger = LoadEdge(block, base);
    trigger.ProcessRisingEdge();
    StoreEdge(block, base, trigger);
}

void VMSFCControlBlocks::ExecuteFTRIG(CVirtualMachineExec& /*exec*/, CMemoryRef& block, Offset base) {
    BooleanEdge trigger = LoadEdge(block, base);
    trigger.ProcessFallingEdge();
    StoreEdge(block, base, trigger);
}
