#include <algorithm>
#include <new>
#include <unordered_map>

#include "compiler/BodyChecker.h"

// What can only be seen when all bodies are checked.

namespace tn61131::st {

void BodyChecker::CheckProject() {
    for (Pou& pou : project_.pous) {
        // Methods and actions are checked with what they belong to.
        if (pou.container == nullptr) CheckPou(pou);
    }
    DecideSideEffects();
    if (!GetSwitches().recursion) FindRecursion();
    ReportUnused();
}

void BodyChecker::DecideSideEffects() {
    // A function has effects when it writes outside or calls what has; until nothing changes.
    std::unordered_map<Pou*, std::vector<Pou*>> callers;
    std::vector<Pou*> work;
    for (Pou& pou : project_.pous) {
        if (pou.kind != ast::PouKind::Function) pou.hasSideEffects = true;
        if (pou.hasSideEffects) work.push_back(&pou);
        for (Pou* callee : pou.callees)
            callers[callee].push_back(&pou);
    }
    while (!work.empty()) {
        Pou* pou = work.back();
        work.pop_back();
        const auto found = callers.find(pou);
        if (found == callers.end()) continue;
        for (Pou* caller : found->second) {
            if (caller->hasSideEffects) continue;
            caller->hasSideEffects = true;
            work.push_back(caller);
        }
    }
    static_assert(sizeof(LogicalExpr) == sizeof(BinaryExpr) && alignof(LogicalExpr) == alignof(BinaryExpr));
    for (const ShortCircuit& candidate : shortCircuits_) {
        if (std::ranges::none_of(candidate.calls, [](const Pou* pou) { return pou->hasSideEffects; })) continue;
        // Both sides are evaluated: the node becomes an operation in its place.
        const LogicalExpr logical = *candidate.node;
        new (candidate.node) BinaryExpr{{ExprKind::Binary, logical.type, logical.range},
                                        logical.isAnd ? BinaryOperator::And : BinaryOperator::Or,
                                        logical.left,
                                        logical.right};
    }
    shortCircuits_.clear();
}

void BodyChecker::FindRecursion() {
    enum class State : std::uint8_t { New, Open, Done };
    std::unordered_map<const Pou*, State> states;
    struct Step {
        Pou* pou;
        std::size_t next;
    };
    for (Pou& root : project_.pous) {
        if (states[&root] != State::New) continue;
        std::vector<Step> path{{&root, 0}};
        states[&root] = State::Open;
        while (!path.empty()) {
            Step& step = path.back();
            if (step.next == step.pou->callees.size()) {
                states[step.pou] = State::Done;
                path.pop_back();
                continue;
            }
            Pou* callee = step.pou->callees[step.next++];
            if (states[callee] == State::New) {
                states[callee] = State::Open;
                path.push_back({callee, 0});
                continue;
            }
            if (states[callee] != State::Open) continue;
            const auto first = std::ranges::find(path, callee, &Step::pou);
            std::string chain;
            for (auto link = first; link != path.end(); ++link)
                chain += Text(link->pou->name) + " -> ";
            chain += Text(callee->name);
            const SourceRange range = callee->declaration == nullptr ? SourceRange{} : callee->declaration->name.range;
            project_.diagnostics.Report(DiagnosticCode::Recursion, range, {Text(callee->name), chain});
        }
    }
}

void BodyChecker::ReportUnused() {
    for (Pou& pou : project_.pous) {
        if (pou.declaration == nullptr) continue;
        const bool isFunction = pou.kind == ast::PouKind::Function || pou.kind == ast::PouKind::Method;
        const bool isKnown = pou.resultType == nullptr || pou.resultType->kind != TypeKind::Error;
        if (isFunction && isKnown && pou.result != nullptr && !pou.result->isWritten && pou.body != nullptr &&
            !pou.declaration->body.empty()) {
            project_.diagnostics.Report(DiagnosticCode::ResultNotAssigned, pou.declaration->name.range,
                                        {Text(pou.name)});
        }
        for (const Variable* variable : pou.variables) {
            const bool isLocal =
                variable->section == ast::VarSection::Local || variable->section == ast::VarSection::Temp;
            if (!isLocal || variable->isResult || variable->isRead || variable->isWritten || variable->isConstant)
                continue;
            Hint(DiagnosticCode::UnusedVariable, variable->declared, {Text(variable->name)});
        }
    }
}

}  // namespace tn61131::st
