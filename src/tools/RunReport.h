#pragma once

#include <vector>

#include "tools/LoadedImage.h"
#include "tools/ScanLoop.h"

class CErrorLog;
class CVirtualMachineExec;

namespace tn61131 {

/// The state after a scan, to be reported. Borrows everything; after a run it shows the last scan.
struct RunView {
    const LoadedImage& image;
    const CVirtualMachineExec& exec;
    const CErrorLog& log;
    /// The variables to report.
    const std::vector<WatchedVariable>& watched;
};

/// Where the course of a run is told. For each image either Refused(), or Begin(), Scan() after each scan, and End().
class RunReport {
 public:
    virtual ~RunReport() = default;
    virtual void Refused(const std::string& image, const std::vector<ImageError>& errors) = 0;
    virtual void Begin(const RunView& view) = 0;
    virtual void Scan(const RunView& view, const ScanOutcome& outcome) = 0;
    virtual void End(const RunView& view, const ScanSummary& summary) = 0;
};

}  // namespace tn61131
