#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "support/LiteralTest.h"
#include "value/CompositeValue.h"
#include "value/VMTypeValue.h"

using enum ElementaryType;
using literal_test::AsDeclaration;
using literal_test::AsLiteral;
using literal_test::AsText;

namespace {

constexpr auto kMin64 = std::numeric_limits<long long>::min();
constexpr auto kMax64 = std::numeric_limits<long long>::max();

CValue Of(ElementaryType type, long long number) {
    return CValue(number, type);
}

CValue TypeValue(std::uint8_t code, std::uint16_t length) {
    return CValue((static_cast<long long>(length) << 8) | code, Type);
}

TEST(GetAsText, ScalarsOfEveryType) {
    const struct {
        ElementaryType type;
        long long bits;
        const char* expected;
    } kRows[] = {
        {Undefined, 0, "Undefined"},
        {Bool, 0, "FALSE"},
        {Bool, 1, "TRUE"},
        {SInt, -128, "-128"},
        {SInt, 127, "127"},
        {USInt, 255, "255"},
        {Byte, 255, "16#FF"},
        {Byte, 1, "16#1"},
        {Int, -32768, "-32768"},
        {UInt, 65535, "65535"},
        {Word, 0xABCD, "16#ABCD"},
        {DInt, std::numeric_limits<int>::min(), "-2147483648"},
        {UDInt, 4294967295, "4294967295"},
        {DWord, 255, "16#FF"},
        {DWord, 0, "16#0"},
        {LInt, kMin64, "-9223372036854775808"},
        {ULInt, -1, "18446744073709551615"},
        {LWord, -1, "16#FFFFFFFFFFFFFFFF"},
        {Time, 0, "0s"},
        {Time, 5'400'000, "1h30m"},
        {Time, 1'500, "1s500ms"},
        {Time, 86'400'001, "1d1ms"},
        {Time, 90'061'001, "1d1h1m1s1ms"},
        {Time, 999, "999ms"},
        {Time, 86'399'999, "23h59m59s999ms"},
        {Time, -1, "-1ms"},
        {Time, -1'500, "-1s500ms"},
        {Time, kMax64, "106751991167d7h12m55s807ms"},
        {Time, kMin64, "-106751991167d7h12m55s808ms"},
        {TimeOfDay, 0, "00:00:00.000"},
        {TimeOfDay, 45'015'999, "12:30:15.999"},
        {TimeOfDay, 90'000'000, "25:00:00.000"},
        {TimeOfDay, 4'294'967'295, "1193:02:47.295"},
        {Date, 0, "1970-01-01"},
        {Date, 19'753, "2024-01-31"},
        {DateAndTime, 0, "1970-01-01-00:00:00.000"},
        {DateAndTime, 1'706'706'309'250, "2024-01-31-13:05:09.250"},
        {DateAndTime, -1, "1969-12-31-23:59:59.999"},
        {Char, 'a', "'a'"},
        {Char, '\'', "'$''"},
        {Char, '"', "'\"'"},
        {Char, '$', "'$$'"},
        {Char, 0, "'$00'"},
        {Char, 10, "'$L'"},
        {Char, 126, "'~'"},
        {Char, 127, "'$7F'"},
        {Char, 0xE9, "'$E9'"},
        {WChar, 'a', "\"a\""},
        {WChar, '"', "\"$\"\""},
        {WChar, '\'', "\"'\""},
        {WChar, 0, "\"$0000\""},
        {WChar, 13, "\"$R\""},
        {WChar, 0x85, "\"$0085\""},
        {WChar, 0xE9, "\"\u00e9\""},
        {WChar, 0x100, "\"\u0100\""},
        {WChar, 0x20AC, "\"\u20ac\""},
        {WChar, 0x2028, "\"$2028\""},
        {WChar, 0xD800, "\"$D800\""},
        {WChar, 0xDFFF, "\"$DFFF\""},
        {WChar, 0xE000, "\"$E000\""},
        {WChar, 0xFFFF, "\"$FFFF\""},
        {static_cast<ElementaryType>(28), 0, ""},
        {AnyInt, 0, ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(std::string(CValueType(row.type).GetTypeName(false)) + " " + row.expected);
        EXPECT_EQ(AsText(Of(row.type, row.bits)), row.expected);
    }
}

TEST(GetAsText, IgnoresWhatLiesBehindANarrowPayload) {
    EXPECT_EQ(AsText(Of(SInt, 0x7777777777777780)), "-128");
    EXPECT_EQ(AsText(Of(Byte, 0x77777777777777FF)), "16#FF");
    EXPECT_EQ(AsText(Of(Word, 0x777777777777FFFF)), "16#FFFF");
    EXPECT_EQ(AsText(Of(UDInt, 0x7777777700000001)), "1");
    EXPECT_EQ(AsText(Of(Char, 0x7777777777777741)), "'A'");
    EXPECT_EQ(AsText(Of(WChar, 0x7777777777770041)), "\"A\"");
    EXPECT_EQ(AsText(Of(TimeOfDay, 0x7777777700000001)), "00:00:00.001");
}

TEST(GetAsText, Reals) {
    EXPECT_EQ(AsText(CValue(1.5F)), "1.5");
    EXPECT_EQ(AsText(CValue(0.1F)), "0.1");
    EXPECT_EQ(AsText(CValue(0.1)), "0.1");
    EXPECT_EQ(AsText(CValue(static_cast<double>(0.1F))), "0.10000000149011612");
    EXPECT_EQ(AsText(CValue(-0.0)), "-0.0");
    EXPECT_EQ(AsText(CValue(std::numeric_limits<double>::infinity())), "inf");
    EXPECT_EQ(AsText(CValue(std::numeric_limits<float>::quiet_NaN())), "nan");
}

TEST(GetAsText, Strings) {
    EXPECT_EQ(AsText(CValue("it's $5\n\"\u00e9\"", String)), "'it$'s $$5$L\"\u00e9\"'");
    EXPECT_EQ(AsText(CValue("it's $5\n\"\u00e9\"", WString)), "\"it's $$5$L$\"\u00e9$\"\"");
    EXPECT_EQ(AsText(CValue(String)), "''");
    EXPECT_EQ(AsText(CValue(WString)), "\"\"");
    CValue composite;
    composite.SetCompositeString("a\"$\u00e9\U0001F600");
    EXPECT_EQ(AsText(composite), "a\"$\u00e9\U0001F600") << "no quotes, no escapes";
}

TEST(GetAsText, NullObjectsCountAsEmpty) {
    CValue null;
    null.SetString(static_cast<Utf8String*>(nullptr));
    EXPECT_EQ(AsText(null), "''");
    null.SetWString(nullptr);
    EXPECT_EQ(AsText(null), "\"\"");
    null.SetCompositeValue(nullptr);
    EXPECT_EQ(AsText(null), AsText([] {
                  CValue empty;
                  empty.SetCompositeValue(new CCompositeValue());
                  return empty;
              }()));
    EXPECT_EQ(AsText(Of(CompositeString, 0)), "");
}

TEST(GetAsText, PointersTypesAndComposites) {
    char buffer[PointerValue::kTextSize];
    const PointerValue pointer{LocationKind::Global, 0, 16};
    CValue value;
    value.SetAddress(1, 0, 16);
    EXPECT_EQ(AsText(value), pointer.FormatPointerValue(buffer));
    EXPECT_EQ(AsText(TypeValue(20, 80)), "STRING[80]");
    EXPECT_EQ(AsText(TypeValue(8, 0)), "DINT");
    constexpr unsigned char kBytes[] = {1, 2, 255};
    value.SetCompositeValue(new CCompositeValue(Byte, 3, kBytes));
    EXPECT_EQ(AsText(value), "BYTE[ 16#1, 16#2, 16#FF ]");
}

TEST(GetAsText, DatesBeyondTheTimestampSaturate) {
    // 2^63 ticks of 100 ns are 10675199 days and some hours.
    const std::string last = AsText(Of(Date, 10'675'200));
    EXPECT_EQ(AsText(Of(Date, 4'294'967'295)), last);
    EXPECT_FALSE(last.empty());
    EXPECT_EQ(AsText(Of(DateAndTime, kMax64)), AsText(Of(DateAndTime, kMax64 / 10'000 + 1)));
}

TEST(GetAsLiteral, PrefixesTheTypesThatNeedIt) {
    const struct {
        CValue value;
        const char* expected;
    } kRows[] = {
        {CValue(), "Undefined"},
        {CValue(true), "TRUE"},
        {CValue(5), "5"},
        {Of(DWord, 255), "16#FF"},
        {CValue(1.5F), "1.5"},
        {Of(Time, 5'400'000), "T#1h30m"},
        {Of(Time, 0), "T#0s"},
        {Of(Time, -1'500), "T#-1s500ms"},
        {Of(Time, -1), "T#-1ms"},
        {Of(TimeOfDay, 43'200'000), "TOD#12:00:00.000"},
        {Of(Date, 0), "D#1970-01-01"},
        {Of(DateAndTime, 0), "DT#1970-01-01-00:00:00.000"},
        {CValue("a", String), "'a'"},
        {CValue("a", WString), "\"a\""},
        {Of(Char, 'a'), "CHAR#'a'"},
        {Of(WChar, 'a'), "WCHAR#\"a\""},
        {TypeValue(20, 5), "STRING[5]"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.expected);
        EXPECT_EQ(AsLiteral(row.value), row.expected);
    }
}

TEST(GetDeclaration, PrefixesEveryDefinedType) {
    const struct {
        CValue value;
        const char* expected;
    } kRows[] = {
        {CValue(), "Undefined"},
        {CValue(true), "BOOL#TRUE"},
        {CValue(5), "DINT#5"},
        {Of(DWord, 255), "DWORD#16#FF"},
        {Of(Time, 1), "T#1ms"},
        {Of(TimeOfDay, 43'200'000), "TOD#12:00:00.000"},
        {Of(Date, 0), "D#1970-01-01"},
        {Of(DateAndTime, 0), "DT#1970-01-01-00:00:00.000"},
        {CValue("a", String), "STRING#'a'"},
        {CValue("a", WString), "WSTRING#\"a\""},
        {Of(Char, 'a'), "CHAR#'a'"},
        {TypeValue(20, 5), "TYPE#STRING[5]"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.expected);
        EXPECT_EQ(AsDeclaration(row.value), row.expected);
    }
}

TEST(GetTimeAsText, ReadsThePayloadWhateverTheType) {
    CTextOutputString output;
    Of(LInt, 1'500).GetTimeAsText(output);
    output.WriteChar(' ');
    Of(UDInt, 19'753).GetDateAsText(output);
    output.WriteChar(' ');
    Of(LInt, 1'706'706'309'250).GetDateAndTimeAsText(' ', output);
    EXPECT_EQ(output.GetText(), "1s500ms 2024-01-31 2024-01-31 13:05:09.250");
}

}  // namespace
