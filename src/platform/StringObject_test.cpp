#include "platform/StringObject.h"

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr int kMinInt = std::numeric_limits<int>::min();
constexpr int kMaxInt = std::numeric_limits<int>::max();

struct Release {
    void operator()(Utf8String* text) const noexcept { Utf8StringFree(text); }
    void operator()(Utf16String* text) const noexcept { Utf16StringFree(text); }
};
using Narrow = std::unique_ptr<Utf8String, Release>;
using Wide = std::unique_ptr<Utf16String, Release>;

Narrow N(const std::string& text) {
    return Narrow(Utf8StringCopy(text.data(), static_cast<unsigned int>(text.size())));
}
Wide W(const std::u16string& text) {
    std::vector<unsigned short> units(text.begin(), text.end());
    return Wide(Utf16StringCopy(units.data(), static_cast<unsigned int>(units.size())));
}
Wide W(const std::string& ascii) {
    return W(std::u16string(ascii.begin(), ascii.end()));
}

/// The units of an object that is released.
std::string Take(Utf8String* object) {
    const Narrow owner(object);
    const auto units = GetUnits(object);
    return {units.begin(), units.end()};
}
std::u16string TakeWide(Utf16String* object) {
    const Wide owner(object);
    const auto units = GetUnits(object);
    return {units.begin(), units.end()};
}
/// The same for a text that is all ASCII.
std::string Take(Utf16String* object) {
    const std::u16string units = TakeWide(object);
    std::string text;
    for (const char16_t unit : units)
        text.push_back(static_cast<char>(unit));
    return text;
}

struct PartCase {
    int length;
    int position;
    const char* expected;
    const char* why;
};

TEST(StringLeft, TakesTheFirstUnits) {
    const std::vector<PartCase> rows = {
        {2, 0, "AB", "part"},    {5, 0, "ABCDE", "all"},         {6, 0, "ABCDE", "beyond"}, {0, 0, "", "none"},
        {-1, 0, "", "negative"}, {kMaxInt, 0, "ABCDE", "limit"}, {kMinInt, 0, "", "limit"},
    };
    for (const PartCase& row : rows) {
        SCOPED_TRACE(row.length);
        EXPECT_EQ(Take(Utf8StringLeft(N("ABCDE").get(), row.length)), row.expected);
        EXPECT_EQ(Take(Utf16StringLeft(W("ABCDE").get(), row.length)), row.expected);
    }
}

TEST(StringRight, TakesTheLastUnits) {
    const std::vector<PartCase> rows = {
        {2, 0, "DE", "part"},    {5, 0, "ABCDE", "all"},         {6, 0, "ABCDE", "beyond"}, {0, 0, "", "none"},
        {-1, 0, "", "negative"}, {kMaxInt, 0, "ABCDE", "limit"}, {kMinInt, 0, "", "limit"},
    };
    for (const PartCase& row : rows) {
        SCOPED_TRACE(row.length);
        EXPECT_EQ(Take(Utf8StringRight(N("ABCDE").get(), row.length)), row.expected);
        EXPECT_EQ(Take(Utf16StringRight(W("ABCDE").get(), row.length)), row.expected);
    }
}

TEST(StringMid, TakesThePositionsThatExist) {
    const std::vector<PartCase> rows = {
        {2, 3, "CD", "inside"},
        {5, 1, "ABCDE", "all"},
        {9, 4, "DE", "passes the end"},
        {1, 5, "E", "last"},
        {1, 6, "", "behind the end"},
        {3, 0, "AB", "position 0 does not exist"},
        {3, -1, "A", "positions -1 and 0 do not exist"},
        {2, -1, "", "none exists"},
        {0, 3, "", "no length"},
        {-2, 3, "", "negative length"},
        {kMaxInt, kMaxInt, "", "no overflow"},
        {kMaxInt, 2, "BCDE", "no overflow"},
        {kMaxInt, kMinInt, "", "no overflow"},
        {kMaxInt, -kMaxInt + 3, "AB", "positions up to 2"},
        {kMinInt, kMinInt, "", "no overflow"},
    };
    for (const PartCase& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(Take(Utf8StringMid(N("ABCDE").get(), row.length, row.position)), row.expected);
        EXPECT_EQ(Take(Utf16StringMid(W("ABCDE").get(), row.length, row.position)), row.expected);
    }
}

