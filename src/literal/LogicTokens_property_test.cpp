#include <algorithm>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "literal/LogicParseContext.h"
#include "platform/TextInput.h"

// What holds for every source, and the page on tokens.

namespace {

// Pieces that mean something to the tokenizer, and some that do not.
constexpr std::string_view kPieces[] = {"(*",
                                        "*)",
                                        "//",
                                        "{",
                                        "}",
                                        "'",
                                        "\"",
                                        "$",
                                        "#",
                                        "%",
                                        ":",
                                        "=",
                                        ">",
                                        "<",
                                        "*",
                                        ".",
                                        "-",
                                        "+",
                                        "_",
                                        "1",
                                        "16",
                                        "2024",
                                        "E",
                                        "e",
                                        "FF",
                                        "x",
                                        "IF",
                                        "END_IF",
                                        "T",
                                        "D",
                                        "DT",
                                        "TOD",
                                        "INT",
                                        "REAL",
                                        "BOOL",
                                        "STRING",
                                        "WSTRING",
                                        "CHAR",
                                        "ELSIF",
                                        " ",
                                        "\t",
                                        "\n",
                                        "\r",
                                        "\r\n",
                                        "\xC3\xA4",
                                        "\xE4",
                                        "\xF0\x9F\x98",
                                        "\xE2\x80\xA8",
                                        "\xC2\xA0",
                                        "\x01",
                                        ";"};

std::string RandomSource(std::mt19937& random) {
    std::string source;
    for (std::size_t count = random() % 30; count > 0; --count)
        source += kPieces[random() % std::size(kPieces)];
    // A NUL, now and then.
    if (random() % 8 == 0)
        source.insert(source.begin() + static_cast<std::ptrdiff_t>(random() % (source.size() + 1)), '\0');
    return source;
}

std::vector<CLogicToken> AllTokens(CLogicParseContext& context) {
    std::vector<CLogicToken> tokens;
    do {
        tokens.emplace_back();
        context.GetNextLogicToken(tokens.back());
    } while (!tokens.back().IsType(CParseToken::kEndOfInput));
    return tokens;
}

TEST(LogicTokensProperty, TextsAndPlacesCoverTheSource) {
    std::mt19937 random(20240131);
    for (int round = 0; round < 20000; ++round) {
        const std::string source = RandomSource(random);
        TextInputTNString input(source);
        CLogicParseContext context(&input, nullptr);
        context.SetLineEndHandling(round % 2 == 0);
        context.AllowDollarInIdentifiers(round % 3 == 0);
        std::string joined;
        TextPosition end{0, 1, 1};
        for (const CLogicToken& token : AllTokens(context)) {
            ASSERT_EQ(token.Location().GetStart(), end) << source;
            joined += token.GetText();
            end = token.Location().GetEnd();
            ASSERT_EQ(end.offset, joined.size()) << source;
            ASSERT_EQ(token.GetText().empty(), token.IsType(CParseToken::kEndOfInput)) << source;
        }
        ASSERT_EQ(joined, source);
        ASSERT_EQ(end.line, 1 + static_cast<unsigned int>(std::count(source.begin(), source.end(), '\n'))) << source;
    }
}

// Pushing back any number of tokens and reading them again changes nothing.
TEST(LogicTokensProperty, PushedBackTokensComeAgain) {
    std::mt19937 random(61131);
    for (int round = 0; round < 5000; ++round) {
        const std::string source = RandomSource(random);
        TextInputTNString input(source);
        CLogicParseContext context(&input, nullptr);
        std::vector<CLogicToken> expected;
        std::vector<CLogicToken> pushed;
        {
            TextInputTNString again(source);
            CLogicParseContext reference(&again, nullptr);
            expected = AllTokens(reference);
        }
        std::size_t at = 0;
        for (int step = 0; step < 60; ++step) {
            if (random() % 3 == 0 && at > 0) {
                const std::size_t back = 1 + random() % std::min<std::size_t>(at, 4);
                for (std::size_t i = 0; i < back; ++i)
                    context.ReplaceToken(CLogicToken(expected[--at]));
                continue;
            }
            CLogicToken token;
            context.GetNextLogicToken(token);
            ASSERT_EQ(token.GetText(), expected[at].GetText()) << source;
            ASSERT_EQ(token.GetType(), expected[at].GetType()) << source;
            ASSERT_EQ(token.Location().GetStart(), expected[at].Location().GetStart()) << source;
            if (at + 1 < expected.size()) ++at;
        }
    }
}

// The same tokens from UTF-16 as from UTF-8.
TEST(LogicTokensProperty, TheSourcesEncodingDoesNotMatter) {
    const std::u16string wide = u"\uFEFFgröße := 'ä'; // ü\n(* \U0001F600 *) x";
    const std::string narrow = "größe := 'ä'; // ü\n(* \U0001F600 *) x";
    TextInputU16String wideInput(reinterpret_cast<const unsigned short*>(wide.data()), wide.size());
    TextInputTNString narrowInput(narrow);
    CLogicParseContext wideContext(&wideInput, nullptr);
    CLogicParseContext narrowContext(&narrowInput, nullptr);
    const std::vector<CLogicToken> fromWide = AllTokens(wideContext);
    const std::vector<CLogicToken> fromNarrow = AllTokens(narrowContext);
    ASSERT_EQ(fromWide.size(), fromNarrow.size());
    for (std::size_t i = 0; i < fromWide.size(); ++i) {
        EXPECT_EQ(fromWide[i].GetText(), fromNarrow[i].GetText());
        EXPECT_EQ(fromWide[i].GetType(), fromNarrow[i].GetType());
        EXPECT_EQ(fromWide[i].Location().GetStart(), fromNarrow[i].Location().GetStart());
    }
}

std::vector<std::string> CodeSpans(std::string_view cell) {
    std::vector<std::string> spans;
    for (std::size_t open = cell.find('`'); open != std::string_view::npos;) {
        const std::size_t close = cell.find('`', open + 1);
        spans.emplace_back(cell.substr(open + 1, close - open - 1));
        open = cell.find('`', close + 1);
    }
    return spans;
}

// The cells of the table rows under a heading of docs/tokens.md, without the table's head.
std::vector<std::vector<std::string>> TableUnder(const std::string& heading) {
    std::ifstream page("docs/tokens.md");
    EXPECT_TRUE(page.is_open()) << "run from the project's folder";
    std::vector<std::vector<std::string>> rows;
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("## ")) inside = line == heading;
        if (!inside || !line.starts_with("|")) continue;
        std::vector<std::string>& cells = rows.emplace_back();
        for (std::size_t at = 1; at < line.size();) {
            const std::size_t end = line.find('|', at);
            std::string cell = line.substr(at, end - at);
            cell.erase(0, std::min(cell.find_first_not_of(' '), cell.size()));
            cell.erase(cell.find_last_not_of(' ') + 1);
            cells.push_back(cell);
            at = end + 1;
        }
    }
    EXPECT_GT(rows.size(), 2U) << heading;
    rows.erase(rows.begin(), rows.begin() + std::min<std::ptrdiff_t>(2, std::ssize(rows)));
    return rows;
}

