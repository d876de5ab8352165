#include "functions/ComparisonFunctions.h"

#include <gtest/gtest.h>

#include "support/FunctionCall.h"

namespace {

using function_test::CallCase;
using function_test::ExpectCalls;
using function_test::FunctionCaller;

/// Every function over a lesser, an equal and a greater left argument, in several types.
TEST(ComparisonFunctions, PairsInEveryRelation) {
    struct Relation {
        const char* name;
        const char* less;
        const char* equal;
        const char* greater;
    };
    const char* const kTrue = "BOOL#TRUE";
    const char* const kFalse = "BOOL#FALSE";
    const Relation relations[] = {
        {"GT", kFalse, kFalse, kTrue}, {"GE", kFalse, kTrue, kTrue},  {"EQ", kFalse, kTrue, kFalse},
        {"LE", kTrue, kTrue, kFalse},  {"LT", kTrue, kFalse, kFalse}, {"NE", kTrue, kFalse, kTrue},
    };
    struct Pair {
        const char* low;
        const char* high;
    };
    const Pair pairs[] = {{"-1", "1"},
                          {"FALSE", "TRUE"},
                          {"'A'", "'AB'"},
                          {"\"A\"", "\"B\""},
                          {"REAL#1.5", "2"},
                          {"T#-1s", "T#1ms"},
                          {"BYTE#1", "WORD#2"},
                          {"D#2024-01-01", "D#2024-01-02"},
                          {"CHAR#'a'", "CHAR#'b'"}};
    for (const Relation& relation : relations) {
        for (const Pair& pair : pairs) {
            const std::string name = relation.name;
            const std::string low = pair.low;
            const std::string high = pair.high;
            SCOPED_TRACE(name + ' ' + low + ' ' + high);
            FunctionCaller caller;
            EXPECT_EQ(caller.Call(name + '(' + low + ", " + high + ')'), relation.less);
            EXPECT_EQ(caller.Call(name + '(' + low + ", " + low + ')'), relation.equal);
            EXPECT_EQ(caller.Call(name + '(' + high + ", " + low + ')'), relation.greater);
        }
    }
}

TEST(ComparisonFunctions, ChainsComparePairByPair) {
    const CallCase cases[] = {
        {"EQ(1, 1, 2)", "BOOL#FALSE"},
        {"EQ(1, 1, 1)", "BOOL#TRUE"},
        {"GT(3, 2, 1)", "BOOL#TRUE"},
        {"GT(3, 1, 2)", "BOOL#FALSE"},
        {"GE(3, 3, 2)", "BOOL#TRUE"},
        {"LT(1, 2, 3, 4)", "BOOL#TRUE"},
        {"LT(1, 2, 2)", "BOOL#FALSE"},
        {"LE(1, 2, 2, 1)", "BOOL#FALSE"},
        {"NE(1, 2, 1)", "BOOL#TRUE", "only neighbours are compared"},
        {"NE(1, 2, 2)", "BOOL#FALSE"},
        {"EQ(1, 1.0)", "BOOL#TRUE", "promotes"},
        {"EQ(1, 1.0, '1.0')", "BOOL#TRUE", "the promoted value goes on into the next pair"},
        {"LT(nan, 1.0)", "BOOL#TRUE", "a NaN counts as less"},
        {"EQ(POINTER#NULL, POINTER#NULL)", "BOOL#TRUE"},
        {"GT(7)", "BOOL#TRUE", "no pair"},
        {"NE('x')", "BOOL#TRUE", "no pair"},
        {"EQ()", "BOOL#TRUE", "no pair"},
    };
    ExpectCalls(cases);
}

TEST(ComparisonFunctions, UnorderedPointers) {
    CValue here;
    here.SetAddress(1, 0, 4);
    CValue there;
    there.SetAddress(1, 0, 8);
    struct Case {
        const char* name;
        const char* expected;
    };
    const Case cases[] = {{"GT", "BOOL#FALSE"}, {"GE", "BOOL#TRUE"},  {"EQ", "BOOL#FALSE"},
                          {"LE", "BOOL#TRUE"},  {"LT", "BOOL#FALSE"}, {"NE", "BOOL#TRUE"}};
    for (const Case& row : cases) {
        FunctionCaller caller;
        caller.Call(function_test::FindByName(row.name), {here, there});
        EXPECT_EQ(caller.Describe(), row.expected) << row.name;
    }
}

TEST(ComparisonFunctions, Failures) {
    const CallCase cases[] = {
        {"EQ(Undefined, Undefined)", "Failed 245 [Function EQ]"},
        {"GT(1, 2, POINTER#NULL)", "Failed 215 [Function GT]", "compared although the first pair is false"},
        {"EQ(1, POINTER#NULL, 'x')", "Failed 215 [Function EQ]", "ends at the first pair that cannot be compared"},
        {"6.0(1, 2)", "Invalid 243 []"},
        {"6.7(1, 2)", "Invalid 243 []"},
        {"6.7(1, POINTER#NULL)", "Failed 215 []", "the comparison comes before the id"},
        {"6.7(1)", "BOOL#TRUE", "nothing to compare, so the id is not looked at"},
        {"6.7()", "BOOL#TRUE"},
    };
    ExpectCalls(cases);
    FunctionCaller caller;
    caller.Call("6.7(1, 2)");
    EXPECT_EQ(caller.GetLog().GetEntries().at(0).text, "Invalid Comparison function code '7'.");
}

}  // namespace
