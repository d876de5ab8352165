#include <algorithm>
#include <vector>

#include "compiler/Checker.h"
#include "compiler/DeclarationsState.h"

namespace tn61131::st {

namespace {

bool IsProgram(const Symbol& symbol, const Scope*) {
    return symbol.kind == Symbol::Kind::Pou && symbol.pou->kind == ast::PouKind::Program;
}

/// The names of a.b.c; empty for anything else.
std::vector<ast::Identifier> PathOf(const ast::Expr* expression) {
    std::vector<ast::Identifier> path;
    while (expression != nullptr && expression->kind == ast::ExprKind::Member) {
        const auto& member = static_cast<const ast::MemberExpr&>(*expression);
        path.push_back(member.member);
        expression = member.base;
    }
    if (expression == nullptr || expression->kind != ast::ExprKind::Name) return {};
    path.push_back({static_cast<const ast::NameExpr*>(expression)->name, expression->range});
    std::ranges::reverse(path);
    return path;
}

}  // namespace

const Symbol* Declarations::State::FindProgram(NameId name, const Scope* scope) {
    return FindSymbol(name, scope, IsProgram);
}

/// VAR_CONFIG gives a variable of a program the address that its declaration leaves open, or another initial value.
void Declarations::State::ResolveConfigVariable(const ast::VarDecl& config, Scope* scope) {
    std::vector<ast::Identifier> path = PathOf(config.alias);
    // Resources in front of the program have no variables of their own.
    while (path.size() > 2 && FindProgram(path.front().name, scope) == nullptr)
        path.erase(path.begin());
    const Symbol* program = path.size() < 2 ? nullptr : FindProgram(path.front().name, scope);
    const SourceRange range = config.alias != nullptr ? config.alias->range : config.name.range;
    Symbol* symbol = program == nullptr ? nullptr : program->pou->scope->FindHere(path[1].name);
    if (symbol == nullptr || symbol->kind != Symbol::Kind::Variable || symbol->variable->declaration == nullptr) {
        Report(DiagnosticCode::UnknownName, range, {project.sources.GetText(range)});
        return;
    }
    Variable& variable = *symbol->variable;
    const bool isFixed = config.location != nullptr && (variable.declaration->location == nullptr ||
                                                        !LocatedVariables::IsOpen(*variable.declaration->location));
    if (path.size() > 2 || isFixed) {
        Report(DiagnosticCode::NotSupported, range,
               {isFixed ? "an address for a variable declared without AT %I*, %Q* or %M*"
                        : "VAR_CONFIG for a variable of a function block"});
        return;
    }
    ResolveVariable(variable);
    const Type* type = config.type != nullptr ? ResolveSpec(*config.type, scope) : project.types.Error();
    const bool isKnown = type->kind != TypeKind::Error && variable.type->kind != TypeKind::Error;
    if (isKnown && Strip(type) != Strip(variable.type)) {
        Report(DiagnosticCode::ConfigDiffers, range, {Spelling(variable.name), TextOf(type), TextOf(variable.type)})
            .notes.push_back({variable.declared, "declared here"});
        return;
    }
    auto* const declaration = project.arena.New<ast::VarDecl>(*variable.declaration);
    if (config.location != nullptr) declaration->location = config.location;
    if (config.initial != nullptr) declaration->initial = config.initial;
    variable.declaration = declaration;
}

void Declarations::State::EnterConfiguration(const ast::Configuration& configuration, Scope& scope) {
    for (const ast::VarBlock* block : configuration.variables)
        EnterGlobals(*block, scope, scope);
    for (const ast::Resource* resource : configuration.resources) {
        for (const ast::VarBlock* block : resource->globals)
            EnterGlobals(*block, scope, scope);
    }
    configurations.push_back({&configuration, &scope});
}

void Declarations::State::ResolveConfigurations() {
    for (const ConfigurationEntry& entry : configurations) {
        for (const ast::Resource* resource : entry.declaration->resources)
            ResolveResource(*resource, entry.scope);
    }
    AddPlainPrograms();
    for (const auto& [config, scope] : configVariables)
        ResolveConfigVariable(*config, scope);
}

void Declarations::State::ResolveResource(const ast::Resource& resource, Scope* scope) {
    const std::size_t firstTask = project.tasks.size();
    for (const ast::TaskDecl* task : resource.tasks)
        ResolveTask(*task, scope);
    for (const ast::ProgramInstance* instance : resource.programs) {
        const NameId task = instance->task.name;
        const auto begin = project.tasks.begin() + static_cast<std::ptrdiff_t>(firstTask);
        if (task != NameId::None &&
            std::ranges::find(begin, project.tasks.end(), task, &Task::name) == project.tasks.end()) {
            Report(DiagnosticCode::UnknownTask, instance->task.range, {Spelling(task)});
        }
        ResolveProgram(*instance, scope);
    }
}

void Declarations::State::ResolveTask(const ast::TaskDecl& declaration, Scope* scope) {
    Task& task = project.tasks.emplace_back();
    task.name = declaration.name.name;
    for (const ast::StructInitElement& property : declaration.properties) {
        const std::string_view name = project.names.GetFolded(property.member.name);
        if (property.value == nullptr) continue;
        if (name == "interval") {
            const Type* time = project.types.Elementary(ElementaryType::Time);
            if (const auto value = checker.EvaluateConstant(*property.value, time, scope)) {
                task.intervalMs = GetIntegerBits(*value);
            }
        } else if (name == "priority") {
            task.priority = checker.EvaluateInteger(*property.value, scope);
        } else if (name == "single") {
            task.single = project.sources.GetText(property.value->range);
        } else {
            Report(DiagnosticCode::UnknownTaskProperty, property.member.range, {Spelling(property.member.name)});
        }
    }
}

/// The first instance of a program is the program itself; each further one is a copy with variables of its own,
/// because a program reaches its variables at fixed addresses.
void Declarations::State::ResolveProgram(const ast::ProgramInstance& instance, Scope* scope) {
    const Symbol* symbol = FindProgram(instance.type.name, scope);
    if (symbol == nullptr && Spelling(instance.type.name).find('.') != std::string_view::npos) {
        symbol = LookupQualifiedType(instance.type, scope);
        if (symbol != nullptr && !IsProgram(*symbol, nullptr)) symbol = nullptr;
    }
    for (const ast::BlockTask& each : instance.blockTasks) {
        Report(DiagnosticCode::NotSupported, each.block.range, {"a task for a part of a program"});
    }
    if (symbol == nullptr) {
        Diagnostic& diagnostic =
            Report(DiagnosticCode::UnknownProgram, instance.type.range, {Spelling(instance.type.name)});
        std::vector<std::string_view> candidates;
        for (const Pou& pou : project.pous) {
            if (pou.kind == ast::PouKind::Program) candidates.push_back(Spelling(pou.name));
        }
        Suggest(diagnostic, instance.type.name, candidates, instance.type.range);
        return;
    }
    const auto clash = std::ranges::find_if(project.programs,
                                            [&](const ProgramEntry& each) { return each.name == instance.name.name; });
    if (clash != project.programs.end()) {
        ReportDuplicate(instance.name.name, instance.name.range, clash->declared);
        return;
    }
    Pou* pou = symbol->pou;
    const bool isFirst = std::ranges::find(project.programs, pou, &ProgramEntry::pou) == project.programs.end();
    if (!isFirst) pou = &EnterPou(*pou->declaration, nullptr, *pou->scope->GetParent(), nullptr);
    project.programs.push_back(
        {.name = instance.name.name, .pou = pou, .task = instance.task.name, .declared = instance.name.range});
    if (!instance.arguments.empty()) programArguments.push_back({pou, &instance});
    // Instance.variable is how the others name its variables; an existing declaration of the name is meant before.
    static_cast<void>(
        scope->Add(instance.name.name, {.kind = Symbol::Kind::Pou, .declared = instance.name.range, .pou = pou}));
}

/// PROGRAM p : Main(setpoint := 5) gives an input another initial value.
void Declarations::State::CheckProgramArguments() {
    for (const OpenProgram& open : programArguments) {
        for (const ast::Argument& argument : open.instance->arguments) {
            Symbol* symbol = open.pou->scope->FindHere(argument.name.name);
            const bool isInput = symbol != nullptr && symbol->kind == Symbol::Kind::Variable &&
                                 symbol->variable->section == ast::VarSection::Input;
            if (argument.isOutput || argument.value == nullptr || argument.value->kind != ast::ExprKind::Literal) {
                Report(DiagnosticCode::NotSupported, argument.range, {"connecting a program to a variable"});
            } else if (!isInput) {
                Report(DiagnosticCode::NoSuchMember, argument.name.range,
                       {Spelling(open.pou->name), Spelling(argument.name.name)});
            } else {
                static_cast<void>(GetInitial(*symbol->variable));
                const InitialValue* value = initials.Check(*argument.value, symbol->variable->type, open.pou->scope);
                if (value != nullptr) symbol->variable->initial = value;
            }
        }
    }
}

/// A program that no configuration names runs under its own name.
void Declarations::State::AddPlainPrograms() {
    std::vector<ProgramEntry> plain;
    for (Pou& pou : project.pous) {
        if (pou.kind != ast::PouKind::Program) continue;
        const auto isEntry = [&pou](const ProgramEntry& each) { return each.pou == &pou; };
        if (std::ranges::any_of(project.programs, isEntry)) continue;
        plain.push_back({.name = pou.name, .pou = &pou, .declared = pou.declaration->name.range});
    }
    project.programs.insert(project.programs.end(), plain.begin(), plain.end());
}

}  // namespace tn61131::st
