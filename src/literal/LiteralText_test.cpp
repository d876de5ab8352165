#include "literal/LiteralText.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

TEST(ReadUnsigned32, TakesWhatAStrtoulOf32BitsTakes) {
    const struct {
        const char* text;
        std::uint32_t expected;
        const char* rest;
    } kRows[] = {
        {"0", 0, ""},
        {"12:", 12, ":"},
        {" \t\n\v\f\r12", 12, ""},
        {"+7", 7, ""},
        {"-7", 4'294'967'289, ""},
        {"0012x", 12, "x"},
        {"0x10", 0, "x10"},
        {"4294967295", 4'294'967'295, ""},
        {"4294967296", 4'294'967'295, ""},
        {"-4294967296", 4'294'967'295, ""},
        {"99999999999999999999999999x", 4'294'967'295, "x"},
        {"", 0, ""},
        {" ", 0, " "},
        {"-", 0, "-"},
        {" +x", 0, " +x"},
        {"+-1", 0, "+-1"},
        {"\xa0"
         "1",
         0,
         "\xa0"
         "1"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        const char* text = row.text;
        EXPECT_EQ(ReadUnsigned32(text), row.expected);
        EXPECT_STREQ(text, row.rest);
    }
}

TEST(SaturateToInt64, CutsAndSaturates) {
    EXPECT_EQ(SaturateToInt64(1.9), 1);
    EXPECT_EQ(SaturateToInt64(-1.9), -1);
    EXPECT_EQ(SaturateToInt64(9223372036854774784.0), 9223372036854774784);
    EXPECT_EQ(SaturateToInt64(9223372036854775808.0), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(SaturateToInt64(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(SaturateToInt64(-9223372036854777856.0), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(SaturateToInt64(std::numeric_limits<double>::infinity()), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(SaturateToInt64(-std::numeric_limits<double>::infinity()), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(SaturateToInt64(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(SaturateToUInt32, CutsAndSaturates) {
    EXPECT_EQ(SaturateToUInt32(1.9), 1U);
    EXPECT_EQ(SaturateToUInt32(-0.5), 0U);
    EXPECT_EQ(SaturateToUInt32(-1e30), 0U);
    EXPECT_EQ(SaturateToUInt32(4294967295.9), 4'294'967'295U);
    EXPECT_EQ(SaturateToUInt32(4294967296.0), 4'294'967'295U);
    EXPECT_EQ(SaturateToUInt32(std::numeric_limits<double>::infinity()), 4'294'967'295U);
    EXPECT_EQ(SaturateToUInt32(std::numeric_limits<double>::quiet_NaN()), 0U);
}

TEST(EqualsIgnoringCase, FoldsOnlyAsciiLetters) {
    EXPECT_TRUE(EqualsIgnoringCase("", ""));
    EXPECT_TRUE(EqualsIgnoringCase("TrUe_1", "tRuE_1"));
    EXPECT_FALSE(EqualsIgnoringCase("true", "tru"));
    EXPECT_FALSE(EqualsIgnoringCase("@", "`"));
    EXPECT_FALSE(EqualsIgnoringCase("[", "{"));
    EXPECT_FALSE(EqualsIgnoringCase("\xc3\x89", "\xc3\xa9"));
}

}  // namespace
