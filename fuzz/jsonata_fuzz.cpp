// Any bytes as a JSONata expression: what is accepted prints as an expression that prints the same way again, and ends
// for a document within its limits with a result or with one error.
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/ErrorLog.h"
#include "platform/JSONValue.h"
#include "platform/JSONataExpr.h"
#include "platform/TextOutput.h"

namespace {

constexpr std::string_view kDocument =
    R"({"a":[{"b":1,"c":[1,2]},{"b":2,"c":["x"]},{"b":null}],"d":{"e":"text","f":true},"g":[[1],[2,[3]]],"h":-1.5})";

std::string Print(const JSONataExpr& expr) {
    CTextOutputString text;
    expr.FormatJSONataExpr(text);
    return text.TakeText();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const JSONValue document = [] {
        COutputLogNull log;
        JSONParseContext context(kDocument, log);
        JSONValue value;
        if (!value.Parse(context)) abort();
        return value;
    }();
    COutputLogString log;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto expr = JSONataExpr::ParseJSONataText(text, log);
    if (log.GetErrorCount() != (expr == nullptr ? 1U : 0U)) abort();
    if (expr == nullptr) return 0;
    const std::string printed = Print(*expr);
    const auto again = JSONataExpr::ParseJSONataText(printed, log);
    if (again == nullptr || Print(*again) != printed) abort();
    JSONataOptions options;
    options.limits.maxDepth = 200;
    options.limits.maxTimeMs = 100;
    options.limits.maxMemory = std::size_t{8} << 20;
    options.limits.maxOutput = std::size_t{1} << 20;
    options.nowMs = 0;
    const JSONataResult result = expr->Evaluate(document, log, options);
    if (log.GetErrorCount() != (result.GetOutcome() == JSONataResult::Outcome::Error ? 1U : 0U)) abort();
    return 0;
}
