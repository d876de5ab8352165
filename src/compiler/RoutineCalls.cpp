// Calls of functions, methods, function blocks and programs.
#include <cassert>

#include "compiler/RoutineGenerator.h"
#include "functions/FunctionTable.h"
#include "value/TypeTable.h"

namespace tn61131::st {

namespace {

constexpr std::uint32_t kEnOffset = 0;
constexpr std::uint32_t kEnoOffset = 1;
constexpr std::uint32_t kEdgeInputOffset = 1;  ///< within the record of an edge input: output, input, memory
constexpr std::uint32_t kPointerSize = 8;

std::uint32_t GetCapacity(const Type* text) noexcept {
    text = Strip(text);
    return text->kind == TypeKind::String ? static_cast<const StringType*>(text)->capacity : UINT16_MAX;
}

/// Whether the callee may write an output's target itself.
bool IsDirect(const OutputBinding& output) noexcept {
    return output.target != nullptr && !output.negated &&
           (output.value == nullptr || output.value->kind == ExprKind::Output) &&
           output.target->type->storage == output.output->type->storage &&
           output.target->type->size == output.output->type->size;
}

}  // namespace

// --- functions and methods ---

void RoutineGenerator::CallFunction(const CallFunctionExpr& call, bool isValueWanted) {
    const Label skipped = code_.NewLabel();
    const Label end = code_.NewLabel();
    if (call.enable != nullptr) JumpIf(*call.enable, false, skipped);
    const std::size_t firstOutput = outputCopies_.size();
    // The entry of the result takes the place for one that is no value.
    if (IsAggregate(call.callee->resultType))
        code_.LoadAddr(LocationKind::Temp, NewTemp(call.callee->resultType->size));
    for (const FunctionArgument& argument : call.arguments) {
        code_.Push();
        Argument(argument);
    }
    std::uint32_t count = static_cast<std::uint32_t>(call.arguments.size()) + 1;
    if (HasInstancePointer(*call.callee)) {
        code_.Push();
        ++count;
        if (call.instance != nullptr) {
            EmitPlaceAddress(*call.instance);
        } else {
            EmitOwnInstance();
        }
    }
    Routine callee = GetCallee(*call.callee);
    callee.textTypes = GetTextTypes(call);
    EmitCall(std::move(callee), count, call.range);
    FinishCall(call, firstOutput, isValueWanted);
    if (call.enable == nullptr) return;
    code_.Jump(end);
    code_.Bind(skipped);
    if (call.enableOutput != nullptr) StoreBool(*call.enableOutput, false);
    if (isValueWanted && call.type->kind != TypeKind::Void) DefaultValue(call.callee->resultType);
    code_.Bind(end);
}

/// The callee stores as much in an in-out text as the argument holds, so each capacity has a routine of its own.
std::vector<const Type*> RoutineGenerator::GetTextTypes(const CallFunctionExpr& call) const {
    std::vector<const Type*> types;
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
        const FunctionArgument& argument = call.arguments[i];
        if (argument.place == nullptr || !IsString(argument.parameter->type)) continue;
        const Type* stored = Strip(GetStoredType(*argument.place));
        if (stored == Strip(argument.parameter->type)) continue;
        types.resize(call.arguments.size());
        types[i] = stored;
    }
    return types;
}

void RoutineGenerator::EmitCall(Routine callee, std::uint32_t count, SourceRange range) {
    const SourceOffset before = code_.GetPosition();
    code_.SetPosition(range.begin);
    code_.Call(count, numbering_.GetRoutine(std::move(callee)));
    code_.SetPosition(before);
}

/// Copies what the callee left in temporary data to where it is wanted.
void RoutineGenerator::FinishCall(const CallFunctionExpr& call, std::size_t firstOutput, bool isValueWanted) {
    if (outputCopies_.size() == firstOutput && call.enableOutput == nullptr) return;
    if (isValueWanted) code_.Push();
    for (std::size_t i = firstOutput; i < outputCopies_.size(); ++i) {
        const OutputCopy copy = outputCopies_[i];
        FinishOutput(*copy.binding, MakeStatic(LocationKind::Temp, copy.temp));
    }
    outputCopies_.resize(firstOutput);
    if (call.enableOutput != nullptr) StoreBool(*call.enableOutput, true);
    if (isValueWanted) code_.Pop();
}

