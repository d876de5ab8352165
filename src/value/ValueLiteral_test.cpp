// Storage: what a payload holds, and the queries that read it.
#include "value/ValueLiteral.h"

#include <limits>
#include <memory>

#include "platform/Time.h"
#include "value/CompositeValue.h"
#include "value/ValueTesting.h"

namespace {

using namespace value_testing;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

CValue Composite() {
    CValue value;
    value.SetCompositeValue(new CCompositeValue(T::Byte, 2, "ab"));
    return value;
}

CValue CompositeString() {
    CValue value;
    value.SetCompositeString("text");
    return value;
}

TEST(ValueStorage, IsTagThenAlignedPayload) {
    const CValue value(0x11223344);
    const auto* bytes = reinterpret_cast<const unsigned char*>(&value);
    EXPECT_EQ(bytes[0], 8);
    EXPECT_EQ(static_cast<const unsigned char*>(value.GetValue()), bytes + 8);
    EXPECT_EQ(bytes[8], 0x44);
    EXPECT_EQ(bytes[11], 0x11);
}

TEST(ValueStorage, PointerAndTypeLieInThePayload) {
    const CValue pointer = Ptr(LocationKind::Local, 0x0102, 0x03040506);
    const unsigned char pointerBytes[8] = {2, 0, 2, 1, 6, 5, 4, 3};
    EXPECT_EQ(std::memcmp(pointer.GetValue(), pointerBytes, 8), 0);
    const CValue type = Of(T::Type, 0x005014);
    const unsigned char typeBytes[3] = {20, 80, 0};
    EXPECT_EQ(std::memcmp(type.GetValue(), typeBytes, 3), 0);
}

TEST(ValueStorage, ATypeAloneMeansZeroOrAnEmptyString) {
    for (unsigned int code = 0; code <= 27; ++code) {
        SCOPED_TRACE(code);
        const CValue value(static_cast<T>(code));
        EXPECT_EQ(value.GetType(), static_cast<T>(code));
        EXPECT_TRUE(value.IsZero());
        const bool hasString = code == 20 || code == 21;
        EXPECT_EQ(value.GetPayload<void*>() != nullptr, hasString);
    }
}

TEST(ValueStorage, StringsCopyTheUnitsGiven) {
    CValue value = Str(std::string_view("a\0\xFF", 3));
    EXPECT_EQ(value.GetType(), T::String);
    ASSERT_EQ(GetUnits(value.GetUtf8String()).size(), 3U);
    EXPECT_EQ(GetUnits(value.GetUtf8String())[2], 0xFF);
    const CValue wide = WStr(u"a\xD800z");
    ASSERT_EQ(GetUnits(wide.GetUtf16String()).size(), 3U);
    EXPECT_EQ(GetUnits(wide.GetUtf16String())[1], 0xD800);
    // From its own units, which are released on the way.
    value = Str("\xFFxyz");
    const auto units = GetUnits(value.GetUtf8String());
    value.SetFromVMString(units.data(), 2);
    EXPECT_THAT(value, IsValue(Str("\xFFx")));
}

TEST(ClearValue, ScalarsKeepTheirBitsAndOwnersTheirNull) {
    CValue number(5);
    number.ClearValue();
    EXPECT_TRUE(number.IsUndefined());
    EXPECT_EQ(number.GetPayload<int>(), 5);
    for (CValue owner : {Str("a"), WStr(u"a"), Composite(), CompositeString()}) {
        owner.ClearValue();
        EXPECT_TRUE(owner.IsUndefined());
        EXPECT_EQ(owner.GetPayload<void*>(), nullptr);
    }
}

struct QueryRow {
    CValue value;
    bool isZero;
    bool isNegative;
    unsigned int memorySize;
};

TEST(ValueQueries, ZeroNegativeAndMemorySize) {
    const QueryRow rows[] = {
        {CValue(), true, false, 16},
        {CValue(false), true, false, 16},
        {CValue(true), false, false, 16},
        {Of(T::Bool, 2), true, false, 16},
        {Of(T::SInt, 0xFF00), true, false, 16},
        {Of(T::SInt, 0x80), false, true, 16},
        {Of(T::USInt, 0x80), false, false, 16},
        {Of(T::Byte, 0x100), true, false, 16},
        {Of(T::Char, 0x41), false, false, 16},
        {Of(T::Int, 0x8000), false, true, 16},
        {Of(T::Int, 0x10000), true, false, 16},
        {Of(T::UInt, 0x8000), false, false, 16},
        {Of(T::Word, 0x10000), true, false, 16},
        {Of(T::WChar, 0xFFFF), false, false, 16},
        {CValue(-1), false, true, 16},
        {CValue(0), true, false, 16},
        {Of(T::UDInt, 0x80000000), false, false, 16},
        {Of(T::DWord, 0x100000000), true, false, 16},
        {Of(T::TimeOfDay, 1), false, false, 16},
        {Of(T::Date, 0xFFFFFFFF), false, false, 16},
        {Of(T::LInt, -1), false, true, 16},
        {Of(T::LInt, 0x100000000), false, false, 16},
        {Of(T::ULInt, -1), false, false, 16},
        {Of(T::LWord, 0), true, false, 16},
        {Of(T::Time, -1), false, true, 16},
        {Of(T::Time, 0), true, false, 16},
        {Of(T::DateAndTime, -1), false, false, 16},
        {CValue(0.0F), true, false, 16},
        {CValue(-0.0F), true, false, 16},
        {CValue(-1.5F), false, true, 16},
        {CValue(-0.0), true, false, 16},
        {CValue(-1e-300), false, true, 16},
        {CValue(kNaN), false, false, 16},
        {Str(""), true, false, 18},
        {Str("abc"), false, false, 21},
        {WStr(u""), true, false, 18},
        {WStr(u"abc"), false, false, 24},
        {Ptr(LocationKind::Null, 1, 5), true, false, 16},
        {Ptr(LocationKind::Global, 0, 0), false, false, 16},
        {Composite(), true, false, 16},
        {CompositeString(), true, false, 16},
        {Of(T::Type, 8), true, false, 16},
    };
    for (const QueryRow& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.value));
        EXPECT_EQ(row.value.IsZero(), row.isZero);
        EXPECT_EQ(row.value.IsNegative(), row.isNegative);
        EXPECT_EQ(row.value.GetMemorySize(), row.memorySize);
    }
}

