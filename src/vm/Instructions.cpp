// The run loop and the instructions.
#include <algorithm>
#include <cstring>

#include "diag/Messages.h"
#include "value/CompositeValue.h"
#include "value/TypeTable.h"
#include "vm/Opcodes.h"
#include "vm/SFCControlBlocks.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace {

constexpr unsigned int kEdgeRecordSize = 3;

/// Types whose bytes in memory are their payload. BOOL is not quite: there any byte but 0 means TRUE.
constexpr std::uint32_t kPlainTypes = [] {
    std::uint32_t types = 0;
    for (const TypeInfo& info : kTypeTable) {
        if (info.size != 0 && info.payload != PayloadKind::Bool && info.payload != PayloadKind::Type) {
            types |= TypeBit(info.type);
        }
    }
    return types;
}();
constexpr unsigned int kPayloadSize = 8;
static_assert(kPayloadSize <= CMemoryBlock::kSlackSize && kPayloadSize <= CVirtualMachine::kCodePadding);

/// Reads a number, time, pointer or BOOL; false for all other types. The bytes behind a narrow one are read with it:
/// code and blocks have them.
[[gnu::always_inline]] inline bool LoadPlain(CValue& out, ElementaryType type, const unsigned char* bytes) noexcept {
    if (type == ElementaryType::Bool) {
        out.SetBool(bytes[0] != 0);
        return true;
    }
    if ((TypeBit(type) & kPlainTypes) == 0) return false;
    out.SetBits(type, ReadOperand<std::uint64_t>(bytes));
    return true;
}

/// Logs one message and ends the instruction.
template <Message kMessage, InstructionResult kResult = InstructionResult::Failed, typename... Args>
[[gnu::cold, gnu::noinline]] InstructionResult Stop(CErrorLog& log, const Args&... args) {
    tn61131::Fail<kMessage>(log, ErrorLocationNull::Get(), args...);
    return kResult;
}

InstructionResult ContinueIf(bool succeeded) noexcept {
    return succeeded ? InstructionResult::Continue : InstructionResult::Failed;
}

bool OwnsData(const CValue& value) noexcept {
    return (TypeBit(value.GetType()) & kOwningTypes) != 0;
}

/// Bytes of the object that a value owns; 0 for one that owns none.
std::uint64_t OwnedBytes(const CValue& value) noexcept {
    switch (value.GetType()) {
        case ElementaryType::String: return GetUnits(value.GetUtf8String()).size_bytes();
        case ElementaryType::WString:
        case ElementaryType::CompositeString: return GetUnits(value.GetUtf16String()).size_bytes();
        case ElementaryType::Composite: {
            const CCompositeValue* const composite = value.GetComposite();
            return composite == nullptr ? 0 : composite->GetDataLength();
        }
        default: return 0;
    }
}

bool IsZero(const CValue& value) noexcept {
    return value.GetType() == ElementaryType::Bool ? value.GetPayload<unsigned char>() != 1 : value.IsZero();
}

}  // namespace

[[gnu::always_inline]] inline unsigned char* CVirtualMachineExec::FindBytes(const CValue& pointer,
                                                                            unsigned int size) const noexcept {
    if (pointer.GetType() != ElementaryType::Pointer) return nullptr;
    const auto address = pointer.GetPayload<PointerValue>();
    const CMemoryBlock* block = nullptr;
    unsigned int base = 0;
    switch (address.location) {
        case LocationKind::Global: block = globalData_; break;
        case LocationKind::GlobalConstant: block = constants_; break;
        case LocationKind::Local:
            if (address.frame != depth_) return nullptr;
            block = running_->localData.GetTargetBlock();
            base = running_->localData.GetTargetMemOffset();
            break;
        case LocationKind::Temp:
            if (address.frame != depth_) return nullptr;
            block = &running_->tempData;
            break;
        default: return nullptr;
    }
    const unsigned int offset = base + address.offset;
    const bool isInside = block != nullptr && offset >= base && block->IsDataWithinBlock(offset, size);
    return isInside && block->GetVMData() != nullptr ? block->GetVMData() + offset : nullptr;
}

