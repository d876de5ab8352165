#include "platform/TextInput.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Units = std::vector<unsigned short>;

std::u32string AllOf(CTextInput& input) {
    std::u32string all;
    while (const auto codePoint = input.ReadCodePoint())
        all.push_back(*codePoint);
    EXPECT_FALSE(input.ReadCodePoint().has_value()) << "the end is for good";
    return all;
}

std::vector<std::string> LinesOf(CTextInput& input) {
    std::vector<std::string> lines;
    for (std::string line = "left over"; input.ReadLine(line);)
        lines.push_back(line);
    std::string line;
    EXPECT_FALSE(input.ReadLine(line)) << "the end is for good";
    return lines;
}

/// The text in a buffer of its exact size, so that a sanitizer sees any read behind it.
std::unique_ptr<unsigned char[]> ExactBytes(const std::string& text) {
    auto bytes = std::make_unique<unsigned char[]>(text.size());
    std::copy(text.begin(), text.end(), bytes.get());
    return bytes;
}

struct CodePointCase {
    std::string text;
    std::u32string expected;
    const char* why;
};

TEST(CTextInputUtf8, DecodesCodePoints) {
    const std::vector<CodePointCase> rows = {
        {"", U"", "empty"},
        {"a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", U"a\u00E4\u20AC\U0001F600", "one to four bytes"},
        {"\xEF\xBB\xBFx", U"x", "byte-order mark"},
        {"\xEF\xBB\xBF", U"", "nothing but a byte-order mark"},
        {"\xEF\xBB\xBF\xEF\xBB\xBFx", U"\uFEFFx", "only one is skipped"},
        {"x\xEF\xBB\xBF", U"x\uFEFF", "only a leading one"},
        {"\xEF\xBB", U"\uFFFD", "half a byte-order mark"},
        {"\xE2\x82", U"\uFFFD", "cut"},
        {"\xC0\x80z", U"\uFFFD\uFFFDz", "overlong"},
        {std::string("a\0b", 3), std::u32string(U"a\0b", 3), "zero is a character"},
    };
    for (const CodePointCase& row : rows) {
        SCOPED_TRACE(row.why);
        const auto bytes = ExactBytes(row.text);
        TextInputFromRawData input(bytes.get(), row.text.size());
        EXPECT_EQ(AllOf(input), row.expected);
    }
}

struct UnitCase {
    Units units;
    std::u32string expected;
    const char* why;
};

TEST(TextInputU16String, DecodesCodePoints) {
    const std::vector<UnitCase> rows = {
        {{}, U"", "empty"},
        {{'a', 0x20AC}, U"a\u20AC", "plain"},
        {{0xD83D, 0xDE00}, U"\U0001F600", "pair"},
        {{0xD83D}, U"\uFFFD", "cut pair"},
        {{0xD83D, 'a'}, U"\uFFFDa", "high surrogate alone"},
        {{0xDE00}, U"\uFFFD", "low surrogate alone"},
        {{0xFEFF, 'a'}, U"a", "byte-order mark"},
    };
    for (const UnitCase& row : rows) {
        SCOPED_TRACE(row.why);
        TextInputU16String input(row.units.data(), row.units.size());
        EXPECT_EQ(AllOf(input), row.expected);
    }
}

struct LineCase {
    std::string text;
    std::vector<std::string> expected;
    const char* why;
};

