#include "compiler/Optimise.h"

#include "compiler/Generator.h"
#include "value/TypeTable.h"

namespace tn61131::st {

namespace {

/// Looks for what an expression does besides giving its value.
class EffectFinder final : public TreeWalker {
 public:
    bool hasEffects = false;
    bool mayFail = false;

 private:
    void VisitExpr(Expr*& expr) override {
        switch (expr->kind) {
            case ExprKind::CallFunction: {
                const auto& call = static_cast<const CallFunctionExpr&>(*expr);
                hasEffects = hasEffects || call.callee->hasSideEffects || call.enableOutput != nullptr ||
                             !call.callee->outputs.empty() || !call.callee->inOuts.empty();
                mayFail = true;
                break;
            }
            case ExprKind::CallBuiltIn:
                // Some of them write through pointers or ask for the run to be suspended.
                hasEffects = true;
                mayFail = true;
                break;
            case ExprKind::Status: hasEffects = true; break;
            case ExprKind::Convert: {
                const std::uint32_t type = TypeBit(static_cast<const ConvertExpr&>(*expr).operand->type->storage);
                mayFail = mayFail || (type & kOwningTypes) != 0;
                break;
            }
            case ExprKind::Binary:
                mayFail = mayFail || static_cast<const BinaryExpr&>(*expr).op == BinaryOperator::Div;
                break;
            default: break;
        }
        WalkChildren(*expr);
    }
    void VisitPlace(Place*& place, Use use) override {
        const bool isSafe =
            place->kind == PlaceKind::Variable || place->kind == PlaceKind::Member || place->kind == PlaceKind::This;
        const bool isTag = place->kind == PlaceKind::Variable &&
                           static_cast<const VariablePlace&>(*place).variable->storage.kind == StorageKind::Tag;
        mayFail = mayFail || !isSafe || isTag;
        WalkChildren(*place, use);
    }
};

EffectFinder FindEffects(const Expr& expr) {
    EffectFinder finder;
    Expr* root = const_cast<Expr*>(&expr);  // looked at only
    finder.Walk(root);
    return finder;
}

}  // namespace

bool IsApart(const Variable& variable) noexcept {
    return !variable.isAddressTaken && variable.aliasOf == nullptr && variable.storage.kind != StorageKind::Tag &&
           variable.section != ast::VarSection::InOut && variable.section != ast::VarSection::Output &&
           variable.section != ast::VarSection::External;
}

namespace {

bool IsOfCall(const Variable& variable) noexcept {
    return variable.owner != nullptr && variable.storage.kind == StorageKind::Unassigned;
}

bool IsOfProgram(const Variable& variable) noexcept {
    return variable.owner != nullptr && variable.owner->kind == ast::PouKind::Program;
}

}  // namespace

bool MayChange(const Variable& variable, const CallBlockStmt& call) noexcept {
    if (IsOfCall(variable)) return false;
    return !IsOfProgram(variable) || call.block == nullptr;
}

bool MayChange(const Variable& variable, const CallFunctionExpr& call) noexcept {
    return call.callee->hasSideEffects && !IsOfCall(variable) && !IsOfProgram(variable);
}

bool IsPure(const Expr& expr) {
    return !FindEffects(expr).hasEffects;
}

bool CannotFail(const Expr& expr) {
    const EffectFinder finder = FindEffects(expr);
    return !finder.hasEffects && !finder.mayFail;
}

void Optimise(Project& project) {
    const Passes& passes = project.options.passes;
    // Who writes to one of two variables at one place changes the other.
    for (Variable& variable : project.variables) {
        if (variable.aliasOf != nullptr && variable.section != ast::VarSection::External)
            variable.aliasOf->isAddressTaken = true;
    }
    if (passes.inlineLeaves) InlineLeaves(project);
    if (passes.foldConstants) FoldConstants(project);
    if (passes.commonAddresses) DropKnownChecks(project);
    if (passes.deadStores) DropDeadStores(project);
    if (passes.commonAddresses) KeepAddresses(project);
}

}  // namespace tn61131::st
