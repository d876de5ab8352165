#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Export.h"

/// Ticks are 100 ns.
inline constexpr std::int64_t kTicksPerMillisecond = 10'000;
inline constexpr std::int64_t kTicksPerDay = 864'000'000'000;
inline constexpr std::int64_t kMillisecondsPerDay = 86'400'000;

/// Milliseconds to ticks, saturating at the 64-bit limits.
[[nodiscard]] TN61131_API std::int64_t TicksFromMilliseconds(std::int64_t milliseconds) noexcept;

/// A span of time in ticks.
class TN61131_API CTNTimeInterval {
 public:
    CTNTimeInterval() = default;
    explicit CTNTimeInterval(std::int64_t ticks) noexcept : ticks_(ticks) {}
    [[nodiscard]] static CTNTimeInterval FromMilliseconds(std::int64_t milliseconds) noexcept {
        return CTNTimeInterval(TicksFromMilliseconds(milliseconds));
    }
    [[nodiscard]] std::int64_t GetTicks() const noexcept { return ticks_; }
    /// Truncated toward zero.
    [[nodiscard]] std::int64_t GetMilliseconds() const noexcept { return ticks_ / kTicksPerMillisecond; }

 private:
    std::int64_t ticks_ = 0;
};

/// An IANA time zone. Copies share the zone's data; the object is constant after construction.
class TN61131_API CTNTimeZone {
 public:
    /// UTC.
    CTNTimeZone();
    /// An unknown name gives UTC; ask IsKnown() first where that matters.
    explicit CTNTimeZone(std::string_view name);
    CTNTimeZone(const CTNTimeZone&);
    CTNTimeZone(CTNTimeZone&&) noexcept;
    CTNTimeZone& operator=(const CTNTimeZone&);
    CTNTimeZone& operator=(CTNTimeZone&&) noexcept;
    ~CTNTimeZone();

    [[nodiscard]] static bool IsKnown(std::string_view name);
    [[nodiscard]] const std::string& GetName() const noexcept;
    /// Local time of a UTC time, both in ticks, saturating.
    [[nodiscard]] std::int64_t ToLocal(std::int64_t utcTicks) const;
    /// UTC time of a local time. A local time in a spring gap moves forward by the gap, an ambiguous one takes the
    /// earlier instant.
    [[nodiscard]] std::int64_t ToUTC(std::int64_t localTicks) const;

    /// The implementation behind the interface, for the formatting classes of the platform layer only.
    struct Data;
    [[nodiscard]] const Data& GetData() const noexcept { return *data_; }

 private:
    std::shared_ptr<const Data> data_;
};

/// Calendar fields of a timestamp, proleptic Gregorian calendar.
struct TimestampStruct {
    int year;
    int month;        ///< 1 to 12
    int day;          ///< 1 to 31
    int dayOfYear;    ///< 1 to 366
    int dayOfWeek;    ///< 0 Sunday to 6 Saturday
    int hour;         ///< 0 to 23
    int minute;       ///< 0 to 59
    int second;       ///< 0 to 59
    int millisecond;  ///< 0 to 999
};

/// A point in time: a signed 64-bit count of ticks since 1970-01-01 00:00:00 UTC. VM time is the same in milliseconds.
class TN61131_API CTNTimestamp {
 public:
    CTNTimestamp() = default;
    explicit CTNTimestamp(std::int64_t ticks) noexcept : ticks_(ticks) {}

    [[nodiscard]] std::int64_t GetTicks() const noexcept { return ticks_; }
    void SetTicks(std::int64_t ticks) noexcept { ticks_ = ticks; }
    /// The operating system's clock.
    void SetUTC() noexcept;
    /// Ticks divided by 10000.
    [[nodiscard]] std::int64_t GetVMTimeMS() const noexcept { return ticks_ / kTicksPerMillisecond; }
    /// Saturates at the limits of the tick count.
    void SetVMTimeMS(std::int64_t milliseconds) noexcept { ticks_ = TicksFromMilliseconds(milliseconds); }

    /// Midnight of a date from 1970-01-01 to 9999-12-31. False, and nothing stored, for anything that is no such date.
    [[nodiscard]] bool SetDate(int year, int month, int day) noexcept;
    /// The same with a time of day: hour 0 to 23, minute and second 0 to 59, millisecond 0 to 999.
    [[nodiscard]] bool SetDateAndHHMMSSFFF(int year, int month, int day, int hour, int minute, int second,
                                           int millisecond) noexcept;
    /// Calendar fields of any tick count, rounded down to the millisecond.
    static void GetTimestampStruct(std::int64_t ticks, TimestampStruct& fields) noexcept;

    void ToLocalTime(const CTNTimeZone& timeZone) { ticks_ = timeZone.ToLocal(ticks_); }
    void ToUTC(const CTNTimeZone& timeZone) { ticks_ = timeZone.ToUTC(ticks_); }
    /// "2024-01-31 13:05:09.250" into a buffer, bounded and terminated. Returns the bytes before the zero.
    unsigned int ToText(char* buffer, unsigned int size) const;

 private:
    std::int64_t ticks_ = 0;
};
