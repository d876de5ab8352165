#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "functions/BuiltInFunctions.h"
#include "functions/FunctionContext.h"
#include "platform/ErrorLog.h"
#include "platform/Export.h"
#include "platform/StringObject.h"
#include "value/Value.h"
#include "vm/GlobalMemory.h"
#include "vm/InstructionResult.h"
#include "vm/MemoryBlock.h"
#include "vm/MemoryRef.h"

class CClientAccessContext;
class CDirectlyLocatedVariables;
class CTextOutput;
class CVirtualMachine;

/// How much a run may use before it fails, so that no image can exhaust the host.
struct ExecLimits {
    std::uint32_t maxFrames = 65536;          ///< active calls: "Call stack overflow"
    std::uint32_t maxStackEntries = 1048576;  ///< "Value stack overflow"
    std::uint64_t maxTempData =
        std::uint64_t{256} * 1024 * 1024;  ///< bytes of all live frames: "Temporary data overflow"
    /// Bytes of the strings and composites that stack entries own: "Value data overflow". They are counted when they
    /// are loaded, copied or returned by a function; the one that passes the limit has been made by then.
    std::uint64_t maxValueData = std::uint64_t{256} * 1024 * 1024;
};

/// One execution context over an image: value stack, frames, program counter, instruction count. Belongs to one thread
/// at a time. The access context, the image, the global data block and the tag provider stay the host's and must
/// outlive it.
///
/// Every active function has a frame, numbered from 0 (the program), with its temporary data and its reference to local
/// (instance) data. Frames and their blocks keep their addresses while others are pushed and popped.
class TN61131_API CVirtualMachineExec : public CVirtualMachineGlobalMem {
 public:
    static constexpr std::uint32_t kDefaultInstructionLimit = 100000;

    /// `locatedVariables` may be null.
    CVirtualMachineExec(const CClientAccessContext& access, const std::string& hostTagName, CVirtualMachine* image,
                        CMemoryBlock* globalData, CDirectlyLocatedVariables* locatedVariables);
    ~CVirtualMachineExec() override;

    void SetHostTagName(const std::string& name) { hostTagName_ = name; }
    [[nodiscard]] const std::string& GetHostTagName() const noexcept { return hostTagName_; }
    void SetLimits(const ExecLimits& limits) noexcept { limits_ = limits; }
    [[nodiscard]] const ExecLimits& GetLimits() const noexcept { return limits_; }
    /// The registry that this context calls; register groups of the host's own here.
    [[nodiscard]] CBuiltInFunctions& GetBuiltInFunctions() noexcept { return functions_; }
    [[nodiscard]] const CBuiltInFunctions& GetBuiltInFunctions() const noexcept { return functions_; }

    /// Prepares a run at a code offset. At most `instructionLimit` - 1 instructions run, across all resumptions.
    /// `callerWord` is handed to every built-in call. `timestampMS` is the VM time of the scan, null for the clock. The
    /// bottom stack entry, the last function result and the local data reference stay from the run before.
    void StartNewProgram(unsigned int codeOffset, unsigned int instructionLimit, unsigned int callerWord,
                         const long long* timestampMS);
    /// Runs until the program ends, fails or asks to be suspended; call again to resume.
    [[nodiscard]] RunResult ExecuteUntilCompleteOrSuspended(CErrorLog& log);
    /// Executes exactly one instruction, with neither the guard check nor the instruction count of a run.
    InstructionResult ExecuteInstruction(CErrorLog& log);

