#include "functions/NumericFunctions.h"

#include <cmath>

#include <gtest/gtest.h>

#include "support/FunctionCall.h"

namespace {

using function_test::CallCase;
using function_test::ExpectCalls;
using function_test::FindByName;
using function_test::FunctionCaller;

TEST(NumericFunctions, AbsKeepsTheType) {
    const CallCase cases[] = {
        {"ABS(-5)", "DINT#5"},
        {"ABS(5)", "DINT#5"},
        {"ABS(SINT#-1)", "SINT#1"},
        {"ABS(SINT#-128)", "SINT#-128", "has no positive counterpart"},
        {"ABS(LINT#-9000000000)", "LINT#9000000000"},
        {"ABS(T#-2s)", "T#2s"},
        {"ABS(REAL#-1.5)", "REAL#1.5"},
        {"ABS(-1.5)", "LREAL#1.5"},
        {"ABS(WORD#16#FFFF)", "WORD#16#FFFF", "unsigned types are never negative"},
        {"ABS('-1')", "STRING#'-1'", "text is not negative"},
        {"ABS(TRUE)", "BOOL#TRUE"},
        {"ABS(Undefined)", "Undefined"},
    };
    ExpectCalls(cases);
}

TEST(NumericFunctions, SignIsASint) {
    const CallCase cases[] = {
        {"SIGN(0)", "SINT#0"},
        {"SIGN(LINT#9000000000)", "SINT#1"},
        {"SIGN(LINT#-9000000000)", "SINT#-1"},
        {"SIGN(-0.5)", "SINT#-1"},
        {"SIGN(REAL#0.5)", "SINT#1"},
        {"SIGN(-0.0)", "SINT#0"},
        {"SIGN(ULINT#18446744073709551615)", "SINT#1"},
        {"SIGN(T#-1ms)", "SINT#-1"},
        {"SIGN(nan)", "SINT#1", "neither negative nor zero"},
        {"SIGN(FALSE)", "SINT#0"},
        {"SIGN(Undefined)", "SINT#0"},
    };
    ExpectCalls(cases);
}

TEST(NumericFunctions, RealFunctionsAtExactPoints) {
    const CallCase cases[] = {
        {"SQRT(INT#4)", "LREAL#2.0", "an integer gives an LREAL"},
        {"SQRT(REAL#4.0)", "REAL#2.0"},
        {"SQRT('2.25')", "LREAL#1.5", "text is read as a number"},
        {"SQRT(-1.0)", "LREAL#nan", "domain errors are not reported"},
        {"LN(1)", "LREAL#0.0"},
        {"LN(0.0)", "LREAL#-inf"},
        {"LN(REAL#0.0)", "REAL#-inf"},
        {"LOG(1000)", "LREAL#3.0"},
        {"LOG(REAL#100.0)", "REAL#2.0"},
        {"EXP(0)", "LREAL#1.0"},
        {"EXP(10000.0)", "LREAL#inf"},
        {"SIN(0)", "LREAL#0.0"},
        {"COS(REAL#0.0)", "REAL#1.0"},
        {"TAN(0.0)", "LREAL#0.0"},
        {"ASIN(0)", "LREAL#0.0"},
        {"ACOS(1)", "LREAL#0.0"},
        {"ATAN(REAL#0.0)", "REAL#0.0"},
        {"CEILING(1.2)", "LREAL#2.0", "stays an LREAL"},
        {"CEILING(REAL#-1.2)", "REAL#-1.0"},
        {"CEILING(INT#7)", "LREAL#7.0"},
        {"FLOOR(1.8)", "LREAL#1.0"},
        {"FLOOR(REAL#-1.2)", "REAL#-2.0"},
        {"ATAN2(0.0, 1.0)", "LREAL#0.0"},
        {"ATAN2(REAL#0.0, 1.0)", "LREAL#0.0", "one REAL is not enough for single precision"},
        {"ATAN2(0.0, REAL#1.0)", "LREAL#0.0"},
        {"ATAN2(REAL#0.0, REAL#1.0)", "REAL#0.0"},
    };
    ExpectCalls(cases);
}

TEST(NumericFunctions, RealFunctionsOfEitherPrecision) {
    struct Case {
        const char* name;
        float (*single)(float);
        double (*full)(double);
        double argument;
    };
    const Case cases[] = {
        {"SQRT", sqrtf, sqrt, 2.0}, {"LN", logf, log, 2.0},         {"LOG", log10f, log10, 2.0},
        {"EXP", expf, exp, 0.7},    {"SIN", sinf, sin, 0.7},        {"COS", cosf, cos, 0.7},
        {"TAN", tanf, tan, 0.7},    {"ASIN", asinf, asin, 0.7},     {"ACOS", acosf, acos, 0.7},
        {"ATAN", atanf, atan, 0.7}, {"CEILING", ceilf, ceil, -0.7}, {"FLOOR", floorf, floor, -0.7},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        FunctionCaller caller;
        caller.Call(FindByName(row.name), {CValue(row.argument)});
        ASSERT_EQ(caller.GetResult().GetType(), ElementaryType::LReal);
        EXPECT_EQ(caller.GetResult().GetPayload<double>(), row.full(row.argument));
        caller.Call(FindByName(row.name), {CValue(static_cast<float>(row.argument))});
        ASSERT_EQ(caller.GetResult().GetType(), ElementaryType::Real);
        EXPECT_EQ(caller.GetResult().GetPayload<float>(), row.single(static_cast<float>(row.argument)));
    }
}

TEST(NumericFunctions, Rounding) {
    const CallCase cases[] = {
        {"ROUND(2.675, 2)", "LREAL#2.68"},
        {"ROUND(-2.5, 0)", "LREAL#-3.0"},
        {"ROUND(1234.0, -2)", "LREAL#1200.0"},
        {"ROUND(REAL#1.005, 2)", "REAL#1.01"},
        {"ROUND(INT#17, -1)", "LREAL#20.0", "everything but REAL becomes an LREAL"},
        {"ROUND(1.26, '1')", "LREAL#1.3", "the digit count can be text"},
        {"ROUND(1.26, 0.4)", "LREAL#1.0", "or a number, rounded"},
        {"ROUNDSD(1234.5, 2)", "LREAL#1200.0"},
        {"ROUNDSD(0.012345, 3)", "LREAL#0.0123"},
        {"ROUNDSD(REAL#1234.5, 3)", "REAL#1230.0"},
        {"ROUNDSD(1234.5, 0)", "LREAL#0.0"},
        {"ROUNDSD(INT#1555, 2)", "LREAL#1600.0"},
    };
    ExpectCalls(cases);
}

TEST(NumericFunctions, Failures) {
    const CallCase cases[] = {
        {"ABS()", "Failed 242 [Function ABS]"},
        {"ABS(1, 2)", "Failed 242 [Function ABS]"},
        {"SIGN()", "Failed 242 [Function SIGN]"},
        {"SQRT(1, 2)", "Failed 242 [Function SQRT]"},
        {"ATAN2(1)", "Failed 242 [Function ATAN2]"},
        {"ROUND(1, 2, 3)", "Failed 242 [Function ROUND]"},
        {"ROUNDSD()", "Failed 242 [Function ROUNDSD]"},
        {"SQRT('abc')", "Failed 208 [Function SQRT]"},
        {"SQRT(Undefined)", "Failed 214 [Function SQRT]"},
        {"SIN(POINTER#NULL)", "Failed 214 [Function SIN]"},
        {"SIN(CHAR#'A')", "Failed 214 [Function SIN]"},
        {"ATAN2('x', 1)", "Failed 208 [Function ATAN2]"},
        {"ATAN2(1, 'x')", "Failed 208 [Function ATAN2]"},
        {"ROUND('x', 'y')", "Failed 224 [Function ROUND]", "the digit count is read first"},
        {"ROUND('x', 1)", "Failed 208 [Function ROUND]"},
        {"1.18(1.0)", "Invalid 243 []"},
        {"1.0(REAL#1.0)", "Invalid 243 []"},
        {"1.18(1, 2)", "Failed 242 []", "the count is checked before the id"},
        {"1.18()", "Failed 242 []"},
        {"1.18('x')", "Failed 208 []", "and the argument read"},
    };
    ExpectCalls(cases);
}

TEST(NumericFunctions, MessagesNameGroupAndCount) {
    FunctionCaller caller;
    caller.Call("1.200(1)");
    EXPECT_EQ(caller.GetLog().GetEntries().at(0).text, "Invalid Numeric function code '200'.");
    caller.Call("ABS()");
    EXPECT_EQ(caller.GetLog().GetEntries().at(0).text, "Function requires 1 argument(s).");
    caller.Call("ATAN2()");
    EXPECT_EQ(caller.GetLog().GetEntries().at(0).text, "Function requires 2 argument(s).");
}

}  // namespace
