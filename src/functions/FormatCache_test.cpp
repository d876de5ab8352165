#include "functions/FormatCache.h"

#include <string>

#include <gtest/gtest.h>

namespace {

std::string NumberPattern(std::size_t digits) {
    return std::string(digits, '0');
}

TEST(CFormatCache, ParsesAPatternOnce) {
    CFormatCache cache;
    const DecimalFormat* const first = cache.Find<DecimalFormat>("0.0");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->GetPattern(), "0.0");
    EXPECT_EQ(cache.Find<DecimalFormat>("0.00")->GetPattern(), "0.00");
    EXPECT_EQ(cache.Find<DateTimeFormat>("HH:mm")->GetPattern(), "HH:mm");
    EXPECT_EQ(cache.GetParseCount(), 3U);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(cache.Find<DecimalFormat>("0.0"), first);
        EXPECT_NE(cache.Find<DateTimeFormat>("HH:mm"), nullptr);
    }
    EXPECT_EQ(cache.GetParseCount(), 3U);
}

TEST(CFormatCache, WhatIsNoPatternIsNotKept) {
    CFormatCache cache;
    EXPECT_EQ(cache.Find<DecimalFormat>("abc"), nullptr);
    EXPECT_EQ(cache.Find<DateTimeFormat>("'open"), nullptr);
    EXPECT_EQ(cache.Find<DateTimeFormat>(""), nullptr);
    EXPECT_EQ(cache.GetParseCount(), 3U);
    EXPECT_EQ(cache.Find<DecimalFormat>("abc"), nullptr);
    EXPECT_EQ(cache.GetParseCount(), 4U);
}

TEST(CFormatCache, TheSameTextCanBeADateAndANumberPattern) {
    CFormatCache cache;
    ASSERT_NE(cache.Find<DecimalFormat>("0"), nullptr);
    ASSERT_NE(cache.Find<DateTimeFormat>("0"), nullptr) << "digits are literals of a date pattern";
    EXPECT_EQ(cache.GetParseCount(), 2U);
}

TEST(CFormatCache, TheOneNotUsedForLongestMakesRoom) {
    CFormatCache cache;
    for (std::size_t i = 1; i <= CFormatCache::kMaxPatterns; ++i)
        ASSERT_NE(cache.Find<DecimalFormat>(NumberPattern(i)), nullptr);
    EXPECT_EQ(cache.GetParseCount(), CFormatCache::kMaxPatterns);
    ASSERT_NE(cache.Find<DecimalFormat>(NumberPattern(1)), nullptr);  // now 2 is the oldest
    ASSERT_NE(cache.Find<DecimalFormat>(NumberPattern(CFormatCache::kMaxPatterns + 1)), nullptr);
    const std::size_t parsed = cache.GetParseCount();
    EXPECT_EQ(parsed, CFormatCache::kMaxPatterns + 1);
    ASSERT_NE(cache.Find<DecimalFormat>(NumberPattern(1)), nullptr);
    ASSERT_NE(cache.Find<DecimalFormat>(NumberPattern(3)), nullptr);
    EXPECT_EQ(cache.GetParseCount(), parsed) << "still kept";
    ASSERT_NE(cache.Find<DecimalFormat>(NumberPattern(2)), nullptr);
    EXPECT_EQ(cache.GetParseCount(), parsed + 1) << "was dropped";
}

}  // namespace