const std::vector<LineCase>& LineCases() {
    static const std::vector<LineCase> rows = {
        {"", {}, "no line"},
        {"a", {"a"}, "a last line without an end counts"},
        {"a\n", {"a"}, "an empty one after the last end does not"},
        {"\n", {""}, "one empty line"},
        {"\n\n", {"", ""}, "two empty lines"},
        {"a\nb", {"a", "b"}, "LF"},
        {"a\r\nb\r\n", {"a", "b"}, "CR LF"},
        {"a\rb", {"a\rb"}, "CR alone is no end"},
        {"a\r\r\nb", {"a\r", "b"}, "only the last CR belongs to the end"},
        {"a\r", {"a\r"}, "CR at the very end"},
        {"\r\n", {""}, "one empty line"},
        {"\n\r", {"", "\r"}, "LF CR"},
        {"\xEF\xBB\xBF\nx", {"", "x"}, "byte-order mark before an end"},
        {"\xEF\xBB\xBF", {}, "nothing but a byte-order mark"},
        {"\xC3\xA4x\r\n\xE2\x82\xAC", {"\xC3\xA4x", "\xE2\x82\xAC"}, "beyond ASCII"},
        {"a\x80z", {"a\xEF\xBF\xBDz"}, "invalid bytes are replaced"},
        {"a\xE2\x82\nb", {"a\xEF\xBF\xBD", "b"}, "a cut sequence does not swallow the end"},
    };
    return rows;
}

TEST(CTextInputUtf8, ReadsLines) {
    for (const LineCase& row : LineCases()) {
        SCOPED_TRACE(row.why);
        const auto bytes = ExactBytes(row.text);
        TextInputFromRawData input(bytes.get(), row.text.size());
        EXPECT_EQ(LinesOf(input), row.expected);
    }
}

/// A source without the short cut for plain runs.
class SlowInput final : public CTextInput {
 public:
    explicit SlowInput(std::string_view text) : source_(text) {}

 protected:
    std::optional<char32_t> Decode() override { return source_.ReadCodePoint(); }

 private:
    TextInputTNString source_;
};

TEST(CTextInput, LinesDoNotDependOnTheShortCut) {
    for (const LineCase& row : LineCases()) {
        SCOPED_TRACE(row.why);
        SlowInput input(row.text);
        EXPECT_EQ(LinesOf(input), row.expected);
    }
}

TEST(TextInputU16String, ReadsLinesAsUtf8) {
    const Units units = {0xFEFF, 'a', 0x20AC, 13, 10, 10, 0xD83D, 0xDE00};
    TextInputU16String input(units.data(), units.size());
    EXPECT_EQ(LinesOf(input), (std::vector<std::string>{"a\xE2\x82\xAC", "", "\xF0\x9F\x98\x80"}));
}

TEST(CTextInput, CodePointsAndLinesMix) {
    TextInputTNString input("ab\rc\nd\n");
    EXPECT_EQ(input.ReadCodePoint(), U'a');
    std::string line;
    ASSERT_TRUE(input.ReadLine(line));
    EXPECT_EQ(line, "b\rc");
    EXPECT_EQ(input.ReadCodePoint(), U'd');
    ASSERT_TRUE(input.ReadLine(line));
    EXPECT_EQ(line, "");
    EXPECT_FALSE(input.ReadLine(line));
}

TEST(AppendPlainRun, TakesNothingWhereAMarkOrALineEndMayStand) {
    TextInputTNString input("ab,c\"d\u00e4");
    std::string text;
    input.AppendPlainRun(text, ',', '"');  // a byte-order mark may come
    EXPECT_EQ(text, "");
    EXPECT_EQ(input.ReadCodePoint(), U'a');
    input.AppendPlainRun(text, ',', '"');
    input.AppendPlainRun(text, ',', '"');
    EXPECT_EQ(text, "b");
    EXPECT_EQ(input.ReadCodePoint(), U',');
    input.AppendPlainRun(text, ',', '"');
    EXPECT_EQ(text, "bc");
    EXPECT_EQ(input.ReadCodePoint(), U'"');
    input.AppendPlainRun(text, ',', '"');  // up to what is not ASCII
    EXPECT_EQ(text, "bcd");
    EXPECT_EQ(input.ReadCodePoint(), U'\u00e4');
    input.AppendPlainRun(text, ',', '"');
    EXPECT_EQ(text, "bcd");
    EXPECT_EQ(input.ReadCodePoint(), std::nullopt);
}

}  // namespace
