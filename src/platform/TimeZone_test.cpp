#include <array>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "platform/Time.h"

namespace {

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kTicksPerMinute = 600'000'000;

std::int64_t At(int year, int month, int day, int hour, int minute, int second = 0, int millisecond = 0) {
    CTNTimestamp timestamp;
    EXPECT_TRUE(timestamp.SetDateAndHHMMSSFFF(year, month, day, hour, minute, second, millisecond));
    return timestamp.GetTicks();
}

std::string TextOf(std::int64_t ticks) {
    std::array<char, 40> buffer{};
    const unsigned int length = CTNTimestamp(ticks).ToText(buffer.data(), buffer.size());
    return {buffer.data(), length};
}

/// The instant of a local time found by search: the earliest one that shows it. A local time that none shows is moved
/// forward by the size of the gap, which is what the clock jumps by at the first instant that shows something later.
std::int64_t SearchUTC(const CTNTimeZone& zone, std::int64_t local) {
    constexpr std::int64_t kReach = 27 * 60 * kTicksPerMinute;
    for (std::int64_t utc = local - kReach; utc <= local + kReach; utc += kTicksPerMinute) {
        const std::int64_t shown = zone.ToLocal(utc);
        if (shown == local) return utc;
    }
    std::int64_t before = local - kReach;
    while (zone.ToLocal(before + kTicksPerMinute) < local)
        before += kTicksPerMinute;
    const std::int64_t gap = zone.ToLocal(before + kTicksPerMinute) - zone.ToLocal(before) - kTicksPerMinute;
    return SearchUTC(zone, local + gap);
}

}  // namespace

