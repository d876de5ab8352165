#include "assembler/SymbolMap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "assembler/TypeText.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

namespace {

using enum ElementaryType;
using testing::HasSubstr;

std::shared_ptr<const SymbolStruct> MakePoint() {
    auto point = std::make_shared<SymbolStruct>();
    point->name = "Point";
    point->size = 6;
    point->members = {{"x", 0, SymbolType::MakeElementary(Int)}, {"y", 2, SymbolType::MakeElementary(DInt)}};
    return point;
}

/// level and limit are global, x is in two scopes, count in one.
CSymbolMap MakeMap() {
    CSymbolMap map;
    const SymbolType pointArray = SymbolType::MakeArray({{1, 3}}, SymbolType::MakeStruct(MakePoint()));
    const SymbolType grid = SymbolType::MakeArray({{0, 1}, {-1, 1}}, SymbolType::MakeElementary(Int));
    map.AddVariable({"", "level", LocationKind::Global, 0, 0, SymbolType::MakeElementary(Real)});
    map.AddVariable({"", "limit", LocationKind::GlobalConstant, 4, 0, SymbolType::MakeElementary(Int)});
    map.AddVariable({"Main", "x", LocationKind::Global, 8, 0, SymbolType::MakeElementary(Int)});
    map.AddVariable({"Other", "x", LocationKind::Global, 10, 0, SymbolType::MakeElementary(Int)});
    map.AddVariable({"Main", "count", LocationKind::Global, 12, 0, SymbolType::MakeElementary(UDInt)});
    map.AddVariable({"Main", "points", LocationKind::Global, 16, 0, pointArray});
    map.AddVariable({"Main", "grid", LocationKind::Global, 34, 0, grid});
    map.AddVariable(
        {"Main", "timer", LocationKind::Global, 46, 0, SymbolType::MakeStruct(FindStandardBlockStruct("TON"))});
    map.AddVariable({"Main", "name", LocationKind::Global, 75, 0, SymbolType::MakeString(String, 5)});
    map.AddVariable({"", "valve", LocationKind::Tag, 2, 7, SymbolType::MakeElementary(Bool)});
    map.AddLabel({SymbolLabel::Kind::Program, "Main", 0});
    map.AddLabel({SymbolLabel::Kind::Function, "Half", 40});
    const std::uint32_t file = map.AddFile("plant.st");
    map.AddPosition({0, file, 3, 5});
    map.AddPosition({6, file, 4, 5});
    return map;
}

TEST(SymbolMapFind, PathsResolveToPlaceAndType) {
    struct Row {
        const char* path;
        LocationKind location;
        std::uint32_t offset;
        const char* type;
        const char* why;
    };
    const Row rows[] = {
        {"level", LocationKind::Global, 0, "REAL", "global variable"},
        {"LEVEL", LocationKind::Global, 0, "REAL", "case does not matter"},
        {"limit", LocationKind::GlobalConstant, 4, "INT", "constant"},
        {"Main.x", LocationKind::Global, 8, "INT", "scope and name"},
        {"other.X", LocationKind::Global, 10, "INT", "scope in any case"},
        {"count", LocationKind::Global, 12, "UDINT", "bare name of the only scope"},
        {"points", LocationKind::Global, 16, "ARRAY[1..3] OF Point", "whole array"},
        {"points[1]", LocationKind::Global, 16, "Point", "first element at the lower bound"},
        {"Main.points[3].y", LocationKind::Global, 30, "DINT", "16 + 2 * 6 + 2"},
        {" points [ 2 ] . x ", LocationKind::Global, 22, "INT", "blanks"},
        {"grid[0,-1]", LocationKind::Global, 34, "INT", "first element"},
        {"grid[1,1]", LocationKind::Global, 44, "INT", "34 + (1 * 3 + 2) * 2"},
        {"grid[1]", LocationKind::Global, 40, "ARRAY[-1..1] OF INT", "a row"},
        {"grid[1][0]", LocationKind::Global, 42, "INT", "a row's element"},
        {"timer.PT", LocationKind::Global, 49, "TIME", "standard block: PT at 3"},
        {"timer.et", LocationKind::Global, 58, "TIME", "standard block: ET at 12"},
        {"name", LocationKind::Global, 75, "STRING[5]", "string"},
        {"valve", LocationKind::Tag, 2, "BOOL", "tag"},
    };
    const CSymbolMap map = MakeMap();
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.path) + ": " + row.why);
        SymbolReference reference;
        std::string error;
        ASSERT_TRUE(map.Find(row.path, reference, error)) << error;
        EXPECT_EQ(reference.location, row.location);
        EXPECT_EQ(reference.offset, row.offset);
        EXPECT_EQ(reference.type.GetText(), row.type);
    }
    SymbolReference tag;
    std::string error;
    ASSERT_TRUE(map.Find("valve", tag, error));
    EXPECT_EQ(tag.tagId, 7U);
}

