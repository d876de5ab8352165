#include "tools/JsonReport.h"

#include <algorithm>

#include "platform/ErrorLog.h"
#include "platform/TextOutput.h"
#include "tools/Describe.h"
#include "vm/VirtualMachineExec.h"

namespace tn61131 {
namespace {

std::string Declaration(const CValue& value) {
    CTextOutputString text;
    value.GetDeclaration(text);
    return text.TakeText();
}

std::string BlockText(const CMemoryBlock& block) {
    return HexText(block.GetVMData(), block.GetDataSize());
}

}  // namespace

void JsonReport::Refused(const std::string& image, const std::vector<ImageError>& errors) {
    json_.BeginObject();
    json_.Member("image", image);
    WriteErrors(json_, errors);
    json_.EndObject();
    json_.EndLine();
    for (const ImageError& error : errors)
        WriteMessage(messages_, image, error);
}

void JsonReport::Begin(const RunView& view) {
    json_.BeginObject();
    json_.Member("image", view.image.GetPath());
    json_.Key("scans");
    json_.BeginArray();
}

void JsonReport::Scan(const RunView& view, const ScanOutcome& outcome) {
    if (!options_.lastOnly) WriteScan(view, outcome);
}

void JsonReport::End(const RunView& view, const ScanSummary& summary) {
    if (options_.lastOnly && summary.last) WriteScan(view, *summary.last);
    json_.EndArray();
    if (options_.lastOnly) json_.Member("count", summary.scans);
    if (options_.time) json_.Member("ns", static_cast<std::uint64_t>(summary.nanoseconds));
    json_.Member("global", BlockText(view.image.GetGlobalData()));
    if (const TagTable* tags = view.image.GetTags()) {
        json_.Key("tags");
        json_.BeginObject();
        for (const auto& [id, bytes] : tags->GetTags())
            json_.Member(std::to_string(id), BlockText(bytes));
        json_.EndObject();
    }
    json_.EndObject();
    json_.EndLine();
    if (!summary.AllCompleted()) WriteRunMessages(messages_, view.image.GetPath(), view.log);
}

void JsonReport::WriteScan(const RunView& view, const ScanOutcome& outcome) {
    json_.BeginObject();
    json_.Member("result", std::uint64_t{static_cast<std::uint32_t>(outcome.result)});
    json_.Member("resumed", std::uint64_t{outcome.resumed});
    json_.Member("value", Declaration(view.exec.GetResultValue()));
    json_.Member("pc", std::uint64_t{view.exec.GetCurrentPC()});
    json_.Key("calls");
    json_.BeginArray();
    for (unsigned int level = 0; level < view.exec.GetCodeStackSize(); ++level)
        json_.Number(std::uint64_t{view.exec.GetCodeStackReturnPC(static_cast<int>(level))});
    json_.EndArray();
    WriteErrors(json_, view.log.GetEntries());
    if (outcome.result != RunResult::Completed && view.image.GetMap() != nullptr) WritePlaces(view);
    if (!view.watched.empty()) WriteWatched(view);
    json_.EndObject();
}

/// The failing instruction, then the calls that led to it, innermost first.
void JsonReport::WritePlaces(const RunView& view) {
    constexpr unsigned int kMaxPlaces = 100;
    const unsigned int depth = view.exec.GetCodeStackSize();
    json_.Key("places");
    json_.BeginArray();
    WritePlace(FindPlace(*view.image.GetMap(), view.exec.GetCurrentPC()));
    for (unsigned int i = 0; i < std::min(depth, kMaxPlaces); ++i) {
        const unsigned int returnOffset = view.exec.GetCodeStackReturnPC(static_cast<int>(depth - 1 - i));
        WritePlace(FindPlace(*view.image.GetMap(), returnOffset - kCallLength));
    }
    json_.EndArray();
}

void JsonReport::WritePlace(const CodePlace& place) {
    json_.BeginObject();
    json_.Member("in", place.owner);
    json_.Member("file", place.file);
    json_.Member("line", std::uint64_t{place.line});
    json_.Member("column", std::uint64_t{place.column});
    json_.EndObject();
}

void JsonReport::WriteWatched(const RunView& view) {
    json_.Key("watch");
    json_.BeginObject();
    for (const WatchedVariable& variable : view.watched) {
        CValue value;
        json_.Key(variable.name);
        if (ReadWatched(variable, view.image.GetWatchMemory(), value)) {
            json_.String(Declaration(value));
        } else {
            json_.Null();
        }
    }
    json_.EndObject();
}

}  // namespace tn61131
