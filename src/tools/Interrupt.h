#pragma once

namespace tn61131 {

/// Ctrl-C as a request to stop between two scans. A second one ends the process at once.
class Interrupt {
 public:
    /// Takes over SIGINT for as long as it lives. One at a time.
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    /// Whether Ctrl-C was pressed since the last construction.
    [[nodiscard]] static bool IsRequested() noexcept;
    /// For tests: as if it had been pressed.
    static void Request() noexcept;
};

}  // namespace tn61131
