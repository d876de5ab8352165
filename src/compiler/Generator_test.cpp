// What generated code does, and where faults are: every source runs without passes, with all, and with each alone.
#include "compiler/Generator.h"

#include <gmock/gmock.h>

#include "compiler/CheckerTesting.h"
#include "compiler/GeneratorTesting.h"
#include "compiler/TreeInvariant.h"

namespace tn61131::st {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

struct NamedPasses {
    const char* name;
    Passes passes;
};

std::vector<NamedPasses> EveryPass() {
    std::vector<NamedPasses> all = {{"none", NoPasses()}, {"all", Passes{}}};
    const auto add = [&](const char* name, bool Passes::*pass) {
        all.push_back({name, NoPasses()});
        all.back().passes.*pass = true;
    };
    add("fold", &Passes::foldConstants);
    add("addresses", &Passes::commonAddresses);
    add("inline", &Passes::inlineLeaves);
    add("dead", &Passes::deadStores);
    add("jumps", &Passes::jumps);
    return all;
}

struct Value {
    const char* path;
    const char* value;
};

struct GeneratorCase {
    const char* why;
    const char* source;
    std::vector<Value> values;
    std::vector<const char*> switches = {};
    int scans = 1;
    unsigned int fault = 0;
    std::uint32_t line = 0;
    std::uint32_t column = 0;
};

void PrintTo(const GeneratorCase& row, std::ostream* out) {
    *out << row.why;
}

class Generator : public ::testing::TestWithParam<GeneratorCase> {};

TEST_P(Generator, RunsAlikeWithEveryPass) {
    const GeneratorCase& row = GetParam();
    for (const NamedPasses& each : EveryPass()) {
        SCOPED_TRACE(each.name);
        CompileOptions options;
        for (const char* assignment : row.switches) {
            std::string error;
            ASSERT_TRUE(SetSwitch(assignment, options, error)) << error;
        }
        options.passes = each.passes;
        CompiledRun run(row.source, options);
        ASSERT_TRUE(run.result.succeeded) << run.messages;
        bool succeeded = true;
        for (int scan = 0; succeeded && scan < row.scans; ++scan, run.timestamp += 100)
            succeeded = run.Scan();
        EXPECT_EQ(run.GetFault(), row.fault) << run.GetFaultText() << " in line " << run.GetLine();
        EXPECT_EQ(succeeded, row.fault == 0);
        if (row.fault != 0) {
            EXPECT_EQ(run.GetLine(), row.line);
            EXPECT_EQ(run.GetColumn(), row.column);
        }
        for (const Value& value : row.values)
            EXPECT_EQ(run.Value(value.path), value.value) << value.path;
        if (HasFailure()) {
            std::cout << run.Listing();
            return;
        }
    }
}

/// What passes make is a checked tree as well.
TEST_P(Generator, PassesKeepTheTreesInvariant) {
    const GeneratorCase& row = GetParam();
    CompileOptions options;
    for (const char* assignment : row.switches) {
        std::string error;
        ASSERT_TRUE(SetSwitch(assignment, options, error)) << error;
    }
    CheckedText text(row.source, options);
    ASSERT_FALSE(text.GetProject().diagnostics.HasErrors()) << text.Messages();
    Optimise(text.GetProject());
    testing::TreeInvariant invariant(text.GetProject().names);
    for (const Pou& pou : text.GetProject().pous) {
        if (pou.body != nullptr) invariant.Visit(pou.body);
    }
    EXPECT_THAT(invariant.GetFailures(), ::testing::IsEmpty());
}

const GeneratorCase kFrames[] = {
    {"a large local array is fresh in every call",
     R"(FUNCTION Sum : DINT
VAR_INPUT n : INT; END_VAR
VAR a : ARRAY[1..2000] OF INT := [2000(1)]; i : INT; END_VAR
a[n] := a[n] + 10;
FOR i := 1 TO 2000 DO Sum := Sum + a[i]; END_FOR
END_FUNCTION
PROGRAM Main VAR x, y : DINT; END_VAR
x := Sum(5); y := Sum(2000);
END_PROGRAM)",
     {{"x", "2010"}, {"y", "2010"}}},
    {"a large local array of a recursive function belongs to the call",
     R"(FUNCTION Deep : DINT
VAR_INPUT n : INT; END_VAR
VAR a : ARRAY[1..600] OF INT; END_VAR
a[600] := n;
IF n > 0 THEN Deep := Deep(n - 1); END_IF
Deep := Deep + a[600];
END_FUNCTION
PROGRAM Main VAR x : DINT; END_VAR x := Deep(4); END_PROGRAM)",
     {{"x", "10"}},
     {"recursion=on"}},
    {"by-value aggregates are copies, also when they are written through a pointer",
     R"(TYPE P : STRUCT x : INT; y : INT; END_STRUCT END_TYPE
FUNCTION Change : INT
VAR_INPUT p : P; a : ARRAY[0..2] OF INT; END_VAR
VAR r : REF_TO INT; END_VAR
p.x := p.x + 1; r := REF(a[1]); r^ := 50;
Change := p.x + a[0] + a[1] + a[2];
END_FUNCTION
PROGRAM Main VAR p : P := (x := 1, y := 2); a : ARRAY[0..2] OF INT := [7, 8, 9]; s : INT; END_VAR
s := Change(p, a);
END_PROGRAM)",
     {{"s", "68"}, {"Main.p.x", "1"}, {"Main.a[1]", "8"}}},
    {"an aggregate that the callee changes by another way keeps its old value there",
     R"(VAR_GLOBAL g : ARRAY[0..1] OF INT := [1, 2]; END_VAR
FUNCTION Look : INT
VAR_INPUT a : ARRAY[0..1] OF INT; END_VAR
g[0] := 100;
Look := a[0];
END_FUNCTION
PROGRAM Main VAR x : INT; END_VAR x := Look(g); END_PROGRAM)",
     {{"x", "1"}, {"g[0]", "100"}}},
    {"aggregate results nest and start fresh",
     R"(TYPE P : STRUCT x : INT := 4; y : INT; END_STRUCT END_TYPE
FUNCTION Make : P VAR_INPUT v : INT; END_VAR Make.y := Make.x + v; END_FUNCTION
FUNCTION Twice : P VAR_INPUT p : P; END_VAR Twice.x := p.x * 2; Twice.y := p.y * 2; END_FUNCTION
PROGRAM Main VAR p : P; a, b : INT; END_VAR
p := Twice(Twice(Make(3)));
p := Twice(p);
a := p.x; b := p.y;
END_PROGRAM)",
     {{"a", "32"}, {"b", "56"}}},
    {"a result of text that is read and written in its function",
     R"(FUNCTION Multiply : STRING[20]
VAR_INPUT s : STRING[3]; n : INT; END_VAR
VAR i : INT; END_VAR
FOR i := 1 TO n DO Multiply := CONCAT(Multiply, s); END_FOR
END_FUNCTION
PROGRAM Main VAR a, b : STRING[20]; long : STRING[10] := 'abcdef'; END_VAR
a := Multiply('xy', 3); b := Multiply(long, 2);
END_PROGRAM)",
     {{"a", "'xyxyxy'"}, {"b", "'abcabc'"}}},
    {"outputs start with their initial value in every call and may be left out",
     R"(FUNCTION F : INT
VAR_INPUT set : BOOL; END_VAR
VAR_OUTPUT a : INT := 5; b : STRING[4] := 'init'; END_VAR
IF set THEN a := 9; b := 'new'; END_IF
F := a;
END_FUNCTION
PROGRAM Main VAR r : INT; a : INT; l : LREAL; s : STRING[2]; END_VAR
r := F(TRUE, a => l, b => s);
r := r * 10 + F(FALSE, a => a);
END_PROGRAM)",
     {{"r", "95"}, {"a", "5"}, {"l", "9.0"}, {"s", "'ne'"}}},
    {"an in-out text holds what its argument holds",
     R"(FUNCTION Fill : INT VAR_IN_OUT s : STRING; END_VAR s := '1234567890'; Fill := LEN(s); END_FUNCTION
FUNCTION Pass : INT VAR_IN_OUT s : STRING; END_VAR Pass := Fill(s); END_FUNCTION
PROGRAM Main VAR a : STRING[4]; guard : WORD := 16#5555; b : STRING[20]; n, m : INT; END_VAR
n := Pass(a); m := Pass(b);
END_PROGRAM)",
     {{"n", "4"}, {"m", "10"}, {"a", "'1234'"}, {"b", "'1234567890'"}, {"guard", "16#5555"}}},
};