void RoutineGenerator::Argument(const FunctionArgument& argument) {
    if (argument.value != nullptr) {
        InputArgument(*argument.parameter, *argument.value);
    } else if (argument.place != nullptr) {
        EmitPlaceAddress(*argument.place);
    } else {
        OutputArgument(*argument.parameter, argument.output);
    }
}

void RoutineGenerator::InputArgument(const Variable& parameter, const Expr& value) {
    if (IsAggregate(parameter.type)) return AggregateAddress(value);
    const bool isCut = IsString(parameter.type) && GetCapacity(value.type) > GetCapacity(parameter.type);
    if (!isCut) return Value(value);
    // A text that is longer than the parameter is cut, as a store would.
    code_.Push();
    Value(value);
    code_.Push();
    code_.LoadInteger(ElementaryType::DInt, GetCapacity(parameter.type));
    code_.CallBuiltIn(false, builtIns_.left.group, builtIns_.left.id, 3);
}

void RoutineGenerator::CopyTextBack(std::size_t index) {
    const TextCopy copy = textCopies_[index];
    LoadFrom(MakeStatic(LocationKind::Temp, copy.temp), copy.type);
    StorePlace(*copy.place);
}

void RoutineGenerator::OutputArgument(const Variable& parameter, const OutputBinding& output) {
    if (IsDirect(output) && !FindSlot(*output.target)) {
        const Address address = Resolve(*output.target);
        if (address.base != BaseKind::Tag && address.base != BaseKind::Deref) {
            return EmitAddress(address, Rooted::Yes);
        }
    }
    const std::uint32_t temp = NewTemp(parameter.type->size);
    if (output.target != nullptr) outputCopies_.push_back({&output, temp});
    code_.LoadAddr(LocationKind::Temp, temp);
}

void RoutineGenerator::FinishOutput(const OutputBinding& binding, const Address& source) {
    if (IsAggregate(binding.target->type)) {
        EmitAddress(source, Rooted::No);
        CopyToTop(binding.target->type->size, Resolve(*binding.target));
        return;
    }
    const Address outer = outputSource_;
    outputSource_ = source;
    if (binding.value != nullptr) {
        Value(*binding.value);
    } else {
        LoadFrom(source, binding.output->type);
    }
    outputSource_ = outer;
    if (binding.negated) code_.Unary(UnaryOperator::Not);
    StorePlace(*binding.target);
}

void RoutineGenerator::StoreBool(const Place& place, bool value) {
    code_.LoadInteger(ElementaryType::Bool, value ? 1 : 0);
    StorePlace(place);
}

// --- built-in functions ---

void RoutineGenerator::CallBuiltIn(const CallBuiltInExpr& call) {
    const Label skipped = code_.NewLabel();
    const Label end = code_.NewLabel();
    if (call.enable != nullptr) JumpIf(*call.enable, false, skipped);
    for (const Expr* argument : call.arguments) {
        code_.Push();
        Value(*argument);
    }
    const SourceOffset before = code_.GetPosition();
    code_.SetPosition(call.range.begin);
    code_.CallBuiltIn(call.withEno || call.enableOutput != nullptr, call.group, call.id,
                      static_cast<std::uint32_t>(call.arguments.size()) + 1);
    code_.SetPosition(before);
    if (call.enableOutput != nullptr) {
        code_.Push();
        code_.LoadStatus(1);
        StorePlace(*call.enableOutput);
        if (call.type->storage == ElementaryType::Undefined) {
            code_.Pop();
        } else {
            // What a function that failed leaves may be no value at all.
            const Label isGood = code_.NewLabel();
            const Label isKnown = code_.NewLabel();
            code_.JumpNotZero(isGood);
            code_.Pop();
            DefaultValue(call.type);
            code_.Jump(isKnown);
            code_.Bind(isGood);
            code_.Pop();
            code_.Bind(isKnown);
        }
    }
    if (call.enable == nullptr) return;
    code_.Jump(end);
    code_.Bind(skipped);
    if (call.enableOutput != nullptr) StoreBool(*call.enableOutput, false);
    if (call.type->storage != ElementaryType::Undefined) DefaultValue(call.type);
    code_.Bind(end);
}

