// Constant folding and simplification.
#include <optional>

#include "compiler/NumberRange.h"
#include "compiler/Optimise.h"
#include "platform/ErrorLog.h"
#include "value/TypeTable.h"

namespace tn61131::st {

namespace {

constexpr bool IsComparison(BinaryOperator op) noexcept {
    return op >= BinaryOperator::EQ && op <= BinaryOperator::LE;
}

/// The comparison that gives the opposite, of NaN too: the machine makes three of the six that way.
constexpr BinaryOperator Invert(BinaryOperator op) noexcept {
    switch (op) {
        case BinaryOperator::EQ: return BinaryOperator::NE;
        case BinaryOperator::NE: return BinaryOperator::EQ;
        case BinaryOperator::GT: return BinaryOperator::LE;
        case BinaryOperator::LE: return BinaryOperator::GT;
        case BinaryOperator::GE: return BinaryOperator::LT;
        default: return BinaryOperator::GE;
    }
}

/// Operators whose low bits depend on the low bits of the operands only.
constexpr bool IsModular(BinaryOperator op) noexcept {
    return op == BinaryOperator::Add || op == BinaryOperator::Sub || op == BinaryOperator::Mul ||
           op == BinaryOperator::And || op == BinaryOperator::Or || op == BinaryOperator::Xor;
}

bool IsWhole(ElementaryType type) noexcept {
    return type != ElementaryType::Bool && GetRangeOfStorage(type).has_value();
}

const ConstantExpr* AsConstant(const Expr* expr) noexcept {
    return expr->kind == ExprKind::Constant ? static_cast<const ConstantExpr*>(expr) : nullptr;
}

class Folder final : public TreeWalker {
 public:
    explicit Folder(Project& project) noexcept : project_(project) {}
    void Begin(Pou& /*pou*/) noexcept {}

 private:
    void VisitExpr(Expr*& expr) override {
        WalkChildren(*expr);
        switch (expr->kind) {
            case ExprKind::Unary: return FoldUnary(expr);
            case ExprKind::Binary: return FoldBinary(expr);
            case ExprKind::Logical: return FoldLogical(expr);
            case ExprKind::Convert: return FoldConvert(expr);
            case ExprKind::Select: {
                const auto& select = static_cast<const SelectExpr&>(*expr);
                if (const auto condition = GetConstantNumber(*select.condition))
                    expr = *condition != 0 ? select.whenTrue : select.whenFalse;
                return;
            }
            default: return;
        }
    }

    void VisitStmt(Stmt*& stmt) override {
        WalkChildren(*stmt);
        if (stmt->kind == StmtKind::If) {
            const auto& branch = static_cast<const IfStmt&>(*stmt);
            const auto condition = GetConstantNumber(*branch.condition);
            if (condition) Replace(stmt, *condition != 0 ? branch.then : branch.otherwise);
        } else if (stmt->kind == StmtKind::While) {
            const auto condition = GetConstantNumber(*static_cast<const WhileStmt&>(*stmt).condition);
            if (condition && *condition == 0) Replace(stmt, nullptr);
        }
    }

    void Replace(Stmt*& stmt, Block* block) {
        if (block == nullptr) block = project_.arena.New<Block>(Block{{StmtKind::Block, stmt->range}, {}});
        stmt = block;
    }

    /// Null where the machine has no answer, or none of fixed size.
    [[nodiscard]] Expr* MakeConstant(const Expr& from, const CValue& value) {
        if (value.GetType() != from.type->storage || GetTypeInfo(value.GetType()).size == 0) return nullptr;
        const CValue& kept = project_.madeConstants.emplace_back(value);
        return project_.arena.New<ConstantExpr>(
            ConstantExpr{{ExprKind::Constant, from.type, from.range}, &kept, false});
    }
    void ReplaceByConstant(Expr*& expr, bool succeeded, const CValue& value) {
        if (!succeeded) return;
        if (Expr* constant = MakeConstant(*expr, value)) expr = constant;
    }

    void FoldUnary(Expr*& expr) {
        auto& unary = static_cast<UnaryExpr&>(*expr);
        if (const ConstantExpr* operand = AsConstant(unary.operand)) {
            CErrorLog log;
            CValue value = *operand->value;
            const bool done = value.UnaryOperation(log, ErrorLocationNull::Get(), static_cast<unsigned char>(unary.op));
            return ReplaceByConstant(expr, done, value);
        }
        if (unary.op != UnaryOperator::Not) return;
        if (unary.operand->kind == ExprKind::Unary &&
            static_cast<const UnaryExpr&>(*unary.operand).op == UnaryOperator::Not) {
            expr = static_cast<const UnaryExpr&>(*unary.operand).operand;
        } else if (unary.operand->kind == ExprKind::Binary) {
            auto& binary = static_cast<BinaryExpr&>(*unary.operand);
            if (!IsComparison(binary.op) || unary.type->storage != ElementaryType::Bool) return;
            expr = project_.arena.New<BinaryExpr>(
                BinaryExpr{{ExprKind::Binary, expr->type, expr->range}, Invert(binary.op), binary.left, binary.right});
        }
    }

