#include "tools/Describe.h"

#include <ostream>

#include "platform/ErrorLog.h"
#include "platform/FormatText.h"
#include "platform/TextOutput.h"
#include "vm/Disassembler.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace tn61131 {
namespace {

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

void WriteMessage(std::ostream& messages, const std::string& image, const ImageError& error) {
    if (!error.rendering.empty()) {
        messages << error.rendering;
        return;
    }
    messages << "tn61131: " << PrintableText(image) << ": ";
    if (error.id != 0) messages << "error " << error.id << ": ";
    if (!error.location.empty()) messages << PrintableText(error.location) << ": ";
    messages << PrintableText(error.text) << '\n';
}

void WriteRunMessages(std::ostream& messages, const std::string& image, const CErrorLog& log) {
    for (const CErrorLog::Entry& entry : log.GetEntries())
        WriteMessage(messages, image, {entry.id, entry.location, entry.text});
    if (log.GetEntries().empty()) WriteMessage(messages, image, {0, {}, "The run did not complete."});
}

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

CodePlace FindPlace(const CSymbolMap& map, unsigned int codeOffset) {
    CodePlace place;
    if (const SymbolLabel* owner = FindOwner(map, codeOffset)) place.owner = LabelWord(owner->kind) + owner->name;
    const SymbolPosition* position = map.FindPosition(codeOffset);
    if (position != nullptr && position->file < map.GetFiles().size()) {
        place.file = map.GetFiles()[position->file];
        place.line = position->line;
        place.column = position->column;
    }
    return place;
}

std::string DescribePlace(const CSymbolMap& map, unsigned int codeOffset) {
    const CodePlace place = FindPlace(map, codeOffset);
    std::string text = place.owner.empty() ? std::string() : "in " + place.owner;
    if (place.file.empty()) return text;
    if (!text.empty()) text += ", ";
    text += place.file + ":" + std::to_string(place.line);
    return place.column == 0 ? text : text + ":" + std::to_string(place.column);
}

}  // namespace tn61131
