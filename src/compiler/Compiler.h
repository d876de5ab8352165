#pragma once

#include <string>
#include <vector>

#include "assembler/Image.h"
#include "assembler/SymbolMap.h"
#include "compiler/Diagnostics.h"
#include "compiler/Options.h"
#include "compiler/Source.h"

namespace tn61131::st {

/// One source text of a project.
struct SourceText {
    std::string name;  ///< as messages and the map name it
    std::string text;  ///< UTF-8; other bytes are kept in strings and comments as they are
};

/// What came of a compilation. Image and map are meaningful only when `succeeded`.
struct CompileResult {
    bool succeeded = false;
    ImageContent image;
    CSymbolMap map;
    SourceManager sources;                ///< the texts that the diagnostics point into
    std::vector<Diagnostic> diagnostics;  ///< in the order of files and positions
};

/// Compiles the texts as one project; their order does not matter.
[[nodiscard]] CompileResult Compile(std::vector<SourceText> texts, const CompileOptions& options);

}  // namespace tn61131::st
