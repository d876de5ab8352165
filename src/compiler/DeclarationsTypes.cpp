#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "compiler/Checker.h"
#include "compiler/DeclarationsState.h"
#include "value/ValueType.h"

namespace tn61131::st {

namespace {

/// Text and length field of a string, which the machine's instructions count in 16 bits.
constexpr std::int64_t kMaxStringBytes = 0xFFFF;

/// Searching all names for each of many unknown ones would take too long.
constexpr std::uint32_t kMaxSuggestions = 50;

bool HasDeclaredShape(ast::TypeSpecKind kind) noexcept {
    return kind == ast::TypeSpecKind::Struct || kind == ast::TypeSpecKind::Enum || kind == ast::TypeSpecKind::Array ||
           kind == ast::TypeSpecKind::Subrange || kind == ast::TypeSpecKind::Pointer ||
           kind == ast::TypeSpecKind::Reference;
}

struct IntegerLimits {
    std::int64_t lower;
    std::int64_t upper;
};

/// Of integers and bit strings; ULINT and LWORD as far as a signed number reaches.
IntegerLimits LimitsOf(const Type* type) noexcept {
    const std::uint32_t bits = type->size * 8;
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    if (bits >= 64) return {IsSigned(type) ? std::numeric_limits<std::int64_t>::min() : 0, kMax};
    if (IsSigned(type)) return {-(std::int64_t{1} << (bits - 1)), (std::int64_t{1} << (bits - 1)) - 1};
    return {0, (std::int64_t{1} << bits) - 1};
}

}  // namespace

bool Declarations::State::Depth::Check(NameId name, SourceRange range) const {
    if (state_.depth <= kLimit) return true;
    state_.Report(DiagnosticCode::DependsTooDeep, range, {state_.Spelling(name)});
    return false;
}

const Type* Declarations::State::ResolveEntry(TypeEntry& entry) {
    if (entry.progress == Progress::Done) return entry.type;
    const ast::Identifier& name = entry.declaration->name;
    if (entry.progress == Progress::Running) {
        // An enumeration's values may name those in front of them.
        if (entry.type != nullptr) return entry.type;
        Report(DiagnosticCode::SelfReference, name.range, {Spelling(name.name)});
        entry.type = project.types.Error();
        return entry.type;
    }
    const Depth guard(*this, Depth::kTypeWeight);
    entry.progress = Progress::Running;
    const Type* type = guard.Check(name.name, name.range) ? ResolveDeclared(entry) : project.types.Error();
    // A type that was found to need itself stays an error.
    if (entry.type == nullptr || entry.type->kind != TypeKind::Error) entry.type = type;
    entry.progress = Progress::Done;
    if (entry.symbol != nullptr) entry.symbol->type = entry.type;
    return entry.type;
}

const Type* Declarations::State::ResolveDeclared(TypeEntry& entry) {
    const ast::TypeDecl& declaration = *entry.declaration;
    if (declaration.type == nullptr) return project.types.Error();
    const NameId name = declaration.name.name;
    if (declaration.type->kind == ast::TypeSpecKind::Struct) {
        StructType* type = OpenStructure(static_cast<const ast::StructTypeSpec&>(*declaration.type), entry.scope, name,
                                         declaration.initial);
        type->declared = declaration.name.range;
        return type;
    }
    if (declaration.type->kind == ast::TypeSpecKind::Enum) {
        const Type* type =
            MakeEnum(static_cast<const ast::EnumTypeSpec&>(*declaration.type), entry.scope, name, &entry);
        if (declaration.initial != nullptr && type->kind == TypeKind::Enum) {
            if (const auto value = checker.EvaluateConstant(*declaration.initial, type, entry.scope)) {
                const_cast<EnumType*>(static_cast<const EnumType*>(type))->defaultValue = GetIntegerBits(*value);
            }
        }
        return type;
    }
    const Type* type =
        ResolveSpec(*declaration.type, entry.scope, declaration.initial == nullptr ? name : NameId::None);
    if (declaration.initial == nullptr || type->kind == TypeKind::Error) return type;
    AliasType* alias = project.types.NewAlias(name, type, nullptr);
    alias->declared = declaration.name.range;
    aliases.push_back({alias, declaration.initial, entry.scope});
    return alias;
}

const Type* Declarations::State::ResolveSpec(const ast::TypeSpec& spec, Scope* scope, NameId name) {
    if (!HasDeclaredShape(spec.kind)) return MakeSpec(spec, scope, name);
    // The names of one declaration share the specification, and so the type.
    const std::pair<const void*, const void*> key(&spec, scope);
    if (const auto found = specTypes.find(key); found != specTypes.end()) return found->second;
    const Type* type = MakeSpec(spec, scope, name);
    specTypes.emplace(key, type);
    return type;
}

const Type* Declarations::State::MakeSpec(const ast::TypeSpec& spec, Scope* scope, NameId name) {
    switch (spec.kind) {
        case ast::TypeSpecKind::Error: return project.types.Error();
        case ast::TypeSpecKind::Named: return ResolveNamed(static_cast<const ast::NamedTypeSpec&>(spec), scope);
        case ast::TypeSpecKind::String: return ResolveString(static_cast<const ast::StringTypeSpec&>(spec), scope);
        case ast::TypeSpecKind::Subrange:
            return ResolveSubrange(static_cast<const ast::SubrangeTypeSpec&>(spec), scope, name);
        case ast::TypeSpecKind::Array: return ResolveArray(static_cast<const ast::ArrayTypeSpec&>(spec), scope);
        case ast::TypeSpecKind::Pointer:
        case ast::TypeSpecKind::Reference: {
            const Type* target = ResolveSpec(*static_cast<const ast::PointerTypeSpec&>(spec).target, scope);
            if (target->kind == TypeKind::Error) return target;
            if (spec.kind == ast::TypeSpecKind::Reference) return project.types.Reference(target);
            return project.types.Pointer(target);
        }
        case ast::TypeSpecKind::Struct:
            return OpenStructure(static_cast<const ast::StructTypeSpec&>(spec), scope, name, nullptr);
        case ast::TypeSpecKind::Enum:
            return MakeEnum(static_cast<const ast::EnumTypeSpec&>(spec), scope, name, nullptr);
        case ast::TypeSpecKind::Edge: return project.types.Bool();
    }
    return project.types.Error();
}

const Type* Declarations::State::ResolveNamed(const ast::NamedTypeSpec& spec, Scope* scope) {
    const ast::Identifier& last = spec.path.back();
    const Symbol* other = nullptr;
    const Symbol* symbol = nullptr;
    if (spec.path.size() == 1) {
        symbol = LookupType(last.name, scope, other);
    } else if (Scope* space = FindNamespace(spec.path.first(spec.path.size() - 1), scope, true)) {
        Symbol* found = space->FindHere(last.name);
        if (found != nullptr) (found->kind == Symbol::Kind::Type || found->type != nullptr ? symbol : other) = found;
        if (symbol != nullptr) symbol = Ensure(found);
    } else {
        return project.types.Error();
    }
    if (symbol != nullptr) return symbol->type != nullptr ? symbol->type : project.types.Error();
    if (spec.path.size() == 1) {
        if (const Type* type = project.types.FindElementary(last.name)) return type;
        if (const Type* type = project.types.FindLibraryBlock(last.name)) return type;
        const std::string_view folded = project.names.GetFolded(last.name);
        const bool isWide = folded == "wstring";
        if (isWide || folded == "string") {
            return project.types.String(isWide ? ElementaryType::WString : ElementaryType::String,
                                        project.options.switches.stringLength);
        }
    }
    if (other != nullptr) {
        Report(DiagnosticCode::NotAType, spec.range, {Spelling(last.name)})
            .notes.push_back({other->declared, "declared here"});
        return project.types.Error();
    }
    Diagnostic& diagnostic = Report(DiagnosticCode::UnknownType, spec.range, {project.sources.GetText(spec.range)});
    if (++suggestions <= kMaxSuggestions) {
        std::vector<std::string_view> candidates = CollectNames(scope, true);
        for (const TypeInfo& info : kTypeTable) {
            const ElementaryType type = info.type;
            if (project.types.FindElementaryByName(info.name) == project.types.Elementary(type)) {
                candidates.push_back(info.name);
            }
        }
        candidates.insert(candidates.end(), {"STRING", "WSTRING"});
        Suggest(diagnostic, last.name, candidates, spec.range);
    }
    return project.types.Error();
}

const Type* Declarations::State::ResolveString(const ast::StringTypeSpec& spec, Scope* scope) {
    const ElementaryType type = spec.wide ? ElementaryType::WString : ElementaryType::String;
    if (spec.length == nullptr) return project.types.String(type, project.options.switches.stringLength);
    const std::optional<std::int64_t> length = checker.EvaluateInteger(*spec.length, scope);
    if (!length) return project.types.Error();
    const std::int64_t limit = spec.wide ? kMaxStringBytes / 2 - 1 : kMaxStringBytes - 2;
    if (*length < 1 || *length > limit) {
        Report(DiagnosticCode::BadStringLength, spec.length->range, {std::to_string(*length), std::to_string(limit)});
        return project.types.Error();
    }
    return project.types.String(type, static_cast<std::uint16_t>(*length));
}

const Type* Declarations::State::ElementaryIntegerBase(const ast::TypeSpec* spec, Scope* scope) {
    const Type* type = BaseOf(ResolveSpec(*spec, scope));
    if (type->kind == TypeKind::Error) return type;
    if (type->kind == TypeKind::Elementary && (IsInteger(type) || IsBitString(type))) return type;
    Report(DiagnosticCode::NotAnIntegerType, spec->range, {TextOf(type)});
    return project.types.Error();
}

const Type* Declarations::State::ResolveSubrange(const ast::SubrangeTypeSpec& spec, Scope* scope, NameId name) {
    const Type* base = ElementaryIntegerBase(spec.base, scope);
    const std::optional<std::int64_t> lower = checker.EvaluateInteger(*spec.lower, scope);
    const std::optional<std::int64_t> upper = checker.EvaluateInteger(*spec.upper, scope);
    if (!lower || !upper || base->kind == TypeKind::Error) return project.types.Error();
    const IntegerLimits limits = LimitsOf(base);
    for (const auto& [value, expression] : {std::pair(*lower, spec.lower), std::pair(*upper, spec.upper)}) {
        if (value >= limits.lower && value <= limits.upper) continue;
        Report(DiagnosticCode::ValueOutOfRange, expression->range, {std::to_string(value), TextOf(base)});
        return project.types.Error();
    }
    if (*lower > *upper) {
        Report(DiagnosticCode::EmptyBounds, Join(spec.lower->range, spec.upper->range),
               {std::to_string(*lower), std::to_string(*upper)});
        return project.types.Error();
    }
    SubrangeType* type = project.types.NewSubrange(name, base, *lower, *upper);
    type->declared = spec.range;
    return type;
}

const Type* Declarations::State::ResolveArray(const ast::ArrayTypeSpec& spec, Scope* scope) {
    const Depth guard(*this, Depth::kTypeWeight);
    if (!guard.Check(NameId::None, spec.range)) return project.types.Error();
    const Type* element = ResolveSpec(*spec.element, scope);
    std::vector<ArrayBound> bounds;
    bool isOpen = false;
    bool failed = element->kind == TypeKind::Error;
    for (const ast::ArrayDimension& dimension : spec.dimensions) {
        if (dimension.lower == nullptr || dimension.upper == nullptr) {
            isOpen = true;
            bounds.push_back({});
            continue;
        }
        const std::optional<std::int64_t> lower = checker.EvaluateInteger(*dimension.lower, scope);
        const std::optional<std::int64_t> upper = checker.EvaluateInteger(*dimension.upper, scope);
        failed = failed || !lower || !upper;
        if (!lower || !upper) continue;
        for (const auto& [value, expression] :
             {std::pair(*lower, dimension.lower), std::pair(*upper, dimension.upper)}) {
            if (value >= std::numeric_limits<std::int32_t>::min() &&
                value <= std::numeric_limits<std::int32_t>::max()) {
                continue;
            }
            Report(DiagnosticCode::BoundTooLarge, expression->range, {std::to_string(value)});
            failed = true;
        }
        if (*lower > *upper) {
            Report(DiagnosticCode::EmptyBounds, Join(dimension.lower->range, dimension.upper->range),
                   {std::to_string(*lower), std::to_string(*upper)});
            failed = true;
        } else if (!failed && *upper - *lower >= kMaxTypeSize) {
            // Further than the count of elements goes.
            Report(DiagnosticCode::TypeTooLarge, spec.range, {"the array", std::to_string(kMaxTypeSize)});
            failed = true;
        }
        bounds.push_back({static_cast<std::int32_t>(*lower), static_cast<std::int32_t>(*upper)});
    }
    if (failed) return project.types.Error();
    const Type* type = project.types.Array(std::move(bounds), element, isOpen);
    if (type != nullptr) return type;
    if (element->depth >= kMaxTypeDepth) {
        Report(DiagnosticCode::TypeTooDeep, spec.range, {std::to_string(kMaxTypeDepth)});
    } else {
        Report(DiagnosticCode::TypeTooLarge, spec.range, {"the array", std::to_string(kMaxTypeSize)});
    }
    return project.types.Error();
}

const Type* Declarations::State::MakeEnum(const ast::EnumTypeSpec& spec, Scope* scope, NameId name, TypeEntry* entry) {
    const Type* base =
        spec.base != nullptr ? ElementaryIntegerBase(spec.base, scope) : project.types.Elementary(ElementaryType::Int);
    if (base->kind == TypeKind::Error) return base;
    EnumType* type = project.types.NewEnum(name);
    type->base = base;
    type->storage = base->storage;
    type->size = base->size;
    type->declared = entry != nullptr ? entry->declaration->name.range : spec.range;
    type->members.reserve(spec.values.size());
    if (entry != nullptr) {
        entry->type = type;
        if (entry->symbol != nullptr) entry->symbol->type = type;
    }
    FillEnum(*type, spec, scope);
    if (entry == nullptr) AddLocalEnumValues(*type, scope);
    return type;
}

void Declarations::State::FillEnum(EnumType& type, const ast::EnumTypeSpec& spec, Scope* scope) {
    const IntegerLimits limits = LimitsOf(type.base);
    std::unordered_map<std::int64_t, NameId> byValue;
    std::int64_t next = 0;
    for (const ast::EnumValue& each : spec.values) {
        if (each.name.name == NameId::None) continue;
        if (const EnumMember* other = type.Find(each.name.name)) {
            ReportDuplicate(each.name.name, each.name.range, other->declared);
            continue;
        }
        std::int64_t value = next;
        if (each.value != nullptr) {
            // A value that is wrong was reported; the name is still there.
            value = checker.EvaluateInteger(*each.value, scope).value_or(next);
        }
        if (value < limits.lower || value > limits.upper) {
            Report(DiagnosticCode::ValueOutOfRange, each.value != nullptr ? each.value->range : each.name.range,
                   {std::to_string(value), TextOf(type.base)});
            value = limits.lower;
        }
        const auto [other, isNew] = byValue.emplace(value, each.name.name);
        if (!isNew) {
            Report(DiagnosticCode::DuplicateEnumValue, each.name.range,
                   {Spelling(each.name.name), Spelling(other->second)});
        }
        type.Add({each.name.name, value, each.name.range});
        next = value == std::numeric_limits<std::int64_t>::max() ? value : value + 1;
    }
    if (!type.members.empty()) type.defaultValue = type.members.front().value;
}

/// The values of an enumeration without a name are names of the scope that declares it.
void Declarations::State::AddLocalEnumValues(const EnumType& type, Scope* scope) {
    for (const EnumMember& member : type.members) {
        const Symbol symbol{
            .kind = Symbol::Kind::EnumMember, .declared = member.declared, .type = &type, .member = &member};
        const Symbol* existing = scope->Add(member.name, symbol);
        if (existing != nullptr) ReportDuplicate(member.name, member.declared, existing->declared);
    }
}

StructType* Declarations::State::OpenStructure(const ast::StructTypeSpec& spec, Scope* scope, NameId name,
                                               const ast::Expr* initial) {
    StructType* type = project.types.NewStruct(name);
    type->declared = spec.range;
    type->isUnion = spec.isUnion;
    type->isComplete = false;
    OpenStruct& open = structs.emplace_back(OpenStruct{type, &spec, scope, initial});
    structByType.emplace(type, &open);
    return type;
}

bool Declarations::State::Complete(const Type* type, SourceRange range) {
    if (type->isComplete) return true;
    switch (type->kind) {
        case TypeKind::Struct: return CompleteStruct(*structByType.at(type));
        case TypeKind::FunctionBlock: return CompleteBlock(*static_cast<const FunctionBlockType*>(type)->pou);
        case TypeKind::Alias: {
            const auto* alias = static_cast<const AliasType*>(type);
            if (!Complete(alias->target, range)) return false;
            project.types.Complete(alias);
            return true;
        }
        case TypeKind::Array: {
            const auto* array = static_cast<const ArrayType*>(type);
            if (!Complete(array->element, range)) return false;
            if (project.types.Complete(array)) return true;
            if (array->element->depth >= kMaxTypeDepth) {
                Report(DiagnosticCode::TypeTooDeep, range, {std::to_string(kMaxTypeDepth)});
            } else {
                Report(DiagnosticCode::TypeTooLarge, range, {TextOf(type), std::to_string(kMaxTypeSize)});
            }
            return false;
        }
        default: return true;
    }
}

bool Declarations::State::CompleteStruct(OpenStruct& open) {
    const NameId name = open.type->name;
    if (open.progress == Progress::Done) return open.type->isComplete;
    if (open.progress == Progress::Running) {
        Report(DiagnosticCode::SelfReference, open.type->declared, {TextOf(open.type)});
        return false;
    }
    const Depth guard(*this, Depth::kTypeWeight);
    open.progress = Progress::Running;
    const bool succeeded = guard.Check(name, open.type->declared) && FillStruct(open);
    open.progress = Progress::Done;
    // What is wrong was reported; the structure counts as known, so that nothing looks into it again.
    open.type->isComplete = true;
    if (!succeeded) open.type->size = 0;
    return succeeded;
}

bool Declarations::State::FillStruct(OpenStruct& open) {
    StructType& type = *open.type;
    std::uint64_t size = 0;
    int deepest = 0;
    bool succeeded = true;
    if (open.spec->base.name != NameId::None) {
        const Symbol* symbol = LookupQualifiedType(open.spec->base, open.scope);
        const Type* base = symbol != nullptr && symbol->type != nullptr ? Strip(symbol->type) : project.types.Error();
        if (base->kind != TypeKind::Struct) {
            Report(DiagnosticCode::UnknownBase, open.spec->base.range, {"STRUCT", Spelling(open.spec->base.name)});
            return false;
        }
        if (!Complete(base, open.spec->base.range)) return false;
        type.base = static_cast<const StructType*>(base);
        for (const Field& field : type.base->fields)
            type.Add(field);
        size = base->size;
        deepest = base->depth - 1;
    }
    for (const ast::VarDecl* declaration : open.spec->fields) {
        if (declaration->type == nullptr) continue;
        const Type* fieldType = ResolveSpec(*declaration->type, open.scope);
        if (!Complete(fieldType, declaration->type->range)) {
            succeeded = false;
            fieldType = project.types.Error();
        }
        if (declaration->location != nullptr || declaration->alias != nullptr) {
            Report(DiagnosticCode::NotSupported, declaration->name.range, {"AT in a structure"});
        }
        const Type* plain = Strip(fieldType);
        if (plain->kind == TypeKind::Array && static_cast<const ArrayType*>(plain)->isOpen) {
            Report(DiagnosticCode::OpenArray, declaration->type->range);
        }
        const NameId name = declaration->name.name;
        if (const Field* existing = type.Find(name)) {
            ReportDuplicate(name, declaration->name.range, existing->declared);
            continue;
        }
        const auto offset = static_cast<std::uint32_t>(type.isUnion ? 0 : size);
        type.Add({.name = name, .type = fieldType, .offset = offset, .declared = declaration->name.range});
        size = type.isUnion ? std::max<std::uint64_t>(size, fieldType->size) : size + fieldType->size;
        deepest = std::max(deepest, int{fieldType->depth});
        if (size > kMaxTypeSize) {
            Report(DiagnosticCode::TypeTooLarge, type.declared, {TextOf(&type), std::to_string(kMaxTypeSize)});
            return false;
        }
    }
    if (deepest >= kMaxTypeDepth) {
        Report(DiagnosticCode::TypeTooDeep, type.declared, {std::to_string(kMaxTypeDepth)});
        return false;
    }
    type.size = static_cast<std::uint32_t>(size);
    type.depth = static_cast<std::uint8_t>(deepest + 1);
    return succeeded;
}

void Declarations::State::CheckFieldInitials(OpenStruct& open) {
    if (open.hasInitials) return;
    open.hasInitials = true;
    const bool usesStartValues = std::exchange(project.usesStartValues, true);
    if (open.type->base != nullptr) {
        CheckFieldInitials(*structByType.at(open.type->base));
        const std::vector<Field>& inherited = open.type->base->fields;
        for (std::size_t i = 0; i < inherited.size(); ++i)
            open.type->fields[i].initial = inherited[i].initial;
    }
    for (const ast::VarDecl* declaration : open.spec->fields) {
        const bool hasInitial = declaration->initial != nullptr || !declaration->blockInit.empty();
        const Field* field = open.type->Find(declaration->name.name);
        if (!hasInitial || field == nullptr || field->initial != nullptr) continue;
        open.type->fields[static_cast<std::size_t>(field - open.type->fields.data())].initial =
            declaration->initial != nullptr
                ? initials.Check(*declaration->initial, field->type, open.scope)
                : initials.CheckArguments(declaration->blockInit, declaration->name.range, field->type, open.scope);
    }
    const InitialValue* initial = nullptr;
    if (open.initial != nullptr) initial = initials.Check(*open.initial, open.type, open.scope);
    project.usesStartValues = usesStartValues;
    if (initial == nullptr || initial->kind != InitialValue::Kind::Members) return;
    for (const InitialMember& member : static_cast<const MembersInitial*>(initial)->members) {
        const auto place = std::ranges::find(open.type->fields, member.name, &Field::name);
        if (place != open.type->fields.end()) place->initial = member.value;
    }
}

}  // namespace tn61131::st
