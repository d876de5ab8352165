#include "platform/Transcode.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<unsigned char>;
using Units = std::vector<unsigned short>;

/// A copy in memory of its exact size, so that a sanitizer sees any read behind it.
template <typename Unit>
std::unique_ptr<Unit[]> Exact(const std::vector<Unit>& units) {
    auto copy = std::make_unique<Unit[]>(units.size());
    std::copy(units.begin(), units.end(), copy.get());
    return copy;
}

template <typename Unit>
unsigned int SizeOf(const std::vector<Unit>& units) {
    return static_cast<unsigned int>(units.size());
}

std::u32string Decoded(const Bytes& bytes) {
    const auto exact = Exact(bytes);
    std::u32string text;
    for (unsigned int at = 0; at < bytes.size();) {
        char32_t codePoint = 0;
        const unsigned int size = tn_decode_utf8(exact.get() + at, SizeOf(bytes) - at, codePoint);
        EXPECT_GE(size, 1u);
        if (size == 0) break;
        text.push_back(codePoint);
        at += size;
    }
    return text;
}

std::u32string Decoded(const Units& units) {
    const auto exact = Exact(units);
    std::u32string text;
    for (unsigned int at = 0; at < units.size();) {
        char32_t codePoint = 0;
        const unsigned int size = tn_decode_utf16(exact.get() + at, SizeOf(units) - at, codePoint);
        EXPECT_GE(size, 1u);
        if (size == 0) break;
        text.push_back(codePoint);
        at += size;
    }
    return text;
}

Units ToUtf16(const Bytes& bytes, std::size_t capacity) {
    const auto exact = Exact(bytes);
    const auto out = std::make_unique<unsigned short[]>(capacity);
    const unsigned int written = tn_utf16_from_tnchar(out.get(), static_cast<unsigned int>(capacity),
                                                      reinterpret_cast<const char*>(exact.get()), SizeOf(bytes));
    return {out.get(), out.get() + written};
}
Units ToUtf16(const Bytes& bytes) {
    return ToUtf16(bytes, bytes.size());
}

Bytes ToUtf8(const Units& units, std::size_t capacity) {
    const auto exact = Exact(units);
    const auto out = std::make_unique<unsigned char[]>(capacity);
    const unsigned int written =
        tn_utf8_from_utf16(out.get(), static_cast<unsigned int>(capacity), exact.get(), SizeOf(units));
    return {out.get(), out.get() + written};
}
Bytes ToUtf8(const Units& units) {
    return ToUtf8(units, 3 * units.size());
}

/// UTF-8 to UTF-8: what is not valid is replaced.
Bytes Cleaned(const Bytes& bytes, std::size_t capacity) {
    const auto exact = Exact(bytes);
    const auto out = std::make_unique<unsigned char[]>(capacity);
    const unsigned int written = tn_utf8_from_tnchar(out.get(), static_cast<unsigned int>(capacity),
                                                     reinterpret_cast<const char*>(exact.get()), SizeOf(bytes));
    return {out.get(), out.get() + written};
}

constexpr char32_t kX = kReplacementCharacter;

struct InvalidCase {
    Bytes bytes;
    std::u32string expected;
    const char* why;
};

TEST(DecodeUtf8, EachMaximalInvalidPartIsOneReplacement) {
    const std::vector<InvalidCase> rows = {
        {{0x61, 0xF1, 0x80, 0x80, 0xE1, 0x80, 0xC2, 0x62, 0x80, 0x63, 0x80, 0xBF, 0x64},
         {U'a', kX, kX, kX, U'b', kX, U'c', kX, kX, U'd'},
         "cut sequences of every length"},
        {{0xC0, 0xAF, 0xE0, 0x80, 0xBF, 0xF0, 0x81, 0x82, 0x41},
         {kX, kX, kX, kX, kX, kX, kX, kX, U'A'},
         "overlong forms"},
        {{0xED, 0xA0, 0x80, 0xED, 0xBF, 0xBF, 0xED, 0xAF, 0x41}, {kX, kX, kX, kX, kX, kX, kX, kX, U'A'}, "surrogates"},
        {{0xF4, 0x91, 0x92, 0x93, 0xFF, 0x41, 0x80, 0xBF, 0x42},
         {kX, kX, kX, kX, kX, U'A', kX, kX, U'B'},
         "beyond 10FFFF"},
        {{0xE1, 0x80, 0xE2, 0xF0, 0x91, 0x92, 0xF1, 0xBF, 0x41}, {kX, kX, kX, kX, U'A'}, "cut by the next lead byte"},
        {{0xC1, 0x80, 0xF5, 0x80, 0xFE}, {kX, kX, kX, kX, kX}, "bytes that never occur"},
        {{0xE2, 0x82}, {kX}, "cut by the end"},
        {{0xF0, 0x9F, 0x98}, {kX}, "cut by the end"},
        {{0xC3}, {kX}, "cut by the end"},
        {{0xEF, 0xBF, 0xBD}, {kX}, "a genuine replacement character"},
    };
    for (const InvalidCase& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(Decoded(row.bytes), row.expected);
    }
}

