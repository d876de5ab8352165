#include "tools/ProjectFiles.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <system_error>

#include "assembler/SymbolType.h"
#include "tools/FileContent.h"

namespace tn61131 {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 5> kExtensions = {".st", ".iecst", ".exp", ".scl", ".pou"};

bool HasSourceExtension(const fs::path& path) {
    const std::string extension = path.extension().string();
    return std::any_of(kExtensions.begin(), kExtensions.end(),
                       [&](std::string_view known) { return IsSameName(known, extension); });
}

/// The files below a folder; false when it cannot be listed.
bool ListFolder(const fs::path& folder, std::vector<std::string>& files) {
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code status;  // of a link that leads nowhere, which is no reason to give up
        if (entry->is_regular_file(status) && HasSourceExtension(entry->path()))
            files.push_back(entry->path().string());
    }
    std::sort(files.begin(), files.end());
    return !error;
}

bool ExpandPath(const std::string& path, std::vector<std::string>& files, std::string& error) {
    std::error_code status;
    if (!fs::is_directory(path, status)) {
        files.push_back(path);
        return true;
    }
    std::vector<std::string> found;
    if (!ListFolder(path, found)) {
        error = "'" + path + "' cannot be read";
    } else if (found.empty()) {
        error = "'" + path + "' holds no structured text";
    } else {
        files.insert(files.end(), found.begin(), found.end());
        return true;
    }
    return false;
}

}  // namespace

bool IsSourcePath(const std::string& path) {
    std::error_code status;
    return fs::is_directory(path, status) || HasSourceExtension(path);
}

bool ReadProjectFiles(const std::vector<std::string>& paths, std::vector<st::SourceText>& sources, std::string& error) {
    std::vector<std::string> files;
    for (const std::string& path : paths) {
        if (!ExpandPath(path, files, error)) return false;
    }
    std::set<std::string> seen;
    for (const std::string& file : files) {
        if (!seen.insert(fs::path(file).lexically_normal().string()).second) continue;
        st::SourceText& source = sources.emplace_back();
        source.name = file;
        if (!ReadFileContent(file, source.text)) {
            error = "'" + file + "' cannot be read";
            return false;
        }
    }
    return true;
}

}  // namespace tn61131
