#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tn61131::jsonata {

enum class NumberWordKind { Cardinal, Ordinal };

/// A whole number, given as decimal digits without leading zeros (none for zero), in English words as a title has them:
/// "One Thousand, Two Hundred and Thirty-Four". The greatest unit is the trillion, 10^12; what is above it counts
/// trillions.
std::string WriteNumberWords(std::string_view digits, NumberWordKind kind);

/// The number that words stand for, in any case, cardinal or ordinal, joined by blanks, hyphens, commas and "and"; no
/// value for other text.
std::optional<double> ReadNumberWords(std::string_view text);

/// A regular expression, to be matched without regard to case, of the texts that ReadNumberWords() takes, and some
/// more.
std::string GetNumberWordsExpression();

}  // namespace tn61131::jsonata