TEST(DecodeUtf16, EachUnpairedSurrogateIsOneReplacement) {
    EXPECT_EQ(Decoded(Units{0xD83D, 0xDE00}), U"\U0001F600");
    EXPECT_EQ(Decoded(Units{0xD800, 0xDC00, 0xDBFF, 0xDFFF}), (std::u32string{0x10000, 0x10FFFF}));
    EXPECT_EQ(Decoded(Units{0xD83D}), (std::u32string{kX}));
    EXPECT_EQ(Decoded(Units{0xD83D, 0x41}), (std::u32string{kX, U'A'}));
    EXPECT_EQ(Decoded(Units{0xD83D, 0xD83D, 0xDE00}), (std::u32string{kX, 0x1F600}));
    EXPECT_EQ(Decoded(Units{0xDE00, 0xD83D}), (std::u32string{kX, kX}));
    EXPECT_EQ(Decoded(Units{0xD7FF, 0xE000}), (std::u32string{0xD7FF, 0xE000}));
}

TEST(Decode, NothingIsLeftOfNothing) {
    char32_t codePoint = 77;
    EXPECT_EQ(tn_decode_utf8(nullptr, 0, codePoint), 0u);
    EXPECT_EQ(tn_decode_utf16(nullptr, 0, codePoint), 0u);
    EXPECT_EQ(tn_codepoint_from_tnchar(nullptr, 0, codePoint), 0u);
    EXPECT_EQ(codePoint, 77u);
    EXPECT_EQ(tn_codepoint_from_tnchar("\xC3\xA4", 2, codePoint), 2u);
    EXPECT_EQ(codePoint, 0xE4u);
}

TEST(Encode, EveryCodePointReadsBack) {
    for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
        const char32_t expected = surrogate ? kX : codePoint;
        std::array<unsigned char, 4> bytes{};
        std::array<unsigned short, 2> units{};
        const unsigned int byteCount = tn_encode_utf8(codePoint, bytes.data());
        const unsigned int unitCount = tn_encode_utf16(codePoint, units.data());
        char32_t back = 0;
        ASSERT_EQ(tn_decode_utf8(bytes.data(), byteCount, back), byteCount) << static_cast<std::uint32_t>(codePoint);
        ASSERT_EQ(back, expected);
        ASSERT_EQ(tn_decode_utf16(units.data(), unitCount, back), unitCount) << static_cast<std::uint32_t>(codePoint);
        ASSERT_EQ(back, expected);
    }
}

struct EncodedCase {
    char32_t codePoint;
    Bytes bytes;
    Units units;
};

TEST(Encode, LimitsOfEachLength) {
    const std::vector<EncodedCase> rows = {
        {0, {0}, {0}},
        {0x7F, {0x7F}, {0x7F}},
        {0x80, {0xC2, 0x80}, {0x80}},
        {0x7FF, {0xDF, 0xBF}, {0x7FF}},
        {0x800, {0xE0, 0xA0, 0x80}, {0x800}},
        {0xD7FF, {0xED, 0x9F, 0xBF}, {0xD7FF}},
        {0xD800, {0xEF, 0xBF, 0xBD}, {0xFFFD}},
        {0xDFFF, {0xEF, 0xBF, 0xBD}, {0xFFFD}},
        {0xE000, {0xEE, 0x80, 0x80}, {0xE000}},
        {0xFFFF, {0xEF, 0xBF, 0xBF}, {0xFFFF}},
        {0x10000, {0xF0, 0x90, 0x80, 0x80}, {0xD800, 0xDC00}},
        {0x10FFFF, {0xF4, 0x8F, 0xBF, 0xBF}, {0xDBFF, 0xDFFF}},
        {0x110000, {0xEF, 0xBF, 0xBD}, {0xFFFD}},
        {0xFFFFFFFF, {0xEF, 0xBF, 0xBD}, {0xFFFD}},
    };
    for (const EncodedCase& row : rows) {
        SCOPED_TRACE(static_cast<std::uint32_t>(row.codePoint));
        std::array<unsigned char, 4> bytes{};
        const unsigned int byteCount = tn_encode_utf8(row.codePoint, bytes.data());
        EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + byteCount), row.bytes);
        std::array<unsigned short, 2> units{};
        const unsigned int unitCount = tn_encode_utf16(row.codePoint, units.data());
        EXPECT_EQ(Units(units.begin(), units.begin() + unitCount), row.units);
        std::string text = "x";
        tn_append_codepoint_to_tnstring(text, row.codePoint);
        EXPECT_EQ(text, "x" + std::string(row.bytes.begin(), row.bytes.end()));
    }
}