// Invariants: between instructions `pc` is inside the code or at its end, where zero bytes follow; currentInstruction_
// is the instruction being executed, or the next one when the run is stopped between two. While the loop runs, pc_ is
// only what an instruction that moves it was given and has left there.
RunResult CVirtualMachineExec::ExecuteUntilCompleteOrSuspended(CErrorLog& log) {
    const Code code = GetCode();
    const unsigned char* pc = code.begin + pc_;
    ++instructionCount_;
    InstructionResult result;
    for (;;) {
        currentInstruction_ = static_cast<unsigned int>(pc - code.begin);
        result = Dispatch(log, code, pc);
        if (result != InstructionResult::Continue) break;
        if (!CheckGlobalMemoryGuardBytes()) [[unlikely]] {
            result = InstructionResult::MemoryCorrupted;
        } else if (++instructionCount_ >= instructionLimit_) [[unlikely]] {
            result = InstructionResult::LimitReached;
        } else {
            continue;
        }
        currentInstruction_ = static_cast<unsigned int>(pc - code.begin);
        if (result == InstructionResult::MemoryCorrupted) {
            Stop<Message::GlobalMemoryCorruption>(log);
        } else {
            Stop<Message::InstructionLimit>(log, instructionLimit_);
        }
        break;
    }
    pc_ = static_cast<unsigned int>(pc - code.begin);
    return result == InstructionResult::Suspend ? RunResult::Suspended : EndRun(log, result);
}

InstructionResult CVirtualMachineExec::ExecuteInstruction(CErrorLog& log) {
    const Code code = GetCode();
    const unsigned char* pc = code.begin + pc_;
    currentInstruction_ = pc_;
    const InstructionResult result = Dispatch(log, code, pc);
    pc_ = static_cast<unsigned int>(pc - code.begin);
    if (result == InstructionResult::Continue) currentInstruction_ = pc_;
    return result;
}

