#include "platform/jsonata/RegexTranslate.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/jsonata/CodePoints.h"

namespace tn61131::jsonata {

namespace {

// Inside of sets.
constexpr std::string_view kAny = R"(\x{0}-\x{10FFFF})";
constexpr std::string_view kWhiteSpace =
    R"(\t-\r \x{A0}\x{1680}\x{2000}-\x{200A}\x{2028}\x{2029}\x{202F}\x{205F}\x{3000}\x{FEFF})";
constexpr std::string_view kNoWhiteSpace =
    R"(\x{0}-\x{8}\x{E}-\x{1F}!-\x{9F}\x{A1}-\x{167F}\x{1681}-\x{1FFF}\x{200B}-\x{2027}\x{202A}-\x{202E})"
    R"(\x{2030}-\x{205E}\x{2060}-\x{2FFF}\x{3001}-\x{FEFE}\x{FF00}-\x{10FFFF})";

struct ClassEscape {
    char32_t letter;
    std::string_view members;
};

constexpr std::array kClassEscapes = {
    ClassEscape{U'd', "0-9"},        ClassEscape{U'D', R"(\x{0}-/:-\x{10FFFF})"},
    ClassEscape{U'w', "0-9A-Z_a-z"}, ClassEscape{U'W', R"(\x{0}-/:-@\[-\^`{-\x{10FFFF})"},
    ClassEscape{U's', kWhiteSpace},  ClassEscape{U'S', kNoWhiteSpace},
};

std::optional<std::string_view> FindClass(char32_t letter) {
    const auto* const found = std::find_if(kClassEscapes.begin(), kClassEscapes.end(),
                                           [letter](const ClassEscape& each) { return each.letter == letter; });
    return found == kClassEscapes.end() ? std::nullopt : std::optional(found->members);
}

bool IsDigit(char32_t c) {
    return c >= U'0' && c <= U'9';
}

bool IsASCIILetter(char32_t c) {
    return (c >= U'a' && c <= U'z') || (c >= U'A' && c <= U'Z');
}

int HexValue(char32_t c) {
    if (IsDigit(c)) return static_cast<int>(c - U'0');
    if (c >= U'a' && c <= U'f') return static_cast<int>(c - U'a') + 10;
    if (c >= U'A' && c <= U'F') return static_cast<int>(c - U'A') + 10;
    return -1;
}

/// One character, wherever it stands.
void AppendCharacter(std::string& out, char32_t c) {
    if (IsDigit(c) || IsASCIILetter(c) || c == U' ') {
        out += static_cast<char>(c);
        return;
    }
    static constexpr std::string_view kHexDigits = "0123456789ABCDEF";
    out += "\\x{";
    for (unsigned int shift = 24; shift > 0;) {
        shift -= 4;
        out += kHexDigits[c >> shift & 0xFU];
    }
    out += '}';
}

class RegexTranslator {
 public:
    RegexTranslator(std::string_view body, RegexLines lines)
        : body_(body), text_(ToCodePoints(body)), lines_(lines), groups_(CountGroups()) {}

    Result<std::string> Translate() {
        while (at_ < text_.size() && mistake_.empty())
            TranslateNext();
        if (!mistake_.empty()) return Failure{"S0303", std::string(body_), std::string(mistake_)};
        return std::move(out_);
    }

 private:
    [[nodiscard]] char32_t Peek(std::size_t ahead = 0) const {
        return at_ + ahead < text_.size() ? text_[at_ + ahead] : U'\0';
    }
    [[nodiscard]] bool IsNext(std::u32string_view wanted) const {
        return std::u32string_view(text_).substr(at_).starts_with(wanted);
    }
    void Fail(std::string_view mistake) {
        if (mistake_.empty()) mistake_ = mistake;
    }

