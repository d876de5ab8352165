#include "compiler/GeneratorMap.h"

#include <map>
#include <memory>
#include <string>
#include <unordered_map>

#include "compiler/Types.h"
#include "functions/FunctionTable.h"

namespace tn61131::st {

std::string GetDeclaredName(const Project& project, NameId name, SourceRange declared) {
    const std::string_view text = project.sources.GetText(declared);
    return std::string(IsSameName(text, project.names.GetSpelling(name)) ? text : project.names.GetSpelling(name));
}

namespace {

/// Turns the compiler's types into those of the map. Shared types stay shared.
class MapTypes {
 public:
    explicit MapTypes(const Project& project) noexcept : project_(project) {}

    SymbolType Get(const Type* type) {
        type = Strip(type);
        switch (type->kind) {
            case TypeKind::String: {
                // Room for the zero behind a text counts, so that what follows is found where it is.
                const bool isWide = type->storage == ElementaryType::WString;
                const std::uint32_t units = isWide ? GetTextCapacity(type) : type->size - kTextHeader;
                return SymbolType::MakeString(type->storage, static_cast<std::uint16_t>(units));
            }
            case TypeKind::Array: return GetArray(static_cast<const ArrayType&>(*type));
            case TypeKind::Enum: return GetEnum(static_cast<const EnumType&>(*type));
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

    /// Enumerations without a name are shown as numbers.
    SymbolType GetEnum(const EnumType& type) {
        if (type.name == NameId::None) return SymbolType::MakeElementary(type.storage);
        std::shared_ptr<const SymbolEnum>& known = enums_[&type];
        if (known == nullptr) {
            auto made = std::make_shared<SymbolEnum>();
            made->name = MakeName(type);
            made->base = type.storage;
            for (const EnumMember& member : type.members)
                made->values.push_back({GetText(member.name, member.declared), member.value});
            known = std::move(made);
        }
        return SymbolType::MakeEnum(known);
    }

    [[nodiscard]] std::string GetText(NameId name, SourceRange declared) const {
        return GetDeclaredName(project_, name, declared);
    }

    /// The map has one list of names, so equal names of different scopes are told apart by a number.
    std::string MakeName(const Type& type) {
        std::string name = GetText(type.name, type.declared);
        const auto count = ++nameCounts_[type.name];
        return count == 1 ? name : name + "__" + std::to_string(count);
    }

    std::shared_ptr<const SymbolStruct> GetStruct(const Type& type) {
        if (const auto found = structs_.find(&type); found != structs_.end()) return found->second;
        auto made = std::make_shared<SymbolStruct>();
        made->name = MakeName(type);
        made->size = type.size;
        if (type.kind == TypeKind::Struct) {
            for (const Field& field : static_cast<const StructType&>(type).fields)
                AddMember(*made, GetText(field.name, field.declared), field.offset, field.type);
        } else {
            const auto& block = static_cast<const FunctionBlockType&>(type);
            if (block.row != nullptr) return structs_[&type] = FindStandardBlockStruct(block.row->name);
            for (const Variable* variable : block.variables) {
                // A pointer is what the instance holds of an in-out.
                const bool isPointer = variable->storage.kind == StorageKind::InstancePointer;
                AddMember(*made, GetText(variable->name, variable->declared), variable->storage.offset,
                          isPointer ? nullptr : variable->type);
            }
        }
        return structs_[&type] = made;
    }

    void AddMember(SymbolStruct& structure, std::string name, std::uint32_t offset, const Type* type) {
        SymbolMember member{std::move(name), offset,
                            type == nullptr ? SymbolType::MakeElementary(ElementaryType::Pointer) : Get(type)};
        structure.depth = std::max(structure.depth, member.type.GetDepth() + 1);
        structure.members.push_back(std::move(member));
    }

    const Project& project_;
    std::unordered_map<const Type*, std::shared_ptr<const SymbolStruct>> structs_;
    std::unordered_map<const Type*, std::shared_ptr<const SymbolEnum>> enums_;
    std::unordered_map<NameId, std::uint32_t> nameCounts_;
};

class MapBuilder {
 public:
    MapBuilder(const Project& project, CSymbolMap& map) noexcept : project_(project), map_(map), types_(project) {}

    void AddVariables() {
        for (const Variable* variable : project_.globals)
            AddVariable({}, *variable, 0);
        for (const ProgramEntry& program : project_.programs) {
            const std::string scope = GetText(program.name, program.declared);
            for (const Variable* variable : program.pou->variables)
                AddVariable(scope, *variable, program.instanceOffset - program.pou->instanceOffset);
        }
    }

    void AddLabels(std::span<const PlacedRoutine> routines) {
        std::map<std::pair<const Pou*, std::uint32_t>, std::uint32_t> offsets;
        for (const PlacedRoutine& routine : routines) {
            if (routine.standalone == nullptr)
                offsets.emplace(std::pair(routine.pou, routine.instanceDelta), routine.codeOffset);
        }
        for (const ProgramEntry& program : project_.programs) {
            const auto found = offsets.find({program.pou, program.instanceOffset - program.pou->instanceOffset});
            if (found != offsets.end())
                AddLabel(SymbolLabel::Kind::Program, GetText(program.name, program.declared), found->second);
        }
        for (const PlacedRoutine& routine : routines) {
            if (routine.standalone != nullptr) {
                AddLabel(
                    routine.standalone->isExpression ? SymbolLabel::Kind::Expression : SymbolLabel::Kind::CodeBlock,
                    std::to_string(routine.standalone->id), routine.codeOffset);
            } else if (routine.pou->kind != ast::PouKind::Program) {
                const Pou* container = routine.pou->container;
                const std::string prefix = container == nullptr ? "" : GetText(*container) + ".";
                AddLabel(SymbolLabel::Kind::Function, prefix + GetText(*routine.pou), routine.codeOffset);
            }
        }
    }

    void AddPous(std::span<const PlacedRoutine> routines) {
        for (const PlacedRoutine& routine : routines) {
            if (routine.standalone == nullptr) map_.AddPou(MakePou(routine));
        }
    }

    void AddTasks() {
        for (const Task& task : project_.tasks) {
            SymbolTask entry;
            entry.name = GetText(task.name);
            entry.intervalMs = task.intervalMs;
            entry.priority = task.priority;
            entry.single = task.single;
            for (const ProgramEntry& program : project_.programs) {
                if (program.task == task.name) entry.programs.push_back(GetText(program.name, program.declared));
            }
            map_.AddTask(std::move(entry));
        }
    }

    /// The ranges that a host keeps; neighbours of one kind stay apart, for their names.
    void AddRetained() {
        for (const Variable* variable : project_.globals)
            AddRetainedVariable({}, *variable, 0);
        for (const ProgramEntry& program : project_.programs) {
            for (const Variable* variable : program.pou->variables)
                AddRetainedVariable(GetText(program.name, program.declared) + ".", *variable,
                                    program.instanceOffset - program.pou->instanceOffset);
        }
        for (const Pou& pou : project_.pous) {
            if (pou.kind == ast::PouKind::Program) continue;
            for (const Variable* variable : pou.variables) {
                // Of one place for all calls and instances; what instances hold is retained with them.
                if (variable->storage.kind == StorageKind::Global && variable->section == ast::VarSection::Static)
                    AddRetainedVariable(GetText(pou) + ".", *variable, 0);
            }
        }
    }

    void AddTags() {
        for (const TagSymbol& tag : project_.options.tags)
            map_.AddTag({tag.address, tag.tagId, tag.offset, GetTagType(tag), tag.readOnly});
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
    [[nodiscard]] std::string GetText(NameId name, SourceRange declared) const {
        return GetDeclaredName(project_, name, declared);
    }
    [[nodiscard]] std::string GetText(const Variable& variable) const {
        return GetText(variable.name, variable.declared);
    }
    [[nodiscard]] std::string GetText(const Pou& pou) const {
        return pou.declaration == nullptr ? GetText(pou.name) : GetText(pou.name, pou.declaration->name.range);
    }

    void AddLabel(SymbolLabel::Kind kind, std::string name, std::uint32_t codeOffset) {
        map_.AddLabel({kind, std::move(name), codeOffset});
    }

    void AddRetainedVariable(const std::string& scope, const Variable& variable, std::uint32_t delta) {
        if (variable.storage.kind != StorageKind::Global || variable.aliasOf != nullptr) return;
        const std::string path = scope + GetText(variable);
        if (variable.isRetain || variable.isPersistent) {
            map_.AddRetained({path, variable.storage.offset + delta, variable.type->size, variable.isPersistent});
            return;
        }
        AddRetainedParts(path, variable.type, variable.storage.offset + delta);
    }

    /// RETAIN inside of a function block is kept in every instance of it.
    void AddRetainedParts(const std::string& path, const Type* type, std::uint32_t offset) {
        type = Strip(type);
        if (type->kind == TypeKind::Array && HasRetainedParts(type)) {
            const auto& array = static_cast<const ArrayType&>(*type);
            const std::uint32_t count = array.element->size == 0 ? 0 : array.size / array.element->size;
            for (std::uint32_t i = 0; i < count; ++i)
                AddRetainedParts(path + "[" + GetIndexText(array, i) + "]", array.element,
                                 offset + i * array.element->size);
        }
        if (type->kind == TypeKind::Struct && HasRetainedParts(type)) {
            for (const Field& field : static_cast<const StructType&>(*type).fields)
                AddRetainedParts(path + "." + GetText(field.name, field.declared), field.type, offset + field.offset);
        }
        if (type->kind != TypeKind::FunctionBlock) return;
        const auto& block = static_cast<const FunctionBlockType&>(*type);
        for (const Variable* variable : block.variables) {
            if (variable->storage.kind != StorageKind::Instance) continue;
            const std::string memberPath = path + "." + GetText(*variable);
            const std::uint32_t memberOffset = offset + variable->storage.offset;
            if (variable->isRetain || variable->isPersistent) {
                map_.AddRetained({memberPath, memberOffset, variable->type->size, variable->isPersistent});
            } else {
                AddRetainedParts(memberPath, variable->type, memberOffset);
            }
        }
    }

    bool HasRetainedParts(const Type* type) {
        type = Strip(type);
        if (const auto known = hasRetained_.find(type); known != hasRetained_.end()) return known->second;
        bool has = false;
        if (type->kind == TypeKind::Array) has = HasRetainedParts(static_cast<const ArrayType&>(*type).element);
        if (type->kind == TypeKind::Struct) {
            for (const Field& field : static_cast<const StructType&>(*type).fields)
                has = has || HasRetainedParts(field.type);
        }
        if (type->kind == TypeKind::FunctionBlock) {
            for (const Variable* variable : static_cast<const FunctionBlockType&>(*type).variables)
                has = has || variable->isRetain || variable->isPersistent ||
                      (variable->storage.kind == StorageKind::Instance && HasRetainedParts(variable->type));
        }
        return hasRetained_[type] = has;
    }

    [[nodiscard]] static std::string GetIndexText(const ArrayType& array, std::uint32_t position) {
        std::string text;
        for (std::size_t i = array.bounds.size(); i-- > 0;) {
            const ArrayBound& bound = array.bounds[i];
            const auto index = static_cast<std::int64_t>(position % bound.GetCount()) + bound.lower;
            position /= bound.GetCount();
            text.insert(0, (i == 0 ? "" : ",") + std::to_string(index));
        }
        return text;
    }

    [[nodiscard]] SymbolType GetTagType(const TagSymbol& tag) const {
        const bool isString = tag.type == ElementaryType::String || tag.type == ElementaryType::WString;
        if (!isString) return SymbolType::MakeElementary(tag.type);
        return SymbolType::MakeString(tag.type, tag.length == 0 ? project_.options.switches.stringLength : tag.length);
    }

    [[nodiscard]] static SymbolPou::Kind GetKind(const Pou& pou) noexcept {
        switch (pou.kind) {
            case ast::PouKind::Program: return SymbolPou::Kind::Program;
            case ast::PouKind::FunctionBlock: return SymbolPou::Kind::FunctionBlock;
            case ast::PouKind::Action: return SymbolPou::Kind::Action;
            case ast::PouKind::Function: return SymbolPou::Kind::Function;
            default: return SymbolPou::Kind::Method;
        }
    }

    SymbolPou MakePou(const PlacedRoutine& routine) {
        const Pou& pou = *routine.pou;
        SymbolPou entry;
        entry.kind = GetKind(pou);
        entry.name = (pou.container == nullptr ? "" : GetText(*pou.container) + ".") + GetText(pou);
        entry.codeOffset = routine.codeOffset;
        entry.codeSize = routine.codeSize;
        if (pou.declaration != nullptr) {
            const SourceLocation location = project_.sources.Locate(pou.declaration->name.range.begin);
            entry.file = location.line == 0 ? 0 : map_.AddFile(project_.sources.GetName(location.file));
            entry.line = location.line;
        }
        for (const Variable* variable : pou.variables)
            AddLocal(*variable, routine.instanceDelta, entry);
        return entry;
    }

    void AddLocal(const Variable& variable, std::uint32_t delta, SymbolPou& pou) {
        std::uint32_t offset = 0;
        const Variable* stored = &variable;
        for (; stored->aliasOf != nullptr; stored = stored->aliasOf)
            offset += stored->aliasOffset;
        SymbolLocal local;
        local.name = GetText(variable);
        local.offset = offset + stored->storage.offset;
        local.tagId = stored->storage.tagId;
        switch (stored->storage.kind) {
            case StorageKind::Global:
                local.place = SymbolLocal::Place::Global;
                if (stored->section != ast::VarSection::Temp && stored->owner == variable.owner) local.offset += delta;
                break;
            case StorageKind::Constant: local.place = SymbolLocal::Place::Constant; break;
            case StorageKind::Instance: local.place = SymbolLocal::Place::Instance; break;
            case StorageKind::InstancePointer: local.place = SymbolLocal::Place::InstancePointer; break;
            case StorageKind::Temp: local.place = SymbolLocal::Place::Temp; break;
            case StorageKind::Slot: local.place = SymbolLocal::Place::Slot; break;
            case StorageKind::SlotPointer: local.place = SymbolLocal::Place::SlotPointer; break;
            case StorageKind::Tag: local.place = SymbolLocal::Place::Tag; break;
            case StorageKind::Unassigned:
            case StorageKind::None: return;
        }
        local.type = types_.Get(variable.type);
        pou.variables.push_back(std::move(local));
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
        entry.name = GetText(variable);
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
    std::unordered_map<const Type*, bool> hasRetained_;
};

}  // namespace

void FillSymbolMap(const Project& project, std::span<const PlacedRoutine> routines,
                   std::span<const CodeBuffer::Position> positions, CSymbolMap& map) {
    MapBuilder builder(project, map);
    builder.AddVariables();
    builder.AddLabels(routines);
    builder.AddPositions(positions);
    builder.AddPous(routines);
    builder.AddTasks();
    builder.AddRetained();
    builder.AddTags();
}

}  // namespace tn61131::st
