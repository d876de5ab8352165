#include <gtest/gtest.h>

#include "compiler/ParserTesting.h"

namespace tn61131::st {
namespace {

using testing::Parsed;
using testing::Reported;
using Code = DiagnosticCode;

struct Row {
    const char* text;
    std::vector<Reported> errors;
    const char* printed;  ///< what is understood all the same
};

void ExpectRows(std::span<const Row> rows, Parsed::As as) {
    for (const Row& row : rows) {
        const Parsed parsed(row.text, as);
        EXPECT_EQ(parsed.Errors(), row.errors) << row.text << '\n' << parsed.Messages();
        EXPECT_EQ(parsed.Printed(), row.printed) << row.text;
    }
}

TEST(ParserErrors, InExpressions) {
    const Row kRows[] = {
        {"", {{1, 1, Code::UnexpectedToken}}, "<error>"},
        {"a +", {{1, 4, Code::UnexpectedToken}}, "(+ a <error>)"},
        {"(a + b", {{1, 7, Code::UnexpectedToken}}, "(+ a b)"},
        {"a b", {{1, 3, Code::UnexpectedToken}}, "a"},
        {"a.", {{1, 3, Code::UnexpectedToken}}, "<error>"},
        {"a[1", {{1, 4, Code::UnexpectedToken}}, "([] a 1)"},
        {"f(a,)", {{1, 5, Code::UnexpectedToken}}, "(call f a <error>)"},
        {"f(a b)", {{1, 5, Code::UnexpectedToken}}, "(call f a)"},
        {"a.%Q3", {{1, 3, Code::UnexpectedToken}}, "<error>"},
        {"a.%X", {{1, 3, Code::UnexpectedToken}}, "<error>"},
        {"a.99999999999", {{1, 3, Code::UnexpectedToken}}, "<error>"},
        {"a.IF", {{1, 3, Code::UnexpectedToken}}, "<error>"},
        {"a * / b", {{1, 5, Code::UnexpectedToken}}, "(* a <error>)"},
        {"16#G + 'a", {{1, 1, Code::MalformedNumber}, {1, 8, Code::UnterminatedString}}, "(+ <error> <error>)"},
        {"[1, 2", {{1, 6, Code::UnexpectedToken}}, "(array 1 2)"},
    };
    ExpectRows(kRows, Parsed::As::Expression);
}

TEST(ParserErrors, InStatements) {
    const Row kRows[] = {
        // A missing semicolon stands behind what it should follow, and costs nothing.
        {"a := 1\nb := 2;", {{1, 7, Code::MissingSemicolon}}, "(:= a 1) (:= b 2)"},
        {"a := 1 b := 2;", {{1, 7, Code::MissingSemicolon}}, "(:= a 1) (:= b 2)"},
        {"IF a THEN b := 1 END_IF; c := 2;", {{1, 17, Code::MissingSemicolon}}, "(IF (a (:= b 1))) (:= c 2)"},
        {"f()\ng();", {{1, 4, Code::MissingSemicolon}}, "(call f) (call g)"},
        {"EXIT RETURN;", {{1, 5, Code::MissingSemicolon}}, "EXIT RETURN"},
        {"a := b c d;\ne := 1;", {{1, 7, Code::MissingSemicolon}}, "(:= a b) (:= e 1)"},
        // What a statement lacks is one message; the next statement is read again.
        {"a := ;\nb := 1;", {{1, 6, Code::UnexpectedToken}}, "(:= b 1)"},
        {"a := 1 + ;\nb := 1;", {{1, 10, Code::UnexpectedToken}}, "(:= b 1)"},
        {"a := (1 + 2;\nb := 1;", {{1, 12, Code::UnexpectedToken}}, "(:= b 1)"},
        {"a := f(1, 2;\nb := 1;", {{1, 12, Code::UnexpectedToken}}, "(:= b 1)"},
        {"f(a := 1,\n  b := );\nc := 1;", {}, "(call f (:= a 1) (:= b)) (:= c 1)"},
        {"f(a := *,\n  b := 2);\nc := 1;", {{1, 8, Code::UnexpectedToken}}, "(:= c 1)"},
        {"a := 1 +\nb := 2;", {{2, 2, Code::MissingSemicolon}}, "(:= a (+ 1 b))"},
        {":= 1;\nb := 1;", {{1, 1, Code::UnexpectedToken}}, "(:= b 1)"},
        {"a := IF b THEN c(); END_IF; d();", {{1, 6, Code::UnexpectedToken}}, "(IF (b (call c))) (call d)"},
        {"a = 1;\nb := 1;", {{1, 3, Code::EqualForAssignment}}, "(:= a 1) (:= b 1)"},
        {"a = b = c;", {{1, 3, Code::EqualForAssignment}}, "(:= a (= b c))"},
        {"FOR i = 0 TO 3 DO END_FOR;", {{1, 7, Code::EqualForAssignment}}, "(FOR i 0 3)"},
        {"a := 'b;\nc := 1;", {{1, 6, Code::UnterminatedString}}, "(:= c 1)"},
        {"a := @b;", {{1, 6, Code::StrayCharacter}}, "(:= a b)"},
        {"a := 5x;\nb := 1;", {{1, 6, Code::MalformedNumber}}, "(:= a <error>) (:= b 1)"},
        {"THEN a := 1;\nb := 1;", {{1, 1, Code::UnexpectedToken}}, "(:= b 1)"},
        // Words missing inside of a block.
        {"IF a x := 1; END_IF; y();", {{1, 6, Code::UnexpectedToken}}, "(IF (a (:= x 1))) (call y)"},
        {"IF a\n  x := 1; END_IF; y();", {{2, 3, Code::UnexpectedToken}}, "(IF (a (:= x 1))) (call y)"},
        {"IF a + THEN x(); END_IF;", {{1, 8, Code::UnexpectedToken}}, "(IF ((+ a <error>) (call x)))"},
        {"IF (a THEN x(); END_IF;", {{1, 7, Code::UnexpectedToken}}, "(IF (a (call x)))"},
        {"IF a b c THEN x(); END_IF;", {{1, 6, Code::UnexpectedToken}}, "(IF (a (call x)))"},
        {"IF THEN x(); END_IF;", {{1, 4, Code::UnexpectedToken}}, "(IF (<error> (call x)))"},
        {"IF a := b THEN x(); END_IF;", {{1, 6, Code::UnexpectedToken}}, "(IF (a (call x)))"},
        {"WHILE a x(); END_WHILE; y();", {{1, 9, Code::UnexpectedToken}}, "(WHILE a) (call y)"},
        {"FOR i := 0 10 DO x(); END_FOR;", {{1, 12, Code::UnexpectedToken}}, "(FOR i 0 <error> (call x))"},
        {"FOR i 0 TO 10 DO x(); END_FOR;", {{1, 7, Code::UnexpectedToken}}, "(FOR i <error> <error> (call x))"},
        {"REPEAT x(); END_REPEAT; y();",
         {{1, 13, Code::UnexpectedToken}},
         "(REPEAT (call x) (UNTIL <error>)) (call y)"},
        {"REPEAT x(); UNTIL a; y(); END_REPEAT; z();",
         {{1, 22, Code::UnexpectedToken}},
         "(REPEAT (call x) (UNTIL a)) (call z)"},
        {"CASE a 1: x(); END_CASE; y();", {{1, 8, Code::UnexpectedToken}}, "(CASE a) (call y)"},
        {"CASE a OF x(); 1: y(); END_CASE;", {{1, 14, Code::UnexpectedToken}}, "(CASE a (()) ((1) (call y)))"},
        {"CASE a OF 1 x(); 2: y(); END_CASE;", {{1, 13, Code::UnexpectedToken}}, "(CASE a (()) ((2) (call y)))"},
        {"CASE a OF 1.. : x(); 2: y(); END_CASE;",
         {{1, 15, Code::UnexpectedToken}},
         "(CASE a (((.. 1 <error>)) (call x)) ((2) (call y)))"},
        // Ends missing or mistyped.
        {"IF a THEN x();", {{1, 15, Code::MissingEnd}}, "(IF (a (call x)))"},
        {"IF a THEN IF b THEN WHILE c DO x();", {{1, 36, Code::MissingEnd}}, "(IF (a (IF (b (WHILE c (call x))))))"},
        {"IF a THEN x(); END_FOR; y();", {{1, 16, Code::MissingEnd}}, "(IF (a (call x))) (call y)"},
        {"WHILE a DO IF b THEN x(); END_WHILE; y();",
         {{1, 27, Code::MissingEnd}},
         "(WHILE a (IF (b (call x)))) (call y)"},
        {"END_IF; a := 1; END_FOR; ELSE b := 2; UNTIL;",
         {{1, 1, Code::StrayEnd}, {1, 17, Code::StrayEnd}, {1, 26, Code::StrayEnd}, {1, 39, Code::StrayEnd}},
         "(:= a 1) (:= b 2)"},
        {"IF a THEN x(); ELSE y(); ELSE z(); END_IF;", {{1, 26, Code::StrayEnd}}, "(IF (a (call x)) (ELSE (call y)))"},
        {"WHILE a DO ELSE x(); END_WHILE;", {{1, 12, Code::StrayEnd}}, "(WHILE a (call x))"},
        {"a := 1; END_VAR b := 1;", {{1, 9, Code::StrayEnd}}, "(:= a 1) (:= b 1)"},
        // Several mistakes, each once, in order.
        {"a := ;\nb = 1;\nc := 1\nd := (2;\ne := 3;",
         {{1, 6, Code::UnexpectedToken},
          {2, 3, Code::EqualForAssignment},
          {3, 7, Code::MissingSemicolon},
          {4, 8, Code::UnexpectedToken}},
         "(:= b 1) (:= c 1) (:= e 3)"},
    };
    ExpectRows(kRows, Parsed::As::Statements);
}

TEST(ParserErrors, InDeclarations) {
    const Row kRows[] = {
        {"VAR_GLOBAL a : INT\nb : INT; END_VAR", {{1, 19, Code::MissingSemicolon}}, "(VAR_GLOBAL (a INT) (b INT))"},
        {"VAR_GLOBAL a : INT b : INT; END_VAR", {{1, 19, Code::MissingSemicolon}}, "(VAR_GLOBAL (a INT) (b INT))"},
        {"VAR_GLOBAL a : INT END_VAR", {{1, 19, Code::MissingSemicolon}}, "(VAR_GLOBAL (a INT))"},
        {"VAR_GLOBAL a INT; b : INT; END_VAR", {{1, 14, Code::UnexpectedToken}}, "(VAR_GLOBAL (a <error>) (b INT))"},
        {"VAR_GLOBAL a : ; b : INT; END_VAR", {{1, 16, Code::UnexpectedToken}}, "(VAR_GLOBAL (a <error>) (b INT))"},
        {"VAR_GLOBAL a : INT := ; b : INT; END_VAR",
         {{1, 23, Code::UnexpectedToken}},
         "(VAR_GLOBAL (a INT <error>) (b INT))"},
        {"VAR_GLOBAL IF : INT; b : INT; END_VAR", {{1, 12, Code::KeywordAsName}}, "(VAR_GLOBAL (b INT))"},
        {"VAR_GLOBAL a : INT;\nIF a THEN",
         {{2, 1, Code::MissingEnd}, {2, 1, Code::DeclarationExpected}},
         "(VAR_GLOBAL (a INT))"},
        {"VAR_GLOBAL THEN : INT; b : INT; END_VAR", {{1, 12, Code::KeywordAsName}}, "(VAR_GLOBAL (b INT))"},
        {"VAR_GLOBAL 5 : INT; b : INT; END_VAR", {{1, 12, Code::UnexpectedToken}}, "(VAR_GLOBAL (b INT))"},
        {"VAR_GLOBAL a, : INT; b : INT; END_VAR", {{1, 15, Code::UnexpectedToken}}, "(VAR_GLOBAL (a <error>) (b INT))"},
        {"VAR_GLOBAL a : ARRAY[1..] OF INT; b : INT; END_VAR",
         {{1, 25, Code::UnexpectedToken}},
         "(VAR_GLOBAL (a (ARRAY (.. 1 <error>) <error>)) (b INT))"},
        {"VAR_GLOBAL a : ARRAY[5] OF INT; b : INT; END_VAR",
         {{1, 23, Code::UnexpectedToken}},
         "(VAR_GLOBAL (a (ARRAY (.. 5 <error>) <error>)) (b INT))"},
        {"VAR_GLOBAL a : ARRAY[1..2] INT; b : INT; END_VAR",
         {{1, 28, Code::UnexpectedToken}},
         "(VAR_GLOBAL (a (ARRAY (.. 1 2) <error>)) (b INT))"},
        {"VAR_GLOBAL a : (x, 5); b : INT; END_VAR",
         {{1, 20, Code::UnexpectedToken}},
         "(VAR_GLOBAL (a (enum (x))) (b INT))"},
        {"VAR_GLOBAL a : INT;\nPROGRAM p END_PROGRAM", {{2, 1, Code::MissingEnd}}, "(VAR_GLOBAL (a INT)) (PROGRAM p)"},
        {"TYPE a : STRUCT x : INT; END_TYPE", {{1, 26, Code::MissingEnd}}, "(TYPE a (STRUCT (x INT)))"},
        {"TYPE a INT; b : INT; END_TYPE", {{1, 8, Code::UnexpectedToken}}, "(TYPE a <error>) (TYPE b INT)"},
        {"TYPE a : INT;\nFUNCTION f END_FUNCTION", {{2, 1, Code::MissingEnd}}, "(TYPE a INT) (FUNCTION f)"},
        {"PROGRAM p VAR a : INT; VAR_INPUT b : INT; END_VAR END_PROGRAM",
         {{1, 24, Code::MissingEnd}},
         "(PROGRAM p (VAR (a INT)) (VAR_INPUT (b INT)))"},
    };
    ExpectRows(kRows, Parsed::As::Unit);
}

TEST(ParserErrors, InUnits) {
    const Row kRows[] = {
        {"a := 1; b := 2;\nPROGRAM p END_PROGRAM", {{1, 1, Code::DeclarationExpected}}, "(PROGRAM p)"},
        {"END_PROGRAM PROGRAM p END_PROGRAM", {{1, 1, Code::StrayEnd}}, "(PROGRAM p)"},
        {"PROGRAM p a := 1; END_FUNCTION FUNCTION f END_FUNCTION",
         {{1, 19, Code::MissingEnd}},
         "(PROGRAM p (:= a 1)) (FUNCTION f)"},
        {"PROGRAM p a := 1;\nFUNCTION f END_FUNCTION", {{2, 1, Code::MissingEnd}}, "(PROGRAM p (:= a 1)) (FUNCTION f)"},
        {"PROGRAM p IF a THEN b();\nEND_PROGRAM\nPROGRAM q END_PROGRAM",
         {{2, 1, Code::MissingEnd}},
         "(PROGRAM p (IF (a (call b)))) (PROGRAM q)"},
        {"PROGRAM\nVAR x : INT; END_VAR END_PROGRAM", {{2, 1, Code::UnexpectedToken}}, "(PROGRAM ? (VAR (x INT)))"},
        {"PROGRAM 5 END_PROGRAM", {{1, 9, Code::UnexpectedToken}}, "(PROGRAM ?)"},
        {"FUNCTION f : END_FUNCTION", {{1, 14, Code::UnexpectedToken}}, "(FUNCTION f <error>)"},
        {"PROGRAM p END_IF; a := 1; END_PROGRAM", {{1, 11, Code::StrayEnd}}, "(PROGRAM p (:= a 1))"},
        {"FUNCTION_BLOCK b METHOD m x(); END_FUNCTION_BLOCK",
         {{1, 32, Code::MissingEnd}},
         "(FUNCTION_BLOCK b (METHOD m (call x)))"},
        {"FUNCTION_BLOCK b METHOD m x();\nMETHOD n END_METHOD END_FUNCTION_BLOCK",
         {{2, 1, Code::MissingEnd}},
         "(FUNCTION_BLOCK b (METHOD m (call x)) (METHOD n))"},
        {"CONFIGURATION c x; END_CONFIGURATION", {{1, 17, Code::UnexpectedToken}}, "(CONFIGURATION c)"},
        {"CONFIGURATION c RESOURCE r ON x TASK t(PRIORITY := ); END_RESOURCE END_CONFIGURATION",
         {{1, 52, Code::UnexpectedToken}},
         "(CONFIGURATION c (RESOURCE r (on x) (TASK t (:= PRIORITY <error>))))"},
        {"PROGRAM p INITIAL_STEP a: x(N) END_STEP x; STEP b: END_STEP END_PROGRAM",
         {{1, 31, Code::MissingSemicolon}, {1, 41, Code::UnexpectedToken}},
         "(PROGRAM p (INITIAL_STEP a (x N)) (STEP b))"},
        {"PROGRAM p INITIAL_STEP a: END_STEP TRANSITION FROM a b := c; END_TRANSITION END_PROGRAM",
         {{1, 54, Code::UnexpectedToken}},
         "(PROGRAM p (INITIAL_STEP a) (TRANSITION (from a) -))"},
        {"NAMESPACE n FUNCTION f END_FUNCTION", {}, "(NAMESPACE n (FUNCTION f))"},
    };
    ExpectRows(kRows, Parsed::As::Unit);
}

TEST(ParserErrors, MessagesSayWhatWasExpectedAndFound) {
    constexpr std::pair<const char*, const char*> kRows[] = {
        {"IF a THEN b := 1 END_IF;",
         "a.st:1:17: error[ST0108]: ';' expected after this statement, found END_IF\n"
         "IF a THEN b := 1 END_IF;\n"
         "                ^\n"},
        {"a := ;", "a.st:1:6: error[ST0101]: an expression expected, found ';'\na := ;\n     ^\n"},
        {"f(a b);", "a.st:1:5: error[ST0101]: ',' or ')' expected, found 'b'\nf(a b);\n    ^\n"},
        {"a = 1;", "a.st:1:3: error[ST0111]: '=' compares; write ':=' to assign\na = 1;\n  ^\n"},
        {"a.", "a.st:1:3: error[ST0101]: the name of a member expected, found the end of the file\na.\n  ^\n"},
        {"WHILE a DO",
         "a.st:1:11: error[ST0109]: END_WHILE expected, found the end of the file\nWHILE a DO\n          ^\n"
         "a.st:1:1: note: WHILE stands here\nWHILE a DO\n^~~~~\n"},
    };
    for (const auto& [text, expected] : kRows)
        EXPECT_EQ(Parsed(text, Parsed::As::Statements).Messages(), expected);
}

struct HintRow {
    const char* text;
    std::vector<Reported> hints;
};

TEST(ParserHints, OtherSpellingsAreAcceptedAndHintedAt) {
    const HintRow kRows[] = {
        {"FUNCTIONBLOCK b END_FUNCTIONBLOCK", {{1, 1, Code::OtherSpelling}, {1, 17, Code::OtherSpelling}}},
        {"FUNCTION_BLOCK b IF a THEN END_IF x(); END_FUNCTION_BLOCK", {{1, 34, Code::OtherSpelling}}},
        {"PROGRAM p IF a THEN ELSEIF b THEN END_IF; END_PROGRAM", {{1, 21, Code::OtherSpelling}}},
        {"PROGRAM p x();; END_PROGRAM", {{1, 15, Code::OtherSpelling}}},
        {"PROGRAM p REPEAT UNTIL a; END_REPEAT; END_PROGRAM", {{1, 25, Code::OtherSpelling}}},
        {"PROGRAM p IF a THEN ELSE: END_IF; END_PROGRAM", {{1, 25, Code::OtherSpelling}}},
        {"VAR_GLOBAL a : STRING(5); END_VAR", {{1, 22, Code::OtherSpelling}}},
        {"VAR_GLOBAL a : STRING[5]; END_VAR;", {{1, 34, Code::OtherSpelling}}},
        {"VAR_GLOBAL a : t := 1, 2; END_VAR", {{1, 21, Code::OtherSpelling}}},
        {"TYPE a : STRUCT END_STRUCT END_TYPE", {{1, 27, Code::OtherSpelling}}},
        {"TYPE a : (b, c) END_TYPE", {{1, 16, Code::OtherSpelling}}},
        {"PROGRAM p; END_PROGRAM;", {{1, 10, Code::OtherSpelling}, {1, 23, Code::OtherSpelling}}},
        {"PROGRAM p", {{1, 10, Code::OtherSpelling}}},
        {"PROGRAM p x(); VAR a : INT; END_VAR END_PROGRAM", {{1, 16, Code::OtherSpelling}}},
        {"PROGRAM p x(); ; ; END_PROGRAM", {{1, 16, Code::OtherSpelling}, {1, 18, Code::OtherSpelling}}},
    };
    Switches switches;
    switches.hints = true;
    for (const HintRow& row : kRows) {
        const Parsed hinted(row.text, Parsed::As::Unit, switches);
        EXPECT_EQ(hinted.Errors(), row.hints) << row.text << '\n' << hinted.Messages();
        EXPECT_EQ(Parsed(row.text).Messages(), "") << row.text;
        EXPECT_EQ(Parsed(row.text).Printed(), hinted.Printed()) << row.text;
    }
}

}  // namespace
}  // namespace tn61131::st
