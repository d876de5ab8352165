#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/ParseToken.h"

/// The compound tokens of structured text, by type. The numbers are part of the interface.
enum class LogicTokenType : int {
    Comment = 128,                  ///< (* *), which do not nest
    CppComment = 129,               ///< // to the end of the line, which is no part of it
    Pragma = 130,                   ///< { }
    String = 131,                   ///< in single quotes, or STRING# with either kind of quotes
    WString = 132,                  ///< in double quotes, or WSTRING# with either kind of quotes
    Integer = 133,                  ///< decimal or with a radix, or with the prefix of an integer or bit string type
    Real = 134,                     ///< with a fraction or an exponent, or with the prefix REAL# or LREAL#
    Time = 135,                     ///< T# or TIME#
    Date = 136,                     ///< D# or DATE#
    DateAndTime = 137,              ///< DT# or DATE_AND_TIME#
    TimeOfDay = 138,                ///< TOD# or TIME_OF_DAY#
    Boolean = 139,                  ///< BOOL#
    Assign = 140,                   ///< :=
    OutputAssign = 141,             ///< =>
    Power = 142,                    ///< **
    DirectlyLocatedVariable = 143,  ///< % and an address in quotes of either kind
    Char = 144,                     ///< CHAR# with either kind of quotes
    WChar = 145,                    ///< WCHAR# with either kind of quotes

    // keywords
    Configuration = 150,
    EndConfiguration = 151,
    With = 152,
    ReadOnly = 153,
    ReadWrite = 154,
    Resource = 155,
    EndResource = 156,
    Task = 157,
    Type = 158,
    EndType = 159,
    Struct = 160,
    EndStruct = 161,
    Union = 162,
    EndUnion = 163,
    Extends = 164,
    Array = 165,
    Of = 166,
    Pointer = 167,
    To = 168,
    At = 169,
    Constant = 170,
    FEdge = 171,
    REdge = 172,
    Sizeof = 173,
    Retain = 174,
    NonRetain = 175,
    Volatile = 176,
    Var = 177,
    VarInput = 178,
    VarOutput = 179,
    VarInOut = 180,
    VarTemp = 182,
    VarExternal = 183,
    VarAccess = 184,
    VarConfig = 185,
    VarGlobal = 186,
    EndVar = 187,
    En = 188,
    Eno = 189,
    False = 190,
    True = 191,
    Null = 192,
    Program = 193,
    EndProgram = 194,
    Function = 195,
    EndFunction = 196,
    FunctionBlock = 197,
    EndFunctionBlock = 198,
    Case = 199,
    EndCase = 200,
    Else = 201,
    Exit = 202,
    For = 203,
    EndFor = 204,
    By = 205,
    Do = 206,
    If = 207,
    Then = 208,
    EndIf = 209,
    Elseif = 210,
    Repeat = 211,
    Until = 212,
    EndRepeat = 213,
    Return = 214,
    While = 215,
    EndWhile = 216,
    Action = 217,
    EndAction = 218,
    InitialStep = 219,
    Step = 220,
    EndStep = 221,
    Transition = 222,
    EndTransition = 223,
    From = 224,
    Not = 225,
    Mod = 226,
    And = 227,
    Or = 228,
    Xor = 229,
    Ref = 230,
    RefTo = 231,
};

/// What is known about a keyword.
struct LogicTokenInformation {
    // The areas of the language that a keyword belongs to, as bits of `categories`.
    static constexpr std::uint32_t kStatement = 0x01;
    static constexpr std::uint32_t kSequentialFunctionChart = 0x04;
    static constexpr std::uint32_t kConfiguration = 0x08;
    static constexpr std::uint32_t kExpression = 0x10;  ///< operators and literals
    static constexpr std::uint32_t kProgramUnit = 0x20;
    static constexpr std::uint32_t kVariableDeclaration = 0x40;
    static constexpr std::uint32_t kDataType = 0x80;

