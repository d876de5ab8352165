#pragma once

#include <cstdint>
#include <string_view>

namespace tn61131::jsonata {

/// The times that JavaScript knows: milliseconds to both sides of 1970-01-01 00:00 UTC.
inline constexpr double kLargestMillis = 8.64e15;
inline constexpr std::int64_t kMillisPerDay = 86'400'000;

/// A day of the proleptic Gregorian calendar.
struct CalendarDate {
    std::int64_t year = 1970;  ///< astronomical: 0 is 1 BC
    int month = 1;
    int day = 1;
};

/// Days since 1970-01-01; the day may lie outside its month, the month not outside its year. Years up to a million.
[[nodiscard]] std::int64_t DaysFromDate(std::int64_t year, int month, std::int64_t day) noexcept;
[[nodiscard]] CalendarDate DateFromDays(std::int64_t days) noexcept;
/// 1 Monday to 7 Sunday.
[[nodiscard]] int WeekdayOf(std::int64_t days) noexcept;

/// All fields of a time.
struct DateTimeFields {
    CalendarDate date;
    int dayOfYear = 1;
    int weekday = 1;        ///< 1 Monday to 7 Sunday
    CalendarDate thursday;  ///< of the same week, which decides to which year and month the week belongs
    int weekOfYear = 1;     ///< of the thursday's year
    int weekOfMonth = 1;    ///< of the thursday's month
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

/// Milliseconds since 1970-01-01 00:00, up to kLargestMillis and a day.
[[nodiscard]] DateTimeFields FieldsFromMillis(std::int64_t millis) noexcept;

/// Digits behind the point of a second, at least one, in milliseconds; rounded down.
[[nodiscard]] int MillisOfFraction(std::string_view digits) noexcept;

}  // namespace tn61131::jsonata
