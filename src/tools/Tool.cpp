#include "tools/Tool.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "tools/LiteralCommand.h"

namespace tn61131 {
namespace {

/// Help asked for is success; everything else that the parser throws is wrong usage.
int ReportParseResult(const CLI::App& app, const CLI::ParseError& error) {
    const int parserStatus = app.exit(error, std::cout, std::cerr);
    return parserStatus == static_cast<int>(CLI::ExitCodes::Success) ? kExitSuccess : kExitUsage;
}

/// The arguments as the parser takes them, last first.
std::vector<std::string> ArgumentsForParser(int argc, const char* const* argv) {
    constexpr std::string_view kLiteralCommand = "literal";
    std::vector<std::string> arguments(argv + std::min(argc, 2), argv + argc);
    if (argc > 1 && argv[1] == kLiteralCommand) MaskLiteralTexts(arguments);
    std::reverse(arguments.begin(), arguments.end());
    if (argc > 1) arguments.emplace_back(argv[1]);
    return arguments;
}

}  // namespace

int RunTool(int argc, const char* const* argv) {
    int exitStatus = kExitSuccess;
    try {
        CLI::App app("Virtual machine for IEC 61131-3 control logic", "tn61131");
        app.require_subcommand(1);
        AddRunCommand(app, exitStatus);
        AddAsmCommand(app, exitStatus);
        AddDisCommand(app, exitStatus);
        AddLiteralCommand(app, exitStatus);
        AddTokensCommand(app, exitStatus);
        AddSelectCommand(app, exitStatus);
        AddBuildCommand(app, exitStatus);
        AddCheckCommand(app, exitStatus);
        try {
            app.parse(ArgumentsForParser(argc, argv));
        } catch (const CLI::ParseError& error) {
            return ReportParseResult(app, error);
        }
        std::cout.flush();
        if (!std::cout) {
            std::cerr << "tn61131: standard output cannot be written\n";
            return kExitFailure;
        }
    } catch (const std::exception& error) {
        std::cerr << "tn61131: " << error.what() << '\n';
        return kExitFailure;
    }
    return exitStatus;
}

}  // namespace tn61131
