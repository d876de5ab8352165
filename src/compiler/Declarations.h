#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "compiler/Model.h"

namespace tn61131::st {

class Checker;
struct Expr;

/// Enters everything that the syntax trees declare into a Project, resolves types and initial values, and lays out
/// memory. Declarations are resolved when first asked for, so the order of the sources does not matter; a declaration
/// that needs itself is reported.
class Declarations {
 public:
    /// The checker evaluates constant expressions for the declarations and asks them for names in turn.
    Declarations(Project& project, Checker& checker);
    ~Declarations();

    /// Enters the names of all units. Call once with all of them.
    void Enter(std::span<ast::SourceUnit* const> units);
    /// Resolves what Enter() found: types, variables, POUs, configurations. Then lays out GlobalData, GlobalConstants
    /// and the instances of function blocks and programs, and writes the initial values.
    void Resolve();

    /// Gives directly located variables their place in the reserved areas, those included that bodies name, and writes
    /// them to GlobalData. Call once, after all bodies were checked and before code is generated.
    void Finish();

    /// What a name means in a scope: the scope itself, what the POU inherits, the scopes around it, enumeration values
    /// that are unique, then nothing (built-ins are not looked up here). The declaration is resolved as far as its
    /// type and constant value. Null for an unknown name.
    [[nodiscard]] const Symbol* Lookup(NameId name, const Scope* scope);
    /// As Lookup, for a member of a function block or program: own and inherited variables, methods, actions.
    [[nodiscard]] const Symbol* LookupMember(NameId name, const Pou* pou);
    /// Never null: Error after a message.
    [[nodiscard]] const Type* ResolveType(const ast::TypeSpec& spec, const Scope* scope);
    /// What %"address" or %IX0.1 means; null after a message.
    [[nodiscard]] Variable* ResolveLocated(const ast::LocatedExpr& located);
    /// Names like `name`, for "did you mean".
    [[nodiscard]] std::vector<std::string_view> CollectNames(const Scope* scope);

    /// Checks an initial value against a type; null after a message.
    [[nodiscard]] const InitialValue* CheckInitial(const ast::Expr& value, const Type* type, const Scope* scope);
    /// The initial value of a variable, checked when first asked for; null for the type's default, and after a message.
    [[nodiscard]] const InitialValue* GetInitial(Variable& variable);
    /// The value that a variable at a fixed place starts with; null for aggregates, pointers, tags, constants, and for
    /// variables that come and go with a call.
    [[nodiscard]] const CValue* GetStartValue(Variable& variable);
    /// Writes the initial bytes of a variable of the type: `initial`, or the type's default when that is null.
    /// `bytes` has the type's size.
    void WriteInitial(const Type* type, const InitialValue* initial, std::span<unsigned char> bytes) const;
    /// Places bytes in GlobalConstants; the same bytes get the same place.
    [[nodiscard]] std::uint32_t AddConstant(std::span<const unsigned char> bytes);

    [[nodiscard]] Project& GetProject() const noexcept { return project_; }

 private:
    struct State;
    Project& project_;
    std::unique_ptr<State> state_;
};

}  // namespace tn61131::st
