#include "assembler/ImageListing.h"

#include <algorithm>
#include <cstring>

#include "assembler/SourceCursor.h"
#include "platform/FormatText.h"
#include "platform/TextOutput.h"
#include "value/Value.h"
#include "vm/Disassembler.h"
#include "vm/Opcodes.h"

namespace {

constexpr std::size_t kDumpBytes = 16;

std::string QuoteText(const std::string& text) {
    CTextOutputString output;
    output.Print61131String(reinterpret_cast<const unsigned char*>(text.data()),
                            static_cast<unsigned int>(text.size()));
    return output.TakeText();
}

std::string FormatName(const std::string& name) {
    return IsIdentifier(name) ? name : QuoteText(name);
}

std::string FormatHex(std::span<const unsigned char> bytes) {
    std::string text;
    for (const unsigned char byte : bytes)
        text += FormatText(" %02X", byte);
    return text;
}

/// Lines of `.hex` with the offset and the characters behind them.
void WriteDump(std::span<const unsigned char> bytes, std::size_t firstOffset, CTextOutput& output) {
    for (std::size_t at = 0; at < bytes.size(); at += kDumpBytes) {
        const auto row = bytes.subspan(at, std::min(kDumpBytes, bytes.size() - at));
        std::string characters;
        for (const unsigned char byte : row)
            characters += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
        std::string hex = FormatHex(row);
        hex.resize(3 * kDumpBytes, ' ');
        output.Print("    .hex%s  ; %04X %s\n", hex, firstOffset + at, characters);
    }
}

bool IsCodeTarget(const SymbolLabel& label) noexcept {
    return label.kind == SymbolLabel::Kind::Label || label.kind == SymbolLabel::Kind::Function;
}

/// The path to the innermost part of a variable that begins at or before an offset in it, "" for the variable itself.
std::string FormatPart(const SymbolType& type, std::uint64_t offset) {
    if (type.IsStruct()) {
        const SymbolMember* best = nullptr;
        for (const SymbolMember& member : type.structure->members) {
            if (member.offset <= offset && offset - member.offset < member.type.GetSize()) best = &member;
        }
        return best == nullptr ? FormatText(" + %llu", offset)
                               : '.' + best->name + FormatPart(best->type, offset - best->offset);
    }
    if (type.IsArray() && type.element->GetSize() != 0) {
        const std::uint64_t size = type.element->GetSize();
        std::uint64_t index = offset / size;
        std::string indices;
        for (auto range = type.dimensions.rbegin(); range != type.dimensions.rend(); ++range) {
            const auto extent = static_cast<std::uint64_t>(std::int64_t{range->upper} - range->lower + 1);
            const std::int64_t number = range->lower + static_cast<std::int64_t>(index % extent);
            indices.insert(0, FormatText(indices.empty() ? "%lld" : "%lld,", number));
            index /= extent;
        }
        return '[' + indices + ']' + FormatPart(*type.element, offset % size);
    }
    return offset == 0 ? std::string() : FormatText(" + %llu", offset);
}

}  // namespace

CImageListing::CImageListing(const ImageContent& image, const CSymbolMap* symbols) : image_(image), symbols_(symbols) {
    CollectEntries();
    DecodeCode();
    NameLabels();
    IndexVariables();
}

// --- what is known before writing ---

void CImageListing::CollectEntries() {
    for (const ImageContent::Program& program : image_.programs)
        entries_[program.codeOffset].push_back("program " + FormatName(program.name));
    for (const ImageContent::Entry& entry : image_.expressions)
        entries_[entry.codeOffset].push_back(FormatText("expression %u", entry.id));
    for (const ImageContent::Entry& entry : image_.codeBlocks)
        entries_[entry.codeOffset].push_back(FormatText("code block %u", entry.id));
    for (const auto& [offset, names] : entries_)
        targets_.insert(offset);
    if (symbols_ == nullptr) return;
    for (const SymbolLabel& label : symbols_->GetLabels())
        targets_.insert(label.codeOffset);
}

std::uint32_t CImageListing::CodeWord(std::size_t at) const noexcept {
    std::uint32_t word = 0;
    std::memcpy(&word, image_.code.data() + at, sizeof(word));
    return word;
}

/// Decodes one instruction and returns its length. Where there is none, everything up to the next known target is
/// bytes.
std::uint32_t CImageListing::DecodeItem(std::uint32_t offset) {
    CTextOutputString output;
    CDisassembler disassembler(builtIns_, offset, &output);
    const std::span<const unsigned char> code = std::span(image_.code).subspan(offset);
    Item item{offset, 1, {}, {}};
    int wanted = disassembler.FirstByte(code[0]);
    while (wanted > 0 && static_cast<std::size_t>(wanted) <= code.size() - item.length) {
        const auto count = static_cast<unsigned int>(wanted);
        wanted = disassembler.MoreBytes(&code[item.length], count);
        item.length += count;
    }
    if (wanted == 0) {
        item.text = output.TakeText();
        item.text.erase(item.text.find_last_not_of("\r\n") + 1);
        AddTarget(item);
    } else {
        item.error = wanted < 0 ? disassembler.GetDisassemblerError() : "the code ends inside this instruction";
        const auto next = targets_.upper_bound(offset);
        const auto end = static_cast<std::uint32_t>(image_.code.size());
        item.length = std::min(next == targets_.end() ? end : *next, end) - offset;
    }
    items_.push_back(std::move(item));
    return items_.back().length;
}

