// Negation and arithmetic of numbers.
#include <cmath>
#include <limits>

#include "value/OperatorTesting.h"

namespace {

using namespace value_testing;

class Arithmetic : public OperatorTest {};

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr long long kMinLInt = std::numeric_limits<long long>::min();
constexpr int kMinDInt = std::numeric_limits<int>::min();

/// The pairs of payloads that integer operators are tried with: limits and their neighbours.
std::vector<std::uint64_t> Corners(unsigned int width) {
    const std::uint64_t top = std::uint64_t{1} << (width - 1);
    const std::uint64_t mask = top | (top - 1);
    std::vector<std::uint64_t> corners = {0, 1, 2, 3, 7, 100, 200, top - 1, top, top + 1, mask - 1, mask};
    for (std::uint64_t& corner : corners)
        corner &= mask;
    return corners;
}

__extension__ using Wide = __int128;

/// The number of a payload, exactly.
Wide NumberOf(std::uint64_t bits, const IntegerShape& shape) {
    const bool isNegative = shape.isSigned && (bits >> (shape.width - 1)) != 0;
    return static_cast<Wide>(bits) - (isNegative ? static_cast<Wide>(1) << shape.width : 0);
}

long long LowBits(Wide number) {
    return static_cast<long long>(static_cast<std::uint64_t>(number));
}

// Against exact arithmetic: the result is the low bits of the true one.
TEST_F(Arithmetic, IntegersWrap) {
    for (const IntegerShape& shape : kIntegerShapes) {
        for (const std::uint64_t left : Corners(shape.width)) {
            for (const std::uint64_t right : Corners(shape.width)) {
                const Wide a = NumberOf(left, shape);
                const Wide b = NumberOf(right, shape);
                const CValue leftValue = Of(shape.type, static_cast<long long>(left));
                const CValue rightValue = Of(shape.type, static_cast<long long>(right));
                ExpectResult(leftValue, Op::Add, rightValue, Of(shape.type, LowBits(a + b)));
                ExpectResult(leftValue, Op::Sub, rightValue, Of(shape.type, LowBits(a - b)));
                // The low 64 bits of a product are those of the product of the low 64 bits.
                const std::uint64_t product = static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b);
                ExpectResult(leftValue, Op::Mul, rightValue, Of(shape.type, static_cast<long long>(product)));
                if (b == 0) continue;
                ExpectResult(leftValue, Op::Div, rightValue, Of(shape.type, LowBits(a / b)));
                ExpectResult(leftValue, Op::Mod, rightValue, Of(shape.type, LowBits(a % b)));
            }
        }
    }
}