TEST(StringDelete, RemovesThePositionsThatExist) {
    const std::vector<PartCase> rows = {
        {2, 3, "ABE", "inside"},
        {1, 1, "BCDE", "first"},
        {5, 1, "", "all"},
        {9, 4, "ABC", "passes the end"},
        {1, 6, "ABCDE", "behind the end"},
        {2, 0, "BCDE", "position 0 does not exist"},
        {0, 3, "ABCDE", "no length"},
        {-1, 3, "ABCDE", "negative length"},
        {kMaxInt, kMaxInt, "ABCDE", "no overflow"},
        {kMaxInt, 2, "A", "no overflow"},
        {kMinInt, kMinInt, "ABCDE", "no overflow"},
    };
    for (const PartCase& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(Take(Utf8StringDelete(N("ABCDE").get(), row.length, row.position)), row.expected);
        EXPECT_EQ(Take(Utf16StringDelete(W("ABCDE").get(), row.length, row.position)), row.expected);
    }
}

TEST(StringInsert, GoesBehindThePosition) {
    const std::vector<PartCase> rows = {
        {0, 2, "ABXYC", "behind the second"}, {0, 0, "XYABC", "in front"},       {0, -1, "XYABC", "below"},
        {0, 3, "ABCXY", "behind the last"},   {0, 4, "ABCXY", "beyond the end"}, {0, kMaxInt, "ABCXY", "limit"},
        {0, kMinInt, "XYABC", "limit"},
    };
    for (const PartCase& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(Take(Utf8StringInsert(N("ABC").get(), N("XY").get(), row.position)), row.expected);
        EXPECT_EQ(Take(Utf16StringInsert(W("ABC").get(), W("XY").get(), row.position)), row.expected);
    }
}

TEST(StringReplace, NewTextBeginsAtThePosition) {
    const std::vector<PartCase> rows = {
        {2, 3, "ABXE", "inside"},
        {1, 1, "XBCDE", "first"},
        {5, 1, "X", "all"},
        {9, 4, "ABCX", "passes the end"},
        {1, 6, "ABCDEX", "behind the end"},
        {1, 9, "ABCDEX", "beyond the end"},
        {0, 3, "ABXCDE", "nothing removed"},
        {-3, 3, "ABXCDE", "nothing removed"},
        {2, 0, "XBCDE", "position 0 does not exist"},
        {1, 0, "XABCDE", "position 0 does not exist"},
        {kMaxInt, kMaxInt, "ABCDEX", "no overflow"},
        {kMaxInt, 2, "AX", "no overflow"},
        {kMinInt, kMinInt, "XABCDE", "no overflow"},
    };
    for (const PartCase& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(Take(Utf8StringReplace(N("ABCDE").get(), N("X").get(), row.length, row.position)), row.expected);
        EXPECT_EQ(Take(Utf16StringReplace(W("ABCDE").get(), W("X").get(), row.length, row.position)), row.expected);
    }
}

struct FindCase {
    const char* text;
    const char* wanted;
    int expected;
};

TEST(StringFind, GivesTheFirstPlace) {
    const std::vector<FindCase> rows = {
        {"ABCABC", "A", 0},  {"ABCABC", "BC", 1}, {"ABCABC", "CA", 2},   {"ABCABC", "ABCABC", 0},
        {"ABCABC", "X", -1}, {"ABC", "ABCD", -1}, {"ABC", "", -1},       {"", "", -1},
        {"", "A", -1},       {"AAAB", "AAB", 1},  {"ABABAC", "ABAC", 2}, {"AB", "B", 1},
    };
    for (const FindCase& row : rows) {
        SCOPED_TRACE(std::string(row.wanted) + " in " + row.text);
        EXPECT_EQ(Utf8StringFind(N(row.text).get(), N(row.wanted).get()), row.expected);
        EXPECT_EQ(Utf16StringFind(W(row.text).get(), W(row.wanted).get()), row.expected);
    }
}

TEST(StringFind, UnitsOfAWideTextAreWhole) {
    // The bytes of 0x4241 lie in the text, but across two units.
    const Wide text = W(std::u16string{0x4100, 0x0042});
    const Wide wanted = W(std::u16string{0x4241});
    EXPECT_EQ(Utf16StringFind(text.get(), wanted.get()), -1);
}

TEST(StringFind, RepetitiveTextsTakeLinearTime) {
    // Quadratic work would be 10^9 comparisons.
    const Wide text = W(std::u16string(kMaxStringUnits, u'a'));
    const Wide wanted = W(std::u16string(kMaxStringUnits / 2, u'a') + u"b");
    EXPECT_EQ(Utf16StringFind(text.get(), wanted.get()), -1);
}

struct ElementCase {
    const char* text;
    int index;
    const char* expected;
};

