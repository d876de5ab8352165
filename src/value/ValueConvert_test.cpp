// Which conversions exist, and what the conversions of several types share: failure, truncation, BCD, the readers.
#include "value/ValueConvert.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "value/CompositeValue.h"
#include "value/ValueTesting.h"

namespace {

using namespace value_testing;

class ValueConvert : public ValueTest {};

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

/// A value of every type that can tag one.
std::vector<CValue> OneOfEach() {
    std::vector<CValue> values;
    for (unsigned int code = 0; code <= 27; ++code)
        values.push_back(Of(static_cast<T>(code), 1));
    values[20] = Str("1");
    values[21] = WStr(u"1");
    values[22] = Ptr(LocationKind::Global, 0, 1);
    values[23] = Composite();
    values[24] = CompositeString();
    return values;
}

/// Text that is a literal of the target.
const char* LiteralFor(T target) {
    switch (target) {
        case T::Time: return "T#1s";
        case T::TimeOfDay: return "TOD#01:02:03";
        case T::Date: return "D#2020-01-02";
        case T::DateAndTime: return "DT#2020-01-02-03:04:05";
        default: return "1";
    }
}

constexpr T kTargets[] = {T::Bool,      T::SInt,  T::USInt,       T::Byte,   T::Int,     T::UInt, T::Word,  T::DInt,
                          T::UDInt,     T::DWord, T::LInt,        T::ULInt,  T::LWord,   T::Real, T::LReal, T::Time,
                          T::TimeOfDay, T::Date,  T::DateAndTime, T::String, T::WString, T::Char, T::WChar};

// One row for each source, one column for each target in the order of kTargets.
constexpr std::string_view kAccepted[28] = {
    "-------------------YY--",  // undefined
    "YYYYYYYYYYYYYYYYYYYYYYY",  // BOOL
    "YYYYYYYYYYYYYYYYYYYYYYY",  // SINT
    "YYYYYYYYYYYYYYYYYYYYYYY",  // USINT
    "YYYYYYYYYYYYYYYYYYYYYYY",  // BYTE
    "YYYYYYYYYYYYYYYYYYYYYYY",  // INT
    "YYYYYYYYYYYYYYYYYYYYYYY",  // UINT
    "YYYYYYYYYYYYYYYYYYYYYYY",  // WORD
    "YYYYYYYYYYYYYYYYYYYYYYY",  // DINT
    "YYYYYYYYYYYYYYYYYYYYYYY",  // UDINT
    "YYYYYYYYYYYYYYYYYYYYYYY",  // DWORD
    "YYYYYYYYYYYYYYYYYYYYYYY",  // LINT
    "YYYYYYYYYYYYYYYYYYYYYYY",  // ULINT
    "YYYYYYYYYYYYYYYYYYYYYYY",  // LWORD
    "YYYYYYYYYYYYYYYYYYYYYYY",  // REAL
    "YYYYYYYYYYYYYYYYYYYYYYY",  // LREAL
    "YYYYYYYYYYYYYYYYYYYYYYY",  // TIME
    "YYYYYYYYYYYYYYYYYYYYYYY",  // TIME_OF_DAY
    "YYYYYYYYYYYYYYYYYYYYYYY",  // DATE
    "YYYYYYYYYYYYYYYYYYYYYYY",  // DATE_AND_TIME
    "YYYYYYYYYYYYYYYYYYYYYYY",  // STRING
    "YYYYYYYYYYYYYYYYYYYYYYY",  // WSTRING
    "-------------------YY--",  // POINTER
    "-------------------YY--",  // COMPOSITE
    "-------------------YY--",  // COMPOSITE_STRING
    "YYYYYYYYYYYYY------YYYY",  // CHAR
    "YYYYYYYYYYYYY------YYYY",  // WCHAR
    "-------------------YY--",  // TYPE
};

TEST_F(ValueConvert, MatrixOfAcceptedConversions) {
    const std::vector<CValue> sources = OneOfEach();
    for (std::size_t row = 0; row < sources.size(); ++row) {
        ASSERT_EQ(kAccepted[row].size(), std::size(kTargets));
        for (std::size_t column = 0; column < std::size(kTargets); ++column) {
            const T target = kTargets[column];
            CValue value(sources[row]);
            if (value.IsTypeOf(T::AnyString)) value = CValue(LiteralFor(target), value.GetType());
            const std::string from = value.GetTypeName(false);
            const std::string to = CValueType(target).GetTypeName(false);
            SCOPED_TRACE(from + " to " + to);
            const bool isAccepted = kAccepted[row][column] == 'Y';
            EXPECT_EQ(value.ChangeType(log_, here_, target), isAccepted);
            if (isAccepted) {
                EXPECT_EQ(value.GetType(), target);
                ExpectNoMessage();
            } else {
                EXPECT_EQ(value.GetType(), sources[row].GetType());
                EXPECT_EQ(value.IsZero(), sources[row].IsZero());
                ExpectMessage(Message::ConversionNotSupported,
                              "Conversion from type '" + from + "' to '" + to + "' is not supported.");
            }
        }
    }
}

TEST_F(ValueConvert, TargetsWithoutConversionTakeTheirOwnTypeOnly) {
    struct Target {
        unsigned int code;
        const char* name;
    };
    constexpr Target kOthers[] = {{0, "Undefined"}, {22, "POINTER"}, {23, "COMPOSITE"}, {24, "COMPOSITE_STRING"},
                                  {27, "TYPE"},     {28, "Unknown"}, {40, "Unknown"},   {41, "ANY_ELEMENTARY"},
                                  {43, "ANY_NUM"},  {54, "ANY"},     {55, "Unknown"}};
    for (const Target& target : kOthers) {
        for (CValue value : OneOfEach()) {
            SCOPED_TRACE(std::string(value.GetTypeName(false)) + " to " + target.name);
            const T before = value.GetType();
            const bool isItself = before == static_cast<T>(target.code);
            EXPECT_EQ(value.ChangeType(log_, here_, static_cast<T>(target.code)), isItself);
            EXPECT_EQ(value.GetType(), before);
            if (isItself) {
                ExpectNoMessage();
            } else {
                ExpectMessage(Message::ConversionTargetNotSupported,
                              std::string("Conversion to data type '") + target.name + "' not supported.");
            }
        }
    }
}

TEST_F(ValueConvert, EveryTypeToItselfChangesNothing) {
    for (CValue value : OneOfEach()) {
        SCOPED_TRACE(value.GetTypeName(false));
        const auto payload = value.GetPayload<unsigned long long>();
        EXPECT_TRUE(value.ChangeType(log_, here_, value.GetType()));
        EXPECT_EQ(value.GetPayload<unsigned long long>(), payload);
    }
    CValue odd = Of(static_cast<T>(99), 5);
    EXPECT_TRUE(odd.ChangeType(log_, here_, static_cast<T>(99)));
    ExpectNoMessage();
}

// A member named after a type of its width is only given that width's types; any other target is ChangeType()'s.
TEST_F(ValueConvert, MembersWithATargetTakeBothTypesOfTheirWidth) {
    CValue value(-1);
    EXPECT_TRUE(value.ChangeTypeToUSINT(log_, here_, T::Byte));
    EXPECT_THAT(value, IsValue(Of(T::Byte, 255)));
    EXPECT_TRUE(value.ChangeTypeToUSINT(log_, here_, T::USInt));
    EXPECT_THAT(value, IsValue(Of(T::USInt, 255)));
    EXPECT_TRUE(value.ChangeTypeToUINT(log_, here_, T::Word));
    EXPECT_THAT(value, IsValue(Of(T::Word, 255)));
    EXPECT_TRUE(value.ChangeTypeToUINT(log_, here_, T::UInt));
    EXPECT_TRUE(value.ChangeTypeToUDINT(log_, here_, T::DWord));
    EXPECT_THAT(value, IsValue(Of(T::DWord, 255)));
    EXPECT_TRUE(value.ChangeTypeToUDINT(log_, here_));
    EXPECT_THAT(value, IsValue(Of(T::UDInt, 255)));
    EXPECT_TRUE(value.ChangeTypeToULINT(log_, here_, T::LWord));
    EXPECT_THAT(value, IsValue(Of(T::LWord, 255)));
    EXPECT_TRUE(value.ChangeTypeToULINT(log_, here_, T::ULInt));
    EXPECT_THAT(value, IsValue(Of(T::ULInt, 255)));
    ExpectNoMessage();
    EXPECT_FALSE(value.ChangeTypeToUSINT(log_, here_, T::Composite));
    ExpectMessage(Message::ConversionTargetNotSupported, "Conversion to data type 'COMPOSITE' not supported.");
}

// --- text ---

struct TextRow {
    const char* text;
    CValue expected;  // of the target's type
};

TEST_F(ValueConvert, TextIsReadAsALiteralOfTheTarget) {
    const TextRow rows[] = {
        {"TRUE", CValue(true)},
        {"0", CValue(false)},
        {"BOOL#1", CValue(true)},
        {"-128", Of(T::SInt, -128)},
        {"255", Of(T::USInt, 255)},
        {"16#FF", Of(T::Byte, 255)},
        {"-32768", Of(T::Int, -32768)},
        {"65535", Of(T::UInt, 65535)},
        {"2#101", Of(T::Word, 5)},
        {"-2147483648", CValue(std::numeric_limits<int>::min())},
        {"4294967295", Of(T::UDInt, 4294967295)},
        {"8#17", Of(T::DWord, 15)},
        {"-9223372036854775808", Of(T::LInt, std::numeric_limits<long long>::min())},
        {"18446744073709551615", Of(T::ULInt, -1)},
        {"16#FFFFFFFFFFFFFFFF", Of(T::LWord, -1)},
        {"1.5", CValue(1.5F)},
        {"-2.5E3", CValue(-2500.0)},
        {"T#1m1s", Of(T::Time, 61000)},
        {"TOD#01:00:00", Of(T::TimeOfDay, 3600000)},
        {"D#1970-01-03", Of(T::Date, 2)},
        {"DT#1970-01-02-00:00:01", Of(T::DateAndTime, 86401000)},
        // A prefix of the parser's family is read first, then converted as a number.
        {"INT#5", CValue(5)},
        {"DINT#-1", Of(T::UDInt, 4294967295)},
        {"DINT#300", Of(T::SInt, 44)},
        {"LINT#-1", Of(T::Byte, 255)},
        {"WORD#16#FFFF", CValue(65535)},
        {"SINT#-1", Of(T::ULInt, -1)},
        {"REAL#0.1", CValue(static_cast<double>(0.1F))},
        {"LREAL#0.1", CValue(0.1F)},
    };
    for (const TextRow& row : rows) {
        SCOPED_TRACE(row.text);
        for (const T type : {T::String, T::WString}) {
            CValue value(row.text, type);
            EXPECT_TRUE(value.ChangeType(log_, here_, row.expected.GetType()));
            EXPECT_THAT(value, IsValue(row.expected));
        }
        ExpectNoMessage();
    }
}

TEST_F(ValueConvert, TextThatIsNoLiteralStaysAndIsReported) {
    struct Row {
        const char* text;
        T target;
        Message id;
        const char* message;
    };
    constexpr Row kRows[] = {
        {"maybe", T::Bool, Message::InvalidBool, "'maybe' is not a valid boolean value."},
        {"", T::Bool, Message::InvalidBool, "'' is not a valid boolean value."},
        {"DINT#1", T::Bool, Message::InvalidBool, "'DINT#1' is not a valid boolean value."},
        {"abc", T::DInt, Message::InvalidInteger, "'abc' is not a valid integer."},
        {"", T::SInt, Message::InvalidInteger, "'' is not a valid integer."},
        {"REAL#1.5", T::DInt, Message::InvalidInteger, "'REAL#1.5' is not a valid integer."},
        {"128", T::SInt, Message::OutOfRange, "Value '128' is outside the range of type 'SINT'."},
        {"-1", T::USInt, Message::OutOfRange, "Value '-1' is outside the range of type 'USINT'."},
        {"256", T::Byte, Message::OutOfRange, "Value '256' is outside the range of type 'BYTE'."},
        {"SINT#300", T::DInt, Message::OutOfRange, "Value '300' is outside the range of type 'SINT'."},
        {"3#12", T::DInt, Message::InvalidRadix,
         "Integer radix '3' is not supported. Acceptable values are: 2, 8, 10 and 16."},
        {"1.5x", T::Real, Message::CouldNotConvert, "Could not convert '1.5x' to 'REAL'."},
        {"1.5x", T::LReal, Message::CouldNotConvert, "Could not convert '1.5x' to 'LREAL'."},
        {"DINT#5", T::LReal, Message::CouldNotConvert, "Could not convert 'DINT#5' to 'LREAL'."},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.text);
        for (const T type : {T::String, T::WString}) {
            CValue value(row.text, type);
            EXPECT_FALSE(value.ChangeType(log_, here_, row.target));
            ExpectMessage(row.id, row.message);
            EXPECT_THAT(value, IsValue(CValue(row.text, type)));
        }
    }
}

