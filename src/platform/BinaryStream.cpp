#include "platform/BinaryStream.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>
#include <type_traits>

namespace {

template <typename T>
void WriteInteger(CBinaryOutput& output, T value) {
    auto bits = static_cast<std::make_unsigned_t<T>>(value);
    std::array<unsigned char, sizeof(T)> bytes;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bytes[i] = static_cast<unsigned char>(static_cast<std::uint64_t>(bits) >> (8 * i));
    output.WriteBytes(bytes.data(), bytes.size());
}

template <typename T>
void ReadInteger(CBinaryInput& input, T& value) {
    std::array<unsigned char, sizeof(T)> bytes;
    input.ReadBytes(bytes.data(), bytes.size());
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bits |= static_cast<std::uint64_t>(bytes[i]) << (8 * i);
    value = static_cast<T>(bits);
}

static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559);

/// The original UTF-8 byte forms: the lead byte's fixed bits, and the bits of the number they carry.
struct UtfForm {
    unsigned char leadBits;
    unsigned char leadMask;  // the fixed bits' places
    std::uint32_t firstBeyond;
};
constexpr std::array<UtfForm, 6> kUtfForms = {{
    {0x00, 0x80, 0x80},
    {0xC0, 0xE0, 0x800},
    {0xE0, 0xF0, 0x10000},
    {0xF0, 0xF8, 0x200000},
    {0xF8, 0xFC, 0x4000000},
    {0xFC, 0xFE, 0x80000000},
}};

}  // namespace

CBinaryOutput::~CBinaryOutput() = default;

CBinaryOutput& CBinaryOutput::operator<<(bool value) {
    return *this << static_cast<unsigned char>(value ? 1 : 0);
}

CBinaryOutput& CBinaryOutput::operator<<(signed char value) {
    WriteInteger(*this, value);
    return *this;
}

CBinaryOutput& CBinaryOutput::operator<<(unsigned char value) {
    WriteInteger(*this, value);
    return *this;
}

CBinaryOutput& CBinaryOutput::operator<<(short value) {
    WriteInteger(*this, value);
    return *this;
}

CBinaryOutput& CBinaryOutput::operator<<(unsigned short value) {
    WriteInteger(*this, value);
    return *this;
}

CBinaryOutput& CBinaryOutput::operator<<(int value) {
    WriteInteger(*this, value);
    return *this;
}

CBinaryOutput& CBinaryOutput::operator<<(unsigned int value) {
    WriteInteger(*this, value);
    return *this;
}

CBinaryOutput& CBinaryOutput::operator<<(long long value) {
    WriteInteger(*this, value);
    return *this;
}

CBinaryOutput& CBinaryOutput::operator<<(unsigned long long value) {
    WriteInteger(*this, value);
    return *this;
}

CBinaryOutput& CBinaryOutput::operator<<(float value) {
    WriteInteger(*this, std::bit_cast<std::uint32_t>(value));
    return *this;
}

CBinaryOutput& CBinaryOutput::operator<<(double value) {
    WriteInteger(*this, std::bit_cast<std::uint64_t>(value));
    return *this;
}

CBinaryOutput& CBinaryOutput::operator<<(const std::string& text) {
    const std::size_t size = std::min<std::size_t>(text.size(), std::numeric_limits<std::uint32_t>::max());
    Write7BitEncodedInt(static_cast<std::uint32_t>(size));
    WriteBytes(text.data(), size);
    return *this;
}

void CBinaryOutput::Write7BitEncodedInt(std::uint32_t value) {
    std::array<unsigned char, 5> bytes;
    std::size_t size = 0;
    for (; value >= 0x80; value >>= 7)
        bytes[size++] = static_cast<unsigned char>(0x80 | (value & 0x7F));
    bytes[size++] = static_cast<unsigned char>(value);
    WriteBytes(bytes.data(), size);
}

void CBinaryOutput::WriteUTFCharacter(std::uint32_t value) {
    value &= 0x7FFFFFFF;
    std::size_t last = 0;
    while (value >= kUtfForms[last].firstBeyond)
        ++last;
    std::array<unsigned char, kUtfForms.size()> bytes;
    for (std::size_t i = last; i > 0; --i) {
        bytes[i] = static_cast<unsigned char>(0x80 | (value & 0x3F));
        value >>= 6;
    }
    bytes[0] = static_cast<unsigned char>(kUtfForms[last].leadBits | value);
    WriteBytes(bytes.data(), last + 1);
}

