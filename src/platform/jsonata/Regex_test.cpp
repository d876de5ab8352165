#include "platform/jsonata/Regex.h"

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "platform/jsonata/RegexTranslate.h"

namespace tn61131::jsonata {
namespace {

/// "begin-end" and the groups of each match, an absent group as "-"; "!" and the code of a failure.
std::string Matches(std::string_view body, std::string_view flags, std::string_view text) {
    const Result<std::shared_ptr<const Regex>> regex = Regex::Compile(body, flags);
    if (!regex) return "!" + std::string(regex.GetFailure().code);
    std::string shown;
    std::size_t from = 0;
    while (const std::optional<RegexMatch> match = (*regex)->Find(text, from)) {
        shown += std::to_string(match->begin) + "-" + std::to_string(match->end);
        for (const std::optional<std::string_view>& group : match->groups)
            shown.append("(").append(group.value_or("-")).append(")");
        shown += ' ';
        from = match->end + (match->begin == match->end ? 1 : 0);
    }
    return shown;
}

struct Row {
    std::string_view body;
    std::string_view flags;
    std::string_view text;
    std::string_view expected;
};

TEST(Regex, FindsOneMatchAfterTheOther) {
    EXPECT_EQ(Matches("a(b+)", "", "ababbabbcc"), "0-2(b) 2-5(bb) 5-8(bb) ");
    EXPECT_EQ(Matches("(a)|(b)", "", "ab"), "0-1(a)(-) 1-2(-)(b) ");
    EXPECT_EQ(Matches("(a)(b)?c", "", "ac"), "0-2(a)(-) ");
    EXPECT_EQ(Matches("(x*)b", "", "b"), "0-1() ") << "an empty group is not an absent one";
    EXPECT_EQ(Matches("(x*)", "", ""), "0-0() ");
    EXPECT_EQ(Matches("a.*?a", "", "abracadabra"), "0-4 5-8 ");
    EXPECT_EQ(Matches("^a", "", "aa"), "0-1 ") << "the second is not at the start";
    EXPECT_EQ(Matches("\\bb", "", "ab b"), "3-4 ");
}

TEST(Regex, TakesTheSyntaxOfJavaScript) {
    constexpr Row kRows[] = {
        {R"(\/)", "", "a/b", "1-2 "},
        {R"([/])", "", "a/b", "1-2 "},
        {R"(\d+)", "", "a12\u0663", "1-3 "},
        {R"(\D)", "", "1\u0663", "1-3 "},
        {R"(\w+)", "", "-a_1\u00E9", "1-4 "},
        {R"([^\w]+)", "", "a-\u00E9", "1-4 "},
        {R"(\W)", "", "a[", "1-2 "},
        {R"(\s+)", "", "a \u00A0\uFEFF\u3000\t\v\n.", "1-13 "},
        {R"(\S+)", "", " ab\u2028", "1-3 "},
        {R"([\S\n]+)", "", " a\nb ", "1-4 "},
        {R"([^\S ]+)", "", " \t", "1-2 "},
        {R"(a.b)", "", "a\nb", ""},
        {R"(a.b)", "", "a\u2028b", ""},
        {R"(a.b)", "", "a\u0085b", "0-4 "},
        {R"(a[^]b)", "", "a\nb", "0-3 "},
        {R"([])", "", "a", ""},
        {R"(x$)", "", "x\n", ""},
        {R"(x$)", "m", "x\ny", "0-1 "},
        {R"(^b)", "", "a\nb", ""},
        {R"(^b)", "m", "a\nb", "2-3 "},
        {R"(HAT)", "i", "Bowler Hat", "7-10 "},
        {R"(\u00E9)", "i", "\u00C9", "0-2 "},
        {R"(\u0061\x62\cJ\0)", "", std::string_view("ab\n\0", 4), "0-4 "},
        {R"(\ud83d\ude00)", "", "\U0001F600", "0-4 "},
        {R"([\ud83d\ude00-\ud83d\ude0f])", "", "\U0001F601", "0-4 "},
        {R"(\ud83d)", "", "\xED\xA0\xBD", "0-3 "},
        {R"(^.$)", "", "\U0001F600", "0-4 "},
        {R"(\u{2})", "", "uu", "0-2 "},
        {R"(a{,2})", "", "a{,2}", "0-5 "},
        {R"(a{1)", "", "a{1", "0-3 "},
        {R"(x]})", "", "x]}", "0-3 "},
        {R"(a{2,})", "", "aaa", "0-3 "},
        {R"(a{2}?)", "", "aaa", "0-2 "},
        {R"(\a\z\Q\A\p\k)", "", "azQApk", "0-6 "},
        {R"([[:alpha:]])", "", ":]", "0-2 "},
        {R"([a&&b])", "", "&", "0-1 "},
        {R"([\w-a])", "", "-", "0-1 "},
        {R"([a-\d])", "", "-", "0-1 "},
        {R"([a-])", "", "-", "0-1 "},
        {R"([\^\]\-\\])", "", "^]-\\", "0-1 1-2 2-3 3-4 "},
        {R"([\b])", "", "\b", "0-1 "},
        {R"((?<year>\d)(?:x))", "", "1x", "0-2(1) "},
        {R"(\1)", "", "\x01", "0-1 "},
        {R"([\1])", "", "\x01", "0-1 "},
        {R"(\101)", "", "A", "0-1 "},
        {R"(x\By)", "", "xy", "0-2 "},
        {R"(\B)", "", "\u00E9", "0-0 2-2 "},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(Matches(row.body, row.flags, row.text), row.expected) << row.body << " in " << row.text;
    }
}

TEST(Regex, RefusesWhatIsNotLinearOrNotUnderstood) {
    EXPECT_EQ(Matches("", "", "a"), "!S0301");
    for (const std::string_view body :
         {R"((a)\1)", R"((?<n>a)\k<n>)", "a(?=b)", "a(?!b)", "(?<=a)b", "(?<!a)b", "(?i)a",
          "(?P<n>a)", "(?<>a)",          "(?<n",   "(a",     "a)",      "*a",      "a**",
          "[a",       "[z-a]",           "a\\",    "[\\",    "a{3,1}",  "a{1001}", "(a{500}){500}"}) {
        EXPECT_EQ(Matches(body, "", "a"), "!S0303") << body;
    }
    for (const std::string_view flags : {"g", "u", "ii", "mm", "imx"}) {
        EXPECT_EQ(Matches("a", flags, "a"), "!S0303") << flags;
    }
    const Failure failure = Regex::Compile("(?=a)", "").GetFailure();
    EXPECT_EQ(failure.value, "(?=a)");
    EXPECT_EQ(failure.detail, "looking around is not supported");
}

TEST(Regex, StaysWithinItsBounds) {
    const auto repeat = [](std::string_view part, std::size_t count) {
        std::string text;
        for (; count > 0; --count)
            text += part;
        return text;
    };
    EXPECT_EQ(Matches(repeat("(a)", 101), "", "a"), "!S0303");
    EXPECT_EQ(Matches(repeat("(?:", 30000) + repeat(")", 30000), "", "a"), "!S0303");
    EXPECT_EQ(Matches(repeat("a", 65537), "", "a"), "!S0303");
    // Exponential where matching goes back and forth.
    EXPECT_EQ(Matches("^(a+)+$", "", repeat("a", 20000) + "b"), "");
    EXPECT_EQ(Matches("a", "", {}), "");
    const Result<std::shared_ptr<const Regex>> regex = Regex::Compile("a*", "");
    ASSERT_TRUE(regex);
    EXPECT_FALSE((*regex)->Find("a", 2));
    EXPECT_TRUE((*regex)->Find({}, 0));
    EXPECT_EQ((*regex)->GetSource(), "a*");
}

TEST(TranslateRegex, WritesWhatTheEngineReads) {
    EXPECT_EQ(*TranslateRegex("^a$", RegexLines::Whole), R"(\Aa\z)");
    EXPECT_EQ(*TranslateRegex("^a$", RegexLines::Each), "(?m:^)a(?m:$)");
    EXPECT_EQ(*TranslateRegex("(?<n>-)", RegexLines::Whole), R"((\x{00002D}))");
    EXPECT_EQ(*TranslateRegex("[^]", RegexLines::Whole), R"([\x{0}-\x{10FFFF}])");
}

}  // namespace
}  // namespace tn61131::jsonata
