#pragma once

#include <cstdint>

#include "compiler/Diagnostics.h"
#include "compiler/Names.h"
#include "compiler/Options.h"
#include "compiler/Source.h"
#include "compiler/Token.h"

namespace tn61131::st {

/// Reads a file with the library's tokenizer and gives its tokens the form that the parser needs: operators of two
/// characters joined, `1..5` and `a.10.2` taken apart, LTIME# and its relatives joined, `INT#x` with a name or an
/// expression taken apart, direct addresses joined, nested comments skipped as a whole. Comments, strings and pragmas
/// without an end, numbers that are none and stray characters are reported. Time is linear in the text.
[[nodiscard]] TokenList ReadTokens(const SourceManager& sources, std::uint32_t file, const Switches& switches,
                                   NameTable& names, Diagnostics& diagnostics);

}  // namespace tn61131::st