void CImageListing::AddTarget(const Item& item) {
    const auto code = static_cast<Opcode>(image_.code[item.offset]);
    if (code >= Opcode::Jump && code <= Opcode::JumpUndefined) {
        targets_.insert(CodeWord(item.offset + 1) + item.offset + item.length);
    } else if (code == Opcode::Call) {
        targets_.insert(CodeWord(item.offset + 2));
    }
}

void CImageListing::DecodeCode() {
    for (std::size_t offset = 0; offset < image_.code.size();)
        offset += DecodeItem(static_cast<std::uint32_t>(offset));
}

/// Every target at the start of an item, or at the end of the code, gets a label: the map's name, or one made from the
/// offset.
void CImageListing::NameLabels() {
    std::set<std::string> taken;
    std::map<std::uint32_t, std::string> names;
    if (symbols_ != nullptr) {
        for (const SymbolLabel& label : symbols_->GetLabels()) {
            if (!IsCodeTarget(label) || !IsIdentifier(label.name) || names.count(label.codeOffset) != 0) continue;
            if (taken.insert(FoldName(label.name)).second) names.emplace(label.codeOffset, label.name);
        }
    }
    const auto add = [&](std::uint32_t offset) {
        if (targets_.count(offset) == 0) return;
        std::string name = names.count(offset) != 0 ? names[offset] : FormatText("L_%04X", offset);
        while (names.count(offset) == 0 && !taken.insert(FoldName(name)).second)
            name += '_';
        labels_.emplace(offset, std::move(name));
    };
    for (const Item& item : items_)
        add(item.offset);
    add(static_cast<std::uint32_t>(image_.code.size()));
}

void CImageListing::IndexVariables() {
    if (symbols_ == nullptr) return;
    for (const SymbolVariable& variable : symbols_->GetVariables())
        variables_.emplace(std::tuple(variable.location, variable.tagId, variable.offset), &variable);
}

// --- writing ---

void CImageListing::Write(CTextOutput& output) const {
    WriteHeader(output);
    WriteStructs(output);
    WriteBlock(".global", image_.globalData, LocationKind::Global, output);
    if (image_.HasConstants()) WriteBlock(".constant", image_.constants, LocationKind::GlobalConstant, output);
    WriteTags(output);
    WriteTables(output);
    WriteCode(output);
}

void CImageListing::WriteHeader(CTextOutput& output) const {
    output.Print(".version %u\n", image_.version);
    if (image_.build) {
        const CBuildIdentity& build = *image_.build;
        output.Print(".build %s %u.%u.%u.%u %lld %s\n", QuoteText(build.product), build.major, build.minor, build.build,
                     build.revision, build.buildTime, QuoteText(build.sourceRevision));
    }
    if (image_.HasObsoleteWord() && image_.obsoleteWord != 0) output.Print(".obsolete %d\n", image_.obsoleteWord);
}

void CImageListing::WriteStructs(CTextOutput& output) const {
    if (symbols_ == nullptr) return;
    for (const SymbolStruct* structure : symbols_->CollectStructs()) {
        const auto standard = FindStandardBlockStruct(structure->name);
        if (standard != nullptr && standard->size == structure->size) continue;
        output.Print("\n.struct %s %u\n", structure->name, structure->size);
        for (const SymbolMember& member : structure->members)
            output.Print("    %s AT %u : %s\n", member.name, member.offset, member.type.GetText());
    }
}

void CImageListing::WriteTags(CTextOutput& output) const {
    const auto first = variables_.lower_bound(std::tuple(LocationKind::Tag, 0U, 0U));
    bool any = false;
    for (auto at = first; at != variables_.end() && at->second->location == LocationKind::Tag; ++at) {
        if (!any) output.Write("\n.tag\n");
        any = true;
        const SymbolVariable& tag = *at->second;
        output.Print("    %s%s%s AT %u.%u : %s\n", tag.scope, tag.scope.empty() ? "" : ".", tag.name, tag.tagId,
                     tag.offset, tag.type.GetText());
    }
}

