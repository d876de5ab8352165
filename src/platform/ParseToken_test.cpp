#include "platform/ParseToken.h"

#include <array>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

TEST(CompareIdentifier, OrdersByLowerCaseForms) {
    // Each stands before the next.
    const char* const ordered[] = {"",   "1", "A1",       "A_",       "aa",       "AB",           "ABC",  "F_EDGE",
                                   "fa", "z", "\xC3\xA4", "\xC3\xB6", "\xCE\xB1", "\xEF\xBF\xBD", "\x80", "\xFF"};
    for (std::size_t i = 0; i < std::size(ordered); ++i) {
        for (std::size_t j = 0; j < std::size(ordered); ++j) {
            const int expected = i < j ? -1 : i > j ? 1 : 0;
            EXPECT_EQ(CParseToken::CompareIdentifier(ordered[i], ordered[j]), expected)
                << ordered[i] << ' ' << ordered[j];
        }
    }
}

TEST(EqualIdentifier, WithoutRegardToCase) {
    struct Row {
        const char* left;
        const char* right;
        bool equal;
    };
    const Row rows[] = {
        {"IF", "if", true},        {"End_If", "END_IF", true},
        {"IF", "IFF", false},      {"\xC3\x84nde", "\xC3\xA4NDE", true},
        {"\xC3\x9F", "SS", false},                          // one to one only
        {"[", "{", false},                                  // apart by the bit that tells cases
        {"@", "`", false},         {"\xE4", "\xE4", true},  // no UTF-8: by their bytes
        {"\xE4", "\xC4", false},   {"\xE4", "\xEF\xBF\xBD", false},
        {"a\xE4", "a", false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(CParseToken::EqualIdentifier(row.left, row.right), row.equal) << row.left << ' ' << row.right;
        EXPECT_EQ(CParseToken::EqualIdentifier(row.right, row.left), row.equal) << row.left << ' ' << row.right;
    }
}

TEST(IsNumberExponent, AnEAndDigits) {
    for (const char* text : {"E", "e", "e10", "E0"})
        EXPECT_TRUE(CParseToken::IsNumberExponent(text)) << text;
    for (const char* text : {"", "1", "E1x", "Ex", "EE", "F", "E+1", "e_1", "1E5"})
        EXPECT_FALSE(CParseToken::IsNumberExponent(text)) << text;
}

TEST(GetTokenName, CharactersByThemselves) {
    for (int type = 33; type < 127; ++type) {
        const bool letter = (type >= 'A' && type <= 'Z') || (type >= 'a' && type <= 'z');
        const char* const name = CParseToken::GetTokenName(type);
        if (letter || (type >= '0' && type <= '9')) {
            EXPECT_EQ(name, nullptr) << type;
        } else {
            ASSERT_NE(name, nullptr) << type;
            EXPECT_EQ(std::string(name), std::string(1, static_cast<char>(type)));
        }
    }
    for (const int type : {-1, 0, 5, 8, 31, 32, 127, 128, 300})
        EXPECT_EQ(CParseToken::GetTokenName(type), nullptr) << type;
    EXPECT_STREQ(CParseToken::GetTokenName(1), "End of input");
    EXPECT_STREQ(CParseToken::GetTokenName(6), "Identifier");
}

TEST(CParseToken, KeepsWhatItIsGiven) {
    CParseToken token(6, "abc", {nullptr, {1, 1, 2}, {4, 1, 5}});
    token.SetNotTerminated();
    token.AppendText("d");
    const CParseToken copy = token;
    const CParseToken moved = std::move(token);
    for (const CParseToken* each : {&copy, &moved}) {
        EXPECT_TRUE(each->IsType(6));
        EXPECT_EQ(each->GetText(), "abcd");
        EXPECT_TRUE(each->IsNotTerminated());
        EXPECT_EQ(each->Location().GetStart(), (TextPosition{1, 1, 2}));
    }
    EXPECT_EQ(CParseToken().GetType(), 0);
    EXPECT_FALSE(CParseToken().Location().GetStart().IsKnown());
}

std::string Print(const CErrorLocationTextRange& range, unsigned int size = 256) {
    std::array<char, 256> buffer;
    buffer.fill('#');
    const unsigned int written = range.PrintLocation(buffer.data(), size);
    EXPECT_EQ(written, std::string(buffer.data()).size());
    return buffer.data();
}

std::shared_ptr<const std::string> Name(const char* name) {
    return std::make_shared<const std::string>(name);
}

TEST(CErrorLocationTextRange, PrintsNameAndStart) {
    const TextPosition start{9, 3, 7};
    const TextPosition end{12, 3, 10};
    EXPECT_EQ(Print({Name("a.st"), start, end}), "a.st(3,7)");
    EXPECT_EQ(Print({nullptr, start, end}), "(3,7)");
    EXPECT_EQ(Print({Name("a.st"), {}, {}}), "a.st");
    EXPECT_EQ(Print({}), "");
}

TEST(CErrorLocationTextRange, ALongNameLosesItsFront) {
    const CErrorLocationTextRange range(Name("abcdefgh\xC3\xA4.st"), {9, 3, 7}, {9, 3, 7});
    EXPECT_EQ(Print(range, 19), "abcdefgh\xC3\xA4.st(3,7)");
    EXPECT_EQ(Print(range, 18), "...efgh\xC3\xA4.st(3,7)");
    EXPECT_EQ(Print(range, 13), "....st(3,7)");  // no half of a character
    EXPECT_EQ(Print(range, 9), "...(3,7)");
    EXPECT_EQ(Print(range, 8), "(3,7)");
    EXPECT_EQ(Print(range, 6), "(3,7)");
    EXPECT_EQ(Print(range, 3), "(3");
    EXPECT_EQ(Print(range, 1), "");
    char untouched = '#';
    EXPECT_EQ(range.PrintLocation(&untouched, 0), 0U);
    EXPECT_EQ(untouched, '#');
}

}  // namespace
