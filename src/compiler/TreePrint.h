#pragma once

#include <string>

#include "compiler/Tree.h"

namespace tn61131::st {

/// Checked trees as S-expressions, for tests and for whoever debugs the compiler. Operators stand with the type they
/// compute in, `(ADD:INT a b)`; conversions as the type in front of the operand, `(DINT a)`, with `!` where the program
/// wrote them, `(INT! r)`. Names are in small letters.
[[nodiscard]] std::string PrintExpr(const NameTable& names, const Expr& expr);
[[nodiscard]] std::string PrintPlace(const NameTable& names, const Place& place);
/// One statement with those in it on one line.
[[nodiscard]] std::string PrintStmt(const NameTable& names, const Stmt& stmt);

}  // namespace tn61131::st
