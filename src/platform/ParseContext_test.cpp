#include "platform/ParseContext.h"

#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "platform/TextInput.h"
#include "platform/TextInputFromStringToken.h"

namespace {

struct Token {
    int type;
    std::string text;
    unsigned int line = 1;
    unsigned int column = 1;

    friend bool operator==(const Token&, const Token&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Token& token) {
        return out << token.type << " <" << token.text << "> at " << token.line << ',' << token.column;
    }
};

Token Describe(const CParseToken& token) {
    const TextPosition& start = token.Location().GetStart();
    return {token.GetType(), token.GetText(), start.line, start.column};
}

// All tokens, the end of input included.
std::vector<Token> TokensOf(CTextInput& input, bool lineEnds) {
    CParseContext context(&input, nullptr);
    context.SetLineEndHandling(lineEnds);
    std::vector<Token> tokens;
    CParseToken token;
    do {
        context.GetNextToken(token);
        tokens.push_back(Describe(token));
    } while (!token.IsType(CParseToken::kEndOfInput));
    return tokens;
}

std::vector<Token> TokensOf(std::string_view text, bool lineEnds = false) {
    TextInputTNString input(text);
    return TokensOf(input, lineEnds);
}

using Tokens = std::vector<Token>;

TEST(CParseContext, SplitsByKindOfCharacter) {
    EXPECT_EQ(TokensOf(""), (Tokens{{1, ""}}));
    EXPECT_EQ(TokensOf("ab12_c"), (Tokens{{6, "ab"}, {7, "12", 1, 3}, {95, "_", 1, 5}, {6, "c", 1, 6}, {1, "", 1, 7}}));
    EXPECT_EQ(TokensOf("::="), (Tokens{{58, ":"}, {58, ":", 1, 2}, {61, "=", 1, 3}, {1, "", 1, 4}}));
    EXPECT_EQ(TokensOf(" \t\v\f x"), (Tokens{{3, " \t\v\f "}, {6, "x", 1, 6}, {1, "", 1, 7}}));
    EXPECT_EQ(TokensOf("g\xC3\xB6\xCF\x80z1"), (Tokens{{6, "g\xC3\xB6\xCF\x80z"}, {7, "1", 1, 5}, {1, "", 1, 6}}));
    EXPECT_EQ(TokensOf("\xC3\x84"), (Tokens{{6, "\xC3\x84"}, {1, "", 1, 2}}));
    // Other digits are no numbers.
    EXPECT_EQ(TokensOf("\xD9\xA3"), (Tokens{{4, "\xD9\xA3"}, {1, "", 1, 2}}));
    EXPECT_EQ(TokensOf(" \xC2\xA0\xE2\x80\xA8 "), (Tokens{{3, " \xC2\xA0\xE2\x80\xA8 "}, {1, "", 1, 5}}));
}

TEST(CParseContext, EveryAsciiCharacterHasItsClass) {
    for (int code = 0; code < 128; ++code) {
        const std::string text(1, static_cast<char>(code));
        const bool letter = (code >= 'A' && code <= 'Z') || (code >= 'a' && code <= 'z');
        int expected = code;
        if (letter) expected = 6;
        if (code >= '0' && code <= '9') expected = 7;
        if (code == ' ' || (code >= 9 && code <= 13)) expected = 3;
        if (code < 9 || (code > 13 && code < 32) || code == 127) expected = 4;
        EXPECT_EQ(TokensOf(text)[0], (Token{expected, text})) << code;
    }
}

TEST(CParseContext, InvalidPartsAreTokensOfTheirOwn) {
    // A lone byte; a sequence that is cut, which is one part; an overlong one, whose bytes are each one.
    EXPECT_EQ(TokensOf("a\xE4z"), (Tokens{{6, "a"}, {4, "\xE4", 1, 2}, {6, "z", 1, 3}, {1, "", 1, 4}}));
    EXPECT_EQ(TokensOf("\xF0\x9F\x98x"), (Tokens{{4, "\xF0\x9F\x98"}, {6, "x", 1, 2}, {1, "", 1, 3}}));
    EXPECT_EQ(TokensOf("\xC0\x80"), (Tokens{{4, "\xC0"}, {4, "\x80", 1, 2}, {1, "", 1, 3}}));
    EXPECT_EQ(TokensOf("\xEF\xBF\xBD"), (Tokens{{4, "\xEF\xBF\xBD"}, {1, "", 1, 2}}));
}

TEST(CParseContext, LineEndsAreWhiteSpaceOrTokens) {
    const std::string text = "a \r\n\n b\rc";
    EXPECT_EQ(
        TokensOf(text),
        (Tokens{{6, "a"}, {3, " \r\n\n ", 1, 2}, {6, "b", 3, 2}, {3, "\r", 3, 3}, {6, "c", 3, 4}, {1, "", 3, 5}}));
    EXPECT_EQ(TokensOf(text, true), (Tokens{{6, "a"},
                                            {3, " ", 1, 2},
                                            {2, "\r\n", 1, 3},
                                            {2, "\n", 2, 1},
                                            {3, " ", 3, 1},
                                            {6, "b", 3, 2},
                                            {3, "\r", 3, 3},
                                            {6, "c", 3, 4},
                                            {1, "", 3, 5}}));
    EXPECT_EQ(TokensOf("\r\r\n", true), (Tokens{{3, "\r"}, {2, "\r\n", 1, 2}, {1, "", 2, 1}}));
    EXPECT_EQ(TokensOf("\xC2\xA0\n", true), (Tokens{{3, "\xC2\xA0"}, {2, "\n", 1, 2}, {1, "", 2, 1}}));
    EXPECT_EQ(TokensOf("\r", true), (Tokens{{3, "\r"}, {1, "", 1, 2}}));
}

TEST(CParseContext, SkipsWhiteSpace) {
    TextInputTNString input(" \n a\n\n b");
    CParseContext context(&input, nullptr);
    CParseToken token;
    context.GetNextTokenAfterWhitespace(token);
    EXPECT_EQ(Describe(token), (Token{6, "a", 2, 2}));
    EXPECT_FALSE(context.SetLineEndHandling(true));
    context.GetNextTokenAfterWhitespace(token);
    EXPECT_EQ(Describe(token), (Token{2, "\n", 2, 3}));
    EXPECT_TRUE(context.SetLineEndHandling(false));
    context.GetNextTokenAfterWhitespace(token);
    EXPECT_EQ(Describe(token), (Token{6, "b", 4, 2}));
    context.GetNextTokenAfterWhitespace(token);
    context.GetNextTokenAfterWhitespace(token);
    EXPECT_EQ(Describe(token), (Token{1, "", 4, 3}));
}

TEST(CParseContext, TheByteOrderMarkIsNoPartOfTheText) {
    EXPECT_EQ(TokensOf("\xEF\xBB\xBFx"), (Tokens{{6, "x"}, {1, "", 1, 2}}));
    EXPECT_EQ(TokensOf("x\xEF\xBB\xBF"), (Tokens{{6, "x"}, {4, "\xEF\xBB\xBF", 1, 2}, {1, "", 1, 3}}));
    const std::u16string wide = u"\uFEFFx\u00E4";
    TextInputU16String input(reinterpret_cast<const unsigned short*>(wide.data()), wide.size());
    EXPECT_EQ(TokensOf(input, false), (Tokens{{6, "x\xC3\xA4"}, {1, "", 1, 3}}));
}

TEST(CParseContext, NothingToReadAndNowhereToWrite) {
    CParseContext context(nullptr, nullptr);
    CParseToken token;
    context.GetNextToken(token);
    EXPECT_TRUE(token.IsType(CParseToken::kEndOfInput));
    EXPECT_FALSE(context.LogUnexpectedTokenError(token, {"x"}));
    EXPECT_EQ(context.GetOutputLog().GetErrorCount(), 1U);
}

TEST(CParseContext, PushedBackTokensComeLastInFirstOut) {
    TextInputTNString input("a b c");
    CParseContext context(&input, nullptr);
    CParseToken a;
    CParseToken b;
    context.GetNextTokenAfterWhitespace(a);
    context.GetNextTokenAfterWhitespace(b);
    context.ReplaceToken(CParseToken(b));
    context.ReplaceToken(CParseToken(a));
    context.ReplaceToken(CParseToken(200, "own"));
    CParseToken token;
    context.GetNextTokenAfterWhitespace(token);
    EXPECT_EQ(token.GetText(), "own");
    for (const char* text : {"a", "b", "c", ""}) {
        context.GetNextTokenAfterWhitespace(token);
        EXPECT_EQ(token.GetText(), text);
    }
}

// One with the place of a token, but not its text or file, is not taken for it.
TEST(CParseContext, ATokenThatLooksLikeOneOfTheTextIsReturnedAsItIs) {
    TextInputTNString input("abc");
    CParseContext context(&input, nullptr);
    CParseToken token;
    context.GetNextToken(token);
    const CErrorLocationTextRange range = token.Location();
    context.ReplaceToken(CParseToken(6, "xyz", range));
    context.GetNextToken(token);
    EXPECT_EQ(token.GetText(), "xyz");
    context.ReplaceToken(CParseToken(131, "abc", range));
    context.GetNextToken(token);
    EXPECT_EQ(token.GetType(), 131);
    CErrorLocationTextRange elsewhere = range;
    elsewhere.SetFileName(std::make_shared<const std::string>("other.st"));
    context.ReplaceToken(CParseToken(6, "abc", elsewhere));
    context.GetNextToken(token);
    EXPECT_EQ(token.Location().GetFileName(), "other.st");
    CErrorLocationTextRange beyond = range;
    beyond.SetRange({100, 1, 1}, range.GetEnd());
    context.ReplaceToken(CParseToken(6, "abc", beyond));
    context.GetNextToken(token);
    EXPECT_EQ(token.Location().GetStart().offset, 100U);
    context.GetNextToken(token);
    EXPECT_EQ(token.GetType(), 1);
}

TEST(CParseContext, GoesToAPosition) {
    TextInputTNString input("a\nb\xC3\xA4 c");
    CParseContext context(&input, nullptr);
    CParseToken token;
    context.GetNextToken(token);
    const TextPosition start = token.Location().GetStart();
    context.ReplaceToken(CParseToken(200, "forgotten"));
    context.SkipTo(5);
    EXPECT_EQ(context.GetTextPosition(), (TextPosition{5, 2, 3}));
    context.SkipTo(2);  // forward only
    EXPECT_EQ(context.GetTextPosition(), (TextPosition{5, 2, 3}));
    context.SkipTo(1000);
    EXPECT_EQ(context.GetTextPosition(), (TextPosition{7, 2, 5}));
    context.ReplaceToken(CParseToken(200, "forgotten"));
    context.SetTextPosition(start);
    context.GetNextToken(token);
    EXPECT_EQ(Describe(token), (Token{6, "a"}));
    context.SetTextPosition(TextPosition());
    context.SetTextPosition(TextPosition{8, 1, 1});
    EXPECT_EQ(context.GetTextPosition(), (TextPosition{1, 1, 2}));
    EXPECT_EQ(context.GetText(), "a\nb\xC3\xA4 c");
}

TEST(CParseContext, TokensNameTheirFile) {
    TextInputTNString input("a b c");
    CParseContext context(&input, nullptr);
    EXPECT_EQ(context.GetFileName(), "");
    CParseToken token;
    context.GetNextTokenAfterWhitespace(token);
    EXPECT_EQ(token.Location().GetFileName(), "");
    context.SetFileName("a.st");
    EXPECT_EQ(context.GetFileName(), "a.st");
    context.GetNextTokenAfterWhitespace(token);
    EXPECT_EQ(token.Location().GetFileName(), "a.st");
    context.SetFileName("");
    context.GetNextTokenAfterWhitespace(token);
    EXPECT_EQ(token.Location().GetFileName(), "");
}

TEST(LogUnexpectedTokenError, TellsPlaceTextAndWhatWasExpected) {
    struct Row {
        std::string text;
        std::string line;
    };
    const std::string longText(70, 'x');
    const Row rows[] = {
        {"abc", "a.st(1,1): error: Unexpected 'abc', expected ( or \"x\".\n"},
        {"", "a.st(1,1): error: Unexpected end of input, expected ( or \"x\".\n"},
        {longText, "a.st(1,1): error: Unexpected '" + longText.substr(0, 60) + "...', expected ( or \"x\".\n"},
        {"\n  ", "a.st(1,1): error: Unexpected '...', expected ( or \"x\".\n"},
    };
    for (const Row& row : rows) {
        TextInputTNString input(row.text);
        COutputLogString log;
        CParseContext context(&input, &log);
        context.SetFileName("a.st");
        CParseToken token;
        context.GetNextToken(token);
        EXPECT_FALSE(context.LogUnexpectedTokenError(token, {"(", "\"x\""}));
        EXPECT_EQ(log.GetText(), row.line);
        EXPECT_EQ(log.GetErrorCount(), 1U);
    }
    COutputLogString log;
    CParseContext context(nullptr, &log);
    EXPECT_FALSE(context.LogUnexpectedTokenError(CParseToken(6, "abc"), {}));
    EXPECT_EQ(log.GetText(), "error: Unexpected 'abc'.\n");
}

std::u32string ContentOf(const CParseToken& token) {
    CTextInputFromStringToken input(token);
    std::u32string content;
    while (const std::optional<char32_t> codePoint = input.ReadCodePoint())
        content += *codePoint;
    return content;
}

TEST(CTextInputFromStringToken, DecodesWhatStandsBetweenTheQuotes) {
    struct Row {
        const char* text;
        std::u32string content;
    };
    const Row rows[] = {
        {"\"abc\"", U"abc"},
        {"\"\"", U""},
        {"'abc'", U"abc"},
        {"WSTRING#\"abc\"", U"abc"},
        {"\"\xC3\xA4\xF0\x9F\x98\x80\"", U"\u00E4\U0001F600"},
        {"\"$$$\"$L$l$N$n$R$r$T$t\"", U"$\"\n\n\n\n\r\r\t\t"},
        {"'$$$'$L'", U"$'\n"},
        {"\"$00E4$D83D$DE00\"", U"\u00E4\U0001F600"},
        {"\"$D83Dx$DE00\"", U"\uFFFDx\uFFFD"},
        {"'$C3$A4$41'", U"\u00E4A"},
        {"'$E4'", U"\uFFFD"},
        {"'\xE4'", U"\uFFFD"},
        // Escapes that are not valid stand for their own characters.
        {"\"$P$'$12$\xC3\xA4$\"", U"$P$'$12$\u00E4$"},
        {"'$\"$1'", U"$\"$1"},
        {"\"$", U"$"},
        {"\"abc", U"abc"},
        {"\"", U""},
        {"abc", U""},
        {"", U""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ContentOf(CParseToken(132, row.text)), row.content) << row.text;
}

TEST(CTextInputFromStringToken, TheQuoteThatAnOpenStringEndsWithIsEscaped) {
    CParseToken token(132, "\"a$\"");
    token.SetNotTerminated();
    EXPECT_EQ(ContentOf(token), U"a\"");
}

/// A source that gives characters only.
class CharacterInput final : public CTextInput {
 public:
    explicit CharacterInput(std::string_view text) : source_(text) {}

 protected:
    std::optional<char32_t> Decode() override { return source_.ReadCodePoint(); }

 private:
    TextInputTNString source_;
};

TEST(TakeRest, GivesTheSourcesOwnBytesOrDecodesThem) {
    const std::string text =
        "\xEF\xBB\xBF"
        "a\xE4";
    std::string storage = "old";
    TextInputTNString bytes(text);
    const std::string_view own = bytes.TakeRest(storage);
    EXPECT_EQ(own, "a\xE4");
    EXPECT_EQ(own.data(), text.data() + 3);
    EXPECT_EQ(storage, "");
    EXPECT_EQ(bytes.ReadCodePoint(), std::nullopt);
    EXPECT_EQ(bytes.TakeRest(storage), "");
    CharacterInput characters(text);
    EXPECT_EQ(characters.TakeRest(storage), "a\xEF\xBF\xBD");
    EXPECT_EQ(characters.TakeRest(storage), "");
    TextInputTNString partly(text);
    EXPECT_EQ(partly.ReadCodePoint(), U'a');
    EXPECT_EQ(partly.TakeRest(storage), "\xE4");
    CTextInputUtf8 nothing(nullptr, 0);
    EXPECT_EQ(nothing.TakeRest(storage), "");
}

}  // namespace
