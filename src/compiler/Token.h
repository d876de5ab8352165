#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "compiler/Names.h"
#include "compiler/Source.h"

namespace tn61131::st {

enum class TokenKind : std::uint8_t {
    End,      ///< of the file
    Invalid,  ///< already reported; stands where a literal would
    Identifier,
    Integer,
    Real,
    String,
    WString,
    Char,
    WChar,
    Time,
    Date,
    DateAndTime,
    TimeOfDay,
    Bool,     ///< BOOL#...; TRUE and FALSE are keywords
    Located,  ///< %IX0.1, %I*, %"address"
    Partial,  ///< %X3 behind a dot

    Assign,   ///< :=
    Output,   ///< =>
    Attempt,  ///< ?=
    Power,
    LessEqual,
    GreaterEqual,
    NotEqual,
    Range,  ///< ..
    Equal,
    Less,
    Greater,
    Plus,
    Minus,
    Star,
    Slash,
    Ampersand,
    LeftParen,
    RightParen,
    LeftBracket,
    RightBracket,
    Comma,
    Semicolon,
    Colon,
    Dot,
    Caret,
    Hash
};

struct Token {
    SourceRange range{};
    NameId name = NameId::None;  ///< of an identifier, keywords included
    TokenKind kind = TokenKind::End;
    Keyword keyword = Keyword::None;
    bool startsLine = false;  ///< first token of its line
};

/// A pragma, by the token that it stands in front of.
struct Pragma {
    std::uint32_t token = 0;
    std::string_view text;  ///< between the braces, without blanks at the ends
};

/// What one file consists of, without blanks and comments. The last token is the end of the file, empty and behind its
/// last byte.
struct TokenList {
    std::vector<Token> tokens;
    std::vector<Pragma> pragmas;  ///< in the order of the text
};

}  // namespace tn61131::st
