#include "functions/FormatCache.h"

#include <algorithm>
#include <utility>

namespace {

bool Parse(DateTimeFormat& format, std::string_view pattern) {
    return format.ParseDateTimeFormat(pattern);
}
bool Parse(DecimalFormat& format, std::string_view pattern) {
    return format.ParseDecimalFormat(pattern);
}

}  // namespace

template <typename Format>
const Format* CFormatCache::FindIn(std::list<Format>& formats, std::string_view pattern) {
    const auto known = std::find_if(formats.begin(), formats.end(),
                                    [&](const Format& format) { return format.GetPattern() == pattern; });
    if (known != formats.end()) {
        formats.splice(formats.begin(), formats, known);
        return &formats.front();
    }
    Format format;
    ++parseCount_;
    if (!Parse(format, pattern)) return nullptr;
    formats.push_front(std::move(format));
    if (formats.size() > kMaxPatterns) formats.pop_back();
    return &formats.front();
}

template <>
const DateTimeFormat* CFormatCache::Find<DateTimeFormat>(std::string_view pattern) {
    return FindIn(dateTimeFormats_, pattern);
}

template <>
const DecimalFormat* CFormatCache::Find<DecimalFormat>(std::string_view pattern) {
    return FindIn(decimalFormats_, pattern);
}
