#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "tools/RunOptions.h"
#include "vm/InstructionResult.h"

class CErrorLog;
class CVirtualMachineExec;

namespace tn61131 {

/// How one scan ended.
struct ScanOutcome {
    std::uint64_t number = 0;  ///< from 0
    long long timestampMS = 0;
    RunResult result = RunResult::Completed;
    std::uint32_t resumed = 0;  ///< how often it was resumed
};

/// What all scans of an image came to.
struct ScanSummary {
    std::uint64_t scans = 0;          ///< how many were run
    std::optional<ScanOutcome> last;  ///< none when no scan was run
    std::int64_t nanoseconds = 0;     ///< spent inside the machine
    bool interrupted = false;         ///< stopped between scans on the user's request

    [[nodiscard]] bool AllCompleted() const noexcept { return !last || last->result == RunResult::Completed; }
};

/// The timestamp one step later, held at the limits of 64 bits.
[[nodiscard]] long long AdvanceTimestamp(long long timestampMS, long long stepMS) noexcept;

/// Runs the scans that the options ask for on one context, up to the first that does not complete. `log` is fresh for
/// each scan; what the last one left in context and log is still there afterwards. `afterScan` is called after each.
ScanSummary RunScans(const RunOptions& options, std::uint32_t entryOffset, CVirtualMachineExec& exec, CErrorLog& log,
                     const std::function<void(const ScanOutcome&)>& afterScan);

}  // namespace tn61131
