#include "compiler/TreeWalk.h"

namespace tn61131::st {

void TreeWalker::WalkChildren(Expr& expr) {
    switch (expr.kind) {
        case ExprKind::Constant:
        case ExprKind::AggregateConstant:
        case ExprKind::Output:
        case ExprKind::Status: break;
        case ExprKind::Load: Walk(static_cast<LoadExpr&>(expr).place, Use::Read); break;
        case ExprKind::Address: Walk(static_cast<AddressExpr&>(expr).place, Use::Address); break;
        case ExprKind::Unary: Walk(static_cast<UnaryExpr&>(expr).operand); break;
        case ExprKind::Binary:
            Walk(static_cast<BinaryExpr&>(expr).left);
            Walk(static_cast<BinaryExpr&>(expr).right);
            break;
        case ExprKind::Logical:
            Walk(static_cast<LogicalExpr&>(expr).left);
            Walk(static_cast<LogicalExpr&>(expr).right);
            break;
        case ExprKind::Convert: Walk(static_cast<ConvertExpr&>(expr).operand); break;
        case ExprKind::Select:
            Walk(static_cast<SelectExpr&>(expr).condition);
            Walk(static_cast<SelectExpr&>(expr).whenTrue);
            Walk(static_cast<SelectExpr&>(expr).whenFalse);
            break;
        case ExprKind::CallFunction: WalkFunctionCall(static_cast<CallFunctionExpr&>(expr)); break;
        case ExprKind::CallBuiltIn: {
            auto& call = static_cast<CallBuiltInExpr&>(expr);
            Walk(call.enable);
            for (Expr*& argument : call.arguments)
                Walk(argument);
            Walk(call.enableOutput, Use::Write);
            break;
        }
        case ExprKind::AddPointer:
            Walk(static_cast<AddPointerExpr&>(expr).pointer);
            Walk(static_cast<AddPointerExpr&>(expr).bytes);
            break;
    }
}

void TreeWalker::WalkChildren(Place& place, Use use) {
    // Writing a part leaves the rest of the whole as it is.
    const Use partUse = use == Use::Write ? Use::Change : use;
    switch (place.kind) {
        case PlaceKind::Variable:
        case PlaceKind::This:
        case PlaceKind::Kept: break;
        case PlaceKind::Member: Walk(static_cast<MemberPlace&>(place).base, partUse); break;
        case PlaceKind::Element:
            Walk(static_cast<ElementPlace&>(place).base, partUse);
            for (Expr*& index : static_cast<ElementPlace&>(place).indices)
                Walk(index);
            break;
        case PlaceKind::Deref:
            Walk(static_cast<DerefPlace&>(place).pointer);
            Walk(static_cast<DerefPlace&>(place).index);
            break;
        case PlaceKind::Char:
            Walk(static_cast<CharPlace&>(place).base, partUse);
            Walk(static_cast<CharPlace&>(place).index);
            break;
        case PlaceKind::Result: Walk(static_cast<ResultPlace&>(place).call); break;
    }
}

void TreeWalker::WalkBinding(OutputBinding& binding) {
    Walk(binding.value);
    Walk(binding.target, Use::Write);
}

void TreeWalker::WalkFunctionCall(CallFunctionExpr& call) {
    Walk(call.enable);
    for (FunctionArgument& argument : call.arguments) {
        Walk(argument.value);
        Walk(argument.place, Use::Address);
        if (argument.output.target != nullptr) WalkBinding(argument.output);
    }
    Walk(call.instance, Use::Address);
    Walk(call.enableOutput, Use::Write);
}

void TreeWalker::WalkBlockCall(CallBlockStmt& call) {
    Walk(call.enable);
    Walk(call.instance, Use::Address);
    for (BlockInput& input : call.inputs)
        Walk(input.value);
    for (BlockInOut& inOut : call.inOuts)
        Walk(inOut.place, Use::Address);
    for (OutputBinding& output : call.outputs)
        WalkBinding(output);
    Walk(call.enableOutput, Use::Write);
}

void TreeWalker::WalkChildren(Stmt& stmt) {
    switch (stmt.kind) {
        case StmtKind::Assign:
            Walk(static_cast<AssignStmt&>(stmt).value);
            Walk(static_cast<AssignStmt&>(stmt).target, Use::Write);
            break;
        case StmtKind::AssignAggregate:
            Walk(static_cast<AssignAggregateStmt&>(stmt).source);
            Walk(static_cast<AssignAggregateStmt&>(stmt).target, Use::Write);
            break;
        case StmtKind::StoreBits:
            Walk(static_cast<StoreBitsStmt&>(stmt).value);
            Walk(static_cast<StoreBitsStmt&>(stmt).target, Use::Change);
            break;
        case StmtKind::Evaluate: Walk(static_cast<EvaluateStmt&>(stmt).value); break;
        case StmtKind::CallBlock: WalkBlockCall(static_cast<CallBlockStmt&>(stmt)); break;
        case StmtKind::If:
            Walk(static_cast<IfStmt&>(stmt).condition);
            Walk(static_cast<IfStmt&>(stmt).then);
            Walk(static_cast<IfStmt&>(stmt).otherwise);
            break;
        case StmtKind::Case:
            Walk(static_cast<CaseStmt&>(stmt).selector);
            for (CaseArm& arm : static_cast<CaseStmt&>(stmt).arms)
                Walk(arm.body);
            Walk(static_cast<CaseStmt&>(stmt).otherwise);
            break;
        case StmtKind::For:
            Walk(static_cast<ForStmt&>(stmt).to);
            Walk(static_cast<ForStmt&>(stmt).by);
            Walk(static_cast<ForStmt&>(stmt).from);
            Walk(static_cast<ForStmt&>(stmt).counter, Use::Write);
            Walk(static_cast<ForStmt&>(stmt).body);
            break;
        case StmtKind::While:
            Walk(static_cast<WhileStmt&>(stmt).condition);
            Walk(static_cast<WhileStmt&>(stmt).body);
            break;
        case StmtKind::Repeat:
            Walk(static_cast<RepeatStmt&>(stmt).body);
            Walk(static_cast<RepeatStmt&>(stmt).condition);
            break;
        case StmtKind::Exit:
        case StmtKind::Continue:
        case StmtKind::Return: break;
        case StmtKind::Block: WalkChildren(static_cast<Block&>(stmt)); break;
        case StmtKind::Keep:
            Walk(static_cast<KeepStmt&>(stmt).place, Use::Read);
            Walk(static_cast<KeepStmt&>(stmt).body);
            break;
    }
}

}  // namespace tn61131::st
