#pragma once

#include <iosfwd>
#include <string>

namespace tn61131 {

/// What `tn61131 tokens` was asked for.
struct TokensOptions {
    std::string path;  ///< "-" is the standard input
    bool json = false;
};

/// Writes the tokens of a structured-text file, white space left out; the exit status. `input` is the standard input.
int ShowTokens(const TokensOptions& options, std::istream& input, std::ostream& output, std::ostream& messages);

}  // namespace tn61131
