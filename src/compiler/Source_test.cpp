#include "compiler/Source.h"

#include <gtest/gtest.h>

namespace tn61131::st {
namespace {

std::uint32_t Add(SourceManager& sources, std::string text, std::string name = "a.st") {
    std::uint32_t index = 99;
    EXPECT_TRUE(sources.AddFile(std::move(name), std::move(text), index));
    return index;
}

struct Place {
    SourceOffset offset;
    std::uint32_t file;
    std::uint32_t line;
    std::uint32_t column;
};

TEST(SourceManager, OffsetsCountThroughAllFiles) {
    SourceManager sources;
    const std::uint32_t first = Add(sources, "ab\ncd\r\n");  // offsets 1 to 8, the end included
    const std::uint32_t second = Add(sources, "x");          // 9 and 10
    ASSERT_EQ(first, 0U);
    ASSERT_EQ(second, 1U);
    EXPECT_EQ(sources.GetStart(first), 1U);
    EXPECT_EQ(sources.GetStart(second), 9U);
    constexpr Place kPlaces[] = {{1, 0, 1, 1}, {3, 0, 1, 3}, {4, 0, 2, 1}, {6, 0, 2, 3},
                                 {8, 0, 3, 1}, {9, 1, 1, 1}, {10, 1, 1, 2}};
    for (const Place& place : kPlaces) {
        const SourceLocation found = sources.Locate(place.offset);
        EXPECT_EQ(found.file, place.file) << place.offset;
        EXPECT_EQ(found.line, place.line) << place.offset;
        EXPECT_EQ(found.column, place.column) << place.offset;
    }
}

TEST(SourceManager, NoPlaceIsAllZero) {
    SourceManager sources;
    EXPECT_EQ(sources.Locate(1).line, 0U);
    Add(sources, "ab");
    EXPECT_EQ(sources.Locate(0).line, 0U);
    EXPECT_EQ(sources.Locate(3).line, 1U);  // the end of the file
    EXPECT_EQ(sources.Locate(4).line, 0U);
    EXPECT_EQ(sources.GetText(SourceRange{}), "");
    EXPECT_EQ(sources.GetText(SourceRange{4, 5}), "");
    EXPECT_EQ(sources.GetText(SourceRange{2, 1}), "");
}

TEST(SourceManager, ColumnsCountCodePoints) {
    SourceManager sources;
    Add(sources, "\xC3\xA4\xE2\x82\xACx");  // two and three bytes
    EXPECT_EQ(sources.Locate(3).column, 2U);
    EXPECT_EQ(sources.Locate(6).column, 3U);
}

TEST(SourceManager, ByteOrderMarkIsNoText) {
    SourceManager sources;
    const std::uint32_t file = Add(sources, "\xEF\xBB\xBFx");
    EXPECT_EQ(sources.GetText(file), "x");
}

TEST(SourceManager, LinesComeWithoutTheirEnds) {
    SourceManager sources;
    const std::uint32_t file = Add(sources, "one\r\n\ntwo\r");
    EXPECT_EQ(sources.GetLine(file, 1), "one");
    EXPECT_EQ(sources.GetLine(file, 2), "");
    EXPECT_EQ(sources.GetLine(file, 3), "two");
    EXPECT_EQ(sources.GetLine(file, 0), "");
    EXPECT_EQ(sources.GetLine(file, 4), "");
}

TEST(SourceManager, RangesGiveTheirText) {
    SourceManager sources;
    Add(sources, "first");
    Add(sources, "second");
    EXPECT_EQ(sources.GetText(SourceRange{1, 6}), "first");
    EXPECT_EQ(sources.GetText(SourceRange{8, 10}), "ec");
    EXPECT_EQ(sources.GetText(Join({7, 8}, {12, 13})), "second");
}

TEST(SourceManager, TextsKeepTheirAddress) {
    SourceManager sources;
    const std::uint32_t file = Add(sources, "x");
    const char* const address = sources.GetText(file).data();
    for (int i = 0; i < 1000; ++i)
        Add(sources, "y");
    EXPECT_EQ(sources.GetText(file).data(), address);
    EXPECT_EQ(sources.Locate(1).file, 0U);
    EXPECT_EQ(sources.Locate(2001).file, 1000U);
}

}  // namespace
}  // namespace tn61131::st
