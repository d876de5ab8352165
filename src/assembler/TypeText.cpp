#include "assembler/TypeText.h"

#include <limits>

#include "assembler/SourceCursor.h"
#include "platform/FormatText.h"
#include "value/ValueType.h"

namespace {

constexpr std::int64_t kLowestBound = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t kHighestBound = std::numeric_limits<std::int32_t>::max();
/// Longer strings do not fit the 16-bit count in front of them.
constexpr std::int64_t kMostUnits = 65535;

std::map<std::string, int, std::less<>> CollectTypeNames() {
    std::map<std::string, int, std::less<>> names;
    for (int code = 0; code <= static_cast<int>(ElementaryType::Any); ++code) {
        const CValueType type(static_cast<ElementaryType>(code));
        for (const bool shortForm : {false, true})
            names.emplace(FoldName(type.GetTypeName(shortForm)), code);
    }
    names.erase("unknown");
    return names;
}

bool ReadRange(CSourceCursor& cursor, SymbolType::Range& out) {
    std::int64_t lower = 0;
    std::int64_t upper = 0;
    const SourcePlace start = cursor.Here();
    if (!cursor.ReadInteger("a lower bound", kLowestBound, kHighestBound, lower) || !cursor.Expect("..") ||
        !cursor.ReadInteger("an upper bound", kLowestBound, kHighestBound, upper))
        return false;
    if (upper < lower) return cursor.Fail(start, "the upper bound is below the lower bound");
    out = {static_cast<std::int32_t>(lower), static_cast<std::int32_t>(upper)};
    return true;
}

class CTypeReader {
 public:
    CTypeReader(CSourceCursor& cursor, const CStructTable& structs) noexcept : cursor_(cursor), structs_(structs) {}

    bool Read(unsigned int depth, SymbolType& out) {
        const SourcePlace start = cursor_.Here();
        if (depth > SymbolType::kMaxDepth) return cursor_.Fail("the type is nested too deeply");
        std::string name;
        if (!cursor_.ReadIdentifier("a type", name)) return false;
        if (IsSameName(name, "ARRAY")) return ReadArray(start, depth, out);
        if (IsSameName(name, "BYTES")) return ReadBytes(out);
        return ReadNamed(start, name, out);
    }

 private:
    bool ReadArray(SourcePlace start, unsigned int depth, SymbolType& out) {
        std::vector<SymbolType::Range> ranges;
        if (!cursor_.Expect("[")) return false;
        do {
            if (!ReadRange(cursor_, ranges.emplace_back())) return false;
        } while (cursor_.Take(","));
        if (!cursor_.Expect("]")) return false;
        if (!cursor_.TakeWord("OF")) return cursor_.Fail("'OF' expected");
        SymbolType element;
        if (!Read(depth + 1, element)) return false;
        out = SymbolType::MakeArray(std::move(ranges), std::move(element));
        if (out.GetDepth() > SymbolType::kMaxDepth) return cursor_.Fail(start, "the type is nested too deeply");
        return CheckSize(start, out);
    }

    bool ReadBytes(SymbolType& out) {
        std::int64_t count = 0;
        const bool read =
            cursor_.Expect("[") && cursor_.ReadInteger("a count", 1, kHighestBound, count) && cursor_.Expect("]");
        if (!read) return false;
        out = SymbolType::MakeArray({{0, static_cast<std::int32_t>(count - 1)}},
                                    SymbolType::MakeElementary(ElementaryType::Byte));
        return true;
    }

    bool ReadNamed(SourcePlace start, const std::string& name, SymbolType& out) {
        if (auto structure = structs_.Find(name); structure != nullptr) {
            out = SymbolType::MakeStruct(std::move(structure));
            return true;
        }
        if (auto enumeration = structs_.FindEnum(name); enumeration != nullptr) {
            out = SymbolType::MakeEnum(std::move(enumeration));
            return true;
        }
        const ElementaryType type = CValueType::FindType(name);
        out = SymbolType::MakeElementary(type);
        if (out.IsString()) return ReadStringLength(out);
        if (out.GetSize() != 0) return true;
        return cursor_.Fail(start, FormatText("unknown type '%s'", name));
    }

    bool ReadStringLength(SymbolType& out) {
        out.length = kDefaultStringLength;
        const bool bracket = cursor_.Take("[");
        if (!bracket && !cursor_.Take("(")) return true;
        std::int64_t units = 0;
        if (!cursor_.ReadInteger("a string length", 0, kMostUnits, units)) return false;
        out.length = static_cast<std::uint16_t>(units);
        return cursor_.Expect(bracket ? "]" : ")");
    }

    bool CheckSize(SourcePlace start, const SymbolType& type) {
        if (type.GetSize() <= std::numeric_limits<std::uint32_t>::max()) return true;
        return cursor_.Fail(start, "the type is too large");
    }

    CSourceCursor& cursor_;
    const CStructTable& structs_;
};

}  // namespace

bool CStructTable::Add(std::shared_ptr<const SymbolStruct> structure) {
    std::string name = FoldName(structure->name);
    return !enums_.contains(name) && structs_.emplace(std::move(name), std::move(structure)).second;
}

bool CStructTable::Add(std::shared_ptr<const SymbolEnum> enumeration) {
    std::string name = FoldName(enumeration->name);
    return !structs_.contains(name) && enums_.emplace(std::move(name), std::move(enumeration)).second;
}

std::shared_ptr<const SymbolEnum> CStructTable::FindEnum(std::string_view name) const {
    const auto found = enums_.find(FoldName(name));
    return found == enums_.end() ? nullptr : found->second;
}

std::shared_ptr<const SymbolStruct> CStructTable::Find(std::string_view name) const {
    const auto found = structs_.find(FoldName(name));
    return found != structs_.end() ? found->second : FindStandardBlockStruct(name);
}

int FindTypeCode(std::string_view name) {
    static const auto kNames = CollectTypeNames();
    const auto found = kNames.find(FoldName(name));
    return found == kNames.end() ? -1 : found->second;
}

bool ReadType(CSourceCursor& cursor, const CStructTable& structs, SymbolType& out) {
    return CTypeReader(cursor, structs).Read(0, out);
}
