#include "platform/jsonata/UrlText.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tn61131::jsonata {
namespace {

std::string Shown(const Result<std::string>& result) {
    if (result) return *result;
    const Failure& failure = result.GetFailure();
    return "!" + std::string(failure.code) + " " + failure.value + " " + failure.detail;
}

constexpr std::string_view kPrintable = " !\"#$%&'()*+,-./0189:;<=>?@AZ[\\]^_`az{|}~";

TEST(EncodeUrl, EscapesWhatMayNotStandInAURL) {
    EXPECT_EQ(Shown(EncodeUrl(kPrintable)), "%20!%22#$%25&'()*+,-./0189:;%3C=%3E?@AZ%5B%5C%5D%5E_%60az%7B%7C%7D~");
    EXPECT_EQ(Shown(EncodeUrl("\u0448\u20AC\U0001F600")), "%D1%88%E2%82%AC%F0%9F%98%80");
    EXPECT_EQ(Shown(EncodeUrl("a\xED\xA0\x80")), "!D3140 a\xED\xA0\x80 encodeUrl");
}

TEST(EncodeUrlComponent, EscapesWhatHasAMeaningToo) {
    EXPECT_EQ(Shown(EncodeUrlComponent(kPrintable)),
              "%20!%22%23%24%25%26'()*%2B%2C-.%2F0189%3A%3B%3C%3D%3E%3F%40AZ%5B%5C%5D%5E_%60az%7B%7C%7D~");
    EXPECT_EQ(Shown(EncodeUrlComponent("\xED\xB0\x80x")), "!D3140 \xED\xB0\x80x encodeUrlComponent");
}

TEST(DecodeUrl, KeepsTheEscapesOfWhatHasAMeaning) {
    EXPECT_EQ(Shown(DecodeUrl("%20%2F%3f%23%26%41%25%C3%A9+%F0%9F%98%80")), " %2F%3f%23%26A%\u00E9+\U0001F600");
    EXPECT_EQ(Shown(DecodeUrlComponent("%20%2F%3f%23%26%41%25%C3%A9+")), " /?#&A%\u00E9+");
    EXPECT_EQ(Shown(DecodeUrl("%00")), std::string(1, '\0'));
}

TEST(DecodeUrl, RefusesWhatIsNotUTF8) {
    for (const std::string text : {"%", "%4", "%zz", "%E0%A4%A", "%ff", "%C3", "%C3x", "%C3%28", "%80", "%C0%80",
                                   "%ED%A0%80", "%F4%90%80%80", "%F0%9F%98"}) {
        EXPECT_EQ(Shown(DecodeUrl(text)), "!D3140 " + text + " decodeUrl");
        EXPECT_EQ(Shown(DecodeUrlComponent(text)), "!D3140 " + text + " decodeUrlComponent");
    }
}

// The vectors of RFC 4648, section 10.
TEST(Base64, EncodesAndDecodes) {
    constexpr std::string_view kRows[][2] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
        {"\u00E9\u00FF", "6f8="},
    };
    for (const auto& [text, encoded] : kRows) {
        EXPECT_EQ(Shown(EncodeBase64(text)), encoded);
        EXPECT_EQ(DecodeBase64(encoded), text);
    }
    EXPECT_EQ(Shown(EncodeBase64("\u0100")), "!T0410 \u0100 base64encode");
    EXPECT_EQ(DecodeBase64("Zm 9\nv"), "foo");
    EXPECT_EQ(DecodeBase64("Zm9=v"), "fo") << "ends at the padding";
    EXPECT_EQ(DecodeBase64("-_8"), DecodeBase64("+/8")) << "the alphabet of URLs";
    EXPECT_EQ(DecodeBase64("a"), "") << "less than a byte";
}

}  // namespace
}  // namespace tn61131::jsonata
