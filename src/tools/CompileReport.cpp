#include "tools/CompileReport.h"

#include <algorithm>
#include <ostream>
#include <string_view>

#include "tools/Describe.h"
#include "tools/JsonWriter.h"

namespace tn61131 {
namespace {

std::string_view SeverityName(st::Severity severity) {
    switch (severity) {
        case st::Severity::Error: return "error";
        case st::Severity::Warning: return "warning";
        case st::Severity::Hint: return "hint";
    }
    return "error";
}

std::size_t Count(const st::CompileResult& result, st::Severity severity) {
    return static_cast<std::size_t>(
        std::count_if(result.diagnostics.begin(), result.diagnostics.end(),
                      [&](const st::Diagnostic& diagnostic) { return diagnostic.severity == severity; }));
}

void WriteCount(std::ostream& messages, std::size_t count, std::string_view word) {
    messages << count << ' ' << word << (count == 1 ? "" : "s");
}

/// The place of a diagnostic or note; line and column are 0 where there is none.
void WritePlaceMembers(JsonWriter& json, const st::SourceManager& sources, const st::SourceRange& range) {
    const st::SourceLocation place = sources.Locate(range.begin);
    json.Member("file", place.line == 0 ? std::string_view() : std::string_view(sources.GetName(place.file)));
    json.Member("line", std::uint64_t{place.line});
    json.Member("column", std::uint64_t{place.column});
}

void WriteNotes(JsonWriter& json, const st::SourceManager& sources, const st::Diagnostic& diagnostic) {
    if (diagnostic.notes.empty()) return;
    json.Key("notes");
    json.BeginArray();
    for (const st::DiagnosticNote& note : diagnostic.notes) {
        json.BeginObject();
        WritePlaceMembers(json, sources, note.range);
        json.Member("text", note.text);
        json.EndObject();
    }
    json.EndArray();
}

}  // namespace

void WriteDiagnostics(std::ostream& messages, const st::CompileResult& result) {
    for (const st::Diagnostic& diagnostic : result.diagnostics)
        messages << st::FormatDiagnostic(result.sources, diagnostic);
    const std::size_t errors = Count(result, st::Severity::Error);
    const std::size_t warnings = Count(result, st::Severity::Warning);
    if (errors == 0 && warnings == 0) return;
    WriteCount(messages, errors, "error");
    messages << ", ";
    WriteCount(messages, warnings, "warning");
    messages << '\n';
}

void WriteDiagnosticsAsJson(std::ostream& output, const st::CompileResult& result) {
    for (const st::Diagnostic& diagnostic : result.diagnostics) {
        JsonWriter json(output);
        json.BeginObject();
        WritePlaceMembers(json, result.sources, diagnostic.range);
        json.Member("severity", SeverityName(diagnostic.severity));
        json.Member("code", st::FormatCode(diagnostic.code));
        json.Member("text", diagnostic.text);
        WriteNotes(json, result.sources, diagnostic);
        json.EndObject();
        json.EndLine();
    }
}

}  // namespace tn61131
