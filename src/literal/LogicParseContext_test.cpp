#include "literal/LogicParseContext.h"

#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "platform/TextInput.h"

namespace {

struct Token {
    int type;
    std::string text;
    unsigned int line = 1;
    unsigned int column = 1;
    bool terminated = true;

    friend bool operator==(const Token&, const Token&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Token& token) {
        return out << token.type << " <" << token.text << "> at " << token.line << ',' << token.column
                   << (token.terminated ? "" : " not terminated");
    }
};

Token Describe(const CLogicToken& token) {
    const TextPosition& start = token.Location().GetStart();
    return {token.GetType(), token.GetText(), start.line, start.column, !token.IsNotTerminated()};
}

struct Settings {
    bool lineEnds = false;
    bool dollar = false;
};

// All tokens after white space, without the end of input.
std::vector<Token> TokensOf(std::string_view text, Settings settings = {}) {
    TextInputTNString input(text);
    CLogicParseContext context(&input, nullptr);
    context.SetLineEndHandling(settings.lineEnds);
    context.AllowDollarInIdentifiers(settings.dollar);
    std::vector<Token> tokens;
    for (CLogicToken token;;) {
        context.GetNextLogicTokenAfterWhitespace(token);
        if (token.IsType(CParseToken::kEndOfInput)) return tokens;
        tokens.push_back(Describe(token));
    }
}

struct Row {
    std::string source;
    std::vector<Token> tokens;
};

void Check(const std::vector<Row>& rows, Settings settings = {}) {
    for (const Row& row : rows)
        EXPECT_EQ(TokensOf(row.source, settings), row.tokens) << "source: " << row.source;
}

constexpr int kIdent = 6;

TEST(LogicParseContext, Comments) {
    Check({
        {"(* a *)", {{128, "(* a *)"}}},
        {"(**)", {{128, "(**)"}}},
        {"(***)", {{128, "(***)"}}},
        {"(****)x", {{128, "(****)"}, {kIdent, "x", 1, 7}}},
        // The star of the opening does not close.
        {"(*)", {{128, "(*)", 1, 1, false}}},
        {"(*) *)", {{128, "(*) *)"}}},
        // No nesting: the first closing ends it.
        {"(* a (* b *) c *)", {{128, "(* a (* b *)"}, {kIdent, "c", 1, 14}, {42, "*", 1, 16}, {41, ")", 1, 17}}},
        {"(* a\nb *) c", {{128, "(* a\nb *)"}, {kIdent, "c", 2, 6}}},
        {"(* 'x' // { *)1", {{128, "(* 'x' // { *)"}, {133, "1", 1, 15}}},
        {"(* open", {{128, "(* open", 1, 1, false}}},
        {"(*", {{128, "(*", 1, 1, false}}},
        {"(* *", {{128, "(* *", 1, 1, false}}},
        {"( *", {{40, "("}, {42, "*", 1, 3}}},
        {"()", {{40, "("}, {41, ")", 1, 2}}},
    });
}

TEST(LogicParseContext, LineComments) {
    Check({
        {"// a b", {{129, "// a b"}}},
        {"//", {{129, "//"}}},
        {"// a\nb", {{129, "// a"}, {kIdent, "b", 2, 1}}},
        {"//\r\nb", {{129, "//"}, {kIdent, "b", 2, 1}}},
        {"// a\r\nb", {{129, "// a"}, {kIdent, "b", 2, 1}}},
        // A carriage return alone ends no line.
        {"// a\rb\nc", {{129, "// a\rb"}, {kIdent, "c", 2, 1}}},
        {"// a\r\r\nc", {{129, "// a\r"}, {kIdent, "c", 2, 1}}},
        {"// a\r", {{129, "// a\r"}}},
        {"// (* x\n*)", {{129, "// (* x"}, {42, "*", 2, 1}, {41, ")", 2, 2}}},
        {"/ /", {{47, "/"}, {47, "/", 1, 3}}},
        {"a///b", {{kIdent, "a"}, {129, "///b", 1, 2}}},
        {"/* c", {{47, "/"}, {42, "*", 1, 2}, {kIdent, "c", 1, 4}}},
    });
}

TEST(LogicParseContext, LineEndBehindALineComment) {
    const std::string source = "// a\nb";
    Check({{source, {{129, "// a"}, {2, "\n", 1, 5}, {kIdent, "b", 2, 1}}}}, {.lineEnds = true});
    Check({{"// a\r\n\nb", {{129, "// a"}, {2, "\r\n", 1, 5}, {2, "\n", 2, 1}, {kIdent, "b", 3, 1}}}},
          {.lineEnds = true});
    TextInputTNString input(source);
    CLogicParseContext context(&input, nullptr);
    CLogicToken token;
    context.GetNextLogicToken(token);
    EXPECT_FALSE(context.GetLineEndHandling());
    context.GetNextLogicToken(token);
    EXPECT_EQ(Describe(token), (Token{3, "\n", 1, 5}));
}

TEST(LogicParseContext, Pragmas) {
    Check({
        {"{ a }", {{130, "{ a }"}}},
        {"{}", {{130, "{}"}}},
        {"{a{b}c}", {{130, "{a{b}"}, {kIdent, "c", 1, 6}, {125, "}", 1, 7}}},
        {"{\n}x", {{130, "{\n}"}, {kIdent, "x", 2, 2}}},
        {"{'}'", {{130, "{'}"}, {131, "'", 1, 4, false}}},
        {"{ open", {{130, "{ open", 1, 1, false}}},
        {"{", {{130, "{", 1, 1, false}}},
    });
}

TEST(LogicParseContext, Strings) {
    Check({
        {"'it$'s'", {{131, "'it$'s'"}}},
        {"\"a$\"b\"", {{132, "\"a$\"b\""}}},
        {"''", {{131, "''"}}},
        {"\"\"", {{132, "\"\""}}},
        {"'a''b'", {{131, "'a'"}, {131, "'b'", 1, 4}}},
        {"'a$$'b", {{131, "'a$$'"}, {kIdent, "b", 1, 6}}},
        {"'a$$$'b'", {{131, "'a$$$'b'"}}},
        // The other kind of quote is a character like any other.
        {"'a\"b'", {{131, "'a\"b'"}}},
        {"\"a'b\"", {{132, "\"a'b\""}}},
        {"'(* a *)'", {{131, "'(* a *)'"}}},
        {"'a\nb'c", {{131, "'a\nb'"}, {kIdent, "c", 2, 3}}},
        {"'open", {{131, "'open", 1, 1, false}}},
        {"'", {{131, "'", 1, 1, false}}},
        {"'a$", {{131, "'a$", 1, 1, false}}},
        {"'a$'", {{131, "'a$'", 1, 1, false}}},
        {"\"open", {{132, "\"open", 1, 1, false}}},
        {"'$\xC3\xA4'x", {{131, "'$\xC3\xA4'"}, {kIdent, "x", 1, 5}}},
    });
    // The same with "$" allowed in identifiers.
    Check({{"'it$'s'", {{131, "'it$'s'"}}}, {"'a$$'b", {{131, "'a$$'"}, {kIdent, "b", 1, 6}}}}, {.dollar = true});
}

TEST(LogicParseContext, TypedStrings) {
    Check({
        {"STRING#'a$'b'", {{131, "STRING#'a$'b'"}}},
        {"string#\"a\"", {{131, "string#\"a\""}}},
        {"WSTRING#\"a\"", {{132, "WSTRING#\"a\""}}},
        {"WSTRING#'a'", {{132, "WSTRING#'a'"}}},
        {"CHAR#'a'", {{144, "CHAR#'a'"}}},
        {"WChar#\"a\"", {{145, "WChar#\"a\""}}},
        {"CHAR#'a", {{144, "CHAR#'a", 1, 1, false}}},
        {"STRING#5", {{kIdent, "STRING"}, {35, "#", 1, 7}, {133, "5", 1, 8}}},
        {"STRING# 'a'", {{kIdent, "STRING"}, {35, "#", 1, 7}, {131, "'a'", 1, 9}}},
        {"STRING#", {{kIdent, "STRING"}, {35, "#", 1, 7}}},
        {"STRING 'a'", {{kIdent, "STRING"}, {131, "'a'", 1, 8}}},
        {"XSTRING#'a'", {{kIdent, "XSTRING"}, {35, "#", 1, 8}, {131, "'a'", 1, 9}}},
    });
}

TEST(LogicParseContext, Identifiers) {
    Check({
        {"abc", {{kIdent, "abc"}}},
        {"_a1_", {{kIdent, "_a1_"}}},
        {"_", {{kIdent, "_"}}},
        {"_1", {{kIdent, "_1"}}},
        {"a1b2_3", {{kIdent, "a1b2_3"}}},
        {"1a", {{133, "1"}, {kIdent, "a", 1, 2}}},
        {"a.b", {{kIdent, "a"}, {46, ".", 1, 2}, {kIdent, "b", 1, 3}}},
        {"\xC3\x84nde_\xC3\xB6 x", {{kIdent, "\xC3\x84nde_\xC3\xB6"}, {kIdent, "x", 1, 8}}},
        {"a$b", {{kIdent, "a"}, {36, "$", 1, 2}, {kIdent, "b", 1, 3}}},
        {"FOO#5", {{kIdent, "FOO"}, {35, "#", 1, 4}, {133, "5", 1, 5}}},
        {"FOO #5", {{kIdent, "FOO"}, {35, "#", 1, 5}, {133, "5", 1, 6}}},
        // In front of "#" a keyword is a plain name.
        {"IF#5", {{kIdent, "IF"}, {35, "#", 1, 3}, {133, "5", 1, 4}}},
        {"IF #5", {{207, "IF"}, {35, "#", 1, 4}, {133, "5", 1, 5}}},
    });
}

TEST(LogicParseContext, DollarInIdentifiers) {
    Check(
        {
            {"a$b$", {{kIdent, "a$b$"}}},
            {"$a", {{kIdent, "$a"}}},
            {"$", {{kIdent, "$"}}},
            {"$1", {{kIdent, "$1"}}},
            {"IF$", {{kIdent, "IF$"}}},
        },
        {.dollar = true});
    Check({{"$a", {{36, "$"}, {kIdent, "a", 1, 2}}}});
}

TEST(LogicParseContext, Keywords) {
    Check({
        {"if IF If iF", {{207, "if"}, {207, "IF", 1, 4}, {207, "If", 1, 7}, {207, "iF", 1, 10}}},
        {"F_EDGE r_edge", {{171, "F_EDGE"}, {172, "r_edge", 1, 8}}},
        {"IFF", {{kIdent, "IFF"}}},
        {"END_IF;", {{209, "END_IF"}, {59, ";", 1, 7}}},
        {"TRUE FALSE NULL", {{191, "TRUE"}, {190, "FALSE", 1, 6}, {192, "NULL", 1, 12}}},
        {"ELSIF", {{kIdent, "ELSIF"}}},
        {"REF_TO REF", {{231, "REF_TO"}, {230, "REF", 1, 8}}},
    });
}

TEST(LogicParseContext, Operators) {
    Check({
        {":=", {{140, ":="}}},
        {": =", {{58, ":"}, {61, "=", 1, 3}}},
        {"=>", {{141, "=>"}}},
        {"= >", {{61, "="}, {62, ">", 1, 3}}},
        {":=>", {{140, ":="}, {62, ">", 1, 3}}},
        {"**", {{142, "**"}}},
        {"***", {{142, "**"}, {42, "*", 1, 3}}},
        {"* *", {{42, "*"}, {42, "*", 1, 3}}},
        {"<=", {{60, "<"}, {61, "=", 1, 2}}},
        {">=", {{62, ">"}, {61, "=", 1, 2}}},
        {"<>", {{60, "<"}, {62, ">", 1, 2}}},
        {"==>", {{61, "="}, {141, "=>", 1, 2}}},
        {"::=", {{58, ":"}, {140, ":=", 1, 2}}},
        {"..", {{46, "."}, {46, ".", 1, 2}}},
        {"+-/&^@,;?[]|~\\`!",
         {{43, "+"},
          {45, "-", 1, 2},
          {47, "/", 1, 3},
          {38, "&", 1, 4},
          {94, "^", 1, 5},
          {64, "@", 1, 6},
          {44, ",", 1, 7},
          {59, ";", 1, 8},
          {63, "?", 1, 9},
          {91, "[", 1, 10},
          {93, "]", 1, 11},
          {124, "|", 1, 12},
          {126, "~", 1, 13},
          {92, "\\", 1, 14},
          {96, "`", 1, 15},
          {33, "!", 1, 16}}},
    });
}

TEST(LogicParseContext, DirectlyLocatedVariables) {
    Check({
        {"%\"a.b\"", {{143, "%\"a.b\""}}},
        {"%'a'", {{143, "%'a'"}}},
        // No escapes, and only the same kind of quote closes.
        {"%'a$'b", {{143, "%'a$'"}, {kIdent, "b", 1, 6}}},
        {"%\"a'b\"", {{143, "%\"a'b\""}}},
        {"%'open", {{143, "%'open", 1, 1, false}}},
        {"%'", {{143, "%'", 1, 1, false}}},
        {"%IX1", {{37, "%"}, {kIdent, "IX1", 1, 2}}},
        {"%IX0.1", {{37, "%"}, {kIdent, "IX0", 1, 2}, {46, ".", 1, 5}, {133, "1", 1, 6}}},
        {"% 'a'", {{37, "%"}, {131, "'a'", 1, 3}}},
        {"%", {{37, "%"}}},
    });
}

TEST(LogicParseContext, Integers) {
    Check({
        {"0", {{133, "0"}}},
        {"1_000", {{133, "1_000"}}},
        {"1__", {{133, "1__"}}},
        {"16#FF_A0", {{133, "16#FF_A0"}}},
        {"2#1010", {{133, "2#1010"}}},
        {"16#fAb9c", {{133, "16#fAb9c"}}},
        {"16#FFG", {{133, "16#"}, {kIdent, "FFG", 1, 4}}},
        {"16#1FFG", {{133, "16#1"}, {kIdent, "FFG", 1, 5}}},
        {"16#A_G", {{133, "16#A_"}, {kIdent, "G", 1, 6}}},
        {"16#", {{133, "16#"}}},
        {"16##F", {{133, "16#"}, {35, "#", 1, 4}, {kIdent, "F", 1, 5}}},
        {"16#F.5", {{133, "16#F"}, {46, ".", 1, 5}, {133, "5", 1, 6}}},
        {"1_6#1", {{133, "1_6#1"}}},
        {"-5", {{45, "-"}, {133, "5", 1, 2}}},
        {"5abc", {{133, "5"}, {kIdent, "abc", 1, 2}}},
        {"16#\xC3\xA4", {{133, "16#"}, {kIdent, "\xC3\xA4", 1, 4}}},
        {"16#A\xC3\xA4", {{133, "16#"}, {kIdent, "A\xC3\xA4", 1, 4}}},
    });
}

TEST(LogicParseContext, Reals) {
    Check({
        {"1.5E-3", {{134, "1.5E-3"}}},
        {"1.5e10", {{134, "1.5e10"}}},
        {"1E5", {{134, "1E5"}}},
        {"1e+5", {{134, "1e+5"}}},
        {"1.", {{134, "1."}}},
        {"1_0.2_5", {{134, "1_0.2_5"}}},
        {"1..10", {{134, "1."}, {46, ".", 1, 3}, {133, "10", 1, 4}}},
        {"1.5.2", {{134, "1.5"}, {46, ".", 1, 4}, {133, "2", 1, 5}}},
        {"1.e5", {{134, "1.e5"}}},
        {"1e", {{134, "1e"}}},
        {"1e+", {{134, "1e+"}}},
        {"1e-x", {{134, "1e-"}, {kIdent, "x", 1, 4}}},
        // Digits only in an exponent.
        {"1e5_0", {{134, "1e5"}, {kIdent, "_0", 1, 4}}},
        {"1e_5", {{134, "1e"}, {kIdent, "_5", 1, 3}}},
        {"1e5.2", {{134, "1e5"}, {46, ".", 1, 4}, {133, "2", 1, 5}}},
        {"1e5e5", {{134, "1e5"}, {kIdent, "e5", 1, 4}}},
        {"1.5exit", {{134, "1.5"}, {202, "exit", 1, 4}}},
        {"1ee5", {{133, "1"}, {kIdent, "ee5", 1, 2}}},
        {".5", {{46, "."}, {133, "5", 1, 2}}},
        {"1 .5", {{133, "1"}, {46, ".", 1, 3}, {133, "5", 1, 4}}},
        {"1. 5", {{134, "1."}, {133, "5", 1, 4}}},
    });
}

TEST(LogicParseContext, TypedNumbers) {
    Check({
        {"INT#-5", {{133, "INT#-5"}}},
        {"int#+5", {{133, "int#+5"}}},
        {"INT#16#FF", {{133, "INT#16#FF"}}},
        {"INT#-16#FF", {{133, "INT#-16#FF"}}},
        {"INT#1.5", {{133, "INT#1"}, {46, ".", 1, 6}, {133, "5", 1, 7}}},
        {"INT#1E5", {{133, "INT#1"}, {kIdent, "E5", 1, 6}}},
        {"INT#", {{133, "INT#"}}},
        {"INT#-", {{133, "INT#-"}}},
        {"INT#--5", {{133, "INT#-"}, {45, "-", 1, 6}, {133, "5", 1, 7}}},
        {"INT# 5", {{133, "INT#"}, {133, "5", 1, 6}}},
        {"INT#FF", {{133, "INT#"}, {kIdent, "FF", 1, 5}}},
        {"INT##FF", {{133, "INT##FF"}}},
        {"INT #5", {{kIdent, "INT"}, {35, "#", 1, 5}, {133, "5", 1, 6}}},
        {"REAL#1.5E-3", {{134, "REAL#1.5E-3"}}},
        {"REAL#-1", {{134, "REAL#-1"}}},
        {"REAL#.5", {{134, "REAL#.5"}}},
        {"lreal#+2", {{134, "lreal#+2"}}},
        {"REAL#16#FF", {{134, "REAL#16#FF"}}},
    });
    for (const char* word :
         {"SINT", "USINT", "BYTE", "INT", "UINT", "WORD", "DINT", "UDINT", "DWORD", "LINT", "ULINT", "LWORD"}) {
        const std::string source = std::string(word) + "#+1_0";
        Check({{source, {{133, source}}}});
    }
}

TEST(LogicParseContext, Booleans) {
    Check({
        {"BOOL#TRUE", {{139, "BOOL#TRUE"}}},
        {"bool#1", {{139, "bool#1"}}},
        {"BOOL#", {{139, "BOOL#"}}},
        {"BOOL#_x", {{139, "BOOL#"}, {kIdent, "_x", 1, 6}}},
        // One elementary token only.
        {"BOOL#T1", {{139, "BOOL#T"}, {133, "1", 1, 7}}},
        {"BOOL# 1", {{139, "BOOL#"}, {133, "1", 1, 7}}},
        {"BOOL#-1", {{139, "BOOL#"}, {45, "-", 1, 6}, {133, "1", 1, 7}}},
    });
}

TEST(LogicParseContext, Durations) {
    Check({
        {"T#1h_30m", {{135, "T#1h_30m"}}},
        {"T#-1.5s", {{135, "T#-1.5s"}}},
        {"TIME#2d3h", {{135, "TIME#2d3h"}}},
        {"t#+1ms", {{135, "t#+1ms"}}},
        {"T#", {{135, "T#"}}},
        {"T#-", {{135, "T#-"}}},
        {"T#1s+T#2s", {{135, "T#1s"}, {43, "+", 1, 5}, {135, "T#2s", 1, 6}}},
        {"T#1s;", {{135, "T#1s"}, {59, ";", 1, 5}}},
        {"T#1s..T#2s", {{135, "T#1s..T"}, {35, "#", 1, 8}, {133, "2", 1, 9}, {kIdent, "s", 1, 10}}},
        {"T #1s", {{kIdent, "T"}, {35, "#", 1, 3}, {133, "1", 1, 4}, {kIdent, "s", 1, 5}}},
        {"LTIME#1s", {{kIdent, "LTIME"}, {35, "#", 1, 6}, {133, "1", 1, 7}, {kIdent, "s", 1, 8}}},
    });
}

TEST(LogicParseContext, DatesAndTimes) {
    Check({
        {"D#2024-01-31", {{136, "D#2024-01-31"}}},
        {"date#2024-1-1", {{136, "date#2024-1-1"}}},
        {"D#2024-01-31-1", {{136, "D#2024-01-31"}, {45, "-", 1, 13}, {133, "1", 1, 14}}},
        {"D#2024-01", {{136, "D#2024-01"}}},
        {"D#2024-", {{136, "D#2024-"}}},
        {"D#", {{136, "D#"}}},
        {"D#x", {{136, "D#"}, {kIdent, "x", 1, 3}}},
        {"D#2024 -01-31", {{136, "D#2024"}, {45, "-", 1, 8}, {133, "01", 1, 9}, {45, "-", 1, 11}, {133, "31", 1, 12}}},
        {"DT#2024-01-02-10:20:30.5", {{137, "DT#2024-01-02-10:20:30.5"}}},
        {"DT#2024-01-02-10:20:30", {{137, "DT#2024-01-02-10:20:30"}}},
        {"Date_And_Time#2024-01-02-10:20:30.5", {{137, "Date_And_Time#2024-01-02-10:20:30.5"}}},
        {"DT#2024-01-02-10:20:30.", {{137, "DT#2024-01-02-10:20:30."}}},
        {"DT#2024-01-02 10", {{137, "DT#2024-01-02"}, {133, "10", 1, 15}}},
        {"TOD#12:30", {{138, "TOD#12:30"}}},
        {"TOD#12:30:15.25", {{138, "TOD#12:30:15.25"}}},
        {"TIME_OF_DAY#12:30:15", {{138, "TIME_OF_DAY#12:30:15"}}},
        {"TOD#12:=", {{138, "TOD#12:"}, {61, "=", 1, 8}}},
        {"TOD#1_2", {{138, "TOD#1"}, {kIdent, "_2", 1, 6}}},
        {"TOD#12:30:15.25.1", {{138, "TOD#12:30:15.25"}, {46, ".", 1, 16}, {133, "1", 1, 17}}},
    });
}

// Neither white space nor a letter nor punctuation: one token for each character or invalid part, with its bytes.
TEST(LogicParseContext, OtherCharacters) {
    Check({
        {std::string("a\0b", 3), {{kIdent, "a"}, {4, std::string(1, '\0'), 1, 2}, {kIdent, "b", 1, 3}}},
        {"\x01\x7F", {{4, "\x01"}, {4, "\x7F", 1, 2}}},
        {"\xC2\xB0x", {{4, "\xC2\xB0"}, {kIdent, "x", 1, 2}}},
        {"a\xE4z", {{kIdent, "a"}, {4, "\xE4", 1, 2}, {kIdent, "z", 1, 3}}},
        {"\xC2\xA0x", {{kIdent, "x", 1, 2}}},  // a no-break space is white space
    });
}

// Sources in other encodings: what is not UTF-8 stays as it is wherever anything may stand, and counts as one column.
TEST(LogicParseContext, BytesThatAreNoUtf8Survive) {
    Check({
        {"'\xE4\xF6'x", {{131, "'\xE4\xF6'"}, {kIdent, "x", 1, 5}}},
        {"'$\xE4'x", {{131, "'$\xE4'"}, {kIdent, "x", 1, 5}}},
        {"(*\xE4*)x", {{128, "(*\xE4*)"}, {kIdent, "x", 1, 6}}},
        {"//\xE4\nx", {{129, "//\xE4"}, {kIdent, "x", 2, 1}}},
        {"{\xE4}x", {{130, "{\xE4}"}, {kIdent, "x", 1, 4}}},
        {"%'\xE4'", {{143, "%'\xE4'"}}},
        {"'\xE4", {{131, "'\xE4", 1, 1, false}}},
    });
}

TEST(LogicParseContext, EndsStandBehindTheLastCharacter) {
    TextInputTNString input("ab\n'\xC3\xA4\nb' ");
    CLogicParseContext context(&input, nullptr);
    context.SetFileName("plant.st");
    CLogicToken token;
    context.GetNextLogicToken(token);
    EXPECT_EQ(token.Location().GetStart(), (TextPosition{0, 1, 1}));
    EXPECT_EQ(token.Location().GetEnd(), (TextPosition{2, 1, 3}));
    EXPECT_EQ(token.Location().GetFileName(), "plant.st");
    context.GetNextLogicTokenAfterWhitespace(token);
    EXPECT_EQ(token.Location().GetStart(), (TextPosition{3, 2, 1}));
    EXPECT_EQ(token.Location().GetEnd(), (TextPosition{9, 3, 3}));
    context.GetNextLogicTokenAfterWhitespace(token);
    EXPECT_EQ(token.GetType(), 1);
    EXPECT_EQ(token.GetText(), "");
    EXPECT_EQ(token.Location().GetStart(), (TextPosition{10, 3, 4}));
    context.GetNextLogicTokenAfterWhitespace(token);
    EXPECT_EQ(token.GetType(), 1);
}

TEST(LogicParseContext, TellsWhatBrokeOff) {
    struct BrokenRow {
        const char* source;
        bool whole;
    };
    const BrokenRow rows[] = {
        {"(* a *)", true},    {"(* a", false},        {"{a}", true},        {"{a", false},
        {"'a'", true},        {"'a", false},          {"%'a", false},       {"CHAR#'a", false},
        {"D#2024-01", false}, {"D#2024-01-02", true}, {"TOD#1:2:3", false}, {"TOD#1:2:3.0", true},
        {"INT#", true},       {"// a", true},         {"", true},           {"IF", true},
    };
    for (const BrokenRow& row : rows) {
        TextInputTNString input(row.source);
        CLogicParseContext context(&input, nullptr);
        CLogicToken token;
        EXPECT_EQ(context.GetNextLogicToken(token), row.whole) << row.source;
    }
}

}  // namespace
