#pragma once

#include <cstdint>
#include <span>

#include "compiler/Arena.h"
#include "compiler/Ast.h"
#include "compiler/Diagnostics.h"
#include "compiler/Options.h"

namespace tn61131::st {

/// Blocks, parentheses, types and comments nest no deeper than this.
inline constexpr std::uint32_t kMaxNesting = 200;
/// No path in the tree of one expression is longer than this, so that whoever walks it may recurse: a + b + c + ... is
/// as deep as it has operators.
inline constexpr std::uint32_t kMaxExpressionHeight = 1000;

/// Parses one file by recursive descent. Always returns a tree: what could not be parsed is left out or stands as an
/// Error node, each independent mistake is reported once, and parsing goes on behind it. Time is linear in the text.
[[nodiscard]] ast::SourceUnit* ParseFile(const SourceManager& sources, std::uint32_t file, const Switches& switches,
                                         NameTable& names, Arena& arena, Diagnostics& diagnostics);

/// Parses a file that holds one expression and nothing else.
[[nodiscard]] ast::Expr* ParseExpressionFile(const SourceManager& sources, std::uint32_t file, const Switches& switches,
                                             NameTable& names, Arena& arena, Diagnostics& diagnostics);

/// Parses a file that holds statements and nothing else.
[[nodiscard]] std::span<ast::Stmt*> ParseStatementsFile(const SourceManager& sources, std::uint32_t file,
                                                        const Switches& switches, NameTable& names, Arena& arena,
                                                        Diagnostics& diagnostics);

}  // namespace tn61131::st
