#pragma once

#include <iosfwd>

#include "tools/RunOptions.h"

namespace tn61131 {

/// Loads and runs each image in turn; the exit status. Reports go to `output`, messages to `messages`.
int RunImages(const RunOptions& options, std::ostream& output, std::ostream& messages);

}  // namespace tn61131
