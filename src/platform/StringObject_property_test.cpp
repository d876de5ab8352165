#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/StringObject.h"

// Every string function against the plainest model of what it does, position by position.

namespace {

struct Narrow {
    using Unit = unsigned char;
    using Object = Utf8String;
    static constexpr auto kCopy = static_cast<Object* (*)(const Unit*, unsigned int)>(Utf8StringCopy);
    static constexpr auto kFree = Utf8StringFree;
    static constexpr auto kCompare = Utf8StringCompare;
    static constexpr auto kLeft = Utf8StringLeft;
    static constexpr auto kRight = Utf8StringRight;
    static constexpr auto kMid = Utf8StringMid;
    static constexpr auto kInsert = Utf8StringInsert;
    static constexpr auto kDelete = Utf8StringDelete;
    static constexpr auto kReplace = Utf8StringReplace;
    static constexpr auto kFind = Utf8StringFind;
    static constexpr auto kGetElement = Utf8StringGetElement;
    static constexpr auto kConcat = Utf8StringConcat;
    // ASCII, a separator, and bytes that make valid, cut, overlong and stray sequences.
    static constexpr std::array<Unit, 10> kAlphabet = {'a', 'b', ',', 0, 0xC3, 0xA4, 0xE2, 0x82, 0xC0, 0xFF};
};

struct Wide {
    using Unit = unsigned short;
    using Object = Utf16String;
    static constexpr auto kCopy = static_cast<Object* (*)(const Unit*, unsigned int)>(Utf16StringCopy);
    static constexpr auto kFree = Utf16StringFree;
    static constexpr auto kCompare = Utf16StringCompare;
    static constexpr auto kLeft = Utf16StringLeft;
    static constexpr auto kRight = Utf16StringRight;
    static constexpr auto kMid = Utf16StringMid;
    static constexpr auto kInsert = Utf16StringInsert;
    static constexpr auto kDelete = Utf16StringDelete;
    static constexpr auto kReplace = Utf16StringReplace;
    static constexpr auto kFind = Utf16StringFind;
    static constexpr auto kGetElement = Utf16StringGetElement;
    static constexpr auto kConcat = Utf16StringConcat;
    // ASCII, a separator, surrogates, and units whose bytes are those of others shifted by one.
    static constexpr std::array<Unit, 10> kAlphabet = {'a',    'b',    ',',    0,      0x6161,
                                                       0x6100, 0xD83D, 0xDE00, 0x20AC, 0xFFFF};
};

template <typename Traits>
class StringProperties : public ::testing::Test {
 protected:
    using Unit = typename Traits::Unit;
    using Object = typename Traits::Object;
    using Text = std::vector<Unit>;

    Object* Make(const Text& text) const { return Traits::kCopy(text.data(), static_cast<unsigned int>(text.size())); }
    Text Take(Object* object) const {
        const auto units = GetUnits(object);
        Text text(units.begin(), units.end());
        Traits::kFree(object);
        return text;
    }

    Text RandomText(std::size_t maxSize, std::size_t letters) {
        Text text(random_() % (maxSize + 1));
        for (Unit& unit : text)
            unit = Traits::kAlphabet[random_() % letters];
        return text;
    }
    /// Mostly near the text, sometimes at the limits.
    int RandomNumber(std::size_t size) {
        static constexpr std::array<int, 4> kLimits = {std::numeric_limits<int>::min(), std::numeric_limits<int>::max(),
                                                       std::numeric_limits<int>::min() + 1,
                                                       std::numeric_limits<int>::max() - 1};
        if (random_() % 8 == 0) return kLimits[random_() % kLimits.size()];
        return static_cast<int>(random_() % (size + 5)) - 2;
    }

    /// Whether the 1-based position is one of the `length` positions from `first` on.
    static bool IsIn(std::size_t position, int length, int first) {
        const auto at = static_cast<std::int64_t>(position);
        return at >= first && at < static_cast<std::int64_t>(first) + length;
    }