const GeneratorCase kBlocks[] = {
    {"pointers to a block's own variables lead to its own instance later",
     R"(FUNCTION_BLOCK Inner
VAR own : INT; p : REF_TO INT; END_VAR
VAR_OUTPUT v : INT; END_VAR
IF p = NULL THEN p := REF(own); END_IF
p^ := p^ + 1; v := own;
END_FUNCTION_BLOCK
FUNCTION_BLOCK Outer
VAR a, b : Inner; n : INT; END_VAR
VAR_OUTPUT va, vb : INT; END_VAR
IF n MOD 2 = 0 THEN a(v => va); END_IF
b(v => vb); n := n + 1;
END_FUNCTION_BLOCK
PROGRAM Main VAR x, y : Outer; xa, xb, ya, yb : INT; END_VAR
x(); y(); x(va => xa, vb => xb); y(); y(va => ya, vb => yb);
END_PROGRAM)",
     {{"xa", "1"}, {"xb", "2"}, {"ya", "2"}, {"yb", "3"}}},
    {"in-outs of nested blocks reach through both instances",
     R"(FUNCTION_BLOCK Add VAR_IN_OUT t : INT; END_VAR VAR_INPUT n : INT; END_VAR t := t + n; END_FUNCTION_BLOCK
FUNCTION_BLOCK Both
VAR_IN_OUT t : INT; END_VAR
VAR add : Add; own : INT; END_VAR
VAR_OUTPUT o : INT; END_VAR
add(t := t, n := 5); add(t := own, n := 7); o := own;
END_FUNCTION_BLOCK
PROGRAM Main VAR b : Both; a : ARRAY[1..3] OF INT; i : INT := 2; o : INT; END_VAR
b(t := a[i]); b(t := a[i], o => o);
END_PROGRAM)",
     {{"a[2]", "10"}, {"o", "14"}, {"a[1]", "0"}, {"a[3]", "0"}}},
    {"a shorter text takes part in a block as a copy",
     R"(FUNCTION_BLOCK Fill VAR_IN_OUT s : STRING[20]; END_VAR s := CONCAT(s, '123456'); END_FUNCTION_BLOCK
PROGRAM Main VAR f : Fill; a : STRING[4] := 'x'; guard : WORD := 16#5555; END_VAR
f(s := a);
END_PROGRAM)",
     {{"a", "'x123'"}, {"guard", "16#5555"}}},
    {"edge inputs fire once, and see their old value when left out",
     R"(FUNCTION_BLOCK Count
VAR_INPUT up : BOOL R_EDGE; down : BOOL F_EDGE; END_VAR
VAR_OUTPUT rose, fell : INT; END_VAR
IF up THEN rose := rose + 1; END_IF
IF down THEN fell := fell + 1; END_IF
END_FUNCTION_BLOCK
PROGRAM Main VAR c : Count; r, f : INT; END_VAR
c(up := TRUE, down := TRUE); c(); c(up := TRUE); c(up := FALSE, down := FALSE); c(); c(up := TRUE);
r := c.rose; f := c.fell;
END_PROGRAM)",
     {{"r", "2"}, {"f", "1"}}},
    {"a block that is not enabled keeps its outputs",
     R"(FUNCTION_BLOCK Count VAR_OUTPUT n : INT; END_VAR n := n + 1; END_FUNCTION_BLOCK
PROGRAM Main VAR c : Count; on, off : BOOL; n : INT; t : TON; q : BOOL; END_VAR
c(EN := TRUE, ENO => on, n => n);
c(EN := FALSE, ENO => off, n => n);
t(EN := FALSE, IN := TRUE, PT := T#0s, Q => q, ENO => off);
n := n * 10 + c.n;
END_PROGRAM)",
     {{"on", "TRUE"}, {"off", "FALSE"}, {"n", "11"}, {"q", "FALSE"}}},
    {"a standard block takes inputs that are left out from its instance",
     R"(PROGRAM Main VAR t : TON; q : BOOL; et : TIME; c : CTU; cv : DINT; i : INT; END_VAR
t(IN := TRUE, PT := T#150ms); t(); q := t.Q; et := t.ET;
FOR i := 1 TO 4 DO c(CU := i MOD 2 = 1, PV := 9); END_FOR
c(CV => cv);
END_PROGRAM)",
     {{"q", "TRUE"}, {"et", "150ms"}, {"cv", "6"}},
     {},
     3},
    {"blocks in an array, the index computed once",
     R"(VAR_GLOBAL calls : INT; END_VAR
FUNCTION Next : INT calls := calls + 1; Next := calls; END_FUNCTION
FUNCTION_BLOCK Add VAR_INPUT a, b : INT; END_VAR VAR_OUTPUT s : INT; END_VAR s := s + a + b; END_FUNCTION_BLOCK
PROGRAM Main VAR f : ARRAY[0..4] OF Add; s : INT; END_VAR
f[Next()](a := 1, b := 2, s => s); f[Next()](a := 3, b := 4, s => s);
END_PROGRAM)",
     {{"calls", "2"}, {"s", "7"}, {"Main.f[1].s", "3"}, {"Main.f[2].s", "7"}, {"Main.f[0].s", "0"}}},
    {"methods and actions work on the instance they are called for",
     R"(FUNCTION_BLOCK Box
VAR total : INT; END_VAR
METHOD Add : INT VAR_INPUT x : INT; END_VAR VAR t : INT := 1; END_VAR total := total + x; t := t + 1; Add := t; END_METHOD
METHOD Both : INT VAR_INPUT x : INT; END_VAR Add(x); Both := THIS^.Add(x) + total; END_METHOD
END_FUNCTION_BLOCK
PROGRAM Main VAR a : Box; b : ARRAY[1..2] OF Box; x, y, i : INT; END_VAR
i := 2; x := a.Add(5); y := b[i].Both(10);
END_PROGRAM)",
     {{"x", "2"}, {"y", "22"}, {"Main.a.total", "5"}, {"Main.b[2].total", "20"}, {"Main.b[1].total", "0"}}},
};

