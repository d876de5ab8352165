#include <fstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "payload/TextPayload.h"
#include "payload/TextPayloadSelector.h"
#include "platform/ErrorLog.h"
#include "platform/TextInput.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

// docs/selectors.md: every row of a table behind a document gives what it says.

namespace {

constexpr std::string_view kFence = "```";
constexpr std::string_view kRowStart = "| `";
constexpr std::string_view kCellEnd = "` | ";

/// What a row says of its second cell.
std::string Select(const std::string& document, const std::string& text) {
    COutputLogString output;
    CErrorLog log(&output);
    TextInputTNString selectorInput(text);
    TextPayloadSelector selector;
    if (selector.ParseSelector(&selectorInput, &output)) {
        TextPayload payload("document");
        TextInputTNString input(document);
        payload.SetContentFromTextInput(&input);
        CValue value;
        const SelectStatus status = payload.SelectValue(selector, value, log);
        CTextOutputString declaration;
        value.GetDeclaration(declaration);
        if (status == SelectStatus::Success) return "`" + declaration.GetText() + "`";
        if (status == SelectStatus::DocumentInvalid) return "document invalid";
        if (output.GetText().empty()) return "nothing";
    }
    const std::string& errors = output.GetText();
    const std::size_t id = errors.find("error 2");
    return id != std::string::npos ? "message " + errors.substr(id + 6, 3) : "error";
}

TEST(SelectorDocumentation, EveryExampleGivesWhatItSays) {
    std::ifstream page("docs/selectors.md");
    ASSERT_TRUE(page.is_open()) << "run from the project's folder";
    std::string document;
    bool inDocument = false;
    int examples = 0;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with(kFence)) {
            inDocument = !inDocument;
            if (inDocument) document.clear();
        } else if (inDocument) {
            document += line + "\n";
        } else if (!document.empty() && line.starts_with(kRowStart)) {
            SCOPED_TRACE(line);
            const std::size_t end = line.find(kCellEnd);
            ASSERT_NE(end, std::string::npos);
            const std::string selector = line.substr(kRowStart.size(), end - kRowStart.size());
            const std::size_t gives = end + kCellEnd.size();
            EXPECT_EQ(Select(document, selector), line.substr(gives, line.rfind(" |") - gives));
            ++examples;
        }
    }
    EXPECT_GT(examples, 30);
}

}  // namespace
