#include "tools/FileContent.h"

#include <fstream>
#include <istream>
#include <iterator>

#include "platform/File.h"

namespace tn61131 {

bool ReadFileContent(const std::string& path, std::string& content) {
    TNFileUnix file;
    if (!file.OpenFileForRead(CTNFilePath(path))) return false;
    content.resize(file.GetFileSize());
    return file.ReadBytes(content.data(), file.GetFileSize());
}

bool ReadFileOrInput(const std::string& path, std::istream& input, std::string& content) {
    if (path != "-") return ReadFileContent(path, content);
    content.assign(std::istreambuf_iterator<char>(input), {});
    return !input.bad();
}

bool WriteFileContent(const std::string& path, std::string_view content) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    return !file.fail();
}

}  // namespace tn61131
