#include "platform/ReadDouble.h"

#include <locale.h>
#include <stdlib.h>

double tn_strtod(const char*& text) noexcept {
    // Never released: numbers are read until the process ends.
    static const locale_t kLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    char* end = nullptr;
    // Not std::from_chars(): it knows neither hexadecimal prefixes nor what lies beyond the range.
    const double value = strtod_l(text, &end, kLocale);
    text = end;
    return value;
}