const GeneratorCase kChecks[] = {
    {"an index above the array",
     "PROGRAM Main VAR a : ARRAY[1..3] OF INT; i : INT := 4; END_VAR\na[1] := 5;\n  a[i] := 6;\nEND_PROGRAM",
     {{"a[1]", "5"}},
     {},
     1,
     221,
     3,
     3},
    {"an index below the array, in an expression",
     "PROGRAM Main VAR a : ARRAY[-2..3] OF REAL; i : SINT := -2; x : REAL; END_VAR\nx := 1.0 +\n a[i - "
     "1];\nEND_PROGRAM",
     {{"x", "0.0"}},
     {},
     1,
     221,
     3,
     2},
    {"the second index",
     "PROGRAM Main VAR a : ARRAY[0..1, 0..2] OF INT; i : UINT := 1; j : UINT := 3; END_VAR\na[i, j] := 6;\nEND_PROGRAM",
     {},
     {},
     1,
     221,
     2,
     1},
    {"indices at both ends are inside",
     R"(PROGRAM Main VAR a : ARRAY[-3..4] OF DINT; i : SINT; u : USINT; l : LINT; s : DINT; b : ARRAY[0..255] OF BYTE; END_VAR
i := -3; a[i] := 1; i := 4; a[i] := 2; u := 4; a[u] := a[u] + 10; l := -3; a[l] := a[l] + 100;
u := 255; b[u] := 7; s := a[-3] * 1000 + a[4] + BYTE_TO_DINT(b[255]);
END_PROGRAM)",
     {{"s", "101019"}}},
    {"an index is clamped",
     R"(PROGRAM Main VAR a : ARRAY[2..4] OF INT := [20, 30, 40]; i : INT; x, y : INT; b : BYTE := 200; END_VAR
i := -5; x := a[i]; i := 9; y := a[i]; a[b] := 41;
END_PROGRAM)",
     {{"x", "20"}, {"y", "40"}, {"a[4]", "41"}},
     {"bounds=clamp"}},
    {"an index is not tested",
     R"(PROGRAM Main VAR a : ARRAY[0..1] OF INT; b : ARRAY[0..1] OF INT := [5, 6]; i : INT := 3; x : INT; END_VAR
x := a[i];
END_PROGRAM)",
     {{"x", "6"}},
     {"bounds=off"}},
    {"a subrange takes its ends",
     "TYPE S : INT(-5..5); END_TYPE PROGRAM Main VAR s, t : S; i : INT := -5; END_VAR s := i; t := -i; END_PROGRAM",
     {{"s", "-5"}, {"t", "5"}}},
    {"a number outside of the subrange",
     "TYPE S : INT(-5..5); END_TYPE PROGRAM Main VAR s : S; i : INT := 6; END_VAR\ns := 1;\n s := i;\nEND_PROGRAM",
     {{"s", "1"}},
     {},
     1,
     221,
     3,
     2},
    {"a counter that the body changes is tested again",
     R"(PROGRAM Main VAR a : ARRAY[1..3] OF INT; i : INT; END_VAR
FOR i := 1 TO 3 DO i := i + 2;
a[i] := 1; END_FOR
END_PROGRAM)",
     {{"a[3]", "1"}}},
    {"a counter that a function changes is tested",
     R"(VAR_GLOBAL i : INT; END_VAR
FUNCTION Skip : INT i := 9; Skip := 1; END_FUNCTION
PROGRAM Main VAR a : ARRAY[1..3] OF INT; x : INT; END_VAR
FOR i := 1 TO 3 DO x := Skip();
a[i] := 1; END_FOR
END_PROGRAM)",
     {},
     {},
     1,
     221,
     5,
     1},
    {"a division by zero in a function of one expression",
     R"(FUNCTION Half : INT VAR_INPUT a, b : INT; END_VAR
Half := 3 + a /
  b;
END_FUNCTION
PROGRAM Main VAR x, y : INT; END_VAR x := Half(y, 2); x := Half(1, y); END_PROGRAM)",
     {{"x", "3"}},
     {},
     1,
     226,
     2,
     13},
};

