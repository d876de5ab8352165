#include <gtest/gtest.h>

#include "platform/jsonata/EvaluateTesting.h"

namespace tn61131::jsonata {

namespace {

TEST(JSONataOperators, Arithmetic) {
    constexpr ExpressionCase kCases[] = {
        {"5 + 2", "7"},
        {"5 - 2", "3"},
        {"5 * 2", "10"},
        {"5 / 2", "2.5"},
        {"5 % 3", "2"},
        {"-5 % 3", "-2"},
        {"5.5 % 2", "1.5"},
        {"2 + 3 * 4", "14"},
        {"(2 + 3) * 4", "20"},
        {"10 - 4 - 3", "3"},
        {"-(3)", "-3"},
        {"--3", "3"},
        {"1 / 0", "null"},
        {"1 / 0 + 1", "D1001"},
        {"5 % 0 + 1", "D1001"},
        {"1e300 * 1e300 - 1", "D1001"},
        {"nothing + 1", "undefined"},
        {"1 - nothing", "undefined"},
        {"-nothing", "undefined"},
        {"'a' + 1", "T2001"},
        {"1 + 'a'", "T2002"},
        {"1 + null", "T2002"},
        {"true * 2", "T2001"},
        {"'a' + nothing", "T2001"},
        {"-'a'", "D1002"},
        {"-null", "D1002"},
    };
    ExpectResults(kCases);
}

TEST(JSONataOperators, EqualityIsDeepAndFalseWithoutValue) {
    constexpr ExpressionCase kCases[] = {
        {"1 = 1", "true"},
        {"1 = '1'", "false"},
        {"1 != '1'", "true"},
        {"null = null", "true"},
        {"[1, [2]] = [1, [2]]", "true"},
        {"[1, 2] = [2, 1]", "false"},
        {"{'a': 1, 'b': [2]} = {'b': [2], 'a': 1}", "true"},
        {"{'a': 1} = {'a': 2}", "false"},
        {"{'a': 1} = {'b': 1}", "false"},
        {"{'a': 1} != {'a': 1, 'b': 2}", "true"},
        {"nothing = nothing", "false"},
        {"nothing != nothing", "false"},
        {"1 != nothing", "false"},
        {"$sum = $sum", "false"},
        {"($f := $sum; $f = $f)", "true"},
    };
    ExpectResults(kCases);
}

TEST(JSONataOperators, ComparisonTakesTwoNumbersOrTwoStrings) {
    constexpr ExpressionCase kCases[] = {
        {"1 < 2", "true"},     {"2 <= 2", "true"},           {"1 > 2", "false"},           {"2 >= 3", "false"},
        {"'a' < 'b'", "true"}, {"'abc' <= 'ab'", "false"},   {"'B' < 'a'", "true"},        {"'a' > ''", "true"},
        {"1 < 'a'", "T2009"},  {"'a' >= 1", "T2009"},        {"true < 1", "T2010"},        {"1 > null", "T2010"},
        {"[1] < 2", "T2010"},  {"nothing < 1", "undefined"}, {"1 > nothing", "undefined"}, {"nothing < true", "T2010"},
    };
    ExpectResults(kCases);
}

TEST(JSONataOperators, BooleansAreCastAndShortCut) {
    constexpr ExpressionCase kCases[] = {
        {"true and false", "false"},
        {"1 and 'a'", "true"},
        {"'' or 0", "false"},
        {"nothing or nothing", "false"},
        {"{} or []", "false"},
        {"[0, ''] or {'a': 0}", "true"},
        {"[0, [false, [1]]] and true", "true"},
        {"$sum or false", "false"},
        {"false and $error('no')", "false"},
        {"true or $error('no')", "true"},
        {"null or false", "false"},
    };
    ExpectResults(kCases);
}

TEST(JSONataOperators, Concatenation) {
    constexpr ExpressionCase kCases[] = {
        {"'a' & 'b'", "\"ab\""},
        {"1 & 2.5", "\"12.5\""},
        {"'a' & nothing & 'b'", "\"ab\""},
        {"nothing & nothing", "\"\""},
        {"'a' & true & null", "\"atruenull\""},
        {"'' & [1, 'x'] & {'k': 0.1 + 0.2}", "\"[1,\\\"x\\\"]{\\\"k\\\":0.3}\""},
        {"10 / 3 & ''", "\"3.33333333333333\""},
    };
    ExpectResults(kCases);
}

TEST(JSONataOperators, Inclusion) {
    constexpr ExpressionCase kCases[] = {
        {"1 in [1, 2]", "true"},     {"'x' in ['a']", "false"}, {"'a' in 'a'", "true"},
        {"nothing in [1]", "false"}, {"1 in nothing", "false"}, {"null in [null]", "true"},
        {"{} in [{}]", "false"},     {"[1] in [[1]]", "false"}, {"true in [1, 'true']", "false"},
    };
    ExpectResults(kCases);
}

TEST(JSONataOperators, Range) {
    constexpr ExpressionCase kCases[] = {
        {"[1..3]", "[1,2,3]"},
        {"[-1..1, 5, 7..8]", "[-1,0,1,5,7,8]"},
        {"[2..2]", "[2]"},
        {"[3..1]", "[]"},
        {"[1..nothing]", "[]"},
        {"[nothing..2]", "[]"},
        {"[1..2].($ * 10)", "[10,20]"},
        {"[0.5..2]", "T2003"},
        {"['a'..2]", "T2003"},
        {"[0..'b']", "T2004"},
        {"[0..1.5]", "T2004"},
        {"$count([1..10000000])", "10000000"},
        {"[0..10000000]", "D2014"},
        {"$append([1..3], 9)", "[1,2,3,9]"},
        {"[1..100][-1]", "100"},
    };
    ExpectResults(kCases);
}

TEST(JSONataOperators, ConditionDefaultAndCoalescing) {
    constexpr ExpressionCase kCases[] = {
        {"true ? 1 : 2", "1"}, {"0 ? 1 : 2", "2"},    {"nothing ? 1", "undefined"}, {"false ? 1 : true ? 2 : 3", "2"},
        {"0 ?: 5", "5"},       {"'a' ?: 5", "\"a\""}, {"nothing ?: 5", "5"},        {"'' ?: 0 ?: 7", "7"},
        {"0 ?? 5", "0"},       {"null ?? 5", "null"}, {"nothing ?? 5", "5"},        {"nothing ?? gone ?? 7", "7"},
        {"[] ?? 1", "[]"},     {"[] ?: 1", "1"},      {"1 + 0 ?: 5", "1"},
    };
    ExpectResults(kCases);
}

TEST(JSONataOperators, ChainingPassesTheValueOn) {
    constexpr ExpressionCase kCases[] = {
        {"[1, 2] ~> $sum", "3"},
        {"[1, 2] ~> $sum()", "3"},
        {"'a-b' ~> $substringAfter('-') ~> $uppercase", "\"B\""},
        {"[1..3] ~> $map(function($v) { $v * 2 }) ~> $sum", "12"},
        {"($f := $trim ~> $uppercase; $f('  x '))", "\"X\""},
        {"($f := $substringAfter(?, '@') ~> $substringBefore(?, '.'); $f('a@b.c'))", "\"b\""},
        {"1 ~> 2", "T2006"},
        {"1 ~> nothing", "T2006"},
        {"nothing ~> $exists", "false"},
        {"[1..3] ~> $filter(function($v) { $v > 2 })", "3"},
        {"[1..3] ~> $filter(function($v) { $v > 2 })[]", "[3]"},
        {"[1..3][] ~> $filter(function($v) { $v > 2 })", "[3]"},
        {"[1..3] ~> $map($string)[1]", "\"2\""},
    };
    ExpectResults(kCases);
}

TEST(JSONataOperators, NamesOfOperatorsAreNamesWhereAnOperandStands) {
    constexpr ExpressionCase kCases[] = {
        {"and", "1"}, {"or and and", "true"}, {"in in [3]", "true"}, {"$.and + $.or", "3"}};
    ExpectResults(kCases, R"({"and": 1, "or": 2, "in": 3})");
}

}  // namespace

}  // namespace tn61131::jsonata
