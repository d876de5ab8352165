#include <cstdlib>

#include "platform/TextOutput.h"
#include "platform/Time.h"

namespace {

TimestampStruct FieldsOf(const CTNTimeZone* timeZone, std::int64_t ticks) {
    TimestampStruct fields{};
    CTNTimestamp::GetTimestampStruct(timeZone == nullptr ? ticks : timeZone->ToLocal(ticks), fields);
    return fields;
}

std::string DateText(const TimestampStruct& fields) {
    return FormatText("%s%04d-%02d-%02d", fields.year < 0 ? "-" : "", std::abs(fields.year), fields.month, fields.day);
}

}  // namespace

void CTextOutput::PrintDate(const CTNTimeZone* timeZone, std::int64_t ticks) {
    Write(DateText(FieldsOf(timeZone, ticks)));
}

void CTextOutput::PrintDateAndTime(const CTNTimeZone* timeZone, std::int64_t ticks, char separator) {
    const TimestampStruct fields = FieldsOf(timeZone, ticks);
    Write(FormatText("%s%c%02d:%02d:%02d.%03d", DateText(fields), separator, fields.hour, fields.minute, fields.second,
                     fields.millisecond));
}
