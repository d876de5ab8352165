#include "tools/RunCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>
#include <utility>

#include <unistd.h>

#include "platform/ClientAccess.h"
#include "tools/Describe.h"
#include "tools/HumanReport.h"
#include "tools/Interrupt.h"
#include "tools/JsonReport.h"
#include "tools/Progress.h"
#include "tools/ProjectFiles.h"
#include "tools/Tool.h"
#include "tools/Trace.h"
#include "vm/VirtualMachineExec.h"

namespace tn61131 {
namespace {

/// So many variables are shown without having been asked for.
constexpr std::size_t kShownUnasked = 12;
/// So many are recorded; viewers become unusable with more.
constexpr std::size_t kTracedAtMost = 1000;

CClientAccessContext MakeAccess(const RunOptions& options) {
    CDataFormatSettings settings;
    if (!options.locale.empty()) settings.SetLocale(CTNLocale(options.locale));
    if (!options.timeZone.empty()) settings.SetTimeZone(CTNTimeZone(options.timeZone));
    return CClientAccessContext("tn61131", std::move(settings));
}

/// Those asked for; else, for a person, all when they are few.
std::vector<WatchedVariable> ChooseReported(const RunOptions& options, const LoadedImage& image) {
    if (!image.GetWatched().empty() || options.json || image.GetMap() == nullptr) return image.GetWatched();
    std::vector<WatchedVariable> all = ListVariables(*image.GetMap(), kShownUnasked + 1);
    if (all.size() > kShownUnasked) all.clear();
    return all;
}

std::vector<WatchedVariable> ChooseTraced(const LoadedImage& image) {
    if (!image.GetWatched().empty() || image.GetMap() == nullptr) return image.GetWatched();
    return ListVariables(*image.GetMap(), kTracedAtMost);
}

/// Runs one image after another and keeps what the exit status needs.
class ImageRunner {
 public:
    ImageRunner(const RunOptions& options, RunReport& report, std::ostream& messages)
        : options_(options), report_(report), messages_(messages), access_(MakeAccess(options)) {}

    void Run(const std::string& path) {
        LoadedImage image;
        std::vector<ImageError> errors;
        if (image.Load(path, options_, errors)) {
            Run(image);
        } else {
            Refuse(path, errors);
        }
    }

    /// Compiles structured text as one project and runs it.
    void Run(const std::vector<std::string>& sources) {
        LoadedImage image;
        std::vector<ImageError> errors;
        std::string warnings;
        const bool compiled = image.Compile(sources, options_, errors, warnings);
        messages_ << warnings;
        if (compiled) {
            Run(image);
        } else {
            Refuse(sources.front(), errors);
        }
    }

    void Run(LoadedImage& image) {
        const std::string& path = image.GetPath();
        Trace trace;
        if (!options_.traceFile.empty() && !trace.Open(options_.traceFile, ChooseTraced(image))) {
            Refuse(path, {TraceError()});
            return;
        }
        Execute(image, trace);
    }

    [[nodiscard]] int GetExitStatus() const noexcept {
        if (interrupted_) return kExitInterrupted;
        return failed_ ? kExitFailure : kExitSuccess;
    }
    [[nodiscard]] bool IsInterrupted() const noexcept { return interrupted_; }

 private:
    void Refuse(const std::string& path, const std::vector<ImageError>& errors) {
        failed_ = true;
        report_.Refused(path, errors);
    }

    void Execute(LoadedImage& image, Trace& trace) {
        CErrorLog log;
        CVirtualMachineExec exec(access_, "tn61131", &image.GetMachine(), &image.GetGlobalData(), image.GetTags());
        const std::vector<WatchedVariable> watched = ChooseReported(options_, image);
        const RunView view{image, exec, log, watched};
        const bool tracing = !options_.traceFile.empty();
        Progress progress(ProgressOutput(), options_.scans);
        report_.Begin(view);
        const ScanSummary summary =
            RunScans(options_, image.GetEntryOffset(), exec, log, [&](const ScanOutcome& outcome) {
                report_.Scan(view, outcome);
                if (tracing) trace.Sample(outcome.timestampMS, image.GetWatchMemory());
                progress.Update(outcome.number + 1);
            });
        progress.Clear();
        report_.End(view, summary);
        interrupted_ = summary.interrupted;
        failed_ = failed_ || !summary.AllCompleted();
        if (tracing && !trace.Close()) {
            failed_ = true;
            WriteMessage(messages_, image.GetPath(), TraceError());
        }
    }

    ImageError TraceError() const {
        return {0, {}, "The waveform file '" + options_.traceFile + "' cannot be written."};
    }

    /// Standard error when a person sees it and the output on the same terminal leaves a line for it.
    std::ostream* ProgressOutput() const {
        const bool lineIsFree = isatty(STDOUT_FILENO) == 0 || (options_.lastOnly && !options_.json);
        return isatty(STDERR_FILENO) != 0 && lineIsFree ? &messages_ : nullptr;
    }

