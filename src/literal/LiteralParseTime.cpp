#include <algorithm>
#include <string>

#include "diag/Messages.h"
#include "literal/LiteralText.h"
#include "platform/ReadDouble.h"
#include "platform/Time.h"
#include "value/ValueLiteral.h"

using tn61131::Fail;

namespace {

// Behind a word and "#" at the start of the text. The word is not checked: T#, LTIME# and any other are taken alike.
const char* SkipDateTimePrefix(const char* text) noexcept {
    const char* at = text;
    while (IsAsciiLetter(*at) || *at == '_')
        ++at;
    return at != text && *at == '#' ? at + 1 : text;
}

// Moves behind a separator if it is the next character.
bool TakeSeparator(const char*& text, char separator) noexcept {
    if (*text != separator) return false;
    ++text;
    return true;
}

constexpr struct {
    std::string_view name;
    double milliseconds;
} kTimeUnits[] = {{"ms", 1.0}, {"s", 1'000.0}, {"m", 60'000.0}, {"h", 3'600'000.0}, {"d", 86'400'000.0}};

// Milliseconds of a unit; 0 for a name that is none.
double FindTimeUnit(std::string_view name) noexcept {
    for (const auto& unit : kTimeUnits) {
        if (EqualsIgnoringCase(unit.name, name)) return unit.milliseconds;
    }
    return 0;
}

// Digits and points at the start of `text`, underscores dropped; `text` moves behind them.
std::string TakeNumberPart(const char*& text) {
    std::string number;
    for (; IsAsciiDigit(*text) || *text == '_' || *text == '.'; ++text) {
        if (*text != '_') number.push_back(*text);
    }
    return number;
}

std::string_view TakeLetters(const char*& text) noexcept {
    const char* const start = text;
    while (IsAsciiLetter(*text))
        ++text;
    return {start, static_cast<std::size_t>(text - start)};
}

// One component like "1.5h" at the start of `text`, rounded half up to milliseconds.
bool ReadDurationComponent(CErrorLog& log, const ErrorLocation& location, const char*& text,
                           std::int64_t& milliseconds) {
    const char* const start = text;
    const std::string number = TakeNumberPart(text);
    if (number.empty()) return Fail<Message::InvalidDuration>(log, location, start);
    const std::string_view unit = TakeLetters(text);
    if (unit.empty()) return Fail<Message::MissingTimeUnit>(log, location, number);
    const double factor = FindTimeUnit(unit);
    if (factor == 0) return Fail<Message::InvalidTimeUnit>(log, location, unit);
    const char* digits = number.c_str();
    milliseconds = SaturateToInt64(tn_strtod(digits) * factor + 0.5);
    return true;
}

// A number of a date or time. What does not fit in an int comes out negative and is refused with the date.
int ReadField(const char*& text) noexcept {
    return static_cast<int>(ReadUnsigned32(text));
}

struct DateFields {
    int year = 0;
    int month = 1;
    int day = 1;
};

// "2024", "2024-06" or "2024-06-15" at the start of `text`. True when the day was there.
bool ReadDateFields(const char*& text, DateFields& fields) noexcept {
    fields.year = ReadField(text);
    if (!TakeSeparator(text, '-')) return false;
    fields.month = ReadField(text);
    if (!TakeSeparator(text, '-')) return false;
    fields.day = ReadField(text);
    return true;
}

struct TimeFields {
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

// "3", "3:04" or "3:04:05.5" at the start of `text`.
void ReadTimeFields(const char*& text, TimeFields& fields) noexcept {
    fields.hour = ReadField(text);
    if (!TakeSeparator(text, ':')) return;
    fields.minute = ReadField(text);
    if (!TakeSeparator(text, ':')) return;
    const double seconds = tn_strtod(text);
    // The neighbours of the valid range stand for all that lies outside.
    fields.second = static_cast<int>(std::clamp<std::int64_t>(SaturateToInt64(seconds), -1, 60));
    fields.millisecond = static_cast<int>(SaturateToInt64(seconds * 1000.0) % 1000);
}

}  // namespace

bool CValueLiteral::StringToTime(CErrorLog& log, const ErrorLocation& location, const char* text) {
    ClearValue();
    std::uint64_t total = 0;  // wraps like every sum of durations
    bool negative = false;
    if (!IsEmpty(text)) {
        const char* rest = SkipDateTimePrefix(text);
        negative = TakeSeparator(rest, '-');
        if (!negative) (void)TakeSeparator(rest, '+');
        while (*rest != '\0') {
            std::int64_t component = 0;
            if (!ReadDurationComponent(log, location, rest, component)) return false;
            total += static_cast<std::uint64_t>(component);
        }
    }
    SetScalar(ElementaryType::Time, negative ? 0 - total : total);
    return true;
}

bool CValueLiteral::StringToTimeOfDay(CErrorLog& log, const ErrorLocation& location, const char* text) {
    ClearValue();
    if (IsEmpty(text)) return Fail<Message::CouldNotConvert>(log, location, "", "TIME_OF_DAY");
    const char* rest = SkipDateTimePrefix(text);
    // Nothing is tested for its range: TOD#25:70 counts on, and what leaves 32 bits wraps.
    std::uint32_t milliseconds = ReadUnsigned32(rest) * 3'600'000;
    if (TakeSeparator(rest, ':')) {
        milliseconds += ReadUnsigned32(rest) * 60'000;
        if (TakeSeparator(rest, ':')) milliseconds += SaturateToUInt32(tn_strtod(rest) * 1000.0);
    }
    SetScalar(ElementaryType::TimeOfDay, milliseconds);
    return true;
}

bool CValueLiteral::StringToDate(CErrorLog& log, const ErrorLocation& location, const char* text) {
    ClearValue();
    if (IsEmpty(text)) return Fail<Message::CouldNotConvert>(log, location, "", "DATE");
    const char* rest = SkipDateTimePrefix(text);
    DateFields date;
    (void)ReadDateFields(rest, date);
    CTNTimestamp timestamp;
    if (!timestamp.SetDate(date.year, date.month, date.day)) {
        return Fail<Message::InvalidDate>(log, location);
    }
    SetScalar(ElementaryType::Date, static_cast<std::uint32_t>(timestamp.GetTicks() / kTicksPerDay));
    return true;
}

bool CValueLiteral::StringToDateAndTime(CErrorLog& log, const ErrorLocation& location, const char* text) {
    ClearValue();
    if (IsEmpty(text)) return Fail<Message::CouldNotConvert>(log, location, "", "DATE_AND_TIME");
    const char* rest = SkipDateTimePrefix(text);
    DateFields date;
    TimeFields time;
    if (ReadDateFields(rest, date) && (TakeSeparator(rest, '-') || TakeSeparator(rest, ' ')))
        ReadTimeFields(rest, time);
    CTNTimestamp timestamp;
    if (!timestamp.SetDateAndHHMMSSFFF(date.year, date.month, date.day, time.hour, time.minute, time.second,
                                       time.millisecond)) {
        return Fail<Message::InvalidDate>(log, location);
    }
    SetScalar(ElementaryType::DateAndTime, timestamp.GetVMTimeMS());
    return true;
}
