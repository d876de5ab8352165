// Comparison.
#include <limits>

#include "value/CompositeValue.h"
#include "value/OperatorTesting.h"

namespace {

using namespace value_testing;
using Order = CValue::Order;

class Comparison : public OperatorTest {
 protected:
    void ExpectOrder(const CValue& left, const CValue& right, Order order) {
        SCOPED_TRACE(::testing::PrintToString(left) + " and " + ::testing::PrintToString(right));
        CValue a(left);
        CValue b(right);
        EXPECT_EQ(a.CompareValue(log_, here_, b), order);
        const bool isGreater = order == Order::Greater;
        const bool isEqual = order == Order::Equal;
        const bool isLess = order == Order::Less;
        ExpectResult(left, Op::GT, right, CValue(isGreater));
        ExpectResult(left, Op::GE, right, CValue(!isLess));
        ExpectResult(left, Op::EQ, right, CValue(isEqual));
        ExpectResult(left, Op::LT, right, CValue(isLess));
        ExpectResult(left, Op::LE, right, CValue(!isGreater));
        ExpectResult(left, Op::NE, right, CValue(!isEqual));
        ExpectNoMessage();
    }
};

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST_F(Comparison, OrderCodesAreFixed) {
    EXPECT_EQ(static_cast<int>(Order::Failed), 0);
    EXPECT_EQ(static_cast<int>(Order::Greater), 1);
    EXPECT_EQ(static_cast<int>(Order::Equal), 2);
    EXPECT_EQ(static_cast<int>(Order::Less), 3);
    EXPECT_EQ(static_cast<int>(Order::Unordered), 4);
}

// The payload with the top bit set against 1: less where the type is signed.
TEST_F(Comparison, SignedAndUnsignedTypes) {
    struct Row {
        T type;
        long long top;
        bool isSigned;
    };
    constexpr Row kRows[] = {
        {T::SInt, 0x80, true},
        {T::USInt, 0x80, false},
        {T::Byte, 0x80, false},
        {T::Char, 0x80, false},
        {T::Int, 0x8000, true},
        {T::UInt, 0x8000, false},
        {T::Word, 0x8000, false},
        {T::WChar, 0x8000, false},
        {T::DInt, 0x80000000, true},
        {T::UDInt, 0x80000000, false},
        {T::DWord, 0x80000000, false},
        {T::TimeOfDay, 0x80000000, false},
        {T::Date, 0x80000000, false},
        {T::LInt, std::numeric_limits<long long>::min(), true},
        {T::ULInt, std::numeric_limits<long long>::min(), false},
        {T::LWord, std::numeric_limits<long long>::min(), false},
        {T::Time, std::numeric_limits<long long>::min(), true},
        {T::DateAndTime, std::numeric_limits<long long>::min(), false},
    };
    for (const Row& row : kRows) {
        const CValue top = Of(row.type, row.top);
        const CValue one = Of(row.type, 1);
        ExpectOrder(top, one, row.isSigned ? Order::Less : Order::Greater);
        ExpectOrder(one, top, row.isSigned ? Order::Greater : Order::Less);
        ExpectOrder(top, top, Order::Equal);
    }
}

TEST_F(Comparison, OtherTypesAndPromotion) {
    struct Row {
        CValue left;
        CValue right;
        Order order;
    };
    const Row rows[] = {
        {CValue(false), CValue(true), Order::Less},
        {CValue(true), CValue(false), Order::Greater},
        {CValue(true), CValue(true), Order::Equal},
        {CValue(1.5F), CValue(-1.5F), Order::Greater},
        {CValue(0.0F), CValue(-0.0F), Order::Equal},
        {CValue(1.0), CValue(2.0), Order::Less},
        {CValue(kNaN), CValue(1.0), Order::Less},
        {CValue(1.0), CValue(kNaN), Order::Less},
        {CValue(kNaN), CValue(kNaN), Order::Less},
        {CValue(1), CValue(1.0F), Order::Equal},
        {CValue(2.5F), CValue(2), Order::Greater},
        {Of(T::SInt, -1), Of(T::USInt, 255), Order::Equal},
        {CValue(true), CValue(1), Order::Equal},
        {Str("abc"), Str("abd"), Order::Less},
        {Str("abc"), Str("ab"), Order::Greater},
        {Str("abc"), Str("abc"), Order::Equal},
        {Str("\xFF"), Str("a"), Order::Greater},
        {WStr(u"abc"), WStr(u"abd"), Order::Less},
        {WStr(u"abc"), WStr(u"abc"), Order::Equal},
        {Str("abc"), WStr(u"abc"), Order::Equal},
        {CValue(5), Str("5"), Order::Equal},
        {Of(T::String, 0), Str(""), Order::Equal},  // a null object
        {WStr(u"a"), Of(T::WString, 0), Order::Greater},
        {Of(T::String, 0), Str("a"), Order::Less},
        {Ptr(LocationKind::Global, 0, 1), Ptr(LocationKind::Global, 0, 1), Order::Equal},
        {Ptr(LocationKind::Global, 0, 1), Ptr(LocationKind::Global, 0, 2), Order::Unordered},
        {Ptr(LocationKind::Local, 1, 1), Ptr(LocationKind::Local, 2, 1), Order::Unordered},
        {Ptr(LocationKind::Global, 0, 1), Ptr(LocationKind::GlobalConstant, 0, 1), Order::Unordered},
    };
    for (const Row& row : rows)
        ExpectOrder(row.left, row.right, row.order);
}

TEST_F(Comparison, OtherTypesAreRefused) {
    CValue composite;
    composite.SetCompositeValue(new CCompositeValue(T::Byte, 2, "ab"));
    CValue compositeString;
    compositeString.SetCompositeString("a");
    for (const CValue& value : {composite, compositeString, Of(T::Type, 5)}) {
        const std::string text =
            std::string("Comparison of types '") + value.GetTypeName(false) + "' is not supported.";
        for (const Op code : {Op::EQ, Op::NE, Op::GT, Op::GE, Op::LT, Op::LE}) {
            ExpectFailure(value, code, value, Message::ComparisonNotSupported, text);
        }
    }
    CValue left;
    CValue right;
    EXPECT_EQ(left.CompareValue(log_, here_, right), Order::Failed);
    ExpectMessage(Message::ComparisonNotSupported, "Comparison of types 'Undefined' is not supported.");
    right = CValue(5);
    EXPECT_EQ(left.CompareValue(log_, here_, right), Order::Failed);
    ExpectMessage(Message::ConversionNotSupported, "Conversion from type 'Undefined' to 'DINT' is not supported.");
    ExpectFailure(CValue(5), Op::EQ, Ptr(LocationKind::Global, 0, 1), Message::ConversionTargetNotSupported,
                  "Conversion to data type 'POINTER' not supported.");
}

// The string on the left is released: the leak checker sees it otherwise.
TEST_F(Comparison, ResultReplacesAnOwnedLeft) {
    CValue left = Str("abc");
    CValue right = Str("abc");
    EXPECT_TRUE(left.EQ(log_, here_, right));
    EXPECT_THAT(left, IsValue(CValue(true)));
    EXPECT_THAT(right, IsValue(Str("abc")));
}

}  // namespace
