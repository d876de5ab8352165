#include "platform/JSONataExpr.h"

#include "platform/ErrorLog.h"

struct JSONataExpr::Parsed {
    std::string text;
};

JSONataExpr::JSONataExpr(std::unique_ptr<const Parsed> parsed) noexcept : parsed_(std::move(parsed)) {}
JSONataExpr::~JSONataExpr() = default;

std::unique_ptr<JSONataExpr> JSONataExpr::ParseJSONataExpr(JSONParseContext& context) {
    context.GetLog().LogError("JSONata: not yet built in");
    return nullptr;
}

std::unique_ptr<JSONataExpr> JSONataExpr::ParseJSONataText(std::string_view text, COutputLog& log) {
    JSONParseContext context(text, log);
    return ParseJSONataExpr(context);
}

JSONataResult JSONataExpr::Evaluate(const JSONValue& /*input*/, COutputLog& log, const JSONataOptions& options) const {
    return Evaluate(log, options);
}

JSONataResult JSONataExpr::Evaluate(COutputLog& /*log*/, const JSONataOptions& /*options*/) const {
    return {};
}

void JSONataExpr::FormatJSONataExpr(CTextOutput& /*output*/) const {}

const std::string& JSONataExpr::GetText() const noexcept {
    return parsed_->text;
}
