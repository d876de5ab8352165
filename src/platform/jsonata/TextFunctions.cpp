#include "platform/jsonata/TextFunctions.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/stringpiece.h>

#include "platform/jsonata/CodePoints.h"
#include "platform/jsonata/NumberText.h"

namespace tn61131::jsonata {

namespace {

/// The most characters of a padded text; far above any column, far below what exhausts the memory.
constexpr double kWidestPadding = 16.0 * 1024 * 1024;

/// The byte offset of the code point with an index; the size of the text where it has no such.
std::size_t OffsetOf(std::string_view text, double index) noexcept {
    std::size_t at = 0;
    for (; index > 0 && at < text.size(); --index)
        at += DecodeAt(text, at).size;
    return at;
}

enum class Case { Upper, Lower };

void MapSegment(std::string_view text, Case target, std::string& mapped) {
    if (text.empty()) return;
    icu::StringByteSink<std::string> sink(&mapped);
    const icu::StringPiece piece(text.data(), static_cast<std::int32_t>(text.size()));
    UErrorCode status = U_ZERO_ERROR;
    if (target == Case::Upper) {
        icu::CaseMap::utf8ToUpper("", 0, piece, sink, nullptr, status);
    } else {
        icu::CaseMap::utf8ToLower("", 0, piece, sink, nullptr, status);
    }
}

/// The library knows no surrogates in UTF-8: they are taken over between the parts that it maps.
std::string MapCase(std::string_view text, Case target) {
    std::string mapped;
    std::size_t pending = 0;
    for (std::size_t at = text.find('\xED'); at < text.size(); at = text.find('\xED', at)) {
        const CodePoint codePoint = DecodeAt(text, at);
        if (IsSurrogate(codePoint.value)) {
            MapSegment(text.substr(pending, at - pending), target, mapped);
            mapped += text.substr(at, codePoint.size);
            pending = at + codePoint.size;
        }
        at += codePoint.size;
    }
    MapSegment(text.substr(pending), target, mapped);
    return mapped;
}

/// The UTF-16 units of a text, one after the other.
class UnitReader {
 public:
    explicit UnitReader(std::string_view text) noexcept : text_(text) {}

    [[nodiscard]] bool IsAtEnd() const noexcept { return low_ == 0 && at_ == text_.size(); }
    [[nodiscard]] char16_t Read() noexcept {
        if (low_ != 0) return std::exchange(low_, char16_t{0});
        const CodePoint codePoint = DecodeAt(text_, at_);
        at_ += codePoint.size;
        if (codePoint.value < 0x10000) return static_cast<char16_t>(codePoint.value);
        low_ = static_cast<char16_t>(0xDC00 + (codePoint.value & 0x3FFU));
        return static_cast<char16_t>(0xD7C0 + (codePoint.value >> 10U));
    }

 private:
    std::string_view text_;
    std::size_t at_ = 0;
    char16_t low_ = 0;
};

}  // namespace

std::size_t CountCodePoints(std::string_view text) noexcept {
    std::size_t count = 0;
    for (std::size_t at = 0; at < text.size(); ++count)
        at += DecodeAt(text, at).size;
    return count;
}

std::size_t CountUTF16Units(std::string_view text) noexcept {
    std::size_t count = 0;
    for (std::size_t at = 0; at < text.size();) {
        const CodePoint codePoint = DecodeAt(text, at);
        count += codePoint.value < 0x10000 ? 1 : 2;
        at += codePoint.size;
    }
    return count;
}

std::string_view Substring(std::string_view text, double start, std::optional<double> length) noexcept {
    const auto count = static_cast<double>(CountCodePoints(text));
    if (std::isnan(start)) start = 0;
    if (count + start < 0) start = 0;
    // The fractions of start and length add up before they are cut off.
    double end = count;
    if (length) {
        if (!(*length > 0)) return {};
        end = std::min(count, std::trunc(start >= 0 ? start + *length : count + start + *length));
    }
    start = std::trunc(start);
    if (start < 0) start += count;
    if (!(start < end)) return {};
    const std::size_t begin = OffsetOf(text, start);
    return text.substr(begin, OffsetOf(text.substr(begin), end - start));
}

Result<std::string> Pad(std::string_view text, double width, std::string_view fill) {
    if (!(std::fabs(width) <= kWidestPadding)) return Failure{"D1001", PrintNumber(width), {}};
    if (fill.empty()) fill = " ";
    const double missing = std::trunc(std::fabs(width)) - static_cast<double>(CountCodePoints(text));
    if (missing <= 0) return std::string(text);
    std::string padding;
    std::size_t at = 0;
    for (double left = missing; left > 0; --left) {
        const std::size_t size = DecodeAt(fill, at).size;
        padding += fill.substr(at, size);
        at = at + size == fill.size() ? 0 : at + size;
    }
    return width < 0 ? padding.append(text) : std::string(text).append(padding);
}

std::string Trim(std::string_view text) {
    std::string trimmed;
    for (const char c : text) {
        const bool isBlank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (!isBlank) {
            trimmed += c;
        } else if (!trimmed.empty() && trimmed.back() != ' ') {
            trimmed += ' ';
        }
    }
    if (trimmed.ends_with(' ')) trimmed.pop_back();
    return trimmed;
}

std::string ToUpperCase(std::string_view text) {
    return MapCase(text, Case::Upper);
}

std::string ToLowerCase(std::string_view text) {
    return MapCase(text, Case::Lower);
}

std::strong_ordering CompareTexts(std::string_view left, std::string_view right) noexcept {
    UnitReader leftUnits(left);
    UnitReader rightUnits(right);
    while (!leftUnits.IsAtEnd() && !rightUnits.IsAtEnd()) {
        const char16_t leftUnit = leftUnits.Read();
        const char16_t rightUnit = rightUnits.Read();
        if (leftUnit != rightUnit) return leftUnit <=> rightUnit;
    }
    return rightUnits.IsAtEnd() <=> leftUnits.IsAtEnd();
}

}  // namespace tn61131::jsonata
