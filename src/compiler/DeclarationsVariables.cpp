#include <algorithm>
#include <utility>

#include "compiler/Checker.h"
#include "compiler/DeclarationsState.h"
#include "compiler/FixedPlace.h"

namespace tn61131::st {

namespace {

/// How much of the stack an initial value may need: deep expressions have long texts.
std::uint32_t WeightOf(const ast::Expr& expression) noexcept {
    const std::uint32_t length = expression.range.end - expression.range.begin;
    return 2 + std::min<std::uint32_t>(length, 200) / 4;
}

bool IsParameter(ast::VarSection section) noexcept {
    return section == ast::VarSection::Input || section == ast::VarSection::Output || section == ast::VarSection::InOut;
}

/// Whether a variable has its initial value before anything runs, rather than with each call.
bool ExistsFromStart(const Variable& variable) noexcept {
    if (variable.section == ast::VarSection::Temp) return false;
    if (variable.owner == nullptr || variable.section == ast::VarSection::Static) return true;
    return variable.owner->kind == ast::PouKind::Program || variable.owner->kind == ast::PouKind::FunctionBlock;
}

/// A function block keeps its inputs and outputs, so their size must be known.
bool MayBeOpen(const Variable& variable) noexcept {
    if (variable.owner == nullptr || !IsParameter(variable.section)) return false;
    const ast::PouKind kind = variable.owner->kind;
    return variable.section == ast::VarSection::InOut || kind == ast::PouKind::Function || kind == ast::PouKind::Method;
}

}  // namespace

void Declarations::State::ResolveVariable(Variable& variable) {
    if (variable.progress != Progress::Entered) {
        if (variable.progress == Progress::Running) {
            Report(DiagnosticCode::SelfReference, variable.declared, {Spelling(variable.name)});
        }
        return;
    }
    variable.progress = Progress::Running;
    const ast::VarDecl& declaration = *variable.declaration;
    const Type* type = project.types.Error();
    if (declaration.type != nullptr) {
        if (declaration.type->kind == ast::TypeSpecKind::Edge) {
            variable.edge = static_cast<const ast::EdgeTypeSpec&>(*declaration.type).rising;
        }
        type = ResolveSpec(*declaration.type, variable.scope);
        const Type* plain = Strip(type);
        if (plain->kind == TypeKind::Array && static_cast<const ArrayType*>(plain)->isOpen && !MayBeOpen(variable)) {
            Report(DiagnosticCode::OpenArray, declaration.type->range);
            type = project.types.Error();
        }
    }
    variable.type = type;
    variable.progress = Progress::Typed;
    if (variable.section == ast::VarSection::External) BindExternal(variable);
}

void Declarations::State::BindExternal(Variable& variable) {
    const Symbol* symbol = nullptr;
    for (Scope* scope = variable.scope->GetParent(); scope != nullptr && symbol == nullptr;
         scope = scope->GetParent()) {
        symbol = scope->FindHere(variable.name);
        if (symbol != nullptr && (symbol->kind != Symbol::Kind::Variable || symbol->variable->owner != nullptr)) {
            symbol = nullptr;
        }
    }
    variable.progress = Progress::Done;
    if (symbol == nullptr) {
        Diagnostic& diagnostic = Report(DiagnosticCode::UnknownGlobal, variable.declared, {Spelling(variable.name)});
        std::vector<std::string_view> candidates;
        for (const Variable* global : project.globals)
            candidates.push_back(Spelling(global->name));
        Suggest(diagnostic, variable.name, candidates, variable.declared);
        return;
    }
    Variable& global = *symbol->variable;
    ResolveVariable(global);
    ResolveValue(global);
    const bool isKnown = variable.type->kind != TypeKind::Error && global.type->kind != TypeKind::Error;
    if (isKnown && Strip(variable.type) != Strip(global.type)) {
        Report(DiagnosticCode::ExternalDiffers, variable.declared,
               {Spelling(variable.name), TextOf(variable.type), TextOf(global.type)})
            .notes.push_back({global.declared, "declared here"});
    }
    variable.aliasOf = &global;
    variable.type = global.type;
    variable.isConstant = variable.isConstant || global.isConstant;
    variable.constantValue = global.constantValue;
}

/// The value of a constant that every use replaces. Others have theirs checked later, see GetInitial().
void Declarations::State::ResolveValue(Variable& variable) {
    if (variable.progress == Progress::Evaluating) {
        Report(DiagnosticCode::SelfReference, variable.declared, {Spelling(variable.name)});
        variable.type = project.types.Error();
        return;
    }
    const bool isScalarConstant = variable.isConstant && !IsParameter(variable.section) &&
                                  !IsAggregate(variable.type) && !IsPointer(variable.type);
    if (variable.progress != Progress::Typed || !isScalarConstant) return;
    variable.progress = Progress::Done;
    if (variable.type->kind == TypeKind::Error) return;
    const ast::Expr* initial = variable.declaration->initial;
    if (initial == nullptr) {
        Report(DiagnosticCode::ConstantWithoutValue, variable.declared, {Spelling(variable.name)});
        variable.constantValue = GetInitialScalar(variable.type, nullptr);
        return;
    }
    const Depth guard(*this, WeightOf(*initial));
    variable.progress = Progress::Evaluating;
    const Type* const type = variable.type;
    if (guard.Check(variable.name, variable.declared)) {
        const bool usesStartValues = std::exchange(project.usesStartValues, false);
        variable.constantValue = checker.EvaluateConstant(*initial, type, variable.scope);
        project.usesStartValues = usesStartValues;
    }
    variable.progress = Progress::Done;
    // What is wrong with the value was reported: uses shall not be reported again.
    if (!variable.constantValue) variable.type = project.types.Error();
    if (variable.type->kind == TypeKind::Error) {
        variable.constantValue.reset();
        return;
    }
    variable.initial = initials.MakeScalar(variable.type, *variable.constantValue);
}

const InitialValue* Declarations::State::GetInitial(Variable& variable) {
    if (variable.aliasOf != nullptr && variable.section == ast::VarSection::External) {
        return GetInitial(*variable.aliasOf);
    }
    ResolveVariable(variable);
    ResolveValue(variable);
    if (variable.progress == Progress::Evaluating) {
        Report(DiagnosticCode::SelfReference, variable.declared, {Spelling(variable.name)});
        return nullptr;
    }
    if (variable.progress != Progress::Typed) return variable.initial;
    variable.progress = Progress::Evaluating;
    const bool usesStartValues = std::exchange(project.usesStartValues, ExistsFromStart(variable));
    if (variable.type->kind != TypeKind::Error && Complete(variable.type, variable.declared)) CheckInitial(variable);
    project.usesStartValues = usesStartValues;
    variable.progress = Progress::Done;
    return variable.initial;
}

void Declarations::State::CheckInitial(Variable& variable) {
    const ast::VarDecl& declaration = *variable.declaration;
    if (declaration.initial == nullptr) {
        if (declaration.blockInit.empty()) return;
        variable.initial =
            initials.CheckArguments(declaration.blockInit, variable.declared, variable.type, variable.scope);
        return;
    }
    const Depth guard(*this, WeightOf(*declaration.initial));
    if (variable.section == ast::VarSection::InOut || variable.section == ast::VarSection::External) {
        Report(DiagnosticCode::InitialNotWritable, declaration.initial->range, {Spelling(variable.name)});
    } else if (guard.Check(variable.name, variable.declared)) {
        variable.initial = initials.Check(*declaration.initial, variable.type, variable.scope);
    }
}

const CValue* Declarations::State::GetStartValue(Variable& variable) {
    if (!HasFixedPlace(variable) || variable.storage.kind == StorageKind::Tag) return nullptr;
    if (IsAggregate(variable.type) || IsPointer(variable.type)) return nullptr;
    const InitialValue* initial = GetInitial(variable);
    if (variable.type->kind == TypeKind::Error) return nullptr;
    if (initial == nullptr) {
        // The default of the type, kept like a value that was written.
        initial = initials.MakeScalar(variable.type, GetInitialScalar(variable.type, nullptr));
        variable.initial = initial;
    }
    return initial->kind == InitialValue::Kind::Scalar ? &static_cast<const ScalarInitial*>(initial)->value : nullptr;
}

void Declarations::State::ResolvePou(Pou& pou) {
    if (pou.declaration == nullptr) return;
    if (pou.declaration->result != nullptr) {
        const Type* type = ResolveSpec(*pou.declaration->result, pou.scope);
        if (!Complete(type, pou.declaration->result->range)) type = project.types.Error();
        pou.resultType = type;
    }
    for (const Pou* accessor : {pou.getter, pou.setter}) {
        if (accessor == nullptr) continue;
        for (Variable* variable : accessor->variables) {
            if (variable->declaration == nullptr) variable->type = pou.resultType;
        }
    }
    if (pou.getter != nullptr) pou.getter->resultType = pou.resultType;
    if (pou.result != nullptr && pou.declaration->result != nullptr) pou.result->type = pou.resultType;
    for (Variable* variable : pou.variables) {
        ResolveVariable(*variable);
        if (!Complete(variable->type, variable->declared)) variable->type = project.types.Error();
        ResolveValue(*variable);
    }
}

}  // namespace tn61131::st
