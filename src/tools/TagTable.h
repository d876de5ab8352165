#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "compiler/Options.h"
#include "vm/DirectlyLocatedVariables.h"
#include "vm/MemoryBlock.h"

class JSONValue;
struct JSONMember;

namespace tn61131 {

/// A provider of directly located variables whose tags are plain bytes, each in a block of its own. Tags keep their
/// addresses until the table is cleared or destroyed.
class TagTable final : public CDirectlyLocatedVariables {
 public:
    using Tags = std::map<std::uint32_t, CMemoryBlock>;

    /// Adds a tag, or replaces its bytes.
    void SetTag(std::uint32_t id, const std::string& bytes);
    /// Replaces the content by that of a tags file: a JSON object from tag id (decimal text) to an object with the
    /// members
    ///   data    the bytes in hexadecimal; without it, zeros of the type's size
    ///   name    the address that programs use: %"name"
    ///   type    elementary type; needed with `name`
    ///   length  of STRING and WSTRING, which need it: units
    ///   access  "read-write", which it is without, or "read-only"
    ///   offset  where in the tag the variable lies, in bytes; 0 without
    /// False, the reason in `error`, when the text is none.
    [[nodiscard]] bool Load(std::string_view text, std::string& error);
    /// The tags that have names.
    [[nodiscard]] const std::vector<st::TagSymbol>& GetSymbols() const noexcept { return symbols_; }
    [[nodiscard]] const Tags& GetTags() const noexcept { return tags_; }
    /// Null when there is no such tag.
    [[nodiscard]] const CMemoryBlock* FindTag(std::uint32_t id) const;

    /// A tag is bytes: every known tag is described as an array of BYTE, writable unless the file says otherwise.
    bool GetTagType(unsigned int tagId, DirectlyLocatedType& type) const override;
    bool ResolveTagAddress(const PointerValue* pointer, unsigned int size, CMemoryRef& out) const override;

 private:
    bool LoadTag(const JSONMember& member, std::string& error);

    bool LoadSymbol(std::uint32_t id, const JSONValue& tag, std::string& error);

    Tags tags_;
    std::vector<st::TagSymbol> symbols_;
};

}  // namespace tn61131
