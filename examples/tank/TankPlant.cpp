#include "TankPlant.h"

#include <algorithm>

#include "value/Value.h"
#include "vm/MemoryRef.h"

namespace {

constexpr unsigned int kMessageLength = 40;

struct TagRow {
    ElementaryType type;
    unsigned int sizeInBytes;
    bool readOnly;
};

/// Index = tag id; row 0 is no tag.
constexpr std::array<TagRow, TankPlant::kMessage + 1> kTags = {{
    {ElementaryType::Undefined, 0, true},
    {ElementaryType::Bool, 1, true},
    {ElementaryType::Bool, 1, true},
    {ElementaryType::Bool, 1, true},
    {ElementaryType::Int, 2, true},
    {ElementaryType::Bool, 1, false},
    {ElementaryType::Bool, 1, false},
    {ElementaryType::Bool, 1, false},
    {ElementaryType::String, 2 + kMessageLength, false},
}};

}  // namespace

TankPlant::TankPlant() {
    for (std::size_t id = 1; id < tags_.size(); ++id)
        tags_[id].AllocateNewData(kTags[id].sizeInBytes);
}

void TankPlant::UpdateInputs() {
    SetBool(kLowLevel, contents_ >= kLowSwitchAt);
    SetBool(kHighLevel, contents_ >= kHighSwitchAt);
    const long long raw = static_cast<long long>(contents_) * kRawFullScale / kCapacity;
    CMemoryRef(tags_[kRawLevel], 0).SetINTAtOffset(0, static_cast<short>(raw));
}

void TankPlant::Advance() {
    if (GetBool(kInlet)) contents_ += kInletPerScan;
    if (GetBool(kPump)) contents_ -= kPumpPerScan;
    contents_ = std::clamp(contents_, 0, kCapacity);
}

bool TankPlant::GetBool(Tag tag) const {
    return CMemoryRef(tags_[tag], 0).GetBOOLAtOffset(0);
}

void TankPlant::SetBool(Tag tag, bool value) {
    CMemoryRef(tags_[tag], 0).SetBOOLAtOffset(0, value);
}

std::string TankPlant::GetMessage() const {
    CValue value;
    std::string text;
    const CMemoryBlock& bytes = tags_[kMessage];
    if (bytes.GetValueAtOffset(0, ElementaryType::String, bytes.GetDataSize(), value)) value.GetStringValue(text);
    return text;
}

bool TankPlant::GetTagType(unsigned int tagId, DirectlyLocatedType& type) const {
    if (tagId == 0 || tagId >= kTags.size()) return false;
    const TagRow& row = kTags[tagId];
    type.SetTypeInfo(false, row.type, ElementaryType::Undefined, row.sizeInBytes, row.readOnly);
    return true;
}

bool TankPlant::ResolveTagAddress(const PointerValue* pointer, unsigned int size, CMemoryRef& out) const {
    // Of a tag's pointer, `offset` is the tag's id and `frame` the byte within it.
    const unsigned int id = pointer->offset;
    if (id == 0 || id >= tags_.size() || !tags_[id].IsDataWithinBlock(pointer->frame, size)) return false;
    out = CMemoryRef(tags_[id], pointer->frame);
    return true;
}
