#include "vm/MemoryBlock.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <utility>

#include "platform/BinaryStream.h"
#include "value/CompositeValue.h"
#include "value/Value.h"
#include "vm/MemoryRef.h"

#if defined(__SANITIZE_ADDRESS__)
#define TN61131_POISON_KEPT_BUFFERS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TN61131_POISON_KEPT_BUFFERS 1
#endif
#endif
#ifdef TN61131_POISON_KEPT_BUFFERS
#include <sanitizer/asan_interface.h>
#endif

namespace {

// A kept buffer belongs to nobody: under AddressSanitizer a stale pointer into it is caught like one into freed memory.
void Poison([[maybe_unused]] const unsigned char* data, [[maybe_unused]] std::size_t size) noexcept {
#ifdef TN61131_POISON_KEPT_BUFFERS
    ASAN_POISON_MEMORY_REGION(data, size);
#endif
}

void Unpoison([[maybe_unused]] const unsigned char* data, [[maybe_unused]] std::size_t size) noexcept {
#ifdef TN61131_POISON_KEPT_BUFFERS
    ASAN_UNPOISON_MEMORY_REGION(data, size);
#endif
}

}  // namespace

CMemoryBlock::CMemoryBlock(const CMemoryBlock& other) : CVMMemoryInterface(other) {
    if (other.allocatedSize_ == 0) return;
    Allocate(other.dataSize_);
    std::memcpy(data_.get(), other.data_.get(), std::size_t{other.dataSize_} + kOverhead);
}

CMemoryBlock& CMemoryBlock::operator=(const CMemoryBlock& other) {
    if (this != &other) *this = CMemoryBlock(other);
    return *this;
}

CMemoryBlock::CMemoryBlock(CMemoryBlock&& other) noexcept : CVMMemoryInterface(other) {
    TakeFrom(other);
}

CMemoryBlock& CMemoryBlock::operator=(CMemoryBlock&& other) noexcept {
    if (this != &other) TakeFrom(other);
    return *this;
}

void CMemoryBlock::TakeFrom(CMemoryBlock& other) noexcept {
    data_ = std::move(other.data_);
    kept_ = std::move(other.kept_);
    guard_ = std::exchange(other.guard_, kGuard);
    capacity_ = std::exchange(other.capacity_, 0);
    dataSize_ = std::exchange(other.dataSize_, 0);
    allocatedSize_ = std::exchange(other.allocatedSize_, 0);
}

CMemoryBlock::~CMemoryBlock() = default;

void CMemoryBlock::Allocate(unsigned int size) {
    // The allocated size has 32 bits. No image holds that much; a host that asks for it is told like by `new`.
    if (size > std::numeric_limits<unsigned int>::max() - kOverhead) throw std::bad_alloc();
    const std::size_t needed = std::size_t{size} + kOverhead;
    std::unique_ptr<unsigned char[]>& buffer = data_ != nullptr ? data_ : kept_;
    if (buffer == nullptr || capacity_ < needed) {
        FreeMemoryBlock();
        data_.reset(new unsigned char[needed]);
        capacity_ = needed;
    } else if (data_ == nullptr) {
        data_ = std::move(kept_);
        Unpoison(data_.get(), capacity_);
    }
    dataSize_ = size;
    allocatedSize_ = size + kGuardSize;
    guard_ = data_.get() + size;
    std::memset(data_.get() + allocatedSize_, 0, kSlackSize);
    SetGuardBytes();
}

void CMemoryBlock::CopyData(unsigned int size, const unsigned char* bytes) {
    if (size == 0) {
        FreeMemoryBlock();
        return;
    }
    Allocate(size);
    std::memcpy(data_.get(), bytes, size);
}

bool CMemoryBlock::LoadData(unsigned int total, CBinaryInput& input) {
    FreeMemoryBlock();
    if (total == 0) return true;
    if (total < kGuardSize) return false;
    if (total > input.GetBytesLeft()) {
        input.SetFailed();
        return false;
    }
    Allocate(total - kGuardSize);
    if (input.TryRead(data_.get(), total)) return true;
    FreeMemoryBlock();
    return false;
}

