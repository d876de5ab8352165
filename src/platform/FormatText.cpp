#include "platform/FormatText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <optional>

#include "platform/FloatText.h"
#include "platform/Transcode.h"

namespace {

// Widths and precisions beyond this are cut, so that a text cannot ask for gigabytes of padding.
constexpr unsigned int kMaxFieldSize = 4095;
// The longest fixed form: 309 digits of the largest double, the point and the fraction.
constexpr std::size_t kMaxDoubleText = 309 + 1 + kMaxFieldSize + 16;

enum class Length : std::uint8_t { Char, Short, Int, Long };

struct Placeholder {
    bool leftAligned = false;
    bool plusSign = false;
    bool blankSign = false;
    bool alternative = false;
    bool zeroPadded = false;
    unsigned int width = 0;
    std::optional<unsigned int> precision;
    Length length = Length::Int;
    char conversion = 0;
};

constexpr std::string_view kConversions = "diuxXocsfFeEgG%";

/// Reads the parts of a placeholder behind its '%'. Characters beyond the end read as 0.
class PlaceholderParser {
 public:
    explicit PlaceholderParser(std::string_view text) noexcept : text_(text) {}

    /// Bytes taken so far.
    [[nodiscard]] std::size_t GetPosition() const noexcept { return position_; }

    [[nodiscard]] Placeholder Parse() noexcept {
        Placeholder field;
        while (ParseFlag(field))
            ++position_;
        field.width = ParseNumber();
        if (Peek() == '.') {
            ++position_;
            field.precision = ParseNumber();
        }
        field.length = ParseLength();
        if (position_ < text_.size()) field.conversion = text_[position_++];
        return field;
    }

 private:
    [[nodiscard]] char Peek() const noexcept { return position_ < text_.size() ? text_[position_] : '\0'; }

    [[nodiscard]] bool ParseFlag(Placeholder& field) const noexcept {
        switch (Peek()) {
            case '-': return field.leftAligned = true;
            case '+': return field.plusSign = true;
            case ' ': return field.blankSign = true;
            case '#': return field.alternative = true;
            case '0': return field.zeroPadded = true;
            default: return false;
        }
    }

    [[nodiscard]] unsigned int ParseNumber() noexcept {
        unsigned int number = 0;
        for (; Peek() >= '0' && Peek() <= '9'; ++position_)
            number = std::min(number * 10 + static_cast<unsigned int>(Peek() - '0'), kMaxFieldSize);
        return number;
    }

    [[nodiscard]] Length ParseLength() noexcept {
        Length length = Length::Int;
        for (;; ++position_) {
            if (Peek() == 'h') {
                length = length == Length::Short ? Length::Char : Length::Short;
            } else if (Peek() == 'l' || Peek() == 'z') {
                length = Length::Long;
            } else {
                return length;
            }
        }
    }

    std::string_view text_;
    std::size_t position_ = 0;
};

/// Appends sign or prefix and body, filled up to the width: blanks in front, blanks behind, or zeros between the two.
void AppendField(std::string& out, const Placeholder& field, std::string_view prefix, std::string_view body,
                 bool zerosAllowed) {
    const std::size_t size = prefix.size() + body.size();
    const std::size_t fill = field.width > size ? field.width - size : 0;
    const bool zeros = field.zeroPadded && zerosAllowed && !field.leftAligned;
    if (!zeros && !field.leftAligned) out.append(fill, ' ');
    out.append(prefix);
    if (zeros) out.append(fill, '0');
    out.append(body);
    if (field.leftAligned) out.append(fill, ' ');
}

void AppendTextField(std::string& out, const Placeholder& field, std::string_view text) {
    if (field.conversion == 's' && field.precision) text = text.substr(0, CutUtf8(text, *field.precision));
    AppendField(out, field, {}, text, false);
}

std::string_view SignText(const Placeholder& field, bool negative) noexcept {
    if (negative) return "-";
    if (field.plusSign) return "+";
    return field.blankSign ? " " : "";
}

std::int64_t ReduceSigned(std::uint64_t bits, Length length) noexcept {
    switch (length) {
        case Length::Char: return static_cast<std::int8_t>(bits);
        case Length::Short: return static_cast<std::int16_t>(bits);
        case Length::Int: return static_cast<std::int32_t>(bits);
        case Length::Long: break;
    }
    return static_cast<std::int64_t>(bits);
}

std::uint64_t ReduceUnsigned(std::uint64_t bits, Length length) noexcept {
    switch (length) {
        case Length::Char: return static_cast<std::uint8_t>(bits);
        case Length::Short: return static_cast<std::uint16_t>(bits);
        case Length::Int: return static_cast<std::uint32_t>(bits);
        case Length::Long: break;
    }
    return bits;
}

char ToUpperAscii(char c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

void AppendDigitsField(std::string& out, const Placeholder& field, std::string_view prefix, std::string_view digits) {
    if (!field.precision) {
        AppendField(out, field, prefix, digits, true);
        return;
    }
    if (digits == "0" && *field.precision == 0) digits = {};
    if (digits.size() >= *field.precision) {
        AppendField(out, field, prefix, digits, false);
        return;
    }
    std::string padded(*field.precision - digits.size(), '0');
    padded.append(digits);
    AppendField(out, field, prefix, padded, false);
}

void AppendSigned(std::string& out, const Placeholder& field, std::int64_t value) {
    const std::uint64_t magnitude =
        value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    std::array<char, 20> digits;
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), magnitude).ptr;
    AppendDigitsField(out, field, SignText(field, value < 0), {digits.data(), end});
}

