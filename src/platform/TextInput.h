#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Export.h"

/// A text being read, character by character or line by line. The base decodes nothing: each source does.
class TN61131_API CTextInput {
 public:
    CTextInput() = default;
    CTextInput(const CTextInput&) = delete;
    CTextInput& operator=(const CTextInput&) = delete;
    virtual ~CTextInput();

    /// The next code point, or nothing at the end. What is not valid in the source's encoding comes as U+FFFD. One
    /// leading byte-order mark is skipped.
    [[nodiscard]] std::optional<char32_t> ReadCodePoint();
    /// The next line in UTF-8, without its end (LF or CR LF); false at the end. A last line without an end counts, an
    /// empty one after the last end does not.
    [[nodiscard]] bool ReadLine(std::string& line);
    /// Everything that is left, as UTF-8, but for a leading byte-order mark; the source is at its end then. Either a
    /// view of the source's own bytes, with those that are not valid UTF-8 as they are, or of what was decoded into
    /// `storage`.
    [[nodiscard]] std::string_view TakeRest(std::string& storage);
    /// Appends what stands next up to the first of the two ASCII characters, which is left to be read, as far as the
    /// source can deliver it at once: a short cut that may take nothing, so that ReadCodePoint() has to follow.
    void AppendPlainRun(std::string& text, char stop, char otherStop) {
        if (!atStart_ && !pending_) TakePlainRun(text, stop, otherStop);
    }

 protected:
    /// The next code point of the source, or nothing at its end.
    virtual std::optional<char32_t> Decode() = 0;
    /// AppendPlainRun() behind the first character. The base takes nothing.
    virtual void TakePlainRun(std::string& text, char stop, char otherStop);
    /// Everything that is left in a source that holds UTF-8, which is at its end then; nothing from any other source.
    virtual std::optional<std::string_view> TakeBytes();

 private:
    std::optional<char32_t> pending_;
    bool atStart_ = true;
};

/// UTF-8 text that the caller owns and keeps alive.
class TN61131_API CTextInputUtf8 : public CTextInput {
 public:
    CTextInputUtf8(const unsigned char* data, std::size_t count) noexcept : data_(data), count_(count) {}
    ~CTextInputUtf8() override;

 protected:
    std::optional<char32_t> Decode() override;
    void TakePlainRun(std::string& text, char stop, char otherStop) override;
    std::optional<std::string_view> TakeBytes() override;

 private:
    const unsigned char* data_;
    std::size_t count_;
    std::size_t position_ = 0;
};

/// Internal text (UTF-8) that the caller keeps alive.
class TN61131_API TextInputTNString final : public CTextInputUtf8 {
 public:
    explicit TextInputTNString(std::string_view text) noexcept
        : CTextInputUtf8(reinterpret_cast<const unsigned char*>(text.data()), text.size()) {}
    ~TextInputTNString() override;
};

/// Bytes of a file: UTF-8, kept by the caller.
class TN61131_API TextInputFromRawData final : public CTextInputUtf8 {
 public:
    using CTextInputUtf8::CTextInputUtf8;
    ~TextInputFromRawData() override;
};

/// UTF-16 units that the caller keeps alive.
class TN61131_API TextInputU16String final : public CTextInput {
 public:
    TextInputU16String(const unsigned short* units, std::size_t count) noexcept : units_(units), count_(count) {}
    ~TextInputU16String() override;

 protected:
    std::optional<char32_t> Decode() override;

 private:
    const unsigned short* units_;
    std::size_t count_;
    std::size_t position_ = 0;
};
