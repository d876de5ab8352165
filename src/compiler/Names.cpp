#include "compiler/Names.h"

#include "assembler/SymbolType.h"

namespace tn61131::st {

NameTable::NameTable() {
    entries_.emplace_back();
}

NameId NameTable::Intern(std::string_view spelling) {
    std::string folded = FoldName(spelling);
    if (const auto found = byFolded_.find(folded); found != byFolded_.end()) return found->second;
    const auto name = static_cast<NameId>(entries_.size());
    const Entry& entry = entries_.emplace_back(Entry{std::move(folded), std::string(spelling)});
    byFolded_.emplace(entry.folded, name);
    return name;
}

NameId NameTable::Find(std::string_view spelling) const {
    const auto found = byFolded_.find(FoldName(spelling));
    return found == byFolded_.end() ? NameId::None : found->second;
}

}  // namespace tn61131::st
