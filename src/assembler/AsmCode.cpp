#include "assembler/AsmCode.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/FormatText.h"
#include "platform/TextOutput.h"
#include "vm/Disassembler.h"

namespace {

constexpr std::size_t kColumnBytes = 8;

/// Hexadecimal digits, at most eight.
std::uint32_t HexNumber(std::string_view digits) {
    return static_cast<std::uint32_t>(std::stoul(std::string(digits), nullptr, 16));
}

}  // namespace

CAsmCode::CAsmCode(CSourceCursor& cursor, const CStructTable& structs, const CSymbolMap& globals, std::uint32_t maxSize)
    : cursor_(cursor), structs_(structs), globals_(globals), maxSize_(maxSize), rows_(MakeRows()) {}

bool CAsmCode::ReadLine() {
    if (cursor_.AtLineEnd()) return true;
    Columns columns;
    if (TakeColumns(columns)) return ReadListingLine(columns);
    if (TakeLabel() && cursor_.AtLineEnd()) return true;
    std::vector<unsigned char> bytes;
    if (cursor_.Take(".hex")) return ReadHexBytes(cursor_, bytes) && EmitBytes(bytes);
    if (cursor_.Take(".byte")) return ReadByteList(cursor_, bytes) && EmitBytes(bytes);
    return ReadInstruction();
}

// --- labels ---

/// Takes `name:`; a name that is taken already is reported.
bool CAsmCode::TakeLabel() {
    CSourceCursor ahead = cursor_;
    const SourcePlace place = ahead.Here();
    const std::string_view name = ahead.TakeIdentifier();
    if (name.empty() || !ahead.Take(":")) return false;
    DefineLabel(place, name);
    cursor_.MoveTo(ahead.Here());
    return true;
}

bool CAsmCode::DefineLabel(SourcePlace place, std::string_view name) {
    const auto offset = static_cast<std::uint32_t>(bytes_.size());
    const bool added = labels_.emplace(FoldName(name), Label{std::string(name), offset, false}).second;
    return added || cursor_.Fail(place, FormatText("label '%s' is defined already", name));
}

bool CAsmCode::ReadTarget(Target& out) {
    out.place = cursor_.Here();
    const std::string_view digits = cursor_.TakeHexDigits(4);
    if (digits.size() > 8) return cursor_.Fail(out.place, "the offset has more than eight digits");
    if (!digits.empty()) {
        out.label = digits;
        out.offset = HexNumber(digits);
        out.hasOffset = true;
        return true;
    }
    if (cursor_.PeekRest().substr(0, 3) == "16#") {
        out.hasOffset = true;
        return cursor_.ReadUnsigned("an offset", std::numeric_limits<std::uint32_t>::max(), out.offset);
    }
    return cursor_.ReadIdentifier("a label, or an offset in four or more hexadecimal digits,", out.label);
}

bool CAsmCode::Resolve(Target& target) {
    const auto label = labels_.find(FoldName(target.label));
    if (label != labels_.end()) {
        target.offset = label->second.offset;
    } else if (!target.hasOffset) {
        return cursor_.Fail(target.place, FormatText("there is no label '%s'", target.label));
    }
    return true;
}

void CAsmCode::UseTarget(Target target, std::size_t at, std::uint32_t base) {
    fixups_.push_back({std::move(target), at, base, false});
}

void CAsmCode::ResolveLabels() {
    for (Fixup& fixup : fixups_) {
        if (!Resolve(fixup.target)) continue;
        const std::uint32_t value = fixup.target.offset - fixup.base;
        unsigned char* operand = bytes_.data() + fixup.at;
        if (fixup.verify && std::memcmp(operand, &value, sizeof(value)) != 0)
            cursor_.Fail(fixup.target.place, "the label is not where the bytes of this line say");
        std::memcpy(operand, &value, sizeof(value));
        if (fixup.base == 0) callTargets_.insert(value);
    }
    fixups_.clear();
}

std::vector<CAsmCode::Label> CAsmCode::GetLabels() const {
    std::vector<Label> labels;
    for (const auto& [key, label] : labels_)
        labels.push_back({label.name, label.offset, callTargets_.count(label.offset) != 0});
    std::stable_sort(labels.begin(), labels.end(),
                     [](const Label& left, const Label& right) { return left.offset < right.offset; });
    return labels;
}

// --- lines of a listing: address, bytes, colon, text ---

bool CAsmCode::TakeColumns(Columns& columns) {
    CSourceCursor ahead = cursor_;
    columns.place = ahead.Here();
    const std::string_view address = ahead.TakeHexDigits(4);
    if (address.empty() || address.size() > 8) return false;
    columns.address = HexNumber(address);
    if (!TakeColumnBytes(ahead, columns.bytes)) return false;
    while (!ahead.Take(":")) {
        const bool fullLine = columns.bytes.size() % kColumnBytes == 0 && ahead.AtLineEnd();
        if (!fullLine || !ahead.NextLine() || !TakeColumnBytes(ahead, columns.bytes)) return false;
    }
    cursor_.MoveTo(ahead.Here());
    return true;
}

