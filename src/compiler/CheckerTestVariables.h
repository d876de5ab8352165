#pragma once

#include <string>

#include <gtest/gtest.h>

#include "compiler/CheckerTesting.h"
#include "compiler/TreeInvariant.h"

/// What the tables of the checker's tests share: a program with one variable of every kind.
namespace tn61131::st::testing {

inline constexpr const char* kVariables = R"(
TYPE
  Color : (Red, Green, Blue);
  Fruit : (Apple, Pear);
  Percent : INT(0..100);
  Point : STRUCT x, y : REAL; name : STRING[10]; END_STRUCT;
END_TYPE
FUNCTION Pure : BOOL VAR_INPUT a : BOOL; END_VAR Pure := NOT a; END_FUNCTION
FUNCTION Impure : BOOL VAR_INPUT a : BOOL; END_VAR VAR_OUTPUT o : BOOL; END_VAR o := a; Impure := a; END_FUNCTION
FUNCTION Calc : INT
VAR_INPUT a : INT; b : INT := 2; END_VAR VAR_OUTPUT o : INT; END_VAR VAR_IN_OUT io : DINT; END_VAR
  io := io + a; o := b; Calc := a;
END_FUNCTION
FUNCTION Twice : REAL VAR_INPUT x : REAL; END_VAR Twice := x * 2.0; END_FUNCTION
FUNCTION MakePoint : Point VAR_INPUT x : REAL; END_VAR MakePoint.x := x; END_FUNCTION
FUNCTION Silent VAR_INPUT a : INT; END_VAR ; END_FUNCTION
FUNCTION LEN2 : INT VAR_INPUT t : STRING; END_VAR LEN2 := LEN(t); END_FUNCTION
FUNCTION_BLOCK Motor
VAR_INPUT on : BOOL; speed : REAL := 1.0; END_VAR
VAR_OUTPUT busy : BOOL; rpm : INT; END_VAR
VAR_IN_OUT total : DINT; END_VAR
VAR n : INT; END_VAR
VAR CONSTANT limit : INT := 7; END_VAR
  busy := on;
METHOD Go : INT VAR_INPUT k : INT; END_VAR Go := k + n; END_METHOD
METHOD Stop n := 0; END_METHOD
ACTION Tick: n := n + 1; END_ACTION
PROPERTY Level : INT GET Level := n; END_GET SET n := Level; END_SET END_PROPERTY
END_FUNCTION_BLOCK
VAR_GLOBAL g : INT; END_VAR
PROGRAM Main
VAR
  b, b2, b3 : BOOL; si : SINT; i, j : INT; d, d2 : DINT; l : LINT; us : USINT; u, u2 : UINT; ud : UDINT; ul : ULINT;
  by, by2 : BYTE; w : WORD; dw : DWORD; lw : LWORD; r, r2 : REAL; lr : LREAL;
  t, t2 : TIME; tod : TOD; da : DATE; dt1 : DT; s, s2 : STRING; s5 : STRING[5]; ws : WSTRING; c : CHAR; wc : WCHAR;
  col, col2 : Color; fr : Fruit; pc : Percent; p : POINTER TO INT; pr : POINTER TO REAL; ri : REF_TO INT;
  rf : REFERENCE TO INT;
  a : ARRAY[1..10] OF INT; m : ARRAY[0..2, 0..3] OF REAL; nest : ARRAY[0..1] OF ARRAY[1..2] OF INT;
  pa : POINTER TO ARRAY[1..10] OF INT; pt, pt2 : Point; pts : ARRAY[1..3] OF Point; pp : POINTER TO Point;
  mo : Motor; mos : ARRAY[1..3] OF Motor; pm : POINTER TO Motor; ton1 : TON; ctu1 : CTU;
END_VAR
VAR CONSTANT ten : INT := 10; half : REAL := 0.5; END_VAR
)";
/// Lines in front of the statement under test.
inline constexpr unsigned kFirstLine = 43;

struct Case {
    const char* statement;
    /// The checked statements, one a line; or the messages, "COLUMN CODE text".
    const char* expected;
};

/// The checked form of statements in a program that has the variables above, or else the messages.
inline std::string CheckedForm(const std::string& statement, const CompileOptions& options) {
    CheckedText text(std::string(kVariables) + statement + "\nEND_PROGRAM\n", options);
    std::string body = text.GetProject().diagnostics.HasErrors() ? text.Messages() : text.Body("Main");
    while (!body.empty() && body.back() == '\n')
        body.pop_back();
    return body;
}

/// The messages for statements in that program, without their line.
inline std::string MessagesFor(const std::string& statement, const CompileOptions& options) {
    CheckedText text(std::string(kVariables) + statement + "\nEND_PROGRAM\n", options);
    const std::string line = std::to_string(kFirstLine) + ":";
    std::string messages = text.Messages();
    for (std::size_t at = messages.find(line); at != std::string::npos; at = messages.find(line, at))
        messages.erase(at, line.size());
    while (!messages.empty() && messages.back() == '\n')
        messages.pop_back();
    return messages;
}

inline void ExpectForms(std::initializer_list<Case> cases, const CompileOptions& options) {
    for (const Case& each : cases)
        EXPECT_EQ(CheckedForm(each.statement, options), each.expected) << each.statement;
}

inline void ExpectMessages(std::initializer_list<Case> cases, const CompileOptions& options) {
    for (const Case& each : cases)
        EXPECT_EQ(MessagesFor(each.statement, options), each.expected) << each.statement;
}

}  // namespace tn61131::st::testing
