#include <array>
#include <charconv>
#include <concepts>
#include <cstdint>
#include <limits>
#include <string_view>
#include <type_traits>

#include "platform/CharTable.h"
#include "platform/TextOutput.h"
#include "platform/Time.h"
#include "platform/Transcode.h"
#include "value/CompositeValue.h"
#include "value/PayloadTypes.h"
#include "value/TypeTable.h"
#include "value/VMTypeValue.h"
#include "value/ValueLiteral.h"

namespace {

// A short text in the making, to be written in one piece.
class ShortText {
 public:
    [[nodiscard]] std::string_view View() const noexcept { return {text_.data(), count_}; }
    ShortText& Append(std::string_view text) noexcept {
        count_ += text.copy(text_.data() + count_, text_.size() - count_);
        return *this;
    }
    template <std::integral T>
    ShortText& AppendNumber(T number) noexcept {
        const auto result = std::to_chars(text_.data() + count_, text_.data() + text_.size(), number);
        count_ = static_cast<std::size_t>(result.ptr - text_.data());
        return *this;
    }
    // With leading zeros to `width` digits, at most ten.
    ShortText& AppendPadded(std::uint32_t number, std::size_t width) noexcept {
        std::array<char, 10> digits;
        std::size_t first = digits.size();
        for (; number != 0 || digits.size() - first < width; number /= 10)
            digits[--first] = static_cast<char>('0' + number % 10);
        return Append({digits.data() + first, digits.size() - first});
    }
    ShortText& AppendHex(std::uint64_t number) noexcept {
        std::array<char, 16> digits;
        std::size_t first = digits.size();
        do {
            digits[--first] = "0123456789ABCDEF"[number % 16];
            number /= 16;
        } while (number != 0);
        return Append({digits.data() + first, digits.size() - first});
    }

 private:
    // The longest is a TIME: "-106751991167d23h59m59s999ms".
    std::array<char, 48> text_;
    std::size_t count_ = 0;
};

// Reads the payload of an integer, bit string or time type in its width.
template <typename Visitor>
void WithInteger(const CValueLiteral& value, Visitor visit) {
    tn61131::WithScalar(value.GetType(), [&]<typename T>(tn61131::PayloadTag<T>) {
        if constexpr (std::is_integral_v<T>) visit(value.GetPayload<T>());
    });
}

void PrintDecimal(const CValueLiteral& value, CTextOutput& output) {
    WithInteger(value, [&](auto number) { output.Write(ShortText().AppendNumber(number).View()); });
}

void PrintHex(const CValueLiteral& value, CTextOutput& output) {
    WithInteger(value, [&](auto number) {
        output.Write(ShortText().Append("16#").AppendHex(static_cast<std::uint64_t>(number)).View());
    });
}

// Hours are not reduced to a day: 25 hours print as 25:00:00.000.
void PrintTimeOfDay(std::uint32_t milliseconds, CTextOutput& output) {
    ShortText text;
    text.AppendPadded(milliseconds / 3'600'000, 2)
        .Append(":")
        .AppendPadded(milliseconds / 60'000 % 60, 2)
        .Append(":")
        .AppendPadded(milliseconds / 1'000 % 60, 2)
        .Append(".")
        .AppendPadded(milliseconds % 1'000, 3);
    output.Write(text.View());
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

void PrintPrefix(const CValueType& type, CTextOutput& output) {
    output.Write(type.GetTypeName(true));
    output.WriteChar('#');
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
        case ElementaryType::LInt:
        case ElementaryType::USInt:
        case ElementaryType::UInt:
        case ElementaryType::UDInt:
        case ElementaryType::ULInt: PrintDecimal(*this, output); break;
        case ElementaryType::Byte:
        case ElementaryType::Word:
        case ElementaryType::DWord:
        case ElementaryType::LWord: PrintHex(*this, output); break;
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
    if (IsDefined() && RequiresTypePrefix()) PrintPrefix(*this, output);
    GetAsText(nullptr, output);
}

void CValueLiteral::GetDeclaration(CTextOutput& output) const {
    if (IsDefined()) PrintPrefix(*this, output);
    GetAsText(nullptr, output);
}

// "1d2h3m4s5ms" without the parts that are zero.
void CValueLiteral::GetTimeAsText(CTextOutput& output) const {
    struct Unit {
        std::uint64_t milliseconds;
        std::string_view name;
    };
    static constexpr Unit kUnits[] = {{86'400'000, "d"}, {3'600'000, "h"}, {60'000, "m"}, {1'000, "s"}, {1, "ms"}};

    const auto duration = GetPayload<std::int64_t>();
    if (duration == 0) {
        output.Write("0s");
        return;
    }
    ShortText text;
    auto rest = static_cast<std::uint64_t>(duration);
    if (duration < 0) {
        text.Append("-");
        rest = 0 - rest;
    }
    for (const Unit& unit : kUnits) {
        const std::uint64_t count = rest / unit.milliseconds;
        if (count != 0) text.AppendNumber(count).Append(unit.name);
        rest %= unit.milliseconds;
    }
    output.Write(text.View());
}

void CValueLiteral::GetDateAsText(CTextOutput& output) const {
    output.PrintDate(nullptr, TicksFromDays(GetPayload<std::uint32_t>()));
}

void CValueLiteral::GetDateAndTimeAsText(char separator, CTextOutput& output) const {
    output.PrintDateAndTime(nullptr, TicksFromMilliseconds(GetPayload<std::int64_t>()), separator);
}
