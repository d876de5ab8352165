#include "platform/jsonata/DateMarkers.h"

#include <algorithm>
#include <charconv>

#include "platform/jsonata/CodePoints.h"

namespace tn61131::jsonata {

namespace {

/// Wider than anything that is written.
constexpr std::size_t kLargestWidth = 1000;
constexpr std::size_t kMostZoneDigits = 4;

enum class Names { None, Some, Only };

struct DateComponent {
    char letter;
    std::string_view presentation;  ///< where the picture has none
    Names names;
};

constexpr std::array kComponents = {
    DateComponent{'Y', "1", Names::None},     DateComponent{'M', "1", Names::Some},
    DateComponent{'D', "1", Names::None},     DateComponent{'d', "1", Names::None},
    DateComponent{'F', "n", Names::Some},     DateComponent{'W', "1", Names::None},
    DateComponent{'w', "1", Names::None},     DateComponent{'X', "1", Names::None},
    DateComponent{'x', "1", Names::Some},     DateComponent{'H', "1", Names::None},
    DateComponent{'h', "1", Names::None},     DateComponent{'P', "n", Names::Only},
    DateComponent{'m', "01", Names::None},    DateComponent{'s', "01", Names::None},
    DateComponent{'f', "1", Names::None},     DateComponent{'Z', "01:01", Names::None},
    DateComponent{'z', "01:01", Names::None}, DateComponent{'C', "n", Names::Only},
    DateComponent{'E', "n", Names::Only},
};

std::string DropWhiteSpace(std::string_view text) {
    std::string dense;
    std::copy_if(text.begin(), text.end(), std::back_inserter(dense),
                 [](char c) { return c != ' ' && (c < '\t' || c > '\r'); });
    return dense;
}

/// "*" and nothing are no width. False for what is no width at all, and for one that is too large.
bool ReadWidth(std::string_view text, std::optional<std::size_t>& width) {
    if (text.empty() || text == "*") return true;
    std::size_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value > kLargestWidth) return false;
    if (value > 0) width = value;
    return true;
}

/// "min-max" or "min".
bool ReadWidths(std::string_view text, DatePart& part) {
    const std::size_t dash = text.find('-');
    std::optional<std::size_t> minimum;
    if (!ReadWidth(text.substr(0, dash), minimum)) return false;
    if (dash != std::string_view::npos && !ReadWidth(text.substr(dash + 1), part.maximumWidth)) return false;
    part.minimumWidth = minimum.value_or(0);
    if (part.maximumWidth) part.minimumWidth = std::min(part.minimumWidth, *part.maximumWidth);
    return true;
}

std::optional<Failure> ReadName(std::string_view presentation, DatePart& part) {
    part.style = DatePart::Style::Name;
    if (presentation.starts_with("Nn") && part.component != 'P') {
        part.nameCase = IntegerFormat::Case::Title;
    } else if (presentation == "N") {
        part.nameCase = IntegerFormat::Case::Upper;
    }
    return std::nullopt;
}

std::optional<Failure> ReadZone(std::string_view presentation, DatePart& part) {
    part.style = DatePart::Style::Zone;
    Result<IntegerFormat> format = IntegerFormat::Parse(presentation, false);
    if (!format || format->GetKind() != IntegerFormat::Kind::Decimal || format->GetAllDigits() > kMostZoneDigits) {
        return Failure{"D3134", std::string(presentation), {}};
    }
    part.number = std::move(*format);
    return std::nullopt;
}

std::optional<Failure> ReadNumber(std::string_view presentation, bool isOrdinal, DatePart& part) {
    part.style = DatePart::Style::Number;
    Result<IntegerFormat> format = IntegerFormat::Parse(presentation, isOrdinal);
    if (!format) return format.TakeFailure();
    part.number = std::move(*format);
    if (part.component != 'f') part.number.FitWidth(part.minimumWidth, part.maximumWidth);
    return std::nullopt;
}

std::optional<Failure> ReadMarker(std::string_view text, DatePart& part) {
    const std::string marker = DropWhiteSpace(text);
    const std::string letter = marker.empty() ? std::string() : marker.substr(0, DecodeAt(marker, 0).size);
    const auto* const component = std::find_if(kComponents.begin(), kComponents.end(), [&letter](const auto& each) {
        return letter == std::string_view(&each.letter, 1);
    });
    if (component == kComponents.end()) return Failure{"D3132", letter, {}};
    part.component = component->letter;

    std::string_view presentation = std::string_view(marker).substr(1);
    const std::size_t comma = presentation.rfind(',');
    if (comma != std::string_view::npos) {
        const std::string_view widths = presentation.substr(comma + 1);
        if (!ReadWidths(widths, part)) return Failure{"D3130", std::string(widths), {}};
        presentation = presentation.substr(0, comma);
    }
    bool isOrdinal = false;
    if (presentation.size() > 1 && std::string_view("atco").find(presentation.back()) != std::string_view::npos) {
        isOrdinal = presentation.back() == 'o';
        part.hasZulu = presentation.back() == 't';
        presentation.remove_suffix(1);
    }
    if (presentation.empty()) presentation = component->presentation;

    if (part.component == 'Z' || part.component == 'z') return ReadZone(presentation, part);
    const bool isName = presentation.front() == 'n' || presentation.front() == 'N';
    if (component->names == Names::Only || isName) return ReadName(presentation, part);
    return ReadNumber(presentation, isOrdinal, part);
}

/// The first name that has no meaning. The calendar and the era are always written the same, so that a text cannot be
/// read by them.
std::optional<Failure> FindMisplacedName(const std::vector<DatePart>& parts, DatePictureUse use) {
    for (const DatePart& part : parts) {
        if (part.style != DatePart::Style::Name) continue;
        const auto* const component = std::find_if(kComponents.begin(), kComponents.end(),
                                                   [&part](const auto& each) { return each.letter == part.component; });
        const bool isConstant = part.component == 'C' || part.component == 'E';
        if (component->names == Names::None || (isConstant && use == DatePictureUse::Parsing)) {
            return Failure{"D3133", std::string(1, part.component), {}};
        }
    }
    return std::nullopt;
}

/// Adds text to the parts, to the last one if that is text too.
void AddLiteral(std::vector<DatePart>& parts, std::string_view text) {
    if (text.empty()) return;
    if (parts.empty() || parts.back().style != DatePart::Style::Literal) parts.emplace_back();
    parts.back().literal += text;
}

}  // namespace

Result<std::vector<DatePart>> ParseDatePicture(std::string_view picture, DatePictureUse use) {
    std::vector<DatePart> parts;
    while (!picture.empty()) {
        const std::size_t bracket = std::min(picture.find_first_of("[]"), picture.size());
        AddLiteral(parts, picture.substr(0, bracket));
        picture.remove_prefix(bracket);
        if (picture.empty()) break;
        if (picture.front() == ']' || picture.starts_with("[[")) {
            // A bracket that is meant as such stands doubled; a closing one is taken alone too.
            const bool isDoubled = picture.size() > 1 && picture[1] == picture[0];
            AddLiteral(parts, picture.substr(0, 1));
            picture.remove_prefix(isDoubled ? 2 : 1);
            continue;
        }
        const std::size_t end = picture.find(']');
        if (end == std::string_view::npos) return Failure{"D3135", {}, {}};
        DatePart part;
        if (std::optional<Failure> failure = ReadMarker(picture.substr(1, end - 1), part)) return std::move(*failure);
        parts.push_back(std::move(part));
        picture.remove_prefix(end + 1);
    }
    if (std::optional<Failure> failure = FindMisplacedName(parts, use)) return std::move(*failure);
    return parts;
}

}  // namespace tn61131::jsonata