void AppendUnsigned(std::string& out, const Placeholder& field, std::uint64_t value) {
    const char conversion = field.conversion;
    const int base = conversion == 'x' || conversion == 'X' ? 16 : conversion == 'o' ? 8 : 10;
    std::array<char, 23> digits;
    digits[0] = '0';
    char* const first = digits.data() + 1;
    char* const end = std::to_chars(first, digits.data() + digits.size(), value, base).ptr;
    if (conversion == 'X') std::transform(first, end, first, ToUpperAscii);
    std::string_view prefix;
    if (field.alternative && value != 0 && base == 16) prefix = conversion == 'X' ? "0X" : "0x";
    const bool leadingZero = field.alternative && value != 0 && base == 8;
    AppendDigitsField(out, field, prefix, {leadingZero ? digits.data() : first, end});
}

void AppendIntegerField(std::string& out, const Placeholder& field, std::uint64_t bits) {
    if (field.conversion == 'd' || field.conversion == 'i') {
        AppendSigned(out, field, ReduceSigned(bits, field.length));
    } else {
        AppendUnsigned(out, field, ReduceUnsigned(bits, field.length));
    }
}

/// An integer that no placeholder asked for.
void AppendNaturalInteger(std::string& out, const Placeholder& field, const FormatArg& arg) {
    Placeholder natural = field;
    natural.precision.reset();
    natural.conversion = 'u';
    if (arg.GetKind() == FormatArg::Kind::Signed) {
        AppendSigned(out, natural, arg.AsSigned());
    } else {
        AppendUnsigned(out, natural, arg.AsUnsigned());
    }
}

void AppendCharacterField(std::string& out, const Placeholder& field, const FormatArg& arg) {
    std::string text;
    if (field.length == Length::Long) {
        const std::uint64_t codePoint = arg.AsUnsigned();
        tn_append_codepoint_to_tnstring(
            text, codePoint <= 0x10FFFF ? static_cast<char32_t>(codePoint) : kReplacementCharacter);
    } else {
        text.push_back(static_cast<char>(arg.AsUnsigned() & 0xFF));
    }
    AppendField(out, field, {}, text, false);
}

using DoubleText = std::array<char, kMaxDoubleText>;

/// "%#g": like %g, with its trailing zeros.
std::chars_format FormatOfAlternativeGeneral(double magnitude, int& precision) {
    std::array<char, kMaxFieldSize + 16> text;
    const int digits = std::max(precision, 1);
    const char* const end =
        std::to_chars(text.data(), text.data() + text.size(), magnitude, std::chars_format::scientific, digits - 1).ptr;
    const char* at = std::find(static_cast<const char*>(text.data()), end, 'e') + 1;
    int exponent = 0;
    std::from_chars(*at == '+' ? at + 1 : at, end, exponent);
    const bool fixed = exponent >= -4 && exponent < digits;
    precision = fixed ? digits - 1 - exponent : digits - 1;
    return fixed ? std::chars_format::fixed : std::chars_format::scientific;
}

std::string_view FiniteBody(DoubleText& text, const Placeholder& field, double magnitude) {
    const char kind = static_cast<char>(field.conversion | 0x20);
    int precision = static_cast<int>(field.precision.value_or(6));
    std::chars_format format = std::chars_format::general;
    if (kind == 'f') format = std::chars_format::fixed;
    if (kind == 'e') format = std::chars_format::scientific;
    if (kind == 'g' && field.alternative) format = FormatOfAlternativeGeneral(magnitude, precision);

    char* const first = text.data();
    // One byte stays free for the point below.
    char* end = std::to_chars(first, first + text.size() - 1, magnitude, format, precision).ptr;
    if (field.alternative && std::find(first, end, '.') == end) {
        char* const exponent = std::find(first, end, 'e');
        std::memmove(exponent + 1, exponent, static_cast<std::size_t>(end - exponent));
        *exponent = '.';
        ++end;
    }
    return {first, end};
}