TEST_F(Arithmetic, WorkedExamples) {
    struct Row {
        CValue left;
        Op code;
        CValue right;
        CValue expected;
    };
    const Row rows[] = {
        {Of(T::USInt, 200), Op::Add, Of(T::USInt, 100), Of(T::USInt, 44)},
        {Of(T::SInt, 127), Op::Add, Of(T::SInt, 1), Of(T::SInt, -128)},
        {Of(T::UInt, 65535), Op::Mul, Of(T::UInt, 65535), Of(T::UInt, 1)},
        {Of(T::Int, -32768), Op::Sub, Of(T::Int, 1), Of(T::Int, 32767)},
        {CValue(kMinDInt), Op::Div, CValue(-1), CValue(kMinDInt)},
        {Of(T::LInt, kMinLInt), Op::Div, Of(T::LInt, -1), Of(T::LInt, kMinLInt)},
        {Of(T::SInt, -128), Op::Div, Of(T::SInt, -1), Of(T::SInt, -128)},
        {Of(T::Int, -32768), Op::Div, Of(T::Int, -1), Of(T::Int, -32768)},
        {CValue(-7), Op::Div, CValue(2), CValue(-3)},
        {CValue(-7), Op::Mod, CValue(2), CValue(-1)},
        {CValue(7), Op::Mod, CValue(-2), CValue(1)},
        {CValue(7), Op::Mod, CValue(-1), CValue(0)},
        {CValue(kMinDInt), Op::Mod, CValue(-1), CValue(0)},
        {Of(T::LInt, kMinLInt), Op::Mod, Of(T::LInt, -1), Of(T::LInt, 0)},
        {Of(T::Byte, 0xF0), Op::Div, Of(T::Byte, 0x10), Of(T::Byte, 0x0F)},
        {CValue(3), Op::Add, CValue(0.5F), CValue(3.5F)},
        {CValue(0.5F), Op::Sub, CValue(3), CValue(-2.5F)},
        {CValue(0.5F), Op::Mul, CValue(3.0), CValue(1.5)},
        {CValue(1.0F), Op::Div, CValue(3.0F), CValue(1.0F / 3.0F)},
        {CValue(1.0), Op::Div, CValue(3.0), CValue(1.0 / 3.0)},
        {CValue(3.0e38F), Op::Mul, CValue(10.0F), CValue(kInfinity)},
        {CValue(kInfinity), Op::Sub, CValue(kInfinity), CValue(kNaN)},
        {CValue(1.0F), Op::Div, CValue(kNaN), CValue(kNaN)},
        {Of(T::SInt, -1), Op::Add, Of(T::USInt, 1), Of(T::USInt, 0)},
        {Of(T::Byte, 255), Op::Add, Of(T::Int, 1), Of(T::Int, 256)},
        {Of(T::Char, 'A'), Op::Add, Of(T::Int, 1), Of(T::Int, 66)},
        {CValue(true), Op::Add, Of(T::SInt, 1), Of(T::SInt, 2)},
        {Of(T::Time, 1000), Op::Add, Of(T::Time, -3000), Of(T::Time, -2000)},
        {Of(T::Time, 1000), Op::Sub, Of(T::Time, 3000), Of(T::Time, -2000)},
        {Of(T::Time, kMinLInt), Op::Sub, Of(T::Time, 1), Of(T::Time, std::numeric_limits<long long>::max())},
        {Of(T::Time, 1000), Op::Mul, CValue(3), Of(T::Time, 3000)},
        {CValue(3), Op::Mul, Of(T::Time, 1000), Of(T::Time, 3000)},
        {Of(T::Time, 1000), Op::Add, CValue(5), Of(T::Time, 1005)},
        {CValue(1.9F), Op::Add, Of(T::Time, 1000), Of(T::Time, 1001)},
        {Of(T::Time, 1000), Op::Div, CValue(3), Of(T::Time, 333)},
        {Of(T::Time, -1000), Op::Div, Of(T::Time, 300), Of(T::Time, -3)},
        {Of(T::Time, kMinLInt), Op::Div, Of(T::Time, -1), Of(T::Time, kMinLInt)},
        {Of(T::Time, kMinLInt), Op::Div, CValue(-1), Of(T::Time, kMinLInt)},
        {Str("2"), Op::Pow, CValue(3), CValue(8.0)},
    };
    for (const Row& row : rows)
        ExpectResult(row.left, row.code, row.right, row.expected);
}

TEST_F(Arithmetic, RightOperandMayBeConverted) {
    CValue left(0.5F);
    CValue right(3);
    EXPECT_TRUE(left.Add(log_, here_, right));
    EXPECT_THAT(right, IsValue(CValue(3.0F)));
}

TEST_F(Arithmetic, TimeTimesRealIsDoubleAndTruncated) {
    struct Row {
        CValue left;
        CValue right;
        long long expected;
    };
    const Row rows[] = {
        {Of(T::Time, 10000), CValue(1.5F), 15000},
        {Of(T::Time, 10000), CValue(1.5), 15000},
        {Of(T::Time, 3), CValue(0.5F), 1},
        {Of(T::Time, -3), CValue(0.5), -1},
        {Of(T::Time, 16777217), CValue(1.0F), 16777217},  // single precision would lose the last digit
        {Of(T::Time, 1000), CValue(1e30), std::numeric_limits<long long>::max()},
        {Of(T::Time, -1000), CValue(1e30F), kMinLInt},
        {Of(T::Time, 1), CValue(kInfinity), std::numeric_limits<long long>::max()},
        {Of(T::Time, 0), CValue(kInfinity), 0},
        {Of(T::Time, 1), CValue(kNaN), 0},
        {Of(T::Time, 1), CValue(0.0F), 0},
    };
    for (const Row& row : rows)
        ExpectResult(row.left, Op::Mul, row.right, Of(T::Time, row.expected));
}