    /// What can be referred back to, for which the whole expression has to be known.
    [[nodiscard]] std::size_t CountGroups() {
        std::size_t count = 0;
        bool isInSet = false;
        for (std::size_t i = 0; i < text_.size(); ++i) {
            if (text_[i] == U'\\') {
                ++i;
            } else if (text_[i] == U'[') {
                isInSet = true;
            } else if (text_[i] == U']') {
                isInSet = false;
            } else if (text_[i] == U'(' && !isInSet) {
                const std::u32string_view rest = std::u32string_view(text_).substr(i + 1);
                const bool isNamed = rest.starts_with(U"?<") && !rest.starts_with(U"?<=") && !rest.starts_with(U"?<!");
                if (isNamed) hasNames_ = true;
                if (isNamed || !rest.starts_with(U"?")) ++count;
            }
        }
        return count;
    }

    void TranslateNext() {
        const char32_t c = text_[at_];
        switch (c) {
            case U'\\': return TranslateEscape();
            case U'[': return TranslateSet();
            case U'(': return TranslateGroup();
            case U'{': return TranslateBrace();
            case U'.': out_ += R"([^\n\r\x{2028}\x{2029}])"; break;
            case U'^': out_ += lines_ == RegexLines::Each ? "(?m:^)" : R"(\A)"; break;
            case U'$': out_ += lines_ == RegexLines::Each ? "(?m:$)" : R"(\z)"; break;
            case U')':
            case U'|':
            case U'*':
            case U'+':
            case U'?': out_ += static_cast<char>(c); break;
            default: AppendCharacter(out_, c); break;
        }
        ++at_;
    }

    void TranslateGroup() {
        if (!IsNext(U"(?")) {
            out_ += '(';
            ++at_;
        } else if (IsNext(U"(?:")) {
            out_ += "(?:";
            at_ += 3;
        } else if (IsNext(U"(?=") || IsNext(U"(?!") || IsNext(U"(?<=") || IsNext(U"(?<!")) {
            Fail("looking around is not supported");
        } else if (IsNext(U"(?<")) {
            // The language has no use for the name.
            const std::size_t end = text_.find(U'>', at_);
            if (end == std::u32string::npos || end == at_ + 3) return Fail("invalid group name");
            out_ += '(';
            at_ = end + 1;
        } else {
            Fail("invalid group");
        }
    }

    /// A number of repetitions, or a brace that stands for itself.
    void TranslateBrace() {
        std::size_t end = at_ + 1;
        const auto skipDigits = [this, &end] {
            const std::size_t start = end;
            while (end < text_.size() && IsDigit(text_[end]))
                ++end;
            return end > start;
        };
        bool isRepetition = skipDigits();
        if (isRepetition && end < text_.size() && text_[end] == U',') {
            ++end;
            skipDigits();
        }
        isRepetition = isRepetition && end < text_.size() && text_[end] == U'}';
        if (!isRepetition) {
            AppendCharacter(out_, U'{');
            ++at_;
            return;
        }
        for (; at_ <= end; ++at_)
            out_ += static_cast<char>(text_[at_]);
    }

    void TranslateEscape() {
        const char32_t c = Peek(1);
        if (at_ + 1 == text_.size()) return Fail("a backslash at the end");
        if (c == U'b' || c == U'B') {
            out_ += '\\';
            out_ += static_cast<char>(c);
            at_ += 2;
            return;
        }
        if (IsReference(c)) return Fail("references back are not supported");
        if (const std::optional<std::string_view> members = FindClass(c)) {
            out_.append("[").append(*members).append("]");
            at_ += 2;
            return;
        }
        AppendCharacter(out_, ReadCharacterEscape());
    }

    /// "\k<name>" and "\1"; a number above that of the groups is a character in octal.
    [[nodiscard]] bool IsReference(char32_t c) const {
        if (c == U'k') return hasNames_;
        if (c < U'1' || c > U'9') return false;
        std::size_t number = 0;
        for (std::size_t i = at_ + 1; i < text_.size() && IsDigit(text_[i]) && number <= groups_; ++i)
            number = number * 10 + (text_[i] - U'0');
        return number <= groups_;
    }

