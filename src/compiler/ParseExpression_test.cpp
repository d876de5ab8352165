#include <gtest/gtest.h>

#include "compiler/ParserTesting.h"

namespace tn61131::st {
namespace {

using testing::Parsed;

struct Row {
    const char* text;
    const char* expected;
};

void ExpectExpressions(std::span<const Row> rows) {
    for (const Row& row : rows) {
        const Parsed parsed(row.text, Parsed::As::Expression);
        EXPECT_EQ(parsed.Printed(), row.expected) << row.text;
        EXPECT_EQ(parsed.Messages(), "") << row.text;
    }
}

// IEC 61131-3, table 71: from parentheses down to OR.
TEST(ParseExpression, OperatorsBindAsTheStandardSays) {
    constexpr Row kRows[] = {
        {"a + b * c", "(+ a (* b c))"},
        {"a * b + c", "(+ (* a b) c)"},
        {"(a + b) * c", "(* (+ a b) c)"},
        {"a - b - c", "(- (- a b) c)"},
        {"a / b MOD c * d", "(* (MOD (/ a b) c) d)"},
        {"a ** b ** c", "(** (** a b) c)"},
        {"a * b ** c", "(* a (** b c))"},
        {"-a ** b", "(** (- a) b)"},
        {"a ** -b", "(** a (- b))"},
        {"- - a", "(- (- a))"},
        {"+a - -1", "(- (+ a) (- 1))"},
        {"NOT a AND b", "(AND (NOT a) b)"},
        {"NOT NOT a", "(NOT (NOT a))"},
        {"a < b = c > d", "(= (< a b) (> c d))"},
        {"a = b <> c", "(<> (= a b) c)"},
        {"a <= b AND c >= d", "(AND (<= a b) (>= c d))"},
        {"a + 1 < b - 1", "(< (+ a 1) (- b 1))"},
        {"a OR b XOR c AND d", "(OR a (XOR b (AND c d)))"},
        {"a AND b XOR c OR d", "(OR (XOR (AND a b) c) d)"},
        {"a & b OR c", "(OR (AND a b) c)"},
        {"a AND_THEN b OR_ELSE c", "(OR_ELSE (AND_THEN a b) c)"},
        {"a AND b AND_THEN c", "(AND_THEN (AND a b) c)"},
        {"a = b AND c", "(AND (= a b) c)"},
    };
    ExpectExpressions(kRows);
}

TEST(ParseExpression, OperandsMayBeAnything) {
    constexpr Row kRows[] = {
        {"1", "1"},
        {"16#FF", "16#FF"},
        {"1.5e3", "1.5e3"},
        {"'it$'s'", "'it$'s'"},
        {"T#1s", "T#1s"},
        {"true", "true"},
        {"FALSE", "FALSE"},
        {"NULL", "NULL"},
        {"BOOL#1", "BOOL#1"},
        {"%IX0.1", "%IX0.1"},
        {"%\"tag\"", "%\"tag\""},
        {"a.b.c", "(. (. a b) c)"},
        {"a[1]", "([] a 1)"},
        {"a[i, j + 1][k]", "([] ([] a i (+ j 1)) k)"},
        {"p^", "(^ p)"},
        {"p^^.x[1]^", "(^ ([] (. (^ (^ p)) x) 1))"},
        {"x.3", "(.%X x 3)"},
        {"x.%X3", "(.%X x 3)"},
        {"x.%b1.7", "(.%X (.%B x 1) 7)"},
        {"w.%D0", "(.%D w 0)"},
        {"a.10.2", "(.%X (.%X a 10) 2)"},
        {"THIS^.x", "(. (^ THIS) x)"},
        {"THIS.x", "(. THIS x)"},
        {"SUPER^.m()", "(call (. SUPER m))"},
        {"SUPER.m()", "(call (. SUPER m))"},
        {"Color#Red", "(# Color Red)"},
        {"INT#x + 1", "(+ (# INT x) 1)"},
        {"INT#(a + b)", "(# INT (+ a b))"},
        {"REAL#-x", "(# REAL (- x))"},
        {"REF(x)", "(call REF x)"},
        {"SIZEOF(INT)", "(call SIZEOF INT)"},
    };
    ExpectExpressions(kRows);
}

TEST(ParseExpression, CallsTakeAllKindsOfArguments) {
    constexpr Row kRows[] = {
        {"f()", "(call f)"},
        {"f(1, a + b)", "(call f 1 (+ a b))"},
        {"f(in := 1, q => x)", "(call f (:= in 1) (=> q x))"},
        {"f(NOT q => x, NOT a)", "(call f (NOT=> q x) (NOT a))"},
        {"f(in :=, q =>)", "(call f (:= in) (=> q))"},
        {"f(EN := a, ENO => b)", "(call f (:= EN a) (=> ENO b))"},
        {"f(g(1), h(x := g(2)))", "(call f (call g 1) (call h (:= x (call g 2))))"},
        {"a.b[3].f(1).c", "(. (call (. ([] (. a b) 3) f) 1) c)"},
        {"f(a = b)", "(call f (= a b))"},
        {"f([1, 2], (x := 1))", "(call f (array 1 2) (struct (:= x 1)))"},
    };
    ExpectExpressions(kRows);
}

// Words of the grammar that are names everywhere else.
TEST(ParseExpression, ContextualKeywordsAreNames) {
    for (const char* const word :
         {"STEP",      "Action", "task",  "TRANSITION", "R_EDGE",  "F_EDGE",   "FROM",     "WITH",     "ON",
          "READ_ONLY", "REF",    "UNION", "SIZEOF",     "POINTER", "EN",       "ENO",      "TO",       "OF",
          "BY",        "AT",     "S",     "R",          "GET",     "SET",      "METHOD",   "PROPERTY", "INTERFACE",
          "NAMESPACE", "CLASS",  "FINAL", "CONSTANT",   "RETAIN",  "PRIORITY", "CONTINUE", "STRING"}) {
        const std::string text = std::string(word) + " + x." + word;
        const Parsed parsed(text, Parsed::As::Expression);
        EXPECT_EQ(parsed.Printed(), "(+ " + std::string(word) + " (. x " + word + "))");
        EXPECT_EQ(parsed.Messages(), "") << text;
    }
}

TEST(ParseExpression, RangesCoverTheWholeOperand) {
    SourceManager sources;
    NameTable names;
    Arena arena;
    Diagnostics diagnostics(sources);
    std::uint32_t file = 0;
    ASSERT_TRUE(sources.AddFile("a", "f(x)[1] + -b.c", file));
    const auto* const sum =
        static_cast<ast::BinaryExpr*>(ParseExpressionFile(sources, file, {}, names, arena, diagnostics));
    ASSERT_EQ(sum->kind, ast::ExprKind::Binary);
    EXPECT_EQ(sources.GetText(sum->range), "f(x)[1] + -b.c");
    EXPECT_EQ(sources.GetText(sum->opRange), "+");
    EXPECT_EQ(sources.GetText(sum->left->range), "f(x)[1]");
    EXPECT_EQ(sources.GetText(sum->right->range), "-b.c");
}

// Every operator at every place: what is printed is what the levels of the standard demand.
TEST(ParseExpression, EveryPairOfOperatorsAssociatesByLevel) {
    struct Op {
        const char* sign;
        int level;
    };
    constexpr Op kOps[] = {{"OR", 1}, {"OR_ELSE", 1}, {"XOR", 2}, {"AND", 3}, {"AND_THEN", 3}, {"=", 4},
                           {"<>", 4}, {"<", 5},       {">", 5},   {"<=", 5},  {">=", 5},       {"+", 6},
                           {"-", 6},  {"*", 7},       {"/", 7},   {"MOD", 7}, {"**", 8}};
    for (const Op& first : kOps) {
        for (const Op& second : kOps) {
            const std::string f = first.sign;
            const std::string s = second.sign;
            const Parsed parsed("a " + f + " b " + s + " c", Parsed::As::Expression);
            const std::string left = "(" + s + " (" + f + " a b) c)";
            const std::string right = "(" + f + " a (" + s + " b c))";
            EXPECT_EQ(parsed.Printed(), first.level >= second.level ? left : right);
        }
    }
}

}  // namespace
}  // namespace tn61131::st
