#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "platform/ErrorLog.h"
#include "platform/JSONValue.h"

namespace {

constexpr int kEnd = CParseToken::kEndOfInput;
constexpr int kIdentifier = CParseToken::kIdentifier;
constexpr int kOther = CParseToken::kOtherCharacter;
constexpr int kString = JSONParseContext::kString;
constexpr int kInteger = JSONParseContext::kInteger;
constexpr int kReal = JSONParseContext::kReal;

TEST(JSONParseContext, PositionStaysInsideTheText) {
    COutputLogNull log;
    JSONParseContext context("abc", log);
    EXPECT_EQ(context.GetPosition(), 0U);
    context.SetPosition(2);
    EXPECT_EQ(context.GetPosition(), 2U);
    context.SetPosition(3);
    EXPECT_EQ(context.GetPosition(), 3U);
    context.SetPosition(4);
    EXPECT_EQ(context.GetPosition(), 3U);
    context.SetPosition(1);
    EXPECT_EQ(context.GetPosition(), 1U);
}

TEST(GetNextJSONToken, EachKind) {
    const struct {
        std::string_view text;
        int type;
        std::string_view token;  // the first
    } kRows[] = {
        {"", kEnd, ""},
        {" \t\r\n", kEnd, ""},
        {"abc", kIdentifier, "abc"},
        {"  B3)", kIdentifier, "B3"},
        {"_a1_b.c", kIdentifier, "_a1_b"},
        {"_", kIdentifier, "_"},
        {"\u00e4\u00f6 1", kIdentifier, "\u00e4\u00f6"},
        {"0", kInteger, "0"},
        {"-17)", kInteger, "-17"},
        {"007", kInteger, "007"},
        {"12ab", kInteger, "12"},
        {"1.", kInteger, "1"},
        {"1.x", kInteger, "1"},
        {"1e", kInteger, "1"},
        {"1e+", kInteger, "1"},
        {"1.5", kReal, "1.5"},
        {"-1.5E-3,", kReal, "-1.5E-3"},
        {"2e10", kReal, "2e10"},
        {"2E+1x", kReal, "2E+1"},
        {"1.5e", kReal, "1.5"},
        {"-", '-', "-"},
        {"-a", '-', "-"},
        {"--1", '-', "-"},
        {".5", '.', "."},
        {"+5", '+', "+"},
        {"(1)", '(', "("},
        {"$x", '$', "$"},
        {R"("a" b)", kString, R"("a")"},
        {R"("a\"b\\" c)", kString, R"("a\"b\\")"},
        {R"("")", kString, R"("")"},
        {"'a'", '\'', "'"},
        {"\xFF", kOther, "\xFF"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        COutputLogNull log;
        JSONParseContext context(row.text, log);
        CParseToken token;
        context.GetNextJSONToken(token);
        EXPECT_EQ(token.GetType(), row.type);
        EXPECT_EQ(token.GetText(), row.token);
        EXPECT_FALSE(token.IsNotTerminated());
    }
}

TEST(GetNextJSONToken, AnOpenStringReachesToTheEnd) {
    for (const std::string_view text : {R"("abc)", R"(")", R"("a\")", R"("a\)"}) {
        SCOPED_TRACE(text);
        COutputLogNull log;
        JSONParseContext context(text, log);
        CParseToken token;
        context.GetNextJSONToken(token);
        EXPECT_EQ(token.GetType(), kString);
        EXPECT_EQ(token.GetText(), text);
        EXPECT_TRUE(token.IsNotTerminated());
        context.GetNextJSONToken(token);
        EXPECT_EQ(token.GetType(), kEnd);
        EXPECT_FALSE(token.IsNotTerminated());
    }
}

TEST(GetNextJSONToken, GoesOnBehindTheLastOne) {
    COutputLogNull log;
    JSONParseContext context("Line ( 1\n) \u00e4 x", log);
    CParseToken token;
    std::string seen;
    for (context.GetNextJSONToken(token); !token.IsType(kEnd); context.GetNextJSONToken(token)) {
        const TextPosition& start = token.Location().GetStart();
        seen += token.GetText() + " " + std::to_string(start.line) + "," + std::to_string(start.column) + "; ";
    }
    EXPECT_EQ(seen, "Line 1,1; ( 1,6; 1 1,8; ) 2,1; \u00e4 2,3; x 2,5; ");
    EXPECT_EQ(context.GetPosition(), context.GetText().size());
    context.SetPosition(7);
    context.GetNextJSONToken(token);
    EXPECT_EQ(token.GetText(), "1");
    EXPECT_EQ(token.Location().GetStart().column, 8U);
    context.ReplaceToken(std::move(token));
    CParseToken again;
    context.GetNextJSONToken(again);
    EXPECT_EQ(again.GetText(), "1");
    EXPECT_EQ(again.GetType(), kInteger);
}

TEST(ReportError, NamesLineAndColumn) {
    COutputLogString log;
    JSONParseContext context("a\n\u00e4bc", log);
    context.ReportError(4, "Wrong.");
    context.SetFileName("Selector");
    context.ReportError(0, "Wrong.");
    EXPECT_EQ(log.GetText(), "JSON, line 2, column 2: Wrong.\nSelector(1,1): error: Wrong.\n");
    EXPECT_EQ(log.GetErrorCount(), 2U);
}

TEST(ParseProperty, GivesAValueOfItsOwn) {
    COutputLogString log;
    JSONParseContext context(R"({"a":[1]})", log);
    const JSONValue::Owner value(JSONValue::ParseProperty(context));
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(*value->Find("a"), JSONValue(JSONValue::Array{JSONValue(1.0)}));
    EXPECT_EQ(log.GetErrorCount(), 0U);
}

TEST(ParseProperty, FailsWithOneError) {
    COutputLogString log;
    JSONParseContext context("{\n\"a\":}", log);
    EXPECT_EQ(JSONValue::ParseProperty(context), nullptr);
    EXPECT_EQ(log.GetText(), "JSON, line 2, column 5: Invalid value.\n");
    EXPECT_EQ(log.GetErrorCount(), 1U);
}

}  // namespace
