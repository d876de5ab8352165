#include "assembler/SourceCursor.h"

#include <algorithm>

#include "assembler/SymbolType.h"
#include "platform/FormatText.h"
#include "platform/Transcode.h"

std::uint32_t CountCharacters(std::string_view line, std::size_t at) noexcept {
    const std::string_view before = line.substr(0, at);
    return static_cast<std::uint32_t>(std::count_if(
        before.begin(), before.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

namespace {

bool IsBlank(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\r';
}
bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}
bool IsLetter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}
bool IsWordCharacter(char c) noexcept {
    return IsLetter(c) || IsDigit(c);
}

/// The value of a digit; 99 for what is none.
int DigitValue(char c) noexcept {
    if (IsDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return 99;
}

std::size_t WordLength(std::string_view text) noexcept {
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsWordCharacter) - text.begin());
}

/// Blanks out the comments of a text line by line.
class CCommentStripper {
 public:
    /// Returns whether a comment is open at the end of the line.
    bool StripLine(std::string& line) {
        std::size_t at = 0;
        while (at < line.size()) {
            if (inComment_) {
                at = CloseComment(line, at);
            } else if (line[at] == '\'' || line[at] == '"') {
                at += QuotedLength(line, at);
            } else if (line[at] == ';') {
                line.resize(at);
            } else if (line.compare(at, 2, "(*") == 0) {
                openedAt_ = at;
                inComment_ = true;
                line[at] = line[at + 1] = ' ';
                at += 2;
            } else {
                ++at;
            }
        }
        return inComment_;
    }
    [[nodiscard]] std::size_t GetOpenedAt() const noexcept { return openedAt_; }

 private:
    /// One blank for each character, so that columns stay what they were.
    std::size_t CloseComment(std::string& line, std::size_t at) {
        const std::size_t end = line.find("*)", at);
        inComment_ = end == std::string::npos;
        const std::size_t length = (inComment_ ? line.size() : end + 2) - at;
        const std::uint32_t characters = CountCharacters(std::string_view(line).substr(at), length);
        line.replace(at, length, characters, ' ');
        return at + characters;
    }

    bool inComment_ = false;
    std::size_t openedAt_ = 0;
};

/// The first byte of a line that is not valid UTF-8; the length of the line when all of it is.
std::size_t FindInvalidByte(std::string_view line) {
    constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
    std::size_t at = 0;
    while (at < line.size()) {
        char32_t character = 0;
        const auto left = static_cast<unsigned int>(std::min<std::size_t>(line.size() - at, 4));
        const unsigned int length = tn_codepoint_from_tnchar(line.data() + at, left, character);
        if (character == kReplacementCharacter && line.substr(at, length) != kReplacement) break;
        at += length;
    }
    return at;
}

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

std::size_t QuotedLength(std::string_view text, std::size_t at) noexcept {
    const char quote = text[at];
    std::size_t end = at + 1;
    while (end < text.size() && text[end] != quote) {
        end += text[end] == '$' ? 2 : 1;
    }
    return std::min(end + 1, text.size()) - at;
}

bool IsIdentifier(std::string_view text) noexcept {
    return !text.empty() && IsLetter(text.front()) && WordLength(text) == text.size() &&
           FindInvalidByte(text) == text.size();
}

std::vector<std::string> SplitSourceLines(std::string_view text, std::vector<SourceDiagnostic>& diagnostics) {
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
    std::vector<std::string> lines;
    CCommentStripper stripper;
    SourceDiagnostic opened;
    bool inComment = false;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string line(text.substr(0, end));
        const std::string original = line;
        const bool wasInComment = inComment;
        inComment = stripper.StripLine(line);
        if (inComment && !wasInComment) {
            opened.line = static_cast<std::uint32_t>(lines.size() + 1);
            opened.column = CountCharacters(original, stripper.GetOpenedAt()) + 1;
        }
        if (const std::size_t bad = FindInvalidByte(original); bad != original.size()) {
            diagnostics.push_back({static_cast<std::uint32_t>(lines.size() + 1), CountCharacters(original, bad) + 1,
                                   "the text is not valid UTF-8"});
        }
        lines.push_back(std::move(line));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    if (inComment) {
        opened.text = "the comment is not closed";
        diagnostics.push_back(std::move(opened));
    }
    return lines;
}

std::string_view CSourceCursor::Line() const noexcept {
    return place_.line < lines_.size() ? std::string_view(lines_[place_.line]) : std::string_view();
}

void CSourceCursor::SkipBlanks() noexcept {
    const std::string_view line = Line();
    while (place_.at < line.size() && IsBlank(line[place_.at]))
        ++place_.at;
}

bool CSourceCursor::NextLine() noexcept {
    if (!HasLine()) return false;
    place_ = {place_.line + 1, 0};
    return HasLine();
}

SourcePlace CSourceCursor::Here() noexcept {
    SkipBlanks();
    return place_;
}

char CSourceCursor::Peek() noexcept {
    SkipBlanks();
    const std::string_view rest = Rest();
    return rest.empty() ? '\0' : rest.front();
}

std::string_view CSourceCursor::PeekRest() noexcept {
    SkipBlanks();
    std::string_view rest = Rest();
    while (!rest.empty() && IsBlank(rest.back()))
        rest.remove_suffix(1);
    return rest;
}

bool CSourceCursor::Take(std::string_view symbol) noexcept {
    SkipBlanks();
    if (Rest().substr(0, symbol.size()) != symbol) return false;
    place_.at += symbol.size();
    return true;
}

bool CSourceCursor::TakeWord(std::string_view word) noexcept {
    SkipBlanks();
    if (!IsSameName(Rest().substr(0, WordLength(Rest())), word)) return false;
    place_.at += word.size();
    return true;
}

bool CSourceCursor::TakeWords(std::string_view words) noexcept {
    const SourcePlace start = place_;
    while (!words.empty()) {
        const std::size_t length = std::min(words.find(' '), words.size());
        if (!TakeWord(words.substr(0, length))) {
            place_ = start;
            return false;
        }
        words.remove_prefix(std::min(length + 1, words.size()));
    }
    return true;
}

std::string_view CSourceCursor::TakeIdentifier() noexcept {
    SkipBlanks();
    const std::string_view rest = Rest();
    if (rest.empty() || !IsLetter(rest.front())) return {};
    const std::string_view word = rest.substr(0, WordLength(rest));
    place_.at += word.size();
    return word;
}

std::string_view CSourceCursor::TakeHexDigits(std::size_t count) noexcept {
    SkipBlanks();
    const std::string_view word = Rest().substr(0, WordLength(Rest()));
    const bool allDigits = std::all_of(word.begin(), word.end(), [](char c) { return DigitValue(c) < 16; });
    if (!allDigits || word.size() < count) return {};
    place_.at += word.size();
    return word;
}

std::string_view CSourceCursor::TakeQuoted() noexcept {
    if (Peek() != '\'') return {};
    const std::string_view quoted = Rest().substr(0, QuotedLength(Rest(), 0));
    place_.at += quoted.size();
    return quoted;
}

std::string_view CSourceCursor::TakeLiteral(bool inList) noexcept {
    const std::string_view rest = PeekRest();
    std::size_t depth = 0;
    std::size_t at = 0;
    while (at < rest.size()) {
        const char c = rest[at];
        if (c == '\'' || c == '"') {
            at += QuotedLength(rest, at);
            continue;
        }
        if (inList && depth == 0 && (c == ',' || c == ')' || c == ']')) break;
        if (c == '[' || c == '(') ++depth;
        if ((c == ']' || c == ')') && depth > 0) --depth;
        ++at;
    }
    place_.at += at;
    std::string_view literal = rest.substr(0, at);
    while (!literal.empty() && IsBlank(literal.back()))
        literal.remove_suffix(1);
    return literal;
}

bool CSourceCursor::Expect(std::string_view symbol) {
    if (Take(symbol)) return true;
    return Fail(FormatText("'%s' expected", symbol));
}

bool CSourceCursor::ExpectLineEnd() {
    if (AtLineEnd()) return true;
    return Fail(FormatText("nothing more expected here: '%s'", PeekRest()));
}

bool CSourceCursor::ReadIdentifier(std::string_view what, std::string& out) {
    const std::string_view word = TakeIdentifier();
    if (word.empty()) return Fail(FormatText("%s expected", what));
    out = word;
    return true;
}

bool CSourceCursor::ReadInteger(std::string_view what, std::int64_t lowest, std::int64_t highest, std::int64_t& out) {
    const SourcePlace start = Here();
    const bool negative = Take("-");
    if (!negative) Take("+");
    std::string_view rest = Rest();
    unsigned int radix = 10;
    for (const unsigned int candidate : {2U, 8U, 10U, 16U}) {
        const std::string prefix = std::to_string(candidate) + '#';
        if (rest.substr(0, prefix.size()) != prefix) continue;
        radix = candidate;
        rest.remove_prefix(prefix.size());
        place_.at += prefix.size();
    }
    const std::string_view digits = rest.substr(0, WordLength(rest));
    constexpr std::uint64_t kLimit = std::uint64_t{1} << 63;
    std::uint64_t magnitude = 0;
    bool good = !digits.empty() && digits.front() != '_';
    bool fits = true;
    for (const char c : digits) {
        if (c == '_') continue;
        const auto digit = static_cast<unsigned int>(DigitValue(c));
        good = good && digit < radix;
        fits = fits && magnitude <= (kLimit - std::min(digit, 15U)) / radix;
        magnitude = fits ? magnitude * radix + digit : magnitude;
    }
    if (!good) {
        place_ = start;
        return Fail(FormatText("%s expected", what));
    }
    place_.at += digits.size();
    const bool inRange = fits && (negative ? magnitude <= kLimit : magnitude < kLimit);
    const auto value = static_cast<std::int64_t>(negative ? ~magnitude + 1 : magnitude);
    if (!inRange || value < lowest || value > highest) {
        return Fail(start, FormatText("%s must be from %lld to %lld", what, lowest, highest));
    }
    out = value;
    return true;
}

bool CSourceCursor::Fail(SourcePlace place, std::string text) {
    if (diagnostics_.size() >= kMaxDiagnostics) return false;
    const std::string_view line = place.line < lines_.size() ? std::string_view(lines_[place.line]) : "";
    diagnostics_.push_back(
        {static_cast<std::uint32_t>(place.line + 1), CountCharacters(line, place.at) + 1, std::move(text)});
    return false;
}
