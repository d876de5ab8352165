#include "literal/CSVDocument.h"

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "platform/TextInput.h"
#include "value/Value.h"

namespace {

/// Every cell up to the counts and one beyond: "row,column=[text] ", absent ones left out.
std::string DescribeCells(const CSVDocument& document) {
    std::string described;
    for (unsigned int row = 0; row <= document.GetRowCount() + 1; ++row) {
        for (unsigned int column = 0; column <= document.GetColumnCount() + 1; ++column) {
            CValue value;
            if (!document.GetValue(row, column, value)) continue;
            EXPECT_EQ(value.GetType(), ElementaryType::WString);
            std::string text;
            value.GetStringValue(text);
            described += std::to_string(row) + "," + std::to_string(column) + "=[" + text + "] ";
        }
    }
    return described;
}

struct Row {
    std::string_view text;
    std::string_view cells;
    unsigned int rowCount;
    unsigned int columnCount;
};

void ExpectCells(const Row& row) {
    SCOPED_TRACE(row.text);
    TextInputTNString input(row.text);
    CSVDocument document;
    EXPECT_FALSE(document.ReadCSVFileContent(input));
    EXPECT_EQ(DescribeCells(document), row.cells);
    EXPECT_EQ(document.GetRowCount(), row.rowCount);
    EXPECT_EQ(document.GetColumnCount(), row.columnCount);
}

TEST(CSVDocument, UnquotedCells) {
    const Row kRows[] = {
        {"", "", 1, 1},
        {"a", "1,1=[a] ", 1, 1},
        {"a,b\nc", "1,1=[a] 1,2=[b] 2,1=[c] ", 2, 2},
        {"a\nb,c,d\n", "1,1=[a] 2,1=[b] 2,2=[c] 2,3=[d] ", 2, 3},
        {"a\n", "1,1=[a] ", 1, 1},
        {"a,,b", "1,1=[a] 1,2=[] 1,3=[b] ", 1, 3},
        {",", "1,1=[] ", 1, 1},    // nothing stands behind the comma
        {"a,", "1,1=[a] ", 1, 1},  //
        {"a,\n", "1,1=[a] 1,2=[] ", 1, 2},
        {"\n", "1,1=[] ", 1, 1},
        {"\n\nx", "1,1=[] 2,1=[] 3,1=[x] ", 3, 1},
        {" a , b\t", "1,1=[ a ] 1,2=[ b\t] ", 1, 2},
        {"a,b\r\nc\r\n", "1,1=[a] 1,2=[b\r] 2,1=[c\r] ", 2, 2},
        {"a;b", "1,1=[a;b] ", 1, 1},
        {"1.5,TRUE", "1,1=[1.5] 1,2=[TRUE] ", 1, 2},
        {"a\"b\",c", "1,1=[a\"b\"] 1,2=[c] ", 1, 2},  // a quote inside is data
        {" \"a,b\"", "1,1=[ \"a] 1,2=[b\"] ", 1, 2},  // and so behind a blank
        {"\u00e4\U0001F600,\u20ac", "1,1=[\u00e4\U0001F600] 1,2=[\u20ac] ", 1, 2},
        {"\xEF\xBB\xBF"
         "a,b",
         "1,1=[a] 1,2=[b] ", 1, 2},
        {"a\xFF,b", "1,1=[a\uFFFD] 1,2=[b] ", 1, 2},
        {std::string_view("a\0b,c", 5), std::string_view("1,1=[a\0b] 1,2=[c] ", 18), 1, 2},
    };
    for (const Row& row : kRows)
        ExpectCells(row);
}

TEST(CSVDocument, QuotedCells) {
    const Row kRows[] = {
        {R"("a")", "1,1=[a] ", 1, 1},
        {R"("")", "1,1=[] ", 1, 1},
        {R"("",b)", "1,1=[] 1,2=[b] ", 1, 2},
        {R"("x,""y""",z)", R"(1,1=[x,"y"] 1,2=[z] )", 1, 2},
        {R"("""")", "1,1=[\"] ", 1, 1},
        {"\"a\nb\"\nc", "1,1=[a\nb] 2,1=[c] ", 2, 1},
        {"\"a\r\nb\",c", "1,1=[a\r\nb] 1,2=[c] ", 1, 2},
        {"\"\u00e4\"\"\u20ac\"", "1,1=[\u00e4\"\u20ac] ", 1, 1},
        // What stands behind the closing quote separates, whatever it is.
        {R"("a"x,b)", "1,1=[a] 1,2=[] 1,3=[b] ", 1, 3},
        {R"("a"xyz,b)", "1,1=[a] 1,2=[yz] 1,3=[b] ", 1, 3},
        {R"("a" "b")", "1,1=[a] 1,2=[b] ", 1, 2},
        {"\"a\"\u20acb", "1,1=[a] 1,2=[b] ", 1, 2},
        {"\"a\"\r\nb", "1,1=[a] 1,2=[] 2,1=[b] ", 2, 2},
        {"\"a\"\n", "1,1=[a] ", 1, 1},
        {"\"a\",", "1,1=[a] ", 1, 1},
        // The end of the input ends the cell.
        {"\"", "1,1=[] ", 1, 1},
        {"\"a,b\nc", "1,1=[a,b\nc] ", 1, 1},
        {"\"a\"\"", "1,1=[a\"] ", 1, 1},
    };
    for (const Row& row : kRows)
        ExpectCells(row);
}

TEST(CSVDocument, NewDocumentHasNothing) {
    const CSVDocument document;
    CValue value(7);
    EXPECT_FALSE(document.GetValue(1, 1, value));
    EXPECT_EQ(document.GetRowCount(), 0U);
    EXPECT_EQ(document.GetColumnCount(), 0U);
}

TEST(CSVDocument, AbsentCellLeavesTheValue) {
    TextInputTNString input("a,b\nc");
    CSVDocument document;
    document.ReadCSVFileContent(input);
    for (const auto& [row, column] :
         std::vector<std::pair<unsigned, unsigned>>{{2, 2}, {0, 1}, {1, 0}, {3, 1}, {1, 3}, {~0U, ~0U}}) {
        CValue value(7);
        EXPECT_FALSE(document.GetValue(row, column, value)) << row << ", " << column;
        EXPECT_EQ(value.GetType(), ElementaryType::DInt);
        EXPECT_EQ(value.GetPayload<int>(), 7);
    }
}

TEST(CSVDocument, ReadingAgainReplacesTheContent) {
    CSVDocument document;
    TextInputTNString first("a,b,c\nd");
    document.ReadCSVFileContent(first);
    TextInputTNString second("x");
    document.ReadCSVFileContent(second);
    EXPECT_EQ(DescribeCells(document), "1,1=[x] ");
    EXPECT_EQ(document.GetRowCount(), 1U);
    EXPECT_EQ(document.GetColumnCount(), 1U);
}

TEST(CSVDocument, UnitsOfSixteenBitsReadTheSame) {
    const unsigned short kUnits[] = {'"', 0xD83D, 0xDE00, '"', ',', 0x20AC, '\n', 'b'};
    TextInputU16String input(kUnits, std::size(kUnits));
    CSVDocument document;
    document.ReadCSVFileContent(input);
    EXPECT_EQ(DescribeCells(document), "1,1=[\U0001F600] 1,2=[\u20ac] 2,1=[b] ");
}

TEST(ReadCSVFileValue, HandsBackTheTerminator) {
    const struct {
        std::string_view text;
        bool goesOn;
        int terminator;  // -1: left as it was
    } kRows[] = {
        {"a,b", true, ','},      {"a\nb", true, '\n'},  {"\"a\",b", true, ','},
        {"\"a\"\n", true, '\n'}, {"\"a\"x", true, 'x'}, {"\"a\"\u20ac", true, 0x20AC},
        {"a", false, -1},        {"\"a\"", false, -1},  {"\"a", false, -1},
        {"", false, -1},         {",", true, ','},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        TextInputTNString input(row.text);
        CSVDocument document;
        int terminator = -1;
        EXPECT_EQ(document.ReadCSVFileValue(input, terminator), row.goesOn);
        EXPECT_EQ(terminator, row.terminator);
    }
}

TEST(ReadCSVFileValue, KeepsTheCellThatIsThere) {
    // The current position moves only with the whole content.
    TextInputTNString input("a,b");
    CSVDocument document;
    int terminator = 0;
    EXPECT_TRUE(document.ReadCSVFileValue(input, terminator));
    EXPECT_FALSE(document.ReadCSVFileValue(input, terminator));
    EXPECT_EQ(DescribeCells(document), "0,0=[a] ");
}

TEST(CSVFileKey, OrdersByRowThenByColumn) {
    constexpr CSVDocument::CompareCSVFileKey kLess;
    EXPECT_TRUE(kLess({1, 9}, {2, 1}));
    EXPECT_FALSE(kLess({2, 1}, {1, 9}));
    EXPECT_TRUE(kLess({1, 1}, {1, 2}));
    EXPECT_FALSE(kLess({1, 2}, {1, 1}));
    EXPECT_FALSE(kLess({1, 1}, {1, 1}));
    EXPECT_TRUE(kLess({1, ~0U}, {2, 0}));
}

/// A table of any texts, written with every cell quoted, reads back.
TEST(CSVDocument, QuotedTablesReadBack) {
    std::mt19937 random(311);
    const std::string_view kPieces[] = {"a", ",", "\n", "\"", "\r", "\u00e4", "\U0001F600", " ", "long text", ""};
    for (int round = 0; round < 200; ++round) {
        const unsigned int rows = 1 + random() % 4;
        const unsigned int columns = 1 + random() % 4;
        std::string text;
        std::string expected;
        for (unsigned int row = 1; row <= rows; ++row) {
            for (unsigned int column = 1; column <= columns; ++column) {
                std::string cell;
                for (auto left = random() % 5; left > 0; --left)
                    cell += kPieces[random() % std::size(kPieces)];
                text += '"';
                for (const char character : cell)
                    text.append(character == '"' ? 2U : 1U, character);
                text += column < columns ? "\"," : "\"\n";
                expected += std::to_string(row) + "," + std::to_string(column) + "=[" + cell + "] ";
            }
        }
        ExpectCells({text, expected, rows, columns});
    }
}

}  // namespace
