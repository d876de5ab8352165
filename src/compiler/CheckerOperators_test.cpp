#include "compiler/CheckerTestVariables.h"

namespace tn61131::st::testing {
namespace {

TEST(CheckerOperators, Arithmetic) {
    ExpectForms(
        {
            {"i := i + 1;", "(:= i (ADD:INT i INT#1))"},
            {"i := 1 + i;", "(:= i (ADD:INT INT#1 i))"},
            {"d := i + j;", "(:= d (DINT (ADD:INT i j)))"},
            {"d := i + d;", "(:= d (ADD:DINT (DINT i) d))"},
            {"d := i * 40000;", "(:= d (MUL:DINT (DINT i) DINT#40000))"},
            {"d := u + i;", "(:= d (ADD:DINT (DINT u) (DINT i)))"},
            {"l := ud + d;", "(:= l (ADD:LINT (LINT ud) (LINT d)))"},
            {"r := r * 2;", "(:= r (MUL:REAL r REAL#2.0))"},
            {"r := r * 0.1;", "(:= r (MUL:REAL r REAL#0.1))"},
            {"r := i * 0.5;", "(:= r (MUL:REAL (REAL i) REAL#0.5))"},
            {"lr := i * 0.5;", "(:= lr (MUL:LREAL (LREAL i) LREAL#0.5))"},
            {"lr := d * r;", "(:= lr (MUL:LREAL (LREAL d) (LREAL r)))"},
            {"r := i * r;", "(:= r (MUL:REAL (REAL i) r))"},
            {"i := -i;", "(:= i (NEGATE:INT i))"},
            {"i := -5;", "(:= i INT#-5)"},
            {"i := 1 + 2 * 3;", "(:= i INT#7)"},
            {"i := ten * 2;", "(:= i INT#20)"},
            {"i := i MOD 3;", "(:= i (MOD:INT i INT#3))"},
            {"w := w + 1;", "(:= w (ADD:WORD w WORD#16#1))"},
            {"lr := r ** 2;", "(:= lr (LREAL (POW:REAL r REAL#2.0)))"},
            {"i := i ** 2;", "(:= i (INT! (POW:LREAL (LREAL i) LREAL#2.0)))"},
            {"r := half;", "(:= r REAL#0.5)"},
        },
        OptionsOf("iec"));
}

TEST(CheckerOperators, PromotedIntegersComputeIn32Bits) {
    ExpectForms(
        {
            {"i := i + j;", "(:= i (INT (ADD:DINT (DINT i) (DINT j))))"},
            {"i := (i + j) / 2;", "(:= i (INT (DIV:DINT (ADD:DINT (DINT i) (DINT j)) DINT#2)))"},
            {"us := us * 2;", "(:= us (USINT (MUL:UDINT (UDINT us) UDINT#2)))"},
            {"by := by + 1;", "(:= by (BYTE (ADD:DWORD (DWORD by) DWORD#16#1)))"},
            {"d := i * 1000;", "(:= d (MUL:DINT (DINT i) DINT#1000))"},
        },
        OptionsOf("codesys"));
}

TEST(CheckerOperators, Comparison) {
    ExpectForms(
        {
            {"b := i < 5;", "(:= b (LT:BOOL i INT#5))"},
            {"b := i < u;", "(:= b (LT:BOOL (DINT i) (DINT u)))"},
            {"b := d < ud;", "(:= b (LT:BOOL (LINT d) (LINT ud)))"},
            {"b := us > 300;", "(:= b (GT:BOOL (DINT us) DINT#300))"},
            {"b := by = 16#FF;", "(:= b (EQ:BOOL by BYTE#16#FF))"},
            {"b := dw = 16#FFFF_FFFC;", "(:= b (EQ:BOOL dw DWORD#16#FFFFFFFC))"},
            {"b := r > 1;", "(:= b (GT:BOOL r REAL#1.0))"},
            {"b := s = 'abc';", "(:= b (EQ:BOOL s STRING#'abc'))"},
            {"b := c = 'a';", "(:= b (EQ:BOOL c CHAR#'a'))"},
            {"b := col = Red;", "(:= b (EQ:BOOL col INT#0))"},
            {"b := b2 = TRUE;", "(:= b (EQ:BOOL b2 BOOL#TRUE))"},
            {"b := t > T#1s;", "(:= b (GT:BOOL t T#1s))"},
            {"b := p = NULL;", "(:= b (EQ:BOOL p POINTER#Null))"},
            {"b := 2 < 3;", "(:= b BOOL#TRUE)"},
        },
        OptionsOf("iec"));
}

TEST(CheckerOperators, TimesAndDates) {
    ExpectForms(
        {
            {"t := t + t2;", "(:= t (ADD:TIME t t2))"},
            {"t := t * 3;", "(:= t (MUL:TIME t T#3ms))"},
            {"t := 3 * t;", "(:= t (MUL:TIME t T#3ms))"},
            {"t := t * i;", "(:= t (MUL:TIME t (TIME i)))"},
            {"t := t * r;", "(:= t (MUL:TIME t r))"},
            {"t := t / 2;", "(:= t (DIV:TIME t T#2ms))"},
            {"t := -t;", "(:= t (NEGATE:TIME t))"},
            {"da := da + t;", "(:= da (ADD:DATE da t))"},
            {"dt1 := da + tod;", "(:= dt1 (ADD:DATE_AND_TIME da tod))"},
            {"t := dt1 - dt1;", "(:= t (SUB:TIME dt1 dt1))"},
            {"t := tod - tod;", "(:= t (SUB:TIME tod tod))"},
            {"tod := tod - t;", "(:= tod (SUB:TIME_OF_DAY tod t))"},
        },
        OptionsOf("iec"));
}

TEST(CheckerOperators, Logic) {
    ExpectForms(
        {
            {"b := b AND b2;", "(:= b (AND_THEN b b2))"},
            {"b := b OR Pure(b2);", "(:= b (OR_ELSE b (call pure b2)))"},
            {"b := b AND Impure(b2);", "(:= b (AND:BOOL b (call impure b2)))"},
            {"b := b AND_THEN Impure(b2);", "(:= b (AND_THEN b (call impure b2)))"},
            {"b := b XOR b2;", "(:= b (XOR:BOOL b b2))"},
            {"b := NOT b;", "(:= b (NOT:BOOL b))"},
            {"w := w AND 16#FF;", "(:= w (AND:WORD w WORD#16#FF))"},
            {"dw := w OR dw;", "(:= dw (OR:DWORD (DWORD w) dw))"},
            {"by := NOT by;", "(:= by (NOT:BYTE by))"},
            {"b := b AND 1;", "(:= b (AND_THEN b BOOL#TRUE))"},
            {"i := i AND 16#F;", "(:= i (AND:INT i INT#15))"},
        },
        OptionsOf("iec"));
}

TEST(CheckerOperators, Refusals) {
    ExpectMessages(
        {
            {"i := i + b;", "6 ST0409 + does not work with INT and BOOL"},
            {"i := b + b2;", "6 ST0409 + does not work with BOOL and BOOL"},
            {"s := s + s2;", "6 ST0409 + does not work with STRING[254] and STRING[254]"},
            {"b := NOT r;", "6 ST0410 NOT does not work with REAL"},
            {"s := -s;", "6 ST0410 - does not work with STRING[254]"},
            {"w := w AND b;", "6 ST0409 AND does not work with WORD and BOOL"},
            {"w := w + i;", "6 ST0409 + does not work with WORD and INT"},
            {"w := w AND i;", "6 ST0409 AND does not work with WORD and INT"},
            {"r := r MOD 2.0;", "6 ST0409 MOD does not work with REAL and LREAL"},
            {"b := w AND_THEN w;", "6 ST0409 AND_THEN does not work with WORD and WORD"},
            {"ul := ul + l;", "7 ST0411 no integer type holds both ULINT and LINT"},
            {"b := col = fr;", "6 ST0427 Color and Fruit are different enumerations"},
            {"b := col = 1;", "6 ST0413 Color does not convert to INT by itself: write TO_INT"},
            {"b := s = ws;", "10 ST0429 WSTRING[254] and STRING[254] do not mix: convert with WSTRING_TO_STRING"},
            {"b := t = i;", "6 ST0409 = does not work with TIME and INT"},
            {"b := da = dt1;", "6 ST0409 = does not work with DATE and DATE_AND_TIME"},
            {"b := pt = pt2;", "6 ST0430 Point has no value as a whole"},
            {"b := p > p;", "6 ST0420 pointers can only be compared with = and <>"},
            {"b := p = i;", "6 ST0409 = does not work with POINTER TO INT and INT"},
            {"t := t * t2;", "6 ST0409 * does not work with TIME and TIME"},
            {"t := t MOD t2;", "6 ST0409 MOD does not work with TIME and TIME"},
            {"t := 5 / t;", "6 ST0409 / does not work with DINT and TIME"},
            {"t := t + 5;", "6 ST0409 + does not work with TIME and DINT"},
            {"dt1 := t + dt1;", "8 ST0409 + does not work with TIME and DATE_AND_TIME"},
            {"d := p - p;", "6 ST0421 the distance of two pointers cannot be computed"},
            {"p := p * 2;", "6 ST0409 * does not work with POINTER TO INT and DINT"},
            {"i := Silent(1) + 1;", "6 ST0428 'Silent(1)' gives no value"},
            // One mistake, one message.
            {"i := (i + b) * 3 + r;", "7 ST0409 + does not work with INT and BOOL"},
        },
        OptionsOf("iec"));
}

TEST(CheckerOperators, Warnings) {
    ExpectMessages(
        {
            {"b := us >= 0;", "W 6 ST0419 this comparison is always TRUE"},
            {"b := us < 0;", "W 6 ST0419 this comparison is always FALSE"},
            {"b := 0 <= w;", "W 6 ST0419 this comparison is always TRUE"},
            {"b := i >= 0;", ""},
            {"b := us > 0;", ""},
            {"b := r = r2;", "W 6 ST0418 = of REAL numbers depends on the last bit of rounding"},
            {"b := r = 0.0;", ""},
            {"lr := 7 / 2;", "W 7 ST0348 a quotient of integers has no fraction: the result is 3"},
            {"lr := 8 / 2;", ""},
            {"i := i MOD 0;", "W 12 ST0342 division by zero"},
        },
        OptionsOf("iec"));
}

TEST(CheckerOperators, ConstantsAreComputedLikeTheMachineDoes) {
    ExpectForms(
        {
            {"i := 17 / 5;", "(:= i INT#3)"},
            {"i := -17 / 5;", "(:= i INT#-3)"},
            {"i := -17 MOD 5;", "(:= i INT#-2)"},
            {"i := INT#30000 + INT#30000;", "(:= i INT#-5536)"},
            {"r := 1.0 / 4.0;", "(:= r REAL#0.25)"},
            {"b := 16#F0 > 16#0F;", "(:= b BOOL#TRUE)"},
            {"dw := 16#F0 OR 16#0F;", "(:= dw DWORD#16#FF)"},
            {"l := 16#7FFF_FFFF + 1;", "(:= l LINT#2147483648)"},
            {"ul := 18446744073709551615;", "(:= ul ULINT#18446744073709551615)"},
            {"l := -9223372036854775808;", "(:= l LINT#-9223372036854775808)"},
            {"d := 2 ** 10;", "(:= d DINT#1024)"},
            {"t := T#1s * 3;", "(:= t T#3s)"},
            {"b := 'a' < 'b';", "(:= b BOOL#TRUE)"},
            {"b := NOT TRUE OR FALSE;", "(:= b BOOL#FALSE)"},
            {"r := SQRT(4.0);", "(:= r REAL#2.0)"},
            {"i := LEN('abc');", "(:= i INT#3)"},
            {"i := TRUNC(2.9);", "(:= i INT#2)"},
            {"i := REAL_TO_INT(2.5);", "(:= i INT#2)"},
            {"i := REAL_TO_INT(3.5);", "(:= i INT#4)"},
            {"i := MAX(3, 8, 5);", "(:= i INT#8)"},
        },
        OptionsOf("iec"));
    ExpectMessages(
        {
            {"i := INT#30000 + INT#30000;", "W 6 ST0343 INT overflows: the result is -5536"},
            {"us := USINT#3 - USINT#5;", "W 7 ST0343 USINT overflows: the result is 254"},
            {"i := 5 / 0;", "10 ST0342 division by zero"},
            {"r := r / 0.0;", "10 ST0342 division by zero"},
            {"l := 9223372036854775807 + 1;", "6 ST0340 9223372036854775807 + 1 is outside the range of LINT"},
            {"i := 40000;", "6 ST0340 40000 is outside the range of INT"},
            {"i := 20000 + 20000;", "6 ST0340 40000 is outside the range of INT"},
            {"i := 99999999999999999999;", "6 ST0344 '99999999999999999999' is no number of 64 bits"},
        },
        OptionsOf("iec"));
}

}  // namespace
}  // namespace tn61131::st::testing
