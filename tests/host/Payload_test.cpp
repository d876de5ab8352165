#include <string>

#include <gtest/gtest.h>

#include "literal/CSVDocument.h"
#include "payload/TextPayload.h"
#include "payload/TextPayloadSelector.h"
#include "platform/CellReference.h"
#include "platform/ErrorLog.h"
#include "platform/JSONValue.h"
#include "platform/JSONataExpr.h"
#include "platform/TextInput.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

namespace {

std::string Declaration(const CValue& value) {
    CTextOutputString text;
    value.GetDeclaration(text);
    return text.TakeText();
}

TEST(HostPayloadTest, SelectsFromADocument) {
    TextPayload payload("order");
    CTextOutputString written;
    written.Write("{\"id\": 7,\n\"part\": \"seal, black\"}");
    payload.SetContentFromTextOutputString(written);
    const struct {
        const char* selector;
        const char* value;
    } kRows[] = {
        {"JSONata(id)", "LREAL#7.0"},
        {"Line(2)", "WSTRING#\"$\"part$\": $\"seal, black$\"}\""},
        {"CSV(B1)", "WSTRING#\"\""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.selector);
        COutputLogString lines;
        TextInputTNString input(row.selector);
        TextPayloadSelector selector;
        ASSERT_TRUE(selector.ParseSelector(&input, &lines)) << lines.GetText();
        CTextOutputString printed;
        selector.FormatSelector(printed);
        EXPECT_EQ(printed.GetText(), row.selector);
        CErrorLog log(&lines);
        CValue value;
        EXPECT_EQ(payload.SelectValue(selector, value, log), SelectStatus::Success);
        EXPECT_EQ(Declaration(value), row.value);
    }
}

TEST(HostPayloadTest, PartsServeAlone) {
    TextInputTNString input("a,b");
    CSVDocument document;
    document.ReadCSVFileContent(input);
    const auto cell = CellReference::ParseCellReference("B1");
    ASSERT_NE(cell, nullptr);
    CValue value;
    EXPECT_TRUE(document.GetValue(cell->GetRow() + 1, cell->GetColumn() + 1, value));
    EXPECT_EQ(Declaration(value), "WSTRING#\"b\"");

    COutputLogString log;
    JSONParseContext context("[1] x", log);
    CParseToken token;
    context.GetNextJSONToken(token);
    EXPECT_EQ(token.GetText(), "[");
    EXPECT_EQ(JSONValue::ParseProperty(context), nullptr);
    const auto expression = JSONataExpr::ParseJSONataText("1 + 1", log);
    ASSERT_NE(expression, nullptr);
    value.SetFromJSONValue(&expression->Evaluate(log).GetValue());
    EXPECT_EQ(Declaration(value), "LREAL#2.0");
    EXPECT_EQ(log.GetErrorCount(), 1U);
}

}  // namespace
