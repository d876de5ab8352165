#pragma once

#include <map>
#include <ostream>
#include <string>
#include <string_view>

#include "tools/RunReport.h"

namespace tn61131 {

/// Text for a person: a line per scan with its result, the watched variables (after the first scan those that have
/// changed), and after a failure the instruction and the chain of calls, with names where there is a symbol map.
class HumanReport final : public RunReport {
 public:
    HumanReport(std::ostream& output, const RunOptions& options) : output_(output), options_(options) {}

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
    const RunOptions& options_;
    std::map<std::string, std::string> shown_;  ///< watched variables as last written
};

/// The text with control characters made visible, so that data of a program cannot drive a terminal.
[[nodiscard]] std::string PrintableText(std::string_view text);

/// One instruction as the disassembler lists it, without the line end; what stands there instead when it is none.
[[nodiscard]] std::string DescribeInstruction(const CVirtualMachine& machine, const CVirtualMachineExec& exec,
                                              unsigned int codeOffset);

/// "in function Scale, tank.tnasm:12": the code and the source line that an instruction belongs to, as far as known.
[[nodiscard]] std::string DescribePlace(const CSymbolMap& map, unsigned int codeOffset);

}  // namespace tn61131
