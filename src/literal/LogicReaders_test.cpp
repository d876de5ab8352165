#include <climits>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "literal/LogicParseContext.h"
#include "platform/TextInput.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

// The typed readers, and literal tokens as values.

namespace {

struct Reader {
    explicit Reader(std::string_view text) : source(text), input(source), context(&input, &log) {}

    std::string source;
    TextInputTNString input;
    COutputLogString log;
    CLogicParseContext context;
};

TEST(GetStringTokenAsString, JoinsDoubleQuotedStrings) {
    struct Row {
        const char* source;
        const char* text;
        const char* next;  // the token behind
    };
    const Row rows[] = {
        {"\"a\"", "a", ""},
        {" \"a\" + \"b\"+\"c\" x", "abc", "x"},
        {"\"\";", "", ";"},
        {"\"a$$b$\"c$L$0041\"", "a$b\"c\nA", ""},
        {"\"\xC3\xA4$D83D$DE00\"", "\xC3\xA4\xF0\x9F\x98\x80", ""},
        {"WSTRING#\"a\"+\"b\"", "ab", ""},
        {"\"a\" \"b\"", "a", "\"b\""},
        {"\"a$Xb$12\"", "a$Xb$12", ""},  // escapes that are not valid stand for themselves
        {"\"a'b\"", "a'b", ""},
        {"\"open", "open", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.source);
        Reader reader(row.source);
        std::string text = "before";
        EXPECT_TRUE(reader.context.GetStringTokenAsString(text));
        EXPECT_EQ(text, row.text);
        CLogicToken next;
        reader.context.GetNextLogicTokenAfterWhitespace(next);
        EXPECT_EQ(next.GetText(), row.next);
        EXPECT_EQ(reader.log.GetText(), "");
    }
}

TEST(GetStringTokenAsString, WantsAStringAtFirstAndBehindAPlus) {
    struct Row {
        const char* source;
        const char* line;
    };
    const Row rows[] = {
        {"'a'", "(1,1): error: Unexpected ''a'', expected String.\n"},
        {"\n x", "(2,2): error: Unexpected 'x', expected String.\n"},
        {"", "(1,1): error: Unexpected end of input, expected String.\n"},
        {"\"a\" + 5", "(1,7): error: Unexpected '5', expected String.\n"},
    };
    for (const Row& row : rows) {
        Reader reader(row.source);
        std::string text;
        EXPECT_FALSE(reader.context.GetStringTokenAsString(text));
        EXPECT_EQ(reader.log.GetText(), row.line);
        EXPECT_EQ(reader.log.GetErrorCount(), 1U);
    }
}

TEST(ReadSingleStringToken, AppendsOneString) {
    Reader reader("\"b\" + \"c\"");
    std::string text = "a";
    EXPECT_TRUE(reader.context.ReadSingleStringToken(text));
    EXPECT_EQ(text, "ab");
    EXPECT_FALSE(reader.context.ReadSingleStringToken(text));
    EXPECT_EQ(text, "ab");
}

TEST(GetIntegerTokenAsLong, ReadsInBaseTen) {
    struct Row {
        const char* source;
        long value;
    };
    const Row rows[] = {
        {"0", 0},
        {"12;", 12},
        {"-12", -12},
        {"+7", 7},
        {" - 5", -5},
        {"16#FF", 16},
        {"1_000", 1},
        {"INT#5", 0},
        {"99999999999999999999", LONG_MAX},
        {"-99999999999999999999", LONG_MIN},
    };
    for (const Row& row : rows) {
        Reader reader(row.source);
        long value = 77;
        EXPECT_TRUE(reader.context.GetIntegerTokenAsLong(value)) << row.source;
        EXPECT_EQ(value, row.value) << row.source;
    }
}

TEST(GetIntegerTokenAsLong, WantsAnInteger) {
    struct Row {
        const char* source;
        const char* line;
    };
    const Row rows[] = {
        {"x", "(1,1): error: Unexpected 'x', expected Integer value.\n"},
        {"1.5", "(1,1): error: Unexpected '1.5', expected Integer value.\n"},
        {"- x", "(1,3): error: Unexpected 'x', expected Integer value.\n"},
        {"--1", "(1,2): error: Unexpected '-', expected Integer value.\n"},
        {"-", "(1,2): error: Unexpected end of input, expected Integer value.\n"},
    };
    for (const Row& row : rows) {
        Reader reader(row.source);
        long value = 77;
        EXPECT_FALSE(reader.context.GetIntegerTokenAsLong(value));
        EXPECT_EQ(value, 77);
        EXPECT_EQ(reader.log.GetText(), row.line);
    }
}

TEST(GetBooleanTokenAsBool, TakesTheTwoKeywords) {
    Reader reader("TRUE false BOOL#1 1");
    bool value = false;
    EXPECT_TRUE(reader.context.GetBooleanTokenAsBool(value));
    EXPECT_TRUE(value);
    EXPECT_TRUE(reader.context.GetBooleanTokenAsBool(value));
    EXPECT_FALSE(value);
    value = true;
    EXPECT_FALSE(reader.context.GetBooleanTokenAsBool(value));
    EXPECT_FALSE(reader.context.GetBooleanTokenAsBool(value));
    EXPECT_TRUE(value);
    EXPECT_EQ(reader.log.GetText(),
              "(1,12): error: Unexpected 'BOOL#1', expected TRUE or FALSE.\n"
              "(1,19): error: Unexpected '1', expected TRUE or FALSE.\n");
}

// The first token of a source as a value.
struct TokenValue {
    TokenValue(std::string_view text, ElementaryType wanted) : source(text), input(source), context(&input, nullptr) {
        context.SetFileName("a.st");
        CLogicToken token;
        context.GetNextLogicTokenAfterWhitespace(token);
        parsed = value.InitialiseFromToken(log, token, wanted);
    }