void CMemoryBlock::AllocateNewData(unsigned int size) {
    if (size == dataSize_) return;
    FreeMemoryBlock();
    if (size == 0) return;
    Allocate(size);
    std::memset(data_.get(), 0, size);
}

void CMemoryBlock::FreeMemoryBlock() noexcept {
    data_.reset();
    kept_.reset();
    guard_ = kGuard;
    capacity_ = 0;
    dataSize_ = 0;
    allocatedSize_ = 0;
}

void CMemoryBlock::EmptyForReuse() noexcept {
    if (data_ == nullptr) return;
    if (capacity_ > kMaxKeptBuffer) {
        FreeMemoryBlock();
        return;
    }
    kept_ = std::move(data_);
    guard_ = kGuard;
    Poison(kept_.get(), capacity_);
    dataSize_ = 0;
    allocatedSize_ = 0;
}

void CMemoryBlock::SetGuardBytes() noexcept {
    if (allocatedSize_ != 0) std::memcpy(data_.get() + dataSize_, kGuard, kGuardSize);
}

void CMemoryBlock::CopyDataFrom(unsigned int offset, unsigned int sourceOffset, const CMemoryBlock* source,
                                unsigned int size) const noexcept {
    if (size != 0) std::memmove(data_.get() + offset, source->data_.get() + sourceOffset, size);
}

void CMemoryBlock::PrintData(const char* name, COutputLog& output) const {
    output.PrintData(name, allocatedSize_, data_.get());
}

bool CMemoryBlock::GetValueAtOffset(unsigned int offset, ElementaryType type, unsigned int size, CValue& out) const {
    if (allocatedSize_ == 0 || offset > dataSize_) {
        out.ClearValue();
        return false;
    }
    // A string ends where its count says, whatever size the program states, but inside the data.
    const bool isString = type == ElementaryType::String || type == ElementaryType::WString;
    return out.SetFromDataBytes(type, data_.get() + offset, isString ? dataSize_ - offset : size);
}

bool CMemoryBlock::GetCompositeValueAtOffset(unsigned int offset, ElementaryType type, unsigned int count,
                                             CValue& out) const {
    const unsigned int available = offset <= dataSize_ ? dataSize_ - offset : 0;
    const unsigned int elementSize = GetTypeInfo(type).size;
    const unsigned int elements = elementSize == 0 ? count : std::min(count, available / elementSize);
    const unsigned char* const bytes = available == 0 ? nullptr : data_.get() + offset;
    out.SetCompositeValue(std::make_unique<CCompositeValue>(type, elements, bytes).release());
    return true;
}

InstructionResult CMemoryBlock::SetValueAtOffset(const CClientAccessContext& /*access*/, unsigned int offset,
                                                 unsigned int size, const CValue& value,
                                                 const ErrorLocation& /*location*/, CErrorLog& /*log*/) const {
    if (allocatedSize_ == 0 || offset > dataSize_) return InstructionResult::Failed;
    // A string stays inside the data; a fixed-size value writes all its bytes, at most into guard and slack.
    const unsigned int available = std::min(size, dataSize_ - offset);
    return value.GetRawData(data_.get() + offset, available) ? InstructionResult::Continue : InstructionResult::Failed;
}

bool CMemoryBlock::CopyDataFrom(unsigned int offset, const CMemoryRef& source, unsigned int size) const {
    std::uint64_t sourceOffset = source.GetTargetMemOffset();
    const CVMMemoryInterface* provider = source.GetTargetMem();
    while (const auto* reference = dynamic_cast<const CMemoryRef*>(provider)) {
        sourceOffset += reference->GetTargetMemOffset();
        provider = reference->GetTargetMem();
    }
    const auto* block = dynamic_cast<const CMemoryBlock*>(provider);
    if (block == nullptr || sourceOffset > block->dataSize_ || !IsDataWithinBlock(offset, size)) return false;
    const auto blockOffset = static_cast<unsigned int>(sourceOffset);
    if (!block->IsDataWithinBlock(blockOffset, size)) return false;
    CopyDataFrom(offset, blockOffset, block, size);
    return true;
}
