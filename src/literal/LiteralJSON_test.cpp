#include <gtest/gtest.h>

#include "platform/JSONValue.h"
#include "support/LiteralTest.h"

using literal_test::AsDeclaration;

namespace {

TEST(SetFromJSONValue, TakesNumbersBooleansAndTexts) {
    const struct {
        JSONValue json;
        const char* expected;
    } kRows[] = {
        {JSONValue(1.5), "LREAL#1.5"},
        {JSONValue(5.0), "LREAL#5.0"},
        {JSONValue(true), "BOOL#TRUE"},
        {JSONValue(false), "BOOL#FALSE"},
        {JSONValue("it's \"\u20ac\U0001F600\""), "WSTRING#\"it's $\"\u20ac\U0001F600$\"\""},
        {JSONValue(""), "WSTRING#\"\""},
        {JSONValue(std::string("a\0b", 3)), "WSTRING#\"a$0000b\""},
        {JSONValue(), "WSTRING#\"null\""},
        {JSONValue(JSONValue::Array{JSONValue(1.0), JSONValue("x")}), "WSTRING#\"[1,$\"x$\"]\""},
        {JSONValue(JSONValue::Object{{"a", JSONValue()}}), "WSTRING#\"{$\"a$\":null}\""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.expected);
        CValue value(std::string("before"));
        value.SetFromJSONValue(&row.json);
        EXPECT_EQ(AsDeclaration(value), row.expected);
    }
}

TEST(SetFromJSONValue, LongTextIsCutToWhatAStringHolds) {
    const JSONValue json(std::string(70'000, 'x'));
    CValue value;
    value.SetFromJSONValue(&json);
    EXPECT_EQ(GetUnits(value.GetUtf16String()).size(), kMaxStringUnits);
    const JSONValue array(JSONValue::Array{json});
    value.SetFromJSONValue(&array);
    EXPECT_EQ(GetUnits(value.GetUtf16String()).size(), kMaxStringUnits);
}

}  // namespace
