#pragma once

#include "compiler/Model.h"
#include "compiler/TreeWalk.h"

namespace tn61131::st {

// The passes of Optimise(), in its order. Each leaves results as they were and works on all bodies.

/// Puts the bodies of functions that are one expression in the place of their calls.
void InlineLeaves(Project& project);
/// Computes what is constant, takes branches that are always taken, leaves out what changes nothing, and computes in a
/// narrow type what is cut to it.
void FoldConstants(Project& project);
/// Leaves out the range tests of indices that count through a range inside the bounds.
void DropKnownChecks(Project& project);
/// Computes the address of an element once where statements behind one another use it more often.
void KeepAddresses(Project& project);
/// Leaves out assignments to variables that nothing reads.
void DropDeadStores(Project& project);

/// Goes through every body and standalone expression of a project. `Walker` has Begin(Pou&).
template <typename Walker>
void WalkBodies(Project& project, Walker& walker) {
    for (Pou& pou : project.pous) {
        if (pou.body == nullptr) continue;
        walker.Begin(pou);
        walker.Walk(pou.body);
    }
    for (Standalone& standalone : project.standalones) {
        if (standalone.expression == nullptr) continue;
        walker.Begin(*standalone.pou);
        walker.Walk(standalone.expression);
    }
}

/// Whether a call may change a variable that its caller does not hand to it: not one of the caller's own call, nor one
/// of a program when no part of a program is called. For variables whose address nothing takes.
[[nodiscard]] bool MayChange(const Variable& variable, const CallBlockStmt& call) noexcept;
[[nodiscard]] bool MayChange(const Variable& variable, const CallFunctionExpr& call) noexcept;
/// Whether writing to other places by their names leaves a variable alone.
[[nodiscard]] bool IsApart(const Variable& variable) noexcept;

/// Whether evaluating an expression does nothing but give its value: it calls no function that writes elsewhere.
[[nodiscard]] bool IsPure(const Expr& expr);
/// Whether it also cannot end the run.
[[nodiscard]] bool CannotFail(const Expr& expr);

}  // namespace tn61131::st
