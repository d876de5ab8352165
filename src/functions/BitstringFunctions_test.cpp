#include "functions/BitstringFunctions.h"

#include <gtest/gtest.h>

#include "support/FunctionCall.h"

namespace {

using function_test::CallCase;
using function_test::ExpectCalls;
using function_test::FunctionCaller;

TEST(BitstringFunctions, ShiftAndRotate) {
    const CallCase cases[] = {
        {"SHL(BYTE#16#81, 1)", "BYTE#16#2"},
        {"SHL(BYTE#1, 8)", "BYTE#16#0"},
        {"SHR(BYTE#16#81, 1)", "BYTE#16#40"},
        {"SHR(SINT#-128, 1)", "SINT#64", "zeros enter for signed types too"},
        {"ROR(BYTE#16#81, 1)", "BYTE#16#C0"},
        {"ROL(BYTE#16#81, 1)", "BYTE#16#3"},
        {"ROR(WORD#16#8001, 17)", "WORD#16#C000", "rotations take the count modulo the width"},
        {"SHL(WORD#16#8, -2)", "WORD#16#2", "a negative count shifts the other way"},
        {"ROL(BYTE#16#81, -1)", "BYTE#16#C0"},
        {"SHL(LWORD#1, 63)", "LWORD#16#8000000000000000"},
        {"SHL(LWORD#1, 64)", "LWORD#16#0"},
        {"SHR(DWORD#16#80000000, 31)", "DWORD#16#1"},
        {"SHL(BYTE#1, 0)", "BYTE#16#1"},
        {"SHL(BYTE#1, '3')", "BYTE#16#8", "the count can be text"},
        {"SHL(BYTE#1, 2.5)", "BYTE#16#4", "or a number, rounded"},
    };
    ExpectCalls(cases);
}

TEST(BitstringFunctions, FailuresNameTheParameter) {
    const CallCase cases[] = {
        {"SHL(BYTE#1)", "Failed 242 [Function SHL]"},
        {"ROL(BYTE#1, 1, 1)", "Failed 242 [Function ROL]"},
        {"ROR()", "Failed 242 [Function ROR]"},
        {"SHL(BYTE#1, 'x')", "Failed 224 [Function SHL Parameter 2]"},
        {"SHR(BYTE#1, POINTER#NULL)", "Failed 214 [Function SHR Parameter 2]"},
        {"SHL(1.0, 1)", "Failed 206 [Function SHL Parameter 1]"},
        {"ROR(TRUE, 1)", "Failed 206 [Function ROR Parameter 1]"},
        {"3.0(BYTE#1, 1)", "Failed 243 []", "the operator reports codes that it does not know"},
        {"3.5(BYTE#1, 1)", "Failed 243 []"},
        {"3.5(BYTE#1)", "Failed 242 []"},
        {"3.5(BYTE#1, 'x')", "Failed 224 []"},
    };
    ExpectCalls(cases);
    FunctionCaller caller;
    caller.Call("3.5(BYTE#1, 1)");
    EXPECT_EQ(caller.GetLog().GetEntries().at(0).text, "Invalid Bitstring function code '5'.");
    EXPECT_EQ(function_test::Declare(caller.GetResult()), "BYTE#16#1");
}

}  // namespace