    std::mt19937 random_{5};
};

using UnitTypes = ::testing::Types<Narrow, Wide>;
class UnitTypeNames {
 public:
    template <typename T>
    static std::string GetName(int) {
        return std::is_same_v<T, Narrow> ? "Utf8" : "Utf16";
    }
};
TYPED_TEST_SUITE(StringProperties, UnitTypes, UnitTypeNames);

constexpr int kRounds = 4000;

TYPED_TEST(StringProperties, PartsAreThePositionsThatExist) {
    using Text = typename TestFixture::Text;
    for (int round = 0; round < kRounds; ++round) {
        const Text text = this->RandomText(12, 10);
        const int length = this->RandomNumber(text.size());
        const int position = this->RandomNumber(text.size());
        SCOPED_TRACE(::testing::Message()
                     << "size " << text.size() << " length " << length << " position " << position);
        Text left;
        Text right;
        Text mid;
        Text remaining;
        for (std::size_t at = 1; at <= text.size(); ++at) {
            const auto unit = text[at - 1];
            const auto fromEnd = static_cast<std::int64_t>(text.size() - at) + 1;
            if (static_cast<std::int64_t>(at) <= length) left.push_back(unit);
            if (fromEnd <= length) right.push_back(unit);
            (this->IsIn(at, length, position) ? mid : remaining).push_back(unit);
        }
        auto* const object = this->Make(text);
        ASSERT_EQ(this->Take(TypeParam::kLeft(object, length)), left);
        ASSERT_EQ(this->Take(TypeParam::kRight(object, length)), right);
        ASSERT_EQ(this->Take(TypeParam::kMid(object, length, position)), mid);
        ASSERT_EQ(this->Take(TypeParam::kDelete(object, length, position)), remaining);
        TypeParam::kFree(object);
    }
}

TYPED_TEST(StringProperties, InsertAndReplacePutTheTextInItsPlace) {
    using Text = typename TestFixture::Text;
    for (int round = 0; round < kRounds; ++round) {
        const Text text = this->RandomText(12, 10);
        const Text added = this->RandomText(4, 10);
        const int length = this->RandomNumber(text.size());
        const int position = this->RandomNumber(text.size());
        SCOPED_TRACE(::testing::Message()
                     << "size " << text.size() << " length " << length << " position " << position);
        const auto append = [&added](Text& to) { to.insert(to.end(), added.begin(), added.end()); };
        Text inserted;
        Text replaced;
        if (position < 1) append(inserted);
        if (position < 1) append(replaced);
        for (std::size_t at = 1; at <= text.size(); ++at) {
            if (static_cast<std::int64_t>(at) == position) append(replaced);
            if (!this->IsIn(at, length, position)) replaced.push_back(text[at - 1]);
            inserted.push_back(text[at - 1]);
            if (static_cast<std::int64_t>(at) == position) append(inserted);
        }
        if (position > static_cast<std::int64_t>(text.size())) append(inserted);
        if (position > static_cast<std::int64_t>(text.size())) append(replaced);

        auto* const object = this->Make(text);
        auto* const addedObject = this->Make(added);
        ASSERT_EQ(this->Take(TypeParam::kInsert(object, addedObject, position)), inserted);
        ASSERT_EQ(this->Take(TypeParam::kReplace(object, addedObject, length, position)), replaced);
        TypeParam::kFree(object);
        TypeParam::kFree(addedObject);
    }
}

TYPED_TEST(StringProperties, FindGivesTheFirstPlaceThatMatches) {
    using Text = typename TestFixture::Text;
    for (int round = 0; round < 4 * kRounds; ++round) {
        // Few letters, so that texts repeat themselves and partial matches are frequent.
        const std::size_t letters = 2 + static_cast<std::size_t>(round % 3) * 4;
        const Text text = this->RandomText(40, letters);
        Text wanted = this->RandomText(8, letters);
        // Long texts that occur, or nearly so, come only from the text itself.
        if (round % 2 == 0 && !text.empty()) {
            const std::size_t begin = this->random_() % text.size();
            const std::size_t size = this->random_() % (text.size() - begin) + 1;
            wanted.assign(text.begin() + static_cast<std::ptrdiff_t>(begin),
                          text.begin() + static_cast<std::ptrdiff_t>(begin + size));
            if (round % 4 == 0) wanted[this->random_() % size] = TypeParam::kAlphabet[0];
        }
        int expected = -1;
        for (std::size_t at = 0; expected < 0 && !wanted.empty() && at + wanted.size() <= text.size(); ++at) {
            if (std::equal(wanted.begin(), wanted.end(), text.begin() + static_cast<std::ptrdiff_t>(at)))
                expected = static_cast<int>(at);
        }
        auto* const object = this->Make(text);
        auto* const wantedObject = this->Make(wanted);
        ASSERT_EQ(TypeParam::kFind(object, wantedObject), expected) << "round " << round;
        TypeParam::kFree(object);
        TypeParam::kFree(wantedObject);
    }
}

TYPED_TEST(StringProperties, ElementsJoinToTheText) {
    using Text = typename TestFixture::Text;
    using Unit = typename TestFixture::Unit;
    constexpr Unit kSeparator = ',';
    for (int round = 0; round < kRounds; ++round) {
        const Text text = this->RandomText(12, 4);
        const auto elements = static_cast<int>(std::count(text.begin(), text.end(), kSeparator)) + 1;
        auto* const object = this->Make(text);
        Text joined;
        for (int index = 1; index <= elements; ++index) {
            const Text element = this->Take(TypeParam::kGetElement(object, kSeparator, index));
            ASSERT_EQ(std::count(element.begin(), element.end(), kSeparator), 0);
            if (index > 1) joined.push_back(kSeparator);
            joined.insert(joined.end(), element.begin(), element.end());
        }
        ASSERT_EQ(joined, text);
        for (const int index : {elements + 1, 0, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
            ASSERT_EQ(this->Take(TypeParam::kGetElement(object, kSeparator, index)), Text()) << index;
        TypeParam::kFree(object);
    }
}

TYPED_TEST(StringProperties, OrderAndConcatenation) {
    using Text = typename TestFixture::Text;
    const auto sign = [](int order) { return order < 0 ? -1 : order > 0 ? 1 : 0; };
    for (int round = 0; round < kRounds; ++round) {
        const Text left = this->RandomText(5, 10);
        const Text right = this->RandomText(5, 10);
        Text both = left;
        both.insert(both.end(), right.begin(), right.end());
        const int expected = left < right ? -1 : right < left ? 1 : 0;
        auto* const leftObject = this->Make(left);
        auto* const rightObject = this->Make(right);
        ASSERT_EQ(sign(TypeParam::kCompare(leftObject, rightObject)), expected);
        ASSERT_EQ(sign(TypeParam::kCompare(rightObject, leftObject)), -expected);
        ASSERT_EQ(this->Take(TypeParam::kConcat(leftObject, rightObject)), both);
        TypeParam::kFree(leftObject);
        TypeParam::kFree(rightObject);
    }
}

TYPED_TEST(StringProperties, LongTextsAreCutToTheLimit) {
    using Text = typename TestFixture::Text;
    for (int round = 0; round < 20; ++round) {
        Text left(kMaxStringUnits - this->random_() % 4, 'x');
        const Text right = this->RandomText(8, 10);
        Text both = left;
        both.insert(both.end(), right.begin(), right.end());
        auto* const leftObject = this->Make(left);
        auto* const rightObject = this->Make(right);
        const Text result = this->Take(TypeParam::kConcat(leftObject, rightObject));
        ASSERT_LE(result.size(), kMaxStringUnits);
        ASSERT_GE(result.size() + 3, std::min<std::size_t>(both.size(), kMaxStringUnits));
        ASSERT_TRUE(std::equal(result.begin(), result.end(), both.begin()));
        TypeParam::kFree(leftObject);
        TypeParam::kFree(rightObject);
    }
}

}  // namespace