struct OrderRow {
    CValue left;
    CValue right;
    bool isEqual;
    bool isLess;
    bool isGreater;  // right.LessThan(left)
};

TEST(ValueQueries, EqualityAndOrder) {
    const OrderRow rows[] = {
        {CValue(), CValue(), true, false, false},
        {CValue(), CValue(false), false, true, false},
        {CValue(), Str("a"), false, true, false},
        {CValue(false), CValue(true), false, true, false},
        {CValue(true), CValue(true), true, false, false},
        {CValue(1), CValue(1), true, false, false},
        {Of(T::Int, 1), CValue(1), false, false, false},
        {CValue(-1), CValue(1), false, true, false},
        {Of(T::SInt, -128), Of(T::SInt, 127), false, true, false},
        {Of(T::SInt, 0x1FF), Of(T::SInt, 0x2FF), true, false, false},
        {Of(T::Byte, 128), Of(T::Byte, 127), false, false, true},
        {Of(T::Char, 0x41), Of(T::Char, 0xC1), false, true, false},
        {Of(T::Int, -1), Of(T::Int, 0), false, true, false},
        {Of(T::UInt, 0xFFFF), Of(T::UInt, 0), false, false, true},
        {Of(T::Word, 1), Of(T::Word, 2), false, true, false},
        {Of(T::WChar, 0xFFFF), Of(T::WChar, 1), false, false, true},
        {Of(T::UDInt, -1), Of(T::UDInt, 1), false, false, true},
        {Of(T::DWord, 1), Of(T::DWord, -1), false, true, false},
        {Of(T::TimeOfDay, 5), Of(T::TimeOfDay, -1), false, true, false},
        {Of(T::Date, 5), Of(T::Date, 6), false, true, false},
        {Of(T::LInt, std::numeric_limits<long long>::min()), Of(T::LInt, 0), false, true, false},
        {Of(T::ULInt, -1), Of(T::ULInt, 0), false, false, true},
        {Of(T::LWord, 7), Of(T::LWord, 7), true, false, false},
        {Of(T::Time, -1), Of(T::Time, 1), false, true, false},
        {Of(T::DateAndTime, -1), Of(T::DateAndTime, 1), false, false, true},
        {CValue(0.0F), CValue(-0.0F), true, false, false},
        {CValue(1.5F), CValue(2.5F), false, true, false},
        {CValue(kNaN), CValue(kNaN), false, false, false},
        {CValue(1.0), CValue(kNaN), false, false, false},
        {CValue(-2.0), CValue(-1.0), false, true, false},
        {Str("ab"), Str("ab"), true, false, false},
        {Str("ab"), Str("abc"), false, true, false},
        {Str("\xFF"), Str("a"), false, false, true},
        {WStr(u"ab"), WStr(u"ab"), true, false, false},
        {WStr(u"ab"), WStr(u"b"), false, true, false},
        {Ptr(LocationKind::Global, 0, 1), Ptr(LocationKind::Global, 0, 1), false, false, false},
        {Composite(), Composite(), false, false, false},
        {CompositeString(), CompositeString(), false, false, false},
        {Of(T::Type, 8), Of(T::Type, 8), false, false, false},
        {Of(static_cast<T>(99), 8), Of(static_cast<T>(99), 8), false, false, false},
    };
    for (const OrderRow& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.left) + " and " + ::testing::PrintToString(row.right));
        EXPECT_EQ(row.left.IsEqual(row.right), row.isEqual);
        EXPECT_EQ(row.right.IsEqual(row.left), row.isEqual);
        EXPECT_EQ(row.left.LessThan(row.right), row.isLess);
        EXPECT_EQ(row.right.LessThan(row.left), row.isGreater);
    }
}