TEST_F(ValueConvert, AtMost63BytesOfTextTakePart) {
    const std::string zeros(62, '0');
    std::uint64_t nineAnd62Zeros = 9;
    for (int i = 0; i < 62; ++i)
        nineAnd62Zeros *= 10;  // wraps, as the digits of a literal do
    struct Row {
        std::string text;
        long long expected;
    };
    const Row rows[] = {
        {zeros + "5", 5},
        {zeros + "57", 5},
        {zeros + "57777777", 5},
        {"9" + std::string(69, '0'), static_cast<long long>(nineAnd62Zeros)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        for (const T type : {T::String, T::WString}) {
            CValue value(row.text.c_str(), type);
            EXPECT_TRUE(value.ChangeType(log_, here_, T::LInt));
            EXPECT_THAT(value, IsValue(Of(T::LInt, row.expected)));
        }
    }
    ExpectNoMessage();
}

TEST_F(ValueConvert, TextIsCutBeforeACharacterAndEndsAtNul) {
    // 62 bytes of number, then a character of two bytes: only the number takes part.
    CValue value(("1." + std::string(60, '0') + "\u00E9").c_str(), T::String);
    EXPECT_TRUE(value.ChangeType(log_, here_, T::LReal));
    EXPECT_THAT(value, IsValue(CValue(1.0)));
    value =
        Str(std::string_view("12\0"
                             "34",
                             5));
    EXPECT_TRUE(value.ChangeType(log_, here_, T::DInt));
    EXPECT_THAT(value, IsValue(CValue(12)));
    ExpectNoMessage();
}

TEST_F(ValueConvert, NullStringIsEmptyText) {
    for (const T type : {T::String, T::WString}) {
        CValue value = Of(type, 0);
        EXPECT_FALSE(value.ChangeType(log_, here_, T::DInt));
        ExpectMessage(Message::InvalidInteger, "'' is not a valid integer.");
        EXPECT_EQ(value.GetType(), type);
    }
}

// --- Truncate ---

TEST_F(ValueConvert, TruncateGoesTowardZero) {
    struct Row {
        CValue value;
        CValue expected;
    };
    const Row rows[] = {
        {CValue(3.9F), CValue(3)},        {CValue(-3.9F), CValue(-3)},
        {CValue(3.9), Of(T::SInt, 3)},    {CValue(-3.9), Of(T::LInt, -3)},
        {CValue(-0.9), Of(T::UDInt, 0)},  {CValue(3.5), Of(T::ULInt, 3)},
        {CValue(3.9F), CValue(3.0F)},     {CValue(-3.9), CValue(-3.0)},
        {CValue(2.9), CValue(2.0F)},      {CValue(3.0e10), CValue(std::numeric_limits<int>::max())},
        {CValue(300.7), Of(T::SInt, 44)}, {CValue(1.9F), Of(T::Time, 1)},
        {CValue(7), Of(T::SInt, 7)},      {Str("7"), CValue(7)},
        {CValue(true), CValue(1)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.value));
        CValue value(row.value);
        EXPECT_TRUE(value.Truncate(log_, here_, row.expected.GetType()));
        EXPECT_THAT(value, IsValue(row.expected));
    }
    ExpectNoMessage();
}

