#pragma once

#include <cstdint>

#include "platform/Export.h"

/// Where a pointer points to.
enum class LocationKind : std::uint16_t {
    Null = 0,
    Global = 1,
    Local = 2,
    Temp = 3,
    Tag = 4,
    GlobalConstant = 5,
    MemBlockPtr = 6,
};

/// A pointer of the machine, 8 bytes, as it lies in memory and in POINTER values. The fields mean: `frame` the frame
/// number (Local, Temp), the offset within the tag (Tag), the block type (MemBlockPtr), else 0; `offset` a byte offset
/// (Global, Local, Temp, GlobalConstant), the tag id (Tag), the block id (MemBlockPtr).
struct TN61131_API PointerValue {
    static constexpr unsigned int kTextSize = 64;

    LocationKind location = LocationKind::Null;
    std::uint16_t frame = 0;
    std::uint32_t offset = 0;

    friend bool operator==(const PointerValue&, const PointerValue&) noexcept = default;
    /// Writes the text of the pointer into a buffer of kTextSize bytes and returns the buffer.
    char* FormatPointerValue(char* buffer) const noexcept;
    /// Moves on by bytes, wrapping: within the tag for a tag, not at all for a null pointer.
    void AddOffset(unsigned int bytes) noexcept;
};
static_assert(sizeof(PointerValue) == 8);
