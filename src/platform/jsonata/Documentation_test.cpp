#include <fstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "platform/jsonata/EvaluateTesting.h"

namespace tn61131::jsonata {

namespace {

std::string_view Trimmed(std::string_view text) {
    const std::size_t end = text.find_last_not_of(' ');
    return end == std::string_view::npos ? std::string_view() : text.substr(0, end + 1);
}

// "EXPRESSION => RESULT", "EXPRESSION => error CODE"
void ExpectExample(std::string_view line, std::string_view document) {
    const std::size_t arrow = line.rfind(" => ");
    ASSERT_NE(arrow, std::string_view::npos) << line;
    std::string_view expected = line.substr(arrow + 4);
    if (expected.starts_with("error ")) expected.remove_prefix(6);
    EXPECT_EQ(RunExpression(Trimmed(line.substr(0, arrow)), document), expected) << line;
}

TEST(JSONataDocumentation, EveryExampleGivesWhatThePageSays) {
    std::ifstream page("docs/jsonata.md");
    ASSERT_TRUE(page.is_open());
    std::string document;
    std::string block;
    int examples = 0;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("```")) {
            block = block.empty() ? line : "";
        } else if (block == "```json") {
            document += line + "\n";
        } else if (block == "```jsonata") {
            ExpectExample(line, document);
            ++examples;
        }
    }
    EXPECT_GT(examples, 60);
}

}  // namespace

}  // namespace tn61131::jsonata