    /// Entry `index` relative to the frame's base; false beyond the stack.
    [[nodiscard]] bool GetStackEntry(int index, CValue& out) const;
    bool SetStackEntry(int index, const CValue& value);
    [[nodiscard]] CValue& GetStackTop() noexcept { return stack_.back(); }
    [[nodiscard]] bool GetStackTop(CValue& out) const;
    [[nodiscard]] unsigned int GetStackSize() const noexcept { return static_cast<unsigned int>(stack_.size()); }
    /// Active calls; kept after a run until the next start.
    [[nodiscard]] unsigned int GetCodeStackSize() const noexcept { return depth_; }
    /// The code offset to which call `level` returns, 0 the oldest. Throws std::out_of_range for a level that is not
    /// active.
    [[nodiscard]] unsigned int GetCodeStackReturnPC(int level) const;
    /// The instruction being executed, or the one that ended the run, as a code offset.
    [[nodiscard]] unsigned int GetCurrentPC() const noexcept { return currentInstruction_; }
    /// The stack top when the last run ended.
    [[nodiscard]] const CValue& GetResultValue() const noexcept { return resultValue_; }
    [[nodiscard]] std::uint32_t GetInstructionCount() const noexcept { return instructionCount_; }
    /// The instruction that ended the last run, as a code offset.
    [[nodiscard]] unsigned int GetFinishOffset() const noexcept { return finishOffset_; }
    [[nodiscard]] const CClientAccessContext& GetClientAccessContext() const noexcept { return access_; }
    /// Frees the temporary data and leaves one stack entry.
    void ClearRuntimeState();
    void ClearCodeStack() noexcept;
    [[nodiscard]] bool CheckGlobalMemoryGuardBytes() const noexcept {
        return globalData_->CheckGuardBytes() && constants_->CheckGuardBytes();
    }
    /// Lists the code from an offset to its end; false where bytes are no instruction.
    bool DisassembleCode(unsigned int codeOffset, CTextOutput& output) const;

    // --- pointer services for instructions, functions and function blocks ---

    /// Resolves a pointer and checks that `size` bytes are there. Continue, or Failed after one message.
    [[nodiscard]] InstructionResult GetPointerAddress(CErrorLog& log, const PointerValue* pointer, unsigned int size,
                                                      CMemoryRef& out) const;
    [[nodiscard]] InstructionResult GetPointerAddressFromStackTop(CErrorLog& log, unsigned int size, CMemoryRef& out);
    // Each writes through the pointer that `pointer` holds; an undefined one (an output that is not connected) is
    // skipped with success. False after one message.
    [[nodiscard]] bool SetBoolValueViaPointer(CErrorLog& log, const CValue& pointer, bool value);
    [[nodiscard]] bool SetTimeValueViaPointer(CErrorLog& log, const CValue& pointer, long long value);
    [[nodiscard]] bool SetIntegerValueViaPointer(CErrorLog& log, const CValue& pointer, short value);
    /// Checks two bytes and writes four.
    [[nodiscard]] bool SetUDINTValueViaPointer(CErrorLog& log, const CValue& pointer, unsigned int value);
    /// Null means empty.
    [[nodiscard]] bool SetVMWStringViaPointer(CErrorLog& log, const CValue& pointer, const Utf16String* text);
    [[nodiscard]] bool SetVMWStringViaPointer(CErrorLog& log, const CValue& pointer, unsigned int count,
                                              const unsigned short* units);
    /// False without a message when `text` is no WSTRING or `pointer` no pointer.
    [[nodiscard]] bool SetVMWStringViaPointer(CErrorLog& log, const CValue& pointer, const CValue& text);

 private:
    /// The state of one active function. What a caller had is in its own frame: nothing is copied at a call.
    struct Frame {
        unsigned int returnPC = 0;              ///< where this frame's function returns to
        unsigned int stackSizeAfterReturn = 0;  ///< value stack size that its return restores
        unsigned int frameBase = 0;             ///< value stack index of its first argument
        CMemoryBlock tempData;
        CMemoryRef localData;
    };
    /// The bytes of the image's code.
    struct Code {
        const unsigned char* begin;
        const unsigned char* end;
    };

