#include "platform/ErrorLocationTextRange.h"

#include <string_view>

#include "platform/FormatText.h"

namespace {

// The end of `text` that takes at most `room` bytes, beginning with a whole character.
std::string_view EndThatFits(std::string_view text, std::size_t room) noexcept {
    if (text.size() <= room) return text;
    text.remove_prefix(text.size() - room);
    while (!text.empty() && (static_cast<unsigned char>(text.front()) & 0xC0) == 0x80)
        text.remove_prefix(1);
    return text;
}

}  // namespace

CErrorLocationTextRange::~CErrorLocationTextRange() = default;

const std::string& CErrorLocationTextRange::GetFileName() const noexcept {
    static const std::string noName;
    return fileName_ != nullptr ? *fileName_ : noName;
}

unsigned int CErrorLocationTextRange::PrintLocation(char* buffer, unsigned int size) const {
    constexpr std::string_view kCut = "...";
    const std::string& name = GetFileName();
    const std::string position = start_.IsKnown() ? FormatText("(%u,%u)", start_.line, start_.column) : std::string();
    const std::size_t room = size == 0 ? 0 : size - 1;
    if (name.size() + position.size() <= room) return CopyBounded(buffer, size, name + position);
    const std::size_t fixed = kCut.size() + position.size();
    if (fixed > room) return CopyBounded(buffer, size, position);
    return CopyBounded(buffer, size, std::string(kCut).append(EndThatFits(name, room - fixed)).append(position));
}
