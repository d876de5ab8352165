#include "platform/DataFormat.h"
struct DateTimeFormat::Formatter {};
CTNLocale::CTNLocale() {}
DateTimeFormat::DateTimeFormat() {}
DateTimeFormat::DateTimeFormat(const DateTimeFormat&) {}
DateTimeFormat::DateTimeFormat(DateTimeFormat&&) noexcept {}
DateTimeFormat& DateTimeFormat::operator=(const DateTimeFormat&) { return *this; }
DateTimeFormat& DateTimeFormat::operator=(DateTimeFormat&&) noexcept { return *this; }
DateTimeFormat::~DateTimeFormat() {}
void DateTimeFormat::FormatDateTime(const CTNLocale&, const CTNTimeZone*, const CTNTimestamp&, CTextOutput&) const {}
CDataFormatSettings::CDataFormatSettings() {}
void CDataFormatSettings::FormatDateAndTime(std::int64_t, CTextOutput&) const {}
