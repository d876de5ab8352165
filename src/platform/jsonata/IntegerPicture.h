#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/jsonata/Failure.h"

namespace tn61131::jsonata {

/// $formatInteger: `value`, rounded down, as `picture` shows it (XPath Functions 3.1, section 4.6.1): digits with
/// grouping, letters, Roman numerals or words, with ";o" as ordinal number. Fails with D3130 for a picture that is not
/// supported.
Result<std::string> FormatInteger(double value, std::string_view picture);

/// $parseInteger: the number that `text` shows by `picture`; no value where it shows none. Fails with D3130 as
/// FormatInteger() does.
Result<std::optional<double>> ParseInteger(std::string_view text, std::string_view picture);

}  // namespace tn61131::jsonata
