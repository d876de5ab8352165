#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "platform/Export.h"

/// The instructions by their code. An instruction is the code followed by its operands, packed, little-endian.
enum class Opcode : std::uint8_t {
    LoadImmediate = 1,
    LoadAddr = 2,
    LoadTagAddr = 3,
    PointerLoad = 4,
    PointerStore = 5,
    LoadStack = 6,
    StoreStack = 7,
    LoadStatus = 8,
    PointerLoadArray = 9,
    Push = 10,
    Pop = 11,
    Return = 12,
    Convert = 13,
    Unary = 14,
    Binary = 15,
    Jump = 16,
    JumpZero = 17,
    JumpNotZero = 18,
    JumpUndefined = 19,
    CallFunction = 20,
    Call = 21,
    InitTempData = 22,
    InitLocalData = 23,
    CallFunctionBlock = 24,
    PointerStoreEdge = 25,
    CallFunctionEno = 26,
    Truncate = 27,
    Sfc = 28,
};

/// What an operand means; its width in the code follows from it.
enum class OperandKind : std::uint8_t {
    None,
    Type,            ///< 1: ElementaryType
    Immediate,       ///< raw data of the type in front of it; length depends on type and data
    LocationKind,    ///< 1: LocationKind
    Offset,          ///< 4: byte offset in memory
    TagOffset,       ///< 2: byte offset within a tag
    TagId,           ///< 4
    DataSize16,      ///< 2: bytes
    DataSize32,      ///< 4: bytes
    StackIndex,      ///< 1: relative to the frame
    StatusCode,      ///< 1
    ElementCount,    ///< 4
    UnaryOperator,   ///< 1
    BinaryOperator,  ///< 1
    JumpOffset,      ///< 4: signed, from behind the operand
    CodeOffset,      ///< 4: from the start of the code
    FunctionGroup,   ///< 1
    FunctionId,      ///< 1
    BlockGroup,      ///< 1
    BlockId,         ///< 1
    ArgumentCount,   ///< 1
    InitialData,     ///< 4-byte length, then that many bytes
    Edge,            ///< 1: non-zero rising
    ControlBlock,    ///< 1: SFC control block type
};

/// Bytes that an operand always has; Immediate has none and InitialData its length word.
[[nodiscard]] constexpr unsigned int OperandSize(OperandKind kind) noexcept {
    switch (kind) {
        case OperandKind::None:
        case OperandKind::Immediate: return 0;
        case OperandKind::TagOffset:
        case OperandKind::DataSize16: return 2;
        case OperandKind::Offset:
        case OperandKind::TagId:
        case OperandKind::DataSize32:
        case OperandKind::ElementCount:
        case OperandKind::JumpOffset:
        case OperandKind::CodeOffset:
        case OperandKind::InitialData: return 4;
        default: return 1;
    }
}

/// One row per instruction: execution, listing and assembly read its shape here.
struct OpcodeInfo {
    Opcode code;                          ///< equals the row's index
    std::string_view mnemonic;            ///< how a listing line begins; empty where operands decide it
    std::array<OperandKind, 4> operands;  ///< in code order
    /// Opcode and operands, without the data of Immediate and InitialData.
    [[nodiscard]] constexpr unsigned int FixedLength() const noexcept {
        unsigned int length = 1;
        for (const OperandKind kind : operands)
            length += OperandSize(kind);
        return length;
    }
};

