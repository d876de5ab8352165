#include "compiler/BodyChecker.h"

// Loops and jumps (IEC 61131-3, 7.3.3.4).

namespace tn61131::st {

void BodyChecker::WarnOfLoopEnd(const Type* type, const Expr* to, bool downward) {
    const bool isUnsigned = FamilyOf(type) != Family::Signed;
    if (const std::optional<std::int64_t> end = GetInteger(to)) {
        const int bits = GetTypeInfo(type->storage).size * 8;
        const auto all = ~std::uint64_t{0} >> (64 - bits);
        const auto largest = static_cast<std::int64_t>(isUnsigned ? all : all >> 1);
        const std::int64_t smallest = isUnsigned ? 0 : -largest - 1;
        if (*end == (downward ? smallest : largest)) {
            project_.diagnostics.Report(DiagnosticCode::ForFullRange, to->range,
                                        {downward ? "lowest" : "highest", Text(type)});
        }
        return;
    }
    // n - 1 of an unsigned n.
    while (to->kind == ExprKind::Convert && static_cast<const ConvertExpr*>(to)->isImplicit)
        to = static_cast<const ConvertExpr*>(to)->operand;
    if (to->kind != ExprKind::Binary || FamilyOf(to->type) == Family::Signed || downward) return;
    const auto& difference = *static_cast<const BinaryExpr*>(to);
    const bool isInteger = IsUnsigned(to->type) || IsBitString(to->type);
    if (isInteger && difference.op == BinaryOperator::Sub && difference.right->kind == ExprKind::Constant)
        project_.diagnostics.Report(DiagnosticCode::ForUnsignedEnd, to->range, {Text(NaturalType(to))});
}

Stmt* BodyChecker::CheckFor(const ast::ForStmt& statement) {
    const Entity counter = CheckTarget(*statement.counter);
    Place* place = nullptr;
    const Type* type = project_.types.Error();
    if (counter.kind != Entity::Kind::Error) {
        const Family family = counter.kind == Entity::Kind::Place ? FamilyOf(counter.place->type) : Family::Void;
        if (IsIntegerFamily(family) || family == Family::Bits) {
            place = counter.place;
            type = BaseOf(place->type);
            MarkRead(place);
            MarkWritten(place, statement.counter->range);
        } else if (family != Family::Error) {
            Fail(DiagnosticCode::ForCounter, statement.counter->range,
                 {counter.kind == Entity::Kind::Place ? Text(counter.place->type) : std::string("a bit")});
        }
    }
    Expr* from = CheckAs(*statement.from, type);
    Expr* to = CheckAs(*statement.to, type);
    Expr* by = nullptr;
    bool isDownward = false;
    if (statement.by != nullptr) {
        by = CheckAs(*statement.by, type);
        if (const std::optional<std::int64_t> step = IsError(by) ? std::nullopt : GetInteger(by)) {
            if (*step == 0) Fail(DiagnosticCode::ForStepZero, statement.by->range);
            isDownward = *step < 0 && FamilyOf(type) == Family::Signed;
        }
    }
    if (place != nullptr && !IsError(to)) WarnOfLoopEnd(type, to, isDownward);
    const bool isVariable = place != nullptr && place->kind == PlaceKind::Variable;
    if (isVariable) context_.counters.push_back(static_cast<VariablePlace*>(place)->variable);
    ++context_.loops;
    Block* body = CheckBlock(statement.body, statement.range);
    --context_.loops;
    if (isVariable) context_.counters.pop_back();
    if (place == nullptr || IsError(from) || IsError(to) || (by != nullptr && IsError(by))) return nullptr;
    return New(ForStmt{{StmtKind::For, statement.range}, place, from, to, by, body});
}

Stmt* BodyChecker::CheckWhile(const ast::WhileStmt& statement) {
    Expr* condition = CheckCondition(*statement.condition);
    ++context_.loops;
    Block* body = CheckBlock(statement.body, statement.range);
    --context_.loops;
    return New(WhileStmt{{StmtKind::While, statement.range}, condition, body});
}

Stmt* BodyChecker::CheckRepeat(const ast::RepeatStmt& statement) {
    ++context_.loops;
    Block* body = CheckBlock(statement.body, statement.range);
    --context_.loops;
    Expr* condition = CheckCondition(*statement.condition);
    return New(RepeatStmt{{StmtKind::Repeat, statement.range}, body, condition});
}

Stmt* BodyChecker::CheckJump(const ast::Stmt& statement) {
    if (statement.kind == ast::StmtKind::Return) return New(Stmt{StmtKind::Return, statement.range});
    const bool isExit = statement.kind == ast::StmtKind::Exit;
    if (context_.loops == 0) {
        Fail(DiagnosticCode::OutsideLoop, statement.range, {isExit ? "EXIT" : "CONTINUE"});
        return nullptr;
    }
    return New(Stmt{isExit ? StmtKind::Exit : StmtKind::Continue, statement.range});
}

}  // namespace tn61131::st
