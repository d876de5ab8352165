#include "assembler/SymbolMap.h"

#include <algorithm>
#include <set>

#include "assembler/SourceCursor.h"
#include "platform/FormatText.h"
#include "value/CompositeValue.h"
#include "value/TypeTable.h"
#include "value/Value.h"
#include "vm/MemoryBlock.h"

namespace {

/// One step of a path behind the variable.
struct PathStep {
    std::string member;                 ///< empty for an index
    std::vector<std::int64_t> indices;  ///< one for each dimension
};

struct Path {
    std::string first;
    std::vector<PathStep> steps;
};

bool ReadIndices(CSourceCursor& cursor, std::vector<std::int64_t>& indices) {
    do {
        std::int64_t index = 0;
        if (!cursor.ReadInteger("an index", INT32_MIN, INT32_MAX, index)) return false;
        indices.push_back(index);
    } while (cursor.Take(","));
    return cursor.Expect("]");
}

bool ReadPath(CSourceCursor& cursor, Path& path) {
    if (!cursor.ReadIdentifier("a name", path.first)) return false;
    while (!cursor.AtLineEnd()) {
        PathStep& step = path.steps.emplace_back();
        if (cursor.Take("[")) {
            if (!ReadIndices(cursor, step.indices)) return false;
        } else if (!cursor.Expect(".") || !cursor.ReadIdentifier("a member", step.member)) {
            return false;
        }
    }
    return true;
}

bool ParsePath(std::string_view text, Path& path, std::string& error) {
    const std::vector<std::string> lines{std::string(text)};
    std::vector<SourceDiagnostic> diagnostics;
    CSourceCursor cursor(lines, diagnostics);
    if (ReadPath(cursor, path)) return true;
    error = diagnostics.front().text;
    return false;
}

bool StepIntoMember(const std::string& name, SymbolReference& reference, std::string& error) {
    const SymbolMember* member = reference.type.IsStruct() ? reference.type.structure->FindMember(name) : nullptr;
    if (member == nullptr) {
        error = FormatText("%s has no member '%s'", reference.type.GetText(), name);
        return false;
    }
    reference.offset += member->offset;
    const SymbolType type = member->type;
    reference.type = type;
    return true;
}

/// Takes as many dimensions as there are indices, so that `grid[1]` of two dimensions is a row.
bool StepIntoElement(const std::vector<std::int64_t>& indices, SymbolReference& reference, std::string& error) {
    const SymbolType array = reference.type;
    if (indices.size() > array.dimensions.size()) {
        error = FormatText("%s does not have %u dimension(s)", array.GetText(), indices.size());
        return false;
    }
    std::uint64_t position = 0;
    std::vector<SymbolType::Range> left;
    for (std::size_t i = 0; i < array.dimensions.size(); ++i) {
        const SymbolType::Range& range = array.dimensions[i];
        if (i >= indices.size()) left.push_back(range);
        if (i < indices.size() && (indices[i] < range.lower || indices[i] > range.upper)) {
            error = FormatText("index %lld is not in %d..%d", indices[i], range.lower, range.upper);
            return false;
        }
        const std::int64_t index = i < indices.size() ? indices[i] - range.lower : 0;
        position = position * static_cast<std::uint64_t>(std::int64_t{range.upper} - range.lower + 1) +
                   static_cast<std::uint64_t>(index);
    }
    reference.offset += static_cast<std::uint32_t>(position * array.element->GetSize());
    reference.type = left.empty() ? *array.element : SymbolType::MakeArray(left, *array.element);
    return true;
}

bool Resolve(const SymbolVariable& variable, std::span<const PathStep> steps, SymbolReference& out,
             std::string& error) {
    SymbolReference reference{variable.location, variable.tagId, variable.offset, variable.type};
    for (const PathStep& step : steps) {
        const bool found = step.member.empty() ? StepIntoElement(step.indices, reference, error)
                                               : StepIntoMember(step.member, reference, error);
        if (!found) return false;
    }
    out = std::move(reference);
    return true;
}

/// Reads elements that lie behind one another as a composite value.
void ReadArray(const SymbolReference& reference, const unsigned char* data, CValue& out) {
    const SymbolType* element = reference.type.element.get();
    std::uint64_t count = reference.type.GetElementCount();
    while (element->IsArray()) {
        count *= element->GetElementCount();
        element = element->element.get();
    }
    out.SetCompositeValue(new CCompositeValue(element->elementary, static_cast<unsigned int>(count), data));
}

/// Whether a type is an array whose innermost elements all have one fixed size.
bool IsPlainArray(const SymbolType& type) noexcept {
    const SymbolType* element = &type;
    while (element->IsArray())
        element = element->element.get();
    return type.IsArray() && GetTypeInfo(element->elementary).size != 0;
}

/// The structures that the variables use, each behind those that it is made of, and the enumerations.
class CStructCollector {
 public:
    explicit CStructCollector(const CSymbolMap& map) {
        for (const SymbolVariable& variable : map.GetVariables())
            Collect(variable.type);
        for (const SymbolPou& pou : map.GetPous()) {
            for (const SymbolLocal& variable : pou.variables)
                Collect(variable.type);
        }
    }
    void Collect(const SymbolType& type) {
        if (type.IsArray()) Collect(*type.element);
        if (type.IsEnum() && seen_.insert(FoldName(type.enumeration->name)).second)
            enums_.push_back(type.enumeration.get());
        if (!type.IsStruct() || !seen_.insert(FoldName(type.structure->name)).second) return;
        for (const SymbolMember& member : type.structure->members)
            Collect(member.type);
        structs_.push_back(type.structure.get());
    }
    [[nodiscard]] const std::vector<const SymbolStruct*>& GetStructs() const noexcept { return structs_; }
    [[nodiscard]] const std::vector<const SymbolEnum*>& GetEnums() const noexcept { return enums_; }

