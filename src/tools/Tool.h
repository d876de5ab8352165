#pragma once

namespace CLI {
class App;
}

namespace tn61131 {

/// What the process answers.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;        ///< the input was refused or a run failed
inline constexpr int kExitUsage = 2;          ///< the command line is wrong
inline constexpr int kExitInterrupted = 130;  ///< stopped by Ctrl-C, as a shell reports it

/// The command `tn61131`: reads the command line, runs one subcommand, returns the exit status. Output goes to standard
/// output, messages to standard error. Throws nothing.
int RunTool(int argc, const char* const* argv);

// Each adds one subcommand, which stores its exit status where it has run.

void AddRunCommand(CLI::App& app, int& exitStatus);
void AddAsmCommand(CLI::App& app, int& exitStatus);
void AddDisCommand(CLI::App& app, int& exitStatus);
void AddLiteralCommand(CLI::App& app, int& exitStatus);
void AddTokensCommand(CLI::App& app, int& exitStatus);
void AddSelectCommand(CLI::App& app, int& exitStatus);
void AddBuildCommand(CLI::App& app, int& exitStatus);
void AddCheckCommand(CLI::App& app, int& exitStatus);

}  // namespace tn61131
