#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "value/ElementaryType.h"

namespace tn61131 {

/// What `tn61131 literal` was asked for.
struct LiteralOptions {
    std::vector<std::string> texts;
    ElementaryType type = ElementaryType::Undefined;  ///< Undefined: as the text says
    bool json = false;
};

/// The type that a literal without a wanted one is parsed as: Undefined for a text with a type prefix, and for an
/// integer, which finds its own.
[[nodiscard]] ElementaryType GuessLiteralType(std::string_view text);

/// Marks the texts among the arguments behind `literal`, so that the parser of the command line takes each as it is: a
/// negative number is no option, [a,b] and {} are no lists, and everything behind `--` is a text.
void MaskLiteralTexts(std::vector<std::string>& arguments);

/// Parses each text and shows it in every form; the exit status.
int ShowLiterals(const LiteralOptions& options, std::ostream& output, std::ostream& messages);

}  // namespace tn61131
