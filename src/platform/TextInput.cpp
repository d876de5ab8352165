#include "platform/TextInput.h"

#include <algorithm>
#include <utility>

#include "platform/Transcode.h"

namespace {

constexpr char32_t kByteOrderMark = 0xFEFF;
// The longest encoded character in either encoding; decoders need not see further.
constexpr std::size_t kLookAhead = 4;

unsigned int Ahead(std::size_t count, std::size_t position) noexcept {
    return static_cast<unsigned int>(std::min(count - position, kLookAhead));
}

}  // namespace

CTextInput::~CTextInput() = default;

std::optional<char32_t> CTextInput::ReadCodePoint() {
    if (pending_) {
        const std::optional<char32_t> codePoint = pending_;
        pending_.reset();
        return codePoint;
    }
    const std::optional<char32_t> codePoint = Decode();
    const bool skip = atStart_ && codePoint == kByteOrderMark;
    atStart_ = false;
    return skip ? Decode() : codePoint;
}

bool CTextInput::ReadLine(std::string& line) {
    line.clear();
    std::optional<char32_t> codePoint = ReadCodePoint();
    if (!codePoint) return false;
    for (; codePoint; codePoint = ReadCodePoint()) {
        if (*codePoint == U'\n') return true;
        tn_append_codepoint_to_tnstring(line, *codePoint);
        if (*codePoint != U'\r') {
            AppendPlainRun(line, '\n', '\r');
            continue;
        }
        pending_ = ReadCodePoint();
        if (pending_ != U'\n') continue;
        pending_.reset();
        line.pop_back();
        return true;
    }
    return true;
}

std::string_view CTextInput::TakeRest(std::string& storage) {
    constexpr std::string_view kEncodedMark = "\xEF\xBB\xBF";
    storage.clear();
    if (std::optional<std::string_view> bytes = TakeBytes()) {
        if (std::exchange(atStart_, false) && bytes->starts_with(kEncodedMark)) {
            bytes->remove_prefix(kEncodedMark.size());
        }
        return *bytes;
    }
    while (const std::optional<char32_t> codePoint = ReadCodePoint())
        tn_append_codepoint_to_tnstring(storage, *codePoint);
    return storage;
}

void CTextInput::TakePlainRun(std::string&, char, char) {}

std::optional<std::string_view> CTextInput::TakeBytes() {
    return std::nullopt;
}

CTextInputUtf8::~CTextInputUtf8() = default;

std::optional<char32_t> CTextInputUtf8::Decode() {
    if (position_ == count_) return std::nullopt;
    char32_t codePoint = 0;
    position_ += tn_decode_utf8(data_ + position_, Ahead(count_, position_), codePoint);
    return codePoint;
}

void CTextInputUtf8::TakePlainRun(std::string& text, char stop, char otherStop) {
    const unsigned char* const begin = data_ + position_;
    const unsigned char* const end = std::find_if(begin, data_ + count_, [stop, otherStop](unsigned char byte) {
        return byte == static_cast<unsigned char>(stop) || byte == static_cast<unsigned char>(otherStop) ||
               byte >= 0x80;
    });
    text.append(reinterpret_cast<const char*>(begin), static_cast<std::size_t>(end - begin));
    position_ += static_cast<std::size_t>(end - begin);
}

std::optional<std::string_view> CTextInputUtf8::TakeBytes() {
    // Built from a null pointer a view would be no view of nothing.
    if (position_ == count_) return std::string_view();
    const std::string_view bytes(reinterpret_cast<const char*>(data_) + position_, count_ - position_);
    position_ = count_;
    return bytes;
}

TextInputTNString::~TextInputTNString() = default;

TextInputFromRawData::~TextInputFromRawData() = default;

TextInputU16String::~TextInputU16String() = default;

std::optional<char32_t> TextInputU16String::Decode() {
    if (position_ == count_) return std::nullopt;
    char32_t codePoint = 0;
    position_ += tn_decode_utf16(units_ + position_, Ahead(count_, position_), codePoint);
    return codePoint;
}
