#include "literal/LogicParseContext.h"

#include <algorithm>
#include <cstdlib>

#include "literal/LiteralText.h"
#include "platform/TextInputFromStringToken.h"
#include "platform/Transcode.h"

using Type = LogicTokenType;

struct CLogicParseContext::Compound {
    int type;
    std::size_t start;
    std::size_t end;
    bool isTerminated = true;
    const LogicTokenInformation* keyword = nullptr;

    void SetType(Type wanted) noexcept { type = static_cast<int>(wanted); }
    // Everything up to the end of the input: what should have ended the token is missing.
    bool BreakOff(std::size_t inputEnd) noexcept {
        end = inputEnd;
        isTerminated = false;
        return false;
    }
};

namespace {

// What the words in front of "#" begin.
enum class Literal : unsigned char {
    String,
    WString,
    Char,
    WChar,
    Time,
    Date,
    DateAndTime,
    TimeOfDay,
    Boolean,
    Integer,
    Real
};

struct TypeWord {
    std::string_view word;
    Literal literal;
};

constexpr TypeWord kTypeWords[] = {
    {"STRING", Literal::String},
    {"WSTRING", Literal::WString},
    {"CHAR", Literal::Char},
    {"WCHAR", Literal::WChar},
    {"TIME", Literal::Time},
    {"T", Literal::Time},
    {"DATE", Literal::Date},
    {"D", Literal::Date},
    {"DATE_AND_TIME", Literal::DateAndTime},
    {"DT", Literal::DateAndTime},
    {"TIME_OF_DAY", Literal::TimeOfDay},
    {"TOD", Literal::TimeOfDay},
    {"BOOL", Literal::Boolean},
    {"SINT", Literal::Integer},
    {"USINT", Literal::Integer},
    {"BYTE", Literal::Integer},
    {"INT", Literal::Integer},
    {"UINT", Literal::Integer},
    {"WORD", Literal::Integer},
    {"DINT", Literal::Integer},
    {"UDINT", Literal::Integer},
    {"DWORD", Literal::Integer},
    {"LINT", Literal::Integer},
    {"ULINT", Literal::Integer},
    {"LWORD", Literal::Integer},
    {"REAL", Literal::Real},
    {"LREAL", Literal::Real},
};

// Dates and times: N is a number, every other character itself.
constexpr std::string_view kDatePattern = "N-N-N";
constexpr std::string_view kDateAndTimePattern = "N-N-N-N:N:N.N";
constexpr std::string_view kTimeOfDayPattern = "N:N:N.N";

constexpr bool IsIdentifierCharacter(char c) noexcept {
    return IsAsciiLetter(c) || IsAsciiDigit(c) || c == '_';
}
constexpr bool IsQuote(char c) noexcept {
    return c == '\'' || c == '"';
}

}  // namespace

CLogicParseContext::~CLogicParseContext() = default;

bool CLogicParseContext::GetNextLogicToken(CLogicToken& token) {
    if (TakePushedToken(token)) {
        ParsePushedToken(token);
        return true;
    }
    const std::size_t start = GetTextPosition().offset;
    const Piece piece = ScanPiece(start);
    Compound compound{piece.type, start, piece.end};
    const bool isWhole = ParseCompondToken(compound);
    TakeToken(token, compound.type, compound.end);
    token.SetNotTerminated(!compound.isTerminated);
    token.SetKeyword(compound.keyword);
    return isWhole;
}

bool CLogicParseContext::GetNextLogicTokenAfterWhitespace(CLogicToken& token) {
    SkipWhiteSpace();
    return GetNextLogicToken(token);
}

void CLogicParseContext::ReplaceToken(CLogicToken&& token) {
    if (token.IsKeyword()) token.SetType(CParseToken::kIdentifier);
    CParseContext::ReplaceToken(static_cast<CParseToken&&>(token));
}

void CLogicParseContext::ParsePushedToken(CLogicToken& token) const {
    if (token.IsType(CParseToken::kNumber)) token.SetType(Type::Integer);
    if (token.IsType(CParseToken::kUnderscore)) token.SetType(CParseToken::kIdentifier);
    // A word in front of "#" is the name of a type, and no keyword.
    if (IsFollowedBy(token, '#')) {
        token.SetKeyword(nullptr);
    } else {
        token.TranslateKeywordToken();
    }
}

bool CLogicParseContext::ParseCompondToken(Compound& token) const {
    switch (token.type) {
        case CParseToken::kIdentifier:
        case CParseToken::kUnderscore: return ParseIdentifier(token);
        case CParseToken::kNumber: token.SetType(Type::Integer); return ParseNumericLiteral(token, true);
        case '"': return ParseString(token, Type::WString, '"', true);
        case '\'': return ParseString(token, Type::String, '\'', true);
        case '$': return !IsDollarAllowedInIdentifiers() || ParseIdentifier(token);
        case '%': return ParseDirectlyLocatedVar(token);
        case '(': return CharacterAt(token.end) != '*' || ParseComment(token);
        case '*': return ParseIfNext(token, '*', Type::Power);
        case '/': return CharacterAt(token.end) != '/' || ParseCppComment(token);
        case ':': return ParseIfNext(token, '=', Type::Assign);
        case '=': return ParseIfNext(token, '>', Type::OutputAssign);
        case '{': return ParsePragma(token);
        default: return true;
    }
}

