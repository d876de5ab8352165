#include "functions/BitwiseFunctions.h"

#include <gtest/gtest.h>

#include "support/FunctionCall.h"

namespace {

using function_test::CallCase;
using function_test::ExpectCalls;
using function_test::FunctionCaller;

TEST(BitwiseFunctions, Fold) {
    const CallCase cases[] = {
        {"AND(BYTE#16#F3, BYTE#16#3F)", "BYTE#16#33"},
        {"AND(BYTE#16#FF, BYTE#16#3F, BYTE#16#0F)", "BYTE#16#F"},
        {"OR(WORD#16#F000, WORD#16#000F, WORD#16#0F00)", "WORD#16#FF0F"},
        {"XOR(DWORD#16#FF, DWORD#16#0F)", "DWORD#16#F0"},
        {"XOR(TRUE, TRUE, TRUE)", "BOOL#TRUE"},
        {"AND(TRUE, TRUE)", "BOOL#TRUE"},
        {"AND(TRUE, FALSE)", "BOOL#FALSE"},
        {"OR(FALSE, TRUE)", "BOOL#TRUE"},
        {"AND(BYTE#16#F1, TRUE)", "BYTE#16#1", "a BOOL is promoted"},
        {"AND(INT#-1, INT#5)", "INT#5", "signed integers too"},
        {"OR(BYTE#1, WORD#16#100)", "WORD#16#101"},
        {"AND('A')", "STRING#'A'", "a single argument is the result, whatever its type"},
        {"4.99(5)", "DINT#5", "and whatever the id"},
    };
    ExpectCalls(cases);
}

TEST(BitwiseFunctions, Failures) {
    const CallCase cases[] = {
        {"AND(1.0, 2.0)", "Failed 206 [Function AND]"},
        {"OR('A', 'B')", "Failed 206 [Function OR]"},
        {"XOR(T#1s, T#2s)", "Failed 206 [Function XOR]"},
        {"AND(1, 2, POINTER#NULL)", "Failed 215 [Function AND]"},
        {"AND()", "Failed 242 [Function AND]"},
        {"4.0(1, 2)", "Invalid 243 []"},
        {"4.4(1, 2)", "Invalid 243 []"},
        {"4.4()", "Failed 242 []"},
    };
    ExpectCalls(cases);
    FunctionCaller caller;
    caller.Call("4.4(1, 2)");
    EXPECT_EQ(caller.GetLog().GetEntries().at(0).text, "Invalid Bitwise Boolean function code '4'.");
    EXPECT_EQ(function_test::Declare(caller.GetResult()), "DINT#1") << "the copy of the first argument stays";
    caller.Call("AND(7, 3, POINTER#NULL)");
    EXPECT_EQ(function_test::Declare(caller.GetResult()), "DINT#3") << "so does a partial result";
}

}  // namespace
