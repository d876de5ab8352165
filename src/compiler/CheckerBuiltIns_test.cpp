#include <algorithm>

#include "compiler/BuiltInSignatures.h"
#include "compiler/CheckerTestVariables.h"

namespace tn61131::st::testing {
namespace {

TEST(BuiltInSignatures, EveryRowOfTheLibraryIsCoveredOrExcluded) {
    std::size_t rows = 0;
    for (const FunctionGroup& group : GetFunctionGroups()) {
        for (const FunctionRow& row : group.rows) {
            const auto count = std::ranges::count_if(GetBuiltInSignatures(), [&](const BuiltInSignature& signature) {
                return signature.group == group.number && signature.id == row.id;
            });
            const bool isExcluded = IsExcludedBuiltIn(group.number, row.id);
            EXPECT_EQ(count, isExcluded ? 0 : 1) << row.name;
            EXPECT_EQ(isExcluded, row.body == nullptr) << row.name;
            rows += isExcluded ? 0 : 1;
        }
    }
    EXPECT_EQ(rows, GetBuiltInSignatures().size());
}

/// What the machine's function really gives for constants must be what the checker says: a call with constants is
/// folded only then, so an unfolded call of an invariant function shows a wrong result type.
TEST(BuiltInSignatures, ResultTypesAreThoseOfTheMachine) {
    for (const char* call : {
             "i := ABS(-5)",
             "r := SQRT(2.0)",
             "lr := LN(2)",
             "lr := LOG(2)",
             "r := EXP(1.0)",
             "lr := SIN(1.0)",
             "r := COS(1.0)",
             "r := TAN(1.0)",
             "r := ASIN(0.5)",
             "r := ACOS(0.5)",
             "r := ATAN(0.5)",
             "r := CEILING(0.5)",
             "r := FLOOR(0.5)",
             "si := SIGN(-3)",
             "r := ATAN2(1.0, 2.0)",
             "r := ROUND(1.25, 1)",
             "r := ROUNDSD(1.25, 1)",
             "w := SHL(WORD#1, 3)",
             "w := SHR(WORD#8, 1)",
             "by := ROR(BYTE#1, 1)",
             "by := ROL(BYTE#1, 1)",
             "i := MAX(1, 2)",
             "i := MIN(1, 2)",
             "i := LIMIT(0, 5, 3)",
             "i := MUX(1, 5, 6)",
             "b := GT(3, 2, 1)",
             "b := NE(1, 2, 3)",
             "i := LEN('abc')",
             "s := LEFT('abc', 2)",
             "s := RIGHT('abc', 2)",
             "s := MID('abc', 1, 2)",
             "s := CONCAT('a', 1, 'b')",
             "s := INSERT('ab', 'x', 1)",
             "s := DELETE('abc', 1, 2)",
             "s := REPLACE('abc', 'x', 1, 2)",
             "i := FIND('abc', 'c')",
             "s := UPPER('abc')",
             "s := LOWER('ABC')",
             "s := TRIM(' a ', 3)",
             "d := CODE_POINT_AT('abc', 1)",
             "s := GET_ELEMENT('a,b', ',', 2)",
             "i := WORD_BCD_TO_INT(16#1234)",
             "w := INT_TO_BCD_WORD(1234)",
             "si := BYTE_BCD_TO_SINT(16#42)",
             "d := DWORD_BCD_TO_DINT(16#42)",
             "l := LWORD_BCD_TO_LINT(16#42)",
             "by := SINT_TO_BCD_BYTE(42)",
             "dw := DINT_TO_BCD_DWORD(42)",
             "lw := LINT_TO_BCD_LWORD(42)",
             "da := CONCAT_DATE(2024, 2, 29)",
             "tod := CONCAT_TOD(1, 2, 3, 4)",
             "dt1 := CONCAT_DT(2024, 2, 29, 1, 2, 3, 4)",
             "i := DAY_OF_WEEK(D#2024-02-29)",
         }) {
        const std::string form = CheckedForm(std::string(call) + ";", OptionsOf("iec"));
        // (:= name TYPE#value) has no call left in it.
        EXPECT_EQ(std::ranges::count(form, '('), 1) << form;
        EXPECT_NE(form.find('#'), std::string::npos) << form;
    }
}

TEST(CheckerBuiltIns, Numeric) {
    ExpectForms(
        {
            {"i := ABS(i);", "(:= i (ABS:INT i))"},
            {"r := SQRT(r);", "(:= r (SQRT:REAL r))"},
            {"r := SQRT(i);", "(:= r (SQRT:REAL (REAL i)))"},
            {"lr := SQRT(i);", "(:= lr (SQRT:LREAL (LREAL i)))"},
            {"lr := SQRT(d);", "(:= lr (SQRT:LREAL (LREAL d)))"},
            {"si := SIGN(d);", "(:= si (SIGN:SINT d))"},
            {"i := SIGN(r);", "(:= i (INT (SIGN:SINT r)))"},
            {"lr := ATAN2(r, lr);", "(:= lr (ATAN2:LREAL (LREAL r) lr))"},
            {"r := ATAN2(r, 1.0);", "(:= r (ATAN2:REAL r REAL#1.0))"},
            {"r := ATAN2(Y := r, X := r2);", "(:= r (ATAN2:REAL r r2))"},
            {"r := ROUND(r, 2);", "(:= r (ROUND:REAL r DINT#2))"},
            {"r := CEIL(r);", "(:= r (CEILING:REAL r))"},
        },
        OptionsOf("iec"));
}

TEST(CheckerBuiltIns, OperatorsAsFunctions) {
    ExpectForms(
        {
            {"i := ADD(i, 1, j);", "(:= i (ADD:INT (ADD:INT i INT#1) j))"},
            {"d := SUB(d, i);", "(:= d (SUB:DINT d (DINT i)))"},
            {"b := GT(i, 5);", "(:= b (GT:BOOL i INT#5))"},
            {"b := LE(1, i, d);", "(:= b (LE:BOOL DINT#1 (DINT i) d))"},
            {"w := AND(w, 16#FF, by);", "(:= w (AND:WORD (AND:WORD w WORD#16#FF) (WORD by)))"},
            {"b := OR(b, b2);", "(:= b (OR_ELSE b b2))"},
            {"b := NOT(b);", "(:= b (NOT:BOOL b))"},
            {"i := MOVE(j);", "(:= i j)"},
            {"r := EXPT(r, 2);", "(:= r (POW:REAL r REAL#2.0))"},
            {"t := ADD_TIME(t, t2);", "(:= t (ADD:TIME t t2))"},
            {"tod := ADD_TOD_TIME(tod, t);", "(:= tod (ADD:TIME_OF_DAY tod t))"},
            {"t := SUB_DT_DT(dt1, dt1);", "(:= t (SUB:TIME dt1 dt1))"},
            {"t := MULTIME(t, 2.5);", "(:= t (MUL:TIME t LREAL#2.5))"},
            {"dt1 := CONCAT_DATE_TOD(da, tod);", "(:= dt1 (ADD:DATE_AND_TIME da tod))"},
            {"i := ADD(EN := b, IN1 := i, IN2 := 1, ENO => b2);", "(:= i (ADD:INT i INT#1 EN:=b ENO=>b2))"},
            {"i := ADD(IN3 := 3, IN1 := i, IN2 := 2);", "(:= i (ADD:INT (ADD:INT i INT#2) INT#3))"},
        },
        OptionsOf("iec"));
}

TEST(CheckerBuiltIns, SelectionAndShifts) {
    ExpectForms(
        {
            {"i := SEL(b, i, j);", "(:= i (select b j i))"},
            {"i := SEL(G := b, IN0 := i, IN1 := 5);", "(:= i (select b INT#5 i))"},
            {"b := SEL(b, Impure(b2), b3);", "(:= b (SEL:BOOL b (call impure b2) b3))"},
            {"d := SEL(b, i, d);", "(:= d (select b d (DINT i)))"},
            {"i := MAX(i, 3, us);", "(:= i (MAX:INT i INT#3 (INT us)))"},
            {"i := MAX(1, i);", "(:= i (MAX:INT INT#1 i))"},
            {"r := MIN(r, i, 0.5);", "(:= r (MIN:REAL r (REAL i) REAL#0.5))"},
            {"d := MAX(i, u, d);", "(:= d (MAX:DINT (DINT i) (DINT u) d))"},
            {"i := LIMIT(0, i, 10);", "(:= i (LIMIT:INT INT#0 i INT#10))"},
            {"i := LIMIT(MN := 0, IN := i, MX := 10);", "(:= i (LIMIT:INT INT#0 i INT#10))"},
            {"i := MUX(us, i, j, 3);", "(:= i (MUX:INT us i j INT#3))"},
            {"i := MUX(K := us, IN0 := i, IN1 := j);", "(:= i (MUX:INT us i j))"},
            {"t := MAX(t, T#1s);", "(:= t (MAX:TIME t T#1s))"},
            {"s := MAX(s, 'abc');", "(:= s (MAX:STRING[254] s STRING#'abc'))"},
            {"col := SEL(b, Red, col2);", "(:= col (select b col2 INT#0))"},
            {"w := SHL(w, 3);", "(:= w (SHL:WORD w DINT#3))"},
            {"w := SHL(IN := w, N := us);", "(:= w (SHL:WORD w us))"},
            {"dw := SHL(1, i);", "(:= dw (SHL:DWORD DWORD#16#1 i))"},
            {"by := ROR(by, 1);", "(:= by (ROR:BYTE by DINT#1))"},
        },
        OptionsOf("iec"));
}

TEST(CheckerBuiltIns, Strings) {
    ExpectForms(
        {
            {"i := LEN(s);", "(:= i (INT (LEN:UINT s)))"},
            {"u := LEN(s);", "(:= u (LEN:UINT s))"},
            {"d := LEN(s);", "(:= d (DINT (LEN:UINT s)))"},
            {"u := u + LEN(s);", "(:= u (ADD:UINT u (LEN:UINT s)))"},
            {"i := LEN(s) - 1;", "(:= i (SUB:INT (INT (LEN:UINT s)) INT#1))"},
            {"i := FIND(s, 'x');", "(:= i (INT (FIND:UINT s STRING#'x')))"},
            {"s := CONCAT(s, s2, 'x');", "(:= s (CONCAT:STRING[509] s s2 STRING#'x'))"},
            {"s := CONCAT('n=', i);", "(:= s (CONCAT:STRING[256] STRING#'n=' (STRING[254]! i)))"},
            {"ws := CONCAT(ws, s);", "(:= ws (CONCAT:WSTRING[508] ws (WSTRING[254]! s)))"},
            {"s := LEFT(s5, i);", "(:= s (LEFT:STRING[5] s5 i))"},
            {"s := MID(IN := s, L := 2, P := 3);", "(:= s (MID:STRING[254] s DINT#2 DINT#3))"},
            {"s := REPLACE(s, 'ab', 1, 2);", "(:= s (REPLACE:STRING[256] s STRING#'ab' DINT#1 DINT#2))"},
            {"c := UPPER(c);", "(:= c (UPPER:CHAR c))"},
            {"s := UPPER(s);", "(:= s (UPPER:STRING[254] s))"},
            {"s := GET_ELEMENT(s, ';', 2);", "(:= s (GET_ELEMENT:STRING[254] s CHAR#';' DINT#2))"},
            {"s := FORMAT_NUMBER(r, '0.0');", "(:= s (FORMAT_NUMBER:STRING[254] r STRING#'0.0'))"},
            {"ws := FORMAT_DATE_TIME(dt1, \"yyyy\");", "(:= ws (FORMAT_DATE_TIME:WSTRING[254] dt1 WSTRING#\"yyyy\"))"},
        },
        OptionsOf("iec"));
}

TEST(CheckerBuiltIns, TimesAndTheSystem) {
    ExpectForms(
        {
            {"t := TIME();", "(:= t (TIME! (SYS_GET_TIMESTAMP:DATE_AND_TIME)))"},
            {"dt1 := SYS_GET_TIMESTAMP();", "(:= dt1 (SYS_GET_TIMESTAMP:DATE_AND_TIME))"},
            {"da := SYS_GET_DATE();", "(:= da (SYS_GET_DATE:DATE))"},
            {"w := SYS_GET_RANDOM_WORD();", "(:= w (SYS_GET_RANDOM_WORD:WORD))"},
            {"da := CONCAT_DATE(i, 2, 3);", "(:= da (CONCAT_DATE:DATE i DINT#2 DINT#3))"},
            {"i := DAY_OF_WEEK(da);", "(:= i (DAY_OF_WEEK:INT da))"},
            {"SPLIT_TOD(tod, i, j, i, j);",
             "(SPLIT_TOD:nothing tod INT#0 (adr i) INT#0 (adr j) INT#0 (adr i) INT#0 (adr j))"},
            {"SPLIT_DATE(IN := dt1, YEAR => i, MONTH => j, DAY => a[1]);",
             "(SPLIT_DATE:nothing dt1 INT#0 (adr i) INT#0 (adr j) INT#0 (adr a[DINT#1]))"},
        },
        OptionsOf("iec"));
}

TEST(CheckerBuiltIns, SizesAndBounds) {
    ExpectForms(
        {
            {"i := SIZEOF(i);", "(:= i INT#2)"},
            {"i := SIZEOF(Point);", "(:= i INT#20)"},
            {"i := SIZEOF(pts);", "(:= i INT#60)"},
            {"i := SIZEOF(s5);", "(:= i INT#7)"},
            {"i := SIZEOF(DINT);", "(:= i INT#4)"},
            {"ud := SIZEOF(mo);", "(:= ud UDINT#20)"},
            {"i := LOWER_BOUND(a, 1);", "(:= i INT#1)"},
            {"i := UPPER_BOUND(m, 2);", "(:= i INT#3)"},
        },
        OptionsOf("iec"));
}

TEST(CheckerBuiltIns, Refusals) {
    ExpectMessages(
        {
            {"i := ABS(s);", "10 ST0513 'ABS' does not take STRING[254] for IN"},
            {"i := LEN(i);", "10 ST0513 'LEN' does not take INT for IN"},
            {"i := LEN();", "6 ST0501 'LEN' takes 1 arguments, not 0"},
            {"i := LEN(s, s);", "6 ST0501 'LEN' takes 1 arguments, not 2"},
            {"i := MUX(1);", "6 ST0501 'MUX' takes 2 or more arguments, not 1"},
            {"i := LIMIT(MN := 1, MX := 2);", "6 ST0504 'IN' of 'LIMIT' is not given"},
            {"i := LIMIT(MN := 1, MN := 2, IN := 3, MX := 3);", "21 ST0503 'MN' is given twice"},
            {"i := LIMIT(LO := 1, IN := 2, MX := 3);", "12 ST0502 'LIMIT' has no parameter 'LO'"},
            {"i := MAX(i, s);", "6 ST0409 MAX does not work with INT and STRING[254]"},
            {"i := MAX(i, b);", "6 ST0409 MAX does not work with INT and BOOL"},
            {"i := SEL(i, 1, 2);", "10 ST0413 INT does not convert to BOOL by itself: write INT_TO_BOOL"},
            {"b := SHL(b, 1);", "10 ST0513 'SHL' does not take BOOL for IN"},
            {"w := SHL(w, r);", "13 ST0513 'SHL' does not take REAL for N"},
            {"s := LEFT(s, r);", "14 ST0513 'LEFT' does not take REAL for L"},
            {"s := INSERT(s, ws, 1);",
             "16 ST0429 WSTRING[254] and STRING[254] do not mix: convert with WSTRING_TO_STRING"},
            {"i := ABS(pt);", "10 ST0513 'ABS' does not take Point for IN"},
            {"pt := MAX(pt, pt2);",
             "11 ST0513 'MAX' does not take Point for IN1\n15 ST0513 'MAX' does not take Point for IN2"},
            {"SPLIT_DATE(da, d, i, j);", "16 ST0431 a variable of type INT is expected, not DINT"},
            {"SPLIT_DATE(da, i);", "1 ST0501 'SPLIT_DATE' takes 4 arguments, not 2"},
            {"SPLIT_DATE(t, i, j, i);", "12 ST0513 'SPLIT_DATE' does not take TIME for IN"},
            {"i := SPLIT_DATE(da, i, j, i);", "6 ST0428 'SPLIT_DATE(da, i, j, i)' gives no value"},
            {"t := TIME(5);", "6 ST0501 'TIME' takes 0 arguments, not 1"},
            {"i := UPPER_BOUND(a, 2);", "21 ST0406 index 2 is outside 1..1"},
            {"i := UPPER_BOUND(i, 1);", "18 ST0404 INT has no elements"},
            {"t := ADD_TIME(i, j);", "15 ST0513 'ADD_TIME' does not take INT for IN1"},
            {"i := TO_INT(EN := b, IN := r);", "6 ST0515 'TO_INT' has no EN and ENO"},
            {"i := CODE_POINT_CHAR_LEN(s);", "6 ST0401 unknown name 'CODE_POINT_CHAR_LEN'"},
        },
        OptionsOf("iec"));
}

}  // namespace
}  // namespace tn61131::st::testing
