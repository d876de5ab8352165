#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/jsonata/Failure.h"
#include "platform/jsonata/IntegerPicture.h"

namespace tn61131::jsonata {

inline constexpr std::array<std::string_view, 12> kMonthNames = {"January",   "February", "March",    "April",
                                                                 "May",       "June",     "July",     "August",
                                                                 "September", "October",  "November", "December"};
/// From Monday, as ISO 8601 counts.
inline constexpr std::array<std::string_view, 7> kDayNames = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                                              "Friday", "Saturday", "Sunday"};

/// One part of a date picture: a marker in brackets, or the text between two of them.
struct DatePart {
    enum class Style : std::uint8_t { Literal, Number, Name, Zone };

    Style style = Style::Literal;
    std::string literal;
    char component = 0;                                         ///< "Y" in "[Y0001]"
    IntegerFormat number;                                       ///< for numbers and zones
    IntegerFormat::Case nameCase = IntegerFormat::Case::Lower;  ///< for names
    std::size_t minimumWidth = 0;                               ///< 0 for none
    std::optional<std::size_t> maximumWidth;
    bool hasZulu = false;  ///< a time zone of no offset is written as "Z"
};

enum class DatePictureUse { Formatting, Parsing };

/// The parts of a picture, from left to right. Fails as FormatDateTime() states.
Result<std::vector<DatePart>> ParseDatePicture(std::string_view picture, DatePictureUse use);

}  // namespace tn61131::jsonata
