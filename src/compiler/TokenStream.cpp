#include "compiler/TokenStream.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>

#include "compiler/Parser.h"
#include "literal/LiteralText.h"
#include "literal/LogicParseContext.h"
#include "platform/TextInput.h"

namespace tn61131::st {

namespace {

constexpr bool IsNameCharacter(char c) noexcept {
    return IsAsciiLetter(c) || IsAsciiDigit(c) || c == '_';
}

constexpr bool IsBlank(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

TokenKind KindOf(LogicTokenType type) noexcept {
    switch (type) {
        case LogicTokenType::String: return TokenKind::String;
        case LogicTokenType::WString: return TokenKind::WString;
        case LogicTokenType::Char: return TokenKind::Char;
        case LogicTokenType::WChar: return TokenKind::WChar;
        case LogicTokenType::Integer: return TokenKind::Integer;
        case LogicTokenType::Real: return TokenKind::Real;
        case LogicTokenType::Time: return TokenKind::Time;
        case LogicTokenType::Date: return TokenKind::Date;
        case LogicTokenType::DateAndTime: return TokenKind::DateAndTime;
        case LogicTokenType::TimeOfDay: return TokenKind::TimeOfDay;
        case LogicTokenType::Boolean: return TokenKind::Bool;
        case LogicTokenType::DirectlyLocatedVariable: return TokenKind::Located;
        default: return TokenKind::Identifier;
    }
}

// Signs of one and two characters; `second` is 0 for the former, which stand behind those of two with the same first.
struct SignRow {
    char first;
    char second;
    TokenKind kind;
};

constexpr SignRow kSigns[] = {
    {'(', 0, TokenKind::LeftParen},   {')', 0, TokenKind::RightParen},
    {'[', 0, TokenKind::LeftBracket}, {']', 0, TokenKind::RightBracket},
    {',', 0, TokenKind::Comma},       {';', 0, TokenKind::Semicolon},
    {':', '=', TokenKind::Assign},    {':', 0, TokenKind::Colon},
    {'.', '.', TokenKind::Range},     {'.', 0, TokenKind::Dot},
    {'=', '>', TokenKind::Output},    {'=', 0, TokenKind::Equal},
    {'<', '=', TokenKind::LessEqual}, {'<', '>', TokenKind::NotEqual},
    {'<', 0, TokenKind::Less},        {'>', '=', TokenKind::GreaterEqual},
    {'>', 0, TokenKind::Greater},     {'+', 0, TokenKind::Plus},
    {'-', 0, TokenKind::Minus},       {'*', '*', TokenKind::Power},
    {'*', 0, TokenKind::Star},        {'/', 0, TokenKind::Slash},
    {'&', 0, TokenKind::Ampersand},   {'^', 0, TokenKind::Caret},
    {'#', 0, TokenKind::Hash},        {'?', '=', TokenKind::Attempt},
};

constexpr std::uint8_t kNoSign = 0xFF;

// By character: the first row of kSigns that begins with it.
constexpr std::array<std::uint8_t, 256> kSignsByCharacter = [] {
    std::array<std::uint8_t, 256> rows{};
    rows.fill(kNoSign);
    for (std::size_t i = std::size(kSigns); i-- > 0;)
        rows[static_cast<unsigned char>(kSigns[i].first)] = static_cast<std::uint8_t>(i);
    return rows;
}();

// The sign that begins with two characters; null for none. What opens a comment is none.
constexpr const SignRow* FindSign(char first, char second) noexcept {
    const bool opensComment = (first == '(' && second == '*') || (first == '/' && (second == '*' || second == '/'));
    const std::uint8_t row = kSignsByCharacter[static_cast<unsigned char>(first)];
    if (row == kNoSign || opensComment) return nullptr;
    for (const SignRow* sign = kSigns + row; sign != std::end(kSigns) && sign->first == first; ++sign) {
        if (sign->second == 0 || sign->second == second) return sign;
    }
    return nullptr;
}

// Words that begin a literal of a long time type: behind the L stands one that the tokenizer knows.
bool IsLongTimeWord(std::string_view word) noexcept {
    constexpr std::string_view kWords[] = {"LT",  "LTIME", "LD",           "LDATE",
                                           "LDT", "LTOD",  "LTIME_OF_DAY", "LDATE_AND_TIME"};
    return std::any_of(std::begin(kWords), std::end(kWords),
                       [word](std::string_view known) { return CParseToken::EqualIdentifier(word, known); });
}

bool IsBoolLiteral(std::string_view content) noexcept {
    return content == "0" || content == "1" || CParseToken::EqualIdentifier(content, "TRUE") ||
           CParseToken::EqualIdentifier(content, "FALSE");
}

class TokenReader {
 public:
    TokenReader(const SourceManager& sources, std::uint32_t file, const Switches& switches, NameTable& names,
                Diagnostics& diagnostics)
        : switches_(switches),
          names_(names),
          diagnostics_(diagnostics),
          input_(sources.GetText(file)),
          context_(&input_, nullptr),
          text_(context_.GetText()),
          base_(sources.GetStart(file) + static_cast<SourceOffset>(sources.GetText(file).size() - text_.size())),
          rereadLeft_(text_.size() * 4 + kFreeReread) {
        list_.tokens.reserve(text_.size() / 4 + 16);
    }

    TokenList Read() {
        do
            ReadToken();
        while (!token_.IsType(CParseToken::kEndOfInput));
        Add(TokenKind::End, text_.size(), text_.size());
        return std::move(list_);
    }

 private:
    // What may be read a second time because a string ran beyond its line, besides the length of the text.
    static constexpr std::size_t kFreeReread = 65536;

    void ReadToken();
    [[nodiscard]] bool ReadPlainWord();
    [[nodiscard]] bool ReadSign();
    void ReadWithTokenizer();
    void ReadCharacter();
    void ReadComment(char outer);
    void ReadPragma();
    void ReadString(TokenKind kind);
    void ReadNumber(TokenKind kind);
    void ReadTyped(TokenKind kind);
    void ReadIdentifier();
    void ReadAddress();
    void ReportStray();

    [[nodiscard]] std::size_t Begin() const noexcept { return token_.Location().GetStart().offset; }
    [[nodiscard]] std::size_t End() const noexcept { return token_.Location().GetEnd().offset; }
    [[nodiscard]] char At(std::size_t offset) const noexcept { return offset < text_.size() ? text_[offset] : '\0'; }
    [[nodiscard]] SourceRange RangeOf(std::size_t begin, std::size_t end) const noexcept {
        return {base_ + static_cast<SourceOffset>(begin), base_ + static_cast<SourceOffset>(end)};
    }
    [[nodiscard]] bool IsBehind(TokenKind kind) const noexcept {
        return !list_.tokens.empty() && list_.tokens.back().kind == kind &&
               list_.tokens.back().range.end == base_ + Begin();
    }
    // Goes on reading inside the token that was just read, on its first line.
    void ReadAgainFrom(std::size_t offset) {
        TextPosition position = token_.Location().GetStart();
        position.column += static_cast<unsigned int>(offset - position.offset);
        position.offset = offset;
        context_.SetTextPosition(position);
    }
    // The end of the name characters from an offset on.
    [[nodiscard]] std::size_t EndOfName(std::size_t offset) const noexcept {
        while (IsNameCharacter(At(offset)))
            ++offset;
        return offset;
    }
    [[nodiscard]] std::size_t EndOfDigits(std::size_t offset) const noexcept {
        while (IsAsciiDigit(At(offset)))
            ++offset;
        return offset;
    }
    void Add(TokenKind kind, std::size_t begin, std::size_t end) {
        const std::string_view between = text_.substr(lastEnd_, begin - lastEnd_);
        const bool startsLine = list_.tokens.empty() || between.find('\n') != std::string_view::npos;
        list_.tokens.push_back(Token{RangeOf(begin, end), NameId::None, kind, Keyword::None, startsLine});
        lastEnd_ = end;
    }
    void AddName(std::size_t begin, std::size_t end) {
        Add(TokenKind::Identifier, begin, end);
        Token& added = list_.tokens.back();
        added.name = names_.Intern(text_.substr(begin, end - begin));
        added.keyword = KeywordOf(added.name);
    }
    // TYPE# in front of something that is no literal: the name, the "#", and on with what follows.
    void AddPrefix() {
        const std::size_t hash = text_.find('#', Begin());
        AddName(Begin(), hash);
        Add(TokenKind::Hash, hash, hash + 1);
        ReadAgainFrom(hash + 1);
    }
    void AddInvalidNumber(std::size_t begin, std::size_t end) {
        diagnostics_.Report(DiagnosticCode::MalformedNumber, RangeOf(begin, end), {text_.substr(begin, end - begin)});
        Add(TokenKind::Invalid, begin, end);
        context_.SkipTo(end);
    }

    const Switches& switches_;
    NameTable& names_;
    Diagnostics& diagnostics_;
    TextInputTNString input_;
    CLogicParseContext context_;
    std::string_view text_;
    SourceOffset base_;  ///< of the text's first byte
    std::size_t rereadLeft_;
    CLogicToken token_;
    TokenList list_;
    std::size_t offset_ = 0;                         ///< of what is read next
    std::size_t lastEnd_ = 0;                        ///< behind the last token
    std::size_t strayEnd_ = std::string_view::npos;  ///< behind the last stray character
};

// Blanks, words and signs make up most of a source and have one reading only; whatever is more is the tokenizer's.
void TokenReader::ReadToken() {
    while (IsBlank(At(offset_)))
        ++offset_;
    if (ReadPlainWord() || ReadSign()) return;
    context_.SkipTo(offset_);
    context_.GetNextLogicTokenAfterWhitespace(token_);
    ReadWithTokenizer();
    offset_ = context_.GetTextPosition().offset;
}

// A word of ASCII characters that is no prefix of a literal.
bool TokenReader::ReadPlainWord() {
    const char first = At(offset_);
    if (!IsAsciiLetter(first) && first != '_') return false;
    const std::size_t end = EndOfName(offset_);
    const char next = At(end);
    if (next == '#' || static_cast<unsigned char>(next) >= 0x80) return false;
    AddName(offset_, end);
    offset_ = end;
    return true;
}

bool TokenReader::ReadSign() {
    const SignRow* const sign = FindSign(At(offset_), At(offset_ + 1));
    if (sign == nullptr) return false;
    const std::size_t end = offset_ + (sign->second == 0 ? 1 : 2);
    Add(sign->kind, offset_, end);
    offset_ = end;
    return true;
}

void TokenReader::ReadWithTokenizer() {
    if (token_.IsAnyIdentifier()) return ReadIdentifier();
    if (token_.GetType() < CParseToken::kFirstCompoundType) return ReadCharacter();
    const TokenKind kind = KindOf(token_.GetLogicType());
    switch (token_.GetLogicType()) {
        case LogicTokenType::Comment: return ReadComment('(');
        case LogicTokenType::CppComment: return;
        case LogicTokenType::Pragma: return ReadPragma();
        case LogicTokenType::String:
        case LogicTokenType::WString:
        case LogicTokenType::Char:
        case LogicTokenType::WChar:
        case LogicTokenType::DirectlyLocatedVariable: return ReadString(kind);
        case LogicTokenType::Integer:
        case LogicTokenType::Real: return ReadNumber(kind);
        case LogicTokenType::Time:
        case LogicTokenType::Date:
        case LogicTokenType::DateAndTime:
        case LogicTokenType::TimeOfDay:
        case LogicTokenType::Boolean: return ReadTyped(kind);
        default: return Add(kind, Begin(), End());
    }
}

void TokenReader::ReadCharacter() {
    const int type = token_.GetType();
    if (type == CParseToken::kEndOfInput) return;
    if (type == '/' && At(End()) == '*') return ReadComment('/');
    if (type == '%') return ReadAddress();
    ReportStray();
}

void TokenReader::ReportStray() {
    const bool continues = strayEnd_ == Begin();
    strayEnd_ = End();
    if (continues) return;
    std::string shown = "'" + token_.GetText() + "'";
    if (token_.IsType(CParseToken::kOtherCharacter)) {
        constexpr char kDigits[] = "0123456789ABCDEF";
        shown = "16#";
        for (const char c : token_.GetText()) {
            shown += kDigits[static_cast<unsigned char>(c) >> 4];
            shown += kDigits[static_cast<unsigned char>(c) & 15];
        }
    }
    diagnostics_.Report(DiagnosticCode::StrayCharacter, RangeOf(Begin(), End()), {shown});
}

void TokenReader::ReadComment(char outer) {
    const std::size_t begin = Begin();
    const SourceRange opening = RangeOf(begin, begin + 2);
    const char closing = outer == '(' ? ')' : outer;
    std::size_t next = begin + 2;  // what is not part of a mark yet
    std::uint32_t depth = 1;
    while (depth != 0) {
        const std::size_t star = text_.find('*', next);
        if (star == std::string_view::npos) {
            diagnostics_.Report(DiagnosticCode::UnterminatedComment, opening);
            return context_.SkipTo(text_.size());
        }
        const bool opens = switches_.nestedComments && star > next && text_[star - 1] == outer;
        next = star + 1;
        if (opens) {
            if (depth++ == kMaxNesting)
                diagnostics_.Report(DiagnosticCode::NestingTooDeep, opening, {std::to_string(kMaxNesting)});
        } else if (At(next) == closing) {
            --depth;
            ++next;
        }
    }
    context_.SkipTo(next);
}

void TokenReader::ReadPragma() {
    if (token_.IsNotTerminated()) {
        diagnostics_.Report(DiagnosticCode::UnterminatedPragma, RangeOf(Begin(), Begin() + 1));
        return;
    }
    constexpr std::string_view kBlanks = " \t\r\n";
    std::string_view content = text_.substr(Begin() + 1, End() - Begin() - 2);
    const std::size_t first = content.find_first_not_of(kBlanks);
    content = first == std::string_view::npos ? std::string_view{}
                                              : content.substr(first, content.find_last_not_of(kBlanks) - first + 1);
    list_.pragmas.push_back({static_cast<std::uint32_t>(list_.tokens.size()), content});
}

// Strings end on their line, so that one quote too few costs one line and not the rest of the file.
void TokenReader::ReadString(TokenKind kind) {
    const std::string_view text = text_.substr(Begin(), End() - Begin());
    const std::size_t lineEnd = text.find('\n');
    if (lineEnd == std::string_view::npos && !token_.IsNotTerminated()) return Add(kind, Begin(), End());
    const std::size_t length = std::min(lineEnd, text.size());
    diagnostics_.Report(DiagnosticCode::UnterminatedString, RangeOf(Begin(), Begin() + length));
    Add(TokenKind::Invalid, Begin(), Begin() + length);
    const std::size_t again = text.size() - length;
    if (again > rereadLeft_) return;
    rereadLeft_ -= again;
    ReadAgainFrom(Begin() + length);
}

void TokenReader::ReadNumber(TokenKind kind) {
    const std::string_view text = text_.substr(Begin(), End() - Begin());
    if (IsBehind(TokenKind::Dot) && IsAsciiDigit(text[0])) {
        // Bit access: a.10.2 has the bits 10 and 2, and no real number.
        const std::size_t end = EndOfDigits(Begin());
        Add(TokenKind::Integer, Begin(), end);
        return ReadAgainFrom(end);
    }
    if (text.ends_with('.') && At(End()) == '.') {
        Add(TokenKind::Integer, Begin(), End() - 1);
        return ReadAgainFrom(End() - 1);
    }
    const char last = text.back();
    const bool lacksDigits = last == '#' || last == '+' || last == '-' ||
                             (kind == TokenKind::Real && !IsAsciiDigit(last) && last != '_' && last != '.');
    // Nothing but a sign, or what could be the start of an exponent, behind TYPE#: a conversion of what follows.
    if (lacksDigits && IsAsciiLetter(text[0]) && text.find('#') + 2 >= text.size()) return AddPrefix();
    if (lacksDigits || IsNameCharacter(At(End()))) return AddInvalidNumber(Begin(), EndOfName(End()));
    Add(kind, Begin(), End());
}

void TokenReader::ReadTyped(TokenKind kind) {
    const std::size_t content = text_.find('#', Begin()) + 1;
    const char first = At(content);
    if (kind == TokenKind::Bool) {
        const bool isLiteral = IsBoolLiteral(text_.substr(content, End() - content)) && !IsNameCharacter(At(End()));
        return isLiteral ? Add(kind, Begin(), End()) : AddPrefix();
    }
    if (IsAsciiLetter(first) || first == '(') return AddPrefix();
    Add(kind, Begin(), End());
}

void TokenReader::ReadIdentifier() {
    const std::size_t begin = Begin();
    if (At(End()) != '#' || !IsLongTimeWord(token_.GetText())) return AddName(begin, End());
    // Behind the L stands a literal that the tokenizer knows.
    ReadAgainFrom(begin + 1);
    context_.GetNextLogicToken(token_);
    const char first = At(text_.find('#', begin) + 1);
    const bool isLiteral = token_.GetType() >= CParseToken::kFirstCompoundType && !IsAsciiLetter(first) && first != '(';
    if (isLiteral) return Add(KindOf(token_.GetLogicType()), begin, End());
    const std::size_t hash = text_.find('#', begin);
    AddName(begin, hash);
    ReadAgainFrom(hash);
}

// Behind "%": the area and size of a direct address and its numbers, or the size and number of a part.
void TokenReader::ReadAddress() {
    const bool isPartial = IsBehind(TokenKind::Dot);
    std::size_t end = End();
    while (IsAsciiLetter(At(end)))
        ++end;
    if (end == End()) return ReportStray();
    if (At(end) == '*') {
        ++end;
    } else {
        end = EndOfDigits(end);
        while (!isPartial && At(end) == '.' && IsAsciiDigit(At(end + 1)))
            end = EndOfDigits(end + 1);
    }
    Add(isPartial ? TokenKind::Partial : TokenKind::Located, Begin(), end);
    context_.SkipTo(end);
}

}  // namespace

TokenList ReadTokens(const SourceManager& sources, std::uint32_t file, const Switches& switches, NameTable& names,
                     Diagnostics& diagnostics) {
    return TokenReader(sources, file, switches, names, diagnostics).Read();
}

}  // namespace tn61131::st
