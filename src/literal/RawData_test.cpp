#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LiteralTest.h"
#include "value/CompositeValue.h"

using enum ElementaryType;
using literal_test::AsDeclaration;
using testing::ElementsAreArray;

namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned char kUntouched = 0xCC;

// What GetRawData() writes into a buffer of this size, which has some room behind.
Bytes RawOf(const CValueLiteral& value, std::size_t bufferSize, std::size_t written) {
    Bytes buffer(bufferSize + 16, kUntouched);
    EXPECT_TRUE(value.GetRawData(buffer.data(), bufferSize));
    for (std::size_t i = written; i < buffer.size(); ++i)
        EXPECT_EQ(buffer[i], kUntouched) << "at " << i;
    buffer.resize(written);
    return buffer;
}

struct Layout {
    const char* declaration;
    ElementaryType type;
    Bytes bytes;
};

const std::vector<Layout>& Layouts() {
    static const std::vector<Layout> kLayouts = {
        {"Undefined", Undefined, {}},
        {"BOOL#FALSE", Bool, {0}},
        {"BOOL#TRUE", Bool, {1}},
        {"SINT#-2", SInt, {0xFE}},
        {"USINT#254", USInt, {0xFE}},
        {"BYTE#16#FE", Byte, {0xFE}},
        {"INT#-2", Int, {0xFE, 0xFF}},
        {"UINT#258", UInt, {0x02, 0x01}},
        {"WORD#16#102", Word, {0x02, 0x01}},
        {"DINT#-2", DInt, {0xFE, 0xFF, 0xFF, 0xFF}},
        {"UDINT#16909060", UDInt, {0x04, 0x03, 0x02, 0x01}},
        {"DWORD#16#1020304", DWord, {0x04, 0x03, 0x02, 0x01}},
        {"LINT#-2", LInt, {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {"ULINT#72623859790382856", ULInt, {8, 7, 6, 5, 4, 3, 2, 1}},
        {"LWORD#16#102030405060708", LWord, {8, 7, 6, 5, 4, 3, 2, 1}},
        {"REAL#1.0", Real, {0, 0, 0x80, 0x3F}},
        {"LREAL#1.0", LReal, {0, 0, 0, 0, 0, 0, 0xF0, 0x3F}},
        {"T#-2ms", Time, {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {"TOD#00:00:00.258", TimeOfDay, {0x02, 0x01, 0, 0}},
        {"D#1970-09-16", Date, {0x02, 0x01, 0, 0}},
        {"DT#1970-01-01-00:00:00.258", DateAndTime, {0x02, 0x01, 0, 0, 0, 0, 0, 0}},
        {"STRING#''", String, {0, 0}},
        {"STRING#'ab'", String, {2, 0, 'a', 'b'}},
        {"STRING#'\u00e9'", String, {2, 0, 0xC3, 0xA9}},
        {"STRING#'$FF'", String, {1, 0, 0xFF}},
        {"WSTRING#\"\"", WString, {0, 0}},
        {"WSTRING#\"a\u20ac\"", WString, {2, 0, 'a', 0, 0xAC, 0x20}},
        {"WSTRING#\"$D83D\"", WString, {1, 0, 0x3D, 0xD8}},
        {"CHAR#'a'", Char, {'a'}},
        {"WCHAR#\"\u20ac\"", WChar, {0xAC, 0x20}},
        {"TYPE#STRING[258]", Type, {20, 0x02, 0x01}},
    };
    return kLayouts;
}

TEST(SetFromDataBytes, ReadsTheLayoutOfEveryType) {
    for (const Layout& row : Layouts()) {
        SCOPED_TRACE(row.declaration);
        CValue value(std::string("before"));
        Bytes shifted(1, 0);  // at an odd address
        shifted.insert(shifted.end(), row.bytes.begin(), row.bytes.end());
        EXPECT_TRUE(value.SetFromDataBytes(row.type, shifted.data() + 1, static_cast<unsigned int>(row.bytes.size())));
        EXPECT_EQ(value.GetType(), row.type);
        EXPECT_EQ(AsDeclaration(value), row.declaration);
    }
}

TEST(GetRawData, WritesTheLayoutOfEveryType) {
    for (const Layout& row : Layouts()) {
        SCOPED_TRACE(row.declaration);
        CValue value;
        ASSERT_TRUE(value.SetFromDataBytes(row.type, row.bytes.data(), static_cast<unsigned int>(row.bytes.size())));
        EXPECT_EQ(value.GetRawDataSize(), row.bytes.size());
        EXPECT_THAT(RawOf(value, row.bytes.size(), row.bytes.size()), ElementsAreArray(row.bytes));
        EXPECT_THAT(RawOf(value, row.bytes.size() + 8, row.bytes.size()), ElementsAreArray(row.bytes));
    }
}

TEST(GetRawData, PointersAreTheirEightBytes) {
    CValue pointer;
    pointer.SetAddress(2, 0x0304, 0x05060708);
    const Bytes expected{2, 0, 4, 3, 8, 7, 6, 5};
    EXPECT_EQ(pointer.GetRawDataSize(), 8U);
    EXPECT_THAT(RawOf(pointer, 8, 8), ElementsAreArray(expected));
    CValue read;
    EXPECT_TRUE(read.SetFromDataBytes(Pointer, expected.data(), 8));
    EXPECT_EQ(read.GetPayload<PointerValue>(), pointer.GetPayload<PointerValue>());
    EXPECT_EQ(read.GetType(), Pointer);
}

TEST(GetRawData, RefusesWhatHasNoRoomOrNoRawForm) {
    Bytes buffer(16, kUntouched);
    CValue value;
    value.SetAddress(1, 0, 5);
    EXPECT_FALSE(value.GetRawData(buffer.data(), 7));
    for (const ElementaryType type : {String, WString}) {
        EXPECT_FALSE(CValue("ab", type).GetRawData(buffer.data(), 1));
        EXPECT_FALSE(CValue("ab", type).GetRawData(buffer.data(), 0));
    }
    value.SetCompositeValue(new CCompositeValue());
    EXPECT_FALSE(value.GetRawData(buffer.data(), buffer.size()));
    value.SetCompositeString("ab");
    EXPECT_FALSE(value.GetRawData(buffer.data(), buffer.size()));
    for (const unsigned int code : {28U, 40U, 41U, 54U, 255U})
        EXPECT_FALSE(CValue(0LL, static_cast<ElementaryType>(code)).GetRawData(buffer.data(), buffer.size()));
    EXPECT_THAT(buffer, testing::Each(kUntouched));
}

TEST(GetRawData, StringsWriteWhatFits) {
    const CValue text("0123456789", String);
    EXPECT_THAT(RawOf(text, 6, 6), ElementsAreArray(Bytes{4, 0, '0', '1', '2', '3'}));
    EXPECT_THAT(RawOf(text, 2, 2), ElementsAreArray(Bytes{0, 0}));
    EXPECT_EQ(text.GetRawDataSize(), 12U);
    const CValue wide("0123", WString);
    EXPECT_THAT(RawOf(wide, 6, 6), ElementsAreArray(Bytes{2, 0, '0', 0, '1', 0}));
    EXPECT_THAT(RawOf(wide, 7, 6), ElementsAreArray(Bytes{2, 0, '0', 0, '1', 0})) << "no half unit";
    EXPECT_THAT(RawOf(wide, 3, 2), ElementsAreArray(Bytes{0, 0}));
    EXPECT_EQ(wide.GetRawDataSize(), 10U);
}

TEST(GetRawData, FixedSizeTypesDoNotLookAtTheSize) {
    EXPECT_THAT(RawOf(CValue(258), 0, 4), ElementsAreArray(Bytes{2, 1, 0, 0}));
    EXPECT_THAT(RawOf(CValue(1.0), 1, 8), ElementsAreArray(Bytes{0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
}

TEST(GetRawData, NullStringsAreEmpty) {
    CValue value;
    value.SetString(static_cast<Utf8String*>(nullptr));
    EXPECT_THAT(RawOf(value, 8, 2), ElementsAreArray(Bytes{0, 0}));
    EXPECT_EQ(value.GetRawDataSize(), 2U);
    value.SetWString(nullptr);
    EXPECT_THAT(RawOf(value, 8, 2), ElementsAreArray(Bytes{0, 0}));
    EXPECT_EQ(value.GetRawDataSize(), 2U);
}

TEST(GetRawData, BoolIsZeroOrOne) {
    EXPECT_THAT(RawOf(CValue(1LL, Bool), 1, 1), ElementsAreArray(Bytes{1}));
    EXPECT_THAT(RawOf(CValue(0LL, Bool), 1, 1), ElementsAreArray(Bytes{0}));
    EXPECT_THAT(RawOf(CValue(2LL, Bool), 1, 1), ElementsAreArray(Bytes{0})) << "a payload other than 1 is FALSE";
}

TEST(SetFromDataBytes, EveryByteButZeroIsTrue) {
    for (const unsigned char byte : Bytes{1, 2, 0x80, 0xFF}) {
        CValue value;
        EXPECT_TRUE(value.SetFromDataBytes(Bool, &byte, 1));
        EXPECT_EQ(value.GetPayload<unsigned char>(), 1);
    }
}

TEST(SetFromDataBytes, FixedSizeTypesTakeTheirSizeWhateverIsSaid) {
    const Bytes bytes{1, 2, 3, 4, 5, 6, 7, 8};
    for (const unsigned int size : {0U, 1U, 4U, 100U}) {
        CValue value;
        EXPECT_TRUE(value.SetFromDataBytes(LWord, bytes.data(), size));
        EXPECT_EQ(value.GetPayload<std::uint64_t>(), 0x0807060504030201U);
    }
}

TEST(SetFromDataBytes, StringsAreCutToTheBytesGiven) {
    const struct {
        ElementaryType type;
        Bytes bytes;
        const char* expected;
        const char* why;
    } kRows[] = {
        {String, {3, 0, 'a', 'b', 'c'}, "STRING#'abc'", "all there"},
        {String, {3, 0, 'a', 'b', 'c', 'd'}, "STRING#'abc'", "more there"},
        {String, {4, 0, 'a', 'b', 'c'}, "STRING#'abc'", "one short"},
        {String, {0xFF, 0xFF, 'a'}, "STRING#'a'", "the largest count"},
        {String, {0xFF, 0xFF}, "STRING#''", "only the count"},
        {WString, {2, 0, 'a', 0, 'b', 0}, "WSTRING#\"ab\"", "all there"},
        {WString, {3, 0, 'a', 0, 'b', 0}, "WSTRING#\"ab\"", "one short"},
        {WString, {2, 0, 'a', 0, 'b'}, "WSTRING#\"a\"", "half a unit"},
        {WString, {0xFF, 0xFF, 'a'}, "WSTRING#\"\"", "half a unit"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.why);
        // In a block of exactly that size, so that a sanitizer sees a read beyond it.
        const auto exact = std::make_unique<unsigned char[]>(row.bytes.size());
        std::memcpy(exact.get(), row.bytes.data(), row.bytes.size());
        CValue value;
        EXPECT_TRUE(value.SetFromDataBytes(row.type, exact.get(), static_cast<unsigned int>(row.bytes.size())));
        EXPECT_EQ(AsDeclaration(value), row.expected);
    }
}

TEST(SetFromDataBytes, RefusesWhatHasNoRawForm) {
    const std::array<unsigned char, 8> bytes{1, 0, 1, 0, 1, 0, 1, 0};
    for (const unsigned int code : {23U, 24U, 28U, 40U, 41U, 54U, 255U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(code);
        CValue value(std::string("before"));
        EXPECT_FALSE(value.SetFromDataBytes(static_cast<ElementaryType>(code), bytes.data(), 8));
        EXPECT_TRUE(value.IsUndefined());
    }
    for (const ElementaryType type : {String, WString}) {
        CValue value(std::string("before"));
        EXPECT_FALSE(value.SetFromDataBytes(type, bytes.data(), 1));
        EXPECT_TRUE(value.IsUndefined());
    }
}

TEST(SetFromDataBytes, UndefinedReadsNothing) {
    CValue value(std::string("before"));
    EXPECT_TRUE(value.SetFromDataBytes(Undefined, nullptr, 0));
    EXPECT_TRUE(value.IsUndefined());
}

}  // namespace
