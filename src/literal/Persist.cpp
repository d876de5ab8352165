#include <memory>
#include <vector>

#include "platform/BinaryStream.h"
#include "platform/StringObject.h"
#include "platform/Transcode.h"
#include "value/CompositeValue.h"
#include "value/TypeTable.h"
#include "value/ValueLiteral.h"

// A persisted value is its type code, one byte, and then
//   fixed-size types  their raw bytes
//   COMPOSITE         what CCompositeValue saves
//   STRING, WSTRING   from version 14 on a 7-bit encoded count of units and the units; before it a count of code points
//                     and the code points, each a UTF character
//   others            nothing

namespace {

constexpr unsigned short kFirstVersionWithUnits = 14;

// Reads a count of which each takes at least `bytesEach` bytes. One that the stream cannot hold fails the stream and
// comes out as 0, so that nothing is allocated for it.
std::uint32_t CheckCount(std::uint32_t count, std::size_t bytesEach, CBinaryInput& input) noexcept {
    if (count <= input.GetBytesLeft() / bytesEach) return count;
    input.SetFailed();
    return 0;
}

template <typename Unit>
void SaveUnits(std::span<const Unit> units, CBinaryOutput& output) {
    output.Write7BitEncodedInt(static_cast<std::uint32_t>(units.size()));
    output.WriteBytes(units.data(), units.size_bytes());
}

template <typename Unit>
std::vector<Unit> LoadUnits(CBinaryInput& input) {
    std::vector<Unit> units(CheckCount(input.Read7BitEncodedInt(), sizeof(Unit), input));
    input.ReadBytes(units.data(), units.size() * sizeof(Unit));
    return units;
}

void SaveCodePoints(std::span<const unsigned char> bytes, CBinaryOutput& output) {
    output.WriteUTFCharacter(tn_strlen_of_utf8(bytes.data(), static_cast<unsigned int>(bytes.size())));
    output.WriteBytes(bytes.data(), bytes.size());
}

void SaveCodePoints(std::span<const unsigned short> units, CBinaryOutput& output) {
    output.WriteUTFCharacter(tn_strlen_of_utf16(units.data(), static_cast<unsigned int>(units.size())));
    while (!units.empty()) {
        char32_t codePoint = 0;
        units = units.subspan(tn_decode_utf16(units.data(), static_cast<unsigned int>(units.size()), codePoint));
        output.WriteUTFCharacter(codePoint);
    }
}

std::vector<char32_t> LoadCodePoints(CBinaryInput& input) {
    std::vector<char32_t> codePoints(CheckCount(input.ReadUTF8Character(), 1, input));
    for (char32_t& codePoint : codePoints)
        codePoint = input.ReadUTF8Character();
    return codePoints;
}

template <typename Unit>
void SaveText(unsigned short version, std::span<const Unit> units, CBinaryOutput& output) {
    if (version < kFirstVersionWithUnits) {
        SaveCodePoints(units, output);
    } else {
        SaveUnits(units, output);
    }
}

Utf8String* LoadUtf8String(unsigned short version, CBinaryInput& input) {
    if (version < kFirstVersionWithUnits) {
        const std::vector<char32_t> codePoints = LoadCodePoints(input);
        return tn_utf8_from_utf32(codePoints.data(), static_cast<unsigned int>(codePoints.size()));
    }
    const std::vector<unsigned char> bytes = LoadUnits<unsigned char>(input);
    return Utf8StringCopy(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

Utf16String* LoadUtf16String(unsigned short version, CBinaryInput& input) {
    if (version < kFirstVersionWithUnits) {
        const std::vector<char32_t> codePoints = LoadCodePoints(input);
        return tn_utf16_from_utf32(codePoints.data(), static_cast<unsigned int>(codePoints.size()));
    }
    const std::vector<unsigned short> units = LoadUnits<unsigned short>(input);
    return Utf16StringCopy(units.data(), static_cast<unsigned int>(units.size()));
}

}  // namespace

bool CValueLiteral::SaveValue(unsigned short version, CBinaryOutput& output) const {
    output << static_cast<unsigned char>(type_);
    switch (type_) {
        case ElementaryType::String: SaveText(version, GetUnits(GetUtf8String()), output); return true;
        case ElementaryType::WString: SaveText(version, GetUnits(GetUtf16String()), output); return true;
        case ElementaryType::Composite: {
            const CCompositeValue* composite = GetComposite();
            (composite != nullptr ? *composite : CCompositeValue()).SaveCompositeValue(output);
            return true;
        }
        // Never persisted with its content.
        case ElementaryType::CompositeString: return true;
        default: break;
    }
    unsigned char raw[sizeof(payload_)];
    if (GetRawData(raw, sizeof(raw))) output.WriteBytes(raw, GetSize());
    return true;
}

bool CValueLiteral::LoadValue(unsigned short version, CBinaryInput& input) {
    ClearValue();
    unsigned char code = 0;
    input >> code;
    const auto type = static_cast<ElementaryType>(code);
    switch (type) {
        case ElementaryType::String: SetScalar(type, LoadUtf8String(version, input)); return true;
        case ElementaryType::WString: SetScalar(type, LoadUtf16String(version, input)); return true;
        case ElementaryType::Composite: {
            auto composite = std::make_unique<CCompositeValue>();
            composite->LoadCompositeValue(input);
            SetScalar(type, composite.release());
            return true;
        }
        default: break;
    }
    const TypeInfo& info = GetTypeInfo(type);
    if (info.type != type || info.size == 0) return true;
    unsigned char raw[sizeof(payload_)];
    input.ReadBytes(raw, info.size);
    return SetFromDataBytes(type, raw, info.size);
}
