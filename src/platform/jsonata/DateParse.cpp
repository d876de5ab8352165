#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/jsonata/Calendar.h"
#include "platform/jsonata/CodePoints.h"
#include "platform/jsonata/DateMarkers.h"
#include "platform/jsonata/DatePicture.h"
#include "platform/jsonata/Regex.h"
#include "platform/jsonata/TextFunctions.h"

namespace tn61131::jsonata {

namespace {

/// Any number in a text that can belong to a time that is known.
constexpr double kLargestField = 1e9;

/// What a text says of each component.
class DateValues {
 public:
    void Set(char component, double value) { values_[Index(component)] = value; }
    [[nodiscard]] bool Has(char component) const { return values_[Index(component)].has_value(); }
    [[nodiscard]] double Get(char component) const { return values_[Index(component)].value_or(0); }

 private:
    static std::size_t Index(char component) { return static_cast<unsigned char>(component) & 0x7FU; }

    std::array<std::optional<double>, 128> values_;
};

std::string EscapeLiteral(std::string_view literal) {
    static constexpr std::string_view kSyntax = "^$\\.*+?()[]{}|/";
    std::string escaped;
    for (const char c : literal) {
        if (kSyntax.find(c) != std::string_view::npos) escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string ZoneExpression(const DatePart& part) {
    const std::string digits = part.number.GetDigitSet();
    std::string offset = "[-+]";
    if (part.number.HasSeparators()) {
        std::string separator;
        AppendCodePoint(separator, part.number.GetSeparators().front().character);
        offset += digits + "{1,2}" + EscapeLiteral(separator) + digits + "{2}";
    } else {
        offset += digits + "{1,4}";
    }
    if (part.component == 'z') offset = "GMT(?:" + offset + ")?";
    return part.hasZulu ? "Z|" + offset : offset;
}

std::string PartExpression(const DatePart& part, bool isBeforeNumber) {
    switch (part.style) {
        case DatePart::Style::Literal: return EscapeLiteral(part.literal);
        case DatePart::Style::Zone: return "(" + ZoneExpression(part) + ")";
        case DatePart::Style::Name: return part.component == 'P' ? "(am|pm)" : "([a-z]+)";
        case DatePart::Style::Number: break;
    }
    return "(" + part.number.GetExpression(isBeforeNumber) + ")";
}

/// The whole picture, a group for each marker. Digits directly before other digits come as many as the picture has.
std::string PictureExpression(const std::vector<DatePart>& parts) {
    std::string expression = "^";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const bool isBeforeNumber = i + 1 < parts.size() && parts[i + 1].style == DatePart::Style::Number &&
                                    parts[i + 1].number.GetKind() == IntegerFormat::Kind::Decimal;
        expression += PartExpression(parts[i], isBeforeNumber);
    }
    return expression + "$";
}

/// The place, from 1, of the name that `text` is, or begins, in any case.
template <std::size_t Count>
std::optional<double> ReadName(std::string_view text, const std::array<std::string_view, Count>& names) {
    constexpr std::size_t kShortest = 3;
    if (text.size() < kShortest) return std::nullopt;
    const std::string wanted = ToLowerCase(text);
    for (std::size_t i = 0; i < Count; ++i) {
        if (ToLowerCase(names[i]).starts_with(wanted)) return static_cast<double>(i + 1);
    }
    return std::nullopt;
}

/// The offset in minutes.
double ReadZone(std::string_view text, const DatePart& part) {
    std::string digits;
    for (const char c : part.number.TransferBack(text)) {
        if (c >= '0' && c <= '9') digits += c;
    }
    if (digits.empty()) return 0;
    const bool hasMinutes = part.number.HasSeparators() || digits.size() > 2;
    const int value = std::stoi(digits);  // up to four digits
    const int minutes = hasMinutes ? value / 100 * 60 + value % 100 : value * 60;
    return text.find('-') == std::string_view::npos ? minutes : -minutes;
}

std::optional<double> ReadComponent(std::string_view text, const DatePart& part) {
    if (part.style == DatePart::Style::Zone) return ReadZone(text, part);
    if (part.style == DatePart::Style::Name) {
        if (part.component == 'P') return ToLowerCase(text) == "pm" ? 1 : 0;
        return part.component == 'F' ? ReadName(text, kDayNames) : ReadName(text, kMonthNames);
    }
    const bool isDecimal = part.number.GetKind() == IntegerFormat::Kind::Decimal;
    if (part.component == 'f' && isDecimal) return MillisOfFraction(part.number.TransferBack(text));
    const std::optional<double> value = part.number.ReadText(text);
    if (!value || *value > kLargestField) return std::nullopt;
    // Years of two digits are those of the twentieth century, as JavaScript takes them.
    if (part.component == 'Y' && isDecimal && CountCodePoints(text) <= 2) return *value + 1900;
    return value;
}

/// One component in the order from the greatest to the smallest.
struct Step {
    char component;
    double least;
    double now;
};

/// Fills in what the text does not say: what is greater than all it says is that of the present, what is smaller is
/// least. False for a gap.
bool Complete(DateValues& values, const std::vector<Step>& steps) {
    bool isStarted = false;
    bool isEnded = false;
    for (const Step& step : steps) {
        if (values.Has(step.component)) {
            if (isEnded) return false;
            isStarted = true;
        } else {
            isEnded = isStarted;
            values.Set(step.component, isStarted ? step.least : step.now);
        }
    }
    return true;
}

double MillisOf(const DateValues& values, bool isByDayOfYear, char hour) {
    double year = values.Get('Y');
    double month = isByDayOfYear ? 1 : values.Get('M');
    year += std::floor((month - 1) / 12);
    month -= std::floor((month - 1) / 12) * 12;
    constexpr double kLargestYear = 1e6;
    if (!(std::fabs(year) <= kLargestYear)) return kLargestMillis * 2;
    const double days = static_cast<double>(DaysFromDate(static_cast<std::int64_t>(year), static_cast<int>(month), 1)) +
                        values.Get(isByDayOfYear ? 'd' : 'D') - 1;
    double hours = values.Get(hour);
    if (hour == 'h') hours = (hours == 12 ? 0 : hours) + (values.Get('P') == 1 ? 12 : 0);
    const double minutes = (days * 24 + hours) * 60 + values.Get('m') - values.Get('Z');
    return (minutes * 60 + values.Get('s')) * 1000 + values.Get('f');
}

Result<std::optional<double>> Compose(DateValues& values, double nowMillis) {
    const auto hasAny = [&values](std::string_view components) {
        return std::any_of(components.begin(), components.end(), [&values](char c) { return values.Has(c); });
    };
    if (!hasAny("YMDdWwXxHhmsf")) return std::optional<double>();
    // Week dates cannot be read.
    if (!hasAny("YMDd") && hasAny("WwXx")) return Failure{"D3136", {}, {}};
    const bool isByDayOfYear = values.Has('d') && !hasAny("MD");
    const char hour = values.Has('h') && !values.Has('H') ? 'h' : 'H';

    const DateTimeFields now = FieldsFromMillis(static_cast<std::int64_t>(nowMillis));
    std::vector<Step> steps{{'Y', 1970, static_cast<double>(now.date.year)}};
    if (isByDayOfYear) {
        steps.push_back({'d', 1, static_cast<double>(now.dayOfYear)});
    } else {
        steps.push_back({'M', 1, static_cast<double>(now.date.month)});
        steps.push_back({'D', 1, static_cast<double>(now.date.day)});
    }
    steps.push_back({hour, 0, static_cast<double>(now.hour)});
    steps.push_back({'m', 0, static_cast<double>(now.minute)});
    steps.push_back({'s', 0, static_cast<double>(now.second)});
    steps.push_back({'f', 0, static_cast<double>(now.millisecond)});
    if (!Complete(values, steps)) return Failure{"D3136", {}, {}};
    const double millis = MillisOf(values, isByDayOfYear, hour);
    if (!(std::fabs(millis) <= kLargestMillis)) return std::optional<double>();
    return std::optional<double>(millis);
}

}  // namespace

Result<std::optional<double>> ParseDateTime(std::string_view text, std::string_view picture, double nowMillis) {
    const Result<std::vector<DatePart>> parts = ParseDatePicture(picture, DatePictureUse::Parsing);
    if (!parts) return parts.GetFailure();
    const Result<std::shared_ptr<const Regex>> expression = Regex::Compile(PictureExpression(*parts), "i");
    if (!expression) return Failure{"D3130", std::string(picture), {}};
    const std::optional<RegexMatch> match = (*expression)->Find(text, 0);
    if (!match) return std::optional<double>();

    DateValues values;
    std::size_t group = 0;
    for (const DatePart& part : *parts) {
        if (part.style == DatePart::Style::Literal) continue;
        const std::optional<std::string_view> component = match->groups[group++];
        const std::optional<double> value = ReadComponent(component.value_or(std::string_view()), part);
        if (!value) return std::optional<double>();
        values.Set(part.component == 'z' ? 'Z' : part.component, *value);
    }
    return Compose(values, nowMillis);
}

}  // namespace tn61131::jsonata
