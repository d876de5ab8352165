#include "compiler/Source.h"

#include <algorithm>
#include <utility>

namespace tn61131::st {

bool SourceManager::AddFile(std::string name, std::string text, std::uint32_t& index) {
    if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
    // One offset more than bytes, so that the end of a file is a place of its own.
    if (text.size() + 1 > kMaxBytes - next_) return false;
    index = GetFileCount();
    const auto size = static_cast<SourceOffset>(text.size());
    files_.push_back(File{std::move(name), std::move(text), next_, {}});
    next_ += size + 1;
    return true;
}

std::string_view SourceManager::GetText(SourceRange range) const {
    const std::uint32_t index = FindFile(range.begin);
    if (index == kNoFile || range.end < range.begin) return {};
    const File& file = files_[index];
    return std::string_view(file.text).substr(range.begin - file.start, range.end - range.begin);
}

std::uint32_t SourceManager::FindFile(SourceOffset offset) const {
    if (offset == 0 || offset >= next_) return kNoFile;
    const auto behind = std::upper_bound(files_.begin(), files_.end(), offset,
                                         [](SourceOffset at, const File& file) { return at < file.start; });
    return static_cast<std::uint32_t>(behind - files_.begin()) - 1;
}

SourceLocation SourceManager::Locate(SourceOffset offset) const {
    const std::uint32_t index = FindFile(offset);
    if (index == kNoFile) return {};
    const File& file = files_[index];
    const std::uint32_t position = offset - file.start;
    const std::vector<std::uint32_t>& starts = LineStarts(file);
    const auto behind = std::upper_bound(starts.begin(), starts.end(), position);
    const std::string_view before = std::string_view(file.text).substr(*(behind - 1), position - *(behind - 1));
    const auto isFirstByte = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    const auto columns = std::count_if(before.begin(), before.end(), isFirstByte);
    return {index, static_cast<std::uint32_t>(behind - starts.begin()), static_cast<std::uint32_t>(columns) + 1};
}

std::string_view SourceManager::GetLine(std::uint32_t file, std::uint32_t line) const {
    const std::vector<std::uint32_t>& starts = LineStarts(files_[file]);
    if (line == 0 || line > starts.size()) return {};
    std::string_view text = std::string_view(files_[file].text).substr(starts[line - 1]);
    if (line < starts.size()) text = text.substr(0, starts[line] - starts[line - 1] - 1);
    if (text.ends_with('\r')) text.remove_suffix(1);
    return text;
}

const std::vector<std::uint32_t>& SourceManager::LineStarts(const File& file) const {
    if (file.lineStarts.empty()) {
        file.lineStarts.push_back(0);
        for (std::size_t at = 0; (at = file.text.find('\n', at)) != std::string::npos;)
            file.lineStarts.push_back(static_cast<std::uint32_t>(++at));
    }
    return file.lineStarts;
}

}  // namespace tn61131::st
