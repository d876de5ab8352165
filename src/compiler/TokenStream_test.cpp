#include "compiler/TokenStream.h"

#include <set>

#include <gtest/gtest.h>

#include "compiler/ParserTesting.h"
#include "literal/LogicParseContext.h"
#include "platform/TextInput.h"

namespace tn61131::st {
namespace {

using testing::Reported;

// One letter for each kind of token; identifiers, numbers and so on are told apart by them.
constexpr std::string_view kKindNames[] = {
    "end", "invalid", "name", "int", "real", "string", "wstring", "char", "wchar", "time", "date", "dt", "tod", "bool",
    "at",  "part",    ":=",   "=>",  "?=",   "**",     "<=",      ">=",   "<>",    "..",   "=",    "<",  ">",   "+",
    "-",   "*",       "/",    "&",   "(",    ")",      "[",       "]",    ",",     ";",    ":",    ".",  "^",   "#"};
static_assert(std::size(kKindNames) == static_cast<std::size_t>(TokenKind::Hash) + 1);

class TokenStreamTest : public ::testing::Test {
 protected:
    // Kinds with texts, such as name:a or int:5; operators by themselves.
    std::string Read(std::string_view text, bool nested = true) {
        SourceManager sources;
        NameTable names;
        Diagnostics diagnostics(sources);
        Switches switches;
        switches.nestedComments = nested;
        std::uint32_t file = 0;
        EXPECT_TRUE(sources.AddFile("other.st", "x", file));
        EXPECT_TRUE(sources.AddFile("a.st", std::string(text), file));
        list_ = ReadTokens(sources, file, switches, names, diagnostics);
        pragmas_.clear();
        for (const Pragma& pragma : list_.pragmas)
            pragmas_.emplace_back(pragma.text);
        std::string result;
        for (const Token& token : list_.tokens) {
            if (token.kind == TokenKind::End) break;
            if (!result.empty()) result += ' ';
            const std::string_view kind = kKindNames[static_cast<std::size_t>(token.kind)];
            const std::string_view tokenText = sources.GetText(token.range);
            result += kind;
            if (kind != tokenText) result.append(":").append(tokenText);
        }
        errors_.clear();
        for (const Diagnostic& diagnostic : diagnostics.Sort()) {
            const SourceLocation place = sources.Locate(diagnostic.range.begin);
            errors_.push_back({place.line, place.column, diagnostic.code});
            messages_ = diagnostic.text;
        }
        return result;
    }

