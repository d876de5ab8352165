// docs/diagnostics.md against the table of messages and the compiler.

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "compiler/Compiler.h"
#include "documents/Examples.h"
#include "programs/ProgramFile.h"

namespace tn61131::st {
namespace {

using documents::Section;

struct WithoutExample {
    DiagnosticCode code;
    const char* reason;
};

constexpr WithoutExample kWithoutExample[] = {
    {DiagnosticCode::NestingTooDeep, "takes more than two hundred levels"},
    {DiagnosticCode::DependsTooDeep, "takes hundreds of constants"},
    {DiagnosticCode::TypeTooDeep, "takes more than thirty structures"},
    {DiagnosticCode::TooManySlots, "takes hundreds of parameters"},
    {DiagnosticCode::ImageTooLarge, "takes gigabytes of code"},
    {DiagnosticCode::ProjectTooLarge, "takes gigabytes of text"},
};

bool HasNoExample(DiagnosticCode code) {
    return std::any_of(std::begin(kWithoutExample), std::end(kWithoutExample),
                       [code](const WithoutExample& row) { return row.code == code; });
}

std::string SeverityText(Severity severity) {
    switch (severity) {
        case Severity::Error: return "error";
        case Severity::Warning: return "warning";
        case Severity::Hint: return "hint";
    }
    return {};
}

/// The text of a message as the page has it: an ellipsis for each argument.
std::string PageText(std::string_view text) {
    std::string shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isArgument = text[i] == '{' && i + 2 < text.size() && text[i + 2] == '}';
        shown += isArgument ? "\xE2\x80\xA6" : std::string(1, text[i]);
        if (isArgument) i += 2;
    }
    return shown;
}

/// The sections whose title is a code.
std::vector<Section> ReadCodes() {
    std::vector<Section> sections = documents::ReadPage("diagnostics.md");
    std::erase_if(sections, [](const Section& section) { return !section.title.starts_with("ST0"); });
    return sections;
}

using Messages = std::vector<std::pair<std::uint32_t, std::string>>;

Messages CompileExample(const program_test::ProgramFile& file) {
    std::vector<SourceText> sources;
    sources.push_back({file.name, file.text});
    const CompileResult result = Compile(std::move(sources), file.options);
    Messages messages;
    for (const Diagnostic& diagnostic : result.diagnostics)
        messages.emplace_back(result.sources.Locate(diagnostic.range.begin).line, FormatCode(diagnostic.code));
    return messages;
}

TEST(DiagnosticsPage, EveryMessageHasItsSection) {
    std::vector<std::string> expected;
    for (const DiagnosticRow& row : kDiagnosticTable)
        expected.push_back(FormatCode(row.code));
    std::vector<std::string> found;
    for (const Section& section : ReadCodes())
        found.push_back(section.title);
    EXPECT_EQ(found, expected);
}

TEST(DiagnosticsPage, SectionsSayWhatTheMessageSays) {
    for (const Section& section : ReadCodes()) {
        const auto* const row =
            std::find_if(kDiagnosticTable.begin(), kDiagnosticTable.end(),
                         [&](const DiagnosticRow& each) { return FormatCode(each.code) == section.title; });
        ASSERT_NE(row, kDiagnosticTable.end()) << section.title;
        ASSERT_GE(section.lines.size(), 2U) << section.title << " is not explained";
        EXPECT_EQ(section.lines.front(), SeverityText(row->severity) + ": `" + PageText(row->text) + "`")
            << section.title;
    }
}

TEST(DiagnosticsPage, ExamplesGiveJustTheirMessage) {
    for (const Section& section : ReadCodes()) {
        for (const documents::Example& example : section.examples) {
            SCOPED_TRACE(section.title + ", line " + std::to_string(example.line));
            program_test::ProgramFile file;
            std::string error;
            ASSERT_TRUE(program_test::ReadProgramFile("example.st", example.text, file, error)) << error;
            Messages expected;
            for (const program_test::ExpectedDiagnostic& each : file.diagnostics) {
                expected.emplace_back(each.line, each.code);
                EXPECT_EQ(each.code, section.title);
            }
            EXPECT_EQ(CompileExample(file), expected);
        }
    }
}

TEST(DiagnosticsPage, OnlyWhatTakesTooMuchHasNoExample) {
    for (const Section& section : ReadCodes()) {
        const auto* const row =
            std::find_if(kDiagnosticTable.begin(), kDiagnosticTable.end(),
                         [&](const DiagnosticRow& each) { return FormatCode(each.code) == section.title; });
        ASSERT_NE(row, kDiagnosticTable.end()) << section.title;
        EXPECT_EQ(section.examples.empty(), HasNoExample(row->code)) << section.title;
    }
}

}  // namespace
}  // namespace tn61131::st
