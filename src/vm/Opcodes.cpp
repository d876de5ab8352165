#include "vm/Opcodes.h"

#include "value/TypeTable.h"

namespace {

/// Bytes of a literal's raw data, respectively of the count that a string begins with while that is not there.
std::uint64_t ImmediateLength(ElementaryType type, std::span<const unsigned char> data) noexcept {
    const bool isWide = type == ElementaryType::WString;
    if (!isWide && type != ElementaryType::String) return GetTypeInfo(type).size;
    constexpr std::size_t kCountSize = sizeof(std::uint16_t);
    if (data.size() < kCountSize) return kCountSize;
    const std::uint64_t count = ReadOperand<std::uint16_t>(data.data());
    return kCountSize + (isWide ? 2 * count : count);
}

}  // namespace

std::uint64_t InstructionLength(std::span<const unsigned char> bytes) noexcept {
    if (bytes.empty()) return 1;
    const std::uint64_t fixedLength = kFixedLengths[bytes[0]];
    if (bytes.size() < fixedLength) return fixedLength;
    switch (static_cast<Opcode>(bytes[0])) {
        case Opcode::LoadImmediate:
            return fixedLength + ImmediateLength(static_cast<ElementaryType>(bytes[1]), bytes.subspan(fixedLength));
        case Opcode::InitTempData: return fixedLength + ReadOperand<std::uint32_t>(&bytes[1]);
        default: return fixedLength;
    }
}