TEST_F(ValueConvert, FailedTruncateKeepsTheFraction) {
    for (const CValue& number : {CValue(3.9F), CValue(-3.9)}) {
        CValue value(number);
        EXPECT_FALSE(value.Truncate(log_, here_, T::Pointer));
        ExpectMessage(Message::ConversionTargetNotSupported, "Conversion to data type 'POINTER' not supported.");
        EXPECT_THAT(value, IsValue(number));
    }
    CValue text = Str("3.9x");
    EXPECT_FALSE(text.Truncate(log_, here_, T::LReal));
    ExpectMessage(Message::CouldNotConvert, "Could not convert '3.9x' to 'LREAL'.");
    EXPECT_THAT(text, IsValue(Str("3.9x")));
}

// --- binary-coded decimal ---

struct BCDRow {
    CValue value;
    T source;
    int digits;
    CValue expected;
};

TEST_F(ValueConvert, BCDToIntCountsNibbles) {
    const BCDRow rows[] = {
        {Of(T::Word, 0x1234), T::Word, 4, Of(T::Int, 1234)},
        {Of(T::Byte, 0x42), T::Byte, 2, Of(T::SInt, 42)},
        {Of(T::Word, 0x00FF), T::Word, 2, Of(T::Int, 165)},
        {Of(T::Word, 0x1234), T::Word, 2, Of(T::Int, 34)},
        {Of(T::Byte, 0x99), T::Byte, 2, Of(T::SInt, 99)},
        {Of(T::Byte, 0xFF), T::Byte, 2, Of(T::SInt, 165)},  // cut to 8 bits: -91
        {Of(T::DWord, 0x99999999), T::DWord, 8, CValue(99999999)},
        {Of(T::LWord, 0x1234567890123456), T::LWord, 16, Of(T::LInt, 1234567890123456)},
        {Of(T::LWord, 0x1234567890123456), T::LWord, 17, Of(T::LInt, 1234567890123456)},
        {Of(T::Word, 0x1234), T::Word, 0, Of(T::Int, 0)},
        {Of(T::Word, 0x1234), T::Word, -1, Of(T::Int, 0)},
        {CValue(0x123456), T::Word, 4, Of(T::Int, 3456)},
        {Str("16#25"), T::Byte, 2, Of(T::SInt, 25)},
        {Of(T::Byte, 0x12), T::Byte, 4, Of(T::Int, 12)},
    };
    for (const BCDRow& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.value));
        CValue value(row.value);
        EXPECT_TRUE(value.BCDToInt(log_, here_, row.source, row.digits, row.expected.GetType()));
        EXPECT_THAT(value, IsValue(row.expected));
    }
    ExpectNoMessage();
}

