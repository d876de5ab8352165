#pragma once

#include <map>
#include <ostream>
#include <string>
#include <string_view>

#include "tools/RunReport.h"

namespace tn61131 {

/// Text for a person: a line per scan with its result, the watched variables (after the first scan those that have
/// changed). Failures go to the messages, with the instruction and the chain of calls, and with names where there is a
/// symbol map.
class HumanReport final : public RunReport {
 public:
    HumanReport(std::ostream& output, std::ostream& messages, const RunOptions& options)
        : output_(output), messages_(messages), options_(options) {}

    void Refused(const std::string& image, const std::vector<ImageError>& errors) override;
    void Begin(const RunView& view) override;
    void Scan(const RunView& view, const ScanOutcome& outcome) override;
    void End(const RunView& view, const ScanSummary& summary) override;

 private:
    void WriteScan(const RunView& view, const ScanOutcome& outcome);
    void WriteErrors(const RunView& view);
    void WriteCallChain(const RunView& view);
    void WritePlace(const RunView& view, std::string_view label, unsigned int codeOffset);
    void WriteWatched(const RunView& view);
    void WriteTags(const TagTable& tags);

    std::ostream& output_;
    std::ostream& messages_;
    const RunOptions& options_;
    std::map<std::string, std::string> shown_;  ///< watched variables as last written
};

}  // namespace tn61131
