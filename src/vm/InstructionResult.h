#pragma once

#include <cstdint>

/// What an instruction, a memory write or a built-in call gives back. Built-in calls may return any number; those
/// without a name here end the run like Failed.
enum class InstructionResult : std::uint32_t {
    Continue = 0,         ///< success, next instruction
    Complete = 1,         ///< the program has ended
    Failed = 2,           ///< a message has been logged
    Invalid = 3,          ///< invalid instruction or operand
    MemoryCorrupted = 4,  ///< set by the run loop only
    LimitReached = 5,     ///< set by the run loop only
    Suspend = 6,          ///< stop here, to be resumed later
};

/// How a run ended.
enum class RunResult : std::uint32_t {
    Completed = 0,
    Suspended = 1,  ///< call again to resume
    Failed = 2,
    Invalid = 3,
};
