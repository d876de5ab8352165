#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/jsonata/Failure.h"

namespace tn61131::jsonata {

/// A number as JavaScript prints it: the shortest digits that read back to it, without an exponent from 1e-6 up to
/// below 1e21; "NaN", "Infinity", "-Infinity"; "0" for the negative zero.
std::string PrintNumber(double value);

/// A number as $string() prints it: rounded to 15 significant digits unless it is a whole number. Fails with D3001,
/// which quotes the number, for what JSON cannot show.
Result<std::string> PrintRoundedNumber(double value);

/// $number() of a text: a JSON number, leading zeros allowed, or 0x, 0o, 0b and digits. Fails with D3030, which quotes
/// the text.
Result<double> ParseNumber(std::string_view text);

/// $formatBase: the whole number nearest to `value`, half to even, in digits of a base from 2 to 36, which is rounded
/// likewise. Fails with D3100, which quotes the base.
Result<std::string> FormatBase(double value, double radix);

/// $round: `value` to `precision` decimal places, negative ones left of the point, half to even on the decimal digits
/// that PrintNumber() shows.
double RoundNumber(double value, double precision);

}  // namespace tn61131::jsonata
