#include "compiler/Declarations.h"

#include <utility>

#include "compiler/DeclarationsState.h"

namespace tn61131::st {

Declarations::Declarations(Project& project, Checker& checker)
    : project_(project), state_(std::make_unique<State>(project, checker, *this)) {}

Declarations::~Declarations() = default;

void Declarations::Enter(std::span<ast::SourceUnit* const> units) {
    for (const ast::SourceUnit* unit : units)
        state_->EnterUnit(*unit, project_.globalScope);
    for (const auto& [scope, paths] : state_->openUsings) {
        for (const std::span<ast::Identifier>& path : paths) {
            if (Scope* space = state_->FindNamespace(path, scope, true)) state_->usings[scope].push_back(space);
        }
    }
    for (Pou& pou : project_.pous)
        state_->ResolveBase(pou);
}

void Declarations::Resolve() {
    State& state = *state_;
    state.ResolveConfigurations();
    for (State::TypeEntry& entry : state.entries)
        static_cast<void>(state.ResolveEntry(entry));
    for (Variable* variable : project_.globals) {
        state.ResolveVariable(*variable);
        if (!state.Complete(variable->type, variable->declared)) variable->type = project_.types.Error();
        state.ResolveValue(*variable);
    }
    for (Pou& pou : project_.pous) {
        if (pou.type != nullptr) static_cast<void>(state.CompleteBlock(pou));
        state.ResolvePou(pou);
        state.HintHidden(pou);
    }
    // Completing one structure may open another.
    for (std::size_t i = 0; i < state.structs.size(); ++i)
        static_cast<void>(state.CompleteStruct(state.structs[i]));
    for (std::size_t i = 0; i < project_.types.GetLateArrays().size(); ++i) {
        const ArrayType* array = project_.types.GetLateArrays()[i];
        static_cast<void>(state.Complete(array, array->element->declared));
    }
    for (const State::OpenAlias& alias : state.aliases) {
        static_cast<void>(state.Complete(alias.type, alias.type->declared));
        alias.type->initial = state.initials.Check(*alias.initial, alias.type->target, alias.scope);
    }
    for (std::size_t i = 0; i < state.structs.size(); ++i)
        state.CheckFieldInitials(state.structs[i]);
    for (Variable* variable : project_.globals)
        static_cast<void>(state.GetInitial(*variable));
    for (const Pou& pou : project_.pous) {
        for (Variable* variable : pou.variables)
            static_cast<void>(state.GetInitial(*variable));
    }
    state.CheckProgramArguments();
    state.LayOut();
}

void Declarations::Finish() {
    if (state_->located.Layout()) {
        state_->FollowAliases();
        state_->WriteGlobals();
    }
}

const Symbol* Declarations::Lookup(NameId name, const Scope* scope) {
    return state_->Lookup(name, scope);
}

const Symbol* Declarations::LookupMember(NameId name, const Pou* pou) {
    return state_->LookupMember(name, pou);
}

const Type* Declarations::ResolveType(const ast::TypeSpec& spec, const Scope* scope) {
    const Type* type = state_->ResolveSpec(spec, const_cast<Scope*>(scope));
    return state_->Complete(type, spec.range) ? type : project_.types.Error();
}

Variable* Declarations::ResolveLocated(const ast::LocatedExpr& located) {
    return state_->located.Resolve(located);
}

std::vector<std::string_view> Declarations::CollectNames(const Scope* scope) {
    return state_->CollectNames(scope, false);
}

const InitialValue* Declarations::CheckInitial(const ast::Expr& value, const Type* type, const Scope* scope) {
    return state_->initials.Check(value, type, const_cast<Scope*>(scope));
}

const InitialValue* Declarations::GetInitial(Variable& variable) {
    return state_->GetInitial(variable);
}

const CValue* Declarations::GetStartValue(Variable& variable) {
    return state_->GetStartValue(variable);
}

void Declarations::WriteInitial(const Type* type, const InitialValue* initial, std::span<unsigned char> bytes) const {
    WriteInitialBytes(type, initial, bytes);
}

std::uint32_t Declarations::AddConstant(std::span<const unsigned char> bytes) {
    return state_->AddConstant(bytes);
}

}  // namespace tn61131::st