// Only what is short or moves the program counter is done here, so that `pc` stays in a register.
[[gnu::always_inline]] inline InstructionResult CVirtualMachineExec::Dispatch(CErrorLog& log, const Code& code,
                                                                              const unsigned char*& pc) {
    const unsigned char opcode = *pc;
    const unsigned int length = kFixedLengths[opcode];
    // Also when running off the end: there opcode 0 is fetched, one byte that is not the code's.
    if (length > static_cast<std::size_t>(code.end - pc)) [[unlikely]] {
        return Stop<Message::InvalidInstruction, InstructionResult::Invalid>(log, opcode);
    }
    const unsigned char* const operands = pc + 1;
    pc += length;
    const auto typeOperand = [&] { return static_cast<ElementaryType>(operands[0]); };
    const auto jumpIf = [&](bool condition) {
        if (!condition) return InstructionResult::Continue;
        const auto distance = ReadOperand<std::int32_t>(operands);
        const std::int64_t target = (pc - code.begin) + std::int64_t{distance};
        if (target < 0 || target >= code.end - code.begin) return Stop<Message::JumpOutsideCode>(log, distance);
        pc = code.begin + target;
        return InstructionResult::Continue;
    };
    const auto movePC = [&](auto&& instruction) {
        pc_ = static_cast<unsigned int>(pc - code.begin);
        const InstructionResult result = instruction();
        pc = code.begin + pc_;
        return result;
    };
    CValue& top = stack_.back();
    switch (static_cast<Opcode>(opcode)) {
        case Opcode::LoadImmediate: {
            const std::uint8_t size = GetTypeInfo(typeOperand()).size;
            if (size <= static_cast<std::size_t>(code.end - pc) && LoadPlain(top, typeOperand(), pc)) {
                pc += size;
                return InstructionResult::Continue;
            }
            return movePC([&] { return ExecLoadImmediate(log, code); });
        }
        case Opcode::LoadAddr: {
            const auto kind = static_cast<LocationKind>(operands[0]);
            const bool hasFrame = kind == LocationKind::Local || kind == LocationKind::Temp;
            top.SetAddress(operands[0], hasFrame ? static_cast<unsigned short>(depth_) : std::uint16_t{0},
                           ReadOperand<std::uint32_t>(operands + 1));
            return InstructionResult::Continue;
        }
        case Opcode::LoadTagAddr:
            top.SetAddress(static_cast<std::uint16_t>(LocationKind::Tag), ReadOperand<std::uint16_t>(operands),
                           ReadOperand<std::uint32_t>(operands + 2));
            return InstructionResult::Continue;
        case Opcode::PointerLoad: {
            const auto size = ReadOperand<std::uint16_t>(operands + 1);
            const unsigned char* const bytes = FindBytes(top, size);
            if (bytes != nullptr && LoadPlain(top, typeOperand(), bytes)) return InstructionResult::Continue;
            return ExecPointerLoad(log, typeOperand(), size);
        }
        case Opcode::PointerStore: {
            const auto size = ReadOperand<std::uint16_t>(operands + 1);
            if (StorePlain(typeOperand(), size)) return InstructionResult::Continue;
            return ExecPointerStore(log, typeOperand(), size);
        }
        case Opcode::LoadStack: return ExecLoadStack(log, operands[0]);
        case Opcode::StoreStack: return ExecStoreStack(log, operands[0]);
        case Opcode::LoadStatus: return ExecLoadVMstatus(operands[0]);
        case Opcode::PointerLoadArray:
            return ExecPointerLoadArray(log, typeOperand(), ReadOperand<std::uint32_t>(operands + 1));
        case Opcode::Push: return ExecPush(log);
        case Opcode::Pop: return ExecPop(log);
        case Opcode::Return: return movePC([&] { return ExecReturn(); });
        case Opcode::Convert: return ContinueIf(top.ChangeType(log, noLocation_, typeOperand()));
        case Opcode::Unary: return ContinueIf(top.UnaryOperation(log, noLocation_, operands[0]));
        case Opcode::Binary: return ExecBinary(log, operands[0]);
        case Opcode::Jump: return jumpIf(true);
        case Opcode::JumpZero: return jumpIf(IsZero(top));
        case Opcode::JumpNotZero: return jumpIf(!IsZero(top));
        case Opcode::JumpUndefined: return jumpIf(top.IsUndefined());
        case Opcode::CallFunction: return ExecCallBuiltInFunc(log, operands, false);
        case Opcode::Call:
            return movePC([&] { return ExecCallUserFunc(log, operands[0], ReadOperand<std::uint32_t>(operands + 1)); });
        case Opcode::InitTempData: return movePC([&] { return ExecInitTempData(log, code); });
        case Opcode::InitLocalData:
            return GetPointerAddressFromStackTop(log, ReadOperand<std::uint32_t>(operands), running_->localData);
        case Opcode::CallFunctionBlock: return ExecCallBuiltInFunctionBlock(log, operands);
        case Opcode::PointerStoreEdge: return ExecPointerStoreEdge(log, operands[0] != 0);
        case Opcode::CallFunctionEno: return ExecCallBuiltInFunc(log, operands, true);
        case Opcode::Truncate: return ContinueIf(top.Truncate(log, noLocation_, typeOperand()));
        case Opcode::Sfc: return ExecuteSFC(log, operands[0], ReadOperand<std::uint16_t>(operands + 1));
    }
    return Stop<Message::InvalidInstruction, InstructionResult::Invalid>(log, opcode);
}

// Only what comes in is counted, and what goes is not: when the sum may be too much, the stack is asked. That costs a
// walk over the stack for each limit's worth of data, and nothing for a value that owns none.
InstructionResult CVirtualMachineExec::CountValueData(CErrorLog& log, const CValue& value) {
    if (!OwnsData(value)) return InstructionResult::Continue;
    valueData_ += OwnedBytes(value);
    if (valueData_ <= limits_.maxValueData) return InstructionResult::Continue;
    valueData_ = 0;
    for (const CValue& entry : stack_)
        valueData_ += OwnedBytes(entry);
    if (valueData_ <= limits_.maxValueData) return InstructionResult::Continue;
    return Stop<Message::InternalLogicError>(log, "Value data overflow");
}

