#include "compiler/GeneratorMap.h"

#include <memory>
#include <string>
#include <unordered_map>

#include "compiler/Types.h"
#include "functions/FunctionTable.h"

namespace tn61131::st {

namespace {

/// Turns the compiler's types into those of the map. Shared types stay shared.
class MapTypes {
 public:
    explicit MapTypes(const NameTable& names) noexcept : names_(names) {}

    SymbolType Get(const Type* type) {
        type = Strip(type);
        switch (type->kind) {
            case TypeKind::String:
                return SymbolType::MakeString(type->storage, static_cast<const StringType&>(*type).capacity);
            case TypeKind::Array: return GetArray(static_cast<const ArrayType&>(*type));
            case TypeKind::Struct:
            case TypeKind::FunctionBlock: return SymbolType::MakeStruct(GetStruct(*type));
            default: return SymbolType::MakeElementary(type->storage);
        }
    }

 private:
    SymbolType GetArray(const ArrayType& array) {
        std::vector<SymbolType::Range> dimensions;
        for (const ArrayBound& bound : array.bounds)
            dimensions.push_back({bound.lower, bound.upper});
        return SymbolType::MakeArray(std::move(dimensions), Get(array.element));
    }

    std::shared_ptr<const SymbolStruct> GetStruct(const Type& type) {
        if (const auto found = structs_.find(&type); found != structs_.end()) return found->second;
        auto made = std::make_shared<SymbolStruct>();
        made->name = names_.GetSpelling(type.name);
        made->size = type.size;
        if (type.kind == TypeKind::Struct) {
            for (const Field& field : static_cast<const StructType&>(type).fields)
                AddMember(*made, field.name, field.offset, field.type);
        } else {
            const auto& block = static_cast<const FunctionBlockType&>(type);
            if (block.row != nullptr) return structs_[&type] = FindStandardBlockStruct(block.row->name);
            for (const Variable* variable : block.variables) {
                // A pointer is what the instance holds of an in-out.
                const bool isPointer = variable->storage.kind == StorageKind::InstancePointer;
                AddMember(*made, variable->name, variable->storage.offset, isPointer ? nullptr : variable->type);
            }
        }
        return structs_[&type] = made;
    }

    void AddMember(SymbolStruct& structure, NameId name, std::uint32_t offset, const Type* type) {
        SymbolMember member{std::string(names_.GetSpelling(name)), offset,
                            type == nullptr ? SymbolType::MakeElementary(ElementaryType::Pointer) : Get(type)};
        structure.depth = std::max(structure.depth, member.type.GetDepth() + 1);
        structure.members.push_back(std::move(member));
    }

    const NameTable& names_;
    std::unordered_map<const Type*, std::shared_ptr<const SymbolStruct>> structs_;
};

class MapBuilder {
 public:
    MapBuilder(const Project& project, CSymbolMap& map) noexcept
        : project_(project), map_(map), types_(project.names) {}

    void AddVariables() {
        for (const Variable* variable : project_.globals)
            AddVariable({}, *variable, 0);
        for (const ProgramEntry& program : project_.programs) {
            const std::string scope(project_.names.GetSpelling(program.name));
            for (const Variable* variable : program.pou->variables)
                AddVariable(scope, *variable, program.instanceOffset - program.pou->instanceOffset);
        }
    }

    void AddLabels(std::span<const PlacedRoutine> routines) {
        for (const ProgramEntry& program : project_.programs) {
            for (const PlacedRoutine& routine : routines) {
                const bool isIts = routine.pou == program.pou && routine.standalone == nullptr &&
                                   routine.instanceDelta == program.instanceOffset - program.pou->instanceOffset;
                if (isIts) AddLabel(SymbolLabel::Kind::Program, GetText(program.name), routine.codeOffset);
            }
        }
        for (const PlacedRoutine& routine : routines) {
            if (routine.standalone != nullptr) {
                AddLabel(
                    routine.standalone->isExpression ? SymbolLabel::Kind::Expression : SymbolLabel::Kind::CodeBlock,
                    std::to_string(routine.standalone->id), routine.codeOffset);
            } else if (routine.pou->kind != ast::PouKind::Program) {
                const Pou* container = routine.pou->container;
                const std::string prefix = container == nullptr ? "" : GetText(container->name) + ".";
                AddLabel(SymbolLabel::Kind::Function, prefix + GetText(routine.pou->name), routine.codeOffset);
            }
        }
    }

    void AddPositions(std::span<const CodeBuffer::Position> positions) {
        const SourceManager& sources = project_.sources;
        std::vector<std::uint32_t> files(sources.GetFileCount());
        for (std::uint32_t i = 0; i < files.size(); ++i)
            files[i] = map_.AddFile(sources.GetName(i));
        for (const CodeBuffer::Position& position : positions) {
            const SourceLocation location = sources.Locate(position.source);
            if (location.line == 0) continue;
            map_.AddPosition({position.codeOffset, files[location.file], location.line, location.column});
        }
    }

 private:
    [[nodiscard]] std::string GetText(NameId name) const { return std::string(project_.names.GetSpelling(name)); }

    void AddLabel(SymbolLabel::Kind kind, std::string name, std::uint32_t codeOffset) {
        map_.AddLabel({kind, std::move(name), codeOffset});
    }

    void AddVariable(const std::string& scope, const Variable& variable, std::uint32_t delta) {
        std::uint32_t offset = 0;
        const Variable* stored = &variable;
        for (; stored->aliasOf != nullptr; stored = stored->aliasOf)
            offset += stored->aliasOffset;
        const bool isExternal = variable.section == ast::VarSection::External;
        if (isExternal) return;
        SymbolVariable entry;
        entry.scope = scope;
        entry.name = GetText(variable.name);
        entry.offset = offset + stored->storage.offset;
        switch (stored->storage.kind) {
            case StorageKind::Global:
                entry.location = LocationKind::Global;
                if (stored->owner != nullptr && stored->owner == variable.owner) entry.offset += delta;
                break;
            case StorageKind::Constant: entry.location = LocationKind::GlobalConstant; break;
            case StorageKind::Tag:
                entry.location = LocationKind::Tag;
                entry.tagId = stored->storage.tagId;
                break;
            default: return;
        }
        entry.type = types_.Get(variable.type);
        map_.AddVariable(std::move(entry));
    }

    const Project& project_;
    CSymbolMap& map_;
    MapTypes types_;
};

}  // namespace

void FillSymbolMap(const Project& project, std::span<const PlacedRoutine> routines,
                   std::span<const CodeBuffer::Position> positions, CSymbolMap& map) {
    MapBuilder builder(project, map);
    builder.AddVariables();
    builder.AddLabels(routines);
    builder.AddPositions(positions);
}

}  // namespace tn61131::st
