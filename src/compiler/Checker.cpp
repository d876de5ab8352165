#include "compiler/Checker.h"

#include "compiler/BodyChecker.h"

namespace tn61131::st {

Checker::Checker(Project& project) : state_(std::make_unique<State>(project)) {}

Checker::~Checker() = default;

void Checker::SetDeclarations(Declarations& declarations) {
    state_->SetDeclarations(declarations);
}

Expr* Checker::CheckExpression(const ast::Expr& expression, const Type* wanted, Scope* scope) {
    return state_->CheckExpressionIn(expression, wanted, scope);
}

std::optional<CValue> Checker::EvaluateConstant(const ast::Expr& expression, const Type* wanted, Scope* scope) {
    return state_->EvaluateConstantIn(expression, wanted, scope);
}

std::optional<std::int64_t> Checker::EvaluateInteger(const ast::Expr& expression, Scope* scope) {
    return state_->EvaluateIntegerIn(expression, scope);
}

void Checker::CheckBody(Pou& pou) {
    state_->CheckPou(pou);
}

void Checker::CheckAll() {
    state_->CheckProject();
}

void Checker::CheckStandaloneExpression(Standalone& standalone, const ast::Expr& expression) {
    state_->CheckStandaloneExpression(standalone, expression);
}

void Checker::CheckStandaloneBlock(Standalone& standalone, std::span<ast::Stmt* const> statements) {
    state_->CheckStandaloneBlock(standalone, statements);
}

}  // namespace tn61131::st