    std::string_view keyword;  ///< in capitals; a zero stands behind it
    LogicTokenType type;
    bool isReserved;          ///< cannot be a name
    std::uint8_t secondFlag;  ///< 0 or 1, for hosts: nothing in the library reads it
    std::int32_t blockStep;   ///< 1 opens a block, -1 closes one
    std::uint32_t categories;
    const char* helpPath;  ///< page of the language reference; null where there is none
};

/// A token of structured text as CLogicParseContext reads it. A keyword's type is the keyword's, its text is spelled as
/// in the source.
class TN61131_API CLogicToken : public CParseToken {
 public:
    CLogicToken() = default;
    /// An identifier, whatever the text is; a null text is empty. Not looked up as a keyword.
    CLogicToken(const char* text, const CErrorLocationTextRange& location)
        : CParseToken(kIdentifier, text == nullptr ? "" : text, location) {}
    CLogicToken(const std::string& text, const CErrorLocationTextRange& location)
        : CParseToken(kIdentifier, text, location) {}
    /// An identifier becomes the keyword that it spells.
    explicit CLogicToken(const CParseToken& token) : CParseToken(token) { TranslateKeywordToken(); }
    explicit CLogicToken(CParseToken&& token) noexcept : CParseToken(std::move(token)) { TranslateKeywordToken(); }

    using CParseToken::IsType;
    [[nodiscard]] bool IsType(LogicTokenType type) const noexcept { return IsType(static_cast<int>(type)); }
    /// For a switch over the type; elementary types have no enumerator.
    [[nodiscard]] LogicTokenType GetLogicType() const noexcept { return static_cast<LogicTokenType>(GetType()); }
    using CParseToken::SetType;
    void SetType(LogicTokenType type) noexcept { SetType(static_cast<int>(type)); }

    /// The keyword's entry in the table; null for a token that is no keyword.
    [[nodiscard]] const LogicTokenInformation* GetKeyword() const noexcept { return keyword_; }
    [[nodiscard]] bool IsKeyword() const noexcept { return keyword_ != nullptr; }
    [[nodiscard]] bool IsReservedWord() const noexcept { return keyword_ != nullptr && keyword_->isReserved; }
    /// An identifier or any keyword.
    [[nodiscard]] bool IsAnyIdentifier() const noexcept { return IsKeyword() || IsType(kIdentifier); }
    /// VAR, VAR_INPUT and the other words that open a declaration of variables.
    [[nodiscard]] bool IsVarDeclarationToken() const noexcept {
        return GetLogicType() >= LogicTokenType::Var && GetLogicType() <= LogicTokenType::VarGlobal;
    }
    /// Integer, real or duration.
    [[nodiscard]] bool IsMagnitudeLiteral() const noexcept;
    /// Everything that CValueLiteral::InitialiseFromToken() takes.
    [[nodiscard]] bool IsLiteral() const noexcept;

    /// Makes an identifier the keyword that it spells, in any case. A token that is no identifier, or none that is a
    /// keyword, loses its entry and keeps its type.
    void TranslateKeywordToken() noexcept;
    /// Sets the entry, and the type with it; null clears the entry only.
    void SetKeyword(const LogicTokenInformation* keyword) noexcept {
        keyword_ = keyword;
        if (keyword != nullptr) SetType(keyword->type);
    }

    /// What a type is called: "Comment", "Integer", for a keyword the keyword, for elementary types what CParseToken
    /// says. Null for the operators of two characters, directly located variables, and numbers that are no type.
    [[nodiscard]] static const char* GetTokenName(int type) noexcept;
    /// The number of keywords.
    [[nodiscard]] static int GetTokenCount() noexcept;
    /// A keyword's entry by index from 0, in the order of CParseToken::CompareIdentifier().
    [[nodiscard]] static const LogicTokenInformation& GetTokenInformation(int index) noexcept;
    /// The entry of a word, in any case; null when it is no keyword.
    [[nodiscard]] static const LogicTokenInformation* FindKeyword(std::string_view word) noexcept;

 private:
    const LogicTokenInformation* keyword_ = nullptr;
};
