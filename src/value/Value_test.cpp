// Constructors, setters, copies and moves.
#include "value/Value.h"

#include <limits>
#include <type_traits>
#include <utility>

#include "platform/Time.h"
#include "value/CompositeValue.h"
#include "value/ValueTesting.h"

namespace {

using namespace value_testing;

static_assert(std::is_nothrow_move_constructible_v<CValue>);
static_assert(std::is_nothrow_move_assignable_v<CValue>);

CValue CompositeString(const std::string& text) {
    CValue value;
    value.SetCompositeString(text);
    return value;
}

CValue Composite(unsigned int count) {
    CValue value;
    value.SetCompositeValue(new CCompositeValue(T::Byte, count, "abcdefgh"));
    return value;
}

std::string TextOf(const CValue& value) {
    std::string text;
    for (const unsigned short unit : GetUnits(value.GetUtf16String()))
        text += static_cast<char>(unit);
    return text;
}

TEST(ValueConstructor, NativeTypesHaveTheirElementaryType) {
    EXPECT_TRUE(CValue().IsUndefined());
    EXPECT_THAT(CValue(true), IsValue(Of(T::Bool, 1)));
    EXPECT_THAT(CValue(static_cast<unsigned char>(200)), IsValue(Of(T::USInt, 200)));
    EXPECT_THAT(CValue(static_cast<short>(-2)), IsValue(Of(T::Int, -2)));
    EXPECT_THAT(CValue(static_cast<unsigned short>(65535)), IsValue(Of(T::UInt, 65535)));
    EXPECT_THAT(CValue(-2), IsValue(Of(T::DInt, -2)));
    EXPECT_THAT(CValue(4000000000U), IsValue(Of(T::UDInt, 4000000000)));
    EXPECT_THAT(CValue(1.5F), IsValue(Of(T::Real, 0x3FC00000)));
    EXPECT_THAT(CValue(1.5), IsValue(Of(T::LReal, 0x3FF8000000000000)));
    EXPECT_THAT(CValue(CTNTimeInterval(25'000)), IsValue(Of(T::Time, 2)));
    EXPECT_THAT(CValue(CTNTimeInterval(-25'000)), IsValue(Of(T::Time, -2)));
}

TEST(ValueConstructor, BitsStayAsTheyAreUnderAnyType) {
    EXPECT_EQ(CValue(0x80000001U, T::SInt).GetPayload<unsigned int>(), 0x80000001U);
    EXPECT_EQ(CValue(-1LL, T::Bool).GetPayload<long long>(), -1);
    EXPECT_EQ(CValue(~0ULL, T::Date).GetPayload<unsigned long long>(), ~0ULL);
    EXPECT_EQ(CValue(1U, static_cast<T>(99)).GetType(), static_cast<T>(99));
    for (const T owner : {T::String, T::WString, T::Composite, T::CompositeString}) {
        EXPECT_EQ(CValue(1U, owner).GetPayload<void*>(), nullptr);
        EXPECT_EQ(CValue(1LL, owner).GetPayload<void*>(), nullptr);
        EXPECT_EQ(CValue(1ULL, owner).GetPayload<void*>(), nullptr);
        EXPECT_EQ(CValue(1ULL, owner).GetType(), owner);
    }
}

TEST(ValueConstructor, TextIsStringWideOrCompositeString) {
    EXPECT_THAT(CValue("a\u20AC", T::String), IsValue(Str("a\u20AC")));
    EXPECT_THAT(CValue("a\u20AC", T::WString), IsValue(WStr(u"a\u20AC")));
    EXPECT_THAT(CValue("abc", 2, T::String), IsValue(Str("ab")));
    EXPECT_THAT(CValue("abc", 2, T::WString), IsValue(WStr(u"ab")));
    EXPECT_THAT(CValue("abc", T::DInt), IsValue(WStr(u"abc")));
    EXPECT_THAT(CValue(std::string("abc")), IsValue(WStr(u"abc")));
    const CValue composite("abc", T::CompositeString);
    EXPECT_EQ(composite.GetType(), T::CompositeString);
    EXPECT_EQ(TextOf(composite), "abc");
    EXPECT_THAT(CValue(static_cast<const char*>(nullptr), T::String), IsValue(Str("")));
}

TEST(SetInteger, TruncatesToTheWidthWithoutATest) {
    struct Row {
        long long value;
        CValue expected;
    };
    const Row rows[] = {
        {300, Of(T::USInt, 44)},
        {300, Of(T::SInt, 44)},
        {200, Of(T::SInt, -56)},
        {0x141, Of(T::Char, 0x41)},
        {-1, Of(T::Byte, 255)},
        {70000, Of(T::Int, 4464)},
        {-1, Of(T::UInt, 65535)},
        {-1, Of(T::Word, 65535)},
        {0x120AC, Of(T::WChar, 0x20AC)},
        {-1, Of(T::UDInt, 4294967295)},
        {0x100000005, Of(T::DInt, 5)},
        {-1, Of(T::DWord, 4294967295)},
        {-1, Of(T::TimeOfDay, 4294967295)},
        {0x100000005, Of(T::Date, 5)},
        {-5, Of(T::LInt, -5)},
        {-5, Of(T::ULInt, -5)},
        {-5, Of(T::LWord, -5)},
        {-5, Of(T::Time, -5)},
        {-5, Of(T::DateAndTime, -5)},
    };
    for (const Row& row : rows) {
        CValue value = Str("old");
        value.SetInteger(row.value, row.expected.GetType());
        EXPECT_THAT(value, IsValue(row.expected));
    }
}

TEST(SetInteger, OtherTypesGetTheirTagOnly) {
    for (const T type : {T::Bool, T::Real, T::LReal, T::Pointer, T::Type, T::Undefined}) {
        CValue value(0x01020304);
        value.SetInteger(5, type);
        EXPECT_EQ(value.GetType(), type);
        EXPECT_EQ(value.GetPayload<int>(), 0x01020304);
    }
}

TEST(SetInteger, TypesThatOwnAreLeftEmpty) {
    for (const T type : {T::String, T::WString, T::Composite, T::CompositeString}) {
        CValue value(0x01020304);
        value.SetInteger(5, type);
        EXPECT_EQ(value.GetType(), type);
        EXPECT_EQ(value.GetPayload<void*>(), nullptr);
    }
}

TEST(ValueSetter, ReplacesWhatWasOwned) {
    CValue value = Str("old");
    value.SetFloat(1.5F);
    EXPECT_THAT(value, IsValue(CValue(1.5F)));
    value.SetString(std::string("a"), T::String);
    EXPECT_THAT(value, IsValue(Str("a")));
    value.SetDouble(2.5);
    EXPECT_THAT(value, IsValue(CValue(2.5)));
    value.SetString(std::string("a"), T::Char);
    EXPECT_THAT(value, IsValue(WStr(u"a")));
    value.SetString("abc", 2, T::String);
    EXPECT_THAT(value, IsValue(Str("ab")));
    value.SetString("abc", 2, T::WString);
    EXPECT_THAT(value, IsValue(WStr(u"ab")));
    value.SetString("abc", T::String);
    EXPECT_THAT(value, IsValue(Str("abc")));
    value.SetString("abc", T::CompositeString);
    EXPECT_THAT(value, IsValue(WStr(u"abc")));
    value.SetBool(true);
    EXPECT_THAT(value, IsValue(CValue(true)));
    value = Str("old");
    value = false;
    EXPECT_THAT(value, IsValue(CValue(false)));
    value = Str("old");
    value.SetTimestamp(CTNTimestamp(123'456'789));
    EXPECT_THAT(value, IsValue(Of(T::DateAndTime, 12345)));
    value = Composite(3);
    value.SetAddress(2, 3, 4);
    EXPECT_THAT(value, IsValue(Ptr(LocationKind::Local, 3, 4)));
    value = CompositeString("old");
    value.SetUndefined();
    EXPECT_TRUE(value.IsUndefined());
}

TEST(ValueSetter, TakesOverObjectsWithoutACopy) {
    CValue value = Str("old");
    Utf8String* narrow = Utf8StringCopy("abc", 3);
    value.SetString(narrow);
    EXPECT_EQ(value.GetUtf8String(), narrow);
    Utf16String* wide = Utf16StringCopy("abc", 3);
    value.SetWString(wide);
    EXPECT_EQ(value.GetType(), T::WString);
    EXPECT_EQ(value.GetUtf16String(), wide);
    auto* composite = new CCompositeValue(T::Byte, 3, "abc");
    value.SetCompositeValue(composite);
    EXPECT_EQ(value.GetType(), T::Composite);
    EXPECT_EQ(value.GetComposite(), composite);
    value.SetCompositeValue(nullptr);
    EXPECT_EQ(value.GetComposite(), nullptr);
}

TEST(ValueCopy, EveryTypeIsCopiedDeeply) {
    for (unsigned int code = 0; code <= 27; ++code) {
        SCOPED_TRACE(code);
        const CValue original = Of(static_cast<T>(code), 0x0102030405060708);
        CValue copy(original);
        EXPECT_THAT(copy, IsValue(original));
        CValue assigned = Str("old");
        assigned = original;
        EXPECT_THAT(assigned, IsValue(original));
    }
    for (const CValue& original : {Str("abc"), WStr(u"abc"), CompositeString("abc"), Composite(3)}) {
        SCOPED_TRACE(original.GetTypeName(false));
        const CValue copy(original);
        CValue assigned = Str("old");
        assigned = original;
        for (const CValue* other : {&copy, &std::as_const(assigned)}) {
            EXPECT_EQ(other->GetType(), original.GetType());
            EXPECT_NE(other->GetPayload<void*>(), original.GetPayload<void*>());
        }
    }
    EXPECT_EQ(TextOf(CValue(CompositeString("abc"))), "abc");
    const CValue composite = Composite(3);
    const CValue copy(composite);
    ASSERT_EQ(copy.GetComposite()->GetCount(), 3U);
    EXPECT_EQ(std::memcmp(copy.GetComposite()->GetData(), "abc", 3), 0);
}

TEST(ValueCopy, ToItselfChangesNothing) {
    CValue value = Str("abc");
    const CValue& itself = value;
    value = itself;
    EXPECT_THAT(value, IsValue(Str("abc")));
    CValue& same = value;
    value = std::move(same);
    EXPECT_THAT(value, IsValue(Str("abc")));
}

TEST(ValueMove, HandsOverTheObjectAndLeavesTheSourceUndefined) {
    for (CValue source : {Str("abc"), WStr(u"abc"), CompositeString("abc"), Composite(3), CValue(5)}) {
        const T type = source.GetType();
        const auto payload = source.GetPayload<unsigned long long>();
        CValue moved(std::move(source));
        EXPECT_TRUE(source.IsUndefined());  // NOLINT(bugprone-use-after-move)
        EXPECT_EQ(moved.GetType(), type);
        EXPECT_EQ(moved.GetPayload<unsigned long long>(), payload);
        CValue assigned = Str("old");
        assigned = std::move(moved);
        EXPECT_TRUE(moved.IsUndefined());  // NOLINT(bugprone-use-after-move)
        EXPECT_EQ(assigned.GetType(), type);
        EXPECT_EQ(assigned.GetPayload<unsigned long long>(), payload);
    }
}

}  // namespace
