#pragma once

#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "platform/ErrorLog.h"
#include "platform/JSONataExpr.h"
#include "platform/TextOutput.h"

namespace tn61131::jsonata {

/// What an expression gives for a document: JSON, "undefined", or the code of its error. An empty document is none.
inline std::string RunExpression(std::string_view text, std::string_view document = {},
                                 const JSONataOptions& options = {}) {
    COutputLogString log;
    const auto expr = JSONataExpr::ParseJSONataText(text, log);
    if (expr == nullptr) {
        // "JSONata, line 1, column 2: S0201: ..."
        const std::size_t code = log.GetText().find(": ") + 2;
        return log.GetText().substr(code, log.GetText().find(':', code) - code);
    }
    JSONParseContext context(document, log);
    JSONValue input;
    EXPECT_EQ(document.empty() || input.Parse(context), true) << log.GetText();
    const JSONataResult result = document.empty() ? expr->Evaluate(log, options) : expr->Evaluate(input, log, options);
    if (result.GetOutcome() == JSONataResult::Outcome::Error) return result.GetErrorCode();
    if (result.GetOutcome() == JSONataResult::Outcome::Undefined) return "undefined";
    CTextOutputString json;
    result.GetValue().Write(json);
    return json.TakeText();
}

struct ExpressionCase {
    const char* text;
    const char* expected;
};

inline void ExpectResults(std::span<const ExpressionCase> cases, std::string_view document = {}) {
    for (const ExpressionCase& test : cases)
        EXPECT_EQ(RunExpression(test.text, document), test.expected) << test.text;
}

}  // namespace tn61131::jsonata