CBinaryOutputBuffer::~CBinaryOutputBuffer() = default;

void CBinaryOutputBuffer::WriteBytes(const void* data, std::size_t size) {
    const auto* const bytes = static_cast<const unsigned char*>(data);
    data_.insert(data_.end(), bytes, bytes + size);
}

CBinaryInput::~CBinaryInput() = default;

bool CBinaryInput::TryRead(void* data, std::size_t size) {
    if (size == 0) return true;
    const std::size_t read = ReadSome(data, size);
    if (read == size) return true;
    std::memset(static_cast<unsigned char*>(data) + read, 0, size - read);
    failed_ = true;
    return false;
}

CBinaryInput& CBinaryInput::operator>>(bool& value) {
    unsigned char byte = 0;
    *this >> byte;
    value = byte != 0;
    return *this;
}

CBinaryInput& CBinaryInput::operator>>(signed char& value) {
    ReadInteger(*this, value);
    return *this;
}

CBinaryInput& CBinaryInput::operator>>(unsigned char& value) {
    ReadInteger(*this, value);
    return *this;
}

CBinaryInput& CBinaryInput::operator>>(short& value) {
    ReadInteger(*this, value);
    return *this;
}

CBinaryInput& CBinaryInput::operator>>(unsigned short& value) {
    ReadInteger(*this, value);
    return *this;
}

CBinaryInput& CBinaryInput::operator>>(int& value) {
    ReadInteger(*this, value);
    return *this;
}

CBinaryInput& CBinaryInput::operator>>(unsigned int& value) {
    ReadInteger(*this, value);
    return *this;
}

CBinaryInput& CBinaryInput::operator>>(long long& value) {
    ReadInteger(*this, value);
    return *this;
}

CBinaryInput& CBinaryInput::operator>>(unsigned long long& value) {
    ReadInteger(*this, value);
    return *this;
}

CBinaryInput& CBinaryInput::operator>>(float& value) {
    std::uint32_t bits = 0;
    ReadInteger(*this, bits);
    value = std::bit_cast<float>(bits);
    return *this;
}

CBinaryInput& CBinaryInput::operator>>(double& value) {
    std::uint64_t bits = 0;
    ReadInteger(*this, bits);
    value = std::bit_cast<double>(bits);
    return *this;
}

CBinaryInput& CBinaryInput::operator>>(std::string& text) {
    const std::size_t wanted = Read7BitEncodedInt();
    const std::size_t size = std::min(wanted, GetBytesLeft());
    text.resize(size);
    ReadBytes(text.data(), size);
    if (size < wanted) failed_ = true;
    return *this;
}

std::uint32_t CBinaryInput::Read7BitEncodedInt() {
    constexpr unsigned int kLastShift = 28;
    constexpr unsigned char kLargestLastByte = 0x0F;  // the upper four of 32 bits
    std::uint32_t value = 0;
    for (unsigned int shift = 0; shift <= kLastShift; shift += 7) {
        unsigned char byte = 0;
        if (!TryRead(&byte, 1)) return 0;
        if (shift == kLastShift && byte > kLargestLastByte) break;
        value |= static_cast<std::uint32_t>(byte & 0x7F) << shift;
        if (byte < 0x80) return value;
    }
    failed_ = true;
    return 0;
}

std::uint32_t CBinaryInput::ReadUTF8Character() {
    unsigned char lead = 0;
    if (!TryRead(&lead, 1)) return 0;
    const auto form = std::find_if(kUtfForms.begin(), kUtfForms.end(),
                                   [lead](const UtfForm& row) { return (lead & row.leadMask) == row.leadBits; });
    if (form == kUtfForms.end()) {
        failed_ = true;
        return 0;
    }
    auto value = static_cast<std::uint32_t>(lead & ~form->leadMask);
    for (auto left = form - kUtfForms.begin(); left > 0; --left) {
        unsigned char byte = 0;
        if (!TryRead(&byte, 1)) return 0;
        if ((byte & 0xC0) != 0x80) {
            failed_ = true;
            return 0;
        }
        value = value << 6 | (byte & 0x3F);
    }
    return value;
}

CBinaryInputMemory::~CBinaryInputMemory() = default;

std::size_t CBinaryInputMemory::ReadSome(void* data, std::size_t size) {
    const std::size_t count = std::min(size, GetBytesLeft());
    if (count != 0) std::memcpy(data, data_.data() + position_, count);
    position_ += count;
    return count;
}
