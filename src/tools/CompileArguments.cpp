#include "tools/CompileArguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>

#include "tools/FileContent.h"
#include "tools/TagTable.h"

namespace tn61131 {
namespace {

bool ReadStandalones(const std::vector<std::string>& texts, std::vector<st::StandaloneText>& standalones,
                     std::string& error) {
    for (const std::string& text : texts) {
        st::StandaloneText standalone;
        if (!ParseStandaloneText(text, standalone, error)) return false;
        const bool isKnown = std::any_of(standalones.begin(), standalones.end(),
                                         [&](const st::StandaloneText& other) { return other.id == standalone.id; });
        if (isKnown) {
            error = "'" + text + "': the id " + std::to_string(standalone.id) + " is given twice";
            return false;
        }
        standalones.push_back(std::move(standalone));
    }
    return true;
}

}  // namespace

void AddDialectOptions(CLI::App& command, CompileArguments& arguments) {
    command.add_option("--profile", arguments.profile, "dialect: iec, codesys or twincat; default: iec")
        ->type_name("NAME");
    command.add_option("--set", arguments.switches, "set a switch of the dialect or the optimiser")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
}

void AddStandaloneOptions(CLI::App& command, CompileArguments& arguments) {
    command.add_option("--expression", arguments.expressions, "add a standalone expression")
        ->type_name("ID:TEXT")
        ->allow_extra_args(false);
    command.add_option("--code-block", arguments.codeBlocks, "add a standalone code block")
        ->type_name("ID:TEXT")
        ->allow_extra_args(false);
    command.add_option("--tags", arguments.tagsFile, "directly located variables (JSON)")->type_name("FILE");
}

bool IsStandaloneText(std::string_view text) {
    const std::size_t colon = text.find(':');
    return colon != std::string_view::npos && colon > 0 &&
           text.substr(0, colon).find_first_not_of("0123456789") == std::string_view::npos;
}

bool ParseStandaloneText(std::string_view text, st::StandaloneText& standalone, std::string& error) {
    const std::size_t colon = std::min(text.find(':'), text.size());
    const auto [stop, status] = std::from_chars(text.data(), text.data() + colon, standalone.id);
    if (!IsStandaloneText(text) || status != std::errc() || stop != text.data() + colon) {
        error = "'" + std::string(text) + "' is not of the form ID:TEXT";
        return false;
    }
    standalone.text = text.substr(colon + 1);
    return true;
}

bool MakeCompileOptions(const CompileArguments& arguments, st::CompileOptions& options, std::string& error) {
    if (!arguments.profile.empty() && !st::SetProfile(arguments.profile, options)) {
        error = "unknown profile '" + arguments.profile + "'";
        return false;
    }
    for (const std::string& assignment : arguments.switches) {
        if (!st::SetSwitch(assignment, options, error)) return false;
    }
    return ReadStandalones(arguments.expressions, options.expressions, error) &&
           ReadStandalones(arguments.codeBlocks, options.codeBlocks, error);
}

bool ReadTagSymbols(const std::string& path, std::vector<st::TagSymbol>& symbols, std::string& error) {
    if (path.empty()) return true;
    std::string content;
    if (!ReadFileContent(path, content)) {
        error = "the tags file '" + path + "' cannot be read";
        return false;
    }
    TagTable tags;
    if (!tags.Load(content, error)) {
        error = "tags file '" + path + "': " + error;
        return false;
    }
    symbols = tags.GetSymbols();
    return true;
}

}  // namespace tn61131