TEST(SymbolMapFind, WrongPathsSayWhy) {
    struct Row {
        const char* path;
        const char* error;
    };
    const Row rows[] = {
        {"", "a name expected"},
        {"unknown", "there is no variable 'unknown'"},
        {"Main.unknown", "there is no variable 'Main'"},
        {"x", "'x' is in more than one scope: Main.x, Other.x"},
        {"level.a", "REAL has no member 'a'"},
        {"level[0]", "REAL does not have 1 dimension(s)"},
        {"points[0]", "index 0 is not in 1..3"},
        {"points[4]", "index 4 is not in 1..3"},
        {"points[1,1]", "ARRAY[1..3] OF Point does not have 2 dimension(s)"},
        {"points[1].z", "Point has no member 'z'"},
        {"points[", "an index expected"},
        {"points[1", "']' expected"},
        {"points[1]x", "'.' expected"},
        {"points.", "a member expected"},
        {"grid[2,0]", "index 2 is not in 0..1"},
    };
    const CSymbolMap map = MakeMap();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path);
        SymbolReference reference;
        std::string error;
        EXPECT_FALSE(map.Find(row.path, reference, error));
        EXPECT_EQ(error, row.error);
        EXPECT_EQ(reference.location, LocationKind::Null);
    }
}

TEST(SymbolMapFind, GlobalNameWinsOverScopes) {
    CSymbolMap map;
    map.AddVariable({"Main", "a", LocationKind::Global, 4, 0, SymbolType::MakeElementary(Int)});
    map.AddVariable({"", "a", LocationKind::Global, 8, 0, SymbolType::MakeElementary(Int)});
    map.AddVariable({"", "ab", LocationKind::Global, 12, 0, SymbolType::MakeElementary(Int)});
    SymbolReference reference;
    std::string error;
    ASSERT_TRUE(map.Find("a", reference, error));
    EXPECT_EQ(reference.offset, 8U);
    ASSERT_TRUE(map.Find("Main.a", reference, error));
    EXPECT_EQ(reference.offset, 4U);
}

TEST(SymbolMapReadValue, ValuesComeOutOfTheBytes) {
    std::vector<unsigned char> data(82);
    const auto put = [&](std::size_t at, std::initializer_list<int> bytes) {
        for (const int byte : bytes)
            data[at++] = static_cast<unsigned char>(byte);
    };
    put(0, {0x00, 0x00, 0xC0, 0x3F});               // 1.5
    put(8, {0xFE, 0xFF});                           // -2
    put(34, {1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0});  // grid
    put(49, {0xE8, 0x03, 0, 0, 0, 0, 0, 0});        // one second
    put(75, {3, 0, 'a', 'b', 'c', 'x', 'x'});       // 'abc'
    struct Row {
        const char* path;
        const char* declaration;
    };
    const Row rows[] = {
        {"level", "REAL#1.5"},
        {"Main.x", "INT#-2"},
        {"timer.PT", "T#1s"},
        {"name", "STRING#'abc'"},
        {"grid[1,0]", "INT#5"},
        {"grid[1]", "COMPOSITE#INT[ 4, 5, 6 ]"},
        {"grid", "COMPOSITE#INT[ 1, 2, 3, 4, 5, 6 ]"},
    };
    const CSymbolMap map = MakeMap();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path);
        SymbolReference reference;
        std::string error;
        CValue value;
        ASSERT_TRUE(map.Find(row.path, reference, error)) << error;
        ASSERT_TRUE(CSymbolMap::ReadValue(reference, data, value, error)) << error;
        CTextOutputString text;
        value.GetDeclaration(text);
        EXPECT_EQ(text.GetText(), row.declaration);
    }
}

