#pragma once

#include "compiler/Tree.h"

namespace tn61131::st {

/// Goes through a checked tree in the order of evaluation. Whoever overrides a Visit function looks at the node, may
/// put another in its place, and calls WalkChildren() for what is below, before or after.
class TreeWalker {
 public:
    virtual ~TreeWalker() = default;

    /// Null is skipped.
    void Walk(Expr*& expr) {
        if (expr != nullptr) VisitExpr(expr);
    }
    void Walk(Stmt*& stmt) {
        if (stmt != nullptr) VisitStmt(stmt);
    }
    void Walk(Block* block) {
        if (block != nullptr) VisitBlock(*block);
    }
    /// How a statement or call uses a place.
    enum class Use : std::uint8_t {
        Read,
        Write,    ///< replaced as a whole
        Change,   ///< a part is replaced
        Address,  ///< read or written through a pointer
    };
    void Walk(Place*& place, Use use) {
        if (place != nullptr) VisitPlace(place, use);
    }

 protected:
    virtual void VisitExpr(Expr*& expr) { WalkChildren(*expr); }
    virtual void VisitPlace(Place*& place, Use use) { WalkChildren(*place, use); }
    virtual void VisitStmt(Stmt*& stmt) { WalkChildren(*stmt); }
    virtual void VisitBlock(Block& block) { WalkChildren(block); }

    void WalkChildren(Expr& expr);
    void WalkChildren(Place& place, Use use);
    void WalkChildren(Stmt& stmt);
    void WalkChildren(Block& block) {
        for (Stmt*& stmt : block.statements)
            Walk(stmt);
    }

 private:
    void WalkBinding(OutputBinding& binding);
    void WalkBlockCall(CallBlockStmt& call);
    void WalkFunctionCall(CallFunctionExpr& call);
};

}  // namespace tn61131::st
