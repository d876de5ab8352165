#pragma once

#include <span>

#include "functions/BuiltInFunctions.h"

struct BlockRow;

/// The standard function blocks (IEC 61131-3, 6.6.3.5): bistables, edge detectors, counters and timers. A block is
/// called with its inputs and then a pointer for each output; it answers Invalid to every failure. Timers measure in
/// the VM time of the scan. Zeroed instance data is the initial state of every block.
class TN61131_API CVMFunctionBlockStandard final : public CVMFunctionBlock {
 public:
    static constexpr unsigned char kGroupNumber = 1;
    [[nodiscard]] static std::span<const BlockRow> GetTable() noexcept;

    CallStatus ExecuteFunctionBlock(CVirtualMachineExec& exec, CBuiltInFunctionContext& context, CMemoryRef& instance,
                                    unsigned int dataSize, unsigned char inputCount, CValue* inputs,
                                    CErrorLog& log) override;
    [[nodiscard]] unsigned int GetDataSize(unsigned char id) const override;
    [[nodiscard]] const char* GetName(unsigned char id) const override;
};