TEST_F(ValueConvert, IntToBCDMakesNibbles) {
    const BCDRow rows[] = {
        {Of(T::Int, 1234), T::Int, 4, Of(T::Word, 0x1234)},
        {Of(T::SInt, 42), T::SInt, 2, Of(T::Byte, 0x42)},
        {Of(T::SInt, 0), T::SInt, 2, Of(T::Byte, 0)},
        {Of(T::SInt, 127), T::SInt, 2, Of(T::Byte, 0xC7)},    // 12 tens
        {Of(T::Int, 17000), T::Int, 4, Of(T::Word, 0x1000)},  // 17 thousands: the low four bits of 17
        {CValue(99999999), T::DInt, 8, Of(T::DWord, 0x99999999)},
        {Of(T::LInt, 1234567890123456), T::LInt, 16, Of(T::LWord, 0x1234567890123456)},
        {Of(T::LInt, 1234567890123456), T::LInt, 20, Of(T::LWord, 0x1234567890123456)},
        {Of(T::SInt, -1), T::SInt, 2, Of(T::Byte, 0x0F)},
        // -42: -42 / 10 = -4, 12 in four bits; the rest -42 - 120 = -162, 14 in four bits.
        {Of(T::SInt, -42), T::SInt, 2, Of(T::Byte, 0xCE)},
        {Of(T::Int, 1234), T::Int, 0, Of(T::Word, 0)},
        {Of(T::Int, 1234), T::Int, -3, Of(T::Word, 0)},
        {CValue(12.4), T::Int, 4, Of(T::Word, 0x12)},
    };
    for (const BCDRow& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.value));
        CValue value(row.value);
        EXPECT_TRUE(value.IntToBCD(log_, here_, row.source, row.digits, row.expected.GetType()));
        EXPECT_THAT(value, IsValue(row.expected));
    }
    ExpectNoMessage();
}

