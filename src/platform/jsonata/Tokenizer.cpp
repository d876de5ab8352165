#include "platform/jsonata/Tokenizer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "platform/ReadDouble.h"
#include "platform/jsonata/CodePoints.h"
#include "platform/jsonata/EvaluationError.h"

namespace tn61131::jsonata {

namespace {

// Longer ones first: the first that fits is the operator.
constexpr std::array<std::string_view, 33> kOperators{"..", ":=", "!=", ">=", "<=", "**", "~>", "?:", "??", ".", "[",
                                                      "]",  "{",  "}",  "(",  ")",  ",",  "@",  "#",  ";",  ":", "?",
                                                      "+",  "-",  "*",  "/",  "%",  "|",  "=",  "<",  ">",  "^", "&"};

constexpr bool IsBlank(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v';
}

constexpr bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

constexpr bool EndsName(char c) noexcept {
    return IsBlank(c) || std::string_view(".[]{}(),@#;:?+-*/%|=<>^&!~").find(c) != std::string_view::npos;
}

}  // namespace

std::size_t Tokenizer::SkipBlanks(std::size_t from) const {
    while (from < text_.size()) {
        if (IsBlank(text_[from])) {
            ++from;
        } else if (text_.substr(from, 2) == "/*") {
            const std::size_t end = text_.find("*/", from + 2);
            if (end == std::string_view::npos) ThrowAt(from, "S0106");
            from = end + 2;
        } else {
            break;
        }
    }
    return from;
}

Token Tokenizer::Read(std::size_t from, Expect expect) const {
    from = SkipBlanks(from);
    Token token;
    token.begin = token.end = from;
    if (from >= text_.size()) return token;
    const char c = text_[from];
    if (c == '/' && expect == Expect::Operand) return ReadRegex(from);
    if (c == '"' || c == '\'') return ReadString(from);
    if (c == '`') return ReadQuotedName(from);
    if (IsDigit(c)) return ReadNumber(from);
    const std::string_view rest = text_.substr(from);
    const auto* found = std::ranges::find_if(kOperators, [&](std::string_view name) { return rest.starts_with(name); });
    if (found == kOperators.end()) {
        if (c == '!' || c == '~') ThrowAt(from, "S0204", text_.substr(from, 1));
        return ReadName(from);
    }
    token.kind = Token::Kind::Operator;
    token.text = *found;
    token.end = from + found->size();
    return token;
}

char32_t Tokenizer::ReadHexEscape(std::size_t at) const {
    unsigned int code = 0;
    const std::string_view digits = text_.substr(std::min(at, text_.size()), 4);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
    if (digits.size() < 4 || error != std::errc() || end != digits.data() + 4) ThrowAt(at, "S0104");
    return static_cast<char32_t>(code);
}

Token Tokenizer::ReadString(std::size_t from) const {
    static constexpr std::string_view kEscapes = "\"\\/bfnrt";
    static constexpr std::string_view kEscaped = "\"\\/\b\f\n\r\t";
    Token token;
    token.kind = Token::Kind::String;
    token.begin = from;
    for (std::size_t at = from + 1; at < text_.size();) {
        const char c = text_[at];
        if (c == text_[from]) {
            token.end = at + 1;
            return token;
        }
        if (c != '\\') {
            token.text.push_back(c);
            ++at;
            continue;
        }
        const std::size_t escape = at + 1 < text_.size() ? kEscapes.find(text_[at + 1]) : std::string_view::npos;
        if (escape != std::string_view::npos) {
            token.text.push_back(kEscaped[escape]);
            at += 2;
        } else if (At(at + 1) == 'u') {
            char32_t code = ReadHexEscape(at + 2);
            at += 6;
            if (code >= 0xD800 && code < 0xDC00 && text_.substr(at, 2) == "\\u") {
                const char32_t low = ReadHexEscape(at + 2);
                if (low >= 0xDC00 && low < 0xE000) {
                    code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
                    at += 6;
                }
            }
            AppendCodePoint(token.text, code);
        } else {
            if (at + 1 == text_.size()) break;
            ThrowAt(at, "S0103", text_.substr(at + 1, 1));
        }
    }
    ThrowAt(from, "S0101");
}

Token Tokenizer::ReadNumber(std::size_t from) const {
    std::size_t at = from + 1;
    if (text_[from] != '0') {
        while (IsDigit(At(at)))
            ++at;
    }
    const auto digitsFrom = [this](std::size_t begin) {
        while (IsDigit(At(begin)))
            ++begin;
        return begin;
    };
    if (At(at) == '.' && IsDigit(At(at + 1))) at = digitsFrom(at + 1);
    if (At(at) == 'e' || At(at) == 'E') {
        const std::size_t digits = at + (At(at + 1) == '+' || At(at + 1) == '-' ? 2 : 1);
        if (IsDigit(At(digits))) at = digitsFrom(digits);
    }
    Token token;
    token.kind = Token::Kind::Number;
    token.begin = from;
    token.end = at;
    token.text = text_.substr(from, at - from);
    const char* text = token.text.c_str();
    token.number = tn_strtod(text);
    if (!std::isfinite(token.number)) ThrowAt(from, "S0102", token.text);
    return token;
}

Token Tokenizer::ReadRegex(std::size_t from) const {
    Token token;
    token.kind = Token::Kind::Regex;
    token.begin = from;
    int depth = 0;  // a slash inside of brackets does not end the expression
    for (std::size_t at = from + 1; at < text_.size(); ++at) {
        const char c = text_[at];
        if (c == '\\') {
            ++at;
            continue;
        }
        if (c == '/' && depth == 0) {
            token.text = text_.substr(from + 1, at - from - 1);
            if (token.text.empty()) ThrowAt(from, "S0301");
            token.end = at + 1;
            while (At(token.end) == 'i' || At(token.end) == 'm')
                token.flags.push_back(text_[token.end++]);
            return token;
        }
        if (c == '(' || c == '[' || c == '{') ++depth;
        if (c == ')' || c == ']' || c == '}') --depth;
    }
    ThrowAt(from, "S0302");
}

Token Tokenizer::ReadQuotedName(std::size_t from) const {
    const std::size_t end = text_.find('`', from + 1);
    if (end == std::string_view::npos) ThrowAt(from, "S0105");
    Token token;
    token.kind = Token::Kind::Name;
    token.begin = from;
    token.end = end + 1;
    token.text = text_.substr(from + 1, end - from - 1);
    return token;
}

Token Tokenizer::ReadName(std::size_t from) const {
    Token token;
    token.begin = from;
    token.end = from + 1;
    while (token.end < text_.size() && !EndsName(text_[token.end]))
        ++token.end;
    token.text = text_.substr(from, token.end - from);
    if (token.text.front() == '$') {
        token.kind = Token::Kind::Variable;
        token.text.erase(0, 1);
    } else if (token.text == "and" || token.text == "or" || token.text == "in") {
        token.kind = Token::Kind::Operator;
    } else if (token.text == "true" || token.text == "false" || token.text == "null") {
        token.kind = Token::Kind::Constant;
    } else {
        token.kind = Token::Kind::Name;
    }
    return token;
}

std::size_t Tokenizer::EndOfSignature(std::size_t from) const {
    int depth = 0;
    for (std::size_t at = from; at < text_.size(); ++at) {
        if (text_[at] == '<') ++depth;
        if (text_[at] == '>' && --depth == 0) return at + 1;
        if (text_[at] == '{') ThrowAt(at, "S0202", ">", "{");
    }
    ThrowAt(text_.size(), "S0203", ">");
}

bool IsPlainName(std::string_view name) noexcept {
    if (name.empty() || IsDigit(name.front()) ||
        std::string_view("$\"'`").find(name.front()) != std::string_view::npos) {
        return false;
    }
    static constexpr std::array<std::string_view, 8> kWords{"and",   "or",   "in",       "true",
                                                            "false", "null", "function", "\u03BB"};
    return std::ranges::none_of(name, EndsName) && std::ranges::find(kWords, name) == kWords.end();
}

}  // namespace tn61131::jsonata
