#pragma once

#include <memory>
#include <optional>
#include <span>

#include "compiler/Model.h"
#include "compiler/Tree.h"

namespace tn61131::st {

class Declarations;

/// Turns bodies and expressions of the syntax tree into the checked tree: looks names up, decides types, writes
/// conversions out, folds constants with the machine's own operators, reports what is wrong.
class Checker {
 public:
    explicit Checker(Project& project);
    ~Checker();
    /// Must be called before anything else.
    void SetDeclarations(Declarations& declarations);

    /// Checks an expression whose value is to have a type; null for no wish. Null after a message.
    [[nodiscard]] Expr* CheckExpression(const ast::Expr& expression, const Type* wanted, Scope* scope);
    /// The value of a constant expression converted to a type (which is no aggregate), null for no wish; nothing after
    /// a message.
    [[nodiscard]] std::optional<CValue> EvaluateConstant(const ast::Expr& expression, const Type* wanted, Scope* scope);
    /// As above for a whole number: bounds, lengths, repeat counts.
    [[nodiscard]] std::optional<std::int64_t> EvaluateInteger(const ast::Expr& expression, Scope* scope);

    /// Checks the body of a POU into Pou::body, with its methods and actions.
    void CheckBody(Pou& pou);
    /// Checks all bodies of the project, then what can only be seen from all of them: recursion, what is never used.
    void CheckAll();
    /// Checks the texts of Project::standalones, which were parsed into `expression` or `statements`.
    void CheckStandaloneExpression(Standalone& standalone, const ast::Expr& expression);
    void CheckStandaloneBlock(Standalone& standalone, std::span<ast::Stmt* const> statements);

 private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace tn61131::st