bool CLogicParseContext::ParseIfNext(Compound& token, char next, Type type) const {
    if (CharacterAt(token.end) == next) {
        ++token.end;
        token.SetType(type);
    }
    return true;
}

bool CLogicParseContext::ParseComment(Compound& token) const {
    constexpr std::string_view kClose = "*)";
    token.SetType(Type::Comment);
    const std::size_t close = GetText().find(kClose, token.end + 1);
    if (close == std::string_view::npos) return token.BreakOff(GetText().size());
    token.end = close + kClose.size();
    return true;
}

bool CLogicParseContext::ParseCppComment(Compound& token) const {
    token.SetType(Type::CppComment);
    const std::size_t contentStart = token.end + 1;
    token.end = std::min(GetText().find('\n', contentStart), GetText().size());
    const bool endsWithReturn = token.end > contentStart && GetText()[token.end - 1] == '\r';
    if (endsWithReturn && CharacterAt(token.end) == '\n') --token.end;
    return true;
}

bool CLogicParseContext::ParsePragma(Compound& token) const {
    token.SetType(Type::Pragma);
    const std::size_t close = GetText().find('}', token.end);
    if (close == std::string_view::npos) return token.BreakOff(GetText().size());
    token.end = close + 1;
    return true;
}

bool CLogicParseContext::ParseString(Compound& token, Type type, char quote, bool escapes) const {
    token.SetType(type);
    const std::string_view text = GetText();
    for (std::size_t at = token.end; at < text.size(); ++at) {
        if (text[at] == quote) {
            token.end = at + 1;
            return true;
        }
        // The first byte of what is escaped is enough: no other byte of a character can be a quote.
        if (escapes && text[at] == '$') ++at;
    }
    return token.BreakOff(text.size());
}

bool CLogicParseContext::ParseDirectlyLocatedVar(Compound& token) const {
    const char quote = CharacterAt(token.end);
    if (!IsQuote(quote)) return true;
    ++token.end;
    return ParseString(token, Type::DirectlyLocatedVariable, quote, false);
}

bool CLogicParseContext::ParseIdentifier(Compound& token) const {
    token.type = CParseToken::kIdentifier;
    token.end = EndOfIdentifier(token.end);
    const std::string_view word = GetText().substr(token.start, token.end - token.start);
    if (CharacterAt(token.end) == '#') return ParseTypedLiteral(token, word);
    token.keyword = CLogicToken::FindKeyword(word);
    if (token.keyword != nullptr) token.SetType(token.keyword->type);
    return true;
}

bool CLogicParseContext::ParseTypedLiteral(Compound& token, std::string_view word) const {
    const auto* const row = std::find_if(std::begin(kTypeWords), std::end(kTypeWords), [word](const TypeWord& entry) {
        return CParseToken::EqualIdentifier(entry.word, word);
    });
    if (row == std::end(kTypeWords)) return true;
    switch (row->literal) {
        case Literal::String: return ParseTypedStringOrChar(token, Type::String);
        case Literal::WString: return ParseTypedStringOrChar(token, Type::WString);
        case Literal::Char: return ParseTypedStringOrChar(token, Type::Char);
        case Literal::WChar: return ParseTypedStringOrChar(token, Type::WChar);
        default: break;
    }
    ++token.end;
    switch (row->literal) {
        case Literal::Time: return ParseIntervalLiteral(token);
        case Literal::Date: return ParseTokenSequence(token, Type::Date, kDatePattern);
        case Literal::DateAndTime: return ParseTokenSequence(token, Type::DateAndTime, kDateAndTimePattern);
        case Literal::TimeOfDay: return ParseTokenSequence(token, Type::TimeOfDay, kTimeOfDayPattern);
        case Literal::Boolean: return ParseBooleanLiteral(token);
        default: break;
    }
    const bool isReal = row->literal == Literal::Real;
    token.SetType(isReal ? Type::Real : Type::Integer);
    ParseOptionalSign(token);
    return ParseNumericLiteral(token, isReal);
}

bool CLogicParseContext::ParseTypedStringOrChar(Compound& token, Type type) const {
    const char quote = CharacterAt(token.end + 1);
    if (!IsQuote(quote)) return true;
    token.end += 2;
    return ParseString(token, type, quote, true);
}

bool CLogicParseContext::ParseBooleanLiteral(Compound& token) const {
    token.SetType(Type::Boolean);
    const Piece piece = ScanPiece(token.end);
    if (piece.type == CParseToken::kIdentifier || piece.type == CParseToken::kNumber) token.end = piece.end;
    return true;
}

