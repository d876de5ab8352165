#include "platform/Time.h"

#include <chrono>
#include <limits>

#include "platform/TextOutput.h"

namespace {

constexpr int kFirstYear = 1970;
constexpr int kLastYear = 9999;

/// The greatest multiple of `unit` not above `value`, divided by it; `rest` takes what is left, 0 to unit - 1.
std::int64_t FloorDivide(std::int64_t value, std::int64_t unit, std::int64_t& rest) noexcept {
    std::int64_t quotient = value / unit;
    rest = value % unit;
    if (rest < 0) {
        rest += unit;
        --quotient;
    }
    return quotient;
}

/// Days since the epoch of a date that SetDate() accepts; -1 for any other.
std::int64_t DaysOfDate(int year, int month, int day) noexcept {
    if (year < kFirstYear || year > kLastYear || month < 1 || month > 12 || day < 1 || day > 31) return -1;
    const std::chrono::year_month_day date(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day)));
    if (!date.ok()) return -1;
    return std::chrono::sys_days(date).time_since_epoch().count();
}

bool InRange(int value, int limit) noexcept {
    return value >= 0 && value < limit;
}

}  // namespace

std::int64_t TicksFromMilliseconds(std::int64_t milliseconds) noexcept {
    constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    if (milliseconds > kMax / kTicksPerMillisecond) return kMax;
    if (milliseconds < kMin / kTicksPerMillisecond) return kMin;
    return milliseconds * kTicksPerMillisecond;
}

void CTNTimestamp::SetUTC() noexcept {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    ticks_ = std::chrono::duration_cast<Ticks>(now).count();
}

bool CTNTimestamp::SetDate(int year, int month, int day) noexcept {
    return SetDateAndHHMMSSFFF(year, month, day, 0, 0, 0, 0);
}

bool CTNTimestamp::SetDateAndHHMMSSFFF(int year, int month, int day, int hour, int minute, int second,
                                       int millisecond) noexcept {
    const std::int64_t days = DaysOfDate(year, month, day);
    if (days < 0 || !InRange(hour, 24) || !InRange(minute, 60) || !InRange(second, 60) || !InRange(millisecond, 1000))
        return false;
    const std::int64_t timeOfDayMs = ((hour * 60 + minute) * 60 + second) * 1000 + millisecond;
    ticks_ = days * kTicksPerDay + timeOfDayMs * kTicksPerMillisecond;
    return true;
}

void CTNTimestamp::GetTimestampStruct(std::int64_t ticks, TimestampStruct& fields) noexcept {
    namespace chrono = std::chrono;
    std::int64_t ticksOfDay = 0;
    // 64 bits of ticks are some 29000 years either way: days fit an int, years the calendar of <chrono>.
    const chrono::sys_days day(chrono::days(static_cast<int>(FloorDivide(ticks, kTicksPerDay, ticksOfDay))));
    const chrono::year_month_day date(day);
    fields.year = static_cast<int>(date.year());
    fields.month = static_cast<int>(static_cast<unsigned>(date.month()));
    fields.day = static_cast<int>(static_cast<unsigned>(date.day()));
    const chrono::sys_days newYear = date.year() / chrono::January / 1;
    fields.dayOfYear = static_cast<int>((day - newYear).count()) + 1;
    fields.dayOfWeek = static_cast<int>(chrono::weekday(day).c_encoding());
    const int timeOfDayMs = static_cast<int>(ticksOfDay / kTicksPerMillisecond);
    fields.hour = timeOfDayMs / 3'600'000;
    fields.minute = timeOfDayMs / 60'000 % 60;
    fields.second = timeOfDayMs / 1000 % 60;
    fields.millisecond = timeOfDayMs % 1000;
}

unsigned int CTNTimestamp::ToText(char* buffer, unsigned int size) const {
    CTextOutputString text;
    text.PrintDateAndTime(nullptr, ticks_, ' ');
    return CopyBounded(buffer, size, text.GetText());
}
