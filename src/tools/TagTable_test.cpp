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

TEST(TagTable, NamedTagsAreKnownToTheCompiler) {
    TagTable table;
    std::string error;
    ASSERT_TRUE(table.Load(R"({"7": {"name": "Plant.Level", "type": "int", "access": "read-only", "offset": 3},
                               "8": {"name": "Text", "type": "STRING", "length": 5},
                               "9": {"name": "Wide", "type": "WSTRING", "length": 32766, "access": "read-write"},
                               "10": {"name": "Set", "type": "REAL", "data": "0000803f00"},
                               "11": {"data": "00"}})",
                           error))
        << error;
    ASSERT_EQ(table.GetSymbols().size(), 4U);
    const st::TagSymbol* level = nullptr;
    const st::TagSymbol* text = nullptr;
    const st::TagSymbol* wide = nullptr;
    for (const st::TagSymbol& symbol : table.GetSymbols()) {
        if (symbol.tagId == 7) level = &symbol;
        if (symbol.tagId == 8) text = &symbol;
        if (symbol.tagId == 9) wide = &symbol;
    }
    ASSERT_TRUE(level != nullptr && text != nullptr && wide != nullptr);
    EXPECT_EQ(level->address, "Plant.Level");
    EXPECT_EQ(level->type, ElementaryType::Int);
    EXPECT_EQ(level->offset, 3U);
    EXPECT_TRUE(level->readOnly);
    EXPECT_EQ(text->type, ElementaryType::String);
    EXPECT_EQ(text->length, 5U);
    EXPECT_FALSE(text->readOnly);
    EXPECT_EQ(wide->length, 32766U);
    // Without data: zeros up to the end of the variable; a STRING has two bytes beside its characters, a WSTRING one
    // unit.
    EXPECT_EQ(BytesOf(table, 7), "0000000000");
    EXPECT_EQ(BytesOf(table, 8), "00000000000000");
    EXPECT_EQ(table.FindTag(9)->GetDataSize(), 65534U);
    EXPECT_EQ(BytesOf(table, 10), "0000803f00");
    DirectlyLocatedType type;
    ASSERT_TRUE(table.GetTagType(7, type));
    EXPECT_TRUE(type.readOnly);
    ASSERT_TRUE(table.GetTagType(8, type));
    EXPECT_FALSE(type.readOnly);
}

TEST(TagTable, RefusesNamesThatMeanNothing) {
    struct Row {
        const char* text;
        const char* error;
    };
    const Row rows[] = {
        {R"({"7": {"name": "a"}})", "tag 7: 'type' is no elementary type"},
        {R"({"7": {"name": "a", "type": "Motor"}})", "tag 7: 'type' is no elementary type"},
        {R"({"7": {"name": "a", "type": 5}})", "tag 7: 'type' is no elementary type"},
        {R"({"7": {"name": "", "type": "INT"}})", "tag 7: 'name' is no text"},
        {R"({"7": {"name": 5, "type": "INT"}})", "tag 7: 'name' is no text"},
        {R"({"7": {"name": "a", "type": "STRING"}})", "tag 7: 'length' is no whole number from 1 to 65533"},
        {R"({"7": {"name": "a", "type": "STRING", "length": 0}})",
         "tag 7: 'length' is no whole number from 1 to 65533"},
        {R"({"7": {"name": "a", "type": "STRING", "length": 65534}})",
         "tag 7: 'length' is no whole number from 1 to 65533"},
        {R"({"7": {"name": "a", "type": "WSTRING", "length": 32767}})",
         "tag 7: 'length' is no whole number from 1 to 32766"},
        {R"({"7": {"name": "a", "type": "STRING", "length": 1.5}})",
         "tag 7: 'length' is no whole number from 1 to 65533"},
        {R"({"7": {"name": "a", "type": "INT", "length": 5}})", "tag 7: 'length' is for STRING and WSTRING only"},
        {R"({"7": {"name": "a", "type": "INT", "access": "write"}})",
         "tag 7: 'access' is neither \"read-only\" nor \"read-write\""},
        {R"({"7": {"name": "a", "type": "INT", "offset": -1}})", "tag 7: 'offset' is no whole number from 0 to 65535"},
        {R"({"7": {"name": "a", "type": "INT", "offset": 65536}})",
         "tag 7: 'offset' is no whole number from 0 to 65535"},
        {R"({"7": {"name": "a", "type": "INT", "offset": "1"}})", "tag 7: 'offset' is no whole number from 0 to 65535"},
        {R"({"7": {"name": "a", "type": "INT", "data": "00"}})", "tag 7: 'data' has 1 bytes, the variable needs 2"},
        {R"({"7": {"name": "a", "type": "INT", "offset": 1, "data": "0000"}})",
         "tag 7: 'data' has 2 bytes, the variable needs 3"},
        {R"({"7": {"name": "a", "type": "INT"}, "8": {"name": "a", "type": "INT"}})",
         "tag 8: another tag has the name 'a'"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        TagTable table;
        std::string error;
        EXPECT_FALSE(table.Load(row.text, error));
        EXPECT_EQ(error, row.error);
        EXPECT_TRUE(table.GetTags().empty());
        EXPECT_TRUE(table.GetSymbols().empty());
    }
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
