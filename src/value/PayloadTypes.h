#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "value/ValueLiteral.h"

// From the type of a value to the C++ type of its payload: each function calls a kernel, a lambda with a parameter
// PayloadTag<T>, with the T of an elementary type, and returns false without a call for types that it does not serve.

namespace tn61131 {

static_assert(std::endian::native == std::endian::little, "a narrow payload is the low bytes of a wide one");

template <typename T>
struct PayloadTag {};

/// Overwrites the first bytes of the payload; the type stays.
template <typename T>
void StorePayload(CValueLiteral& value, T payload) noexcept {
    std::memcpy(value.GetValue(), &payload, sizeof payload);
}

/// Integers and bit strings by their width alone, for operations that do not look at the sign.
template <typename Kernel>
[[gnu::always_inline]] inline bool WithWidth(ElementaryType type, Kernel&& kernel) {
    switch (type) {
        case ElementaryType::SInt:
        case ElementaryType::USInt:
        case ElementaryType::Byte: kernel(PayloadTag<std::uint8_t>{}); return true;
        case ElementaryType::Int:
        case ElementaryType::UInt:
        case ElementaryType::Word: kernel(PayloadTag<std::uint16_t>{}); return true;
        case ElementaryType::DInt:
        case ElementaryType::UDInt:
        case ElementaryType::DWord: kernel(PayloadTag<std::uint32_t>{}); return true;
        case ElementaryType::LInt:
        case ElementaryType::ULInt:
        case ElementaryType::LWord: kernel(PayloadTag<std::uint64_t>{}); return true;
        default: return false;
    }
}

/// The types that add and multiply: those of WithWidth(), TIME and the reals.
template <typename Kernel>
[[gnu::always_inline]] inline bool WithArithmetic(ElementaryType type, Kernel&& kernel) {
    switch (type) {
        case ElementaryType::SInt:
        case ElementaryType::USInt:
        case ElementaryType::Byte: kernel(PayloadTag<std::uint8_t>{}); return true;
        case ElementaryType::Int:
        case ElementaryType::UInt:
        case ElementaryType::Word: kernel(PayloadTag<std::uint16_t>{}); return true;
        case ElementaryType::DInt:
        case ElementaryType::UDInt:
        case ElementaryType::DWord: kernel(PayloadTag<std::uint32_t>{}); return true;
        case ElementaryType::LInt:
        case ElementaryType::ULInt:
        case ElementaryType::LWord:
        case ElementaryType::Time: kernel(PayloadTag<std::uint64_t>{}); return true;
        case ElementaryType::Real: kernel(PayloadTag<float>{}); return true;
        case ElementaryType::LReal: kernel(PayloadTag<double>{}); return true;
        default: return false;
    }
}

/// Every type whose payload is one number, signed or unsigned as the type is; a BOOL is its byte.
template <typename Kernel>
[[gnu::always_inline]] inline bool WithScalar(ElementaryType type, Kernel&& kernel) {
    switch (type) {
        case ElementaryType::SInt: kernel(PayloadTag<std::int8_t>{}); return true;
        case ElementaryType::Bool:
        case ElementaryType::USInt:
        case ElementaryType::Byte:
        case ElementaryType::Char: kernel(PayloadTag<std::uint8_t>{}); return true;
        case ElementaryType::Int: kernel(PayloadTag<std::int16_t>{}); return true;
        case ElementaryType::UInt:
        case ElementaryType::Word:
        case ElementaryType::WChar: kernel(PayloadTag<std::uint16_t>{}); return true;
        case ElementaryType::DInt: kernel(PayloadTag<std::int32_t>{}); return true;
        case ElementaryType::UDInt:
        case ElementaryType::DWord:
        case ElementaryType::TimeOfDay:
        case ElementaryType::Date: kernel(PayloadTag<std::uint32_t>{}); return true;
        case ElementaryType::LInt:
        case ElementaryType::Time: kernel(PayloadTag<std::int64_t>{}); return true;
        case ElementaryType::ULInt:
        case ElementaryType::LWord:
        case ElementaryType::DateAndTime: kernel(PayloadTag<std::uint64_t>{}); return true;
        case ElementaryType::Real: kernel(PayloadTag<float>{}); return true;
        case ElementaryType::LReal: kernel(PayloadTag<double>{}); return true;
        default: return false;
    }
}

}  // namespace tn61131
