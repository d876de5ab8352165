#include "compiler/GeneratorFrame.h"

#include <string>
#include <unordered_map>
#include <unordered_set>

#include "compiler/TreeWalk.h"

namespace tn61131::st {

namespace {

using ast::PouKind;

class FrameLayout {
 public:
    FrameLayout(Project& project, const Declarations& declarations, Pou& pou, bool mayRecur, std::uint32_t& globalSize,
                Frame& frame) noexcept
        : project_(project),
          declarations_(declarations),
          pou_(pou),
          mayRecur_(mayRecur),
          globalSize_(globalSize),
          frame_(frame) {}

    bool Run() {
        const bool takesArguments = TakesArguments(pou_);
        if (takesArguments && !LayOutParameters()) return false;
        // The pointer of a block or an action stands where the result would.
        if (HasInstancePointer(pou_)) {
            const Pou& block = pou_.kind == PouKind::FunctionBlock ? pou_ : *pou_.container;
            frame_.instanceSlot = static_cast<std::int32_t>(frame_.argumentCount++);
            frame_.instanceSize = block.type->size;
        }
        if (takesArguments && pou_.result != nullptr) LayOutResult(*pou_.result);
        for (const Variable* variable : pou_.variables) {
            if (variable->aliasOf != nullptr) variable->aliasOf->isAddressTaken = true;
        }
        for (Variable* variable : pou_.variables) {
            if (variable->storage.kind == StorageKind::Unassigned && variable->aliasOf == nullptr)
                LayOutLocal(*variable);
        }
        return true;
    }

 private:
    bool LayOutParameters() {
        frame_.argumentCount = static_cast<std::uint32_t>(pou_.parameters.size()) + 1;
        if (frame_.argumentCount > kMaxArguments) {
            project_.diagnostics.Report(DiagnosticCode::TooManySlots, pou_.parameters[kMaxArguments - 1]->declared,
                                        {project_.names.GetSpelling(pou_.name), std::to_string(kMaxArguments)});
            return false;
        }
        std::uint32_t slot = 1;
        for (Variable* parameter : pou_.parameters)
            LayOutParameter(*parameter, slot++);
        return true;
    }

    void LayOutParameter(Variable& parameter, std::uint32_t slot) {
        if (parameter.section != ast::VarSection::Input) {
            parameter.storage = {.kind = StorageKind::SlotPointer, .offset = slot};
            return;
        }
        if (!MustCopy(parameter)) {
            const bool byPointer = IsAggregate(parameter.type);
            parameter.storage = {.kind = byPointer ? StorageKind::SlotPointer : StorageKind::Slot, .offset = slot};
            return;
        }
        PlaceInMemory(parameter);
        frame_.copiedInputs.push_back({&parameter, slot});
    }

    /// An aggregate comes as a pointer to the caller's; a text in a slot could not be cut to its capacity.
    [[nodiscard]] bool MustCopy(const Variable& input) const {
        if (input.isAddressTaken) return true;
        const bool isChanged = input.isWritten || input.isPartWritten;
        if (IsAggregate(input.type))
            return isChanged || pou_.hasSideEffects || !pou_.outputs.empty() || !pou_.inOuts.empty() ||
                   IsAggregate(pou_.resultType);
        return IsString(input.type) && isChanged;
    }

    void LayOutResult(Variable& result) {
        if (IsAggregate(result.type)) {
            result.storage = {.kind = StorageKind::SlotPointer, .offset = 0};
        } else if (result.isAddressTaken || IsString(result.type)) {
            PlaceInMemory(result);
        } else {
            result.storage = {.kind = StorageKind::Slot, .offset = 0};
        }
    }

    void LayOutLocal(Variable& variable) {
        if (variable.isConstant && variable.constantValue) {
            variable.storage.kind = StorageKind::None;
            return;
        }
        const bool needsMemory = variable.isAddressTaken || IsAggregate(variable.type) || IsString(variable.type);
        const std::uint32_t slot = frame_.argumentCount + static_cast<std::uint32_t>(frame_.slots.size());
        if (needsMemory || slot + kWorkingEntries > kMaxSlotIndex) {
            PlaceInMemory(variable);
            return;
        }
        variable.storage = {.kind = StorageKind::Slot, .offset = slot};
        frame_.slots.push_back({&variable, true});
    }