TEST_F(ValueConvert, LowestNumberToBCDIsDefined) {
    CValue value = Of(T::LInt, std::numeric_limits<long long>::min());
    EXPECT_TRUE(value.IntToBCD(log_, here_, T::LInt, 16, T::LWord));
    EXPECT_EQ(value.GetType(), T::LWord);
}

TEST_F(ValueConvert, BCDRoundTrip) {
    for (int number = 0; number < 10000; number += 7) {
        CValue value = Of(T::Int, number);
        ASSERT_TRUE(value.IntToBCD(log_, here_, T::Int, 4, T::Word));
        ASSERT_TRUE(value.BCDToInt(log_, here_, T::Word, 4, T::Int));
        ASSERT_THAT(value, IsValue(Of(T::Int, number)));
    }
}

TEST_F(ValueConvert, BCDOfOtherTypesFailsAndChangesNothing) {
    CValue value = Composite();
    EXPECT_FALSE(value.BCDToInt(log_, here_, T::Word, 4, T::Int));
    ExpectMessage(Message::ConversionNotSupported, "Conversion from type 'COMPOSITE' to 'WORD' is not supported.");
    EXPECT_FALSE(value.IntToBCD(log_, here_, T::Int, 4, T::Word));
    ExpectMessage(Message::ConversionNotSupported, "Conversion from type 'COMPOSITE' to 'INT' is not supported.");
    EXPECT_EQ(value.GetType(), T::Composite);
    CValue number(0x12);
    EXPECT_FALSE(number.BCDToInt(log_, here_, T::String, 4, T::Int));
    ExpectMessage(Message::ConversionTargetNotSupported, "Conversion to data type 'STRING' not supported.");
    EXPECT_FALSE(number.IntToBCD(log_, here_, T::Int, 4, T::WString));
    ExpectMessage(Message::ConversionTargetNotSupported, "Conversion to data type 'WSTRING' not supported.");
    EXPECT_THAT(number, IsValue(CValue(0x12)));
}

