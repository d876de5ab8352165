#pragma once

#include <cstdint>
#include <span>

#include "random_programs/Program.h"

namespace random_programs {

/// Where a generated program takes its decisions from: a seed, or bytes while they last.
class Choices {
 public:
    explicit Choices(std::uint64_t seed) : state_(seed) {}
    explicit Choices(std::span<const unsigned char> bytes) : bytes_(bytes), isFromBytes_(true) {}

    /// A number below `count`, which is not 0.
    [[nodiscard]] std::uint32_t Below(std::uint32_t count);
    [[nodiscard]] std::uint64_t Bits();
    [[nodiscard]] bool OneIn(std::uint32_t count) { return Below(count) == 0; }
    [[nodiscard]] bool AreUsedUp() const noexcept { return isFromBytes_ && bytes_.empty(); }

 private:
    std::uint64_t state_ = 0;
    std::span<const unsigned char> bytes_;
    bool isFromBytes_ = false;
};

/// What generated programs look like.
struct ProgramOptions {
    bool promotesTo32Bits = false;  ///< operators compute smaller integers in 32 bits
    bool mixesBits = false;         ///< bit strings and integers may meet, and integers narrow when they are stored
    unsigned statements = 12;       ///< about as many in a body
    unsigned depth = 4;             ///< of expressions
};

/// Makes a project of structures, globals, functions, function blocks and a program. It has no errors, never divides by
/// zero and never leaves an array.
void GenerateProgram(Choices& choices, const ProgramOptions& options, Program& program);

}  // namespace random_programs
