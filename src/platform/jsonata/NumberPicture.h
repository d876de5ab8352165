#pragma once

#include <string>
#include <string_view>

#include "platform/jsonata/Failure.h"

namespace tn61131::jsonata {

/// The characters of number pictures and of the numbers formatted by them (XPath Functions 3.1, section 4.7.1).
struct DecimalFormat {
    std::string decimalSeparator = ".";
    std::string groupingSeparator = ",";
    std::string exponentSeparator = "e";
    std::string infinity = "Infinity";
    std::string minusSign = "-";
    std::string nan = "NaN";
    std::string percent = "%";
    std::string perMille = "\u2030";
    std::string zeroDigit = "0";
    std::string digit = "#";
    std::string patternSeparator = ";";

    /// Sets the property of a name ("decimal-separator", "NaN", ...). False, and nothing set, for any other name.
    bool Set(std::string_view name, std::string_view value);
};

/// $formatNumber: `value` as `picture` shows it. Fails with D3080 to D3093 for a picture that is none; the failure
/// quotes nothing but the code.
Result<std::string> FormatNumber(double value, std::string_view picture, const DecimalFormat& format);

}  // namespace tn61131::jsonata
