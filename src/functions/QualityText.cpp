#include "functions/QualityText.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "platform/FormatText.h"

namespace {

// Bits of the low byte: 7 and 6 the major quality, 5 to 2 the status under it, 1 and 0 the limits, which have no text.
constexpr unsigned int kMajorMask = 0xC0;
constexpr unsigned int kStatusMask = 0xFC;

struct QualityName {
    std::uint8_t code;  ///< major quality and status
    const char* name;
};

constexpr QualityName kNames[] = {
    {0x00, "Bad"},
    {0x04, "Bad, configuration error"},
    {0x08, "Bad, not connected"},
    {0x0C, "Bad, device failure"},
    {0x10, "Bad, sensor failure"},
    {0x14, "Bad, last known"},
    {0x18, "Bad, communication failure"},
    {0x1C, "Bad, out of service"},
    {0x20, "Bad, waiting for initial data"},
    {0x40, "Uncertain"},
    {0x44, "Uncertain, last usable value"},
    {0x50, "Uncertain, sensor calibration error"},
    {0x54, "Uncertain, engineering units exceeded"},
    {0x58, "Uncertain, sub-normal"},
    {0xC0, "Good"},
    {0xD8, "Good, local override"},
};

/// By the major quality: the names of the status codes that have none of their own.
constexpr const char* kOtherNames[] = {
    "Bad, unknown/invalid status",
    "Uncertain, unknown/invalid status",
    "Unknown",
    "Good, unknown/invalid status",
};

const char* FindName(unsigned int code) noexcept {
    const auto* const known = std::find_if(std::begin(kNames), std::end(kNames),
                                           [&](const QualityName& name) { return name.code == (code & kStatusMask); });
    return known != std::end(kNames) ? known->name : kOtherNames[(code & kMajorMask) >> 6];
}

}  // namespace

CStringFromQuality::CStringFromQuality(short quality, bool nameOnly) : quality_(quality), nameOnly_(nameOnly) {
    const auto code = static_cast<std::uint16_t>(quality_);
    const char* name = FindName(code);
    if (nameOnly_) {
        CopyBounded(text_, sizeof(text_), name);
    } else {
        tn_sprintf(text_, sizeof(text_), "%hu (%s)", code, name);
    }
}