// --- readers ---

TEST_F(ValueConvert, ReadersConvertTheValueAndGiveItsNumber) {
    bool flag = false;
    CValue value = Str("TRUE");
    EXPECT_TRUE(value.GetBoolValue(log_, here_, flag));
    EXPECT_TRUE(flag);
    EXPECT_THAT(value, IsValue(CValue(true)));

    long long wide = 0;
    value = Of(T::DateAndTime, -7);
    EXPECT_TRUE(value.GetTimeValue(log_, here_, wide));
    EXPECT_EQ(wide, -7);
    EXPECT_THAT(value, IsValue(Of(T::Time, -7)));

    value = Of(T::SInt, -7);
    EXPECT_TRUE(value.GetIntegerValue(log_, here_, wide));
    EXPECT_EQ(wide, -7);
    EXPECT_THAT(value, IsValue(Of(T::LInt, -7)));

    int number = 0;
    value = CValue(2.5);
    EXPECT_TRUE(value.GetIntegerValue(log_, here_, number));
    EXPECT_EQ(number, 2);
    EXPECT_THAT(value, IsValue(CValue(2)));

    short narrow = 0;
    value = CValue(70000);
    EXPECT_TRUE(value.GetIntegerValue(log_, here_, narrow));
    EXPECT_EQ(narrow, 4464);
    EXPECT_THAT(value, IsValue(Of(T::Int, 4464)));

    value = WStr(u"12");
    EXPECT_TRUE(value.GetLengthValue(log_, here_, number));
    EXPECT_EQ(number, 12);
    EXPECT_THAT(value, IsValue(CValue(12)));
    ExpectNoMessage();
}

TEST_F(ValueConvert, FailedReadersLeaveTheOutput) {
    bool flag = true;
    long long wide = 77;
    int number = 77;
    short narrow = 77;
    CValue value = Ptr(LocationKind::Global, 0, 1);
    EXPECT_FALSE(value.GetBoolValue(log_, here_, flag));
    EXPECT_FALSE(value.GetTimeValue(log_, here_, wide));
    EXPECT_FALSE(value.GetIntegerValue(log_, here_, wide));
    EXPECT_FALSE(value.GetIntegerValue(log_, here_, number));
    EXPECT_FALSE(value.GetIntegerValue(log_, here_, narrow));
    EXPECT_FALSE(value.GetLengthValue(log_, here_, number));
    EXPECT_THAT(Ids(log_), ::testing::ElementsAre(214, 214, 214, 214, 214, 214));
    EXPECT_TRUE(flag);
    EXPECT_EQ(wide, 77);
    EXPECT_EQ(number, 77);
    EXPECT_EQ(narrow, 77);
    EXPECT_THAT(value, IsValue(Ptr(LocationKind::Global, 0, 1)));
}

}  // namespace
