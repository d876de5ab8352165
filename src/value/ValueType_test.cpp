#include "value/ValueType.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using T = ElementaryType;

struct Pin {
    unsigned int code;
    std::string_view name;
    std::string_view shortName;
    unsigned int size;
    int precedence;
};

// The numbers are in images and persisted values: they never change.
constexpr Pin kPins[] = {
    {0, "Undefined", "Undefined", 0, 0},
    {1, "BOOL", "BOOL", 1, 1},
    {2, "SINT", "SINT", 1, 2},
    {3, "USINT", "USINT", 1, 3},
    {4, "BYTE", "BYTE", 1, 4},
    {5, "INT", "INT", 2, 6},
    {6, "UINT", "UINT", 2, 7},
    {7, "WORD", "WORD", 2, 8},
    {8, "DINT", "DINT", 4, 10},
    {9, "UDINT", "UDINT", 4, 11},
    {10, "DWORD", "DWORD", 4, 12},
    {11, "LINT", "LINT", 8, 13},
    {12, "ULINT", "ULINT", 8, 14},
    {13, "LWORD", "LWORD", 8, 15},
    {14, "REAL", "REAL", 4, 16},
    {15, "LREAL", "LREAL", 8, 17},
    {16, "TIME", "T", 8, 18},
    {17, "TIME_OF_DAY", "TOD", 4, 19},
    {18, "DATE", "D", 4, 20},
    {19, "DATE_AND_TIME", "DT", 8, 21},
    {20, "STRING", "STRING", 0, 22},
    {21, "WSTRING", "WSTRING", 0, 23},
    {22, "POINTER", "POINTER", 8, 24},
    {23, "COMPOSITE", "COMPOSITE", 0, 25},
    {24, "COMPOSITE_STRING", "COMPOSITE_STRING", 0, 26},
    {25, "CHAR", "CHAR", 1, 5},
    {26, "WCHAR", "WCHAR", 2, 9},
    {27, "TYPE", "TYPE", 3, -1},
};

constexpr std::string_view kFamilyNames[] = {"ANY_ELEMENTARY", "ANY_MAGNITUDE", "ANY_NUM",  "ANY_REAL",     "ANY_INT",
                                             "ANY_SIGNED",     "ANY_UNSIGNED",  "ANY_BIT",  "ANY_INTEGRAL", "ANY_CHARS",
                                             "ANY_STRING",     "ANY_CHAR",      "ANY_DATE", "ANY"};

T TypeOf(unsigned int code) {
    return static_cast<T>(code);
}

TEST(TypeTable, EveryNumberIsPinned) {
    ASSERT_EQ(std::size(kPins), kTypeTable.size());
    for (unsigned int code = 0; code < std::size(kPins); ++code) {
        SCOPED_TRACE(code);
        const Pin& pin = kPins[code];
        ASSERT_EQ(pin.code, code);
        const CValueType type(TypeOf(code));
        EXPECT_EQ(type.GetTypeName(false), pin.name);
        EXPECT_EQ(type.GetTypeName(true), pin.shortName);
        EXPECT_EQ(type.GetSize(), pin.size);
        EXPECT_EQ(GetTypeInfo(type.GetType()).precedence, pin.precedence);
    }
}

TEST(TypeTable, FamiliesAreNumberedFrom41To54) {
    for (unsigned int i = 0; i < std::size(kFamilyNames); ++i) {
        EXPECT_EQ(CValueType(TypeOf(41 + i)).GetTypeName(false), kFamilyNames[i]);
        EXPECT_EQ(CValueType(TypeOf(41 + i)).GetTypeName(true), kFamilyNames[i]);
        EXPECT_EQ(CValueType(TypeOf(41 + i)).GetSize(), 0U);
    }
}

