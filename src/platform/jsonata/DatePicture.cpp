#include "platform/jsonata/DatePicture.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "platform/jsonata/Calendar.h"
#include "platform/jsonata/DateMarkers.h"
#include "platform/jsonata/NumberText.h"
#include "platform/jsonata/TextFunctions.h"

namespace tn61131::jsonata {

namespace {

constexpr std::size_t kFractionDigits = 3;
constexpr std::string_view kISOPicture = "[Y0001]-[M01]-[D01]T[H01]:[m01]:[s01].[f001][Z01:01t]";
/// For years that four digits do not show, as ECMAScript writes them.
constexpr std::string_view kWideISOPicture = "[Y000001]-[M01]-[D01]T[H01]:[m01]:[s01].[f001][Z01:01t]";

/// A time and where it is looked at.
struct LocalTime {
    DateTimeFields fields;
    int offsetMinutes = 0;
};

/// "+0100", "-05:30", "Z"; up to four digits, the last two of which are minutes.
std::optional<int> ReadZone(std::string_view text) {
    if (text == "Z") return 0;
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    int value = 0;
    int digits = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == ':' && at > 0 && text.size() - at == 3) continue;
        if (text[at] < '0' || text[at] > '9' || ++digits > 4) return std::nullopt;
        value = value * 10 + (text[at] - '0');
    }
    if (digits == 0 || value % 100 > 59) return std::nullopt;
    const int minutes = value / 100 * 60 + value % 100;
    return isNegative ? -minutes : minutes;
}

double ComponentValue(const DateTimeFields& fields, char component) {
    switch (component) {
        case 'M': return fields.date.month;
        case 'D': return fields.date.day;
        case 'd': return fields.dayOfYear;
        case 'F': return fields.weekday;
        case 'W': return fields.weekOfYear;
        case 'w': return fields.weekOfMonth;
        case 'X': return static_cast<double>(fields.thursday.year);
        case 'x': return fields.thursday.month;
        case 'H': return fields.hour;
        case 'h': return (fields.hour + 11) % 12 + 1;
        case 'm': return fields.minute;
        default: return fields.second;
    }
}

/// As many digits of the year, from the right, as the picture has, where these are more than one, or as its greatest
/// width says.
std::string FormatYear(std::int64_t year, const DatePart& part) {
    const bool isDecimal = part.number.GetKind() == IntegerFormat::Kind::Decimal;
    const std::size_t digits = part.maximumWidth.value_or(isDecimal ? part.number.GetAllDigits() : 0);
    constexpr std::size_t kMostYearDigits = 6;
    const bool isCut = digits <= kMostYearDigits && (digits > 1 || part.maximumWidth);
    if (!isCut) return part.number.Format(static_cast<double>(year));
    std::int64_t modulus = 1;
    for (std::size_t i = 0; i < digits; ++i)
        modulus *= 10;
    IntegerFormat format = part.number;
    if (part.maximumWidth && std::abs(year) >= modulus) format.FitWidth(digits, digits);
    return format.Format(static_cast<double>(year % modulus));
}

/// Digits behind the point: as many as there are for a picture of one digit, else as many as it has.
std::string FormatFraction(int millisecond, const DatePart& part) {
    if (part.number.GetKind() != IntegerFormat::Kind::Decimal) return part.number.Format(millisecond);
    std::string digits = std::to_string(millisecond);
    digits.insert(0, kFractionDigits - digits.size(), '0');
    const bool hasWidth = part.minimumWidth > 0 || part.maximumWidth;
    const std::size_t shown = part.number.GetAllDigits();
    if (hasWidth || shown > 1) {
        const std::size_t minimum =
            hasWidth ? std::max<std::size_t>(part.minimumWidth, 1) : part.number.GetMandatoryDigits();
        const std::size_t maximum = hasWidth ? part.maximumWidth.value_or(std::max(minimum, kFractionDigits)) : shown;
        digits.resize(std::min(digits.size(), maximum));
        while (digits.size() > minimum && digits.back() == '0')
            digits.pop_back();
        if (digits.size() < minimum) digits.resize(minimum, '0');
    }
    return part.number.TransferDigits(digits);
}

std::string FormatName(const DateTimeFields& fields, const DatePart& part) {
    std::string name;
    switch (part.component) {
        case 'M': name = kMonthNames[static_cast<std::size_t>(fields.date.month - 1)]; break;
        case 'x': name = kMonthNames[static_cast<std::size_t>(fields.thursday.month - 1)]; break;
        case 'F': name = kDayNames[static_cast<std::size_t>(fields.weekday - 1)]; break;
        case 'P': return std::string(fields.hour < 12 ? "am" : "pm");
        default: return "ISO";
    }
    name.resize(std::min(name.size(), part.maximumWidth.value_or(name.size())));
    return name;
}

std::string FormatZone(int offsetMinutes, const DatePart& part) {
    if (offsetMinutes == 0 && part.hasZulu) return "Z";
    std::string text(part.component == 'z' ? "GMT" : "");
    text += offsetMinutes < 0 ? '-' : '+';
    const int hours = std::abs(offsetMinutes) / 60;
    const int minutes = std::abs(offsetMinutes) % 60;
    if (part.number.HasSeparators() || part.number.GetAllDigits() > 2) {
        return text + part.number.Format(hours * 100 + minutes);
    }
    text += part.number.Format(hours);
    if (minutes == 0) return text;
    std::string digits = std::to_string(minutes);
    digits.insert(0, 2 - digits.size(), '0');
    return text + ":" + part.number.TransferDigits(digits);
}

std::string FormatPart(const LocalTime& time, const DatePart& part) {
    switch (part.style) {
        case DatePart::Style::Literal: return part.literal;
        case DatePart::Style::Zone: return FormatZone(time.offsetMinutes, part);
        case DatePart::Style::Name: {
            std::string name = FormatName(time.fields, part);
            if (part.component == 'C' || part.component == 'E') return name;
            if (part.nameCase == IntegerFormat::Case::Title) return name;
            return part.nameCase == IntegerFormat::Case::Upper ? ToUpperCase(name) : ToLowerCase(name);
        }
        case DatePart::Style::Number: break;
    }
    if (part.component == 'Y') return FormatYear(time.fields.date.year, part);
    if (part.component == 'f') return FormatFraction(time.fields.millisecond, part);
    return part.number.Format(ComponentValue(time.fields, part.component));
}

}  // namespace

Result<std::string> FormatDateTime(double millis, std::optional<std::string_view> picture,
                                   std::optional<std::string_view> timeZone) {
    if (!(std::fabs(millis) <= kLargestMillis)) return Failure{"D1001", PrintNumber(millis), {}};
    LocalTime time;
    if (timeZone) {
        const std::optional<int> offset = ReadZone(*timeZone);
        if (!offset) return Failure{"T0410", std::string(*timeZone), "fromMillis"};
        time.offsetMinutes = *offset;
    }
    time.fields = FieldsFromMillis(static_cast<std::int64_t>(millis) + std::int64_t{time.offsetMinutes} * 60'000);
    std::string text;
    if (!picture) {
        const std::int64_t year = time.fields.date.year;
        const bool isWide = year < 0 || year > 9999;
        picture = isWide ? kWideISOPicture : kISOPicture;
        if (isWide && year > 0) text = "+";
    }
    const Result<std::vector<DatePart>> parts = ParseDatePicture(*picture, DatePictureUse::Formatting);
    if (!parts) return parts.GetFailure();
    for (const DatePart& part : *parts)
        text += FormatPart(time, part);
    return text;
}

}  // namespace tn61131::jsonata
