#include "vm/MemoryRef.h"

#include <algorithm>

#include "value/Value.h"
#include "vm/BooleanEdge.h"

CMemoryRef::CMemoryRef(const CVMMemoryInterface* target, unsigned int offset) noexcept
    : target_(target), block_(dynamic_cast<const CMemoryBlock*>(target)), offset_(offset) {}

CMemoryRef::~CMemoryRef() = default;

bool CMemoryRef::IsDataWithinBlock(unsigned int offset, unsigned int size) const {
    if (block_ != nullptr) return block_->IsDataWithinBlock(Sum(offset_, offset), size);
    return target_ != nullptr && target_->IsDataWithinBlock(Sum(offset_, offset), size);
}

bool CMemoryRef::GetValueAtOffset(unsigned int offset, ElementaryType type, unsigned int size, CValue& out) const {
    if (block_ != nullptr) return block_->GetValueAtOffset(Sum(offset_, offset), type, size, out);
    if (target_ != nullptr) return target_->GetValueAtOffset(Sum(offset_, offset), type, size, out);
    out.ClearValue();
    return false;
}

bool CMemoryRef::GetCompositeValueAtOffset(unsigned int offset, ElementaryType type, unsigned int count,
                                           CValue& out) const {
    return target_ != nullptr && target_->GetCompositeValueAtOffset(Sum(offset_, offset), type, count, out);
}

InstructionResult CMemoryRef::SetValueAtOffset(const CClientAccessContext& access, unsigned int offset,
                                               unsigned int size, const CValue& value, const ErrorLocation& location,
                                               CErrorLog& log) const {
    if (target_ == nullptr) return InstructionResult::Failed;
    return target_->SetValueAtOffset(access, Sum(offset_, offset), size, value, location, log);
}

unsigned int CMemoryRef::GetOffset() const {
    return target_ != nullptr ? Sum(target_->GetOffset(), offset_) : offset_;
}

unsigned char* CMemoryRef::GetVMData() const {
    return target_ != nullptr ? target_->GetVMData() : nullptr;
}

bool CMemoryRef::CopyDataFrom(unsigned int offset, const CMemoryRef& source, unsigned int size) const {
    return target_ != nullptr && target_->CopyDataFrom(Sum(offset_, offset), source, size);
}

unsigned char* CMemoryRef::GetBytes(unsigned int offset, std::size_t size) const {
    // Strings are the longest accesses: a count of 16 bits.
    const auto accessSize = static_cast<unsigned int>(size);
    const unsigned int position = Sum(offset_, offset);
    if (block_ != nullptr) return block_->GetAllocatedBytes(position, accessSize);
    if (target_ == nullptr || !target_->IsDataWithinBlock(position, accessSize)) return nullptr;
    unsigned char* const data = target_->GetVMData();
    return data != nullptr ? data + target_->GetOffset() + position : nullptr;
}

template <typename T>
T CMemoryRef::Read(unsigned int offset) const {
    T value{};
    if (const unsigned char* address = GetBytes(offset, sizeof(T))) std::memcpy(&value, address, sizeof(T));
    return value;
}

template <typename T>
void CMemoryRef::Write(unsigned int offset, T value) const {
    if (unsigned char* address = GetBytes(offset, sizeof(T))) std::memcpy(address, &value, sizeof(T));
}

template <typename T>
void CMemoryRef::WriteString(unsigned int offset, unsigned short count, const T* units) const {
    unsigned char* const address = GetBytes(offset, sizeof(count) + count * sizeof(T));
    if (address == nullptr) return;
    std::memcpy(address, &count, sizeof(count));
    if (count != 0) std::memcpy(address + sizeof(count), units, count * sizeof(T));
}

void CMemoryRef::SetBOOLAtOffset(unsigned int offset, bool value) const {
    Write(offset, static_cast<unsigned char>(value));
}
bool CMemoryRef::GetBOOLAtOffset(unsigned int offset) const {
    return Read<unsigned char>(offset) != 0;
}
void CMemoryRef::SetSINTAtOffset(unsigned int offset, signed char value) const {
    Write(offset, value);
}
signed char CMemoryRef::GetSINTAtOffset(unsigned int offset) const {
    return Read<signed char>(offset);
}
void CMemoryRef::SetINTAtOffset(unsigned int offset, short value) const {
    Write(offset, value);
}
short CMemoryRef::GetINTAtOffset(unsigned int offset) const {
    return Read<short>(offset);
}
void CMemoryRef::SetDINTAtOffset(unsigned int offset, int value) const {
    Write(offset, value);
}
int CMemoryRef::GetDINTAtOffset(unsigned int offset) const {
    return Read<int>(offset);
}
void CMemoryRef::SetLINTAtOffset(unsigned int offset, long long value) const {
    Write(offset, value);
}
long long CMemoryRef::GetLINTAtOffset(unsigned int offset) const {
    return Read<long long>(offset);
}
void CMemoryRef::SetREALAtOffset(unsigned int offset, float value) const {
    Write(offset, value);
}
void CMemoryRef::SetLREALAtOffset(unsigned int offset, double value) const {
    Write(offset, value);
}
double CMemoryRef::GetLREALAtOffset(unsigned int offset) const {
    return Read<double>(offset);
}
void CMemoryRef::GetPointerAddressAtOffset(unsigned int offset, PointerValue& out) const {
    out = Read<PointerValue>(offset);
}

void CMemoryRef::SetSTRINGAtOffset(unsigned int offset, unsigned short maximum, unsigned short length,
                                   const unsigned char* bytes) const {
    WriteString(offset, std::min(maximum, length), bytes);
}

void CMemoryRef::SetSTRINGAtOffset(unsigned int offset, unsigned short maximum, const Utf8String* text) const {
    const auto bytes = GetUnits(text);
    SetSTRINGAtOffset(offset, maximum, static_cast<unsigned short>(bytes.size()), bytes.data());
}

void CMemoryRef::SetWSTRINGAtOffset(unsigned int offset, unsigned short maximum, unsigned short length,
                                    const unsigned short* units) const {
    WriteString(offset, std::min(maximum, length), units);
}

void CMemoryRef::SetWSTRINGAtOffset(unsigned int offset, unsigned short maximum, const Utf16String* text) const {
    const auto units = GetUnits(text);
    SetWSTRINGAtOffset(offset, maximum, static_cast<unsigned short>(units.size()), units.data());
}

unsigned short CMemoryRef::GetWSTRINGAtOffset(unsigned int offset, unsigned short* buffer,
                                              unsigned short maximum) const {
    const auto count = std::min(Read<unsigned short>(offset), maximum);
    const std::size_t bytes = count * sizeof(unsigned short);
    const unsigned char* const address = GetBytes(offset, sizeof(count) + bytes);
    if (address == nullptr || count == 0) return 0;
    std::memcpy(buffer, address + sizeof(count), bytes);
    return count;
}

bool CMemoryRef::SetEdgeAtOffset(unsigned int offset, bool rising, bool input) const {
    unsigned char* const record = GetBytes(offset, 3);
    if (record == nullptr) return false;
    BooleanEdge edge{.output = record[0] != 0, .input = input, .memory = record[2] != 0};
    if (rising) {
        edge.ProcessRisingEdge();
    } else {
        edge.ProcessFallingEdge();
    }
    record[0] = edge.output;
    record[1] = edge.input;
    record[2] = edge.memory;
    return true;
}
