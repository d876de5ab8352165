#pragma once

#include <iosfwd>
#include <string>

namespace tn61131 {

struct AsmOptions {
    std::string source;
    std::string image;
};

/// Assembles a source into an image and, beside it, its symbol map. Errors go to `messages`, and nothing is written
/// then. Returns the exit status.
int AssembleFile(const AsmOptions& options, std::ostream& messages);

}  // namespace tn61131
