#include "vm/SFCControlBlocks.h"

#include <cstdint>
#include <cstring>

#include "vm/BooleanEdge.h"
#include "vm/MemoryRef.h"
#include "vm/VirtualMachineExec.h"

namespace {

// Byte offsets, relative to the base of the block or of the element.
using Offset = unsigned int;

namespace step {
constexpr Offset kX = 0, kPreviousX = 1, kT = 2, kActivationTime = 10;
}

namespace flip_flop {
constexpr Offset kSet = 0, kReset = 1, kQ = 2, kSize = 3;
}

namespace timer {
constexpr Offset kIN = 0, kPT = 1, kQ = 9, kET = 10, kStartTime = 18, kPreviousIN = 26, kSize = 27;
}

namespace edge {
constexpr Offset kCLK = 0, kQ = 1, kMemory = 2, kSize = 3;
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

// A block is found once and then worked on as bytes: an evaluation touches some hundred fields.

bool GetBool(const unsigned char* field) noexcept {
    return *field != 0;
}

void SetBool(unsigned char* field, bool value) noexcept {
    *field = value;
}

void CopyBool(unsigned char* block, Offset from, Offset to) noexcept {
    block[to] = block[from] != 0;
}

/// Times wrap in 64 bits.
std::uint64_t GetTime(const unsigned char* field) noexcept {
    std::uint64_t time;
    std::memcpy(&time, field, sizeof(time));
    return time;
}

void SetTime(unsigned char* field, std::uint64_t time) noexcept {
    std::memcpy(field, &time, sizeof(time));
}

std::uint64_t Now(const CVirtualMachineExec& exec) noexcept {
    return static_cast<std::uint64_t>(exec.GetCurrentTimestampMS());
}

void RunFlipFlop(unsigned char* element) noexcept {
    const bool isSet = GetBool(element + flip_flop::kSet) || GetBool(element + flip_flop::kQ);
    SetBool(element + flip_flop::kQ, isSet && !GetBool(element + flip_flop::kReset));
}

void RunTimer(unsigned char* element, std::uint64_t now) noexcept {
    const bool in = GetBool(element + timer::kIN);
    bool q = false;
    std::uint64_t elapsed = 0;
    if (in && !GetBool(element + timer::kPreviousIN)) {
        SetTime(element + timer::kStartTime, now);
    } else if (in) {
        const std::uint64_t preset = GetTime(element + timer::kPT);
        elapsed = now - GetTime(element + timer::kStartTime);
        q = static_cast<std::int64_t>(elapsed) >= static_cast<std::int64_t>(preset);
        if (q) elapsed = preset;
    }
    SetBool(element + timer::kPreviousIN, in);
    SetBool(element + timer::kQ, q);
    SetTime(element + timer::kET, elapsed);
}

template <void (BooleanEdge::*kProcess)() noexcept>
void RunTrigger(unsigned char* element) noexcept {
    BooleanEdge trigger{
        .output = false, .input = GetBool(element + edge::kCLK), .memory = GetBool(element + edge::kMemory)};
    (trigger.*kProcess)();
    SetBool(element + edge::kQ, trigger.output);
    SetBool(element + edge::kMemory, trigger.memory);
}

constexpr auto kRunRisingEdge = RunTrigger<&BooleanEdge::ProcessRisingEdge>;
constexpr auto kRunFallingEdge = RunTrigger<&BooleanEdge::ProcessFallingEdge>;

/// Hands the qualifiers, the reset and the duration to the elements.
void SetElementInputs(unsigned char* block) noexcept {
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
    const std::uint64_t duration = GetTime(block + action::kT);
    for (const Offset timerBase : action::kTimers)
        SetTime(block + timerBase + timer::kPT, duration);
}

void RunElements(unsigned char* block, std::uint64_t now) noexcept {
    for (const Offset flipFlop : action::kFlipFlops)
        RunFlipFlop(block + flipFlop);
    for (const Offset timerBase : action::kTimers)
        RunTimer(block + timerBase, now);
    kRunRisingEdge(block + action::kEdgeP);
    kRunRisingEdge(block + action::kEdgeP1);
    kRunFallingEdge(block + action::kEdgeP0);

    // The elements behind others see their outputs of this scan in a second run.
    CopyBool(block, action::kFlipFlopSD + flip_flop::kQ, action::kTimerSD + timer::kIN);
    CopyBool(block, action::kTimerDS + timer::kQ, action::kFlipFlopDS + flip_flop::kSet);
    CopyBool(block, action::kFlipFlopSL + flip_flop::kQ, action::kTimerSL + timer::kIN);
    RunTimer(block + action::kTimerSD, now);
    RunTimer(block + action::kTimerDS, now);
    RunTimer(block + action::kTimerSL, now);
}

/// Whether any qualifier keeps the action active.
bool IsActive(const unsigned char* block) noexcept {
    const auto flipFlop = [&](Offset base) { return GetBool(block + base + flip_flop::kQ); };
    const auto expired = [&](Offset base) { return GetBool(block + base + timer::kQ); };
    return GetBool(block + action::kN) || flipFlop(action::kFlipFlopS) ||
           (GetBool(block + action::kL) && !expired(action::kTimerL)) || expired(action::kTimerD) ||
           GetBool(block + action::kEdgeP + edge::kQ) || expired(action::kTimerSD) || flipFlop(action::kFlipFlopDS) ||
           (flipFlop(action::kFlipFlopSL) && !expired(action::kTimerSL));
}

constexpr unsigned int kStepSize = 18;
constexpr unsigned int kActionSize = 180;

}  // namespace

const VMSFCControlBlocks::ControlBlock VMSFCControlBlocks::m_ControlBlockLookup[m_ControlBlockLookupLength] = {
    {1, kStepSize, StepControlBlock},
    {2, kActionSize, ActionControlBlock},
};

InstructionResult VMSFCControlBlocks::ExecuteControlBlock(CVirtualMachineExec& exec, unsigned char type,
                                                          unsigned int dataSize, CMemoryRef& block, CErrorLog& log) {
    for (const ControlBlock& row : m_ControlBlockLookup) {
        if (row.type == type && row.dataSize == dataSize) return row.handler(exec, block, log);
    }
    return InstructionResult::Failed;
}

InstructionResult VMSFCControlBlocks::StepControlBlock(CVirtualMachineExec& exec, CMemoryRef& block,
                                                       CErrorLog& /*log*/) {
    unsigned char* const bytes = block.GetBytes(0, kStepSize);
    if (bytes == nullptr) return InstructionResult::Continue;
    const bool isActive = GetBool(bytes + step::kX);
    if (isActive) {
        const std::uint64_t now = Now(exec);
        if (!GetBool(bytes + step::kPreviousX)) SetTime(bytes + step::kActivationTime, now);
        SetTime(bytes + step::kT, now - GetTime(bytes + step::kActivationTime));
    }
    SetBool(bytes + step::kPreviousX, isActive);
    return InstructionResult::Continue;
}

InstructionResult VMSFCControlBlocks::ActionControlBlock(CVirtualMachineExec& exec, CMemoryRef& block,
                                                         CErrorLog& /*log*/) {
    unsigned char* const bytes = block.GetBytes(0, kActionSize);
    if (bytes == nullptr) return InstructionResult::Continue;
    SetElementInputs(bytes);
    RunElements(bytes, Now(exec));
    const bool q = !GetBool(bytes + action::kR) && IsActive(bytes);
    SetBool(bytes + action::kQ, q);
    SetBool(bytes + action::kEdgeQ + edge::kCLK, q);
    kRunFallingEdge(bytes + action::kEdgeQ);
    const bool hasEdge = GetBool(bytes + action::kEdgeQ + edge::kQ) || GetBool(bytes + action::kEdgeP1 + edge::kQ) ||
                         GetBool(bytes + action::kEdgeP0 + edge::kQ);
    SetBool(bytes + action::kA, q || hasEdge);
    return InstructionResult::Continue;
}

void VMSFCControlBlocks::ExecuteRS(CVirtualMachineExec& /*exec*/, CMemoryRef& block, unsigned int base) {
    if (unsigned char* const element = block.GetBytes(base, flip_flop::kSize)) RunFlipFlop(element);
}

void VMSFCControlBlocks::ExecuteTON(CVirtualMachineExec& exec, CMemoryRef& block, unsigned int base) {
    if (unsigned char* const element = block.GetBytes(base, timer::kSize)) RunTimer(element, Now(exec));
}

void VMSFCControlBlocks::ExecuteRTRIG(CVirtualMachineExec& /*exec*/, CMemoryRef& block, unsigned int base) {
    if (unsigned char* const element = block.GetBytes(base, edge::kSize)) kRunRisingEdge(element);
}

void VMSFCControlBlocks::ExecuteFTRIG(CVirtualMachineExec& /*exec*/, CMemoryRef& block, unsigned int base) {
    if (unsigned char* const element = block.GetBytes(base, edge::kSize)) kRunFallingEdge(element);
}