    void FoldBinary(Expr*& expr) {
        auto& binary = static_cast<BinaryExpr&>(*expr);
        const ConstantExpr* left = AsConstant(binary.left);
        const ConstantExpr* right = AsConstant(binary.right);
        if (left != nullptr && right != nullptr) {
            CErrorLog log;
            CValue value = *left->value;
            CValue operand = *right->value;
            const bool done =
                value.BinaryOperation(log, ErrorLocationNull::Get(), static_cast<unsigned char>(binary.op), operand);
            return ReplaceByConstant(expr, done, value);
        }
        if (IsComparison(binary.op)) return NarrowComparison(binary);
        if (IsWhole(binary.type->storage)) DropNeutral(expr, binary);
    }

    /// x + 0, 0 + x, x - 0, x * 1, 1 * x, x / 1, x OR 0, x XOR 0.
    static void DropNeutral(Expr*& expr, const BinaryExpr& binary) {
        const auto isNeutral = [&](const Expr& operand, bool isRight) {
            const std::optional<Int128> number = GetConstantNumber(operand);
            if (!number || operand.type->storage != binary.type->storage) return false;
            switch (binary.op) {
                case BinaryOperator::Add:
                case BinaryOperator::Or:
                case BinaryOperator::Xor: return *number == 0;
                case BinaryOperator::Sub: return isRight && *number == 0;
                case BinaryOperator::Mul: return *number == 1;
                case BinaryOperator::Div: return isRight && *number == 1;
                default: return false;
            }
        };
        if (isNeutral(*binary.right, true) && binary.left->type->storage == binary.type->storage) {
            expr = binary.left;
        } else if (isNeutral(*binary.left, false) && binary.right->type->storage == binary.type->storage) {
            expr = binary.right;
        }
    }

    /// An operand that was only widened; null for others.
    static Expr* AsWidened(const Expr& expr) noexcept {
        if (expr.kind != ExprKind::Convert) return nullptr;
        const auto& convert = static_cast<const ConvertExpr&>(expr);
        const ElementaryType from = convert.operand->type->storage;
        if (convert.zeroOnFailure || !IsWhole(from) || !IsWhole(expr.type->storage)) return nullptr;
        return GetRangeOfStorage(expr.type->storage)->Contains(*GetRangeOfStorage(from)) ? convert.operand : nullptr;
    }

    /// The expression in another whole type, when its value allows: a number that was widened from it or is constant.
    [[nodiscard]] Expr* AsNarrow(Expr& expr, const Type* type, bool anyBits) {
        if (Expr* operand = AsWidened(expr); operand != nullptr && operand->type->storage == type->storage)
            return operand;
        const std::optional<Int128> number = GetConstantNumber(expr);
        if (!number || (!anyBits && !GetRangeOfStorage(type->storage)->Contains(*number))) return nullptr;
        CValue value;
        value.SetInteger(static_cast<long long>(*number), type->storage);
        const CValue& kept = project_.madeConstants.emplace_back(value);
        return project_.arena.New<ConstantExpr>(ConstantExpr{{ExprKind::Constant, type, expr.range}, &kept, false});
    }

    void NarrowComparison(BinaryExpr& binary) {
        Expr* widened = AsWidened(*binary.left);
        if (widened == nullptr) widened = AsWidened(*binary.right);
        if (widened == nullptr || binary.left->type->storage != binary.right->type->storage) return;
        Expr* left = AsNarrow(*binary.left, widened->type, false);
        Expr* right = AsNarrow(*binary.right, widened->type, false);
        if (left == nullptr || right == nullptr) return;
        binary.left = left;
        binary.right = right;
    }

    void FoldLogical(Expr*& expr) {
        const auto& logical = static_cast<const LogicalExpr&>(*expr);
        if (const auto left = GetConstantNumber(*logical.left)) {
            expr = (*left != 0) == logical.isAnd ? logical.right : logical.left;
        } else if (const auto right = GetConstantNumber(*logical.right)) {
            if ((*right != 0) == logical.isAnd) expr = logical.left;
        }
    }

    void FoldConvert(Expr*& expr) {
        auto& convert = static_cast<ConvertExpr&>(*expr);
        const ElementaryType target = convert.type->storage;
        if (const ConstantExpr* operand = AsConstant(convert.operand)) {
            CErrorLog log;
            CValue value = *operand->value;
            const bool done = convert.truncate ? value.Truncate(log, ErrorLocationNull::Get(), target)
                                               : value.ChangeType(log, ErrorLocationNull::Get(), target);
            return ReplaceByConstant(expr, done, value);
        }
        const ElementaryType source = convert.operand->type->storage;
        if (!IsWhole(source) || !IsWhole(target)) return;
        if (convert.operand->kind == ExprKind::Convert) {
            // What was widened first is converted at once.
            Expr* inner = AsWidened(*convert.operand);
            if (inner == nullptr) return;
            convert.operand = inner;
            if (inner->type->storage == target) expr = inner;
            return;
        }
        if (convert.operand->kind != ExprKind::Binary) return;
        auto& binary = static_cast<BinaryExpr&>(*convert.operand);
        const bool isNarrowing = GetTypeInfo(target).size < GetTypeInfo(source).size;
        if (!isNarrowing || !IsModular(binary.op)) return;
        Expr* left = AsNarrow(*binary.left, convert.type, true);
        Expr* right = AsNarrow(*binary.right, convert.type, true);
        if (left == nullptr || right == nullptr) return;
        expr = project_.arena.New<BinaryExpr>(
            BinaryExpr{{ExprKind::Binary, convert.type, convert.range}, binary.op, left, right});
    }

    Project& project_;
};

}  // namespace

void FoldConstants(Project& project) {
    Folder folder(project);
    WalkBodies(project, folder);
}

}  // namespace tn61131::st
