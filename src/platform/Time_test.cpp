#include "platform/Time.h"

#include <array>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr int kMaxInt = std::numeric_limits<int>::max();

TimestampStruct FieldsOf(std::int64_t ticks) {
    TimestampStruct fields{};
    CTNTimestamp::GetTimestampStruct(ticks, fields);
    return fields;
}

std::string TextOf(std::int64_t ticks) {
    std::array<char, 40> buffer{};
    const unsigned int length = CTNTimestamp(ticks).ToText(buffer.data(), buffer.size());
    return {buffer.data(), length};
}

bool IsLeap(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int DaysOfMonth(int year, int month) {
    constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeap(year) ? 29 : kDays.at(static_cast<std::size_t>(month - 1));
}

}  // namespace

TEST(TicksFromMilliseconds, ConvertsAndSaturates) {
    struct Row {
        std::int64_t milliseconds;
        std::int64_t ticks;
    };
    constexpr Row kRows[] = {
        {0, 0},
        {1, 10'000},
        {-1, -10'000},
        {922'337'203'685'477, 9'223'372'036'854'770'000},
        {922'337'203'685'478, kMax},
        {-922'337'203'685'477, -9'223'372'036'854'770'000},
        {-922'337'203'685'478, kMin},
        {kMax, kMax},
        {kMin, kMin},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.milliseconds);
        EXPECT_EQ(TicksFromMilliseconds(row.milliseconds), row.ticks);
        EXPECT_EQ(CTNTimeInterval::FromMilliseconds(row.milliseconds).GetTicks(), row.ticks);
        CTNTimestamp timestamp;
        timestamp.SetVMTimeMS(row.milliseconds);
        EXPECT_EQ(timestamp.GetTicks(), row.ticks);
    }
}

TEST(CTNTimeInterval, MillisecondsTruncateTowardZero) {
    EXPECT_EQ(CTNTimeInterval(19'999).GetMilliseconds(), 1);
    EXPECT_EQ(CTNTimeInterval(-19'999).GetMilliseconds(), -1);
    EXPECT_EQ(CTNTimeInterval().GetTicks(), 0);
}

TEST(CTNTimestamp, VMTimeIsTicksDividedByTenThousand) {
    EXPECT_EQ(CTNTimestamp(19'999).GetVMTimeMS(), 1);
    EXPECT_EQ(CTNTimestamp(-19'999).GetVMTimeMS(), -1);
    EXPECT_EQ(CTNTimestamp(kMax).GetVMTimeMS(), 922'337'203'685'477);
}

TEST(CTNTimestamp, SetUTCReadsTheClock) {
    CTNTimestamp timestamp;
    timestamp.SetUTC();
    TimestampStruct fields = FieldsOf(timestamp.GetTicks());
    EXPECT_GE(fields.year, 2024);
    EXPECT_LT(fields.year, 2200);
}

TEST(CTNTimestamp, SetDateAcceptsExactlyTheDatesOfTheCalendar) {
    struct Row {
        int year;
        int month;
        int day;
        std::int64_t days;  // -1: refused
        const char* why;
    };
    constexpr Row kRows[] = {
        {1970, 1, 1, 0, "first day"},
        {1969, 12, 31, -1, "before the first day"},
        {1970, 1, 2, 1, "second day"},
        {1972, 2, 29, 789, "leap day"},
        {2000, 2, 29, 11016, "leap day of a century divisible by 400"},
        {2021, 2, 28, 18686, "last of February"},
        {2021, 2, 29, -1, "no leap year"},
        {2100, 2, 29, -1, "century is no leap year"},
        {2024, 2, 30, -1, "no such day"},
        {2024, 4, 31, -1, "30 days"},
        {2024, 12, 32, -1, "day too large"},
        {2024, 1, 0, -1, "day zero"},
        {2024, 1, -1, -1, "day negative"},
        {2024, 1, 257, -1, "day that is 1 in eight bits"},
        {2024, 0, 1, -1, "month zero"},
        {2024, 13, 1, -1, "month too large"},
        {2024, -1, 1, -1, "month negative"},
        {2024, 257, 1, -1, "month that is 1 in eight bits"},
        {9999, 12, 31, 2932896, "last day"},
        {10000, 1, 1, -1, "after the last day"},
        {0, 0, 0, -1, "zeros"},
        {std::numeric_limits<int>::max(), 1, 1, -1, "largest year"},
        {std::numeric_limits<int>::min(), 1, 1, -1, "smallest year"},
        {2024, std::numeric_limits<int>::min(), 1, -1, "smallest month"},
        {2024, 1, std::numeric_limits<int>::max(), -1, "largest day"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.why);
        CTNTimestamp timestamp(42);
        EXPECT_EQ(timestamp.SetDate(row.year, row.month, row.day), row.days >= 0);
        EXPECT_EQ(timestamp.GetTicks(), row.days >= 0 ? row.days * kTicksPerDay : 42);
    }
}

TEST(CTNTimestamp, SetDateAndTimeTestsEveryField) {
    struct Row {
        int hour;
        int minute;
        int second;
        int millisecond;
        std::int64_t timeOfDayMs;  // -1: refused
    };
    constexpr Row kRows[] = {
        {0, 0, 0, 0, 0},
        {23, 59, 59, 999, 86'399'999},
        {13, 5, 9, 250, 47'109'250},
        {24, 0, 0, 0, -1},
        {-1, 0, 0, 0, -1},
        {0, 60, 0, 0, -1},
        {0, -1, 0, 0, -1},
        {0, 0, 60, 0, -1},
        {0, 0, -1, 0, -1},
        {0, 0, 0, 1000, -1},
        {0, 0, 0, -1, -1},
        {kMaxInt, 0, 0, 0, -1},
        {0, kMaxInt, 0, 0, -1},
        {0, 0, kMaxInt, 0, -1},
        {0, 0, 0, kMaxInt, -1},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(::testing::Message()
                     << row.hour << ':' << row.minute << ':' << row.second << '.' << row.millisecond);
        CTNTimestamp timestamp(42);
        EXPECT_EQ(timestamp.SetDateAndHHMMSSFFF(1970, 1, 2, row.hour, row.minute, row.second, row.millisecond),
                  row.timeOfDayMs >= 0);
        EXPECT_EQ(timestamp.GetTicks(),
                  row.timeOfDayMs >= 0 ? kTicksPerDay + row.timeOfDayMs * kTicksPerMillisecond : 42);
    }
    CTNTimestamp timestamp(42);
    EXPECT_FALSE(timestamp.SetDateAndHHMMSSFFF(2021, 2, 29, 0, 0, 0, 0));
    EXPECT_EQ(timestamp.GetTicks(), 42);
}

// The calendar counted day by day from the epoch, against the closed formulas, in both directions.
TEST(CTNTimestamp, FieldsOfEveryDayFollowTheCalendar) {
    int weekDay = 4;  // 1970-01-01 was a Thursday
    std::int64_t days = 0;
    for (int year = 1970; year <= 9999; ++year) {
        int dayOfYear = 0;
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= DaysOfMonth(year, month); ++day, ++days, weekDay = (weekDay + 1) % 7) {
                ++dayOfYear;
                const TimestampStruct fields = FieldsOf(days * kTicksPerDay + kTicksPerDay - 1);
                CTNTimestamp timestamp;
                const bool accepted = timestamp.SetDate(year, month, day);
                ASSERT_TRUE(accepted && timestamp.GetTicks() == days * kTicksPerDay && fields.year == year &&
                            fields.month == month && fields.day == day && fields.dayOfYear == dayOfYear &&
                            fields.dayOfWeek == weekDay && fields.hour == 23 && fields.minute == 59 &&
                            fields.second == 59 && fields.millisecond == 999)
                    << year << '-' << month << '-' << day;
            }
        }
    }
}

TEST(CTNTimestamp, FieldsBeforeTheEpochRoundDown) {
    const TimestampStruct fields = FieldsOf(-1);
    EXPECT_EQ(fields.year, 1969);
    EXPECT_EQ(fields.month, 12);
    EXPECT_EQ(fields.day, 31);
    EXPECT_EQ(fields.dayOfYear, 365);
    EXPECT_EQ(fields.dayOfWeek, 3);
    EXPECT_EQ(fields.hour, 23);
    EXPECT_EQ(fields.millisecond, 999);
}

TEST(CTNTimestamp, TextIsIsoLayout) {
    struct Row {
        std::int64_t ticks;
        const char* text;
    };
    constexpr Row kRows[] = {
        {0, "1970-01-01 00:00:00.000"},
        {17'067'063'092'500'000, "2024-01-31 13:05:09.250"},
        {17'067'063'092'509'999, "2024-01-31 13:05:09.250"},
        {-621'987'552'000'000'000, "-0001-01-01 00:00:00.000"},
        {-621'355'968'000'000'001, "0000-12-31 23:59:59.999"},
        {-1, "1969-12-31 23:59:59.999"},
        {kMax, "31197-09-14 02:48:05.477"},
        {kMin, "-27258-04-19 21:11:54.522"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.ticks);
        EXPECT_EQ(TextOf(row.ticks), row.text);
    }
}

TEST(CTNTimestamp, TextIsBoundedAndTerminated) {
    std::array<char, 8> buffer{};
    buffer.fill('#');
    EXPECT_EQ(CTNTimestamp().ToText(buffer.data(), 5), 4U);
    EXPECT_EQ(std::string(buffer.data()), "1970");
    EXPECT_EQ(buffer[5], '#');
    EXPECT_EQ(CTNTimestamp().ToText(buffer.data(), 1), 0U);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_EQ(CTNTimestamp().ToText(nullptr, 0), 0U);
}
