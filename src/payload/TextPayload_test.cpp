#include "payload/TextPayload.h"

#include <string>

#include <gtest/gtest.h>

#include "payload/TextPayloadSelector.h"
#include "platform/ErrorLog.h"
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

/// "STATUS VALUE", then the lines of the log.
std::string Select(const TextPayload& payload, const TextPayloadSelector& selector) {
    COutputLogString output;
    CErrorLog log(&output);
    CValue value;
    const SelectStatus status = payload.SelectValue(selector, value, log);
    EXPECT_EQ(log.GetErrorCount() > 0, !output.GetText().empty());
    CValue again;
    EXPECT_EQ(payload.SelectValue(selector, again), status);
    EXPECT_EQ(Declare(again), Declare(value));
    return std::to_string(static_cast<int>(status)) + " " + Declare(value) + "\n" + output.GetText();
}

std::string Select(std::string_view content, const std::string& selector) {
    TextPayload payload("document");
    SetContent(payload, content);
    return Select(payload, Selector(selector));
}

TEST(SelectValue, WithoutSelectorTheWholeContentAsString) {
    TextPayload payload("document");
    EXPECT_EQ(Select(payload, TextPayloadSelector()), "0 STRING#''\n");
    SetContent(payload, "a\n\u00e4");
    EXPECT_EQ(Select(payload, TextPayloadSelector()), "0 STRING#'a$L\u00e4'\n");
    EXPECT_EQ(payload.GetName(), "document");
}

TEST(SelectValue, Lines) {
    const struct {
        std::string_view content;
        const char* selector;
        std::string_view expected;
    } kRows[] = {
        {"one\ntwo\nthree", "Line(1)", "0 WSTRING#\"one\"\n"},
        {"one\ntwo\nthree", "Line(3)", "0 WSTRING#\"three\"\n"},
        {"one\ntwo\nthree", "Line(4)", "2 Undefined\nerror 253: Line number '4', out of text document range.\n"},
        {"one\ntwo\nthree\n", "Line(3)", "0 WSTRING#\"three\"\n"},
        {"one\ntwo\nthree\n", "Line(4)", "2 Undefined\nerror 253: Line number '4', out of text document range.\n"},
        {"one", "Line(0)", "2 Undefined\nerror 253: Line number '0', out of text document range.\n"},
        {"one", "Line(-1)", "2 Undefined\nerror 253: Line number '-1', out of text document range.\n"},
        {"one", "Line(4294967297)", "2 Undefined\nerror 253: Line number '2147483647', out of text document range.\n"},
        {"", "Line(1)", "2 Undefined\nerror 253: Line number '1', out of text document range.\n"},
        {"\n", "Line(1)", "0 WSTRING#\"\"\n"},
        {"\n", "Line(2)", "2 Undefined\nerror 253: Line number '2', out of text document range.\n"},
        {"a\r\n\r\nb\r\n", "Line(2)", "0 WSTRING#\"\"\n"},
        {"a\r\n\r\nb\r\n", "Line(3)", "0 WSTRING#\"b\"\n"},
        {"\xEF\xBB\xBF\u00e4\n\U0001F600", "Line(1)", "0 WSTRING#\"\u00e4\"\n"},
        {"\xEF\xBB\xBF\u00e4\n\U0001F600", "Line(2)", "0 WSTRING#\"\U0001F600\"\n"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.selector);
        EXPECT_EQ(Select(row.content, row.selector), row.expected);
    }
}

TEST(SelectValue, Cells) {
    const struct {
        std::string_view content;
        const char* selector;
        std::string_view expected;
    } kRows[] = {
        {"a,b\nc", "CSV(A1)", "0 WSTRING#\"a\"\n"},
        {"a,b\nc", "CSV(B1)", "0 WSTRING#\"b\"\n"},
        {"a,b\nc", "CSV(A2)", "0 WSTRING#\"c\"\n"},
        {"a,b\nc", "CSV(B2)", "2 Undefined\n"},
        {"a,b\nc", "CSV(A3)", "2 Undefined\n"},
        {"a,b\nc", "CSV(XFD1048576)", "2 Undefined\n"},
        {"", "CSV(A1)", "2 Undefined\n"},
        {"1,\"x,y\"", "CSV(A1)", "0 WSTRING#\"1\"\n"},
        {"1,\"x,y\"", "CSV(B1)", "0 WSTRING#\"x,y\"\n"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.selector);
        EXPECT_EQ(Select(row.content, row.selector), row.expected);
    }
}

TEST(SelectValue, SelectorWithoutContentFindsNothing) {
    TextPayload payload("document");
    SetContent(payload, "[1]");
    TextPayloadSelector selector;
    selector.SetReadSelector(ReadSelectorType::CSV, "?", 1);
    EXPECT_EQ(Select(payload, selector), "2 Undefined\n");
    selector.SetReadSelector(ReadSelectorType::JSONata, "(", 1);
    EXPECT_EQ(Select(payload, selector), "2 Undefined\n");
}

