#include "value/Value.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/BinaryStream.h"
#include "platform/DataFormat.h"
#include "platform/ErrorLog.h"
#include "platform/TextOutput.h"
#include "platform/Time.h"
#include "value/CompositeValue.h"
#include "value/PointerValue.h"
#include "value/VMString.h"
#include "value/VMTypeValue.h"

namespace {

std::string Declaration(const CValue& value) {
    CTextOutputString text;
    value.GetDeclaration(text);
    return text.TakeText();
}

class HostValueTest : public testing::Test {
 protected:
    CErrorLog log_;
    const ErrorLocationNull& nowhere_ = ErrorLocationNull::Get();
};

TEST_F(HostValueTest, LiteralsOperatorsAndConversions) {
    CValue left;
    ASSERT_TRUE(left.SetFromText(log_, nowhere_, "INT#40", ElementaryType::Undefined));
    CValue right(2);
    ASSERT_TRUE(left.Add(log_, nowhere_, right));
    EXPECT_EQ(Declaration(left), "DINT#42");
    ASSERT_TRUE(left.ChangeType(log_, nowhere_, ElementaryType::WString));
    EXPECT_EQ(Declaration(left), "WSTRING#\"42\"");
    ASSERT_TRUE(left.ChangeTypeToDisplayWString(nullptr, log_, nowhere_));
    CValue zero(0);
    CValue one(1);
    EXPECT_FALSE(one.Div(log_, nowhere_, zero));
    ASSERT_EQ(log_.GetEntries().size(), 1U);
    EXPECT_EQ(log_.GetEntries()[0].id, 226U);
}

TEST_F(HostValueTest, PersistedAndRawForms) {
    const CValue saved("abc", ElementaryType::String);
    CBinaryOutputBuffer output;
    ASSERT_TRUE(saved.SaveValue(14, output));
    CBinaryInputMemory input(output.GetData());
    CValue loaded;
    ASSERT_TRUE(loaded.LoadValue(14, input));
    EXPECT_TRUE(loaded.IsEqual(saved));
    constexpr unsigned int kRawSize = 5;
    unsigned char raw[8];  // what every fixed-size type may want
    ASSERT_EQ(loaded.GetRawDataSize(), kRawSize);
    ASSERT_TRUE(loaded.GetRawData(raw, kRawSize));
    CValue again;
    EXPECT_TRUE(again.SetFromDataBytes(ElementaryType::String, raw, kRawSize));
    EXPECT_EQ(Declaration(again), "STRING#'abc'");
}

TEST_F(HostValueTest, CompositesPointersAndTypes) {
    const unsigned char bytes[] = {1, 2};
    const CCompositeValue array(ElementaryType::Byte, 2, bytes);
    CValue element;
    EXPECT_TRUE(array.GetElement(1, element));
    EXPECT_EQ(Declaration(element), "BYTE#16#2");
    PointerValue pointer{LocationKind::Global, 0, 8};
    pointer.AddOffset(4);
    char text[PointerValue::kTextSize];
    EXPECT_STREQ(pointer.FormatPointerValue(text), "Global: 12");
    CTextOutputString type;
    CVMTypeValue{20, 80}.PrintTypeValue(type);
    EXPECT_EQ(type.GetText(), "STRING[80]");
    EXPECT_EQ(CValueType::FindType("tod"), ElementaryType::TimeOfDay);
    EXPECT_STREQ(CValueType(ElementaryType::TimeOfDay).GetTypeName(true), "TOD");
    EXPECT_EQ(CValueType::m_TypeInformation[0].type, CValueType::FindType(CValueType::m_TypeInformation[0].name));
}

TEST_F(HostValueTest, StringsInTheMachinesMemory) {
    unsigned char buffer[4];
    EXPECT_EQ(StoreVMString("ab", buffer, sizeof(buffer)), 2);
    std::string text;
    GetWStringFromVMString(buffer, 2, text);
    EXPECT_EQ(text, "ab");
    unsigned short units[4];
    EXPECT_EQ(StoreVMWString("ab", units, 4), 2);
    EXPECT_EQ(CompareWStringWithVMWString("ab", 2, units, 2), 0);
}

}  // namespace
