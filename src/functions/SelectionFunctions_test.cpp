#include "functions/SelectionFunctions.h"

#include <gtest/gtest.h>

#include "support/FunctionCall.h"

namespace {

using function_test::CallCase;
using function_test::ExpectCalls;
using function_test::FunctionCaller;

TEST(SelectionFunctions, Select) {
    const CallCase cases[] = {
        {"SEL(FALSE, 1, 2)", "DINT#1"},
        {"SEL(TRUE, 1, 2)", "DINT#2"},
        {"SEL(7, 'a', TRUE)", "BOOL#TRUE", "any number that is not zero selects IN1"},
        {"SEL(0.0, 'a', TRUE)", "STRING#'a'"},
        {"SEL(-0.0, 1, 2)", "DINT#1"},
        {"SEL(nan, 1, 2)", "DINT#2", "NaN is not zero"},
        {"SEL(Undefined, 1, 2)", "DINT#1"},
        {"SEL('', 1, 2)", "DINT#1", "an empty text counts as zero"},
        {"SEL(TRUE, 1, Undefined)", "Undefined"},
    };
    ExpectCalls(cases);
}

TEST(SelectionFunctions, MaxAndMin) {
    const CallCase cases[] = {
        {"MAX(1)", "DINT#1"},
        {"MIN(Undefined)", "Undefined"},
        {"MAX(1, 3, 2)", "DINT#3"},
        {"MIN(2, 1, 3)", "DINT#1"},
        {"MAX(-1, -3)", "DINT#-1"},
        {"MAX('a', 'c', 'b')", "STRING#'c'"},
        {"MAX(1, 2.5)", "LREAL#2.5"},
        {"MAX(3, 2.5)", "LREAL#3.0", "comparing promotes the greatest so far"},
        {"MAX(2.5, 3)", "LREAL#3.0", "and the argument"},
        {"MIN(T#1s, T#500ms)", "T#500ms"},
        {"MAX(FALSE, TRUE)", "BOOL#TRUE"},
        {"MAX(1.0, nan)", "LREAL#1.0", "a NaN compares as less"},
        {"MIN(1.0, nan)", "LREAL#nan"},
    };
    ExpectCalls(cases);
}

TEST(SelectionFunctions, TiesKeepTheEarlierArgument) {
    // Two zeros that are equal and can be told apart.
    const CallCase cases[] = {
        {"MAX(0.0, -0.0)", "LREAL#0.0"},
        {"MAX(-0.0, 0.0)", "LREAL#-0.0"},
        {"MIN(0.0, -0.0)", "LREAL#0.0"},
        {"MIN(-0.0, 0.0)", "LREAL#-0.0"},
    };
    ExpectCalls(cases);
}

TEST(SelectionFunctions, Limit) {
    const CallCase cases[] = {
        {"LIMIT(0, 5, 10)", "DINT#5"},
        {"LIMIT(0, -5, 10)", "DINT#0"},
        {"LIMIT(0, 15, 10)", "DINT#10"},
        {"LIMIT(0, 0, 10)", "DINT#0"},
        {"LIMIT(0, 10, 10)", "DINT#10"},
        {"LIMIT(10, 5, 0)", "DINT#10", "the lower limit is tried first"},
        {"LIMIT(10, 15, 0)", "DINT#0"},
        {"LIMIT('b', 'a', 'c')", "STRING#'b'"},
        {"LIMIT(T#1s, T#1m, T#2s)", "T#2s"},
        {"LIMIT(7, 5, POINTER#NULL)", "DINT#7", "the upper limit is not looked at any more"},
    };
    ExpectCalls(cases);
}

TEST(SelectionFunctions, MultiplexTakesTheNearestInput) {
    const CallCase cases[] = {
        {"MUX(0, 'a', 'b', 'c')", "STRING#'a'"},
        {"MUX(1, 'a', 'b', 'c')", "STRING#'b'"},
        {"MUX(2, 'a', 'b', 'c')", "STRING#'c'"},
        {"MUX(3, 'a', 'b', 'c')", "STRING#'c'"},
        {"MUX(7, 'a', 'b', 'c')", "STRING#'c'"},
        {"MUX(-5, 'a', 'b', 'c')", "STRING#'a'"},
        {"MUX(LINT#9223372036854775807, 1, 2)", "DINT#2"},
        {"MUX(LINT#-9223372036854775808, 1, 2)", "DINT#1"},
        {"MUX(ULINT#18446744073709551615, 1, 2)", "DINT#1", "read as a signed number"},
        {"MUX(1.4, 10, 20, 30)", "DINT#20", "the selector is converted"},
        {"MUX('1', 10, 20, 30)", "DINT#20"},
        {"MUX(0, 1)", "DINT#1"},
        {"MUX(5, 1)", "DINT#1"},
    };
    ExpectCalls(cases);
}

TEST(SelectionFunctions, Failures) {
    const CallCase cases[] = {
        {"SEL(TRUE, 1)", "Failed 242 [Function SEL]"},
        {"SEL(TRUE, 1, 2, 3)", "Failed 242 [Function SEL]"},
        {"LIMIT(1, 2)", "Failed 242 [Function LIMIT]"},
        {"LIMIT()", "Failed 242 [Function LIMIT]"},
        {"MAX()", "Failed 242 [Function MAX]"},
        {"MIN()", "Failed 242 [Function MIN]"},
        {"MUX()", "Failed 242 [Function MUX]"},
        {"MUX(0)", "Failed 242 [Function MUX]", "there is no input to select"},
        {"MUX('x', 1)", "Failed 224 [Function MUX]"},
        {"MUX(Undefined, 1)", "Failed 214 [Function MUX]"},
        {"MAX(1, POINTER#NULL)", "Failed 215 [Function MAX]"},
        {"MIN(3, 1, POINTER#NULL)", "Failed 215 [Function MIN]"},
        {"LIMIT(POINTER#NULL, 1, 2)", "Failed 215 [Function LIMIT]"},
        {"LIMIT(0, 1, POINTER#NULL)", "Failed 215 [Function LIMIT]"},
        {"5.0()", "Invalid 243 []"},
        {"5.6(1)", "Invalid 243 []"},
    };
    ExpectCalls(cases);
    FunctionCaller caller;
    caller.Call("5.6(1)");
    EXPECT_EQ(caller.GetLog().GetEntries().at(0).text, "Invalid Selection function code '6'.");
    caller.Call("LIMIT()");
    EXPECT_EQ(caller.GetLog().GetEntries().at(0).text, "Function requires 3 argument(s).");
}

TEST(SelectionFunctions, ResultKeepsWhatCameBeforeTheFailure) {
    FunctionCaller caller;
    caller.Call("MAX(1, 3, POINTER#NULL)");
    EXPECT_EQ(function_test::Declare(caller.GetResult()), "DINT#3");
    caller.Call("LIMIT(0, 5, POINTER#NULL)");
    EXPECT_EQ(function_test::Declare(caller.GetResult()), "DINT#5");
    caller.Call("MUX('x', 1)");
    EXPECT_EQ(function_test::Declare(caller.GetResult()), "Undefined");
}

}  // namespace