TEST_F(Arithmetic, TimeByRealIsInThePrecisionOfTheDivisor) {
    struct Row {
        CValue left;
        CValue right;
        long long expected;
    };
    const Row rows[] = {
        {Of(T::Time, 1), CValue(3.0F), 0},
        {Of(T::Time, 10000), CValue(2.5F), 4000},
        {Of(T::Time, -10000), CValue(3.0), -3333},
        {Of(T::Time, 16777217), CValue(1.0F), 16777216},
        {Of(T::Time, 16777217), CValue(1.0), 16777217},
        {Of(T::Time, 1), CValue(1e-30F), std::numeric_limits<long long>::max()},
        {Of(T::Time, -1), CValue(1e-30), kMinLInt},
        {Of(T::Time, 1), CValue(kInfinity), 0},
        {Of(T::Time, 1), CValue(kNaN), 0},
    };
    for (const Row& row : rows)
        ExpectResult(row.left, Op::Div, row.right, Of(T::Time, row.expected));
}

TEST_F(Arithmetic, ZeroDivisorsOfNumbersAndTimesAreReported) {
    for (const CValue& zero :
         {Of(T::SInt, 0), Of(T::USInt, 0), Of(T::Int, 0), Of(T::UInt, 0), CValue(0), Of(T::UDInt, 0), Of(T::LInt, 0),
          Of(T::ULInt, 0), CValue(0.0F), CValue(-0.0F), CValue(0.0), Of(T::Time, 0)}) {
        for (const CValue& left :
             {Of(T::Byte, 7), CValue(7), CValue(7.0F), CValue(7.0), Of(T::Time, 7), CValue(true)}) {
            ExpectFailure(left, Op::Div, zero, Message::DivisionByZero, "Division by zero.");
        }
    }
}

TEST_F(Arithmetic, ZeroBitStringsAreReportedByIntegersAndDivideReals) {
    for (const CValue& zero : {Of(T::Byte, 0), Of(T::Word, 0), Of(T::DWord, 0), Of(T::LWord, 0), CValue(false)}) {
        ExpectFailure(Of(T::LWord, 7), Op::Div, zero, Message::DivisionByZero, "Division by zero.");
        ExpectFailure(Of(T::Time, 7), Op::Div, zero, Message::DivisionByZero, "Division by zero.");
        ExpectResult(CValue(7.0F), Op::Div, zero, CValue(kInfinity));
        ExpectResult(CValue(-7.0), Op::Div, zero, CValue(-std::numeric_limits<double>::infinity()));
        ExpectResult(CValue(0.0F), Op::Div, zero, CValue(kNaN));
    }
    ExpectFailure(CValue(7), Op::Div, Of(T::Char, 0), Message::DivisionByZero, "Division by zero.");
    ExpectFailure(CValue(7), Op::Div, Of(T::WChar, 0), Message::DivisionByZero, "Division by zero.");
}

TEST_F(Arithmetic, ModuloZeroIsZeroForNumbersAndReportedForBitStrings) {
    for (const IntegerShape& shape : kIntegerShapes) {
        const CValue zero = Of(shape.type, 0);
        if (zero.IsTypeOf(T::AnyInt)) {
            ExpectResult(Of(shape.type, 7), Op::Mod, zero, zero);
        } else {
            ExpectFailure(Of(shape.type, 7), Op::Mod, zero, Message::DivisionByZero, "Division by zero.");
        }
    }
    ExpectResult(CValue(7), Op::Mod, Of(T::Byte, 0), CValue(0));  // a DINT after promotion
    ExpectResult(CValue(7.5F), Op::Mod, CValue(0.0F), CValue(0.0F));
    ExpectResult(CValue(7.5), Op::Mod, CValue(0), CValue(0.0));
    ExpectResult(Of(T::Time, 7), Op::Mod, Of(T::Time, 0), Of(T::Time, 0));
    ExpectResult(Of(T::Time, 7), Op::Mod, CValue(0), Of(T::Time, 0));
}

TEST_F(Arithmetic, PowerOfRealsIsSingleAndOfAllElseDouble) {
    ExpectResult(CValue(2.0F), Op::Pow, CValue(0.5F), CValue(std::sqrt(2.0F)));
    ExpectResult(CValue(2.0F), Op::Pow, CValue(0.5), CValue(std::sqrt(2.0)));
    ExpectResult(CValue(2), Op::Pow, CValue(10), CValue(1024.0));
    ExpectResult(Of(T::Byte, 2), Op::Pow, CValue(-1), CValue(0.5));
    ExpectResult(CValue(0.0), Op::Pow, CValue(0.0), CValue(1.0));
    ExpectResult(CValue(-8.0), Op::Pow, CValue(0.5), CValue(std::numeric_limits<double>::quiet_NaN()));
    ExpectResult(Of(T::Time, 3), Op::Pow, CValue(2), CValue(9.0));
    ExpectFailure(Of(T::Char, 65), Op::Pow, CValue(2), Message::ConversionNotSupported,
                  "Conversion from type 'CHAR' to 'LREAL' is not supported.");
    ExpectFailure(CValue(2), Op::Pow, Str("x"), Message::CouldNotConvert, "Could not convert 'x' to 'LREAL'.");
}

