// Calls of functions that are one expression.
#include <unordered_map>

#include "compiler/Optimise.h"
#include "value/TypeTable.h"

namespace tn61131::st {

namespace {

/// Larger expressions are left as calls.
constexpr std::uint32_t kMostNodes = 24;

/// A copy of an expression with other expressions for the parameters.
class Copier {
 public:
    using Arguments = std::unordered_map<const Variable*, Expr*>;

    Copier(Arena& arena, const Arguments& arguments) noexcept : arena_(arena), arguments_(arguments) {}

    [[nodiscard]] Expr* Copy(const Expr& expr) {
        switch (expr.kind) {
            case ExprKind::Load: return CopyLoad(static_cast<const LoadExpr&>(expr));
            case ExprKind::Unary: {
                auto* copy = arena_.New<UnaryExpr>(static_cast<const UnaryExpr&>(expr));
                copy->operand = Copy(*copy->operand);
                return copy;
            }
            case ExprKind::Binary: {
                auto* copy = arena_.New<BinaryExpr>(static_cast<const BinaryExpr&>(expr));
                copy->left = Copy(*copy->left);
                copy->right = Copy(*copy->right);
                return copy;
            }
            case ExprKind::Logical: {
                auto* copy = arena_.New<LogicalExpr>(static_cast<const LogicalExpr&>(expr));
                copy->left = Copy(*copy->left);
                copy->right = Copy(*copy->right);
                return copy;
            }
            case ExprKind::Convert: {
                auto* copy = arena_.New<ConvertExpr>(static_cast<const ConvertExpr&>(expr));
                copy->operand = Copy(*copy->operand);
                return copy;
            }
            case ExprKind::Select: {
                auto* copy = arena_.New<SelectExpr>(static_cast<const SelectExpr&>(expr));
                copy->condition = Copy(*copy->condition);
                copy->whenTrue = Copy(*copy->whenTrue);
                copy->whenFalse = Copy(*copy->whenFalse);
                return copy;
            }
            case ExprKind::CallBuiltIn: {
                auto* copy = arena_.New<CallBuiltInExpr>(static_cast<const CallBuiltInExpr&>(expr));
                std::vector<Expr*> arguments;
                for (const Expr* argument : copy->arguments)
                    arguments.push_back(Copy(*argument));
                copy->arguments = arena_.Copy(arguments);
                return copy;
            }
            default: return arena_.New<ConstantExpr>(static_cast<const ConstantExpr&>(expr));
        }
    }

 private:
    Expr* CopyLoad(const LoadExpr& load) {
        const auto found = arguments_.find(static_cast<const VariablePlace&>(*load.place).variable);
        return found == arguments_.end() ? arena_.New<LoadExpr>(load) : found->second;
    }

    Arena& arena_;
    const Arguments& arguments_;
};

/// What a body that can be put in the place of calls is made of: whether all its parts can be copied, and how often
/// each variable is read.
class LeafCheck final : public TreeWalker {
 public:
    bool isLeaf = true;
    std::uint32_t nodes = 0;
    std::unordered_map<const Variable*, std::uint32_t> reads;

 private:
    void VisitExpr(Expr*& expr) override {
        ++nodes;
        switch (expr->kind) {
            case ExprKind::Constant:
            case ExprKind::Unary:
            case ExprKind::Binary:
            case ExprKind::Convert:
            case ExprKind::Load: break;
            case ExprKind::Logical:
            case ExprKind::Select: break;
            case ExprKind::CallBuiltIn: {
                const auto& call = static_cast<const CallBuiltInExpr&>(*expr);
                isLeaf = isLeaf && !call.withEno && call.enable == nullptr && call.enableOutput == nullptr;
                break;
            }
            default: isLeaf = false; return;
        }
        WalkChildren(*expr);
    }
    void VisitPlace(Place*& place, Use use) override {
        if (place->kind != PlaceKind::Variable || use != Use::Read) {
            isLeaf = false;
            return;
        }
        ++reads[static_cast<const VariablePlace&>(*place).variable];
    }
};

class Inliner final : public TreeWalker {
 public:
    explicit Inliner(Project& project) noexcept : project_(project) {}
    void Begin(Pou& pou) noexcept { running_ = &pou; }

