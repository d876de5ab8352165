#include "assembler/SymbolType.h"

#include <algorithm>
#include <array>
#include <limits>

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

using enum ElementaryType;

/// One field of a standard block's instance data; fields are packed in the order of the table.
struct Field {
    const char* name;
    ElementaryType type;
};

struct StandardBlock {
    const char* name;
    std::array<Field, 8> fields;
};

// Every block begins with EN and ENO. The edge fields of the counters and the last two of the timers are internal
// state.
constexpr std::array kStandardBlocks = {
    StandardBlock{"SR", {{{"S1", Bool}, {"R", Bool}, {"Q1", Bool}}}},
    StandardBlock{"RS", {{{"S", Bool}, {"R1", Bool}, {"Q1", Bool}}}},
    StandardBlock{"R_TRIG", {{{"CLK", Bool}, {"Q", Bool}, {"M", Bool}}}},
    StandardBlock{"F_TRIG", {{{"CLK", Bool}, {"Q", Bool}, {"M", Bool}}}},
    StandardBlock{"CTU",
                  {{{"EDGE", Bool}, {"CU", Bool}, {"M", Bool}, {"R", Bool}, {"PV", Int}, {"Q", Bool}, {"CV", Int}}}},
    StandardBlock{"CTD",
                  {{{"EDGE", Bool}, {"CD", Bool}, {"M", Bool}, {"LD", Bool}, {"PV", Int}, {"Q", Bool}, {"CV", Int}}}},
    StandardBlock{"TP", {{{"IN", Bool}, {"PT", Time}, {"Q", Bool}, {"ET", Time}, {"START", LInt}, {"M", Bool}}}},
    StandardBlock{"TON", {{{"IN", Bool}, {"PT", Time}, {"Q", Bool}, {"ET", Time}, {"START", LInt}, {"M", Bool}}}},
    StandardBlock{"TOF", {{{"IN", Bool}, {"PT", Time}, {"Q", Bool}, {"ET", Time}, {"START", LInt}, {"M", Bool}}}},
};

void AddField(SymbolStruct& structure, const Field& field) {
    structure.members.push_back({field.name, structure.size, SymbolType::MakeElementary(field.type)});
    structure.size += CValueType(field.type).GetSize();
}

std::shared_ptr<const SymbolStruct> MakeStandardStruct(const StandardBlock& block) {
    auto structure = std::make_shared<SymbolStruct>();
    structure->name = block.name;
    AddField(*structure, {"EN", Bool});
    AddField(*structure, {"ENO", Bool});
    for (const Field& field : block.fields) {
        if (field.name != nullptr) AddField(*structure, field);
    }
    return structure;
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
    static const auto kStructs = [] {
        std::vector<std::shared_ptr<const SymbolStruct>> structs;
        for (const StandardBlock& block : kStandardBlocks)
            structs.push_back(MakeStandardStruct(block));
        return structs;
    }();
    for (const auto& structure : kStructs) {
        if (IsSameName(structure->name, name)) return structure;
    }
    return nullptr;
}
