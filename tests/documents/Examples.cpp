#include "documents/Examples.h"

#include <fstream>

namespace documents {

std::vector<Section> ReadPage(const std::string& name) {
    std::ifstream file(std::string(TN61131_DOCS) + "/" + name);
    std::vector<Section> sections;
    bool isExample = false;
    bool isOther = false;  // a fenced block of another kind
    std::uint32_t number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (line.starts_with("```")) {
            const bool opens = !isExample && !isOther;
            isOther = opens && line != "```st";
            isExample = opens && line == "```st";
            if (isExample && !sections.empty()) sections.back().examples.push_back({number + 1, {}});
        } else if (isExample && !sections.empty()) {
            sections.back().examples.back().text += line + '\n';
        } else if (!isOther && line.starts_with('#')) {
            sections.push_back({line.substr(line.find_first_not_of("# ")), {}, {}});
        } else if (!line.empty() && !sections.empty()) {
            sections.back().lines.push_back(line);
        }
    }
    return sections;
}

}  // namespace documents
