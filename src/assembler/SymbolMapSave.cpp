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

std::string FormatEnum(const SymbolEnum* enumeration) {
    std::string values;
    for (const SymbolEnum::Value& value : enumeration->values)
        values += FormatText("%s{\"name\":%s,\"value\":\"%lld\"}", values.empty() ? "" : ",", Quote(value.name),
                             value.number);
    return FormatText("{\"name\":%s,\"base\":%s,\"values\":[%s]}", Quote(enumeration->name),
                      Quote(SymbolType::MakeElementary(enumeration->base).GetText()), values);
}

std::string FormatLocal(const SymbolLocal& local) {
    std::string text = FormatText("{\"name\":%s,\"place\":%s,", Quote(local.name),
                                  Quote(symbolmap::kPlaceNames[static_cast<std::size_t>(local.place)]));
    if (local.place == SymbolLocal::Place::Tag) text += FormatText("\"tag\":%u,", local.tagId);
    return text + FormatText("\"offset\":%u,\"type\":%s}", local.offset, Quote(local.type.GetText()));
}

std::string FormatPou(const SymbolPou& pou) {
    std::string text = FormatText("{\"kind\":%s,\"name\":%s,\"offset\":%u,\"size\":%u,",
                                  Quote(symbolmap::kPouKindNames[static_cast<std::size_t>(pou.kind)]), Quote(pou.name),
                                  pou.codeOffset, pou.codeSize);
    if (pou.line != 0) text += FormatText("\"file\":%u,\"line\":%u,", pou.file, pou.line);
    std::string variables;
    for (const SymbolLocal& local : pou.variables)
        variables += (variables.empty() ? "" : ",") + FormatLocal(local);
    return text + FormatText("\"variables\":[%s]}", variables);
}

std::string FormatTask(const SymbolTask& task) {
    std::string text = FormatText("{\"name\":%s,", Quote(task.name));
    if (task.intervalMs) text += FormatText("\"interval\":\"%lld\",", *task.intervalMs);
    if (task.priority) text += FormatText("\"priority\":\"%lld\",", *task.priority);
    if (!task.single.empty()) text += FormatText("\"single\":%s,", Quote(task.single));
    std::string programs;
    for (const std::string& program : task.programs)
        programs += (programs.empty() ? "" : ",") + Quote(program);
    return text + FormatText("\"programs\":[%s]}", programs);
}

std::string FormatRetained(const SymbolRetained& retained) {
    return FormatText("{\"name\":%s,\"offset\":%u,\"size\":%u,\"kind\":%s}", Quote(retained.name), retained.offset,
                      retained.size, Quote(symbolmap::kRetainedNames[retained.isPersistent ? 1 : 0]));
}

std::string FormatTag(const SymbolTag& tag) {
    return FormatText("{\"address\":%s,\"tag\":%u,\"offset\":%u,\"type\":%s,\"readonly\":%s}", Quote(tag.address),
                      tag.tagId, tag.offset, Quote(tag.type.GetText()), tag.isReadOnly ? "true" : "false");
}

std::string FormatPosition(const SymbolPosition& position) {
    return FormatText("[%u,%u,%u,%u]", position.codeOffset, position.file, position.line, position.column);
}

}  // namespace

std::string CSymbolMap::Save() const {
    std::string out = FormatText("{\"format\":\"%s\",\n\"version\":%u", symbolmap::kFormatName, symbolmap::kVersion);
    if (const auto enums = CollectEnums(); !enums.empty()) AppendArray(out, "enums", enums, FormatEnum);
    AppendArray(out, "types", CollectStructs(), FormatStruct);
    AppendArray(out, "variables", variables_, FormatVariable);
    AppendArray(out, "labels", labels_, FormatLabel);
    AppendArray(out, "files", files_, Quote);
    AppendArray(out, "positions", positions_, FormatPosition);
    if (!pous_.empty()) AppendArray(out, "pous", pous_, FormatPou);
    if (!tasks_.empty()) AppendArray(out, "tasks", tasks_, FormatTask);
    if (!retained_.empty()) AppendArray(out, "retained", retained_, FormatRetained);
    if (!tags_.empty()) AppendArray(out, "tags", tags_, FormatTag);
    return out + "}\n";
}
