#include "value/Value.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/Time.h"

namespace {

unsigned int LengthOf(const char* text) noexcept {
    return text == nullptr ? 0 : static_cast<unsigned int>(std::strlen(text));
}

unsigned int LengthOf(const std::string& text) noexcept {
    return static_cast<unsigned int>(std::min<std::size_t>(text.size(), std::numeric_limits<unsigned int>::max()));
}

/// What the payload of a type gets from bits that a caller wants in it: never an address to follow.
unsigned long long BitsFor(ElementaryType type, unsigned long long bits) noexcept {
    return (TypeBit(type) & kOwningTypes) != 0 ? 0 : bits;
}

}  // namespace

CValue::CValue(unsigned int bits, ElementaryType type) noexcept {
    SetScalar(type, BitsFor(type, bits));
}

CValue::CValue(long long bits, ElementaryType type) noexcept {
    SetScalar(type, BitsFor(type, static_cast<unsigned long long>(bits)));
}

CValue::CValue(unsigned long long bits, ElementaryType type) noexcept {
    SetScalar(type, BitsFor(type, bits));
}

CValue::CValue(const CTNTimeInterval& interval) noexcept {
    SetScalar(ElementaryType::Time, interval.GetMilliseconds());
}

CValue::CValue(const char* text, ElementaryType type) : CValue(text, LengthOf(text), type) {}

CValue::CValue(const char* text, unsigned int length, ElementaryType type) {
    if (type == ElementaryType::CompositeString) {
        SetScalar(type, Utf16StringCopy(text, length));
    } else {
        SetString(text, length, type);
    }
}

CValue::CValue(const std::string& text) {
    SetString(text, ElementaryType::WString);
}

void CValue::SetInteger(long long value, ElementaryType type) noexcept {
    ClearValue();
    type_ = type;
    const PayloadKind payload = GetTypeInfo(type).payload;
    if (payload == PayloadKind::Signed || payload == PayloadKind::Unsigned) {
        PutPayload(value);
    } else if ((TypeBit(type) & kOwningTypes) != 0) {
        PutPayload<void*>(nullptr);
    }
}

void CValue::SetTimestamp(const CTNTimestamp& timestamp) noexcept {
    SetScalar(ElementaryType::DateAndTime, timestamp.GetVMTimeMS());
}

void CValue::SetString(const std::string& text, ElementaryType type) {
    SetString(text.data(), LengthOf(text), type);
}

void CValue::SetString(const char* text, unsigned int length, ElementaryType type) {
    if (type == ElementaryType::String) {
        SetScalar(type, Utf8StringCopy(text, length));
    } else {
        SetScalar(ElementaryType::WString, Utf16StringCopy(text, length));
    }
}

void CValue::SetString(const char* text, ElementaryType type) {
    SetString(text, LengthOf(text), type);
}

void CValue::SetCompositeString(const std::string& text) {
    SetScalar(ElementaryType::CompositeString, Utf16StringCopy(text.data(), LengthOf(text)));
}
