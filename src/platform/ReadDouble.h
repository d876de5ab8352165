#pragma once

/// The longest floating-point number at the start of `text` as C's strtod() takes it in the "C" locale, whatever locale
/// the host has chosen: white space, a sign, decimal or hexadecimal digits with "." and exponent, "inf", "infinity",
/// "nan", "nan(...)", in either case. `text` moves behind it; 0 and unmoved when there is none. What is beyond the
/// range gives an infinity, respectively zero.
[[nodiscard]] double tn_strtod(const char*& text) noexcept;
