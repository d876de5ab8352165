#include "platform/ParseContext.h"

#include <algorithm>
#include <array>

#include "platform/CharTable.h"
#include "platform/FormatText.h"
#include "platform/TextInput.h"
#include "platform/Transcode.h"

namespace {

enum class ByteClass : unsigned char { Other, Letter, Digit, WhiteSpace, Punctuation, High };

constexpr std::array<ByteClass, 256> kByteClasses = [] {
    std::array<ByteClass, 256> classes{};
    for (unsigned int byte = 0; byte < classes.size(); ++byte) {
        const bool letter = (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
        if (byte >= 0x80) {
            classes[byte] = ByteClass::High;
        } else if (letter) {
            classes[byte] = ByteClass::Letter;
        } else if (byte >= '0' && byte <= '9') {
            classes[byte] = ByteClass::Digit;
        } else if (byte == ' ' || (byte >= '\t' && byte <= '\r')) {
            classes[byte] = ByteClass::WhiteSpace;
        } else if (byte > ' ' && byte < 0x7F) {
            classes[byte] = ByteClass::Punctuation;
        }
    }
    return classes;
}();

ByteClass ClassOf(char c) noexcept {
    return kByteClasses[static_cast<unsigned char>(c)];
}

// A character that is no ASCII, or an invalid part.
struct HighCharacter {
    char32_t codePoint;
    std::size_t size;
};

HighCharacter DecodeAt(std::string_view text, std::size_t offset) noexcept {
    constexpr std::size_t kLongest = 4;
    HighCharacter character{};
    const auto count = static_cast<unsigned int>(std::min(text.size() - offset, kLongest));
    character.size = tn_codepoint_from_tnchar(text.data() + offset, count, character.codePoint);
    return character;
}

// Behind the run of characters that are of an ASCII class, or of what is said of the others, from `offset` on.
std::size_t EndOfRun(std::string_view text, std::size_t offset, ByteClass byteClass,
                     bool (*isMember)(char32_t)) noexcept {
    while (offset < text.size()) {
        const ByteClass found = ClassOf(text[offset]);
        if (found == byteClass) {
            ++offset;
            continue;
        }
        if (found != ByteClass::High) break;
        const HighCharacter character = DecodeAt(text, offset);
        if (!isMember(character.codePoint)) break;
        offset += character.size;
    }
    return offset;
}

std::size_t EndOfDigits(std::string_view text, std::size_t offset) noexcept {
    while (offset < text.size() && ClassOf(text[offset]) == ByteClass::Digit)
        ++offset;
    return offset;
}

bool IsLetter(char32_t codePoint) {
    return UnicodeCharTable::IsLetter(codePoint);
}
bool IsSpace(char32_t codePoint) {
    return UnicodeCharTable::IsWhiteSpace(codePoint);
}

// The size of the line end at an offset; 0 where there is none.
std::size_t LineEndAt(std::string_view text, std::size_t offset) noexcept {
    if (text[offset] == '\n') return 1;
    return text.substr(offset, 2) == "\r\n" ? 2 : 0;
}

// Behind a run of white space that holds no line end.
std::size_t EndOfSpaceInLine(std::string_view text, std::size_t offset) noexcept {
    while (offset < text.size() && LineEndAt(text, offset) == 0) {
        const ByteClass found = ClassOf(text[offset]);
        if (found == ByteClass::WhiteSpace) {
            ++offset;
            continue;
        }
        if (found != ByteClass::High) break;
        const HighCharacter character = DecodeAt(text, offset);
        if (!IsSpace(character.codePoint)) break;
        offset += character.size;
    }
    return offset;
}

// The position behind the text from `position` to `end`.
TextPosition Advance(std::string_view text, TextPosition position, std::size_t end) noexcept {
    while (position.offset < end) {
        const char c = text[position.offset];
        if (ClassOf(c) == ByteClass::High) {
            position.offset += DecodeAt(text, position.offset).size;
            ++position.column;
            continue;
        }
        ++position.offset;
        if (c == '\n') {
            ++position.line;
            position.column = 1;
        } else {
            ++position.column;
        }
    }
    return position;
}

}  // namespace

CParseContext::CParseContext(CTextInput* input, COutputLog* log) : log_(log) {
    if (input != nullptr) text_ = input->TakeRest(storage_);
}

CParseContext::~CParseContext() = default;

void CParseContext::SetFileName(std::string fileName) {
    fileName_ = fileName.empty() ? nullptr : std::make_shared<const std::string>(std::move(fileName));
}

const std::string& CParseContext::GetFileName() const noexcept {
    static const std::string noName;
    return fileName_ != nullptr ? *fileName_ : noName;
}

void CParseContext::GetNextToken(CParseToken& token) {
    if (TakePushedToken(token)) return;
    const Piece piece = ScanPiece(position_.offset);
    TakeToken(token, piece.type, piece.end);
}

void CParseContext::GetNextTokenAfterWhitespace(CParseToken& token) {
    SkipWhiteSpace();
    GetNextToken(token);
}

void CParseContext::ReplaceToken(CParseToken&& token) {
    // Where the text would give the same token once more, it is read from there again: what joins elementary tokens
    // then sees it with what follows.
    const TextPosition& start = token.Location().GetStart();
    const bool isLast = pushed_.empty() && start.IsKnown() && start.offset <= position_.offset &&
                        token.Location().GetEnd() == position_ && token.Location().GetSharedFileName() == fileName_ &&
                        text_.substr(start.offset, position_.offset - start.offset) == token.GetText();
    if (isLast && !token.IsNotTerminated()) {
        const Piece piece = ScanPiece(start.offset);
        if (piece.type == token.GetType() && piece.end == position_.offset) {
            position_ = start;
            return;
        }
    }
    pushed_.push_back(std::move(token));
}

void CParseContext::SetTextPosition(const TextPosition& position) noexcept {
    pushed_.clear();
    if (position.IsKnown() && position.offset <= text_.size()) position_ = position;
}

void CParseContext::SkipTo(std::size_t offset) noexcept {
    pushed_.clear();
    position_ = Advance(text_, position_, std::min(offset, text_.size()));
}

CParseContext::Piece CParseContext::ScanPiece(std::size_t offset, bool lineEndsAreTokens) const noexcept {
    if (offset >= text_.size()) return {CParseToken::kEndOfInput, text_.size()};
    const char c = text_[offset];
    switch (ClassOf(c)) {
        case ByteClass::Letter:
            return {CParseToken::kIdentifier, EndOfRun(text_, offset + 1, ByteClass::Letter, IsLetter)};
        case ByteClass::Digit: return {CParseToken::kNumber, EndOfDigits(text_, offset + 1)};
        case ByteClass::Punctuation: return {c, offset + 1};
        case ByteClass::Other: return {CParseToken::kOtherCharacter, offset + 1};
        case ByteClass::WhiteSpace:
        case ByteClass::High: break;
    }
    if (ClassOf(c) == ByteClass::High) {
        const HighCharacter character = DecodeAt(text_, offset);
        const std::size_t end = offset + character.size;
        if (IsLetter(character.codePoint)) {
            return {CParseToken::kIdentifier, EndOfRun(text_, end, ByteClass::Letter, IsLetter)};
        }
        if (!IsSpace(character.codePoint)) return {CParseToken::kOtherCharacter, end};
    }
    if (!lineEndsAreTokens) {
        return {CParseToken::kWhiteSpace, EndOfRun(text_, offset, ByteClass::WhiteSpace, IsSpace)};
    }
    if (const std::size_t size = LineEndAt(text_, offset)) return {CParseToken::kLineEnd, offset + size};
    return {CParseToken::kWhiteSpace, EndOfSpaceInLine(text_, offset)};
}

void CParseContext::TakeToken(CParseToken& token, int type, std::size_t end) {
    const TextPosition start = position_;
    position_ = Advance(text_, start, end);
    token.SetType(type);
    token.SetNotTerminated(false);
    token.SetText(text_.substr(start.offset, position_.offset - start.offset));
    token.Location().SetFileName(fileName_);
    token.Location().SetRange(start, position_);
}

void CParseContext::PopToken(CParseToken& token) {
    token = std::move(pushed_.back());
    pushed_.pop_back();
}

bool CParseContext::IsWhiteSpace(const CParseToken& token) const noexcept {
    return token.IsType(CParseToken::kWhiteSpace) || (token.IsType(CParseToken::kLineEnd) && !lineEndsAreTokens_);
}

void CParseContext::SkipWhiteSpace() {
    while (!pushed_.empty() && IsWhiteSpace(pushed_.back()))
        pushed_.pop_back();
    if (!pushed_.empty()) return;
    const Piece piece = ScanPiece(position_.offset);
    if (piece.type == CParseToken::kWhiteSpace) position_ = Advance(text_, position_, piece.end);
}

bool CParseContext::IsFollowedBy(const CParseToken& token, char character) const noexcept {
    const TextPosition& end = token.Location().GetEnd();
    if (!end.IsKnown()) return false;
    if (!pushed_.empty()) {
        return pushed_.back().Location().GetStart() == end && pushed_.back().GetText().starts_with(character);
    }
    return position_ == end && text_.substr(end.offset).starts_with(character);
}

bool CParseContext::LogUnexpectedTokenError(const CParseToken& token,
                                            std::initializer_list<std::string_view> expected) {
    constexpr std::size_t kLongestText = 60;
    std::array<char, 256> location{};
    (void)token.Location().PrintLocation(location.data(), static_cast<unsigned int>(location.size()));
    std::string line(location.data());
    if (!line.empty()) line += ": ";
    if (token.IsType(CParseToken::kEndOfInput)) {
        line += "error: Unexpected end of input";
    } else {
        // A text of several lines would break the log's.
        std::string_view text = token.GetText();
        text = text.substr(0, text.find_first_of("\r\n"));
        text = text.substr(0, CutUtf8(text, kLongestText));
        line += FormatText("error: Unexpected '%s%s'", text, text.size() < token.GetText().size() ? "..." : "");
    }
    std::string_view separator = ", expected ";
    for (const std::string_view word : expected) {
        line.append(separator).append(word);
        separator = " or ";
    }
    GetOutputLog().LogError(line + '.');
    return false;
}
