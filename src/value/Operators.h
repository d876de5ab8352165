#pragma once

#include <array>
#include <cstdint>
#include <string_view>

/// The binary operators by their code in bytecode. kBinaryOperators[code] is the operator's row.
enum class BinaryOperator : std::uint8_t {
    Add = 1,
    Sub = 2,
    Mul = 3,
    Div = 4,
    Mod = 5,
    Pow = 6,
    EQ = 7,
    NE = 8,
    GT = 9,
    GE = 10,
    LT = 11,
    LE = 12,
    And = 13,
    Or = 14,
    Xor = 15,
};

enum class UnaryOperator : std::uint8_t { Negate = 1, Not = 2 };

/// Names as listings print them and as the assembler reads them; index = code, row 0 is no operator.
inline constexpr std::array<std::string_view, 16> kBinaryOperatorNames = {
    "", "ADD", "SUB", "MUL", "DIV", "MOD", "POW", "EQ", "NE", "GT", "GE", "LT", "LE", "AND", "OR", "XOR"};
inline constexpr std::array<std::string_view, 3> kUnaryOperatorNames = {"", "NEGATE", "NOT"};
