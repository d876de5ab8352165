#pragma once

#include <span>
#include <string>

#include "compiler/Ast.h"
#include "compiler/Names.h"

namespace tn61131::st {

/// Trees as S-expressions on one line, for tests and for whoever wants to see what was understood: `a := b + 1;` is
/// `(:= a (+ b 1))`. Names are spelled as they were first written, literals as they stand.
[[nodiscard]] std::string PrintExpression(const NameTable& names, const ast::Expr* expression);
[[nodiscard]] std::string PrintType(const NameTable& names, const ast::TypeSpec* type);
[[nodiscard]] std::string PrintStatements(const NameTable& names, std::span<ast::Stmt* const> statements);
[[nodiscard]] std::string PrintUnit(const NameTable& names, const ast::SourceUnit& unit);

}  // namespace tn61131::st
