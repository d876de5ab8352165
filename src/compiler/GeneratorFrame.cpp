#include "compiler/GeneratorFrame.h"

#include <string>

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
        if (HasInstancePointer(pou_)) frame_.instanceSlot = static_cast<std::int32_t>(frame_.argumentCount++);
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

}  // namespace

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