    TokenList list_;
    std::vector<std::string> pragmas_;
    std::vector<Reported> errors_;
    std::string messages_;
};

struct Row {
    const char* text;
    const char* expected;
};

TEST_F(TokenStreamTest, TokensAreWhatTheGrammarNeeds) {
    constexpr Row kRows[] = {
        {"a:=b+1;", "name:a := name:b + int:1 ;"},
        {"a<=b>=c<>d<e>f=g", "name:a <= name:b >= name:c <> name:d < name:e > name:f = name:g"},
        {"x ?= y => z ** 2 & w", "name:x ?= name:y => name:z ** int:2 & name:w"},
        {"1..5", "int:1 .. int:5"},
        {"1 .. 5", "int:1 .. int:5"},
        {"16#0..16#F", "int:16#0 .. int:16#F"},
        {"-1..N", "- int:1 .. name:N"},
        {"1.5..2.5", "real:1.5 .. real:2.5"},
        {"0..", "int:0 .."},
        {"a.0", "name:a . int:0"},
        {"a.10.2", "name:a . int:10 . int:2"},
        {"a.1.b.2", "name:a . int:1 . name:b . int:2"},
        {"a[1].5", "name:a [ int:1 ] . int:5"},
        {"x.%X3 + y.%b1", "name:x . part:%X3 + name:y . part:%b1"},
        {"%IX0.1 %QW2 %I* %MD3.1.2", "at:%IX0.1 at:%QW2 at:%I* at:%MD3.1.2"},
        {"%IX1..2", "at:%IX1 .. int:2"},
        {"%\"tag 1\" %'b'", "at:%\"tag 1\" at:%'b'"},
        {"1.5E-3 1e5 1_000 2#1010", "real:1.5E-3 real:1e5 int:1_000 int:2#1010"},
        {"INT#5 INT#-5 DWORD#16#FF REAL#1.5", "int:INT#5 int:INT#-5 int:DWORD#16#FF real:REAL#1.5"},
        {"INT#x", "name:INT # name:x"},
        {"INT#(a)", "name:INT # ( name:a )"},
        {"INT#-x", "name:INT # - name:x"},
        {"REAL#x REAL#e", "name:REAL # name:x name:REAL # name:e"},
        {"BOOL#TRUE bool#0 BOOL#x BOOL#true_x",
         "bool:BOOL#TRUE bool:bool#0 name:BOOL # name:x name:BOOL # name:true_x"},
        {"Color#Red MyInt#5", "name:Color # name:Red name:MyInt # int:5"},
        {"T#1h30m time#-1.5s T#5d_2h", "time:T#1h30m time:time#-1.5s time:T#5d_2h"},
        {"LTIME#5s LT#-1ms LDATE#2024-01-02 LD#2024-01-02",
         "time:LTIME#5s time:LT#-1ms date:LDATE#2024-01-02 date:LD#2024-01-02"},
        {"LDT#2024-01-02-10:20:30 LTOD#12:30:15.5", "dt:LDT#2024-01-02-10:20:30 tod:LTOD#12:30:15.5"},
        {"LTIME_OF_DAY#1:2:3 LDATE_AND_TIME#2024-1-2-3:4:5", "tod:LTIME_OF_DAY#1:2:3 dt:LDATE_AND_TIME#2024-1-2-3:4:5"},
        {"LTIME#x LT", "name:LTIME # name:x name:LT"},
        {"TIME#x", "name:TIME # name:x"},
        {"D#2024-01-02 TOD#12:30", "date:D#2024-01-02 tod:TOD#12:30"},
        {"'it$'s' \"a$\"b\" STRING#'x' WSTRING#\"x\" CHAR#'c'",
         "string:'it$'s' wstring:\"a$\"b\" string:STRING#'x' wstring:WSTRING#\"x\" char:CHAR#'c'"},
        {"a // b\nc", "name:a name:c"},
        {"a (* b *) c /* d */ e", "name:a name:c name:e"},
        {"'(*' a '*)'", "string:'(*' name:a string:'*)'"},
        {"a (* x (* y *) z *) b", "name:a name:b"},
        {"a /* x /* y */ z */ b", "name:a name:b"},
        {"a (*) b *) c", "name:a name:c"},
        {"a (**) b (***) c", "name:a name:b name:c"},
        {"a /**/ b /*/ c */ d", "name:a name:b name:d"},
        {"{x} a {y}", "name:a"},
        {"p^.q", "name:p ^ . name:q"},
        {"a S= b; S=1", "name:a name:S = name:b ; name:S = int:1"},
        {"ELSIF Elseif", "name:ELSIF name:Elseif"},
        {"", ""},
        {"  \r\n\t", ""},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(Read(row.text), row.expected) << row.text;
        EXPECT_TRUE(errors_.empty()) << row.text << ": " << messages_;
    }
}

TEST_F(TokenStreamTest, CommentsEndAtTheFirstMarkWhereTheyDoNotNest) {
    EXPECT_EQ(Read("a (* x (* y *) b", false), "name:a name:b");
    EXPECT_TRUE(errors_.empty());
}

struct Mistake {
    const char* text;
    const char* expected;
    std::vector<Reported> errors;
};

TEST_F(TokenStreamTest, MistakesAreReportedWhereTheyBegin) {
    const Mistake kRows[] = {
        {"a\n (* b (* c *)", "name:a", {{2, 2, DiagnosticCode::UnterminatedComment}}},
        {"a /* b", "name:a", {{1, 3, DiagnosticCode::UnterminatedComment}}},
        {"a { b", "name:a", {{1, 3, DiagnosticCode::UnterminatedPragma}}},
        {"a := 'b;\nc", "name:a := invalid:'b; name:c", {{1, 6, DiagnosticCode::UnterminatedString}}},
        {"'a\n'b\nc",
         "invalid:'a invalid:'b name:c",
         {{1, 1, DiagnosticCode::UnterminatedString}, {2, 1, DiagnosticCode::UnterminatedString}}},
        {"\"a'\nb'\nc",
         "invalid:\"a' name:b invalid:' name:c",
         {{1, 1, DiagnosticCode::UnterminatedString}, {2, 2, DiagnosticCode::UnterminatedString}}},
        {"%\"a\nb", "invalid:%\"a name:b", {{1, 1, DiagnosticCode::UnterminatedString}}},
        {"x := 16#FFG;", "name:x := invalid:16#FFG ;", {{1, 6, DiagnosticCode::MalformedNumber}}},
        {"16# + 1", "invalid:16# + int:1", {{1, 1, DiagnosticCode::MalformedNumber}}},
        {"12ab 1.5E+;",
         "invalid:12ab invalid:1.5E+ ;",
         {{1, 1, DiagnosticCode::MalformedNumber}, {1, 6, DiagnosticCode::MalformedNumber}}},
        {"a @@ b ! c",
         "name:a name:b name:c",
         {{1, 3, DiagnosticCode::StrayCharacter}, {1, 8, DiagnosticCode::StrayCharacter}}},
        {"a % b ? c",
         "name:a name:b name:c",
         {{1, 3, DiagnosticCode::StrayCharacter}, {1, 7, DiagnosticCode::StrayCharacter}}},
    };
    for (const Mistake& row : kRows) {
        EXPECT_EQ(Read(row.text), row.expected) << row.text;
        EXPECT_EQ(errors_, row.errors) << row.text;
    }
}

TEST_F(TokenStreamTest, StrayCharactersAreShown) {
    Read("@");
    EXPECT_EQ(messages_, "the character '@' has no meaning here");
    Read("\xE4");
    EXPECT_EQ(messages_, "the character 16#E4 has no meaning here");
    Read("16#G");
    EXPECT_EQ(messages_, "'16#G' is no number");
}

TEST_F(TokenStreamTest, PragmasKnowTheTokenBehindThem) {
    Read("{ attribute 'a' }{b} x {} y {c}");
    EXPECT_EQ(pragmas_, (std::vector<std::string>{"attribute 'a'", "b", "", "c"}));
    ASSERT_EQ(list_.pragmas.size(), 4U);
    EXPECT_EQ(list_.pragmas[1].token, 0U);
    EXPECT_EQ(list_.pragmas[2].token, 1U);
    EXPECT_EQ(list_.pragmas[3].token, 2U);
}

TEST_F(TokenStreamTest, TheFirstTokenOfALineIsMarked) {
    Read("a b\n(* \n *) c d\n\n'x\ne");
    std::string marks;
    for (const Token& token : list_.tokens)
        marks += token.startsLine ? '1' : '0';
    EXPECT_EQ(marks, "1010110");  // a b c d 'x e and the end, which is on e's line
}

TEST_F(TokenStreamTest, TheEndStandsBehindTheLastByte) {
    Read("ab ");
    EXPECT_EQ(list_.tokens.back().kind, TokenKind::End);
    EXPECT_EQ(list_.tokens.back().range.begin, 3U + 3U);  // behind a file of one byte and its end
}

TEST_F(TokenStreamTest, CommentsNestedTooDeepAreOneMessage) {
    std::string text;
    for (std::uint32_t i = 0; i <= kMaxNesting + 100; ++i)
        text += "(* ";
    for (std::uint32_t i = 0; i <= kMaxNesting + 100; ++i)
        text += "*) ";
    EXPECT_EQ(Read(text + "a"), "name:a");
    EXPECT_EQ(errors_, (std::vector<Reported>{{1, 1, DiagnosticCode::NestingTooDeep}}));
}

// To the tokenizer, each line's quote opens a string that reaches to the end of the file. Reading again behind each
// line comes to an end, and with it the reports.
TEST_F(TokenStreamTest, OpenStringsOnManyLinesTakeLinearTime) {
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += "$'\n";
    Read(text);
    EXPECT_GE(errors_.size(), 3U);
}

// Blanks, words and signs are read without the tokenizer: where it reads a word or a sign, there must be the same one.
TEST_F(TokenStreamTest, PlainTokensAreThoseOfTheTokenizer) {
    constexpr std::string_view kPieces[] = {"a",  "_b1", "Z9_", "IF",  " ",  "\n", "\t", ":", "=",   ">",        "<",
                                            "*",  "+",   "-",   ")",   "[",  "]",  ",",  ";", "^",   "\xC3\xA4", "&",
                                            "x#", "#",   ".",   "12 ", "\r", "\v", "?",  "@", "'s'", "{p}"};
    std::uint32_t state = 1;
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (int i = 0; i < 12; ++i) {
            state = state * 1664525 + 1013904223;
            text += kPieces[(state >> 16) % std::size(kPieces)];
        }
        Read(text);
        std::set<std::pair<std::size_t, std::size_t>> mine;
        for (const Token& token : list_.tokens)
            mine.emplace(token.range.begin - 3, token.range.end - 3);
        TextInputTNString input(text);
        CLogicParseContext context(&input, nullptr);
        CLogicToken token;
        do {
            context.GetNextLogicTokenAfterWhitespace(token);
            const std::size_t begin = token.Location().GetStart().offset;
            const std::size_t end = token.Location().GetEnd().offset;
            // "<=>" is "<=" and ">", where the tokenizer, which knows no "<=", has "=>".
            const bool isPlain =
                token.IsAnyIdentifier() || token.IsType(LogicTokenType::Assign) || token.IsType(LogicTokenType::Power);
            EXPECT_TRUE(!isPlain || mine.count({begin, end}) == 1) << text << " at " << begin;
        } while (!token.IsType(CParseToken::kEndOfInput));
    }
}

TEST(Keywords, AllWordsOfTheTokenizerThatTheGrammarHasAreKnown) {
    // What is a plain name to the grammar: functions and inputs that have names of their own.
    const std::vector<std::string_view> names = {"EN", "ENO", "SIZEOF"};
    NameTable table;
    for (int i = 0; i < CLogicToken::GetTokenCount(); ++i) {
        const std::string_view word = CLogicToken::GetTokenInformation(i).keyword;
        const bool isName = std::find(names.begin(), names.end(), word) != names.end();
        EXPECT_EQ(KeywordOf(table.Intern(word)) == Keyword::None, isName) << word;
    }
}

}  // namespace
}  // namespace tn61131::st
