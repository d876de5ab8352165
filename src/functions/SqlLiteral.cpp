#include "functions/SqlLiteral.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <span>

#include "diag/Messages.h"
#include "platform/DataFormat.h"
#include "platform/TextOutput.h"
#include "platform/Time.h"
#include "platform/Transcode.h"
#include "value/Value.h"

namespace {

struct ChangeReason {
    unsigned char code;  ///< as history data has it
    Message message;
};

// 6 and 8 do not follow the order of the messages; recorded history relies on it.
constexpr ChangeReason kChangeReasons[] = {
    {1, Message::ReasonStartRecording}, {2, Message::ReasonStopRecording}, {3, Message::ReasonQualityChange},
    {4, Message::ReasonValueChange},    {5, Message::ReasonTimeSample},    {6, Message::ReasonTagValue},
    {7, Message::ReasonWriteCommand},   {8, Message::ReasonLoadedValue},
};

/// One code point in a quoted SQL string: only the quote itself is escaped, by doubling it.
void WriteSqlCharacter(char32_t codePoint, CTextOutput& output) {
    if (codePoint == U'\'') output.WriteChar('\'');
    output.WriteCodePoint(codePoint);
}

template <typename Unit>
void WriteSqlString(std::span<const Unit> units,
                    unsigned int (*decode)(const Unit* units, unsigned int count, char32_t& codePoint) noexcept,
                    CTextOutput& output) {
    output.WriteChar('\'');
    while (!units.empty()) {
        char32_t codePoint = 0;
        units = units.subspan(decode(units.data(), static_cast<unsigned int>(units.size()), codePoint));
        WriteSqlCharacter(codePoint, output);
    }
    output.WriteChar('\'');
}

/// Bit strings are written as the numbers they are: SQL has no 16#.
void WriteBitString(const CValue& value, CTextOutput& output) {
    std::uint64_t bits = value.GetPayload<std::uint64_t>();
    const unsigned int width = value.GetSize() * 8;
    if (width < 64) bits &= (std::uint64_t{1} << width) - 1;
    output.Print("%llu", bits);
}

void WriteDate(const CValue& date, CTextOutput& output) {
    CTNTimestamp timestamp;
    date.GetTimestampValue(timestamp);
    output.Write("DATE '");
    output.PrintDate(nullptr, timestamp.GetTicks());
    output.WriteChar('\'');
}

void WriteTimestamp(const CValue& dateAndTime, CTextOutput& output) {
    CTNTimestamp timestamp;
    dateAndTime.GetTimestampValue(timestamp);
    char text[32];
    timestamp.ToText(text, sizeof(text));
    output.Print("TIMESTAMP '%s'", text);
}

/// An interval's parts, largest unit first.
struct Interval {
    std::uint64_t days;
    unsigned int hours;
    unsigned int minutes;
    unsigned int milliseconds;
    double seconds;
};

void PrintFromDays(const Interval& interval, CTextOutput& output) {
    if (interval.milliseconds != 0) {
        output.Print("'%llu %02u:%02u:%02g' DAY TO SECOND", interval.days, interval.hours, interval.minutes,
                     interval.seconds);
    } else if (interval.minutes != 0) {
        output.Print("'%llu %02u:%02u' DAY TO MINUTE", interval.days, interval.hours, interval.minutes);
    } else if (interval.hours != 0) {
        output.Print("'%llu %u' DAY TO HOUR", interval.days, interval.hours);
    } else {
        output.Print("'%llu' DAY", interval.days);
    }
}

void PrintFromHours(const Interval& interval, CTextOutput& output) {
    if (interval.milliseconds != 0) {
        output.Print("'%u:%02u:%02g' HOUR TO SECOND", interval.hours, interval.minutes, interval.seconds);
    } else if (interval.minutes != 0) {
        output.Print("'%u:%02u' HOUR TO MINUTE", interval.hours, interval.minutes);
    } else {
        output.Print("'%u' HOUR", interval.hours);
    }
}

void PrintFromMinutes(const Interval& interval, CTextOutput& output) {
    if (interval.minutes == 0) {
        output.Print("'%g' SECOND", interval.seconds);
    } else if (interval.milliseconds == 0) {
        output.Print("'%u' MINUTE", interval.minutes);
    } else {
        output.Print("'%u:%02g' MINUTE TO SECOND", interval.minutes, interval.seconds);
    }
}

}  // namespace