    std::string source;
    TextInputTNString input;
    CLogicParseContext context;
    CErrorLog log;
    CValue value;
    bool parsed;
};

std::string DeclarationOf(const CValue& value) {
    CTextOutputString output;
    value.GetDeclaration(output);
    return output.TakeText();
}

TEST(InitialiseFromToken, PicksTheParserByTheToken) {
    struct Row {
        const char* source;
        ElementaryType wanted;
        const char* declaration;
    };
    const ElementaryType none = ElementaryType::Undefined;
    const Row rows[] = {
        {"'it$'s'", none, "STRING#'it$'s'"},
        {"'a'", ElementaryType::Int, "STRING#'a'"},  // the wanted type is for numbers
        {"STRING#'a'", none, "STRING#'a'"},
        {"CHAR#'a'", none, "CHAR#'a'"},
        {"\"a\"", none, "WSTRING#\"a\""},
        {"WCHAR#\"a\"", none, "WCHAR#\"a\""},
        {"5", none, "DINT#5"},
        {"5", ElementaryType::Int, "INT#5"},
        {"5", ElementaryType::Real, "REAL#5.0"},
        {"5", ElementaryType::LReal, "LREAL#5.0"},
        {"SINT#-5", none, "SINT#-5"},
        {"16#FF", ElementaryType::Word, "WORD#16#FF"},
        {"1.5", none, "LREAL#1.5"},
        {"1.5", ElementaryType::Real, "REAL#1.5"},
        {"REAL#1", none, "REAL#1.0"},
        {"T#1h30m", none, "T#1h30m"},
        {"D#2024-01-31", none, "D#2024-01-31"},
        {"DT#2024-01-02-10:20:30", none, "DT#2024-01-02-10:20:30.000"},
        {"BOOL#1", none, "BOOL#TRUE"},
        {"TRUE", ElementaryType::Int, "BOOL#TRUE"},
        {"false", none, "BOOL#FALSE"},
        {"NULL", none, "POINTER#Null"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.source);
        const TokenValue result(row.source, row.wanted);
        EXPECT_TRUE(result.parsed);
        EXPECT_EQ(DeclarationOf(result.value), row.declaration);
        EXPECT_EQ(result.log.GetErrorCount(), 0U);
    }
}

TEST(InitialiseFromToken, TimeOfDay) {
    const TokenValue result("TOD#12:30:15", ElementaryType::Undefined);
    EXPECT_TRUE(result.parsed);
    EXPECT_EQ(result.value.GetType(), ElementaryType::TimeOfDay);
    EXPECT_EQ(result.value.GetPayload<std::uint32_t>(), ((12U * 60 + 30) * 60 + 15) * 1000);
}

TEST(InitialiseFromToken, MessagesHaveTheTokensPlace) {
    struct Row {
        const char* source;
        std::uint32_t id;
        const char* location;
        const char* text;
    };
    const Row rows[] = {
        {"\n  x1", 252, "a.st(2,3)", "'x1' is not a valid literal."},
        {"IF", 252, "a.st(1,1)", "'IF' is not a valid literal."},
        {":=", 252, "a.st(1,1)", "':=' is not a valid literal."},
        {"(* a *)", 252, "a.st(1,1)", "'(* a *)' is not a valid literal."},
        {"%'a'", 252, "a.st(1,1)", "'%'a'' is not a valid literal."},
        {"", 252, "a.st(1,1)", "'' is not a valid literal."},
        {"INT#", 224, "a.st(1,1)", "'INT#' is not a valid integer."},
        {" 'a$X'", 207, "a.st(1,2)", "Invalid string escape sequence '$X'."},
        {"STRING#\"a\"", 250, "a.st(1,1)", "Expected single quote (') after type prefix 'STRING'."},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.source);
        const TokenValue result(row.source, ElementaryType::Undefined);
        EXPECT_FALSE(result.parsed);
        ASSERT_EQ(result.log.GetEntries().size(), 1U);
        EXPECT_EQ(result.log.GetEntries()[0].id, row.id);
        EXPECT_EQ(result.log.GetEntries()[0].location, row.location);
        EXPECT_EQ(result.log.GetEntries()[0].text, row.text);
    }
}

TEST(InitialiseFromToken, WhatIsNoLiteralLeavesTheValue) {
    CErrorLog log;
    CValue value(ElementaryType::Int);
    EXPECT_FALSE(value.InitialiseFromToken(log, CLogicToken("x", CErrorLocationTextRange()), ElementaryType::Int));
    EXPECT_EQ(value.GetType(), ElementaryType::Int);
}

}  // namespace