 private:
    struct Leaf {
        Expr* value = nullptr;  ///< null for functions that are no leaves
        std::unordered_map<const Variable*, std::uint32_t> reads;
    };

    void VisitExpr(Expr*& expr) override {
        WalkChildren(*expr);
        if (expr->kind != ExprKind::CallFunction) return;
        auto& call = static_cast<CallFunctionExpr&>(*expr);
        if (call.enable != nullptr || call.enableOutput != nullptr || call.callee == running_) return;
        const Leaf& leaf = GetLeaf(*call.callee);
        if (leaf.value == nullptr) return;
        Copier::Arguments arguments;
        for (const FunctionArgument& argument : call.arguments) {
            const auto reads = leaf.reads.find(argument.parameter);
            const std::uint32_t count = reads == leaf.reads.end() ? 0 : reads->second;
            if (argument.value == nullptr || !CanTakePart(*argument.value, count)) return;
            arguments[argument.parameter] = argument.value;
        }
        expr = Copier(project_.arena, arguments).Copy(*leaf.value);
    }

    /// Whether an argument may be evaluated where the parameter stands, as often as it stands there: other than before
    /// a call, and perhaps not at all.
    static bool CanTakePart(const Expr& value, std::uint32_t count) {
        if (value.kind == ExprKind::Constant) return true;
        if (!CannotFail(value)) return false;
        return count <= 1 || value.kind == ExprKind::Load;
    }

    const Leaf& GetLeaf(Pou& pou) {
        const auto [place, isNew] = leaves_.try_emplace(&pou);
        if (isNew) place->second = MakeLeaf(pou);
        return place->second;
    }

    Leaf MakeLeaf(const Pou& pou) const {
        if (pou.kind != ast::PouKind::Function || pou.body == nullptr || pou.result == nullptr) return {};
        if (!pou.outputs.empty() || !pou.inOuts.empty() || GetTypeInfo(pou.resultType->storage).size == 0) return {};
        for (const Variable* input : pou.inputs) {
            // A subrange or a text may change on its way into the parameter.
            const bool isPlain =
                GetTypeInfo(input->type->storage).size != 0 && Strip(input->type)->kind != TypeKind::Subrange;
            if (!isPlain || input->isWritten || input->isPartWritten || input->isAddressTaken) return {};
        }
        Expr* value = GetValue(*pou.body, *pou.result);
        if (value == nullptr) return {};
        LeafCheck check;
        check.Walk(value);
        if (!check.isLeaf || check.nodes > kMostNodes) return {};
        for (const auto& [variable, count] : check.reads) {
            const bool isInput = variable->section == ast::VarSection::Input && variable->owner == &pou;
            if (!isInput) return {};
        }
        return {value, std::move(check.reads)};
    }

    /// The expression that a body assigns to its result as the only thing it does; null for other bodies.
    [[nodiscard]] Expr* GetValue(const Block& body, const Variable& result) const {
        if (body.statements.size() != 1) return nullptr;
        const Stmt& stmt = *body.statements[0];
        if (stmt.kind == StmtKind::Block) return GetValue(static_cast<const Block&>(stmt), result);
        if (stmt.kind == StmtKind::Assign) {
            const auto& assign = static_cast<const AssignStmt&>(stmt);
            const bool isResult = assign.target->kind == PlaceKind::Variable && !assign.isRanged &&
                                  static_cast<const VariablePlace&>(*assign.target).variable == &result;
            return isResult ? assign.value : nullptr;
        }
        if (stmt.kind != StmtKind::If) return nullptr;
        const auto& branch = static_cast<const IfStmt&>(stmt);
        if (branch.otherwise == nullptr) return nullptr;
        Expr* whenTrue = GetValue(*branch.then, result);
        Expr* whenFalse = GetValue(*branch.otherwise, result);
        if (whenTrue == nullptr || whenFalse == nullptr) return nullptr;
        return project_.arena.New<SelectExpr>(
            SelectExpr{{ExprKind::Select, result.type, stmt.range}, branch.condition, whenTrue, whenFalse});
    }

    Project& project_;
    Pou* running_ = nullptr;
    std::unordered_map<const Pou*, Leaf> leaves_;
};

}  // namespace

void InlineLeaves(Project& project) {
    Inliner inliner(project);
    WalkBodies(project, inliner);
}

}  // namespace tn61131::st