    [[nodiscard]] Code GetCode() const noexcept;
    [[nodiscard]] unsigned int ClampToCode(unsigned int codeOffset) const noexcept;
    [[nodiscard]] Frame& RunningFrame() noexcept { return *running_; }
    void EnterDepth(unsigned int depth);
    void FreeTempData(Frame& frame) noexcept;
    /// Where a pointer to a frame's data leads; unset when it leads nowhere. The frame must exist.
    [[nodiscard]] CMemoryRef LocateInFrame(const PointerValue& pointer) const noexcept;
    [[nodiscard]] bool WriteViaPointer(CErrorLog& log, const CValue& pointer, unsigned int checkedSize,
                                       unsigned int writtenSize, const CValue& value);
    RunResult EndRun(CErrorLog& log, InstructionResult result);

    /// The bytes that a pointer leads to when they are in a block and all `size` are there; null where the general way
    /// must decide, which also finds the message.
    [[nodiscard]] unsigned char* FindBytes(const CValue& pointer, unsigned int size) const noexcept;

    // --- the instructions: operands decoded; pc_ is only for those that move it ---

    InstructionResult Dispatch(CErrorLog& log, const Code& code, const unsigned char*& pc);
    InstructionResult ExecLoadImmediate(CErrorLog& log, const Code& code);
    InstructionResult ExecPointerLoad(CErrorLog& log, ElementaryType type, unsigned int size);
    InstructionResult ExecPointerStore(CErrorLog& log, ElementaryType type, unsigned int size);
    [[nodiscard]] bool StorePlain(ElementaryType type, unsigned int size) noexcept;
    InstructionResult ExecPointerStoreEdge(CErrorLog& log, bool rising);
    InstructionResult ExecPointerLoadArray(CErrorLog& log, ElementaryType type, unsigned int count);
    InstructionResult ExecLoadStack(CErrorLog& log, unsigned char index);
    InstructionResult ExecStoreStack(CErrorLog& log, unsigned char index);
    InstructionResult ExecLoadVMstatus(unsigned char code);
    InstructionResult ExecPush(CErrorLog& log);
    InstructionResult ExecPop(CErrorLog& log);
    InstructionResult ExecReturn();
    InstructionResult ExecBinary(CErrorLog& log, unsigned char operation);
    InstructionResult ExecCallBuiltInFunc(CErrorLog& log, const unsigned char* operands, bool eno);
    InstructionResult ExecCallUserFunc(CErrorLog& log, unsigned char count, unsigned int codeOffset);
    InstructionResult ExecInitTempData(CErrorLog& log, const Code& code);
    InstructionResult ExecCallBuiltInFunctionBlock(CErrorLog& log, const unsigned char* operands);
    InstructionResult ExecuteSFC(CErrorLog& log, unsigned char type, unsigned int size);
    /// Ends an instruction that has put `value` on the stack: message 227 when the stack owns too much data.
    InstructionResult CountValueData(CErrorLog& log, const CValue& value);

    const CClientAccessContext& access_;
    const ErrorLocation& noLocation_ = ErrorLocationNull::Get();
    std::string hostTagName_;
    CVirtualMachine* image_;
    CBuiltInFunctions functions_;
    CBuiltInFunctionContext functionContext_;
    ExecLimits limits_;
    std::uint32_t instructionLimit_ = kDefaultInstructionLimit;
    std::uint32_t callerWord_ = 0;
    unsigned int currentInstruction_ = 0;  ///< code offset
    unsigned int pc_ = 0;                  ///< code offset; the run loop keeps a pointer instead
    std::vector<CValue> stack_;            ///< never empty
    std::deque<Frame> frames_;             ///< by depth; those deeper than the running one are kept for reuse
    Frame* running_;                       ///< frames_[depth_]
    unsigned int depth_ = 0;
    std::uint64_t liveTempData_ = 0;  ///< bytes of temporary data of all active frames
    std::uint64_t valueData_ = 0;     ///< at least the bytes that stack entries own
    CMemoryRef pointerScratchA_;
    CMemoryRef pointerScratchB_;
    InstructionResult lastFunctionResult_ = InstructionResult::Continue;
    std::uint32_t instructionCount_ = 0;
    unsigned int finishOffset_ = 0;
    CValue resultValue_;
};
