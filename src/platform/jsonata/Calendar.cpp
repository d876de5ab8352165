#include "platform/jsonata/Calendar.h"

#include <cstddef>

namespace tn61131::jsonata {

namespace {

// The Gregorian calendar repeats every 400 years, counted here from the first of March, so that the leap day is the
// last day of a year.
constexpr std::int64_t kDaysPerEra = 146'097;
constexpr std::int64_t kDaysToEpoch = 719'468;  // from 0000-03-01

constexpr std::int64_t FloorDivide(std::int64_t value, std::int64_t divisor) noexcept {
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

}  // namespace

std::int64_t DaysFromDate(std::int64_t year, int month, std::int64_t day) noexcept {
    if (month <= 2) --year;
    const std::int64_t era = FloorDivide(year, 400);
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t monthFromMarch = (month + 9) % 12;
    const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * kDaysPerEra + dayOfEra - kDaysToEpoch;
}

CalendarDate DateFromDays(std::int64_t days) noexcept {
    days += kDaysToEpoch;
    const std::int64_t era = FloorDivide(days, kDaysPerEra);
    const std::int64_t dayOfEra = days - era * kDaysPerEra;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    CalendarDate date;
    date.day = static_cast<int>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
    date.month = static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
    date.year = yearOfEra + era * 400 + (date.month <= 2 ? 1 : 0);
    return date;
}

int WeekdayOf(std::int64_t days) noexcept {
    // 1970-01-01 was a Thursday.
    const std::int64_t fromMonday = days + 3;
    return static_cast<int>(fromMonday - FloorDivide(fromMonday, 7) * 7) + 1;
}

DateTimeFields FieldsFromMillis(std::int64_t millis) noexcept {
    const std::int64_t days = FloorDivide(millis, kMillisPerDay);
    const auto timeOfDay = static_cast<int>(millis - days * kMillisPerDay);
    DateTimeFields fields;
    fields.date = DateFromDays(days);
    fields.dayOfYear = static_cast<int>(days - DaysFromDate(fields.date.year, 1, 1)) + 1;
    fields.weekday = WeekdayOf(days);
    const std::int64_t thursday = days + 4 - fields.weekday;
    fields.thursday = DateFromDays(thursday);
    fields.weekOfYear = static_cast<int>(thursday - DaysFromDate(fields.thursday.year, 1, 1)) / 7 + 1;
    fields.weekOfMonth = (fields.thursday.day - 1) / 7 + 1;
    fields.hour = timeOfDay / 3'600'000;
    fields.minute = timeOfDay / 60'000 % 60;
    fields.second = timeOfDay / 1000 % 60;
    fields.millisecond = timeOfDay % 1000;
    return fields;
}

int MillisOfFraction(std::string_view digits) noexcept {
    int millis = 0;
    for (std::size_t at = 0; at < 3; ++at)
        millis = millis * 10 + (at < digits.size() ? digits[at] - '0' : 0);
    return millis;
}

}  // namespace tn61131::jsonata
