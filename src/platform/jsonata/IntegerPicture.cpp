#include "platform/jsonata/IntegerPicture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include <unicode/uchar.h>

#include "platform/ReadDouble.h"
#include "platform/jsonata/CodePoints.h"
#include "platform/jsonata/DecimalDigits.h"
#include "platform/jsonata/NumberText.h"
#include "platform/jsonata/NumberWords.h"
#include "platform/jsonata/TextFunctions.h"

namespace tn61131::jsonata {

namespace {

/// What each format writes at most, so that the text stays short and exact; above it come digits.
constexpr double kLargestRoman = 1e6;
constexpr double kLargestLetters = 9007199254740992.0;

/// A picture that is not one of digits.
struct NamedFormat {
    std::string_view token;
    IntegerFormat::Kind kind;
    IntegerFormat::Case letterCase;
};

constexpr std::array kNamedFormats = {
    NamedFormat{"A", IntegerFormat::Kind::Letters, IntegerFormat::Case::Upper},
    NamedFormat{"a", IntegerFormat::Kind::Letters, IntegerFormat::Case::Lower},
    NamedFormat{"I", IntegerFormat::Kind::Roman, IntegerFormat::Case::Upper},
    NamedFormat{"i", IntegerFormat::Kind::Roman, IntegerFormat::Case::Lower},
    NamedFormat{"W", IntegerFormat::Kind::Words, IntegerFormat::Case::Upper},
    NamedFormat{"w", IntegerFormat::Kind::Words, IntegerFormat::Case::Lower},
    NamedFormat{"Ww", IntegerFormat::Kind::Words, IntegerFormat::Case::Title},
};

struct RomanNumeral {
    std::string_view letters;
    unsigned int value;
};

constexpr std::array kRomanNumerals = {
    RomanNumeral{"M", 1000}, RomanNumeral{"CM", 900}, RomanNumeral{"D", 500}, RomanNumeral{"CD", 400},
    RomanNumeral{"C", 100},  RomanNumeral{"XC", 90},  RomanNumeral{"L", 50},  RomanNumeral{"XL", 40},
    RomanNumeral{"X", 10},   RomanNumeral{"IX", 9},   RomanNumeral{"V", 5},   RomanNumeral{"IV", 4},
    RomanNumeral{"I", 1},
};

std::string FormatRoman(double value) {
    std::string text;
    for (const RomanNumeral& numeral : kRomanNumerals) {
        for (; value >= numeral.value; value -= numeral.value)
            text += numeral.letters;
    }
    return text;
}

/// A to Z, AA to ZZ, ...: base 26 with the digits 1 to 26.
std::string FormatLetters(double value) {
    std::string text;
    for (auto rest = static_cast<std::uint64_t>(value); rest > 0; rest = (rest - 1) / 26)
        text += static_cast<char>('A' + (rest - 1) % 26);
    std::reverse(text.begin(), text.end());
    return text;
}

double RomanValue(char letter) {
    const auto* const found = std::find_if(kRomanNumerals.begin(), kRomanNumerals.end(), [letter](const auto& numeral) {
        return numeral.letters.size() == 1 && numeral.letters.front() == letter;
    });
    return found == kRomanNumerals.end() ? 0 : found->value;
}

/// A numeral counts down where a greater one stands to its right.
std::optional<double> ReadRoman(std::string_view upper) {
    double sum = 0;
    double greatest = 0;
    for (std::size_t at = upper.size(); at-- > 0;) {
        const double value = RomanValue(upper[at]);
        if (value == 0) return std::nullopt;
        sum += value < greatest ? -value : value;
        greatest = std::max(greatest, value);
    }
    return sum;
}

std::optional<double> ReadLetters(std::string_view upper) {
    double sum = 0;
    for (const char c : upper) {
        if (c < 'A' || c > 'Z') return std::nullopt;
        sum = sum * 26 + (c - 'A' + 1);
    }
    return std::isfinite(sum) ? std::optional(sum) : std::nullopt;
}

std::string_view OrdinalSuffix(std::string_view digits) {
    const char last = digits.empty() ? '0' : digits.back();
    if (digits.size() > 1 && digits[digits.size() - 2] == '1') return "th";
    return last == '1' ? "st" : last == '2' ? "nd" : last == '3' ? "rd" : "th";
}

std::string ChangeCase(const std::string& title, IntegerFormat::Case letterCase) {
    if (letterCase == IntegerFormat::Case::Upper) return ToUpperCase(title);
    return letterCase == IntegerFormat::Case::Lower ? ToLowerCase(title) : title;
}

/// The zero of the script of a decimal digit; 0 for any other character.
char32_t ZeroOfDigit(char32_t character) {
    const auto code = static_cast<UChar32>(character);
    if (u_charType(code) != U_DECIMAL_DIGIT_NUMBER) return 0;
    return character - static_cast<char32_t>(u_charDigitValue(code));
}

bool IsBlank(char32_t character) {
    return u_isUWhiteSpace(static_cast<UChar32>(character)) != 0;
}

}  // namespace

Result<IntegerFormat> IntegerFormat::Parse(std::string_view picture) {
    const std::size_t semicolon = picture.rfind(';');
    if (semicolon == std::string_view::npos) return Parse(picture, false);
    return Parse(picture.substr(0, semicolon), picture.substr(semicolon + 1).starts_with('o'));
}

Result<IntegerFormat> IntegerFormat::Parse(std::string_view primary, bool isOrdinal) {
    IntegerFormat format;
    format.isOrdinal_ = isOrdinal;
    for (const NamedFormat& named : kNamedFormats) {
        if (named.token != primary) continue;
        format.kind_ = named.kind;
        format.case_ = named.letterCase;
        return format;
    }
    bool isMixed = false;
    if (!format.ReadDecimalPicture(primary, isMixed)) return Failure{"D3130", std::string(primary), {}};
    if (isMixed) return Failure{"D3131", std::string(primary), {}};
    format.FindRegularGrouping();
    return format;
}

bool IntegerFormat::ReadDecimalPicture(std::string_view primary, bool& isMixed) {
    zeroDigit_ = 0;
    const std::u32string characters = ToCodePoints(primary);
    for (std::size_t at = characters.size(); at-- > 0;) {
        const char32_t zero = ZeroOfDigit(characters[at]);
        if (zero != 0) {
            if (zeroDigit_ != 0 && zero != zeroDigit_) isMixed = true;
            zeroDigit_ = zero;
            ++mandatoryDigits_;
        } else if (characters[at] == U'#') {
            ++optionalDigits_;
        } else {
            separators_.push_back({GetAllDigits(), characters[at]});
        }
    }
    return mandatoryDigits_ > 0;
}

void IntegerFormat::FindRegularGrouping() noexcept {
    if (separators_.empty()) return;
    const Separator& first = separators_.front();
    std::size_t position = 0;
    for (const Separator& separator : separators_) {
        position += first.position;
        if (separator.character != first.character || separator.position != position) return;
    }
    regularGroup_ = first.position;
}

void IntegerFormat::FitWidth(std::size_t minimum, std::optional<std::size_t> maximum) noexcept {
    mandatoryDigits_ = std::max(mandatoryDigits_, minimum);
    if (maximum) mandatoryDigits_ = std::min(mandatoryDigits_, *maximum);
}

std::string IntegerFormat::FormatDecimal(std::string digits) const {
    if (digits.size() < mandatoryDigits_) digits.insert(0, mandatoryDigits_ - digits.size(), '0');
    std::string text;
    auto separator = separators_.rbegin();  // the leftmost first
    for (std::size_t at = 0; at <= digits.size(); ++at) {
        const std::size_t right = digits.size() - at;
        if (regularGroup_ != 0) {
            if (at > 0 && right > 0 && right % regularGroup_ == 0) {
                AppendCodePoint(text, separators_.front().character);
            }
        } else {
            for (; separator != separators_.rend() && separator->position >= right; ++separator) {
                if (at > 0) AppendCodePoint(text, separator->character);
            }
        }
        if (right > 0) AppendCodePoint(text, zeroDigit_ + static_cast<char32_t>(digits[at] - '0'));
    }
    return text;
}

std::string IntegerFormat::Format(double value) const {
    if (!std::isfinite(value)) return PrintNumber(value);
    value = std::floor(value);
    const double magnitude = std::fabs(value);
    const std::string digits = DecimalDigits::Of(magnitude).GetWhole();
    const bool isTooLarge =
        (kind_ == Kind::Roman && magnitude > kLargestRoman) || (kind_ == Kind::Letters && magnitude > kLargestLetters);
    std::string text;
    if (isTooLarge) {
        text = digits;
    } else if (kind_ == Kind::Roman) {
        text = ChangeCase(FormatRoman(magnitude), case_);
    } else if (kind_ == Kind::Letters) {
        text = ChangeCase(FormatLetters(magnitude), case_);
    } else if (kind_ == Kind::Words) {
        const auto wordKind = isOrdinal_ ? NumberWordKind::Ordinal : NumberWordKind::Cardinal;
        text = ChangeCase(WriteNumberWords(digits, wordKind), case_);
    } else {
        text = FormatDecimal(digits);
        if (isOrdinal_) text += OrdinalSuffix(digits);
    }
    return value < 0 ? "-" + text : text;
}

std::optional<double> IntegerFormat::ReadDecimal(std::string_view text) const {
    std::u32string characters = ToCodePoints(text);
    if (isOrdinal_) {
        if (characters.size() < 2) return std::nullopt;
        characters.resize(characters.size() - 2);
    }
    std::size_t at = 0;
    while (at < characters.size() && IsBlank(characters[at]))
        ++at;
    std::string digits;
    if (at < characters.size() && (characters[at] == U'-' || characters[at] == U'+')) {
        if (characters[at] == U'-') digits = "-";
        ++at;
    }
    std::u32string skipped;
    for (const Separator& separator : separators_)
        skipped += separator.character;
    std::sort(skipped.begin(), skipped.end());
    bool isAny = false;
    for (; at < characters.size(); ++at) {
        const char32_t character = characters[at];
        if (character >= zeroDigit_ && character - zeroDigit_ <= 9) {
            digits += static_cast<char>('0' + (character - zeroDigit_));
            isAny = true;
        } else if (!std::binary_search(skipped.begin(), skipped.end(), character)) {
            break;
        }
    }
    if (!isAny) return std::nullopt;
    const char* start = digits.c_str();
    const double value = tn_strtod(start);
    return std::isfinite(value) ? std::optional(value == 0 ? 0 : value) : std::nullopt;
}

std::optional<double> IntegerFormat::ReadText(std::string_view text) const {
    switch (kind_) {
        case Kind::Letters: return ReadLetters(case_ == Case::Upper ? std::string(text) : ToUpperCase(text));
        case Kind::Roman: return ReadRoman(case_ == Case::Upper ? std::string(text) : ToUpperCase(text));
        case Kind::Words: return ReadNumberWords(text);
        case Kind::Decimal: break;
    }
    return ReadDecimal(text);
}

std::string IntegerFormat::GetExpression(bool isExact) const {
    switch (kind_) {
        case Kind::Letters: return "[a-z]+";
        case Kind::Roman: return "[mdclxvi]+";
        case Kind::Words: return GetNumberWordsExpression();
        case Kind::Decimal: break;
    }
    std::string set = GetDigitSet();
    if (!isExact) {
        set.pop_back();
        for (const Separator& separator : separators_) {
            if (std::u32string_view(U"^-]\\[/").find(separator.character) != std::u32string_view::npos) set += '\\';
            AppendCodePoint(set, separator.character);
        }
        set += ']';
    }
    set += isExact ? "{" + std::to_string(GetAllDigits()) + "}" : "+";
    return isOrdinal_ ? set + "(?:st|nd|rd|th)" : set;
}

std::string IntegerFormat::GetDigitSet() const {
    std::string set = "[";
    AppendCodePoint(set, zeroDigit_);
    set += '-';
    AppendCodePoint(set, zeroDigit_ + 9);
    return set + "]";
}

std::string IntegerFormat::TransferDigits(std::string_view digits) const {
    std::string text;
    for (const char digit : digits)
        AppendCodePoint(text, zeroDigit_ + static_cast<char32_t>(digit - '0'));
    return text;
}

std::string IntegerFormat::TransferBack(std::string_view text) const {
    std::string digits;
    for (const char32_t character : ToCodePoints(text)) {
        const bool isDigit = character >= zeroDigit_ && character - zeroDigit_ <= 9;
        AppendCodePoint(digits, isDigit ? U'0' + (character - zeroDigit_) : character);
    }
    return digits;
}

Result<std::string> FormatInteger(double value, std::string_view picture) {
    Result<IntegerFormat> format = IntegerFormat::Parse(picture);
    if (!format) return format.TakeFailure();
    return format->Format(value);
}

Result<std::optional<double>> ParseInteger(std::string_view text, std::string_view picture) {
    Result<IntegerFormat> format = IntegerFormat::Parse(picture);
    if (!format) return format.TakeFailure();
    return format->ReadText(text);
}

}  // namespace tn61131::jsonata