    const RunOptions& options_;
    RunReport& report_;
    std::ostream& messages_;
    CClientAccessContext access_;
    bool failed_ = false;
    bool interrupted_ = false;
};

std::unique_ptr<RunReport> MakeReport(const RunOptions& options, std::ostream& output, std::ostream& messages) {
    if (options.json) return std::make_unique<JsonReport>(output, messages, options);
    return std::make_unique<HumanReport>(output, messages, options);
}

/// An option that takes ID, or ID:TEXT for a text that the compiler is to add.
CLI::Option* AddStandaloneOption(CLI::App& command, const std::string& name, const std::string& description,
                                 std::optional<std::uint32_t>& id, std::vector<std::string>& texts) {
    const auto take = [&id, &texts](const std::string& value) {
        st::StandaloneText standalone;
        std::string error;
        const bool hasText = IsStandaloneText(value);
        if (!ParseStandaloneText(hasText ? value : value + ":", standalone, error)) {
            throw CLI::ConversionError("'" + value + "' is neither ID nor ID:TEXT");
        }
        id = standalone.id;
        if (hasText) texts.push_back(value);
    };
    return command.add_option_function<std::string>(name, take, description)->type_name("ID");
}

void AddEntryOptions(CLI::App& command, RunOptions& options) {
    auto* program = command.add_option("--program", options.program, "run this program")->type_name("NAME");
    auto* expression =
        AddStandaloneOption(command, "--expression", "run this expression; with its text, compile it first",
                            options.expression, options.compile.expressions);
    auto* codeBlock =
        AddStandaloneOption(command, "--code-block", "run this code block; with its text, compile it first",
                            options.codeBlock, options.compile.codeBlocks);
    program->excludes(expression)->excludes(codeBlock);
    expression->excludes(codeBlock);
}

void AddScanOptions(CLI::App& command, RunOptions& options) {
    command.add_option("--limit", options.instructionLimit, "instruction limit of a scan")->capture_default_str();
    const auto noSign = [](const std::string& text) {
        return text.starts_with('-') ? "a number without a sign expected" : std::string();
    };
    command.add_option("--scans", options.scans, "how often to run on the same data")
        ->capture_default_str()
        ->check(CLI::Validator(noSign, ""));
    command.add_option("--timestamp", options.timestampMS, "time of the first scan, default: the clock")
        ->type_name("MS");
    command.add_option("--step", options.stepMS, "time from scan to scan")->type_name("MS")->capture_default_str();
    command.add_option("--resumes", options.resumes, "how often to resume a suspended scan")->capture_default_str();
}

void AddFileOptions(CLI::App& command, RunOptions& options) {
    command.add_option("--tags", options.tagsFile, "directly located variables (JSON)")->type_name("FILE");
    command.add_option("--map", options.mapFile, "symbol map, default: IMAGE.map")->type_name("FILE");
    command.add_option("--trace", options.traceFile, "record the watched variables as a waveform (VCD)")
        ->type_name("FILE");
}

void AddFormatOptions(CLI::App& command, RunOptions& options) {
    const auto knownLocale = [](const std::string& tag) {
        return CTNLocale::IsKnown(tag) ? std::string() : "unknown locale '" + tag + "'";
    };
    const auto knownZone = [](const std::string& name) {
        return CTNTimeZone::IsKnown(name) ? std::string() : "unknown time zone '" + name + "'";
    };
    command.add_option("--locale", options.locale, "language tag for texts, default: en-US")
        ->type_name("TAG")
        ->check(CLI::Validator(knownLocale, ""));
    command.add_option("--time-zone", options.timeZone, "zone name for local times, default: UTC")
        ->type_name("NAME")
        ->check(CLI::Validator(knownZone, ""));
    command.add_flag("--last", options.lastOnly, "report the last scan only");
    command.add_flag("--time", options.time, "report the time spent in the machine");
    command.add_flag("--json", options.json, "report as JSON, a line per image");
}

}  // namespace

int RunImages(const RunOptions& options, std::ostream& output, std::ostream& messages) {
    std::string error;
    if (st::CompileOptions unused; !MakeCompileOptions(options.compile, unused, error)) {
        messages << "tn61131: " << error << '\n';
        return kExitUsage;
    }
    const Interrupt interrupt;
    const std::unique_ptr<RunReport> report = MakeReport(options, output, messages);
    ImageRunner runner(options, *report, messages);
    // A project runs where the first of its files stands among the images.
    std::vector<std::string> sources;
    std::copy_if(options.images.begin(), options.images.end(), std::back_inserter(sources), IsSourcePath);
    bool projectIsDue = !sources.empty();
    for (const std::string& path : options.images) {
        if (!IsSourcePath(path)) {
            runner.Run(path);
        } else if (std::exchange(projectIsDue, false)) {
            runner.Run(sources);
        }
        if (runner.IsInterrupted()) break;
    }
    return runner.GetExitStatus();
}

void AddRunCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<RunOptions>();
    CLI::App* command = app.add_subcommand("run", "Execute images and structured text");
    command->add_option("FILE", options->images, "images; files and folders of structured text")->required();
    AddEntryOptions(*command, *options);
    AddDialectOptions(*command, options->compile);
    AddScanOptions(*command, *options);
    AddFileOptions(*command, *options);
    AddFormatOptions(*command, *options);
    const CLI::Option* watch = command->add_option("--watch", "variables to report, by name")
                                   ->type_name("NAME,...")
                                   ->expected(1)
                                   ->allow_extra_args(false)
                                   ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command->callback([options, watch, &exitStatus] {
        for (const std::string& list : watch->results()) {
            const std::vector<std::string> names = SplitWatchNames(list);
            options->watch.insert(options->watch.end(), names.begin(), names.end());
        }
        if (!options->traceFile.empty() && options->images.size() > 1) {
            throw CLI::ValidationError("--trace", "takes one image at a time");
        }
        exitStatus = RunImages(*options, std::cout, std::cerr);
    });
}

}  // namespace tn61131