TEST(SymbolMapReadValue, NoValueOrNoBytesIsAnError) {
    const CSymbolMap map = MakeMap();
    const std::vector<unsigned char> data(81);  // one byte short of the whole string
    const std::pair<const char*, const char*> rows[] = {
        {"timer", "TON has no value of its own"},
        {"points", "ARRAY[1..3] OF Point has no value of its own"},
        {"name", "the data ends before offset 75 + 7"},
    };
    for (const auto& [path, expected] : rows) {
        SCOPED_TRACE(path);
        SymbolReference reference;
        std::string error;
        CValue value;
        ASSERT_TRUE(map.Find(path, reference, error));
        EXPECT_FALSE(CSymbolMap::ReadValue(reference, data, value, error));
        EXPECT_EQ(error, expected);
    }
}

TEST(SymbolMapPosition, LastPositionNotAboveTheOffset) {
    const CSymbolMap map = MakeMap();
    EXPECT_EQ(map.FindPosition(0)->line, 3U);
    EXPECT_EQ(map.FindPosition(5)->line, 3U);
    EXPECT_EQ(map.FindPosition(6)->line, 4U);
    EXPECT_EQ(map.FindPosition(1000)->line, 4U);
    EXPECT_EQ(CSymbolMap().FindPosition(0), nullptr);
}

TEST(SymbolMapSave, TextIsAsDocumented) {
    CSymbolMap map;
    map.AddVariable({"Main", "p", LocationKind::Global, 4, 0, SymbolType::MakeStruct(MakePoint())});
    map.AddVariable({"", "valve", LocationKind::Tag, 2, 7, SymbolType::MakeElementary(Bool)});
    map.AddLabel({SymbolLabel::Kind::Program, "Ma\"in", 16});
    map.AddPosition({16, map.AddFile("a.st"), 3, 5});
    EXPECT_EQ(map.Save(), R"({"format":"tn61131-map",
"version":1,
"types":[
{"name":"Point","size":6,"members":[{"name":"x","offset":0,"type":"INT"},{"name":"y","offset":2,"type":"DINT"}]}],
"variables":[
{"scope":"Main","name":"p","location":"global","offset":4,"type":"Point"},
{"scope":"","name":"valve","location":"tag","tag":7,"offset":2,"type":"BOOL"}],
"labels":[
{"kind":"program","name":"Ma\"in","offset":16}],
"files":[
"a.st"],
"positions":[
[16,0,3,5]]}
)");
}

TEST(SymbolMapLoad, SavedMapLoadsAndSavesTheSame) {
    const CSymbolMap map = MakeMap();
    const std::string text = map.Save();
    CSymbolMap loaded;
    std::string error;
    ASSERT_TRUE(loaded.Load(text, error)) << error;
    EXPECT_EQ(loaded.Save(), text);
    EXPECT_EQ(loaded.GetVariables().size(), map.GetVariables().size());
    SymbolReference reference;
    ASSERT_TRUE(loaded.Find("main.points[3].y", reference, error)) << error;
    EXPECT_EQ(reference.offset, 30U);
}

