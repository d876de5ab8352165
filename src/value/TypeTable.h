#pragma once

#include <array>
#include <cstdint>

#include "value/ElementaryType.h"

/// How the payload of a type is read.
enum class PayloadKind : std::uint8_t {
    None,       ///< undefined
    Bool,       ///< one byte, 0 or 1
    Signed,     ///< two's complement of the type's size
    Unsigned,   ///< unsigned of the type's size
    Float,      ///< IEEE 754 single (size 4) or double (size 8)
    String,     ///< owned Utf8String
    WString,    ///< owned Utf16String
    Pointer,    ///< PointerValue
    Composite,  ///< owned CCompositeValue
    Type,       ///< CVMTypeValue
};

/// What the system knows of one elementary type. Everything that asks for a name, a size, a range or a rank reads it
/// here.
struct TypeInfo {
    ElementaryType type;    ///< equals the row's index
    const char* name;       ///< long form
    const char* shortName;  ///< abbreviated form of the time and date types, else the long one
    std::uint8_t size;      ///< bytes in the machine's memory; 0 where it varies
    short precedence;       ///< rank in promotion; -1 for none
    PayloadKind payload;
};

inline constexpr std::array<TypeInfo, 28> kTypeTable = {{
    {ElementaryType::Undefined, "Undefined", "Undefined", 0, 0, PayloadKind::None},
    {ElementaryType::Bool, "BOOL", "BOOL", 1, 1, PayloadKind::Bool},
    {ElementaryType::SInt, "SINT", "SINT", 1, 2, PayloadKind::Signed},
    {ElementaryType::USInt, "USINT", "USINT", 1, 3, PayloadKind::Unsigned},
    {ElementaryType::Byte, "BYTE", "BYTE", 1, 4, PayloadKind::Unsigned},
    {ElementaryType::Int, "INT", "INT", 2, 6, PayloadKind::Signed},
    {ElementaryType::UInt, "UINT", "UINT", 2, 7, PayloadKind::Unsigned},
    {ElementaryType::Word, "WORD", "WORD", 2, 8, PayloadKind::Unsigned},
    {ElementaryType::DInt, "DINT", "DINT", 4, 10, PayloadKind::Signed},
    {ElementaryType::UDInt, "UDINT", "UDINT", 4, 11, PayloadKind::Unsigned},
    {ElementaryType::DWord, "DWORD", "DWORD", 4, 12, PayloadKind::Unsigned},
    {ElementaryType::LInt, "LINT", "LINT", 8, 13, PayloadKind::Signed},
    {ElementaryType::ULInt, "ULINT", "ULINT", 8, 14, PayloadKind::Unsigned},
    {ElementaryType::LWord, "LWORD", "LWORD", 8, 15, PayloadKind::Unsigned},
    {ElementaryType::Real, "REAL", "REAL", 4, 16, PayloadKind::Float},
    {ElementaryType::LReal, "LREAL", "LREAL", 8, 17, PayloadKind::Float},
    {ElementaryType::Time, "TIME", "T", 8, 18, PayloadKind::Signed},
    {ElementaryType::TimeOfDay, "TIME_OF_DAY", "TOD", 4, 19, PayloadKind::Unsigned},
    {ElementaryType::Date, "DATE", "D", 4, 20, PayloadKind::Unsigned},
    {ElementaryType::DateAndTime, "DATE_AND_TIME", "DT", 8, 21, PayloadKind::Unsigned},
    {ElementaryType::String, "STRING", "STRING", 0, 22, PayloadKind::String},
    {ElementaryType::WString, "WSTRING", "WSTRING", 0, 23, PayloadKind::WString},
    {ElementaryType::Pointer, "POINTER", "POINTER", 8, 24, PayloadKind::Pointer},
    {ElementaryType::Composite, "COMPOSITE", "COMPOSITE", 0, 25, PayloadKind::Composite},
    {ElementaryType::CompositeString, "COMPOSITE_STRING", "COMPOSITE_STRING", 0, 26, PayloadKind::WString},
    {ElementaryType::Char, "CHAR", "CHAR", 1, 5, PayloadKind::Unsigned},
    {ElementaryType::WChar, "WCHAR", "WCHAR", 2, 9, PayloadKind::Unsigned},
    {ElementaryType::Type, "TYPE", "TYPE", 3, -1, PayloadKind::Type},
}};

consteval bool TypeTableIsIndexed() {
    for (std::uint32_t i = 0; i < kTypeTable.size(); ++i) {
        if (kTypeTable[i].type != static_cast<ElementaryType>(i)) return false;
    }
    return true;
}
static_assert(TypeTableIsIndexed());

/// The row of a type; that of Undefined for a code that has none.
[[nodiscard]] constexpr const TypeInfo& GetTypeInfo(ElementaryType type) noexcept {
    const auto index = static_cast<std::uint32_t>(type);
    return kTypeTable[index < kTypeTable.size() ? index : 0];
}

/// One bit for each type 0 to 27, for tests of membership without a switch.
[[nodiscard]] constexpr std::uint32_t TypeBit(ElementaryType type) noexcept {
    const auto index = static_cast<std::uint32_t>(type);
    return index < kTypeTable.size() ? std::uint32_t{1} << index : 0;
}

/// The types whose payload is an owned heap object.
inline constexpr std::uint32_t kOwningTypes = TypeBit(ElementaryType::String) | TypeBit(ElementaryType::WString) |
                                              TypeBit(ElementaryType::Composite) |
                                              TypeBit(ElementaryType::CompositeString);
