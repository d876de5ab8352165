#include "tools/HumanReport.h"

#include <algorithm>

#include "platform/ErrorLog.h"
#include "platform/FormatText.h"
#include "platform/TextOutput.h"
#include "tools/JsonWriter.h"
#include "vm/Disassembler.h"
#include "vm/Opcodes.h"
#include "vm/VirtualMachineExec.h"

namespace tn61131 {
namespace {

const char* ResultText(RunResult result) {
    switch (result) {
        case RunResult::Completed: return "completed";
        case RunResult::Suspended: return "still suspended";
        case RunResult::Failed: return "failed";
        case RunResult::Invalid: return "invalid code";
    }
    return "?";
}

std::string Declaration(const CValue& value) {
    CTextOutputString text;
    value.GetDeclaration(text);
    return PrintableText(text.GetText());
}

const char* LabelWord(SymbolLabel::Kind kind) {
    switch (kind) {
        case SymbolLabel::Kind::Function: return "function ";
        case SymbolLabel::Kind::Program: return "program ";
        case SymbolLabel::Kind::Expression: return "expression ";
        case SymbolLabel::Kind::CodeBlock: return "code block ";
        case SymbolLabel::Kind::Label: break;
    }
    return "";
}

/// The function or entry point that code belongs to: the last that begins at or before it.
const SymbolLabel* FindOwner(const CSymbolMap& map, unsigned int codeOffset) {
    const SymbolLabel* owner = nullptr;
    for (const SymbolLabel& label : map.GetLabels()) {
        if (label.kind == SymbolLabel::Kind::Label || label.codeOffset > codeOffset) continue;
        if (owner == nullptr || label.codeOffset > owner->codeOffset) owner = &label;
    }
    return owner;
}

}  // namespace

std::string PrintableText(std::string_view text) {
    std::string printable;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7F) {
            printable += FormatText("\\x%02X", static_cast<unsigned int>(byte));
        } else {
            printable += character;
        }
    }
    return printable;
}

std::string DescribeInstruction(const CVirtualMachine& machine, const CVirtualMachineExec& exec,
                                unsigned int codeOffset) {
    CTextOutputString listing;
    CDisassembler disassembler(exec.GetBuiltInFunctions(), codeOffset, &listing);
    const unsigned int length = machine.GetOpCodesLength();
    if (codeOffset >= length) return FormatText("%04X the end of the code", codeOffset);
    const unsigned char* code = machine.GetOpCodes() + codeOffset;
    unsigned int left = length - codeOffset;
    int wanted = disassembler.FirstByte(*code++);
    --left;
    while (wanted > 0 && static_cast<unsigned int>(wanted) <= left) {
        const auto count = static_cast<unsigned int>(wanted);
        wanted = disassembler.MoreBytes(code, count);
        code += count;
        left -= count;
    }
    if (wanted > 0) return FormatText("%04X an instruction that the end of the code cuts off", codeOffset);
    if (wanted < 0) return FormatText("%04X %s", codeOffset, disassembler.GetDisassemblerError());
    std::string text = listing.TakeText();
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    return text;
}

std::string DescribePlace(const CSymbolMap& map, unsigned int codeOffset) {
    std::string place;
    if (const SymbolLabel* owner = FindOwner(map, codeOffset)) place = "in " + (LabelWord(owner->kind) + owner->name);
    const SymbolPosition* position = map.FindPosition(codeOffset);
    if (position == nullptr || position->file >= map.GetFiles().size()) return place;
    if (!place.empty()) place += ", ";
    return place + map.GetFiles()[position->file] + ":" + std::to_string(position->line);
}

void HumanReport::Refused(const std::string& image, const std::vector<ImageError>& errors) {
    // The messages themselves go to standard error.
    output_ << PrintableText(image) << ": refused, " << errors.size()
            << (errors.size() == 1 ? " error\n" : " errors\n");
}

