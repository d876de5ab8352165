#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "compiler/Names.h"
#include "compiler/Source.h"
#include "value/ElementaryType.h"
#include "value/TypeTable.h"

struct BlockGroup;
struct BlockRow;

namespace tn61131::st {

struct InitialValue;
struct Pou;
struct Variable;

enum class TypeKind : std::uint8_t {
    Error,       ///< of what was reported as wrong; goes with everything, causes no further message
    Void,        ///< result of what gives none
    Null,        ///< of NULL
    Elementary,  ///< every type of the machine that has a fixed size and is no pointer
    String,      ///< STRING or WSTRING of a capacity
    Pointer,     ///< POINTER TO, REF_TO
    Reference,   ///< REFERENCE TO: a pointer that every use dereferences
    Enum,
    Subrange,
    Alias,  ///< a name for another type with a default value of its own
    Array,
    Struct,
    FunctionBlock,  ///< of the project or of the library
    Interface,
};

/// A type. Types are made by TypeTable, live as long as it, and are equal when they are the same object; two arrays of
/// the same bounds and element are one object, two structures of the same members are not.
struct Type {
    TypeKind kind;
    /// What the machine loads and stores for a value of the type; Undefined for arrays, structures, function blocks.
    ElementaryType storage;
    /// Bytes in memory: of strings with the length in front, of function blocks with EN and ENO, packed.
    std::uint32_t size;
    /// Declared name; None for types without one.
    NameId name = NameId::None;
    SourceRange declared{};
    /// How deep arrays, structures and function blocks lie in each other by value: 0 for what has no parts.
    std::uint8_t depth = 0;
    /// Whether size, depth and parts are known. False only while declarations are being resolved.
    bool isComplete = true;
};

struct StringType : Type {
    std::uint16_t capacity;  ///< units
};

/// Pointer and Reference.
struct PointerType : Type {
    const Type* target;
};

struct EnumMember {
    NameId name;
    std::int64_t value;
    SourceRange declared;
};

/// Finds the place of a name in a list without going through it.
class NameIndex {
 public:
    /// The first of equal names counts.
    void Add(NameId name, std::size_t place) { places_.emplace(name, static_cast<std::uint32_t>(place)); }
    /// Nothing for a name that the list does not have.
    [[nodiscard]] std::optional<std::uint32_t> Find(NameId name) const noexcept {
        const auto found = places_.find(name);
        return found == places_.end() ? std::nullopt : std::optional(found->second);
    }

 private:
    std::unordered_map<NameId, std::uint32_t> places_;
};

struct EnumType : Type {
    const Type* base;  ///< elementary integer or bit string
    std::vector<EnumMember> members;
    std::int64_t defaultValue = 0;

    void Add(const EnumMember& member);
    /// Null for a name that the type does not have.
    [[nodiscard]] const EnumMember* Find(NameId member) const noexcept;

 private:
    NameIndex index_;
};

/// Values from lower to upper, both included; of a ULINT as the bits of the number.
struct SubrangeType : Type {
    const Type* base;
    std::int64_t lower;
    std::int64_t upper;
};

struct AliasType : Type {
    const Type* target;           ///< no alias
    const InitialValue* initial;  ///< never null
};

struct ArrayBound {
    std::int32_t lower = 0;
    std::int32_t upper = 0;
    [[nodiscard]] std::uint32_t GetCount() const noexcept {
        return static_cast<std::uint32_t>(static_cast<std::int64_t>(upper) - lower + 1);
    }
    friend auto operator<=>(const ArrayBound&, const ArrayBound&) = default;
};

/// An array of several dimensions; that of an array of arrays has another array as element. Elements lie row by row,
/// the last index fastest.
struct ArrayType : Type {
    std::vector<ArrayBound> bounds;
    const Type* element;
    bool isOpen = false;  ///< ARRAY[*]: the bounds are those of the argument
};

/// A member of a structure, or a variable of a function block's instance, at its place.
struct Field {
    NameId name = NameId::None;
    const Type* type = nullptr;
    std::uint32_t offset = 0;
    const InitialValue* initial = nullptr;  ///< null: the type's default
    SourceRange declared{};
};

struct StructType : Type {
    std::vector<Field> fields;  ///< those of the base first
    const StructType* base = nullptr;
    bool isUnion = false;

    void Add(const Field& field);
    /// Null for a name that the structure does not have.
    [[nodiscard]] const Field* Find(NameId field) const noexcept;

 private:
    NameIndex index_;
};

/// Instances have EN in byte 0 and ENO in byte 1. Exactly one of `pou` and `row` is set.
struct FunctionBlockType : Type {
    Pou* pou = nullptr;                ///< a block of the project: its variables have Instance storage
    const BlockRow* row = nullptr;     ///< a block of the library
    std::uint8_t group = 0;            ///< of the library's block
    std::vector<Variable*> variables;  ///< inputs, outputs, in-outs and state by offset, EN and ENO first; those of the
                                       ///< base first. Also for the library's blocks.
    /// Also finds what is no part of the instance: constants, located variables. Null for a name that the block does
    /// not have.
    [[nodiscard]] Variable* Find(NameId variable) const noexcept;
};

/// Makes and keeps the types of a project.
class TypeTable {
 public:
    /// With `textsEndInZero`, a STRING has room for a zero behind its last character.
    TypeTable(NameTable& names, bool textsEndInZero);

