#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/jsonata/Failure.h"

namespace tn61131::jsonata {

/// What a picture of an integer says (XPath Functions 3.1, section 4.6.1): digits with grouping, letters, Roman
/// numerals or words, each as cardinal or ordinal number.
class IntegerFormat {
 public:
    enum class Kind : std::uint8_t { Decimal, Letters, Roman, Words };
    enum class Case : std::uint8_t { Lower, Upper, Title };

    /// A character that stands between digits, and how many digits are to its right.
    struct Separator {
        std::size_t position = 0;
        char32_t character = 0;
    };

    /// A picture with its modifier: "#,##0;o". Fails with D3130, which quotes the picture without the modifier, for one
    /// that is not supported, and with D3131 for digits of different scripts.
    static Result<IntegerFormat> Parse(std::string_view picture);
    /// The same for the two parts.
    static Result<IntegerFormat> Parse(std::string_view primary, bool isOrdinal);

    /// `value` rounded down. Roman numerals above a million and letters above 2^53 are written as digits. An infinity
    /// or NaN prints as PrintNumber() does.
    [[nodiscard]] std::string Format(double value) const;
    /// The number that Format() writes so, read leniently: digits may be grouped anywhere and be followed by anything,
    /// words may be joined by blanks, hyphens, commas and "and". No value for other text.
    [[nodiscard]] std::optional<double> ReadText(std::string_view text) const;
    /// A regular expression, to be matched without regard to case, of the texts that ReadText() takes; without signs.
    /// With `isExact` digits come as many as the picture has.
    [[nodiscard]] std::string GetExpression(bool isExact) const;

    [[nodiscard]] Kind GetKind() const noexcept { return kind_; }
    /// The digits that a decimal picture requires, and those it shows in all.
    [[nodiscard]] std::size_t GetMandatoryDigits() const noexcept { return mandatoryDigits_; }
    [[nodiscard]] std::size_t GetAllDigits() const noexcept { return mandatoryDigits_ + optionalDigits_; }
    /// Requires at least `minimum` digits, and no more than `maximum`; numbers with more digits keep them.
    void FitWidth(std::size_t minimum, std::optional<std::size_t> maximum) noexcept;
    [[nodiscard]] const std::vector<Separator>& GetSeparators() const noexcept { return separators_; }
    [[nodiscard]] bool HasSeparators() const noexcept { return !separators_.empty(); }
    /// Decimal digits in the script of the picture, and back; what is no digit of it stays as it is.
    [[nodiscard]] std::string TransferDigits(std::string_view digits) const;
    [[nodiscard]] std::string TransferBack(std::string_view text) const;
    /// A set of a regular expression, "[...]": the digits of the script.
    [[nodiscard]] std::string GetDigitSet() const;

 private:
    [[nodiscard]] bool ReadDecimalPicture(std::string_view primary, bool& isMixed);
    void FindRegularGrouping() noexcept;
    [[nodiscard]] std::string FormatDecimal(std::string digits) const;
    [[nodiscard]] std::optional<double> ReadDecimal(std::string_view text) const;

    Kind kind_ = Kind::Decimal;
    Case case_ = Case::Lower;
    bool isOrdinal_ = false;
    char32_t zeroDigit_ = U'0';
    std::size_t mandatoryDigits_ = 0;
    std::size_t optionalDigits_ = 0;
    std::vector<Separator> separators_;  ///< from right to left
    std::size_t regularGroup_ = 0;       ///< digits of each group where separators repeat; else 0
};

/// $formatInteger. Fails as IntegerFormat::Parse() does.
Result<std::string> FormatInteger(double value, std::string_view picture);

/// $parseInteger: the number that `text` shows by `picture`; no value where it shows none. Fails as
/// IntegerFormat::Parse() does.
Result<std::optional<double>> ParseInteger(std::string_view text, std::string_view picture);

}  // namespace tn61131::jsonata
