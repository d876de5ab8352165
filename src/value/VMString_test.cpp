#include "value/VMString.h"

#include <cstring>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Units = std::vector<unsigned short>;

const unsigned char* Bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

TEST(StoreVMString, CutsBeforeACodePointThatDoesNotFit) {
    struct Row {
        std::string text;
        unsigned int capacity;
        std::string stored;
    };
    const Row rows[] = {
        {"abc", 3, "abc"},   {"abc", 2, "ab"},          {"abc", 0, ""},        {"", 3, ""},
        {"a\u20AC", 3, "a"}, {"a\u20AC", 4, "a\u20AC"}, {"\U0001F600", 3, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        unsigned char buffer[8];
        std::memset(buffer, 0xEE, sizeof buffer);
        ASSERT_EQ(StoreVMString(row.text, buffer, row.capacity), row.stored.size());
        EXPECT_EQ(std::memcmp(buffer, row.stored.data(), row.stored.size()), 0);
        EXPECT_EQ(buffer[row.stored.size()], 0xEE);
        EXPECT_EQ(StoreVMString(row.text.data(), static_cast<unsigned int>(row.text.size()), buffer, row.capacity),
                  row.stored.size());
    }
}

TEST(StoreVMString, LongerThanACountCanSayIsCut) {
    const std::string text(70000, 'x');
    std::vector<unsigned char> buffer(70000);
    EXPECT_EQ(StoreVMString(text, buffer.data(), 70000), 65535);
    std::vector<unsigned short> units(70000);
    EXPECT_EQ(StoreVMWString(text, units.data(), 70000), 65535);
}

TEST(StoreVMWString, CutsBeforeACodePointThatDoesNotFit) {
    struct Row {
        std::string text;
        unsigned int capacity;
        Units stored;
    };
    const Row rows[] = {
        {"abc", 3, {'a', 'b', 'c'}},   {"abc", 2, {'a', 'b'}},    {"abc", 0, {}},
        {"a\u20AC", 2, {'a', 0x20AC}}, {"a\U0001F600", 2, {'a'}}, {"a\U0001F600", 3, {'a', 0xD83D, 0xDE00}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        unsigned short buffer[8] = {};
        const unsigned int count = StoreVMWString(row.text, buffer, row.capacity);
        EXPECT_EQ(Units(buffer, buffer + count), row.stored);
        EXPECT_EQ(StoreVMWString(row.text.data(), static_cast<unsigned int>(row.text.size()), buffer, row.capacity),
                  count);
    }
}

TEST(GetNullTerminated, KeepsWithinTheBuffer) {
    char out[5];
    EXPECT_EQ(GetNullTerminatedWStringFromVMString(out, sizeof out, Bytes("abcdef"), 6), 4U);
    EXPECT_STREQ(out, "abcd");
    EXPECT_EQ(GetNullTerminatedWStringFromVMString(out, sizeof out, Bytes("ab\u20AC"), 5), 2U);
    EXPECT_STREQ(out, "ab");
    const unsigned short units[] = {'a', 0x20AC, 'c'};
    EXPECT_EQ(GetNullTerminatedWStringFromVMWString(out, sizeof out, units, 3), 4U);
    EXPECT_STREQ(out, "a\u20AC");
    EXPECT_EQ(GetNullTerminatedWStringFromVMWString(out, 1, units, 3), 0U);
    EXPECT_STREQ(out, "");
}

TEST(GetWStringFromVMString, StopsAtWhatIsNotValid) {
    struct Row {
        std::string_view bytes;
        const char* text;
    };
    const Row rows[] = {
        {"abc", "abc"},
        {"", ""},
        {"a\u20ACb\U0001F600", "a\u20ACb\U0001F600"},
        {"ab\xFF"
         "cd",
         "ab"},
        {"ab\xE2\x82", "ab"},
        {"ab\uFFFDcd", "ab"},
        {"\x80", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.bytes);
        std::string out = "old";
        GetWStringFromVMString(Bytes(row.bytes), static_cast<unsigned int>(row.bytes.size()), out);
        EXPECT_EQ(out, row.text);
    }
}

TEST(GetWStringFromVMWString, JoinsPairsAndStopsAtWhatIsNotValid) {
    struct Row {
        Units units;
        const char* text;
    };
    const Row rows[] = {
        {{'a', 0x20AC, 0xD83D, 0xDE00}, "a\u20AC\U0001F600"},
        {{}, ""},
        {{'a', 0xD83D, 'b'}, "a"},
        {{'a', 0xDE00, 'b'}, "a"},
        {{'a', 0xFFFD, 'b'}, "a"},
    };
    for (const Row& row : rows) {
        std::string out = "old";
        GetWStringFromVMWString(row.units.data(), static_cast<unsigned int>(row.units.size()), out);
        EXPECT_EQ(out, row.text);
    }
}

TEST(CompareWStringWithVMWString, UnitsFirstThenLengths) {
    struct Row {
        std::string_view text;
        Units units;
        int order;
    };
    const Row rows[] = {
        {"abc", {'a', 'b'}, 1}, {"ab", {'a', 'b', 'c'}, -1},
        {"ab", {'a', 'b'}, 0},  {"", {}, 0},
        {"", {'a'}, -1},        {"a", {}, 1},
        {"b", {'a', 'b'}, 1},   {"a", {'b'}, -1},
        {"\xFF", {0xFF}, 0},    {"\xFF", {0x100}, -1},
        {"\xFF", {0x7F}, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(CompareWStringWithVMWString(row.text.data(), static_cast<unsigned int>(row.text.size()),
                                              row.units.data(), static_cast<unsigned int>(row.units.size())),
                  row.order);
    }
}

}  // namespace