const GeneratorCase kStatements[] = {
    {"a CASE of many labels finds each of them",
     R"(FUNCTION Pick : INT VAR_INPUT u : USINT; END_VAR
CASE u OF 0: Pick := 1; 1..9: Pick := 2; 10, 12, 14: Pick := 3; 11: Pick := 4; 100..199: Pick := 5; 200: Pick := 6;
 201, 250..255: Pick := 7; 205: Pick := 8; 13: Pick := 9; ELSE Pick := 99; END_CASE
END_FUNCTION
PROGRAM Main VAR r : ARRAY[0..255] OF INT; i : INT; END_VAR
FOR i := 0 TO 255 DO r[i] := Pick(INT_TO_USINT(i)); END_FOR
END_PROGRAM)",
     {{"r[0]", "1"},
      {"r[1]", "2"},
      {"r[9]", "2"},
      {"r[10]", "3"},
      {"r[11]", "4"},
      {"r[12]", "3"},
      {"r[13]", "9"},
      {"r[14]", "3"},
      {"r[15]", "99"},
      {"r[99]", "99"},
      {"r[100]", "5"},
      {"r[199]", "5"},
      {"r[200]", "6"},
      {"r[201]", "7"},
      {"r[202]", "99"},
      {"r[205]", "8"},
      {"r[249]", "99"},
      {"r[250]", "7"},
      {"r[255]", "7"}}},
    {"EXIT and CONTINUE leave CASE and loops with the right stack",
     R"(PROGRAM Main VAR i, j, n, m : INT; k : LINT; END_VAR
m := 3;
FOR i := 0 TO m DO
  FOR j := 0 TO m BY m - 2 DO
    CASE i * 10 + j OF
      0, 11: CONTINUE;
      12: EXIT;
      21: k := 5; WHILE TRUE DO k := k - 1; IF k = 2 THEN EXIT; END_IF END_WHILE
      31: RETURN;
    END_CASE
    n := n * 2 + 1;
  END_FOR
END_FOR
n := -1;
END_PROGRAM)",
     {{"n", "511"}, {"i", "3"}, {"j", "1"}, {"k", "2"}}},
    {"copies above the machine's limit, overlapping too",
     R"(TYPE Big : ARRAY[0..19999] OF DINT; END_TYPE
PROGRAM Main VAR a, b : Big; p : REF_TO Big; i : DINT; x, y, z : DINT; END_VAR
FOR i := 0 TO 19999 DO a[i] := i; END_FOR
b := a; p := REF(b); p^ := a; a := p^;
x := b[0]; y := b[16383]; z := b[19999] + a[19999];
END_PROGRAM)",
     {{"x", "0"}, {"y", "16383"}, {"z", "39998"}}},
    {"bits of variables, members and elements",
     R"(TYPE P : STRUCT f : WORD; b : ARRAY[0..3] OF BYTE; END_STRUCT END_TYPE
FUNCTION Bits : WORD VAR_INPUT on : BOOL; END_VAR VAR w : WORD; END_VAR
w.3 := on; w.15 := NOT on; w.0 := w.3; w.%B1 := 16#12; Bits := w;
END_FUNCTION
PROGRAM Main VAR p : P; i : INT := 2; a, b : WORD; d : DWORD; l : LINT; END_VAR
p.f.15 := TRUE; p.b[i].7 := TRUE; p.b[i].0 := p.f.15; p.f.0 := p.b[i].1;
a := Bits(TRUE); b := Bits(FALSE);
d.%W1 := 16#ABCD; d.%B0 := 16#EF; l.63 := TRUE; l.1 := TRUE;
END_PROGRAM)",
     {{"Main.p.f", "16#8000"},
      {"Main.p.b[2]", "16#81"},
      {"a", "16#1209"},
      {"b", "16#1200"},
      {"d", "16#ABCD00EF"},
      {"l", "-9223372036854775806"}}},
    {"narrow arithmetic wraps as in the wide type",
     R"(PROGRAM Main VAR a : INT := 32767; b : INT := 2; c, d, e : INT; f, g : BOOL; u : USINT := 200; w : USINT; END_VAR
c := a + b; d := a * b - b; e := (a + b) / 2; f := a + b > 0; g := a < 40000; w := u + 100;
END_PROGRAM)",
     {{"c", "-32767"}, {"d", "-4"}, {"e", "16384"}, {"f", "TRUE"}, {"g", "TRUE"}, {"w", "44"}},
     {"int-promotion=32", "narrowing=silent"}},
    {"small functions in expressions",
     R"(FUNCTION Max3 : INT VAR_INPUT a, b, c : INT; END_VAR
IF a >= b THEN IF a >= c THEN Max3 := a; ELSE Max3 := c; END_IF ELSIF b >= c THEN Max3 := b; ELSE Max3 := c; END_IF
END_FUNCTION
FUNCTION Scale : REAL VAR_INPUT x : INT; k : REAL := 2.0; END_VAR Scale := INT_TO_REAL(x) * k + k; END_FUNCTION
VAR_GLOBAL calls : INT; END_VAR
FUNCTION Next : INT calls := calls + 1; Next := calls; END_FUNCTION
PROGRAM Main VAR a, b, c, d : INT; r : REAL; END_VAR
a := Max3(1, 7, 3) + Max3(a, a - 5, b); b := Max3(Next(), Next(), Next()); c := Max3(Max3(1, 2, 3), Max3(6, 5, 4), a);
r := Scale(a) + Scale(x := 2, k := 0.5); d := calls;
END_PROGRAM)",
     {{"a", "7"}, {"b", "3"}, {"c", "7"}, {"d", "3"}, {"r", "17.5"}}},
};

