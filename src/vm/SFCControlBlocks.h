#pragma once

#include "platform/ErrorLog.h"
#include "platform/Export.h"
#include "vm/InstructionResult.h"

class CMemoryRef;
class CVirtualMachineExec;

/// The control blocks of sequential function charts (IEC 61131-3, 6.7.4): the elapsed time of a step, and the
/// ACTION_CONTROL block that turns action qualifiers into activity flags. They work on packed bytes of program memory;
/// times are milliseconds of the scan.
class TN61131_API VMSFCControlBlocks {
 public:
    using Handler = InstructionResult (*)(CVirtualMachineExec&, CMemoryRef&, CErrorLog&);
    struct ControlBlock {
        unsigned char type;
        unsigned int dataSize;  ///< bytes that the instruction must state
        Handler handler;
    };
    static constexpr unsigned int m_ControlBlockLookupLength = 2;
    static const ControlBlock m_ControlBlockLookup[m_ControlBlockLookupLength];

    /// Failed, without a message, for an unknown type or another size than the table's.
    static InstructionResult ExecuteControlBlock(CVirtualMachineExec& exec, unsigned char type, unsigned int dataSize,
                                                 CMemoryRef& block, CErrorLog& log);
    static InstructionResult StepControlBlock(CVirtualMachineExec& exec, CMemoryRef& block, CErrorLog& log);
    static InstructionResult ActionControlBlock(CVirtualMachineExec& exec, CMemoryRef& block, CErrorLog& log);

    // The elements, at a byte offset inside the block.
    static void ExecuteRS(CVirtualMachineExec& exec, CMemoryRef& block, unsigned int base);
    static void ExecuteTON(CVirtualMachineExec& exec, CMemoryRef& block, unsigned int base);
    static void ExecuteRTRIG(CVirtualMachineExec& exec, CMemoryRef& block, unsigned int base);
    static void ExecuteFTRIG(CVirtualMachineExec& exec, CMemoryRef& block, unsigned int base);
};
