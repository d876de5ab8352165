#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

#include "assembler/SourceCursor.h"
#include "assembler/SymbolMap.h"
#include "assembler/SymbolMapFormat.h"
#include "assembler/TypeText.h"
#include "platform/ErrorLog.h"
#include "platform/FormatText.h"
#include "platform/JSONValue.h"
#include "value/TypeTable.h"

namespace {

constexpr std::uint64_t kHighest32 = std::numeric_limits<std::uint32_t>::max();

/// Keeps the first error that a parser reports.
class CFirstLine final : public COutputLog {
 public:
    void WriteLine(std::string_view line) override {
        if (line_.empty()) line_ = line;
    }
    [[nodiscard]] const std::string& GetLine() const noexcept { return line_; }

 private:
    std::string line_;
};

template <std::size_t kCount>
std::optional<std::size_t> FindWord(const std::array<std::string_view, kCount>& words, std::string_view word) {
    const auto found = std::find(words.begin(), words.end(), word);
    if (found == words.end()) return std::nullopt;
    return static_cast<std::size_t>(found - words.begin());
}

/// Fills a map from its JSON value. The first thing that is wrong ends it.
class CMapReader {
 public:
    CMapReader(CSymbolMap& map, std::string& error) noexcept : map_(map), error_(error) {}

    bool Read(const JSONValue& root) {
        const JSONValue* format = root.Find("format");
        if (format == nullptr || format->GetString() != symbolmap::kFormatName) return Fail("this is no symbol map");
        std::uint32_t version = 0;
        if (!ReadNumber(root, "version", version)) return false;
        if (version != symbolmap::kVersion) return Fail(FormatText("unknown version %u", version));
        return ReadList(root, "enums", &CMapReader::ReadEnum) && ReadList(root, "types", &CMapReader::ReadStruct) &&
               ReadList(root, "variables", &CMapReader::ReadVariable) &&
               ReadList(root, "labels", &CMapReader::ReadLabel) && ReadList(root, "files", &CMapReader::ReadFile) &&
               ReadList(root, "positions", &CMapReader::ReadPosition) && ReadList(root, "pous", &CMapReader::ReadPou) &&
               ReadList(root, "tasks", &CMapReader::ReadTask) &&
               ReadList(root, "retained", &CMapReader::ReadRetained) && ReadList(root, "tags", &CMapReader::ReadTag);
    }

 private:
    bool Fail(std::string text) {
        error_ = std::move(text);
        return false;
    }

    /// A list may be missing; it is then empty.
    bool ReadList(const JSONValue& root, std::string_view name, bool (CMapReader::*readElement)(const JSONValue&)) {
        const JSONValue* list = root.Find(name);
        if (list == nullptr) return true;
        std::size_t index = 0;
        for (const JSONValue& element : list->GetElements()) {
            if (!(this->*readElement)(element)) return Fail(FormatText("%s[%u]: %s", name, index, error_));
            ++index;
        }
        return true;
    }

    bool ToNumber(const JSONValue& value, std::uint32_t& out) {
        const double number = value.GetNumber();
        const bool whole = value.IsNumber() && number >= 0.0 && number <= static_cast<double>(kHighest32);
        if (!whole) return Fail("a number from 0 to 4294967295 expected");
        out = static_cast<std::uint32_t>(number);
        return static_cast<double>(out) == number || Fail("a whole number expected");
    }

    bool ReadNumber(const JSONValue& object, std::string_view name, std::uint32_t& out) {
        const JSONValue* value = object.Find(name);
        if (value == nullptr) return Fail(FormatText("'%s' is missing", name));
        return ToNumber(*value, out) || Fail(FormatText("'%s': %s", name, error_));
    }

    bool ReadText(const JSONValue& object, std::string_view name, std::string& out) {
        const JSONValue* value = object.Find(name);
        if (value == nullptr || !value->IsString()) return Fail(FormatText("'%s' is missing or no text", name));
        out = value->GetString();
        return true;
    }

    bool ReadName(const JSONValue& object, std::string& out) {
        if (!ReadText(object, "name", out)) return false;
        return IsIdentifier(out) || Fail(FormatText("'%s' is no name", out));
    }

    bool ReadTypeText(const JSONValue& object, SymbolType& out) {
        std::string text;
        if (!ReadText(object, "type", text)) return false;
        const std::vector<std::string> lines{text};
        std::vector<SourceDiagnostic> diagnostics;
        CSourceCursor cursor(lines, diagnostics);
        if (ReadType(cursor, structs_, out) && cursor.ExpectLineEnd()) return true;
        return Fail(FormatText("'%s': %s", text, diagnostics.front().text));
    }

