#pragma once

#include <cstddef>

#include "platform/Export.h"

/// Random bytes of the operating system's generator.
class TN61131_API TNRandomGenerator {
 public:
    static void GenerateRandom(void* data, std::size_t size);
};
