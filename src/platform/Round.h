#pragma once

#include "platform/Export.h"

/// Decimal rounding, half away from zero, of the shortest decimal digits that read back to the value (so 2.675 to two
/// places is 2.68 and 1.005 is 1.01). NaN and infinities stay as they are; a zero keeps the sign of the value; what
/// rounds up beyond the largest number is infinite.
class TN61131_API TNRoundFloat {
 public:
    /// `decimalPlaces` true: `digits` places after the point, negative ones before it. False: `digits` significant
    /// digits; 0 or fewer give 0, a positive one.
    [[nodiscard]] static float RoundFloat(float value, int digits, bool decimalPlaces) noexcept;
    [[nodiscard]] static double RoundDouble(double value, int digits, bool decimalPlaces) noexcept;
};
