#include "functions/ArithmeticFunctions.h"

#include <gtest/gtest.h>

#include "support/FunctionCall.h"

namespace {

using function_test::CallCase;
using function_test::ExpectCalls;
using function_test::FunctionCaller;

TEST(ArithmeticFunctions, FoldAndApply) {
    const CallCase cases[] = {
        {"ADD(5)", "DINT#5", "a single argument is returned unchanged"},
        {"ADD('A')", "STRING#'A'"},
        {"ADD(1, 2)", "DINT#3"},
        {"ADD(1, 2, 3, 4)", "DINT#10"},
        {"ADD(INT#1, DINT#2, LREAL#0.5)", "LREAL#3.5", "each step promotes"},
        {"ADD(USINT#200, USINT#100)", "USINT#44", "wraps"},
        {"ADD(TOD#23:00:00, T#2h)", "TOD#01:00:00.000"},
        {"ADD(D#2024-01-31, T#36h, T#24h)", "D#2024-02-02"},
        {"ADD(Undefined, 1)", "Undefined"},
        {"ADD(1, Undefined)", "Undefined"},
        {"MUL(7)", "DINT#7"},
        {"MUL(2, 3, 4)", "DINT#24"},
        {"MUL(T#10s, REAL#1.5)", "T#15s"},
        {"SUB(5, 7)", "DINT#-2"},
        {"SUB(5, 7, 100)", "DINT#-2", "a third argument is not looked at"},
        {"SUB(D#2024-01-01, D#2024-01-03)", "T#-2d"},
        {"DIV(7, 2)", "DINT#3"},
        {"DIV(-7, 2)", "DINT#-3"},
        {"DIV(7.0, 2)", "LREAL#3.5"},
        {"MOD(7, 4)", "DINT#3"},
        {"MOD(-7, 4)", "DINT#-3"},
        {"MOD(7, 0)", "DINT#0", "no error"},
        {"EXPT(2, 10)", "LREAL#1024.0", "two integers give an LREAL"},
        {"EXPT(REAL#2.0, REAL#0.5)", "REAL#1.4142135"},
        {"EXPT(REAL#2.0, 3.0)", "LREAL#8.0"},
        {"MOVE(WORD#16#BEEF)", "WORD#16#BEEF"},
        {"MOVE(\"text\")", "WSTRING#\"text\""},
        {"MOVE(Undefined)", "Undefined"},
        {"MOVE(1, 2)", "DINT#1"},
    };
    ExpectCalls(cases);
}

TEST(ArithmeticFunctions, Failures) {
    const CallCase cases[] = {
        {"DIV(1, 0)", "Failed 226 [Function DIV]"},
        {"DIV(1.0, 0.0)", "Failed 226 [Function DIV]"},
        {"ADD('A', 'B')", "Failed 206 [Function ADD]"},
        {"ADD(1, 'x')", "Failed 206 [Function ADD]", "the sum becomes text, which has no +"},
        {"ADD(1, 'A', 2, 'B')", "Failed 206 [Function ADD]", "stops at the first failure"},
        {"SUB(TRUE, FALSE)", "Failed 206 [Function SUB]"},
        {"MUL(TOD#01:00:00, 2)", "Failed 206 [Function MUL]"},
        {"EXPT('x', 1)", "Failed 208 [Function EXPT]"},
        {"ADD()", "Failed 242 [Function ADD]"},
        {"MOVE()", "Failed 242 [Function MOVE]"},
        {"SUB(1)", "Failed 242 [Function SUB]"},
        {"DIV(1)", "Failed 242 [Function DIV]"},
        {"MOD(1)", "Failed 242 [Function MOD]"},
        {"EXPT()", "Failed 242 [Function EXPT]"},
        {"2.0(1)", "Invalid 243 []"},
        {"2.8(1)", "Invalid 243 []"},
        {"2.255()", "Invalid 243 []"},
    };
    ExpectCalls(cases);
}

TEST(ArithmeticFunctions, MessagesNameGroupAndCount) {
    FunctionCaller caller;
    caller.Call("2.8(1)");
    EXPECT_EQ(caller.GetLog().GetEntries().at(0).text, "Invalid Arithmetic function code '8'.");
    caller.Call("SUB(1)");
    EXPECT_EQ(caller.GetLog().GetEntries().at(0).text, "Function requires 2 argument(s).");
    caller.Call("ADD()");
    EXPECT_EQ(caller.GetLog().GetEntries().at(0).text, "Function requires 1 argument(s).");
}

TEST(ArithmeticFunctions, ResultKeepsWhatCameBeforeTheFailure) {
    struct Case {
        const char* call;
        const char* result;
    };
    const Case cases[] = {
        {"ADD(1, 2, TRUE, 'A', 4)", "STRING#'4'"},  // 1 + 2 + 1, then promoted to text
        {"DIV(8, 0)", "DINT#8"},
        {"SUB(9)", "DINT#9"},
        {"2.8(3)", "DINT#3"},
        {"MUL(2, 3, POINTER#NULL)", "DINT#6"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.call);
        FunctionCaller caller;
        caller.Call(row.call);
        EXPECT_NE(caller.GetStatus(), CallStatus::Continue);
        EXPECT_EQ(function_test::Declare(caller.GetResult()), row.result);
    }
}

}  // namespace
