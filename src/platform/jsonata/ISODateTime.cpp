#include <optional>
#include <string>
#include <string_view>

#include "platform/jsonata/Calendar.h"
#include "platform/jsonata/DatePicture.h"

namespace tn61131::jsonata {

namespace {

/// Reads a text from left to right.
class ISOReader {
 public:
    explicit ISOReader(std::string_view text) : text_(text) {}

    [[nodiscard]] bool IsAtEnd() const { return text_.empty(); }
    bool Skip(char c) {
        if (!text_.starts_with(c)) return false;
        text_.remove_prefix(1);
        return true;
    }
    /// So many digits, in a range; -1 for anything else, and nothing is read.
    int ReadDigits(std::size_t count, int least, int greatest) {
        if (text_.size() < count) return -1;
        int value = 0;
        for (const char c : text_.substr(0, count)) {
            if (c < '0' || c > '9') return -1;
            value = value * 10 + (c - '0');
        }
        if (value < least || value > greatest) return -1;
        text_.remove_prefix(count);
        return value;
    }
    /// One digit and more.
    std::string_view ReadDigits() {
        const std::string_view digits = text_.substr(0, text_.find_first_not_of("0123456789"));
        text_.remove_prefix(digits.size());
        return digits;
    }

 private:
    std::string_view text_;
};

/// "hh:mm:ss", with a fraction or without, in milliseconds; -1 for anything else.
double ReadTimeOfDay(ISOReader& reader) {
    const int hour = reader.ReadDigits(2, 0, 24);
    if (hour < 0 || !reader.Skip(':')) return -1;
    const int minute = reader.ReadDigits(2, 0, 59);
    if (minute < 0 || !reader.Skip(':')) return -1;
    const int second = reader.ReadDigits(2, 0, 59);
    if (second < 0) return -1;
    double fraction = 0;
    if (reader.Skip('.')) {
        const std::string_view digits = reader.ReadDigits();
        if (digits.empty()) return -1;
        fraction = MillisOfFraction(digits);
    }
    const double millis = ((hour * 60 + minute) * 60 + second) * 1000 + fraction;
    return millis <= static_cast<double>(kMillisPerDay) ? millis : -1;
}

/// "Z", nothing, or behind a time of day an offset, in minutes.
std::optional<int> ReadOffset(ISOReader& reader, bool isBehindTime) {
    if (reader.IsAtEnd() || reader.Skip('Z')) return 0;
    const bool isNegative = reader.Skip('-');
    if (!isBehindTime || (!isNegative && !reader.Skip('+'))) return std::nullopt;
    const int hours = reader.ReadDigits(2, 0, 23);
    reader.Skip(':');
    const int minutes = reader.ReadDigits(2, 0, 59);
    if (hours < 0 || minutes < 0) return std::nullopt;
    return isNegative ? -(hours * 60 + minutes) : hours * 60 + minutes;
}

std::optional<double> ReadISO(ISOReader reader) {
    const int year = reader.ReadDigits(4, 0, 9999);
    if (year < 0) return std::nullopt;
    int month = 1;
    int day = 1;
    if (reader.Skip('-') && (month = reader.ReadDigits(2, 1, 12)) > 0 && reader.Skip('-')) {
        day = reader.ReadDigits(2, 1, 31);
    }
    if (month < 0 || day < 0) return std::nullopt;
    double timeOfDay = 0;
    const bool hasTime = reader.Skip('T');
    if (hasTime) timeOfDay = ReadTimeOfDay(reader);
    if (timeOfDay < 0) return std::nullopt;
    const std::optional<int> offset = ReadOffset(reader, hasTime);
    if (!offset || !reader.IsAtEnd()) return std::nullopt;
    return static_cast<double>(DaysFromDate(year, month, day) * kMillisPerDay) + timeOfDay - *offset * 60'000.0;
}

}  // namespace

Result<double> ParseISODateTime(std::string_view text) {
    const std::optional<double> millis = ReadISO(ISOReader(text));
    if (!millis) return Failure{"D3110", std::string(text), {}};
    return *millis;
}

}  // namespace tn61131::jsonata