unsigned int StringFromValue::HistoricChangeReasonToString(const CTNLocale& locale, unsigned char reason, char* buffer,
                                                           unsigned int size) {
    const auto* const known = std::find_if(std::begin(kChangeReasons), std::end(kChangeReasons),
                                           [&](const ChangeReason& row) { return row.code == reason; });
    if (known != std::end(kChangeReasons))
        return GetVMModule().LoadResourceString(locale, static_cast<std::uint32_t>(known->message), buffer, size);
    return GetVMModule().FormatResourceString(locale, buffer, size, static_cast<std::uint32_t>(Message::ReasonUnknown),
                                              reason);
}

bool StringFromValue::SqlLiteralFromValue(const CValue* value, CTextOutput& output) {
    switch (value->GetType()) {
        case ElementaryType::Undefined: output.Write("NULL"); return true;
        case ElementaryType::Bool:
        case ElementaryType::SInt:
        case ElementaryType::USInt:
        case ElementaryType::Int:
        case ElementaryType::UInt:
        case ElementaryType::DInt:
        case ElementaryType::UDInt:
        case ElementaryType::LInt:
        case ElementaryType::ULInt:
        case ElementaryType::Real:
        case ElementaryType::LReal: value->GetAsText(nullptr, output); return true;
        case ElementaryType::Byte:
        case ElementaryType::Word:
        case ElementaryType::DWord:
        case ElementaryType::LWord: WriteBitString(*value, output); return true;
        case ElementaryType::Time: SqlLiteralFromTIME(value->GetPayload<std::int64_t>(), output); return true;
        case ElementaryType::TimeOfDay: SqlLiteralFromTOD(value->GetPayload<std::uint32_t>(), output); return true;
        case ElementaryType::Date: WriteDate(*value, output); return true;
        case ElementaryType::DateAndTime: WriteTimestamp(*value, output); return true;
        case ElementaryType::String:
            WriteSqlString(GetUnits(value->GetUtf8String()), tn_decode_utf8, output);
            return true;
        case ElementaryType::WString:
            WriteSqlString(GetUnits(value->GetUtf16String()), tn_decode_utf16, output);
            return true;
        default: return false;
    }
}

void StringFromValue::SqlLiteralFromTIME(long long milliseconds, CTextOutput& output) {
    output.Write("INTERVAL ");
    if (milliseconds == 0) {
        output.Write("'0' SECOND");
        return;
    }
    auto rest = static_cast<std::uint64_t>(milliseconds);
    if (milliseconds < 0) {
        output.WriteChar('-');
        rest = 0 - rest;
    }
    const auto restOfMinuteMs = static_cast<unsigned int>(rest % 60'000);
    const Interval interval{rest / 86'400'000, static_cast<unsigned int>(rest / 3'600'000 % 24),
                            static_cast<unsigned int>(rest / 60'000 % 60), restOfMinuteMs, restOfMinuteMs / 1000.0};
    if (interval.days != 0) {
        PrintFromDays(interval, output);
    } else if (interval.hours != 0) {
        PrintFromHours(interval, output);
    } else {
        PrintFromMinutes(interval, output);
    }
}

void StringFromValue::SqlLiteralFromTOD(unsigned int milliseconds, CTextOutput& output) {
    output.Print("TIME '%02u:%02u:%02u.%03u'", milliseconds / 3'600'000, milliseconds / 60'000 % 60,
                 milliseconds / 1'000 % 60, milliseconds % 1'000);
}