// --- function blocks ---

void RoutineGenerator::CallBlock(const CallBlockStmt& call) {
    if (call.block == nullptr) return CallProgram(call);
    if (call.instance == nullptr) {
        CallUserBlock(call, MakeStatic(LocationKind::Local, 0));
        return;
    }
    Address instance = Resolve(*call.instance);
    const bool isKept = !IsCheap(instance);
    if (isKept) instance = Keep(instance, Rooted::Yes);
    if (call.block->row != nullptr) {
        CallLibraryBlock(call, instance);
    } else {
        CallUserBlock(call, instance);
    }
    if (isKept) code_.Pop();
}

/// A program's variables have places of their own; it is called like a block without instance.
void RoutineGenerator::CallProgram(const CallBlockStmt& call) {
    assert(call.action != nullptr);
    for (const BlockInput& input : call.inputs) {
        const Address target = ResolveVariable(*input.input);
        if (IsAggregate(input.input->type)) {
            AggregateAddress(*input.value);
            CopyToTop(input.input->type->size, target);
        } else {
            Value(*input.value);
            StoreTo(target, input.input->type);
        }
    }
    EmitCall(GetCallee(*call.action), 1, call.range);
    for (const OutputBinding& output : call.outputs) {
        if (output.target != nullptr) FinishOutput(output, ResolveVariable(*output.output));
    }
}

void RoutineGenerator::CallUserBlock(const CallBlockStmt& call, const Address& instance) {
    const Label skipped = code_.NewLabel();
    const Label end = code_.NewLabel();
    Pou& callee = call.action != nullptr ? *call.action : *call.block->pou;
    if (call.enable != nullptr) JumpIf(*call.enable, false, skipped);
    const Variable* en = FindControl(*call.block, kEnOffset);
    const Variable* eno = FindControl(*call.block, kEnoOffset);
    const bool isControlled = call.enable != nullptr || call.enableOutput != nullptr || (en != nullptr && en->isRead) ||
                              (eno != nullptr && (eno->isRead || eno->isWritten));
    if (isControlled) {
        StoreControl(instance, kEnOffset, true);
        StoreControl(instance, kEnoOffset, true);
    }
    const std::size_t firstText = textCopies_.size();
    for (const BlockInput& input : call.inputs)
        StoreBlockInput(input, instance);
    if (call.action == nullptr) RunOmittedEdges(call, instance);
    for (const BlockInOut& inOut : call.inOuts)
        StoreBlockInOut(inOut, instance);
    EmitAddress(instance, Rooted::Yes);
    EmitCall(GetCallee(callee), 1, call.range);
    for (std::size_t i = firstText; i < textCopies_.size(); ++i)
        CopyTextBack(i);
    textCopies_.resize(firstText);
    BindBlockOutputs(call, instance);
    if (call.enableOutput != nullptr) {
        LoadFrom(AtOffset(instance, kEnoOffset), project_.types.Bool());
        StorePlace(*call.enableOutput);
    }
    if (call.enable == nullptr) return;
    code_.Jump(end);
    code_.Bind(skipped);
    StoreControl(instance, kEnOffset, false);
    StoreControl(instance, kEnoOffset, false);
    if (call.enableOutput != nullptr) StorePlace(*call.enableOutput);
    code_.Bind(end);
}

const Variable* RoutineGenerator::FindControl(const FunctionBlockType& block, std::uint32_t offset) noexcept {
    const bool isThere = offset < block.variables.size() && block.variables[offset]->storage.offset == offset;
    return isThere ? block.variables[offset] : nullptr;
}

void RoutineGenerator::StoreControl(const Address& instance, std::uint32_t offset, bool value) {
    code_.LoadInteger(ElementaryType::Bool, value ? 1 : 0);
    StoreTo(AtOffset(instance, offset), project_.types.Bool());
}