    [[nodiscard]] const Type* Error() const noexcept { return error_; }
    [[nodiscard]] const Type* Void() const noexcept { return void_; }
    [[nodiscard]] const Type* Null() const noexcept { return null_; }
    /// An elementary type that is neither STRING, WSTRING nor POINTER.
    [[nodiscard]] const Type* Elementary(ElementaryType type) const noexcept;
    [[nodiscard]] const Type* Bool() const noexcept { return Elementary(ElementaryType::Bool); }
    [[nodiscard]] const StringType* String(ElementaryType stringOrWString, std::uint16_t capacity);
    [[nodiscard]] const PointerType* Pointer(const Type* target);
    [[nodiscard]] const PointerType* Reference(const Type* target);
    /// Null when the array would be larger than kMaxTypeSize or nested deeper than kMaxTypeDepth. Incomplete when the
    /// element is.
    [[nodiscard]] const ArrayType* Array(std::vector<ArrayBound> bounds, const Type* element, bool isOpen = false);
    /// Takes over the size of an element that has become complete. False when the array would be too large or too deep:
    /// then it counts as complete, with size 0.
    [[nodiscard]] bool Complete(const ArrayType* array);
    /// The same for a target that has become complete.
    void Complete(const AliasType* alias);
    /// Arrays that were incomplete when they were made.
    [[nodiscard]] const std::vector<const ArrayType*>& GetLateArrays() const noexcept { return lateArrays_; }
    // Declared types: filled in by whoever declares them.
    [[nodiscard]] EnumType* NewEnum(NameId name);
    [[nodiscard]] SubrangeType* NewSubrange(NameId name, const Type* base, std::int64_t lower, std::int64_t upper);
    [[nodiscard]] AliasType* NewAlias(NameId name, const Type* target, const InitialValue* initial);
    [[nodiscard]] StructType* NewStruct(NameId name);
    [[nodiscard]] FunctionBlockType* NewFunctionBlock(NameId name);
    /// The type of a function block of the library by name, null for another name.
    [[nodiscard]] const FunctionBlockType* FindLibraryBlock(NameId name);
    /// A type that the language names itself: INT, LTIME, BYTE ..., STRING of the profile's length is not among them.
    [[nodiscard]] const Type* FindElementaryByName(std::string_view name) const;
    [[nodiscard]] const Type* FindElementary(NameId name) const;

    [[nodiscard]] NameTable& GetNames() const noexcept { return names_; }

 private:
    template <typename T>
    T* Keep(T type);
    const PointerType* MakePointer(TypeKind kind, const Type* target);
    const FunctionBlockType* MakeLibraryBlock(NameId name, const BlockGroup& group, const BlockRow& row);

    NameTable& names_;
    const bool textsEndInZero_;
    std::deque<std::shared_ptr<Type>> types_;
    const Type* error_ = nullptr;
    const Type* void_ = nullptr;
    const Type* null_ = nullptr;
    std::vector<const Type*> elementary_;
    std::map<std::tuple<ElementaryType, std::uint16_t>, const StringType*> strings_;
    std::map<std::tuple<TypeKind, const Type*>, const PointerType*> pointers_;
    std::map<std::tuple<std::vector<ArrayBound>, const Type*, bool>, ArrayType*> arrays_;
    std::vector<const ArrayType*> lateArrays_;
    std::unordered_map<const AliasType*, AliasType*> aliases_;
    std::unordered_map<NameId, const Type*> byName_;
    std::map<NameId, const FunctionBlockType*> libraryBlocks_;
    std::deque<std::shared_ptr<Variable>> libraryVariables_;
};

/// Bytes of the length in front of a text's characters.
inline constexpr std::uint32_t kTextHeader = 2;

/// Bytes that a type may have.
inline constexpr std::uint32_t kMaxTypeSize = 0x10000000;
/// How deep types may lie in each other: symbol maps hold no more.
inline constexpr std::uint8_t kMaxTypeDepth = 32;

/// The type behind aliases.
[[nodiscard]] const Type* Strip(const Type* type) noexcept;
/// The type whose values a variable of the type holds: aliases, subranges stripped; enumerations stay.
[[nodiscard]] const Type* BaseOf(const Type* type) noexcept;

/// Units that a STRING or WSTRING holds.
[[nodiscard]] inline std::uint16_t GetTextCapacity(const Type* text) noexcept {
    return static_cast<const StringType*>(Strip(text))->capacity;
}
/// Bytes that the machine may use for a value of the type: all but the room for the zero behind a text.
[[nodiscard]] inline std::uint32_t GetValueSize(const Type* type) noexcept {
    return type->storage == ElementaryType::String ? kTextHeader + GetTextCapacity(type) : type->size;
}

[[nodiscard]] inline bool IsAggregate(const Type* type) noexcept {
    type = Strip(type);
    return type->kind == TypeKind::Array || type->kind == TypeKind::Struct || type->kind == TypeKind::FunctionBlock;
}

// Families of IEC 61131-3, 6.4.3, of the type behind aliases, subranges and enumerations.
[[nodiscard]] bool IsBool(const Type* type) noexcept;
[[nodiscard]] bool IsSigned(const Type* type) noexcept;    ///< SINT INT DINT LINT
[[nodiscard]] bool IsUnsigned(const Type* type) noexcept;  ///< USINT UINT UDINT ULINT
[[nodiscard]] bool IsInteger(const Type* type) noexcept;
[[nodiscard]] bool IsReal(const Type* type) noexcept;
[[nodiscard]] bool IsBitString(const Type* type) noexcept;  ///< BYTE WORD DWORD LWORD, not BOOL
[[nodiscard]] bool IsString(const Type* type) noexcept;     ///< STRING, WSTRING
[[nodiscard]] bool IsPointer(const Type* type) noexcept;    ///< Pointer, Reference

/// As messages print it: "INT", "STRING[20]", "ARRAY[0..9] OF REAL", "POINTER TO Motor".
[[nodiscard]] std::string GetTypeText(const NameTable& names, const Type* type);

}  // namespace tn61131::st
