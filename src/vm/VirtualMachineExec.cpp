#include "vm/VirtualMachineExec.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "diag/Messages.h"
#include "platform/ClientAccess.h"
#include "platform/TextOutput.h"
#include "vm/Disassembler.h"
#include "vm/VirtualMachine.h"

CVirtualMachineExec::CVirtualMachineExec(const CClientAccessContext& access, const std::string& hostTagName,
                                         CVirtualMachine* image, CMemoryBlock* globalData,
                                         CDirectlyLocatedVariables* locatedVariables)
    : CVirtualMachineGlobalMem(&image->GetGlobalConstantData(), globalData, locatedVariables),
      access_(access),
      hostTagName_(hostTagName),
      image_(image),
      functionContext_(access.GetDataFormatSettings(), this, functions_),
      stack_(1),
      frames_(1),
      running_(&frames_.front()) {}

CVirtualMachineExec::~CVirtualMachineExec() = default;

CVirtualMachineExec::Code CVirtualMachineExec::GetCode() const noexcept {
    const unsigned char* const begin = image_->GetOpCodes();
    return {begin, begin + image_->GetOpCodesLength()};
}

unsigned int CVirtualMachineExec::ClampToCode(unsigned int codeOffset) const noexcept {
    return std::min(codeOffset, image_->GetOpCodesLength());
}

void CVirtualMachineExec::StartNewProgram(unsigned int codeOffset, unsigned int instructionLimit,
                                          unsigned int callerWord, const long long* timestampMS) {
    instructionLimit_ = instructionLimit;
    callerWord_ = callerWord;
    SetCurrentTimestamp(timestampMS);
    ClearCodeStack();
    pc_ = ClampToCode(codeOffset);
    currentInstruction_ = pc_;
    instructionCount_ = 0;
}

RunResult CVirtualMachineExec::EndRun(CErrorLog& log, InstructionResult result) {
    resultValue_ = stack_.back();
    ClearRuntimeState();
    finishOffset_ = currentInstruction_;
    if (result == InstructionResult::Complete) return RunResult::Completed;
    if (result != InstructionResult::Invalid) return RunResult::Failed;
    if (log.GetErrorCount() == 0) tn61131::Fail<Message::InvalidOpcodeSilent>(log, ErrorLocationNull::Get());
    return RunResult::Invalid;
}

bool CVirtualMachineExec::GetStackEntry(int index, CValue& out) const {
    const long long position = static_cast<long long>(running_->frameBase) + index;
    if (position < 0 || position >= static_cast<long long>(stack_.size())) return false;
    out = stack_[static_cast<std::size_t>(position)];
    return true;
}

bool CVirtualMachineExec::SetStackEntry(int index, const CValue& value) {
    const long long position = static_cast<long long>(running_->frameBase) + index;
    if (position < 0 || position >= static_cast<long long>(stack_.size())) return false;
    stack_[static_cast<std::size_t>(position)] = value;
    return true;
}

bool CVirtualMachineExec::GetStackTop(CValue& out) const {
    if (stack_.empty()) return false;
    out = stack_.back();
    return true;
}

unsigned int CVirtualMachineExec::GetCodeStackReturnPC(int level) const {
    if (level < 0 || static_cast<unsigned int>(level) >= depth_) throw std::out_of_range("code stack level");
    return frames_[static_cast<std::size_t>(level) + 1].returnPC;
}

void CVirtualMachineExec::ClearRuntimeState() {
    FreeTempData(*running_);
    stack_.resize(1);
}

void CVirtualMachineExec::ClearCodeStack() noexcept {
    if (depth_ == 0) return;
    // The running function's data becomes the program level's; what its callers had is gone, and so is the target of a
    // local data reference onto their temporary data.
    Frame& program = frames_.front();
    CMemoryRef local = running_->localData;
    for (unsigned int depth = 0; depth < depth_; ++depth) {
        if (local.GetTargetBlock() == &frames_[depth].tempData) local = CMemoryRef();
        FreeTempData(frames_[depth]);
    }
    if (local.GetTargetBlock() == &running_->tempData) {
        local = CMemoryRef(program.tempData, local.GetTargetMemOffset());
    }
    std::swap(program.tempData, running_->tempData);
    program.localData = local;
    depth_ = 0;
    running_ = &program;
}

void CVirtualMachineExec::EnterDepth(unsigned int depth) {
    depth_ = depth;
    if (depth_ == frames_.size()) frames_.emplace_back();
    running_ = &frames_[depth_];
}

void CVirtualMachineExec::FreeTempData(Frame& frame) noexcept {
    liveTempData_ -= frame.tempData.GetDataSize();
    frame.tempData.EmptyForReuse();
}

bool CVirtualMachineExec::DisassembleCode(unsigned int codeOffset, CTextOutput& output) const {
    const Code code = GetCode();
    CDisassembler disassembler(functions_, codeOffset, &output);
    const unsigned char* at = code.begin + ClampToCode(codeOffset);
    while (at != code.end) {
        const unsigned char* const instruction = at;
        int needed = disassembler.FirstByte(*at++);
        while (needed > 0 && needed <= code.end - at) {
            const auto count = static_cast<unsigned int>(needed);
            needed = disassembler.MoreBytes(at, count);
            at += count;
        }
        if (needed != 0) {
            output.Print("*** Disassembler failure: %s\n",
                         needed > 0 ? "Instruction is cut short" : disassembler.GetDisassemblerError());
            output.Print("%d bytes remaining\n", static_cast<long long>(code.end - instruction));
            return false;
        }
    }
    return true;
}
