#include "platform/jsonata/NumberText.h"

#include <cmath>
#include <limits>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tn61131::jsonata {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::string Shown(const Result<std::string>& result) {
    return result ? *result : "!" + std::string(result.GetFailure().code) + " " + result.GetFailure().value;
}

std::string Shown(const Result<double>& result) {
    return result ? PrintNumber(*result)
                  : "!" + std::string(result.GetFailure().code) + " " + result.GetFailure().value;
}

struct PrintRow {
    double value;
    std::string_view text;
};

TEST(PrintNumber, PrintsAsJavaScript) {
    constexpr PrintRow kRows[] = {
        {0, "0"},
        {-0.0, "0"},
        {-1.5, "-1.5"},
        {1e-6, "0.000001"},
        {1e-7, "1e-7"},
        {1.5e-7, "1.5e-7"},
        {1e20, "100000000000000000000"},
        {1e21, "1e+21"},
        {1.25e21, "1.25e+21"},
        {123456.789, "123456.789"},
        {0.1 + 0.2, "0.30000000000000004"},
        {5e-324, "5e-324"},
        {5890840712243076, "5890840712243076"},
        {kInfinity, "Infinity"},
        {-kInfinity, "-Infinity"},
        {kNaN, "NaN"},
    };
    for (const PrintRow& row : kRows) {
        EXPECT_EQ(PrintNumber(row.value), row.text);
    }
}

TEST(PrintRoundedNumber, KeepsFifteenDigitsOfAFraction) {
    constexpr PrintRow kRows[] = {
        {0.1 + 0.2, "0.3"},
        {1.0 / 3, "0.333333333333333"},
        {-2.0 / 3, "-0.666666666666667"},
        {39.4, "39.4"},
        {5890840712243076, "5890840712243076"},
        {9007199254740992, "9007199254740992"},
        {1e21, "1e+21"},
        {99999999999999.98, "100000000000000"},
        {100000000000000.5, "100000000000001"},
        {-100000000000000.5, "-100000000000001"},
        {100000000000001.5, "100000000000002"},
        {5e-324, "5e-324"},
        {kNaN, "!D3001 NaN"},
        {kInfinity, "!D3001 Infinity"},
    };
    for (const PrintRow& row : kRows) {
        EXPECT_EQ(Shown(PrintRoundedNumber(row.value)), row.text);
    }
}

TEST(ParseNumber, ReadsNumbersOfJSONAndOfOtherBases) {
    struct Row {
        std::string_view text;
        std::string_view value;
    };
    constexpr Row kRows[] = {
        {"0", "0"},
        {"-0.05", "-0.05"},
        {"000.00123000", "0.00123"},
        {"1e0", "1"},
        {"1E+5", "100000"},
        {"1e05", "100000"},
        {"1e-400", "0"},
        {"-0", "0"},
        {"0x12", "18"},
        {"0X1f", "31"},
        {"0b101", "5"},
        {"0B0", "0"},
        {"0o17", "15"},
        {"0O12", "10"},
        {"0x1FFFFFFFFFFFFFFFF", "36893488147419103000"},
        {"9007199254740993", "9007199254740992"},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(Shown(ParseNumber(row.text)), row.value) << row.text;
    }
    for (const std::string_view text :
         {"",    " 1",    "1 ", "+1",  "1.",   ".5", "-",   "--1", "1e",    "1e1.5", "1/2",    "1234 hello", "Infinity",
          "NaN", "1e400", "0x", "0xg", "-0x1", "0b", "0B2", "0o8", "0x1.8", "1,000", "\uFF11", "1_0"}) {
        EXPECT_EQ(Shown(ParseNumber(text)), "!D3030 " + std::string(text));
    }
    EXPECT_EQ(Shown(ParseNumber("0x" + std::string(300, 'f'))), "!D3030 0x" + std::string(300, 'f'));
}

TEST(FormatBase, WritesWholeNumbers) {
    struct Row {
        double value;
        double radix;
        std::string_view text;
    };
    constexpr Row kRows[] = {
        {100, 2, "1100100"},
        {99.5, 2.5, "1100100"},
        {98.5, 2, "1100010"},
        {-255, 16, "-ff"},
        {0, 36, "0"},
        {-0.4, 10, "0"},
        {35, 36, "z"},
        {10, 1.5, "1010"},
        {10, 36.5, "a"},
        {9007199254740991, 2, "11111111111111111111111111111111111111111111111111111"},
        {1e21, 10, "1000000000000000000000"},
        {1e21, 16, "3635c9adc5dea00000"},
        {100, 1, "!D3100 1"},
        {100, 37, "!D3100 37"},
        {100, 1.4, "!D3100 1"},
        {100, kNaN, "!D3100 NaN"},
        {kInfinity, 2, "!D1001 Infinity"},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(Shown(FormatBase(row.value, row.radix)), row.text) << row.value << " in base " << row.radix;
    }
    EXPECT_EQ(Shown(FormatBase(std::numeric_limits<double>::max(), 2)).size(), 1024U);
}

TEST(RoundNumber, RoundsHalfToEvenOnDecimalDigits) {
    struct Row {
        double value;
        double precision;
        double expected;
    };
    constexpr Row kRows[] = {
        {4, 0, 4},
        {2.5, 0, 2},
        {3.5, 0, 4},
        {-7.5, 0, -8},
        {-0.5, 0, 0},
        {4.35, 1, 4.4},
        {4.45, 1, 4.4},
        {1.005, 2, 1},
        {1234.5678, 2, 1234.57},
        {12450, -2, 12400},
        {12350, -2, 12400},
        {50, -2, 0},
        {150, -2, 200},
        {49, -2, 0},
        {5, -400, 0},
        {5, 1e300, 5},
        {5, -1e300, 0},
        {6.022e-23, 24, 6e-23},
        {9.996, 2, 10},
        {99.5, 0, 100},
        {1e21, 2, 1e21},
        {5e-324, 1000, 5e-324},
        {1.7976931348623157e308, -308, kInfinity},
        {kInfinity, 0, kInfinity},
    };
    for (const Row& row : kRows) {
        const double rounded = RoundNumber(row.value, row.precision);
        EXPECT_EQ(rounded, row.expected) << row.value << " to " << row.precision;
        EXPECT_FALSE(rounded == 0 && std::signbit(rounded));
    }
    EXPECT_TRUE(std::isnan(RoundNumber(kNaN, 0)));
}

}  // namespace
}  // namespace tn61131::jsonata