 private:
    std::set<std::string> seen_;
    std::vector<const SymbolStruct*> structs_;
    std::vector<const SymbolEnum*> enums_;
};

/// Orders the variables by name, then by scope; the separator is in no name.
std::string MakeKey(std::string_view scope, std::string_view name) {
    return FoldName(name) + '\n' + FoldName(scope);
}

}  // namespace

void CSymbolMap::AddVariable(SymbolVariable variable) {
    byName_.emplace(MakeKey(variable.scope, variable.name), variables_.size());
    variables_.push_back(std::move(variable));
}

bool CSymbolMap::AddUniqueVariable(SymbolVariable variable) {
    if (FindVariable(variable.scope, variable.name) != nullptr) return false;
    AddVariable(std::move(variable));
    return true;
}

std::uint32_t CSymbolMap::AddFile(std::string_view file) {
    const auto found = std::find(files_.begin(), files_.end(), file);
    const auto index = static_cast<std::uint32_t>(found - files_.begin());
    if (found == files_.end()) files_.emplace_back(file);
    return index;
}

void CSymbolMap::Clear() {
    *this = CSymbolMap();
}

const SymbolPosition* CSymbolMap::FindPosition(std::uint32_t codeOffset) const noexcept {
    const auto above = std::upper_bound(
        positions_.begin(), positions_.end(), codeOffset,
        [](std::uint32_t offset, const SymbolPosition& position) { return offset < position.codeOffset; });
    return above == positions_.begin() ? nullptr : &*(above - 1);
}

const SymbolVariable* CSymbolMap::FindVariable(std::string_view scope, std::string_view name) const {
    const auto found = byName_.find(MakeKey(scope, name));
    return found == byName_.end() ? nullptr : &variables_[found->second];
}

std::vector<const SymbolVariable*> CSymbolMap::FindTwoByName(std::string_view name) const {
    const std::string prefix = MakeKey("", name);
    std::vector<const SymbolVariable*> found;
    for (auto at = byName_.lower_bound(prefix); at != byName_.end() && at->first.starts_with(prefix); ++at) {
        found.push_back(&variables_[at->second]);
        if (found.size() == 2) break;
    }
    return found;
}

