#include "tools/ScanLoop.h"

#include <chrono>
#include <limits>

#include "platform/ErrorLog.h"
#include "platform/Time.h"
#include "tools/Interrupt.h"
#include "vm/VirtualMachineExec.h"

namespace tn61131 {
namespace {

long long ClockMS() {
    CTNTimestamp now;
    now.SetUTC();
    return now.GetVMTimeMS();
}

/// Runs one scan to its end, resuming it as often as allowed.
void RunScan(const RunOptions& options, CVirtualMachineExec& exec, CErrorLog& log, ScanOutcome& outcome) {
    outcome.result = exec.ExecuteUntilCompleteOrSuspended(log);
    while (outcome.result == RunResult::Suspended && outcome.resumed < options.resumes && !Interrupt::IsRequested()) {
        ++outcome.resumed;
        outcome.result = exec.ExecuteUntilCompleteOrSuspended(log);
    }
}

}  // namespace

long long AdvanceTimestamp(long long timestampMS, long long stepMS) noexcept {
    using Limits = std::numeric_limits<long long>;
    long long sum = 0;
    if (!__builtin_add_overflow(timestampMS, stepMS, &sum)) return sum;
    return stepMS < 0 ? Limits::min() : Limits::max();
}

ScanSummary RunScans(const RunOptions& options, std::uint32_t entryOffset, CVirtualMachineExec& exec, CErrorLog& log,
                     const std::function<void(const ScanOutcome&)>& afterScan) {
    using Clock = std::chrono::steady_clock;
    constexpr unsigned int kCallerWord = 0;
    ScanSummary summary;
    Clock::duration spent{0};
    long long timestampMS = options.timestampMS ? *options.timestampMS : ClockMS();
    while (summary.scans < options.scans && summary.AllCompleted() && !summary.interrupted) {
        ScanOutcome outcome{.number = summary.scans, .timestampMS = timestampMS};
        log.Clear();
        exec.StartNewProgram(entryOffset, options.instructionLimit, kCallerWord, &timestampMS);
        const auto begin = Clock::now();
        RunScan(options, exec, log, outcome);
        spent += Clock::now() - begin;
        ++summary.scans;
        summary.last = outcome;
        timestampMS = AdvanceTimestamp(timestampMS, options.stepMS);
        afterScan(outcome);
        summary.interrupted = Interrupt::IsRequested();
    }
    summary.nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(spent).count();
    return summary;
}

}  // namespace tn61131
