#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "literal/LogicParseContext.h"
#include "platform/TextInput.h"

namespace {

class LogicPushBack : public testing::Test {
 protected:
    CLogicParseContext& Open(std::string source) {
        source_ = std::move(source);
        input_.emplace(source_);
        return context_.emplace(&*input_, nullptr);
    }
    CLogicToken Next() {
        CLogicToken token;
        context_->GetNextLogicTokenAfterWhitespace(token);
        return token;
    }
    std::string NextText() { return Next().GetText(); }

    std::string source_;
    std::optional<TextInputTNString> input_;
    std::optional<CLogicParseContext> context_;
};

// Whatever the token is, it comes back with type, text, place and mark, and what follows is as it would have been.
TEST_F(LogicPushBack, EveryKindOfTokenComesBackAsItWas) {
    for (const char* source : {"x y",
                               "IF y",
                               "END_IF y",
                               "_a1 y",
                               "IF#5",
                               "END_IF#5",
                               "FOO#5",
                               "F_OO#5",
                               "STRING#5",
                               "(* a *) y",
                               "(* a",
                               "// a\ny",
                               "{a} y",
                               "{a",
                               "'a' y",
                               "'a",
                               "\"a\" y",
                               "CHAR#'a' y",
                               "1 y",
                               "16#FF y",
                               "16#FFG",
                               "1.5E-3 y",
                               "1..10",
                               "INT#5 y",
                               "INT#FF",
                               "T#1s y",
                               "D#2024-01-31 y",
                               "D#2024-01",
                               "DT#2024-01-02-10:20:30",
                               "TOD#12:30 y",
                               "BOOL#1 y",
                               ":= y",
                               "=> y",
                               "** y",
                               ": = y",
                               "= > y",
                               "( * y",
                               "( y",
                               "* y",
                               "%'a' y",
                               "%IX1",
                               "$ y",
                               "\xE4 y",
                               "\xC3\xA4 y",
                               ""}) {
        SCOPED_TRACE(source);
        CLogicParseContext& context = Open(source);
        const CLogicToken first = Next();
        const CLogicToken second = Next();
        Open(source);
        CLogicToken token = Next();
        context.ReplaceToken(std::move(token));
        const CLogicToken again = Next();
        EXPECT_EQ(again.GetType(), first.GetType());
        EXPECT_EQ(again.GetKeyword(), first.GetKeyword());
        EXPECT_EQ(again.GetText(), first.GetText());
        EXPECT_EQ(again.IsNotTerminated(), first.IsNotTerminated());
        EXPECT_EQ(again.Location().GetStart(), first.Location().GetStart());
        EXPECT_EQ(again.Location().GetEnd(), first.Location().GetEnd());
        const CLogicToken following = Next();
        EXPECT_EQ(following.GetType(), second.GetType());
        EXPECT_EQ(following.GetText(), second.GetText());
        EXPECT_EQ(following.Location().GetStart(), second.Location().GetStart());
    }
}

TEST_F(LogicPushBack, TheLastOneComesFirst) {
    CLogicParseContext& context = Open("a b c d e f");
    std::vector<CLogicToken> tokens;
    for (int i = 0; i < 5; ++i)
        tokens.push_back(Next());
    for (; !tokens.empty(); tokens.pop_back())
        context.ReplaceToken(std::move(tokens.back()));
    for (const char* text : {"a", "b", "c", "d", "e", "f", ""})
        EXPECT_EQ(NextText(), text);
}

// Two tokens that white space separates stay two.
TEST_F(LogicPushBack, PushedTokensDoNotJoin) {
    for (const char* source : {"INT #5", "IF #5", ": =", "( *", "1 .5", "a b", "1 2", "% 'a'", "16 #F", "/ /"}) {
        SCOPED_TRACE(source);
        CLogicParseContext& context = Open(source);
        CLogicToken first = Next();
        CLogicToken second = Next();
        const CLogicToken firstCopy = first;
        const CLogicToken secondCopy = second;
        context.ReplaceToken(std::move(second));
        context.ReplaceToken(std::move(first));
        const CLogicToken again = Next();
        EXPECT_EQ(again.GetText(), firstCopy.GetText());
        EXPECT_EQ(again.GetType(), firstCopy.GetType());
        const CLogicToken following = Next();
        EXPECT_EQ(following.GetText(), secondCopy.GetText());
        EXPECT_EQ(following.GetType(), secondCopy.GetType());
    }
}

// The token in between has been read and is gone.
TEST_F(LogicPushBack, AnEarlierTokenDoesNotBringBackTheOneBehindIt) {
    CLogicParseContext& context = Open("a,b");
    CLogicToken first = Next();
    EXPECT_EQ(NextText(), ",");
    context.ReplaceToken(std::move(first));
    EXPECT_EQ(NextText(), "a");
    EXPECT_EQ(NextText(), "b");
}

TEST_F(LogicPushBack, AKeywordGoesBackAsAnIdentifier) {
    for (const char* source : {"IF x", "END_IF x"}) {
        CLogicParseContext& context = Open(source);
        CLogicToken token = Next();
        const int type = token.GetType();
        context.ReplaceToken(std::move(token));
        CParseToken elementary;
        context.GetNextToken(elementary);
        EXPECT_EQ(elementary.GetType(), 6);
        context.ReplaceToken(std::move(elementary));
        EXPECT_EQ(Next().GetType(), type);
    }
}

// A token of a host's own making, for which the text has nothing.
TEST_F(LogicPushBack, TokensNeedNotComeFromTheText) {
    CLogicParseContext& context = Open("x");
    CLogicToken own("if", CErrorLocationTextRange());
    context.ReplaceToken(CParseToken(131, "'a'"));
    context.ReplaceToken(std::move(own));
    context.ReplaceToken(CParseToken(7, "12"));
    EXPECT_EQ(Next().GetType(), 133);
    EXPECT_EQ(Next().GetType(), 207);
    const CLogicToken string = Next();
    EXPECT_EQ(string.GetType(), 131);
    EXPECT_FALSE(string.IsKeyword());
    EXPECT_EQ(NextText(), "x");
}

// A token that reads as an elementary one joins with what follows it, as it would have at first.
TEST_F(LogicPushBack, ElementaryTokensJoinAgain) {
    struct Row {
        const char* source;
        int type;
    };
    const Row rows[] = {{"INT#5", 133}, {"1.5", 134}, {"(*a*)", 128}, {":=", 140}, {"'a'", 131}, {"END_IF", 209}};
    for (const Row& row : rows) {
        CLogicParseContext& context = Open(row.source);
        CParseToken elementary;
        context.GetNextToken(elementary);
        context.ReplaceToken(std::move(elementary));
        const CLogicToken token = Next();
        EXPECT_EQ(token.GetText(), row.source);
        EXPECT_EQ(token.GetType(), row.type);
    }
}

// A parser that takes the point off "1." of a range.
TEST_F(LogicPushBack, ATokenCanBeSplit) {
    CLogicParseContext& context = Open("1..10");
    const CLogicToken real = Next();
    ASSERT_EQ(real.GetText(), "1.");
    TextPosition point = real.Location().GetEnd();
    --point.offset;
    --point.column;
    context.SetTextPosition(point);
    EXPECT_EQ(Next().GetType(), '.');
    EXPECT_EQ(Next().GetType(), '.');
    const CLogicToken upper = Next();
    EXPECT_EQ(upper.GetText(), "10");
    EXPECT_EQ(upper.Location().GetStart(), (TextPosition{3, 1, 4}));

    Open("1..10");
    CLogicToken again = Next();
    const CErrorLocationTextRange pointRange(nullptr, point, again.Location().GetEnd());
    context.ReplaceToken(CParseToken('.', ".", pointRange));
    EXPECT_EQ(Next().Location().GetStart(), point);
    EXPECT_EQ(Next().GetType(), '.');
    EXPECT_EQ(NextText(), "10");
}

TEST_F(LogicPushBack, WhiteSpaceThatIsPushedBackIsSkipped) {
    CLogicParseContext& context = Open(" \n b");
    CLogicToken space;
    context.GetNextLogicToken(space);
    EXPECT_EQ(space.GetType(), 3);
    EXPECT_EQ(space.GetText(), " \n ");
    CLogicToken word = Next();
    context.ReplaceToken(std::move(word));
    context.ReplaceToken(std::move(space));
    EXPECT_EQ(NextText(), "b");
}

}  // namespace
