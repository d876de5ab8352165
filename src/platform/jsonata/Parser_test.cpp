#include "platform/jsonata/Parser.h"

#include <string>

#include <gtest/gtest.h>

#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Expr.h"

namespace tn61131::jsonata {

namespace {

struct PrintCase {
    const char* text;
    const char* printed;
};

constexpr PrintCase kPrinted[] = {
    {"a . b", "a.b"},
    {"`a b`.\"c\"", "`a b`.\"c\""},
    {"`and`", "`and`"},
    {"and and or or in", "`and` and `or` or `in`"},
    {"`1a`.a1", "`1a`.a1"},
    {"1+2*3-4/5%6", "1 + 2 * 3 - 4 / 5 % 6"},
    {"- a", "-a"},
    {"--1", "--1"},
    {"(1;2;)", "(1; 2)"},
    {"()", "()"},
    {"[ 1 , 2 .. 3 ]", "[1, 2 .. 3]"},
    {"{ 'a' : 1 }", "{\"a\": 1}"},
    {"a{b:c,d:e}", "a{b: c, d: e}"},
    {"a[1][]", "a[][1]"},
    {"a[]", "a[]"},
    {"$x:=$y:=1", "$x := $y := 1"},
    {"a?b:c", "a ? b : c"},
    {"a ? b", "a ? b"},
    {"a?:b??c", "a ?: b ?? c"},
    {"a~>$f~>$g(1,?)", "a ~> $f ~> $g(1, ?)"},
    {"\u03BB($a,$b)<nn:n>{$a+$b}", "function($a, $b)<nn:n>{$a + $b}"},
    {"function(){1}()", "function(){1}()"},
    {"a@$x.b#$i[$i=0]", "a@$x.b#$i[$i = 0]"},
    {"a^(<b,>c, d)", "a^(b, >c, d)"},
    {"|a|b|", "|a|b|"},
    {"|a|b,c|", "|a|b, c|"},
    {"*.**.%.$.$$", "*.**.%.$.$$"},
    {"/a\\/[/]/im", "/a\\/[/]/im"},
    {"a /* b */ + /**/ c", "a + c"},
    {"'\\u0041\\n\"'", "\"A\\n\\\"\""},
    {"1e3", "1000"},
    {"0.00000015", "1.5e-7"},
    {"1e21", "1e+21"},
    {"a in b and c or d", "a in b and c or d"},
    {"a&b=c!=d<e<=f>g>=h", "a & b = c != d < e <= f > g >= h"},
    {"true=false!=null", "true = false != null"},
};

TEST(JSONataParser, PrintsNormalizedTextThatParsesToTheSameTree) {
    for (const PrintCase& test : kPrinted) {
        const SyntaxPtr syntax = Parser(test.text).ParseWhole();
        EXPECT_EQ(FormatSyntax(*syntax), test.printed);
        EXPECT_TRUE(SameSyntax(*syntax, *Parser(test.printed).ParseWhole())) << test.printed;
    }
}

TEST(JSONataParser, BlocksAreTheOnlyGrouping) {
    // Each pair differs in nothing but what binds closer.
    EXPECT_TRUE(SameSyntax(*Parser("a+b*c").ParseWhole(), *Parser("a + b * c").ParseWhole()));
    EXPECT_FALSE(SameSyntax(*Parser("a+b*c").ParseWhole(), *Parser("(a+b)*c").ParseWhole()));
    EXPECT_FALSE(SameSyntax(*Parser("a.b[0]").ParseWhole(), *Parser("(a.b)[0]").ParseWhole()));
    EXPECT_FALSE(SameSyntax(*Parser("a").ParseWhole(), *Parser("a[]").ParseWhole()));
    EXPECT_FALSE(SameSyntax(*Parser("/a/").ParseWhole(), *Parser("/a/i").ParseWhole()));
}

struct ErrorCase {
    const char* text;
    const char* code;
    std::size_t offset;
};

constexpr ErrorCase kErrors[] = {
    {"\"abc", "S0101", 0},
    {"1 + 'abc", "S0101", 4},
    {"1 + 1e999", "S0102", 4},
    {"'a\\x'", "S0103", 2},
    {"'\\u12'", "S0104", 3},
    {"a.`b", "S0105", 2},
    {"1 /* b", "S0106", 2},
    {"a b", "S0201", 2},
    {"1..2", "S0201", 1},
    {"[1 2]", "S0202", 3},
    {"{\"a\" 1}", "S0202", 5},
    {"a[1", "S0203", 3},
    {"(1; 2", "S0203", 5},
    {"{", "S0203", 1},
    {"function($x){", "S0203", 13},
    {"function($x)<n {1}", "S0202", 15},
    {"a ! b", "S0204", 2},
    {"a ~ b", "S0204", 2},
    {"", "S0207", 0},
    {"1 +", "S0207", 3},
    {"a.", "S0207", 2},
    {"function(x){1}", "S0208", 9},
    {"a{b: c}[0]", "S0209", 7},
    {"a{b: c}{d: e}", "S0210", 7},
    {")", "S0211", 0},
    {"[1,]", "S0211", 3},
    {"a := 1", "S0212", 0},
    {"1 + $x := 1", "S0212", 2},
    {"a.1", "S0213", 2},
    {"null.a", "S0213", 0},
    {"a@b", "S0214", 2},
    {"a#1", "S0214", 2},
    {"a[0]@$x", "S0215", 4},
    {"a^(b)@$x", "S0216", 5},
    {"%", "S0217", 0},
    {"$.%", "S0217", 2},
    {"a.%.%", "S0217", 4},
    {"//", "S0301", 0},
    {"1 + /a", "S0302", 4},
    {"/(/", "S0302", 0},
    {"/a(?=b)/", "S0303", 0},
    {"/(a)\\1/", "S0303", 0},
    {"function($x)<n<n>>{1}", "S0401", 12},
    {"function($x)<(sa<n>)>{1}", "S0402", 12},
};

TEST(JSONataParser, ErrorsHaveCodeAndPosition) {
    for (const ErrorCase& test : kErrors) {
        try {
            const ExprPtr expr = ResolveSyntax(*Parser(test.text).ParseWhole());
            ADD_FAILURE() << test.text << " is accepted";
        } catch (const EvaluationError& error) {
            EXPECT_EQ(error.code, test.code) << test.text << ": " << error.text;
            EXPECT_EQ(error.offset, test.offset) << test.text;
            EXPECT_NE(error.text, error.code) << "the code has no text";
        }
    }
}

TEST(JSONataParser, APartEndsBeforeWhatCannotContinueIt) {
    struct PartCase {
        const char* text;
        std::size_t end;
    };
    constexpr PartCase kParts[] = {{"a.b) more", 3},     {"a.b , c", 3}, {"a[1]]", 4},   {"(a)) b", 3},
                                   {"a 'not closed", 1}, {"a !", 1},     {"$f(1) }", 5}, {"a /* c */ ) x", 1},
                                   {"a + b /* open", 5}, {"1; 2", 1}};
    for (const PartCase& test : kParts) {
        Parser parser(test.text);
        (void)parser.ParsePart();
        EXPECT_EQ(parser.GetPosition(), test.end) << test.text;
    }
}

TEST(JSONataParser, NestingIsBounded) {
    const auto nested = [](std::size_t depth) { return std::string(depth, '(') + "1" + std::string(depth, ')'); };
    EXPECT_NO_THROW((void)Parser(nested(900)).ParseWhole());
    EXPECT_THROW((void)Parser(nested(100000)).ParseWhole(), EvaluationError);
    std::string chain = "1";
    for (int i = 0; i < 100000; ++i)
        chain += "+1";
    EXPECT_THROW((void)Parser(chain).ParseWhole(), EvaluationError);
}

}  // namespace

}  // namespace tn61131::jsonata
