#pragma once

#include <bitset>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "compiler/Keywords.h"

namespace tn61131::st {

/// An identifier without regard to case (IEC 61131-3, 6.1.2): equal names have equal numbers. 0 is no name; the
/// keywords have the numbers of their rows in kKeywords.
enum class NameId : std::uint32_t { None = 0 };

/// The keyword that a name is; None for any other name.
[[nodiscard]] constexpr Keyword KeywordOf(NameId name) noexcept {
    const auto number = static_cast<std::uint32_t>(name);
    return number < kKeywords.size() ? static_cast<Keyword>(number) : Keyword::None;
}

/// All identifiers of a project.
class NameTable {
 public:
    NameTable();
    /// The number of a name in any spelling. The first spelling is kept for messages.
    NameId Intern(std::string_view spelling);
    /// The number of a name that is in the table already, else None.
    [[nodiscard]] NameId Find(std::string_view spelling) const;
    /// Lower-case form (ASCII).
    [[nodiscard]] std::string_view GetFolded(NameId name) const {
        return entries_[static_cast<std::uint32_t>(name)].folded;
    }
    /// As it was first written.
    [[nodiscard]] std::string_view GetSpelling(NameId name) const {
        return entries_[static_cast<std::uint32_t>(name)].spelling;
    }
    [[nodiscard]] std::uint32_t GetCount() const noexcept { return static_cast<std::uint32_t>(entries_.size()); }

 private:
    struct Entry {
        std::string folded;
        std::string spelling;
    };
    /// A place of the hash table; free where `name` is None.
    struct Slot {
        std::uint32_t hash = 0;
        NameId name = NameId::None;
    };
    /// The slot that holds the name, or the free one where it belongs.
    [[nodiscard]] std::size_t FindSlot(std::string_view spelling, std::uint32_t hash) const;
    void Grow();
    void KeepSpelling(NameId keyword, std::string_view spelling);

    std::deque<Entry> entries_;                ///< index = number; addresses are stable
    std::bitset<kKeywords.size()> isWritten_;  ///< keywords that a source has
    std::vector<Slot> slots_;                  ///< a power of two of them, open addressing, at most half full
};

}  // namespace tn61131::st
