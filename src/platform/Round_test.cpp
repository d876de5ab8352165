#include "platform/Round.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr int kMinInt = std::numeric_limits<int>::min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

enum class Mode { Places, Significant };

double RoundTo(double value, int digits, Mode mode) {
    return TNRoundFloat::RoundDouble(value, digits, mode == Mode::Places);
}
float RoundTo(float value, int digits, Mode mode) {
    return TNRoundFloat::RoundFloat(value, digits, mode == Mode::Places);
}

void AddOne(std::string& digits) {
    std::size_t at = digits.size();
    while (at > 0 && digits[at - 1] == '9')
        digits[--at] = '0';
    if (at > 0) {
        ++digits[at - 1];
    } else {
        digits.insert(digits.begin(), '1');
    }
}

/// The same rounding by schoolbook arithmetic on the number written out in full, read by strtod(): integer part and
/// fraction as strings of digits, cut at a column, one added at that column when the next digit is 5 or more.
double Model(double value, int digits, Mode mode, const std::string& fixed) {
    const std::size_t point = fixed.find('.');
    std::string whole = fixed.substr(0, point);
    std::string fraction = point == std::string::npos ? std::string() : fixed.substr(point + 1);
    const std::string all = whole + fraction;
    const std::size_t lead = all.find_first_not_of('0');
    if (lead == std::string::npos) return value;
    const int places =
        mode == Mode::Places ? digits : digits - (static_cast<int>(whole.size()) - static_cast<int>(lead));
    std::string result;
    if (places >= 0) {
        const auto kept = static_cast<std::size_t>(places);
        if (kept >= fraction.size()) return value;
        result = whole + fraction.substr(0, kept);
        if (fraction[kept] >= '5') AddOne(result);
        result.insert(result.size() - kept, ".");
    } else {
        const auto cut = static_cast<std::size_t>(-places);
        whole.insert(0, cut, '0');
        result = whole.substr(0, whole.size() - cut);
        if (whole[whole.size() - cut] >= '5') AddOne(result);
        result.append(cut, '0');
    }
    return std::copysign(std::strtod(result.c_str(), nullptr), value);
}

double ReadAs(const char* text, double) {
    return std::strtod(text, nullptr);
}
float ReadAs(const char* text, float) {
    return std::strtof(text, nullptr);
}

/// The number with as few digits as read back to it, found by trying, written out without an exponent.
template <typename Float>
std::string InFull(Float magnitude) {
    std::array<char, 40> text{};
    for (int precision = 0; precision < 17; ++precision) {
        std::snprintf(text.data(), text.size(), "%.*e", precision, static_cast<double>(magnitude));
        if (ReadAs(text.data(), magnitude) == magnitude) break;
    }
    const std::string scientific = text.data();
    const std::size_t mark = scientific.find('e');
    const int exponent = std::atoi(scientific.c_str() + mark + 1);
    std::string digits = scientific.substr(0, 1) + (mark > 2 ? scientific.substr(2, mark - 2) : std::string());
    if (exponent < 0) return "0." + std::string(static_cast<std::size_t>(-exponent - 1), '0') + digits;
    const auto whole = static_cast<std::size_t>(exponent) + 1;
    if (digits.size() <= whole) return digits.append(whole - digits.size(), '0');
    return digits.insert(whole, ".");
}

bool SameBits(double left, double right) {
    return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
}
bool SameBits(float left, float right) {
    return std::bit_cast<std::uint32_t>(left) == std::bit_cast<std::uint32_t>(right);
}

}  // namespace

