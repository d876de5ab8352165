#include "tools/JsonWriter.h"

#include <limits>
#include <sstream>

#include <gtest/gtest.h>

namespace tn61131 {
namespace {

std::string Quoted(std::string_view text) {
    std::string out;
    AppendJsonString(out, text);
    return out;
}

TEST(JsonString, EscapesAndReplaces) {
    struct Row {
        std::string_view text;
        const char* json;
        const char* why;
    };
    using namespace std::string_view_literals;
    const Row rows[] = {
        {"", "\"\"", "empty"},
        {"a/b", "\"a/b\"", "a slash stays"},
        {"\"\\", "\"\\\"\\\\\"", "quote and backslash"},
        {"\b\f\n\r\t", "\"\\b\\f\\n\\r\\t\"", "short escapes"},
        {"\0\x1F\x7F"sv, "\"\\u0000\\u001f\\u007f\"", "other control characters"},
        {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\"", "2, 3 and 4 bytes stay"},
        {"a\xFF"
         "b",
         "\"a\xEF\xBF\xBD"
         "b\"",
         "a byte that begins nothing"},
        {"\xC3", "\"\xEF\xBF\xBD\"", "a sequence cut off"},
        {"\xE2\x82", "\"\xEF\xBF\xBD\"", "the cut part is one"},
        {"\xC0\x80", "\"\xEF\xBF\xBD\xEF\xBF\xBD\"", "overlong"},
        {"\xED\xA0\x80", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\"", "a surrogate"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(Quoted(row.text), row.json);
    }
}

TEST(JsonWriter, CommasStandBetweenValues) {
    std::ostringstream output;
    JsonWriter json(output);
    json.BeginObject();
    json.Member("a", "x");
    json.Key("b");
    json.BeginArray();
    json.Number(std::numeric_limits<std::int64_t>::min());
    json.Number(std::numeric_limits<std::uint64_t>::max());
    json.Null();
    json.Boolean(true);
    json.Boolean(false);
    json.BeginObject();
    json.EndObject();
    json.EndArray();
    json.Key("c");
    json.BeginArray();
    json.EndArray();
    json.EndObject();
    json.EndLine();
    json.BeginArray();
    json.EndArray();
    EXPECT_EQ(output.str(),
              "{\"a\":\"x\",\"b\":[-9223372036854775808,18446744073709551615,null,true,false,{}],\"c\":[]}\n[]");
}

TEST(HexText, TwoDigitsForEachByte) {
    const unsigned char bytes[] = {0x00, 0x0A, 0xFF};
    EXPECT_EQ(HexText(bytes, 3), "000aff");
    EXPECT_EQ(HexText(nullptr, 0), "");
}

}  // namespace
}  // namespace tn61131