TEST(Transcode, StopsBeforeACodePointThatDoesNotFit) {
    const Bytes bytes = {'a', 0xC3, 0xA4, 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x98, 0x80};
    const Units units = {'a', 0xE4, 0x20AC, 0xD83D, 0xDE00};
    const std::array<std::size_t, 11> utf8Sizes = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10};
    for (std::size_t capacity = 0; capacity < utf8Sizes.size(); ++capacity) {
        SCOPED_TRACE(capacity);
        const Bytes expected(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(utf8Sizes[capacity]));
        EXPECT_EQ(ToUtf8(units, capacity), expected);
        EXPECT_EQ(Cleaned(bytes, capacity), expected);
    }
    const std::array<std::size_t, 6> utf16Sizes = {0, 1, 2, 3, 3, 5};
    for (std::size_t capacity = 0; capacity < utf16Sizes.size(); ++capacity) {
        SCOPED_TRACE(capacity);
        EXPECT_EQ(ToUtf16(bytes, capacity),
                  Units(units.begin(), units.begin() + static_cast<std::ptrdiff_t>(utf16Sizes[capacity])));
    }
}

TEST(Transcode, InternalTextIsTerminated) {
    const Bytes bytes = {'a', 0xC3, 0xA4, 0xFF};
    const Units units = {'a', 0xE4, 0xD800};
    struct Row {
        unsigned int size;
        const char* expected;
    };
    const std::vector<Row> rows = {{1, ""},
                                   {2, "a"},
                                   {3, "a"},
                                   {4, "a\xC3\xA4"},
                                   {6, "a\xC3\xA4"},
                                   {7, "a\xC3\xA4\xEF\xBF\xBD"},
                                   {9, "a\xC3\xA4\xEF\xBF\xBD"}};
    Utf8String* const narrow = Utf8StringCopy(bytes.data(), SizeOf(bytes));
    Utf16String* const wide = Utf16StringCopy(units.data(), SizeOf(units));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.size);
        const auto length = std::string(row.expected).size();
        std::vector<char> out(row.size, '#');
        EXPECT_EQ(tn_tnchar_from_utf8(out.data(), row.size, bytes.data(), SizeOf(bytes)), length);
        EXPECT_STREQ(out.data(), row.expected);
        std::fill(out.begin(), out.end(), '#');
        EXPECT_EQ(tn_tnchar_from_utf16(out.data(), row.size, units.data(), SizeOf(units)), length);
        EXPECT_STREQ(out.data(), row.expected);
        std::fill(out.begin(), out.end(), '#');
        EXPECT_EQ(WCharFromUtf8String(narrow, out.data(), row.size), length);
        EXPECT_STREQ(out.data(), row.expected);
        std::fill(out.begin(), out.end(), '#');
        EXPECT_EQ(WCharFromUtf16String(wide, out.data(), row.size), length);
        EXPECT_STREQ(out.data(), row.expected);
    }
    Utf8StringFree(narrow);
    Utf16StringFree(wide);
    char untouched = '#';
    EXPECT_EQ(tn_tnchar_from_utf8(&untouched, 0, bytes.data(), SizeOf(bytes)), 0u);
    EXPECT_EQ(tn_tnchar_from_utf16(&untouched, 0, units.data(), SizeOf(units)), 0u);
    EXPECT_EQ(untouched, '#');
    EXPECT_EQ(WCharFromUtf8String(nullptr, &untouched, 1), 0u);
    EXPECT_EQ(untouched, '\0');
}

