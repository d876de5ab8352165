#include <algorithm>

#include <gtest/gtest.h>

#include "compiler/ParserTesting.h"

namespace tn61131::st {
namespace {

using testing::Parsed;

std::string Repeat(std::string_view text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

/// Something that nests: `count` openers, the core, as many closers.
struct Nesting {
    const char* what;
    Parsed::As as;
    const char* prefix;
    const char* open;
    const char* core;
    const char* close;
    const char* suffix;
};

constexpr Nesting kNestings[] = {
    {"parentheses", Parsed::As::Expression, "", "(", "a", ")", ""},
    {"signs", Parsed::As::Expression, "", "-", "a", "", ""},
    {"negations", Parsed::As::Expression, "", "NOT ", "a", "", ""},
    {"indices", Parsed::As::Expression, "", "a[", "a", "]", ""},
    {"calls", Parsed::As::Expression, "", "f(", "a", ")", ""},
    {"named arguments", Parsed::As::Expression, "", "f(x := ", "a", ")", ""},
    {"prefixes", Parsed::As::Expression, "", "A#", "a", "", ""},
    {"array values", Parsed::As::Expression, "", "[", "1", "]", ""},
    {"structure values", Parsed::As::Expression, "", "(x := ", "1", ")", ""},
    {"right operands", Parsed::As::Expression, "", "a * (b + ", "c", ")", ""},
    {"IF", Parsed::As::Statements, "", "IF a THEN ", "x();", " END_IF;", ""},
    {"ELSE", Parsed::As::Statements, "", "IF a THEN ELSE ", "x();", " END_IF;", ""},
    {"CASE", Parsed::As::Statements, "", "CASE a OF 1: ", "x();", " END_CASE;", ""},
    {"FOR", Parsed::As::Statements, "", "FOR i := 0 TO 1 DO ", "x();", " END_FOR;", ""},
    {"WHILE", Parsed::As::Statements, "", "WHILE a DO ", "x();", " END_WHILE;", ""},
    {"REPEAT", Parsed::As::Statements, "", "REPEAT ", "x();", " UNTIL a END_REPEAT;", ""},
    {"array types", Parsed::As::Unit, "VAR_GLOBAL a : ", "ARRAY[0..1] OF ", "INT", "", "; END_VAR"},
    {"pointer types", Parsed::As::Unit, "VAR_GLOBAL a : ", "POINTER TO ", "INT", "", "; END_VAR"},
    {"structure types", Parsed::As::Unit, "TYPE a : ", "STRUCT x : ", "INT;", " END_STRUCT;", " END_TYPE"},
    {"repetitions", Parsed::As::Unit, "VAR_GLOBAL a : t := [", "2(", "1", ")", "]; END_VAR"},
    {"namespaces", Parsed::As::Unit, "", "NAMESPACE a ", "", "END_NAMESPACE ", ""},
};

std::string Nested(const Nesting& row, std::size_t count) {
    return row.prefix + Repeat(row.open, count) + row.core + Repeat(row.close, count) + row.suffix;
}

std::size_t Count(const std::vector<testing::Reported>& errors, DiagnosticCode code) {
    return static_cast<std::size_t>(std::count_if(errors.begin(), errors.end(),
                                                  [code](const testing::Reported& each) { return each.code == code; }));
}

TEST(ParserLimits, ReasonableNestingIsTaken) {
    for (const Nesting& row : kNestings) {
        const Parsed parsed(Nested(row, kMaxNesting / 2 - 2), row.as);
        EXPECT_EQ(parsed.Messages(), "") << row.what;
    }
}

TEST(ParserLimits, ParenthesesUpToTheLimit) {
    EXPECT_EQ(Parsed(Nested(kNestings[0], kMaxNesting), Parsed::As::Expression).Printed(), "a");
    const Parsed beyond(Nested(kNestings[0], kMaxNesting + 1), Parsed::As::Expression);
    ASSERT_EQ(beyond.Errors().size(), 1U);
    EXPECT_EQ(beyond.Errors()[0], (testing::Reported{1, kMaxNesting + 1, DiagnosticCode::NestingTooDeep}));
}

TEST(ParserLimits, BlocksUpToTheLimit) {
    const auto nested = [](std::size_t count) {
        return Repeat("IF a THEN ", count) + "x := 1; " + Repeat("END_IF; ", count) + "y();";
    };
    EXPECT_EQ(Parsed(nested(kMaxNesting), Parsed::As::Statements).Messages(), "");
    const Parsed beyond(nested(kMaxNesting + 1), Parsed::As::Statements);
    EXPECT_EQ(beyond.Errors().size(), 1U) << beyond.Messages();
    EXPECT_TRUE(beyond.Printed().ends_with("(call y)"));
}

TEST(ParserLimits, TooMuchNestingIsOneMessage) {
    for (const Nesting& row : kNestings) {
        const Parsed parsed(Nested(row, 20000), row.as);
        EXPECT_EQ(Count(parsed.Errors(), DiagnosticCode::NestingTooDeep), 1U) << row.what;
        EXPECT_EQ(parsed.Errors().size(), 1U) << row.what << '\n' << parsed.Messages().substr(0, 3000);
    }
}

TEST(ParserLimits, OpenersAloneAreSurvived) {
    for (const Nesting& row : kNestings) {
        const Parsed parsed(row.prefix + Repeat(row.open, 20000), row.as);
        EXPECT_GE(parsed.Errors().size(), 1U) << row.what;
        EXPECT_LE(parsed.Errors().size(), 3U) << row.what << '\n' << parsed.Messages().substr(0, 3000);
    }
}

TEST(ParserLimits, ClosersAloneAreSurvived) {
    for (const Nesting& row : kNestings) {
        const Parsed parsed(row.prefix + Repeat(row.close, 20000) + row.suffix, row.as);
        EXPECT_LE(parsed.Errors().size(), Diagnostics::kMaxErrors) << row.what;
    }
}

struct Chain {
    const char* first;
    const char* more;
    std::size_t height;  ///< that each link adds
};

TEST(ParserLimits, ChainsAreAsDeepAsTheTreeMayBe) {
    constexpr Chain kChains[] = {
        {"a", " + a", 1}, {"a", ".b", 1}, {"p", "^", 1}, {"a", "[1]", 1}, {"a", ".f(x := 1)", 2}};
    for (const Chain& row : kChains) {
        const std::size_t fits = (kMaxExpressionHeight - 1) / row.height - 1;
        EXPECT_EQ(Parsed(row.first + Repeat(row.more, fits), Parsed::As::Expression).Messages(), "") << row.more;
        const Parsed beyond(row.first + Repeat(row.more, 20000), Parsed::As::Expression);
        ASSERT_EQ(beyond.Errors().size(), 1U) << row.more;
        EXPECT_EQ(beyond.Errors()[0].code, DiagnosticCode::NestingTooDeep);
    }
}

TEST(ParserLimits, ListsMayBeLong) {
    EXPECT_EQ(Parsed("f(" + Repeat("a + 1, ", 50000) + "b)", Parsed::As::Expression).Messages(), "");
    EXPECT_EQ(Parsed("[" + Repeat("-1, ", 50000) + "0]", Parsed::As::Expression).Messages(), "");
    EXPECT_EQ(Parsed(Repeat("a := b;\n", 50000), Parsed::As::Statements).Messages(), "");
    EXPECT_EQ(Parsed("IF a THEN " + Repeat("ELSIF b THEN x(); ", 50000) + "END_IF;", Parsed::As::Statements).Messages(),
              "");
    EXPECT_EQ(Parsed("CASE a OF " + Repeat("1..5: x(); ", 50000) + "END_CASE;", Parsed::As::Statements).Messages(), "");
    EXPECT_EQ(Parsed("VAR_GLOBAL " + Repeat("a, b : INT := 5; ", 50000) + "END_VAR").Messages(), "");
}

TEST(ParserLimits, ChainedAssignments) {
    EXPECT_EQ(Parsed(Repeat("a := ", kMaxNesting) + "b;", Parsed::As::Statements).Messages(), "");
    const Parsed beyond(Repeat("a := ", 20000) + "b;\nc();", Parsed::As::Statements);
    ASSERT_EQ(beyond.Errors().size(), 1U);
    EXPECT_EQ(beyond.Errors()[0].code, DiagnosticCode::NestingTooDeep);
}

// Every text that begins like a correct one: nothing hangs, nothing is reported without a place.
TEST(ParserLimits, EveryPrefixOfAProgramIsSurvived) {
    const std::string text =
        "TYPE a : STRUCT x : INT(0..5) := 1; END_STRUCT; b : (c, d := 2); END_TYPE\n"
        "FUNCTION_BLOCK f EXTENDS g\nVAR_INPUT i AT %IX0.1 : BOOL R_EDGE; t : TON(PT := T#1s); END_VAR\n"
        "METHOD m : INT m := 1; END_METHOD PROPERTY p : INT GET p := 1; END_GET END_PROPERTY\n"
        "IF a = b THEN c := -d ** 2; ELSIF e THEN f(x := 1, q => y); ELSE RETURN; END_IF\n"
        "CASE s OF 1..5, 7: g(); ELSE h(); END_CASE FOR k := 0 TO 10 BY 2 DO EXIT; END_FOR\n"
        "WHILE TRUE DO p^.x[1] := 'str'; END_WHILE REPEAT ; UNTIL z END_REPEAT\nEND_FUNCTION_BLOCK\n"
        "PROGRAM q INITIAL_STEP a: x(L, T#1s); END_STEP TRANSITION FROM a TO b := c; END_TRANSITION END_PROGRAM\n"
        "CONFIGURATION c RESOURCE r ON p TASK t(PRIORITY := 1); PROGRAM q WITH t : q(a := b); END_RESOURCE\n"
        "VAR_ACCESS a : r.b : INT; END_VAR END_CONFIGURATION NAMESPACE n USING m; END_NAMESPACE\n";
    EXPECT_EQ(Parsed(text).Messages(), "");
    for (std::size_t length = 0; length < text.size(); ++length) {
        const Parsed parsed(text.substr(0, length));
        // One mistake at the end: what is open is missed once for every kind of thing that can be open.
        EXPECT_LE(parsed.Errors().size(), 3U) << text.substr(0, length) << '\n' << parsed.Messages();
        for (const testing::Reported& each : parsed.Errors())
            EXPECT_NE(each.line, 0U);
    }
}

// Every text with one token missing: few messages, and what stands behind is understood again.
TEST(ParserLimits, OneMissingCharacterIsNoCascade) {
    const std::string text =
        "FUNCTION_BLOCK f\nVAR a : INT := 1; b, c : ARRAY[0..3] OF REAL; END_VAR\n"
        "IF a > 1 AND (b[0] < 2.5) THEN\n  a := a + f2(x := 1, y := 2);\n"
        "END_IF;\nFOR a := 0 TO 3 DO\n  b[a] := 0.0;\nEND_FOR;\nEND_FUNCTION_BLOCK\n"
        "PROGRAM last\nx();\nEND_PROGRAM\n";
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::string broken = text;
        broken.erase(at, 1);
        const Parsed parsed(broken);
        EXPECT_LE(parsed.Errors().size(), 3U) << broken << '\n' << parsed.Messages();
    }
}

}  // namespace
}  // namespace tn61131::st
