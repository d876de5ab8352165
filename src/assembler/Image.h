#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/BuildIdentity.h"
#include "vm/MemoryBlock.h"
#include "vm/VirtualMachine.h"

/// The parts of a VM image in the order of the file, tables with every entry that they have: unlike the loaded
/// CVirtualMachine it drops nothing, so that an image that was read is written again byte for byte.
struct ImageContent {
    using Guard = std::array<unsigned char, CMemoryBlock::kGuardSize>;
    static constexpr Guard kIntactGuard = {CMemoryBlock::kGuard[0], CMemoryBlock::kGuard[1], CMemoryBlock::kGuard[2],
                                           CMemoryBlock::kGuard[3]};

    struct Block {
        std::vector<unsigned char> data;
        Guard guard = kIntactGuard;
        friend bool operator==(const Block&, const Block&) = default;
    };
    struct Program {
        std::string name;
        std::uint32_t codeOffset = 0;
        std::uint32_t secondWord = 0;
        friend bool operator==(const Program&, const Program&) = default;
    };
    struct Entry {
        std::uint32_t id = 0;  ///< of an expression before version 3: the position, which the image does not hold
        std::uint32_t codeOffset = 0;
        friend bool operator==(const Entry&, const Entry&) = default;
    };

    std::optional<CBuildIdentity> build;
    std::uint16_t version = CVirtualMachine::kNewestVersion;
    Block globalData;
    Block constants;                ///< from version 2
    std::int32_t obsoleteWord = 0;  ///< up to version 4
    std::vector<unsigned char> code;
    std::vector<Program> programs;
    std::vector<Entry> expressions;
    std::vector<Entry> codeBlocks;  ///< from version 4

    [[nodiscard]] bool HasConstants() const noexcept { return version >= 2; }
    [[nodiscard]] bool HasExpressionIds() const noexcept { return version >= 3; }
    [[nodiscard]] bool HasCodeBlocks() const noexcept { return version >= 4; }
    [[nodiscard]] bool HasObsoleteWord() const noexcept { return version <= 4; }

    friend bool operator==(const ImageContent&, const ImageContent&) = default;
};

/// Writes images. What the version does not hold is left out.
class CImageWriter {
 public:
    [[nodiscard]] static std::vector<unsigned char> Write(const ImageContent& image);
};

/// Reads what CImageWriter writes. False, the reason in `error`, for every image that a host must refuse: one that
/// CVirtualMachine does not load, or that ends too early. Bytes behind the image are ignored.
[[nodiscard]] bool ReadImage(std::span<const unsigned char> bytes, ImageContent& image, std::string& error);
