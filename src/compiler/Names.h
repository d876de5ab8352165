#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tn61131::st {

/// An identifier without regard to case (IEC 61131-3, 6.1.2): equal names have equal numbers. 0 is no name.
enum class NameId : std::uint32_t { None = 0 };

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
    std::deque<Entry> entries_;  ///< index = number; addresses are stable
    std::unordered_map<std::string_view, NameId> byFolded_;
};

}  // namespace tn61131::st
