#pragma once

#include <memory>

#include "platform/Export.h"
#include "platform/File.h"
#include "value/ValueType.h"

class CBinaryInput;
class CBinaryOutput;
class CTextOutput;
class CValue;

/// The payload of a COMPOSITE value: a packed array of elements of one elementary type, which it owns.
class TN61131_API CCompositeValue : public CValueType {
 public:
    CCompositeValue() noexcept = default;
    /// Copies `count` elements in their memory form from `data`. A type of variable size has no bytes to copy.
    CCompositeValue(ElementaryType type, unsigned int count, const void* data);
    CCompositeValue(const CCompositeValue& other);
    CCompositeValue& operator=(const CCompositeValue& other);
    CCompositeValue(CCompositeValue&&) noexcept = default;
    CCompositeValue& operator=(CCompositeValue&&) noexcept = default;
    ~CCompositeValue() = default;

    /// Becomes an array of BYTE with the content of a file. False, without data but with the old type and count, when
    /// the file cannot be opened; false when it cannot be read to its end.
    [[nodiscard]] bool ReadBYTEArrayFromFile(const CTNFilePath& path);
    [[nodiscard]] unsigned int GetCount() const noexcept { return count_; }
    [[nodiscard]] const unsigned char* GetData() const noexcept { return data_.get(); }
    /// Bytes of all elements.
    [[nodiscard]] unsigned int GetDataLength() const noexcept { return count_ * GetSize(); }
    /// Element `index`, from 0. False, `out` untouched, when there is none.
    [[nodiscard]] bool GetElement(unsigned int index, CValue& out) const;
    /// Type (1 byte), count (4 bytes), data.
    void SaveCompositeValue(CBinaryOutput& output) const;
    /// Reads what SaveCompositeValue() wrote. More data than the stream holds fails the stream and leaves no elements.
    void LoadCompositeValue(CBinaryInput& input);
    /// "BYTE[ 16#1, 16#2 ]", at most 16 elements and then ", ...".
    void Print(CTextOutput& output) const;

 private:
    unsigned int count_ = 0;
    std::unique_ptr<unsigned char[]> data_;
};
