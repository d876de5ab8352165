#pragma once

#include <cstdint>
#include <string>

#include "platform/Export.h"

class CBinaryInput;
class CBinaryOutput;

/// Which build of a program made a file: one byte record format (1), product name (string), four unsigned 16-bit
/// numbers, signed 64-bit build time in ticks, source revision (string).
struct TN61131_API CBuildIdentity {
    std::string product;
    std::uint16_t major = 0;
    std::uint16_t minor = 0;
    std::uint16_t build = 0;
    std::uint16_t revision = 0;
    std::int64_t buildTime = 0;  ///< 100 ns ticks since 1970-01-01 UTC
    std::string sourceRevision;

    /// False, and nothing stored, for another record format or a stream that ends inside the record.
    [[nodiscard]] bool LoadContent(CBinaryInput& input);
    void SaveContent(CBinaryOutput& output) const;

    friend bool operator==(const CBuildIdentity&, const CBuildIdentity&) = default;
};
