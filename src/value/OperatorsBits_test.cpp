// Complement, logical operators, shifts and rotations.
#include <limits>

#include "value/OperatorTesting.h"

namespace {

using namespace value_testing;

class BitOperators : public OperatorTest {
 protected:
    enum Shift : unsigned char { Shl = 1, Shr = 2, Ror = 3, Rol = 4 };
    void ExpectShift(const CValue& before, Shift code, int count, const CValue& expected) {
        SCOPED_TRACE(::testing::PrintToString(before) + " code " + std::to_string(code) + " by " +
                     std::to_string(count));
        CValue value(before);
        EXPECT_TRUE(value.ShiftOperation(log_, here_, code, count));
        EXPECT_THAT(value, IsValue(expected));
        ExpectNoMessage();
    }
};

constexpr long long kPattern = static_cast<long long>(0xF1E2D3C4B5A69788);

TEST_F(BitOperators, NotComplementsEveryWidth) {
    for (const IntegerShape& shape : kIntegerShapes) {
        CValue value = Of(shape.type, kPattern);
        EXPECT_TRUE(value.Not(log_, here_));
        EXPECT_THAT(value, IsValue(Of(shape.type, ~kPattern)));
    }
    CValue flag(true);
    EXPECT_TRUE(flag.Not(log_, here_));
    EXPECT_THAT(flag, IsValue(CValue(false)));
    EXPECT_TRUE(flag.Not(log_, here_));
    EXPECT_THAT(flag, IsValue(CValue(true)));
    ExpectNoMessage();
}

TEST_F(BitOperators, NotRefusesOtherTypes) {
    for (CValue value : {CValue(1.5F), CValue(1.5), Of(T::Time, 1), Of(T::Date, 1), Of(T::Char, 1), Of(T::WChar, 1),
                         Str("a"), WStr(u"a"), Ptr(LocationKind::Global, 0, 1), Of(T::Type, 1)}) {
        EXPECT_FALSE(value.Not(log_, here_));
        ExpectMessage(Message::UnaryNotSupported,
                      std::string("Unary operator 'NOT' is not supported on type '") + value.GetTypeName(false) + "'.");
    }
}

TEST_F(BitOperators, LogicalOperatorsWorkOnEveryWidth) {
    constexpr long long kMask = 0x0FF00FF0123C0FA5;
    for (const IntegerShape& shape : kIntegerShapes) {
        const CValue left = Of(shape.type, kPattern);
        const CValue right = Of(shape.type, kMask);
        ExpectResult(left, Op::And, right, Of(shape.type, kPattern & kMask));
        ExpectResult(left, Op::Or, right, Of(shape.type, kPattern | kMask));
        ExpectResult(left, Op::Xor, right, Of(shape.type, kPattern ^ kMask));
    }
}

TEST_F(BitOperators, LogicalOperatorsOnFlags) {
    for (const bool left : {false, true}) {
        for (const bool right : {false, true}) {
            ExpectResult(CValue(left), Op::And, CValue(right), CValue(left && right));
            ExpectResult(CValue(left), Op::Or, CValue(right), CValue(left || right));
            ExpectResult(CValue(left), Op::Xor, CValue(right), CValue(left != right));
        }
    }
}

TEST_F(BitOperators, LogicalOperatorsPromoteFirst) {
    ExpectResult(Of(T::Byte, 0xF1), Op::And, CValue(true), Of(T::Byte, 1));
    ExpectResult(CValue(true), Op::Or, Of(T::Byte, 0xF0), Of(T::Byte, 0xF1));
    ExpectResult(Of(T::SInt, -1), Op::And, CValue(0x1234), CValue(0x1234));
    ExpectResult(Of(T::Word, 0xFF00), Op::Xor, Of(T::Byte, 0xFF), Of(T::Word, 0xFFFF));
}

// No rule for undefined operands here: they are promoted like any other.
TEST_F(BitOperators, LogicalOperatorsRefuseUndefinedOperands) {
    ExpectFailure(CValue(), Op::And, Of(T::Int, 1), Message::ConversionNotSupported,
                  "Conversion from type 'Undefined' to 'INT' is not supported.");
    ExpectFailure(Of(T::Int, 1), Op::Or, CValue(), Message::ConversionNotSupported,
                  "Conversion from type 'Undefined' to 'INT' is not supported.");
    ExpectFailure(CValue(), Op::Xor, CValue(), Message::OperatorNotSupported,
                  "Operator 'XOR' is not supported with type 'Undefined'.");
    ExpectFailure(CValue(), Op::And, Str("a"), Message::OperatorNotSupported,
                  "Operator 'AND' is not supported with type 'STRING'.");
}

TEST_F(BitOperators, LogicalOperatorsRefuseOtherTypes) {
    struct Operator {
        Op code;
        const char* name;
    };
    constexpr Operator kOperators[] = {{Op::And, "AND"}, {Op::Or, "OR"}, {Op::Xor, "XOR"}};
    for (const Operator& op : kOperators) {
        for (const CValue& value :
             {CValue(1.5F), CValue(1.5), Of(T::Time, 1), Of(T::TimeOfDay, 1), Of(T::Date, 1), Of(T::DateAndTime, 1),
              Of(T::Char, 1), Of(T::WChar, 1), Str("a"), WStr(u"a"), Ptr(LocationKind::Global, 0, 1), Of(T::Type, 1)}) {
            ExpectFailure(value, op.code, value, Message::OperatorNotSupported,
                          std::string("Operator '") + op.name + "' is not supported with type '" +
                              value.GetTypeName(false) + "'.");
        }
    }
}

TEST_F(BitOperators, WorkedShifts) {
    struct Row {
        CValue before;
        Shift code;
        int count;
        CValue expected;
    };
    const Row rows[] = {
        {Of(T::Byte, 1), Shl, 8, Of(T::Byte, 0)},
        {Of(T::Byte, 1), Shl, 7, Of(T::Byte, 0x80)},
        {Of(T::Byte, 0x81), Rol, 1, Of(T::Byte, 0x03)},
        {Of(T::SInt, -128), Shr, 1, Of(T::SInt, 64)},
        {Of(T::Int, -1), Shr, 15, Of(T::Int, 1)},
        {CValue(-1), Shr, 31, CValue(1)},
        {Of(T::LInt, -1), Shr, 63, Of(T::LInt, 1)},
        {Of(T::Word, 0x1234), Ror, 17, Of(T::Word, 0x091A)},
        {Of(T::Word, 0x1235), Ror, 1, Of(T::Word, 0x891A)},
        {Of(T::Word, 0x1234), Shl, -2, Of(T::Word, 0x048D)},
        {Of(T::Word, 0x1234), Shr, -2, Of(T::Word, 0x48D0)},
        {Of(T::Word, 0x1234), Ror, -4, Of(T::Word, 0x2341)},
        {Of(T::Word, 0x1234), Rol, -4, Of(T::Word, 0x4123)},
        {Of(T::Byte, 0x55), Shl, 256, Of(T::Byte, 0)},
        {Of(T::Byte, 0x55), Shr, 257, Of(T::Byte, 0)},
        {CValue(1), Shl, 0, CValue(1)},
        {Str("a"), Shl, 0, Str("a")},  // a count of 0 asks for nothing
    };
    for (const Row& row : rows)
        ExpectShift(row.before, row.code, row.count, row.expected);
}

// Against the definition: shifts fill with zeros, rotations go round, whatever the count.
TEST_F(BitOperators, EveryCountInEveryWidth) {
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    for (const IntegerShape& shape : kIntegerShapes) {
        const int width = static_cast<int>(shape.width);
        const std::uint64_t mask = ~std::uint64_t{0} >> (64 - shape.width);
        const std::uint64_t bits = static_cast<std::uint64_t>(kPattern) & mask;
        const auto up = [&](int count) { return count < width ? (bits << count) & mask : 0; };
        const auto down = [&](int count) { return count < width ? bits >> count : 0; };
        const auto value = [&](std::uint64_t payload) { return Of(shape.type, static_cast<long long>(payload)); };
        for (const int count : {1, 2, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65, 255, 256, 1000, kHighest}) {
            const int rest = count % width;
            const std::uint64_t right = rest == 0 ? bits : (down(rest) | up(width - rest));
            const std::uint64_t left = rest == 0 ? bits : (up(rest) | down(width - rest));
            ExpectShift(value(bits), Shl, count, value(up(count)));
            ExpectShift(value(bits), Shr, count, value(down(count)));
            ExpectShift(value(bits), Ror, count, value(right));
            ExpectShift(value(bits), Rol, count, value(left));
            ExpectShift(value(bits), Shl, -count, value(down(count)));
            ExpectShift(value(bits), Shr, -count, value(up(count)));
            ExpectShift(value(bits), Ror, -count, value(left));
            ExpectShift(value(bits), Rol, -count, value(right));
        }
        for (const Shift code : {Shl, Shr})
            ExpectShift(value(bits), code, kLowest, value(0));
        for (const Shift code : {Ror, Rol})
            ExpectShift(value(bits), code, kLowest, value(bits));
    }
}

TEST_F(BitOperators, ShiftsRefuseOtherTypes) {
    constexpr const char* kNames[] = {"", "SHL", "SHR", "ROR", "ROL"};
    for (const CValue& value : {CValue(), CValue(true), CValue(1.5F), CValue(1.5), Of(T::Time, 1), Of(T::Date, 1),
                                Of(T::Char, 1), Of(T::WChar, 1), Str("a"), Ptr(LocationKind::Global, 0, 1)}) {
        for (const Shift code : {Shl, Shr, Ror, Rol}) {
            CValue before(value);
            EXPECT_FALSE(before.ShiftOperation(log_, here_, code, 1));
            ExpectMessage(Message::OperatorNotSupported, std::string("Operator '") + kNames[code] +
                                                             "' is not supported with type '" +
                                                             value.GetTypeName(false) + "'.");
        }
    }
}

TEST_F(BitOperators, OppositeNameIsReportedForNegativeCounts) {
    CValue value(true);
    EXPECT_FALSE(value.ShiftOperation(log_, here_, Shl, -1));
    ExpectMessage(Message::OperatorNotSupported, "Operator 'SHR' is not supported with type 'BOOL'.");
}

}  // namespace