    void PlaceInMemory(Variable& variable) {
        const std::uint32_t size = variable.type->size;
        if (size > kMaxTempVariable && !mayRecur_) {
            variable.storage = {.kind = StorageKind::Global, .offset = globalSize_};
            frame_.staticAreas.push_back({&variable, globalSize_});
            globalSize_ += size;
            return;
        }
        const std::size_t offset = frame_.tempData.size();
        variable.storage = {.kind = StorageKind::Temp, .offset = static_cast<std::uint32_t>(offset)};
        frame_.tempData.resize(offset + size);
        declarations_.WriteInitial(variable.type, variable.initial, std::span(frame_.tempData).subspan(offset, size));
    }

    Project& project_;
    const Declarations& declarations_;
    Pou& pou_;
    const bool mayRecur_;
    std::uint32_t& globalSize_;
    Frame& frame_;
};

/// Finds the variables that are assigned before anything reads them, whatever way the body takes.
class FirstUseFinder final : public TreeWalker {
 public:
    [[nodiscard]] bool IsAssignedFirst(const Variable* variable) const {
        const auto found = assignedFirst_.find(variable);
        return found == assignedFirst_.end() || found->second;
    }
    /// The same, before the routine can be left.
    [[nodiscard]] bool IsResultAssignedFirst(const Variable* result) const { return resultAssigned_.contains(result); }

 private:
    void VisitPlace(Place*& place, Use use) override {
        WalkChildren(*place, use);
        if (place->kind != PlaceKind::Variable) return;
        const Variable* variable = static_cast<const VariablePlace&>(*place).variable;
        if (variable->storage.kind != StorageKind::Slot) return;
        const bool isAssigned = use == Use::Write && conditions_ == 0;
        assignedFirst_.try_emplace(variable, isAssigned);
        if (isAssigned && !mayReturn_) resultAssigned_.insert(variable);
    }
    void VisitExpr(Expr*& expr) override {
        switch (expr->kind) {
            case ExprKind::Logical: {
                auto& logical = static_cast<LogicalExpr&>(*expr);
                Walk(logical.left);
                const Condition condition(*this);
                return Walk(logical.right);
            }
            case ExprKind::Select: {
                auto& select = static_cast<SelectExpr&>(*expr);
                Walk(select.condition);
                const Condition condition(*this);
                Walk(select.whenTrue);
                return Walk(select.whenFalse);
            }
            case ExprKind::CallFunction:
            case ExprKind::CallBuiltIn: {
                // EN may skip it.
                const Condition condition(*this);
                return WalkChildren(*expr);
            }
            default: return WalkChildren(*expr);
        }
    }
    void VisitStmt(Stmt*& stmt) override {
        switch (stmt->kind) {
            case StmtKind::Return: mayReturn_ = true; return;
            case StmtKind::If: Walk(static_cast<IfStmt&>(*stmt).condition); break;
            case StmtKind::Case: Walk(static_cast<CaseStmt&>(*stmt).selector); break;
            case StmtKind::While: Walk(static_cast<WhileStmt&>(*stmt).condition); break;
            case StmtKind::For: {
                auto& loop = static_cast<ForStmt&>(*stmt);
                Walk(loop.to);
                Walk(loop.by);
                Walk(loop.from);
                Walk(loop.counter, Use::Write);
                break;
            }
            case StmtKind::Repeat:
            case StmtKind::CallBlock: break;
            default: return WalkChildren(*stmt);
        }
        const Condition condition(*this);
        WalkChildren(*stmt);
    }

    struct Condition {
        explicit Condition(FirstUseFinder& finder) noexcept : owner(finder) { ++owner.conditions_; }
        Condition(const Condition&) = delete;
        Condition& operator=(const Condition&) = delete;
        ~Condition() { --owner.conditions_; }
        FirstUseFinder& owner;
    };

