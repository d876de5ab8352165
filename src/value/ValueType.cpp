#include "value/ValueType.h"

#include <cstddef>
#include <cstring>

namespace {

constexpr CValueType::TypeInformation LongName(ElementaryType type) {
    return {GetTypeInfo(type).name, type, false};
}
constexpr CValueType::TypeInformation Abbreviation(ElementaryType type) {
    return {GetTypeInfo(type).shortName, type, true};
}

constexpr std::uint64_t Bit(ElementaryType type) {
    return std::uint64_t{1} << static_cast<std::uint32_t>(type);
}
constexpr std::uint64_t BitsUpTo(ElementaryType last) {
    return (Bit(last) << 1) - 1;
}

/// A generic family (IEC 61131-3, 6.4.3). `members` has a bit for each type and each family within it, itself included.
struct Family {
    ElementaryType type;
    const char* name;
    std::uint64_t members;
};

constexpr std::uint64_t kAnyReal =
    Bit(ElementaryType::AnyReal) | Bit(ElementaryType::Real) | Bit(ElementaryType::LReal);
constexpr std::uint64_t kAnySigned = Bit(ElementaryType::AnySigned) | Bit(ElementaryType::SInt) |
                                     Bit(ElementaryType::Int) | Bit(ElementaryType::DInt) | Bit(ElementaryType::LInt);
constexpr std::uint64_t kAnyUnsigned = Bit(ElementaryType::AnyUnsigned) | Bit(ElementaryType::USInt) |
                                       Bit(ElementaryType::UInt) | Bit(ElementaryType::UDInt) |
                                       Bit(ElementaryType::ULInt);
constexpr std::uint64_t kAnyInt = Bit(ElementaryType::AnyInt) | kAnySigned | kAnyUnsigned;
constexpr std::uint64_t kAnyNum = Bit(ElementaryType::AnyNum) | kAnyInt | kAnyReal;
constexpr std::uint64_t kAnyBit = Bit(ElementaryType::AnyBit) | Bit(ElementaryType::Bool) | Bit(ElementaryType::Byte) |
                                  Bit(ElementaryType::Word) | Bit(ElementaryType::DWord) | Bit(ElementaryType::LWord);
constexpr std::uint64_t kAnyString =
    Bit(ElementaryType::AnyString) | Bit(ElementaryType::String) | Bit(ElementaryType::WString);
constexpr std::uint64_t kAnyChar =
    Bit(ElementaryType::AnyChar) | Bit(ElementaryType::Char) | Bit(ElementaryType::WChar);
constexpr std::uint64_t kAnyDate = Bit(ElementaryType::AnyDate) | Bit(ElementaryType::Date) |
                                   Bit(ElementaryType::DateAndTime) | Bit(ElementaryType::TimeOfDay);

constexpr Family kFamilies[] = {
    {ElementaryType::AnyElementary, "ANY_ELEMENTARY",
     Bit(ElementaryType::AnyElementary) | BitsUpTo(ElementaryType::WString) | Bit(ElementaryType::Char) |
         Bit(ElementaryType::WChar)},
    {ElementaryType::AnyMagnitude, "ANY_MAGNITUDE",
     Bit(ElementaryType::AnyMagnitude) | kAnyNum | Bit(ElementaryType::Time)},
    {ElementaryType::AnyNum, "ANY_NUM", kAnyNum},
    {ElementaryType::AnyReal, "ANY_REAL", kAnyReal},
    {ElementaryType::AnyInt, "ANY_INT", kAnyInt},
    {ElementaryType::AnySigned, "ANY_SIGNED", kAnySigned},
    {ElementaryType::AnyUnsigned, "ANY_UNSIGNED", kAnyUnsigned},
    {ElementaryType::AnyBit, "ANY_BIT", kAnyBit},
    {ElementaryType::AnyIntegral, "ANY_INTEGRAL", Bit(ElementaryType::AnyIntegral) | kAnyInt | kAnyBit},
    {ElementaryType::AnyChars, "ANY_CHARS", Bit(ElementaryType::AnyChars) | kAnyString | kAnyChar},
    {ElementaryType::AnyString, "ANY_STRING", kAnyString},
    {ElementaryType::AnyChar, "ANY_CHAR", kAnyChar},
    {ElementaryType::AnyDate, "ANY_DATE", kAnyDate},
    {ElementaryType::Any, "ANY", ~std::uint64_t{0}},
};

consteval bool FamiliesAreIndexed() {
    auto expected = static_cast<std::uint32_t>(ElementaryType::AnyElementary);
    for (const Family& family : kFamilies) {
        if (static_cast<std::uint32_t>(family.type) != expected++) return false;
    }
    return expected == static_cast<std::uint32_t>(ElementaryType::Any) + 1;
}
static_assert(FamiliesAreIndexed());

/// The row of a family; null for what is none.
const Family* FindFamily(ElementaryType type) noexcept {
    if (type < ElementaryType::AnyElementary || type > ElementaryType::Any) return nullptr;
    return &kFamilies[static_cast<std::size_t>(type) - static_cast<std::size_t>(ElementaryType::AnyElementary)];
}

constexpr char ToUpper(char c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Whether `text` begins with `name`, without regard to case. A terminating zero in `text` ends the comparison.
bool StartsWith(const char* text, const char* name) noexcept {
    for (; *name != '\0'; ++text, ++name) {
        if (ToUpper(*text) != ToUpper(*name)) return false;
    }
    return true;
}

bool EqualIgnoringCase(const std::string& text, const char* name) noexcept {
    return text.size() == std::strlen(name) && StartsWith(text.c_str(), name);
}

/// Moves `text` behind `name` and a "#" if it begins with both.
bool SkipPrefix(const char*& text, const char* name) noexcept {
    const std::size_t length = std::strlen(name);
    if (!StartsWith(text, name) || text[length] != '#') return false;
    text += length + 1;
    return true;
}

/// Whether there is a prefix at all: letters and underscores, of which every name consists, and a "#". Most texts have
/// none and need no search.
bool HasPrefix(const char* text) noexcept {
    while ((*text >= 'A' && *text <= 'Z') || (*text >= 'a' && *text <= 'z') || *text == '_')
        ++text;
    return *text == '#';
}

}  // namespace

// Abbreviations follow their long names: the search takes the first row that fits.
constinit const CValueType::TypeInformation CValueType::m_TypeInformation[] = {
    LongName(ElementaryType::Bool),
    LongName(ElementaryType::SInt),
    LongName(ElementaryType::USInt),
    LongName(ElementaryType::Byte),
    LongName(ElementaryType::Int),
    LongName(ElementaryType::UInt),
    LongName(ElementaryType::Word),
    LongName(ElementaryType::DInt),
    LongName(ElementaryType::UDInt),
    LongName(ElementaryType::DWord),
    LongName(ElementaryType::LInt),
    LongName(ElementaryType::ULInt),
    LongName(ElementaryType::LWord),
    LongName(ElementaryType::Time),
    Abbreviation(ElementaryType::Time),
    LongName(ElementaryType::Real),
    LongName(ElementaryType::LReal),
    LongName(ElementaryType::TimeOfDay),
    Abbreviation(ElementaryType::TimeOfDay),
    LongName(ElementaryType::Date),
    Abbreviation(ElementaryType::Date),
    LongName(ElementaryType::DateAndTime),
    Abbreviation(ElementaryType::DateAndTime),
    LongName(ElementaryType::String),
    LongName(ElementaryType::WString),
    LongName(ElementaryType::Pointer),
    LongName(ElementaryType::Char),
    LongName(ElementaryType::WChar),
};

ElementaryType CValueType::FindType(const std::string& name) {
    for (const TypeInformation& row : m_TypeInformation) {
        if (EqualIgnoringCase(name, row.name)) return row.type;
    }
    const bool isType = EqualIgnoringCase(name, GetTypeInfo(ElementaryType::Type).name);
    return isType ? ElementaryType::Type : ElementaryType::Undefined;
}

void CValueType::ParseTypePrefix(const char*& text) noexcept {
    if (text == nullptr || !HasPrefix(text)) return;
    for (const TypeInformation& row : m_TypeInformation) {
        if (!SkipPrefix(text, row.name)) continue;
        type_ = row.type;
        return;
    }
}

void CValueType::ParseStringTypePrefix(const char*& text) noexcept {
    if (text == nullptr) return;
    for (const ElementaryType type :
         {ElementaryType::WString, ElementaryType::String, ElementaryType::Char, ElementaryType::WChar}) {
        if (!SkipPrefix(text, GetTypeInfo(type).name)) continue;
        type_ = type;
        return;
    }
}

const char* CValueType::GetTypeName(bool shortForm) const noexcept {
    if (static_cast<std::size_t>(type_) < kTypeTable.size()) {
        const TypeInfo& info = GetTypeInfo(type_);
        return shortForm ? info.shortName : info.name;
    }
    const Family* family = FindFamily(type_);
    return family != nullptr ? family->name : "Unknown";
}

bool CValueType::IsTypeOf(ElementaryType type) const noexcept {
    if (type_ == type || type == ElementaryType::Any) return true;
    const Family* family = FindFamily(type);
    return family != nullptr && type_ <= ElementaryType::Any && (family->members & Bit(type_)) != 0;
}

bool CValueType::IsByteInteger() const noexcept {
    return type_ == ElementaryType::SInt || type_ == ElementaryType::USInt || type_ == ElementaryType::Byte;
}

bool CValueType::IsWordInteger() const noexcept {
    return type_ == ElementaryType::Int || type_ == ElementaryType::UInt || type_ == ElementaryType::Word;
}

bool CValueType::RequiresTypePrefix() const noexcept {
    return type_ == ElementaryType::Time || IsTypeOf(ElementaryType::AnyDate) || IsTypeOf(ElementaryType::AnyChar);
}

bool CValueType::ValueInRange(long long value) const noexcept {
    const auto bits = static_cast<unsigned long long>(value);
    return value < 0 ? ValueInRange(true, 0 - bits) : ValueInRange(false, bits);
}

bool CValueType::ValueInRange(bool negative, unsigned long long magnitude) const noexcept {
    // SINT to DWORD are numbered without a gap.
    if (type_ < ElementaryType::SInt || type_ > ElementaryType::DWord) return true;
    const TypeInfo& info = GetTypeInfo(type_);
    const unsigned int bits = info.size * 8U;
    if (info.payload == PayloadKind::Unsigned) return !negative && magnitude < 1ULL << bits;
    const unsigned long long beyond = 1ULL << (bits - 1);
    return negative ? magnitude <= beyond : magnitude < beyond;
}

ElementaryType CValueType::GetCanonicalVarType() const noexcept {
    switch (type_) {
        case ElementaryType::Byte: return ElementaryType::USInt;
        case ElementaryType::Word: return ElementaryType::UInt;
        case ElementaryType::DWord: return ElementaryType::UDInt;
        case ElementaryType::LWord: return ElementaryType::ULInt;
        default: break;
    }
    if (IsTypeOf(ElementaryType::AnyDate)) return ElementaryType::DateAndTime;
    const bool isItself = type_ == ElementaryType::Bool || IsTypeOf(ElementaryType::AnyNum);
    return isItself ? type_ : ElementaryType::WString;
}

void CValueType::PromoteType(const CValueType& other) noexcept {
    if (static_cast<std::size_t>(type_) >= kTypeTable.size()) return;
    if (static_cast<std::size_t>(other.type_) >= kTypeTable.size()) return;
    const int rank = GetTypeInfo(type_).precedence;
    if (rank >= 0 && rank < GetTypeInfo(other.type_).precedence) type_ = other.type_;
}
