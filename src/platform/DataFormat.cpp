#include "platform/DataFormat.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <limits>
#include <utility>

#include <unicode/calendar.h>
#include <unicode/dcfmtsym.h>
#include <unicode/decimfmt.h>
#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include "platform/TextOutput.h"

namespace {

constexpr std::string_view kDefaultLocale = "en-US";

icu::StringPiece ToPiece(std::string_view text) {
    constexpr std::size_t kLongest = std::numeric_limits<std::int32_t>::max();
    return {text.data(), static_cast<std::int32_t>(std::min(text.size(), kLongest))};
}

/// Bogus for what is no well-formed tag.
icu::Locale ParseTag(std::string_view tag) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale locale = icu::Locale::forLanguageTag(ToPiece(tag), status);
    if (U_FAILURE(status) != 0) locale.setToBogus();
    return locale;
}

/// The locale of a tag, en-US for an unknown one: left alone, the library would take the locale of the process.
icu::Locale ResolveLocale(const std::string& tag) {
    return ParseTag(CTNLocale::IsKnown(tag) ? tag : kDefaultLocale);
}

void WriteText(const icu::UnicodeString& text, CTextOutput& output) {
    std::string bytes;
    text.toUTF8String(bytes);
    output.Write(bytes);
}

// --- date and time patterns ---

/// A pattern letter and the lengths of the field that it can stand for.
struct DateField {
    char letter;
    std::uint8_t maxLength;
    bool onlyShortAndLong = false;  ///< lengths 1 and 4
};

/// The widest number that is written padded with zeros.
constexpr std::uint8_t kWidestNumber = 10;

constexpr DateField kDateFields[] = {
    {'G', 5},              // era
    {'y', kWidestNumber},  // year
    {'Y', kWidestNumber},  // year of the week
    {'u', kWidestNumber},  // year, negative before the era
    {'U', 5},              // cyclic year
    {'r', kWidestNumber},  // Gregorian year
    {'Q', 5},              // quarter
    {'q', 5},              // quarter by itself
    {'M', 5},              // month
    {'L', 5},              // month by itself
    {'w', 2},              // week of the year
    {'W', 1},              // week of the month
    {'d', 2},              // day of the month
    {'D', 3},              // day of the year
    {'F', 1},              // day of the week in the month
    {'g', kWidestNumber},  // Julian day
    {'E', 6},              // day of the week
    {'e', 6},              // day of the week by locale
    {'c', 6},              // day of the week by itself
    {'a', 5},              // AM or PM
    {'b', 5},              // the same, noon and midnight
    {'B', 5},              // part of the day
    {'h', 2},              // hour 1 to 12
    {'H', 2},              // hour 0 to 23
    {'K', 2},              // hour 0 to 11
    {'k', 2},              // hour 1 to 24
    {'m', 2},              // minute
    {'s', 2},              // second
    {'S', kWidestNumber},  // fraction of the second
    {'A', kWidestNumber},  // milliseconds of the day
    {'z', 4},              // zone name
    {'Z', 5},              // zone offset
    {'O', 4, true},        // zone offset from GMT
    {'v', 4, true},        // zone name without summer time
    {'V', 4},              // zone identifier or city
    {'X', 5},              // ISO 8601 offset with Z
    {'x', 5},              // ISO 8601 offset
};

bool IsAsciiLetter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsDateField(char letter, std::size_t length) noexcept {
    const auto* const field = std::find_if(std::begin(kDateFields), std::end(kDateFields),
                                           [&](const DateField& f) { return f.letter == letter; });
    if (field == std::end(kDateFields) || length > field->maxLength) return false;
    return !field->onlyShortAndLong || length == 1 || length == field->maxLength;
}

/// The position behind a quoted text that begins at `at`; npos where the quote is not closed. Two quotes in a row are
/// an empty quoted text, so an apostrophe, inside quotes or outside, needs no case of its own.
std::size_t SkipQuoted(std::string_view pattern, std::size_t at) noexcept {
    const std::size_t close = pattern.find('\'', at + 1);
    return close == std::string_view::npos ? close : close + 1;
}

bool IsDateTimePattern(std::string_view pattern) noexcept {
    std::size_t at = 0;
    while (at < pattern.size()) {
        if (pattern[at] == '\'') {
            at = SkipQuoted(pattern, at);
            if (at == std::string_view::npos) return false;
        } else if (IsAsciiLetter(pattern[at])) {
            const std::size_t end = std::min(pattern.find_first_not_of(pattern[at], at), pattern.size());
            if (!IsDateField(pattern[at], end - at)) return false;
            at = end;
        } else {
            ++at;
        }
    }
    return !pattern.empty();
}

/// A zone for a formatter to adopt.
icu::TimeZone* CreateZone(std::string_view name) {
    return icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(ToPiece(name)));
}

