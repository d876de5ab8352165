#include "compiler/InitialValue.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "compiler/Model.h"
#include "value/PointerValue.h"

namespace tn61131::st {

namespace {

using Bytes = std::span<unsigned char>;

void WriteValue(const InitialValue& initial, Bytes bytes);

/// The number's low bytes, as the machine is little-endian.
void WriteInteger(std::int64_t value, Bytes bytes) {
    std::memcpy(bytes.data(), &value, std::min(bytes.size(), sizeof(value)));
}

/// Fills `bytes` with copies of its first `done` bytes, which divide it.
void Replicate(Bytes bytes, std::size_t done) {
    while (done != 0 && done < bytes.size()) {
        const std::size_t count = std::min(done, bytes.size() - done);
        std::memcpy(bytes.data() + done, bytes.data(), count);
        done += count;
    }
}

void WriteDefault(const Type* type, Bytes bytes);

void WriteElements(const Type* element, Bytes bytes) {
    if (element->size == 0 || bytes.empty()) return;
    WriteDefault(element, bytes.first(element->size));
    Replicate(bytes, element->size);
}

void WriteBlockDefault(const FunctionBlockType& block, Bytes bytes) {
    for (const Variable* variable : block.variables) {
        // An in-out is a pointer that each call sets; an edge input is a record that starts with zeros.
        if (variable->storage.kind != StorageKind::Instance || variable->edge.has_value()) continue;
        WriteInitialBytes(variable->type, variable->initial,
                          bytes.subspan(variable->storage.offset, variable->type->size));
    }
}

/// `bytes` are zero.
void WriteDefault(const Type* type, Bytes bytes) {
    if (bytes.empty()) return;
    switch (type->kind) {
        case TypeKind::Alias: {
            const auto* alias = static_cast<const AliasType*>(type);
            WriteInitialBytes(alias->target, alias->initial, bytes);
            break;
        }
        case TypeKind::Enum: WriteInteger(static_cast<const EnumType*>(type)->defaultValue, bytes); break;
        case TypeKind::Subrange: WriteInteger(static_cast<const SubrangeType*>(type)->lower, bytes); break;
        case TypeKind::Array: WriteElements(static_cast<const ArrayType*>(type)->element, bytes); break;
        case TypeKind::Struct: {
            const auto* structure = static_cast<const StructType*>(type);
            for (const Field& field : structure->fields) {
                // The first member of a union decides, as the others lie on the same bytes.
                if (structure->isUnion && &field != structure->fields.data()) break;
                WriteInitialBytes(field.type, field.initial, bytes.subspan(field.offset, field.type->size));
            }
            break;
        }
        case TypeKind::FunctionBlock: WriteBlockDefault(*static_cast<const FunctionBlockType*>(type), bytes); break;
        default: break;
    }
}

void WriteAddress(const AddressInitial& address, Bytes bytes) {
    const Storage& storage = address.variable->storage;
    PointerValue pointer;
    if (storage.kind == StorageKind::Tag) {
        pointer = {LocationKind::Tag, static_cast<std::uint16_t>(storage.offset + address.offset), storage.tagId};
    } else if (storage.kind == StorageKind::Global) {
        pointer = {LocationKind::Global, 0, storage.offset + address.offset};
    }
    std::memcpy(bytes.data(), &pointer, std::min(bytes.size(), sizeof(pointer)));
}

void WriteArray(const ArrayInitial& array, Bytes bytes) {
    const std::size_t elementSize = array.element->size;
    std::size_t place = 0;
    for (const InitialRun& run : array.runs) {
        const std::size_t size = run.elements * elementSize;
        const Bytes all = bytes.subspan(place, run.repeat * size);
        place += all.size();
        if (all.empty()) continue;
        if (run.value == nullptr) {
            WriteElements(array.element, all);
            continue;
        }
        WriteValue(*run.value, all.first(size));
        Replicate(all, size);
    }
    WriteElements(array.element, bytes.subspan(place));
}

void WriteValue(const InitialValue& initial, Bytes bytes) {
    switch (initial.kind) {
        case InitialValue::Kind::Scalar: {
            const CValue& value = static_cast<const ScalarInitial&>(initial).value;
            if (value.GetSize() <= bytes.size()) static_cast<void>(value.GetRawData(bytes.data(), bytes.size()));
            break;
        }
        case InitialValue::Kind::Address: WriteAddress(static_cast<const AddressInitial&>(initial), bytes); break;
        case InitialValue::Kind::Array: WriteArray(static_cast<const ArrayInitial&>(initial), bytes); break;
        case InitialValue::Kind::Members:
            WriteDefault(initial.type, bytes);
            for (const InitialMember& member : static_cast<const MembersInitial&>(initial).members) {
                WriteInitialBytes(member.type, member.value, bytes.subspan(member.offset, member.type->size));
            }
            break;
    }
}

}  // namespace

CValue GetInitialScalar(const Type* type, const InitialValue* initial) {
    if (initial != nullptr && initial->kind == InitialValue::Kind::Scalar) {
        return static_cast<const ScalarInitial*>(initial)->value;
    }
    if (type->storage == ElementaryType::Undefined) return {};
    if (type->storage == ElementaryType::String || type->storage == ElementaryType::WString) {
        const auto* alias = type->kind == TypeKind::Alias ? static_cast<const AliasType*>(type) : nullptr;
        return alias == nullptr ? CValue("", type->storage) : GetInitialScalar(alias->target, alias->initial);
    }
    std::array<unsigned char, 8> bytes{};
    CValue value;
    if (initial == nullptr) WriteDefault(type, std::span(bytes).first(type->size));
    static_cast<void>(value.SetFromDataBytes(type->storage, bytes.data(), type->size));
    return value;
}

void WriteInitialBytes(const Type* type, const InitialValue* initial, Bytes bytes) {
    std::ranges::fill(bytes, static_cast<unsigned char>(0));
    if (initial == nullptr) {
        WriteDefault(type, bytes);
    } else {
        WriteValue(*initial, bytes);
    }
}

std::int64_t GetIntegerBits(const CValue& value) noexcept {
    const auto size = value.GetSize();
    if (size == 0 || size > sizeof(std::int64_t)) return 0;
    std::array<unsigned char, 8> bytes{};
    static_cast<void>(value.GetRawData(bytes.data(), bytes.size()));
    const bool isSigned = GetTypeInfo(value.GetType()).payload == PayloadKind::Signed;
    const unsigned char fill = isSigned && (bytes[size - 1] & 0x80U) != 0 ? 0xFF : 0;
    std::fill(bytes.begin() + size, bytes.end(), fill);
    return std::bit_cast<std::int64_t>(bytes);
}

}  // namespace tn61131::st
