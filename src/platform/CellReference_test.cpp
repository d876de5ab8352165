#include "platform/CellReference.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/TextOutput.h"

namespace {

std::string Print(const CellReference& reference) {
    CTextOutputString output;
    reference.PrintCellReference(output);
    return output.TakeText();
}

TEST(CellReference, ParsesColumnAndRow) {
    const struct {
        std::string_view text;
        unsigned int row;
        unsigned int column;
        std::string_view printed;
    } kRows[] = {
        {"A1", 0, 0, "A1"},
        {"B3", 2, 1, "B3"},
        {"b3", 2, 1, "B3"},
        {"Z10", 9, 25, "Z10"},
        {"AA1", 0, 26, "AA1"},
        {"Az1", 0, 51, "AZ1"},
        {"BA1", 0, 52, "BA1"},
        {"ZZ99", 98, 701, "ZZ99"},
        {"AAA1", 0, 702, "AAA1"},
        {"XFD1", 0, 16383, "XFD1"},
        {"A1048576", 1048575, 0, "A1048576"},
        {"xfd1048576", 1048575, 16383, "XFD1048576"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        const auto reference = CellReference::ParseCellReference(row.text);
        ASSERT_NE(reference, nullptr);
        EXPECT_EQ(reference->GetRow(), row.row);
        EXPECT_EQ(reference->GetColumn(), row.column);
        EXPECT_EQ(Print(*reference), row.printed);
    }
}

TEST(CellReference, RefusesWhatIsNone) {
    for (const std::string_view text : {"",
                                        "A",
                                        "1",
                                        "1A",
                                        "A0",
                                        "A01",
                                        "A-1",
                                        "A1 ",
                                        " A1",
                                        "A 1",
                                        "A1B",
                                        "$A$1",
                                        "A1:B2",
                                        "\"A1\"",
                                        "A1.5",
                                        "XFE1",
                                        "ZZZ1",
                                        "AAAA1",
                                        "A1048577",
                                        "A4294967297",
                                        "A99999999999999999999",
                                        "\u00c41",
                                        "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA1"})
        EXPECT_EQ(CellReference::ParseCellReference(text), nullptr) << text;
}

TEST(CellReference, EveryColumnReadsBack) {
    for (unsigned int column = 0; column < CellReference::kMaxColumns; ++column) {
        const CellReference reference(column * 64, column);
        const auto again = CellReference::ParseCellReference(Print(reference));
        ASSERT_NE(again, nullptr) << Print(reference);
        ASSERT_EQ(*again, reference);
    }
}

}  // namespace
