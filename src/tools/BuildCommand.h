#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tools/CompileArguments.h"

namespace tn61131 {

struct BuildOptions {
    std::vector<std::string> sources;  ///< files and folders
    std::string image;                 ///< empty: nothing is written
    CompileArguments compile;
    bool json = false;
};

/// Compiles the sources as one project and, without errors, writes the image and its symbol map. Diagnostics go to
/// `messages`, as JSON to `output`. Returns the exit status.
int BuildProject(const BuildOptions& options, std::ostream& output, std::ostream& messages);

}  // namespace tn61131
