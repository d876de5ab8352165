#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/ErrorLog.h"
#include "platform/Export.h"

/// A place between two characters of a text. Line and column count from 1, columns in code points (a byte sequence that
/// is not valid UTF-8 counts as one); a line ends at LF or CR LF. Line 0 means that the place is not known.
struct TextPosition {
    std::size_t offset = 0;  ///< in bytes
    unsigned int line = 0;
    unsigned int column = 0;

    [[nodiscard]] bool IsKnown() const noexcept { return line != 0; }
    friend bool operator==(const TextPosition&, const TextPosition&) = default;
};

/// A part of a text, from the start of its first to behind its last character, and the name of the file that the text
/// comes from. Prints as `file(line,column)` with the position of its start: without the name where there is none, the
/// name alone where the position is not known, nothing without both. A name that leaves no room for the position loses
/// its front. The name is shared between the ranges of a file and lives as long as one of them.
class TN61131_API CErrorLocationTextRange final : public ErrorLocation {
 public:
    CErrorLocationTextRange() = default;
    CErrorLocationTextRange(std::shared_ptr<const std::string> fileName, const TextPosition& start,
                            const TextPosition& end) noexcept
        : fileName_(std::move(fileName)), start_(start), end_(end) {}
    CErrorLocationTextRange(const CErrorLocationTextRange&) = default;
    CErrorLocationTextRange(CErrorLocationTextRange&&) noexcept = default;
    CErrorLocationTextRange& operator=(const CErrorLocationTextRange&) = default;
    CErrorLocationTextRange& operator=(CErrorLocationTextRange&&) noexcept = default;
    ~CErrorLocationTextRange() override;

    unsigned int PrintLocation(char* buffer, unsigned int size) const override;

    /// Empty where there is none.
    [[nodiscard]] const std::string& GetFileName() const noexcept;
    [[nodiscard]] const std::shared_ptr<const std::string>& GetSharedFileName() const noexcept { return fileName_; }
    [[nodiscard]] const TextPosition& GetStart() const noexcept { return start_; }
    /// Behind the last character; the start when the range is empty.
    [[nodiscard]] const TextPosition& GetEnd() const noexcept { return end_; }

    void SetFileName(const std::shared_ptr<const std::string>& fileName) noexcept {
        // Copying a shared pointer costs atomic operations; the tokens of a file all have the same.
        if (fileName_ != fileName) fileName_ = fileName;
    }
    void SetRange(const TextPosition& start, const TextPosition& end) noexcept {
        start_ = start;
        end_ = end;
    }

 private:
    std::shared_ptr<const std::string> fileName_;
    TextPosition start_;
    TextPosition end_;
};
