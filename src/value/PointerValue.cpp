#include "value/PointerValue.h"

#include "platform/FormatText.h"

char* PointerValue::FormatPointerValue(char* buffer) const noexcept {
    const auto print = [buffer](std::string_view format, const auto&... args) {
        tn_sprintf(buffer, kTextSize, format, args...);
        return buffer;
    };
    switch (location) {
        case LocationKind::Null: return print("Null");
        case LocationKind::Global: return print("Global: %u", offset);
        case LocationKind::Local: return print("Local: Frame %hu Offset %u", frame, offset);
        case LocationKind::Temp: return print("Temp: Frame %hu Offset %u", frame, offset);
        case LocationKind::Tag: return print("Tag: Id %u Offset %hu", offset, frame);
        case LocationKind::GlobalConstant: return print("GlobalConstant: %u", offset);
        case LocationKind::MemBlockPtr: return print("MemBlockPtr: Type %u Id %u", frame, offset);
    }
    return print("Invalid location %d", location);
}

void PointerValue::AddOffset(unsigned int bytes) noexcept {
    if (location == LocationKind::Null) return;
    if (location == LocationKind::Tag) {
        frame = static_cast<std::uint16_t>(frame + bytes);
    } else {
        offset += bytes;
    }
}
