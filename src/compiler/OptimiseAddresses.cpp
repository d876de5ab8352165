// Addresses of elements that are used more than once.
#include <algorithm>
#include <vector>

#include "compiler/Optimise.h"

namespace tn61131::st {

namespace {

/// Statements that one kept address reaches over: bounds the work for long bodies.
constexpr std::size_t kMostStatements = 64;
/// Kept addresses at one time.
constexpr std::uint32_t kMostKept = 6;

bool IsSame(const Expr& left, const Expr& right);

bool IsSame(const Place& left, const Place& right) {
    if (left.kind != right.kind || left.type != right.type) return false;
    switch (left.kind) {
        case PlaceKind::Variable:
            return static_cast<const VariablePlace&>(left).variable ==
                   static_cast<const VariablePlace&>(right).variable;
        case PlaceKind::Member: {
            const auto& a = static_cast<const MemberPlace&>(left);
            const auto& b = static_cast<const MemberPlace&>(right);
            return a.offset == b.offset && IsSame(*a.base, *b.base);
        }
        case PlaceKind::Element: {
            const auto& a = static_cast<const ElementPlace&>(left);
            const auto& b = static_cast<const ElementPlace&>(right);
            return a.array == b.array && IsSame(*a.base, *b.base) &&
                   std::equal(a.indices.begin(), a.indices.end(), b.indices.begin(), b.indices.end(),
                              [](const Expr* x, const Expr* y) { return IsSame(*x, *y); });
        }
        case PlaceKind::This: return true;
        default: return &left == &right;
    }
}

bool IsSame(const Expr& left, const Expr& right) {
    if (left.kind != right.kind || left.type->storage != right.type->storage) return false;
    switch (left.kind) {
        case ExprKind::Constant:
            return static_cast<const ConstantExpr&>(left).value->IsEqual(
                *static_cast<const ConstantExpr&>(right).value);
        case ExprKind::Load:
            return IsSame(*static_cast<const LoadExpr&>(left).place, *static_cast<const LoadExpr&>(right).place);
        case ExprKind::Unary: {
            const auto& a = static_cast<const UnaryExpr&>(left);
            const auto& b = static_cast<const UnaryExpr&>(right);
            return a.op == b.op && IsSame(*a.operand, *b.operand);
        }
        case ExprKind::Binary: {
            const auto& a = static_cast<const BinaryExpr&>(left);
            const auto& b = static_cast<const BinaryExpr&>(right);
            return a.op == b.op && IsSame(*a.left, *b.left) && IsSame(*a.right, *b.right);
        }
        case ExprKind::Convert: {
            const auto& a = static_cast<const ConvertExpr&>(left);
            const auto& b = static_cast<const ConvertExpr&>(right);
            return a.truncate == b.truncate && IsSame(*a.operand, *b.operand);
        }
        default: return false;
    }
}

using Variables = std::vector<const Variable*>;

/// The variables that an address depends on; false when it depends on something else.
bool CollectInputs(const Expr& expr, Variables& inputs) {
    switch (expr.kind) {
        case ExprKind::Constant: return true;
        case ExprKind::Unary: return CollectInputs(*static_cast<const UnaryExpr&>(expr).operand, inputs);
        case ExprKind::Convert: return CollectInputs(*static_cast<const ConvertExpr&>(expr).operand, inputs);
        case ExprKind::Binary: {
            const auto& binary = static_cast<const BinaryExpr&>(expr);
            return CollectInputs(*binary.left, inputs) && CollectInputs(*binary.right, inputs);
        }
        case ExprKind::Load: {
            const Place* place = static_cast<const LoadExpr&>(expr).place;
            while (place->kind == PlaceKind::Member)
                place = static_cast<const MemberPlace*>(place)->base;
            if (place->kind != PlaceKind::Variable) return false;
            const Variable* variable = static_cast<const VariablePlace*>(place)->variable;
            if (!IsApart(*variable)) return false;
            inputs.push_back(variable);
            return true;
        }
        default: return false;
    }
}

/// Whether the address of an element is worth keeping and can be kept as long as the variables in it do not change.
bool CanKeep(const Place& place, Variables& inputs) {
    switch (place.kind) {
        case PlaceKind::Variable:
            return static_cast<const VariablePlace&>(place).variable->storage.kind != StorageKind::Tag;
        case PlaceKind::This: return true;
        case PlaceKind::Member: return CanKeep(*static_cast<const MemberPlace&>(place).base, inputs);
        case PlaceKind::Element: {
            const auto& element = static_cast<const ElementPlace&>(place);
            for (const Expr* index : element.indices) {
                if (!CannotFail(*index) || !CollectInputs(*index, inputs)) return false;
            }
            return !element.array->isOpen && CanKeep(*element.base, inputs);
        }
        default: return false;
    }
}

/// Whether a statement changes one of some variables, or declares them lost by leaving the block in an unknown way.
class ChangeFinder final : public TreeWalker {
 public:
    explicit ChangeFinder(const Variables& variables) noexcept : variables_(variables) {}
    bool isChanged = false;

