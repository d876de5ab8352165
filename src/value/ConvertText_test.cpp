// Conversions to strings, characters and display text.
#include <limits>
#include <memory>
#include <string>

#include "platform/DataFormat.h"
#include "value/CompositeValue.h"
#include "value/ValueTesting.h"

namespace {

using namespace value_testing;

class ConvertText : public ValueTest {
 protected:
    void ExpectDisplay(const CDataFormatSettings* settings, const CValue& from, const CValue& to) {
        SCOPED_TRACE(::testing::PrintToString(from));
        CValue value(from);
        EXPECT_TRUE(value.ChangeTypeToDisplayWString(settings, log_, here_));
        EXPECT_THAT(value, IsValue(to));
        ExpectNoMessage();
    }
};

CValue Composite() {
    CValue value;
    value.SetCompositeValue(new CCompositeValue(T::DInt, 0, nullptr));
    return value;
}

TEST_F(ConvertText, BetweenStringsAndCharacters) {
    struct Row {
        CValue from;
        CValue to;
    };
    const Row rows[] = {
        {Str("a\u20AC\U0001F600"), WStr(u"a\u20AC\U0001F600")},
        {Str("a\xFFz"), WStr(u"a\uFFFDz")},
        {Str(""), WStr(u"")},
        {WStr(u"a\u20AC\U0001F600"), Str("a\u20AC\U0001F600")},
        {WStr(u"a\xD800z"), Str("a\uFFFDz")},
        {WStr(u""), Str("")},
        {Of(T::String, 0), WStr(u"")},  // null objects
        {Of(T::WString, 0), Str("")},
        {Of(T::Char, 'a'), Str("a")},
        {Of(T::Char, 0xE9), Str("\xE9")},  // the byte as it is, though it is no UTF-8
        {Of(T::Char, 0), Str(std::string_view("\0", 1))},
        {Of(T::Char, 0xE9), WStr(u"\u00E9")},
        {Of(T::WChar, 'a'), Str("a")},
        {Of(T::WChar, 0xE9), Str("\u00E9")},
        {Of(T::WChar, 0x20AC), Str("\u20AC")},
        {Of(T::WChar, 0xD800), Str("\uFFFD")},
        {Of(T::WChar, 0x20AC), WStr(u"\u20AC")},
        {Of(T::WChar, 0xD800), WStr(u"\xD800")},
        {Str("abc"), Of(T::Char, 'a')},
        {Str(""), Of(T::Char, 0)},
        {Str("\u20AC"), Of(T::Char, 0xE2)},  // the first byte
        {Of(T::String, 0), Of(T::Char, 0)},
        {Str("abc"), Of(T::WChar, 'a')},
        {Str(""), Of(T::WChar, 0)},
        {Str("\u20ACx"), Of(T::WChar, 0x20AC)},  // the first code point
        {Str("\U0001F600"), Of(T::WChar, 0xF600)},
        {Str("\xFF"), Of(T::WChar, 0xFFFD)},
        {Of(T::String, 0), Of(T::WChar, 0)},
        {WStr(u"abc"), Of(T::Char, 'a')},
        {WStr(u""), Of(T::Char, 0)},
        {WStr(u"\u20AC"), Of(T::Char, 0xAC)},
        {WStr(u"\U0001F600"), Of(T::Char, 0x00)},
        {WStr(u"\U0001F641"), Of(T::Char, 0x41)},  // the pair joined
        {Of(T::WString, 0), Of(T::Char, 0)},
        {WStr(u"\u20ACx"), Of(T::WChar, 0x20AC)},
        {WStr(u"\U0001F600"), Of(T::WChar, 0xD83D)},  // the first unit
        {WStr(u""), Of(T::WChar, 0)},
        {Of(T::WString, 0), Of(T::WChar, 0)},
    };
    for (const Row& row : rows)
        ExpectConversion(row.from, row.to);
}

TEST_F(ConvertText, NumbersToCharactersFollowTheIntegers) {
    for (const T target : {T::Char, T::WChar}) {
        ExpectConversion(CValue(true), Of(target, 'T'));
        ExpectConversion(CValue(false), Of(target, 'F'));
        ExpectConversion(Of(T::SInt, -1), Of(target, -1));
        ExpectConversion(Of(T::Byte, 0x41), Of(target, 0x41));
        ExpectConversion(CValue(0x12341), Of(target, 0x12341));
        ExpectConversion(Of(T::ULInt, -2), Of(target, -2));
        ExpectConversion(CValue(65.5F), Of(target, 66));
        ExpectConversion(CValue(-5.0), Of(target, 0));
        ExpectConversion(CValue(1e30), Of(target, -1));
        ExpectConversion(CValue(std::numeric_limits<double>::quiet_NaN()), Of(target, 0));
        ExpectConversion(Of(T::Time, 66), Of(target, 66));
        ExpectConversion(Of(T::TimeOfDay, 66), Of(target, 66));
        ExpectConversion(Of(T::Date, 66), Of(target, 66));
        ExpectConversion(Of(T::DateAndTime, 66), Of(target, 66));
    }
    ExpectConversion(Of(T::WChar, 0x20AC), Of(T::Char, 0xAC));
    ExpectConversion(Of(T::Char, 0xE9), Of(T::WChar, 0xE9));
}

TEST_F(ConvertText, EverythingElseBecomesItsText) {
    struct Row {
        CValue from;
        std::string text;
    };
    const Row rows[] = {
        {CValue(), "Undefined"},
        {CValue(true), "TRUE"},
        {Of(T::SInt, -128), "-128"},
        {Of(T::Byte, 255), "16#FF"},
        {Of(T::UInt, 65535), "65535"},
        {CValue(-5), "-5"},
        {Of(T::LWord, -1), "16#FFFFFFFFFFFFFFFF"},
        {CValue(1.5F), "1.5"},
        {CValue(0.1), "0.1"},
        {Of(T::Time, 5400000), "1h30m"},
        {Of(T::TimeOfDay, 3600000), "01:00:00.000"},
        {Of(T::Date, 0), "1970-01-01"},
        {Of(T::DateAndTime, 0), "1970-01-01-00:00:00.000"},
        {Ptr(LocationKind::Global, 0, 5), "Global: 5"},
        {Composite(), "DINT[]"},
        {Of(T::Type, 0x005014), "STRING[80]"},
    };
    for (const Row& row : rows) {
        ExpectConversion(row.from, Str(row.text));
        ExpectConversion(row.from, WStr(std::u16string(row.text.begin(), row.text.end())));
        ExpectDisplay(
            nullptr, row.from.IsTypeOf(T::AnyDate) ? CValue(1) : row.from,
            row.from.IsTypeOf(T::AnyDate) ? WStr(u"1") : WStr(std::u16string(row.text.begin(), row.text.end())));
    }
}

TEST_F(ConvertText, CompositeStringGivesItsUnits) {
    CValue value;
    value.SetCompositeString("a\u20AC");
    ExpectConversion(value, Str("a\u20AC"));
    ExpectConversion(value, WStr(u"a\u20AC"));
}

TEST_F(ConvertText, DisplayLeavesStrings) {
    ExpectDisplay(nullptr, Str("abc"), Str("abc"));
    ExpectDisplay(nullptr, WStr(u"abc"), WStr(u"abc"));
    ExpectDisplay(nullptr, Of(T::Char, 'a'), WStr(u"'a'"));
}

// 2020-01-02 is day 18263 of the epoch.
constexpr long long kDay = 18263;
constexpr long long kTime = ((3 * 60 + 4) * 60 + 5) * 1000;

TEST_F(ConvertText, DisplayOfDatesHasDefaults) {
    ExpectDisplay(nullptr, Of(T::Date, kDay), WStr(u"2020-01-02"));
    ExpectDisplay(nullptr, Of(T::TimeOfDay, kTime), WStr(u"03:04:05"));
    ExpectDisplay(nullptr, Of(T::DateAndTime, kDay * 86400000 + kTime), WStr(u"2020-01-02 03:04:05"));
}

TEST_F(ConvertText, DisplayOfDatesFollowsTheSettings) {
    CDataFormatSettings settings;
    settings.SetTimeZone(CTNTimeZone("Europe/Berlin"));  // one hour ahead in winter
    ASSERT_TRUE(settings.SetDateFormat("dd.MM.yyyy HH"));
    ASSERT_TRUE(settings.SetTimeFormat("HH.mm"));
    ASSERT_TRUE(settings.SetDateAndTimeFormat("dd/MM HH:mm:ss"));
    ExpectDisplay(&settings, Of(T::Date, kDay), WStr(u"02.01.2020 01"));
    ExpectDisplay(&settings, Of(T::TimeOfDay, kTime), WStr(u"04.04"));
    ExpectDisplay(&settings, Of(T::DateAndTime, kDay * 86400000 + kTime), WStr(u"02/01 04:04:05"));
}

TEST_F(ConvertText, DisplayOfAnyDateIsTotal) {
    for (const CValue& extreme : {Of(T::Date, -1), Of(T::TimeOfDay, -1), Of(T::DateAndTime, -1),
                                  Of(T::DateAndTime, std::numeric_limits<long long>::max())}) {
        CValue value(extreme);
        EXPECT_TRUE(value.ChangeTypeToDisplayWString(nullptr, log_, here_));
        EXPECT_EQ(value.GetType(), T::WString);
        EXPECT_FALSE(value.IsZero());
    }
}

}  // namespace