TEST(StringGetElement, ElementsAreNumberedFromOne) {
    const std::vector<ElementCase> rows = {
        {"a,bb,c", 1, "a"}, {"a,bb,c", 2, "bb"}, {"a,bb,c", 3, "c"},      {"a,bb,c", 4, ""},
        {"a,bb,c", 0, ""},  {"a,bb,c", -1, ""},  {"a,bb,c", kMaxInt, ""}, {"a,bb,c", kMinInt, ""},
        {"", 1, ""},        {"", 2, ""},         {"abc", 1, "abc"},       {"abc", 2, ""},
        {",", 1, ""},       {",x", 2, "x"},      {"x,", 1, "x"},          {"x,", 2, ""},
        {"x,,y", 2, ""},    {"x,,y", 3, "y"},
    };
    for (const ElementCase& row : rows) {
        SCOPED_TRACE(std::string(row.text) + " element " + std::to_string(row.index));
        EXPECT_EQ(Take(Utf8StringGetElement(N(row.text).get(), ',', row.index)), row.expected);
        EXPECT_EQ(Take(Utf16StringGetElement(W(row.text).get(), ',', row.index)), row.expected);
    }
}

TEST(StringCompare, UnitsAreUnsignedThenLengthDecides) {
    struct Row {
        const char* left;
        const char* right;
        int sign;
    };
    const std::vector<Row> rows = {
        {"", "", 0},    {"", "a", -1},   {"a", "", 1},   {"a", "a", 0},        {"a", "b", -1},   {"b", "a", 1},
        {"ab", "a", 1}, {"a", "ab", -1}, {"b", "ab", 1}, {"\x7F", "\x80", -1}, {"\xFF", "a", 1},
    };
    const auto sign = [](int order) { return order < 0 ? -1 : order > 0 ? 1 : 0; };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.left) + " : " + row.right);
        EXPECT_EQ(sign(Utf8StringCompare(N(row.left).get(), N(row.right).get())), row.sign);
        EXPECT_EQ(sign(Utf8StringCompare(N(row.right).get(), N(row.left).get())), -row.sign);
    }
    EXPECT_LT(Utf16StringCompare(W(u"\u00FF").get(), W(u"\u0100").get()), 0) << "not byte by byte";
    EXPECT_GT(Utf16StringCompare(W(u"\uFFFF").get(), W(u"a").get()), 0) << "unsigned";
    EXPECT_EQ(Utf16StringCompare(W(u"ab").get(), W(u"ab").get()), 0);
    EXPECT_LT(Utf16StringCompare(W(u"a").get(), W(u"ab").get()), 0);
}

TEST(StringObject, NullCountsAsEmpty) {
    EXPECT_EQ(Utf8StringLen(nullptr), 0u);
    EXPECT_EQ(Utf16StringLen(nullptr), 0u);
    EXPECT_EQ(Utf8StringCompare(nullptr, N("").get()), 0);
    EXPECT_LT(Utf16StringCompare(nullptr, W("a").get()), 0);
    EXPECT_EQ(Take(Utf8StringCopy(static_cast<const Utf8String*>(nullptr))), "");
    EXPECT_EQ(Take(Utf16StringConcat(nullptr, W("a").get())), "a");
    EXPECT_EQ(Take(Utf8StringInsert(N("ab").get(), nullptr, 1)), "ab");
    EXPECT_EQ(Utf8StringFind(nullptr, nullptr), -1);
    Utf8StringFree(nullptr);
    Utf16StringFree(nullptr);
}

TEST(StringObject, HasTheLayoutOfTheMachinesMemory) {
    static_assert(offsetof(Utf8String, bytes) == 2 && offsetof(Utf16String, units) == 2);
    EXPECT_EQ(N("abc")->length, 3);
    EXPECT_EQ(W("abc")->length, 3);
    EXPECT_EQ(Utf8StringLen(N("a\xC3\xA4").get()), 3u) << "units, not characters";
    EXPECT_EQ(Utf16StringLen(W(u"\U0001F600").get()), 2u);
}

TEST(StringAlloc, UnitsAreZeroAndBounded) {
    EXPECT_EQ(Take(Utf8StringAlloc(3)), std::string(3, '\0'));
    EXPECT_EQ(TakeWide(Utf16StringAlloc(3)), std::u16string(3, u'\0'));
    EXPECT_EQ(Take(Utf8StringAlloc(0)), "");
    EXPECT_EQ(Take(Utf8StringAlloc(65536)).size(), 65535u);
    EXPECT_EQ(TakeWide(Utf16StringAlloc(0xFFFFFFFF)).size(), 65535u);
}

