#pragma once

#include "assembler/Image.h"
#include "assembler/SymbolMap.h"
#include "compiler/Declarations.h"
#include "compiler/Model.h"

namespace tn61131::st {

/// Rewrites the checked bodies by the passes that are on. Results stay the same; only instructions become fewer.
void Optimise(Project& project);

/// Makes the image and its map from a project that was checked without errors. False after a message, when something
/// exceeds a limit of the machine.
[[nodiscard]] bool Generate(Project& project, Declarations& declarations, ImageContent& image, CSymbolMap& map);

}  // namespace tn61131::st
