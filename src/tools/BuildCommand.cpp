#include "tools/BuildCommand.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "tools/CompileReport.h"
#include "tools/FileContent.h"
#include "tools/ProjectFiles.h"
#include "tools/Tool.h"

namespace tn61131 {
namespace {

std::shared_ptr<BuildOptions> AddCommonOptions(CLI::App& command) {
    auto options = std::make_shared<BuildOptions>();
    command.add_option("FILE", options->sources, "structured text: files and folders of one project")->required();
    AddDialectOptions(command, options->compile);
    AddStandaloneOptions(command, options->compile);
    command.add_flag("--json", options->json, "report as JSON, a line per diagnostic");
    return options;
}

}  // namespace

int BuildProject(const BuildOptions& options, std::ostream& output, std::ostream& messages) {
    std::string error;
    st::CompileOptions compileOptions;
    std::vector<st::SourceText> sources;
    if (!MakeCompileOptions(options.compile, compileOptions, error)) {
        messages << "tn61131: " << error << '\n';
        return kExitUsage;
    }
    if (!ReadTagSymbols(options.compile.tagsFile, compileOptions.tags, error) ||
        !ReadProjectFiles(options.sources, sources, error)) {
        messages << "tn61131: " << error << '\n';
        return kExitFailure;
    }
    const st::CompileResult result = st::Compile(std::move(sources), compileOptions);
    if (options.json) {
        WriteDiagnosticsAsJson(output, result);
    } else {
        WriteDiagnostics(messages, result);
    }
    if (!result.succeeded) return kExitFailure;
    if (options.image.empty()) return kExitSuccess;
    const std::vector<unsigned char> bytes = CImageWriter::Write(result.image);
    const std::string_view image(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const std::string map = CSymbolMap::GetDefaultFileName(options.image);
    for (const auto& [path, content] : {std::pair<const std::string&, std::string>(options.image, image),
                                        std::pair<const std::string&, std::string>(map, result.map.Save())}) {
        if (WriteFileContent(path, content)) continue;
        messages << "tn61131: '" << path << "' cannot be written\n";
        return kExitFailure;
    }
    return kExitSuccess;
}

void AddBuildCommand(CLI::App& app, int& exitStatus) {
    CLI::App* command = app.add_subcommand("build", "Compile structured text into an image");
    auto options = AddCommonOptions(*command);
    command->add_option("-o,--output", options->image, "image to write; its symbol map goes to IMAGE.map")
        ->type_name("IMAGE")
        ->required();
    command->callback([options, &exitStatus] { exitStatus = BuildProject(*options, std::cout, std::cerr); });
}

void AddCheckCommand(CLI::App& app, int& exitStatus) {
    CLI::App* command = app.add_subcommand("check", "Compile structured text and only report");
    auto options = AddCommonOptions(*command);
    command->callback([options, &exitStatus] { exitStatus = BuildProject(*options, std::cout, std::cerr); });
}

}  // namespace tn61131
