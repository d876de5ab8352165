#pragma once

#include "platform/ErrorLog.h"
#include "platform/Export.h"
#include "value/ElementaryType.h"
#include "vm/InstructionResult.h"

class CClientAccessContext;
class CMemoryRef;
class CValue;

/// A provider of memory that programs address: a block, a reference to one, or a host's tag. Offsets and sizes are
/// bytes.
class TN61131_API CVMMemoryInterface {
 public:
    virtual ~CVMMemoryInterface();

    /// Whether `size` bytes from `offset` lie inside the usable data.
    [[nodiscard]] virtual bool IsDataWithinBlock(unsigned int offset, unsigned int size) const = 0;
    /// Reads a value of a type from `size` bytes; false when there is none to read.
    virtual bool GetValueAtOffset(unsigned int offset, ElementaryType type, unsigned int size, CValue& out) const = 0;
    /// A COMPOSITE of `count` elements; of those only that lie wholly inside the data.
    virtual bool GetCompositeValueAtOffset(unsigned int offset, ElementaryType type, unsigned int count,
                                           CValue& out) const = 0;
    /// Writes a value into `size` bytes on behalf of a client. Continue, or Failed when it cannot be written.
    virtual InstructionResult SetValueAtOffset(const CClientAccessContext& access, unsigned int offset,
                                               unsigned int size, const CValue& value, const ErrorLocation& location,
                                               CErrorLog& log) const = 0;
    /// Where this view starts inside the provider's data.
    [[nodiscard]] virtual unsigned int GetOffset() const = 0;
    /// The start of the provider's data; null when it has none.
    [[nodiscard]] virtual unsigned char* GetVMData() const = 0;
    /// Copies bytes from another reference; overlapping ranges behave as memmove. False when the source is no block.
    virtual bool CopyDataFrom(unsigned int offset, const CMemoryRef& source, unsigned int size) const = 0;

 protected:
    CVMMemoryInterface() = default;
    CVMMemoryInterface(const CVMMemoryInterface&) = default;
    CVMMemoryInterface& operator=(const CVMMemoryInterface&) = default;
};
