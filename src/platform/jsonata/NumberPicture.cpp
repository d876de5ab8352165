#include "platform/jsonata/NumberPicture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "platform/jsonata/CodePoints.h"
#include "platform/jsonata/DecimalDigits.h"

namespace tn61131::jsonata {

namespace {

struct FormatProperty {
    std::string_view name;
    std::string DecimalFormat::*member;
};

constexpr std::array kProperties = {
    FormatProperty{"decimal-separator", &DecimalFormat::decimalSeparator},
    FormatProperty{"grouping-separator", &DecimalFormat::groupingSeparator},
    FormatProperty{"exponent-separator", &DecimalFormat::exponentSeparator},
    FormatProperty{"infinity", &DecimalFormat::infinity},
    FormatProperty{"minus-sign", &DecimalFormat::minusSign},
    FormatProperty{"NaN", &DecimalFormat::nan},
    FormatProperty{"percent", &DecimalFormat::percent},
    FormatProperty{"per-mille", &DecimalFormat::perMille},
    FormatProperty{"zero-digit", &DecimalFormat::zeroDigit},
    FormatProperty{"digit", &DecimalFormat::digit},
    FormatProperty{"pattern-separator", &DecimalFormat::patternSeparator},
};

/// What a part of a picture means.
enum class Role : std::uint8_t { Passive, Percent, PerMille, Digit, OptionalDigit, Decimal, Grouping, Exponent };

struct Token {
    Role role;
    std::string_view text;
};

using Tokens = std::span<const Token>;

/// Active wherever it stands; an exponent separator is so only behind such a one.
bool IsActive(const Token& token) {
    return token.role >= Role::Digit && token.role != Role::Exponent;
}

bool IsAnyDigit(const Token& token) {
    return token.role == Role::Digit || token.role == Role::OptionalDigit;
}

std::size_t CountOf(Tokens tokens, Role role) {
    return static_cast<std::size_t>(
        std::count_if(tokens.begin(), tokens.end(), [role](const Token& token) { return token.role == role; }));
}

std::size_t PlaceOf(Tokens tokens, Role role) {
    return static_cast<std::size_t>(
        std::find_if(tokens.begin(), tokens.end(), [role](const Token& token) { return token.role == role; }) -
        tokens.begin());
}

std::string TextOf(Tokens tokens) {
    std::string text;
    for (const Token& token : tokens)
        text += token.text;
    return text;
}

char32_t ZeroOf(const DecimalFormat& format) {
    return format.zeroDigit.empty() ? U'0' : DecodeAt(format.zeroDigit, 0).value;
}

bool StartsWith(std::string_view text, const std::string& property) {
    return !property.empty() && text.starts_with(property);
}

/// The next token of a picture that is not empty.
Token ReadToken(std::string_view picture, const DecimalFormat& format) {
    struct Choice {
        const std::string& property;
        Role role;
    };
    const std::array choices = {
        Choice{format.decimalSeparator, Role::Decimal}, Choice{format.groupingSeparator, Role::Grouping},
        Choice{format.digit, Role::OptionalDigit},      Choice{format.percent, Role::Percent},
        Choice{format.perMille, Role::PerMille},        Choice{format.exponentSeparator, Role::Exponent},
    };
    const CodePoint character = DecodeAt(picture, 0);
    const char32_t zero = ZeroOf(format);
    if (character.value >= zero && character.value - zero <= 9) return {Role::Digit, picture.substr(0, character.size)};
    for (const Choice& choice : choices) {
        if (StartsWith(picture, choice.property)) return {choice.role, picture.substr(0, choice.property.size())};
    }
    return {Role::Passive, picture.substr(0, character.size)};
}

/// The sub-pictures, one after the other.
std::vector<std::vector<Token>> Split(std::string_view picture, const DecimalFormat& format) {
    std::vector<std::vector<Token>> parts(1);
    while (!picture.empty()) {
        std::size_t size = format.patternSeparator.size();
        if (StartsWith(picture, format.patternSeparator)) {
            parts.emplace_back();
        } else {
            parts.back().push_back(ReadToken(picture, format));
            size = parts.back().back().text.size();
        }
        picture.remove_prefix(size);
    }
    return parts;
}

/// A sub-picture, cut into what the rules speak of.
struct SubPicture {
    Tokens prefix;
    Tokens active;
    Tokens suffix;
    Tokens whole;
    Tokens fraction;
    std::optional<Tokens> exponent;
    bool hasDecimal = false;
};

/// What a sub-picture says about a number.
struct Layout {
    std::string prefix;
    std::string suffix;
    double factor = 1;
    std::size_t minimumWhole = 0;
    std::size_t scaling = 0;
    std::size_t minimumFraction = 0;
    std::size_t maximumFraction = 0;
    std::size_t minimumExponent = 0;  ///< 0 where numbers have no exponent
    /// How many digits stand to the right (whole part) or to the left (fraction) of each grouping separator.
    std::vector<std::size_t> wholeGroups;
    std::vector<std::size_t> fractionGroups;
    std::size_t regularGroup = 0;  ///< digits of each group where separators repeat; else 0
};

SubPicture Cut(Tokens tokens) {
    SubPicture part;
    const auto begin = static_cast<std::size_t>(std::find_if(tokens.begin(), tokens.end(), IsActive) - tokens.begin());
    std::size_t end = begin;
    for (std::size_t at = begin; at < tokens.size(); ++at) {
        const bool isExponentBehind = tokens[at].role == Role::Exponent && end == at;
        if (IsActive(tokens[at]) || isExponentBehind) end = at + 1;
    }
    if (begin == tokens.size()) {
        // Nothing is active: all of it stands where only active characters may.
        part.active = tokens;
        return part;
    }
    part.prefix = tokens.first(begin);
    part.active = tokens.subspan(begin, end - begin);
    part.suffix = tokens.subspan(end);

    Tokens mantissa = part.active;
    const std::size_t exponent = PlaceOf(mantissa, Role::Exponent);
    if (exponent < mantissa.size()) {
        part.exponent = mantissa.subspan(exponent + 1);
        mantissa = mantissa.first(exponent);
    }
    const std::size_t decimal = PlaceOf(mantissa, Role::Decimal);
    part.hasDecimal = decimal < mantissa.size();
    part.whole = mantissa.first(decimal);
    if (part.hasDecimal) part.fraction = mantissa.subspan(decimal + 1);
    return part;
}

/// One role directly before another.
bool IsAdjacent(Tokens tokens, Role first, Role second) {
    for (std::size_t at = 1; at < tokens.size(); ++at) {
        if (tokens[at - 1].role == first && tokens[at].role == second) return true;
    }
    return false;
}

/// One role anywhere before another.
bool IsBefore(Tokens tokens, Role first, Role second) {
    const std::size_t place = PlaceOf(tokens, first);
    return place < tokens.size() && PlaceOf(tokens.subspan(place), second) < tokens.size() - place;
}

bool IsPassive(const Token& token) {
    return token.role < Role::Digit;
}

/// The code of the last rule that a sub-picture breaks; empty for none.
std::string_view FindMistake(Tokens tokens, const SubPicture& part) {
    const std::size_t percents = CountOf(tokens, Role::Percent);
    const std::size_t perMilles = CountOf(tokens, Role::PerMille);
    if (part.exponent && (part.exponent->empty() || CountOf(*part.exponent, Role::Digit) != part.exponent->size())) {
        return "D3093";
    }
    if (part.exponent && percents + perMilles > 0) return "D3092";
    if (IsBefore(part.fraction, Role::OptionalDigit, Role::Digit)) return "D3091";
    if (IsBefore(part.whole, Role::Digit, Role::OptionalDigit)) return "D3090";
    if (IsAdjacent(part.active, Role::Grouping, Role::Grouping)) return "D3089";
    if (!part.hasDecimal && !part.whole.empty() && part.whole.back().role == Role::Grouping) return "D3088";
    if (IsAdjacent(part.active, Role::Grouping, Role::Decimal) ||
        IsAdjacent(part.active, Role::Decimal, Role::Grouping)) {
        return "D3087";
    }
    if (std::any_of(part.active.begin(), part.active.end(), IsPassive)) return "D3086";
    if (std::none_of(part.whole.begin(), part.whole.end(), IsAnyDigit) &&
        std::none_of(part.fraction.begin(), part.fraction.end(), IsAnyDigit)) {
        return "D3085";
    }
    if (percents > 0 && perMilles > 0) return "D3084";
    if (perMilles > 1) return "D3083";
    if (percents > 1) return "D3082";
    if (CountOf(tokens, Role::Decimal) > 1) return "D3081";
    return {};
}

/// N where separators stand at N, 2N, 3N, ... digits from the point, one of them being enough; else 0.
std::size_t FindRegularGroup(const std::vector<std::size_t>& positions) {
    if (positions.empty()) return 0;
    const std::size_t group = positions.back();
    for (std::size_t i = 0; i < positions.size(); ++i) {
        if (positions[positions.size() - 1 - i] != group * (i + 1)) return 0;
    }
    return group;
}

/// Rules 6 to 12 of section 4.7.4.
Layout Analyse(Tokens tokens, const SubPicture& part) {
    Layout layout;
    layout.prefix = TextOf(part.prefix);
    layout.suffix = TextOf(part.suffix);
    if (CountOf(tokens, Role::Percent) > 0) layout.factor = 100;
    if (CountOf(tokens, Role::PerMille) > 0) layout.factor = 1000;
    layout.minimumWhole = CountOf(part.whole, Role::Digit);
    layout.scaling = layout.minimumWhole;
    layout.minimumFraction = CountOf(part.fraction, Role::Digit);
    layout.maximumFraction = layout.minimumFraction + CountOf(part.fraction, Role::OptionalDigit);
    if (part.exponent) layout.minimumExponent = part.exponent->size();
    if (layout.minimumWhole == 0 && layout.maximumFraction == 0) {
        if (part.exponent) {
            layout.minimumFraction = layout.maximumFraction = 1;
        } else {
            layout.minimumWhole = 1;
        }
    }
    const std::size_t wholeDigits = CountOf(part.whole, Role::Digit) + CountOf(part.whole, Role::OptionalDigit);
    if (part.exponent && layout.minimumWhole == 0 && wholeDigits > 0) layout.minimumWhole = 1;
    if (layout.minimumWhole == 0 && layout.minimumFraction == 0) layout.minimumFraction = 1;

    std::size_t before = 0;
    for (const Token& token : part.whole) {
        if (IsAnyDigit(token)) ++before;
        if (token.role == Role::Grouping) layout.wholeGroups.push_back(wholeDigits - before);
    }
    layout.regularGroup = FindRegularGroup(layout.wholeGroups);
    before = 0;
    for (const Token& token : part.fraction) {
        if (IsAnyDigit(token)) ++before;
        if (token.role == Role::Grouping) layout.fractionGroups.push_back(before);
    }
    return layout;
}

class NumberWriter {
 public:
    NumberWriter(const Layout& layout, const DecimalFormat& format) : layout_(layout), format_(format) {}

