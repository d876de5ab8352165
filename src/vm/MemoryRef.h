#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/Export.h"
#include "platform/StringObject.h"
#include "value/PointerValue.h"
#include "vm/MemoryBlock.h"
#include "vm/MemoryInterface.h"

/// A reference into memory: a provider, not owned, and an offset. Operations forward to the provider with the offset
/// added; a sum beyond 32 bits is out of range. Typed accessors do not check against the size of the data: resolve the
/// pointer with a size first. What would leave the memory that the provider owns reads as zero and writes nothing.
class TN61131_API CMemoryRef final : public CVMMemoryInterface {
 public:
    CMemoryRef() noexcept = default;
    CMemoryRef(const CVMMemoryInterface* target, unsigned int offset) noexcept;
    CMemoryRef(const CMemoryBlock& block, unsigned int offset) noexcept
        : target_(&block), block_(&block), offset_(offset) {}
    /// The other reference's target, the offsets added.
    CMemoryRef(const CMemoryRef& other, unsigned int extraOffset) noexcept
        : target_(other.target_), block_(other.block_), offset_(Sum(other.offset_, extraOffset)) {}
    CMemoryRef(const CMemoryRef&) noexcept = default;
    CMemoryRef& operator=(const CMemoryRef&) noexcept = default;
    ~CMemoryRef() override;

    /// Null for an unset reference.
    [[nodiscard]] const CVMMemoryInterface* GetTargetMem() const noexcept { return target_; }
    [[nodiscard]] unsigned int GetTargetMemOffset() const noexcept { return offset_; }
    /// The target when it is a block, null for any other.
    [[nodiscard]] const CMemoryBlock* GetTargetBlock() const noexcept { return block_; }
    void AdjustOffset(int bytes) noexcept { offset_ += static_cast<unsigned int>(bytes); }

    /// False for an unset reference.
    [[nodiscard]] bool IsDataWithinBlock(unsigned int offset, unsigned int size) const override;
    bool GetValueAtOffset(unsigned int offset, ElementaryType type, unsigned int size, CValue& out) const override;
    bool GetCompositeValueAtOffset(unsigned int offset, ElementaryType type, unsigned int count,
                                   CValue& out) const override;
    InstructionResult SetValueAtOffset(const CClientAccessContext& access, unsigned int offset, unsigned int size,
                                       const CValue& value, const ErrorLocation& location,
                                       CErrorLog& log) const override;
    [[nodiscard]] unsigned int GetOffset() const override;
    [[nodiscard]] unsigned char* GetVMData() const override;
    bool CopyDataFrom(unsigned int offset, const CMemoryRef& source, unsigned int size) const override;

    /// The address of `size` bytes at `offset`, for who works on a whole record; null when they are not the provider's.
    /// Valid as long as the provider's data stays where it is.
    [[nodiscard]] unsigned char* GetBytes(unsigned int offset, std::size_t size) const;

    void SetBOOLAtOffset(unsigned int offset, bool value) const;
    [[nodiscard]] bool GetBOOLAtOffset(unsigned int offset) const;
    void SetSINTAtOffset(unsigned int offset, signed char value) const;
    [[nodiscard]] signed char GetSINTAtOffset(unsigned int offset) const;
    void SetINTAtOffset(unsigned int offset, short value) const;
    [[nodiscard]] short GetINTAtOffset(unsigned int offset) const;
    void SetDINTAtOffset(unsigned int offset, int value) const;
    [[nodiscard]] int GetDINTAtOffset(unsigned int offset) const;
    void SetLINTAtOffset(unsigned int offset, long long value) const;
    [[nodiscard]] long long GetLINTAtOffset(unsigned int offset) const;
    void SetREALAtOffset(unsigned int offset, float value) const;
    void SetLREALAtOffset(unsigned int offset, double value) const;
    [[nodiscard]] double GetLREALAtOffset(unsigned int offset) const;
    void GetPointerAddressAtOffset(unsigned int offset, PointerValue& out) const;

    /// A 16-bit count, then that many bytes: the smaller of `maximum` and `length`.
    void SetSTRINGAtOffset(unsigned int offset, unsigned short maximum, unsigned short length,
                           const unsigned char* bytes) const;
    /// Null writes the empty string.
    void SetSTRINGAtOffset(unsigned int offset, unsigned short maximum, const Utf8String* text) const;
    void SetWSTRINGAtOffset(unsigned int offset, unsigned short maximum, unsigned short length,
                            const unsigned short* units) const;
    void SetWSTRINGAtOffset(unsigned int offset, unsigned short maximum, const Utf16String* text) const;
    /// Copies at most `maximum` units into `buffer`, no terminator; returns how many, 0 when they leave the memory.
    unsigned short GetWSTRINGAtOffset(unsigned int offset, unsigned short* buffer, unsigned short maximum) const;
    /// Runs the edge record (output, input, memory; a byte each) at `offset` with a new input. False when the provider
    /// has no data.
    bool SetEdgeAtOffset(unsigned int offset, bool rising, bool input) const;

 private:
    /// No block reaches the largest offset, so that a sum which stops there is out of range.
    [[nodiscard]] static unsigned int Sum(unsigned int left, unsigned int right) noexcept {
        return left <= UINT32_MAX - right ? left + right : UINT32_MAX;
    }
    template <typename T>
    [[nodiscard]] T Read(unsigned int offset) const;
    template <typename T>
    void Write(unsigned int offset, T value) const;
    /// Writes a string of units of a T: the count, then the units.
    template <typename T>
    void WriteString(unsigned int offset, unsigned short count, const T* units) const;

    const CVMMemoryInterface* target_ = nullptr;
    const CMemoryBlock* block_ = nullptr;  ///< the target when that is a block
    unsigned int offset_ = 0;
};
