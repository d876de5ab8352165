// Dispatch by code, the undefined rule and promotion.
#include "value/Operators.h"

#include <limits>
#include <utility>

#include "value/CompositeValue.h"
#include "value/OperatorTesting.h"

namespace {

using namespace value_testing;

class Operators : public OperatorTest {};

CValue Composite() {
    CValue value;
    value.SetCompositeValue(new CCompositeValue(T::Byte, 2, "ab"));
    return value;
}

TEST_F(Operators, BinaryCodes) {
    struct Row {
        unsigned int code;
        const char* name;
        CValue expected;  // of 7 and 3
    };
    const Row rows[] = {
        {1, "ADD", CValue(10)},  {2, "SUB", CValue(4)},     {3, "MUL", CValue(21)},    {4, "DIV", CValue(2)},
        {5, "MOD", CValue(1)},   {6, "POW", CValue(343.0)}, {7, "EQ", CValue(false)},  {8, "NE", CValue(true)},
        {9, "GT", CValue(true)}, {10, "GE", CValue(true)},  {11, "LT", CValue(false)}, {12, "LE", CValue(false)},
        {13, "AND", CValue(3)},  {14, "OR", CValue(7)},     {15, "XOR", CValue(4)},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(kBinaryOperatorNames[row.code], row.name);
        ExpectResult(CValue(7), static_cast<Op>(row.code), CValue(3), row.expected);
    }
}

TEST_F(Operators, UnknownCodesAreReported) {
    CValue left(7);
    CValue right(3);
    for (const unsigned int code : {0U, 16U, 255U}) {
        EXPECT_FALSE(left.BinaryOperation(log_, here_, static_cast<unsigned char>(code), right));
        ExpectMessage(Message::InvalidBinaryOperation, "Invalid binary operation '" + std::to_string(code) + "'.");
    }
    for (const unsigned int code : {0U, 3U, 255U}) {
        EXPECT_FALSE(left.UnaryOperation(log_, here_, static_cast<unsigned char>(code)));
        ExpectMessage(Message::InvalidUnaryOperation, "Invalid unary operation '" + std::to_string(code) + "'.");
    }
    for (const unsigned int code : {0U, 5U, 255U}) {
        EXPECT_FALSE(left.ShiftOperation(log_, here_, static_cast<unsigned char>(code), 1));
        ExpectMessage(Message::InvalidFunctionCode, "Invalid Bitstring function code '" + std::to_string(code) + "'.");
    }
    EXPECT_THAT(left, IsValue(CValue(7)));
}

TEST_F(Operators, UnaryCodes) {
    CValue value(5);
    EXPECT_TRUE(value.UnaryOperation(log_, here_, 1));
    EXPECT_THAT(value, IsValue(CValue(-5)));
    EXPECT_TRUE(value.UnaryOperation(log_, here_, 2));
    EXPECT_THAT(value, IsValue(CValue(4)));
    ExpectNoMessage();
}

TEST_F(Operators, MessagesCarryTheLocation) {
    class Here final : public ErrorLocation {
     public:
        unsigned int PrintLocation(char* buffer, unsigned int size) const override {
            return CopyBounded(buffer, size, "line 7");
        }
    };
    CValue left(7);
    CValue right(0);
    EXPECT_FALSE(left.Div(log_, Here(), right));
    ASSERT_EQ(log_.GetEntries().size(), 1U);
    EXPECT_EQ(log_.GetEntries().front().location, "line 7");
    EXPECT_EQ(log_.GetEntries().front().module, &GetVMModule());
}

// ADD to LE: an undefined operand makes the result undefined, whatever the other is.
TEST_F(Operators, UndefinedOperandMakesTheResultUndefined) {
    for (unsigned int code = 1; code <= 12; ++code) {
        for (const CValue& other :
             {CValue(), CValue(5), CValue(1.5F), CValue(0), CValue(true), Str("abc"), WStr(u"abc"), Composite(),
              Of(T::Time, 5), Of(T::Date, 5), Of(T::Type, 5), Ptr(LocationKind::Global, 0, 1)}) {
            ExpectResult(CValue(), static_cast<Op>(code), other, CValue());
            ExpectResult(other, static_cast<Op>(code), CValue(), CValue());
        }
    }
}

// A string that became undefined was released: the leak checker sees it otherwise.
TEST_F(Operators, UndefinedRightReleasesTheLeft) {
    CValue left = Str("abc");
    CValue right;
    EXPECT_TRUE(left.Add(log_, here_, right));
    EXPECT_TRUE(left.IsUndefined());
    EXPECT_EQ(left.GetPayload<void*>(), nullptr);
}

TEST_F(Operators, UndefinedStaysUnderUnaryOperators) {
    CValue value;
    EXPECT_TRUE(value.Negate(log_, here_));
    EXPECT_TRUE(value.Not(log_, here_));
    EXPECT_TRUE(value.IsUndefined());
    ExpectNoMessage();
}

// --- promotion ---

TEST_F(Operators, PromotionConvertsTheLowerRank) {
    struct Row {
        CValue left;
        CValue right;
        CValue promotedLeft;
        CValue promotedRight;
    };
    const Row rows[] = {
        {CValue(3), CValue(0.5F), CValue(3.0F), CValue(0.5F)},
        {CValue(0.5F), CValue(3), CValue(0.5F), CValue(3.0F)},
        {Of(T::Byte, 200), Of(T::Int, 1), Of(T::Int, 200), Of(T::Int, 1)},
        {Of(T::SInt, -1), Of(T::USInt, 1), Of(T::USInt, 255), Of(T::USInt, 1)},
        {Of(T::Char, 65), Of(T::Int, 1), Of(T::Int, 65), Of(T::Int, 1)},
        {Of(T::WChar, 65), Of(T::UInt, 1), Of(T::WChar, 65), Of(T::WChar, 1)},
        {CValue(true), Of(T::Byte, 0xF0), Of(T::Byte, 1), Of(T::Byte, 0xF0)},
        {CValue(5), Of(T::Time, 1), Of(T::Time, 5), Of(T::Time, 1)},
        {Of(T::LWord, -1), CValue(1.0F), CValue(18446744073709551616.0F), CValue(1.0F)},
        {CValue(5), Str("x"), Str("5"), Str("x")},
        {Str("x"), WStr(u"y"), WStr(u"x"), WStr(u"y")},
        {CValue(), Str("y"), Str("Undefined"), Str("y")},
        {CValue(5), CValue(6), CValue(5), CValue(6)},
        {Of(T::Type, 5), Of(T::Type, 6), Of(T::Type, 5), Of(T::Type, 6)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.left) + " with " + ::testing::PrintToString(row.right));
        CValue left(row.left);
        CValue right(row.right);
        EXPECT_TRUE(left.PromoteTypes(log_, here_, right));
        EXPECT_THAT(left, IsValue(row.promotedLeft));
        EXPECT_THAT(right, IsValue(row.promotedRight));
        ExpectNoMessage();
    }
}