/// Index = opcode; row 0 is no instruction.
inline constexpr std::array<OpcodeInfo, 29> kOpcodeTable = {{
    {Opcode{0}, "", {}},
    {Opcode::LoadImmediate, "LD", {OperandKind::Type, OperandKind::Immediate}},
    {Opcode::LoadAddr, "LD ADDR", {OperandKind::LocationKind, OperandKind::Offset}},
    {Opcode::LoadTagAddr, "LD TAG ADDR", {OperandKind::TagOffset, OperandKind::TagId}},
    {Opcode::PointerLoad, "PTR LD", {OperandKind::Type, OperandKind::DataSize16}},
    {Opcode::PointerStore, "PTR ST", {OperandKind::Type, OperandKind::DataSize16}},
    {Opcode::LoadStack, "LD STACK", {OperandKind::StackIndex}},
    {Opcode::StoreStack, "ST STACK", {OperandKind::StackIndex}},
    {Opcode::LoadStatus, "LD STATUS", {OperandKind::StatusCode}},
    {Opcode::PointerLoadArray, "PTR LD ARRAY", {OperandKind::Type, OperandKind::ElementCount}},
    {Opcode::Push, "PUSH", {}},
    {Opcode::Pop, "POP", {}},
    {Opcode::Return, "RET", {}},
    {Opcode::Convert, "CONVERT", {OperandKind::Type}},
    {Opcode::Unary, "", {OperandKind::UnaryOperator}},
    {Opcode::Binary, "", {OperandKind::BinaryOperator}},
    {Opcode::Jump, "JMP", {OperandKind::JumpOffset}},
    {Opcode::JumpZero, "JMPZ", {OperandKind::JumpOffset}},
    {Opcode::JumpNotZero, "JMPNZ", {OperandKind::JumpOffset}},
    {Opcode::JumpUndefined, "JMPU", {OperandKind::JumpOffset}},
    {Opcode::CallFunction, "", {OperandKind::FunctionGroup, OperandKind::FunctionId, OperandKind::ArgumentCount}},
    {Opcode::Call, "CALL", {OperandKind::ArgumentCount, OperandKind::CodeOffset}},
    {Opcode::InitTempData, "INIT_TEMP_DATA", {OperandKind::InitialData}},
    {Opcode::InitLocalData, "INIT_LOCAL_DATA", {OperandKind::DataSize32}},
    {Opcode::CallFunctionBlock,
     "",
     {OperandKind::BlockGroup, OperandKind::BlockId, OperandKind::ArgumentCount, OperandKind::DataSize32}},
    {Opcode::PointerStoreEdge, "PTR ST", {OperandKind::Edge}},
    {Opcode::CallFunctionEno, "", {OperandKind::FunctionGroup, OperandKind::FunctionId, OperandKind::ArgumentCount}},
    {Opcode::Truncate, "TRUNCATE", {OperandKind::Type}},
    {Opcode::Sfc, "SFC", {OperandKind::ControlBlock, OperandKind::DataSize16}},
}};

consteval bool OpcodeTableIsIndexed() {
    for (std::size_t i = 0; i < kOpcodeTable.size(); ++i) {
        if (kOpcodeTable[i].code != static_cast<Opcode>(i)) return false;
    }
    return true;
}
static_assert(OpcodeTableIsIndexed());

/// Lengths by opcode for the run loop; 1 for codes that are no instruction.
inline constexpr std::array<std::uint8_t, 256> kFixedLengths = [] {
    std::array<std::uint8_t, 256> lengths{};
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        lengths[i] = static_cast<std::uint8_t>(i < kOpcodeTable.size() ? kOpcodeTable[i].FixedLength() : 1);
    }
    return lengths;
}();

[[nodiscard]] constexpr bool IsOpcode(unsigned int code) noexcept {
    return code > 0 && code < kOpcodeTable.size();
}

/// Reads an operand from the code; the caller has checked that it is there.
template <typename T>
[[nodiscard]] T ReadOperand(const unsigned char* bytes) noexcept {
    T value;
    std::memcpy(&value, bytes, sizeof(T));
    return value;
}

/// Bytes of the instruction that `bytes` begin, as far as they tell: an answer beyond their number is what the next
/// step of decoding needs, so ask again with that many. At least 1; a code that is no instruction is one byte long.
[[nodiscard]] TN61131_API std::uint64_t InstructionLength(std::span<const unsigned char> bytes) noexcept;
