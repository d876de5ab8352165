#include "functions/QualityText.h"

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(CStringFromQuality, EveryLowByteHasItsText) {
    struct Range {
        int first;  ///< a multiple of 4
        int last;
        const char* name;
    };
    // In order and without gaps: each code is in exactly one range.
    const Range ranges[] = {
        {0x00, 0x03, "Bad"},
        {0x04, 0x07, "Bad, configuration error"},
        {0x08, 0x0B, "Bad, not connected"},
        {0x0C, 0x0F, "Bad, device failure"},
        {0x10, 0x13, "Bad, sensor failure"},
        {0x14, 0x17, "Bad, last known"},
        {0x18, 0x1B, "Bad, communication failure"},
        {0x1C, 0x1F, "Bad, out of service"},
        {0x20, 0x23, "Bad, waiting for initial data"},
        {0x24, 0x3F, "Bad, unknown/invalid status"},
        {0x40, 0x43, "Uncertain"},
        {0x44, 0x47, "Uncertain, last usable value"},
        {0x48, 0x4F, "Uncertain, unknown/invalid status"},
        {0x50, 0x53, "Uncertain, sensor calibration error"},
        {0x54, 0x57, "Uncertain, engineering units exceeded"},
        {0x58, 0x5B, "Uncertain, sub-normal"},
        {0x5C, 0x7F, "Uncertain, unknown/invalid status"},
        {0x80, 0xBF, "Unknown"},
        {0xC0, 0xC3, "Good"},
        {0xC4, 0xD7, "Good, unknown/invalid status"},
        {0xD8, 0xDB, "Good, local override"},
        {0xDC, 0xFF, "Good, unknown/invalid status"},
    };
    int next = 0;
    for (const Range& range : ranges) {
        EXPECT_EQ(range.first, next);
        for (int code = range.first; code <= range.last; ++code) {
            EXPECT_STREQ(CStringFromQuality(static_cast<short>(code), true).Text(), range.name) << code;
            EXPECT_EQ(CStringFromQuality(static_cast<short>(code), false).Text(),
                      std::to_string(code) + " (" + range.name + ')');
        }
        next = range.last + 1;
    }
    EXPECT_EQ(next, 0x100);
}

TEST(CStringFromQuality, HighByteIsOnlyPrinted) {
    struct Case {
        int quality;
        const char* text;
        const char* name;
    };
    const Case cases[] = {
        {0x1C0, "448 (Good)", "Good"},
        {-1, "65535 (Good, unknown/invalid status)", "Good, unknown/invalid status"},
        {-32768, "32768 (Bad)", "Bad"},
        {0x7F44, "32580 (Uncertain, last usable value)", "Uncertain, last usable value"},
        {-16640, "48896 (Bad)", "Bad"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.quality);
        EXPECT_STREQ(CStringFromQuality(static_cast<short>(row.quality), false).Text(), row.text);
        EXPECT_STREQ(CStringFromQuality(static_cast<short>(row.quality), true).Text(), row.name);
    }
}

}  // namespace
