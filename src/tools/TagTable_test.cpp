#include "tools/TagTable.h"

#include <gtest/gtest.h>

#include "tools/JsonWriter.h"
#include "vm/MemoryRef.h"

namespace tn61131 {
namespace {

std::string BytesOf(const TagTable& table, std::uint32_t id) {
    const CMemoryBlock* bytes = table.FindTag(id);
    return bytes == nullptr ? "none" : HexText(bytes->GetVMData(), bytes->GetDataSize());
}

TEST(TagTable, ResolvesWhatLiesInsideTheTag) {
    struct Row {
        std::uint32_t id;
        std::uint16_t offset;
        unsigned int size;
        bool resolves;
    };
    const Row rows[] = {
        {7, 0, 0, true},  {7, 0, 4, true},  {7, 0, 5, false},          {7, 3, 1, true},  {7, 4, 0, true},
        {7, 4, 1, false}, {7, 5, 0, false}, {7, 65535, 0, false},      {8, 0, 0, false}, {9, 0, 0, true},
        {9, 0, 1, false}, {9, 1, 0, false}, {7, 1, 0xFFFFFFFF, false},
    };
    TagTable table;
    table.SetTag(7, std::string("\x01\x02\x03\x04", 4));
    table.SetTag(9, "");
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.id) + ":" + std::to_string(row.offset) + " size " + std::to_string(row.size));
        const PointerValue pointer{LocationKind::Tag, row.offset, row.id};
        CMemoryRef reference;
        EXPECT_EQ(table.ResolveTagAddress(&pointer, row.size, reference), row.resolves);
    }
}

TEST(TagTable, AResolvedReferenceReachesTheTagsBytes) {
    TagTable table;
    table.SetTag(7, std::string(4, '\0'));
    const PointerValue pointer{LocationKind::Tag, 2, 7};
    CMemoryRef reference;
    ASSERT_TRUE(table.ResolveTagAddress(&pointer, 2, reference));
    reference.SetINTAtOffset(0, 0x1234);
    EXPECT_EQ(BytesOf(table, 7), "00003412");
}

TEST(TagTable, DescribesItsTags) {
    TagTable table;
    table.SetTag(7, "abc");
    DirectlyLocatedType type;
    EXPECT_FALSE(table.GetTagType(8, type));
    ASSERT_TRUE(table.GetTagType(7, type));
    EXPECT_EQ(type.type, ElementaryType::Byte);
    EXPECT_EQ(type.length, 3U);
    EXPECT_FALSE(type.readOnly);
}

TEST(TagTable, LoadsATagsFile) {
    TagTable table;
    std::string error;
    ASSERT_TRUE(
        table.Load(R"({"7": {"data": "00Ff"}, "4294967295": {"data": "", "type": "INT"}, "0": {"data": "10"}})", error))
        << error;
    EXPECT_EQ(table.GetTags().size(), 3U);
    EXPECT_EQ(BytesOf(table, 7), "00ff");
    EXPECT_EQ(BytesOf(table, 4294967295), "");
    EXPECT_EQ(BytesOf(table, 0), "10");
}

TEST(TagTable, RefusesWhatIsNoTagsFile) {
    const char* const texts[] = {
        "",
        "[]",
        "7",
        R"({"7": "00"})",
        R"({"7": {}})",
        R"({"7": {"data": 5}})",
        R"({"7": {"data": "0"}})",
        R"({"7": {"data": "0g"}})",
        R"({"7": {"data": "0 "}})",
        R"({"": {"data": ""}})",
        R"({"-1": {"data": ""}})",
        R"({"+1": {"data": ""}})",
        R"({" 1": {"data": ""}})",
        R"({"1x": {"data": ""}})",
        R"({"4294967296": {"data": ""}})",
    };
    for (const char* text : texts) {
        SCOPED_TRACE(text);
        TagTable table;
        table.SetTag(1, "a");
        std::string error;
        EXPECT_FALSE(table.Load(text, error));
        EXPECT_FALSE(error.empty());
        EXPECT_TRUE(table.GetTags().empty());
    }
}

}  // namespace
}  // namespace tn61131
