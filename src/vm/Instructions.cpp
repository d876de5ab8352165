// The run loop and the instructions.
#include <algorithm>

#include "diag/Messages.h"
#include "vm/Opcodes.h"
#include "vm/SFCControlBlocks.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace {

constexpr unsigned int kEdgeRecordSize = 3;

const ErrorLocation& NoLocation() noexcept {
    return ErrorLocationNull::Get();
}

/// Logs one message and ends the instruction.
template <Message kMessage, InstructionResult kResult = InstructionResult::Failed, typename... Args>
[[gnu::cold]] InstructionResult Stop(CErrorLog& log, const Args&... args) {
    tn61131::Fail<kMessage>(log, NoLocation(), args...);
    return kResult;
}

InstructionResult ContinueIf(bool succeeded) noexcept {
    return succeeded ? InstructionResult::Continue : InstructionResult::Failed;
}

}  // namespace

// Invariants: between instructions `pc` is inside the code or at its end, where zero bytes follow; currentInstruction_
// is the instruction being executed, or the next one when the run is stopped between two. Members keep the program
// counter only while no instruction runs.
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
            Stop<Message::GlobalMemoryCorruption>(log);
            result = InstructionResult::MemoryCorrupted;
        } else if (++instructionCount_ >= instructionLimit_) [[unlikely]] {
            Stop<Message::InstructionLimit>(log, instructionLimit_);
            result = InstructionResult::LimitReached;
        } else {
            continue;
        }
        currentInstruction_ = static_cast<unsigned int>(pc - code.begin);
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

inline InstructionResult CVirtualMachineExec::Dispatch(CErrorLog& log, const Code& code, const unsigned char*& pc) {
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
        return condition ? ExecJMP(log, code, pc, ReadOperand<std::int32_t>(operands)) : InstructionResult::Continue;
    };
    CValue& top = stack_.back();
    switch (static_cast<Opcode>(opcode)) {
        case Opcode::LoadImmediate: return ExecLoadImmediate(log, code, pc);
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
        case Opcode::PointerLoad: return ExecPointerLoad(log, typeOperand(), ReadOperand<std::uint16_t>(operands + 1));
        case Opcode::PointerStore:
            return ExecPointerStore(log, typeOperand(), ReadOperand<std::uint16_t>(operands + 1));
        case Opcode::LoadStack: return ExecLoadStack(log, operands[0]);
        case Opcode::StoreStack: return ExecStoreStack(log, operands[0]);
        case Opcode::LoadStatus: return ExecLoadVMstatus(operands[0]);
        case Opcode::PointerLoadArray:
            return ExecPointerLoadArray(log, typeOperand(), ReadOperand<std::uint32_t>(operands + 1));
        case Opcode::Push: return ExecPush(log);
        case Opcode::Pop: return ExecPop(log);
        case Opcode::Return: return ExecReturn(code, pc);
        case Opcode::Convert: return ContinueIf(top.ChangeType(log, NoLocation(), typeOperand()));
        case Opcode::Unary: return ContinueIf(top.UnaryOperation(log, NoLocation(), operands[0]));
        case Opcode::Binary: return ExecBinary(log, operands[0]);
        case Opcode::Jump: return jumpIf(true);
        case Opcode::JumpZero: return jumpIf(top.IsZero());
        case Opcode::JumpNotZero: return jumpIf(!top.IsZero());
        case Opcode::JumpUndefined: return jumpIf(top.IsUndefined());
        case Opcode::CallFunction: return ExecCallBuiltInFunc(log, operands, false);
        case Opcode::Call: return ExecCallUserFunc(log, code, pc);
        case Opcode::InitTempData: return ExecInitTempData(log, code, pc);
        case Opcode::InitLocalData:
            return GetPointerAddressFromStackTop(log, ReadOperand<std::uint32_t>(operands), running_->localData);
        case Opcode::CallFunctionBlock: return ExecCallBuiltInFunctionBlock(log, operands);
        case Opcode::PointerStoreEdge: return ExecPointerStoreEdge(log, operands[0] != 0);
        case Opcode::CallFunctionEno: return ExecCallBuiltInFunc(log, operands, true);
        case Opcode::Truncate: return ContinueIf(top.Truncate(log, NoLocation(), typeOperand()));
        case Opcode::Sfc: return ExecuteSFC(log, operands[0], ReadOperand<std::uint16_t>(operands + 1));
    }
    return Stop<Message::InvalidInstruction, InstructionResult::Invalid>(log, opcode);
}

