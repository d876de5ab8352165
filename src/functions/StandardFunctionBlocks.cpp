#include "functions/StandardFunctionBlocks.h"

#include "functions/FunctionTable.h"
#include "value/TypeTable.h"
#include "value/Value.h"
#include "vm/BooleanEdge.h"
#include "vm/MemoryRef.h"
#include "vm/VirtualMachineExec.h"

/// One call of a block. Elements are the indexes of `inputs`; errors name them counted from 1.
struct BlockCall {
    CVirtualMachineExec& exec;
    CBuiltInFunctionContext& context;
    const CMemoryRef& instance;
    CValue* inputs;
    CErrorLog& log;

    [[nodiscard]] bool ReadBool(int element, bool& out) {
        context.SetArgumentIndex(element + 1);
        return inputs[element].GetBoolValue(log, context, out);
    }
    [[nodiscard]] bool ReadInt(int element, short& out) {
        context.SetArgumentIndex(element + 1);
        return inputs[element].GetIntegerValue(log, context, out);
    }
    [[nodiscard]] bool ReadTime(int element, long long& out) {
        context.SetArgumentIndex(element + 1);
        return inputs[element].GetTimeValue(log, context, out);
    }
    [[nodiscard]] bool WriteBool(int element, bool value) {
        return exec.SetBoolValueViaPointer(log, inputs[element], value);
    }
    [[nodiscard]] bool WriteInt(int element, short value) {
        return exec.SetIntegerValueViaPointer(log, inputs[element], value);
    }
    [[nodiscard]] bool WriteTime(int element, long long value) {
        return exec.SetTimeValueViaPointer(log, inputs[element], value);
    }
};

