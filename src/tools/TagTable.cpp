#include "tools/TagTable.h"

#include <charconv>

#include "platform/ErrorLog.h"
#include "platform/JSONValue.h"
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

}  // namespace

bool TagTable::Load(std::string_view text, std::string& error) {
    tags_.clear();
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
    } else if (data == nullptr || !data->IsString() || !ParseHexBytes(data->GetString(), bytes)) {
        error = "tag " + member.name + " has no hexadecimal 'data'";
    } else {
        SetTag(id, bytes);
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
    type = DirectlyLocatedType{.type = ElementaryType::Byte, .length = bytes->GetDataSize(), .readOnly = false};
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
