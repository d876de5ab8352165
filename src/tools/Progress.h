#pragma once

#include <chrono>
#include <cstdint>
#include <ostream>

namespace tn61131 {

/// A line on a terminal that says how far a long run is, a few times a second. Removed when the run ends.
class Progress {
 public:
    /// `output` may be null: nothing is shown then.
    Progress(std::ostream* output, std::uint64_t total)
        : output_(output), total_(total), next_(Clock::now() + kFirst) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { Clear(); }

    void Update(std::uint64_t done);
    void Clear();

 private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds kFirst{1000};  ///< short runs show nothing
    static constexpr std::chrono::milliseconds kInterval{200};

    std::ostream* output_;
    std::uint64_t total_;
    Clock::time_point next_;
    bool shown_ = false;
};

}  // namespace tn61131
