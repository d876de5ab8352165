#include "compiler/RoutineGenerator.h"

#include <string>

#include "value/TypeTable.h"

namespace tn61131::st {

RoutineGenerator::RoutineGenerator(Project& project, Declarations& declarations, RoutineNumbering& numbering)
    : project_(project), declarations_(declarations), numbering_(numbering) {}

bool RoutineGenerator::Generate(const Routine& routine, bool mayRecur, std::uint32_t& globalSize) {
    routine_ = routine;
    pou_ = routine.pou;
    globalSize_ = &globalSize;
    failed_ = false;
    const auto [place, isNew] = frames_.try_emplace(pou_);
    if (isNew && !LayOutFrame(project_, declarations_, *pou_, mayRecur, globalSize, place->second)) return false;
    if (isNew && project_.options.passes.commonAddresses) ChooseLocalData(*pou_, place->second);
    if (isNew && project_.options.passes.deadStores && routine.standalone == nullptr)
        DropInitialValues(*pou_, place->second);
    frame_ = &place->second;
    tempInUse_ = static_cast<std::uint32_t>(frame_->tempData.size());
    tempSize_ = tempInUse_;
    terms_.clear();
    loops_.clear();
    traps_.clear();
    code_.Clear();
    code_.SetForwarding(project_.options.passes.commonAddresses);
    code_.SetDepth(frame_->GetRunningDepth());
    if (routine.standalone != nullptr && routine.standalone->isExpression) {
        code_.SetPosition(routine.standalone->expression->range.begin);
        Value(*routine.standalone->expression);
    } else if (pou_->body != nullptr) {
        Statements(pou_->body);
    }
    LeaveRoutine();
    EmitTraps();
    code_.ResolveJumps(project_.options.passes.jumps);
    EmitProlog();
    return !failed_;
}

// --- prolog ---

void RoutineGenerator::EmitProlog() {
    prolog_.Clear();
    prolog_.SetDepth(frame_->GetEntryDepth());
    if (pou_->declaration != nullptr) prolog_.SetPosition(pou_->declaration->range.begin);
    if (frame_->instanceSlot >= 0) {
        const auto slot = static_cast<std::uint32_t>(frame_->instanceSlot);
        // Of blocks and methods it is the last argument.
        if (slot != prolog_.GetTopIndex()) {
            prolog_.Push();
            prolog_.LoadStack(slot);
        }
        prolog_.InitLocalData(frame_->instanceSize);
    }
    if (tempSize_ != 0) {
        scratch_ = frame_->tempData;
        scratch_.resize(tempSize_);
        prolog_.InitTempData(scratch_);
    }
    std::swap(prolog_, code_);
    EmitSlots();
    InitialiseMemory();
    std::swap(prolog_, code_);
}

void RoutineGenerator::EmitSlots() {
    std::uint32_t index = frame_->argumentCount;
    for (const Frame::LocalSlot& slot : frame_->slots) {
        if (index++ >= code_.GetDepth()) code_.Push();
        if (slot.needsInitial) InitialValueOf(*slot.variable);
    }
    if (index >= code_.GetDepth()) code_.Push();
}

void RoutineGenerator::InitialValueOf(const Variable& variable) {
    scratch_.assign(variable.type->size, 0);
    declarations_.WriteInitial(variable.type, variable.initial, scratch_);
    CValue value;
    [[maybe_unused]] const bool isValue =
        value.SetFromDataBytes(variable.type->storage, scratch_.data(), static_cast<unsigned int>(scratch_.size()));
    code_.LoadImmediate(value);
}

void RoutineGenerator::InitialiseMemory() {
    for (const Frame::StaticArea& area : frame_->staticAreas) {
        LoadInitialBytes(*area.variable);
        CopyToTop(area.variable->type->size, MakeStatic(LocationKind::Global, area.offset));
    }
    for (const Frame::CopiedInput& input : frame_->copiedInputs)
        CopyInput(input);
    SettleParameterTexts(true);
    if (!TakesArguments(*pou_)) return;
    for (const Variable* output : pou_->outputs)
        ResetThroughPointer(*output);
    if (pou_->result == nullptr) return;
    if (pou_->result->storage.kind == StorageKind::SlotPointer) {
        ResetThroughPointer(*pou_->result);
    } else if (pou_->result->storage.kind == StorageKind::Slot && frame_->resultNeedsInitial) {
        InitialValueOf(*pou_->result);
        code_.StoreStack(0);
    }
}

/// Leaves a pointer to the initial bytes of a variable.
void RoutineGenerator::LoadInitialBytes(const Variable& variable) {
    scratch_.assign(variable.type->size, 0);
    declarations_.WriteInitial(variable.type, variable.initial, scratch_);
    code_.LoadAddr(LocationKind::GlobalConstant, declarations_.AddConstant(scratch_));
}

void RoutineGenerator::CopyInput(const Frame::CopiedInput& input) {
    code_.LoadStack(input.slot);
    const Address target = ResolveVariable(*input.variable);
    if (IsAggregate(input.variable->type)) {
        CopyToTop(input.variable->type->size, target);
    } else {
        StoreTo(target, input.variable->type);
    }
}

void RoutineGenerator::ResetThroughPointer(const Variable& variable) {
    const Address target = MakeSlotPointer(variable.storage.offset);
    if (IsAggregate(variable.type)) {
        LoadInitialBytes(variable);
        CopyToTop(variable.type->size, target);
    } else {
        InitialValueOf(variable);
        StoreTo(target, variable.type);
    }
}

// --- end ---

void RoutineGenerator::LeaveRoutine() {
    SettleParameterTexts(false);
    const Variable* result = pou_->result;
    if (result != nullptr &&
        (result->storage.kind == StorageKind::Temp || result->storage.kind == StorageKind::Global)) {
        if (result->isTextExposed) MeasureText(ResolveVariable(*result), result->type);
        LoadFrom(ResolveVariable(*result), result->type);
        code_.StoreStack(0);
    }
    code_.Return();
}

void RoutineGenerator::LoadEntry(std::uint32_t index) {
    if (index > kMaxSlotIndex && !failed_) {
        failed_ = true;
        project_.diagnostics.Report(DiagnosticCode::TooManySlots, {code_.GetPosition(), code_.GetPosition()},
                                    {project_.names.GetSpelling(pou_->name), std::to_string(kMaxSlotIndex + 1)});
    }
    code_.LoadStack(index);
}

std::uint32_t RoutineGenerator::NewTemp(std::uint32_t size) {
    const std::uint32_t offset = tempInUse_;
    tempInUse_ += size;
    if (tempInUse_ > tempSize_) tempSize_ = tempInUse_;
    return offset;
}

Routine RoutineGenerator::GetCallee(Pou& callee) const {
    const auto programOf = [](const Pou& pou) { return pou.container != nullptr ? pou.container : &pou; };
    const bool isOwn = programOf(callee) == programOf(*pou_);
    return {.pou = &callee, .instanceDelta = isOwn ? routine_.instanceDelta : 0, .textTypes = {}};
}

}  // namespace tn61131::st
