#include <cmath>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/JSONValue.h"
#include "platform/ShortestDecimal.h"
#include "platform/TextOutput.h"

namespace {

// As ECMAScript prints numbers: fixed notation from 10^-6 to below 10^21. The number is finite.
std::string FormatNumber(double number) {
    const tn61131::ShortestDecimal decimal = tn61131::ShortestDecimalOf(std::fabs(number));
    const std::string_view digits = decimal.View();
    std::string text(std::signbit(number) ? "-" : "");
    if (decimal.exponent >= 21 || decimal.exponent < -6) {
        text.append(digits.substr(0, 1));
        if (digits.size() > 1) text.append(".").append(digits.substr(1));
        text.append(decimal.exponent < 0 ? "e-" : "e+");
        return text.append(std::to_string(std::abs(decimal.exponent)));
    }
    if (decimal.exponent < 0) {
        text.append("0.").append(static_cast<std::size_t>(-decimal.exponent - 1), '0');
        return text.append(digits);
    }
    const std::size_t whole = static_cast<std::size_t>(decimal.exponent) + 1;
    if (digits.size() <= whole) return text.append(digits).append(whole - digits.size(), '0');
    return text.append(digits.substr(0, whole)).append(".").append(digits.substr(whole));
}

constexpr bool NeedsEscape(char c) noexcept {
    return c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20;
}

std::string FormatEscape(char c) {
    switch (c) {
        case '"': return "\\\"";
        case '\\': return "\\\\";
        case '\b': return "\\b";
        case '\f': return "\\f";
        case '\n': return "\\n";
        case '\r': return "\\r";
        case '\t': return "\\t";
        default: return FormatText("\\u%04x", static_cast<unsigned char>(c));
    }
}

void WriteString(std::string_view text, CTextOutput& output) {
    output.WriteChar('"');
    std::size_t pending = 0;  // where the part begins that is not yet written
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!NeedsEscape(text[at])) continue;
        output.Write(text.substr(pending, at - pending));
        output.Write(FormatEscape(text[at]));
        pending = at + 1;
    }
    output.Write(text.substr(pending));
    output.WriteChar('"');
}

}  // namespace

void JSONValue::Write(CTextOutput& output) const {
    const char* separator = "";
    switch (GetKind()) {
        case Kind::Null: output.Write("null"); break;
        case Kind::Boolean: output.Write(GetBoolean() ? "true" : "false"); break;
        case Kind::Number: output.Write(std::isfinite(GetNumber()) ? FormatNumber(GetNumber()) : "null"); break;
        case Kind::String: WriteString(GetString(), output); break;
        case Kind::Array:
            output.WriteChar('[');
            for (const JSONValue& element : GetElements()) {
                output.Write(separator);
                element.Write(output);
                separator = ",";
            }
            output.WriteChar(']');
            break;
        case Kind::Object:
            output.WriteChar('{');
            for (const JSONMember& member : GetMembers()) {
                output.Write(separator);
                WriteString(member.name, output);
                output.WriteChar(':');
                member.value.Write(output);
                separator = ",";
            }
            output.WriteChar('}');
            break;
    }
}
