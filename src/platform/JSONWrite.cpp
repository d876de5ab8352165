#include <cmath>
#include <string>
#include <string_view>

#include "platform/FloatText.h"
#include "platform/JSONValue.h"
#include "platform/TextOutput.h"

namespace {

std::string FormatJSONNumber(double number) {
    std::string text;
    if (!std::isfinite(number)) return "null";
    AppendECMAScriptNumber(text, number);
    return text;
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
        case Kind::Number: output.Write(FormatJSONNumber(GetNumber())); break;
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
