#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/ErrorLocationTextRange.h"
#include "platform/Export.h"

/// A piece of a text: its type, its characters exactly as they stand in the text (byte for byte, whether they are valid
/// UTF-8 or not), where it stands, and whether it lacks its end.
///
/// Types below 128 are those of the elementary tokens that CParseContext reads: the constants here and, for every
/// printable ASCII character that is no letter, digit or blank, its character code. Contexts built on it have types of
/// their own from 128.
class TN61131_API CParseToken {
 public:
    static constexpr int kUndefined = 0;
    static constexpr int kEndOfInput = 1;
    static constexpr int kLineEnd = 2;
    static constexpr int kWhiteSpace = 3;  ///< a run of it
    static constexpr int kOtherCharacter =
        4;                                 ///< one that nothing else covers, or a byte sequence that is no character
    static constexpr int kIdentifier = 6;  ///< a run of letters
    static constexpr int kNumber = 7;      ///< a run of the digits 0 to 9
    static constexpr int kUnderscore = '_';
    static constexpr int kFirstCompoundType = 128;

    CParseToken() = default;
    CParseToken(int type, std::string text, CErrorLocationTextRange location = {}) noexcept
        : type_(type), text_(std::move(text)), location_(std::move(location)) {}

    [[nodiscard]] int GetType() const noexcept { return type_; }
    void SetType(int type) noexcept { type_ = type; }
    [[nodiscard]] bool IsType(int type) const noexcept { return type_ == type; }
    [[nodiscard]] const std::string& GetText() const noexcept { return text_; }
    void SetText(std::string_view text) { text_.assign(text); }
    void AppendText(std::string_view text) { text_.append(text); }
    [[nodiscard]] const CErrorLocationTextRange& Location() const noexcept { return location_; }
    [[nodiscard]] CErrorLocationTextRange& Location() noexcept { return location_; }
    /// Whether the input ended before the token did: a comment or a string that is not closed.
    [[nodiscard]] bool IsNotTerminated() const noexcept { return notTerminated_; }
    void SetNotTerminated(bool notTerminated = true) noexcept { notTerminated_ = notTerminated; }

    /// Orders identifiers without regard to case: by their lower-case forms (simple Unicode mapping), code point by
    /// code point, so that "_" stands before the letters. Below 0, 0 or above 0 as `left` stands before, is the same as
    /// or stands behind `right`. Bytes that are not valid UTF-8 stand behind all characters, in their own order.
    [[nodiscard]] static int CompareIdentifier(std::string_view left, std::string_view right) noexcept;
    [[nodiscard]] static bool EqualIdentifier(std::string_view left, std::string_view right) noexcept {
        return CompareIdentifier(left, right) == 0;
    }
    /// Whether the text of an identifier is the exponent of a number: E in either case, alone or with nothing but
    /// digits behind it.
    [[nodiscard]] static bool IsNumberExponent(std::string_view text) noexcept;
    /// What an elementary type is called in messages, "Identifier" or "("; null for every other number.
    [[nodiscard]] static const char* GetTokenName(int type) noexcept;

 private:
    int type_ = kUndefined;
    bool notTerminated_ = false;
    std::string text_;
    CErrorLocationTextRange location_;
};
