#include <algorithm>

#include "platform/FormatText.h"
#include "platform/JSONValue.h"

namespace {

bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

bool IsDigitAt(std::string_view text, std::size_t at) noexcept {
    return at < text.size() && IsDigit(text[at]);
}

std::size_t SkipDigits(std::string_view text, std::size_t at) noexcept {
    while (IsDigitAt(text, at))
        ++at;
    return at;
}

/// Behind the fraction and the exponent that begin at `at`; `at` where neither does.
std::size_t EndOfReal(std::string_view text, std::size_t at) noexcept {
    if (text.substr(at, 1) == "." && IsDigitAt(text, at + 1)) at = SkipDigits(text, at + 1);
    if (at == text.size() || (text[at] != 'e' && text[at] != 'E')) return at;
    const bool hasSign = at + 1 < text.size() && (text[at + 1] == '+' || text[at + 1] == '-');
    const std::size_t digits = at + (hasSign ? 2 : 1);
    return IsDigitAt(text, digits) ? SkipDigits(text, digits) : at;
}

/// Behind the quote that closes the string that begins at `at`; npos when none does.
std::size_t EndOfString(std::string_view text, std::size_t at) noexcept {
    for (++at; at < text.size(); ++at) {
        if (text[at] == '"') return at + 1;
        if (text[at] == '\\') ++at;
    }
    return std::string_view::npos;
}

}  // namespace

JSONParseContext::~JSONParseContext() = default;

void JSONParseContext::SetPosition(std::size_t position) noexcept {
    constexpr TextPosition kStart{0, 1, 1};
    if (position < GetPosition()) SetTextPosition(kStart);
    SkipTo(position);
}

void JSONParseContext::GetNextJSONToken(CParseToken& token) {
    SkipWhiteSpace();
    if (TakePushedToken(token)) return;
    const std::string_view text = GetText();
    const std::size_t start = GetPosition();
    if (IsDigitAt(text, start + (text.substr(start, 1) == "-" ? 1 : 0))) {
        const std::size_t integerEnd = SkipDigits(text, start + 1);
        const std::size_t end = EndOfReal(text, integerEnd);
        return TakeToken(token, end == integerEnd ? kInteger : kReal, end);
    }
    if (text.substr(start, 1) == "\"") {
        const std::size_t end = EndOfString(text, start);
        TakeToken(token, kString, std::min(end, text.size()));
        return token.SetNotTerminated(end == std::string_view::npos);
    }
    const auto isWord = [](int type) { return type == CParseToken::kIdentifier || type == CParseToken::kUnderscore; };
    Piece piece = ScanPiece(start);
    if (!isWord(piece.type)) return TakeToken(token, piece.type, piece.end);
    std::size_t end = start;
    for (; isWord(piece.type) || piece.type == CParseToken::kNumber; piece = ScanPiece(end))
        end = piece.end;
    TakeToken(token, CParseToken::kIdentifier, end);
}

void JSONParseContext::ReportError(std::size_t offset, std::string_view reason) {
    const std::string_view before = GetText().substr(0, offset);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::size_t lineEnd = before.rfind('\n');
    const std::string_view inLine = before.substr(lineEnd == std::string_view::npos ? 0 : lineEnd + 1);
    const auto isCharacterStart = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; };
    const auto column = 1 + std::count_if(inLine.begin(), inLine.end(), isCharacterStart);
    const std::string& name = GetFileName();
    GetLog().LogError(name.empty() ? FormatText("JSON, line %lld, column %lld: %s", line, column, reason)
                                   : FormatText("%s(%lld,%lld): error: %s", name, line, column, reason));
}
