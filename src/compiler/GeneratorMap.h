#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "assembler/SymbolMap.h"
#include "compiler/CodeBuffer.h"
#include "compiler/Model.h"

namespace tn61131::st {

/// A routine at its place in the code.
struct PlacedRoutine {
    const Pou* pou = nullptr;
    const Standalone* standalone = nullptr;  ///< null for POUs
    std::uint32_t instanceDelta = 0;
    std::uint32_t codeOffset = 0;
    std::uint32_t codeSize = 0;
};

/// A name as its own declaration spells it, not as it was first spelt anywhere.
[[nodiscard]] std::string GetDeclaredName(const Project& project, NameId name, SourceRange declared);

/// Names of a project's image: variables, routines, retained ranges, tasks, and the source position of every
/// instruction. `routines` and `positions` are in the order of the code.
void FillSymbolMap(const Project& project, std::span<const PlacedRoutine> routines,
                   std::span<const CodeBuffer::Position> positions, CSymbolMap& map);

}  // namespace tn61131::st
