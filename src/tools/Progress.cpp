#include "tools/Progress.h"

namespace tn61131 {

void Progress::Update(std::uint64_t done) {
    if (output_ == nullptr) return;
    const Clock::time_point now = Clock::now();
    if (now < next_) return;
    next_ = now + kInterval;
    *output_ << "\rscan " << done << " of " << total_ << std::flush;
    shown_ = true;
}

void Progress::Clear() {
    constexpr const char* kEraseLine = "\r\033[K";
    if (shown_) *output_ << kEraseLine << std::flush;
    shown_ = false;
}

}  // namespace tn61131
