#include <limits>
#include <string>
#include <string_view>

#include "diag/Messages.h"
#include "literal/LiteralText.h"
#include "platform/ReadDouble.h"
#include "value/VMTypeValue.h"
#include "value/ValueLiteral.h"

using tn61131::Fail;

namespace {

// The integers and bit strings of 8 to 64 bits.
constexpr std::uint32_t kIntegerTypes =
    TypeBit(ElementaryType::SInt) | TypeBit(ElementaryType::USInt) | TypeBit(ElementaryType::Byte) |
    TypeBit(ElementaryType::Int) | TypeBit(ElementaryType::UInt) | TypeBit(ElementaryType::Word) |
    TypeBit(ElementaryType::DInt) | TypeBit(ElementaryType::UDInt) | TypeBit(ElementaryType::DWord) |
    TypeBit(ElementaryType::LInt) | TypeBit(ElementaryType::ULInt) | TypeBit(ElementaryType::LWord);
constexpr std::uint32_t kRealTypes = TypeBit(ElementaryType::Real) | TypeBit(ElementaryType::LReal);

// Takes an optional type prefix. False for one that names a type outside `family`.
bool TakePrefix(const char*& text, std::uint32_t family, CValueType& type) noexcept {
    CValueType prefix;
    prefix.ParseTypePrefix(text);
    if (prefix.IsUndefined()) return true;
    type = prefix;
    return (TypeBit(prefix.GetType()) & family) != 0;
}

CValueType WantedType(ElementaryType wanted, std::uint32_t family) noexcept {
    return (TypeBit(wanted) & family) != 0 ? CValueType(wanted) : CValueType();
}

// The value of a digit of the radix; -1 for any other character. Above ten every hexadecimal digit counts: such a
// radix is refused later, unless it is 16.
int DigitValue(char c, int radix) noexcept {
    const int value = HexDigitValue(c);
    return value < (radix > 10 ? 16 : radix) ? value : -1;
}

// The type of an integer without prefix and without a wanted type.
ElementaryType NaturalIntegerType(bool negative, unsigned long long magnitude, int radix) noexcept {
    if (radix != 10) {
        return magnitude <= std::numeric_limits<std::uint32_t>::max() ? ElementaryType::DWord : ElementaryType::LWord;
    }
    const unsigned long long limit = negative ? 2'147'483'648U : 2'147'483'647U;
    return magnitude <= limit ? ElementaryType::DInt : ElementaryType::LInt;
}

constexpr bool IsSigned(ElementaryType type) noexcept {
    return GetTypeInfo(type).payload == PayloadKind::Signed;
}

// "[80]" at the start of `text`, the digits counted modulo 2^16; nothing at all is the length 0.
bool ReadTypeLength(const char* text, std::uint16_t& length) noexcept {
    length = 0;
    if (*text != '[') return true;
    for (++text; IsAsciiDigit(*text); ++text)
        length = static_cast<std::uint16_t>(length * 10 + (*text - '0'));
    return *text == ']';
}

}  // namespace

bool CValueLiteral::SetFromText(CErrorLog& log, const ErrorLocation& location, const std::string& text,
                                ElementaryType wanted) {
    ClearValue();
    CValueType type(wanted);
    if (type.IsUndefined()) {
        const char* start = text.c_str();
        type.ParseTypePrefix(start);
    }
    switch (type.GetType()) {
        case ElementaryType::Bool: return StringToBool(log, location, text.c_str());
        case ElementaryType::SInt:
        case ElementaryType::USInt:
        case ElementaryType::Byte:
        case ElementaryType::Int:
        case ElementaryType::UInt:
        case ElementaryType::Word:
        case ElementaryType::DInt:
        case ElementaryType::UDInt:
        case ElementaryType::DWord:
        case ElementaryType::LInt:
        case ElementaryType::ULInt:
        case ElementaryType::LWord: return StringToInteger(log, location, text.c_str(), type.GetType());
        case ElementaryType::Real:
        case ElementaryType::LReal: return StringToReal(log, location, text.c_str(), type.GetType());
        case ElementaryType::Time: return StringToTime(log, location, text.c_str());
        case ElementaryType::TimeOfDay: return StringToTimeOfDay(log, location, text.c_str());
        case ElementaryType::Date: return StringToDate(log, location, text.c_str());
        case ElementaryType::DateAndTime: return StringToDateAndTime(log, location, text.c_str());
        case ElementaryType::String:
        case ElementaryType::Char: return StringToString(log, location, text.c_str());
        case ElementaryType::WString:
        case ElementaryType::WChar: return StringToWString(log, location, text.c_str());
        case ElementaryType::Pointer: return StringToPointer(log, location, text.c_str());
        case ElementaryType::Type: return StringToType(log, location, text.c_str());
        default: return false;
    }
}

