#include "payload/TextPayloadSelector.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

#include "platform/CellReference.h"
#include "platform/ErrorLog.h"
#include "platform/TextInput.h"
#include "platform/TextOutput.h"

namespace {

struct Parsed {
    bool ok;
    TextPayloadSelector selector;
    std::string errors;
};

Parsed Parse(std::string_view text) {
    COutputLogString log;
    TextInputTNString input(text);
    Parsed parsed{};
    parsed.ok = parsed.selector.ParseSelector(&input, &log);
    parsed.errors = log.GetText();
    EXPECT_EQ(log.GetErrorCount(), parsed.ok ? 0U : 1U);
    return parsed;
}

std::string Format(const TextPayloadSelector& selector) {
    CTextOutputString output;
    selector.FormatSelector(output);
    return output.TakeText();
}

std::string FormatContent(const TextPayloadSelector& selector) {
    CTextOutputString output;
    selector.FormatSelectorContent(output);
    return output.TakeText();
}

TEST(ParseSelector, LinesAndCells) {
    const struct {
        std::string_view text;
        ReadSelectorType type;
        std::string_view printed;
        std::string_view content;
        std::string_view documentType;
    } kRows[] = {
        {"Line(1)", ReadSelectorType::Line, "Line(1)", "Line(1)", "text/plain"},
        {"LINE(0)", ReadSelectorType::Line, "Line(0)", "Line(0)", "text/plain"},
        {" line ( 17 ) ", ReadSelectorType::Line, "Line(17)", "Line(17)", "text/plain"},
        {"Line(-1)", ReadSelectorType::Line, "Line(-1)", "Line(-1)", "text/plain"},
        {"Line(007)", ReadSelectorType::Line, "Line(7)", "Line(7)", "text/plain"},
        {"Line(2147483647)", ReadSelectorType::Line, "Line(2147483647)", "Line(2147483647)", "text/plain"},
        {"Line(2147483648)", ReadSelectorType::Line, "Line(2147483647)", "Line(2147483647)", "text/plain"},
        {"Line(-99999999999999999999)", ReadSelectorType::Line, "Line(-2147483648)", "Line(-2147483648)", "text/plain"},
        {"Line(1) and more", ReadSelectorType::Line, "Line(1)", "Line(1)", "text/plain"},
        {"CSV(A1)", ReadSelectorType::CSV, "CSV(A1)", "A1", "text/csv"},
        {"csv\n(\txfd1048576\r\n)", ReadSelectorType::CSV, "CSV(XFD1048576)", "XFD1048576", "text/csv"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        const Parsed parsed = Parse(row.text);
        EXPECT_TRUE(parsed.ok) << parsed.errors;
        EXPECT_EQ(parsed.selector.GetReadSelectorType(), row.type);
        EXPECT_EQ(Format(parsed.selector), row.printed);
        EXPECT_EQ(FormatContent(parsed.selector), row.content);
        EXPECT_EQ(parsed.selector.GetRequiredDocumentType(), row.documentType);
        EXPECT_EQ(parsed.selector.GetJSONReadSelector(), nullptr);
        EXPECT_EQ(parsed.selector.GetCSVReadSelector() != nullptr, row.type == ReadSelectorType::CSV);
    }
}

TEST(ParseSelector, ErrorsNamePlaceAndText) {
    const struct {
        std::string_view text;
        std::string_view error;
    } kRows[] = {
        {"", "Selector(1,1): error: Unexpected end of input, expected (."},
        {"(1)", "Selector(1,1): error: Unexpected '(', expected (."},
        {"5", "Selector(1,1): error: Unexpected '5', expected (."},
        {R"("Line"(1))", R"(Selector(1,1): error: Unexpected '"Line"', expected (.)"},
        {"Line", "Selector(1,5): error: Unexpected end of input, expected (."},
        {"FOO", "Selector(1,4): error: Unexpected end of input, expected (."},
        {"Line 1", "Selector(1,6): error: Unexpected '1', expected (."},
        {"FOO(1)", "Selector(1,1): error 230: Selector 'FOO', invalid."},
        {"\n Lines(1)", "Selector(2,2): error 230: Selector 'Lines', invalid."},
        {"Line1(1)", "Selector(1,1): error 230: Selector 'Line1', invalid."},
        {"LINE(x)", "Selector(1,6): error 231: Line number 'x', invalid. An integer value was expected here."},
        {"Line(1.5)", "Selector(1,6): error 231: Line number '1.5', invalid. An integer value was expected here."},
        {"Line(1e2)", "Selector(1,6): error 231: Line number '1e2', invalid. An integer value was expected here."},
        {"Line(+1)", "Selector(1,6): error 231: Line number '+', invalid. An integer value was expected here."},
        {"Line(\"1\")", "Selector(1,6): error 231: Line number '\"1\"', invalid. An integer value was expected here."},
        {"Line()", "Selector(1,6): error 231: Line number ')', invalid. An integer value was expected here."},
        {"Line(", "Selector(1,6): error 231: Line number '', invalid. An integer value was expected here."},
        {"Line(1", "Selector(1,7): error: Unexpected end of input, expected )."},
        {"Line(1]", "Selector(1,7): error: Unexpected ']', expected )."},
        {"Line(1x)", "Selector(1,7): error: Unexpected 'x', expected )."},
        {"CSV()", "Selector(1,5): error: Unexpected ')', expected Cell Reference."},
        {"CSV(A0)", "Selector(1,5): error: Unexpected 'A0', expected Cell Reference."},
        {"CSV(1)", "Selector(1,5): error: Unexpected '1', expected Cell Reference."},
        {"CSV(XFE1)", "Selector(1,5): error: Unexpected 'XFE1', expected Cell Reference."},
        {"CSV(\"A1\")", "Selector(1,5): error: Unexpected '\"A1\"', expected Cell Reference."},
        {"CSV(A1:B2)", "Selector(1,7): error: Unexpected ':', expected )."},
        {"CSV(A1", "Selector(1,7): error: Unexpected end of input, expected )."},
        {"CSV", "Selector(1,4): error: Unexpected end of input, expected (."},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        const Parsed parsed = Parse(row.text);
        EXPECT_FALSE(parsed.ok);
        EXPECT_EQ(parsed.errors, std::string(row.error) + "\n");
        EXPECT_EQ(parsed.selector.GetReadSelectorType(), ReadSelectorType::None);
        EXPECT_EQ(parsed.selector.GetCSVReadSelector(), nullptr);
    }
}

TEST(ParseSelector, FailureDropsWhatWasThere) {
    TextPayloadSelector selector;
    EXPECT_TRUE(selector.ParseSelector("CSV(B3)"));
    EXPECT_EQ(selector.GetCSVReadSelector()->GetRow(), 2U);
    EXPECT_EQ(selector.GetCSVReadSelector()->GetColumn(), 1U);
    EXPECT_FALSE(selector.ParseSelector("Line(x)"));
    EXPECT_EQ(selector.GetReadSelectorType(), ReadSelectorType::None);
    EXPECT_EQ(selector.GetCSVReadSelector(), nullptr);
    EXPECT_EQ(Format(selector), "");
    EXPECT_EQ(FormatContent(selector), "");
}

TEST(ParseSelector, LogMayBeMissing) {
    TextInputTNString input("FOO(1)");
    TextPayloadSelector selector;
    EXPECT_FALSE(selector.ParseSelector(&input, nullptr));
    EXPECT_FALSE(selector.ParseSelector(nullptr, nullptr));
}

TEST(ParseSelector, OtherEncodingsReadTheSame) {
    const unsigned short kUnits[] = {0xFEFF, 'C', 'S', 'V', '(', 'b', '2', ')'};
    TextInputU16String input(kUnits, std::size(kUnits));
    TextPayloadSelector selector;
    EXPECT_TRUE(selector.ParseSelector(&input, nullptr));
    EXPECT_EQ(Format(selector), "CSV(B2)");
}

TEST(TextPayloadSelector, BeginsAndClearsAsNone) {
    TextPayloadSelector selector;
    EXPECT_EQ(selector.GetReadSelectorType(), ReadSelectorType::None);
    EXPECT_EQ(selector.GetLineNumber(), 0);
    EXPECT_STREQ(selector.GetRequiredDocumentType(), "application/octet-stream");
    EXPECT_TRUE(selector.ParseSelector("CSV(A1)"));
    selector.Clear();
    EXPECT_EQ(selector.GetReadSelectorType(), ReadSelectorType::None);
    EXPECT_EQ(selector.GetCSVReadSelector(), nullptr);
    EXPECT_STREQ(selector.GetRequiredDocumentType(), "application/octet-stream");
    EXPECT_EQ(Format(selector), "");
}

TEST(SetReadSelector, SetsTypeAndContent) {
    TextPayloadSelector selector;
    selector.SetReadSelector(ReadSelectorType::CSV, "c4 and more", 2);
    EXPECT_EQ(Format(selector), "CSV(C4)");
    selector.SetReadSelector(ReadSelectorType::Line, "3", 1);
    EXPECT_EQ(selector.GetReadSelectorType(), ReadSelectorType::Line);
    EXPECT_EQ(selector.GetCSVReadSelector(), nullptr);
    EXPECT_EQ(Format(selector), "Line(0)");
    selector.SetReadSelector(ReadSelectorType::None, nullptr, 0);
    EXPECT_EQ(selector.GetReadSelectorType(), ReadSelectorType::None);
}

TEST(SetReadSelector, BadContentLeavesTheTypeWithoutIt) {
    TextPayloadSelector selector;
    selector.SetReadSelector(ReadSelectorType::CSV, "A1 ", 3);
    EXPECT_EQ(selector.GetReadSelectorType(), ReadSelectorType::CSV);
    EXPECT_EQ(selector.GetCSVReadSelector(), nullptr);
    EXPECT_EQ(Format(selector), "CSV()");
    EXPECT_EQ(FormatContent(selector), "");
    EXPECT_STREQ(selector.GetRequiredDocumentType(), "text/csv");
}

TEST(ParseSelector, PrintsBackWhatWasParsed) {
    std::mt19937 random(511);
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        if (round % 2 == 0) {
            text = "Line(" + std::to_string(static_cast<int>(random())) + ")";
        } else {
            CTextOutputString output;
            const unsigned int row = static_cast<unsigned int>(random()) % CellReference::kMaxRows;
            const unsigned int column = static_cast<unsigned int>(random()) % CellReference::kMaxColumns;
            CellReference(row, column).PrintCellReference(output);
            text = "CSV(" + output.GetText() + ")";
        }
        TextPayloadSelector selector;
        ASSERT_TRUE(selector.ParseSelector(text)) << text;
        ASSERT_EQ(Format(selector), text);
    }
}

}  // namespace