bool CLogicParseContext::ParseNumericLiteral(Compound& token, bool realsAllowed) const {
    token.end = EndOfDigitsAndUnderscores(token.end);
    if (CharacterAt(token.end) == '#') {
        token.end = EndOfHexDigits(token.end + 1);
    } else if (realsAllowed) {
        ParseFractionAndExponent(token);
    }
    return true;
}

void CLogicParseContext::ParseFractionAndExponent(Compound& token) const {
    if (CharacterAt(token.end) == '.') {
        token.SetType(Type::Real);
        token.end = EndOfDigitsAndUnderscores(token.end + 1);
    }
    const Piece piece = ScanPiece(token.end);
    const std::string_view text = GetText().substr(token.end, piece.end - token.end);
    if (piece.type != CParseToken::kIdentifier || !CParseToken::IsNumberExponent(text)) return;
    token.SetType(Type::Real);
    token.end = piece.end;
    ParseOptionalSign(token);
    while (IsAsciiDigit(CharacterAt(token.end)))
        ++token.end;
}

bool CLogicParseContext::ParseIntervalLiteral(Compound& token) const {
    token.SetType(Type::Time);
    ParseOptionalSign(token);
    for (;;) {
        const Piece piece = ScanPiece(token.end);
        switch (piece.type) {
            case CParseToken::kNumber:
            case CParseToken::kIdentifier:
            case CParseToken::kUnderscore:
            case '.': token.end = piece.end; break;
            default: return true;
        }
    }
}

bool CLogicParseContext::ParseTokenSequence(Compound& token, Type type, std::string_view pattern) const {
    token.SetType(type);
    for (const char wanted : pattern) {
        const Piece piece = ScanPiece(token.end);
        if (piece.type != (wanted == 'N' ? CParseToken::kNumber : wanted)) return false;
        token.end = piece.end;
    }
    return true;
}

void CLogicParseContext::ParseOptionalSign(Compound& token) const {
    const char sign = CharacterAt(token.end);
    if (sign == '+' || sign == '-') ++token.end;
}

std::size_t CLogicParseContext::EndOfIdentifier(std::size_t offset) const noexcept {
    const std::string_view text = GetText();
    while (offset < text.size()) {
        const char c = text[offset];
        if (IsIdentifierCharacter(c) || (c == '$' && IsDollarAllowedInIdentifiers())) {
            ++offset;
            continue;
        }
        if (static_cast<unsigned char>(c) < 0x80) break;
        const Piece piece = ScanPiece(offset);
        if (piece.type != CParseToken::kIdentifier) break;
        offset = piece.end;
    }
    return offset;
}

std::size_t CLogicParseContext::EndOfDigitsAndUnderscores(std::size_t offset) const noexcept {
    while (IsAsciiDigit(CharacterAt(offset)) || CharacterAt(offset) == '_')
        ++offset;
    return offset;
}

// Letters count by runs: one with a letter that is no hexadecimal digit is not part of the number at all.
std::size_t CLogicParseContext::EndOfHexDigits(std::size_t offset) const noexcept {
    for (;;) {
        offset = EndOfDigitsAndUnderscores(offset);
        const Piece piece = ScanPiece(offset);
        const std::string_view letters = GetText().substr(offset, piece.end - offset);
        if (piece.type != CParseToken::kIdentifier) return offset;
        if (!std::all_of(letters.begin(), letters.end(), [](char c) { return HexDigitValue(c) >= 0; })) return offset;
        offset = piece.end;
    }
}

bool CLogicParseContext::GetStringTokenAsString(std::string& text) {
    text.clear();
    CLogicToken token;
    do {
        if (!ReadSingleStringToken(text)) return false;
        GetNextLogicTokenAfterWhitespace(token);
    } while (token.IsType('+'));
    ReplaceToken(std::move(token));
    return true;
}

bool CLogicParseContext::GetIntegerTokenAsLong(long& value) {
    CLogicToken token;
    GetNextLogicTokenAfterWhitespace(token);
    std::string text;
    if (token.IsType('+') || token.IsType('-')) {
        text = token.GetText();
        GetNextLogicTokenAfterWhitespace(token);
    }
    if (!token.IsType(Type::Integer)) return LogUnexpectedTokenError(token, {"Integer value"});
    text += token.GetText();
    value = std::strtol(text.c_str(), nullptr, 10);
    return true;
}

bool CLogicParseContext::GetBooleanTokenAsBool(bool& value) {
    CLogicToken token;
    GetNextLogicTokenAfterWhitespace(token);
    const bool isTrue = token.IsType(Type::True);
    if (!isTrue && !token.IsType(Type::False)) return LogUnexpectedTokenError(token, {"TRUE", "FALSE"});
    value = isTrue;
    return true;
}

bool CLogicParseContext::ReadSingleStringToken(std::string& text) {
    CLogicToken token;
    GetNextLogicTokenAfterWhitespace(token);
    if (!token.IsType(Type::WString)) return LogUnexpectedTokenError(token, {"String"});
    CTextInputFromStringToken content(token);
    while (const std::optional<char32_t> codePoint = content.ReadCodePoint())
        tn_append_codepoint_to_tnstring(text, *codePoint);
    return true;
}
