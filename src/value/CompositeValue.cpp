#include "value/CompositeValue.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/BinaryStream.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

CCompositeValue::CCompositeValue(ElementaryType type, unsigned int count, const void* data)
    : CValueType(type), count_(count) {
    const std::uint64_t size = std::uint64_t{count} * GetSize();
    if (size > std::numeric_limits<unsigned int>::max()) {
        count_ = 0;  // more than the length of a composite can say
        return;
    }
    if (size == 0 || data == nullptr) return;
    data_ = std::make_unique<unsigned char[]>(size);
    std::memcpy(data_.get(), data, size);
}

CCompositeValue::CCompositeValue(const CCompositeValue& other)
    : CCompositeValue(other.type_, other.count_, other.data_.get()) {}

CCompositeValue& CCompositeValue::operator=(const CCompositeValue& other) {
    if (this != &other) *this = CCompositeValue(other);
    return *this;
}

bool CCompositeValue::ReadBYTEArrayFromFile(const CTNFilePath& path) {
    data_.reset();
    TNFileUnix file;
    if (!file.OpenFileForRead(path)) return false;
    type_ = ElementaryType::Byte;
    count_ = file.GetFileSize();
    data_ = std::make_unique<unsigned char[]>(count_);
    return file.ReadBytes(data_.get(), count_);
}

bool CCompositeValue::GetElement(unsigned int index, CValue& out) const {
    if (index >= count_) return false;
    const unsigned int size = GetSize();
    if (size != 0 && data_ == nullptr) return false;  // a file that could not be read leaves the count without data
    return out.SetFromDataBytes(type_, data_.get() + std::size_t{index} * size, size);
}

void CCompositeValue::SaveCompositeValue(CBinaryOutput& output) const {
    output << static_cast<unsigned char>(type_);
    if (GetSize() != 0 && data_ == nullptr) {
        output << 0U;
        return;
    }
    output << count_;
    output.WriteBytes(data_.get(), GetDataLength());
}

void CCompositeValue::LoadCompositeValue(CBinaryInput& input) {
    unsigned char type = 0;
    unsigned int count = 0;
    input >> type >> count;
    data_.reset();
    count_ = 0;
    type_ = static_cast<ElementaryType>(type);
    const std::uint64_t size = std::uint64_t{count} * GetSize();
    if (size > input.GetBytesLeft() || size > std::numeric_limits<unsigned int>::max()) input.SetFailed();
    if (input.HasFailed()) return;
    if (size != 0) {
        data_ = std::make_unique<unsigned char[]>(size);
        if (!input.TryRead(data_.get(), size)) {
            data_.reset();
            return;
        }
    }
    count_ = count;
}

void CCompositeValue::Print(CTextOutput& output) const {
    constexpr unsigned int kMaxPrinted = 16;
    output.Write(GetTypeName(false));
    if (count_ == 0) {
        output.Write("[]");
        return;
    }
    output.Write("[ ");
    for (unsigned int i = 0; i < std::min(count_, kMaxPrinted); ++i) {
        if (i != 0) output.Write(", ");
        CValue element;
        (void)GetElement(i, element);  // what has no bytes prints as undefined
        element.GetAsLiteral(output);
    }
    if (count_ > kMaxPrinted) output.Write(", ...");
    output.Write(" ]");
}
