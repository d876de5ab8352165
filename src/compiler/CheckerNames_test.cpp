#include "compiler/CheckerTestVariables.h"

namespace tn61131::st::testing {
namespace {

TEST(CheckerNames, Places) {
    ExpectForms(
        {
            {"pt.x := pts[2].y;", "(:= pt.x pts[DINT#2].y)"},
            {"a[i] := a[j + 1];", "(:= a[?i] a[?(ADD:INT j INT#1)])"},
            {"a[10] := a[1];", "(:= a[DINT#10] a[DINT#1])"},
            {"a[us] := 1;", "(:= a[?us] INT#1)"},
            {"a[by] := 1;", "(:= a[?by] INT#1)"},
            {"a[col] := 1;", "(:= a[?col] INT#1)"},
            {"a[ten] := 1;", "(:= a[DINT#10] INT#1)"},
            {"r := m[1, 2];", "(:= r m[DINT#1, DINT#2])"},
            {"r := m[1][i];", "(:= r m[?DINT#1, i])"},
            {"i := nest[1][2];", "(:= i nest[DINT#1][DINT#2])"},
            {"i := nest[1, 2];", "(:= i nest[DINT#1][DINT#2])"},
            {"i := p^;", "(:= i p^)"},
            {"p^ := i;", "(:= p^ i)"},
            {"i := pa^[3];", "(:= i pa^[DINT#3])"},
            {"i := p[3];", "(:= i p^[DINT#3])"},
            {"r := pp^.x;", "(:= r pp^.x)"},
            {"p := ADR(i);", "(:= p (adr i))"},
            {"ri := REF(i);", "(:= ri (adr i))"},
            {"i := ADR(j)^;", "(:= i j)"},
            {"p := p + 4;", "(:= p (addptr p DINT#4))"},
            {"p := p - 4;", "(:= p (addptr p DINT#-4))"},
            {"p := p + i;", "(:= p (addptr p (DINT i)))"},
            {"p := p - i;", "(:= p (addptr p (NEGATE:DINT (DINT i))))"},
            {"b := p <> NULL;", "(:= b (NE:BOOL p POINTER#Null))"},
            {"b := p = 0;", "(:= b (EQ:BOOL p POINTER#Null))"},
            {"rf REF= i;", "(:= rf (adr i))"},
            {"rf REF= 0;", "(:= rf POINTER#Null)"},
            {"rf := rf + 1;", "(:= rf^ (ADD:INT rf^ INT#1))"},
            {"b := __ISVALIDREF(rf);", "(:= b (NE:BOOL rf POINTER#Null))"},
            {"c := s[2];", "(:= c s{DINT#2})"},
            {"s[i] := 'x';", "(:= s{i} CHAR#'x')"},
            {"mo.on := TRUE;", "(:= mo.on BOOL#TRUE)"},
            {"i := mo.rpm;", "(:= i mo.rpm)"},
            {"i := mo.limit;", "(:= i INT#7)"},
            {"r := mos[2].speed;", "(:= r mos[DINT#2].speed)"},
            {"i := mo.Level;", "(:= i (call mo.level))"},
            {"mo.Level := 3;", "(call mo.level INT#3)"},
            {"b := ton1.Q;", "(:= b ton1.q)"},
            {"i := ctu1.CV;", "(:= i ctu1.cv)"},
            {"r := MakePoint(1.0).x;", "(:= r (result (call makepoint REAL#1.0)).x)"},
            {"col := Green;", "(:= col INT#1)"},
            {"col := Color#Blue;", "(:= col INT#2)"},
            {"col := Color.Blue;", "(:= col INT#2)"},
            {"g := 1;", "(:= g INT#1)"},
            {"pt := pt2;", "(copy pt pt2)"},
            {"pt := pp^;", "(copy pt pp^)"},
            {"pt := MakePoint(1.0);", "(copy pt (call makepoint REAL#1.0))"},
            {"nest[1] := [5, 6];", "(copy nest[DINT#1] (bytes 05000600))"},
        },
        OptionsOf("iec"));
}

TEST(CheckerNames, Bits) {
    ExpectForms(
        {
            {"b := w.3;", "(:= b (NE:BOOL (AND:WORD w WORD#16#8) WORD#16#0))"},
            {"b := w.%X15;", "(:= b (NE:BOOL (AND:WORD w WORD#16#8000) WORD#16#0))"},
            {"b := i.15;", "(:= b (NE:BOOL (AND:INT i INT#-32768) INT#0))"},
            {"b := lw.63;", "(:= b (NE:BOOL (AND:LWORD lw LWORD#16#8000000000000000) LWORD#16#0))"},
            {"by := dw.%B2;", "(:= by (BYTE! (SHR:DWORD dw USINT#16)))"},
            {"by := dw.%B0;", "(:= by (BYTE! dw))"},
            {"w := lw.%W3;", "(:= w (WORD! (SHR:LWORD lw USINT#48)))"},
            {"w.3 := b;", "(bits w 3 1 b)"},
            {"dw.%W1 := w;", "(bits dw 16 16 w)"},
            {"a[i].0 := TRUE;", "(bits a[?i] 0 1 BOOL#TRUE)"},
            {"p^.2 := b;", "(bits p^ 2 1 b)"},
            {"b := dw.ten;", "(:= b (NE:BOOL (AND:DWORD dw DWORD#16#400) DWORD#16#0))"},
        },
        OptionsOf("iec"));
    ExpectMessages(
        {
            {"b := by.8;", "6 ST0415 BYTE has no bit 8"},
            {"by := w.%B2;", "7 ST0415 WORD has no byte 2"},
            {"b := r.0;", "6 ST0415 REAL has no bit 0"},
            {"b := b.0;", "6 ST0415 BOOL has no bit 0"},
            {"p := ADR(w.1);", "10 ST0422 a bit has no address"},
        },
        OptionsOf("iec"));
}

TEST(CheckerNames, CodesysCountsUnitsFromZero) {
    ExpectForms(
        {
            {"by := s[0];", "(:= by s{DINT#1})"},
            {"by := s[i];", "(:= by s{(ADD:DINT (DINT i) DINT#1)})"},
            {"s[1] := 16#41;", "(:= s{DINT#2} BYTE#16#41)"},
        },
        OptionsOf("codesys"));
}

TEST(CheckerNames, BoundsSwitch) {
    ExpectForms({{"a[i] := 1;", "(:= a[i] INT#1)"}}, OptionsOf("iec", {"bounds=off"}));
    ExpectForms({{"a[i] := 1;", "(:= a[?i] INT#1)"}}, OptionsOf("iec", {"bounds=clamp"}));
}

TEST(CheckerNames, Refusals) {
    ExpectMessages(
        {
            {"i := nothing;", "6 ST0401 unknown name 'nothing'"},
            {"pt.z := 1.0;", "4 ST0403 Point has no member 'z'"},
            {"i := i.foo;", "8 ST0403 INT has no member 'foo'"},
            {"mo.foo := 1;", "4 ST0403 'Motor' has no member 'foo'"},
            {"col := Color#Pink;", "14 ST0403 Color has no member 'Pink'"},
            {"a[0] := 1;", "3 ST0406 index 0 is outside 1..10"},
            {"a[11] := 1;", "3 ST0406 index 11 is outside 1..10"},
            {"r := m[1, 4];", "11 ST0406 index 4 is outside 0..3"},
            {"r := m[1];", "6 ST0405 the array has 2 dimensions, not 1"},
            {"a[1, 2] := 1;", "1 ST0405 the array has 1 dimensions, not 2"},
            {"a[r] := 1;", "3 ST0407 an index must be an integer, not REAL"},
            {"i[1] := 1;", "1 ST0404 INT has no elements"},
            {"c := s[255];", "8 ST0406 index 255 is outside 1..254"},
            {"i := i^;", "6 ST0408 'i' is no pointer"},
            {"ten := 11;", "1 ST0416 'ten' cannot be written: it is a constant"},
            {"Red := 1;", "1 ST0416 'Red' cannot be written: it is a constant"},
            {"Main := 1;", "1 ST0416 'Main' cannot be written: it is a program"},
            {"Color := 1;", "1 ST0416 'Color' cannot be written: it is a type"},
            {"LEN := 1;", "1 ST0416 'LEN' cannot be written: it is a function"},
            {"i := Color;", "6 ST0402 'Color' is a type, not a value"},
            {"i := Main;", "6 ST0402 'Main' is a program, not a value"},
            {"i := LEN;", "6 ST0402 'LEN' is a function, not a value"},
            {"mo.busy := TRUE;", "1 ST0416 'mo.busy' cannot be written: it is an output"},
            {"mo.total := 1;",
             "4 ST0424 'total' of Motor cannot be used from outside: it is a VAR_IN_OUT, known "
             "only during the call"},
            {"i := mo.n;", "W 9 ST0423 'n' is an internal variable of Motor"},
            {"p := ADR(ten);", "10 ST0422 a constant has no address"},
            {"p := ADR(5);", "10 ST0422 a constant has no address"},
            {"mo := mos[1];", "1 ST0416 'mo' cannot be written: it is a function block instance"},
            {"i := THIS^.n;", "6 ST0426 THIS has no meaning outside of a function block"},
            {"Silent(1) := 1;", "1 ST0416 'Silent(1)' cannot be written: it is no variable"},
            {"i REF= j;", "1 ST0431 a variable of type REFERENCE TO is expected, not i"},
            {"rf REF= r;", "9 ST0412 REAL does not convert to REFERENCE TO INT"},
            {"pt := [1, 2];", "7 ST0314 this is no initial value for Point"},
        },
        OptionsOf("iec"));
}

TEST(CheckerNames, SimilarNamesAreOffered) {
    CheckedText text("PROGRAM Main VAR counter : INT; END_VAR countr := 1; END_PROGRAM");
    const Diagnostic& diagnostic = text.GetProject().diagnostics.Sort().front();
    ASSERT_EQ(diagnostic.notes.size(), 1U);
    EXPECT_EQ(diagnostic.notes[0].text, "did you mean 'counter'?");
}

TEST(CheckerNames, FactsOfVariables) {
    CheckedText text(R"(
PROGRAM Main
VAR none, read, written, part, address : INT; arr : ARRAY[1..2] OF INT; p : POINTER TO INT; END_VAR
  written := read; part.1 := TRUE; arr[1] := 1; p := ADR(address);
END_PROGRAM)");
    Pou& main = *text.FindPou("Main");
    std::string facts;
    for (const Variable* variable : main.variables) {
        facts += std::string(text.GetProject().names.GetSpelling(variable->name)) + ":";
        facts += variable->isRead ? "r" : "";
        facts += variable->isWritten ? "w" : "";
        facts += variable->isPartWritten ? "p" : "";
        facts += variable->isAddressTaken ? "a" : "";
        facts += " ";
    }
    EXPECT_EQ(facts, "none: read:r written:w part:wp address:rwa arr:wp p:w ");
}

TEST(CheckerNames, UserNamesWinOverBuiltIns) {
    CheckedText text(R"(
FUNCTION LEN : INT VAR_INPUT a : INT; END_VAR LEN := a; END_FUNCTION
PROGRAM Main VAR i, max : INT; END_VAR i := LEN(3); max := 5; i := MAX(i, max); END_PROGRAM)");
    EXPECT_EQ(text.Body("Main"), "(:= i (call len INT#3))\n(:= max INT#5)\n(:= i (MAX:INT i max))\n");
}

TEST(CheckerNames, InsideOfABlock) {
    CheckedText text(R"(
FUNCTION_BLOCK Base VAR n : INT; END_VAR METHOD M : INT M := n; END_METHOD n := 1; END_FUNCTION_BLOCK
FUNCTION_BLOCK Derived EXTENDS Base
VAR d : INT; p : POINTER TO Base; END_VAR
  n := 2; THIS^.d := THIS^.n; d := M(); d := THIS^.M(); d := SUPER^.M(); SUPER^(); Act(); p := THIS;
ACTION Act: d := n; END_ACTION
END_FUNCTION_BLOCK)");
    EXPECT_EQ(text.Messages(), "");
    EXPECT_EQ(text.Body("Derived"),
              "(:= n INT#2)\n(:= d n)\n(:= d (call THIS^.m))\n(:= d (call THIS^.m))\n(:= d (call THIS^.m))\n"
              "(callblock THIS^)\n(callblock THIS^.act)\n(:= p (adr THIS^))\n");
}

}  // namespace
}  // namespace tn61131::st::testing
