#include "tools/HumanReport.h"

#include <algorithm>

#include "platform/FormatText.h"
#include "platform/TextOutput.h"
#include "tools/Describe.h"
#include "tools/JsonWriter.h"
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

/// A value of an enumeration by its name where it has one, "Color#RED"; else as a declaration.
std::string ValueText(const SymbolType& type, const CValue& value) {
    const std::string* name = CSymbolMap::FindValueName(type, value);
    return name == nullptr ? Declaration(value) : PrintableText(type.GetText() + "#" + *name);
}

}  // namespace

void HumanReport::Refused(const std::string& image, const std::vector<ImageError>& errors) {
    output_.flush();
    for (const ImageError& error : errors)
        WriteMessage(messages_, image, error);
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
    output_.flush();
    WriteRunMessages(messages_, view.image.GetPath(), view.log);
    WritePlace(view, "  at      ", view.exec.GetCurrentPC());
    WriteCallChain(view);
}

void HumanReport::WriteCallChain(const RunView& view) {
    constexpr unsigned int kShown = 20;  // a runaway recursion has thousands
    const unsigned int depth = view.exec.GetCodeStackSize();
    for (unsigned int i = 0; i < std::min(depth, kShown); ++i) {
        const unsigned int returnOffset = view.exec.GetCodeStackReturnPC(static_cast<int>(depth - 1 - i));
        WritePlace(view, "  called  ", returnOffset - kCallLength);
    }
    if (depth > kShown) messages_ << "  and " << depth - kShown << " calls more\n";
}

void HumanReport::WritePlace(const RunView& view, std::string_view label, unsigned int codeOffset) {
    messages_ << label << DescribeInstruction(view.image.GetMachine(), view.exec, codeOffset);
    if (const CSymbolMap* map = view.image.GetMap()) {
        const std::string place = DescribePlace(*map, codeOffset);
        if (!place.empty()) messages_ << "  " << PrintableText(place);
    }
    messages_ << '\n';
}

void HumanReport::WriteWatched(const RunView& view) {
    for (const WatchedVariable& variable : view.watched) {
        CValue value;
        const bool known = ReadWatched(variable, view.image.GetWatchMemory(), value);
        std::string text = known ? ValueText(variable.reference.type, value) : std::string("(not there)");
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
