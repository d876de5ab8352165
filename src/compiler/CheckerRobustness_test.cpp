#include <random>

#include "compiler/CheckerTestVariables.h"
#include "compiler/TreeInvariant.h"

namespace tn61131::st::testing {
namespace {

/// Operands of every kind, and a few that are wrong.
constexpr const char* kOperands[] = {"b",
                                     "si",
                                     "i",
                                     "d",
                                     "l",
                                     "us",
                                     "u",
                                     "ud",
                                     "ul",
                                     "by",
                                     "w",
                                     "dw",
                                     "lw",
                                     "r",
                                     "lr",
                                     "t",
                                     "tod",
                                     "da",
                                     "dt1",
                                     "s",
                                     "s5",
                                     "ws",
                                     "c",
                                     "wc",
                                     "col",
                                     "fr",
                                     "pc",
                                     "p",
                                     "pr",
                                     "rf",
                                     "a[i]",
                                     "a[3]",
                                     "m[1, i]",
                                     "pt.x",
                                     "pts[2].name",
                                     "p^",
                                     "mo.rpm",
                                     "mo.Level",
                                     "ton1.Q",
                                     "ton1.ET",
                                     "1",
                                     "0",
                                     "-1",
                                     "300",
                                     "70000",
                                     "5000000000",
                                     "16#FF",
                                     "16#FFFF_FFFF",
                                     "2.5",
                                     "1E300",
                                     "TRUE",
                                     "T#5s",
                                     "D#2024-01-01",
                                     "'x'",
                                     "'text'",
                                     "\"w\"",
                                     "CHAR#'c'",
                                     "INT#7",
                                     "WORD#16#F",
                                     "NULL",
                                     "Red",
                                     "Apple",
                                     "ten",
                                     "half",
                                     "w.3",
                                     "d.31",
                                     "dw.%B1",
                                     "ADR(i)",
                                     "LEN(s)",
                                     "ABS(i)",
                                     "SQRT(r)",
                                     "MAX(i, d)",
                                     "SEL(b, i, r)",
                                     "Twice(r)",
                                     "Pure(b)",
                                     "Impure(b)",
                                     "TRUNC(lr)",
                                     "INT_TO_REAL(i)",
                                     "STRING_TO_DINT(s)",
                                     "SHL(w, 2)",
                                     "LIMIT(0, i, 9)",
                                     "MUX(i, r, 2)",
                                     "CONCAT(s, 'x')",
                                     "TIME()",
                                     "SIZEOF(pts)",
                                     "pt",
                                     "mo",
                                     "MakePoint(1.0).y",
                                     "a",
                                     "undefined1",
                                     "Main",
                                     "Color",
                                     "s[1]",
                                     "pa^[2]",
                                     "rf",
                                     "TO_BYTE(i)",
                                     "EXPT(r, 2)",
                                     "UPPER(s)",
                                     "Silent(1)"};
constexpr const char* kOperators[] = {"+", "-",  "*",   "/",  "MOD", "**",       "=",      "<>",
                                      "<", ">=", "AND", "OR", "XOR", "AND_THEN", "OR_ELSE"};
constexpr const char* kTargets[] = {"b",    "si", "i",   "d",      "l",    "us",    "u",        "ud",  "ul",
                                    "by",   "w",  "dw",  "lw",     "r",    "lr",    "t",        "tod", "da",
                                    "dt1",  "s",  "ws",  "c",      "col",  "pc",    "p",        "rf",  "a[i]",
                                    "pt.x", "p^", "w.3", "dw.%W1", "s[2]", "mo.on", "mo.Level", "pt"};

class CheckerProfiles : public ::testing::TestWithParam<const char*> {};

// Whatever stands in an assignment: either there is an error, or the tree keeps its promise to the code generator.
TEST_P(CheckerProfiles, AcceptedExpressionsKeepTheInvariant) {
    std::mt19937 random(20240229);
    const auto pick = [&](const auto& list) { return std::string(list[random() % std::size(list)]); };
    const CompileOptions options = OptionsOf(GetParam());
    std::size_t accepted = 0;
    for (int round = 0; round < 60; ++round) {
        // One statement per function, so that an error in one does not hide the others.
        std::vector<std::string> statements;
        for (int i = 0; i < 25; ++i) {
            std::string value = pick(kOperands);
            for (std::size_t length = random() % 3; length > 0; --length) {
                if (random() % 4 == 0) value = "(" + value + ")";
                if (random() % 6 == 0) value = (random() % 2 == 0 ? "NOT " : "-") + value;
                value += " " + pick(kOperators) + " " + pick(kOperands);
            }
            statements.push_back(pick(kTargets) + " := " + value + ";");
        }
        for (const std::string& statement : statements) {
            CheckedText text(std::string(kVariables) + statement + "\nEND_PROGRAM\n", options);
            if (text.GetProject().diagnostics.HasErrors()) continue;
            ++accepted;
            ASSERT_EQ(BrokenInvariants(text.GetProject()), "") << statement;
        }
    }
    EXPECT_GT(accepted, 50U);
}

// Every operand with every operator and every other operand.
TEST_P(CheckerProfiles, AllPairsKeepTheInvariant) {
    const CompileOptions options = OptionsOf(GetParam());
    for (const char* op : kOperators) {
        for (const char* left : kOperands) {
            std::string functions;
            for (const char* right : kOperands)
                functions += std::string("i := TO_INT(") + left + " " + op + " " + right + ");\n";
            CheckedText text(std::string(kVariables) + functions + "END_PROGRAM\n", options);
            for (const Diagnostic& diagnostic : text.GetProject().diagnostics.Sort())
                ASSERT_FALSE(diagnostic.text.empty());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Profiles, CheckerProfiles, ::testing::Values("iec", "codesys"),
                         [](const auto& info) { return std::string(info.param); });

TEST(CheckerRobustness, DamagedTextsOnlyGiveMessages) {
    const std::string whole = std::string(kVariables) + R"(
  IF b AND i > 3 THEN a[i] := a[j] + Calc(1, io := d); ELSE mo(on := b, total := d, busy => b2); END_IF
  FOR i := 1 TO 10 DO CASE i OF 1..3: r := SQRT(r); 4: EXIT; ELSE s := CONCAT(s, 'x'); END_CASE END_FOR
  p^ := pa^[2]; w.3 := dw.%B1 > 3; pt := MakePoint(Twice(half)); col := Color#Red; t := T#1s * 2;
END_PROGRAM
)";
    std::mt19937 random(42);
    for (int round = 0; round < 1500; ++round) {
        std::string text = whole;
        for (std::size_t damage = 1 + random() % 3; damage > 0; --damage) {
            const std::size_t at = random() % text.size();
            const std::size_t length = 1 + random() % 12;
            switch (random() % 3) {
                case 0: text.erase(at, length); break;
                case 1: text.insert(at, text.substr(random() % text.size(), length)); break;
                default: std::swap(text[at], text[random() % text.size()]); break;
            }
        }
        CheckedText checked(text, OptionsOf(round % 2 == 0 ? "iec" : "codesys"));
        if (checked.GetProject().diagnostics.HasErrors()) continue;
        EXPECT_EQ(BrokenInvariants(checked.GetProject()), "") << text;
    }
}

TEST(CheckerRobustness, LongAndDeepExpressions) {
    std::string sum = "i := 0";
    for (int i = 0; i < 900; ++i)
        sum += " + i";
    EXPECT_EQ(MessagesFor(sum + ";", OptionsOf("iec")), "");
    std::string calls = "i := ";
    for (int i = 0; i < 150; ++i)
        calls += "ABS(";
    calls += "i";
    for (int i = 0; i < 150; ++i)
        calls += ")";
    EXPECT_EQ(MessagesFor(calls + ";", OptionsOf("iec")), "");
    std::string members = "i := pt";
    for (int i = 0; i < 100000; ++i)
        members += ".x";
    EXPECT_NE(MessagesFor(members + ";", OptionsOf("iec")), "");
}

}  // namespace
}  // namespace tn61131::st::testing