    std::unordered_map<const Variable*, bool> assignedFirst_;
    std::unordered_set<const Variable*> resultAssigned_;
    std::uint32_t conditions_ = 0;
    bool mayReturn_ = false;
};

/// Counts for each variable how often a part behind its beginning is reached.
class PartCounter final : public TreeWalker {
 public:
    [[nodiscard]] std::uint32_t GetCount(const Variable* variable) const {
        const auto found = counts_.find(variable);
        return found == counts_.end() ? 0 : found->second;
    }

 private:
    /// What a loop runs through counts as often as this for each level.
    static constexpr std::uint32_t kLoopWeight = 8;
    static constexpr std::uint32_t kMostWeight = 4096;

    void VisitPlace(Place*& place, Use use) override {
        const bool isPart = place->kind == PlaceKind::Element ||
                            (place->kind == PlaceKind::Member && static_cast<MemberPlace&>(*place).offset != 0);
        if (isPart && use != Use::Address) {
            if (const Variable* root = FindRoot(*place)) counts_[root] += weight_;
        }
        WalkChildren(*place, use);
    }
    void VisitStmt(Stmt*& stmt) override {
        const bool isLoop =
            stmt->kind == StmtKind::For || stmt->kind == StmtKind::While || stmt->kind == StmtKind::Repeat;
        if (!isLoop || weight_ >= kMostWeight) return WalkChildren(*stmt);
        weight_ *= kLoopWeight;
        WalkChildren(*stmt);
        weight_ /= kLoopWeight;
    }
    /// Null where a pointer lies between.
    [[nodiscard]] static const Variable* FindRoot(const Place& place) noexcept {
        switch (place.kind) {
            case PlaceKind::Variable: return static_cast<const VariablePlace&>(place).variable;
            case PlaceKind::Member: return FindRoot(*static_cast<const MemberPlace&>(place).base);
            case PlaceKind::Element: return FindRoot(*static_cast<const ElementPlace&>(place).base);
            default: return nullptr;
        }
    }

    std::unordered_map<const Variable*, std::uint32_t> counts_;
    std::uint32_t weight_ = 1;
};

}  // namespace

void ChooseLocalData(Pou& pou, Frame& frame) {
    if (frame.instanceSlot >= 0 || !TakesArguments(pou) || pou.body == nullptr) return;
    PartCounter counter;
    counter.Walk(pou.body);
    std::uint32_t most = 1;  // setting the local data up costs less than two accesses save
    for (const Variable* variable : pou.variables) {
        const bool isCandidate = variable->storage.kind == StorageKind::SlotPointer && IsAggregate(variable->type);
        if (!isCandidate || counter.GetCount(variable) <= most) continue;
        most = counter.GetCount(variable);
        frame.instanceSlot = static_cast<std::int32_t>(variable->storage.offset);
        frame.instanceSize = variable->type->size;
    }
}

void DropInitialValues(Pou& pou, Frame& frame) {
    const bool hasResult = pou.result != nullptr && pou.result->storage.kind == StorageKind::Slot;
    if (pou.body == nullptr || (frame.slots.empty() && !hasResult)) return;
    FirstUseFinder finder;
    finder.Walk(pou.body);
    for (Frame::LocalSlot& slot : frame.slots)
        slot.needsInitial = !finder.IsAssignedFirst(slot.variable);
    if (hasResult)
        frame.resultNeedsInitial = !finder.IsResultAssignedFirst(pou.result) || !finder.IsAssignedFirst(pou.result);
}

bool TakesArguments(const Pou& pou) noexcept {
    return (pou.kind == PouKind::Function || pou.kind == PouKind::Method) && pou.declaration != nullptr;
}

bool HasInstancePointer(const Pou& pou) noexcept {
    if (pou.kind == PouKind::FunctionBlock) return true;
    return pou.container != nullptr && pou.container->kind == PouKind::FunctionBlock;
}

bool LayOutFrame(Project& project, const Declarations& declarations, Pou& pou, bool mayRecur, std::uint32_t& globalSize,
                 Frame& frame) {
    return FrameLayout(project, declarations, pou, mayRecur, globalSize, frame).Run();
}

}  // namespace tn61131::st
