#include <gtest/gtest.h>

#include "compiler/CheckerTesting.h"

namespace tn61131::st {
namespace {

constexpr const char* kVariables = R"(
TYPE Color : (Red, Green, Blue); Fruit : (Apple, Pear); Percent : INT(0..100); END_TYPE
FUNCTION Pure : BOOL VAR_INPUT a : BOOL; END_VAR Pure := NOT a; END_FUNCTION
FUNCTION Impure : BOOL VAR_INPUT a : BOOL; END_VAR VAR_OUTPUT o : BOOL; END_VAR o := a; Impure := a; END_FUNCTION
PROGRAM Main
VAR
  b, b2, b3 : BOOL; si : SINT; i, j : INT; d, d2 : DINT; l : LINT; us : USINT; u, u2 : UINT; ud : UDINT; ul : ULINT;
  by, by2 : BYTE; w : WORD; dw : DWORD; lw : LWORD; r, r2 : REAL; lr : LREAL;
  t, t2 : TIME; tod : TOD; da : DATE; dt1 : DT; s, s2 : STRING; s5 : STRING[5]; ws : WSTRING; c : CHAR;
  col, col2 : Color; fr : Fruit; pc : Percent; p : POINTER TO INT; pr : POINTER TO REAL; ri : REF_TO INT;
  a : ARRAY[1..10] OF INT; m : ARRAY[0..2, 0..3] OF REAL;
END_VAR
VAR CONSTANT ten : INT := 10; half : REAL := 0.5; END_VAR
)";

struct Case {
    const char* statement;
    const char* expected;  ///< the checked statement, or the messages with the line left out
};

/// The checked form of statements in a program that has the variables above; messages lose their line.
std::string Checked(const std::string& statement, const CompileOptions& options) {
    CheckedText text(std::string(kVariables) + statement + "\nEND_PROGRAM\n", options);
    std::string body = text.Body("Main");
    while (!body.empty() && body.back() == '\n')
        body.pop_back();
    return body;
}

void Expect(std::initializer_list<Case> cases, const CompileOptions& options) {
    for (const Case& each : cases)
        EXPECT_EQ(Checked(each.statement, options), each.expected) << each.statement;
}

TEST(CheckerOperators, Arithmetic) {
    Expect(
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
    Expect(
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
    Expect(
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
    Expect(
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
    Expect(
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

}  // namespace
}  // namespace tn61131::st
