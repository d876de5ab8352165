#include "value/VMTypeValue.h"

#include <cstring>

#include <gtest/gtest.h>

#include "platform/TextOutput.h"

namespace {

struct Row {
    ElementaryType type;
    std::uint16_t length;
    unsigned int size;
    const char* text;
};
constexpr Row kRows[] = {
    {ElementaryType::WString, 10, 22, "WSTRING[10]"},
    {ElementaryType::String, 10, 12, "STRING[10]"},
    {ElementaryType::String, 80, 82, "STRING[80]"},
    {ElementaryType::String, 0, 2, "STRING"},
    {ElementaryType::WString, 65535, 131072, "WSTRING[65535]"},
    {ElementaryType::String, 65535, 65537, "STRING[65535]"},
    {ElementaryType::LReal, 0, 8, "LREAL"},
    {ElementaryType::DInt, 0, 4, "DINT"},
    {ElementaryType::DateAndTime, 3, 8, "DATE_AND_TIME[3]"},
    {ElementaryType::Composite, 0, 0, "COMPOSITE"},
    {ElementaryType::Undefined, 0, 0, "Undefined"},
    {ElementaryType::AnyInt, 0, 0, "ANY_INT"},
    {static_cast<ElementaryType>(200), 0, 0, "Unknown"},
};

TEST(VMTypeValue, SizeAndText) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.text);
        const CVMTypeValue type{static_cast<std::uint8_t>(row.type), row.length};
        EXPECT_EQ(type.GetBufferSize(), row.size);
        CTextOutputString output;
        type.PrintTypeValue(output);
        EXPECT_EQ(output.GetText(), row.text);
    }
}

TEST(VMTypeValue, LayoutIsThreePackedBytes) {
    const CVMTypeValue type{21, 0x1234};
    const unsigned char bytes[3] = {21, 0x34, 0x12};
    EXPECT_EQ(std::memcmp(&type, bytes, sizeof bytes), 0);
}

}  // namespace