TEST(SymbolMapLoad, WhatIsNoMapIsRefused) {
    const std::string head = R"({"format":"tn61131-map","version":1,)";
    const auto variable = [&](const std::string& fields) { return head + "\"variables\":[{" + fields + "}]}"; };
    struct Row {
        std::string text;
        const char* error;
    };
    const Row rows[] = {
        {"", "JSON"},
        {"{}", "this is no symbol map"},
        {"[]", "this is no symbol map"},
        {R"({"format":"tn61131-map","version":2})", "unknown version 2"},
        {R"({"format":"tn61131-map"})", "'version' is missing"},
        {variable(R"("location":"global","offset":0,"type":"INT")"), "variables[0]: 'name' is missing or no text"},
        {variable(R"("name":"a b","location":"global","offset":0,"type":"INT")"), "'a b' is no name"},
        {variable(R"("name":"a","location":"sky","offset":0,"type":"INT")"), "unknown location 'sky'"},
        {variable(R"("name":"a","location":"tag","offset":0,"type":"INT")"), "'tag' is missing"},
        {variable(R"("name":"a","location":"global","offset":-1,"type":"INT")"), "a number from 0 to 4294967295"},
        {variable(R"("name":"a","location":"global","offset":0.5,"type":"INT")"), "a whole number expected"},
        {variable(R"("name":"a","location":"global","offset":0,"type":"NIX")"), "unknown type 'NIX'"},
        {variable(R"("name":"a","location":"global","offset":0,"type":"INT x")"), "nothing more expected"},
        {variable(R"("name":"a","location":"global","offset":4294967295,"type":"INT")"), "leaves the memory"},
        {variable(R"("name":"a","location":"global","offset":0,"type":"ARRAY[0..2147483647] OF LINT")"),
         "the type is too large"},
        {head + R"("types":[{"name":"S","size":1,"members":[{"name":"a","offset":0,"type":"INT"}]}]})",
         "'a' leaves its structure"},
        {head + R"("types":[{"name":"S","size":2,"members":[{"name":"a","offset":0,"type":"S"}]}]})",
         "unknown type 'S'"},
        {head + R"("labels":[{"kind":"x","name":"a","offset":0}]})", "unknown kind 'x'"},
        {head + R"("positions":[[0,0,1,1]]})", "there is no such file"},
        {head + R"("files":["a"],"positions":[[4,0,1,1],[3,0,1,1]]})", "the code offsets do not ascend"},
        {head + R"("files":["a"],"positions":[[4,0,1]]})", "four numbers expected"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        CSymbolMap map = MakeMap();
        std::string error;
        EXPECT_FALSE(map.Load(row.text, error));
        EXPECT_THAT(error, HasSubstr(row.error));
        EXPECT_TRUE(map.GetVariables().empty());
    }
}

TEST(SymbolMapLoad, UnknownMembersAreIgnored) {
    CSymbolMap map;
    std::string error;
    EXPECT_TRUE(map.Load(R"({"format":"tn61131-map","version":1,"later":[1,2],"variables":[
        {"name":"a","location":"global","offset":0,"type":"INT","unit":"m"}]})",
                         error))
        << error;
    EXPECT_EQ(map.GetVariables().size(), 1U);
}

