#include "compiler/CheckerTestVariables.h"

namespace tn61131::st::testing {
namespace {

TEST(CheckerCalls, Functions) {
    ExpectForms(
        {
            {"i := Calc(1, 2, j, d);", "(:= i (call calc INT#1 INT#2 o=>j &d))"},
            {"i := Calc(a := 1, io := d);", "(:= i (call calc INT#1 INT#2 &d))"},
            {"i := Calc(io := d, a := us, b := 3, o => d2);",
             "(:= i (call calc (INT us) INT#3 o=>d2<-(DINT out:o) &d))"},
            {"Calc(a := i, io := d);", "(call calc i INT#2 &d)"},
            {"r := Twice(3);", "(:= r (call twice REAL#3.0))"},
            {"r := Twice(i);", "(:= r (call twice (REAL i)))"},
            {"b := Impure(b, b2);", "(:= b (call impure b o=>b2))"},
            {"b := Impure(a := b, NOT o => b2);", "(:= b (call impure b NOT o=>b2))"},
            {"b := Impure(a := b, o =>);", "(:= b (call impure b))"},
            {"r := Twice(EN := b, x := r, ENO => b2);", "(:= r (call twice r EN:=b ENO=>b2))"},
            {"i := LEN2(s5);", "(:= i (call len2 s5))"},
            {"i := LEN2('abc');", "(:= i (call len2 STRING#'abc'))"},
            {"Silent(1);", "(call silent INT#1)"},
            {"i := mo.Go(3);", "(:= i (call mo.go INT#3))"},
            {"i := mos[i].Go(3);", "(:= i (call mos[?i].go INT#3))"},
            {"i := pm^.Go(3);", "(:= i (call pm^.go INT#3))"},
            {"mo.Stop();", "(call mo.stop)"},
        },
        OptionsOf("iec"));
}

TEST(CheckerCalls, FunctionsRefuse) {
    ExpectMessages(
        {
            {"i := Calc(1);", "6 ST0501 'Calc' takes 4 arguments, not 1"},
            {"i := Calc(1, 2, j, d, 5);", "6 ST0501 'Calc' takes 4 arguments, not 5"},
            {"i := Calc(a := 1);", "6 ST0504 'io' of 'Calc' is not given"},
            {"i := Calc(a := 1, io := 3);", "25 ST0507 'io' is a VAR_IN_OUT: it needs a variable"},
            {"i := Calc(a := 1, io := d + 1);", "25 ST0507 'io' is a VAR_IN_OUT: it needs a variable"},
            {"i := Calc(a := 1, io := i);",
             "25 ST0508 'io' is a VAR_IN_OUT of type DINT: a variable of type INT does not go with it"},
            {"i := Calc(a := 1, io => d);", "19 ST0506 'io' is a VAR_IN_OUT: write :="},
            {"i := Calc(a => i, io := d);", "11 ST0506 'a' is an input: write :="},
            {"i := Calc(a := 1, o := i, io := d);", "19 ST0506 'o' is an output: write =>"},
            {"i := Calc(a := 1, a := 2, io := d);", "19 ST0503 'a' is given twice"},
            {"i := Calc(a := 1, 2, io := d);", "19 ST0505 arguments without a name cannot follow named ones"},
            {"i := Calc(aa := 1, io := d);", "11 ST0502 'Calc' has no parameter 'aa'"},
            {"i := Calc(a := , io := d);", ""},
            {"i := Calc(a := r, io := d);", "16 ST0414 REAL does not fit into INT without loss: write REAL_TO_INT"},
            {"i := Calc(a := 1, io := d, o => us);",
             "33 ST0414 INT does not fit into USINT without loss: write INT_TO_USINT"},
            {"i := Calc(a := 1, io := d, o => w.1);", "33 ST0422 a bit has no address"},
            {"i := Calc(a := 1, io := d, o => 5);", "33 ST0416 '5' cannot be written: it is a constant"},
            {"i := Calc(a := 1, io := d, NOT o => i);", "28 ST0518 NOT needs an output of type BOOL, not INT"},
            {"i := Silent(1);", "6 ST0428 'Silent(1)' gives no value"},
            {"i := i(3);", "6 ST0509 'i' cannot be called"},
            {"i := Motor(3);", "6 ST0517 'Motor' is a function block: declare an instance of it and call that"},
            {"i := mo(on := b);", "6 ST0514 the call of a function block gives no value: read its outputs afterwards"},
            {"i := mo.Tick();", "6 ST0428 'mo.Tick' gives no value"},
            {"i := Unknown(1);", "6 ST0401 unknown name 'Unknown'"},
        },
        OptionsOf("iec"));
}

TEST(CheckerCalls, Blocks) {
    ExpectForms(
        {
            {"ton1(IN := b, PT := T#1s);", "(callblock ton1 in:=b pt:=T#1s)"},
            {"ton1(IN := b, PT := T#1s, Q => b2, ET => t);", "(callblock ton1 in:=b pt:=T#1s q=>b2 et=>t)"},
            {"ton1();", "(callblock ton1)"},
            {"ton1(b, T#1s);", "(callblock ton1 in:=b pt:=T#1s)"},
            {"ctu1(CU := b, R := b2, PV := 10, CV => d);",
             "(callblock ctu1 cu:=b r:=b2 pv:=INT#10 cv=>d<-(DINT out:cv))"},
            {"ton1(EN := b, IN := b2, ENO => b3);", "(callblock ton1 in:=b2 EN:=b ENO=>b3)"},
            {"mo(on := b, total := d);", "(callblock mo on:=b total:=&d)"},
            {"mo(TRUE, 2.0, total := d);", "(callblock mo on:=BOOL#TRUE speed:=REAL#2.0 total:=&d)"},
            {"mos[i](on := b, total := d, NOT busy => b2);", "(callblock mos[?i] on:=b total:=&d NOT busy=>b2)"},
            {"pm^(total := d);", "(callblock pm^ total:=&d)"},
            {"mo.Tick();", "(callblock mo.tick)"},
        },
        OptionsOf("iec"));
    ExpectMessages(
        {
            {"mo();", "W 1 ST0512 VAR_IN_OUT 'total' keeps the variable of the last call"},
            {"mo(n := 1, total := d);", "4 ST0502 'Motor' has no parameter 'n'"},
            {"mo(on := b, on := b, total := d);", "13 ST0503 'on' is given twice"},
            {"mo(busy := b, total := d);", "4 ST0506 'busy' is an output: write =>"},
            {"mo(on => b, total := d);", "4 ST0506 'on' is an input: write :="},
            {"mo(total := i);",
             "13 ST0508 'total' is a VAR_IN_OUT of type DINT: a variable of type INT does not go with it"},
            {"ton1(b, T#1s, b2, t, 5);", "1 ST0501 'TON' takes 4 arguments, not 5"},
            {"ton1(EN := i);", "12 ST0413 INT does not convert to BOOL by itself: write INT_TO_BOOL"},
            {"ton1(ENO => i);", "13 ST0431 BOOL is expected, not INT"},
            {"ton1;", "1 ST0616 this expression has no effect: it is no statement"},
        },
        OptionsOf("iec"));
}

TEST(CheckerCalls, ProgramsAndTheirActions) {
    CheckedText text(R"(
PROGRAM Other VAR_INPUT x : INT; END_VAR VAR_OUTPUT y : INT; END_VAR VAR n : INT; END_VAR
  y := x;
ACTION Step1: n := n + 1; END_ACTION
END_PROGRAM
PROGRAM Main VAR i : INT; END_VAR
  Other(x := 1, y => i); Other.Step1(); Act(); i := Other.y; Other.x := 3;
ACTION Act: i := 0; END_ACTION
END_PROGRAM)");
    EXPECT_EQ(text.Messages(), "");
    EXPECT_EQ(text.Body("Main"),
              "(callblock other x:=INT#1 y=>i)\n(callblock step1)\n(callblock act)\n(:= i y)\n(:= x INT#3)\n");
}

TEST(CheckerCalls, FunctionsKeepNoInstances) {
    CheckedText text(R"(
FUNCTION A : BOOL VAR t : TON; END_VAR t(IN := TRUE); A := t.Q; END_FUNCTION
FUNCTION B : BOOL VAR_IN_OUT t : TON; END_VAR t(IN := TRUE); B := t.Q; END_FUNCTION)");
    EXPECT_EQ(text.Messages(), "2:40 ST0510 a function keeps no state: pass 't' as VAR_IN_OUT\n");
}

TEST(CheckerCalls, InOutsOfAnyLength) {
    CheckedText text(R"(
FUNCTION F : INT VAR_IN_OUT s : STRING[10]; a : ARRAY[*] OF INT; END_VAR s := 'x'; F := a[3]; END_FUNCTION
PROGRAM Main VAR s : STRING[99]; a : ARRAY[-1..5] OF INT; b : ARRAY[1..2] OF DINT; ws : WSTRING; i : INT; END_VAR
  i := F(s, a);
  i := F(s := ws, a := a);
  i := F(s := s, a := b);
END_PROGRAM)");
    EXPECT_EQ(
        text.Messages(),
        "5:15 ST0508 's' is a VAR_IN_OUT of type STRING[10]: a variable of type WSTRING[254] does not go with it\n"
        "6:23 ST0508 'a' is a VAR_IN_OUT of type ARRAY[*] OF INT: a variable of type ARRAY[1..2] OF DINT does not "
        "go with it\n");
}

TEST(CheckerCalls, SideEffectsDecideAboutShortCircuits) {
    CheckedText text(R"(
VAR_GLOBAL g : INT; END_VAR
FUNCTION Reads : BOOL VAR_INPUT a : INT; END_VAR VAR n : INT; END_VAR n := a + g; Reads := n > 3; END_FUNCTION
FUNCTION Calls : BOOL VAR_INPUT a : INT; END_VAR Calls := Reads(a); END_FUNCTION
FUNCTION Writes : BOOL VAR_INPUT a : INT; END_VAR g := a; Writes := TRUE; END_FUNCTION
FUNCTION Passes : BOOL VAR_INPUT a : INT; END_VAR Passes := Writes(a); END_FUNCTION
FUNCTION Points : BOOL VAR_INPUT p : POINTER TO INT; END_VAR p^ := 1; Points := TRUE; END_FUNCTION
PROGRAM Main VAR b : BOOL; i : INT; END_VAR
  b := b AND Calls(i);
  b := b AND Passes(i);
  b := Passes(i) AND b;
  b := b OR (b AND Points(ADR(i)));
END_PROGRAM)");
    EXPECT_EQ(text.Messages(), "");
    EXPECT_FALSE(text.FindPou("Reads")->hasSideEffects);
    EXPECT_FALSE(text.FindPou("Calls")->hasSideEffects);
    EXPECT_TRUE(text.FindPou("Writes")->hasSideEffects);
    EXPECT_TRUE(text.FindPou("Passes")->hasSideEffects);
    EXPECT_TRUE(text.FindPou("Points")->hasSideEffects);
    EXPECT_EQ(text.Body("Main"),
              "(:= b (AND_THEN b (call calls i)))\n"
              "(:= b (AND:BOOL b (call passes i)))\n"
              "(:= b (AND_THEN (call passes i) b))\n"
              "(:= b (OR:BOOL b (AND:BOOL b (call points (adr i)))))\n");
}

TEST(CheckerCalls, Recursion) {
    constexpr const char* kText = R"(
FUNCTION A : INT A := B(); END_FUNCTION
FUNCTION B : INT B := A(); END_FUNCTION
FUNCTION C : INT C := C(); END_FUNCTION
FUNCTION D : INT D := A(); END_FUNCTION)";
    EXPECT_EQ(CheckedText(kText).Messages(),
              "2:10 ST0511 'A' calls itself: A -> B -> A\n4:10 ST0511 'C' calls itself: C -> C\n");
    EXPECT_EQ(CheckedText(kText, OptionsOf("iec", {"recursion=on"})).Messages(), "");
}

}  // namespace
}  // namespace tn61131::st::testing
