#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "vm/DirectlyLocatedVariables.h"
#include "vm/MemoryBlock.h"

struct JSONMember;

namespace tn61131 {

/// A provider of directly located variables whose tags are plain bytes, each in a block of its own. Tags keep their
/// addresses until the table is cleared or destroyed.
class TagTable final : public CDirectlyLocatedVariables {
 public:
    using Tags = std::map<std::uint32_t, CMemoryBlock>;

    /// Adds a tag, or replaces its bytes.
    void SetTag(std::uint32_t id, const std::string& bytes);
    /// Replaces the content by that of a tags file: a JSON object from tag id (decimal text) to an object whose member
    /// `data` holds the bytes in hexadecimal. False, the reason in `error`, when the text is none.
    [[nodiscard]] bool Load(std::string_view text, std::string& error);
    [[nodiscard]] const Tags& GetTags() const noexcept { return tags_; }
    /// Null when there is no such tag.
    [[nodiscard]] const CMemoryBlock* FindTag(std::uint32_t id) const;

    /// A tag is bytes, of no type: every known tag is described as an array of BYTE that can be written.
    bool GetTagType(unsigned int tagId, DirectlyLocatedType& type) const override;
    bool ResolveTagAddress(const PointerValue* pointer, unsigned int size, CMemoryRef& out) const override;

 private:
    bool LoadTag(const JSONMember& member, std::string& error);

    Tags tags_;
};

}  // namespace tn61131
