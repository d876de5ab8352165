#include "tools/Watch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/TextOutput.h"
#include "tools/TagTable.h"
#include "value/Value.h"
#include "vm/MemoryBlock.h"

namespace tn61131 {
namespace {

using testing::ElementsAre;

TEST(SplitWatchNames, CommasInsideBracketsBelongToTheName) {
    EXPECT_THAT(SplitWatchNames("a"), ElementsAre("a"));
    EXPECT_THAT(SplitWatchNames("a,b.c"), ElementsAre("a", "b.c"));
    EXPECT_THAT(SplitWatchNames("a[1,2],b"), ElementsAre("a[1,2]", "b"));
    EXPECT_THAT(SplitWatchNames(",a,,"), ElementsAre("a"));
    EXPECT_THAT(SplitWatchNames("a],b"), ElementsAre("a]", "b"));
    EXPECT_TRUE(SplitWatchNames("").empty());
}

std::vector<std::string> NamesOf(const std::vector<WatchedVariable>& variables) {
    std::vector<std::string> names;
    for (const WatchedVariable& variable : variables)
        names.push_back(variable.name);
    return names;
}

CSymbolMap MakeMap() {
    const SymbolType intType = SymbolType::MakeElementary(ElementaryType::Int);
    CSymbolMap map;
    map.AddVariable(
        {.scope = "", .name = "run", .offset = 0, .type = SymbolType::MakeElementary(ElementaryType::Bool)});
    map.AddVariable(
        {.scope = "Main", .name = "t", .offset = 1, .type = SymbolType::MakeStruct(FindStandardBlockStruct("R_TRIG"))});
    map.AddVariable(
        {.scope = "Main", .name = "grid", .offset = 6, .type = SymbolType::MakeArray({{1, 2}, {-1, 0}}, intType)});
    map.AddVariable({.scope = "F", .name = "local", .location = LocationKind::Local, .type = intType});
    map.AddVariable(
        {.scope = "", .name = "speed", .location = LocationKind::Tag, .offset = 2, .tagId = 7, .type = intType});
    map.AddVariable({.scope = "", .name = "limit", .location = LocationKind::GlobalConstant, .type = intType});
    return map;
}

TEST(ListVariables, GivesMembersAndElementsOfWhatHasAFixedPlace) {
    EXPECT_THAT(NamesOf(ListVariables(MakeMap(), 100)),
                ElementsAre("run", "Main.t.EN", "Main.t.ENO", "Main.t.CLK", "Main.t.Q", "Main.t.M", "Main.grid[1,-1]",
                            "Main.grid[1,0]", "Main.grid[2,-1]", "Main.grid[2,0]", "speed", "limit"));
    EXPECT_THAT(NamesOf(ListVariables(MakeMap(), 3)), ElementsAre("run", "Main.t.EN", "Main.t.ENO"));
}

TEST(FindWatched, AWholeStandsForItsElements) {
    std::vector<WatchedVariable> watched;
    std::string error;
    ASSERT_TRUE(FindWatched(MakeMap(), {"GRID", "run"}, watched, error)) << error;
    EXPECT_THAT(NamesOf(watched), ElementsAre("GRID[1,-1]", "GRID[1,0]", "GRID[2,-1]", "GRID[2,0]", "run"));
}

TEST(FindWatched, TooManyElementsAreRefused) {
    const SymbolType byteType = SymbolType::MakeElementary(ElementaryType::Byte);
    CSymbolMap map;
    map.AddVariable({.scope = "", .name = "fits", .type = SymbolType::MakeArray({{1, 10000}}, byteType)});
    map.AddVariable({.scope = "", .name = "huge", .type = SymbolType::MakeArray({{0, 10000}}, byteType)});
    std::vector<WatchedVariable> watched;
    std::string error;
    EXPECT_TRUE(FindWatched(map, {"fits"}, watched, error)) << error;
    watched.clear();
    EXPECT_FALSE(FindWatched(map, {"huge"}, watched, error));
    EXPECT_EQ(error, "'huge' makes more than 10000 watched variables");
}

TEST(ReadWatched, ReadsEveryMemory) {
    CMemoryBlock globalData;
    globalData.AllocateNewData(14);
    globalData.GetVMData()[4] = 1;   // Main.t.Q
    globalData.GetVMData()[12] = 5;  // Main.grid[2,0]
    CMemoryBlock constants;
    constants.AllocateNewData(2);
    constants.GetVMData()[0] = 6;
    TagTable tags;
    tags.SetTag(7, std::string("\0\0\x07\0", 4));
    std::vector<WatchedVariable> watched;
    std::string error;
    ASSERT_TRUE(FindWatched(MakeMap(), {"main.T.q", "grid[2,0]", "speed", "LIMIT"}, watched, error)) << error;
    std::string values;
    for (const WatchedVariable& variable : watched) {
        CValue value;
        ASSERT_TRUE(ReadWatched(variable, {&globalData, &constants, &tags}, value));
        CTextOutputString text;
        value.GetDeclaration(text);
        values += text.GetText() + " ";
    }
    EXPECT_EQ(values, "BOOL#TRUE INT#5 INT#7 INT#6 ");
}

TEST(ReadWatched, BytesThatAreNotThereHaveNoValue) {
    const CMemoryBlock empty;
    TagTable shortTag;
    shortTag.SetTag(7, std::string(3, '\0'));
    CValue value;
    for (const WatchedVariable& variable : ListVariables(MakeMap(), 100)) {
        SCOPED_TRACE(variable.name);
        EXPECT_FALSE(ReadWatched(variable, {&empty, &empty, nullptr}, value));
        EXPECT_FALSE(ReadWatched(variable, {&empty, &empty, &shortTag}, value));
    }
}

}  // namespace
}  // namespace tn61131