TEST(SelectValue, FailureLeavesTheValue) {
    TextPayload payload("document");
    SetContent(payload, "a");
    for (const char* text : {"Line(2)", "CSV(A2)"}) {
        CValue value(7);
        EXPECT_EQ(payload.SelectValue(Selector(text), value), SelectStatus::Failed);
        EXPECT_EQ(Declare(value), "DINT#7");
    }
}

TEST(TextPayload, ContentFromAStringReplacesAndKeepsItsBytes) {
    TextPayload payload("document");
    SetContent(payload, "before");
    constexpr std::string_view kBytes = "a\xFF\u00e4";
    CValue text;
    text.SetFromVMString(reinterpret_cast<const unsigned char*>(kBytes.data()), kBytes.size());
    payload.SetContentFromValue(&text);
    EXPECT_EQ(payload.GetContent(), "a\xFF\u00e4");
    EXPECT_EQ(Select(payload, TextPayloadSelector()), "0 STRING#'a$FF\u00e4'\n");
    for (CValue other : {CValue(5), CValue("w", ElementaryType::WString), CValue()}) {
        payload.SetContentFromValue(&other);
        EXPECT_EQ(payload.GetContent(), "a\xFF\u00e4");
    }
}

TEST(TextPayload, ContentFromTextsIsAppended) {
    TextPayload payload("document");
    SetContent(payload,
               "\xEF\xBB\xBF"
               "a\xFF\u00e4");
    EXPECT_EQ(payload.GetContent(), "a\uFFFD\u00e4");
    SetContent(payload, std::string_view("b\0c", 3));
    EXPECT_EQ(payload.GetContent(), std::string("a\uFFFD\u00e4") + std::string("b\0c", 3));
    CTextOutputString output;
    output.Write("\u20acd\xC3");
    payload.SetContentFromTextOutputString(output);
    EXPECT_EQ(payload.GetContent(), std::string("a\uFFFD\u00e4") + std::string("b\0c", 3) + "\u20acd\uFFFD");
}

TEST(TextPayload, CodePointsAreEncoded) {
    const struct {
        int codePoint;
        std::string_view encoded;
    } kRows[] = {
        {'a', "a"},         {0xE4, "\u00e4"},     {0x20AC, "\u20ac"}, {0x1F600, "\U0001F600"},
        {0xD800, "\uFFFD"}, {0x110000, "\uFFFD"}, {-1, "\uFFFD"},
    };
    for (const auto& row : kRows) {
        TextPayload payload("document");
        payload.AppendCodePoint(row.codePoint);
        EXPECT_EQ(payload.GetContent(), row.encoded);
    }
}

TEST(TextPayload, CachesStayUntilItIsCleared) {
    for (const char* text : {"Line(1)", "CSV(A1)"}) {
        SCOPED_TRACE(text);
        const TextPayloadSelector selector = Selector(text);
        TextPayload payload("document");
        SetContent(payload, "a");
        EXPECT_EQ(Select(payload, selector), "0 WSTRING#\"a\"\n");
        CValue other("b", ElementaryType::String);
        payload.SetContentFromValue(&other);
        EXPECT_EQ(Select(payload, selector), "0 WSTRING#\"a\"\n");
        payload.ClearPayload();
        EXPECT_EQ(payload.GetContent(), "");
        payload.SetContentFromValue(&other);
        EXPECT_EQ(Select(payload, selector), "0 WSTRING#\"b\"\n");
        EXPECT_EQ(payload.GetName(), "document");
    }
}

TEST(TextPayload, OneDocumentServesEverySelector) {
    TextPayload payload("document");
    SetContent(payload, "a,b\nc");
    EXPECT_EQ(Select(payload, Selector("CSV(B1)")), "0 WSTRING#\"b\"\n");
    EXPECT_EQ(Select(payload, Selector("Line(1)")), "0 WSTRING#\"a,b\"\n");
    EXPECT_EQ(Select(payload, TextPayloadSelector()), "0 STRING#'a,b$Lc'\n");
    EXPECT_EQ(Select(payload, Selector("CSV(A2)")), "0 WSTRING#\"c\"\n");
}

TEST(SelectValue, LongTextsAreCutToWhatAValueHolds) {
    TextPayload payload("document");
    SetContent(payload, std::string(70000, 'x'));
    CValue value;
    EXPECT_EQ(payload.SelectValue(Selector("Line(1)"), value), SelectStatus::Success);
    std::string text;
    value.GetStringValue(text);
    EXPECT_EQ(text.size(), 65535U);
    EXPECT_EQ(payload.SelectValue(TextPayloadSelector(), value), SelectStatus::Success);
    value.GetStringValue(text);
    EXPECT_EQ(text.size(), 65535U);
    payload.ClearPayload();
    SetContent(payload, std::string(65534, 'x') + "\u00e4");
    EXPECT_EQ(payload.SelectValue(TextPayloadSelector(), value), SelectStatus::Success);
    value.GetStringValue(text);
    EXPECT_EQ(text, std::string(65534, 'x'));
}

}  // namespace
