#pragma once

#include <ostream>

#include "tools/Describe.h"
#include "tools/JsonWriter.h"
#include "tools/RunReport.h"

namespace tn61131 {

/// One JSON object per image, a line each. Scans are written as they come. Failures are messages too.
class JsonReport final : public RunReport {
 public:
    JsonReport(std::ostream& output, std::ostream& messages, const RunOptions& options)
        : json_(output), messages_(messages), options_(options) {}

    void Refused(const std::string& image, const std::vector<ImageError>& errors) override;
    void Begin(const RunView& view) override;
    void Scan(const RunView& view, const ScanOutcome& outcome) override;
    void End(const RunView& view, const ScanSummary& summary) override;

 private:
    void WriteScan(const RunView& view, const ScanOutcome& outcome);
    void WritePlaces(const RunView& view);
    void WritePlace(const CodePlace& place);
    void WriteWatched(const RunView& view);

    JsonWriter json_;
    std::ostream& messages_;
    const RunOptions& options_;
};

}  // namespace tn61131
