#include "value/ValueLiteral.h"

#include "platform/Time.h"
#include "platform/Transcode.h"
#include "value/CompositeValue.h"
#include "value/PayloadTypes.h"
#include "value/StringOrder.h"

using tn61131::CompareStrings;
using tn61131::PayloadTag;
using tn61131::WithScalar;

namespace {

template <typename Unit, typename Decode>
void DecodeAll(std::span<const Unit> units, Decode decode, std::string& out) {
    out.clear();
    out.reserve(units.size());
    while (!units.empty()) {
        char32_t codePoint = 0;
        const unsigned int taken = decode(units.data(), static_cast<unsigned int>(units.size()), codePoint);
        tn_append_codepoint_to_tnstring(out, codePoint);
        units = units.subspan(taken);
    }
}

}  // namespace

CValueLiteral::CValueLiteral(ElementaryType type) : CValueType(type), payload_{} {
    if (type == ElementaryType::String) {
        PutPayload(Utf8StringAlloc(0));
    } else if (type == ElementaryType::WString) {
        PutPayload(Utf16StringAlloc(0));
    }
}

void CValueLiteral::ReleaseOwned() noexcept {
    switch (type_) {
        case ElementaryType::String: Utf8StringFree(GetPayload<Utf8String*>()); break;
        case ElementaryType::WString:
        case ElementaryType::CompositeString: Utf16StringFree(GetPayload<Utf16String*>()); break;
        case ElementaryType::Composite: delete GetPayload<CCompositeValue*>(); break;
        default: return;
    }
    PutPayload<void*>(nullptr);
}

// The type is set last: should the copy throw, the value is still undefined and owns nothing.
void CValueLiteral::CopyOwned(const CValueLiteral& other) {
    switch (other.type_) {
        case ElementaryType::String: {
            const Utf8String* text = other.GetUtf8String();
            PutPayload<const Utf8String*>(text == nullptr ? nullptr : Utf8StringCopy(text));
            break;
        }
        case ElementaryType::WString:
        case ElementaryType::CompositeString: {
            const Utf16String* text = other.GetUtf16String();
            PutPayload<const Utf16String*>(text == nullptr ? nullptr : Utf16StringCopy(text));
            break;
        }
        default: {
            const CCompositeValue* composite = other.GetComposite();
            PutPayload<const CCompositeValue*>(composite == nullptr ? nullptr : new CCompositeValue(*composite));
            break;
        }
    }
    type_ = other.type_;
}

void CValueLiteral::SetUtf8StringFromVMString(const unsigned char* data, unsigned int count) {
    SetScalar(ElementaryType::String, Utf8StringCopy(data, count));
}

void CValueLiteral::SetUtf16StringFromVMWString(const unsigned short* data, unsigned int count) {
    SetScalar(ElementaryType::WString, Utf16StringCopy(data, count));
}

bool CValueLiteral::IsZero() const noexcept {
    switch (type_) {
        case ElementaryType::Bool: return GetPayload<unsigned char>() != 1;
        case ElementaryType::String: return GetUnits(GetUtf8String()).empty();
        case ElementaryType::WString: return GetUnits(GetUtf16String()).empty();
        case ElementaryType::Pointer: return GetPayload<PointerValue>().location == LocationKind::Null;
        default: break;
    }
    bool isZero = true;
    WithScalar(type_, [&]<typename T>(PayloadTag<T>) { isZero = GetPayload<T>() == T{0}; });
    return isZero;
}

bool CValueLiteral::IsNegative() const noexcept {
    bool isNegative = false;
    WithScalar(type_, [&]<typename T>(PayloadTag<T>) { isNegative = GetPayload<T>() < T{0}; });
    return isNegative;
}

unsigned int CValueLiteral::GetMemorySize() const noexcept {
    constexpr unsigned int kValueSize = 16;
    switch (type_) {
        case ElementaryType::String:
            return kValueSize + static_cast<unsigned int>(GetUnits(GetUtf8String()).size()) + 2;
        case ElementaryType::WString:
            return kValueSize + (static_cast<unsigned int>(GetUnits(GetUtf16String()).size()) + 1) * 2;
        default: return kValueSize;
    }
}

bool CValueLiteral::IsEqual(const CValueLiteral& other) const noexcept {
    if (type_ != other.type_) return false;
    switch (type_) {
        case ElementaryType::Undefined: return true;
        case ElementaryType::String: return CompareStrings(GetUtf8String(), other.GetUtf8String()) == 0;
        case ElementaryType::WString: return CompareStrings(GetUtf16String(), other.GetUtf16String()) == 0;
        default: break;
    }
    bool isEqual = false;
    WithScalar(type_, [&]<typename T>(PayloadTag<T>) { isEqual = GetPayload<T>() == other.GetPayload<T>(); });
    return isEqual;
}

bool CValueLiteral::LessThan(const CValueLiteral& other) const noexcept {
    if (other.type_ == ElementaryType::Undefined) return false;
    switch (type_) {
        case ElementaryType::Undefined: return true;
        case ElementaryType::Bool: return GetPayload<unsigned char>() != 1 && other.GetPayload<unsigned char>() != 0;
        // Only these payloads are followed, so only these need the other value to be of the same type.
        case ElementaryType::String:
            return other.type_ == type_ && CompareStrings(GetUtf8String(), other.GetUtf8String()) < 0;
        case ElementaryType::WString:
            return other.type_ == type_ && CompareStrings(GetUtf16String(), other.GetUtf16String()) < 0;
        default: break;
    }
    bool isLess = false;
    WithScalar(type_, [&]<typename T>(PayloadTag<T>) { isLess = GetPayload<T>() < other.GetPayload<T>(); });
    return isLess;
}

void CValueLiteral::GetStringValue(std::string& out) const {
    if (type_ == ElementaryType::String) {
        DecodeAll(GetUnits(GetUtf8String()), tn_decode_utf8, out);
    } else if (type_ == ElementaryType::WString) {
        DecodeAll(GetUnits(GetUtf16String()), tn_decode_utf16, out);
    }
}

void CValueLiteral::GetTimestampValue(CTNTimestamp& out) const noexcept {
    if (type_ == ElementaryType::Date) {
        out.SetVMTimeMS(GetPayload<std::uint32_t>() * kMillisecondsPerDay);
    } else if (type_ == ElementaryType::DateAndTime) {
        out.SetVMTimeMS(GetPayload<std::int64_t>());
    }
}