TEST(StringsFromCodePoints, ReplaceWhatIsNoCharacterAndStopAtTheLimit) {
    const std::u32string text = {U'a', 0xD800, 0x1F600};
    Utf8String* const narrow = tn_utf8_from_utf32(text.data(), 3);
    EXPECT_EQ(std::string(narrow->bytes, narrow->bytes + narrow->length), "a\xEF\xBF\xBD\xF0\x9F\x98\x80");
    Utf8StringFree(narrow);
    Utf16String* const wide = tn_utf16_from_utf32(text.data(), 3);
    EXPECT_EQ(Units(wide->units, wide->units + wide->length), (Units{'a', 0xFFFD, 0xD83D, 0xDE00}));
    Utf16StringFree(wide);

    const std::u32string faces(40000, U'\U0001F600');
    Utf8String* const longNarrow = tn_utf8_from_utf32(faces.data(), 40000);
    EXPECT_EQ(longNarrow->length, 65532u) << "16383 characters of four bytes";
    Utf8StringFree(longNarrow);
    Utf16String* const longWide = tn_utf16_from_utf32(faces.data(), 40000);
    EXPECT_EQ(longWide->length, 65534u);
    Utf16StringFree(longWide);
}

TEST(CutUtf8, CutsOnlyBetweenCharacters) {
    struct Row {
        std::string text;
        std::vector<std::size_t> cuts;  // for the limits 0, 1, 2, ...
    };
    const std::vector<Row> rows = {
        {"", {0, 0}},
        {"ab", {0, 1, 2, 2}},
        {"a\xC3\xA4z", {0, 1, 1, 3, 4, 4}},
        {"\xE2\x82\xACz", {0, 0, 0, 3, 4}},
        {"\xF0\x9F\x98\x80z", {0, 0, 0, 0, 4, 5}},
        {"\xE2\x82", {0, 1, 2}},
        {"\x80\x80\x80\x80\x80", {0, 1, 2, 3, 4, 5}},
        {"\xC3\xA4\x80\x80", {0, 0, 2, 3, 4}},
        {"\xED\xA0\x80", {0, 1, 2, 3}},
    };
    for (const Row& row : rows) {
        for (std::size_t limit = 0; limit < row.cuts.size(); ++limit) {
            SCOPED_TRACE(::testing::PrintToString(row.text) + " at " + std::to_string(limit));
            const auto exact = Exact(std::vector<char>(row.text.begin(), row.text.end()));
            EXPECT_EQ(CutUtf8({exact.get(), row.text.size()}, limit), row.cuts[limit]);
        }
    }
}

/// Whether the bytes begin the encoding of some character, worked out from the numbers it could stand for.
bool BeginsACharacter(const Bytes& bytes) {
    const unsigned int lead = bytes[0];
    unsigned int length = 0;
    std::uint32_t low = 0;
    if (lead < 0x80) {
        length = 1;
        low = lead;
    } else if (lead >= 0xC0 && lead < 0xE0) {
        length = 2;
        low = lead & 0x1F;
    } else if (lead >= 0xE0 && lead < 0xF0) {
        length = 3;
        low = lead & 0x0F;
    } else if (lead >= 0xF0 && lead < 0xF8) {
        length = 4;
        low = lead & 0x07;
    }
    if (bytes.size() > length) return false;
    for (std::size_t i = 1; i < bytes.size(); ++i) {
        if ((bytes[i] & 0xC0) != 0x80) return false;
        low = low << 6 | (bytes[i] & 0x3F);
    }
    std::uint32_t high = low;
    for (std::size_t i = bytes.size(); i < length; ++i) {
        low <<= 6;
        high = high << 6 | 0x3F;
    }
    static constexpr std::array<std::uint32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    low = std::max(low, kSmallest[length]);
    high = std::min<std::uint32_t>(high, 0x10FFFF);
    const bool onlySurrogates = low >= 0xD800 && high <= 0xDFFF;
    return low <= high && !onlySurrogates;
}

/// The decoder by definition: the longest sequence that begins a character, or one byte.
std::u32string ModelDecoded(const Bytes& bytes) {
    std::u32string text;
    for (std::size_t at = 0; at < bytes.size();) {
        std::size_t size = 0;
        while (at + size < bytes.size() &&
               BeginsACharacter(Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                                      bytes.begin() + static_cast<std::ptrdiff_t>(at + size + 1))))
            ++size;
        const unsigned int lead = bytes[at];
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        if (size == length) {
            auto codePoint = static_cast<char32_t>(length == 1 ? lead : lead & (0xFFU >> (length + 1)));
            for (std::size_t i = 1; i < length; ++i)
                codePoint = codePoint << 6 | static_cast<char32_t>(bytes[at + i] & 0x3F);
            text.push_back(codePoint);
        } else {
            text.push_back(kX);
        }
        at += std::max<std::size_t>(size, 1);
    }
    return text;
}

