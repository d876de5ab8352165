#include <string>

#include <gtest/gtest.h>

#include "payload/TextPayload.h"
#include "payload/TextPayloadSelector.h"
#include "platform/ErrorLog.h"
#include "platform/JSONataExpr.h"
#include "platform/TextInput.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

namespace {

void SetContent(TextPayload& payload, std::string_view text) {
    TextInputTNString input(text);
    payload.SetContentFromTextInput(&input);
}

TextPayloadSelector Selector(const std::string& text) {
    TextPayloadSelector selector;
    EXPECT_TRUE(selector.ParseSelector(text)) << text;
    return selector;
}

std::string Declare(const CValue& value) {
    CTextOutputString output;
    value.GetDeclaration(output);
    return output.TakeText();
}

std::string Format(const TextPayloadSelector& selector) {
    CTextOutputString output;
    selector.FormatSelector(output);
    return output.TakeText();
}

struct Selected {
    SelectStatus status;
    std::string value;
    std::string log;
    unsigned int errors;
};

Selected Select(const TextPayload& payload, const TextPayloadSelector& selector) {
    COutputLogString output;
    CErrorLog log(&output);
    CValue value;
    const SelectStatus status = payload.SelectValue(selector, value, log);
    EXPECT_TRUE(log.GetEntries().empty());
    return {status, Declare(value), output.GetText(), log.GetErrorCount()};
}

TEST(JSONataSelector, GivesAValueOfTheTypeInTheDocument) {
    const struct {
        std::string_view content;
        const char* selector;
        std::string_view value;
    } kRows[] = {
        {R"({"a":{"b":2.5}})", "JSONata(a.b)", "LREAL#2.5"},
        {R"({"a":{"b":2.5}})", "jsonata ( a . b ) ", "LREAL#2.5"},
        {R"({"a":true})", "JSONata(a)", "BOOL#TRUE"},
        {R"({"a":"\u00e4$"})", "JSONata(a)", "WSTRING#\"\u00e4$$\""},
        {R"({"a":null})", "JSONata(a)", "WSTRING#\"null\""},
        {R"({"a":[1,{"b":false}]})", "JSONata(a)", "WSTRING#\"[1,{$\"b$\":false}]\""},
        {R"([3,4])", "JSONata($[1])", "LREAL#4.0"},
        {"7", "JSONata((1 + $) * 2)", "LREAL#16.0"},
        {"\xEF\xBB\xBF{\"a\":1}", "JSONata(a)", "LREAL#1.0"},
        {"{}", "JSONata(\")\")", "WSTRING#\")\""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.selector);
        TextPayload payload("document");
        SetContent(payload, row.content);
        const Selected selected = Select(payload, Selector(row.selector));
        EXPECT_EQ(selected.status, SelectStatus::Success);
        EXPECT_EQ(selected.value, row.value);
        EXPECT_EQ(selected.log, "");
        EXPECT_EQ(selected.errors, 0U);
    }
}

TEST(JSONataSelector, NothingFoundIsNoErrorAndLeavesTheValue) {
    TextPayload payload("document");
    SetContent(payload, R"({"a":1})");
    const Selected selected = Select(payload, Selector("JSONata(b.c)"));
    EXPECT_EQ(selected.status, SelectStatus::Failed);
    EXPECT_EQ(selected.errors, 0U);
    EXPECT_EQ(selected.log, "");
    CValue value(7);
    EXPECT_EQ(payload.SelectValue(Selector("JSONata(b.c)"), value), SelectStatus::Failed);
    EXPECT_EQ(Declare(value), "DINT#7");
}

TEST(JSONataSelector, AnErrorOfTheExpressionIsCounted) {
    TextPayload payload("document");
    SetContent(payload, R"({"a":"x"})");
    const Selected selected = Select(payload, Selector("JSONata(a + 1)"));
    EXPECT_EQ(selected.status, SelectStatus::Failed);
    EXPECT_EQ(selected.errors, 1U);
    EXPECT_NE(selected.log.find("T2001"), std::string::npos) << selected.log;
}

TEST(JSONataSelector, ABadDocumentIsReportedWithEachSelection) {
    TextPayload payload("document");
    SetContent(payload, "{\n\"a\":}");
    const TextPayloadSelector selector = Selector("JSONata(a)");
    COutputLogString output;
    CErrorLog log(&output);
    CValue value(7);
    EXPECT_EQ(payload.SelectValue(selector, value, log), SelectStatus::DocumentInvalid);
    EXPECT_EQ(log.GetErrorCount(), 1U);
    EXPECT_EQ(payload.SelectValue(selector, value, log), SelectStatus::DocumentInvalid);
    EXPECT_EQ(log.GetErrorCount(), 2U);
    EXPECT_EQ(output.GetText(), "JSON, line 2, column 5: Invalid value.\nJSON, line 2, column 5: Invalid value.\n");
    EXPECT_EQ(Declare(value), "DINT#7");
    EXPECT_EQ(payload.SelectValue(selector, value), SelectStatus::DocumentInvalid);
}

TEST(JSONataSelector, TheDocumentIsParsedOnce) {
    TextPayload payload("document");
    SetContent(payload, R"({"a":1})");
    EXPECT_EQ(Select(payload, Selector("JSONata(a)")).value, "LREAL#1.0");
    CValue broken("{", ElementaryType::String);
    payload.SetContentFromValue(&broken);
    EXPECT_EQ(Select(payload, Selector("JSONata(a)")).value, "LREAL#1.0");
    payload.ClearPayload();
    SetContent(payload, R"({"a":2})");
    EXPECT_EQ(Select(payload, Selector("JSONata(a)")).value, "LREAL#2.0");
}

TEST(JSONataSelector, ParseErrorsComeFromTheExpression) {
    for (const char* text : {"JSONata(", "JSONata()", "JSONata(a", "JSONata(a.)", "JSONata(a b)", "JSONata((a)"}) {
        SCOPED_TRACE(text);
        COutputLogString log;
        TextInputTNString input(text);
        TextPayloadSelector selector;
        EXPECT_FALSE(selector.ParseSelector(&input, &log));
        EXPECT_EQ(log.GetErrorCount(), 1U);
        EXPECT_EQ(selector.GetReadSelectorType(), ReadSelectorType::None);
        EXPECT_EQ(selector.GetJSONReadSelector(), nullptr);
    }
}

TEST(JSONataSelector, PrintsBackWhatWasParsed) {
    for (const char* text :
         {"JSONata(a)", "JSONata(a.b.c)", "JSONata(a[0])", "JSONata(a[b = 1].c)", "JSONata($sum(a.b))",
          "JSONata((1 + 2) * 3)", "JSONata(\"x)\")", "JSONata({\"a\": b})", "JSONata($map(a, function($x){$x * 2}))",
          "JSONata(a ? b : c)", "JSONata(`a b`.c)", "JSONata(a^(>b))", "JSONata(a{b: c})", "JSONata(/a\\)b/i)",
          "JSONata(($x := 1; $x + 1))", "JSONata(**.a)", "JSONata([1..3])", "JSONata(a ~> $sum)"}) {
        SCOPED_TRACE(text);
        const TextPayloadSelector selector = Selector(text);
        EXPECT_EQ(selector.GetReadSelectorType(), ReadSelectorType::JSONata);
        EXPECT_STREQ(selector.GetRequiredDocumentType(), "application/json");
        const std::string printed = Format(selector);
        const TextPayloadSelector again = Selector(printed);
        EXPECT_EQ(Format(again), printed);
        CTextOutputString content;
        selector.FormatSelectorContent(content);
        EXPECT_EQ("JSONata(" + content.GetText() + ")", printed);
    }
}

TEST(JSONataSelector, SetReadSelectorTakesTheWholeText) {
    TextPayload payload("document");
    SetContent(payload, R"({"a":1})");
    TextPayloadSelector selector;
    selector.SetReadSelector(ReadSelectorType::JSONata, "a + 1 and more", 5);
    ASSERT_NE(selector.GetJSONReadSelector(), nullptr);
    EXPECT_EQ(Select(payload, selector).value, "LREAL#2.0");
    selector.SetReadSelector(ReadSelectorType::JSONata, "a)", 2);
    EXPECT_EQ(selector.GetReadSelectorType(), ReadSelectorType::JSONata);
    EXPECT_EQ(selector.GetJSONReadSelector(), nullptr);
    EXPECT_EQ(Select(payload, selector).status, SelectStatus::Failed);
}

}  // namespace
