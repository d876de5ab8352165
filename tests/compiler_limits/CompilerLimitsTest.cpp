// Sources far larger or deeper than anybody writes: they compile, or a message says what is too much.
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "compiler/Compiler.h"
#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace {

namespace st = tn61131::st;

enum class Outcome : std::uint8_t { Compiles, Refused };

struct Source {
    const char* name;
    Outcome outcome;
    std::function<std::string()> text;
};

void PrintTo(const Source& source, std::ostream* out) {
    *out << source.name;
}

std::string Repeat(std::size_t count, const std::string& text) {
    std::string result;
    result.reserve(count * text.size());
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

/// Text for each number from 0 on; # stands for the number, ~ for the next.
std::string ForEach(std::size_t count, const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) {
        for (const char c : text) {
            if (c == '#') {
                result += std::to_string(i);
            } else if (c == '~') {
                result += std::to_string(i + 1);
            } else {
                result += c;
            }
        }
    }
    return result;
}

std::string Main(const std::string& body, const std::string& variables = {}) {
    return "PROGRAM Main VAR x : DINT; b : BOOL; r : LREAL; s : STRING; " + variables + " END_VAR\n" + body +
           "\nEND_PROGRAM\n";
}

constexpr std::size_t kMany = 100'000;
constexpr std::size_t kDeep = 100'000;

