#include "payload/TextPayloadSelector.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "diag/Messages.h"
#include "platform/CellReference.h"
#include "platform/ErrorLog.h"
#include "platform/JSONValue.h"
#include "platform/JSONataExpr.h"
#include "platform/TextInput.h"
#include "platform/TextOutput.h"

namespace {

/// Reports one of the library's messages at a token, as a parser reports its own errors; false.
template <Message kMessage>
bool Refuse(JSONParseContext& context, const CParseToken& token) {
    COutputLogString line;
    CErrorLog log(&line);
    (void)tn61131::Fail<kMessage>(log, token.Location(), token.GetText());
    std::string_view text = line.GetText();
    text.remove_suffix(1);  // the line feed
    context.GetLog().LogError(text);
    return false;
}

/// Takes the token if it is the one of this type, a single character that messages name.
bool Expect(JSONParseContext& context, char character) {
    CParseToken token;
    context.GetNextJSONToken(token);
    return token.IsType(character) || context.LogUnexpectedTokenError(token, {std::string_view(&character, 1)});
}

/// A number in decimal digits, cut to what an int holds.
int ReadLineNumber(const std::string& digits) noexcept {
    const long number = std::strtol(digits.c_str(), nullptr, 10);
    return static_cast<int>(std::clamp<long>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

}  // namespace

TextPayloadSelector::TextPayloadSelector() = default;
TextPayloadSelector::TextPayloadSelector(TextPayloadSelector&&) noexcept = default;
TextPayloadSelector& TextPayloadSelector::operator=(TextPayloadSelector&&) noexcept = default;
TextPayloadSelector::~TextPayloadSelector() = default;

void TextPayloadSelector::Clear() noexcept {
    type_ = ReadSelectorType::None;
    expression_.reset();
    cell_.reset();
}

bool TextPayloadSelector::ParseSelector(CTextInput* input, COutputLog* log) {
    COutputLogNull dropped;
    std::string storage;
    const std::string_view text = input != nullptr ? input->TakeRest(storage) : std::string_view();
    JSONParseContext context(text, log != nullptr ? *log : dropped);
    context.SetFileName("Selector");
    Clear();
    if (Parse(context)) return true;
    Clear();
    return false;
}

bool TextPayloadSelector::ParseSelector(const std::string& text) {
    TextInputTNString input(text);
    return ParseSelector(&input, nullptr);
}

// selector = word "(" content ")"
bool TextPayloadSelector::Parse(JSONParseContext& context) {
    CParseToken word;
    context.GetNextJSONToken(word);
    if (!word.IsType(CParseToken::kIdentifier)) return context.LogUnexpectedTokenError(word, {"("});
    if (!Expect(context, '(')) return false;
    if (CParseToken::EqualIdentifier(word.GetText(), "JSONata")) {
        type_ = ReadSelectorType::JSONata;
        expression_ = JSONataExpr::ParseJSONataExpr(context);
        return expression_ != nullptr && Expect(context, ')');
    }
    if (CParseToken::EqualIdentifier(word.GetText(), "CSV")) return ParseCell(context) && Expect(context, ')');
    if (CParseToken::EqualIdentifier(word.GetText(), "LINE")) return ParseLine(context) && Expect(context, ')');
    return Refuse<Message::InvalidSelector>(context, word);
}

bool TextPayloadSelector::ParseCell(JSONParseContext& context) {
    type_ = ReadSelectorType::CSV;
    CParseToken token;
    context.GetNextJSONToken(token);
    cell_ = CellReference::ParseCellReference(token.GetText());
    return cell_ != nullptr || context.LogUnexpectedTokenError(token, {"Cell Reference"});
}

bool TextPayloadSelector::ParseLine(JSONParseContext& context) {
    type_ = ReadSelectorType::Line;
    CParseToken token;
    context.GetNextJSONToken(token);
    if (!token.IsType(JSONParseContext::kInteger)) return Refuse<Message::InvalidLineNumber>(context, token);
    lineNumber_ = ReadLineNumber(token.GetText());
    return true;
}

void TextPayloadSelector::SetReadSelector(ReadSelectorType type, const char* text, unsigned int length) {
    Clear();
    type_ = type;
    const std::string_view content = text != nullptr ? std::string_view(text, length) : std::string_view();
    COutputLogNull dropped;
    if (type == ReadSelectorType::JSONata) expression_ = JSONataExpr::ParseJSONataText(content, dropped);
    if (type == ReadSelectorType::CSV) cell_ = CellReference::ParseCellReference(content);
}

void TextPayloadSelector::FormatSelector(CTextOutput& output) const {
    switch (type_) {
        case ReadSelectorType::None: return;
        case ReadSelectorType::Line: return FormatSelectorContent(output);
        case ReadSelectorType::JSONata: output.Write("JSONata("); break;
        case ReadSelectorType::CSV: output.Write("CSV("); break;
    }
    FormatSelectorContent(output);
    output.WriteChar(')');
}

void TextPayloadSelector::FormatSelectorContent(CTextOutput& output) const {
    if (type_ == ReadSelectorType::Line) output.Print("Line(%d)", lineNumber_);
    if (expression_ != nullptr) expression_->FormatJSONataExpr(output);
    if (cell_ != nullptr) cell_->PrintCellReference(output);
}

const char* TextPayloadSelector::GetRequiredDocumentType() const noexcept {
    switch (type_) {
        case ReadSelectorType::Line: return "text/plain";
        case ReadSelectorType::JSONata: return "application/json";
        case ReadSelectorType::CSV: return "text/csv";
        case ReadSelectorType::None: break;
    }
    return "application/octet-stream";
}