TEST(TypeTable, CodesWithoutTypeAreUnknown) {
    for (const unsigned int code : {28U, 40U, 55U, 63U, 64U, 255U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(code);
        EXPECT_STREQ(CValueType(TypeOf(code)).GetTypeName(false), "Unknown");
        EXPECT_STREQ(CValueType(TypeOf(code)).GetTypeName(true), "Unknown");
        EXPECT_EQ(CValueType(TypeOf(code)).GetSize(), 0U);
    }
}

TEST(ValueType, DefaultIsUndefined) {
    EXPECT_TRUE(CValueType().IsUndefined());
    EXPECT_FALSE(CValueType().IsDefined());
    EXPECT_TRUE(CValueType(T::Type).IsDefined());
    EXPECT_FALSE(CValueType(T::Bool).IsUndefined());
}

TEST(TypeInformation, RowsAreInTheOrderOfTheSearch) {
    constexpr std::string_view kNames[] = {
        "BOOL", "SINT",          "USINT", "BYTE",   "INT",     "UINT",    "WORD",  "DINT",        "UDINT", "DWORD",
        "LINT", "ULINT",         "LWORD", "TIME",   "T",       "REAL",    "LREAL", "TIME_OF_DAY", "TOD",   "DATE",
        "D",    "DATE_AND_TIME", "DT",    "STRING", "WSTRING", "POINTER", "CHAR",  "WCHAR"};
    constexpr T kTypes[] = {T::Bool,        T::SInt,        T::USInt,  T::Byte,      T::Int,       T::UInt,  T::Word,
                            T::DInt,        T::UDInt,       T::DWord,  T::LInt,      T::ULInt,     T::LWord, T::Time,
                            T::Time,        T::Real,        T::LReal,  T::TimeOfDay, T::TimeOfDay, T::Date,  T::Date,
                            T::DateAndTime, T::DateAndTime, T::String, T::WString,   T::Pointer,   T::Char,  T::WChar};
    ASSERT_EQ(CValueType::m_TypeInformationCount, 28U);
    for (unsigned int i = 0; i < 28; ++i) {
        SCOPED_TRACE(i);
        const CValueType::TypeInformation& row = CValueType::m_TypeInformation[i];
        EXPECT_EQ(row.name, kNames[i]);
        EXPECT_EQ(row.type, kTypes[i]);
        const bool isShort = kNames[i] == "T" || kNames[i] == "TOD" || kNames[i] == "D" || kNames[i] == "DT";
        EXPECT_EQ(row.abbreviation, isShort);
    }
}

TEST(FindType, NamesAreFoundWithoutRegardToCase) {
    struct Row {
        const char* name;
        T type;
    };
    constexpr Row kRows[] = {
        {"t", T::Time},
        {"tod", T::TimeOfDay},
        {"T", T::Time},
        {"D", T::Date},
        {"dt", T::DateAndTime},
        {"Date_And_Time", T::DateAndTime},
        {"dint", T::DInt},
        {"wChar", T::WChar},
        {"POINTER", T::Pointer},
        {"TYPE", T::Type},
        {"type", T::Type},
        {"COMPOSITE", T::Undefined},
        {"COMPOSITE_STRING", T::Undefined},
        {"Undefined", T::Undefined},
        {"ANY_INT", T::Undefined},
        {"", T::Undefined},
        {"DIN", T::Undefined},
        {"DINTS", T::Undefined},
        {"DINT#", T::Undefined},
        {" DINT", T::Undefined},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(CValueType::FindType(row.name), row.type);
    }
    EXPECT_EQ(CValueType::FindType(std::string("DINT\0", 5)), T::Undefined);
}

struct PrefixRow {
    const char* text;
    T type;
    const char* rest;
};

TEST(ParseTypePrefix, TakesNameAndHashOrNothing) {
    constexpr PrefixRow kRows[] = {
        {"T#5s", T::Time, "5s"},
        {"TIME#5s", T::Time, "5s"},
        {"dint#-3", T::DInt, "-3"},
        {"UDINT#5", T::UDInt, "5"},
        {"DATE_AND_TIME#2020-01-01-00:00:00", T::DateAndTime, "2020-01-01-00:00:00"},
        {"DATE#2020-01-01", T::Date, "2020-01-01"},
        {"dT#x", T::DateAndTime, "x"},
        {"INT#", T::Int, ""},
        {"INT##", T::Int, "#"},
        {"WSTRING#\"a\"", T::WString, "\"a\""},
        {"INT", T::Undefined, "INT"},
        {"", T::Undefined, ""},
        {"#5", T::Undefined, "#5"},
        {"TYPE#INT", T::Undefined, "TYPE#INT"},
        {"COMPOSITE#1", T::Undefined, "COMPOSITE#1"},
        {"LTIME#1s", T::Undefined, "LTIME#1s"},
        {" INT#5", T::Undefined, " INT#5"},
        {"INT #5", T::Undefined, "INT #5"},
        {"16#FF", T::Undefined, "16#FF"},
    };
    for (const PrefixRow& row : kRows) {
        SCOPED_TRACE(row.text);
        CValueType type;
        const char* text = row.text;
        type.ParseTypePrefix(text);
        EXPECT_EQ(type.GetType(), row.type);
        EXPECT_STREQ(text, row.rest);
    }
}

TEST(ParseTypePrefix, WithoutPrefixTheTypeStays) {
    CValueType type(T::Word);
    const char* text = "5";
    type.ParseTypePrefix(text);
    EXPECT_EQ(type.GetType(), T::Word);
    const char* none = nullptr;
    type.ParseTypePrefix(none);
    type.ParseStringTypePrefix(none);
    EXPECT_EQ(type.GetType(), T::Word);
}

TEST(ParseStringTypePrefix, TakesStringsAndCharactersOnly) {
    constexpr PrefixRow kRows[] = {
        {"WSTRING#\"a\"", T::WString, "\"a\""}, {"string#'a'", T::String, "'a'"}, {"CHAR#'a'", T::Char, "'a'"},
        {"wchar#\"a\"", T::WChar, "\"a\""},     {"INT#5", T::Undefined, "INT#5"}, {"STRING", T::Undefined, "STRING"},
        {"STRIN#", T::Undefined, "STRIN#"},     {"'a'", T::Undefined, "'a'"},
    };
    for (const PrefixRow& row : kRows) {
        SCOPED_TRACE(row.text);
        CValueType type;
        const char* text = row.text;
        type.ParseStringTypePrefix(text);
        EXPECT_EQ(type.GetType(), row.type);
        EXPECT_STREQ(text, row.rest);
    }
}

TEST(IsTypeOf, FamiliesHaveTheirMembersAndNoOthers) {
    struct Row {
        T family;
        std::vector<T> members;
    };
    const Row rows[] = {
        {T::AnyMagnitude,
         {T::SInt, T::Int, T::DInt, T::LInt, T::USInt, T::UInt, T::UDInt, T::ULInt, T::Real, T::LReal, T::Time}},
        {T::AnyNum, {T::SInt, T::Int, T::DInt, T::LInt, T::USInt, T::UInt, T::UDInt, T::ULInt, T::Real, T::LReal}},
        {T::AnyReal, {T::Real, T::LReal}},
        {T::AnyInt, {T::SInt, T::Int, T::DInt, T::LInt, T::USInt, T::UInt, T::UDInt, T::ULInt}},
        {T::AnySigned, {T::SInt, T::Int, T::DInt, T::LInt}},
        {T::AnyUnsigned, {T::USInt, T::UInt, T::UDInt, T::ULInt}},
        {T::AnyBit, {T::Bool, T::Byte, T::Word, T::DWord, T::LWord}},
        {T::AnyIntegral,
         {T::SInt, T::Int, T::DInt, T::LInt, T::USInt, T::UInt, T::UDInt, T::ULInt, T::Bool, T::Byte, T::Word, T::DWord,
          T::LWord}},
        {T::AnyChars, {T::String, T::WString, T::Char, T::WChar}},
        {T::AnyString, {T::String, T::WString}},
        {T::AnyChar, {T::Char, T::WChar}},
        {T::AnyDate, {T::Date, T::DateAndTime, T::TimeOfDay}},
    };
    for (const Row& row : rows) {
        for (unsigned int code = 0; code <= 27; ++code) {
            const T type = TypeOf(code);
            SCOPED_TRACE(std::string(CValueType(type).GetTypeName(false)) + " in " +
                         CValueType(row.family).GetTypeName(false));
            const bool isMember = std::find(row.members.begin(), row.members.end(), type) != row.members.end();
            EXPECT_EQ(CValueType(type).IsTypeOf(row.family), isMember);
        }
    }
}

TEST(IsTypeOf, ElementaryHoldsTheUndefinedTypeAndNoPointer) {
    for (unsigned int code = 0; code <= 27; ++code) {
        SCOPED_TRACE(code);
        EXPECT_EQ(CValueType(TypeOf(code)).IsTypeOf(T::AnyElementary), code <= 21 || code == 25 || code == 26);
        EXPECT_TRUE(CValueType(TypeOf(code)).IsTypeOf(T::Any));
    }
}

TEST(IsTypeOf, OtherArgumentsMeanThemselvesOnly) {
    EXPECT_TRUE(CValueType(T::DInt).IsTypeOf(T::DInt));
    EXPECT_FALSE(CValueType(T::DInt).IsTypeOf(T::Int));
    EXPECT_FALSE(CValueType(T::DInt).IsTypeOf(TypeOf(28)));
    EXPECT_TRUE(CValueType(TypeOf(40)).IsTypeOf(TypeOf(40)));
    EXPECT_FALSE(CValueType(T::DInt).IsTypeOf(TypeOf(55)));
    EXPECT_FALSE(CValueType(TypeOf(100)).IsTypeOf(T::AnyElementary));
    EXPECT_TRUE(CValueType(TypeOf(100)).IsTypeOf(T::Any));
    EXPECT_TRUE(CValueType(T::AnyInt).IsTypeOf(T::AnyMagnitude));
    EXPECT_FALSE(CValueType(T::AnyNum).IsTypeOf(T::AnyInt));
}

TEST(ValueType, ByteAndWordIntegersAndPrefixedTypes) {
    for (unsigned int code = 0; code <= 27; ++code) {
        SCOPED_TRACE(code);
        const CValueType type(TypeOf(code));
        EXPECT_EQ(type.IsByteInteger(), code >= 2 && code <= 4);
        EXPECT_EQ(type.IsWordInteger(), code >= 5 && code <= 7);
        EXPECT_EQ(type.RequiresTypePrefix(), (code >= 16 && code <= 19) || code == 25 || code == 26);
    }
}

TEST(ValueInRange, LimitsInPairs) {
    struct Row {
        T type;
        bool negative;
        unsigned long long last;  // the largest magnitude that is in range
    };
    constexpr Row kRows[] = {
        {T::SInt, false, 127},       {T::SInt, true, 128},           {T::USInt, false, 255},
        {T::Byte, false, 255},       {T::Int, false, 32767},         {T::Int, true, 32768},
        {T::UInt, false, 65535},     {T::Word, false, 65535},        {T::DInt, false, 2147483647},
        {T::DInt, true, 2147483648}, {T::UDInt, false, 4294967295U}, {T::DWord, false, 4294967295U},
    };
    for (const Row& row : kRows) {
        const CValueType type(row.type);
        SCOPED_TRACE(std::string(type.GetTypeName(false)) + (row.negative ? " negative" : ""));
        EXPECT_TRUE(type.ValueInRange(row.negative, 0));
        EXPECT_TRUE(type.ValueInRange(row.negative, row.last));
        EXPECT_FALSE(type.ValueInRange(row.negative, row.last + 1));
        EXPECT_FALSE(type.ValueInRange(row.negative, ~0ULL));
        const auto value = static_cast<long long>(row.last);
        EXPECT_TRUE(type.ValueInRange(row.negative ? -value : value));
        EXPECT_FALSE(type.ValueInRange(row.negative ? -value - 1 : value + 1));
    }
}

TEST(ValueInRange, UnsignedTypesTakeNoNegativeNumber) {
    for (const T type : {T::USInt, T::Byte, T::UInt, T::Word, T::UDInt, T::DWord}) {
        SCOPED_TRACE(CValueType(type).GetTypeName(false));
        EXPECT_FALSE(CValueType(type).ValueInRange(-1));
        EXPECT_FALSE(CValueType(type).ValueInRange(true, 0));
    }
}

TEST(ValueInRange, EveryOtherTypeTakesEveryNumber) {
    for (const T type : {T::Undefined, T::Bool, T::LInt, T::ULInt, T::LWord, T::Real, T::LReal, T::Time, T::TimeOfDay,
                         T::Date, T::DateAndTime, T::String, T::WString, T::Pointer, T::Char, T::WChar, T::Type}) {
        SCOPED_TRACE(CValueType(type).GetTypeName(false));
        EXPECT_TRUE(CValueType(type).ValueInRange(-1));
        EXPECT_TRUE(CValueType(type).ValueInRange(0x7FFFFFFFFFFFFFFFLL));
        EXPECT_TRUE(CValueType(type).ValueInRange(-0x7FFFFFFFFFFFFFFFLL - 1));
        EXPECT_TRUE(CValueType(type).ValueInRange(true, ~0ULL));
    }
    EXPECT_FALSE(CValueType(T::DInt).ValueInRange(-0x7FFFFFFFFFFFFFFFLL - 1));
}

TEST(GetCanonicalVarType, EachTypeHasOne) {
    constexpr T kCanonical[] = {T::WString,     T::Bool,        T::SInt,    T::USInt,   T::USInt,   T::Int,
                                T::UInt,        T::UInt,        T::DInt,    T::UDInt,   T::UDInt,   T::LInt,
                                T::ULInt,       T::ULInt,       T::Real,    T::LReal,   T::WString, T::DateAndTime,
                                T::DateAndTime, T::DateAndTime, T::WString, T::WString, T::WString, T::WString,
                                T::WString,     T::WString,     T::WString, T::WString};
    ASSERT_EQ(std::size(kCanonical), kTypeTable.size());
    for (unsigned int code = 0; code < std::size(kCanonical); ++code) {
        SCOPED_TRACE(code);
        EXPECT_EQ(CValueType(TypeOf(code)).GetCanonicalVarType(), kCanonical[code]);
    }
}

// All pairs against the written order of promotion.
TEST(PromoteType, TheHigherRankWins) {
    constexpr T kOrder[] = {T::Undefined,   T::Bool,   T::SInt,    T::USInt,   T::Byte,      T::Char,           T::Int,
                            T::UInt,        T::Word,   T::WChar,   T::DInt,    T::UDInt,     T::DWord,          T::LInt,
                            T::ULInt,       T::LWord,  T::Real,    T::LReal,   T::Time,      T::TimeOfDay,      T::Date,
                            T::DateAndTime, T::String, T::WString, T::Pointer, T::Composite, T::CompositeString};
    ASSERT_EQ(std::size(kOrder), 27U);
    for (std::size_t left = 0; left < std::size(kOrder); ++left) {
        for (std::size_t right = 0; right < std::size(kOrder); ++right) {
            CValueType type(kOrder[left]);
            type.PromoteType(CValueType(kOrder[right]));
            EXPECT_EQ(type.GetType(), kOrder[std::max(left, right)]) << left << " with " << right;
        }
    }
}

TEST(PromoteType, WithoutRankTheTypeStays) {
    for (const T other : {T::Type, T::AnyInt, TypeOf(28), TypeOf(1000)}) {
        CValueType type(T::DInt);
        type.PromoteType(CValueType(other));
        EXPECT_EQ(type.GetType(), T::DInt);
        CValueType unranked(other);
        unranked.PromoteType(CValueType(T::DInt));
        EXPECT_EQ(unranked.GetType(), other);
    }
}

}  // namespace