// LD literal  ( _ -- v )  message 210 when the data passes the end of the code, 211 when it makes no value.
InstructionResult CVirtualMachineExec::ExecLoadImmediate(CErrorLog& log, const Code& code, const unsigned char*& pc) {
    const unsigned char* const data = pc;
    const unsigned char* const instruction = data - kFixedLengths[static_cast<unsigned char>(Opcode::LoadImmediate)];
    const std::uint64_t length = InstructionLength({instruction, code.end});
    if (length > static_cast<std::size_t>(code.end - instruction)) {
        return Stop<Message::InvalidInstruction, InstructionResult::Invalid>(log, instruction[0]);
    }
    pc = instruction + length;
    const auto type = static_cast<ElementaryType>(instruction[1]);
    if (!stack_.back().SetFromDataBytes(type, data, static_cast<unsigned int>(pc - data))) {
        return Stop<Message::InvalidImmediate>(log);
    }
    return InstructionResult::Continue;
}

// PTR LD  ( p -- v )  messages of the resolution; 211 when there is no value of the type.
InstructionResult CVirtualMachineExec::ExecPointerLoad(CErrorLog& log, ElementaryType type, unsigned int size) {
    const InstructionResult resolved = GetPointerAddressFromStackTop(log, size, pointerScratchA_);
    if (resolved != InstructionResult::Continue) return resolved;
    if (!pointerScratchA_.GetValueAtOffset(0, type, size, stack_.back())) return Stop<Message::InvalidImmediate>(log);
    return InstructionResult::Continue;
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
        if (!value.ChangeType(log, NoLocation(), type)) return InstructionResult::Failed;
        return pointerScratchB_.SetValueAtOffset(access_, 0, size, value, NoLocation(), log);
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
    if (!value.ChangeTypeToBOOL(log, NoLocation())) return InstructionResult::Failed;
    pointerScratchB_.SetEdgeAtOffset(0, rising, !value.IsZero());
    return InstructionResult::Continue;
}

// PTR LD ARRAY  ( p -- v )  the whole elements from p on, at most `count`.
InstructionResult CVirtualMachineExec::ExecPointerLoadArray(CErrorLog& log, ElementaryType type, unsigned int count) {
    const InstructionResult resolved = GetPointerAddressFromStackTop(log, 0, pointerScratchA_);
    if (resolved == InstructionResult::Continue) {
        pointerScratchA_.GetCompositeValueAtOffset(0, type, count, stack_.back());
    }
    return resolved;
}

// LD STACK  ( _ -- v )  overwrites the top with an entry of the frame; message 213 when the stack ends before it.
InstructionResult CVirtualMachineExec::ExecLoadStack(CErrorLog& log, unsigned char index) {
    const unsigned int position = running_->frameBase + index;
    if (position >= stack_.size()) return Stop<Message::StackOffsetBeyondEnd>(log, position);
    stack_.back() = stack_[position];
    return InstructionResult::Continue;
}

