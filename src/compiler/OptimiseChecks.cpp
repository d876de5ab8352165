// Range tests of indices that a loop keeps inside.
#include <algorithm>
#include <vector>

#include "compiler/NumberRange.h"
#include "compiler/Optimise.h"

namespace tn61131::st {

namespace {

/// Whether a loop's body changes its counter, or calls what may.
class CounterCheck final : public TreeWalker {
 public:
    explicit CounterCheck(const Variable& counter) noexcept : counter_(counter) {}
    [[nodiscard]] bool IsKept() const noexcept { return isKept_; }

 private:
    void VisitPlace(Place*& place, Use use) override {
        const bool isCounter =
            place->kind == PlaceKind::Variable && static_cast<const VariablePlace&>(*place).variable == &counter_;
        if (isCounter && use != Use::Read) isKept_ = false;
        WalkChildren(*place, use);
    }
    void VisitExpr(Expr*& expr) override {
        if (expr->kind == ExprKind::CallFunction && MayChange(counter_, static_cast<const CallFunctionExpr&>(*expr)))
            isKept_ = false;
        WalkChildren(*expr);
    }
    void VisitStmt(Stmt*& stmt) override {
        if (stmt->kind == StmtKind::CallBlock && MayChange(counter_, static_cast<const CallBlockStmt&>(*stmt)))
            isKept_ = false;
        WalkChildren(*stmt);
    }
    const Variable& counter_;
    bool isKept_ = true;
};

class CheckDropper final : public TreeWalker {
 public:
    void Begin(Pou& /*pou*/) noexcept { counters_.clear(); }

 private:
    struct Counter {
        const Variable* variable;
        NumberRange range;
    };

    void VisitStmt(Stmt*& stmt) override {
        if (stmt->kind != StmtKind::For) return WalkChildren(*stmt);
        auto& loop = static_cast<ForStmt&>(*stmt);
        Walk(loop.to);
        Walk(loop.by);
        Walk(loop.from);
        Walk(loop.counter, Use::Write);
        const bool isKnown = Enter(loop);
        Walk(loop.body);
        if (isKnown) counters_.pop_back();
    }

    bool Enter(ForStmt& loop) {
        const auto from = GetRangeOf(*loop.from);
        const auto to = GetRangeOf(*loop.to);
        if (!from || !to || loop.counter->kind != PlaceKind::Variable) return false;
        const Variable& variable = *static_cast<const VariablePlace&>(*loop.counter).variable;
        if (!IsApart(variable)) return false;
        CounterCheck check(variable);
        check.Walk(loop.body);
        const auto step = loop.by == nullptr ? Int128{1} : GetConstantNumber(*loop.by).value_or(0);
        if (!check.IsKept() || step == 0) return false;
        counters_.push_back(
            {&variable, step > 0 ? NumberRange{from->lower, to->upper} : NumberRange{to->lower, from->upper}});
        return true;
    }

    void VisitPlace(Place*& place, Use use) override {
        WalkChildren(*place, use);
        if (place->kind != PlaceKind::Element) return;
        auto& element = static_cast<ElementPlace&>(*place);
        if (!element.checked || element.array->isOpen) return;
        for (std::size_t i = 0; i < element.indices.size(); ++i) {
            const auto range = GetRangeOf(*element.indices[i]);
            const ArrayBound& bound = element.array->bounds[i];
            if (!range || !NumberRange{bound.lower, bound.upper}.Contains(*range)) return;
        }
        element.checked = false;
    }

    /// As GetRange(), with what is known of the counters.
    [[nodiscard]] std::optional<NumberRange> GetRangeOf(const Expr& expr) const {
        const std::optional<NumberRange> all = GetRange(expr);
        if (!all) return all;
        std::optional<NumberRange> range;
        switch (expr.kind) {
            case ExprKind::Load: range = GetRangeOfCounter(*static_cast<const LoadExpr&>(expr).place); break;
            case ExprKind::Convert: range = GetRangeOf(*static_cast<const ConvertExpr&>(expr).operand); break;
            case ExprKind::Binary: range = GetRangeOfBinary(static_cast<const BinaryExpr&>(expr)); break;
            default: break;
        }
        return range && all->Contains(*range) ? range : all;
    }

    [[nodiscard]] std::optional<NumberRange> GetRangeOfCounter(const Place& place) const {
        if (place.kind != PlaceKind::Variable) return std::nullopt;
        const auto found = std::find_if(counters_.rbegin(), counters_.rend(), [&](const Counter& counter) {
            return counter.variable == static_cast<const VariablePlace&>(place).variable;
        });
        if (found == counters_.rend()) return std::nullopt;
        return found->range;
    }

    [[nodiscard]] std::optional<NumberRange> GetRangeOfBinary(const BinaryExpr& expr) const {
        const auto left = GetRangeOf(*expr.left);
        const auto right = GetRangeOf(*expr.right);
        if (!left || !right) return std::nullopt;
        switch (expr.op) {
            case BinaryOperator::Add: return NumberRange{left->lower + right->lower, left->upper + right->upper};
            case BinaryOperator::Sub: return NumberRange{left->lower - right->upper, left->upper - right->lower};
            case BinaryOperator::Mul:
                if (left->lower < 0 || right->lower < 0 || left->upper > UINT32_MAX || right->upper > UINT32_MAX)
                    return std::nullopt;
                return NumberRange{left->lower * right->lower, left->upper * right->upper};
            default: return std::nullopt;
        }
    }

    std::vector<Counter> counters_;
};

}  // namespace

void DropKnownChecks(Project& project) {
    CheckDropper dropper;
    WalkBodies(project, dropper);
}

}  // namespace tn61131::st