    std::string Write(double magnitude) {
        DecimalDigits decimal = DecimalDigits::Of(magnitude);
        int exponent = 0;
        if (layout_.minimumExponent > 0 && !decimal.IsZero()) {
            exponent = decimal.point - static_cast<int>(layout_.scaling);
            decimal.point = static_cast<int>(layout_.scaling);
        }
        // No double has digits beyond these places.
        constexpr std::size_t kMostPlaces = 1100;
        decimal.RoundToPlaces(static_cast<int>(std::min(layout_.maximumFraction, kMostPlaces)));
        WriteWhole(decimal.GetWhole());
        WriteFraction(decimal.IsZero() ? std::string() : decimal.GetFraction());
        if (layout_.minimumExponent > 0) WriteExponent(exponent);
        return std::move(text_);
    }

 private:
    void WriteDigit(char digit) { AppendCodePoint(text_, ZeroOf(format_) + static_cast<char32_t>(digit - '0')); }

    void WriteWhole(std::string digits) {
        if (digits.size() < layout_.minimumWhole) digits.insert(0, layout_.minimumWhole - digits.size(), '0');
        auto group = layout_.wholeGroups.begin();  // the leftmost first
        for (std::size_t at = 0; at < digits.size(); ++at) {
            const std::size_t right = digits.size() - at;
            while (group != layout_.wholeGroups.end() && *group > right)
                ++group;
            const bool isGroup = layout_.regularGroup != 0 ? right % layout_.regularGroup == 0
                                                           : group != layout_.wholeGroups.end() && *group == right;
            if (at > 0 && isGroup) text_ += format_.groupingSeparator;
            WriteDigit(digits[at]);
        }
    }

