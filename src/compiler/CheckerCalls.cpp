#include <algorithm>

#include "compiler/BodyChecker.h"

// Calls of functions and methods (IEC 61131-3, 6.6.1.4 and 6.6.5).

namespace tn61131::st {

namespace {

[[nodiscard]] bool IsBlock(const Type* type) noexcept {
    return Strip(type)->kind == TypeKind::FunctionBlock;
}

}  // namespace

void BodyChecker::NoteCall(Pou* callee) {
    context_.calls.push_back(callee);
    if (context_.pou == nullptr) return;
    std::vector<Pou*>& callees = context_.pou->callees;
    if (std::ranges::find(callees, callee) == callees.end()) callees.push_back(callee);
}

Entity BodyChecker::ResolveCallee(const ast::Expr& callee) {
    if (callee.kind != ast::ExprKind::Name) return Resolve(callee, nullptr);
    const NameId name = static_cast<const ast::NameExpr&>(callee).name;
    const Symbol* symbol = declarations_->Lookup(name, context_.scope);
    if (symbol != nullptr && symbol->kind == Symbol::Kind::Variable && symbol->variable->type != nullptr &&
        !IsBlock(symbol->variable->type)) {
        Entity entity;
        entity.name = name;
        // Inside of a function its name is the result; with arguments it is the function.
        Pou* owner = symbol->variable->owner;
        if (symbol->variable->isResult && owner != nullptr) {
            entity.kind = Entity::Kind::Pou;
            entity.pou = owner;
            return entity;
        }
        const Type* type = Strip(symbol->variable->type);
        if (const BuiltIn* builtIn = builtIns_.Find(name); builtIn != nullptr && type->kind != TypeKind::Reference) {
            entity.kind = Entity::Kind::BuiltIn;
            entity.builtIn = builtIn;
            return entity;
        }
    }
    return ResolveName(name, callee.range, nullptr);
}

Expr* BodyChecker::CheckCall(const ast::CallExpr& call, const Type* wanted) {
    return CheckValueCall(call, ResolveCallee(*call.callee), wanted);
}

Expr* BodyChecker::CheckValueCall(const ast::CallExpr& call, const Entity& callee, const Type* wanted) {
    switch (callee.kind) {
        case Entity::Kind::Error: return Error(call.range);
        case Entity::Kind::BuiltIn: return CheckBuiltInCall(call, *callee.builtIn, wanted);
        case Entity::Kind::Type:
            if (callee.builtIn != nullptr) return CheckBuiltInCall(call, *callee.builtIn, wanted);
            if (IsBlock(callee.type))
                return Fail(DiagnosticCode::TypeNeedsInstance, call.callee->range, {SourceText(call.callee->range)});
            break;
        case Entity::Kind::Pou:
            switch (callee.pou->kind) {
                case ast::PouKind::Function: return CheckFunctionCall(call, *callee.pou, nullptr);
                case ast::PouKind::Method: {
                    Place* instance = callee.place;
                    if (!CheckMethodInstance(*callee.pou, instance, call.callee->range)) return Error(call.range);
                    return CheckFunctionCall(call, *callee.pou, instance);
                }
                case ast::PouKind::FunctionBlock:
                    return Fail(DiagnosticCode::TypeNeedsInstance, call.callee->range,
                                {SourceText(call.callee->range)});
                default: break;
            }
            return Fail(DiagnosticCode::NoValue, call.callee->range, {SourceText(call.callee->range)});
        case Entity::Kind::Place:
            if (IsBlock(callee.place->type)) return Fail(DiagnosticCode::BlockCallValue, call.range);
            break;
        default: break;
    }
    return Fail(DiagnosticCode::NotCallable, call.callee->range, {"'" + SourceText(call.callee->range) + "'"});
}

bool BodyChecker::CheckMethodInstance(const Pou& callee, Place*& instance, SourceRange range) {
    if (instance != nullptr || callee.container == nullptr) return true;
    // Without an instance in front, it is that of the caller.
    if (callee.container->kind != ast::PouKind::FunctionBlock) return true;
    const Pou* block = GetBlock();
    const Pou* base = block;
    while (base != nullptr && base != callee.container)
        base = base->base;
    if (base == nullptr) {
        Fail(DiagnosticCode::MethodNeedsInstance, range, {Text(callee.name), Text(callee.container->name)});
        return false;
    }
    instance = New(ThisPlace{{PlaceKind::This, callee.container->type, range}});
    return true;
}

Expr* BodyChecker::CallAccessor(const Entity& property, Pou& accessor, Expr* value, SourceRange range) {
    Place* instance = property.place;
    if (!CheckMethodInstance(*property.pou, instance, range)) return Error(range);
    const std::span<FunctionArgument> arguments = project_.arena.NewArray<FunctionArgument>(accessor.parameters.size());
    if (value != nullptr && !arguments.empty()) {
        value = Coerce(value, accessor.parameters[0]->type);
        if (IsError(value)) return value;
        arguments[0].parameter = accessor.parameters[0];
        arguments[0].value = value;
    }
    if (instance != nullptr) {
        MarkRead(instance);
        MarkWritten(instance, range);
        MarkAddressTaken(instance);
    }
    NoteCall(&accessor);
    const Type* type = value == nullptr ? accessor.resultType : project_.types.Void();
    return New(
        CallFunctionExpr{{ExprKind::CallFunction, type, range}, &accessor, instance, arguments, nullptr, nullptr});
}

bool BodyChecker::TakeEnable(const ast::Argument& argument, Expr*& enable, Place*& enableOutput) {
    if (argument.name.name == NameId::None) return false;
    const std::string_view name = project_.names.GetFolded(argument.name.name);
    if (name != "en" && name != "eno") return false;
    if (argument.value == nullptr) return true;
    if (name == "en") {
        enable = CheckAs(*argument.value, project_.types.Bool());
        return true;
    }
    Place* place = CheckAddressable(*argument.value, true);
    if (place == nullptr) return true;
    if (!IsBool(place->type)) {
        Fail(DiagnosticCode::TypeMismatch, argument.value->range, {"BOOL", Text(place->type)});
        return true;
    }
    MarkWritten(place, argument.value->range);
    enableOutput = place;
    return true;
}

Expr* BodyChecker::DefaultOf(Variable& input, SourceRange range) {
    const Type* type = input.type;
    const std::span<unsigned char> bytes = project_.arena.NewArray<unsigned char>(type->size);
    declarations_->WriteInitial(type, declarations_->GetInitial(input), bytes);
    if (IsAggregate(type)) return New(AggregateConstantExpr{{ExprKind::AggregateConstant, type, range}, bytes});
    CValue value;
    if (type->storage == ElementaryType::Pointer || !value.SetFromDataBytes(type->storage, bytes.data(), type->size))
        value.SetAddress(0, 0, 0);
    return NewConstant(type, std::move(value), range);
}

void BodyChecker::BindInput(Variable* parameter, const ast::Argument& argument, Expr*& value) {
    if (argument.isOutput) {
        Fail(DiagnosticCode::WrongArrow, argument.range, {Text(parameter->name), "an input", ":="});
        return;
    }
    if (argument.value == nullptr) {
        Fail(DiagnosticCode::EmptyArgument, argument.range, {Text(parameter->name)});
        return;
    }
    value = CheckAs(*argument.value, parameter->type);
}

bool BodyChecker::InOutAccepts(const Type* parameter, const Type* argument) const {
    const Type* wanted = BaseOf(parameter);
    const Type* given = BaseOf(argument);
    if (wanted == given || wanted->kind == TypeKind::Error || given->kind == TypeKind::Error) return true;
    if (wanted->kind == TypeKind::String && given->kind == TypeKind::String) return wanted->storage == given->storage;
    if (wanted->kind == TypeKind::Array && given->kind == TypeKind::Array) {
        const auto& open = *static_cast<const ArrayType*>(wanted);
        const auto& array = *static_cast<const ArrayType*>(given);
        return open.isOpen && open.bounds.size() == array.bounds.size() && InOutAccepts(open.element, array.element) &&
               Strip(open.element)->size == Strip(array.element)->size;
    }
    if (wanted->kind == TypeKind::FunctionBlock && given->kind == TypeKind::FunctionBlock) {
        const Pou* pou = static_cast<const FunctionBlockType*>(given)->pou;
        while (pou != nullptr && pou->type != wanted)
            pou = pou->base;
        return pou != nullptr;
    }
    if (wanted->kind == TypeKind::Struct && given->kind == TypeKind::Struct) {
        const auto* type = static_cast<const StructType*>(given);
        while (type != nullptr && type != wanted)
            type = type->base;
        return type != nullptr;
    }
    if (wanted->kind == TypeKind::Pointer && given->kind == TypeKind::Pointer)
        return Strip(static_cast<const PointerType*>(wanted)->target) ==
               Strip(static_cast<const PointerType*>(given)->target);
    return false;
}

void BodyChecker::BindInOut(Variable* parameter, const ast::Argument& argument, Place*& place) {
    if (argument.isOutput) {
        Fail(DiagnosticCode::WrongArrow, argument.range, {Text(parameter->name), "a VAR_IN_OUT", ":="});
        return;
    }
    if (argument.value == nullptr) {
        Fail(DiagnosticCode::EmptyArgument, argument.range, {Text(parameter->name)});
        return;
    }
    const ast::Expr& value = *argument.value;
    const Entity entity = Resolve(value, nullptr);
    if (entity.kind == Entity::Kind::Error) return;
    if (entity.kind != Entity::Kind::Place) {
        Diagnostic& diagnostic =
            project_.diagnostics.Report(DiagnosticCode::InOutNeedsVariable, value.range, {Text(parameter->name)});
        diagnostic.notes.push_back({parameter->declared, "declared here"});
        return;
    }
    if (entity.readOnly != nullptr && !parameter->isConstant) {
        Fail(DiagnosticCode::NotAssignable, value.range, {SourceText(value.range), entity.readOnly});
        return;
    }
    if (!InOutAccepts(parameter->type, entity.place->type)) {
        Diagnostic& diagnostic =
            project_.diagnostics.Report(DiagnosticCode::InOutType, value.range,
                                        {Text(parameter->name), Text(parameter->type), Text(entity.place->type)});
        diagnostic.notes.push_back({parameter->declared, "declared here"});
        return;
    }
    place = entity.place;
    MarkRead(place);
    MarkWritten(place, value.range);
    MarkAddressTaken(place);
}

void BodyChecker::BindOutput(Variable* parameter, const ast::Argument& argument, OutputBinding& output) {
    output.output = parameter;
    if (argument.value == nullptr) return;
    if (argument.name.name != NameId::None && !argument.isOutput) {
        Fail(DiagnosticCode::WrongArrow, argument.range, {Text(parameter->name), "an output", "=>"});
        return;
    }
    if (argument.negated && !IsBool(parameter->type)) {
        Fail(DiagnosticCode::OutputIgnoredNegation, argument.range, {Text(parameter->type)});
        return;
    }
    const Entity target = CheckTarget(*argument.value);
    if (target.kind == Entity::Kind::Error) return;
    if (target.kind != Entity::Kind::Place) {
        const bool isBit = target.kind == Entity::Kind::Bits;
        Fail(DiagnosticCode::NoAddress, argument.value->range, {isBit ? "a bit" : "a property"});
        return;
    }
    const SourceRange range = argument.value->range;
    Expr* value =
        Coerce(New(OutputExpr{{ExprKind::Output, BaseOf(parameter->type), range}, parameter}), target.place->type);
    if (IsError(value)) return;
    MarkWritten(target.place, range);
    output.target = target.place;
    output.value = value;
    output.negated = argument.negated;
    parameter->isRead = true;
}

Expr* BodyChecker::CheckFunctionCall(const ast::CallExpr& call, Pou& callee, Place* instance) {
    const std::string name = Text(callee.name);
    const std::size_t count = callee.parameters.size();
    const std::uint32_t errorsBefore = project_.diagnostics.GetErrorCount();
    auto* node = New(CallFunctionExpr{
        {ExprKind::CallFunction, callee.resultType == nullptr ? project_.types.Void() : callee.resultType, call.range},
        &callee,
        instance,
        project_.arena.NewArray<FunctionArgument>(count),
        nullptr,
        nullptr});
    if (instance != nullptr) {
        MarkRead(instance);
        MarkWritten(instance, call.range);
        MarkAddressTaken(instance);
    }
    const std::span<const ast::Argument*> given = project_.arena.NewArray<const ast::Argument*>(count);
    std::size_t position = 0;
    bool isNamed = false;
    for (const ast::Argument& argument : call.arguments) {
        std::size_t index = position;
        if (argument.name.name == NameId::None) {
            if (isNamed) return Fail(DiagnosticCode::PositionalAfterNamed, argument.range);
            ++position;
            if (index >= count) continue;
        } else {
            isNamed = true;
            index = 0;
            while (index < count && callee.parameters[index]->name != argument.name.name)
                ++index;
            if (index == count) {
                if (TakeEnable(argument, node->enable, node->enableOutput)) continue;
                std::vector<std::string_view> candidates;
                for (const Variable* known : callee.parameters)
                    candidates.push_back(project_.names.GetFolded(known->name));
                ReportUnknownParameter(name, argument, candidates);
                continue;
            }
        }
        Variable* parameter = callee.parameters[index];
        if (given[index] != nullptr) {
            Fail(DiagnosticCode::DuplicateArgument, argument.range, {Text(parameter->name)});
            continue;
        }
        given[index] = &argument;
    }
    if (position > count || (!isNamed && position < count)) {
        // Without names, only what has a default or is an output may be left out.
        bool isMissing = position > count;
        for (std::size_t i = position; i < count; ++i) {
            const Variable& left = *callee.parameters[i];
            isMissing |= left.section == ast::VarSection::InOut ||
                         (left.section == ast::VarSection::Input && left.initial == nullptr);
        }
        if (isMissing) {
            Diagnostic& diagnostic =
                project_.diagnostics.Report(DiagnosticCode::WrongArgumentCount, call.range,
                                            {name, std::to_string(count), std::to_string(position)});
            if (callee.declaration != nullptr)
                diagnostic.notes.push_back({callee.declaration->name.range, "declared here"});
            return Error(call.range);
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        Variable* parameter = callee.parameters[i];
        FunctionArgument& argument = node->arguments[i];
        argument.parameter = parameter;
        switch (parameter->section) {
            case ast::VarSection::InOut:
                if (given[i] != nullptr) {
                    BindInOut(parameter, *given[i], argument.place);
                } else {
                    Fail(DiagnosticCode::MissingArgument, call.range, {Text(parameter->name), name});
                }
                break;
            case ast::VarSection::Output:
                argument.output.output = parameter;
                if (given[i] != nullptr) BindOutput(parameter, *given[i], argument.output);
                break;
            default:
                if (given[i] != nullptr && given[i]->value != nullptr) {
                    BindInput(parameter, *given[i], argument.value);
                } else {
                    argument.value = DefaultOf(*parameter, call.range);
                }
                break;
        }
    }
    NoteCall(&callee);
    if (project_.diagnostics.GetErrorCount() != errorsBefore) {
        // The type is known all the same, so that no message follows from this one.
        return Error(call.range);
    }
    return node;
}

void BodyChecker::ReportUnknownParameter(const std::string& callee, const ast::Argument& argument,
                                         std::span<const std::string_view> candidates) {
    Diagnostic& diagnostic = project_.diagnostics.Report(DiagnosticCode::UnknownParameter, argument.name.range,
                                                         {callee, SourceText(argument.name.range)});
    const std::string_view nearest = FindNearestName(project_.names.GetFolded(argument.name.name), candidates);
    if (!nearest.empty())
        diagnostic.notes.push_back({argument.name.range, "did you mean '" + std::string(nearest) + "'?"});
}

}  // namespace tn61131::st