const GeneratorCase kAddresses[] = {
    {"an element's address is computed anew where its index changed",
     R"(TYPE P : STRUCT x, y : INT; END_STRUCT END_TYPE
PROGRAM Main VAR p : ARRAY[1..4] OF P; i, k : INT := 1; s : INT; END_VAR
p[i].x := 1; p[i].y := p[i].x + 1; i := i + 1;
p[i].x := 10; p[i].y := p[i].x + p[i - 1].y;
FOR i := 3 TO 4 DO p[i].x := i; p[i].y := p[i].x * 2; k := i; p[k].y := p[k].y + p[k].x; END_FOR
s := p[1].x + p[1].y * 10 + p[2].x + p[2].y * 10 + p[3].y + p[4].y;
END_PROGRAM)",
     {{"s", "172"}}},
    {"and where a function or a block changed it",
     R"(VAR_GLOBAL g : INT := 1; END_VAR
FUNCTION Next : INT g := g + 1; Next := g; END_FUNCTION
FUNCTION_BLOCK Step VAR_IN_OUT i : INT; END_VAR i := i + 1; END_FUNCTION_BLOCK
PROGRAM Main VAR a : ARRAY[1..6] OF INT; x, i : INT := 1; st : Step; r : REF_TO INT; j : INT := 1; END_VAR
a[g] := a[g] + 1; x := Next(); a[g] := a[g] + 2; a[g] := a[g] + Next(); a[g] := a[g] + 4;
a[i] := a[i] + 10; st(i := i); a[i] := a[i] + 20; a[i] := a[i] + 30;
r := REF(j); a[j] := a[j] + 100; r^ := 5; a[j] := a[j] + 200; a[j] := a[j] + 300;
END_PROGRAM)",
     {{"a[1]", "111"}, {"a[2]", "52"}, {"a[3]", "9"}, {"a[5]", "500"}}},
    {"kept addresses and leaving loops",
     R"(TYPE P : STRUCT x, y : INT; END_STRUCT END_TYPE
FUNCTION F : INT VAR_INPUT n : INT; END_VAR VAR p : ARRAY[0..3] OF P; i, j : INT; END_VAR
FOR i := 0 TO 3 DO
  p[i].x := i * n; p[i].y := p[i].x + 1;
  IF p[i].y > 5 THEN EXIT; END_IF
  FOR j := 0 TO i DO p[j].x := p[j].x + p[i].y; IF p[j].x > 20 THEN CONTINUE; END_IF p[j].y := p[j].x; END_FOR
  IF p[i].x = 7 THEN F := -p[i].y; RETURN; END_IF
END_FOR
F := p[0].x + p[1].x + p[2].x + p[3].x + p[0].y;
END_FUNCTION
PROGRAM Main VAR a, b, c, d : INT; END_VAR a := F(1); b := F(3); c := F(4); d := F(2); END_PROGRAM)",
     {{"a", "-7"}, {"b", "-7"}, {"c", "29"}, {"d", "43"}}},
    {"elements of an instance, handed to blocks",
     R"(TYPE P : STRUCT x, y : INT; END_STRUCT END_TYPE
FUNCTION_BLOCK Add VAR_IN_OUT t : INT; END_VAR VAR_INPUT n : INT; END_VAR t := t + n; END_FUNCTION_BLOCK
FUNCTION_BLOCK Many
VAR_INPUT i : INT; END_VAR VAR p : ARRAY[0..3] OF P; f : ARRAY[0..3] OF Add; t : ARRAY[0..3] OF TON; END_VAR
VAR_OUTPUT s : INT; q : BOOL; END_VAR
f[i](t := p[i].y, n := 5); f[i](t := p[i].y, n := 2); p[i].x := p[i].y * 10; s := p[i].x + p[i].y;
t[i](IN := TRUE, PT := T#50ms); q := t[i].Q;
END_FUNCTION_BLOCK
PROGRAM Main VAR m : ARRAY[1..2] OF Many; s1, s2 : INT; q : BOOL; k : INT := 2; END_VAR
m[k](i := 3, s => s2, q => q); m[1](i := 0); s1 := m[1].s;
END_PROGRAM)",
     {{"s1", "154"}, {"s2", "154"}, {"q", "TRUE"}},
     {},
     2},
    {"a fault in a kept address is where it was written first",
     "PROGRAM Main VAR a : ARRAY[1..3] OF INT; i : INT := 4; x : INT; END_VAR\nx := 5;\nx := x +\n  a[i] + a[i];\n"
     "a[i] := 1;\nEND_PROGRAM",
     {{"x", "5"}},
     {},
     1,
     221,
     4,
     3},
};

