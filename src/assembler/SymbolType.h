#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "value/ElementaryType.h"

struct SymbolEnum;
struct SymbolStruct;

/// The type of a variable as tools show it: elementary, an enumeration, a string of a declared length, an array, or a
/// structure. A value; enumerations, structures and array elements are shared and never change.
struct SymbolType {
    /// One dimension of an array, both ends included.
    struct Range {
        std::int32_t lower = 0;
        std::int32_t upper = 0;
        friend bool operator==(const Range&, const Range&) = default;
    };
    /// Arrays of arrays, and structures in structures, are no deeper than this.
    static constexpr unsigned int kMaxDepth = 32;

    ElementaryType elementary = ElementaryType::Undefined;  ///< Undefined for arrays and structures
    std::uint16_t length = 0;                               ///< of STRING and WSTRING: declared units
    std::vector<Range> dimensions;                          ///< of an array, outermost first
    std::shared_ptr<const SymbolType> element;              ///< of an array
    std::shared_ptr<const SymbolStruct> structure;
    std::shared_ptr<const SymbolEnum> enumeration;  ///< of an enumeration, whose base is `elementary`

    [[nodiscard]] static SymbolType MakeElementary(ElementaryType type);
    /// STRING or WSTRING of `length` units.
    [[nodiscard]] static SymbolType MakeString(ElementaryType type, std::uint16_t length);
    [[nodiscard]] static SymbolType MakeArray(std::vector<Range> dimensions, SymbolType element);
    [[nodiscard]] static SymbolType MakeStruct(std::shared_ptr<const SymbolStruct> structure);
    [[nodiscard]] static SymbolType MakeEnum(std::shared_ptr<const SymbolEnum> enumeration);

    [[nodiscard]] bool IsArray() const noexcept { return element != nullptr; }
    [[nodiscard]] bool IsStruct() const noexcept { return structure != nullptr; }
    [[nodiscard]] bool IsEnum() const noexcept { return enumeration != nullptr; }
    [[nodiscard]] bool IsString() const noexcept {
        return elementary == ElementaryType::String || elementary == ElementaryType::WString;
    }
    /// Elements of all dimensions, saturated; 1 for everything that is no array.
    [[nodiscard]] std::uint64_t GetElementCount() const noexcept;
    /// Bytes in the machine's memory, packed, saturated at the largest number.
    [[nodiscard]] std::uint64_t GetSize() const noexcept;
    /// How deep structures and arrays lie in it: 0 for an elementary type.
    [[nodiscard]] std::uint32_t GetDepth() const noexcept;
    /// As structured text has it: "REAL", "STRING[20]", "ARRAY[0..9,1..2] OF TON".
    [[nodiscard]] std::string GetText() const;
};

/// Names for numbers.
struct SymbolEnum {
    struct Value {
        std::string name{};
        std::int64_t number = 0;  ///< of an unsigned base of 64 bits: its bits
    };
    std::string name{};
    ElementaryType base = ElementaryType::Int;
    std::vector<Value> values;

    /// The first name of a number; null when there is none.
    [[nodiscard]] const std::string* FindName(std::int64_t number) const noexcept;
};

struct SymbolMember {
    std::string name{};
    std::uint32_t offset = 0;  ///< bytes from the start of the structure
    SymbolType type{};
};

/// A structure, or the instance data of a function block.
struct SymbolStruct {
    std::string name{};
    std::uint32_t size = 0;   ///< bytes, at least the end of the last member
    std::uint32_t depth = 1;  ///< of structures and arrays in it, itself included
    std::vector<SymbolMember> members;

    /// Null when there is none. Names are compared without regard to ASCII case.
    [[nodiscard]] const SymbolMember* FindMember(std::string_view memberName) const noexcept;
};

/// Whether two names are the same without regard to ASCII case, and the form in which equal names are the same text.
[[nodiscard]] bool IsSameName(std::string_view left, std::string_view right) noexcept;
[[nodiscard]] std::string FoldName(std::string_view name);

/// The instance data of the library's own function blocks by name in any case ("TON", "CTU"); null for another name.
[[nodiscard]] std::shared_ptr<const SymbolStruct> FindStandardBlockStruct(std::string_view name);
