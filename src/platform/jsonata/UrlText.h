#pragma once

#include <string>
#include <string_view>

#include "platform/jsonata/Failure.h"

namespace tn61131::jsonata {

// $encodeUrl, $encodeUrlComponent, $decodeUrl, $decodeUrlComponent. Each fails with D3140, which quotes the text and
// names the function: an unpaired surrogate when encoding, "%" without two digits or bytes that are not UTF-8 when
// decoding. $encodeUrl leaves what has a meaning in a URL as it is ("/", "?", "#", ...), $decodeUrl leaves the escapes
// of such characters.

Result<std::string> EncodeUrl(std::string_view text);
Result<std::string> EncodeUrlComponent(std::string_view text);
Result<std::string> DecodeUrl(std::string_view text);
Result<std::string> DecodeUrlComponent(std::string_view text);

/// $base64encode: each character is one byte. Fails with T0410 for a character above U+00FF.
Result<std::string> EncodeBase64(std::string_view text);
/// $base64decode: each byte is one character, up to U+00FF. Characters outside the alphabet are skipped, the text ends
/// at the first "=".
std::string DecodeBase64(std::string_view text);

}  // namespace tn61131::jsonata
