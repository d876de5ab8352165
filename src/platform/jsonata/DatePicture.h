#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/jsonata/Failure.h"

namespace tn61131::jsonata {

/// $fromMillis: a time in milliseconds since 1970-01-01 00:00 UTC as `picture` shows it (XPath Functions 3.1, section
/// 9.8.4), in the time zone "+0100" (UTC without one). Without a picture the ISO 8601 form with milliseconds:
/// "2018-03-23T10:33:36.617Z".
///
/// Fails with D3132 (unknown component), D3133 (a component that has no name), D3134 (a time zone picture of more than
/// four digits), D3135 (a bracket that is not closed), D3130 and D3131 (a presentation that is not supported, a width
/// that is none), each quoting the part; with D1001 for a time beyond what JavaScript knows, and T0410 for a time zone
/// that is none.
Result<std::string> FormatDateTime(double millis, std::optional<std::string_view> picture,
                                   std::optional<std::string_view> timeZone);

/// $toMillis with a picture; no value where the text does not look as the picture shows. Leading components that the
/// picture does not have are those of `nowMillis`. Fails as FormatDateTime() does for a picture that is none, and with
/// D3136 where the components leave a gap between the greatest and the smallest of them.
Result<std::optional<double>> ParseDateTime(std::string_view text, std::string_view picture, double nowMillis);

/// $toMillis without a picture: ISO 8601, from the year alone to milliseconds and time zone. Fails with D3110, which
/// quotes the text.
Result<double> ParseISODateTime(std::string_view text);

}  // namespace tn61131::jsonata
