#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/Time.h"

class CTextOutput;

/// A BCP 47 language tag, "en-US" by default. Any text may be given; where its locale is needed, an unknown one counts
/// as en-US.
class TN61131_API CTNLocale {
 public:
    CTNLocale();
    explicit CTNLocale(std::string_view tag);
    [[nodiscard]] const std::string& GetTag() const noexcept { return tag_; }
    /// True for a well-formed tag whose language the platform knows.
    [[nodiscard]] static bool IsKnown(std::string_view tag);
    friend bool operator==(const CTNLocale&, const CTNLocale&) = default;

 private:
    std::string tag_;
};

/// A date and time pattern of Unicode Technical Standard 35 (CLDR), parsed once. Formatting keeps the formatter of the
/// locale and time zone it was last used with; an object is used by one thread at a time. Dates are Gregorian in every
/// locale, unless its tag names a calendar ("th-TH-u-ca-buddhist"). Without a pattern nothing is written.
class TN61131_API DateTimeFormat {
 public:
    DateTimeFormat();
    DateTimeFormat(const DateTimeFormat&);
    DateTimeFormat(DateTimeFormat&&) noexcept;
    DateTimeFormat& operator=(const DateTimeFormat&);
    DateTimeFormat& operator=(DateTimeFormat&&) noexcept;
    ~DateTimeFormat();

    /// Takes a pattern in UTF-8. False, and the old pattern kept, when it is none: an empty text, an ASCII letter that
    /// is no field or stands more often than its field allows, an open quote.
    [[nodiscard]] bool ParseDateTimeFormat(std::string_view pattern);
    [[nodiscard]] const std::string& GetPattern() const noexcept { return pattern_; }
    /// Writes a timestamp, in the zone's local time where a zone is given, in UTC where it is null.
    void FormatDateTime(const CTNLocale& locale, const CTNTimeZone* timeZone, const CTNTimestamp& timestamp,
                        CTextOutput& output) const;

 private:
    struct Formatter;
    std::string pattern_;
    mutable std::unique_ptr<Formatter> formatter_;
};

/// A number pattern of Unicode Technical Standard 35, parsed once; symbols come from the locale. Used by one thread at
/// a time. What does not fit the digits is rounded by the shortest decimal digits of the number, halves to even.
/// Without a pattern nothing is written.
class TN61131_API DecimalFormat {
 public:
    DecimalFormat();
    DecimalFormat(const DecimalFormat&) = delete;
    DecimalFormat& operator=(const DecimalFormat&) = delete;
    DecimalFormat(DecimalFormat&&) noexcept;
    DecimalFormat& operator=(DecimalFormat&&) noexcept;
    ~DecimalFormat();

    /// Takes a pattern in UTF-8. False, and the old pattern kept, when it is none or has no digit.
    [[nodiscard]] bool ParseDecimalFormat(std::string_view pattern);
    [[nodiscard]] const std::string& GetPattern() const noexcept { return pattern_; }
    void FormatDouble(const CTNLocale& locale, double value, CTextOutput& output) const;
    void FormatInt64(const CTNLocale& locale, std::int64_t value, CTextOutput& output) const;
    void FormatUInt64(const CTNLocale& locale, std::uint64_t value, CTextOutput& output) const;

 private:
    struct Formatter;
    template <typename Number>
    void Format(const CTNLocale& locale, Number number, CTextOutput& output) const;

    std::string pattern_;
    mutable std::unique_ptr<Formatter> formatter_;
};

/// How a client wants dates, times and numbers shown. Defaults: en-US, UTC, "yyyy-MM-dd", "HH:mm:ss" and
/// "yyyy-MM-dd HH:mm:ss". Like its formats, used by one thread at a time.
class TN61131_API CDataFormatSettings {
 public:
    CDataFormatSettings();

    [[nodiscard]] const CTNLocale& GetLocale() const noexcept { return locale_; }
    [[nodiscard]] const CTNTimeZone& GetTimeZone() const noexcept { return timeZone_; }
    [[nodiscard]] const DateTimeFormat& GetDateFormat() const noexcept { return dateFormat_; }
    [[nodiscard]] const DateTimeFormat& GetTimeFormat() const noexcept { return timeFormat_; }
    [[nodiscard]] const DateTimeFormat& GetDateAndTimeFormat() const noexcept { return dateAndTimeFormat_; }
    void SetLocale(CTNLocale locale) { locale_ = std::move(locale); }
    void SetTimeZone(CTNTimeZone timeZone) { timeZone_ = std::move(timeZone); }
    /// Each is false, and the old pattern kept, for a text that is no pattern.
    [[nodiscard]] bool SetDateFormat(std::string_view pattern);
    [[nodiscard]] bool SetTimeFormat(std::string_view pattern);
    [[nodiscard]] bool SetDateAndTimeFormat(std::string_view pattern);
    /// A timestamp in ticks by the date and time format, the locale and the time zone.
    void FormatDateAndTime(std::int64_t ticks, CTextOutput& output) const;

 private:
    CTNLocale locale_;
    CTNTimeZone timeZone_;
    DateTimeFormat dateFormat_;
    DateTimeFormat timeFormat_;
    DateTimeFormat dateAndTimeFormat_;
};