INSTANTIATE_TEST_SUITE_P(Addresses, Generator, ::testing::ValuesIn(kAddresses));
INSTANTIATE_TEST_SUITE_P(Frames, Generator, ::testing::ValuesIn(kFrames));
INSTANTIATE_TEST_SUITE_P(Blocks, Generator, ::testing::ValuesIn(kBlocks));
INSTANTIATE_TEST_SUITE_P(Checks, Generator, ::testing::ValuesIn(kChecks));
INSTANTIATE_TEST_SUITE_P(Statements, Generator, ::testing::ValuesIn(kStatements));

TEST(GeneratorFrames, ManyVariablesSpillIntoMemory) {
    std::string declarations;
    std::string body;
    for (int i = 0; i < 400; ++i) {
        const std::string name = "v" + std::to_string(i);
        declarations += name + " : DINT := " + std::to_string(i) + "; ";
        body += name + " := " + name + " * 2; ";
    }
    std::string sum = "F := 0";
    for (int i = 0; i < 400; ++i)
        sum += " + v" + std::to_string(i);
    CompiledRun run("FUNCTION F : DINT VAR " + declarations + "END_VAR " + body + sum +
                    "; END_FUNCTION PROGRAM Main VAR x : DINT; END_VAR x := F(); END_PROGRAM");
    ASSERT_TRUE(run.result.succeeded) << run.messages;
    ASSERT_TRUE(run.Scan()) << run.GetFaultText();
    EXPECT_EQ(run.Value("x"), "159600");  // 2 * 399 * 400 / 2
}

