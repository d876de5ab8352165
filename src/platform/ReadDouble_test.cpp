#include "platform/ReadDouble.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(Strtod, TakesTheLongestNumber) {
    const struct {
        const char* text;
        double expected;
        const char* rest;
    } kRows[] = {
        {"1.5", 1.5, ""},
        {" \t\n\v\f\r-1.5x", -1.5, "x"},
        {"+.5e1", 5.0, ""},
        {"5.", 5.0, ""},
        {"1,5", 1.0, ",5"},
        {"1e", 1.0, "e"},
        {"1e+", 1.0, "e+"},
        {"1.2.3", 1.2, ".3"},
        {"0x1.8p3", 12.0, ""},
        {"0x", 0.0, "x"},
        {"0X.8P+1", 1.0, ""},
        {"INF", kInfinity, ""},
        {"-infinity", -kInfinity, ""},
        {"infinit", kInfinity, "init"},
        {"1e400", kInfinity, ""},
        {"1e-400", 0.0, ""},
        {"5e-324", 5e-324, ""},
        {"", 0.0, ""},
        {".", 0.0, "."},
        {" x", 0.0, " x"},
        {"--1", 0.0, "--1"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        const char* text = row.text;
        EXPECT_EQ(tn_strtod(text), row.expected);
        EXPECT_STREQ(text, row.rest);
    }
}

TEST(Strtod, KnowsNotANumber) {
    for (const char* text : {"nan", "-NaN", "nan(12)", "nan(x_1)"}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(std::isnan(tn_strtod(text)));
        EXPECT_STREQ(text, "");
    }
    const char* text = "nan(";
    EXPECT_TRUE(std::isnan(tn_strtod(text)));
    EXPECT_STREQ(text, "(");
}

}  // namespace