// LD literal  ( _ -- v )  message 210 when the data passes the end of the code, 211 when it makes no value.
InstructionResult CVirtualMachineExec::ExecLoadImmediate(CErrorLog& log, const Code& code) {
    const unsigned char* const data = code.begin + pc_;
    const unsigned char* const instruction = code.begin + currentInstruction_;
    const std::uint64_t length = InstructionLength({instruction, code.end});
    if (length > static_cast<std::size_t>(code.end - instruction)) {
        return Stop<Message::InvalidInstruction, InstructionResult::Invalid>(log, instruction[0]);
    }
    pc_ = currentInstruction_ + static_cast<unsigned int>(length);
    const auto type = static_cast<ElementaryType>(instruction[1]);
    const auto size = static_cast<unsigned int>(instruction + length - data);
    if (!stack_.back().SetFromDataBytes(type, data, size)) return Stop<Message::InvalidImmediate>(log);
    return CountValueData(log, stack_.back());
}

// PTR LD  ( p -- v )  messages of the resolution; 211 when there is no value of the type.
InstructionResult CVirtualMachineExec::ExecPointerLoad(CErrorLog& log, ElementaryType type, unsigned int size) {
    const InstructionResult resolved = GetPointerAddressFromStackTop(log, size, pointerScratchA_);
    if (resolved != InstructionResult::Continue) return resolved;
    if (!pointerScratchA_.GetValueAtOffset(0, type, size, stack_.back())) return Stop<Message::InvalidImmediate>(log);
    return CountValueData(log, stack_.back());
}

// The usual PTR ST, of a value that already has the type and has no object, into a block. False, nothing changed, for
// every other.
[[gnu::always_inline]] inline bool CVirtualMachineExec::StorePlain(ElementaryType type, unsigned int size) noexcept {
    if (stack_.size() < 2) return false;
    const CValue& pointer = stack_.back();
    const CValue& value = (&pointer)[-1];
    constexpr std::uint32_t kStoredTypes = kPlainTypes | TypeBit(ElementaryType::Bool);
    const bool isPlain = value.GetType() == type && (TypeBit(type) & kStoredTypes) != 0;
    const unsigned int typeSize = GetTypeInfo(type).size;
    if (!isPlain || (type == ElementaryType::Pointer && size < typeSize)) return false;
    unsigned char* const bytes = FindBytes(pointer, size);
    if (bytes == nullptr) return false;
    switch (typeSize) {
        case 1: std::memcpy(bytes, value.GetValue(), 1); break;
        case 2: std::memcpy(bytes, value.GetValue(), 2); break;
        case 4: std::memcpy(bytes, value.GetValue(), 4); break;
        default: std::memcpy(bytes, value.GetValue(), 8); break;
    }
    stack_.pop_back();
    return true;
}

// PTR ST  ( v p -- v )  v is converted to the type, or for a COMPOSITE a pointer to what is copied; an undefined p
// stores nothing. Messages 209, those of the resolution and the conversion, 248 for a copy that cannot be made.
InstructionResult CVirtualMachineExec::ExecPointerStore(CErrorLog& log, ElementaryType type, unsigned int size) {
    if (stack_.size() < 2) return Stop<Message::StackUnderflow>(log);
    if (stack_.back().IsUndefined()) {
        stack_.pop_back();
        return InstructionResult::Continue;
    }
    InstructionResult resolved = GetPointerAddressFromStackTop(log, size, pointerScratchB_);
    if (resolved != InstructionResult::Continue) return resolved;
    stack_.pop_back();
    if (type != ElementaryType::Composite) {
        CValue& value = stack_.back();
        if (!value.ChangeType(log, noLocation_, type)) return InstructionResult::Failed;
        return pointerScratchB_.SetValueAtOffset(access_, 0, size, value, noLocation_, log);
    }
    resolved = GetPointerAddressFromStackTop(log, size, pointerScratchA_);
    if (resolved != InstructionResult::Continue) return resolved;
    if (!pointerScratchB_.CopyDataFrom(0, pointerScratchA_, size)) return Stop<Message::NotWritable>(log);
    return InstructionResult::Continue;
}

