#include "tools/SelectCommand.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <iostream>
#include <memory>

#include "payload/TextPayload.h"
#include "payload/TextPayloadSelector.h"
#include "platform/ErrorLog.h"
#include "platform/TextInput.h"
#include "platform/TextOutput.h"
#include "tools/Describe.h"
#include "tools/FileContent.h"
#include "tools/JsonWriter.h"
#include "tools/Tool.h"
#include "value/Value.h"

namespace tn61131 {
namespace {

/// The lines that a log is given, each as one.
class LineLog final : public COutputLog {
 public:
    void WriteLine(std::string_view line) override { lines_.emplace_back(line); }
    [[nodiscard]] const std::vector<std::string>& GetLines() const noexcept { return lines_; }

 private:
    std::vector<std::string> lines_;
};

/// What one selector gave.
struct Selection {
    SelectStatus status = SelectStatus::Failed;
    CValue value;
    std::vector<ImageError> errors;
};

/// The parts of "LOCATION: error ID: TEXT", where all but the text may be missing.
ImageError SplitLine(std::string_view line) {
    constexpr std::string_view kColon = ": ";
    constexpr std::string_view kError = "error";
    ImageError error;
    const std::size_t colon = line.find(kColon);
    if (!line.starts_with(kError) && colon != std::string_view::npos) {
        error.location = line.substr(0, colon);
        line.remove_prefix(colon + kColon.size());
    }
    if (line.starts_with(kError) && line.find(kColon) != std::string_view::npos) {
        const std::string_view number = line.substr(0, line.find(kColon)).substr(kError.size());
        if (!number.empty()) std::from_chars(number.data() + 1, number.data() + number.size(), error.id);
        line.remove_prefix(line.find(kColon) + kColon.size());
    }
    error.text = line;
    return error;
}

Selection Select(const TextPayload& document, const std::string& text) {
    Selection selection;
    LineLog lines;
    TextInputTNString input(text);
    TextPayloadSelector selector;
    if (selector.ParseSelector(&input, &lines)) {
        CErrorLog log(&lines);
        selection.status = document.SelectValue(selector, selection.value, log);
    }
    if (selection.status == SelectStatus::Success) return selection;
    for (const std::string& line : lines.GetLines())
        selection.errors.push_back(SplitLine(line));
    if (selection.errors.empty()) selection.errors.push_back({0, {}, "Nothing is selected."});
    return selection;
}

void WriteJson(std::ostream& output, const Selection& selection) {
    JsonWriter json(output);
    json.BeginObject();
    json.Member("status", static_cast<std::uint64_t>(selection.status));
    if (selection.status == SelectStatus::Success) {
        constexpr bool kShortForm = false;
        CTextOutputString declaration;
        selection.value.GetDeclaration(declaration);
        json.Member("type", selection.value.GetTypeName(kShortForm));
        json.Member("value", declaration.GetText());
    } else {
        WriteErrors(json, selection.errors);
    }
    json.EndObject();
    json.EndLine();
}

/// A string as it is, for the next program in the pipe; everything else as plain text.
void WriteHuman(std::ostream& output, const CValue& value) {
    std::string text;
    if (value.GetType() == ElementaryType::String || value.GetType() == ElementaryType::WString) {
        value.GetStringValue(text);
    } else {
        CTextOutputString plain;
        value.GetAsText(nullptr, plain);
        text = plain.TakeText();
    }
    output << text << '\n';
}

}  // namespace

int SelectFromDocument(const SelectOptions& options, std::istream& input, std::ostream& output,
                       std::ostream& messages) {
    TextPayload document(options.document);
    {
        std::string content;
        if (!ReadFileOrInput(options.document, input, content)) {
            WriteMessage(messages, options.document, {0, {}, "the file cannot be read"});
            return kExitFailure;
        }
        TextInputTNString text(content);
        document.SetContentFromTextInput(&text);
    }
    int exitStatus = kExitSuccess;
    for (const std::string& text : options.selectors) {
        const Selection selection = Select(document, text);
        if (options.json) WriteJson(output, selection);
        if (selection.status == SelectStatus::Success) {
            if (!options.json) WriteHuman(output, selection.value);
            continue;
        }
        exitStatus = kExitFailure;
        for (const ImageError& error : selection.errors)
            WriteMessage(messages, text, error);
    }
    return exitStatus;
}

void AddSelectCommand(CLI::App& app, int& exitStatus) {
    struct Arguments {
        SelectOptions options;
        std::vector<std::string> texts;
    };
    constexpr int kLeastTexts = 2;
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand("select", "Pick values out of a text document");
    command
        ->add_option("SELECTOR... FILE", arguments->texts,
                     "selectors, Line(N), JSONata(EXPRESSION) or CSV(CELL), and behind them the document, - for the "
                     "standard input")
        ->required()
        ->expected(kLeastTexts, CLI::detail::expected_max_vector_size);
    command->add_flag("--json", arguments->options.json, "JSON, a line per selector");
    command->callback([arguments, &exitStatus] {
        arguments->options.document = arguments->texts.back();
        arguments->texts.pop_back();
        arguments->options.selectors = std::move(arguments->texts);
        exitStatus = SelectFromDocument(arguments->options, std::cin, std::cout, std::cerr);
    });
}

}  // namespace tn61131
