#include <algorithm>
#include <array>

#include "compiler/Checker.h"
#include "compiler/DeclarationsState.h"
#include "compiler/FixedPlace.h"

namespace tn61131::st {

namespace {

/// EN and ENO.
constexpr std::uint32_t kControlSize = 2;
constexpr std::uint32_t kPointerSize = GetTypeInfo(ElementaryType::Pointer).size;
/// Result, input and memory of an edge.
constexpr std::uint32_t kEdgeSize = 3;
/// Variables that lie on each other in a chain; more are a ring.
constexpr std::uint32_t kMaxAliases = 100;

bool IsParameter(const Variable& variable) noexcept {
    return variable.section == ast::VarSection::Input || variable.section == ast::VarSection::Output ||
           variable.section == ast::VarSection::InOut;
}

bool IsLocated(const Variable& variable) noexcept {
    return variable.declaration != nullptr && variable.declaration->location != nullptr &&
           !LocatedVariables::IsOpen(*variable.declaration->location);
}

/// Whether a variable of a block or program lies in its own data.
bool IsOwnData(const Variable& variable) noexcept {
    if (IsParameter(variable)) return true;
    if (variable.isConstant || IsLocated(variable)) return false;
    if (variable.declaration != nullptr && variable.declaration->alias != nullptr) return false;
    return variable.section == ast::VarSection::Local || variable.section == ast::VarSection::Instance;
}

bool IsInstance(const Variable& variable) noexcept {
    const Type* type = Strip(variable.type);
    while (type->kind == TypeKind::Array)
        type = Strip(static_cast<const ArrayType*>(type)->element);
    return type->kind == TypeKind::FunctionBlock;
}

std::uint32_t SizeOf(const Variable& variable) noexcept {
    if (variable.section == ast::VarSection::InOut) return kPointerSize;
    return variable.edge.has_value() ? kEdgeSize : variable.type->size;
}

/// Inputs, outputs, in-outs, other variables, instances of function blocks.
std::size_t GroupOf(const Variable& variable) noexcept {
    switch (variable.section) {
        case ast::VarSection::Input: return 0;
        case ast::VarSection::Output: return 1;
        case ast::VarSection::InOut: return 2;
        default: return IsInstance(variable) ? 4 : 3;
    }
}
constexpr std::size_t kGroups = 5;

}  // namespace

bool Declarations::State::CompleteBlock(Pou& pou) {
    if (pou.progress == Progress::Done) return pou.type->isComplete;
    const SourceRange name = pou.declaration->name.range;
    if (pou.progress == Progress::Running) {
        Report(DiagnosticCode::SelfReference, name, {Spelling(pou.name)});
        return false;
    }
    const Depth guard(*this, Depth::kTypeWeight);
    pou.progress = Progress::Running;
    const bool succeeded = guard.Check(pou.name, name) && LayOutBlock(pou);
    pou.progress = Progress::Done;
    // What is wrong was reported; the block counts as known, so that nothing looks into it again.
    pou.type->isComplete = true;
    if (!succeeded) pou.type->size = kControlSize;
    return succeeded;
}

bool Declarations::State::LayOutBlock(Pou& pou) {
    FunctionBlockType& type = *pou.type;
    std::uint64_t size = kControlSize;
    int deepest = 0;
    if (pou.base != nullptr) {
        if (!CompleteBlock(*pou.base)) return false;
        const FunctionBlockType& base = *pou.base->type;
        type.variables = base.variables;
        size = base.size;
        deepest = base.depth - 1;
        pou.inputs.insert(pou.inputs.begin(), pou.base->inputs.begin(), pou.base->inputs.end());
        pou.outputs.insert(pou.outputs.begin(), pou.base->outputs.begin(), pou.base->outputs.end());
        pou.inOuts.insert(pou.inOuts.begin(), pou.base->inOuts.begin(), pou.base->inOuts.end());
        pou.parameters.insert(pou.parameters.begin(), pou.base->parameters.begin(), pou.base->parameters.end());
    } else {
        for (std::size_t i = 0; i < type.variables.size(); ++i) {
            Variable*& variable = type.variables[i];
            ResolveVariable(*variable);
            // What is no BOOL cannot be EN or ENO: it is a variable like others.
            if (Strip(variable->type) != project.types.Bool() || variable->edge.has_value()) {
                variable = &NewEnable(pou, i == 0);
            }
            variable->storage = {.kind = StorageKind::Instance, .offset = static_cast<std::uint32_t>(i)};
        }
    }
    std::array<std::vector<Variable*>, kGroups> groups;
    bool succeeded = true;
    const auto collect = [&](const std::vector<Variable*>& variables, bool onlyInstance) {
        for (Variable* variable : variables) {
            if (onlyInstance && variable->section != ast::VarSection::Instance) continue;
            ResolveVariable(*variable);
            if (!IsOwnData(*variable) || variable->storage.kind == StorageKind::Instance) continue;
            // An in-out is a pointer: a block may take one of its own kind.
            if (variable->section != ast::VarSection::InOut && !Complete(variable->type, variable->declared)) {
                variable->type = project.types.Error();
                succeeded = false;
            }
            groups[GroupOf(*variable)].push_back(variable);
        }
    };
    collect(pou.variables, false);
    for (const ast::Pou* member : pou.declaration->members) {
        const auto found = pou.members.find(member->name.name);
        if (found != pou.members.end()) collect(found->second->variables, true);
    }
    for (const std::vector<Variable*>& group : groups) {
        for (Variable* variable : group) {
            variable->storage = {.kind = variable->section == ast::VarSection::InOut ? StorageKind::InstancePointer
                                                                                     : StorageKind::Instance,
                                 .offset = static_cast<std::uint32_t>(size)};
            type.variables.push_back(variable);
            size += SizeOf(*variable);
            if (variable->section != ast::VarSection::InOut) deepest = std::max(deepest, int{variable->type->depth});
            if (size > kMaxTypeSize) {
                Report(DiagnosticCode::TypeTooLarge, pou.declaration->name.range,
                       {Spelling(pou.name), std::to_string(kMaxTypeSize)});
                return false;
            }
        }
    }
    if (deepest >= kMaxTypeDepth) {
        Report(DiagnosticCode::TypeTooDeep, pou.declaration->name.range, {std::to_string(kMaxTypeDepth)});
        return false;
    }
    type.size = static_cast<std::uint32_t>(size);
    type.depth = static_cast<std::uint8_t>(deepest + 1);
    return succeeded;
}

void Declarations::State::PlaceGlobal(Variable& variable) {
    const std::uint64_t offset = project.globalData.size();
    const std::uint64_t end = offset + SizeOf(variable);
    if (end > kMaxTypeSize) {
        Report(DiagnosticCode::MemoryTooLarge, variable.declared, {std::to_string(kMaxTypeSize)});
        return;
    }
    variable.storage = {.kind = StorageKind::Global, .offset = static_cast<std::uint32_t>(offset)};
    project.globalData.resize(end);
    placed.push_back(&variable);
}

void Declarations::State::PlaceConstant(Variable& variable) {
    if (!IsAggregate(variable.type) && !IsPointer(variable.type)) {
        variable.storage = {.kind = StorageKind::None};
        return;
    }
    if (std::uint64_t{project.constants.size()} + variable.type->size > kMaxTypeSize) {
        Report(DiagnosticCode::MemoryTooLarge, variable.declared, {std::to_string(kMaxTypeSize)});
        return;
    }
    std::vector<unsigned char> bytes(variable.type->size);
    WriteInitialBytes(variable.type, variable.initial, bytes);
    // A structure whose members have values of their own is a common way to name constants.
    const bool isEmpty = std::ranges::all_of(bytes, [](unsigned char byte) { return byte == 0; });
    if (isEmpty && variable.declaration->initial == nullptr && variable.declaration->blockInit.empty()) {
        Report(DiagnosticCode::ConstantWithoutValue, variable.declared, {Spelling(variable.name)});
    }
    variable.storage = {.kind = StorageKind::Constant, .offset = AddConstant(bytes)};
}

/// Everything that lies neither in an instance nor in the data of a call.
void Declarations::State::PlaceElsewhere(Variable& variable) {
    if (variable.declaration == nullptr || variable.declaration->location == nullptr) return;
    if (IsLocated(variable)) {
        located.Place(variable, *variable.declaration->location);
    } else {
        Report(DiagnosticCode::AddressNotMapped, variable.declaration->location->range, {Spelling(variable.name)});
    }
}

void Declarations::State::PlaceAlias(Variable& variable) {
    if (variable.declaration == nullptr || variable.declaration->alias == nullptr) return;
    const ast::Expr& alias = *variable.declaration->alias;
    const std::optional<FixedPlace> place = FindFixedPlace(alias, variable.scope, declarations, checker);
    if (!place || variable.type->kind == TypeKind::Error) return;
    const bool isOwn = place->variable->owner == variable.owner && !place->variable->isConstant;
    if (place->variable == &variable || (!isOwn && !HasFixedPlace(*place->variable))) {
        Report(DiagnosticCode::NoFixedPlace, alias.range, {project.sources.GetText(alias.range)});
        return;
    }
    if (variable.type->size > place->type->size) {
        Report(DiagnosticCode::AliasTooLarge, alias.range, {Spelling(variable.name)});
        return;
    }
    variable.aliasOf = place->variable;
    variable.aliasOffset = place->offset;
}

void Declarations::State::FollowAliases() {
    const auto follow = [this](Variable& variable) {
        if (variable.aliasOf == nullptr) return;
        const Variable* root = &variable;
        std::uint32_t offset = 0;
        for (std::uint32_t steps = 0; root->aliasOf != nullptr; root = root->aliasOf) {
            offset += root->aliasOffset;
            if (++steps <= kMaxAliases) continue;
            Report(DiagnosticCode::SelfReference, variable.declared, {Spelling(variable.name)});
            variable.aliasOf = nullptr;
            return;
        }
        variable.storage = root->storage;
        variable.storage.offset += offset;
    };
    for (Variable* variable : project.globals)
        follow(*variable);
    for (const Pou& pou : project.pous) {
        for (Variable* variable : pou.variables)
            follow(*variable);
    }
}

void Declarations::State::LayOutProgram(Pou& pou) {
    pou.instanceOffset = static_cast<std::uint32_t>(project.globalData.size());
    for (std::size_t group = 0; group < kGroups; ++group) {
        for (Variable* variable : pou.variables) {
            if (IsOwnData(*variable) && GroupOf(*variable) == group) PlaceGlobal(*variable);
        }
    }
    pou.instanceSize = static_cast<std::uint32_t>(project.globalData.size()) - pou.instanceOffset;
}

void Declarations::State::LayOut() {
    for (Variable* variable : project.globals) {
        const bool isAlias = variable->declaration->alias != nullptr;
        if (!variable->isConstant && !IsLocated(*variable) && !isAlias) PlaceGlobal(*variable);
        if (!variable->isConstant) PlaceElsewhere(*variable);
    }
    for (Pou& pou : project.pous) {
        for (Variable* variable : pou.variables) {
            if (variable->section == ast::VarSection::Static && !variable->isConstant) PlaceGlobal(*variable);
            if (!variable->isConstant) PlaceElsewhere(*variable);
        }
    }
    for (Pou& pou : project.pous) {
        if (pou.kind == ast::PouKind::Program) LayOutProgram(pou);
    }
    for (ProgramEntry& entry : project.programs)
        entry.instanceOffset = entry.pou->instanceOffset;
    for (Variable* variable : project.globals)
        PlaceAlias(*variable);
    for (const Pou& pou : project.pous) {
        for (Variable* variable : pou.variables)
            PlaceAlias(*variable);
    }
    // Constants last: the addresses in them are known now.
    const auto placeConstant = [this](Variable& variable) {
        if (variable.isConstant && !IsParameter(variable) && variable.section != ast::VarSection::External &&
            variable.type->kind != TypeKind::Error) {
            PlaceConstant(variable);
        }
    };
    for (Variable* variable : project.globals)
        placeConstant(*variable);
    for (const Pou& pou : project.pous) {
        for (Variable* variable : pou.variables)
            placeConstant(*variable);
    }
    FollowAliases();
    WriteGlobals();
}

void Declarations::State::WriteGlobals() {
    if (project.diagnostics.HasErrors()) return;
    const std::span<unsigned char> data = project.globalData;
    const auto write = [&](const Variable& variable) {
        if (variable.edge.has_value() || variable.aliasOf != nullptr) return;
        WriteInitialBytes(variable.type, variable.initial, data.subspan(variable.storage.offset, variable.type->size));
    };
    for (const Variable* variable : placed)
        write(*variable);
    for (const Variable* variable : located.GetVariables()) {
        if (variable->initial != nullptr || variable->declaration != nullptr) write(*variable);
    }
}

std::uint32_t Declarations::State::AddConstant(std::span<const unsigned char> bytes) {
    std::string key(bytes.begin(), bytes.end());
    const auto offset = static_cast<std::uint32_t>(project.constants.size());
    const auto [place, isNew] = constantPlaces.emplace(std::move(key), offset);
    if (isNew) project.constants.insert(project.constants.end(), bytes.begin(), bytes.end());
    return place->second;
}

}  // namespace tn61131::st