// PTR ST R_EDGE, F_EDGE  ( v p -- v )  runs the edge record at p with v as its input, or copies the record that v
// points to. An underflow gives Invalid here.
InstructionResult CVirtualMachineExec::ExecPointerStoreEdge(CErrorLog& log, bool rising) {
    if (stack_.size() < 2) return Stop<Message::StackUnderflow, InstructionResult::Invalid>(log);
    if (stack_.back().IsUndefined()) {
        stack_.pop_back();
        return InstructionResult::Continue;
    }
    InstructionResult resolved = GetPointerAddressFromStackTop(log, kEdgeRecordSize, pointerScratchB_);
    if (resolved != InstructionResult::Continue) return resolved;
    stack_.pop_back();
    CValue& value = stack_.back();
    if (value.GetType() == ElementaryType::Pointer) {
        resolved = GetPointerAddressFromStackTop(log, kEdgeRecordSize, pointerScratchA_);
        // A source that is no block leaves the record as it is.
        if (resolved == InstructionResult::Continue)
            pointerScratchB_.CopyDataFrom(0, pointerScratchA_, kEdgeRecordSize);
        return resolved;
    }
    if (!value.ChangeTypeToBOOL(log, noLocation_)) return InstructionResult::Failed;
    pointerScratchB_.SetEdgeAtOffset(0, rising, !value.IsZero());
    return InstructionResult::Continue;
}

// PTR LD ARRAY  ( p -- v )  the whole elements from p on, at most `count`.
InstructionResult CVirtualMachineExec::ExecPointerLoadArray(CErrorLog& log, ElementaryType type, unsigned int count) {
    const InstructionResult resolved = GetPointerAddressFromStackTop(log, 0, pointerScratchA_);
    if (resolved != InstructionResult::Continue) return resolved;
    pointerScratchA_.GetCompositeValueAtOffset(0, type, count, stack_.back());
    return CountValueData(log, stack_.back());
}

// LD STACK  ( _ -- v )  overwrites the top with an entry of the frame; message 213 when the stack ends before it.
[[gnu::always_inline]] inline InstructionResult CVirtualMachineExec::ExecLoadStack(CErrorLog& log,
                                                                                   unsigned char index) {
    const unsigned int position = running_->frameBase + index;
    if (position >= stack_.size()) return Stop<Message::StackOffsetBeyondEnd>(log, position);
    stack_.back() = stack_[position];
    return OwnsData(stack_.back()) ? CountValueData(log, stack_.back()) : InstructionResult::Continue;
}

// ST STACK  ( v -- v )  copies the top into an entry of the frame; message 213 when the stack ends before it.
[[gnu::always_inline]] inline InstructionResult CVirtualMachineExec::ExecStoreStack(CErrorLog& log,
                                                                                    unsigned char index) {
    const unsigned int position = running_->frameBase + index;
    if (position >= stack_.size()) return Stop<Message::StackOffsetBeyondEnd>(log, position);
    stack_[position] = stack_.back();
    return OwnsData(stack_.back()) ? CountValueData(log, stack_.back()) : InstructionResult::Continue;
}

// LD STATUS  ( _ -- v )  1 whether the last built-in call succeeded, 2 the stack size, 3 the active calls.
InstructionResult CVirtualMachineExec::ExecLoadVMstatus(unsigned char code) {
    CValue& top = stack_.back();
    switch (code) {
        case 1: top.SetBool(lastFunctionResult_ == InstructionResult::Continue); break;
        case 2: top.SetInteger(GetStackSize(), ElementaryType::UDInt); break;
        case 3: top.SetInteger(GetCodeStackSize(), ElementaryType::UDInt); break;
        default: return InstructionResult::Invalid;
    }
    return InstructionResult::Continue;
}

