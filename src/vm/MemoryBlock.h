#pragma once

#include <cstddef>
#include <cstring>
#include <memory>

#include "platform/Export.h"
#include "vm/MemoryInterface.h"

class CBinaryInput;
class COutputLog;

/// An owned block of bytes with four guard bytes EF BE 0D 60 behind the usable data. All bounds compare against the
/// usable data. Behind the guard lies hidden slack, so that an access that was checked with a smaller size than it has
/// still stays inside what the block owns; a write of that kind shows in the guard.
class TN61131_API CMemoryBlock final : public CVMMemoryInterface {
 public:
    static constexpr unsigned int kGuardSize = 4;
    static constexpr unsigned char kGuard[kGuardSize] = {0xEF, 0xBE, 0x0D, 0x60};
    /// The most that an access may reach beyond the size it was checked with: a pointer or a 64-bit number.
    static constexpr unsigned int kSlackSize = 16;
    /// The largest buffer that EmptyForReuse() keeps, so that a deep recursion leaves little behind.
    static constexpr std::size_t kMaxKeptBuffer = 1024;

    CMemoryBlock() noexcept = default;
    /// Copies the sizes and the whole allocation, guard bytes included.
    CMemoryBlock(const CMemoryBlock& other);
    CMemoryBlock& operator=(const CMemoryBlock& other);
    CMemoryBlock(CMemoryBlock&& other) noexcept;
    CMemoryBlock& operator=(CMemoryBlock&& other) noexcept;
    ~CMemoryBlock() override;

    /// Usable bytes.
    [[nodiscard]] unsigned int GetDataSize() const noexcept { return dataSize_; }
    /// Usable bytes and guard; 0 for an empty block.
    [[nodiscard]] unsigned int GetAllocatedSize() const noexcept { return allocatedSize_; }

    /// Becomes a copy of `size` bytes with a fresh guard; empty for size 0.
    void CopyData(unsigned int size, const unsigned char* bytes);
    /// Reads `total` bytes, the last four of which are the guard as the stream has it. 0 leaves the block empty and
    /// succeeds. False when `total` is 1 to 3 or more than the stream holds: the block is then empty.
    [[nodiscard]] bool LoadData(unsigned int total, CBinaryInput& input);
    /// Zeroed data of a new size; the same size keeps the content.
    void AllocateNewData(unsigned int size);
    void FreeMemoryBlock() noexcept;
    /// Becomes empty like FreeMemoryBlock(), but keeps a small buffer for the next data: for blocks whose data comes
    /// and goes with every call.
    void EmptyForReuse() noexcept;
    void SetGuardBytes() noexcept;
    /// True for an empty block.
    [[nodiscard]] bool CheckGuardBytes() const noexcept { return std::memcmp(guard_, kGuard, kGuardSize) == 0; }
    /// Raw copy between two blocks, no checks.
    void CopyDataFrom(unsigned int offset, unsigned int sourceOffset, const CMemoryBlock* source,
                      unsigned int size) const noexcept;
    /// A dump of the data and the guard bytes.
    void PrintData(const char* name, COutputLog& output) const;

    [[nodiscard]] bool IsDataWithinBlock(unsigned int offset, unsigned int size) const noexcept override {
        return size <= dataSize_ && offset <= dataSize_ - size;
    }
    bool GetValueAtOffset(unsigned int offset, ElementaryType type, unsigned int size, CValue& out) const override;
    bool GetCompositeValueAtOffset(unsigned int offset, ElementaryType type, unsigned int count,
                                   CValue& out) const override;
    InstructionResult SetValueAtOffset(const CClientAccessContext& access, unsigned int offset, unsigned int size,
                                       const CValue& value, const ErrorLocation& location,
                                       CErrorLog& log) const override;
    [[nodiscard]] unsigned int GetOffset() const noexcept override { return 0; }
    [[nodiscard]] unsigned char* GetVMData() const noexcept override { return data_.get(); }
    bool CopyDataFrom(unsigned int offset, const CMemoryRef& source, unsigned int size) const override;

    /// The address of `size` bytes at `offset` when they lie inside the allocation, guard and slack included; null
    /// otherwise. The last line of defence of the unchecked accessors.
    [[nodiscard]] unsigned char* GetAllocatedBytes(unsigned int offset, unsigned int size) const noexcept {
        const std::size_t allocation = std::size_t{allocatedSize_} + kSlackSize;
        if (allocatedSize_ == 0 || size > allocation || offset > allocation - size) return nullptr;
        return data_.get() + offset;
    }

 private:
    static constexpr std::size_t kOverhead = kGuardSize + kSlackSize;

    /// A buffer for `size` usable bytes, whose content is undefined, with guard and zeroed slack.
    void Allocate(unsigned int size);
    void TakeFrom(CMemoryBlock& other) noexcept;

    std::unique_ptr<unsigned char[]> data_;  ///< null for an empty block
    std::unique_ptr<unsigned char[]> kept_;  ///< an emptied buffer; null unless data_ is
    const unsigned char* guard_ = kGuard;    ///< behind the data; intact without data, so that the check needs no test
    std::size_t capacity_ = 0;               ///< bytes of the buffer, whichever holds it
    unsigned int dataSize_ = 0;
    unsigned int allocatedSize_ = 0;
};
