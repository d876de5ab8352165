#include <gtest/gtest.h>

#include "platform/jsonata/EvaluateTesting.h"

namespace tn61131::jsonata {

namespace {

TEST(JSONataLambdas, VariablesAndClosures) {
    constexpr ExpressionCase kCases[] = {
        {"($x := 5; $x + 1)", "6"},
        {"($x := 1; ($x := 2; $x) + $x)", "3"},
        {"$x := 7", "7"},
        {"$nothing", "undefined"},
        {"function($x) { $x * $x }(3)", "9"},
        {"($f := function() { 1 }; $f())", "1"},
        {"($f := function($a, $b) { $exists($b) }; $f(1))", "false"},
        {"($f := function($a) { $a }; $f(1, 2))", "1"},
        {"($n := 3; $f := function($x) { $x * $n }; $n := 4; $f(2))", "8"},
        {"($make := function($n) { function($x) { $x + $n } }; $add3 := $make(3); $add5 := $make(5); $add3(1) & "
         "$add5(1))",
         "\"46\""},
        {"\u03BB($x) { $x }(1)", "1"},
        {"($fact := function($n) { $n <= 1 ? 1 : $n * $fact($n - 1) }; $fact(10))", "3628800"},
        {"(function($f) { function($x) { $x($x) }(function($g) { $f(function($a) { $g($g)($a) }) }) })"
         "(function($f) { function($n) { $n < 2 ? 1 : $n * $f($n - 1) } })(6)",
         "720"},
        {"$type(function($x) { $x })", "\"function\""},
        {"function($x) { $x }", "undefined"},
        {"[1, $sum]", "[1,null]"},
        {"{'a': $sum, 'b': 1}", "{\"b\":1}"},
        {"($f := function() { 1 }; $f.name)", "undefined"},
        {"($sum := function($x) { 'mine' }; $sum([1]))", "\"mine\""},
    };
    ExpectResults(kCases);
}

TEST(JSONataLambdas, ContextIsThatOfTheDefinition) {
    constexpr ExpressionCase kCases[] = {
        {"($f := function($x) { $x & name }; lines.$f(id))", R"(["Anorth","Bnorth"])"},
        {"lines.$uppercase(name)", R"(["ONE","TWO"])"},
        {"lines.name.$uppercase()", R"(["ONE","TWO"])"},
        {"lines.name.$substring(1)", R"(["ne","wo"])"},
        {"lines.$lookup('id')", R"(["A","B"])"},
    };
    ExpectResults(kCases, R"({"name": "north", "lines": [{"id": "A", "name": "one"}, {"id": "B", "name": "two"}]})");
}

TEST(JSONataLambdas, PartialApplication) {
    constexpr ExpressionCase kCases[] = {
        {"($first := $substring(?, 0, ?); $first('hello', 2))", "\"he\""},
        {"($add := function($a, $b, $c) { $a & $b & $c }; $p := $add(?, 'b', ?); $p('a', 'c'))", "\"abc\""},
        {"($p := $add(1, ?); 1)", "T1008"},
        {"($p := substring(?, 1); 1)", "T1007"},
        {"nothing(?)", "T1008"},
        {"($half := function($x) { $x / 2 }(?); $half(8))", "4"},
    };
    ExpectResults(kCases);
}

TEST(JSONataLambdas, CallsOfWhatIsNoFunction) {
    constexpr ExpressionCase kCases[] = {
        {"$nothing(1)", "T1006"}, {"'a'(1)", "T1006"},         {"sum([1])", "T1005"},
        {"nothing()", "T1006"},   {"($f := 1; f())", "T1005"},
    };
    ExpectResults(kCases);
}

TEST(JSONataLambdas, Signatures) {
    constexpr ExpressionCase kCases[] = {
        {"function($x)<n> { $x }(1)", "1"},
        {"function($x)<n> { $x }('a')", "T0410"},
        {"function($x)<n> { $x }(1, 2)", "T0410"},
        {"function($x)<n> { $x }()", "T0410"},
        {"function($x)<n?> { $exists($x) }()", "false"},
        {"function($x)<n> { $exists($x) }(nothing)", "false"},
        {"function($x)<s> { $x }(null)", "T0410"},
        {"function($x)<l> { $x }(null)", "null"},
        {"function($x)<b> { $x }(true)", "true"},
        {"function($x)<o> { $x }([])", "T0410"},
        {"function($x)<(ns)> { $x }('a')", "\"a\""},
        {"function($x)<(ns)> { $x }(true)", "T0410"},
        {"function($x)<u> { $x }(null)", "T0410"},
        {"function($x)<j> { $x }($sum)", "T0410"},
        {"function($x)<x> { $type($x) }($sum)", "\"function\""},
        {"function($f)<f> { $f(2) }(function($y) { $y + 1 })", "3"},
        {"function($f)<f<n:n>> { $f(2) }(1)", "T0410"},
        {"function($x)<a> { $x }(1)", "[1]"},
        {"function($x)<a<n>> { $x }([1, 2])", "[1,2]"},
        {"function($x)<a<n>> { $x }([1, 'a'])", "T0412"},
        {"function($x)<a<n>> { $x }('a')", "T0412"},
        {"function($x)<a<s>> { $x }([])", "[]"},
        {"function($x, $y)<n+s> { $x & $y }(1, 2, 'a')", "\"12\""},
        {"function($x, $y)<n?s> { $y }('a')", "\"a\""},
        {"[4].function($x, $y)<n-n> { $x - $y }(1)", "3"},
        {"['a'].function($x, $y)<n-n> { $x - $y }(1)", "T0411"},
        {"[4].function($x)<n-> { $x }('a')", "T0410"},
    };
    ExpectResults(kCases);
}

TEST(JSONataLambdas, TailCallsTakeNoDepth) {
    JSONataOptions options;
    options.limits.maxDepth = 30;
    options.limits.maxMemory = 100'000;
    constexpr ExpressionCase kCases[] = {
        {"($f := function($n) { $n = 0 ? 'done' : $f($n - 1) }; $f(20000))", "\"done\""},
        {"($even := function($n) { $n = 0 ? true : $odd($n - 1) }; $odd := function($n) { $n = 0 ? false : $even($n - "
         "1) };"
         "$even(2001))",
         "false"},
        {"($f := function($n, $sum) { ($next := $n - 1; $n = 0 ? $sum : $f($next, $sum + $n)) }; $f(2000, 0))",
         "2001000"},
        {"($f := function($n) { $n = 0 ? 0 : 1 + $f($n - 1) }; $f(100))", "U1001"},
        {"($f := function($a, $n) { $n = 0 ? $count($a) : $f($append($a, $n), $n - 1) }; $f([], 1000))", "1000"},
    };
    for (const ExpressionCase& test : kCases)
        EXPECT_EQ(RunExpression(test.text, {}, options), test.expected) << test.text;
}

}  // namespace

}  // namespace tn61131::jsonata