// PUSH  ( -- _ )  message 227 when the stack is full.
[[gnu::always_inline]] inline InstructionResult CVirtualMachineExec::ExecPush(CErrorLog& log) {
    if (stack_.size() >= limits_.maxStackEntries) return Stop<Message::InternalLogicError>(log, "Value stack overflow");
    stack_.emplace_back();
    return InstructionResult::Continue;
}

// POP  ( v -- )  message 209 for the bottom entry, which always stays.
[[gnu::always_inline]] inline InstructionResult CVirtualMachineExec::ExecPop(CErrorLog& log) {
    if (stack_.size() < 2) return Stop<Message::StackUnderflow, InstructionResult::Invalid>(log);
    stack_.pop_back();
    return InstructionResult::Continue;
}

// RET  ( a1 ... -- a1 )  leaves the first argument's entry as the result of the call.
InstructionResult CVirtualMachineExec::ExecReturn() {
    if (depth_ == 0) return InstructionResult::Complete;
    Frame& frame = *running_;
    pc_ = frame.returnPC;
    stack_.resize(frame.stackSizeAfterReturn);
    FreeTempData(frame);
    EnterDepth(depth_ - 1);
    return InstructionResult::Continue;
}

// Binary  ( a b -- a op b )  message 209; on failure both stay.
[[gnu::always_inline]] inline InstructionResult CVirtualMachineExec::ExecBinary(CErrorLog& log,
                                                                                unsigned char operation) {
    if (stack_.size() < 2) return Stop<Message::StackUnderflow>(log);
    CValue& right = stack_.back();
    if (!(&right)[-1].BinaryOperation(log, noLocation_, operation, right)) return InstructionResult::Failed;
    stack_.pop_back();
    return InstructionResult::Continue;
}

// Built-in function  ( _ a1 ... -- r )  messages 222, 223 and those of the function.
InstructionResult CVirtualMachineExec::ExecCallBuiltInFunc(CErrorLog& log, const unsigned char* operands, bool eno) {
    const unsigned char group = operands[0];
    const unsigned char id = operands[1];
    const unsigned char count = operands[2];
    if (count == 0) return Stop<Message::ZeroArgumentCount>(log);
    if (count > stack_.size()) return Stop<Message::TooFewArguments>(log, count, stack_.size());
    const std::size_t resultIndex = stack_.size() - count;
    CValue* const result = &stack_[resultIndex];
    functionContext_.SetCurrentFunction(callerWord_, false, group, id);
    lastFunctionResult_ = functions_.Execute(log, functionContext_, static_cast<unsigned char>(count - 1),
                                             count > 1 ? result + 1 : nullptr, *result);
    stack_.resize(resultIndex + 1);
    // With ENO the program reads the failure with LD STATUS.
    const bool goesOn =
        lastFunctionResult_ == InstructionResult::Continue || (eno && lastFunctionResult_ == InstructionResult::Failed);
    return goesOn ? CountValueData(log, stack_.back()) : lastFunctionResult_;
}

// CALL  ( a1 ... aN -- a1 ... aN )  the callee addresses its arguments from its frame base on. Messages 222, 223, 227.
InstructionResult CVirtualMachineExec::ExecCallUserFunc(CErrorLog& log, unsigned char count, unsigned int codeOffset) {
    if (count == 0) return Stop<Message::ZeroArgumentCount>(log);
    if (count > stack_.size()) return Stop<Message::TooFewArguments>(log, count, stack_.size());
    if (depth_ >= limits_.maxFrames) return Stop<Message::InternalLogicError>(log, "Call stack overflow");
    const CMemoryRef& callersLocalData = running_->localData;
    EnterDepth(depth_ + 1);
    running_->returnPC = pc_;
    running_->stackSizeAfterReturn = static_cast<unsigned int>(stack_.size()) - count + 1;
    running_->frameBase = static_cast<unsigned int>(stack_.size()) - count;
    running_->localData = callersLocalData;
    pc_ = ClampToCode(codeOffset);
    return InstructionResult::Continue;
}

