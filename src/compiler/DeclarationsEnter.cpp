#include <algorithm>

#include "compiler/DeclarationsState.h"

namespace tn61131::st {

namespace {

Symbol SymbolOf(Variable& variable) {
    return {.kind = Symbol::Kind::Variable, .declared = variable.declared, .variable = &variable};
}

Symbol SymbolOf(Pou& pou, SourceRange declared) {
    return {.kind = Symbol::Kind::Pou, .declared = declared, .type = pou.type, .pou = &pou};
}

bool HasAttribute(std::span<const std::string_view> attributes, std::string_view word) {
    return std::ranges::any_of(attributes, [word](std::string_view each) { return each.find(word) != each.npos; });
}

/// A function block is what a type can be named after; a variable may share its name.
bool IsTypeSymbol(const Symbol& symbol) noexcept {
    return symbol.kind == Symbol::Kind::Type || (symbol.kind == Symbol::Kind::Pou && symbol.type != nullptr);
}

}  // namespace

std::string_view GetSectionText(ast::VarSection section) noexcept {
    switch (section) {
        case ast::VarSection::Input: return "VAR_INPUT";
        case ast::VarSection::Output: return "VAR_OUTPUT";
        case ast::VarSection::InOut: return "VAR_IN_OUT";
        case ast::VarSection::Local: return "VAR";
        case ast::VarSection::Temp: return "VAR_TEMP";
        case ast::VarSection::Static: return "VAR_STAT";
        case ast::VarSection::Global: return "VAR_GLOBAL";
        case ast::VarSection::External: return "VAR_EXTERNAL";
        case ast::VarSection::Access: return "VAR_ACCESS";
        case ast::VarSection::Config: return "VAR_CONFIG";
        case ast::VarSection::Instance: return "VAR_INST";
    }
    return "";
}

std::string_view GetPouText(ast::PouKind kind) noexcept {
    switch (kind) {
        case ast::PouKind::Program: return "PROGRAM";
        case ast::PouKind::Function: return "FUNCTION";
        case ast::PouKind::FunctionBlock: return "FUNCTION_BLOCK";
        case ast::PouKind::Method: return "METHOD";
        case ast::PouKind::Property: return "PROPERTY";
        case ast::PouKind::Action: return "ACTION";
        case ast::PouKind::Interface: return "INTERFACE";
    }
    return "";
}

void Declarations::State::EnterUnit(const ast::SourceUnit& unit, Scope& home) {
    Scope* scope = &home;
    if (!unit.usings.empty()) {
        scope = &NewScope(&home);
        openUsings.emplace_back(scope, unit.usings);
    }
    for (const ast::TypeDecl* type : unit.types)
        EnterType(*type, home, *scope);
    for (const ast::VarBlock* block : unit.globals)
        EnterGlobals(*block, home, *scope);
    for (const ast::Pou* pou : unit.pous)
        EnterPou(*pou, &home, *scope, nullptr);
    for (const ast::Configuration* each : unit.configurations)
        EnterConfiguration(*each, *scope);
    for (const ast::Namespace* each : unit.namespaces)
        EnterNamespace(*each, home);
}

void Declarations::State::EnterNamespace(const ast::Namespace& space, Scope& scope) {
    Scope* inner = &scope;
    for (const ast::Identifier& name : space.path) {
        const Symbol* existing = std::as_const(*inner).FindHere(name.name);
        if (existing != nullptr && existing->kind == Symbol::Kind::Namespace) {
            inner = existing->scope;
            continue;
        }
        Scope& made = NewScope(inner);
        AddSymbol(*inner, name.name, {.kind = Symbol::Kind::Namespace, .declared = name.range, .scope = &made});
        inner = &made;
    }
    EnterUnit(space.content, *inner);
}

void Declarations::State::ReportDuplicate(NameId name, SourceRange range, SourceRange other) {
    Report(DiagnosticCode::DuplicateName, range, {Spelling(name)}).notes.push_back({other, "declared here"});
}

bool Declarations::State::AddSymbol(Scope& scope, NameId name, const Symbol& symbol) {
    if (name == NameId::None) return false;
    const Symbol* existing = scope.Add(name, symbol);
    if (existing == nullptr) return true;
    const bool isVariable = symbol.kind == Symbol::Kind::Variable;
    if (isVariable && IsTypeSymbol(*existing)) {
        hiddenTypes.emplace(std::pair(&scope, name), *existing);
        Symbol& place = *scope.FindHere(name);
        if (place.entry != 0) entries[place.entry - 1].symbol = &hiddenTypes.at({&scope, name});
        place = symbol;
        return true;
    }
    if (existing->kind == Symbol::Kind::Variable && IsTypeSymbol(symbol)) {
        if (hiddenTypes.emplace(std::pair(&scope, name), symbol).second) return true;
        existing = &hiddenTypes.at({&scope, name});
    }
    ReportDuplicate(name, symbol.declared, existing->declared);
    return false;
}

void Declarations::State::EnterType(const ast::TypeDecl& declaration, Scope& home, Scope& scope) {
    const NameId name = declaration.name.name;
    entries.push_back({.declaration = &declaration, .home = &home, .scope = &scope});
    const auto entry = static_cast<std::uint32_t>(entries.size());
    if (AddSymbol(home, name, {.kind = Symbol::Kind::Type, .declared = declaration.name.range, .entry = entry})) {
        const auto hidden = hiddenTypes.find({&home, name});
        entries.back().symbol = hidden != hiddenTypes.end() ? &hidden->second : home.FindHere(name);
    }
    if (declaration.type == nullptr || declaration.type->kind != ast::TypeSpecKind::Enum) return;
    if (HasAttribute(declaration.attributes, "qualified_only")) return;
    for (const ast::EnumValue& value : static_cast<const ast::EnumTypeSpec&>(*declaration.type).values) {
        if (value.name.name == NameId::None) continue;
        std::vector<Symbol>& symbols = enumValues[value.name.name];
        // The same name twice in one enumeration is reported when that is resolved.
        if (!symbols.empty() && symbols.back().entry == entry) continue;
        symbols.push_back({.kind = Symbol::Kind::EnumMember, .declared = value.name.range, .entry = entry});
    }
}

Variable& Declarations::State::NewVariable(const ast::VarDecl& declaration, const ast::VarBlock& block, Pou* owner,
                                           Scope& scope) {
    Variable& variable = project.variables.emplace_back();
    variable.name = declaration.name.name;
    variable.declared = declaration.name.range;
    variable.type = project.types.Error();
    variable.section = block.section;
    variable.isConstant = block.constant;
    variable.isRetain = block.retain;
    variable.isPersistent = block.persistent;
    variable.owner = owner;
    variable.declaration = &declaration;
    variable.scope = &scope;
    variable.progress = Progress::Entered;
    return variable;
}

Variable& Declarations::State::NewImplicit(NameId name, SourceRange declared, ast::VarSection section, Pou& owner) {
    Variable& variable = project.variables.emplace_back();
    variable.name = name;
    variable.declared = declared;
    variable.type = project.types.Error();
    variable.section = section;
    variable.owner = &owner;
    variable.scope = owner.scope;
    return variable;
}

void Declarations::State::EnterGlobals(const ast::VarBlock& block, Scope& home, Scope& scope) {
    if (block.section == ast::VarSection::Config) {
        for (const ast::VarDecl* declaration : block.variables)
            configVariables.emplace_back(declaration, &scope);
        return;
    }
    if (block.section == ast::VarSection::Access) {
        Report(DiagnosticCode::UnusedSection, block.range, {GetSectionText(block.section)});
        return;
    }
    for (const ast::VarDecl* declaration : block.variables) {
        Variable& variable = NewVariable(*declaration, block, nullptr, scope);
        variable.section = ast::VarSection::Global;
        project.globals.push_back(&variable);
        AddSymbol(home, variable.name, SymbolOf(variable));
    }
}

Pou& Declarations::State::EnterPou(const ast::Pou& declaration, Scope* home, Scope& scope, Pou* container) {
    Pou& pou = project.pous.emplace_back();
    pou.kind = declaration.kind;
    pou.name = declaration.name.name;
    pou.declaration = &declaration;
    pou.scope = &NewScope(&scope, &pou);
    if (!declaration.usings.empty()) openUsings.emplace_back(pou.scope, declaration.usings);
    pou.container = container;
    pou.resultType = project.types.Void();
    if (pou.kind == ast::PouKind::FunctionBlock) {
        pou.type = project.types.NewFunctionBlock(pou.name);
        pou.type->pou = &pou;
        pou.type->declared = declaration.name.range;
        pou.type->isComplete = false;
    }
    if (pou.kind == ast::PouKind::Interface) {
        Report(DiagnosticCode::NotSupported, declaration.name.range, {"INTERFACE"});
    }
    if (home != nullptr) AddSymbol(*home, pou.name, SymbolOf(pou, declaration.name.range));
    EnterVariables(pou);
    EnterMembers(pou);
    return pou;
}

void Declarations::State::EnterVariables(Pou& pou) {
    const ast::Pou& declaration = *pou.declaration;
    if (declaration.result != nullptr && (pou.kind == ast::PouKind::Function || pou.kind == ast::PouKind::Method)) {
        Variable& result = NewImplicit(pou.name, declaration.name.range, ast::VarSection::Local, pou);
        result.isResult = true;
        pou.result = &result;
        pou.variables.push_back(&result);
        AddSymbol(*pou.scope, result.name, SymbolOf(result));
    }
    for (const ast::VarBlock* block : declaration.variables) {
        for (const ast::VarDecl* each : block->variables) {
            Variable& variable = NewVariable(*each, *block, &pou, *pou.scope);
            pou.variables.push_back(&variable);
            AddSymbol(*pou.scope, variable.name, SymbolOf(variable));
            AddParameter(pou, variable);
        }
    }
    if (pou.kind == ast::PouKind::FunctionBlock) EnterEnable(pou);
    CheckSections(pou);
}

void Declarations::State::AddParameter(Pou& pou, Variable& variable) {
    switch (variable.section) {
        case ast::VarSection::Input: pou.inputs.push_back(&variable); break;
        case ast::VarSection::Output: pou.outputs.push_back(&variable); break;
        case ast::VarSection::InOut: pou.inOuts.push_back(&variable); break;
        default: return;
    }
    pou.parameters.push_back(&variable);
}

/// EN or ENO of a block that does not declare it.
Variable& Declarations::State::NewEnable(Pou& pou, bool isInput) {
    Variable& variable = NewImplicit(project.names.Intern(isInput ? "EN" : "ENO"), {},
                                     isInput ? ast::VarSection::Input : ast::VarSection::Output, pou);
    variable.type = project.types.Bool();
    // A block that is called without EN runs.
    if (isInput) variable.initial = initials.MakeScalar(variable.type, CValue(true));
    return variable;
}

/// EN and ENO are there in every block, at the front of its instance, unless it declares them itself.
void Declarations::State::EnterEnable(Pou& pou) {
    if (!pou.declaration->extends.empty()) return;
    for (const bool isInput : {true, false}) {
        const NameId name = project.names.Intern(isInput ? "EN" : "ENO");
        const Symbol* existing = std::as_const(*pou.scope).FindHere(name);
        Variable* variable = existing != nullptr ? existing->variable : nullptr;
        const ast::VarSection section = isInput ? ast::VarSection::Input : ast::VarSection::Output;
        if (variable == nullptr || variable->section != section) {
            variable = &NewEnable(pou, isInput);
            if (existing == nullptr) pou.scope->Add(name, SymbolOf(*variable));
        }
        pou.type->variables.push_back(variable);
    }
}

void Declarations::State::EnterMembers(Pou& pou) {
    for (const ast::Pou* member : pou.declaration->members) {
        Pou& entered = EnterPou(*member, pou.scope, *pou.scope, &pou);
        if (entered.kind == ast::PouKind::Property) EnterProperty(entered);
        pou.members.emplace(entered.name, &entered);
    }
}

void Declarations::State::EnterProperty(Pou& property) {
    const ast::Pou& declaration = *property.declaration;
    const auto enter = [&](const ast::Pou& part, bool isGetter) -> Pou* {
        Pou& pou = EnterPou(part, nullptr, *property.container->scope, property.container);
        pou.kind = ast::PouKind::Method;
        pou.name = property.name;
        Variable& value = NewImplicit(property.name, declaration.name.range,
                                      isGetter ? ast::VarSection::Local : ast::VarSection::Input, pou);
        value.isResult = isGetter;
        pou.variables.insert(pou.variables.begin(), &value);
        if (isGetter) {
            pou.result = &value;
        } else {
            AddParameter(pou, value);
        }
        AddSymbol(*pou.scope, value.name, SymbolOf(value));
        return &pou;
    };
    if (declaration.getter != nullptr) property.getter = enter(*declaration.getter, true);
    if (declaration.setter != nullptr) property.setter = enter(*declaration.setter, false);
}

void Declarations::State::CheckSections(const Pou& pou) {
    using Section = ast::VarSection;
    const auto isAllowed = [&pou](Section section) {
        switch (section) {
            case Section::Global:
            case Section::Config: return false;
            case Section::Instance: return pou.kind == ast::PouKind::Method;
            case Section::InOut: return pou.kind != ast::PouKind::Program && pou.kind != ast::PouKind::Action;
            case Section::Input:
            case Section::Output: return pou.kind != ast::PouKind::Action && pou.kind != ast::PouKind::Property;
            default: return true;
        }
    };
    for (const ast::VarBlock* block : pou.declaration->variables) {
        if (!isAllowed(block->section)) {
            Report(DiagnosticCode::SectionNotAllowed, block->range,
                   {GetSectionText(block->section), GetPouText(pou.kind)});
        } else if (block->section == Section::Access) {
            Report(DiagnosticCode::UnusedSection, block->range, {GetSectionText(block->section)});
        }
    }
}

void Declarations::State::ResolveBase(Pou& pou) {
    if (pou.declaration == nullptr || pou.declaration->extends.empty() || pou.type == nullptr) return;
    const ast::Identifier& name = pou.declaration->extends.front();
    const Symbol* symbol = LookupQualifiedType(name, pou.scope->GetParent());
    if (symbol == nullptr || symbol->kind != Symbol::Kind::Pou || symbol->pou->kind != ast::PouKind::FunctionBlock) {
        Report(DiagnosticCode::UnknownBase, name.range, {GetPouText(pou.kind), Spelling(name.name)});
        return;
    }
    // Bases are set one after the other, so a ring closes exactly once.
    for (const Pou* base = symbol->pou; base != nullptr; base = base->base) {
        if (base != &pou) continue;
        Report(DiagnosticCode::SelfReference, pou.declaration->name.range, {Spelling(pou.name)});
        return;
    }
    pou.base = symbol->pou;
}

void Declarations::State::HintHidden(const Pou& pou) {
    for (const Variable* variable : pou.variables) {
        if (variable->isResult || variable->section == ast::VarSection::External) continue;
        for (const Pou* base = pou.base; base != nullptr; base = base->base) {
            const Symbol* inherited = std::as_const(*base->scope).FindHere(variable->name);
            if (inherited != nullptr) ReportDuplicate(variable->name, variable->declared, inherited->declared);
        }
        if (!project.options.switches.hints) continue;
        for (const Scope* scope = pou.scope->GetParent(); scope != nullptr; scope = scope->GetParent()) {
            const Symbol* hidden = scope->FindHere(variable->name);
            if (hidden == nullptr || hidden->kind != Symbol::Kind::Variable) continue;
            Report(DiagnosticCode::HidesOther, variable->declared, {Spelling(variable->name)})
                .notes.push_back({hidden->declared, "declared here"});
            break;
        }
    }
}

}  // namespace tn61131::st
