#include "tools/TagTable.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "assembler/SymbolType.h"
#include "platform/ErrorLog.h"
#include "platform/JSONValue.h"
#include "value/TypeTable.h"
#include "vm/MemoryRef.h"

namespace tn61131 {
namespace {

/// Digits of a base that fill the whole text.
template <typename Number>
bool ParseDigits(std::string_view text, int base, Number& number) {
    const char* const end = text.data() + text.size();
    const auto [stop, status] = std::from_chars(text.data(), end, number, base);
    return status == std::errc() && stop == end;
}

bool ParseHexBytes(std::string_view text, std::string& bytes) {
    if (text.size() % 2 != 0) return false;
    for (; !text.empty(); text.remove_prefix(2)) {
        unsigned char byte = 0;
        if (!ParseDigits(text.substr(0, 2), 16, byte)) return false;
        bytes += static_cast<char>(byte);
    }
    return true;
}

// What STRING and WSTRING take beside their units: the largest that fits in 65535 bytes.
constexpr double kMaxStringLength = 65533;
constexpr double kMaxWStringLength = 32766;

bool IsText(ElementaryType type) {
    return type == ElementaryType::String || type == ElementaryType::WString;
}

/// A whole number in the range. Null is none.
bool IsNumberIn(const JSONValue* value, double lowest, double highest) {
    if (value == nullptr || !value->IsNumber()) return false;
    const double number = value->GetNumber();
    return number >= lowest && number <= highest && number == std::floor(number);
}

std::size_t SizeOf(const st::TagSymbol& symbol) {
    if (symbol.type == ElementaryType::String) return symbol.length + std::size_t{2};
    if (symbol.type == ElementaryType::WString) return (symbol.length + std::size_t{1}) * 2;
    return GetTypeInfo(symbol.type).size;
}

ElementaryType FindType(const JSONValue* name) {
    for (const TypeInfo& row : kTypeTable) {
        const bool isUsable = row.size != 0 || IsText(row.type);
        if (name != nullptr && isUsable && IsSameName(row.name, name->GetString())) return row.type;
    }
    return ElementaryType::Undefined;
}

}  // namespace

bool TagTable::Load(std::string_view text, std::string& error) {
    tags_.clear();
    symbols_.clear();
    COutputLogString log;
    JSONParseContext context(text, log);
    JSONValue file;
    if (!file.Parse(context)) {
        error = log.GetText().substr(0, log.GetText().find('\n'));
        return false;
    }
    if (!file.IsObject()) {
        error = "the file holds no object";
        return false;
    }
    for (const JSONMember& member : file.GetMembers()) {
        if (LoadTag(member, error)) continue;
        tags_.clear();
        symbols_.clear();
        return false;
    }
    return true;
}

void TagTable::SetTag(std::uint32_t id, const std::string& bytes) {
    tags_[id].CopyData(static_cast<unsigned int>(bytes.size()), reinterpret_cast<const unsigned char*>(bytes.data()));
}

bool TagTable::LoadTag(const JSONMember& member, std::string& error) {
    std::uint32_t id = 0;
    const JSONValue* data = member.value.Find("data");
    std::string bytes;
    if (!ParseDigits(member.name, 10, id)) {
        error = "'" + member.name + "' is no tag id";
        return false;
    }
    if (member.value.Find("name") != nullptr && !LoadSymbol(id, member.value, error)) {
        error = "tag " + member.name + ": " + error;
        return false;
    }
    const bool isNamed = !symbols_.empty() && symbols_.back().tagId == id;
    const std::size_t needed = isNamed ? symbols_.back().offset + SizeOf(symbols_.back()) : 0;
    if (data == nullptr && isNamed) {
        bytes.assign(needed, '\0');
    } else if (data == nullptr || !data->IsString() || !ParseHexBytes(data->GetString(), bytes)) {
        error = "tag " + member.name + " has no hexadecimal 'data'";
        return false;
    } else if (bytes.size() < needed) {
        error = "tag " + member.name + ": 'data' has " + std::to_string(bytes.size()) + " bytes, the variable needs " +
                std::to_string(needed);
        return false;
    }
    SetTag(id, bytes);
    return true;
}

bool TagTable::LoadSymbol(std::uint32_t id, const JSONValue& tag, std::string& error) {
    st::TagSymbol symbol{.address = tag.Find("name")->GetString(), .tagId = id};
    symbol.type = FindType(tag.Find("type"));
    const JSONValue* length = tag.Find("length");
    const JSONValue* access = tag.Find("access");
    const JSONValue* offset = tag.Find("offset");
    const double highest = symbol.type == ElementaryType::String ? kMaxStringLength : kMaxWStringLength;
    if (symbol.address.empty()) {
        error = "'name' is no text";
    } else if (std::any_of(symbols_.begin(), symbols_.end(),
                           [&](const st::TagSymbol& other) { return other.address == symbol.address; })) {
        error = "another tag has the name '" + symbol.address + "'";
    } else if (symbol.type == ElementaryType::Undefined) {
        error = "'type' is no elementary type";
    } else if (IsText(symbol.type) && !IsNumberIn(length, 1, highest)) {
        error = "'length' is no whole number from 1 to " + std::to_string(static_cast<int>(highest));
    } else if (!IsText(symbol.type) && length != nullptr) {
        error = "'length' is for STRING and WSTRING only";
    } else if (access != nullptr && access->GetString() != "read-only" && access->GetString() != "read-write") {
        error = "'access' is neither \"read-only\" nor \"read-write\"";
    } else if (offset != nullptr && !IsNumberIn(offset, 0, 0xFFFF)) {
        error = "'offset' is no whole number from 0 to 65535";
    } else {
        symbol.readOnly = access != nullptr && access->GetString() == "read-only";
        if (IsText(symbol.type)) symbol.length = static_cast<std::uint16_t>(length->GetNumber());
        if (offset != nullptr) symbol.offset = static_cast<std::uint16_t>(offset->GetNumber());
        symbols_.push_back(std::move(symbol));
        return true;
    }
    return false;
}

const CMemoryBlock* TagTable::FindTag(std::uint32_t id) const {
    const auto found = tags_.find(id);
    return found == tags_.end() ? nullptr : &found->second;
}

bool TagTable::GetTagType(unsigned int tagId, DirectlyLocatedType& type) const {
    const CMemoryBlock* bytes = FindTag(tagId);
    if (bytes == nullptr) return false;
    const bool isReadOnly = std::any_of(symbols_.begin(), symbols_.end(), [&](const st::TagSymbol& symbol) {
        return symbol.tagId == tagId && symbol.readOnly;
    });
    type = DirectlyLocatedType{.type = ElementaryType::Byte, .length = bytes->GetDataSize(), .readOnly = isReadOnly};
    return true;
}

bool TagTable::ResolveTagAddress(const PointerValue* pointer, unsigned int size, CMemoryRef& out) const {
    const CMemoryBlock* bytes = FindTag(pointer->offset);
    // In a tag's pointer the field of the frame is the offset within the tag.
    if (bytes == nullptr || !bytes->IsDataWithinBlock(pointer->frame, size)) return false;
    out = CMemoryRef(*bytes, pointer->frame);
    return true;
}

}  // namespace tn61131