/// The Gregorian calendar whatever the locale's custom, unless its tag names one ("-u-ca-buddhist"): the dates of a
/// program are Gregorian. Proleptic, as timestamps are.
std::unique_ptr<icu::Calendar> CreateCalendar(icu::Locale& locale, std::string_view zoneName, UErrorCode& status) {
    UErrorCode keyword = U_ZERO_ERROR;
    std::array<char, 40> calendarName{};
    if (locale.getKeywordValue("calendar", calendarName.data(), static_cast<std::int32_t>(calendarName.size()),
                               keyword) == 0)
        locale.setKeywordValue("calendar", "gregorian", status);
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(CreateZone(zoneName), locale, status));
    constexpr UDate kEarliest = -1e17;  // before all timestamps
    if (auto* gregorian = dynamic_cast<icu::GregorianCalendar*>(calendar.get()); gregorian != nullptr)
        gregorian->setGregorianChange(kEarliest, status);
    return calendar;
}

}  // namespace

// --- CTNLocale ---

CTNLocale::CTNLocale() : tag_(kDefaultLocale) {}

CTNLocale::CTNLocale(std::string_view tag) : tag_(tag) {}

bool CTNLocale::IsKnown(std::string_view tag) {
    const icu::Locale locale = ParseTag(tag);
    if (locale.isBogus() != 0) return false;
    const std::string_view language = locale.getLanguage();
    std::int32_t count = 0;
    const icu::Locale* const available = icu::Locale::getAvailableLocales(count);
    return std::any_of(available, available + count,
                       [&](const icu::Locale& known) { return language == known.getLanguage(); });
}

// --- DateTimeFormat ---

struct DateTimeFormat::Formatter {
    Formatter(std::string_view pattern, const std::string& tag, std::string_view zone)
        : localeTag(tag), zoneName(zone) {
        icu::Locale locale = ResolveLocale(tag);
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::Calendar> calendar = CreateCalendar(locale, zone, status);
        format =
            std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString::fromUTF8(ToPiece(pattern)), locale, status);
        if (U_FAILURE(status) != 0) {
            format.reset();
        } else {
            format->adoptCalendar(calendar.release());
        }
    }
    void ChangeZone(std::string_view zone) {
        if (zone == zoneName) return;
        zoneName = zone;
        if (format != nullptr) format->adoptTimeZone(CreateZone(zone));
    }

    std::string localeTag;
    std::string zoneName;
    std::unique_ptr<icu::SimpleDateFormat> format;  ///< null where the library could not make one
};

DateTimeFormat::DateTimeFormat() = default;
// The formatter is not copied: it is made again when the copy is first used.
DateTimeFormat::DateTimeFormat(const DateTimeFormat& other) : pattern_(other.pattern_) {}
DateTimeFormat::DateTimeFormat(DateTimeFormat&&) noexcept = default;
DateTimeFormat& DateTimeFormat::operator=(const DateTimeFormat& other) {
    if (this != &other) {
        pattern_ = other.pattern_;
        formatter_.reset();
    }
    return *this;
}
DateTimeFormat& DateTimeFormat::operator=(DateTimeFormat&&) noexcept = default;
DateTimeFormat::~DateTimeFormat() = default;

bool DateTimeFormat::ParseDateTimeFormat(std::string_view pattern) {
    // The library writes nothing or something else for what it does not know, so patterns are checked here.
    if (!IsDateTimePattern(pattern)) return false;
    pattern_ = pattern;
    formatter_.reset();
    return true;
}

void DateTimeFormat::FormatDateTime(const CTNLocale& locale, const CTNTimeZone* timeZone, const CTNTimestamp& timestamp,
                                    CTextOutput& output) const {
    const std::string_view zoneName = timeZone == nullptr ? std::string_view("UTC") : timeZone->GetName();
    if (formatter_ == nullptr || formatter_->localeTag != locale.GetTag()) {
        formatter_ = std::make_unique<Formatter>(pattern_, locale.GetTag(), zoneName);
    } else {
        formatter_->ChangeZone(zoneName);
    }
    if (formatter_->format == nullptr) return;
    // Whole milliseconds, rounded down; exact, as 64 bits of ticks are fewer than 2^53 milliseconds.
    std::int64_t milliseconds = timestamp.GetTicks() / kTicksPerMillisecond;
    if (timestamp.GetTicks() % kTicksPerMillisecond < 0) --milliseconds;
    icu::UnicodeString text;
    formatter_->format->format(static_cast<UDate>(milliseconds), text);
    WriteText(text, output);
}

// --- DecimalFormat ---

struct DecimalFormat::Formatter {
    std::string localeTag;
    std::unique_ptr<icu::DecimalFormat> format;
};

