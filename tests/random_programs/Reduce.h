#pragma once

#include <functional>

#include "random_programs/Program.h"

namespace random_programs {

/// Takes statements and parts of expressions out of a program as long as it still fails.
void Reduce(Program& program, const std::function<bool()>& fails);

}  // namespace random_programs
