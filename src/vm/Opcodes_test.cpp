#include "vm/Opcodes.h"

#include "vm/TestImage.h"

namespace {

using namespace vmtest;

TEST(Opcodes, AreTheNumbersOfTheImages) {
    struct Pin {
        Opcode code;
        unsigned int number;
        std::string_view mnemonic;
        unsigned int length;
    };
    const Pin pins[] = {
        {Opcode::LoadImmediate, 1, "LD", 2},
        {Opcode::LoadAddr, 2, "LD ADDR", 6},
        {Opcode::LoadTagAddr, 3, "LD TAG ADDR", 7},
        {Opcode::PointerLoad, 4, "PTR LD", 4},
        {Opcode::PointerStore, 5, "PTR ST", 4},
        {Opcode::LoadStack, 6, "LD STACK", 2},
        {Opcode::StoreStack, 7, "ST STACK", 2},
        {Opcode::LoadStatus, 8, "LD STATUS", 2},
        {Opcode::PointerLoadArray, 9, "PTR LD ARRAY", 6},
        {Opcode::Push, 10, "PUSH", 1},
        {Opcode::Pop, 11, "POP", 1},
        {Opcode::Return, 12, "RET", 1},
        {Opcode::Convert, 13, "CONVERT", 2},
        {Opcode::Unary, 14, "", 2},
        {Opcode::Binary, 15, "", 2},
        {Opcode::Jump, 16, "JMP", 5},
        {Opcode::JumpZero, 17, "JMPZ", 5},
        {Opcode::JumpNotZero, 18, "JMPNZ", 5},
        {Opcode::JumpUndefined, 19, "JMPU", 5},
        {Opcode::CallFunction, 20, "", 4},
        {Opcode::Call, 21, "CALL", 6},
        {Opcode::InitTempData, 22, "INIT_TEMP_DATA", 5},
        {Opcode::InitLocalData, 23, "INIT_LOCAL_DATA", 5},
        {Opcode::CallFunctionBlock, 24, "", 8},
        {Opcode::PointerStoreEdge, 25, "PTR ST", 2},
        {Opcode::CallFunctionEno, 26, "", 4},
        {Opcode::Truncate, 27, "TRUNCATE", 2},
        {Opcode::Sfc, 28, "SFC", 4},
    };
    ASSERT_EQ(kOpcodeTable.size(), std::size(pins) + 1) << "an instruction without a pin";
    for (const Pin& pin : pins) {
        SCOPED_TRACE(pin.number);
        EXPECT_EQ(static_cast<unsigned int>(pin.code), pin.number);
        EXPECT_EQ(kOpcodeTable[pin.number].mnemonic, pin.mnemonic);
        EXPECT_EQ(kOpcodeTable[pin.number].FixedLength(), pin.length);
        EXPECT_EQ(kFixedLengths[pin.number], pin.length);
        EXPECT_TRUE(IsOpcode(pin.number));
    }
}

TEST(Opcodes, OthersAreNoInstructionsOfOneByte) {
    for (const unsigned int code : {0U, 29U, 30U, 128U, 255U}) {
        EXPECT_FALSE(IsOpcode(code)) << code;
        EXPECT_EQ(kFixedLengths[code], 1U) << code;
    }
}

TEST(InstructionLength, AsksForWhatTheBytesTell) {
    struct Case {
        const char* why;
        Bytes bytes;
        std::uint64_t length;
    };
    const Case cases[] = {
        {"nothing yet", {}, 1},
        {"no instruction", {29}, 1},
        {"PUSH", {10}, 1},
        {"JMP without its offset", {16}, 5},
        {"JMP", Jmp(1), 5},
        {"LD without a type", {1}, 2},
        {"LD BOOL", {1, 1}, 3},
        {"LD LINT", {1, 11}, 10},
        {"LD POINTER", {1, 22}, 10},
        {"LD TYPE", {1, 27}, 5},
        {"LD Undefined", {1, 0}, 2},
        {"LD COMPOSITE", {1, 23}, 2},
        {"LD of no type", {1, 200}, 2},
        {"LD STRING without its count", {1, 20, 9}, 4},
        {"LD STRING", {1, 20, 2, 1}, 4 + 258},
        {"LD WSTRING without its count", {1, 21}, 4},
        {"LD WSTRING", {1, 21, 3, 0}, 4 + 6},
        {"the longest literal", {1, 21, 0xFF, 0xFF}, 4 + 131070},
        {"INIT_TEMP_DATA without its length", {22, 1, 2, 3}, 5},
        {"INIT_TEMP_DATA", {22, 3, 0, 0, 0}, 8},
        {"INIT_TEMP_DATA of 4 GiB", {22, 0xFF, 0xFF, 0xFF, 0xFF}, 5 + 0xFFFFFFFFULL},
        {"function block", {24}, 8},
    };
    for (const Case& row : cases)
        EXPECT_EQ(InstructionLength(row.bytes), row.length) << row.why;
}

}  // namespace
