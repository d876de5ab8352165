#include "compiler/Names.h"

#include <algorithm>
#include <array>

#include "assembler/SymbolType.h"

namespace tn61131::st {

namespace {

constexpr std::size_t kFirstSlots = 4096;

constexpr std::array<unsigned char, 256> MakeFoldTable() {
    std::array<unsigned char, 256> table{};
    for (std::size_t c = 0; c < table.size(); ++c)
        table[c] = static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return table;
}
constexpr auto kFold = MakeFoldTable();

unsigned char Fold(char c) noexcept {
    return kFold[static_cast<unsigned char>(c)];
}

// FNV-1a of the folded name, its upper bits mixed into those that select the slot.
std::uint32_t HashOf(std::string_view spelling) noexcept {
    std::uint32_t hash = 2166136261U;
    for (const char c : spelling)
        hash = (hash ^ Fold(c)) * 16777619U;
    return hash ^ (hash >> 15);
}

bool IsFoldOf(std::string_view folded, std::string_view spelling) noexcept {
    return folded.size() == spelling.size() &&
           std::equal(folded.begin(), folded.end(), spelling.begin(),
                      [](char left, char right) { return static_cast<unsigned char>(left) == Fold(right); });
}

}  // namespace

NameTable::NameTable() : slots_(kFirstSlots) {
    entries_.emplace_back();
    for (std::size_t i = 1; i < kKeywords.size(); ++i)
        Intern(kKeywords[i].text);
}

std::size_t NameTable::FindSlot(std::string_view spelling, std::uint32_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].name != NameId::None) {
        if (slots_[at].hash == hash && IsFoldOf(GetFolded(slots_[at].name), spelling)) break;
        at = (at + 1) & mask;
    }
    return at;
}

void NameTable::Grow() {
    std::vector<Slot> old(slots_.size() * 2);
    old.swap(slots_);
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : old) {
        if (slot.name == NameId::None) continue;
        std::size_t at = slot.hash & mask;
        while (slots_[at].name != NameId::None)
            at = (at + 1) & mask;
        slots_[at] = slot;
    }
}

NameId NameTable::Intern(std::string_view spelling) {
    if (spelling.empty()) return NameId::None;
    const std::uint32_t hash = HashOf(spelling);
    std::size_t at = FindSlot(spelling, hash);
    if (const NameId known = slots_[at].name; known != NameId::None) {
        if (KeywordOf(known) != Keyword::None) KeepSpelling(known, spelling);
        return known;
    }
    const auto name = static_cast<NameId>(entries_.size());
    entries_.push_back(Entry{FoldName(spelling), std::string(spelling)});
    if (entries_.size() * 2 > slots_.size()) {
        Grow();
        at = FindSlot(spelling, hash);
    }
    slots_[at] = {hash, name};
    return name;
}

// Words that are keywords in some places only are spelled as the sources do, once they do.
void NameTable::KeepSpelling(NameId keyword, std::string_view spelling) {
    const auto number = static_cast<std::size_t>(keyword);
    if (isWritten_[number]) return;
    isWritten_[number] = true;
    entries_[number].spelling = spelling;
}

NameId NameTable::Find(std::string_view spelling) const {
    return spelling.empty() ? NameId::None : slots_[FindSlot(spelling, HashOf(spelling))].name;
}

}  // namespace tn61131::st
