#include "tools/Watch.h"

#include "tools/TagTable.h"
#include "value/Value.h"
#include "vm/MemoryBlock.h"

namespace tn61131 {
namespace {

bool HasFixedPlace(LocationKind location) {
    return location == LocationKind::Global || location == LocationKind::GlobalConstant ||
           location == LocationKind::Tag;
}

/// Collects the variables below a path: itself when it has a value of its own, else its members or elements.
class VariableLister {
 public:
    VariableLister(std::vector<WatchedVariable>& found, std::size_t maximum) : found_(found), maximum_(maximum) {}

    void Add(const std::string& path, SymbolReference reference) {
        if (found_.size() >= maximum_) return;
        const SymbolType type = reference.type;
        if (type.IsStruct()) {
            AddMembers(path, reference, *type.structure);
        } else if (type.IsArray()) {
            AddElements(path, reference, type);
        } else {
            found_.push_back({path, std::move(reference)});
        }
    }

 private:
    void AddMembers(const std::string& path, const SymbolReference& whole, const SymbolStruct& structure) {
        for (const SymbolMember& member : structure.members) {
            SymbolReference reference = whole;
            reference.offset += member.offset;
            reference.type = member.type;
            Add(path + "." + member.name, std::move(reference));
        }
    }

    void AddElements(const std::string& path, const SymbolReference& whole, const SymbolType& type) {
        const std::uint64_t count = type.GetElementCount();
        const std::uint64_t elementSize = type.element->GetSize();
        for (std::uint64_t i = 0; i < count && found_.size() < maximum_; ++i) {
            SymbolReference reference = whole;
            reference.offset += static_cast<std::uint32_t>(i * elementSize);
            reference.type = *type.element;
            Add(path + IndexText(type, i), std::move(reference));
        }
    }

    /// "[2,0]" of the element with a position in memory; the last dimension runs fastest.
    static std::string IndexText(const SymbolType& type, std::uint64_t position) {
        std::string text = "]";
        for (std::size_t i = type.dimensions.size(); i-- > 0;) {
            const SymbolType::Range& range = type.dimensions[i];
            const auto extent = static_cast<std::uint64_t>(std::int64_t{range.upper} - range.lower + 1);
            const std::int64_t index = range.lower + static_cast<std::int64_t>(position % extent);
            position /= extent;
            text.insert(0, (i == 0 ? "[" : ",") + std::to_string(index));
        }
        return text;
    }

    std::vector<WatchedVariable>& found_;
    std::size_t maximum_;
};

}  // namespace

std::vector<std::string> SplitWatchNames(std::string_view list) {
    std::vector<std::string> names(1);
    int openBrackets = 0;
    for (const char character : list) {
        if (character == '[') ++openBrackets;
        if (character == ']') --openBrackets;
        if (character == ',' && openBrackets <= 0) {
            names.emplace_back();
        } else {
            names.back() += character;
        }
    }
    std::erase(names, std::string());
    return names;
}

bool FindWatched(const CSymbolMap& map, const std::vector<std::string>& names, std::vector<WatchedVariable>& watched,
                 std::string& error) {
    VariableLister lister(watched, kMaxWatched + 1);
    for (const std::string& name : names) {
        SymbolReference reference;
        if (!map.Find(name, reference, error)) return false;
        if (!HasFixedPlace(reference.location)) {
            error = "'" + name + "' has no fixed place: it lives only while its function runs";
            return false;
        }
        lister.Add(name, std::move(reference));
        if (watched.size() > kMaxWatched) {
            error = "'" + name + "' makes more than " + std::to_string(kMaxWatched) + " watched variables";
            return false;
        }
    }
    return true;
}

std::vector<WatchedVariable> ListVariables(const CSymbolMap& map, std::size_t maximum) {
    std::vector<WatchedVariable> found;
    VariableLister lister(found, maximum);
    for (const SymbolVariable& variable : map.GetVariables()) {
        if (!HasFixedPlace(variable.location)) continue;
        const std::string path = variable.scope.empty() ? variable.name : variable.scope + "." + variable.name;
        lister.Add(path, {variable.location, variable.tagId, variable.offset, variable.type});
    }
    return found;
}

bool ReadWatched(const WatchedVariable& variable, const WatchMemory& memory, CValue& value) {
    const CMemoryBlock* block = nullptr;
    switch (variable.reference.location) {
        case LocationKind::Global: block = memory.globalData; break;
        case LocationKind::GlobalConstant: block = memory.constants; break;
        case LocationKind::Tag:
            block = memory.tags == nullptr ? nullptr : memory.tags->FindTag(variable.reference.tagId);
            break;
        default: break;
    }
    std::string error;
    return block != nullptr && CSymbolMap::ReadValue(variable.reference, *block, value, error);
}

}  // namespace tn61131