TEST(TNRoundFloat, RoundsToDecimalPlaces) {
    struct Row {
        double value;
        int places;
        double expected;
        const char* why;
    };
    constexpr Row kRows[] = {
        {2.675, 2, 2.68, "half by its digits, though below half in binary"},
        {1.005, 2, 1.01, "half by its digits"},
        {0.125, 2, 0.13, "exact half"},
        {0.135, 2, 0.14, "half"},
        {2.5, 0, 3.0, "half, away from zero"},
        {-2.5, 0, -3.0, "half, away from zero"},
        {3.5, 0, 4.0, "half"},
        {0.5, 0, 1.0, "half of one"},
        {0.49999999999999994, 0, 0.0, "below half"},
        {-0.5, 0, -1.0, "half of minus one"},
        {-0.4, 0, -0.0, "a zero keeps the sign"},
        {0.4, 0, 0.0, "positive zero"},
        {-0.0, 3, -0.0, "zero stays"},
        {0.0, -3, 0.0, "zero stays"},
        {9.995, 2, 10.0, "carry into a new digit"},
        {999.5, 0, 1000.0, "carry through all digits"},
        {1234.0, -2, 1200.0, "before the point"},
        {1250.0, -2, 1300.0, "half before the point"},
        {-1250.0, -2, -1300.0, "half before the point"},
        {1234.0, -4, 0.0, "below half of the unit"},
        {5000.0, -4, 10000.0, "half of a unit above the number"},
        {4999.0, -4, 0.0, "below half of a unit above the number"},
        {9999.0, -5, 0.0, "unit far above the number"},
        {-1234.0, -400, -0.0, "unit above all numbers"},
        {1.5, 400, 1.5, "more places than digits"},
        {1.5, kMaxInt, 1.5, "most places"},
        {1.5, kMinInt, 0.0, "fewest places"},
        {5e-324, 324, 5e-324, "smallest number"},
        {5e-324, 323, 1e-323, "half of its unit"},
        {5e-324, 322, 0.0, "below its unit"},
        {1.7976931348623157e308, 15, 1.7976931348623157e308, "whole number"},
        {1.7976931348623157e308, -308, kInfinity, "2E308 is no number"},
        {-1.7976931348623157e308, -308, -kInfinity, "-2E308 is no number"},
        {1.7976931348623157e308, -309, 0.0, "less than half"},
        {9007199254740993.0, 0, 9007199254740992.0, "beyond the whole numbers"},
        {123456789012345680.0, -16, 120000000000000000.0, "digits before the point"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(::testing::Message() << row.value << " to " << row.places << ": " << row.why);
        const double rounded = TNRoundFloat::RoundDouble(row.value, row.places, true);
        EXPECT_TRUE(SameBits(rounded, row.expected)) << rounded;
    }
}

TEST(TNRoundFloat, RoundsToSignificantDigits) {
    struct Row {
        double value;
        int digits;
        double expected;
        const char* why;
    };
    constexpr Row kRows[] = {
        {1234.5, 3, 1230.0, "down"},
        {1235.0, 3, 1240.0, "half"},
        {-1235.0, 3, -1240.0, "half"},
        {0.0012345, 4, 0.001235, "half in a small number"},
        {9.99, 2, 10.0, "carry"},
        {1234.5, 5, 1234.5, "all digits"},
        {1234.5, kMaxInt, 1234.5, "more than all digits"},
        {1234.5, 1, 1000.0, "one digit"},
        {0.0, 1, 0.0, "zero"},
        {-0.0, 1, -0.0, "negative zero stays"},
        {1234.5, 0, 0.0, "no digit"},
        {-1234.5, 0, 0.0, "no digit"},
        {9.9, -1, 0.0, "negative count"},
        {9.9, kMinInt, 0.0, "negative count"},
        {1.7976931348623157e308, 1, kInfinity, "2E308 is no number"},
        {5e-324, 1, 5e-324, "smallest number"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(::testing::Message() << row.value << " to " << row.digits << ": " << row.why);
        const double rounded = TNRoundFloat::RoundDouble(row.value, row.digits, false);
        EXPECT_TRUE(SameBits(rounded, row.expected)) << rounded;
    }
}

TEST(TNRoundFloat, SinglePrecisionRoundsItsOwnShortestDigits) {
    EXPECT_EQ(TNRoundFloat::RoundFloat(2.675F, 2, true), 2.68F);
    EXPECT_EQ(TNRoundFloat::RoundFloat(0.15F, 1, true), 0.2F);
    EXPECT_EQ(TNRoundFloat::RoundDouble(static_cast<double>(0.15F), 1, true), 0.2) << "0.15000000596046448";
    EXPECT_EQ(TNRoundFloat::RoundDouble(static_cast<double>(0.35F), 1, true), 0.3) << "0.3499999940395355";
    EXPECT_EQ(TNRoundFloat::RoundFloat(0.35F, 1, true), 0.4F);
    EXPECT_EQ(TNRoundFloat::RoundFloat(3.4028235e38F, 1, false), 3e38F);
    EXPECT_EQ(TNRoundFloat::RoundFloat(3.4028235e38F, 4, false), std::numeric_limits<float>::infinity());
    EXPECT_EQ(TNRoundFloat::RoundFloat(1e-45F, 45, true), 1e-45F);
    EXPECT_EQ(TNRoundFloat::RoundFloat(1e-45F, 44, true), 0.0F);
}

TEST(TNRoundFloat, NaNAndInfinityStay) {
    for (const int digits : {kMinInt, -1, 0, 1, kMaxInt}) {
        for (const bool places : {false, true}) {
            SCOPED_TRACE(digits);
            EXPECT_EQ(TNRoundFloat::RoundDouble(kInfinity, digits, places), kInfinity);
            EXPECT_EQ(TNRoundFloat::RoundDouble(-kInfinity, digits, places), -kInfinity);
            EXPECT_TRUE(std::isnan(TNRoundFloat::RoundDouble(std::nan(""), digits, places)));
            EXPECT_TRUE(std::isnan(TNRoundFloat::RoundFloat(std::nanf(""), digits, places)));
        }
    }
}

TEST(TNRoundFloat, AgreesWithSchoolbookRoundingOfDoubles) {
    std::mt19937_64 random(61131);
    for (int i = 0; i < 20'000; ++i) {
        // Half of the values have few digits, so that exact halves occur.
        const double few = static_cast<double>(static_cast<std::int64_t>(random() % 2'000'001) - 1'000'000) / 1000.0;
        const double any = std::bit_cast<double>(random());
        const double value = i % 2 == 0 ? few : any;
        if (!std::isfinite(value)) continue;
        const Mode mode = random() % 2 == 0 ? Mode::Places : Mode::Significant;
        const int digits = static_cast<int>(random() % 12) - (mode == Mode::Places ? 5 : -1);
        const double expected = Model(value, digits, mode, InFull(std::fabs(value)));
        const double rounded = RoundTo(value, digits, mode);
        ASSERT_TRUE(SameBits(rounded, expected)) << value << ' ' << digits << ": " << rounded << ' ' << expected;
    }
}

TEST(TNRoundFloat, AgreesWithSchoolbookRoundingOfFloats) {
    std::mt19937_64 random(3);
    for (int i = 0; i < 20'000; ++i) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (!std::isfinite(value)) continue;
        const Mode mode = random() % 2 == 0 ? Mode::Places : Mode::Significant;
        const int digits = static_cast<int>(random() % 12) - (mode == Mode::Places ? 5 : -1);
        const std::string full = InFull(std::fabs(value));
        // The model's number in double precision, narrowed: its few digits keep this from rounding twice.
        const auto expected = static_cast<float>(Model(static_cast<double>(value), digits, mode, full));
        const float rounded = RoundTo(value, digits, mode);
        ASSERT_TRUE(SameBits(rounded, expected)) << value << ' ' << digits << ": " << rounded << ' ' << expected;
    }
}

TEST(TNRoundFloat, RoundingAgainChangesNothing) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 20'000; ++i) {
        const double value = std::bit_cast<double>(random());
        const int digits = static_cast<int>(random() % 40) - 20;
        for (const Mode mode : {Mode::Places, Mode::Significant}) {
            const double once = RoundTo(value, digits, mode);
            if (std::isnan(once)) continue;
            ASSERT_TRUE(SameBits(RoundTo(once, digits, mode), once)) << value << ' ' << digits;
        }
    }
}