void CImageListing::WriteBlock(const char* directive, const ImageContent::Block& block, LocationKind location,
                               CTextOutput& output) const {
    const bool intact = block.guard == ImageContent::kIntactGuard;
    output.Print("\n%s %u  ; bytes, guard %s\n", directive, block.data.size(), intact ? "intact" : "damaged");
    WriteDump(block.data, 0, output);
    if (!intact) output.Print("    .guard%s\n", FormatHex(block.guard));
    const auto first = variables_.lower_bound(std::tuple(location, 0U, 0U));
    for (auto at = first; at != variables_.end() && at->second->location == location; ++at)
        WriteVariable(*at->second, block, output);
}

/// A declaration; as a comment where it would not read back.
void CImageListing::WriteVariable(const SymbolVariable& variable, const ImageContent::Block& block,
                                  CTextOutput& output) const {
    const std::uint64_t size = variable.type.GetSize();
    const bool inside = size <= block.data.size() && variable.offset <= block.data.size() - size;
    const bool named = IsIdentifier(variable.name) && (variable.scope.empty() || IsIdentifier(variable.scope));
    output.Print("    %s%s%s%s AT %u : %s", inside && named ? "" : "; ", variable.scope,
                 variable.scope.empty() ? "" : ".", variable.name, variable.offset, variable.type.GetText());
    CValue value;
    std::string error;
    const SymbolReference reference{variable.location, 0, variable.offset, variable.type};
    if (CSymbolMap::ReadValue(reference, block.data, value, error)) {
        output.Write("  ; ");
        value.GetDeclaration(output);
    }
    output.Write("\n");
}

void CImageListing::WriteTables(CTextOutput& output) const {
    output.Write("\n");
    for (const ImageContent::Program& program : image_.programs)
        output.Print(".program %s %s %u\n", FormatName(program.name), FormatTarget(program.codeOffset),
                     program.secondWord);
    for (const ImageContent::Entry& entry : image_.expressions)
        output.Print(".expression %u %s\n", entry.id, FormatTarget(entry.codeOffset));
    for (const ImageContent::Entry& entry : image_.codeBlocks)
        output.Print(".codeblock %u %s\n", entry.id, FormatTarget(entry.codeOffset));
}

void CImageListing::WriteCode(CTextOutput& output) const {
    output.Print("\n.code  ; %u bytes\n", image_.code.size());
    for (const Item& item : items_) {
        WriteLabel(item.offset, output);
        WriteItem(item, output);
    }
    WriteLabel(static_cast<std::uint32_t>(image_.code.size()), output);
}

void CImageListing::WriteLabel(std::uint32_t offset, CTextOutput& output) const {
    const auto label = labels_.find(offset);
    if (label == labels_.end()) return;
    output.Print("%s:", label->second);
    const auto entry = entries_.find(offset);
    if (entry != entries_.end()) {
        for (std::size_t i = 0; i < entry->second.size(); ++i)
            output.Print("%s%s", i == 0 ? "  ; " : ", ", entry->second[i]);
    }
    output.Write("\n");
}

void CImageListing::WriteItem(const Item& item, CTextOutput& output) const {
    if (item.error.empty()) {
        const std::string note = FormatNote(item);
        output.Print("%s%s%s\n", item.text, note.empty() ? "" : "  ; ", note);
        return;
    }
    output.Print("    ; %s\n", item.error);
    WriteDump(std::span(image_.code).subspan(item.offset, item.length), item.offset, output);
}

std::string CImageListing::FormatTarget(std::uint32_t offset) const {
    const auto label = labels_.find(offset);
    return label == labels_.end() ? FormatText("16#%X", offset) : label->second;
}

/// The names of what an instruction refers to.
std::string CImageListing::FormatNote(const Item& item) const {
    const std::size_t at = item.offset;
    switch (static_cast<Opcode>(image_.code[at])) {
        case Opcode::Jump:
        case Opcode::JumpZero:
        case Opcode::JumpNotZero:
        case Opcode::JumpUndefined: return FormatTarget(CodeWord(at + 1) + item.offset + item.length);
        case Opcode::Call: return FormatTarget(CodeWord(at + 2));
        case Opcode::LoadAddr:
            return FormatVariableAt(static_cast<LocationKind>(image_.code[at + 1]), 0, CodeWord(at + 2));
        case Opcode::LoadTagAddr:
            return FormatVariableAt(LocationKind::Tag, CodeWord(at + 3), CodeWord(at + 1) & 0xFFFFU);
        default: return {};
    }
}

std::string CImageListing::FormatVariableAt(LocationKind location, std::uint32_t tagId, std::uint32_t offset) const {
    auto above = variables_.upper_bound(std::tuple(location, tagId, offset));
    if (above == variables_.begin()) return {};
    const SymbolVariable& variable = *std::prev(above)->second;
    const std::uint64_t inside = offset - variable.offset;
    if (variable.location != location || variable.tagId != tagId || inside >= variable.type.GetSize()) return {};
    const std::string scope = variable.scope.empty() ? "" : variable.scope + '.';
    return scope + variable.name + FormatPart(variable.type, inside);
}
