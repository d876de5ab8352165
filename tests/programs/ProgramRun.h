#pragma once

#include <string>
#include <vector>

#include "programs/ProgramFile.h"

namespace program_test {

/// Compiles a program with its own options, runs it, and compares. Returns a line for each expectation that was not
/// met, and for each diagnostic that was not expected; none when all is as the file says.
[[nodiscard]] std::vector<std::string> CheckProgram(const ProgramFile& file);

}  // namespace program_test