TEST_F(Arithmetic, NegateWrapsInEveryWidth) {
    struct Row {
        CValue value;
        CValue expected;
    };
    std::vector<Row> rows = {
        {CValue(1.5F), CValue(-1.5F)},        {CValue(0.0F), CValue(-0.0F)},
        {CValue(-2.5), CValue(2.5)},          {CValue(kNaN), CValue(kNaN)},
        {Of(T::Time, 5), Of(T::Time, -5)},    {Of(T::Time, kMinLInt), Of(T::Time, kMinLInt)},
        {Of(T::USInt, 1), Of(T::USInt, 255)},
    };
    for (const IntegerShape& shape : kIntegerShapes) {
        for (const std::uint64_t bits : Corners(shape.width)) {
            rows.push_back(
                {Of(shape.type, static_cast<long long>(bits)), Of(shape.type, LowBits(-NumberOf(bits, shape)))});
        }
    }
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.value));
        CValue value(row.value);
        EXPECT_TRUE(value.Negate(log_, here_));
        EXPECT_THAT(value, IsValue(row.expected));
    }
    ExpectNoMessage();
}

TEST_F(Arithmetic, NegateRefusesOtherTypes) {
    for (CValue value :
         {CValue(true), Of(T::Char, 65), Of(T::WChar, 65), Of(T::TimeOfDay, 5), Of(T::Date, 5), Of(T::DateAndTime, 5),
          Str("a"), WStr(u"a"), Ptr(LocationKind::Global, 0, 1), Of(T::Type, 5)}) {
        EXPECT_FALSE(value.Negate(log_, here_));
        ExpectMessage(Message::UnaryNotSupported,
                      std::string("Unary operator '-' is not supported on type '") + value.GetTypeName(false) + "'.");
    }
}

TEST_F(Arithmetic, OtherTypesAreRefusedByNameOfTheCommonType) {
    struct Operator {
        Op code;
        const char* sign;
    };
    constexpr Operator kOperators[] = {
        {Op::Add, "+"}, {Op::Sub, "-"}, {Op::Mul, "*"}, {Op::Div, "/"}, {Op::Mod, "MOD"}};
    for (const Operator& op : kOperators) {
        const auto text = [&](const char* type) {
            return std::string("Operator '") + op.sign + "' is not supported with type '" + type + "'.";
        };
        const auto expect = [&](const CValue& left, const CValue& right, const char* type) {
            ExpectFailure(left, op.code, right, Message::OperatorNotSupported, text(type));
        };
        expect(CValue(true), CValue(true), "BOOL");
        expect(Of(T::Char, 65), Of(T::Char, 65), "CHAR");
        expect(Of(T::WChar, 65), Of(T::WChar, 65), "WCHAR");
        expect(Str("a"), Str("b"), "STRING");
        expect(CValue(5), Str("b"), "STRING");
        expect(Str("a"), WStr(u"b"), "WSTRING");
        expect(Of(T::Type, 5), Of(T::Type, 5), "TYPE");
        expect(Of(T::TimeOfDay, 5), CValue(1), "TIME_OF_DAY");
        expect(CValue(1), Of(T::DateAndTime, 5), "DATE_AND_TIME");
    }
    ExpectFailure(CValue(1.5F), Op::Mod, CValue(1.0F), Message::OperatorNotSupported,
                  "Operator 'MOD' is not supported with type 'REAL'.");
    ExpectFailure(CValue(1), Op::Mod, CValue(1.0), Message::OperatorNotSupported,
                  "Operator 'MOD' is not supported with type 'LREAL'.");
    ExpectFailure(Of(T::Time, 5), Op::Mod, Of(T::Time, 2), Message::OperatorNotSupported,
                  "Operator 'MOD' is not supported with type 'TIME'.");
}

}  // namespace
