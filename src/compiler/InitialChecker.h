#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "compiler/InitialValue.h"
#include "compiler/Model.h"

namespace tn61131::st {

class Checker;
class Declarations;

/// Checks initial values against types and keeps what it makes.
class InitialChecker {
 public:
    InitialChecker(Project& project, Declarations& declarations, Checker& checker) noexcept
        : project_(project), declarations_(declarations), checker_(checker) {}

    /// Null after a message. `type` must be complete.
    [[nodiscard]] const InitialValue* Check(const ast::Expr& value, const Type* type, Scope* scope);
    /// The arguments behind the type of a function block or structure: fb : TON(PT := T#1s).
    [[nodiscard]] const InitialValue* CheckArguments(std::span<const ast::Argument> arguments, SourceRange range,
                                                     const Type* type, Scope* scope);
    [[nodiscard]] const InitialValue* MakeScalar(const Type* type, CValue value);

 private:
    /// What a list in brackets fills: the last `dimensions` of an array.
    struct Row {
        const Type* type;  ///< of the array, for messages
        std::span<const ArrayBound> dimensions;
        const Type* element;
        Scope* scope;
        std::uint32_t total;  ///< elements that it has room for
    };
    struct Member {
        ast::Identifier name;
        const ast::Expr* value;
    };

    const InitialValue* CheckScalar(const ast::Expr& value, const Type* type, Scope* scope);
    const InitialValue* CheckPointer(const ast::Expr& value, const Type* type, Scope* scope);
    const InitialValue* CheckAddress(const ast::Expr& place, const PointerType& type, Scope* scope);
    const InitialValue* CheckArray(const ast::Expr& value, const Type* type, Scope* scope);
    const InitialValue* CheckRow(std::span<const ast::ArrayInitElement> elements, const Row& row);
    /// Adds what the elements give; `left` counts down. False after a message.
    bool CheckSequence(std::span<const ast::ArrayInitElement> elements, const Row& row, std::uint32_t& left,
                       std::vector<InitialRun>& runs);
    /// Sets run.value and run.elements for one repetition.
    bool CheckRepeated(const ast::ArrayInitElement& element, const Row& row, std::uint32_t left, InitialRun& run);
    bool CheckRepeat(const ast::Expr* repeat, Scope* scope, std::uint32_t& out);
    /// Whether it is a repeat count given by a constant's name, which looks like a call: N(0).
    bool IsNamedRepeat(const ast::Expr* value, Scope* scope);
    /// The values in the parentheses of N(1, 2).
    ast::Expr* MakeSequence(const ast::CallExpr& call);
    const InitialValue* CheckMembers(std::span<const Member> members, SourceRange range, const Type* type,
                                     Scope* scope);
    bool FindMember(const Type* type, const ast::Identifier& name, InitialMember& out);
    const InitialValue* CheckMemberValue(const ast::Expr& value, const InitialMember& member, Scope* scope);
    const InitialValue* CopyOf(const ast::Expr& value, const Type* type, Scope* scope);
    const InitialValue* NoInitial(SourceRange range, const Type* type);
    std::string TextOf(const Type* type) const { return GetTypeText(project_.names, type); }

    Project& project_;
    Declarations& declarations_;
    Checker& checker_;
    std::deque<ScalarInitial> scalars_;
};

}  // namespace tn61131::st
