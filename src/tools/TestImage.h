#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/BinaryStream.h"
#include "vm/VirtualMachine.h"

namespace tn61131 {

/// A hand-made image for tests.
struct TestImage {
    using Bytes = std::vector<unsigned char>;

    Bytes code;
    Bytes globalData;
    Bytes constants;
    std::vector<std::pair<std::string, std::uint32_t>> programs;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> expressions;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> codeBlocks;

    [[nodiscard]] Bytes Save() const {
        CBinaryOutputBuffer file;
        file << static_cast<unsigned short>(CVirtualMachine::kMagic) << static_cast<unsigned short>(5);
        SaveBlock(file, globalData);
        SaveBlock(file, constants);
        file << static_cast<unsigned int>(code.size());
        file.WriteBytes(code.data(), code.size());
        file << static_cast<unsigned int>(programs.size());
        for (const auto& [name, codeOffset] : programs)
            file << name << codeOffset << 0U;
        SaveTable(file, expressions);
        SaveTable(file, codeBlocks);
        return file.GetData();
    }

 private:
    static void SaveBlock(CBinaryOutput& file, const Bytes& data) {
        file << static_cast<unsigned int>(data.size()) + CMemoryBlock::kGuardSize;
        file.WriteBytes(data.data(), data.size());
        file.WriteBytes(CMemoryBlock::kGuard, CMemoryBlock::kGuardSize);
    }
    static void SaveTable(CBinaryOutput& file, const std::vector<std::pair<std::uint32_t, std::uint32_t>>& table) {
        file << static_cast<unsigned int>(table.size());
        for (const auto& [id, codeOffset] : table)
            file << id << codeOffset;
    }
};

/// Adds 1 to the DINT at the start of the global data, and leaves the sum as the result. The last instruction, RET, is
/// at 30.
[[nodiscard]] inline TestImage MakeCounterImage() {
    TestImage image;
    image.code = {
        2,  1, 0, 0, 0, 0,  //  0 LD ADDR Global: 0
        4,  8, 4, 0,        //  6 PTR LD DINT (4)
        10,                 // 10 PUSH
        1,  8, 1, 0, 0, 0,  // 11 LD DINT#1
        15, 1,              // 17 ADD
        10,                 // 19 PUSH
        2,  1, 0, 0, 0, 0,  // 20 LD ADDR Global: 0
        5,  8, 4, 0,        // 26 PTR ST DINT (4)
        12,                 // 30 RET
    };
    image.globalData = {0, 0, 0, 0};
    image.programs = {{"Main", 0}};
    return image;
}

/// Divides by zero in a function that the program calls. The call returns to 6, the division is at 20.
[[nodiscard]] inline TestImage MakeFailingImage() {
    TestImage image;
    image.code = {
        21, 1, 7, 0, 0, 0,  //  0 CALL 0007, ArgCount 1
        12,                 //  6 RET
        1,  8, 1, 0, 0, 0,  //  7 LD DINT#1
        10,                 // 13 PUSH
        1,  8, 0, 0, 0, 0,  // 14 LD DINT#0
        15, 4,              // 20 DIV
        12,                 // 22 RET
    };
    image.programs = {{"Main", 0}};
    return image;
}

}  // namespace tn61131
