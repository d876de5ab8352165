#include "platform/Random.h"

#include <cerrno>
#include <cstdlib>

#include <sys/random.h>

void TNRandomGenerator::GenerateRandom(void* data, std::size_t size) {
    auto* at = static_cast<unsigned char*>(data);
    while (size > 0) {
        const ssize_t drawn = getrandom(at, size, 0);
        if (drawn < 0) {
            if (errno == EINTR) continue;
            // Handing out what is not random would go unnoticed.
            std::abort();
        }
        at += drawn;
        size -= static_cast<std::size_t>(drawn);
    }
}