/// Pairs of digits, one to eight of them.
bool CAsmCode::TakeColumnBytes(CSourceCursor& cursor, std::vector<unsigned char>& bytes) const {
    std::size_t taken = 0;
    while (taken < kColumnBytes) {
        CSourceCursor ahead = cursor;
        const std::string_view digits = ahead.TakeHexDigits(2);
        if (digits.size() != 2) break;
        bytes.push_back(static_cast<unsigned char>(HexNumber(digits)));
        cursor.MoveTo(ahead.Here());
        ++taken;
    }
    return taken > 0 && bytes.size() <= maxSize_;
}

bool CAsmCode::ReadListingLine(const Columns& columns) {
    const SourcePlace textPlace = cursor_.Here();
    if (columns.address != bytes_.size())
        return cursor_.Fail(columns.place, FormatText("the line is for address %04X, but the code is at %04X",
                                                      columns.address, bytes_.size()));
    if (cursor_.PeekRest() != Disassemble(columns)) return CompareWithColumns(columns, textPlace);
    positions_.push_back({columns.address, textPlace});
    if (static_cast<Opcode>(columns.bytes.front()) == Opcode::Call) {
        std::uint32_t target = 0;
        std::memcpy(&target, &columns.bytes[2], sizeof(target));
        callTargets_.insert(target);
    }
    return EmitBytes(columns.bytes);
}

/// The text that a listing has for the bytes; empty when they are not exactly one instruction.
std::string CAsmCode::Disassemble(const Columns& columns) const {
    CTextOutputString output;
    CDisassembler disassembler(builtIns_, columns.address, &output);
    int wanted = disassembler.FirstByte(columns.bytes.front());
    std::size_t used = 1;
    while (wanted > 0 && static_cast<std::size_t>(wanted) <= columns.bytes.size() - used) {
        const auto count = static_cast<unsigned int>(wanted);
        wanted = disassembler.MoreBytes(columns.bytes.data() + used, count);
        used += count;
    }
    if (wanted != 0 || used != columns.bytes.size()) return {};
    std::string text = output.TakeText();
    // The last line of the columns has a fixed width, whatever the instruction.
    const std::size_t lines = (columns.bytes.size() - 1) / kColumnBytes;
    std::size_t lineStart = 0;
    for (std::size_t line = 0; line < lines; ++line)
        lineStart = text.find('\n', lineStart) + 1;
    text.erase(0, text.find(" : ", lineStart) + 3);
    text.erase(text.find_last_not_of(" \n") + 1);
    return text;
}

/// The text is not the one that a listing would have for the bytes: it must mean the same all the same.
bool CAsmCode::CompareWithColumns(const Columns& columns, SourcePlace textPlace) {
    const std::size_t start = bytes_.size();
    const std::size_t fixups = fixups_.size();
    const bool read = ReadInstruction();
    if (bytes_.size() - start == columns.bytes.size()) {
        for (std::size_t i = fixups; i < fixups_.size(); ++i) {
            fixups_[i].verify = true;
            std::copy_n(columns.bytes.begin() + static_cast<std::ptrdiff_t>(fixups_[i].at - start),
                        sizeof(std::uint32_t), bytes_.begin() + static_cast<std::ptrdiff_t>(fixups_[i].at));
        }
    } else {
        fixups_.resize(fixups);
    }
    const bool same = std::equal(bytes_.begin() + static_cast<std::ptrdiff_t>(start), bytes_.end(),
                                 columns.bytes.begin(), columns.bytes.end());
    bytes_.resize(start);
    const bool emitted = EmitBytes(columns.bytes);
    if (!read || !emitted) return false;
    return same || cursor_.Fail(textPlace, "the bytes of this line are another instruction than its text");
}

// --- output ---

bool CAsmCode::EmitBytes(const std::vector<unsigned char>& bytes) {
    if (bytes.size() > maxSize_ - bytes_.size())
        return cursor_.Fail(FormatText("the code is larger than %u bytes", maxSize_));
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return true;
}

bool CAsmCode::Emit(const OpcodeInfo& info, const Operands& operands, const std::vector<unsigned char>& data) {
    std::vector<unsigned char> instruction{static_cast<unsigned char>(info.code)};
    for (std::size_t i = 0; i < operands.size(); ++i) {
        for (unsigned int byte = 0; byte < OperandSize(info.operands[i]); ++byte)
            instruction.push_back(static_cast<unsigned char>(operands[i] >> (8 * byte)));
    }
    instruction.insert(instruction.end(), data.begin(), data.end());
    return EmitBytes(instruction);
}