TEST(GeneratorImage, SameSourcesGiveTheSameBytes) {
    for (const GeneratorCase& row : kStatements) {
        SCOPED_TRACE(row.why);
        CompileOptions options;
        for (const char* assignment : row.switches) {
            std::string error;
            ASSERT_TRUE(SetSwitch(assignment, options, error)) << error;
        }
        const CompiledRun first(row.source, options);
        const CompiledRun second(row.source, options);
        EXPECT_EQ(CImageWriter::Write(first.result.image), CImageWriter::Write(second.result.image));
        EXPECT_EQ(first.result.map.Save(), second.result.map.Save());
    }
}

TEST(GeneratorImage, StandaloneTextsHaveTheirIds) {
    CompileOptions options;
    options.expressions = {{7, "g * 2 + 1"}, {9, "g > 3 AND h"}};
    options.codeBlocks = {{3, "g := g + 1; h := TRUE;"}};
    CompiledRun run("VAR_GLOBAL g : INT := 3; h : BOOL; END_VAR PROGRAM Main g := 3; END_PROGRAM", options);
    ASSERT_TRUE(run.result.succeeded) << run.messages;
    ASSERT_EQ(run.result.image.expressions.size(), 2U);
    ASSERT_EQ(run.result.image.codeBlocks.size(), 1U);
    EXPECT_EQ(run.result.image.expressions[0].id, 7U);
    EXPECT_EQ(run.result.image.expressions[1].id, 9U);
    EXPECT_EQ(run.result.image.codeBlocks[0].id, 3U);
    const auto result = [&](std::uint32_t codeOffset) {
        EXPECT_TRUE(run.RunAt(codeOffset)) << run.GetFaultText();
        CTextOutputString output;
        run.exec->GetResultValue().GetDeclaration(output);
        return output.GetText();
    };
    EXPECT_EQ(result(run.result.image.expressions[0].codeOffset), "INT#7");
    EXPECT_EQ(result(run.result.image.expressions[1].codeOffset), "BOOL#FALSE");
    result(run.result.image.codeBlocks[0].codeOffset);
    EXPECT_EQ(result(run.result.image.expressions[0].codeOffset), "INT#9");
    EXPECT_EQ(result(run.result.image.expressions[1].codeOffset), "BOOL#TRUE");
}

TEST(GeneratorImage, UnusedRoutinesAreLeftOut) {
    CompiledRun run(R"(FUNCTION Used : INT Used := 1; END_FUNCTION
FUNCTION Unused : INT Unused := Used(); END_FUNCTION
PROGRAM Main VAR x : INT; END_VAR x := Used() * Used(); END_PROGRAM)",
                    [] {
                        CompileOptions options;
                        options.passes = NoPasses();
                        return options;
                    }());
    ASSERT_TRUE(run.result.succeeded) << run.messages;
    std::vector<std::string> names;
    for (const SymbolPou& pou : run.result.map.GetPous())
        names.push_back(pou.name);
    EXPECT_THAT(names, ::testing::ElementsAre("Main", "Used"));
}

TEST(GeneratorMap, FaultsInCalledFunctionsHaveTheirCallChain) {
    CompiledRun run(
        "FUNCTION Inner : INT VAR_INPUT a : INT; END_VAR\nVAR i : INT; END_VAR\nFOR i := 0 TO 1 DO\n"
        "Inner := 7 / a; END_FOR\nEND_FUNCTION\n"
        "PROGRAM Main VAR x : INT; END_VAR\nx := 1;\nx := 2 + Inner(x - 1);\nEND_PROGRAM");
    ASSERT_TRUE(run.result.succeeded) << run.messages;
    EXPECT_FALSE(run.Scan());
    EXPECT_EQ(run.GetLine(), 4U);
    ASSERT_EQ(run.exec->GetCodeStackSize(), 1U);
    const std::uint32_t caller = run.exec->GetCodeStackReturnPC(0) - 1;
    const SymbolPosition* position = run.result.map.FindPosition(caller);
    ASSERT_NE(position, nullptr);
    EXPECT_EQ(position->line, 8U);
    EXPECT_EQ(position->column, 10U);
    EXPECT_EQ(run.result.map.FindPou(caller)->name, "Main");
    EXPECT_EQ(run.result.map.FindPou(run.exec->GetCurrentPC())->name, "Inner");
}

