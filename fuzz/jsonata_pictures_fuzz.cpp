// Pictures of numbers, integers and dates, and regular expressions, with any text. Input: a byte that chooses, eight
// bytes of a number, then a picture and a text with a zero byte between them. What is formatted stays short, what a
// date's text is read from is a time, and matches lie within the text.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/jsonata/DatePicture.h"
#include "platform/jsonata/IntegerPicture.h"
#include "platform/jsonata/NumberPicture.h"
#include "platform/jsonata/NumberText.h"
#include "platform/jsonata/Regex.h"
#include "platform/jsonata/TextFunctions.h"
#include "platform/jsonata/UrlText.h"

namespace {

using namespace tn61131::jsonata;

void Require(bool condition) {
    if (!condition) std::abort();
}

/// A result is not far longer than the number's digits and the picture.
void RequireShort(const Result<std::string>& result, std::string_view picture) {
    if (result) Require(result->size() <= 5000 + picture.size() * 1100);
}

void TryRegex(std::string_view body, std::string_view flags, std::string_view text) {
    const auto regex = Regex::Compile(body, flags);
    if (!regex) return;
    std::size_t from = 0;
    while (const auto match = (*regex)->Find(text, from)) {
        Require(from <= match->begin && match->begin <= match->end && match->end <= text.size());
        from = match->end + (match->begin == match->end ? 1 : 0);
    }
}

void TryTexts(std::string_view text, std::string_view other, double number) {
    const auto encoded = EncodeUrlComponent(text);
    if (encoded) {
        const auto decoded = DecodeUrlComponent(*encoded);
        Require(!decoded || *decoded == text);  // bytes that are not UTF-8 are escaped, but not taken back
    }
    if (const auto bytes = EncodeBase64(text)) Require(CountCodePoints(DecodeBase64(*bytes)) == CountCodePoints(text));
    Require((CompareTexts(text, other) < 0) == (CompareTexts(other, text) > 0));
    Require(Substring(text, number, number).size() <= text.size());
    static_cast<void>(DecodeUrl(text));
    static_cast<void>(DecodeBase64(text));
    static_cast<void>(ParseNumber(text));
    static_cast<void>(FormatBase(number, static_cast<double>(text.size())));
    static_cast<void>(RoundNumber(number, static_cast<double>(text.size())));
    static_cast<void>(PrintRoundedNumber(number));
    static_cast<void>(Pad(text, std::fmod(number, 1000), other));
    static_cast<void>(Trim(ToUpperCase(ToLowerCase(text))));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kNumberSize = sizeof(double);
    if (size < kNumberSize + 1) return 0;
    double number = 0;
    std::memcpy(&number, data + 1, kNumberSize);
    const std::string_view rest(reinterpret_cast<const char*>(data) + kNumberSize + 1, size - kNumberSize - 1);
    const std::size_t zero = rest.find('\0');
    const std::string_view picture = rest.substr(0, zero);
    const std::string_view text = zero == std::string_view::npos ? std::string_view() : rest.substr(zero + 1);
    switch (data[0] % 8) {
        case 0: RequireShort(FormatNumber(number, picture, {}), picture); break;
        case 1: {
            DecimalFormat format;
            format.zeroDigit = text;
            format.exponentSeparator = text.substr(text.size() / 2);
            RequireShort(FormatNumber(number, picture, format), picture);
            break;
        }
        case 2: RequireShort(FormatInteger(number, picture), picture); break;
        case 3: static_cast<void>(ParseInteger(text, picture)); break;
        case 4: RequireShort(FormatDateTime(number, picture, text), picture); break;
        case 5: {
            const auto millis = ParseDateTime(text, picture, 1e12);
            if (millis && *millis) Require(FormatDateTime(**millis, "[Y]", std::nullopt).IsValue());
            static_cast<void>(ParseISODateTime(text));
            break;
        }
        case 6: TryRegex(picture, data[1] % 2 == 0 ? "im" : "", text); break;
        default: TryTexts(text, picture, number); break;
    }
    return 0;
}
