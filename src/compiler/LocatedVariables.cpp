#include "compiler/LocatedVariables.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "assembler/SymbolType.h"

namespace tn61131::st {

namespace {

constexpr std::string_view kAreas = "IQM";

struct Width {
    char letter;
    ElementaryType type;
};
constexpr Width kWidths[] = {{'X', ElementaryType::Bool},
                             {'B', ElementaryType::Byte},
                             {'W', ElementaryType::Word},
                             {'D', ElementaryType::DWord},
                             {'L', ElementaryType::LWord}};

ElementaryType TypeOfWidth(char letter) noexcept {
    for (const Width& width : kWidths) {
        if (width.letter == letter) return width.type;
    }
    return ElementaryType::Undefined;
}

char ToUpper(char c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// "3" or "0.1.2"; false for anything else.
bool ParseNumbers(std::string_view text, std::vector<std::uint32_t>& out) {
    for (;;) {
        std::uint32_t number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc{}) return false;
        out.push_back(number);
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        if (text.empty()) return true;
        if (text.front() != '.') return false;
        text.remove_prefix(1);
    }
}

}  // namespace

LocatedVariables::LocatedVariables(Project& project) : project_(project) {
    for (const TagSymbol& tag : project.options.tags) {
        tags_.emplace(tag.address, &tag);
        folded_.emplace(FoldName(tag.address), &tag);
    }
}

const TagSymbol* LocatedVariables::FindTag(const ast::LocatedExpr& located) const {
    // The address of a host is taken as written; those of the language are identifiers.
    const auto& tags = located.quoted ? tags_ : folded_;
    const auto found = tags.find(located.quoted ? std::string(located.address) : FoldName(located.address));
    return found == tags.end() ? nullptr : found->second;
}

bool LocatedVariables::IsOpen(const ast::LocatedExpr& located) noexcept {
    return !located.quoted && located.address.ends_with('*');
}

bool LocatedVariables::Parse(const ast::LocatedExpr& located, Address& out) const {
    const auto fail = [&](DiagnosticCode code) {
        project_.diagnostics.Report(code, located.range, {project_.sources.GetText(located.range)});
        return false;
    };
    if (located.quoted) return fail(DiagnosticCode::UnknownAddress);
    std::string_view text = located.address;
    if (text.empty()) return fail(DiagnosticCode::BadAddress);
    out.area = kAreas.find(ToUpper(text.front()));
    if (out.area == std::string_view::npos) return fail(DiagnosticCode::BadAddress);
    text.remove_prefix(1);
    out.width = 'X';
    if (!text.empty() && TypeOfWidth(ToUpper(text.front())) != ElementaryType::Undefined) {
        out.width = ToUpper(text.front());
        text.remove_prefix(1);
    }
    return ParseNumbers(text, out.parts) || fail(DiagnosticCode::BadAddress);
}

std::uint16_t LocatedVariables::GetStringLength(const TagSymbol* tag) const {
    return tag == nullptr || tag->length == 0 ? project_.options.switches.stringLength : tag->length;
}

Variable* LocatedVariables::Resolve(const ast::LocatedExpr& located) {
    std::string key = located.quoted ? '"' + std::string(located.address) : FoldName(std::string(located.address));
    if (const auto found = byAddress_.find(key); found != byAddress_.end()) return found->second;
    const TagSymbol* const tag = FindTag(located);
    Address address;
    if ((tag == nullptr || tag->type == ElementaryType::Undefined) && !Parse(located, address)) return nullptr;
    const ElementaryType type =
        tag != nullptr && tag->type != ElementaryType::Undefined ? tag->type : TypeOfWidth(address.width);
    Variable& variable = project_.variables.emplace_back();
    variable.name = project_.names.Intern(project_.sources.GetText(located.range));
    variable.declared = located.range;
    const bool isString = type == ElementaryType::String || type == ElementaryType::WString;
    variable.type = isString ? project_.types.String(type, GetStringLength(tag)) : project_.types.Elementary(type);
    variable.section = ast::VarSection::Global;
    if (tag != nullptr) {
        PlaceOnTag(variable, located, *tag);
    } else {
        PlaceInArea(variable, located, address);
    }
    byAddress_.emplace(std::move(key), &variable);
    return &variable;
}

void LocatedVariables::Place(Variable& variable, const ast::LocatedExpr& located) {
    if (variable.type->kind == TypeKind::Error) return;
    if (const TagSymbol* tag = FindTag(located)) {
        PlaceOnTag(variable, located, *tag);
        return;
    }
    Address address;
    if (Parse(located, address)) PlaceInArea(variable, located, address);
}

void LocatedVariables::PlaceOnTag(Variable& variable, const ast::LocatedExpr& located, const TagSymbol& tag) {
    const Type* const plain = Strip(variable.type);
    // A shorter text than the host's fits; a longer one would leave the tag.
    const bool isLonger = plain->kind == TypeKind::String && tag.length != 0 &&
                          static_cast<const StringType&>(*plain).capacity > tag.length;
    if (tag.type != ElementaryType::Undefined && (variable.type->storage != tag.type || isLonger)) {
        std::string tagType = GetTypeInfo(tag.type).name;
        if (tag.length != 0) tagType += "[" + std::to_string(tag.length) + "]";
        project_.diagnostics.Report(DiagnosticCode::AddressTypeDiffers, located.range,
                                    {GetTypeText(project_.names, variable.type), tag.address, tagType});
    }
    if (variable.declaration != nullptr && variable.declaration->initial != nullptr) {
        project_.diagnostics.Report(DiagnosticCode::InitialIgnored, variable.declaration->initial->range,
                                    {project_.names.GetSpelling(variable.name), tag.address});
    }
    variable.isReadOnly = tag.readOnly;
    variable.storage = {.kind = StorageKind::Tag, .offset = tag.offset, .tagId = tag.tagId};
}

void LocatedVariables::PlaceInArea(Variable& variable, const ast::LocatedExpr& located, const Address& address) {
    if (address.width == 'X' && variable.type->storage != ElementaryType::Bool) {
        project_.diagnostics.Report(
            DiagnosticCode::AddressTypeDiffers, located.range,
            {GetTypeText(project_.names, variable.type), project_.sources.GetText(located.range), "BOOL"});
        return;
    }
    Area& area = areas_[address.area];
    if (address.width == 'X' || address.parts.size() > 1) {
        Cell& cell = area.cells[{address.width, address.parts}];
        cell.size = std::max(cell.size, variable.type->size);
        cell.uses.push_back({&variable, located.range, 0});
        return;
    }
    const std::uint64_t offset = std::uint64_t{address.parts.front()} * GetTypeInfo(TypeOfWidth(address.width)).size;
    if (offset + variable.type->size > kMaxAreaSize) {
        project_.diagnostics.Report(DiagnosticCode::AddressTooHigh, located.range,
                                    {located.address, std::to_string(kMaxAreaSize)});
        return;
    }
    area.size = std::max(area.size, static_cast<std::uint32_t>(offset) + variable.type->size);
    area.uses.push_back({&variable, located.range, static_cast<std::uint32_t>(offset)});
}

void LocatedVariables::WarnOfOverlap(const Area& area) const {
    std::vector<bool> covered(area.size);
    for (const Use& use : area.uses) {
        std::fill_n(covered.begin() + use.offset, use.variable->type->size, true);
    }
    for (const auto& [address, cell] : area.cells) {
        const auto& [width, parts] = address;
        if (width != 'X' || parts.size() != 2 || parts[0] >= area.size || !covered[parts[0]]) continue;
        const std::string_view text = project_.sources.GetText(cell.uses.front().range);
        const std::string byte =
            std::string(1, text.size() > 1 ? ToUpper(text[1]) : '?') + "B" + std::to_string(parts[0]);
        project_.diagnostics.Report(DiagnosticCode::AddressOverlaps, cell.uses.front().range,
                                    {text.substr(text.empty() ? 0 : 1), byte});
    }
}

bool LocatedVariables::Layout() {
    std::uint64_t next = project_.globalData.size();
    const auto place = [&](const Use& use, std::uint64_t start) {
        use.variable->storage = {.kind = StorageKind::Global, .offset = static_cast<std::uint32_t>(start + use.offset)};
        placed_.push_back(use.variable);
    };
    for (const Area& area : areas_) {
        WarnOfOverlap(area);
        if (next > kMaxTypeSize) break;
        for (const Use& use : area.uses)
            place(use, next);
        next += area.size;
        for (const auto& [address, cell] : area.cells) {
            for (const Use& use : cell.uses)
                place(use, next);
            next += cell.size;
        }
    }
    if (next > kMaxTypeSize) {
        project_.diagnostics.Report(DiagnosticCode::MemoryTooLarge, {}, {std::to_string(kMaxTypeSize)});
        return false;
    }
    project_.globalData.resize(next);
    return true;
}

}  // namespace tn61131::st
