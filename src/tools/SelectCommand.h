#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace tn61131 {

/// What `tn61131 select` was asked for.
struct SelectOptions {
    std::vector<std::string> selectors;
    std::string document;  ///< a file, or "-" for the standard input
    bool json = false;
};

/// Picks with each selector in turn from one document; the exit status. `input` is read where the document is "-".
int SelectFromDocument(const SelectOptions& options, std::istream& input, std::ostream& output, std::ostream& messages);

}  // namespace tn61131
