#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "compiler/Options.h"

namespace CLI {
class App;
}

namespace tn61131 {

/// What the command line says about compiling, as it was given.
struct CompileArguments {
    std::string profile;                   ///< empty: iec
    std::vector<std::string> switches;     ///< NAME=VALUE
    std::vector<std::string> expressions;  ///< ID:TEXT
    std::vector<std::string> codeBlocks;   ///< ID:TEXT
    std::string tagsFile;                  ///< empty: none
};

/// Adds --profile and --set.
void AddDialectOptions(CLI::App& command, CompileArguments& arguments);
/// Adds --expression, --code-block and --tags.
void AddStandaloneOptions(CLI::App& command, CompileArguments& arguments);

/// Whether a text has the form ID:TEXT.
[[nodiscard]] bool IsStandaloneText(std::string_view text);
/// Takes ID:TEXT apart. False, the reason in `error`, for another text.
[[nodiscard]] bool ParseStandaloneText(std::string_view text, st::StandaloneText& standalone, std::string& error);

/// What the compiler takes, the tags excepted. False, the reason in `error`, for an unknown profile or switch, a text
/// that is no ID:TEXT, and an id given twice.
[[nodiscard]] bool MakeCompileOptions(const CompileArguments& arguments, st::CompileOptions& options,
                                      std::string& error);
/// The named tags of a tags file; none for an empty path. False, the reason in `error`, when the file cannot be read.
[[nodiscard]] bool ReadTagSymbols(const std::string& path, std::vector<st::TagSymbol>& symbols, std::string& error);

}  // namespace tn61131
