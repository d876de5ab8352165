#include "platform/jsonata/DecimalDigits.h"

#include <cmath>
#include <string_view>

#include "platform/ReadDouble.h"
#include "platform/ShortestDecimal.h"

namespace tn61131::jsonata {

namespace {

void DropTrailingZeros(std::string& digits) {
    const std::size_t last = digits.find_last_not_of('0');
    digits.resize(last == std::string::npos ? 0 : last + 1);
}

/// Half to even: the digits from `kept` on are cut away.
bool RoundsUp(std::string_view digits, std::size_t kept) {
    if (digits[kept] != '5') return digits[kept] > '5';
    if (digits.find_first_not_of('0', kept + 1) != std::string_view::npos) return true;
    return kept > 0 && (digits[kept - 1] - '0') % 2 != 0;
}

}  // namespace

DecimalDigits DecimalDigits::Of(double value) {
    DecimalDigits decimal;
    if (!std::isfinite(value) || value == 0) return decimal;
    const ShortestDecimal shortest = ShortestDecimalOf(std::fabs(value));
    decimal.digits = shortest.View();
    DropTrailingZeros(decimal.digits);
    decimal.point = shortest.exponent + 1;
    return decimal;
}

void DecimalDigits::RoundToPlaces(int places) {
    const int kept = point + places;
    if (kept < 0) {
        *this = {};
        return;
    }
    if (static_cast<std::size_t>(kept) >= digits.size()) return;
    bool carry = RoundsUp(digits, static_cast<std::size_t>(kept));
    digits.resize(static_cast<std::size_t>(kept));
    for (std::size_t at = digits.size(); carry && at-- > 0;) {
        carry = digits[at] == '9';
        digits[at] = carry ? '0' : static_cast<char>(digits[at] + 1);
    }
    if (carry) {
        digits.insert(0, 1, '1');
        ++point;
    }
    DropTrailingZeros(digits);
    if (digits.empty()) point = 0;
}

std::string DecimalDigits::GetWhole() const {
    if (point <= 0) return {};
    std::string whole = digits.substr(0, static_cast<std::size_t>(point));
    whole.resize(static_cast<std::size_t>(point), '0');
    return whole;
}

std::string DecimalDigits::GetFraction() const {
    if (point <= 0) return std::string(static_cast<std::size_t>(-point), '0') + digits;
    return static_cast<std::size_t>(point) < digits.size() ? digits.substr(static_cast<std::size_t>(point))
                                                           : std::string();
}

double DecimalDigits::ToDouble() const {
    const std::string text = "0." + digits + "e" + std::to_string(point);
    const char* at = text.c_str();
    return tn_strtod(at);
}

}  // namespace tn61131::jsonata