void RoutineGenerator::StoreBlockInput(const BlockInput& input, const Address& instance) {
    const Variable& variable = *input.input;
    const Address target = AtOffset(instance, variable.storage.offset);
    if (IsAggregate(variable.type)) {
        AggregateAddress(*input.value);
        CopyToTop(variable.type->size, target);
        return;
    }
    Value(*input.value);
    if (!variable.edge) {
        EmitRangeCheckOfTop(variable.type, input.value->range);
        return StoreTo(target, variable.type);
    }
    code_.Push();
    EmitAddress(target, Rooted::No);
    code_.PointerStoreEdge(*variable.edge);
}

/// An edge input that a call leaves out sees its old value again.
void RoutineGenerator::RunOmittedEdges(const CallBlockStmt& call, const Address& instance) {
    for (const Variable* variable : call.block->variables) {
        if (!variable->edge) continue;
        bool isGiven = false;
        for (const BlockInput& input : call.inputs)
            isGiven = isGiven || input.input == variable;
        if (isGiven) continue;
        const Address record = AtOffset(instance, variable->storage.offset);
        LoadFrom(AtOffset(record, kEdgeInputOffset), project_.types.Bool());
        code_.Push();
        EmitAddress(record, Rooted::No);
        code_.PointerStoreEdge(*variable->edge);
    }
}

void RoutineGenerator::StoreBlockInOut(const BlockInOut& inOut, const Address& instance) {
    const Type* type = inOut.inOut->type;
    if (IsString(type) && GetCapacity(GetStoredType(*inOut.place)) < GetCapacity(type)) {
        // The block's code is the same for all, so a shorter text takes part as a copy.
        const std::uint32_t temp = NewTemp(type->size);
        textCopies_.push_back({inOut.place, type, temp});
        LoadPlace(*inOut.place);
        StoreTo(MakeStatic(LocationKind::Temp, temp), type);
        code_.LoadAddr(LocationKind::Temp, temp);
    } else {
        EmitPlaceAddress(*inOut.place);
    }
    code_.Push();
    EmitAddress(AtOffset(instance, inOut.inOut->storage.offset), Rooted::No);
    code_.PointerStore(ElementaryType::Pointer, kPointerSize);
}

void RoutineGenerator::BindBlockOutputs(const CallBlockStmt& call, const Address& instance) {
    for (const OutputBinding& output : call.outputs) {
        if (output.target != nullptr) FinishOutput(output, AtOffset(instance, output.output->storage.offset));
    }
}

// The block reads its arguments and not its memory, so an input that is left out is loaded from there. Its outputs are
// read from the instance afterwards, where they can be converted.
void RoutineGenerator::CallLibraryBlock(const CallBlockStmt& call, const Address& instance) {
    const BlockRow& row = *call.block->row;
    if (call.enable != nullptr) {
        Value(*call.enable);
    } else {
        code_.LoadInteger(ElementaryType::Bool, 1);
    }
    code_.Push();
    std::uint32_t count = 3;
    std::uint32_t outputs = 0;
    for (const BlockField& field : row.fields) {
        if (field.role == BlockFieldRole::Output) ++outputs;
        if (field.role != BlockFieldRole::Input) continue;
        ++count;
        code_.Push();
        const Expr* given = nullptr;
        for (const BlockInput& input : call.inputs) {
            if (input.input->storage.offset == field.offset) given = input.value;
        }
        if (given != nullptr) {
            Value(*given);
        } else {
            LoadFrom(AtOffset(instance, field.offset), project_.types.Elementary(field.type));
        }
    }
    for (; outputs != 0; --outputs, ++count)
        code_.Push();
    code_.Push();
    EmitAddress(instance, Rooted::Yes);
    const SourceOffset before = code_.GetPosition();
    code_.SetPosition(call.range.begin);
    code_.CallLibraryBlock(call.block->group, row.id, count, row.dataSize);
    code_.SetPosition(before);
    if (call.enableOutput != nullptr) StorePlace(*call.enableOutput);
    if (call.outputs.empty()) return;
    const Label end = code_.NewLabel();
    if (call.enable != nullptr) code_.JumpZero(end);
    BindBlockOutputs(call, instance);
    code_.Bind(end);
}

}  // namespace tn61131::st
