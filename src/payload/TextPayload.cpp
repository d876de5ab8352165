#include "payload/TextPayload.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "diag/Messages.h"
#include "literal/CSVDocument.h"
#include "payload/TextPayloadSelector.h"
#include "platform/CellReference.h"
#include "platform/ErrorLog.h"
#include "platform/JSONataExpr.h"
#include "platform/StringObject.h"
#include "platform/TextInput.h"
#include "platform/TextOutput.h"
#include "platform/Transcode.h"
#include "value/Value.h"

namespace {

/// Passes on the lines of a parser and counts its errors apart from those that the target has seen before.
class CountingLog final : public COutputLog {
 public:
    explicit CountingLog(COutputLog& target) noexcept : target_(target) {}
    void WriteLine(std::string_view line) override { target_.WriteLine(line); }

 private:
    COutputLog& target_;
};

TextInputFromRawData InputOf(const std::string& content) noexcept {
    return {reinterpret_cast<const unsigned char*>(content.data()), content.size()};
}

std::vector<std::string> SplitLines(const std::string& content) {
    TextInputFromRawData input = InputOf(content);
    std::vector<std::string> lines;
    for (std::string line; input.ReadLine(line);)
        lines.push_back(line);
    return lines;
}

JSONValue::Owner ParseContent(const std::string& content, COutputLog& log) {
    TextInputFromRawData input = InputOf(content);
    std::string storage;
    JSONParseContext context(input.TakeRest(storage), log);
    return JSONValue::Owner(JSONValue::ParseProperty(context));
}

}  // namespace

TextPayload::TextPayload(const std::string& name) : name_(name) {}
TextPayload::~TextPayload() = default;

void TextPayload::ClearPayload() noexcept {
    content_.clear();
    lines_.reset();
    json_.reset();
    csv_.reset();
}

void TextPayload::SetContentFromValue(CValue* value) {
    if (value->GetType() != ElementaryType::String) return;
    const auto bytes = GetUnits(value->GetUtf8String());
    content_.assign(bytes.begin(), bytes.end());
}

void TextPayload::SetContentFromTextInput(CTextInput* input) {
    while (const std::optional<char32_t> codePoint = input->ReadCodePoint()) {
        AppendCodePoint(static_cast<int>(*codePoint));
        // A NUL ends the run, and is read by itself.
        input->AppendPlainRun(content_, '\0', '\0');
    }
}

void TextPayload::SetContentFromTextOutputString(CTextOutputString& output) {
    constexpr std::size_t kLongestCharacter = 4;
    std::string_view text = output.GetText();
    while (!text.empty()) {
        char32_t codePoint = 0;
        const std::size_t ahead = std::min(text.size(), kLongestCharacter);
        text.remove_prefix(tn_codepoint_from_tnchar(text.data(), static_cast<unsigned int>(ahead), codePoint));
        AppendCodePoint(static_cast<int>(codePoint));
    }
}

void TextPayload::AppendCodePoint(int codePoint) {
    unsigned char encoded[4];
    const unsigned int size = tn_encode_utf8(static_cast<char32_t>(codePoint), encoded);
    content_.append(reinterpret_cast<const char*>(encoded), size);
}

SelectStatus TextPayload::SelectValue(const TextPayloadSelector& selector, CValue& value, CErrorLog& log) const {
    switch (selector.GetReadSelectorType()) {
        case ReadSelectorType::None: break;
        case ReadSelectorType::Line: return SelectValueLine(selector, value, log);
        case ReadSelectorType::JSONata: return SelectValueJSONata(selector, value, log);
        case ReadSelectorType::CSV: return SelectValueCSV(selector, value);
    }
    const std::size_t length = CutUtf8(content_, kMaxStringUnits);
    value.SetFromVMString(reinterpret_cast<const unsigned char*>(content_.data()), static_cast<unsigned int>(length));
    return SelectStatus::Success;
}

SelectStatus TextPayload::SelectValue(const TextPayloadSelector& selector, CValue& value) const {
    CErrorLogToNull log;
    return SelectValue(selector, value, log);
}

SelectStatus TextPayload::SelectValueLine(const TextPayloadSelector& selector, CValue& value, CErrorLog& log) const {
    if (lines_ == nullptr) lines_ = std::make_unique<std::vector<std::string>>(SplitLines(content_));
    const int number = selector.GetLineNumber();
    if (number < 1 || static_cast<std::size_t>(number) > lines_->size()) {
        (void)tn61131::Fail<Message::LineOutOfRange>(log, ErrorLocationNull::Get(), number);
        return SelectStatus::Failed;
    }
    value.SetString((*lines_)[static_cast<std::size_t>(number) - 1], ElementaryType::WString);
    return SelectStatus::Success;
}

SelectStatus TextPayload::SelectValueJSONata(const TextPayloadSelector& selector, CValue& value, CErrorLog& log) const {
    CountingLog parserLog(log.GetOutputLog());
    if (json_ == nullptr) json_ = ParseContent(content_, parserLog);
    if (json_ == nullptr) {
        log.PropagateErrorAndWarningCount(parserLog);
        return SelectStatus::DocumentInvalid;
    }
    const JSONataExpr* const expression = selector.GetJSONReadSelector();
    if (expression == nullptr) return SelectStatus::Failed;
    const JSONataResult result = expression->Evaluate(*json_, parserLog);
    log.PropagateErrorAndWarningCount(parserLog);
    if (result.GetOutcome() != JSONataResult::Outcome::Value) return SelectStatus::Failed;
    value.SetFromJSONValue(&result.GetValue());
    return SelectStatus::Success;
}

SelectStatus TextPayload::SelectValueCSV(const TextPayloadSelector& selector, CValue& value) const {
    if (csv_ == nullptr) {
        auto document = std::make_unique<CSVDocument>();
        TextInputFromRawData input = InputOf(content_);
        document->ReadCSVFileContent(input);
        csv_ = std::move(document);
    }
    const CellReference* const cell = selector.GetCSVReadSelector();
    const bool found = cell != nullptr && csv_->GetValue(cell->GetRow() + 1, cell->GetColumn() + 1, value);
    return found ? SelectStatus::Success : SelectStatus::Failed;
}
