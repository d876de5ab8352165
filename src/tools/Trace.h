#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "tools/VcdWriter.h"
#include "tools/Watch.h"
#include "value/Value.h"

namespace tn61131 {

/// Records watched variables over the scans into a waveform file.
class Trace {
 public:
    /// False when the file cannot be written.
    [[nodiscard]] bool Open(const std::string& path, std::vector<WatchedVariable> variables);
    void Sample(long long timestampMS, const WatchMemory& memory);
    /// False when not everything could be written.
    [[nodiscard]] bool Close();

 private:
    std::ofstream file_;
    VcdWriter writer_{file_};
    std::vector<WatchedVariable> variables_;
    std::vector<CValue> values_;
};

}  // namespace tn61131
