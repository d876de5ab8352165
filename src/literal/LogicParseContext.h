#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "literal/LogicToken.h"
#include "platform/Export.h"
#include "platform/ParseContext.h"

/// Splits structured text (IEC 61131-3) into tokens: joins the elementary tokens of CParseContext into comments,
/// pragmas, literals, identifiers, keywords and operators of two characters. The texts of all tokens, white space
/// included, make up the source again.
///
/// Nothing is refused: a comment, pragma or string without an end is marked not terminated and reaches to the end of
/// the input, an incomplete literal has what is there. "<>", "<=", ">=", ".." and "?=" arrive as single characters.
///
/// Source, log and threads as CParseContext says.
class TN61131_API CLogicParseContext : public CParseContext {
 public:
    using CParseContext::CParseContext;
    ~CLogicParseContext() override;

    /// The next token, white space and line ends included. False when it broke off: it is not terminated, or a date or
    /// time that lacks a part.
    bool GetNextLogicToken(CLogicToken& token);
    /// The same after skipping white space, which line ends are unless they arrive as tokens.
    bool GetNextLogicTokenAfterWhitespace(CLogicToken& token);
    /// Pushes a token back, as CParseContext does. A keyword goes back as an identifier and becomes a keyword again
    /// when it is read.
    void ReplaceToken(CLogicToken&& token);
    using CParseContext::ReplaceToken;

    // Typed readers: each reads what it needs after white space. False, with one message in the log (or the first of
    // several strings already in `text`), when something else stands there, which is then read.

    /// One or more double-quoted strings joined by "+"; their escapes decoded, their text one behind the other.
    [[nodiscard]] bool GetStringTokenAsString(std::string& text);
    /// An integer behind an optional sign, read in base 10 up to the first character that is no digit, so that 16#FF
    /// gives 16; saturates at the limits of long. `value` changes on success only.
    [[nodiscard]] bool GetIntegerTokenAsLong(long& value);
    /// TRUE or FALSE. `value` changes on success only.
    [[nodiscard]] bool GetBooleanTokenAsBool(bool& value);
    /// One double-quoted string, appended to `text` with its escapes decoded.
    [[nodiscard]] bool ReadSingleStringToken(std::string& text);

 private:
    /// A token that is being put together: type and end offset so far.
    struct Compound;

    // Each continues the token with what follows it. False when the token breaks off.
    bool ParseCompondToken(Compound& token) const;
    bool ParseIfNext(Compound& token, char next, LogicTokenType type) const;
    bool ParseComment(Compound& token) const;
    bool ParseCppComment(Compound& token) const;
    bool ParsePragma(Compound& token) const;
    bool ParseString(Compound& token, LogicTokenType type, char quote, bool escapes) const;
    bool ParseDirectlyLocatedVar(Compound& token) const;
    bool ParseIdentifier(Compound& token) const;
    bool ParseTypedLiteral(Compound& token, std::string_view word) const;
    bool ParseTypedStringOrChar(Compound& token, LogicTokenType type) const;
    bool ParseBooleanLiteral(Compound& token) const;
    bool ParseNumericLiteral(Compound& token, bool realsAllowed) const;
    bool ParseIntervalLiteral(Compound& token) const;
    bool ParseTokenSequence(Compound& token, LogicTokenType type, std::string_view pattern) const;
    void ParseOptionalSign(Compound& token) const;
    void ParseFractionAndExponent(Compound& token) const;
    void ParsePushedToken(CLogicToken& token) const;

    /// A NUL behind the end; one in the text stands for itself, and for nothing that is looked for.
    [[nodiscard]] char CharacterAt(std::size_t offset) const noexcept {
        return offset < GetText().size() ? GetText()[offset] : '\0';
    }
    [[nodiscard]] std::size_t EndOfIdentifier(std::size_t offset) const noexcept;
    [[nodiscard]] std::size_t EndOfDigitsAndUnderscores(std::size_t offset) const noexcept;
    [[nodiscard]] std::size_t EndOfHexDigits(std::size_t offset) const noexcept;
};