// ST STACK  ( v -- v )  copies the top into an entry of the frame; message 213 when the stack ends before it.
InstructionResult CVirtualMachineExec::ExecStoreStack(CErrorLog& log, unsigned char index) {
    const unsigned int position = running_->frameBase + index;
    if (position >= stack_.size()) return Stop<Message::StackOffsetBeyondEnd>(log, position);
    stack_[position] = stack_.back();
    return InstructionResult::Continue;
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
InstructionResult CVirtualMachineExec::ExecPush(CErrorLog& log) {
    if (stack_.size() >= limits_.maxStackEntries) return Stop<Message::InternalLogicError>(log, "Value stack overflow");
    stack_.emplace_back();
    return InstructionResult::Continue;
}

// POP  ( v -- )  message 209 for the bottom entry, which always stays.
InstructionResult CVirtualMachineExec::ExecPop(CErrorLog& log) {
    if (stack_.size() < 2) return Stop<Message::StackUnderflow, InstructionResult::Invalid>(log);
    stack_.pop_back();
    return InstructionResult::Continue;
}

// RET  ( a1 ... -- a1 )  leaves the first argument's entry as the result of the call.
InstructionResult CVirtualMachineExec::ExecReturn(const Code& code, const unsigned char*& pc) {
    if (depth_ == 0) return InstructionResult::Complete;
    Frame& frame = *running_;
    pc = code.begin + frame.returnPC;
    stack_.resize(frame.stackSizeAfterReturn);
    FreeTempData(frame);
    EnterDepth(depth_ - 1);
    return InstructionResult::Continue;
}

// Binary  ( a b -- a op b )  message 209; on failure both stay.
InstructionResult CVirtualMachineExec::ExecBinary(CErrorLog& log, unsigned char operation) {
    if (stack_.size() < 2) return Stop<Message::StackUnderflow>(log);
    CValue& right = stack_.back();
    if (!(&right)[-1].BinaryOperation(log, NoLocation(), operation, right)) return InstructionResult::Failed;
    stack_.pop_back();
    return InstructionResult::Continue;
}

// JMP, and the others when their condition holds  ( -- )  message 239 for a target outside the code.
InstructionResult CVirtualMachineExec::ExecJMP(CErrorLog& log, const Code& code, const unsigned char*& pc, int offset) {
    const std::int64_t target = (pc - code.begin) + std::int64_t{offset};
    if (target < 0 || target >= code.end - code.begin) return Stop<Message::JumpOutsideCode>(log, offset);
    pc = code.begin + target;
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
    if (eno && lastFunctionResult_ == InstructionResult::Failed) return InstructionResult::Continue;
    return lastFunctionResult_;
}

// CALL  ( a1 ... aN -- a1 ... aN )  the callee addresses its arguments from its frame base on. Messages 222, 223, 227.
InstructionResult CVirtualMachineExec::ExecCallUserFunc(CErrorLog& log, const Code& code, const unsigned char*& pc) {
    const unsigned char* const operands = pc - (kFixedLengths[static_cast<unsigned char>(Opcode::Call)] - 1);
    const unsigned char count = operands[0];
    if (count == 0) return Stop<Message::ZeroArgumentCount>(log);
    if (count > stack_.size()) return Stop<Message::TooFewArguments>(log, count, stack_.size());
    if (depth_ >= limits_.maxFrames) return Stop<Message::InternalLogicError>(log, "Call stack overflow");
    const CMemoryRef& callersLocalData = running_->localData;
    EnterDepth(depth_ + 1);
    running_->returnPC = static_cast<unsigned int>(pc - code.begin);
    running_->stackSizeAfterReturn = static_cast<unsigned int>(stack_.size()) - count + 1;
    running_->frameBase = static_cast<unsigned int>(stack_.size()) - count;
    running_->localData = callersLocalData;
    pc = code.begin + ClampToCode(ReadOperand<std::uint32_t>(operands + 1));
    return InstructionResult::Continue;
}

// INIT_TEMP_DATA  ( -- )  message 210 when the data passes the end of the code, 227 when it is too much.
InstructionResult CVirtualMachineExec::ExecInitTempData(CErrorLog& log, const Code& code, const unsigned char*& pc) {
    const unsigned char* const data = pc;
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
    pc += size;
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
    if (!entries[0].GetBoolValue(log, NoLocation(), en)) return InstructionResult::Invalid;
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