void HumanReport::Begin(const RunView& view) {
    output_ << PrintableText(view.image.GetPath()) << ": " << PrintableText(view.image.GetEntryName())
            << FormatText(" at %04X\n", view.image.GetEntryOffset());
    shown_.clear();
}

void HumanReport::Scan(const RunView& view, const ScanOutcome& outcome) {
    if (!options_.lastOnly) WriteScan(view, outcome);
}

void HumanReport::End(const RunView& view, const ScanSummary& summary) {
    if (options_.lastOnly && summary.last) WriteScan(view, *summary.last);
    if (const TagTable* tags = view.image.GetTags()) WriteTags(*tags);
    if (summary.scans != 1 || options_.time || summary.interrupted) {
        output_ << summary.scans << (summary.scans == 1 ? " scan" : " scans");
        if (summary.interrupted) output_ << ", interrupted";
        if (options_.time)
            output_ << FormatText(", %lld ns in the machine", static_cast<long long>(summary.nanoseconds));
        output_ << '\n';
    }
}

void HumanReport::WriteScan(const RunView& view, const ScanOutcome& outcome) {
    output_ << "scan " << outcome.number + 1 << " at " << outcome.timestampMS << " ms: " << ResultText(outcome.result);
    if (outcome.resumed > 0) output_ << ", resumed " << outcome.resumed << " times";
    output_ << ", value " << Declaration(view.exec.GetResultValue()) << '\n';
    WriteWatched(view);
    if (outcome.result != RunResult::Completed) WriteErrors(view);
}

void HumanReport::WriteErrors(const RunView& view) {
    for (const CErrorLog::Entry& entry : view.log.GetEntries()) {
        output_ << "  error " << entry.id << ": " << PrintableText(entry.text);
        if (!entry.location.empty()) output_ << " (" << PrintableText(entry.location) << ')';
        output_ << '\n';
    }
    WritePlace(view, "  at      ", view.exec.GetCurrentPC());
    WriteCallChain(view);
}

void HumanReport::WriteCallChain(const RunView& view) {
    constexpr unsigned int kShown = 20;  // a runaway recursion has thousands
    constexpr unsigned int kCallLength = kOpcodeTable[static_cast<std::size_t>(Opcode::Call)].FixedLength();
    const unsigned int depth = view.exec.GetCodeStackSize();
    for (unsigned int i = 0; i < std::min(depth, kShown); ++i) {
        const unsigned int returnOffset = view.exec.GetCodeStackReturnPC(static_cast<int>(depth - 1 - i));
        WritePlace(view, "  called  ", returnOffset - kCallLength);
    }
    if (depth > kShown) output_ << "  and " << depth - kShown << " calls more\n";
}

void HumanReport::WritePlace(const RunView& view, std::string_view label, unsigned int codeOffset) {
    output_ << label << DescribeInstruction(view.image.GetMachine(), view.exec, codeOffset);
    if (const CSymbolMap* map = view.image.GetMap()) {
        const std::string place = DescribePlace(*map, codeOffset);
        if (!place.empty()) output_ << "  " << PrintableText(place);
    }
    output_ << '\n';
}

void HumanReport::WriteWatched(const RunView& view) {
    for (const WatchedVariable& variable : view.watched) {
        CValue value;
        const bool known = ReadWatched(variable, view.image.GetWatchMemory(), value);
        std::string text = known ? Declaration(value) : std::string("(not there)");
        std::string& shown = shown_[variable.name];
        if (text == shown) continue;
        output_ << "  " << PrintableText(variable.name) << " = " << text << '\n';
        shown = std::move(text);
    }
}

void HumanReport::WriteTags(const TagTable& tags) {
    for (const auto& [id, bytes] : tags.GetTags())
        output_ << "tag " << id << " = " << HexText(bytes.GetVMData(), bytes.GetDataSize()) << '\n';
}

}  // namespace tn61131
