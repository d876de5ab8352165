#include <gtest/gtest.h>

#include "compiler/ParserTesting.h"

namespace tn61131::st {
namespace {

using testing::Parsed;

struct Row {
    const char* text;
    const char* expected;
};

void ExpectUnits(std::span<const Row> rows) {
    for (const Row& row : rows) {
        const Parsed parsed(row.text);
        EXPECT_EQ(parsed.Printed(), row.expected) << row.text;
        EXPECT_EQ(parsed.Messages(), "") << row.text;
    }
}

TEST(ParseType, EveryKindOfTypeHasItsTree) {
    constexpr Row kRows[] = {
        {"TYPE a : INT; b : REAL := 1.5; END_TYPE", "(TYPE a INT) (TYPE b REAL 1.5)"},
        {"TYPE a : ns.b.c; END_TYPE", "(TYPE a ns.b.c)"},
        {"TYPE a : (x, y := 2, z); END_TYPE", "(TYPE a (enum (x) (y 2) (z)))"},
        {"TYPE a : (x, y) UINT := y; END_TYPE", "(TYPE a (enum UINT (x) (y)) y)"},
        {"TYPE a : DWORD (x := 16#FF, y) := x; END_TYPE", "(TYPE a (enum DWORD (x 16#FF) (y)) x)"},
        {"TYPE a : Base (x, y); END_TYPE", "(TYPE a (enum Base (x) (y)))"},
        {"TYPE a : INT (-5..N + 1) := 0; END_TYPE", "(TYPE a (range INT (- 5) (+ N 1)) 0)"},
        {"TYPE a : MyInt(1..5); END_TYPE", "(TYPE a (range MyInt 1 5))"},
        {"TYPE a : ARRAY[1..5] OF INT := [1, 3(2), 7]; END_TYPE",
         "(TYPE a (ARRAY (.. 1 5) INT) (array 1 (times 3 2) 7))"},
        {"TYPE a : ARRAY[-1..1, 0..N] OF ARRAY[0..1] OF b; END_TYPE",
         "(TYPE a (ARRAY (.. (- 1) 1) (.. 0 N) (ARRAY (.. 0 1) b)))"},
        {"TYPE a : STRING; b : STRING[20] := 'x'; c : WSTRING(N); END_TYPE",
         "(TYPE a STRING) (TYPE b (STRING 20) 'x') (TYPE c (WSTRING N))"},
        {"TYPE a : POINTER TO POINTER TO INT; b : REF_TO c; d : REFERENCE TO e; END_TYPE",
         "(TYPE a (POINTER (POINTER INT))) (TYPE b (REF_TO c)) (TYPE d (REFERENCE e))"},
        {"TYPE a : STRUCT x, y : INT := 1; z : b := (p := 1, q := [1, 2]); END_STRUCT; END_TYPE",
         "(TYPE a (STRUCT (x INT 1) (y INT 1) (z b (struct (:= p 1) (:= q (array 1 2))))))"},
        {"TYPE a : STRUCT x : INT; END_STRUCT END_TYPE", "(TYPE a (STRUCT (x INT)))"},
        {"TYPE a : STRUCT OVERLAP x AT %B0 : INT; END_STRUCT END_TYPE", "(TYPE a (STRUCT OVERLAP (x (at %B0) INT)))"},
        {"TYPE a EXTENDS b : STRUCT x : INT; END_STRUCT END_TYPE", "(TYPE a (STRUCT (extends b) (x INT)))"},
        {"TYPE a : STRUCT EXTENDS b x : INT; END_STRUCT END_TYPE", "(TYPE a (STRUCT (extends b) (x INT)))"},
        {"TYPE a : UNION x : INT; y : REAL; END_UNION END_TYPE", "(TYPE a (UNION (x INT) (y REAL)))"},
        {"TYPE a : STRUCT x : STRUCT y : INT; END_STRUCT; END_STRUCT END_TYPE",
         "(TYPE a (STRUCT (x (STRUCT (y INT)))))"},
        {"TYPE a : STRUCT step, union, to : INT; END_STRUCT END_TYPE",
         "(TYPE a (STRUCT (step INT) (union INT) (to INT)))"},
        {"{attribute 'q'} TYPE {attribute 'p'} a : INT; END_TYPE", "(TYPE a {attribute 'q'} {attribute 'p'} INT)"},
        {"TYPE END_TYPE", ""},
    };
    ExpectUnits(kRows);
}

TEST(ParseVariables, EverySectionAndQualifierIsKept) {
    constexpr Row kRows[] = {
        {"VAR_GLOBAL a : INT; END_VAR", "(VAR_GLOBAL (a INT))"},
        {"VAR_GLOBAL CONSTANT a, b : INT := 5; END_VAR", "(VAR_GLOBAL CONSTANT (a INT 5) (b INT 5))"},
        {"VAR_GLOBAL RETAIN PERSISTENT a : INT; END_VAR", "(VAR_GLOBAL RETAIN PERSISTENT (a INT))"},
        {"VAR_GLOBAL constant, retain : INT; END_VAR", "(VAR_GLOBAL (constant INT) (retain INT))"},
        {"VAR_GLOBAL a AT %IX0.1 : BOOL; b AT %\"x\", c AT %Q* : INT; END_VAR",
         "(VAR_GLOBAL (a (at %IX0.1) BOOL) (b (at %\"x\") INT) (c (at %Q*) INT))"},
        {"VAR_GLOBAL a AT b[1].c : INT; END_VAR", "(VAR_GLOBAL (a (at (. ([] b 1) c)) INT))"},
        {"VAR_GLOBAL a : ARRAY[1..3] OF INT := 1, 2, 3; END_VAR",
         "(VAR_GLOBAL (a (ARRAY (.. 1 3) INT) (open-array 1 2 3)))"},
        {"VAR_GLOBAL a : ARRAY[1..3] OF INT := 3(0); END_VAR",
         "(VAR_GLOBAL (a (ARRAY (.. 1 3) INT) (open-array (times 3 0))))"},
        {"VAR_GLOBAL a : t := [2((x := 1)), 3(), 2([1, 2])]; END_VAR",
         "(VAR_GLOBAL (a t (array (times 2 (struct (:= x 1))) (times 3) (times 2 (array 1 2)))))"},
        {"VAR_GLOBAL a : t := (x := 1, 2, 3, y := (z := 4)); END_VAR",
         "(VAR_GLOBAL (a t (struct (:= x (open-array 1 2 3)) (:= y (struct (:= z 4))))))"},
        {"VAR_GLOBAL a : INT := (1 + 2) * 3; END_VAR", "(VAR_GLOBAL (a INT (* (+ 1 2) 3)))"},
        {"VAR_GLOBAL a : TON := (PT := T#1s); b : TON(PT := T#1s); c : fb(1, 2); END_VAR",
         "(VAR_GLOBAL (a TON (struct (:= PT T#1s))) (b TON (init (:= PT T#1s))) (c fb (init 1 2)))"},
        {"VAR_GLOBAL a : INT(0..10); b : MyInt(1..2); c : INT (x, y); END_VAR",
         "(VAR_GLOBAL (a (range INT 0 10)) (b (range MyInt 1 2)) (c (enum INT (x) (y))))"},
        {"VAR_GLOBAL a : (red, green) := red; END_VAR", "(VAR_GLOBAL (a (enum (red) (green)) red))"},
        {"VAR_GLOBAL {attribute 'a'} {b} a, b : INT; c : INT; END_VAR",
         "(VAR_GLOBAL (a {attribute 'a'} {b} INT) (b {attribute 'a'} {b} INT) (c INT))"},
        {"PROGRAM p VAR_INPUT a : BOOL R_EDGE; b : BOOL F_EDGE; END_VAR END_PROGRAM",
         "(PROGRAM p (VAR_INPUT (a R_EDGE) (b F_EDGE)))"},
        {"PROGRAM p VAR_INPUT CONSTANT a : INT := 1; END_VAR VAR_INPUT b : INT; END_VAR VAR_OUTPUT END_VAR END_PROGRAM",
         "(PROGRAM p (VAR_INPUT CONSTANT (a INT 1)) (VAR_INPUT (b INT)) (VAR_OUTPUT))"},
        {"PROGRAM p VAR NON_RETAIN PRIVATE a : INT; END_VAR VAR_TEMP b : INT; END_VAR VAR_STAT c : INT; END_VAR "
         "VAR_INST d : INT; END_VAR VAR_EXTERNAL e : INT; END_VAR VAR_IN_OUT f : ARRAY[*, *] OF INT; END_VAR "
         "END_PROGRAM",
         "(PROGRAM p (VAR PRIVATE NON_RETAIN (a INT)) (VAR_TEMP (b INT)) (VAR_STAT (c INT)) (VAR_INST (d INT)) "
         "(VAR_EXTERNAL (e INT)) (VAR_IN_OUT (f (ARRAY * * INT))))"},
        {"FUNCTION f : INT VAR r_edge, f_edge, read_only : BOOL; END_VAR END_FUNCTION",
         "(FUNCTION f INT (VAR (r_edge BOOL) (f_edge BOOL) (read_only BOOL)))"},
    };
    ExpectUnits(kRows);
}

TEST(ParseUnit, EveryUnitOfOrganisationHasItsTree) {
    constexpr Row kRows[] = {
        {"PROGRAM p a := 1; END_PROGRAM", "(PROGRAM p (:= a 1))"},
        {"FUNCTION f : STRING[5] f := 'a'; END_FUNCTION", "(FUNCTION f (STRING 5) (:= f 'a'))"},
        {"FUNCTION f END_FUNCTION", "(FUNCTION f)"},
        {"FUNCTION f : ARRAY[0..1] OF INT END_FUNCTION", "(FUNCTION f (ARRAY (.. 0 1) INT))"},
        {"FUNCTION_BLOCK b END_FUNCTION_BLOCK", "(FUNCTION_BLOCK b)"},
        {"FUNCTION_BLOCK PUBLIC ABSTRACT b EXTENDS n.c IMPLEMENTS i, j END_FUNCTION_BLOCK",
         "(FUNCTION_BLOCK PUBLIC ABSTRACT b (extends n.c) (implements i j))"},
        {"FUNCTION_BLOCK final END_FUNCTION_BLOCK", "(FUNCTION_BLOCK final)"},
        {"FUNCTION_BLOCK Final EXTENDS b END_FUNCTION_BLOCK", "(FUNCTION_BLOCK Final (extends b))"},
        {"CLASS FINAL c METHOD PRIVATE OVERRIDE m : INT m := 1; END_METHOD END_CLASS",
         "(CLASS FINAL c (METHOD PRIVATE OVERRIDE m INT (:= m 1)))"},
        {"FUNCTION_BLOCK b VAR x : INT; END_VAR METHOD m VAR_INPUT a : INT; END_VAR x := a; END_METHOD x := 0; "
         "END_FUNCTION_BLOCK",
         "(FUNCTION_BLOCK b (VAR (x INT)) (METHOD m (VAR_INPUT (a INT)) (:= x a)) (:= x 0))"},
        {"FUNCTION_BLOCK b PROPERTY PUBLIC p : INT GET VAR t : INT; END_VAR p := x; END_GET SET x := p; END_SET "
         "END_PROPERTY END_FUNCTION_BLOCK",
         "(FUNCTION_BLOCK b (PROPERTY PUBLIC p INT (get (VAR (t INT)) (:= p x)) (set (:= x p))))"},
        {"PROGRAM p a(); ACTION a: x := 1; END_ACTION END_PROGRAM", "(PROGRAM p (ACTION a (:= x 1)) (call a))"},
        {"PROGRAM p a(); END_PROGRAM ACTION a: x := 1; END_ACTION ACTION b: END_ACTION",
         "(PROGRAM p (ACTION a (:= x 1)) (ACTION b) (call a))"},
        {"INTERFACE i EXTENDS j, k METHOD m : INT VAR_INPUT a : INT; END_VAR END_METHOD PROPERTY p : INT GET END_GET "
         "END_PROPERTY END_INTERFACE",
         "(INTERFACE i (extends j k) (METHOD m INT (VAR_INPUT (a INT))) (PROPERTY p INT (get)))"},
        {"NAMESPACE a.b TYPE t : INT; END_TYPE NAMESPACE INTERNAL c FUNCTION f END_FUNCTION END_NAMESPACE "
         "END_NAMESPACE",
         "(NAMESPACE a.b (TYPE t INT) (NAMESPACE INTERNAL c (FUNCTION f)))"},
        {"USING a.b, c; FUNCTION f USING d; END_FUNCTION", "(using a b) (using c) (FUNCTION f (using d))"},
        {"{attribute 'x'} {y} PROGRAM p END_PROGRAM {z} FUNCTION f END_FUNCTION",
         "(PROGRAM p {attribute 'x'} {y}) (FUNCTION f {z})"},
        {"(* @PATH := '' *) PROGRAM p (* @END_DECLARATION := '0' *) ; END_PROGRAM", "(PROGRAM p)"},
        {"", ""},
    };
    ExpectUnits(kRows);
}

TEST(ParseUnit, RangesReachFromTheKeywordToTheEnd) {
    const std::string text = "{a} PROGRAM p\nVAR x : INT; END_VAR\nEND_PROGRAM\n";
    const Parsed parsed(text);
    ASSERT_EQ(parsed.Unit().pous.size(), 1U);
    const ast::Pou& pou = *parsed.Unit().pous[0];
    EXPECT_EQ(text.substr(pou.range.begin - 1, pou.range.end - pou.range.begin),
              "PROGRAM p\nVAR x : INT; END_VAR\nEND_PROGRAM");
    const SourceRange block = pou.variables[0]->range;
    EXPECT_EQ(text.substr(block.begin - 1, block.end - block.begin), "VAR x : INT; END_VAR");
}

TEST(ParseSfc, StepsTransitionsAndActionsHaveTheirTree) {
    constexpr Row kRows[] = {
        {"PROGRAM p INITIAL_STEP a: END_STEP END_PROGRAM", "(PROGRAM p (INITIAL_STEP a))"},
        {"PROGRAM p INITIAL_STEP a: x(N); y(L, T#5s); z(); END_STEP STEP b: q(SD, t, v, w); r(P1, v); s; END_STEP "
         "END_PROGRAM",
         "(PROGRAM p (INITIAL_STEP a (x N) (y L T#5s) (z)) (STEP b (q SD t v w) (r P1 v) (s)))"},
        {"PROGRAM p INITIAL_STEP a: END_STEP TRANSITION FROM a TO b := c AND d; END_TRANSITION TRANSITION t (PRIORITY "
         ":= 2) "
         "FROM (a, b) TO (c, d) := TRUE; END_TRANSITION END_PROGRAM",
         "(PROGRAM p (INITIAL_STEP a) (TRANSITION (from a) (to b) (AND c d)) (TRANSITION t 2 (from a b) (to c d) "
         "TRUE))"},
        {"PROGRAM p INITIAL_STEP a: END_STEP ACTION x: v := 1; w(); END_ACTION END_PROGRAM",
         "(PROGRAM p (INITIAL_STEP a) (ACTION x (:= v 1) (call w)))"},
    };
    ExpectUnits(kRows);
}

TEST(ParseConfiguration, ResourcesTasksAndProgramsHaveTheirTree) {
    constexpr Row kRows[] = {
        {"CONFIGURATION c END_CONFIGURATION", "(CONFIGURATION c)"},
        {"CONFIGURATION c VAR_GLOBAL a : INT; END_VAR RESOURCE r ON PLC VAR_GLOBAL b : INT; END_VAR "
         "TASK t(SINGLE := x, INTERVAL := T#10ms, PRIORITY := 1); PROGRAM p WITH t : q; PROGRAM RETAIN s : ns.q "
         "(a := b, c => %QX0.1, fb WITH t); END_RESOURCE END_CONFIGURATION",
         "(CONFIGURATION c (VAR_GLOBAL (a INT)) (RESOURCE r (on PLC) (VAR_GLOBAL (b INT)) (TASK t (:= SINGLE x) "
         "(:= INTERVAL T#10ms) (:= PRIORITY 1)) (PROGRAM p (with t) q) (PROGRAM RETAIN s ns.q (:= a b) (=> c %QX0.1) "
         "(with fb t))))"},
        {"CONFIGURATION c TASK t(PRIORITY := 1); PROGRAM p WITH t : q; END_CONFIGURATION",
         "(CONFIGURATION c (RESOURCE (TASK t (:= PRIORITY 1)) (PROGRAM p (with t) q)))"},
        {"CONFIGURATION c VAR_ACCESS a : r.p.x : INT READ_WRITE; b : y : INT READ_ONLY; d : %QX0 : BOOL; END_VAR "
         "VAR_CONFIG r.p.x AT %IX0 : BOOL := TRUE; r.q.fb : t := (a := 1); END_VAR END_CONFIGURATION",
         "(CONFIGURATION c (VAR_ACCESS (a (at (. (. r p) x)) INT READ_WRITE) (b (at y) INT) (d (at %QX0) BOOL)) "
         "(VAR_CONFIG ((at (. (. r p) x) %IX0) BOOL TRUE) ((at (. (. r q) fb)) t (struct (:= a 1)))))"},
    };
    ExpectUnits(kRows);
}

}  // namespace
}  // namespace tn61131::st
