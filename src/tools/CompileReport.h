#pragma once

#include <iosfwd>

#include "compiler/Compiler.h"

namespace tn61131 {

/// Writes the diagnostics of a compilation with the source lines, and a closing line with their number when there are
/// any.
void WriteDiagnostics(std::ostream& messages, const st::CompileResult& result);

/// The same as JSON, an object on a line of its own for each.
void WriteDiagnosticsAsJson(std::ostream& output, const st::CompileResult& result);

}  // namespace tn61131
