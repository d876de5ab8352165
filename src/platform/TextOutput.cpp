#include "platform/TextOutput.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <utility>

#include "platform/FloatText.h"
#include "platform/Transcode.h"

namespace {

constexpr std::string_view kUpperHexDigits = "0123456789ABCDEF";

/// A short text on the stack that goes to an output when it is full and at the end.
class BufferedWriter {
 public:
    explicit BufferedWriter(CTextOutput& output) noexcept : output_(output) {}
    BufferedWriter(const BufferedWriter&) = delete;
    BufferedWriter& operator=(const BufferedWriter&) = delete;

    void Put(char c) {
        Reserve(1);
        buffer_[size_++] = c;
    }
    void PutText(std::string_view text) {
        if (text.size() > buffer_.size()) {
            Flush();
            output_.Write(text);
            return;
        }
        Reserve(text.size());
        std::copy(text.begin(), text.end(), buffer_.begin() + static_cast<std::ptrdiff_t>(size_));
        size_ += text.size();
    }
    void PutCodePoint(char32_t codePoint) {
        std::array<unsigned char, 4> bytes;
        const unsigned int size = tn_encode_utf8(codePoint, bytes.data());
        PutText({reinterpret_cast<const char*>(bytes.data()), size});
    }
    void PutHexEscape(unsigned int value, unsigned int digits) {
        Put('$');
        while (digits-- > 0)
            Put(kUpperHexDigits[value >> (4 * digits) & 0xF]);
    }
    void Flush() {
        if (size_ != 0) output_.Write({buffer_.data(), size_});
        size_ = 0;
    }

 private:
    void Reserve(std::size_t size) {
        if (buffer_.size() - size_ < size) Flush();
    }

    CTextOutput& output_;
    std::array<char, 512> buffer_;
    std::size_t size_ = 0;
};

/// The letter of the characters that have a short escape; 0 for all others.
constexpr char EscapeLetter(char32_t codePoint, char delimiter) noexcept {
    switch (codePoint) {
        case '$': return '$';
        case '\n': return 'L';
        case '\r': return 'R';
        case '\t': return 'T';
        default: return codePoint == static_cast<char32_t>(delimiter) ? delimiter : '\0';
    }
}

constexpr bool IsControl(char32_t codePoint) noexcept {
    return codePoint < 0x20 || (codePoint >= 0x7F && codePoint <= 0x9F);
}

constexpr bool IsPlainAscii(char32_t codePoint, char delimiter) noexcept {
    return codePoint >= 0x20 && codePoint < 0x7F && codePoint != '$' && codePoint != static_cast<char32_t>(delimiter);
}

/// A U+FFFD that was decoded from anything but its own encoding stands for an invalid sequence.
bool IsInvalid(char32_t codePoint, std::span<const unsigned char> sequence) noexcept {
    return codePoint == kReplacementCharacter && !(sequence.size() == 3 && sequence[0] == 0xEF);
}
bool IsInvalid(char32_t codePoint, std::span<const unsigned short> sequence) noexcept {
    return codePoint == kReplacementCharacter && sequence[0] != kReplacementCharacter;
}

std::span<const unsigned char> NextSequence(std::span<const unsigned char> text, char32_t& codePoint) noexcept {
    return text.first(tn_decode_utf8(text.data(), static_cast<unsigned int>(text.size()), codePoint));
}
std::span<const unsigned short> NextSequence(std::span<const unsigned short> text, char32_t& codePoint) noexcept {
    return text.first(tn_decode_utf16(text.data(), static_cast<unsigned int>(text.size()), codePoint));
}

/// Writes the leading characters that need no escape and returns how many.
std::size_t PutPlainRun(BufferedWriter& writer, std::span<const unsigned char> text, char delimiter) {
    const auto end = std::find_if_not(text.begin(), text.end(),
                                      [delimiter](unsigned char byte) { return IsPlainAscii(byte, delimiter); });
    const auto size = static_cast<std::size_t>(end - text.begin());
    writer.PutText({reinterpret_cast<const char*>(text.data()), size});
    return size;
}
std::size_t PutPlainRun(BufferedWriter& writer, std::span<const unsigned short> text, char delimiter) {
    std::size_t size = 0;
    for (; size < text.size() && IsPlainAscii(text[size], delimiter); ++size)
        writer.Put(static_cast<char>(text[size]));
    return size;
}

/// The text in the delimiter, each unit that needs it escaped with two hexadecimal digits to a byte.
template <typename Unit>
void PrintQuoted(CTextOutput& output, std::span<const Unit> text, char delimiter) {
    BufferedWriter writer(output);
    writer.Put(delimiter);
    while (!text.empty()) {
        text = text.subspan(PutPlainRun(writer, text, delimiter));
        if (text.empty()) break;
        char32_t codePoint = 0;
        const std::span<const Unit> sequence = NextSequence(text, codePoint);
        text = text.subspan(sequence.size());
        if (const char letter = EscapeLetter(codePoint, delimiter)) {
            writer.Put('$');
            writer.Put(letter);
        } else if (IsControl(codePoint) || IsInvalid(codePoint, sequence)) {
            for (const Unit unit : sequence)
                writer.PutHexEscape(unit, 2 * sizeof(Unit));
        } else {
            writer.PutCodePoint(codePoint);
        }
    }
    writer.Put(delimiter);
    writer.Flush();
}

/// What a string object can hold at most, so that the length fits an unsigned int.
unsigned int BoundedLength(std::string_view text) noexcept {
    // A UTF-16 unit takes at most three bytes; a little more keeps the last character whole.
    constexpr unsigned int kMostBytes = 4 * (kMaxStringUnits + 1);
    return static_cast<unsigned int>(std::min<std::size_t>(text.size(), kMostBytes));
}

}  // namespace

