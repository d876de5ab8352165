#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/FormatText.h"
#include "platform/StringObject.h"

class CTNTimeZone;

/// A text being written, in UTF-8.
class TN61131_API CTextOutput {
 public:
    CTextOutput() = default;
    CTextOutput(const CTextOutput&) = delete;
    CTextOutput& operator=(const CTextOutput&) = delete;
    virtual ~CTextOutput();

    /// Appends UTF-8 text. Invalid sequences are passed on; an output with another encoding replaces them by U+FFFD.
    virtual void Write(std::string_view text) = 0;
    /// Appends one character; an unpaired surrogate or a number that is no character becomes U+FFFD.
    void WriteCodePoint(char32_t codePoint);
    void WriteChar(char asciiCharacter) { Write(std::string_view(&asciiCharacter, 1)); }

    /// Formatted text; see AppendFormatted() for the placeholders.
    template <typename... Args>
    void Print(std::string_view format, const Args&... args) {
        PrintArgs(format, {FormatArg(args)...});
    }

    /// The shortest digits that read back to the same value in that precision. With e the decimal exponent: fixed
    /// notation with a fraction for -5 <= e < 16 ("1.0", "0.00001"), else "1.5E+20", "1.0E-07" (sign, at least two
    /// exponent digits and a fraction always). Negative zero is "-0.0"; "nan", "inf" and "-inf".
    void PrintFloat(float value);
    void PrintDouble(double value);
    /// "2024-01-31" of a timestamp in 100 ns ticks, in the zone's local time where a zone is given.
    void PrintDate(const CTNTimeZone* timeZone, std::int64_t ticks);
    /// "2024-01-31", the separator, "13:05:09.250".
    void PrintDateAndTime(const CTNTimeZone* timeZone, std::int64_t ticks, char separator);
    /// A quoted IEC 61131-3 character string (2.2.2): single quotes for UTF-8, double quotes for UTF-16. `$$`, the
    /// delimiter escaped, `$L` `$R` `$T` for 10, 13, 9; other control characters (below 32, 127 to 159) as two-digit
    /// bytes (`$C2$85` for U+0085) in UTF-8 and four-digit units in UTF-16; bytes that are not valid UTF-8 as `$XX`,
    /// unpaired surrogates as `$XXXX`; everything else as it is.
    void Print61131String(const unsigned char* data, unsigned int count);
    void Print61131String(const unsigned short* units, unsigned int count);
    /// One character 0 to 255 with the same escapes, no quotes. `wide` false: a CHAR, above 126 printed as `$XX`, the
    /// single quote escaped; true: a WCHAR, 127 to 159 printed as `$00XX`, 160 to 255 as the character, the double
    /// quote escaped.
    void PrintCodePoint00ToFF(unsigned int codePoint, bool wide);

 private:
    void PrintArgs(std::string_view format, std::initializer_list<FormatArg> args);
};

/// Collects into a string of its own.
class TN61131_API CTextOutputString final : public CTextOutput {
 public:
    ~CTextOutputString() override;
    void Write(std::string_view text) override { text_.append(text); }
    [[nodiscard]] const std::string& GetText() const noexcept { return text_; }
    [[nodiscard]] std::string TakeText() noexcept { return std::move(text_); }

 private:
    std::string text_;
};

/// Collects into a string object, cut to what such an object holds.
class TN61131_API TextOutputToUtf8String final : public CTextOutput {
 public:
    ~TextOutputToUtf8String() override;
    void Write(std::string_view text) override { text_.append(text); }
    /// A new string object with the text so far, owned by the caller (Utf8StringFree).
    [[nodiscard]] Utf8String* TakeString();

 private:
    std::string text_;
};

class TN61131_API TextOutputToUtf16String final : public CTextOutput {
 public:
    ~TextOutputToUtf16String() override;
    void Write(std::string_view text) override { text_.append(text); }
    /// A new string object with the text so far, owned by the caller (Utf16StringFree).
    [[nodiscard]] Utf16String* TakeString();

 private:
    std::string text_;
};
