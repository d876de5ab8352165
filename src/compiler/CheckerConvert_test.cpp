#include "compiler/CheckerTestVariables.h"

namespace tn61131::st::testing {
namespace {

TEST(CheckerConvert, LosslessAssignmentsAreSilent) {
    ExpectForms(
        {
            {"d := i;", "(:= d (DINT i))"},
            {"d := us;", "(:= d (DINT us))"},
            {"i := us;", "(:= i (INT us))"},
            {"r := i;", "(:= r (REAL i))"},
            {"lr := d;", "(:= lr (LREAL d))"},
            {"lr := r;", "(:= lr (LREAL r))"},
            {"w := by;", "(:= w (WORD by))"},
            {"s := c;", "(:= s (STRING[254] c))"},
            {"s5 := s;", "(:= s5 s)"},
            {"i := pc;", "(:= i pc)"},
            {"p := NULL;", "(:= p POINTER#Null)"},
            {"p := 0;", "(:= p POINTER#Null)"},
            {"b := 1;", "(:= b BOOL#TRUE)"},
            {"c := 'x';", "(:= c CHAR#'x')"},
            {"wc := \"x\";", "(:= wc WCHAR#\"x\")"},
            {"r := 0.1;", "(:= r REAL#0.1)"},
            {"w := 16#FFFF;", "(:= w WORD#16#FFFF)"},
            {"si := INT#5;", "(:= si SINT#5)"},
            {"pc := 100;", "(:= pc INT#100)"},
            {"pc := i;", "(:=ranged pc i)"},
            {"pc := pc;", "(:= pc pc)"},
        },
        OptionsOf("iec"));
}

TEST(CheckerConvert, RefusedByTheStandard) {
    ExpectMessages(
        {
            {"i := d;", "6 ST0414 DINT does not fit into INT without loss: write DINT_TO_INT"},
            {"r := d;", "6 ST0414 DINT does not fit into REAL without loss: write DINT_TO_REAL"},
            {"r := lr;", "6 ST0414 LREAL does not fit into REAL without loss: write LREAL_TO_REAL"},
            {"d := r;", "6 ST0414 REAL does not fit into DINT without loss: write REAL_TO_DINT"},
            {"u := i;", "6 ST0414 INT does not fit into UINT without loss: write INT_TO_UINT"},
            {"by := w;", "7 ST0414 WORD does not fit into BYTE without loss: write WORD_TO_BYTE"},
            {"w := i;", "6 ST0413 INT does not convert to WORD by itself: write INT_TO_WORD"},
            {"i := w;", "6 ST0413 WORD does not convert to INT by itself: write WORD_TO_INT"},
            {"b := i;", "6 ST0413 INT does not convert to BOOL by itself: write INT_TO_BOOL"},
            {"i := b;", "6 ST0413 BOOL does not convert to INT by itself: write BOOL_TO_INT"},
            {"b := 2;", "6 ST0413 DINT does not convert to BOOL by itself: write DINT_TO_BOOL"},
            {"t := d;", "6 ST0413 DINT does not convert to TIME by itself: write DINT_TO_TIME"},
            {"d := t;", "6 ST0413 TIME does not convert to DINT by itself: write TIME_TO_DINT"},
            {"tod := dt1;", "8 ST0413 DATE_AND_TIME does not convert to TIME_OF_DAY by itself: write DT_TO_TOD"},
            {"s := i;", "6 ST0413 INT does not convert to STRING[254] by itself: write INT_TO_STRING"},
            {"ws := s;", "7 ST0429 STRING[254] and WSTRING[254] do not mix: convert with STRING_TO_WSTRING"},
            {"ws := 'abc';", "7 ST0429 STRING[3] and WSTRING[254] do not mix: convert with STRING_TO_WSTRING"},
            {"i := 'abc';", "6 ST0413 STRING[3] does not convert to INT by itself: write STRING_TO_INT"},
            {"c := s;", "6 ST0413 STRING[254] does not convert to CHAR by itself: write STRING_TO_CHAR"},
            {"i := col;", "6 ST0413 Color does not convert to INT by itself: write TO_INT"},
            {"col := 1;", "8 ST0431 Color is expected, not DINT"},
            {"col := fr;", "8 ST0427 Fruit and Color are different enumerations"},
            {"dw := ADR(i);", "7 ST0425 a pointer is no number: keep it in a variable of type POINTER TO"},
            {"p := pr;", "6 ST0412 POINTER TO REAL does not convert to POINTER TO INT"},
            {"p := i;", "6 ST0412 INT does not convert to POINTER TO INT"},
            {"pt := i;", "7 ST0412 INT does not convert to Point"},
            {"pc := 101;", "7 ST0345 101 is outside 0..100"},
            {"us := -1;", "7 ST0340 -1 is outside the range of USINT"},
            {"w := -1;", "6 ST0340 -1 is outside the range of WORD"},
            {"i := 16#FFFF;", "6 ST0340 16#FFFF is outside the range of INT"},
            {"i := 1.5;", "6 ST0414 LREAL does not fit into INT without loss: write LREAL_TO_INT"},
            {"r := 1E300;", "6 ST0340 1E300 is outside the range of REAL"},
            {"s5 := 'abcdef';", "W 7 ST0346 the text has 6 units, 5 are kept"},
        },
        OptionsOf("iec"));
}

TEST(CheckerConvert, AcceptedByCodesys) {
    ExpectForms(
        {
            {"w := i;", "(:= w (WORD i))"},
            {"i := w;", "(:= i (INT w))"},
            {"dw := by;", "(:= dw (DWORD by))"},
            {"i := 16#FFFF;", "(:= i INT#-1)"},
            {"i := d;", "(:= i (INT d))"},
            {"i := r;", "(:= i (INT r))"},
            {"i := col;", "(:= i col)"},
            {"pr := ADR(i);", "(:= pr (adr i))"},
        },
        OptionsOf("codesys"));
    ExpectMessages(
        {
            {"w := i;", ""},
            {"i := 16#FFFF;", ""},
            {"pr := ADR(i);", ""},
            // The sum of two INT is an INT, whatever it is computed in.
            {"i := i + j;", ""},
            {"i := (i * j + 3) / 2;", ""},
            {"i := -i;", ""},
            {"us := us * 2;", ""},
            {"by := by + 1;", ""},
            {"i := SEL(b, i, j + 1);", ""},
            {"i := d;", "W 6 ST0414 DINT does not fit into INT without loss: write DINT_TO_INT"},
            {"i := i + d;", "W 6 ST0414 DINT does not fit into INT without loss: write DINT_TO_INT"},
            {"i := INT_TO_DINT(i) + 1;", "W 6 ST0414 DINT does not fit into INT without loss: write DINT_TO_INT"},
            {"i := u;", "W 6 ST0414 UINT does not fit into INT without loss: write UINT_TO_INT"},
            {"w := -1;", "W 6 ST0340 -1 is outside the range of WORD"},
            {"b := i;", "6 ST0413 INT does not convert to BOOL by itself: write INT_TO_BOOL"},
            {"us := 300;", "7 ST0340 300 is outside the range of USINT"},
        },
        OptionsOf("codesys"));
    ExpectMessages({{"i := d;", ""}}, OptionsOf("codesys", {"narrowing=silent"}));
}

TEST(CheckerConvert, Explicit) {
    ExpectForms(
        {
            {"i := REAL_TO_INT(r);", "(:= i (INT! r))"},
            {"i := TRUNC(r);", "(:= i (INT!trunc r))"},
            {"d := TRUNC(lr) + 1;", "(:= d (ADD:DINT (DINT!trunc lr) DINT#1))"},
            {"i := LREAL_TRUNC_INT(lr);", "(:= i (INT!trunc lr))"},
            {"si := TRUNC_SINT(r);", "(:= si (SINT!trunc r))"},
            {"d := TO_DINT(r);", "(:= d (DINT! r))"},
            {"s := ANY_TO_STRING(i);", "(:= s (STRING[254]! i))"},
            {"i := STRING_TO_INT(s5);", "(:= i (INT! s5))"},
            {"w := INT_TO_WORD(i);", "(:= w (WORD! i))"},
            {"i := BOOL_TO_INT(b);", "(:= i (INT! b))"},
            {"b := INT_TO_BOOL(i);", "(:= b (BOOL! i))"},
            {"dw := TIME_TO_DWORD(t);", "(:= dw (DWORD! t))"},
            {"t := DINT_TO_TIME(d);", "(:= t (TIME! d))"},
            {"tod := DT_TO_TOD(dt1);", "(:= tod (TIME_OF_DAY! dt1))"},
            {"da := DATE_AND_TIME_TO_DATE(dt1);", "(:= da (DATE! dt1))"},
            {"ws := STRING_TO_WSTRING(s);", "(:= ws (WSTRING[254]! s))"},
            {"i := TO_INT(col);", "(:= i col)"},
            {"i := INT#col2;", "(:= i col2)"},
            {"d := DINT_TO_DINT(i);", "(:= d (DINT i))"},
            {"lr := REAL#r;", "(:= lr (LREAL r))"},
            {"i := WORD_BCD_TO_INT(w);", "(:= i (WORD_BCD_TO_INT:INT w))"},
            {"u := WORD_BCD_TO_UINT(w);", "(:= u (UINT! (WORD_BCD_TO_INT:INT w)))"},
            {"w := UINT_TO_BCD_WORD(u);", "(:= w (INT_TO_BCD_WORD:WORD (INT! u)))"},
            {"i := BCD_TO_INT(by);", "(:= i (INT! (BYTE_BCD_TO_SINT:SINT by)))"},
            {"da := UDINT_TO_DATE(ud);", "(:= da (DATE! ud))"},
        },
        OptionsOf("iec"));
    ExpectMessages(
        {
            {"i := WORD_TO_INT(i);", "18 ST0413 INT does not convert to WORD by itself: write INT_TO_WORD"},
            {"i := INT_TO_FOO(i);", "6 ST0401 unknown name 'INT_TO_FOO'"},
            {"r := CHAR_TO_REAL(c);", "6 ST0412 CHAR does not convert to REAL"},
            {"i := TO_INT(p);", "13 ST0425 a pointer is no number: keep it in a variable of type POINTER TO"},
            {"i := TO_INT(pt);", "6 ST0412 Point does not convert to INT"},
            {"i := TO_INT(1, 2);", "6 ST0501 'TO_INT' takes 1 arguments, not 2"},
            {"i := TRUNC(s);", "12 ST0513 'TRUNC' does not take STRING[254] for IN"},
        },
        OptionsOf("iec"));
}

TEST(CheckerConvert, DatesAsSeconds) {
    ExpectForms(
        {
            {"dw := DT_TO_DWORD(dt1);", "(:= dw (DWORD! (DIV:ULINT (ULINT! dt1) ULINT#1000)))"},
            {"dt1 := DWORD_TO_DT(dw);", "(:= dt1 (DATE_AND_TIME! (MUL:ULINT (ULINT! dw) ULINT#1000)))"},
            {"dw := DATE_TO_DWORD(da);", "(:= dw (DWORD! (MUL:UDINT (UDINT! da) UDINT#86400)))"},
            {"da := DWORD_TO_DATE(dw);", "(:= da (DATE! (DIV:UDINT (UDINT! dw) UDINT#86400)))"},
            {"dt1 := DATE_TO_DT(da);", "(:= dt1 (DATE_AND_TIME! da))"},
            {"dw := TOD_TO_DWORD(tod);", "(:= dw (DWORD! tod))"},
            {"i := STRING_TO_INT(s);", "(:= i (INT!zero s))"},
        },
        OptionsOf("codesys"));
}

}  // namespace
}  // namespace tn61131::st::testing