TEST(ValueQueries, PointerAndCompositeDoNotEqualThemselves) {
    const CValue pointer = Ptr(LocationKind::Global, 0, 1);
    EXPECT_FALSE(pointer.IsEqual(pointer));
    const CValue composite = Composite();
    EXPECT_FALSE(composite.IsEqual(composite));
}

TEST(ValueQueries, OrderAgainstUndefined) {
    EXPECT_FALSE(CValue(false).LessThan(CValue()));
    EXPECT_FALSE(CValue().LessThan(CValue()));
}

// The payload of another type is a number to numbers, but never an object to strings.
TEST(ValueQueries, StringsOfAnotherTypeAreNotLess) {
    EXPECT_FALSE(Str("a").LessThan(CValue(5)));
    EXPECT_FALSE(Str("a").LessThan(WStr(u"b")));
    EXPECT_FALSE(WStr(u"a").LessThan(CValue(5)));
    EXPECT_FALSE(WStr(u"a").LessThan(Str("b")));
}

TEST(ValueQueries, NullObjectsCountAsEmpty) {
    for (const T type : {T::String, T::WString}) {
        const CValue null = Of(type, 0x1234);
        ASSERT_EQ(null.GetPayload<void*>(), nullptr);
        EXPECT_TRUE(null.IsZero());
        EXPECT_EQ(null.GetMemorySize(), 18U);
        EXPECT_TRUE(null.IsEqual(CValue(type)));
        EXPECT_TRUE(CValue(type).IsEqual(null));
        EXPECT_FALSE(null.LessThan(CValue(type)));
        const CValue text("a", type);
        EXPECT_TRUE(null.LessThan(text));
        EXPECT_FALSE(text.LessThan(null));
        std::string out = "old";
        null.GetStringValue(out);
        EXPECT_EQ(out, "");
        const CValue copy(null);  // NOLINT(performance-unnecessary-copy-initialization)
        EXPECT_TRUE(copy.IsEqual(null));
    }
}

TEST(GetStringValue, DecodesStringsAndLeavesOthers) {
    std::string out;
    Str("a\u20AC\xFFz").GetStringValue(out);
    EXPECT_EQ(out, "a\u20AC\uFFFDz");
    WStr(u"a\u20AC\U0001F600").GetStringValue(out);
    EXPECT_EQ(out, "a\u20AC\U0001F600");
    for (const CValue& other : {CValue(), CValue(5), Of(T::Char, 'a'), CompositeString(), Composite()}) {
        std::string kept = "old";
        other.GetStringValue(kept);
        EXPECT_EQ(kept, "old");
    }
}

TEST(GetTimestampValue, DatesGiveTicksAndOthersNothing) {
    struct Row {
        CValue value;
        std::int64_t ticks;
    };
    const Row rows[] = {
        {Of(T::Date, 1), 864000000000},
        {Of(T::Date, 0), 0},
        {Of(T::Date, 0xFFFFFFFF), std::numeric_limits<std::int64_t>::max()},
        {Of(T::DateAndTime, 1), 10000},
        {Of(T::DateAndTime, 86400001), 864000010000},
        {Of(T::Time, 1), 77},
        {Of(T::TimeOfDay, 1), 77},
        {CValue(), 77},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.ticks);
        CTNTimestamp timestamp(77);
        row.value.GetTimestampValue(timestamp);
        EXPECT_EQ(timestamp.GetTicks(), row.ticks);
    }
}

}  // namespace