// INIT_TEMP_DATA  ( -- )  message 210 when the data passes the end of the code, 227 when it is too much.
InstructionResult CVirtualMachineExec::ExecInitTempData(CErrorLog& log, const Code& code) {
    const unsigned char* const data = code.begin + pc_;
    const auto size = ReadOperand<std::uint32_t>(data - sizeof(std::uint32_t));
    if (size > static_cast<std::size_t>(code.end - data)) {
        return Stop<Message::InvalidInstruction, InstructionResult::Invalid>(
            log, static_cast<unsigned char>(Opcode::InitTempData));
    }
    Frame& frame = *running_;
    if (liveTempData_ - frame.tempData.GetDataSize() + size > limits_.maxTempData) {
        return Stop<Message::InternalLogicError>(log, "Temporary data overflow");
    }
    FreeTempData(frame);
    frame.tempData.CopyData(size, data);
    liveTempData_ += size;
    pc_ += size;
    return InstructionResult::Continue;
}

// Function block  ( en pENO a1 ... pInstance -- en )  messages 222, 223, those of the resolution, of the conversion of
// en and of the block. The call itself goes on when the block fails; only an invalid call ends the run.
InstructionResult CVirtualMachineExec::ExecCallBuiltInFunctionBlock(CErrorLog& log, const unsigned char* operands) {
    constexpr std::size_t kFixedEntries = 3;
    const unsigned char count = operands[2];
    const auto dataSize = ReadOperand<std::uint32_t>(operands + 3);
    if (count == 0) return Stop<Message::ZeroArgumentCount, InstructionResult::Invalid>(log);
    if (count > stack_.size()) {
        return Stop<Message::TooFewArguments, InstructionResult::Invalid>(log, count, stack_.size());
    }
    CMemoryRef instance;
    const InstructionResult resolved = GetPointerAddressFromStackTop(log, dataSize, instance);
    if (resolved != InstructionResult::Continue) return resolved;

    const std::size_t enIndex = stack_.size() - count;
    CValue* const entries = &stack_[enIndex];
    bool en = false;
    if (!entries[0].GetBoolValue(log, noLocation_, en)) return InstructionResult::Invalid;
    instance.SetBOOLAtOffset(0, en);
    instance.SetBOOLAtOffset(1, en);
    // Fewer entries than the fixed ones share them: with two, the instance pointer also stands for the ENO pointer.
    const CValue& enoPointer = stack_[std::min(enIndex + 1, stack_.size() - 1)];
    if (!SetBoolValueViaPointer(log, enoPointer, en)) return InstructionResult::Invalid;
    if (en) {
        const bool hasInputs = count > kFixedEntries;
        const auto inputCount = static_cast<unsigned char>(hasInputs ? count - kFixedEntries : 0);
        functionContext_.SetCurrentFunction(callerWord_, true, operands[0], operands[1]);
        lastFunctionResult_ = functions_.ExecuteFunctionBlock(*this, functionContext_, instance, dataSize, inputCount,
                                                              hasInputs ? entries + 2 : nullptr, log);
        if (lastFunctionResult_ == InstructionResult::Invalid) return InstructionResult::Invalid;
    }
    stack_.resize(enIndex + 1);
    return InstructionResult::Continue;
}

// SFC  ( p -- p )  messages of the resolution; a block that does not fit its type fails without one.
InstructionResult CVirtualMachineExec::ExecuteSFC(CErrorLog& log, unsigned char type, unsigned int size) {
    const InstructionResult resolved = GetPointerAddressFromStackTop(log, size, pointerScratchA_);
    if (resolved != InstructionResult::Continue) return resolved;
    return VMSFCControlBlocks::ExecuteControlBlock(*this, type, size, pointerScratchA_, log);
}
