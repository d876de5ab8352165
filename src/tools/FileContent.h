#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

namespace tn61131 {

/// Reads a whole plain file. False, `content` unspecified, when it cannot be read.
[[nodiscard]] bool ReadFileContent(const std::string& path, std::string& content);
/// The same, with "-" for everything that is left in `input`.
[[nodiscard]] bool ReadFileOrInput(const std::string& path, std::istream& input, std::string& content);
/// Writes a file, replacing what it held. False when it cannot be written; what then stands there is no content.
[[nodiscard]] bool WriteFileContent(const std::string& path, std::string_view content);

}  // namespace tn61131