CTextOutput::~CTextOutput() = default;

void CTextOutput::WriteCodePoint(char32_t codePoint) {
    std::array<unsigned char, 4> bytes;
    const unsigned int size = tn_encode_utf8(codePoint, bytes.data());
    Write({reinterpret_cast<const char*>(bytes.data()), size});
}

void CTextOutput::PrintFloat(float value) {
    std::string text;
    AppendShortest(text, value);
    Write(text);
}

void CTextOutput::PrintDouble(double value) {
    std::string text;
    AppendShortest(text, value);
    Write(text);
}

void CTextOutput::Print61131String(const unsigned char* data, unsigned int count) {
    PrintQuoted(*this, std::span(data, count), '\'');
}

void CTextOutput::Print61131String(const unsigned short* units, unsigned int count) {
    PrintQuoted(*this, std::span(units, count), '"');
}

void CTextOutput::PrintCodePoint00ToFF(unsigned int codePoint, bool wide) {
    BufferedWriter writer(*this);
    if (const char letter = EscapeLetter(codePoint, wide ? '"' : '\'')) {
        writer.Put('$');
        writer.Put(letter);
    } else if (wide ? IsControl(codePoint) : codePoint < 0x20 || codePoint > 0x7E) {
        writer.PutHexEscape(codePoint, wide ? 4 : 2);
    } else {
        writer.PutCodePoint(codePoint);
    }
    writer.Flush();
}

void CTextOutput::PrintArgs(std::string_view format, std::initializer_list<FormatArg> args) {
    std::string text;
    AppendFormatted(text, format, FormatArgs(args.begin(), args.size()));
    Write(text);
}

CTextOutputString::~CTextOutputString() = default;

TextOutputToUtf8String::~TextOutputToUtf8String() = default;

Utf8String* TextOutputToUtf8String::TakeString() {
    const std::string text = std::exchange(text_, {});
    return Utf8StringCopy(text.data(), BoundedLength(text));
}

TextOutputToUtf16String::~TextOutputToUtf16String() = default;

Utf16String* TextOutputToUtf16String::TakeString() {
    const std::string text = std::exchange(text_, {});
    return Utf16StringCopy(text.data(), BoundedLength(text));
}
