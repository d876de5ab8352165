#include "compiler/Types.h"

#include <algorithm>
#include <array>
#include <utility>

#include "assembler/SymbolType.h"
#include "compiler/Model.h"
#include "functions/FunctionTable.h"

namespace tn61131::st {

namespace {

constexpr std::uint32_t kPointerSize = GetTypeInfo(ElementaryType::Pointer).size;

/// Further names of elementary types. The machine counts times and dates in milliseconds, so the long forms are the
/// plain ones.
constexpr auto kOtherNames = std::to_array<std::pair<std::string_view, ElementaryType>>({
    {"TOD", ElementaryType::TimeOfDay},
    {"DT", ElementaryType::DateAndTime},
    {"LTIME", ElementaryType::Time},
    {"LDATE", ElementaryType::Date},
    {"LTOD", ElementaryType::TimeOfDay},
    {"LTIME_OF_DAY", ElementaryType::TimeOfDay},
    {"LDT", ElementaryType::DateAndTime},
    {"LDATE_AND_TIME", ElementaryType::DateAndTime},
});

/// Types that have no name in the language, or are made otherwise.
constexpr std::uint32_t kNotNamed = TypeBit(ElementaryType::Undefined) | TypeBit(ElementaryType::Pointer) |
                                    TypeBit(ElementaryType::Type) | kOwningTypes;

/// The elementary type that decides to which family a type belongs; Undefined for what has no family.
ElementaryType FamilyOf(const Type* type) noexcept {
    type = BaseOf(type);
    switch (type->kind) {
        case TypeKind::Elementary:
        case TypeKind::Enum:
        case TypeKind::String: return type->storage;
        default: return ElementaryType::Undefined;
    }
}

bool IsFamily(const Type* type, std::uint32_t family) noexcept {
    return (TypeBit(FamilyOf(type)) & family) != 0;
}

constexpr std::uint32_t kSigned = TypeBit(ElementaryType::SInt) | TypeBit(ElementaryType::Int) |
                                  TypeBit(ElementaryType::DInt) | TypeBit(ElementaryType::LInt);
constexpr std::uint32_t kUnsigned = TypeBit(ElementaryType::USInt) | TypeBit(ElementaryType::UInt) |
                                    TypeBit(ElementaryType::UDInt) | TypeBit(ElementaryType::ULInt);
constexpr std::uint32_t kReal = TypeBit(ElementaryType::Real) | TypeBit(ElementaryType::LReal);
constexpr std::uint32_t kBitString = TypeBit(ElementaryType::Byte) | TypeBit(ElementaryType::Word) |
                                     TypeBit(ElementaryType::DWord) | TypeBit(ElementaryType::LWord);
constexpr std::uint32_t kString = TypeBit(ElementaryType::String) | TypeBit(ElementaryType::WString);

/// Bytes of an array; nothing when it would be larger than kMaxTypeSize.
std::optional<std::uint32_t> ArraySize(const std::vector<ArrayBound>& bounds, std::uint32_t elementSize) noexcept {
    std::uint64_t size = elementSize;
    std::uint64_t count = 1;
    for (const ArrayBound& bound : bounds) {
        // Each factor is below 2^32 and each product at most 2^28, so nothing wraps.
        count *= bound.GetCount();
        size *= bound.GetCount();
        if (count > kMaxTypeSize || size > kMaxTypeSize) return std::nullopt;
    }
    return static_cast<std::uint32_t>(size);
}

/// Sets size and depth; false, and size 0, when they exceed a limit.
bool Measure(ArrayType& array) noexcept {
    array.isComplete = true;
    const std::optional<std::uint32_t> size =
        array.isOpen ? std::optional<std::uint32_t>(0) : ArraySize(array.bounds, array.element->size);
    array.size = size.value_or(0);
    array.depth = static_cast<std::uint8_t>(std::min(array.element->depth + 1, int{kMaxTypeDepth}));
    return size.has_value() && array.element->depth < kMaxTypeDepth;
}

}  // namespace

const Type* Strip(const Type* type) noexcept {
    while (type->kind == TypeKind::Alias)
        type = static_cast<const AliasType*>(type)->target;
    return type;
}

const Type* BaseOf(const Type* type) noexcept {
    for (;;) {
        type = Strip(type);
        if (type->kind != TypeKind::Subrange) return type;
        type = static_cast<const SubrangeType*>(type)->base;
    }
}

bool IsBool(const Type* type) noexcept {
    return FamilyOf(type) == ElementaryType::Bool;
}
bool IsSigned(const Type* type) noexcept {
    return IsFamily(type, kSigned);
}
bool IsUnsigned(const Type* type) noexcept {
    return IsFamily(type, kUnsigned);
}
bool IsInteger(const Type* type) noexcept {
    return IsFamily(type, kSigned | kUnsigned);
}
bool IsReal(const Type* type) noexcept {
    return IsFamily(type, kReal);
}
bool IsBitString(const Type* type) noexcept {
    return IsFamily(type, kBitString);
}
bool IsString(const Type* type) noexcept {
    return IsFamily(type, kString);
}
bool IsPointer(const Type* type) noexcept {
    type = Strip(type);
    return type->kind == TypeKind::Pointer || type->kind == TypeKind::Reference;
}

void EnumType::Add(const EnumMember& member) {
    index_.Add(member.name, members.size());
    members.push_back(member);
}

const EnumMember* EnumType::Find(NameId member) const noexcept {
    const std::optional<std::uint32_t> place = index_.Find(member);
    return place ? &members[*place] : nullptr;
}

void StructType::Add(const Field& field) {
    index_.Add(field.name, fields.size());
    fields.push_back(field);
}

const Field* StructType::Find(NameId field) const noexcept {
    const std::optional<std::uint32_t> place = index_.Find(field);
    return place ? &fields[*place] : nullptr;
}

Variable* FunctionBlockType::Find(NameId variable) const noexcept {
    for (const Pou* block = pou; block != nullptr; block = block->base) {
        const Symbol* symbol = std::as_const(*block->scope).FindHere(variable);
        if (symbol != nullptr) return symbol->kind == Symbol::Kind::Variable ? symbol->variable : nullptr;
    }
    if (pou != nullptr) return nullptr;
    const auto found =
        std::ranges::find_if(variables, [variable](const Variable* each) { return each->name == variable; });
    return found == variables.end() ? nullptr : *found;
}

template <typename T>
T* TypeTable::Keep(T type) {
    auto kept = std::make_shared<T>(std::move(type));
    T* const result = kept.get();
    types_.push_back(std::move(kept));
    return result;
}

TypeTable::TypeTable(NameTable& names, bool textsEndInZero) : names_(names), textsEndInZero_(textsEndInZero) {
    error_ = Keep(Type{.kind = TypeKind::Error, .storage = ElementaryType::Undefined, .size = 0});
    void_ = Keep(Type{.kind = TypeKind::Void, .storage = ElementaryType::Undefined, .size = 0});
    null_ = Keep(Type{.kind = TypeKind::Null, .storage = ElementaryType::Pointer, .size = kPointerSize});
    for (const TypeInfo& info : kTypeTable) {
        elementary_.push_back(Keep(Type{.kind = TypeKind::Elementary, .storage = info.type, .size = info.size}));
        if ((TypeBit(info.type) & kNotNamed) == 0) byName_.emplace(names_.Intern(info.name), elementary_.back());
    }
    for (const auto& [name, type] : kOtherNames)
        byName_.emplace(names_.Intern(name), Elementary(type));
}

const Type* TypeTable::Elementary(ElementaryType type) const noexcept {
    const auto index = static_cast<std::size_t>(type);
    return index < elementary_.size() ? elementary_[index] : error_;
}

const StringType* TypeTable::String(ElementaryType stringOrWString, std::uint16_t capacity) {
    const StringType*& place = strings_[{stringOrWString, capacity}];
    if (place == nullptr) {
        const bool isWide = stringOrWString == ElementaryType::WString;
        const std::uint32_t size = isWide ? kTextHeader + 2 * std::uint32_t{capacity}
                                          : kTextHeader + capacity + (textsEndInZero_ ? std::uint32_t{1} : 0);
        StringType type{};
        type.kind = TypeKind::String;
        type.storage = stringOrWString;
        type.size = size;
        type.capacity = capacity;
        place = Keep(type);
    }
    return place;
}

const PointerType* TypeTable::MakePointer(TypeKind kind, const Type* target) {
    const PointerType*& place = pointers_[{kind, target}];
    if (place == nullptr) {
        PointerType type{};
        type.kind = kind;
        type.storage = ElementaryType::Pointer;
        type.size = kPointerSize;
        type.target = target;
        place = Keep(type);
    }
    return place;
}

const PointerType* TypeTable::Pointer(const Type* target) {
    return MakePointer(TypeKind::Pointer, target);
}

const PointerType* TypeTable::Reference(const Type* target) {
    return MakePointer(TypeKind::Reference, target);
}

const ArrayType* TypeTable::Array(std::vector<ArrayBound> bounds, const Type* element, bool isOpen) {
    const auto found = arrays_.find({bounds, element, isOpen});
    if (found != arrays_.end()) return found->second;
    ArrayType type{};
    type.kind = TypeKind::Array;
    type.storage = ElementaryType::Undefined;
    type.bounds = bounds;
    type.element = element;
    type.isOpen = isOpen;
    type.isComplete = element->isComplete;
    if (type.isComplete && !Measure(type)) return nullptr;
    ArrayType* const kept = Keep(std::move(type));
    if (!kept->isComplete) lateArrays_.push_back(kept);
    arrays_.emplace(std::tuple(std::move(bounds), element, isOpen), kept);
    return kept;
}

bool TypeTable::Complete(const ArrayType* array) {
    if (array->isComplete) return true;
    return Measure(*arrays_.at({array->bounds, array->element, array->isOpen}));
}

void TypeTable::Complete(const AliasType* alias) {
    AliasType& type = *aliases_.at(alias);
    type.size = type.target->size;
    type.depth = type.target->depth;
    type.isComplete = type.target->isComplete;
}

EnumType* TypeTable::NewEnum(NameId name) {
    EnumType type{};
    type.kind = TypeKind::Enum;
    type.base = Elementary(ElementaryType::Int);
    type.storage = type.base->storage;
    type.size = type.base->size;
    type.name = name;
    return Keep(std::move(type));
}

SubrangeType* TypeTable::NewSubrange(NameId name, const Type* base, std::int64_t lower, std::int64_t upper) {
    SubrangeType type{};
    type.kind = TypeKind::Subrange;
    type.storage = base->storage;
    type.size = base->size;
    type.name = name;
    type.base = base;
    type.lower = lower;
    type.upper = upper;
    return Keep(type);
}

AliasType* TypeTable::NewAlias(NameId name, const Type* target, const InitialValue* initial) {
    AliasType type{};
    type.kind = TypeKind::Alias;
    type.storage = target->storage;
    type.size = target->size;
    type.name = name;
    type.depth = target->depth;
    type.isComplete = target->isComplete;
    type.target = target;
    type.initial = initial;
    AliasType* const kept = Keep(type);
    aliases_.emplace(kept, kept);
    return kept;
}

StructType* TypeTable::NewStruct(NameId name) {
    StructType type{};
    type.kind = TypeKind::Struct;
    type.storage = ElementaryType::Undefined;
    type.name = name;
    return Keep(std::move(type));
}

FunctionBlockType* TypeTable::NewFunctionBlock(NameId name) {
    FunctionBlockType type{};
    type.kind = TypeKind::FunctionBlock;
    type.storage = ElementaryType::Undefined;
    type.name = name;
    return Keep(std::move(type));
}

const FunctionBlockType* TypeTable::FindLibraryBlock(NameId name) {
    const auto found = libraryBlocks_.find(name);
    if (found != libraryBlocks_.end()) return found->second;
    const std::string_view spelling = names_.GetSpelling(name);
    for (const BlockGroup& group : GetBlockGroups()) {
        const auto row = std::ranges::find_if(
            group.rows, [spelling](const BlockRow& each) { return IsSameName(each.name, spelling); });
        if (row != group.rows.end()) return MakeLibraryBlock(name, group, *row);
    }
    libraryBlocks_.emplace(name, nullptr);
    return nullptr;
}

const FunctionBlockType* TypeTable::MakeLibraryBlock(NameId name, const BlockGroup& group, const BlockRow& row) {
    FunctionBlockType* const type = NewFunctionBlock(name);
    type->size = row.dataSize;
    type->depth = 1;
    type->row = &row;
    type->group = group.number;
    for (const BlockField& field : row.fields) {
        auto variable = std::make_shared<Variable>();
        variable->name = names_.Intern(field.name);
        variable->type = Elementary(field.type);
        const bool isEnableInput = field.role == BlockFieldRole::Control && field.offset == 0;
        const bool isEnableOutput = field.role == BlockFieldRole::Control && field.offset != 0;
        if (isEnableInput || field.role == BlockFieldRole::Input) variable->section = ast::VarSection::Input;
        if (isEnableOutput || field.role == BlockFieldRole::Output) variable->section = ast::VarSection::Output;
        variable->storage = {.kind = StorageKind::Instance, .offset = field.offset};
        type->variables.push_back(variable.get());
        libraryVariables_.push_back(std::move(variable));
    }
    libraryBlocks_.emplace(name, type);
    return type;
}

const Type* TypeTable::FindElementaryByName(std::string_view name) const {
    const auto found = byName_.find(names_.Find(name));
    return found == byName_.end() ? nullptr : found->second;
}

const Type* TypeTable::FindElementary(NameId name) const {
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : found->second;
}

namespace {

void AppendText(const NameTable& names, const Type* type, std::string& out);

void AppendArray(const NameTable& names, const ArrayType& array, std::string& out) {
    out += "ARRAY[";
    bool isFirst = true;
    for (const ArrayBound& bound : array.bounds) {
        if (!isFirst) out += ", ";
        isFirst = false;
        out += array.isOpen ? "*" : std::to_string(bound.lower) + ".." + std::to_string(bound.upper);
    }
    out += "] OF ";
    AppendText(names, array.element, out);
}

void AppendText(const NameTable& names, const Type* type, std::string& out) {
    if (type->name != NameId::None) {
        out += names.GetSpelling(type->name);
        return;
    }
    switch (type->kind) {
        case TypeKind::Error: out += "?"; break;
        case TypeKind::Void: out += "nothing"; break;
        case TypeKind::Null: out += "NULL"; break;
        case TypeKind::Elementary: out += GetTypeInfo(type->storage).name; break;
        case TypeKind::String:
            out += GetTypeInfo(type->storage).name;
            out += "[" + std::to_string(static_cast<const StringType*>(type)->capacity) + "]";
            break;
        case TypeKind::Pointer:
            out += "POINTER TO ";
            AppendText(names, static_cast<const PointerType*>(type)->target, out);
            break;
        case TypeKind::Reference:
            out += "REFERENCE TO ";
            AppendText(names, static_cast<const PointerType*>(type)->target, out);
            break;
        case TypeKind::Enum: out += "enumeration"; break;
        case TypeKind::Subrange: {
            const auto* range = static_cast<const SubrangeType*>(type);
            AppendText(names, range->base, out);
            out += "(" + std::to_string(range->lower) + ".." + std::to_string(range->upper) + ")";
            break;
        }
        case TypeKind::Alias: AppendText(names, static_cast<const AliasType*>(type)->target, out); break;
        case TypeKind::Array: AppendArray(names, *static_cast<const ArrayType*>(type), out); break;
        case TypeKind::Struct: out += static_cast<const StructType*>(type)->isUnion ? "UNION" : "STRUCT"; break;
        case TypeKind::FunctionBlock: out += "FUNCTION_BLOCK"; break;
        case TypeKind::Interface: out += "INTERFACE"; break;
    }
}

}  // namespace

std::string GetTypeText(const NameTable& names, const Type* type) {
    std::string text;
    AppendText(names, type, text);
    return text;
}

}  // namespace tn61131::st
