#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/Export.h"
#include "platform/TextInput.h"

class CParseToken;

/// The content of a string token: what stands between its quotes, behind a type prefix if there is one, with the
/// escapes of IEC 61131-3 (6.3.3) decoded. Between double quotes `$` and four hexadecimal digits are a UTF-16 unit, two
/// of them one character where they are a surrogate pair; between single quotes `$` and two digits are a byte of UTF-8.
/// An escape that is not valid stands for its own characters; a missing closing quote is no matter. A token without
/// quotes has no content.
class TN61131_API CTextInputFromStringToken final : public CTextInput {
 public:
    /// The token need not live on.
    explicit CTextInputFromStringToken(const CParseToken& token);
    ~CTextInputFromStringToken() override;

 protected:
    std::optional<char32_t> Decode() override;

 private:
    std::string content_;  // decoded
    std::size_t position_ = 0;
};