bool CValueLiteral::StringToBool(CErrorLog& log, const ErrorLocation& location, const char* text) {
    static constexpr struct {
        std::string_view name;
        bool value;
    } kNames[] = {{"TRUE", true}, {"FALSE", false}, {"1", true}, {"0", false}};

    ClearValue();
    if (IsEmpty(text)) return Fail<Message::InvalidBool>(log, location, "");
    const char* rest = text;
    CValueType type(ElementaryType::Bool);
    if (!TakePrefix(rest, TypeBit(ElementaryType::Bool), type)) return Fail<Message::InvalidBool>(log, location, text);
    for (const auto& row : kNames) {
        if (!EqualsIgnoringCase(rest, row.name)) continue;
        SetScalar(ElementaryType::Bool, static_cast<unsigned char>(row.value));
        return true;
    }
    return Fail<Message::InvalidBool>(log, location, text);
}

bool CValueLiteral::ParseUnsignedInteger(const char*& text, int radix, unsigned long long& value) {
    value = 0;
    if (DigitValue(*text, radix) < 0) return false;
    for (;; ++text) {
        if (*text == '_') continue;
        const int digit = DigitValue(*text, radix);
        if (digit < 0) return true;
        value = value * static_cast<unsigned long long>(radix) + static_cast<unsigned long long>(digit);
    }
}

bool CValueLiteral::ParseSignedInteger(const char* text, bool& negative, unsigned long long& magnitude, int& radix) {
    radix = 10;
    negative = *text == '-';
    if (*text == '-' || *text == '+') ++text;
    if (!ParseUnsignedInteger(text, radix, magnitude)) return false;
    if (*text != '#') return true;
    // A radix beyond int must not come back as a smaller, valid one.
    constexpr unsigned long long kLargest = std::numeric_limits<int>::max();
    radix = static_cast<int>(magnitude < kLargest ? magnitude : kLargest);
    ++text;
    return ParseUnsignedInteger(text, radix, magnitude);
}

bool CValueLiteral::StringToInteger(CErrorLog& log, const ErrorLocation& location, const char* text,
                                    ElementaryType wanted) {
    ClearValue();
    if (IsEmpty(text)) return Fail<Message::InvalidInteger>(log, location, "");
    const char* rest = text;
    CValueType type = WantedType(wanted, kIntegerTypes);
    bool negative = false;
    unsigned long long magnitude = 0;
    int radix = 10;
    if (!TakePrefix(rest, kIntegerTypes, type) || !ParseSignedInteger(rest, negative, magnitude, radix)) {
        return Fail<Message::InvalidInteger>(log, location, text);
    }
    if (radix != 2 && radix != 8 && radix != 10 && radix != 16) {
        return Fail<Message::InvalidRadix>(log, location, radix);
    }
    if (type.IsUndefined()) type = NaturalIntegerType(negative, magnitude, radix);
    if (!type.ValueInRange(negative, magnitude)) {
        return Fail<Message::OutOfRange>(log, location, rest, type.GetTypeName(false));
    }
    // The narrow types take the low bytes.
    SetScalar(type.GetType(), negative && IsSigned(type.GetType()) ? 0 - magnitude : magnitude);
    return true;
}

bool CValueLiteral::StringToReal(CErrorLog& log, const ErrorLocation& location, const char* text,
                                 ElementaryType wanted) {
    ClearValue();
    CValueType type = WantedType(wanted, kRealTypes);
    if (type.IsUndefined()) type = ElementaryType::LReal;
    if (IsEmpty(text)) return Fail<Message::CouldNotConvert>(log, location, "", type.GetTypeName(false));
    const char* rest = text;
    const char* const wantedName = type.GetTypeName(false);
    if (!TakePrefix(rest, kRealTypes, type)) return Fail<Message::CouldNotConvert>(log, location, text, wantedName);

    std::string digits(rest);
    std::erase(digits, '_');
    const char* end = digits.c_str();
    const double number = tn_strtod(end);
    if (type.GetType() == ElementaryType::Real) {
        // By way of double precision on purpose, though that rounds twice.
        SetScalar(ElementaryType::Real, static_cast<float>(number));
    } else {
        SetScalar(ElementaryType::LReal, number);
    }
    if (*end == '\0') return true;
    return Fail<Message::CouldNotConvert>(log, location, text, GetTypeName(false));
}

bool CValueLiteral::StringToPointer(CErrorLog& log, const ErrorLocation& location, const char* text) {
    const char* rest = text == nullptr ? "" : text;
    CValueType().ParseTypePrefix(rest);
    if (!EqualsIgnoringCase(rest, "NULL")) return Fail<Message::CouldNotConvert>(log, location, text, "POINTER");
    SetScalar(ElementaryType::Pointer, PointerValue());
    return true;
}

bool CValueLiteral::StringToType(CErrorLog& log, const ErrorLocation& location, const char* text) {
    const char* rest = text == nullptr ? "" : text;
    CValueType().ParseTypePrefix(rest);
    const char* const name = rest;
    while (IsAsciiLetter(*rest) || *rest == '_')
        ++rest;
    const ElementaryType type = FindType(std::string(name, rest));
    CVMTypeValue described{static_cast<std::uint8_t>(type), 0};
    std::uint16_t length = 0;
    if (type == ElementaryType::Undefined || !ReadTypeLength(rest, length)) {
        return Fail<Message::CouldNotConvert>(log, location, text, "TYPE");
    }
    described.length = length;
    SetScalar(ElementaryType::Type, described);
    return true;
}
