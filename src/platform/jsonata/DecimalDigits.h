#pragma once

#include <cstddef>
#include <string>

namespace tn61131::jsonata {

/// The magnitude of a finite number as the shortest decimal digits that read back to it: 0.d1d2d3... * 10^point, where
/// d1 is not 0. Zero has no digits and the point 0.
struct DecimalDigits {
    std::string digits;
    int point = 0;

    /// NaN and infinities give zero.
    [[nodiscard]] static DecimalDigits Of(double value);

    [[nodiscard]] bool IsZero() const noexcept { return digits.empty(); }
    /// Rounds half to even to `places` after the point, negative ones before it.
    void RoundToPlaces(int places);
    /// The digits before the point without leading zeros (none below 1), and those behind it without trailing zeros.
    [[nodiscard]] std::string GetWhole() const;
    [[nodiscard]] std::string GetFraction() const;
    /// The nearest double; infinite beyond the range.
    [[nodiscard]] double ToDouble() const;
};

}  // namespace tn61131::jsonata