class RandomTexts : public ::testing::Test {
 protected:
    Bytes RandomBytes() {
        // Bytes at the limits of the decoder's classes, among them enough ASCII for its fast path.
        static constexpr std::array<unsigned char, 24> kBytes = {'a',  'b',  'c',  0,    0x7F, 0x80, 0x8F, 0x90,
                                                                 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2, 0xDF, 0xE0,
                                                                 0xE1, 0xED, 0xEF, 0xF0, 0xF3, 0xF4, 0xF5, 0xFF};
        Bytes bytes(random_() % 24);
        const std::size_t kinds = random_() % 3 == 0 ? 5 : kBytes.size();
        for (unsigned char& byte : bytes)
            byte = random_() % 4 == 0 ? static_cast<unsigned char>(random_()) : kBytes[random_() % kinds];
        return bytes;
    }
    Units RandomUnits() {
        static constexpr std::array<unsigned short, 8> kUnits = {'a', 'b', 0x7F, 0x80, 0xD800, 0xDBFF, 0xDC00, 0xDFFF};
        Units units(random_() % 24);
        const std::size_t kinds = random_() % 3 == 0 ? 3 : kUnits.size();
        for (unsigned short& unit : units)
            unit = random_() % 4 == 0 ? static_cast<unsigned short>(random_()) : kUnits[random_() % kinds];
        return units;
    }

    std::mt19937 random_{6};
};

TEST_F(RandomTexts, Utf8DecodesAsDefined) {
    for (int round = 0; round < 20000; ++round) {
        const Bytes bytes = RandomBytes();
        SCOPED_TRACE(::testing::PrintToString(bytes));
        const std::u32string expected = ModelDecoded(bytes);
        ASSERT_EQ(Decoded(bytes), expected);
        const auto exact = Exact(bytes);
        ASSERT_EQ(tn_strlen_of_utf8(exact.get(), SizeOf(bytes)), expected.size());
        const Units units = ToUtf16(bytes);
        ASSERT_EQ(CountUtf16Units(exact.get(), bytes.size()), units.size());
        ASSERT_EQ(Decoded(units), expected);
        const Bytes cleaned = Cleaned(bytes, 3 * bytes.size());
        ASSERT_EQ(Decoded(cleaned), expected);
        ASSERT_EQ(Cleaned(cleaned, cleaned.size()), cleaned) << "cleaning again changes nothing";
        ASSERT_EQ(ToUtf8(units), cleaned) << "there and back";
    }
}

TEST_F(RandomTexts, Utf16ConvertsThereAndBack) {
    for (int round = 0; round < 20000; ++round) {
        const Units units = RandomUnits();
        SCOPED_TRACE(::testing::PrintToString(units));
        const std::u32string codePoints = Decoded(units);
        const Bytes bytes = ToUtf8(units);
        const auto exact = Exact(units);
        ASSERT_EQ(CountUtf8Bytes(exact.get(), units.size()), bytes.size());
        ASSERT_EQ(tn_strlen_of_utf16(exact.get(), SizeOf(units)), codePoints.size());
        ASSERT_EQ(Decoded(bytes), codePoints);
        Units valid = units;
        for (std::size_t i = 0; i < valid.size(); ++i) {
            const bool high = (valid[i] & 0xFC00) == 0xD800;
            const bool low = (valid[i] & 0xFC00) == 0xDC00;
            const bool paired = high && i + 1 < valid.size() && (valid[i + 1] & 0xFC00) == 0xDC00;
            if (paired) {
                ++i;
            } else if (high || low) {
                valid[i] = 0xFFFD;
            }
        }
        ASSERT_EQ(ToUtf16(bytes), valid);
    }
}

TEST_F(RandomTexts, BoundedResultsArePrefixesOfTheWhole) {
    for (int round = 0; round < 5000; ++round) {
        const Bytes bytes = RandomBytes();
        const Units units = RandomUnits();
        const Bytes wholeBytes = ToUtf8(units);
        const Units wholeUnits = ToUtf16(bytes);
        const std::size_t capacity = random_() % 30;
        const Bytes someBytes = ToUtf8(units, capacity);
        const Units someUnits = ToUtf16(bytes, capacity);
        ASSERT_TRUE(someBytes.size() <= wholeBytes.size() &&
                    std::equal(someBytes.begin(), someBytes.end(), wholeBytes.begin()));
        ASSERT_TRUE(someUnits.size() <= wholeUnits.size() &&
                    std::equal(someUnits.begin(), someUnits.end(), wholeUnits.begin()));
        ASSERT_GE(someBytes.size() + 3, std::min(capacity, wholeBytes.size()));
        ASSERT_GE(someUnits.size() + 1, std::min(capacity, wholeUnits.size()));
    }
}

}  // namespace