namespace {

using Type = ElementaryType;
using Role = BlockFieldRole;

// Every block: read the inputs, compute the new state, store all fields, write the outputs. A failing input leaves the
// instance data alone, a failing output the outputs behind it.

constexpr BlockField kEn = {"EN", Type::Bool, 0, Role::Control};
constexpr BlockField kEno = {"ENO", Type::Bool, 1, Role::Control};

// --- bistables: SR, RS ---

namespace bistable {
constexpr unsigned char kFirst = 2;
constexpr unsigned char kSecond = 3;
constexpr unsigned char kQ1 = 4;
}  // namespace bistable

constexpr BlockField kSrFields[] = {kEn,
                                    kEno,
                                    {"S1", Type::Bool, bistable::kFirst, Role::Input},
                                    {"R", Type::Bool, bistable::kSecond, Role::Input},
                                    {"Q1", Type::Bool, bistable::kQ1, Role::Output}};
constexpr BlockField kRsFields[] = {kEn,
                                    kEno,
                                    {"S", Type::Bool, bistable::kFirst, Role::Input},
                                    {"R1", Type::Bool, bistable::kSecond, Role::Input},
                                    {"Q1", Type::Bool, bistable::kQ1, Role::Output}};

bool SetDominant(bool set1, bool reset, bool q1) noexcept {
    return set1 || (q1 && !reset);
}

bool ResetDominant(bool set, bool reset1, bool q1) noexcept {
    return (q1 || set) && !reset1;
}

template <bool (*kNext)(bool first, bool second, bool q1) noexcept>
bool ExecuteBistable(BlockCall& call) {
    bool first = false;
    bool second = false;
    if (!call.ReadBool(0, first) || !call.ReadBool(1, second)) return false;
    const bool q1 = kNext(first, second, call.instance.GetBOOLAtOffset(bistable::kQ1));
    call.instance.SetBOOLAtOffset(bistable::kFirst, first);
    call.instance.SetBOOLAtOffset(bistable::kSecond, second);
    call.instance.SetBOOLAtOffset(bistable::kQ1, q1);
    return call.WriteBool(2, q1);
}

// --- edge detectors: R_TRIG, F_TRIG ---

namespace trigger {
constexpr unsigned char kClk = 2;
constexpr unsigned char kQ = 3;
constexpr unsigned char kMemory = 4;
}  // namespace trigger

constexpr BlockField kTriggerFields[] = {kEn,
                                         kEno,
                                         {"CLK", Type::Bool, trigger::kClk, Role::Input},
                                         {"Q", Type::Bool, trigger::kQ, Role::Output},
                                         {"M", Type::Bool, trigger::kMemory, Role::State}};

template <void (BooleanEdge::*kProcess)() noexcept>
bool ExecuteTrigger(BlockCall& call) {
    BooleanEdge edge;
    if (!call.ReadBool(0, edge.input)) return false;
    edge.memory = call.instance.GetBOOLAtOffset(trigger::kMemory);
    (edge.*kProcess)();
    call.instance.SetBOOLAtOffset(trigger::kClk, edge.input);
    call.instance.SetBOOLAtOffset(trigger::kQ, edge.output);
    call.instance.SetBOOLAtOffset(trigger::kMemory, edge.memory);
    return call.WriteBool(1, edge.output);
}

// --- counters: CTU, CTD ---

namespace counter {
constexpr unsigned char kEdge = 2;  ///< an edge record: output, input, memory
constexpr unsigned char kCount = 3;
constexpr unsigned char kMemory = 4;
constexpr unsigned char kControl = 5;  ///< R, LD
constexpr unsigned char kPv = 6;
constexpr unsigned char kQ = 8;
constexpr unsigned char kCv = 9;
}  // namespace counter

constexpr BlockField kCtuFields[] = {kEn,
                                     kEno,
                                     {"CU_EDGE", Type::Bool, counter::kEdge, Role::State},
                                     {"CU", Type::Bool, counter::kCount, Role::Input},
                                     {"CU_M", Type::Bool, counter::kMemory, Role::State},
                                     {"R", Type::Bool, counter::kControl, Role::Input},
                                     {"PV", Type::Int, counter::kPv, Role::Input},
                                     {"Q", Type::Bool, counter::kQ, Role::Output},
                                     {"CV", Type::Int, counter::kCv, Role::Output}};
constexpr BlockField kCtdFields[] = {kEn,
                                     kEno,
                                     {"CD_EDGE", Type::Bool, counter::kEdge, Role::State},
                                     {"CD", Type::Bool, counter::kCount, Role::Input},
                                     {"CD_M", Type::Bool, counter::kMemory, Role::State},
                                     {"LD", Type::Bool, counter::kControl, Role::Input},
                                     {"PV", Type::Int, counter::kPv, Role::Input},
                                     {"Q", Type::Bool, counter::kQ, Role::Output},
                                     {"CV", Type::Int, counter::kCv, Role::Output}};

struct CounterState {
    bool rose = false;     ///< the count input rose with this call
    bool control = false;  ///< R, LD
    short pv = 0;
    bool q = false;
    short cv = 0;
};

/// Stops at PV.
void CountUp(CounterState& state) noexcept {
    if (state.control) {
        state.cv = 0;
    } else if (state.rose && state.cv < state.pv) {
        ++state.cv;
    }
    state.q = state.cv >= state.pv;
}

/// Stops at 0.
void CountDown(CounterState& state) noexcept {
    if (state.control) {
        state.cv = state.pv;
    } else if (state.rose && state.cv > 0) {
        --state.cv;
    }
    state.q = state.cv <= 0;
}

template <void (*kStep)(CounterState& state) noexcept>
bool ExecuteCounter(BlockCall& call) {
    bool count = false;
    CounterState state;
    if (!call.ReadBool(0, count) || !call.ReadBool(1, state.control) || !call.ReadInt(2, state.pv)) return false;
    if (!call.instance.SetEdgeAtOffset(counter::kEdge, true, count)) return false;
    state.rose = call.instance.GetBOOLAtOffset(counter::kEdge);
    state.cv = call.instance.GetINTAtOffset(counter::kCv);
    kStep(state);
    call.instance.SetBOOLAtOffset(counter::kControl, state.control);
    call.instance.SetINTAtOffset(counter::kPv, state.pv);
    call.instance.SetBOOLAtOffset(counter::kQ, state.q);
    call.instance.SetINTAtOffset(counter::kCv, state.cv);
    return call.WriteBool(3, state.q) && call.WriteInt(4, state.cv);
}

// --- timers: TP, TON, TOF ---

namespace timer {
constexpr unsigned char kIn = 2;
constexpr unsigned char kPt = 3;
constexpr unsigned char kQ = 11;
constexpr unsigned char kEt = 12;
constexpr unsigned char kStart = 20;
constexpr unsigned char kFlag = 28;
}  // namespace timer

constexpr BlockField kTimerFields[] = {kEn,
                                       kEno,
                                       {"IN", Type::Bool, timer::kIn, Role::Input},
                                       {"PT", Type::Time, timer::kPt, Role::Input},
                                       {"Q", Type::Bool, timer::kQ, Role::Output},
                                       {"ET", Type::Time, timer::kEt, Role::Output},
                                       {"START", Type::Time, timer::kStart, Role::State},
                                       {"FLAG", Type::Bool, timer::kFlag, Role::State}};

/// Times are milliseconds.
struct TimerState {
    bool in = false;
    long long pt = 0;
    bool q = false;
    long long et = 0;
    long long start = 0;  ///< VM time when timing began
    bool flag = false;    ///< TP, TOF: IN of the call before; TON: timing
};

/// Wraps, so that a clock that was set back or a stored start of any value does no harm.
long long ElapsedSince(long long start, long long now) noexcept {
    return static_cast<long long>(static_cast<unsigned long long>(now) - static_cast<unsigned long long>(start));
}

/// A pulse runs to its end whatever IN does; ET stays at PT until IN falls.
void StepPulse(TimerState& state, long long now) noexcept {
    if (state.q) {
        state.et = ElapsedSince(state.start, now);
        if (state.et >= state.pt) {
            state.q = false;
            state.et = state.in ? state.pt : 0;
        }
    } else if (state.in && !state.flag) {
        state.q = true;
        state.start = now;
    } else if (!state.in) {
        state.et = 0;
    }
    state.flag = state.in;
}

void StepOnDelay(TimerState& state, long long now) noexcept {
    if (!state.in) {
        state.flag = false;
        state.q = false;
        state.et = 0;
    } else if (!state.flag) {
        state.flag = true;
        state.start = now;
    } else {
        state.et = ElapsedSince(state.start, now);
        if (state.et >= state.pt) {
            state.et = state.pt;
            state.q = true;
        }
    }
}

/// With zeroed data and IN FALSE the delay counts from time 0, so it is over at once.
void StepOffDelay(TimerState& state, long long now) noexcept {
    if (state.in) {
        state.flag = true;
        state.q = true;
        state.et = 0;
    } else if (state.flag) {
        state.flag = false;
        state.start = now;
    } else {
        state.et = ElapsedSince(state.start, now);
        if (state.et >= state.pt) {
            state.et = state.pt;
            state.q = false;
        }
    }
}

template <void (*kStep)(TimerState& state, long long now) noexcept>
bool ExecuteTimer(BlockCall& call) {
    TimerState state;
    if (!call.ReadBool(0, state.in) || !call.ReadTime(1, state.pt)) return false;
    state.q = call.instance.GetBOOLAtOffset(timer::kQ);
    state.et = call.instance.GetLINTAtOffset(timer::kEt);
    state.start = call.instance.GetLINTAtOffset(timer::kStart);
    state.flag = call.instance.GetBOOLAtOffset(timer::kFlag);
    kStep(state, call.exec.GetCurrentTimestampMS());
    call.instance.SetBOOLAtOffset(timer::kIn, state.in);
    call.instance.SetLINTAtOffset(timer::kPt, state.pt);
    call.instance.SetBOOLAtOffset(timer::kQ, state.q);
    call.instance.SetLINTAtOffset(timer::kEt, state.et);
    call.instance.SetLINTAtOffset(timer::kStart, state.start);
    call.instance.SetBOOLAtOffset(timer::kFlag, state.flag);
    return call.WriteBool(2, state.q) && call.WriteTime(3, state.et);
}

// --- the table ---

constexpr unsigned char EndOf(const BlockField& field) noexcept {
    return static_cast<unsigned char>(field.offset + GetTypeInfo(field.type).size);
}

/// The fields lie one behind the other from byte 0 on.
constexpr bool ArePacked(std::span<const BlockField> fields) noexcept {
    unsigned char end = 0;
    for (const BlockField& field : fields) {
        if (field.offset != end) return false;
        end = EndOf(field);
    }
    return true;
}

constexpr unsigned char CountArguments(std::span<const BlockField> fields) noexcept {
    unsigned char count = 0;
    for (const BlockField& field : fields) {
        if (field.role == Role::Input || field.role == Role::Output) ++count;
    }
    return count;
}

constexpr BlockRow MakeRow(unsigned char id, const char* name, std::span<const BlockField> fields,
                           BlockBody body) noexcept {
    return {id, name, EndOf(fields.back()), CountArguments(fields), fields, body};
}

constexpr BlockRow kRows[] = {
    MakeRow(1, "SR", kSrFields, ExecuteBistable<SetDominant>),
    MakeRow(2, "RS", kRsFields, ExecuteBistable<ResetDominant>),
    MakeRow(3, "R_TRIG", kTriggerFields, ExecuteTrigger<&BooleanEdge::ProcessRisingEdge>),
    MakeRow(4, "F_TRIG", kTriggerFields, ExecuteTrigger<&BooleanEdge::ProcessFallingEdge>),
    MakeRow(5, "CTU", kCtuFields, ExecuteCounter<CountUp>),
    MakeRow(6, "CTD", kCtdFields, ExecuteCounter<CountDown>),
    MakeRow(7, "TP", kTimerFields, ExecuteTimer<StepPulse>),
    MakeRow(8, "TON", kTimerFields, ExecuteTimer<StepOnDelay>),
    MakeRow(9, "TOF", kTimerFields, ExecuteTimer<StepOffDelay>),
};

constexpr bool AreRowsSound() noexcept {
    unsigned char id = 0;
    for (const BlockRow& row : kRows) {
        if (row.id != ++id || !ArePacked(row.fields)) return false;
    }
    return true;
}
static_assert(AreRowsSound());

/// Null for an id that no block has.
constexpr const BlockRow* FindBlock(unsigned char id) noexcept {
    const std::size_t index = static_cast<std::size_t>(id) - kRows[0].id;
    return index < std::size(kRows) ? &kRows[index] : nullptr;
}

}  // namespace

std::span<const BlockRow> CVMFunctionBlockStandard::GetTable() noexcept {
    return kRows;
}

CallStatus CVMFunctionBlockStandard::ExecuteFunctionBlock(CVirtualMachineExec& exec, CBuiltInFunctionContext& context,
                                                          CMemoryRef& instance, unsigned int /*dataSize*/,
                                                          unsigned char inputCount, CValue* inputs, CErrorLog& log) {
    const BlockRow* row = FindBlock(context.GetFunctionId());
    // Only code that no compiler made has too few inputs.
    if (row == nullptr || inputCount < row->inputCount) return CallStatus::Invalid;
    BlockCall call{exec, context, instance, inputs, log};
    return row->body(call) ? CallStatus::Continue : CallStatus::Invalid;
}

unsigned int CVMFunctionBlockStandard::GetDataSize(unsigned char id) const {
    const BlockRow* row = FindBlock(id);
    return row == nullptr ? 0 : row->dataSize;
}

const char* CVMFunctionBlockStandard::GetName(unsigned char id) const {
    const BlockRow* row = FindBlock(id);
    return row == nullptr ? "???" : row->name;
}
