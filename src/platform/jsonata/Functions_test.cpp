#include <set>
#include <string>

#include <gtest/gtest.h>

#include "platform/jsonata/EvaluateTesting.h"
#include "platform/jsonata/FunctionTable.h"

namespace tn61131::jsonata {

namespace {

TEST(JSONataFunctions, Strings) {
    constexpr ExpressionCase kCases[] = {
        {"$string(5)", "\"5\""},
        {"$string('a')", "\"a\""},
        {"$string(null)", "\"null\""},
        {"$string([1, {'a': true}])", R"("[1,{\"a\":true}]")"},
        {"$string({'a': [1, {}], 'b': []}, true)", R"("{\n  \"a\": [\n    1,\n    {}\n  ],\n  \"b\": []\n}")"},
        {"$string($sum)", "\"\""},
        {"$string({'f': $sum})", R"("{\"f\":\"\"}")"},
        {"$string(1 / 3)", "\"0.333333333333333\""},
        {"$string(1e21)", "\"1e+21\""},
        {"$string(1 / 0)", "D3001"},
        {"$string([1 / 0])", "D1001"},
        {"$string(nothing)", "undefined"},
        {"[1, 2].$string()", R"(["1","2"])"},
        {"$length('caf\u00e9 \U0001F600')", "6"},
        {"$length('')", "0"},
        {"$length(nothing)", "undefined"},
        {"$length(1)", "T0410"},
        {"$substring('hello', 1, 2)", "\"el\""},
        {"$substring('hello', -3, 2)", "\"ll\""},
        {"$substring('hello', 9)", "\"\""},
        {"$substring('\U0001F600ab', 1)", "\"ab\""},
        {"$substringBefore('a-b-c', '-')", "\"a\""},
        {"$substringBefore('abc', '-')", "\"abc\""},
        {"$substringAfter('a-b-c', '-')", "\"b-c\""},
        {"$substringAfter('abc', '-')", "\"abc\""},
        {"$uppercase('a\u00e9')", "\"A\u00c9\""},
        {"$lowercase('A\u00c9')", "\"a\u00e9\""},
        {"$trim('  a \\n b ')", "\"a b\""},
        {"$pad('a', 3)", "\"a  \""},
        {"$pad('a', -3, '#')", "\"##a\""},
        {"$pad('abc', -8, '12')", "\"12121abc\""},
        {"$pad('abc', 2)", "\"abc\""},
        {"$join(['a', 'b'], '-')", "\"a-b\""},
        {"$join(['a', 'b'])", "\"ab\""},
        {"$join('a', '-')", "\"a\""},
        {"$join([], '-')", "\"\""},
        {"$join([1])", "T0412"},
        {"$join(nothing)", "undefined"},
        {"$base64encode('hello')", "\"aGVsbG8=\""},
        {"$base64decode('aGVsbG8=')", "\"hello\""},
        {"$encodeUrlComponent('?x=1')", "\"%3Fx%3D1\""},
        {"$encodeUrl('http://a/?x=\u00e9')", "\"http://a/?x=%C3%A9\""},
        {"$decodeUrlComponent('%3Fx%3D1')", "\"?x=1\""},
        {"$decodeUrl('http://a/?x=%C3%A9')", "\"http://a/?x=\u00e9\""},
        {"$decodeUrl('%')", "D3140"},
        {"$encodeUrl('\\uD800')", "D3140"},
        {"'\\uD834'", "\"\uFFFD\""},
        {"'\\uD834\\uDD1E'", "\"\U0001D11E\""},
    };
    ExpectResults(kCases);
}

TEST(JSONataFunctions, RegularExpressions) {
    constexpr ExpressionCase kCases[] = {
        {"$contains('abc', 'b')", "true"},
        {"$contains('abc', /B/)", "false"},
        {"$contains('abc', /B/i)", "true"},
        {"$contains(nothing, 'b')", "undefined"},
        {"$split('a, b, c', ', ')", R"(["a","b","c"])"},
        {"$split('a,b,c', ',', 2)", R"(["a","b"])"},
        {"$split('a,b,c', ',', 0)", "[]"},
        {"$split('a,b', ',', -1)", "D3020"},
        {"$split('a\u00e9b', '')", "[\"a\",\"\u00e9\",\"b\"]"},
        {"$split('', ',')", R"([""])"},
        {"$split('', '')", "[]"},
        {"$split('a1b22c', /[0-9]+/)", R"(["a","b","c"])"},
        {"$split('a1b22c', /[0-9]+/, 1)", R"(["a"])"},
        {"$match('ababb', /a(b+)/)",
         R"([{"match":"ab","index":0,"groups":["b"]},{"match":"abb","index":2,"groups":["bb"]}])"},
        {"$match('ababb', /a(b+)/, 1)", R"({"match":"ab","index":0,"groups":["b"]})"},
        {"$match('ab', /a/, 0)", "undefined"},
        {"$match('ab', /a/, -1)", "D3040"},
        {"$match('\U0001F600a', /a/).index", "2"},
        {"$match('b', /(a)|(b)/).groups", R"([null,"b"])"},
        {"$match('ab', /x*/)", "D1004"},
        {"$match('ab', 'a')", "T0410"},
        {"$replace('aXbX', 'X', '-')", "\"a-b-\""},
        {"$replace('aXbX', 'X', '-', 1)", "\"a-bX\""},
        {"$replace('ab', /(a)(b)/, '$2$1$$$0')", "\"ba$ab\""},
        {"$replace('ab', /(a)/, '$12$3')", "\"a2b\""},
        {"$replace('ab', 'a', '$0')", "\"$0b\""},
        {"$replace('a1b2', /[0-9]/, function($m) { '<' & $m.match & $m.start & $m.end & '>' })", "\"a<112>b<234>\""},
        {"$replace('a', /a/, function($m) { 1 })", "D3012"},
        {"$replace('a', '', 'b')", "D3010"},
        {"$replace('a', 'a', 'b', -1)", "D3011"},
        {"$replace('a', 'a', 1, 1)", "T0410"},
        {"/b(c)/('abc')", R"({"match":"bc","start":1,"end":3,"groups":["c"]})"},
        {"/a/('aba').next().start", "2"},
        {"$exists(/a/('b'))", "false"},
        {"['ab', 'cd'] ~> $filter(/b/)", "\"ab\""},
        {"$split('x', $uppercase)", "T1010"},
        {"($m := function($s) { $s ? {'match': '-', 'start': 1, 'end': 2, 'groups': [], 'next': function() { nothing "
         "}} };"
         "$split('a-b', $m))",
         R"(["a","b"])"},
    };
    ExpectResults(kCases);
}

TEST(JSONataFunctions, Numbers) {
    constexpr ExpressionCase kCases[] = {
        {"$number('12.5')", "12.5"},
        {"$number('0x1F')", "31"},
        {"$number('0b101')", "5"},
        {"$number('0o17')", "15"},
        {"$number(true)", "1"},
        {"$number('x')", "D3030"},
        {"$number('')", "D3030"},
        {"$number(null)", "T0410"},
        {"$number(nothing)", "undefined"},
        {"$abs(-5)", "5"},
        {"$floor(-1.5)", "-2"},
        {"$ceil(-1.5)", "-1"},
        {"$round(2.5)", "2"},
        {"$round(3.5)", "4"},
        {"$round(123.456, 2)", "123.46"},
        {"$round(125, -1)", "120"},
        {"$power(2, 8)", "256"},
        {"$power(-1, 0.5)", "D3061"},
        {"$sqrt(16)", "4"},
        {"$sqrt(-1)", "D3060"},
        {"($r := $random(); $r >= 0 and $r < 1)", "true"},
        {"$formatNumber(12345.6, '#,###.00')", "\"12,345.60\""},
        {"$formatNumber(0.14, '01%')", "\"14%\""},
        {"$formatNumber(1.5, '#0,0', {'decimal-separator': ',', 'grouping-separator': '.'})", "\"1,5\""},
        {"$formatNumber(1, '0;0;0')", "D3080"},
        {"$formatBase(255, 16)", "\"ff\""},
        {"$formatBase(10)", "\"10\""},
        {"$formatBase(10, 1)", "D3100"},
        {"$formatInteger(2789, 'w')", "\"two thousand, seven hundred and eighty-nine\""},
        {"$formatInteger(1999, 'I')", "\"MCMXCIX\""},
        {"$parseInteger('twelve', 'w')", "12"},
        {"$parseInteger('12,345', '#,##0')", "12345"},
        {"$sum([1, 2.5])", "3.5"},
        {"$sum(4)", "4"},
        {"$sum([])", "0"},
        {"$sum(nothing)", "undefined"},
        {"$sum([1, 'a'])", "T0412"},
        {"$max([1, 3, 2])", "3"},
        {"$min([2, 1, 3])", "1"},
        {"$max([])", "undefined"},
        {"$average([1, 2])", "1.5"},
        {"$average([])", "undefined"},
        {"$average('a')", "T0412"},
    };
    ExpectResults(kCases);
}

TEST(JSONataFunctions, BooleansAndTypes) {
    constexpr ExpressionCase kCases[] = {
        {"$boolean('')", "false"},          {"$boolean('0')", "true"},
        {"$boolean(0)", "false"},           {"$boolean(null)", "false"},
        {"$boolean({})", "false"},          {"$boolean([0, ''])", "false"},
        {"$boolean([0, 1])", "true"},       {"$boolean($sum)", "false"},
        {"$boolean(nothing)", "undefined"}, {"$not(0)", "true"},
        {"$not(nothing)", "undefined"},     {"$exists(nothing)", "false"},
        {"$exists(null)", "true"},          {"$exists($sum)", "true"},
        {"$type(1)", "\"number\""},         {"$type('')", "\"string\""},
        {"$type(null)", "\"null\""},        {"$type(true)", "\"boolean\""},
        {"$type([])", "\"array\""},         {"$type({})", "\"object\""},
        {"$type(/a/)", "\"function\""},     {"$type(nothing)", "undefined"},
    };
    ExpectResults(kCases);
}

TEST(JSONataFunctions, Arrays) {
    constexpr ExpressionCase kCases[] = {
        {"$count([1, 2])", "2"},
        {"$count(1)", "1"},
        {"$count(nothing)", "0"},
        {"$append([1], [2, 3])", "[1,2,3]"},
        {"$append(1, 2)", "[1,2]"},
        {"$append(nothing, 1)", "1"},
        {"$append([1], nothing)", "[1]"},
        {"($a := [1]; $b := $append($a, 2); $a)", "[1]"},
        {"$sort([3, 1, 2])", "[1,2,3]"},
        {"$sort(['b', 'B', 'a'])", R"(["B","a","b"])"},
        {"$sort([1, 'a'])", "D3070"},
        {"$sort([true, false])", "D3070"},
        {"$sort([{'a': 2}, {'a': 1}], function($l, $r) { $l.a > $r.a }).a", "[1,2]"},
        {"$sort([1, 2, 3], function($l, $r) { true })", "[3,2,1]"},
        {"$sort('a')", "[\"a\"]"},
        {"$reverse([1, 2, 3])", "[3,2,1]"},
        {"$reverse(nothing)", "undefined"},
        {"$sort($shuffle([1..9]))", "[1,2,3,4,5,6,7,8,9]"},
        {"$distinct([1, 'a', 1, [2], [2], {'x': 1, 'y': 2}, {'y': 2, 'x': 1}, '1'])",
         R"([1,"a",[2],{"x":1,"y":2},"1"])"},
        {"$distinct(1)", "1"},
        {"$zip([1, 2], ['a', 'b', 'c'])", R"([[1,"a"],[2,"b"]])"},
        {"$zip([1, 2], nothing)", "[]"},
        {"$zip(1, 2)", "[[1,2]]"},
    };
    ExpectResults(kCases);
}

TEST(JSONataFunctions, Objects) {
    constexpr ExpressionCase kCases[] = {
        {"$keys({'a': 1, 'b': 2})", R"(["a","b"])"},
        {"$keys([{'a': 1}, {'b': 2, 'a': 3}])", R"(["a","b"])"},
        {"$keys({'a': 1})", "\"a\""},
        {"$keys({})", "undefined"},
        {"$keys('a')", "undefined"},
        {"$lookup({'a': 1}, 'a')", "1"},
        {"$lookup([{'a': 1}, {'b': 0}, {'a': [2]}], 'a')", "[1,2]"},
        {"$lookup({'a': 1}, 'b')", "undefined"},
        {"$spread({'a': 1, 'b': 2})", R"([{"a":1},{"b":2}])"},
        {"$spread([{'a': 1}])", R"([{"a":1}])"},
        {"$spread('a')", "\"a\""},
        {"$merge([{'a': 1, 'b': 2}, {'a': 3}])", R"({"a":3,"b":2})"},
        {"$merge([])", "{}"},
        {"$merge([1])", "T0412"},
        {"$sift({'a': 1, 'b': 2}, function($v) { $v > 1 })", R"({"b":2})"},
        {"$sift({'a': 1, 'b': 2}, function($v, $k) { $k = 'a' })", R"({"a":1})"},
        {"$sift({'a': 1}, function($v) { false })", "undefined"},
        {"$each({'a': 1, 'b': 2}, function($v, $k) { $k & $v })", R"(["a1","b2"])"},
        {"$error()", "D3137"},
        {"$error('no')", "D3137"},
        {"$assert(true, 'no')", "undefined"},
        {"$assert(false, 'no')", "D3141"},
        {"$assert(1)", "T0410"},
        {"($o := {'a': [1]}; $clone($o) = $o)", "true"},
    };
    ExpectResults(kCases);
}

TEST(JSONataFunctions, HigherOrder) {
    constexpr ExpressionCase kCases[] = {
        {"$map([1, 2], function($v) { $v * 2 })", "[2,4]"},
        {"$map([5, 6], function($v, $i, $a) { $v & $i & $count($a) })", R"(["502","612"])"},
        {"$map([1, 2, 3], function($v) { $v > 1 ? $v })", "[2,3]"},
        {"$map([], $string)", "undefined"},
        {"$map(nothing, $string)", "undefined"},
        {"$map([1, 2], $string)", R"(["1","2"])"},
        {"$map([1], 1)", "T0410"},
        {"$filter([1, 2, 3], function($v, $i) { $i > 0 })", "[2,3]"},
        {"$filter([1, 2, 3], function($v) { $v > 2 })", "3"},
        {"$filter([1], function($v) { false })", "undefined"},
        {"$single([1, 2, 3], function($v) { $v = 2 })", "2"},
        {"$single([1, 2], function($v) { true })", "D3138"},
        {"$single([1, 2], function($v) { false })", "D3139"},
        {"$single([4])", "4"},
        {"$reduce([1, 2, 3], function($p, $v) { $p - $v })", "-4"},
        {"$reduce([1, 2], function($p, $v) { $p + $v }, 10)", "13"},
        {"$reduce(['a', 'b'], function($p, $v, $i, $a) { $p & $v & $i & $count($a) })", "\"ab12\""},
        {"$reduce([], function($p, $v) { 1 })", "undefined"},
        {"$reduce([], function($p, $v) { 1 }, 2)", "2"},
        {"$reduce([1], function($p) { 1 })", "D3050"},
    };
    ExpectResults(kCases);
}

TEST(JSONataFunctions, Times) {
    JSONataOptions options;
    options.nowMs = 1510067557121;  // 2017-11-07T15:12:37.121Z
    constexpr ExpressionCase kCases[] = {
        {"$now()", "\"2017-11-07T15:12:37.121Z\""},
        {"$now('[D]/[M]/[Y] [H]:[m01]', '+0100')", "\"7/11/2017 16:12\""},
        {"$millis()", "1510067557121"},
        {"$fromMillis(0)", "\"1970-01-01T00:00:00.000Z\""},
        {"$fromMillis(0, '[Y]-[M01]')", "\"1970-01\""},
        {"$fromMillis(nothing)", "undefined"},
        {"$toMillis('1970-01-01T00:00:01Z')", "1000"},
        {"$toMillis('2.1.1970', '[D].[M].[Y]')", "86400000"},
        {"$toMillis('x')", "D3110"},
        {"$toMillis('x', '[Y]')", "undefined"},
        {"$fromMillis(0, '[Y')", "D3135"},
    };
    for (const ExpressionCase& test : kCases)
        EXPECT_EQ(RunExpression(test.text, {}, options), test.expected) << test.text;
    EXPECT_EQ(RunExpression("$now() = $fromMillis($millis())"), "true") << "one evaluation sees one time";
}

TEST(JSONataFunctions, Eval) {
    constexpr ExpressionCase kCases[] = {
        {"$eval('1 + 2')", "3"},
        {"($x := 2; $eval('$x * a'))", "6"},
        {"$eval('b', {'b': 5})", "5"},
        {"$eval('$count($)', [1, 2])", "2"},
        {"$map(['1', '2 + 3'], $eval)", "[1,5]"},
        {"$eval('function($x) { $x + 1 }')(1)", "2"},
        {"$eval('1 +')", "D3120"},
        {"$eval('1 + null')", "D3121"},
        {"$eval(nothing)", "undefined"},
        {"($f := function($s) { $eval($s) }; $f('a'))", "3"},
    };
    ExpectResults(kCases, R"({"a": 3})");
}

TEST(JSONataFunctions, TheTableNamesEachFunctionOnceWithItsSignature) {
    std::set<std::string_view> names;
    for (const FunctionInfo& function : AllFunctions()) {
        EXPECT_TRUE(names.insert(function.name).second) << function.name;
        EXPECT_EQ(FindFunction(function.name), &function);
        EXPECT_EQ(SignatureOf(function).GetText(), function.signature);
        EXPECT_EQ(RunExpression("$type($" + std::string(function.name) + ")"), "\"function\"");
    }
    EXPECT_EQ(FindFunction("none"), nullptr);
}

}  // namespace

}  // namespace tn61131::jsonata