TEST(CTNTimeZone, KnowsTheNamesOfTheZoneDatabase) {
    for (const char* name : {"UTC", "Europe/Berlin", "America/New_York", "Australia/Lord_Howe", "Asia/Kolkata",
                             "Asia/Calcutta", "Etc/GMT+5", "Pacific/Apia"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(CTNTimeZone::IsKnown(name));
        EXPECT_EQ(CTNTimeZone(name).GetName(), name);
    }
}

TEST(CTNTimeZone, UnknownNameGivesUTC) {
    const std::string longName(100'000, 'x');
    for (const std::string& name :
         {std::string(), std::string("Europe/Atlantis"), std::string("GMT+3"), std::string("Etc/Unknown"),
          std::string("\xFF\xFE"), longName, std::string("UTC\0", 4), std::string("Europe/Berlin ")}) {
        SCOPED_TRACE(name.substr(0, 20));
        EXPECT_FALSE(CTNTimeZone::IsKnown(name));
        const CTNTimeZone zone(name);
        EXPECT_EQ(zone.GetName(), "UTC");
        EXPECT_EQ(zone.ToLocal(123), 123);
        EXPECT_EQ(zone.ToUTC(123), 123);
    }
}

TEST(CTNTimeZone, CopiesShareTheDataAndMovedFromZonesStayUsable) {
    CTNTimeZone zone("Europe/Berlin");
    const CTNTimeZone copy(zone);
    EXPECT_EQ(&copy.GetData(), &zone.GetData());
    const CTNTimeZone moved(std::move(zone));
    EXPECT_EQ(moved.GetName(), "Europe/Berlin");
    EXPECT_FALSE(zone.GetName().empty());  // NOLINT(bugprone-use-after-move)
    CTNTimeZone assigned;
    EXPECT_EQ(assigned.GetName(), "UTC");
    assigned = copy;
    EXPECT_EQ(assigned.GetName(), "Europe/Berlin");
}

TEST(CTNTimeZone, LocalTimeFollowsDaylightSaving) {
    struct Row {
        const char* zone;
        std::int64_t utc;
        const char* local;
    };
    const Row rows[] = {
        {"Europe/Berlin", At(2024, 3, 31, 0, 59, 59, 999), "2024-03-31 01:59:59.999"},
        {"Europe/Berlin", At(2024, 3, 31, 1, 0), "2024-03-31 03:00:00.000"},
        {"Europe/Berlin", At(2024, 10, 27, 0, 59, 59, 999), "2024-10-27 02:59:59.999"},
        {"Europe/Berlin", At(2024, 10, 27, 1, 0), "2024-10-27 02:00:00.000"},
        {"America/New_York", At(2024, 3, 10, 6, 59, 59), "2024-03-10 01:59:59.000"},
        {"America/New_York", At(2024, 3, 10, 7, 0), "2024-03-10 03:00:00.000"},
        {"America/New_York", At(2024, 11, 3, 5, 59), "2024-11-03 01:59:00.000"},
        {"America/New_York", At(2024, 11, 3, 6, 0), "2024-11-03 01:00:00.000"},
        // Half an hour of daylight saving, on the southern hemisphere.
        {"Australia/Lord_Howe", At(2024, 4, 6, 14, 59), "2024-04-07 01:59:00.000"},
        {"Australia/Lord_Howe", At(2024, 4, 6, 15, 0), "2024-04-07 01:30:00.000"},
        {"Australia/Lord_Howe", At(2024, 10, 5, 15, 29), "2024-10-06 01:59:00.000"},
        {"Australia/Lord_Howe", At(2024, 10, 5, 15, 30), "2024-10-06 02:30:00.000"},
        {"Asia/Kolkata", At(2024, 1, 1, 0, 0), "2024-01-01 05:30:00.000"},
        // A whole day skipped.
        {"Pacific/Apia", At(2011, 12, 30, 9, 59), "2011-12-29 23:59:00.000"},
        {"Pacific/Apia", At(2011, 12, 30, 10, 0), "2011-12-31 00:00:00.000"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.zone << ' ' << row.local);
        EXPECT_EQ(TextOf(CTNTimeZone(row.zone).ToLocal(row.utc)), row.local);
    }
}

TEST(CTNTimeZone, UTCOfMissingAndDoubleLocalTimes) {
    struct Row {
        const char* zone;
        std::int64_t local;
        std::int64_t utc;
        const char* why;
    };
    const Row rows[] = {
        {"Europe/Berlin", At(2024, 3, 31, 1, 59), At(2024, 3, 31, 0, 59), "last before the gap"},
        {"Europe/Berlin", At(2024, 3, 31, 2, 0), At(2024, 3, 31, 1, 0), "in the gap, is 03:00"},
        {"Europe/Berlin", At(2024, 3, 31, 2, 30), At(2024, 3, 31, 1, 30), "in the gap, is 03:30"},
        {"Europe/Berlin", At(2024, 3, 31, 3, 0), At(2024, 3, 31, 1, 0), "first behind the gap"},
        {"Europe/Berlin", At(2024, 10, 27, 1, 59), At(2024, 10, 26, 23, 59), "last before the overlap"},
        {"Europe/Berlin", At(2024, 10, 27, 2, 0), At(2024, 10, 27, 0, 0), "double, the earlier"},
        {"Europe/Berlin", At(2024, 10, 27, 2, 59, 59, 999), At(2024, 10, 27, 0, 59, 59, 999), "double, the earlier"},
        {"Europe/Berlin", At(2024, 10, 27, 3, 0), At(2024, 10, 27, 2, 0), "first behind the overlap"},
        {"America/New_York", At(2024, 3, 10, 2, 30), At(2024, 3, 10, 7, 30), "in the gap, is 03:30"},
        {"America/New_York", At(2024, 11, 3, 1, 30), At(2024, 11, 3, 5, 30), "double, the earlier"},
        {"America/New_York", At(2024, 11, 3, 2, 0), At(2024, 11, 3, 7, 0), "first behind the overlap"},
        {"Australia/Lord_Howe", At(2024, 10, 6, 2, 15), At(2024, 10, 5, 15, 45), "gap of half an hour, is 02:45"},
        {"Australia/Lord_Howe", At(2024, 4, 7, 1, 45), At(2024, 4, 6, 14, 45), "double, the earlier"},
        {"Pacific/Apia", At(2011, 12, 30, 12, 0), At(2011, 12, 30, 22, 0), "skipped day, is noon of the next"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.zone << ' ' << TextOf(row.local) << ": " << row.why);
        EXPECT_EQ(TextOf(CTNTimeZone(row.zone).ToUTC(row.local)), TextOf(row.utc));
    }
}

TEST(CTNTimeZone, UTCOfAnyLocalTimeIsWhatSearchingFinds) {
    std::mt19937_64 random(20240131);
    const std::int64_t first = At(1975, 1, 1, 0, 0);
    const std::int64_t last = At(2060, 1, 1, 0, 0);
    for (const char* name : {"Europe/Berlin", "America/New_York", "Australia/Lord_Howe"}) {
        const CTNTimeZone zone(name);
        // Every clock change of the years, hour by hour, with the minutes around it; and some times in between.
        for (int year = 1980; year < 2050; year += 7) {
            std::int64_t utc = At(year, 1, 1, 0, 0);
            for (int hour = 0; hour < 365 * 24; ++hour, utc += 60 * kTicksPerMinute) {
                const std::int64_t step = zone.ToLocal(utc + 60 * kTicksPerMinute) - zone.ToLocal(utc);
                for (int minute = -90; step != 60 * kTicksPerMinute && minute <= 150; minute += 15) {
                    const std::int64_t local = zone.ToLocal(utc) + minute * kTicksPerMinute;
                    ASSERT_EQ(zone.ToUTC(local), SearchUTC(zone, local)) << name << ' ' << TextOf(local);
                }
            }
        }
        for (int i = 0; i < 50; ++i) {
            std::int64_t local = first + static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(last - first));
            local -= local % kTicksPerMinute;
            ASSERT_EQ(zone.ToUTC(local), SearchUTC(zone, local)) << name << ' ' << TextOf(local);
        }
    }
}

TEST(CTNTimeZone, TicksBelowTheMillisecondAreKept) {
    const CTNTimeZone zone("Europe/Berlin");
    const std::int64_t summer = At(2024, 3, 31, 1, 0);
    EXPECT_EQ(zone.ToLocal(summer - 1), summer - 1 + 60 * kTicksPerMinute);
    EXPECT_EQ(zone.ToLocal(summer + 1), summer + 1 + 120 * kTicksPerMinute);
    EXPECT_EQ(zone.ToUTC(summer + 120 * kTicksPerMinute + 1), summer + 1);
}

TEST(CTNTimeZone, ConversionSaturatesAtTheLimits) {
    const CTNTimeZone east("Asia/Kolkata");
    const CTNTimeZone west("America/New_York");
    EXPECT_EQ(east.ToLocal(kMax), kMax);
    EXPECT_EQ(west.ToLocal(kMin), kMin);
    EXPECT_EQ(west.ToUTC(kMax), kMax);
    EXPECT_EQ(east.ToUTC(kMin), kMin);
    EXPECT_LT(east.ToUTC(kMax), kMax);
    EXPECT_GT(west.ToUTC(kMin), kMin);
}

TEST(CTNTimestamp, ConvertsBetweenLocalAndUTCInPlace) {
    const CTNTimeZone zone("Europe/Berlin");
    CTNTimestamp timestamp(At(2024, 7, 1, 12, 0));
    timestamp.ToLocalTime(zone);
    EXPECT_EQ(timestamp.GetTicks(), At(2024, 7, 1, 14, 0));
    timestamp.ToUTC(zone);
    EXPECT_EQ(timestamp.GetTicks(), At(2024, 7, 1, 12, 0));
}
