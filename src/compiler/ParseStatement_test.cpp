#include <gtest/gtest.h>

#include "compiler/ParserTesting.h"

namespace tn61131::st {
namespace {

using testing::Parsed;

struct Row {
    const char* text;
    const char* expected;
};

TEST(ParseStatement, EveryStatementHasItsTree) {
    constexpr Row kRows[] = {
        {"a := b;", "(:= a b)"},
        {"a.b[1]^ := c + 1;", "(:= (^ ([] (. a b) 1)) (+ c 1))"},
        {"a := b := c;", "(:= a (:= b c))"},
        {"a S= b; a R= b; a REF= b; a ?= b;", "(S= a b) (R= a b) (REF= a b) (?= a b)"},
        {"S := R; R S= S;", "(:= S R) (S= R S)"},
        {"%QX0.1 := TRUE;", "(:= %QX0.1 TRUE)"},
        {"x.3 := a = b;", "(:= (.%X x 3) (= a b))"},
        {"fb(in := 1, out => x);", "(call fb (:= in 1) (=> out x))"},
        {"a.b[3].fb();", "(call (. ([] (. a b) 3) fb))"},
        {"THIS^.m();", "(call (. (^ THIS) m))"},
        {"SUPER^();", "(call SUPER)"},
        {"IF a THEN b; c := 1; END_IF;", "(IF (a b (:= c 1)))"},
        {"IF a THEN ELSIF b THEN x(); ELSE y(); END_IF;", "(IF (a) (b (call x)) (ELSE (call y)))"},
        {"IF a THEN IF b THEN x(); END_IF; ELSE y(); END_IF;", "(IF (a (IF (b (call x)))) (ELSE (call y)))"},
        {"IF a THEN x(); ELSE IF b THEN y(); END_IF; END_IF;", "(IF (a (call x)) (ELSE (IF (b (call y)))))"},
        {"CASE x OF 1: a(); 2, 4..6: b(); END_CASE;", "(CASE x ((1) (call a)) ((2 (.. 4 6)) (call b)))"},
        {"CASE x OF -1: ; N: a := 1; N + 1..M: ELSE c(); END_CASE;",
         "(CASE x (((- 1))) ((N) (:= a 1)) (((.. (+ N 1) M))) (ELSE (call c)))"},
        {"CASE x OF Color#Red, Color.Green: a.b := 1; c.d(); Blue: e[1] := 2; END_CASE;",
         "(CASE x (((# Color Red) (. Color Green)) (:= (. a b) 1) (call (. c d))) ((Blue) (:= ([] e 1) 2)))"},
        {"CASE b OF TRUE: x(); FALSE: y(); END_CASE;", "(CASE b ((TRUE) (call x)) ((FALSE) (call y)))"},
        {"CASE x OF 16#10..16#1F: IF a THEN b(); END_IF; 'a': c(); END_CASE;",
         "(CASE x (((.. 16#10 16#1F)) (IF (a (call b)))) (('a') (call c)))"},
        {"CASE a OF 1: CASE b OF 2: c(); END_CASE; 3: d(); END_CASE;",
         "(CASE a ((1) (CASE b ((2) (call c)))) ((3) (call d)))"},
        {"FOR i := 0 TO 10 DO x(); END_FOR;", "(FOR i 0 10 (call x))"},
        {"FOR i := a + 1 TO b BY -2 DO END_FOR;", "(FOR i (+ a 1) b (BY (- 2)))"},
        {"WHILE a < 3 DO a := a + 1; EXIT; END_WHILE;", "(WHILE (< a 3) (:= a (+ a 1)) EXIT)"},
        {"REPEAT x(); CONTINUE; UNTIL a END_REPEAT;", "(REPEAT (call x) CONTINUE (UNTIL a))"},
        {"REPEAT UNTIL a; END_REPEAT;", "(REPEAT (UNTIL a))"},
        {"RETURN; EXIT; CONTINUE;", "RETURN EXIT CONTINUE"},
        {"CONTINUE := 1; STEP := 2; TO := OF;", "(:= CONTINUE 1) (:= STEP 2) (:= TO OF)"},
        {"STEP(a := 1); ACTION();", "(call STEP (:= a 1)) (call ACTION)"},
        {";;;", ""},
        {"a;", "a"},
        {"{pragma} a := 1; {other}", "(:= a 1)"},
    };
    for (const Row& row : kRows) {
        const Parsed parsed(row.text, Parsed::As::Statements);
        EXPECT_EQ(parsed.Printed(), row.expected) << row.text;
        EXPECT_EQ(parsed.Messages(), "") << row.text;
    }
}

TEST(ParseStatement, RangesReachFromTheFirstWordToTheLast) {
    SourceManager sources;
    NameTable names;
    Arena arena;
    Diagnostics diagnostics(sources);
    std::uint32_t file = 0;
    ASSERT_TRUE(sources.AddFile("a", "a := b := 1;\nIF c THEN d(); END_IF;", file));
    const std::span<ast::Stmt*> statements = ParseStatementsFile(sources, file, {}, names, arena, diagnostics);
    ASSERT_EQ(statements.size(), 2U);
    EXPECT_EQ(sources.GetText(statements[0]->range), "a := b := 1");
    EXPECT_EQ(sources.GetText(static_cast<ast::AssignStmt*>(statements[0])->chained->range), "b := 1");
    EXPECT_EQ(sources.GetText(statements[1]->range), "IF c THEN d(); END_IF");
}

}  // namespace
}  // namespace tn61131::st
