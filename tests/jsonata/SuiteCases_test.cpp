#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/ErrorLog.h"
#include "platform/JSONValue.h"
#include "platform/JSONataExpr.h"
#include "platform/TextOutput.h"
#include "platform/jsonata/Parser.h"

namespace {

namespace fs = std::filesystem;

enum class Order { Matters, Free };

bool Matches(const JSONValue& expected, const JSONValue& actual, Order order);

bool MatchesInAnyOrder(const JSONValue::Array& expected, const JSONValue::Array& actual) {
    std::vector<bool> taken(actual.size());
    return std::ranges::all_of(expected, [&](const JSONValue& element) {
        for (std::size_t i = 0; i < actual.size(); ++i) {
            if (taken[i] || !Matches(element, actual[i], Order::Free)) continue;
            taken[i] = true;
            return true;
        }
        return false;
    });
}

// Members may stand in any order.
bool Matches(const JSONValue& expected, const JSONValue& actual, Order order) {
    if (expected.GetKind() != actual.GetKind()) return false;
    if (expected.IsArray()) {
        const JSONValue::Array& left = expected.GetElements();
        const JSONValue::Array& right = actual.GetElements();
        if (left.size() != right.size()) return false;
        if (order == Order::Free) return MatchesInAnyOrder(left, right);
        return std::ranges::equal(left, right,
                                  [&](const JSONValue& a, const JSONValue& b) { return Matches(a, b, order); });
    }
    if (expected.IsObject()) {
        if (expected.GetMembers().size() != actual.GetMembers().size()) return false;
        return std::ranges::all_of(expected.GetMembers(), [&](const JSONMember& member) {
            const JSONValue* other = actual.Find(member.name);
            return other != nullptr && Matches(member.value, *other, order);
        });
    }
    return expected == actual;
}

std::string ToText(const JSONValue& value) {
    CTextOutputString text;
    value.Write(text);
    return text.TakeText();
}

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

JSONValue ReadJSON(std::string_view text) {
    COutputLogString log;
    JSONParseContext context(text, log);
    JSONValue value;
    EXPECT_TRUE(value.Parse(context)) << log.GetText() << text;
    return value;
}

struct Suite {
    std::vector<JSONValue> cases;
    std::map<std::string, JSONValue, std::less<>> datasets;
};

Suite ReadSuite(const fs::path& folder) {
    Suite suite;
    std::ifstream lines(folder / "cases.jsonl");
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty()) suite.cases.push_back(ReadJSON(line));
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(folder / "datasets")) {
        suite.datasets[entry.path().stem().string()] = ReadJSON(ReadFile(entry.path()));
    }
    return suite;
}

// The printed form parses to the same expression.
void ExpectPrintsBack(const std::string& text) {
    using namespace tn61131::jsonata;
    const SyntaxPtr syntax = Parser(text).ParseWhole();
    const std::string printed = FormatSyntax(*syntax);
    const SyntaxPtr again = Parser(printed).ParseWhole();
    EXPECT_TRUE(SameSyntax(*syntax, *again)) << printed;
}

void ExpectCode(const JSONValue& code, const std::string& actual, const std::string& messages) {
    EXPECT_EQ(code.GetString(), actual) << messages;
}

void CheckCase(const JSONValue& test, const Suite& suite) {
    const std::string& text = test.Find("expr")->GetString();
    const JSONValue* code = test.Find("code");
    if (const JSONValue* error = test.Find("error")) code = error->Find("code");
    COutputLogString log;
    const std::unique_ptr<JSONataExpr> expr = JSONataExpr::ParseJSONataText(text, log);
    if (expr == nullptr) {
        ASSERT_NE(code, nullptr) << log.GetText();
        EXPECT_NE(log.GetText().find(code->GetString()), std::string::npos) << log.GetText();
        return;
    }
    ExpectPrintsBack(text);

    JSONataOptions options;
    options.bindings = test.Find("bindings");
    if (const JSONValue* limit = test.Find("timelimit")) {
        options.limits.maxTimeMs = static_cast<std::uint32_t>(limit->GetNumber());
    }
    if (const JSONValue* depth = test.Find("depth")) {
        options.limits.maxDepth = static_cast<std::uint32_t>(depth->GetNumber());
    }
    const JSONValue* dataset = test.Find("dataset");
    const JSONValue* data =
        dataset != nullptr && dataset->IsString() ? &suite.datasets.at(dataset->GetString()) : test.Find("data");
    const JSONataResult result = data != nullptr ? expr->Evaluate(*data, log, options) : expr->Evaluate(log, options);
    if (code != nullptr) return ExpectCode(*code, result.GetErrorCode(), log.GetText() + ToText(result.GetValue()));
    ASSERT_NE(result.GetOutcome(), JSONataResult::Outcome::Error) << log.GetText();
    const JSONValue* expected = test.Find("result");
    if (expected == nullptr) {
        EXPECT_EQ(result.GetOutcome(), JSONataResult::Outcome::Undefined) << ToText(result.GetValue());
        return;
    }
    ASSERT_EQ(result.GetOutcome(), JSONataResult::Outcome::Value) << "expected " << ToText(*expected);
    const Order order = test.Find("unordered") != nullptr ? Order::Free : Order::Matters;
    EXPECT_TRUE(Matches(*expected, result.GetValue(), order))
        << "expected " << ToText(*expected) << "\n     got " << ToText(result.GetValue());
}

TEST(JSONataSuite, EachCaseHasItsResult) {
    const fs::path folder = TN61131_SAMPLE_JSONATA;
    if (!fs::exists(folder / "cases.jsonl")) GTEST_SKIP() << "no cases in " << folder;
    const Suite suite = ReadSuite(folder);
    EXPECT_FALSE(suite.cases.empty());
    for (const JSONValue& test : suite.cases) {
        SCOPED_TRACE(test.Find("name")->GetString() + ": " + test.Find("expr")->GetString());
        CheckCase(test, suite);
    }
}

}  // namespace
