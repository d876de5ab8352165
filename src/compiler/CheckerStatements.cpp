#include <algorithm>
#include <iterator>
#include <map>

#include "compiler/BodyChecker.h"

// Statements but for loops (IEC 61131-3, 7.3.3).

namespace tn61131::st {

/// One range of a CASE label and where it stands.
struct BodyChecker::Label {
    std::int64_t lower = 0;
    std::int64_t upper = 0;
    SourceRange range{};
};

Block* BodyChecker::CheckBlock(std::span<ast::Stmt* const> statements, SourceRange range) {
    auto* block = New(Block{{StmtKind::Block, range}, {}});
    const std::span<Stmt*> list = project_.arena.NewArray<Stmt*>(statements.size());
    std::size_t count = 0;
    bool isOver = false;
    bool isReported = false;
    for (const ast::Stmt* statement : statements) {
        if (isOver && !isReported && statement->kind != ast::StmtKind::Empty) {
            Hint(DiagnosticCode::Unreachable, statement->range);
            isReported = true;
        }
        if (Stmt* checked = CheckStatement(*statement)) list[count++] = checked;
        isOver |= statement->kind == ast::StmtKind::Return || statement->kind == ast::StmtKind::Exit ||
                  statement->kind == ast::StmtKind::Continue;
    }
    block->statements = list.first(count);
    return block;
}

Stmt* BodyChecker::CheckStatement(const ast::Stmt& statement) {
    switch (statement.kind) {
        case ast::StmtKind::Error:
        case ast::StmtKind::Empty: return nullptr;
        case ast::StmtKind::Assign: return CheckAssign(static_cast<const ast::AssignStmt&>(statement));
        case ast::StmtKind::Call: return CheckCallStatement(static_cast<const ast::CallStmt&>(statement));
        case ast::StmtKind::If: return CheckIf(static_cast<const ast::IfStmt&>(statement));
        case ast::StmtKind::Case: return CheckCase(static_cast<const ast::CaseStmt&>(statement));
        case ast::StmtKind::For: return CheckFor(static_cast<const ast::ForStmt&>(statement));
        case ast::StmtKind::While: return CheckWhile(static_cast<const ast::WhileStmt&>(statement));
        case ast::StmtKind::Repeat: return CheckRepeat(static_cast<const ast::RepeatStmt&>(statement));
        case ast::StmtKind::Exit:
        case ast::StmtKind::Continue:
        case ast::StmtKind::Return: return CheckJump(statement);
        case ast::StmtKind::Block: return nullptr;
    }
    return nullptr;
}

// --- assignment ---

Stmt* BodyChecker::AssignTo(const Entity& target, Expr* value, SourceRange targetRange, SourceRange range) {
    if (target.kind == Entity::Kind::Error || IsError(value)) return nullptr;
    if (target.kind == Entity::Kind::Pou) {
        Expr* call = CallAccessor(target, *target.pou->setter, value, range);
        return IsError(call) ? nullptr : New(EvaluateStmt{{StmtKind::Evaluate, range}, call});
    }
    MarkWritten(target.place, targetRange);
    if (target.kind == Entity::Kind::Bits) {
        if (Variable* variable = target.place->kind == PlaceKind::Variable
                                     ? static_cast<VariablePlace*>(target.place)->variable
                                     : nullptr)
            variable->isPartWritten = true;
        const Type* type = project_.types.Bool();
        if (target.width == 8) type = Elementary(ElementaryType::Byte);
        if (target.width == 16) type = Elementary(ElementaryType::Word);
        if (target.width == 32) type = Elementary(ElementaryType::DWord);
        if (target.width == 64) type = Elementary(ElementaryType::LWord);
        value = Coerce(value, type);
        if (IsError(value)) return nullptr;
        return New(StoreBitsStmt{{StmtKind::StoreBits, range}, target.place, target.firstBit, target.width, value});
    }
    const Type* type = target.place->type;
    if (Strip(type)->kind == TypeKind::FunctionBlock) {
        Fail(DiagnosticCode::NotAssignable, targetRange, {SourceText(targetRange), "a function block instance"});
        return nullptr;
    }
    value = Coerce(value, type);
    if (IsError(value)) return nullptr;
    if (IsAggregate(type)) return New(AssignAggregateStmt{{StmtKind::AssignAggregate, range}, target.place, value});
    const bool isRanged =
        Strip(type)->kind == TypeKind::Subrange && value->kind != ExprKind::Constant &&
        BaseOf(type)->kind != TypeKind::Error &&
        !(value->kind == ExprKind::Load && Strip(static_cast<LoadExpr*>(value)->place->type) == Strip(type));
    return New(AssignStmt{{StmtKind::Assign, range}, target.place, value, isRanged});
}

Stmt* BodyChecker::CheckAssign(const ast::AssignStmt& assign) {
    if (assign.chained != nullptr) return CheckChain(assign);
    switch (assign.mode) {
        case ast::AssignStmt::Mode::Value: break;
        case ast::AssignStmt::Mode::Reference: return CheckReferenceAssign(assign);
        case ast::AssignStmt::Mode::Set:
        case ast::AssignStmt::Mode::Reset: return CheckSetReset(assign);
        case ast::AssignStmt::Mode::Attempt:
            Fail(DiagnosticCode::AttemptUnsupported, assign.range, {"?=", SourceText(assign.target->range)});
            return nullptr;
    }
    const Entity target = CheckTarget(*assign.target);
    const Type* wanted = nullptr;
    if (target.kind == Entity::Kind::Place) wanted = target.place->type;
    if (target.kind == Entity::Kind::Bits && target.width == 1) wanted = project_.types.Bool();
    if (target.kind == Entity::Kind::Pou) wanted = target.pou->resultType;
    Expr* value = Check(*assign.value, wanted);
    return AssignTo(target, value, assign.target->range, assign.range);
}

Stmt* BodyChecker::CheckChain(const ast::AssignStmt& assign) {
    // a := b := c is b := c, then a := b, so that each value is converted to its target's type.
    std::vector<const ast::AssignStmt*> links;
    for (const ast::AssignStmt* link = &assign; link != nullptr; link = link->chained)
        links.push_back(link);
    const std::span<Stmt*> list = project_.arena.NewArray<Stmt*>(links.size());
    std::size_t count = 0;
    for (std::size_t i = links.size(); i-- > 0;) {
        Stmt* made = nullptr;
        if (i + 1 == links.size()) {
            made = CheckAssign(*links[i]);
        } else {
            const Entity target = CheckTarget(*links[i]->target);
            const ast::Expr& source = *links[i + 1]->target;
            made = AssignTo(target, Check(source, nullptr), links[i]->target->range, links[i]->range);
        }
        if (made == nullptr) return nullptr;
        list[count++] = made;
    }
    return New(Block{{StmtKind::Block, assign.range}, list});
}

Stmt* BodyChecker::CheckReferenceAssign(const ast::AssignStmt& assign) {
    // The reference itself is meant, not what it refers to.
    const Entity target = Resolve(*assign.target, nullptr);
    if (target.kind == Entity::Kind::Error) return nullptr;
    const bool isReference = target.kind == Entity::Kind::Place && target.place->kind == PlaceKind::Deref &&
                             static_cast<DerefPlace*>(target.place)->pointer->kind == ExprKind::Load &&
                             Strip(static_cast<DerefPlace*>(target.place)->pointer->type)->kind == TypeKind::Reference;
    if (!isReference) {
        Fail(DiagnosticCode::TypeMismatch, assign.target->range,
             {"a variable of type REFERENCE TO", SourceText(assign.target->range)});
        return nullptr;
    }
    Place* place = static_cast<LoadExpr*>(static_cast<DerefPlace*>(target.place)->pointer)->place;
    Expr* value = Check(*assign.value, nullptr);
    if (IsError(value)) return nullptr;
    if (FamilyOf(value->type) == Family::Null || (value->kind == ExprKind::Constant && GetInteger(value) == 0)) {
        CValue null;
        null.SetAddress(0, 0, 0);
        value = NewConstant(place->type, std::move(null), assign.value->range);
    } else {
        value = CoerceReference(value, place->type);
    }
    if (IsError(value)) return nullptr;
    MarkWritten(place, assign.target->range);
    return New(AssignStmt{{StmtKind::Assign, assign.range}, place, value, false});
}

Stmt* BodyChecker::CheckSetReset(const ast::AssignStmt& assign) {
    Expr* condition = CheckCondition(*assign.value);
    const Entity target = CheckTarget(*assign.target);
    const bool isSet = assign.mode == ast::AssignStmt::Mode::Set;
    Stmt* store = AssignTo(target, NewConstant(project_.types.Bool(), CValue(isSet), assign.range),
                           assign.target->range, assign.range);
    if (store == nullptr || IsError(condition)) return nullptr;
    const std::span<Stmt*> list = project_.arena.NewArray<Stmt*>(1);
    list[0] = store;
    auto* then = New(Block{{StmtKind::Block, assign.range}, list});
    return New(IfStmt{{StmtKind::If, assign.range}, condition, then, nullptr});
}

// --- selection ---

Stmt* BodyChecker::CheckIf(const ast::IfStmt& statement) {
    // Each ELSIF stands inside of the ELSE before it, and whoever goes through the tree descends as deep.
    constexpr std::uint32_t kMaxBranches = 1000;
    IfStmt* first = nullptr;
    IfStmt* last = nullptr;
    const std::uint32_t outerBranches = openBranches_;
    for (const ast::IfBranch& branch : statement.branches) {
        if (++openBranches_ > kMaxBranches) {
            Fail(DiagnosticCode::NestingTooDeep, branch.condition->range, {std::to_string(kMaxBranches)});
            break;
        }
        Expr* condition = CheckCondition(*branch.condition);
        Block* then = CheckBlock(branch.body, branch.condition->range);
        auto* made = New(IfStmt{{StmtKind::If, statement.range}, condition, then, nullptr});
        if (first == nullptr) {
            first = made;
        } else {
            made->range = branch.condition->range;
            const std::span<Stmt*> list = project_.arena.NewArray<Stmt*>(1);
            list[0] = made;
            last->otherwise = New(Block{{StmtKind::Block, branch.condition->range}, list});
        }
        last = made;
    }
    if (statement.hasElse && last != nullptr) last->otherwise = CheckBlock(statement.otherwise, statement.range);
    openBranches_ = outerBranches;
    return first;
}

void BodyChecker::CheckLabel(const ast::CaseLabel& label, const Type* type, std::vector<Label>& labels,
                             CaseRange& range) {
    const auto value = [&](const ast::Expr& expression) -> std::optional<std::int64_t> {
        Expr* checked = CheckAs(expression, type);
        if (IsError(checked)) return std::nullopt;
        if (checked->kind != ExprKind::Constant) {
            Fail(DiagnosticCode::NotConstant, expression.range);
            return std::nullopt;
        }
        return GetInteger(checked);
    };
    const std::optional<std::int64_t> lower = value(*label.lower);
    const std::optional<std::int64_t> upper = label.upper == nullptr ? lower : value(*label.upper);
    if (!lower || !upper) return;
    const bool isUnsigned = FamilyOf(type) != Family::Signed && type->size == 8;
    const bool isEmpty =
        isUnsigned ? static_cast<std::uint64_t>(*upper) < static_cast<std::uint64_t>(*lower) : *upper < *lower;
    const SourceRange place =
        label.upper == nullptr ? label.lower->range : Join(label.lower->range, label.upper->range);
    if (isEmpty) {
        Fail(DiagnosticCode::EmptyRange, place, {std::to_string(*lower), std::to_string(*upper)});
        return;
    }
    range = {*lower, *upper};
    labels.push_back({*lower, *upper, place});
}

void BodyChecker::ReportOverlaps(const std::vector<Label>& labels, bool isUnsigned) {
    const auto key = [&](std::int64_t value) {
        constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
        return static_cast<std::uint64_t>(value) ^ (isUnsigned ? 0 : kSign);
    };
    struct Taken {
        std::uint64_t upper;
        SourceRange range;
    };
    // What the labels so far take, by its lower end; nothing in it overlaps.
    std::map<std::uint64_t, Taken> taken;
    for (const Label& label : labels) {
        std::uint64_t lower = key(label.lower);
        Taken added{key(label.upper), label.range};
        auto first = taken.upper_bound(lower);
        if (first != taken.begin() && std::prev(first)->second.upper >= lower) --first;
        auto last = first;
        while (last != taken.end() && last->first <= added.upper)
            ++last;
        if (first != last) {
            Diagnostic& diagnostic =
                project_.diagnostics.Report(DiagnosticCode::DuplicateLabel, label.range, {SourceText(label.range)});
            diagnostic.notes.push_back({first->second.range, "the other label"});
            lower = std::min(lower, first->first);
            added.upper = std::max(added.upper, std::prev(last)->second.upper);
            taken.erase(first, last);
        }
        taken.emplace(lower, added);
    }
}

void BodyChecker::ReportMissingLabels(const EnumType& type, const std::vector<Label>& labels, SourceRange range) {
    for (const EnumMember& member : type.members) {
        const bool isThere = std::ranges::any_of(
            labels, [&](const Label& label) { return member.value >= label.lower && member.value <= label.upper; });
        if (isThere) continue;
        Hint(DiagnosticCode::MissingEnumLabel, range, {Text(member.name)});
        return;
    }
}

Stmt* BodyChecker::CheckCase(const ast::CaseStmt& statement) {
    Expr* selector = Settle(Check(*statement.selector, nullptr));
    const Family family = FamilyOf(selector->type);
    const bool isFine = IsIntegerFamily(family) || family == Family::Bits || family == Family::Enum;
    if (!isFine && family != Family::Error)
        Fail(DiagnosticCode::CaseSelector, statement.selector->range, {Text(selector->type)});
    const Type* type = isFine ? BaseOf(selector->type) : project_.types.Error();
    const std::span<CaseArm> arms = project_.arena.NewArray<CaseArm>(statement.branches.size());
    std::vector<Label> labels;
    for (std::size_t i = 0; i < arms.size(); ++i) {
        const ast::CaseBranch& branch = statement.branches[i];
        arms[i].ranges = project_.arena.NewArray<CaseRange>(branch.labels.size());
        for (std::size_t k = 0; k < branch.labels.size(); ++k)
            CheckLabel(branch.labels[k], type, labels, arms[i].ranges[k]);
        arms[i].body = CheckBlock(branch.body, statement.range);
    }
    const Type* base = type->kind == TypeKind::Enum ? static_cast<const EnumType*>(type)->base : type;
    ReportOverlaps(labels, isFine && FamilyOf(base) != Family::Signed);
    Block* otherwise = statement.hasElse ? CheckBlock(statement.otherwise, statement.range) : nullptr;
    if (!statement.hasElse && type->kind == TypeKind::Enum)
        ReportMissingLabels(*static_cast<const EnumType*>(type), labels, statement.selector->range);
    if (!isFine) return nullptr;
    return New(CaseStmt{{StmtKind::Case, statement.range}, selector, arms, otherwise});
}

}  // namespace tn61131::st
