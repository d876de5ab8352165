#include <cstdint>
#include <limits>

#include "platform/CharTable.h"
#include "platform/TextOutput.h"
#include "platform/Time.h"
#include "platform/Transcode.h"
#include "value/CompositeValue.h"
#include "value/TypeTable.h"
#include "value/VMTypeValue.h"
#include "value/ValueLiteral.h"

namespace {

// Two's complement of `size` bytes at the start of a payload.
std::int64_t ReadSigned(const CValueLiteral& value, unsigned int size) noexcept {
    switch (size) {
        case 1: return value.GetPayload<std::int8_t>();
        case 2: return value.GetPayload<std::int16_t>();
        case 4: return value.GetPayload<std::int32_t>();
        default: return value.GetPayload<std::int64_t>();
    }
}

std::uint64_t ReadUnsigned(const CValueLiteral& value, unsigned int size) noexcept {
    switch (size) {
        case 1: return value.GetPayload<std::uint8_t>();
        case 2: return value.GetPayload<std::uint16_t>();
        case 4: return value.GetPayload<std::uint32_t>();
        default: return value.GetPayload<std::uint64_t>();
    }
}

// Hours are not reduced to a day: 25 hours print as 25:00:00.000.
void PrintTimeOfDay(std::uint32_t milliseconds, CTextOutput& output) {
    output.Print("%02u:%02u:%02u.%03u", milliseconds / 3'600'000, milliseconds / 60'000 % 60, milliseconds / 1'000 % 60,
                 milliseconds % 1'000);
}

void PrintChar(unsigned char byte, CTextOutput& output) {
    output.WriteChar('\'');
    output.PrintCodePoint00ToFF(byte, false);
    output.WriteChar('\'');
}

void PrintWChar(std::uint16_t unit, CTextOutput& output) {
    output.WriteChar('"');
    if (unit <= 0xFF) {
        output.PrintCodePoint00ToFF(unit, true);
    } else if (UnicodeCharTable::IsPrintable(unit)) {
        output.WriteCodePoint(unit);
    } else {
        output.Print("$%04X", unit);
    }
    output.WriteChar('"');
}

void PrintPointer(const PointerValue& pointer, CTextOutput& output) {
    char buffer[PointerValue::kTextSize];
    output.Write(pointer.FormatPointerValue(buffer));
}

void PrintComposite(const CCompositeValue* composite, CTextOutput& output) {
    (composite != nullptr ? *composite : CCompositeValue()).Print(output);
}

// The characters of a COMPOSITE_STRING, surrogate pairs joined, no quotes.
void PrintUnits(std::span<const unsigned short> units, CTextOutput& output) {
    while (!units.empty()) {
        char32_t codePoint = 0;
        units = units.subspan(tn_decode_utf16(units.data(), static_cast<unsigned int>(units.size()), codePoint));
        output.WriteCodePoint(codePoint);
    }
}

std::int64_t TicksFromDays(std::uint32_t days) noexcept {
    constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max();
    return days > kLast / kTicksPerDay ? kLast : days * kTicksPerDay;
}

}  // namespace

void CValueLiteral::GetAsText(const CTNTimeZone* /*timeZone*/, CTextOutput& output) const {
    switch (type_) {
        case ElementaryType::Undefined: output.Write("Undefined"); break;
        case ElementaryType::Bool: output.Write(IsZero() ? "FALSE" : "TRUE"); break;
        case ElementaryType::SInt:
        case ElementaryType::Int:
        case ElementaryType::DInt:
        case ElementaryType::LInt: output.Print("%lld", ReadSigned(*this, GetSize())); break;
        case ElementaryType::USInt:
        case ElementaryType::UInt:
        case ElementaryType::UDInt:
        case ElementaryType::ULInt: output.Print("%llu", ReadUnsigned(*this, GetSize())); break;
        case ElementaryType::Byte:
        case ElementaryType::Word:
        case ElementaryType::DWord:
        case ElementaryType::LWord: output.Print("16#%llX", ReadUnsigned(*this, GetSize())); break;
        case ElementaryType::Real: output.PrintFloat(GetPayload<float>()); break;
        case ElementaryType::LReal: output.PrintDouble(GetPayload<double>()); break;
        case ElementaryType::Time: GetTimeAsText(output); break;
        case ElementaryType::TimeOfDay: PrintTimeOfDay(GetPayload<std::uint32_t>(), output); break;
        case ElementaryType::Date: GetDateAsText(output); break;
        case ElementaryType::DateAndTime: GetDateAndTimeAsText('-', output); break;
        case ElementaryType::String: {
            const auto bytes = GetUnits(GetUtf8String());
            output.Print61131String(bytes.data(), static_cast<unsigned int>(bytes.size()));
            break;
        }
        case ElementaryType::WString: {
            const auto units = GetUnits(GetUtf16String());
            output.Print61131String(units.data(), static_cast<unsigned int>(units.size()));
            break;
        }
        case ElementaryType::Pointer: PrintPointer(GetPayload<PointerValue>(), output); break;
        case ElementaryType::Composite: PrintComposite(GetComposite(), output); break;
        case ElementaryType::CompositeString: PrintUnits(GetUnits(GetUtf16String()), output); break;
        case ElementaryType::Char: PrintChar(GetPayload<unsigned char>(), output); break;
        case ElementaryType::WChar: PrintWChar(GetPayload<std::uint16_t>(), output); break;
        case ElementaryType::Type: GetPayload<CVMTypeValue>().PrintTypeValue(output); break;
        default: break;
    }
}

void CValueLiteral::GetAsLiteral(CTextOutput& output) const {
    if (IsDefined() && RequiresTypePrefix()) output.Print("%s#", GetTypeName(true));
    GetAsText(nullptr, output);
}

void CValueLiteral::GetDeclaration(CTextOutput& output) const {
    if (IsDefined()) output.Print("%s#", GetTypeName(true));
    GetAsText(nullptr, output);
}

// "1d2h3m4s5ms" without the parts that are zero.
void CValueLiteral::GetTimeAsText(CTextOutput& output) const {
    struct Unit {
        std::uint64_t milliseconds;
        const char* format;
    };
    static constexpr Unit kUnits[] = {
        {86'400'000, "%llud"}, {3'600'000, "%lluh"}, {60'000, "%llum"}, {1'000, "%llus"}, {1, "%llums"}};

    const auto duration = GetPayload<std::int64_t>();
    if (duration == 0) {
        output.Write("0s");
        return;
    }
    auto rest = static_cast<std::uint64_t>(duration);
    if (duration < 0) {
        output.WriteChar('-');
        rest = 0 - rest;
    }
    for (const Unit& unit : kUnits) {
        const std::uint64_t count = rest / unit.milliseconds;
        if (count != 0) output.Print(unit.format, count);
        rest %= unit.milliseconds;
    }
}

void CValueLiteral::GetDateAsText(CTextOutput& output) const {
    output.PrintDate(nullptr, TicksFromDays(GetPayload<std::uint32_t>()));
}

void CValueLiteral::GetDateAndTimeAsText(char separator, CTextOutput& output) const {
    output.PrintDateAndTime(nullptr, TicksFromMilliseconds(GetPayload<std::int64_t>()), separator);
}
