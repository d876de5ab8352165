#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/ErrorLog.h"
#include "platform/Export.h"
#include "platform/ParseToken.h"

class CTextInput;

/// Splits a text into elementary tokens (CParseToken says which). The texts of all tokens, white space and line ends
/// included, make up the text again, byte for byte.
///
/// The text is taken whole from its source when the context is made. A UTF-8 source gives its own bytes, which must
/// then stay where they are as long as the context; they are not copied, and bytes that are not valid UTF-8 stay as
/// they are: each maximal invalid part is one token of type kOtherCharacter, and counts as one column. Any other source
/// is turned into UTF-8 that the context keeps.
///
/// Letters are those of Unicode, white space likewise. Line ends (LF, CR LF) are white space like any other until they
/// are asked for as tokens.
///
/// Belongs to one thread at a time. Reading takes time in proportion to what is read, whatever the text is.
class TN61131_API CParseContext {
 public:
    /// Either may be null: an empty text, messages that are dropped. Neither is owned; the log must outlive the
    /// context.
    CParseContext(CTextInput* input, COutputLog* log);
    CParseContext(const CParseContext&) = delete;
    CParseContext& operator=(const CParseContext&) = delete;
    virtual ~CParseContext();

    /// The file name of all tokens read from now on; empty at first.
    void SetFileName(std::string fileName);
    [[nodiscard]] const std::string& GetFileName() const noexcept;
    [[nodiscard]] COutputLog& GetOutputLog() noexcept { return log_ != nullptr ? *log_ : dropped_; }

    /// Whether line ends arrive as tokens of type kLineEnd (LF or CR LF, each one token) rather than as white space;
    /// off at first. Returns what was set before.
    bool SetLineEndHandling(bool asTokens) noexcept { return std::exchange(lineEndsAreTokens_, asTokens); }
    [[nodiscard]] bool GetLineEndHandling() const noexcept { return lineEndsAreTokens_; }
    /// Whether "$" may be part of identifiers, for contexts that join elementary tokens; off at first.
    void AllowDollarInIdentifiers(bool allow) noexcept { dollarInIdentifiers_ = allow; }
    [[nodiscard]] bool IsDollarAllowedInIdentifiers() const noexcept { return dollarInIdentifiers_; }

    /// The next elementary token, or the last one that was pushed back. Behind the last one comes kEndOfInput, again
    /// and again.
    void GetNextToken(CParseToken& token);
    /// The same after skipping white space, which line ends are unless they arrive as tokens.
    void GetNextTokenAfterWhitespace(CParseToken& token);
    /// Pushes a token back: the next read returns it again, then goes on as it would have. Any number can be pushed
    /// back; the last one comes first. A token that need not come from the text is returned as it is.
    void ReplaceToken(CParseToken&& token);

    /// The whole text, valid as long as the context.
    [[nodiscard]] std::string_view GetText() const noexcept { return text_; }
    /// Where reading goes on when nothing is pushed back.
    [[nodiscard]] const TextPosition& GetTextPosition() const noexcept { return position_; }
    /// Goes on reading at a position that a token of this context has, and forgets what was pushed back.
    void SetTextPosition(const TextPosition& position) noexcept;
    /// Goes on reading at a byte offset, and forgets what was pushed back. Forward only: an offset before the position
    /// leaves it where it is, one beyond the end means the end. Must not lie inside a character.
    void SkipTo(std::size_t offset) noexcept;

    /// Reports `LOCATION: error: Unexpected 'TEXT', expected WORD or WORD.` to the log and returns false. A long text
    /// is cut.
    bool LogUnexpectedTokenError(const CParseToken& token, std::initializer_list<std::string_view> expected);

 protected:
    /// On a text that the caller keeps alive, taken as it is, a byte-order mark included.
    CParseContext(std::string_view text, COutputLog* log) noexcept : text_(text), log_(log) {}

    /// An elementary token of the text, not yet taken.
    struct Piece {
        int type;
        std::size_t end;  ///< offset behind it
    };
    /// What begins at an offset, the text's length at most; with line ends as white space or as the setting says.
    [[nodiscard]] Piece ScanPiece(std::size_t offset) const noexcept { return ScanPiece(offset, lineEndsAreTokens_); }
    [[nodiscard]] Piece ScanPiece(std::size_t offset, bool lineEndsAreTokens) const noexcept;
    /// Makes the text from the position to `end` a token and moves behind it.
    void TakeToken(CParseToken& token, int type, std::size_t end);
    /// Takes the token that was pushed back last; false when there is none.
    bool TakePushedToken(CParseToken& token) {
        if (pushed_.empty()) return false;
        PopToken(token);
        return true;
    }
    /// Moves behind white space, of which what was pushed back may be a part.
    void SkipWhiteSpace();
    /// Whether `character` stands directly behind a token, in the text or in what was pushed back.
    [[nodiscard]] bool IsFollowedBy(const CParseToken& token, char character) const noexcept;

 private:
    void PopToken(CParseToken& token);
    [[nodiscard]] bool IsWhiteSpace(const CParseToken& token) const noexcept;

    std::string storage_;  // the text of a source that holds no UTF-8
    std::string_view text_;
    TextPosition position_{0, 1, 1};
    std::vector<CParseToken> pushed_;
    std::shared_ptr<const std::string> fileName_;
    COutputLog* log_;
    COutputLogNull dropped_;
    bool lineEndsAreTokens_ = false;
    bool dollarInIdentifiers_ = false;
};