    void WriteFraction(std::string digits) {
        if (digits.size() < layout_.minimumFraction) digits.resize(layout_.minimumFraction, '0');
        if (digits.empty()) return;
        text_ += format_.decimalSeparator;
        auto group = layout_.fractionGroups.begin();
        for (std::size_t at = 0; at < digits.size(); ++at) {
            if (group != layout_.fractionGroups.end() && *group == at) {
                text_ += format_.groupingSeparator;
                ++group;
            }
            WriteDigit(digits[at]);
        }
    }

    void WriteExponent(int exponent) {
        text_ += format_.exponentSeparator;
        if (exponent < 0) text_ += format_.minusSign;
        std::string digits = std::to_string(std::abs(exponent));
        if (digits.size() < layout_.minimumExponent) digits.insert(0, layout_.minimumExponent - digits.size(), '0');
        for (const char digit : digits)
            WriteDigit(digit);
    }

    const Layout& layout_;
    const DecimalFormat& format_;
    std::string text_;
};

}  // namespace

bool DecimalFormat::Set(std::string_view name, std::string_view value) {
    for (const FormatProperty& property : kProperties) {
        if (property.name != name) continue;
        this->*property.member = value;
        return true;
    }
    return false;
}

Result<std::string> FormatNumber(double value, std::string_view picture, const DecimalFormat& format) {
    const std::vector<std::vector<Token>> pictures = Split(picture, format);
    if (pictures.size() > 2) return Failure{"D3080", {}, {}};
    std::vector<Layout> layouts;
    for (const std::vector<Token>& tokens : pictures) {
        const SubPicture part = Cut(tokens);
        const std::string_view mistake = FindMistake(tokens, part);
        if (!mistake.empty()) return Failure{mistake, {}, {}};
        layouts.push_back(Analyse(tokens, part));
    }
    if (std::isnan(value)) return format.nan;
    if (layouts.size() == 1) {
        layouts.push_back(layouts.front());
        layouts.back().prefix.insert(0, format.minusSign);
    }
    const Layout& layout = value < 0 ? layouts.back() : layouts.front();
    const double magnitude = std::fabs(value) * layout.factor;
    std::string text = layout.prefix;
    text += std::isinf(magnitude) ? format.infinity : NumberWriter(layout, format).Write(magnitude);
    return text + layout.suffix;
}

}  // namespace tn61131::jsonata