std::vector<CLogicToken> TokensOf(const std::string& source) {
    TextInputTNString input(source);
    CLogicParseContext context(&input, nullptr);
    std::vector<CLogicToken> tokens = AllTokens(context);
    std::erase_if(tokens, [](const CLogicToken& token) { return token.GetType() < 4; });
    return tokens;
}

TEST(TokensPage, ExamplesAreOneTokenOfTheirType) {
    int examples = 0;
    for (const std::vector<std::string>& row : TableUnder("## Compound tokens")) {
        ASSERT_EQ(row.size(), 3U);
        const int first = std::stoi(row[0]);
        const int last =
            row[0].find(" to ") == std::string::npos ? first : std::stoi(row[0].substr(row[0].find(" to ") + 4));
        for (const std::string& example : CodeSpans(row[2])) {
            SCOPED_TRACE(example);
            ++examples;
            const std::vector<CLogicToken> tokens = TokensOf(example);
            ASSERT_EQ(tokens.size(), 1U);
            EXPECT_EQ(tokens[0].GetText(), example);
            EXPECT_GE(tokens[0].GetType(), first);
            EXPECT_LE(tokens[0].GetType(), last);
            EXPECT_FALSE(tokens[0].IsNotTerminated());
            if (first != last) continue;
            const char* const name = CLogicToken::GetTokenName(first);
            EXPECT_EQ(name == nullptr ? "" : name, row[1]);
        }
    }
    EXPECT_GE(examples, 20);
}

TEST(TokensPage, SurprisesAreAsItSays) {
    for (const std::vector<std::string>& row : TableUnder("## What may surprise")) {
        ASSERT_EQ(row.size(), 3U);
        const std::string source = CodeSpans(row[0]).at(0);
        std::vector<std::string> texts;
        for (const CLogicToken& token : TokensOf(source))
            texts.push_back(token.GetText());
        EXPECT_EQ(texts, CodeSpans(row[1])) << source;
    }
}

}  // namespace
