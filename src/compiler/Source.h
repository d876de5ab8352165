#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace tn61131::st {

/// A place in the sources of a project: bytes counted through all files, one behind the other. Only SourceManager can
/// tell which file and line that is. Offset 0 belongs to no file.
using SourceOffset = std::uint32_t;

/// The bytes from `begin` up to, not including, `end`. Empty and at 0 where there is no source.
struct SourceRange {
    SourceOffset begin = 0;
    SourceOffset end = 0;
};

/// From the start of the first range to the end of the second.
[[nodiscard]] constexpr SourceRange Join(SourceRange first, SourceRange last) noexcept {
    return {first.begin, last.end};
}

/// Where an offset is. Lines and columns count from 1, columns in code points.
struct SourceLocation {
    std::uint32_t file = 0;  ///< index of the file
    std::uint32_t line = 0;
    std::uint32_t column = 0;
};

/// The source texts of a project. Texts keep their address as long as the manager lives.
class SourceManager {
 public:
    /// All files together hold fewer bytes than this.
    static constexpr std::uint64_t kMaxBytes = 0xFFFF0000;

    /// Adds a file and returns its index; false, `index` untouched, when the project would become too large. `name` is
    /// the file name as messages print it. A leading byte-order mark is dropped.
    [[nodiscard]] bool AddFile(std::string name, std::string text, std::uint32_t& index);

    [[nodiscard]] std::uint32_t GetFileCount() const noexcept { return static_cast<std::uint32_t>(files_.size()); }
    [[nodiscard]] const std::string& GetName(std::uint32_t file) const { return files_[file].name; }
    [[nodiscard]] std::string_view GetText(std::uint32_t file) const { return files_[file].text; }
    /// Offset of the file's first byte.
    [[nodiscard]] SourceOffset GetStart(std::uint32_t file) const { return files_[file].start; }
    /// The text of a range, which lies in one file; empty for a range without source.
    [[nodiscard]] std::string_view GetText(SourceRange range) const;
    /// File, line and column of an offset; all zero for offset 0.
    [[nodiscard]] SourceLocation Locate(SourceOffset offset) const;
    /// The line of a file without its end; lines count from 1.
    [[nodiscard]] std::string_view GetLine(std::uint32_t file, std::uint32_t line) const;

 private:
    struct File {
        std::string name;
        std::string text;
        SourceOffset start = 0;
        mutable std::vector<std::uint32_t> lineStarts;  ///< made when first needed
    };
    static constexpr std::uint32_t kNoFile = 0xFFFFFFFF;
    /// The file that an offset lies in, kNoFile for none.
    [[nodiscard]] std::uint32_t FindFile(SourceOffset offset) const;
    [[nodiscard]] const std::vector<std::uint32_t>& LineStarts(const File& file) const;

    std::deque<File> files_;
    SourceOffset next_ = 1;
};

}  // namespace tn61131::st
