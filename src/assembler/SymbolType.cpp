#include "assembler/SymbolType.h"

#include <algorithm>
#include <limits>

#include "functions/FunctionTable.h"
#include "platform/FormatText.h"
#include "value/VMTypeValue.h"
#include "value/ValueType.h"

namespace {

constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();

std::uint64_t MultiplySaturated(std::uint64_t left, std::uint64_t right) noexcept {
    if (left != 0 && right > kMost / left) return kMost;
    return left * right;
}

char FoldCase(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The instance data of a function block of the library.
std::shared_ptr<const SymbolStruct> MakeBlockStruct(const BlockRow& row) {
    auto structure = std::make_shared<SymbolStruct>();
    structure->name = row.name;
    structure->size = row.dataSize;
    structure->members.reserve(row.fields.size());
    for (const BlockField& field : row.fields) {
        structure->members.push_back({field.name, field.offset, SymbolType::MakeElementary(field.type)});
    }
    return structure;
}

std::vector<std::shared_ptr<const SymbolStruct>> MakeBlockStructs() {
    std::vector<std::shared_ptr<const SymbolStruct>> structs;
    for (const BlockGroup& group : GetBlockGroups()) {
        structs.reserve(structs.size() + group.rows.size());
        for (const BlockRow& row : group.rows)
            structs.push_back(MakeBlockStruct(row));
    }
    return structs;
}

}  // namespace

bool IsSameName(std::string_view left, std::string_view right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return FoldCase(a) == FoldCase(b); });
}

std::string FoldName(std::string_view name) {
    std::string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(), FoldCase);
    return folded;
}

SymbolType SymbolType::MakeElementary(ElementaryType type) {
    SymbolType result;
    result.elementary = type;
    return result;
}

SymbolType SymbolType::MakeString(ElementaryType type, std::uint16_t length) {
    SymbolType result = MakeElementary(type);
    result.length = length;
    return result;
}

SymbolType SymbolType::MakeArray(std::vector<Range> dimensions, SymbolType element) {
    SymbolType result;
    result.dimensions = std::move(dimensions);
    result.element = std::make_shared<const SymbolType>(std::move(element));
    return result;
}

SymbolType SymbolType::MakeStruct(std::shared_ptr<const SymbolStruct> structure) {
    SymbolType result;
    result.structure = std::move(structure);
    return result;
}

SymbolType SymbolType::MakeEnum(std::shared_ptr<const SymbolEnum> enumeration) {
    SymbolType result = MakeElementary(enumeration->base);
    result.enumeration = std::move(enumeration);
    return result;
}

const std::string* SymbolEnum::FindName(std::int64_t number) const noexcept {
    const auto found =
        std::find_if(values.begin(), values.end(), [number](const Value& value) { return value.number == number; });
    return found == values.end() ? nullptr : &found->name;
}

std::uint64_t SymbolType::GetElementCount() const noexcept {
    std::uint64_t count = 1;
    for (const Range& range : dimensions) {
        const auto extent = static_cast<std::int64_t>(range.upper) - range.lower + 1;
        count = MultiplySaturated(count, extent > 0 ? static_cast<std::uint64_t>(extent) : 0);
    }
    return count;
}

std::uint64_t SymbolType::GetSize() const noexcept {
    if (IsArray()) return MultiplySaturated(GetElementCount(), element->GetSize());
    if (IsStruct()) return structure->size;
    return CVMTypeValue{static_cast<std::uint8_t>(elementary), length}.GetBufferSize();
}

std::uint32_t SymbolType::GetDepth() const noexcept {
    if (IsArray()) return element->GetDepth() + 1;
    return IsStruct() ? structure->depth : 0;
}

std::string SymbolType::GetText() const {
    if (IsStruct()) return structure->name;
    if (IsEnum()) return enumeration->name;
    if (!IsArray()) {
        const char* name = CValueType(elementary).GetTypeName(false);
        return IsString() ? FormatText("%s[%u]", name, length) : std::string(name);
    }
    std::string text = "ARRAY[";
    for (const Range& range : dimensions) {
        if (text.back() != '[') text += ',';
        text += FormatText("%d..%d", range.lower, range.upper);
    }
    return text + "] OF " + element->GetText();
}

const SymbolMember* SymbolStruct::FindMember(std::string_view memberName) const noexcept {
    const auto found = std::find_if(members.begin(), members.end(), [memberName](const SymbolMember& member) {
        return IsSameName(member.name, memberName);
    });
    return found == members.end() ? nullptr : &*found;
}

std::shared_ptr<const SymbolStruct> FindStandardBlockStruct(std::string_view name) {
    static const auto kStructs = MakeBlockStructs();
    for (const auto& structure : kStructs) {
        if (IsSameName(structure->name, name)) return structure;
    }
    return nullptr;
}