namespace {

constexpr std::string_view kDigitPlaceholders = "0123456789#@";

/// What the library lets pass although it is no number pattern: no digit at all, an exponent without digits.
bool HasNumberAndWholeExponent(std::string_view pattern) noexcept {
    bool inNumber = false;
    bool hasNumber = false;
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        const char c = pattern[at];
        if (c == '\'') {
            at = SkipQuoted(pattern, at);
            if (at == std::string_view::npos) return false;
            --at;
            inNumber = false;
        } else if (c == '*') {
            ++at;  // the padding character
        } else if (c == 'E' && inNumber) {
            if (at + 1 < pattern.size() && pattern[at + 1] == '+') ++at;
            if (at + 1 == pattern.size() || pattern[at + 1] != '0') return false;
            inNumber = false;
        } else if (c == ';') {
            return hasNumber;
        } else {
            inNumber = kDigitPlaceholders.find(c) != std::string_view::npos || (inNumber && (c == '.' || c == ','));
            hasNumber |= inNumber;
        }
    }
    return hasNumber;
}

/// Null for what is no pattern.
std::unique_ptr<icu::DecimalFormat> CreateDecimalFormat(std::string_view pattern) {
    if (!HasNumberAndWholeExponent(pattern)) return nullptr;
    UErrorCode status = U_ZERO_ERROR;
    auto symbols = std::make_unique<icu::DecimalFormatSymbols>(ParseTag(kDefaultLocale), status);
    if (U_FAILURE(status) != 0) return nullptr;
    auto format =
        std::make_unique<icu::DecimalFormat>(icu::UnicodeString::fromUTF8(ToPiece(pattern)), symbols.release(), status);
    // Some patterns, a rounding step of a thousand digits for instance, fail only in use.
    icu::UnicodeString text;
    format->format(1.5, text, nullptr, status);
    if (U_FAILURE(status) != 0) return nullptr;
    return format;
}

}  // namespace

DecimalFormat::DecimalFormat() = default;
DecimalFormat::DecimalFormat(DecimalFormat&&) noexcept = default;
DecimalFormat& DecimalFormat::operator=(DecimalFormat&&) noexcept = default;
DecimalFormat::~DecimalFormat() = default;

bool DecimalFormat::ParseDecimalFormat(std::string_view pattern) {
    std::unique_ptr<icu::DecimalFormat> format = CreateDecimalFormat(pattern);
    if (format == nullptr) return false;
    pattern_ = pattern;
    formatter_ = std::make_unique<Formatter>(Formatter{std::string(kDefaultLocale), std::move(format)});
    return true;
}

template <typename Number>
void DecimalFormat::Format(const CTNLocale& locale, Number number, CTextOutput& output) const {
    if (formatter_ == nullptr) return;
    UErrorCode status = U_ZERO_ERROR;
    if (formatter_->localeTag != locale.GetTag()) {
        formatter_->format->setDecimalFormatSymbols(icu::DecimalFormatSymbols(ResolveLocale(locale.GetTag()), status));
        formatter_->localeTag = locale.GetTag();
    }
    icu::UnicodeString text;
    formatter_->format->format(number, text, nullptr, status);
    WriteText(text, output);
}

void DecimalFormat::FormatDouble(const CTNLocale& locale, double value, CTextOutput& output) const {
    Format(locale, value, output);
}

void DecimalFormat::FormatInt64(const CTNLocale& locale, std::int64_t value, CTextOutput& output) const {
    Format(locale, value, output);
}

void DecimalFormat::FormatUInt64(const CTNLocale& locale, std::uint64_t value, CTextOutput& output) const {
    // The library has no unsigned numbers, but takes any as decimal text.
    std::array<char, 24> digits{};
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    Format(locale, icu::StringPiece(digits.data(), static_cast<std::int32_t>(end - digits.data())), output);
}

// --- CDataFormatSettings ---

namespace {

DateTimeFormat ParseConstant(std::string_view pattern) {
    DateTimeFormat format;
    [[maybe_unused]] const bool parsed = format.ParseDateTimeFormat(pattern);
    assert(parsed);
    return format;
}

}  // namespace

CDataFormatSettings::CDataFormatSettings()
    : dateFormat_(ParseConstant("yyyy-MM-dd")),
      timeFormat_(ParseConstant("HH:mm:ss")),
      dateAndTimeFormat_(ParseConstant("yyyy-MM-dd HH:mm:ss")) {}

bool CDataFormatSettings::SetDateFormat(std::string_view pattern) {
    return dateFormat_.ParseDateTimeFormat(pattern);
}

bool CDataFormatSettings::SetTimeFormat(std::string_view pattern) {
    return timeFormat_.ParseDateTimeFormat(pattern);
}

bool CDataFormatSettings::SetDateAndTimeFormat(std::string_view pattern) {
    return dateAndTimeFormat_.ParseDateTimeFormat(pattern);
}

void CDataFormatSettings::FormatDateAndTime(std::int64_t ticks, CTextOutput& output) const {
    dateAndTimeFormat_.FormatDateTime(locale_, &timeZone_, CTNTimestamp(ticks), output);
}