TEST(SymbolMapLoad, DeepTypesAreRefused) {
    std::string types;
    for (int i = 0; i < 40; ++i) {
        types += (i == 0 ? "" : ",") + std::string(R"({"name":"S)") + std::to_string(i) +
                 R"(","size":2,"members":[{"name":"a","offset":0,"type":")" +
                 (i == 0 ? "INT" : "S" + std::to_string(i - 1)) + "\"}]}";
    }
    CSymbolMap map;
    std::string error;
    EXPECT_FALSE(map.Load(R"({"format":"tn61131-map","version":1,"types":[)" + types + "]}", error));
    EXPECT_EQ(error, "types[32]: the type is nested too deeply");
}

TEST(SymbolType, StandardBlocksHaveTheSizesOfTheLibrary) {
    const std::pair<const char*, std::uint32_t> rows[] = {{"SR", 5},     {"RS", 5},   {"R_TRIG", 5},
                                                          {"F_TRIG", 5}, {"CTU", 11}, {"CTD", 11},
                                                          {"TP", 29},    {"TON", 29}, {"tof", 29}};
    for (const auto& [name, size] : rows) {
        SCOPED_TRACE(name);
        ASSERT_NE(FindStandardBlockStruct(name), nullptr);
        EXPECT_EQ(FindStandardBlockStruct(name)->size, size);
    }
    EXPECT_EQ(FindStandardBlockStruct("CTUD"), nullptr);
    EXPECT_EQ(FindStandardBlockStruct("CTU")->FindMember("pv")->offset, 6U);
    EXPECT_EQ(FindStandardBlockStruct("CTD")->FindMember("CV")->offset, 9U);
    EXPECT_EQ(FindStandardBlockStruct("TON")->FindMember("START")->offset, 20U);
}

/// What a compiler adds.
CSymbolMap MakeProjectMap() {
    CSymbolMap map = MakeMap();
    auto color = std::make_shared<SymbolEnum>();
    color->name = "Color";
    color->base = SInt;
    color->values = {{"RED", 0}, {"GREEN", 5}, {"NONE", -1}};
    auto mask = std::make_shared<SymbolEnum>();
    mask->name = "Mask";
    mask->base = ULInt;
    mask->values = {{"ALL", -1}};
    map.AddVariable({"Main", "color", LocationKind::Global, 80, 0, SymbolType::MakeEnum(color)});
    const SymbolType colors = SymbolType::MakeArray({{0, 1}}, SymbolType::MakeEnum(color));
    SymbolPou program{SymbolPou::Kind::Program, "Main", 0, 40, 0, 2, {}};
    program.variables = {{"colors", SymbolLocal::Place::Temp, 4, 0, colors},
                         {"mask", SymbolLocal::Place::Slot, 1, 0, SymbolType::MakeEnum(mask)},
                         {"valve", SymbolLocal::Place::Tag, 2, 7, SymbolType::MakeElementary(Bool)}};
    map.AddPou(program);
    map.AddPou({SymbolPou::Kind::Method, "Motor.Start", 40, 9, 0, 0, {}});
    map.AddTask({"Fast", 10, -1, "", {"Main", "Other"}});
    map.AddTask({"Event", {}, {}, "trigger", {}});
    map.AddRetained({"Main.count", 12, 4, false});
    map.AddRetained({"level", 0, 4, true});
    map.AddTag({"IX0.1", 7, 2, SymbolType::MakeElementary(Bool), true});
    map.AddTag({"name", 8, 0, SymbolType::MakeString(ElementaryType::String, 40), false});
    return map;
}

TEST(SymbolMapProject, SavedMapLoadsWithEverything) {
    const CSymbolMap map = MakeProjectMap();
    CSymbolMap loaded;
    std::string error;
    ASSERT_TRUE(loaded.Load(map.Save(), error)) << error;
    EXPECT_EQ(loaded.Save(), map.Save());
    ASSERT_EQ(loaded.GetPous().size(), 2U);
    const SymbolPou& program = loaded.GetPous()[0];
    EXPECT_EQ(program.line, 2U);
    ASSERT_EQ(program.variables.size(), 3U);
    EXPECT_EQ(program.variables[0].place, SymbolLocal::Place::Temp);
    EXPECT_EQ(program.variables[0].type.GetText(), "ARRAY[0..1] OF Color");
    EXPECT_EQ(program.variables[2].tagId, 7U);
    EXPECT_EQ(loaded.GetPous()[1].kind, SymbolPou::Kind::Method);
    EXPECT_EQ(loaded.GetPous()[1].line, 0U);
    ASSERT_EQ(loaded.GetTasks().size(), 2U);
    EXPECT_EQ(loaded.GetTasks()[0].intervalMs, 10);
    EXPECT_EQ(loaded.GetTasks()[0].priority, -1);
    EXPECT_THAT(loaded.GetTasks()[0].programs, testing::ElementsAre("Main", "Other"));
    EXPECT_FALSE(loaded.GetTasks()[1].intervalMs.has_value());
    EXPECT_EQ(loaded.GetTasks()[1].single, "trigger");
    ASSERT_EQ(loaded.GetRetained().size(), 2U);
    EXPECT_FALSE(loaded.GetRetained()[0].isPersistent);
    EXPECT_TRUE(loaded.GetRetained()[1].isPersistent);
    ASSERT_EQ(loaded.GetTags().size(), 2U);
    EXPECT_TRUE(loaded.GetTags()[0].isReadOnly);
    EXPECT_EQ(loaded.GetTags()[0].address, "IX0.1");
    EXPECT_EQ(loaded.GetTags()[1].type.GetText(), "STRING[40]");
}

TEST(SymbolMapProject, CodeOffsetsLeadToTheUnit) {
    const CSymbolMap map = MakeProjectMap();
    EXPECT_EQ(map.FindPou(0)->name, "Main");
    EXPECT_EQ(map.FindPou(39)->name, "Main");
    EXPECT_EQ(map.FindPou(48)->name, "Motor.Start");
    EXPECT_EQ(map.FindPou(49), nullptr);
    EXPECT_EQ(CSymbolMap().FindPou(0), nullptr);
}

TEST(SymbolMapProject, ValuesOfEnumerationsHaveNames) {
    const CSymbolMap map = MakeProjectMap();
    SymbolReference color;
    std::string error;
    ASSERT_TRUE(map.Find("Main.color", color, error)) << error;
    EXPECT_EQ(color.type.GetText(), "Color");
    EXPECT_EQ(color.type.GetSize(), 1U);
    CValue value;
    value.SetInteger(-1, SInt);
    ASSERT_NE(CSymbolMap::FindValueName(color.type, value), nullptr);
    EXPECT_EQ(*CSymbolMap::FindValueName(color.type, value), "NONE");
    value.SetInteger(4, SInt);
    EXPECT_EQ(CSymbolMap::FindValueName(color.type, value), nullptr);
    value.SetInteger(5, Int);
    EXPECT_EQ(CSymbolMap::FindValueName(color.type, value), nullptr) << "another type";
    const SymbolType& mask = map.GetPous()[0].variables[1].type;
    value.SetInteger(-1, ULInt);
    EXPECT_EQ(*CSymbolMap::FindValueName(mask, value), "ALL") << "bits of an unsigned number";
}

TEST(SymbolMapProject, MistakesAreRefusedWithTheirPlace) {
    struct Row {
        const char* members;
        const char* error;
    };
    const Row rows[] = {
        {R"("enums":[{"name":"E","base":"STRING","values":[]}])",
         "enums[0]: an enumeration needs a base of fixed size"},
        {R"("enums":[{"name":"E","base":"ANY_INT","values":[]}])", "enums[0]: unknown type 'ANY_INT'"},
        {R"("enums":[{"name":"E","base":"INT","values":[{"name":"A","value":"x"}]}])",
         "enums[0]: 'value': a whole number expected"},
        {R"("enums":[{"name":"E","base":"INT","values":[]},{"name":"e","base":"INT","values":[]}])",
         "enums[1]: 'e' is there twice"},
        {R"("enums":[{"name":"E","base":"INT","values":[]}],"types":[{"name":"E","size":0,"members":[]}])",
         "types[0]: 'E' is there twice"},
        {R"("pous":[{"kind":"x","name":"P","offset":0,"size":1}])", "pous[0]: unknown kind 'x'"},
        {R"("pous":[{"kind":"program","name":"P","offset":0,"size":1,"line":3,"file":0}])",
         "pous[0]: there is no such file"},
        {R"("pous":[{"kind":"program","name":"P","offset":5,"size":1},{"kind":"program","name":"Q","offset":4,"size":1}])",
         "pous[1]: the code offsets do not ascend"},
        {R"("pous":[{"kind":"program","name":"P","offset":0,"size":1,"variables":[{"name":"v","place":"here"}]}])",
         "pous[0]: unknown place 'here'"},
        {R"("tasks":[{"name":"T","interval":5}])", "tasks[0]: 'interval' is missing or no text"},
        {R"("tasks":[{"name":"T","programs":[1]}])", "tasks[0]: 'programs': a text expected"},
        {R"("retained":[{"name":"v","offset":4294967294,"size":1,"kind":"retain"}])", nullptr},
        {R"("retained":[{"name":"v","offset":4294967295,"size":1,"kind":"retain"}])",
         "retained[0]: the range leaves the memory"},
        {R"("retained":[{"name":"v","offset":0,"size":2,"kind":"kept"}])", "retained[0]: unknown kind 'kept'"},
        {R"("tags":[{"address":"a","tag":1,"offset":0,"type":"BOOLE"}])", "tags[0]: 'BOOLE': unknown type 'BOOLE'"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.members);
        CSymbolMap map;
        std::string error;
        const std::string text = std::string(R"({"format":"tn61131-map","version":1,)") + row.members + "}";
        EXPECT_EQ(map.Load(text, error), row.error == nullptr);
        EXPECT_EQ(error, row.error == nullptr ? "" : row.error);
    }
}

}  // namespace