 private:
    void VisitPlace(Place*& place, Use use) override {
        if (place->kind == PlaceKind::Variable && use != Use::Read) {
            const Variable* variable = static_cast<const VariablePlace&>(*place).variable;
            isChanged = isChanged || std::find(variables_.begin(), variables_.end(), variable) != variables_.end();
        }
        WalkChildren(*place, use);
    }
    void VisitExpr(Expr*& expr) override {
        if (expr->kind == ExprKind::CallFunction) NoteCall(static_cast<const CallFunctionExpr&>(*expr));
        WalkChildren(*expr);
    }
    void VisitStmt(Stmt*& stmt) override {
        if (stmt->kind == StmtKind::CallBlock) NoteCall(static_cast<const CallBlockStmt&>(*stmt));
        WalkChildren(*stmt);
    }
    template <typename Call>
    void NoteCall(const Call& call) {
        for (const Variable* variable : variables_)
            isChanged = isChanged || MayChange(*variable, call);
    }

    const Variables& variables_;
};

/// Counts the uses of a place below a statement, and puts a kept address in their place.
class UseReplacer final : public TreeWalker {
 public:
    UseReplacer(const Place& place, KeptPlace* kept) noexcept : place_(place), kept_(kept) {}
    std::uint32_t count = 0;
    bool isHandedOn = false;

 private:
    void VisitPlace(Place*& place, Use use) override {
        if (!IsSame(*place, place_)) return WalkChildren(*place, use);
        ++count;
        isHandedOn = isHandedOn || use == Use::Address;
        if (kept_ != nullptr) place = kept_;
    }

    const Place& place_;
    KeptPlace* kept_;
};

/// The elements whose address a statement computes whatever way it takes, in the order of evaluation.
class CandidateFinder final : public TreeWalker {
 public:
    std::vector<Place*> candidates;

 private:
    void VisitPlace(Place*& place, Use use) override {
        WalkChildren(*place, use);
        if (place->kind != PlaceKind::Element) return;
        const auto& element = static_cast<const ElementPlace&>(*place);
        const bool isComputed = std::any_of(element.indices.begin(), element.indices.end(),
                                            [](const Expr* index) { return index->kind != ExprKind::Constant; });
        if (isComputed) candidates.push_back(place);
    }
    void VisitExpr(Expr*& expr) override {
        switch (expr->kind) {
            case ExprKind::Logical: return Walk(static_cast<LogicalExpr&>(*expr).left);
            case ExprKind::Select: return Walk(static_cast<SelectExpr&>(*expr).condition);
            case ExprKind::CallFunction:
                if (static_cast<const CallFunctionExpr&>(*expr).enable != nullptr) return;
                break;
            case ExprKind::CallBuiltIn:
                if (static_cast<const CallBuiltInExpr&>(*expr).enable != nullptr) return;
                break;
            default: break;
        }
        WalkChildren(*expr);
    }
    void VisitStmt(Stmt*& stmt) override {
        switch (stmt->kind) {
            case StmtKind::If: return Walk(static_cast<IfStmt&>(*stmt).condition);
            case StmtKind::Case: return Walk(static_cast<CaseStmt&>(*stmt).selector);
            case StmtKind::CallBlock:
                if (static_cast<const CallBlockStmt&>(*stmt).enable != nullptr) return;
                break;
            case StmtKind::For: {
                auto& loop = static_cast<ForStmt&>(*stmt);
                Walk(loop.to);
                Walk(loop.by);
                return Walk(loop.from);
            }
            case StmtKind::While:
            case StmtKind::Repeat:
            case StmtKind::Block: return;
            default: break;
        }
        WalkChildren(*stmt);
    }
};

class AddressKeeper final : public TreeWalker {
 public:
    explicit AddressKeeper(Project& project) noexcept : project_(project) {}
    void Begin(Pou& /*pou*/) noexcept { depth_ = 0; }

