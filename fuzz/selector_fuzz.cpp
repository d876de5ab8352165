// A selector up to the first line feed, behind it a document: what parses prints back to itself, what does not is
// reported once, and a selection ends with a value or without a change.
#include <cstdlib>
#include <string>
#include <string_view>

#include "payload/TextPayload.h"
#include "payload/TextPayloadSelector.h"
#include "platform/ErrorLog.h"
#include "platform/TextInput.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::size_t lineEnd = text.find('\n');
    COutputLogString log;
    TextInputTNString selectorInput(text.substr(0, lineEnd));
    TextPayloadSelector selector;
    const bool parsed = selector.ParseSelector(&selectorInput, &log);
    if (log.GetErrorCount() != (parsed ? 0U : 1U)) abort();
    if (parsed) {
        CTextOutputString printed;
        selector.FormatSelector(printed);
        TextPayloadSelector again;
        if (!again.ParseSelector(printed.GetText())) abort();
        CTextOutputString printedAgain;
        again.FormatSelector(printedAgain);
        if (printed.GetText() != printedAgain.GetText()) abort();
    } else if (selector.GetReadSelectorType() != ReadSelectorType::None) {
        abort();
    }
    TextPayload payload("document");
    TextInputTNString document(lineEnd != std::string_view::npos ? text.substr(lineEnd + 1) : std::string_view());
    payload.SetContentFromTextInput(&document);
    CErrorLog errors;
    CValue value;
    const SelectStatus status = payload.SelectValue(selector, value, errors);
    if ((status == SelectStatus::Success) != value.IsDefined()) abort();
    if (selector.GetReadSelectorType() == ReadSelectorType::JSONata) return 0;  // $random() and $now() may differ
    CValue again;
    if (payload.SelectValue(selector, again) != status) abort();
    if (value.IsDefined() && !again.IsEqual(value)) abort();
    return 0;
}