TEST(GeneratorMap, HoldsWhatTheProjectDeclares) {
    CompiledRun run(R"(TYPE Color : (RED, GREEN := 5); END_TYPE
VAR_GLOBAL RETAIN kept : INT; END_VAR
VAR_GLOBAL PERSISTENT CONST_LIKE : DINT; END_VAR
FUNCTION_BLOCK Counter VAR RETAIN n : DINT; END_VAR VAR x : INT; END_VAR n := n + 1; END_FUNCTION_BLOCK
PROGRAM Main VAR c : ARRAY[1..2] OF Counter; col : Color := GREEN; END_VAR VAR_TEMP t : INT; END_VAR
c[1](); t := 1; col := RED; END_PROGRAM
CONFIGURATION plant RESOURCE r ON cpu TASK Fast(INTERVAL := T#10ms, PRIORITY := 1); PROGRAM Inst WITH Fast : Main;
END_RESOURCE END_CONFIGURATION)");
    ASSERT_TRUE(run.result.succeeded) << run.messages;
    const CSymbolMap& map = run.result.map;
    std::vector<std::string> retained;
    for (const SymbolRetained& each : map.GetRetained())
        retained.push_back(each.name + " " + std::to_string(each.size) + (each.isPersistent ? " persistent" : ""));
    EXPECT_THAT(retained,
                ::testing::ElementsAre("kept 2", "CONST_LIKE 4 persistent", "Inst.c[1].n 4", "Inst.c[2].n 4"));
    ASSERT_EQ(map.GetTasks().size(), 1U);
    EXPECT_EQ(map.GetTasks()[0].name, "Fast");
    EXPECT_EQ(map.GetTasks()[0].intervalMs, 10);
    EXPECT_THAT(map.GetTasks()[0].programs, ::testing::ElementsAre("Inst"));
    SymbolReference color;
    std::string error;
    ASSERT_TRUE(map.Find("Inst.col", color, error)) << error;
    ASSERT_TRUE(color.type.IsEnum());
    EXPECT_EQ(*color.type.enumeration->FindName(5), "GREEN");
    ASSERT_EQ(map.GetPous().size(), 2U);
    EXPECT_EQ(map.GetPous()[0].name, "Main");
    EXPECT_EQ(map.GetPous()[0].line, 5U);
    CSymbolMap loaded;
    ASSERT_TRUE(loaded.Load(map.Save(), error)) << error;
    EXPECT_EQ(loaded.Save(), map.Save());
}

// --- what passes achieve ---

struct PassCase {
    const char* why;
    bool Passes::*pass;
    const char* source;
    const char* gone;  ///< in the listing without the pass, and not in that with it
};

TEST(GeneratorPasses, EachTakesInstructionsAway) {
    const PassCase cases[] = {
        {"a call of a small function", &Passes::inlineLeaves,
         "FUNCTION F : INT VAR_INPUT a : INT; END_VAR F := a + 1; END_FUNCTION "
         "PROGRAM Main VAR x : INT; END_VAR x := F(x); END_PROGRAM",
         "CALL"},
        {"the test of an index that counts inside", &Passes::commonAddresses,
         "PROGRAM Main VAR a : ARRAY[1..9] OF INT; i : INT; END_VAR FOR i := 1 TO 8 DO a[i + 1] := i; END_FOR "
         "END_PROGRAM",
         "JMPNZ +"},
        {"the address of an element, computed again", &Passes::commonAddresses,
         "TYPE P : STRUCT x, y, z : INT; END_STRUCT END_TYPE "
         "PROGRAM Main VAR p : ARRAY[1..9] OF P; i : INT := 2; END_VAR VAR_TEMP t : INT; END_VAR "
         "p[i].x := 5; p[i].y := p[i].x; p[i].z := p[i].y + p[i].x; p[i].x := p[i].z; END_PROGRAM",
         "Global: 4294967294"},
        {"an addition to the pointer of an in-out", &Passes::commonAddresses,
         "TYPE P : STRUCT x, y : INT; END_STRUCT END_TYPE "
         "FUNCTION F : INT VAR_IN_OUT p : P; END_VAR p.y := p.y + 1; F := 2; END_FUNCTION "
         "PROGRAM Main VAR p : P; x : INT; END_VAR x := F(p); END_PROGRAM",
         "UDINT#2"},
        {"a conversion to a wide type and back", &Passes::foldConstants,
         "PROGRAM Main VAR a, b : INT; END_VAR a := DINT_TO_INT(INT_TO_DINT(a) + INT_TO_DINT(b)); END_PROGRAM",
         "CONVERT"},
        {"a branch that is never taken", &Passes::foldConstants,
         "VAR_GLOBAL CONSTANT DEBUG : BOOL := FALSE; END_VAR "
         "PROGRAM Main VAR a : INT; b : BOOL; END_VAR IF NOT DEBUG AND b OR DEBUG THEN a := 1; END_IF "
         "WHILE DEBUG DO a := 16#77; END_WHILE END_PROGRAM",
         "INT#119"},
        {"a variable that nothing reads", &Passes::deadStores,
         "PROGRAM Main VAR a : INT; END_VAR VAR_TEMP t : INT; END_VAR t := 77; a := 1; END_PROGRAM", "INT#77"},
        {"a jump to the end", &Passes::jumps,
         "PROGRAM Main VAR a : INT; END_VAR IF a <> 1 THEN a := 2; ELSE a := 3; END_IF END_PROGRAM", "JMP +"},
    };
    for (const PassCase& row : cases) {
        SCOPED_TRACE(row.why);
        CompileOptions options;
        options.passes = NoPasses();
        CompiledRun without(row.source, options);
        options.passes.*row.pass = true;
        CompiledRun with(row.source, options);
        ASSERT_TRUE(without.result.succeeded && with.result.succeeded) << without.messages;
        EXPECT_TRUE(without.Scan() && with.Scan());
        EXPECT_THAT(without.Listing(), HasSubstr(row.gone));
        EXPECT_THAT(with.Listing(), Not(HasSubstr(row.gone)));
        EXPECT_LT(with.instructions, without.instructions);
    }
}

}  // namespace
}  // namespace tn61131::st
