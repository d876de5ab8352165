#pragma once

#include <string>
#include <vector>

#include "compiler/Compiler.h"

namespace tn61131 {

/// Whether a path names structured text: a folder, or a file that ends in .st, .iecst, .exp, .scl or .pou in any case.
[[nodiscard]] bool IsSourcePath(const std::string& path);

/// Reads the files of a project; a folder stands for all such files in it and below, in the order of their names. A
/// file that is named twice is taken once. False, the reason in `error`, when something cannot be read or a folder
/// holds no structured text.
[[nodiscard]] bool ReadProjectFiles(const std::vector<std::string>& paths, std::vector<st::SourceText>& sources,
                                    std::string& error);

}  // namespace tn61131