std::vector<const SymbolStruct*> CSymbolMap::CollectStructs() const {
    return CStructCollector(*this).GetStructs();
}

std::vector<const SymbolEnum*> CSymbolMap::CollectEnums() const {
    return CStructCollector(*this).GetEnums();
}

const SymbolPou* CSymbolMap::FindPou(std::uint32_t codeOffset) const noexcept {
    const auto above =
        std::upper_bound(pous_.begin(), pous_.end(), codeOffset,
                         [](std::uint32_t offset, const SymbolPou& pou) { return offset < pou.codeOffset; });
    if (above == pous_.begin()) return nullptr;
    const SymbolPou& pou = *(above - 1);
    return codeOffset - pou.codeOffset < pou.codeSize ? &pou : nullptr;
}

const std::string* CSymbolMap::FindValueName(const SymbolType& type, const CValue& value) noexcept {
    if (!type.IsEnum() || value.GetType() != type.elementary) return nullptr;
    const TypeInfo& info = GetTypeInfo(type.elementary);
    const unsigned int unused = 64U - info.size * 8U;
    const std::uint64_t shifted = value.GetPayload<std::uint64_t>() << unused;
    const bool isSigned = info.payload == PayloadKind::Signed;
    return type.enumeration->FindName(isSigned ? static_cast<std::int64_t>(shifted) >> unused
                                               : static_cast<std::int64_t>(shifted >> unused));
}

bool CSymbolMap::Find(std::string_view path, SymbolReference& out, std::string& error) const {
    Path parsed;
    if (!ParsePath(path, parsed, error)) return false;
    const std::span<const PathStep> steps = parsed.steps;
    const SymbolVariable* global = FindVariable("", parsed.first);
    if (global != nullptr && Resolve(*global, steps, out, error)) return true;
    if (!steps.empty() && !steps.front().member.empty()) {
        const SymbolVariable* scoped = FindVariable(parsed.first, steps.front().member);
        if (scoped != nullptr) return Resolve(*scoped, steps.subspan(1), out, error);
    }
    if (global != nullptr) return false;
    const std::vector<const SymbolVariable*> found = FindTwoByName(parsed.first);
    if (found.empty()) {
        error = FormatText("there is no variable '%s'", parsed.first);
        return false;
    }
    if (found.size() > 1) {
        error = FormatText("'%s' is in more than one scope: %s.%s, %s.%s", parsed.first, found[0]->scope,
                           found[0]->name, found[1]->scope, found[1]->name);
        return false;
    }
    return Resolve(*found[0], steps, out, error);
}

bool CSymbolMap::ReadValue(const SymbolReference& reference, std::span<const unsigned char> data, CValue& out,
                           std::string& error) {
    const SymbolType& type = reference.type;
    const bool plainArray = IsPlainArray(type);
    if (type.IsStruct() || (type.IsArray() && !plainArray)) {
        error = FormatText("%s has no value of its own", type.GetText());
        return false;
    }
    const std::uint64_t size = type.GetSize();
    if (size > data.size() || reference.offset > data.size() - size) {
        error = FormatText("the data ends before offset %u + %llu", reference.offset, size);
        return false;
    }
    const unsigned char* bytes = data.data() + reference.offset;
    if (plainArray) {
        ReadArray(reference, bytes, out);
        return true;
    }
    if (out.SetFromDataBytes(type.elementary, bytes, static_cast<unsigned int>(size))) return true;
    error = FormatText("%s has no value of its own", type.GetText());
    return false;
}

bool CSymbolMap::ReadValue(const SymbolReference& reference, const CMemoryBlock& block, CValue& out,
                           std::string& error) {
    return ReadValue(reference, std::span<const unsigned char>(block.GetVMData(), block.GetDataSize()), out, error);
}
