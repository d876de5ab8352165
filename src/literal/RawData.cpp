#include <algorithm>
#include <bit>
#include <cstring>

#include "value/TypeTable.h"
#include "value/VMTypeValue.h"
#include "value/ValueLiteral.h"

// The machine's memory is little-endian and packed; payloads and units are copied as they are.
static_assert(std::endian::native == std::endian::little, "payloads would have to be swapped");

namespace {

constexpr std::size_t kCountSize = sizeof(std::uint16_t);

// Writes a count and as many units as `bufferSize` has room for.
template <typename Unit>
bool WriteCounted(std::span<const Unit> units, unsigned char* buffer, std::size_t bufferSize) noexcept {
    if (bufferSize < kCountSize) return false;
    const std::size_t written = std::min(units.size(), (bufferSize - kCountSize) / sizeof(Unit));
    const auto count = static_cast<std::uint16_t>(written);
    std::memcpy(buffer, &count, kCountSize);
    if (written != 0) std::memcpy(buffer + kCountSize, units.data(), written * sizeof(Unit));
    return true;
}

// The count in front of a string, cut to the units that `size` bytes hold. `size` is at least kCountSize.
unsigned int ReadCount(const unsigned char* data, unsigned int size, unsigned int unitSize) noexcept {
    std::uint16_t count = 0;
    std::memcpy(&count, data, kCountSize);
    return std::min<unsigned int>(count, (size - static_cast<unsigned int>(kCountSize)) / unitSize);
}

}  // namespace

unsigned int CValueLiteral::GetRawDataSize() const noexcept {
    switch (type_) {
        case ElementaryType::String: return static_cast<unsigned int>(GetUnits(GetUtf8String()).size() + kCountSize);
        case ElementaryType::WString:
            return static_cast<unsigned int>(GetUnits(GetUtf16String()).size_bytes() + kCountSize);
        default: return GetSize();
    }
}

bool CValueLiteral::GetUnevenBytes(unsigned char* buffer, std::size_t bufferSize) const noexcept {
    switch (type_) {
        case ElementaryType::Undefined: return true;
        case ElementaryType::Type: std::memcpy(buffer, payload_, sizeof(CVMTypeValue)); return true;
        case ElementaryType::String: return WriteCounted(GetUnits(GetUtf8String()), buffer, bufferSize);
        case ElementaryType::WString: return WriteCounted(GetUnits(GetUtf16String()), buffer, bufferSize);
        default: return false;
    }
}

bool CValueLiteral::SetFromUnevenBytes(ElementaryType type, const unsigned char* data, unsigned int size) {
    switch (type) {
        case ElementaryType::Undefined: return true;
        case ElementaryType::Type:
            std::memcpy(payload_, data, sizeof(CVMTypeValue));
            type_ = type;
            return true;
        case ElementaryType::String:
            if (size < kCountSize) return false;
            SetUtf8StringFromVMString(data + kCountSize, ReadCount(data, size, 1));
            return true;
        case ElementaryType::WString: {
            if (size < kCountSize) return false;
            // The units may lie at an odd address: copied byte by byte into an object of their own.
            const unsigned int count = ReadCount(data, size, sizeof(unsigned short));
            Utf16String* text = Utf16StringAlloc(count);
            std::memcpy(text->units, data + kCountSize, count * sizeof(unsigned short));
            SetScalar(type, text);
            return true;
        }
        default: return false;
    }
}
