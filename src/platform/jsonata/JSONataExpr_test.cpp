#include "platform/JSONataExpr.h"

#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/ErrorLog.h"
#include "platform/jsonata/EvaluateTesting.h"

namespace {

using tn61131::jsonata::RunExpression;
using Outcome = JSONataResult::Outcome;

JSONValue ReadJSON(std::string_view text) {
    COutputLogString log;
    JSONParseContext context(text, log);
    JSONValue value;
    EXPECT_TRUE(value.Parse(context)) << log.GetText();
    return value;
}

std::unique_ptr<JSONataExpr> Parse(std::string_view text) {
    COutputLogString log;
    auto expr = JSONataExpr::ParseJSONataText(text, log);
    EXPECT_NE(expr, nullptr) << log.GetText();
    return expr;
}

TEST(JSONataExpr, APartOfTheInputIsReferredTo) {
    const JSONValue input = ReadJSON(R"({"a": {"b": [1, "x"]}})");
    COutputLogNull log;
    const JSONataResult array = Parse("a.b")->Evaluate(input, log);
    ASSERT_EQ(array.GetOutcome(), Outcome::Value);
    EXPECT_EQ(&array.GetValue(), input.Find("a")->Find("b"));
    JSONataResult text = Parse("a.b[1]")->Evaluate(input, log);
    EXPECT_EQ(&text.GetValue(), &input.Find("a")->Find("b")->GetElements()[1]);
    EXPECT_EQ(text.TakeValue(), JSONValue("x"));
    EXPECT_EQ(*input.Find("a")->Find("b"), ReadJSON(R"([1, "x"])")) << "taking it copies it";
}

TEST(JSONataExpr, AResultOutlivesTheExpression) {
    COutputLogNull log;
    JSONataResult result = Parse("'literal'")->Evaluate(log);
    EXPECT_EQ(result.GetValue(), JSONValue("literal"));
    result = Parse("$eval('\"other\"')")->Evaluate(log);
    EXPECT_EQ(result.GetValue(), JSONValue("other"));
}

TEST(JSONataExpr, NoResultIsNoError) {
    const JSONValue input = ReadJSON(R"({"a": null})");
    COutputLogString log;
    EXPECT_EQ(Parse("a")->Evaluate(input, log).GetOutcome(), Outcome::Value);
    const JSONataResult none = Parse("b")->Evaluate(input, log);
    EXPECT_EQ(none.GetOutcome(), Outcome::Undefined);
    EXPECT_TRUE(none.GetValue().IsNull());
    EXPECT_EQ(none.GetErrorCode(), "");
    EXPECT_EQ(log.GetErrorCount(), 0U);
}

TEST(JSONataExpr, AnErrorTellsCodePositionAndText) {
    COutputLogString log;
    const JSONataResult result = Parse("(\n  $x := 'a';\n  1 + $x\n)")->Evaluate(log);
    EXPECT_EQ(result.GetOutcome(), Outcome::Error);
    EXPECT_EQ(result.GetErrorCode(), "T2002");
    EXPECT_EQ(result.GetErrorOffset(), 19U);
    EXPECT_EQ(result.GetErrorText(), "The right side of \"+\" must be a number");
    EXPECT_EQ(log.GetErrorCount(), 1U);
    EXPECT_EQ(log.GetText(), "JSONata, line 3, column 5: T2002: The right side of \"+\" must be a number\n");
}

TEST(JSONataExpr, AnErrorInACalledFunctionStandsWhereItHappens) {
    COutputLogNull log;
    const JSONataResult result = Parse("$map([1], function($x) { $x & -'a' })")->Evaluate(log);
    EXPECT_EQ(result.GetErrorCode(), "D1002");
    EXPECT_EQ(result.GetErrorOffset(), 30U);
    EXPECT_EQ(Parse("1 + $number('x')")->Evaluate(log).GetErrorOffset(), 11U) << "the call of the function";
    EXPECT_EQ(Parse("$error('own words')")->Evaluate(log).GetErrorText(), "own words");
}

TEST(JSONataExpr, ATextThatIsNoExpressionIsReportedOnce) {
    COutputLogString log;
    EXPECT_EQ(JSONataExpr::ParseJSONataText("\u00e9 +\n +", log), nullptr);
    EXPECT_EQ(log.GetText(), "JSONata, line 2, column 2: S0211: \"+\" cannot begin an operand\n");
    EXPECT_EQ(log.GetErrorCount(), 1U);
}

TEST(JSONataExpr, AnExpressionInsideOfATextEndsWhereItCannotContinue) {
    COutputLogString log;
    JSONParseContext context("Select(a.b[1] )", log);
    context.SetPosition(7);
    const auto expr = JSONataExpr::ParseJSONataExpr(context);
    ASSERT_NE(expr, nullptr) << log.GetText();
    EXPECT_EQ(context.GetPosition(), 13U);
    EXPECT_EQ(expr->GetText(), "a.b[1]");
    const JSONValue input = ReadJSON(R"({"a": {"b": [1, 2]}})");
    EXPECT_EQ(expr->Evaluate(input, log).GetValue(), JSONValue(2.0));
}

TEST(JSONataExpr, AnErrorInsideOfATextLeavesThePosition) {
    COutputLogString log;
    JSONParseContext context("Select(a.)", log);
    context.SetPosition(7);
    EXPECT_EQ(JSONataExpr::ParseJSONataExpr(context), nullptr);
    EXPECT_EQ(context.GetPosition(), 7U);
    EXPECT_EQ(log.GetErrorCount(), 1U);
    EXPECT_NE(log.GetText().find("line 1, column 10: S0211: "), std::string::npos) << log.GetText();
}

TEST(JSONataExpr, BindingsAreVariables) {
    const JSONValue bindings = ReadJSON(R"({"limit": 2, "names": {"a": "x"}, "sum": 5})");
    const JSONValue input = ReadJSON("[1, 2, 3]");
    JSONataOptions options;
    options.bindings = &bindings;
    COutputLogNull log;
    EXPECT_EQ(Parse("$[$ >= $limit]")->Evaluate(input, log, options).GetValue(), ReadJSON("[2, 3]"));
    EXPECT_EQ(&Parse("$names")->Evaluate(input, log, options).GetValue(), bindings.Find("names"));
    EXPECT_EQ(Parse("$sum + 1")->Evaluate(input, log, options).GetValue(), JSONValue(6.0)) << "hides the function";
}

TEST(JSONataExpr, PrintsNormalized) {
    CTextOutputString text;
    Parse(" a . b [ 0 ] ")->FormatJSONataExpr(text);
    EXPECT_EQ(text.GetText(), "a.b[0]");
}

TEST(JSONataExpr, OneExpressionServesSeveralThreads) {
    const auto expr = Parse("$sum($map([1..1000], function($x) { $x * 2 })) & $substringAfter('a-b', '-')");
    std::vector<std::thread> threads;
    std::vector<std::string> results(4);
    for (std::string& result : results) {
        threads.emplace_back([&] {
            COutputLogNull log;
            result = expr->Evaluate(log).GetValue().GetString();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const std::string& result : results)
        EXPECT_EQ(result, "1001000b");
}

struct LimitCase {
    const char* text;
    const char* code;
};

void ExpectCodes(std::span<const LimitCase> cases, const JSONataOptions& options) {
    for (const LimitCase& test : cases)
        EXPECT_EQ(RunExpression(test.text, {}, options), test.code) << test.text;
}

TEST(JSONataLimits, TimeIsBounded) {
    JSONataOptions options;
    options.limits.maxTimeMs = 50;
    constexpr LimitCase kCases[] = {
        {"($f := function() { $f() }; $f())", "U1001"},
        {"$reduce([1..10000000], function($a, $b) { $b })", "U1001"},
        {"[1..10000000][$ < 0]", "U1001"},
        {"($d := function($s, $n) { $n = 0 ? $s : $d({'a': $s, 'b': $s}, $n - 1) }; $d(1, 100) = $d(1, 100))", "U1001"},
    };
    ExpectCodes(kCases, options);
}

TEST(JSONataLimits, DepthMemoryAndOutputAreBounded) {
    JSONataOptions options;
    options.limits.maxDepth = 200;
    options.limits.maxTimeMs = 0;
    options.limits.maxMemory = 1'000'000;
    options.limits.maxOutput = 10'000;
    constexpr LimitCase kCases[] = {
        {"($f := function($n) { 1 + $f($n) }; $f(1))", "U1001"},
        {"($f := function($n) { $map([$n], $f) }; $f(1))", "U1001"},
        {"($f := function($s, $n) { $n = 0 ? $s : $f([[$s]], $n - 1) }; $f(1, 3000))", "U1001"},
        {"[1..100000].[1..100]", "U1002"},
        {"$map([1..100000], function($x) { {'a': $x} })", "U1002"},
        {"$pad('a', 1e15)", "U1003"},
        {"$join([1..5000].$string())", "U1003"},
        {"$string([1..10000])", "U1003"},
        {"($d := function($s, $n) { $n = 0 ? $s : $d($s & $s, $n - 1) }; $d('ab', 60))", "U1003"},
        {"($d := function($s, $n) { $n = 0 ? $s : $d([[$s], [$s]], $n - 1) }; $d(1, 40))", "U1003"},
        {"{'a': 1} ~> |$|{'self': $}|", "U1001"},
        {"$replace($pad('', 5000, 'a'), /a/, 'bbbb')", "U1003"},
    };
    ExpectCodes(kCases, options);
}

TEST(JSONataLimits, AtTheLimitOfDepthWorks) {
    JSONataOptions options;
    options.limits.maxDepth = 5;
    EXPECT_EQ(RunExpression("((((1))))", {}, options), "1");
    EXPECT_EQ(RunExpression("(((((1)))))", {}, options), "U1001");
}

TEST(JSONataLimits, LongChainsOfFunctionsEndWithAnError) {
    EXPECT_EQ(
        RunExpression("($c := function($g, $n) { $n = 0 ? $g : $c($g ~> $string, $n - 1) }; $c($string, 100)(1))"),
        "\"1\"");
    EXPECT_EQ(
        RunExpression("($c := function($g, $n) { $n = 0 ? $g : $c($g ~> $string, $n - 1) }; $c($string, 100000)(1))"),
        "U1001");
}

TEST(JSONataLimits, ALimitIsNotWrappedByEval) {
    JSONataOptions options;
    options.limits.maxDepth = 50;
    EXPECT_EQ(RunExpression("($f := function($n) { 1 + $eval('$f(1)') }; $f(1))", {}, options), "U1001");
}

}  // namespace
