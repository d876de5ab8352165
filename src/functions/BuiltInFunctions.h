#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "platform/ErrorLog.h"
#include "platform/Export.h"
#include "vm/InstructionResult.h"

class CBuiltInFunctionContext;
class CMemoryRef;
class CValue;
class CVirtualMachineExec;

/// What a built-in call returns: Continue (success), Failed (logged), Invalid (the program must stop) or Suspend.
using CallStatus = InstructionResult;

/// One group of built-in functions. Stateless; shared by all contexts and threads.
class TN61131_API CVMFunc {
 public:
    /// Whether the function always gives the same result for the same arguments, so that a compiler may fold it.
    [[nodiscard]] virtual bool IsInvariant(unsigned char id) const;
    /// Calls the function that `context` names. Arguments may be changed in place; `result` is overwritten.
    virtual CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                                       CValue* arguments, CValue& result) = 0;
    /// Upper-case name; null for an unknown id.
    [[nodiscard]] virtual const char* GetFunctionName(unsigned char id) const = 0;

    static void LogInvalidFunctionArgumentCount(CErrorLog& log, const ErrorLocation& location, int expected);
    static void LogInvalidFunctionCode(CErrorLog& log, const ErrorLocation& location, const char* groupWord,
                                       unsigned char id);

 protected:
    CVMFunc() = default;
    ~CVMFunc() = default;
};

/// One group of function blocks. Stateless; the state is in the instance data.
class TN61131_API CVMFunctionBlock {
 public:
    virtual ~CVMFunctionBlock();
    virtual CallStatus ExecuteFunctionBlock(CVirtualMachineExec& exec, CBuiltInFunctionContext& context,
                                            CMemoryRef& instance, unsigned int dataSize, unsigned char inputCount,
                                            CValue* inputs, CErrorLog& log) = 0;
    /// Bytes that the instance data of a block must have; 0 for an unknown id.
    [[nodiscard]] virtual unsigned int GetDataSize(unsigned char id) const = 0;
    /// Never null for the standard group: "???" for an unknown id.
    [[nodiscard]] virtual const char* GetName(unsigned char id) const = 0;
};

/// The registry of one context: group numbers to group objects, which it does not own. Starts with the library's own
/// groups.
class TN61131_API CBuiltInFunctions {
 public:
    static constexpr unsigned int kFunctionGroups = 16;
    static constexpr unsigned int kBlockGroups = 4;

    CBuiltInFunctions() noexcept;

    /// Groups 1 to 16, respectively 1 to 4; any other number is ignored. Null empties the slot. The object must outlive
    /// the registry.
    void RegisterFunctionGroup(unsigned char group, CVMFunc* functions) noexcept;
    void RegisterFunctionBlockGroup(unsigned char group, CVMFunctionBlock* blocks) noexcept;

    CallStatus Execute(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount, CValue* arguments,
                       CValue& result);
    CallStatus ExecuteFunctionBlock(CVirtualMachineExec& exec, CBuiltInFunctionContext& context, CMemoryRef& instance,
                                    unsigned int dataSize, unsigned char inputCount, CValue* inputs, CErrorLog& log);
    [[nodiscard]] bool IsInvariant(CBuiltInFunctionContext& context) const;
    /// Null where there is no such group or function.
    [[nodiscard]] const char* GetFunctionName(unsigned char group, unsigned char id) const;
    [[nodiscard]] const char* GetFunctionBlockName(unsigned char group, unsigned char id) const;
    /// Bytes of a block's instance data; 0 where there is no such block.
    [[nodiscard]] unsigned int GetFunctionBlockDataSize(unsigned char group, unsigned char id) const;

 private:
    std::array<CVMFunc*, kFunctionGroups> functionGroups_;
    std::array<CVMFunctionBlock*, kBlockGroups> blockGroups_;
};
