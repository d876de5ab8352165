#include "tools/Interrupt.h"

#include <csignal>

namespace tn61131 {
namespace {

volatile std::sig_atomic_t requested = 0;

void HandleInterrupt(int signal) {
    requested = 1;
    // The handler is for once: whoever presses again does not want to wait for the end of the scan.
    (void)std::signal(signal, SIG_DFL);
}

}  // namespace

Interrupt::Interrupt() {
    requested = 0;
    (void)std::signal(SIGINT, HandleInterrupt);
}

Interrupt::~Interrupt() {
    (void)std::signal(SIGINT, SIG_DFL);
}

bool Interrupt::IsRequested() noexcept {
    return requested != 0;
}

void Interrupt::Request() noexcept {
    requested = 1;
}

}  // namespace tn61131