    bool ReadStruct(const JSONValue& element) {
        auto structure = std::make_shared<SymbolStruct>();
        if (!ReadName(element, structure->name) || !ReadNumber(element, "size", structure->size)) return false;
        const JSONValue* members = element.Find("members");
        if (members == nullptr) return Fail("'members' is missing");
        for (const JSONValue& member : members->GetElements()) {
            if (!ReadMember(member, *structure)) return false;
        }
        if (structure->depth > SymbolType::kMaxDepth) return Fail("the type is nested too deeply");
        const std::string name = structure->name;
        return structs_.Add(std::move(structure)) || Fail(FormatText("'%s' is there twice", name));
    }

    bool ReadMember(const JSONValue& element, SymbolStruct& structure) {
        SymbolMember member;
        if (!ReadName(element, member.name) || !ReadNumber(element, "offset", member.offset) ||
            !ReadTypeText(element, member.type))
            return false;
        if (member.offset + member.type.GetSize() > structure.size)
            return Fail(FormatText("'%s' leaves its structure", member.name));
        structure.depth = std::max(structure.depth, member.type.GetDepth() + 1);
        structure.members.push_back(std::move(member));
        return true;
    }

    bool ReadVariable(const JSONValue& element) {
        SymbolVariable variable;
        std::string location;
        if (element.Find("scope") != nullptr && !ReadText(element, "scope", variable.scope)) return false;
        if (!ReadName(element, variable.name) || !ReadText(element, "location", location) ||
            !ReadNumber(element, "offset", variable.offset) || !ReadTypeText(element, variable.type))
            return false;
        const auto kind = FindWord(symbolmap::kLocationNames, location);
        if (!kind) return Fail(FormatText("unknown location '%s'", location));
        variable.location = static_cast<LocationKind>(*kind);
        if (variable.location == LocationKind::Tag && !ReadNumber(element, "tag", variable.tagId)) return false;
        if (variable.offset + variable.type.GetSize() > kHighest32) return Fail("the variable leaves the memory");
        map_.AddVariable(std::move(variable));
        return true;
    }

    bool ReadLabel(const JSONValue& element) {
        SymbolLabel label;
        std::string kindName;
        if (!ReadText(element, "kind", kindName) || !ReadText(element, "name", label.name) ||
            !ReadNumber(element, "offset", label.codeOffset))
            return false;
        const auto kind = FindWord(symbolmap::kLabelKindNames, kindName);
        if (!kind) return Fail(FormatText("unknown kind '%s'", kindName));
        label.kind = static_cast<SymbolLabel::Kind>(*kind);
        map_.AddLabel(std::move(label));
        return true;
    }

    bool ReadFile(const JSONValue& element) {
        if (!element.IsString()) return Fail("a text expected");
        const std::size_t count = map_.GetFiles().size();
        return map_.AddFile(element.GetString()) == count || Fail("the file is there twice");
    }

    bool ReadPosition(const JSONValue& element) {
        SymbolPosition position;
        const JSONValue::Array& fields = element.GetElements();
        if (fields.size() != 4) return Fail("four numbers expected");
        if (!ToNumber(fields[0], position.codeOffset) || !ToNumber(fields[1], position.file) ||
            !ToNumber(fields[2], position.line) || !ToNumber(fields[3], position.column))
            return false;
        if (position.file >= map_.GetFiles().size()) return Fail("there is no such file");
        const auto& before = map_.GetPositions();
        if (!before.empty() && before.back().codeOffset > position.codeOffset)
            return Fail("the code offsets do not ascend");
        map_.AddPosition(position);
        return true;
    }