TEST_F(Operators, ImpossiblePromotionHasTheConversionsMessage) {
    struct Row {
        CValue left;
        CValue right;
        Message id;
        const char* text;
    };
    const Row rows[] = {
        {CValue(), CValue(5), Message::ConversionNotSupported,
         "Conversion from type 'Undefined' to 'DINT' is not supported."},
        {CValue(5), CValue(), Message::ConversionNotSupported,
         "Conversion from type 'Undefined' to 'DINT' is not supported."},
        {Of(T::Char, 65), CValue(1.0F), Message::ConversionNotSupported,
         "Conversion from type 'CHAR' to 'REAL' is not supported."},
        {Ptr(LocationKind::Global, 0, 1), CValue(4), Message::ConversionTargetNotSupported,
         "Conversion to data type 'POINTER' not supported."},
        {CValue(4), Composite(), Message::ConversionTargetNotSupported,
         "Conversion to data type 'COMPOSITE' not supported."},
        {Of(T::Type, 5), CValue(4), Message::ConversionNotSupported,
         "Conversion from type 'TYPE' to 'DINT' is not supported."},
        {CValue(4), Of(T::Type, 5), Message::ConversionNotSupported,
         "Conversion from type 'TYPE' to 'DINT' is not supported."},
    };
    for (const Row& row : rows) {
        CValue left(row.left);
        CValue right(row.right);
        EXPECT_FALSE(left.PromoteTypes(log_, here_, right));
        ExpectMessage(row.id, row.text);
        EXPECT_EQ(left.GetType(), row.left.GetType());
        EXPECT_EQ(right.GetType(), row.right.GetType());
    }
}

// Every operator on every pair of types: a result, or exactly one message; never anything worse.
TEST_F(Operators, EveryPairOfTypesSucceedsOrLogsOnce) {
    std::vector<CValue> values;
    for (unsigned int code = 0; code <= 30; ++code) {
        for (const long long bits : {0LL, 1LL, -1LL, std::numeric_limits<long long>::min()}) {
            values.push_back(Of(static_cast<T>(code), bits));
        }
    }
    values.push_back(Str("12"));
    values.push_back(WStr(u"12"));
    values.push_back(Composite());
    values.push_back(Of(T::AnyInt, 5));
    values.push_back(Of(T::Any, 5));
    for (unsigned char code = 1; code <= 15; ++code) {
        for (const CValue& left : values) {
            for (const CValue& right : values) {
                CValue result(left);
                CValue operand(right);
                const bool isDone = result.BinaryOperation(log_, here_, code, operand);
                ASSERT_EQ(log_.GetErrorCount(), isDone ? 0U : 1U) << Describe(left, static_cast<Op>(code), right);
                log_.Clear();
            }
        }
    }
    for (const CValue& operand : values) {
        for (unsigned char code = 1; code <= 4; ++code) {
            for (const int count : {1, 7, 8, 31, 64, 1000, -1, -8, -64, std::numeric_limits<int>::min()}) {
                CValue value(operand);
                const bool isDone = value.ShiftOperation(log_, here_, code, count);
                ASSERT_EQ(log_.GetErrorCount(), isDone ? 0U : 1U);
                log_.Clear();
            }
        }
        for (unsigned char code = 1; code <= 2; ++code) {
            CValue value(operand);
            const bool isDone = value.UnaryOperation(log_, here_, code);
            ASSERT_EQ(log_.GetErrorCount(), isDone ? 0U : 1U);
            log_.Clear();
        }
    }
}

TEST_F(Operators, BothOperandsMayBeOneValue) {
    struct Row {
        Op code;
        CValue expected;  // of 6 and itself
    };
    const Row rows[] = {{Op::Add, CValue(12)},   {Op::Sub, CValue(0)}, {Op::Mul, CValue(36)},
                        {Op::Div, CValue(1)},    {Op::Mod, CValue(0)}, {Op::EQ, CValue(true)},
                        {Op::LT, CValue(false)}, {Op::Xor, CValue(0)}, {Op::Pow, CValue(46656.0)}};
    for (const Row& row : rows) {
        CValue value(6);
        EXPECT_TRUE(Apply(value, row.code, value));
        EXPECT_THAT(value, IsValue(row.expected));
    }
    CValue text = Str("abc");
    EXPECT_TRUE(Apply(text, Op::EQ, text));
    EXPECT_THAT(text, IsValue(CValue(true)));
}

}  // namespace