void AppendDoubleField(std::string& out, const Placeholder& field, double value) {
    const bool finite = std::isfinite(value);
    DoubleText buffer;
    std::string_view body = finite ? FiniteBody(buffer, field, std::fabs(value)) : std::isnan(value) ? "nan" : "inf";
    if (field.conversion >= 'A' && field.conversion <= 'Z') {
        std::transform(body.begin(), body.end(), buffer.begin(), ToUpperAscii);
        body = {buffer.data(), body.size()};
    }
    AppendField(out, field, SignText(field, std::signbit(value) && !std::isnan(value)), body, finite);
}

void AppendArgument(std::string& out, const Placeholder& field, const FormatArg& arg) {
    const bool integer = arg.GetKind() == FormatArg::Kind::Signed || arg.GetKind() == FormatArg::Kind::Unsigned;
    if (arg.GetKind() == FormatArg::Kind::Text) {
        AppendTextField(out, field, arg.AsText());
    } else if (integer && field.conversion == 'c') {
        AppendCharacterField(out, field, arg);
    } else if (integer && std::string_view("diuxXo").find(field.conversion) != std::string_view::npos) {
        AppendIntegerField(out, field, arg.AsUnsigned());
    } else if (integer) {
        AppendNaturalInteger(out, field, arg);
    } else if (std::string_view("fFeEgG").find(field.conversion) != std::string_view::npos) {
        AppendDoubleField(out, field, arg.AsDouble());
    } else {
        std::string text;
        AppendShortest(text, arg.AsDouble());
        AppendField(out, field, {}, text, false);
    }
}

}  // namespace

// The limits of the integer types as doubles: the powers of two beyond them are exact, the limits themselves are not.
std::int64_t FormatArg::AsSigned() const noexcept {
    switch (kind_) {
        case Kind::Signed: return signed_;
        case Kind::Unsigned: return static_cast<std::int64_t>(unsigned_);
        case Kind::Text: return 0;
        case Kind::Double: break;
    }
    if (std::isnan(double_)) return 0;
    if (double_ >= 0x1p63) return std::numeric_limits<std::int64_t>::max();
    return double_ < -0x1p63 ? std::numeric_limits<std::int64_t>::min() : static_cast<std::int64_t>(double_);
}

std::uint64_t FormatArg::AsUnsigned() const noexcept {
    switch (kind_) {
        case Kind::Signed: return static_cast<std::uint64_t>(signed_);
        case Kind::Unsigned: return unsigned_;
        case Kind::Text: return 0;
        case Kind::Double: break;
    }
    if (double_ >= 0x1p64) return std::numeric_limits<std::uint64_t>::max();
    return double_ >= 0 ? static_cast<std::uint64_t>(double_) : 0;
}

double FormatArg::AsDouble() const noexcept {
    switch (kind_) {
        case Kind::Signed: return static_cast<double>(signed_);
        case Kind::Unsigned: return static_cast<double>(unsigned_);
        case Kind::Double: return double_;
        case Kind::Text: break;
    }
    return 0;
}

void AppendFormatted(std::string& out, std::string_view format, FormatArgs args) {
    std::size_t nextArg = 0;
    for (;;) {
        const std::size_t percent = format.find('%');
        out.append(format.substr(0, percent));
        if (percent == std::string_view::npos) return;
        format.remove_prefix(percent);
        PlaceholderParser parser(format.substr(1));
        const Placeholder field = parser.Parse();
        const std::string_view source = format.substr(0, 1 + parser.GetPosition());
        format.remove_prefix(source.size());
        if (field.conversion == '%') {
            out.push_back('%');
        } else if (field.conversion == 0 || kConversions.find(field.conversion) == std::string_view::npos) {
            out.append(source);
        } else if (nextArg < args.size()) {
            AppendArgument(out, field, args[nextArg++]);
        }
    }
}

unsigned int CopyBounded(char* buffer, unsigned int size, std::string_view text) {
    if (size == 0) return 0;
    const std::size_t count = CutUtf8(text, size - 1);
    if (count != 0) std::memcpy(buffer, text.data(), count);
    buffer[count] = '\0';
    return static_cast<unsigned int>(count);
}