TEST(StringCopy, ConvertsBetweenEncodings) {
    const std::string narrow = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80";
    const std::u16string wide = u"a\u00E4\u20AC\U0001F600";
    EXPECT_EQ(TakeWide(Utf16StringCopy(narrow.data(), static_cast<unsigned int>(narrow.size()))), wide);
    const std::vector<unsigned short> units(wide.begin(), wide.end());
    EXPECT_EQ(Take(Utf8StringCopy(units.data(), static_cast<unsigned int>(units.size()))), narrow);
}

TEST(StringCopy, InvalidPartsAreReplacedOnlyByConversion) {
    EXPECT_EQ(Take(Utf8StringCopy("\xFF\xC3", 2)), "\xFF\xC3");
    EXPECT_EQ(TakeWide(Utf16StringCopy("\xFF\xC3z", 3)), u"\uFFFD\uFFFDz");
    const unsigned short lone = 0xD800;
    EXPECT_EQ(TakeWide(Utf16StringCopy(&lone, 1)), std::u16string(1, 0xD800));
    EXPECT_EQ(Take(Utf8StringCopy(&lone, 1)), "\xEF\xBF\xBD");
}

struct CutCase {
    std::string end;
    std::size_t expectedLength;
    const char* why;
};

TEST(StringLimit, Utf8IsCutBetweenCharacters) {
    const std::string full(kMaxStringUnits - 2, 'x');
    const std::vector<CutCase> rows = {
        {"yz", 65535, "just fits"},
        {"yza", 65535, "one too many"},
        {"\xC3\xA4z", 65535, "the character fits"},
        {"y\xC3\xA4", 65534, "two bytes across the limit"},
        {"\xE2\x82\xAC", 65533, "three bytes, one too many"},
        {"y\xE2\x82\xAC", 65534, "three bytes, two too many"},
        {"\xF0\x9F\x98\x80", 65533, "four bytes across the limit"},
        {"y\xF0\x9F\x98\x80", 65534, "four bytes across the limit"},
        {"\x80\x80\x80", 65535, "invalid bytes are cut anywhere"},
    };
    for (const CutCase& row : rows) {
        SCOPED_TRACE(row.why);
        const std::string text = full + row.end;
        const std::string expected = text.substr(0, row.expectedLength);
        EXPECT_EQ(Take(Utf8StringCopy(text.data(), static_cast<unsigned int>(text.size()))), expected);
        EXPECT_EQ(Take(Utf8StringConcat(N(full).get(), N(row.end).get())), expected);
        EXPECT_EQ(Take(Utf8StringInsert(N(row.end).get(), N(full).get(), 0)), expected);
        EXPECT_EQ(Take(Utf8StringReplace(N("?" + row.end).get(), N(full).get(), 1, 1)), expected);
    }
}

TEST(StringLimit, CharacterAcrossTheSeamOfAConcatenationIsNotSplit) {
    const std::string left = std::string(kMaxStringUnits - 2, 'x') + "\xE2\x82";
    EXPECT_EQ(Take(Utf8StringConcat(N(left).get(), N("\xAC").get())), std::string(kMaxStringUnits - 2, 'x'));
}

TEST(StringLimit, Utf16IsCutAtTheUnit) {
    const std::u16string full(kMaxStringUnits - 1, u'x');
    EXPECT_EQ(TakeWide(Utf16StringConcat(W(full).get(), W(u"yz").get())), full + u"y");
    EXPECT_EQ(TakeWide(Utf16StringConcat(W(full).get(), W(u"\U0001F600").get())), full + u"\xD83D");
}

TEST(StringLimit, ConversionsStopBeforeACharacterThatDoesNotFit) {
    const std::u16string euros(21845, u'\u20AC');  // 65535 bytes
    const std::vector<unsigned short> units(euros.begin(), euros.end());
    EXPECT_EQ(Take(Utf8StringCopy(units.data(), 21845)).size(), 65535u);
    std::vector<unsigned short> longer = units;
    longer.insert(longer.begin(), u'x');
    EXPECT_EQ(Take(Utf8StringCopy(longer.data(), 21846)).size(), 1u + 65532u);

    std::string text(kMaxStringUnits - 1, 'x');
    text += "\xF0\x9F\x98\x80";
    EXPECT_EQ(TakeWide(Utf16StringCopy(text.data(), static_cast<unsigned int>(text.size()))).size(), 65534u);
}

}  // namespace
