#pragma once

#include <cstdint>
#include <optional>

#include "compiler/Model.h"

namespace tn61131::st {

class Checker;
class Declarations;

/// A variable, or a part of one, whose place does not depend on what the program does.
struct FixedPlace {
    Variable* variable = nullptr;  ///< no alias
    std::uint32_t offset = 0;      ///< bytes within the variable
    const Type* type = nullptr;
};

/// The place that an expression of names, members and constant indices means; nothing after a message. That the
/// variable itself lies at a fixed place is the caller's to check.
[[nodiscard]] std::optional<FixedPlace> FindFixedPlace(const ast::Expr& expression, Scope* scope,
                                                       Declarations& declarations, Checker& checker);

/// Whether a variable lies at one place as long as the program runs and can be written: a global, a variable of a
/// program, a static or a directly located one.
[[nodiscard]] bool HasFixedPlace(const Variable& variable) noexcept;

}  // namespace tn61131::st
