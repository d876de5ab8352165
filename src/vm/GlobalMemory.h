#pragma once

#include "platform/ErrorLog.h"
#include "platform/Export.h"
#include "value/PointerValue.h"
#include "vm/InstructionResult.h"
#include "vm/MemoryBlock.h"

class CDirectlyLocatedVariables;
class CMemoryRef;

/// The memory that all frames of a context share: global data, constants, tags, and the time of the scan. Owns nothing;
/// everything it was made with must outlive it.
class TN61131_API CVirtualMachineGlobalMem {
 public:
    CVirtualMachineGlobalMem(CMemoryBlock* constants, CMemoryBlock* globalData,
                             const CDirectlyLocatedVariables* locatedVariables) noexcept
        : constants_(constants), globalData_(globalData), locatedVariables_(locatedVariables) {}
    CVirtualMachineGlobalMem(const CVirtualMachineGlobalMem&) = delete;
    CVirtualMachineGlobalMem& operator=(const CVirtualMachineGlobalMem&) = delete;
    virtual ~CVirtualMachineGlobalMem();

    /// VM time in milliseconds; null takes the clock.
    void SetCurrentTimestamp(const long long* milliseconds) noexcept;
    [[nodiscard]] long long GetCurrentTimestampMS() const noexcept { return timestampMS_; }
    /// Resolves pointers to global data, constants and tags and checks that `size` bytes are there. Continue, or Failed
    /// after one message.
    [[nodiscard]] InstructionResult GetGlobalPointerAddress(CErrorLog& log, const ErrorLocation& location,
                                                            const PointerValue* pointer, unsigned int size,
                                                            CMemoryRef& out) const;

 protected:
    CMemoryBlock* constants_;
    CMemoryBlock* globalData_;
    const CDirectlyLocatedVariables* locatedVariables_;
    long long timestampMS_ = 0;
};