    /// A whole number of 64 bits is written as text: a JSON number does not hold all of them.
    bool ReadLong(const JSONValue& object, std::string_view name, std::int64_t& out) {
        std::string text;
        if (!ReadText(object, name, text)) return false;
        const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), out);
        if (status == std::errc() && end == text.data() + text.size()) return true;
        return Fail(FormatText("'%s': a whole number expected", name));
    }

    bool ReadLong(const JSONValue& object, std::string_view name, std::optional<std::int64_t>& out) {
        std::int64_t number = 0;
        if (object.Find(name) == nullptr) return true;
        if (!ReadLong(object, name, number)) return false;
        out = number;
        return true;
    }

    template <typename T, std::size_t kCount>
    bool ReadWord(const JSONValue& object, std::string_view name, const std::array<std::string_view, kCount>& words,
                  T& out) {
        std::string word;
        if (!ReadText(object, name, word)) return false;
        const auto found = FindWord(words, word);
        if (!found) return Fail(FormatText("unknown %s '%s'", name, word));
        out = static_cast<T>(*found);
        return true;
    }

    bool ReadElementary(const JSONValue& object, std::string_view name, ElementaryType& out) {
        std::string text;
        if (!ReadText(object, name, text)) return false;
        const int code = FindTypeCode(text);
        out = static_cast<ElementaryType>(code);
        return (code > 0 && GetTypeInfo(out).type == out) || Fail(FormatText("unknown type '%s'", text));
    }

    bool ReadEnum(const JSONValue& element) {
        auto enumeration = std::make_shared<SymbolEnum>();
        if (!ReadName(element, enumeration->name) || !ReadElementary(element, "base", enumeration->base)) return false;
        if (GetTypeInfo(enumeration->base).size == 0) return Fail("an enumeration needs a base of fixed size");
        const JSONValue* values = element.Find("values");
        if (values == nullptr) return Fail("'values' is missing");
        for (const JSONValue& value : values->GetElements()) {
            SymbolEnum::Value& entry = enumeration->values.emplace_back();
            if (!ReadName(value, entry.name) || !ReadLong(value, "value", entry.number)) return false;
        }
        const std::string name = enumeration->name;
        return structs_.Add(std::move(enumeration)) || Fail(FormatText("'%s' is there twice", name));
    }

    bool ReadLocal(const JSONValue& element, SymbolPou& pou) {
        SymbolLocal& local = pou.variables.emplace_back();
        return ReadName(element, local.name) && ReadWord(element, "place", symbolmap::kPlaceNames, local.place) &&
               ReadNumber(element, "offset", local.offset) &&
               (local.place != SymbolLocal::Place::Tag || ReadNumber(element, "tag", local.tagId)) &&
               ReadTypeText(element, local.type);
    }

    bool ReadPou(const JSONValue& element) {
        SymbolPou pou;
        if (!ReadWord(element, "kind", symbolmap::kPouKindNames, pou.kind) || !ReadText(element, "name", pou.name) ||
            !ReadNumber(element, "offset", pou.codeOffset) || !ReadNumber(element, "size", pou.codeSize))
            return false;
        if (element.Find("line") != nullptr &&
            (!ReadNumber(element, "line", pou.line) || !ReadNumber(element, "file", pou.file)))
            return false;
        if (pou.line != 0 && pou.file >= map_.GetFiles().size()) return Fail("there is no such file");
        const auto& before = map_.GetPous();
        if (!before.empty() && before.back().codeOffset > pou.codeOffset) return Fail("the code offsets do not ascend");
        if (const JSONValue* variables = element.Find("variables"); variables != nullptr) {
            for (const JSONValue& variable : variables->GetElements()) {
                if (!ReadLocal(variable, pou)) return false;
            }
        }
        map_.AddPou(std::move(pou));
        return true;
    }

    bool ReadTask(const JSONValue& element) {
        SymbolTask task;
        if (!ReadName(element, task.name) || !ReadLong(element, "interval", task.intervalMs) ||
            !ReadLong(element, "priority", task.priority))
            return false;
        if (element.Find("single") != nullptr && !ReadText(element, "single", task.single)) return false;
        if (const JSONValue* programs = element.Find("programs"); programs != nullptr) {
            for (const JSONValue& program : programs->GetElements()) {
                if (!program.IsString()) return Fail("'programs': a text expected");
                task.programs.push_back(program.GetString());
            }
        }
        map_.AddTask(std::move(task));
        return true;
    }

    bool ReadRetained(const JSONValue& element) {
        SymbolRetained retained;
        if (!ReadText(element, "name", retained.name) || !ReadNumber(element, "offset", retained.offset) ||
            !ReadNumber(element, "size", retained.size) ||
            !ReadWord(element, "kind", symbolmap::kRetainedNames, retained.isPersistent))
            return false;
        if (retained.size > kHighest32 - retained.offset) return Fail("the range leaves the memory");
        map_.AddRetained(std::move(retained));
        return true;
    }

    bool ReadTag(const JSONValue& element) {
        SymbolTag tag;
        if (!ReadText(element, "address", tag.address) || !ReadNumber(element, "tag", tag.tagId) ||
            !ReadNumber(element, "offset", tag.offset) || !ReadTypeText(element, tag.type))
            return false;
        const JSONValue* readOnly = element.Find("readonly");
        tag.isReadOnly = readOnly != nullptr && readOnly->GetBoolean();
        map_.AddTag(std::move(tag));
        return true;
    }

    CSymbolMap& map_;
    std::string& error_;
    CStructTable structs_;
};

}  // namespace

bool CSymbolMap::Load(std::string_view text, std::string& error) {
    Clear();
    CFirstLine log;
    JSONParseContext context(text, log);
    JSONValue root;
    if (!root.Parse(context)) {
        error = log.GetLine();
        return false;
    }
    if (CMapReader(*this, error).Read(root)) return true;
    Clear();
    return false;
}
