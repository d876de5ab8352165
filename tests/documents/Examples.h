#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What a Markdown page says, as far as tests read it.
namespace documents {

/// A fenced block that is marked as structured text.
struct Example {
    std::uint32_t line = 0;  ///< of its first line in the page
    std::string text;
};

/// A heading of any level with what follows it up to the next one.
struct Section {
    std::string title;
    std::vector<std::string> lines;  ///< without examples and blank lines
    std::vector<Example> examples;
};

/// The sections of a page of docs/, in its order; what precedes the first heading is dropped. Empty when the page
/// cannot be read.
[[nodiscard]] std::vector<Section> ReadPage(const std::string& name);

}  // namespace documents
