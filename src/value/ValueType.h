#pragma once

#include <span>
#include <string>

#include "platform/Export.h"
#include "value/ElementaryType.h"
#include "value/TypeTable.h"

/// One elementary type with its queries. All of them are cheap, never fail and log nothing.
class TN61131_API CValueType {
 public:
    /// A name by which a type is found, in the order of the search.
    struct TypeInformation {
        const char* name;
        ElementaryType type;
        bool abbreviation;
    };
    static constexpr unsigned int m_TypeInformationCount = 28;
    static const TypeInformation m_TypeInformation[m_TypeInformationCount];

    CValueType() noexcept = default;
    CValueType(ElementaryType type) noexcept : type_(type) {}

    [[nodiscard]] ElementaryType GetType() const noexcept { return type_; }
    [[nodiscard]] bool IsDefined() const noexcept { return type_ != ElementaryType::Undefined; }
    [[nodiscard]] bool IsUndefined() const noexcept { return type_ == ElementaryType::Undefined; }

    /// The type of a name, without regard to case, abbreviations included; "TYPE" gives Type, anything else Undefined.
    [[nodiscard]] static ElementaryType FindType(const std::string& name);
    /// Takes the type of a prefix like DINT# and moves `text` behind it; neither changes where there is none.
    void ParseTypePrefix(const char*& text) noexcept;
    /// The same for WSTRING#, STRING#, CHAR# and WCHAR# only.
    void ParseStringTypePrefix(const char*& text) noexcept;
    /// The name, with `shortForm` T, TOD, D and DT for the time and date types; generic families have theirs,
    /// unassigned codes give "Unknown".
    [[nodiscard]] const char* GetTypeName(bool shortForm) const noexcept;
    /// True for the type itself and, when `type` is a generic family, for its members (IEC 61131-3, 6.4.3).
    [[nodiscard]] bool IsTypeOf(ElementaryType type) const noexcept;
    /// SINT, USINT, BYTE.
    [[nodiscard]] bool IsByteInteger() const noexcept;
    /// INT, UINT, WORD.
    [[nodiscard]] bool IsWordInteger() const noexcept;
    /// True for the types whose literals are only written with a prefix: times, dates and characters.
    [[nodiscard]] bool RequiresTypePrefix() const noexcept;
    /// Whether an integer type of up to 32 bits holds the number. Every other type holds every number.
    [[nodiscard]] bool ValueInRange(long long value) const noexcept;
    [[nodiscard]] bool ValueInRange(bool negative, unsigned long long magnitude) const noexcept;
    /// BOOL, integers and reals themselves; dates DATE_AND_TIME; bit strings the unsigned integer of their width;
    /// anything else WSTRING.
    [[nodiscard]] ElementaryType GetCanonicalVarType() const noexcept;
    /// Becomes `other` when that ranks higher in promotion. Unchanged where either has no rank.
    void PromoteType(const CValueType& other) noexcept;
    /// Bytes in the machine's memory; 0 for types of variable size.
    [[nodiscard]] unsigned int GetSize() const noexcept { return GetTypeInfo(type_).size; }

 protected:
    ElementaryType type_ = ElementaryType::Undefined;
};