const Source kSources[] = {
    // depth
    {"parentheses", Outcome::Refused,
     [] { return Main("x := " + Repeat(kDeep, "(") + "1" + Repeat(kDeep, ")") + ";"); }},
    {"nots", Outcome::Refused, [] { return Main("b := " + Repeat(kDeep, "NOT ") + "b;"); }},
    {"minuses", Outcome::Refused, [] { return Main("x := " + Repeat(kDeep, "-") + "x;"); }},
    {"nested ifs", Outcome::Refused,
     [] { return Main(Repeat(kDeep, "IF b THEN ") + "x := 1;" + Repeat(kDeep, "END_IF;")); }},
    {"nested loops", Outcome::Refused,
     [] { return Main(Repeat(kDeep, "WHILE b DO ") + "x := 1;" + Repeat(kDeep, "END_WHILE;")); }},
    {"nested calls", Outcome::Refused,
     [] { return Main("x := " + Repeat(kDeep, "ABS(") + "x" + Repeat(kDeep, ")") + ";"); }},
    {"nested indices", Outcome::Refused,
     [] { return Main("x := " + Repeat(kDeep, "a[") + "1" + Repeat(kDeep, "]") + ";", "a : ARRAY[0..1] OF DINT;"); }},
    {"sums to the right", Outcome::Refused,
     [] { return Main("x := " + Repeat(kDeep, "x + (") + "1" + Repeat(kDeep, ")") + ";"); }},
    {"arrays of arrays", Outcome::Refused,
     [] { return Main("", "a : " + Repeat(kDeep, "ARRAY[0..0] OF ") + "BYTE;"); }},
    {"pointers to pointers", Outcome::Refused,
     [] { return Main("", "a : " + Repeat(kDeep, "POINTER TO ") + "BYTE;"); }},
    {"brackets in an initialiser", Outcome::Refused,
     [] { return Main("", "a : ARRAY[0..1] OF INT := " + Repeat(kDeep, "[") + "1" + Repeat(kDeep, "]") + ";"); }},
    {"comments in comments", Outcome::Refused, [] { return Main(Repeat(kDeep, "(*") + Repeat(kDeep, "*)")); }},
    {"comments that do not end", Outcome::Refused, [] { return Main(Repeat(kDeep, "(*")); }},
    {"dereferences", Outcome::Refused,
     [] { return Main("p" + Repeat(kDeep, "^") + " := 1;", "p : POINTER TO DINT;"); }},
    {"structures of structures", Outcome::Refused,
     [] {
         return "TYPE S0 : STRUCT v : BYTE; END_STRUCT END_TYPE\n" +
                ForEach(5000, "TYPE S~ : STRUCT v : S#; END_STRUCT END_TYPE\n") + Main("", "a : S5000;");
     }},
    {"structures of structures, last first", Outcome::Refused,
     [] {
         return Main("", "a : T0;") + ForEach(20'000, "TYPE T# : STRUCT v : T~; END_STRUCT END_TYPE\n") +
                "TYPE T20000 : BYTE; END_TYPE\n";
     }},
    {"aliases of aliases", Outcome::Refused,
     [] {
         return ForEach(20'000, "TYPE T# : T~; END_TYPE\n") + "TYPE T20000 : BYTE; END_TYPE\n" + Main("", "a : T0;");
     }},
    {"constants of constants", Outcome::Refused,
     [] {
         return "VAR_GLOBAL CONSTANT\n" + ForEach(20'000, "c# : INT := c~;\n") + "c20000 : INT := 1; END_VAR\n" +
                Main("x := c0;");
     }},
    {"functions that call the next", Outcome::Compiles,
     [] {
         return ForEach(5000, "FUNCTION F# : INT F# := F~(); END_FUNCTION\n") +
                "FUNCTION F5000 : INT F5000 := 1; END_FUNCTION\n" + Main("x := F0();");
     }},
    {"blocks in blocks", Outcome::Refused,
     [] {
         return ForEach(20'000, "FUNCTION_BLOCK B# VAR b : B~; END_VAR b(); END_FUNCTION_BLOCK\n") +
                "FUNCTION_BLOCK B20000 END_FUNCTION_BLOCK\n" + Main("f();", "f : B0;");
     }},
    {"blocks that extend blocks", Outcome::Refused,
     [] {
         return ForEach(20'000, "FUNCTION_BLOCK B# EXTENDS B~ END_FUNCTION_BLOCK\n") +
                "FUNCTION_BLOCK B20000 END_FUNCTION_BLOCK\n" + Main("f();", "f : B0;");
     }},

    // length
    {"a long sum", Outcome::Refused, [] { return Main("x := x" + Repeat(kMany, " + x") + ";"); }},
    {"a long sum of literals", Outcome::Refused, [] { return Main("x := 1" + Repeat(kMany, " + 1") + ";"); }},
    {"a long sum of mixed types", Outcome::Refused, [] { return Main("r := r" + Repeat(kMany, " + x") + ";"); }},
    {"a long conjunction", Outcome::Refused, [] { return Main("b := b" + Repeat(kMany, " AND b") + ";"); }},
    {"a long condition", Outcome::Refused,
     [] { return Main("IF b" + Repeat(kMany, " OR b AND NOT b") + " THEN x := 1; END_IF;"); }},
    {"a long implicit conversion", Outcome::Refused,
     [] { return Main("x := i" + Repeat(kMany, " * i") + ";", "i : INT;"); }},
    {"many assignments", Outcome::Compiles, [] { return Main(Repeat(kMany, "x := x + 1;\n")); }},
    {"many branches", Outcome::Refused,
     [] { return Main("IF b THEN x := 0;\n" + ForEach(kMany, "ELSIF x = # THEN x := ~;\n") + "END_IF;"); }},
    {"many labels", Outcome::Compiles,
     [] { return Main("CASE x OF\n" + ForEach(kMany, "#: x := ~;\n") + "END_CASE;"); }},
    {"many labels of one branch", Outcome::Compiles,
     [] { return Main("CASE x OF 0" + ForEach(kMany, ", ~") + ": x := 1; END_CASE;"); }},
    {"many same labels", Outcome::Refused,
     [] { return Main("CASE x OF 0" + Repeat(kMany, ", 0") + ": x := 1; END_CASE;"); }},
    {"many variables", Outcome::Compiles, [] { return Main("v99999 := 1;", ForEach(kMany, "v# : DINT := #;\n")); }},
    {"many variables of a function", Outcome::Compiles,
     [] {
         return "FUNCTION F : DINT VAR " + ForEach(1000, "v# : DINT := #;\n") + " END_VAR F := v999; END_FUNCTION\n" +
                Main("x := F();");
     }},
    {"many inputs", Outcome::Refused,
     [] {
         return "FUNCTION F : DINT VAR_INPUT " + ForEach(2000, "v# : DINT := #;\n") +
                " END_VAR F := v1999; END_FUNCTION\n" + Main("x := F();");
     }},
    {"many inputs of a block", Outcome::Compiles,
     [] {
         return "FUNCTION_BLOCK F VAR_INPUT " + ForEach(2000, "v# : DINT := #;\n") +
                " END_VAR v0 := v1999; END_FUNCTION_BLOCK\n" + Main("f(v1999 := 1);", "f : F;");
     }},
    {"many constants", Outcome::Compiles,
     [] { return "VAR_GLOBAL CONSTANT\n" + ForEach(kMany, "c# : DINT := #;\n") + "END_VAR\n" + Main("x := c99999;"); }},
    {"many functions", Outcome::Compiles,
     [] { return ForEach(20'000, "FUNCTION F# : INT F# := 1; END_FUNCTION\n") + Main("x := F0();"); }},
    {"many types", Outcome::Compiles,
     [] { return "TYPE\n" + ForEach(kMany, "T# : INT;\n") + "END_TYPE\n" + Main("", "a : T99999;"); }},
    {"many members of an enumeration", Outcome::Refused,
     [] { return "TYPE E : (e" + ForEach(kMany, "#, e") + "last); END_TYPE\n" + Main(""); }},
    {"many members of a structure", Outcome::Compiles,
     [] {
         return "TYPE S : STRUCT " + ForEach(50'000, "m# : BYTE;\n") + "END_STRUCT END_TYPE\n" +
                Main("y := a.m49999;", "a : S; y : BYTE;");
     }},
    {"many strings", Outcome::Compiles, [] { return Main(ForEach(kMany, "s := 'text #';\n")); }},
    {"many steps of a path", Outcome::Refused, [] { return Main("x := a" + Repeat(kMany, ".a") + ";"); }},
    {"many arguments", Outcome::Refused, [] { return Main("x := MAX(x" + Repeat(kMany, ", x") + ");"); }},
    {"a long name", Outcome::Compiles,
     [] { return Main(std::string(100'000, 'n') + " := 1;", std::string(100'000, 'n') + " : DINT;"); }},
    {"a long name that is not known", Outcome::Refused, [] { return Main(std::string(100'000, 'n') + " := 1;"); }},
    {"a long number", Outcome::Refused, [] { return Main("x := " + std::string(100'000, '9') + ";"); }},
    {"a long exponent", Outcome::Refused, [] { return Main("r := 1.0E" + std::string(100'000, '9') + ";"); }},
    {"a long fraction", Outcome::Compiles, [] { return Main("r := 1." + std::string(100'000, '9') + ";"); }},
    {"a long time", Outcome::Compiles, [] { return Main("t := T#" + std::string(100'000, '9') + "d;", "t : TIME;"); }},
    {"a long string", Outcome::Compiles, [] { return Main("s := '" + std::string(100'000, 's') + "';"); }},
    {"a long line", Outcome::Compiles, [] { return Main(std::string(1'000'000, ' ') + "x := 1;"); }},
    {"many unknown names", Outcome::Refused, [] { return Main(ForEach(kMany, "u# := w#;\n")); }},
    {"many wrong characters", Outcome::Refused, [] { return Main(Repeat(kMany, "\\ ? \x01 \xFF\xC0")); }},
    {"many near names", Outcome::Refused,
     [] { return Main(ForEach(5000, "x := vv#a;\n"), ForEach(5000, "vv# : DINT;\n")); }},

    // as much as people write
    {"a sum", Outcome::Compiles, [] { return Main("x := x" + Repeat(900, " + x") + ";"); }},
    {"a sum of mixed types", Outcome::Compiles, [] { return Main("r := r" + Repeat(900, " + x") + ";"); }},
    {"a product that is widened", Outcome::Compiles,
     [] { return Main("x := i" + Repeat(900, " * i") + ";", "i : INT;"); }},
    {"a conjunction", Outcome::Compiles, [] { return Main("b := b" + Repeat(900, " AND b") + ";"); }},
    {"branches", Outcome::Compiles,
     [] { return Main("IF b THEN x := 0;\n" + ForEach(900, "ELSIF x = # THEN x := ~;\n") + "END_IF;"); }},
    {"nested branches", Outcome::Refused,
     [] {
         const std::string branches = "IF b THEN x := 0;\n" + ForEach(900, "ELSIF x = # THEN x := ~;\n");
         return Main(Repeat(100, branches) + Repeat(100, "END_IF;"));
     }},

    // size
    {"a large array", Outcome::Refused, [] { return Main("", "a : ARRAY[0..2147483647] OF LINT;"); }},
    {"a large array of bytes", Outcome::Refused,
     [] { return Main("", "a : ARRAY[-2147483648..2147483647] OF BYTE;"); }},
    {"bounds beyond 64 bits", Outcome::Refused,
     [] { return Main("", "a : ARRAY[-9223372036854775808..9223372036854775807] OF BYTE;"); }},
    {"dimensions", Outcome::Refused, [] { return Main("", "a : ARRAY[0..9" + Repeat(40, ", 0..9") + "] OF BYTE;"); }},
    {"many dimensions", Outcome::Compiles,
     [] { return Main("", "a : ARRAY[0..0" + Repeat(kMany, ", 0..0") + "] OF BYTE;"); }},
    {"arrays of large arrays", Outcome::Refused,
     [] { return Main("", "a : " + Repeat(20, "ARRAY[0..999] OF ") + "BYTE;"); }},
    {"structures that double", Outcome::Refused,
     [] {
         return "TYPE S0 : STRUCT v : LINT; END_STRUCT END_TYPE\n" +
                ForEach(60, "TYPE S~ : STRUCT a : S#; b : S#; END_STRUCT END_TYPE\n") + Main("", "a : S60;");
     }},
    {"blocks that double", Outcome::Refused,
     [] {
         return "FUNCTION_BLOCK B0 VAR v : LINT; END_VAR END_FUNCTION_BLOCK\n" +
                ForEach(60, "FUNCTION_BLOCK B~ VAR a : B#; b : B#; END_VAR END_FUNCTION_BLOCK\n") +
                Main("", "f : B60;");
     }},
    {"many large variables", Outcome::Refused,
     [] { return Main("", ForEach(1000, "a# : ARRAY[0..9999999] OF BYTE;")); }},
    {"a large repeat", Outcome::Refused, [] { return Main("", "a : ARRAY[0..9] OF INT := [4294967295(1)];"); }},
    {"a repeat beyond 64 bits", Outcome::Refused,
     [] { return Main("", "a : ARRAY[0..9] OF INT := [99999999999999999999(1)];"); }},
    {"repeats of repeats", Outcome::Refused,
     [] { return Main("", "a : ARRAY[0..9] OF INT := [1000000(1000000(1000000(1000000(1))))];"); }},
    {"repeats of nothing", Outcome::Refused,
     [] { return Main("", "a : ARRAY[0..9] OF INT := [" + Repeat(2000, "0(") + "1" + Repeat(2000, ")") + "];"); }},
    {"many repeats", Outcome::Compiles,
     [] { return Main("", "a : ARRAY[0..999999] OF BYTE := [" + ForEach(499'999, "1(1), ") + "500001(2)];"); }},
    {"a string too long to declare", Outcome::Refused, [] { return Main("", "a : STRING[100000];"); }},
    {"a string of negative length", Outcome::Refused, [] { return Main("", "a : STRING[-1];"); }},
    {"large powers", Outcome::Compiles, [] { return Main("r := 10.0 ** 1000.0;"); }},
    {"a large shift", Outcome::Compiles, [] { return Main("x := SHL(x, 2147483647);"); }},
    {"a large bit", Outcome::Refused, [] { return Main("b := x.99999999999999999999;"); }},
    {"a large CASE range", Outcome::Compiles,
     [] { return Main("CASE x OF -2147483648..2147483647: x := 1; END_CASE;"); }},
    {"a text of constants", Outcome::Compiles,
     [] {
         return "VAR_GLOBAL CONSTANT c0 : STRING[32766] := 'x';\n" +
                ForEach(40, "c~ : STRING[32766] := CONCAT(c#, c#);\n") + "END_VAR\n" + Main("s := c40;");
     }},

    // circles
    {"a type of itself", Outcome::Refused, [] { return "TYPE T : T; END_TYPE\n" + Main("", "a : T;"); }},
    {"types of each other", Outcome::Refused,
     [] { return "TYPE T : ARRAY[0..1] OF U; U : ARRAY[0..1] OF T; END_TYPE\n" + Main("", "a : T;"); }},
    {"a structure of itself", Outcome::Refused,
     [] { return "TYPE S : STRUCT s : S; END_STRUCT END_TYPE\n" + Main("", "a : S;"); }},
    {"a pointer to itself", Outcome::Refused, [] { return "TYPE P : POINTER TO P; END_TYPE\n" + Main("", "a : P;"); }},
    {"a structure that points to itself", Outcome::Compiles,
     [] { return "TYPE S : STRUCT next : REF_TO S; END_STRUCT END_TYPE\n" + Main("", "a : S;"); }},
    {"a bound of its own size", Outcome::Refused,
     [] { return "TYPE A : ARRAY[0..SIZEOF(A)] OF BYTE; END_TYPE\n" + Main("", "a : A;"); }},
    {"a constant of itself", Outcome::Refused,
     [] { return "VAR_GLOBAL CONSTANT c : INT := c + 1; END_VAR\n" + Main("x := c;"); }},
    {"constants of each other", Outcome::Refused,
     [] { return "VAR_GLOBAL CONSTANT c : INT := d; d : INT := e; e : INT := c; END_VAR\n" + Main("x := c;"); }},
    {"a constant by way of a type", Outcome::Refused,
     [] {
         return "VAR_GLOBAL CONSTANT c : DINT := SIZEOF(T); END_VAR TYPE T : ARRAY[0..c] OF BYTE; END_TYPE\n" +
                Main("x := c;");
     }},
    {"an enumeration of itself", Outcome::Refused,
     [] { return "TYPE E : (a := E#b, b := E#a); END_TYPE\n" + Main(""); }},
    {"a subrange of itself", Outcome::Refused, [] { return "TYPE R : R(0..1); END_TYPE\n" + Main("", "a : R;"); }},
    {"a function of itself", Outcome::Refused,
     [] { return "FUNCTION F : INT F := F(); END_FUNCTION\n" + Main("x := F();"); }},
    {"functions of each other", Outcome::Refused,
     [] {
         return "FUNCTION F : INT F := G(); END_FUNCTION FUNCTION G : INT G := F(); END_FUNCTION\n" + Main("x := F();");
     }},
    {"a block in itself", Outcome::Refused,
     [] { return "FUNCTION_BLOCK B VAR b : B; END_VAR b(); END_FUNCTION_BLOCK\n" + Main("f();", "f : B;"); }},
    {"blocks in each other", Outcome::Refused,
     [] {
         return "FUNCTION_BLOCK B VAR c : C; END_VAR END_FUNCTION_BLOCK FUNCTION_BLOCK C VAR b : B; END_VAR "
                "END_FUNCTION_BLOCK\n" +
                Main("f();", "f : B;");
     }},
    {"a block that extends itself", Outcome::Refused,
     [] { return "FUNCTION_BLOCK B EXTENDS B END_FUNCTION_BLOCK\n" + Main("f();", "f : B;"); }},
    {"blocks that extend each other", Outcome::Refused,
     [] {
         return "FUNCTION_BLOCK B EXTENDS C END_FUNCTION_BLOCK FUNCTION_BLOCK C EXTENDS B END_FUNCTION_BLOCK\n" +
                Main("f();", "f : B;");
     }},
    {"a structure that extends itself", Outcome::Refused,
     [] { return "TYPE S EXTENDS S : STRUCT a : INT; END_STRUCT END_TYPE\n" + Main("", "a : S;"); }},
    {"globals that start as each other", Outcome::Refused,
     [] { return "VAR_GLOBAL g : INT := h; h : INT := g; END_VAR\n" + Main("x := g;"); }},
    {"a program in itself", Outcome::Refused, [] { return Main("", "m : Main;"); }},

    // bytes
    {"nothing", Outcome::Compiles, [] { return std::string(); }},
    {"wrong UTF-8 in a string", Outcome::Compiles, [] { return Main("s := 'a\xC3\x28\xFF\xFE';"); }},
    {"wrong UTF-8 in a name", Outcome::Refused, [] { return Main("x\xC3\x28 := 1;"); }},
    {"zero bytes", Outcome::Refused, [] { return Main(std::string("x := \0 1;", 9)); }},
    {"UTF-16", Outcome::Refused, [] { return std::string("\xFF\xFEP\0R\0O\0", 8); }},
};

class CompilerLimits : public testing::TestWithParam<Source> {};

TEST_P(CompilerLimits, EndWithAnImageOrAMessage) {
    for (const char* profile : {"iec", "codesys"}) {
        for (const char* passes : {"optimise=none", "optimise=all"}) {
            st::CompileOptions options;
            std::string error;
            ASSERT_TRUE(st::SetProfile(profile, options) && st::SetSwitch(passes, options, error)) << error;
            options.switches.recursion = false;
            std::vector<st::SourceText> sources;
            sources.push_back({"a.st", GetParam().text()});
            const st::CompileResult compiled = st::Compile(std::move(sources), options);
            std::string messages;
            for (const st::Diagnostic& diagnostic : compiled.diagnostics) {
                if (diagnostic.severity == st::Severity::Error && messages.size() < 1000)
                    messages += st::FormatDiagnostic(compiled.sources, diagnostic).substr(0, 300) + "\n";
            }
            // The optimiser may make small enough what was too large.
            const bool isPlain = passes == std::string_view("optimise=none");
            const bool mustCompile = GetParam().outcome == Outcome::Compiles || (!isPlain && compiled.succeeded);
            EXPECT_EQ(compiled.succeeded, mustCompile) << profile << ": " << messages;
            EXPECT_EQ(messages.empty(), compiled.succeeded) << profile;
            // However much is wrong, the messages come to an end.
            EXPECT_LE(compiled.diagnostics.size(), 10001U) << profile;
            if (!compiled.succeeded) continue;
            const std::vector<unsigned char> bytes = CImageWriter::Write(compiled.image);
            CBinaryInputMemory input(bytes);
            CErrorLog log;
            CVirtualMachine machine;
            EXPECT_TRUE(machine.LoadVMImage(log, input)) << profile;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sources, CompilerLimits, testing::ValuesIn(kSources), [](const auto& info) {
    std::string name;
    for (const char c : std::string(info.param.name)) {
        const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (isPlain) name += c;
    }
    return name;
});

}  // namespace