 private:
    void VisitBlock(Block& block) override {
        std::vector<Stmt*> done;
        bool isChanged = false;
        for (std::size_t i = 0; i < block.statements.size();) {
            const std::span<Stmt*> rest = block.statements.subspan(i);
            Stmt* kept = depth_ < kMostKept ? FindKept(rest, i) : nullptr;
            if (kept == nullptr) {
                ++i;
                done.push_back(rest[0]);
            } else {
                isChanged = true;
                done.push_back(kept);
            }
        }
        if (isChanged) block.statements = project_.arena.Copy(done);
        WalkChildren(block);
    }

    void VisitStmt(Stmt*& stmt) override {
        const bool isKeep = stmt->kind == StmtKind::Keep;
        if (isKeep) ++depth_;
        WalkChildren(*stmt);
        if (isKeep) --depth_;
    }

    /// A Keep statement around the first statements of a list, whose number is added to `position`; null when the first
    /// statement has no address that is used again.
    Stmt* FindKept(std::span<Stmt*> statements, std::size_t& position) {
        CandidateFinder finder;
        finder.Walk(statements[0]);
        const Place* best = nullptr;
        std::uint32_t bestCount = 2;
        std::size_t bestLength = 0;
        for (std::size_t i = 0; i < finder.candidates.size(); ++i) {
            const Place& place = *finder.candidates[i];
            const bool isKnown =
                std::any_of(finder.candidates.begin(), finder.candidates.begin() + static_cast<std::ptrdiff_t>(i),
                            [&](const Place* other) { return IsSame(*other, place); });
            Variables inputs;
            if (isKnown || !CanKeep(place, inputs)) continue;
            std::uint32_t count = 0;
            const std::size_t length = Measure(statements, place, inputs, count);
            // Of two that are used as often, the later one may contain the other.
            if (count < bestCount) continue;
            best = &place;
            bestCount = count;
            bestLength = length;
        }
        if (best == nullptr) return nullptr;
        position += bestLength;
        return MakeKeep(statements.first(bestLength), *best);
    }

    /// How many statements use the place before something in it changes, and how often.
    static std::size_t Measure(std::span<Stmt*> statements, const Place& place, const Variables& inputs,
                               std::uint32_t& count) {
        std::size_t length = 0;
        count = 0;
        for (std::size_t i = 0; i < statements.size() && i < kMostStatements; ++i) {
            ChangeFinder changes(inputs);
            changes.Walk(statements[i]);
            if (changes.isChanged) break;
            UseReplacer uses(place, nullptr);
            uses.Walk(statements[i]);
            count += uses.count;
            if (uses.count != 0) length = i + 1;
        }
        return length;
    }

    Stmt* MakeKeep(std::span<Stmt*> statements, const Place& place) {
        // The place goes into the new statement and is replaced by the kept one where it was.
        const auto& element = static_cast<const ElementPlace&>(place);
        Place* original = project_.arena.New<ElementPlace>(element);
        auto* kept = project_.arena.New<KeptPlace>(KeptPlace{{PlaceKind::Kept, place.type, place.range}, 0});
        const std::span<Stmt*> body = project_.arena.Copy(std::span<Stmt* const>(statements));
        UseReplacer uses(*original, kept);
        for (Stmt*& stmt : body)
            uses.Walk(stmt);
        const SourceRange range = statements[0]->range;
        return project_.arena.New<KeepStmt>(KeepStmt{{StmtKind::Keep, range},
                                                     original,
                                                     kept,
                                                     uses.isHandedOn,
                                                     project_.arena.New<Block>(Block{{StmtKind::Block, range}, body})});
    }

    Project& project_;
    std::uint32_t depth_ = 0;
};

}  // namespace

void KeepAddresses(Project& project) {
    AddressKeeper keeper(project);
    WalkBodies(project, keeper);
}

}  // namespace tn61131::st
