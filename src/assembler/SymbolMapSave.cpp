#include "assembler/SymbolMap.h"
#include "assembler/SymbolMapFormat.h"
#include "platform/FormatText.h"
#include "platform/Transcode.h"

namespace {

/// A text as a JSON string; bytes that are not valid UTF-8 become U+FFFD.
std::string Quote(std::string_view text) {
    std::string quoted = "\"";
    while (!text.empty()) {
        char32_t character = 0;
        text.remove_prefix(tn_codepoint_from_tnchar(text.data(), static_cast<unsigned int>(text.size()), character));
        if (character == '"' || character == '\\') quoted += '\\';
        if (character < 0x20) {
            quoted += FormatText("\\u%04X", static_cast<unsigned int>(character));
        } else {
            tn_append_codepoint_to_tnstring(quoted, character);
        }
    }
    return quoted + '"';
}

/// Appends the elements of a JSON array, a line each.
template <typename T, typename Format>
void AppendArray(std::string& out, std::string_view name, const std::vector<T>& elements, Format format) {
    out += FormatText(",\n%s:[", Quote(name));
    bool first = true;
    for (const T& element : elements) {
        out += first ? "\n" : ",\n";
        out += format(element);
        first = false;
    }
    out += ']';
}

std::string FormatMember(const SymbolMember& member) {
    return FormatText("{\"name\":%s,\"offset\":%u,\"type\":%s}", Quote(member.name), member.offset,
                      Quote(member.type.GetText()));
}

std::string FormatStruct(const SymbolStruct* structure) {
    std::string members;
    for (const SymbolMember& member : structure->members)
        members += (members.empty() ? "" : ",") + FormatMember(member);
    return FormatText("{\"name\":%s,\"size\":%u,\"members\":[%s]}", Quote(structure->name), structure->size, members);
}

std::string FormatVariable(const SymbolVariable& variable) {
    std::string text = FormatText("{\"scope\":%s,\"name\":%s,\"location\":%s,", Quote(variable.scope),
                                  Quote(variable.name), Quote(symbolmap::GetLocationName(variable.location)));
    if (variable.location == LocationKind::Tag) text += FormatText("\"tag\":%u,", variable.tagId);
    return text + FormatText("\"offset\":%u,\"type\":%s}", variable.offset, Quote(variable.type.GetText()));
}

std::string FormatLabel(const SymbolLabel& label) {
    return FormatText("{\"kind\":%s,\"name\":%s,\"offset\":%u}", Quote(symbolmap::GetLabelKindName(label.kind)),
                      Quote(label.name), label.codeOffset);
}

std::string FormatPosition(const SymbolPosition& position) {
    return FormatText("[%u,%u,%u,%u]", position.codeOffset, position.file, position.line, position.column);
}

}  // namespace

std::string CSymbolMap::Save() const {
    std::string out = FormatText("{\"format\":\"%s\",\n\"version\":%u", symbolmap::kFormatName, symbolmap::kVersion);
    AppendArray(out, "types", CollectStructs(), FormatStruct);
    AppendArray(out, "variables", variables_, FormatVariable);
    AppendArray(out, "labels", labels_, FormatLabel);
    AppendArray(out, "files", files_, Quote);
    AppendArray(out, "positions", positions_, FormatPosition);
    return out + "}\n";
}
