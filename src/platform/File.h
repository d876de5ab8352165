#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/Export.h"

/// The path of a file, in the file system's own encoding.
class TN61131_API CTNFilePath {
 public:
    explicit CTNFilePath(std::string path) : path_(std::move(path)) {}
    [[nodiscard]] const std::string& GetText() const noexcept { return path_; }

 private:
    std::string path_;
};

/// A plain file open for reading; closed by the destructor. Files up to 4 GiB - 1.
class TN61131_API TNFileUnix {
 public:
    TNFileUnix() = default;
    TNFileUnix(const TNFileUnix&) = delete;
    TNFileUnix& operator=(const TNFileUnix&) = delete;
    ~TNFileUnix();

    /// Opens another file, whatever was open before. False when it cannot be opened, is no plain file or is too large;
    /// then no file is open.
    [[nodiscard]] bool OpenFileForRead(const CTNFilePath& path);
    /// Size in bytes when the file was opened.
    [[nodiscard]] std::uint32_t GetFileSize() const noexcept { return size_; }
    /// Reads exactly `size` bytes from where the last read ended; false when fewer are left or reading fails.
    [[nodiscard]] bool ReadBytes(void* data, std::uint32_t size);

 private:
    void Close() noexcept;

    int descriptor_ = -1;
    std::uint32_t size_ = 0;
};
