#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/BinaryStream.h"
#include "support/LiteralTest.h"
#include "value/CompositeValue.h"

using enum ElementaryType;
using literal_test::AsDeclaration;
using testing::ElementsAreArray;

namespace {

using Bytes = std::vector<unsigned char>;

// The form changed with version 14.
constexpr unsigned short kVersions[] = {0, 13, 14, 65535};

Bytes Save(unsigned short version, const CValueLiteral& value) {
    CBinaryOutputBuffer output;
    EXPECT_TRUE(value.SaveValue(version, output));
    return output.GetData();
}

struct Loaded {
    CValue value;
    bool failed;
    std::size_t left;
};

Loaded Load(unsigned short version, const Bytes& bytes) {
    CBinaryInputMemory input(bytes);
    Loaded loaded{CValue(std::string("before")), false, 0};
    EXPECT_TRUE(loaded.value.LoadValue(version, input));
    loaded.failed = input.HasFailed();
    loaded.left = input.GetBytesLeft();
    return loaded;
}

CValue BytesComposite(std::initializer_list<unsigned char> bytes) {
    CValue value;
    value.SetCompositeValue(new CCompositeValue(Byte, static_cast<unsigned int>(bytes.size()), bytes.begin()));
    return value;
}

CValue PointerTo(unsigned short area, unsigned short frame, unsigned int offset) {
    CValue value;
    value.SetAddress(area, frame, offset);
    return value;
}

TEST(SaveValue, BytesOfEveryKind) {
    const struct {
        CValue value;
        unsigned short version;
        Bytes expected;
        const char* why;
    } kRows[] = {
        {CValue(), 14, {0}, "undefined"},
        {CValue(true), 14, {1, 1}, "BOOL"},
        {CValue(short{-2}), 13, {5, 0xFE, 0xFF}, "INT"},
        {CValue(258), 14, {8, 2, 1, 0, 0}, "DINT"},
        {CValue(1.0F), 14, {14, 0, 0, 0x80, 0x3F}, "REAL"},
        {CValue(258LL, Time), 14, {16, 2, 1, 0, 0, 0, 0, 0, 0}, "TIME"},
        {CValue(258LL, Date), 14, {18, 2, 1, 0, 0}, "DATE"},
        {CValue(65LL, Char), 14, {25, 65}, "CHAR"},
        {CValue(0x20ACLL, WChar), 13, {26, 0xAC, 0x20}, "WCHAR"},
        {PointerTo(1, 2, 3), 14, {22, 1, 0, 2, 0, 3, 0, 0, 0}, "POINTER"},
        {CValue(0x010214LL, Type), 14, {27, 20, 2, 1}, "TYPE"},
        {CValue("a\u20ac", String), 13, {20, 2, 'a', 0xE2, 0x82, 0xAC}, "STRING before 14: code points"},
        {CValue("a\u20ac", String), 14, {20, 4, 'a', 0xE2, 0x82, 0xAC}, "STRING from 14 on: bytes"},
        {CValue("", String), 13, {20, 0}, ""},
        {CValue("", String), 14, {20, 0}, ""},
        {CValue("a\U0001F600", WString), 13, {21, 2, 'a', 0xF0, 0x9F, 0x98, 0x80}, "WSTRING before 14: code points"},
        {CValue("a\U0001F600", WString), 14, {21, 3, 'a', 0, 0x3D, 0xD8, 0x00, 0xDE}, "WSTRING from 14 on: units"},
        {CValue(std::string(200, 'x').c_str(), String), 13, {20, 0xC3, 0x88, 'x'}, "count as a UTF character"},
        {CValue(std::string(200, 'x').c_str(), String), 14, {20, 0xC8, 0x01, 'x'}, "count of seven bits a byte"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(AsDeclaration(row.value) + " " + row.why);
        Bytes saved = Save(row.version, row.value);
        if (row.expected.back() == 'x') saved.resize(row.expected.size());
        EXPECT_THAT(saved, ElementsAreArray(row.expected));
    }
}

TEST(SaveValue, CompositeStringIsOnlyItsType) {
    CValue value;
    value.SetCompositeString("abc");
    EXPECT_THAT(Save(14, value), ElementsAreArray(Bytes{24}));
    EXPECT_TRUE(Load(14, {24, 1, 2}).value.IsUndefined());
    EXPECT_EQ(Load(14, {24, 1, 2}).left, 2U);
}

TEST(SaveValue, NullObjectsAreEmpty) {
    CValue value;
    value.SetString(static_cast<Utf8String*>(nullptr));
    EXPECT_THAT(Save(14, value), ElementsAreArray(Bytes{20, 0}));
    value.SetWString(nullptr);
    EXPECT_THAT(Save(13, value), ElementsAreArray(Bytes{21, 0}));
    value.SetCompositeValue(nullptr);
    EXPECT_THAT(Save(14, value), ElementsAreArray(Bytes{23, 0, 0, 0, 0, 0})) << "no type, no elements";
}

TEST(LoadValue, RestoresEveryTypeInBothForms) {
    const CValue kValues[] = {
        CValue(),
        CValue(true),
        CValue(-5LL, SInt),
        CValue(200LL, USInt),
        CValue(200LL, Byte),
        CValue(short{-300}),
        CValue(static_cast<unsigned short>(60'000)),
        CValue(60'000LL, Word),
        CValue(-70'000),
        CValue(70'000U),
        CValue(70'000LL, DWord),
        CValue(-5'000'000'000LL, LInt),
        CValue(5'000'000'000LL, ULInt),
        CValue(-1LL, LWord),
        CValue(-1.5F),
        CValue(1e300),
        CValue(-90'000LL, Time),
        CValue(45'015'999LL, TimeOfDay),
        CValue(19'753LL, Date),
        CValue(1'706'706'309'250LL, DateAndTime),
        CValue("", String),
        CValue("it's \u00e9\u20ac\U0001F600", String),
        CValue(std::string(70'000, 'y').c_str(), String),
        CValue("", WString),
        CValue("it's \u00e9\u20ac\U0001F600", WString),
        CValue(std::string(70'000, 'y').c_str(), WString),
        PointerTo(1, 2, 3),
        BytesComposite({1, 2, 3}),
        CValue(0xE9LL, Char),
        CValue(0xD800LL, WChar),
        CValue(0x010214LL, Type),
    };
    for (const CValue& value : kValues) {
        for (const unsigned short version : kVersions) {
            SCOPED_TRACE(AsDeclaration(value).substr(0, 80) + " version " + std::to_string(version));
            Bytes bytes = Save(version, value);
            bytes.push_back(0x77);  // what follows in the stream
            const Loaded loaded = Load(version, bytes);
            EXPECT_EQ(AsDeclaration(loaded.value), AsDeclaration(value));
            EXPECT_EQ(loaded.value.GetType(), value.GetType());
            EXPECT_FALSE(loaded.failed);
            EXPECT_EQ(loaded.left, 1U);
        }
    }
}

TEST(LoadValue, TheFormsAreNotEachOthers) {
    // Two code points and four bytes: the count means another thing.
    const Loaded loaded = Load(14, Save(13, CValue("a\u20ac", String)));
    EXPECT_NE(AsDeclaration(loaded.value), "STRING#'a\u20ac'");
}

TEST(LoadValue, UnknownTypesReadNothingMore) {
    for (const unsigned char code : Bytes{24, 28, 40, 41, 54, 255}) {
        SCOPED_TRACE(int{code});
        const Loaded loaded = Load(14, {code, 1, 2, 3});
        EXPECT_TRUE(loaded.value.IsUndefined());
        EXPECT_FALSE(loaded.failed);
        EXPECT_EQ(loaded.left, 3U);
    }
}

TEST(LoadValue, CutAtEveryLengthFailsTheStream) {
    const CValue kValues[] = {CValue(1.5),
                              CValue("ab\u20ac", String),
                              CValue("ab\u20ac", WString),
                              PointerTo(1, 2, 3),
                              BytesComposite({1, 2, 3}),
                              CValue(0x010214LL, Type),
                              CValue(45LL, TimeOfDay)};
    for (const CValue& value : kValues) {
        for (const unsigned short version : kVersions) {
            const Bytes whole = Save(version, value);
            for (std::size_t length = 0; length < whole.size(); ++length) {
                SCOPED_TRACE(AsDeclaration(value) + " cut to " + std::to_string(length));
                EXPECT_TRUE(Load(version, Bytes(whole.begin(), whole.begin() + static_cast<long>(length))).failed);
            }
        }
    }
}

TEST(LoadValue, MissingBytesOfAFixedSizeReadAsZero) {
    const Loaded loaded = Load(14, {8, 2, 1});
    EXPECT_TRUE(loaded.failed);
    EXPECT_EQ(AsDeclaration(loaded.value), "DINT#258");
    EXPECT_TRUE(Load(14, {}).value.IsUndefined());
}

TEST(LoadValue, CountsBeyondTheStreamAreRefused) {
    const struct {
        unsigned short version;
        Bytes bytes;
        const char* expected;
        const char* why;
    } kRows[] = {
        {14, {20, 3, 'a', 'b'}, "STRING#''", "one byte more than there is"},
        {14, {20, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F, 'a'}, "STRING#''", "the largest count"},
        {14, {20, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 'a'}, "STRING#''", "a count that is none"},
        {14, {21, 1, 'a'}, "WSTRING#\"\"", "half a unit"},
        {14, {21, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F, 'a', 0}, "WSTRING#\"\"", "the largest count"},
        {13, {20, 2, 'a'}, "STRING#''", "one code point more than there is"},
        {13, {20, 0xFD, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF, 'a'}, "STRING#''", "the largest count"},
        {13, {21, 0xFD, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF, 'a'}, "WSTRING#\"\"", "the largest count"},
        {13, {21, 0xFF, 'a'}, "WSTRING#\"\"", "a count that is none"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.why);
        const Loaded loaded = Load(row.version, row.bytes);
        EXPECT_TRUE(loaded.failed);
        EXPECT_EQ(AsDeclaration(loaded.value), row.expected);
    }
}

TEST(LoadValue, NumbersThatAreNoCharactersBecomeReplacementCharacters) {
    // A surrogate (ED A0 80) and a number above 10FFFF (F4 90 80 80), each one character of the old form.
    EXPECT_EQ(AsDeclaration(Load(13, {20, 2, 0xED, 0xA0, 0x80, 0xF4, 0x90, 0x80, 0x80}).value),
              "STRING#'\uFFFD\uFFFD'");
    EXPECT_EQ(AsDeclaration(Load(13, {21, 1, 0xF4, 0x90, 0x80, 0x80}).value), "WSTRING#\"\uFFFD\"");
}

TEST(LoadValue, BytesThatAreNoTextOnlySurviveFromVersion14On) {
    CValue value;
    constexpr unsigned char kBytes[] = {'a', 0xE9, 0xFF};
    value.SetFromVMString(kBytes, 3);
    const Loaded loaded = Load(14, Save(14, value));
    EXPECT_EQ(AsDeclaration(loaded.value), "STRING#'a$E9$FF'");
    EXPECT_FALSE(loaded.failed);
    EXPECT_TRUE(Load(13, Save(13, value)).failed);
}

}  // namespace
