#include "platform/JSONataExpr.h"

#include <utility>

#include "platform/ErrorLog.h"
#include "platform/TextOutput.h"
#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Evaluator.h"
#include "platform/jsonata/Parser.h"

using tn61131::jsonata::EvaluationError;

struct JSONataExpr::Parsed {
    std::string text;
    tn61131::jsonata::SyntaxPtr syntax;  // what is printed
    tn61131::jsonata::ExprPtr expr;      // what is evaluated
};

namespace {

using namespace tn61131::jsonata;

JSONataResult Report(EvaluationError error, const std::string& text, COutputLog& log) {
    const std::size_t offset = error.offset == kNoOffset ? 0 : error.offset;
    std::size_t line = 1;
    std::size_t column = 1;
    for (std::size_t at = 0; at < offset && at < text.size(); ++at) {
        if (text[at] == '\n') {
            ++line;
            column = 1;
        } else if ((static_cast<unsigned char>(text[at]) & 0xC0U) != 0x80) {
            ++column;
        }
    }
    log.LogError(FormatText("JSONata, line %zu, column %zu: %s: %s", line, column, error.code, error.text));
    return JSONataResult::OfError(std::move(error.code), offset, std::move(error.text));
}

}  // namespace

JSONataExpr::JSONataExpr(std::unique_ptr<const Parsed> parsed) noexcept : parsed_(std::move(parsed)) {}
JSONataExpr::~JSONataExpr() = default;

std::unique_ptr<JSONataExpr> JSONataExpr::ParseJSONataExpr(JSONParseContext& context) {
    const std::size_t begin = context.GetPosition();
    const std::string_view text = context.GetText().substr(begin);
    try {
        Parser parser(text);
        auto parsed = std::make_unique<Parsed>();
        parsed->syntax = parser.ParsePart();
        parsed->expr = ResolveSyntax(*parsed->syntax);
        parsed->text = text.substr(0, parser.GetPosition());
        context.SetPosition(begin + parser.GetPosition());
        return std::unique_ptr<JSONataExpr>(new JSONataExpr(std::move(parsed)));
    } catch (const EvaluationError& error) {
        const std::size_t offset = error.offset == kNoOffset ? 0 : error.offset;
        context.ReportError(begin + offset, error.code + ": " + error.text);
        return nullptr;
    }
}

std::unique_ptr<JSONataExpr> JSONataExpr::ParseJSONataText(std::string_view text, COutputLog& log) {
    auto parsed = std::make_unique<Parsed>();
    parsed->text = text;
    try {
        parsed->syntax = Parser(text).ParseWhole();
        parsed->expr = ResolveSyntax(*parsed->syntax);
        return std::unique_ptr<JSONataExpr>(new JSONataExpr(std::move(parsed)));
    } catch (EvaluationError& error) {
        (void)Report(std::move(error), parsed->text, log);
        return nullptr;
    }
}

JSONataResult JSONataExpr::Evaluate(const JSONValue& input, COutputLog& log, const JSONataOptions& options) const {
    return EvaluateFor(&input, log, options);
}

JSONataResult JSONataExpr::Evaluate(COutputLog& log, const JSONataOptions& options) const {
    return EvaluateFor(nullptr, log, options);
}

JSONataResult JSONataExpr::EvaluateFor(const JSONValue* input, COutputLog& log, const JSONataOptions& options) const {
    try {
        Evaluator evaluator(options);
        const Value value = evaluator.Run(*parsed_->expr, input);
        const bool isOfDocument = value.GetTag() == Value::Tag::DocumentString ||
                                  value.GetTag() == Value::Tag::DocumentArray ||
                                  value.GetTag() == Value::Tag::DocumentObject;
        if (isOfDocument) return JSONataResult::OfReference(value.GetDocument());
        std::optional<JSONValue> result = ToJSON(value, evaluator);
        return result ? JSONataResult::OfValue(std::move(*result)) : JSONataResult();
    } catch (EvaluationError& error) {
        return Report(std::move(error), parsed_->text, log);
    }
}

void JSONataExpr::FormatJSONataExpr(CTextOutput& output) const {
    output.Write(FormatSyntax(*parsed_->syntax));
}

const std::string& JSONataExpr::GetText() const noexcept {
    return parsed_->text;
}
