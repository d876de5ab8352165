// Assignments that nothing reads.
#include <algorithm>
#include <unordered_set>

#include "compiler/Optimise.h"

namespace tn61131::st {

namespace {

/// Variables of a call end with it; whatever outlives it may be looked at from outside.
bool IsOfCall(const Variable& variable) noexcept {
    return variable.owner != nullptr && variable.storage.kind == StorageKind::Unassigned &&
           variable.aliasOf == nullptr && !variable.isResult && !variable.isAddressTaken &&
           variable.section != ast::VarSection::InOut && variable.section != ast::VarSection::Output;
}

/// Variables of calls whose value something looks at.
class ReadFinder final : public TreeWalker {
 public:
    void Begin(Pou& /*pou*/) noexcept {}
    [[nodiscard]] bool IsRead(const Variable& variable) const { return read_.contains(&variable); }

 private:
    void VisitPlace(Place*& place, Use use) override {
        if (place->kind == PlaceKind::Variable && use != Use::Write) Note(*place);
        WalkChildren(*place, use);
    }
    /// A loop reads its counter.
    void VisitStmt(Stmt*& stmt) override {
        if (stmt->kind == StmtKind::For) {
            const Place& counter = *static_cast<const ForStmt&>(*stmt).counter;
            if (counter.kind == PlaceKind::Variable) read_.insert(static_cast<const VariablePlace&>(counter).variable);
        }
        WalkChildren(*stmt);
    }

    void Note(const Place& place) {
        const Variable* variable = static_cast<const VariablePlace&>(place).variable;
        if (IsOfCall(*variable)) read_.insert(variable);
    }

    std::unordered_set<const Variable*> read_;
};

class StoreDropper final : public TreeWalker {
 public:
    StoreDropper(Project& project, const ReadFinder& reads) noexcept : project_(project), reads_(reads) {}
    void Begin(Pou& /*pou*/) noexcept {}

 private:
    void VisitStmt(Stmt*& stmt) override {
        if (stmt->kind == StmtKind::Assign && IsDead(static_cast<const AssignStmt&>(*stmt))) {
            stmt = project_.arena.New<Block>(Block{{StmtKind::Block, stmt->range}, {}});
        } else {
            WalkChildren(*stmt);
        }
    }

    [[nodiscard]] bool IsDead(const AssignStmt& stmt) const {
        if (stmt.target->kind != PlaceKind::Variable || stmt.isRanged) return false;
        const Variable& variable = *static_cast<const VariablePlace&>(*stmt.target).variable;
        return IsOfCall(variable) && !reads_.IsRead(variable) && CannotFail(*stmt.value);
    }

    Project& project_;
    const ReadFinder& reads_;
};

}  // namespace

void DropDeadStores(Project& project) {
    // The checker has seen every use in the sources; usually there is nothing to look for.
    const bool isNeeded = std::ranges::any_of(project.variables, [](const Variable& variable) {
        return variable.isWritten && !variable.isRead && IsOfCall(variable);
    });
    if (!isNeeded) return;
    ReadFinder reads;
    WalkBodies(project, reads);
    StoreDropper dropper(project, reads);
    WalkBodies(project, dropper);
}

}  // namespace tn61131::st
