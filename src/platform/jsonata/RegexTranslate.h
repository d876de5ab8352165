#pragma once

#include <string>
#include <string_view>

#include "platform/jsonata/Failure.h"

namespace tn61131::jsonata {

enum class RegexLines { Whole, Each };

/// A JavaScript regular expression (ECMAScript, section 22.2.1, with the leniency of its annex B.1.2) in the syntax of
/// RE2. `lines` says whether ^ and $ match at lines too. Groups keep their numbers. Fails with S0303, which quotes the
/// expression and says what is wrong, for references back, looking around and most mistakes; the remaining mistakes,
/// such as a parenthesis without partner, stay in the result for RE2 to find.
Result<std::string> TranslateRegex(std::string_view body, RegexLines lines);

}  // namespace tn61131::jsonata