    /// The character of an escape at the present place, and moves behind it.
    char32_t ReadCharacterEscape() {
        ++at_;
        const char32_t c = text_[at_++];
        switch (c) {
            case U't': return U'\t';
            case U'n': return U'\n';
            case U'v': return U'\v';
            case U'f': return U'\f';
            case U'r': return U'\r';
            case U'x': return ReadHex(2).value_or(c);
            case U'u': return ReadUnicode().value_or(c);
            case U'c':
                if (!IsASCIILetter(Peek())) {
                    --at_;
                    return U'\\';
                }
                return text_[at_++] & 0x1FU;
            default: break;
        }
        if (c < U'0' || c > U'7') return c;
        char32_t value = c - U'0';
        for (int digits = 1; digits < 3 && Peek() >= U'0' && Peek() <= U'7' && value * 8 + (Peek() - U'0') <= 0xFF;
             ++digits)
            value = value * 8 + (text_[at_++] - U'0');
        return value;
    }

    /// So many hexadecimal digits; nothing is read where there are fewer.
    std::optional<char32_t> ReadHex(std::size_t count) {
        char32_t value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const int digit = HexValue(Peek(i));
            if (digit < 0) return std::nullopt;
            value = value * 16 + static_cast<char32_t>(digit);
        }
        at_ += count;
        return value;
    }

    /// Two escapes of surrogates are one character.
    std::optional<char32_t> ReadUnicode() {
        const std::optional<char32_t> high = ReadHex(4);
        if (!high || *high < 0xD800 || *high > 0xDBFF || !IsNext(U"\\u")) return high;
        const std::size_t start = at_;
        at_ += 2;
        const std::optional<char32_t> low = ReadHex(4);
        if (low && *low >= 0xDC00 && *low <= 0xDFFF) return 0x10000 + ((*high - 0xD800) << 10U) + (*low - 0xDC00);
        at_ = start;
        return high;
    }

    /// One member of a set: a character, or none for a class, which is written at once.
    std::optional<char32_t> ReadMember() {
        if (text_[at_] != U'\\') return text_[at_++];
        if (at_ + 1 == text_.size()) {
            Fail("a backslash at the end");
            ++at_;
            return std::nullopt;
        }
        const char32_t c = Peek(1);
        if (c == U'b') {
            at_ += 2;
            return U'\b';
        }
        if (const std::optional<std::string_view> members = FindClass(c)) {
            out_ += *members;
            at_ += 2;
            return std::nullopt;
        }
        return ReadCharacterEscape();
    }

    void TranslateSet() {
        ++at_;
        const bool isNegated = Peek() == U'^' && at_ < text_.size();
        if (isNegated) ++at_;
        if (at_ < text_.size() && Peek() == U']') {
            // Nothing, and everything.
            out_.append(isNegated ? "[" : "[^").append(kAny).append("]");
            ++at_;
            return;
        }
        out_ += isNegated ? "[^" : "[";
        while (at_ < text_.size() && text_[at_] != U']')
            TranslateMembers();
        if (at_ == text_.size()) return Fail("a set without its end");
        out_ += ']';
        ++at_;
    }

    /// A member, or two of them and what is between.
    void TranslateMembers() {
        const std::optional<char32_t> first = ReadMember();
        const bool isRange = Peek() == U'-' && at_ + 1 < text_.size() && text_[at_ + 1] != U']';
        if (first) AppendCharacter(out_, *first);
        if (!isRange) return;
        ++at_;
        // Where an end is a class, the hyphen stands for itself.
        const std::size_t hyphen = out_.size();
        const std::optional<char32_t> last = ReadMember();
        if (!first || !last) {
            AppendCharacter(out_, U'-');
            if (last) AppendCharacter(out_, *last);
            return;
        }
        if (*last < *first) return Fail("a range out of order");
        out_.insert(hyphen, 1, '-');
        AppendCharacter(out_, *last);
    }

    std::string_view body_;
    std::u32string text_;
    RegexLines lines_;
    bool hasNames_ = false;
    std::size_t groups_;
    std::size_t at_ = 0;
    std::string out_;
    std::string_view mistake_;
};

}  // namespace

Result<std::string> TranslateRegex(std::string_view body, RegexLines lines) {
    return RegexTranslator(body, lines).Translate();
}

}  // namespace tn61131::jsonata
