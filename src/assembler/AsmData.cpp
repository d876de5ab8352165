#include "assembler/AsmData.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/FormatText.h"

namespace {

constexpr std::int64_t kHighest32 = std::numeric_limits<std::uint32_t>::max();

/// `id`, or `id.offset` with an offset within the tag.
bool ReadTagPlace(CSourceCursor& cursor, AsmDeclaration& out) {
    if (!cursor.ReadUnsigned("a tag id", kHighest32, out.tagId)) return false;
    return !cursor.Take(".") || cursor.ReadUnsigned("an offset within the tag", 65535, out.offset);
}

/// A list goes on in the next line when a line ends with a comma.
void ContinueLine(CSourceCursor& cursor) {
    while (cursor.AtLineEnd() && cursor.NextLine()) {
    }
}

/// The number of a repetition `3(0)`, when one comes next.
bool TakeRepetition(CSourceCursor& cursor, std::int64_t& count) {
    CSourceCursor ahead = cursor;
    const char next = ahead.Peek();
    if (next < '0' || next > '9') return false;
    const std::string_view rest = ahead.PeekRest();
    const std::size_t digits = rest.find_first_not_of("0123456789");
    if (digits == std::string_view::npos || rest[digits] != '(') return false;
    return cursor.ReadInteger("a repetition count", 1, kHighest32, count) && cursor.Take("(");
}

}  // namespace

bool ReadDeclaration(CSourceCursor& cursor, const CStructTable& structs, AsmPlaceKind placeKind, AsmDeclaration& out) {
    out.start = cursor.Here();
    if (!cursor.ReadIdentifier("a name or a directive", out.name)) return false;
    if (cursor.Take(".")) {
        out.scope = std::move(out.name);
        if (!cursor.ReadIdentifier("a name", out.name)) return false;
    }
    out.located = cursor.TakeWord("AT");
    if (out.located) {
        const bool read = placeKind == AsmPlaceKind::Tag ? ReadTagPlace(cursor, out)
                                                         : cursor.ReadUnsigned("an offset", kHighest32, out.offset);
        if (!read) return false;
    }
    return cursor.Expect(":") && ReadType(cursor, structs, out.type);
}

bool ReadByteList(CSourceCursor& cursor, std::vector<unsigned char>& out) {
    do {
        if (!cursor.ReadUnsigned("a byte", 255, out.emplace_back())) return false;
    } while (cursor.Take(","));
    return cursor.ExpectLineEnd();
}

bool ReadHexBytes(CSourceCursor& cursor, std::vector<unsigned char>& out) {
    while (!cursor.AtLineEnd()) {
        const SourcePlace start = cursor.Here();
        const std::string_view digits = cursor.TakeHexDigits(2);
        if (digits.empty() || digits.size() % 2 != 0) return cursor.Fail(start, "pairs of hexadecimal digits expected");
        for (std::size_t at = 0; at < digits.size(); at += 2)
            out.push_back(static_cast<unsigned char>(std::stoul(std::string(digits.substr(at, 2)), nullptr, 16)));
    }
    return true;
}

bool CAsmData::ReadLine(CSourceCursor& cursor, const CStructTable& structs, CSymbolMap& symbols) {
    std::vector<unsigned char> bytes;
    if (cursor.Take(".hex")) return ReadHexBytes(cursor, bytes) && Append(cursor, bytes);
    if (cursor.Take(".byte")) return ReadByteList(cursor, bytes) && Append(cursor, bytes);
    if (cursor.Take(".space")) {
        std::uint32_t count = 0;
        if (!cursor.ReadUnsigned("a count of bytes", kHighest32, count) || !cursor.ExpectLineEnd()) return false;
        if (!Reserve(cursor, std::uint64_t{position_} + count)) return false;
        position_ += count;
        return true;
    }
    return ReadVariable(cursor, structs, symbols);
}

bool CAsmData::ReadVariable(CSourceCursor& cursor, const CStructTable& structs, CSymbolMap& symbols) {
    AsmDeclaration declaration;
    if (!ReadDeclaration(cursor, structs, AsmPlaceKind::Offset, declaration)) return false;
    const std::size_t offset = declaration.located ? declaration.offset : position_;
    const std::uint64_t end = offset + declaration.type.GetSize();
    if (!Reserve(cursor, end)) return false;
    position_ = static_cast<std::size_t>(end);
    SymbolVariable variable{.scope = declaration.scope,
                            .name = declaration.name,
                            .location = location_,
                            .offset = static_cast<std::uint32_t>(offset),
                            .type = declaration.type};
    if (!symbols.AddUniqueVariable(std::move(variable)))
        return cursor.Fail(declaration.start, FormatText("'%s' is declared already", declaration.name));
    if (cursor.Take(":=") && !ReadInitialValue(cursor, declaration.type, offset, false)) return false;
    return cursor.ExpectLineEnd();
}

bool CAsmData::Reserve(CSourceCursor& cursor, std::uint64_t size) {
    if (size > maxSize_) return cursor.Fail(FormatText("the data is larger than %u bytes", maxSize_));
    if (size > bytes_.size()) bytes_.resize(static_cast<std::size_t>(size));
    return true;
}

bool CAsmData::Append(CSourceCursor& cursor, const std::vector<unsigned char>& bytes) {
    if (!Reserve(cursor, std::uint64_t{position_} + bytes.size())) return false;
    std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(position_));
    position_ += bytes.size();
    return true;
}

bool CAsmData::ReadInitialValue(CSourceCursor& cursor, const SymbolType& type, std::size_t offset, bool inList) {
    if (type.IsArray()) return ReadArray(cursor, type, offset, inList);
    if (type.IsStruct()) return ReadStruct(cursor, *type.structure, offset);
    return ReadScalar(cursor, type, offset, inList);
}

/// The brackets may be left out where nothing else can follow.
bool CAsmData::ReadArray(CSourceCursor& cursor, const SymbolType& type, std::size_t offset, bool inList) {
    const bool bracket = cursor.Take("[");
    if (!bracket && inList) return cursor.Expect("[");
    return ReadElements(cursor, type, offset) && (!bracket || cursor.Expect("]"));
}

bool CAsmData::ReadElements(CSourceCursor& cursor, const SymbolType& type, std::size_t offset) {
    const std::uint64_t count = type.GetElementCount();
    const std::size_t size = static_cast<std::size_t>(type.element->GetSize());
    std::uint64_t done = 0;
    do {
        ContinueLine(cursor);
        if (done == count) return cursor.Fail(FormatText("the array has %llu element(s) only", count));
        std::uint64_t taken = 0;
        const std::size_t at = offset + static_cast<std::size_t>(done) * size;
        if (!ReadRepeated(cursor, *type.element, at, count - done, taken)) return false;
        done += taken;
    } while (cursor.Take(","));
    return true;
}

/// One element, or several equal ones as `3(0)`. `left` elements fit.
bool CAsmData::ReadRepeated(CSourceCursor& cursor, const SymbolType& element, std::size_t offset, std::uint64_t left,
                            std::uint64_t& taken) {
    const SourcePlace start = cursor.Here();
    std::int64_t count = 1;
    const bool repeated = TakeRepetition(cursor, count);
    taken = static_cast<std::uint64_t>(count);
    if (taken > left) return cursor.Fail(start, FormatText("only %llu element(s) are left in the array", left));
    const std::size_t pointers = namedPointers_.size();
    if (!ReadInitialValue(cursor, element, offset, true)) return false;
    if (!repeated) return true;
    if (namedPointers_.size() != pointers) return cursor.Fail(start, "the address of a variable cannot be repeated");
    const auto size = static_cast<std::size_t>(element.GetSize());
    for (std::size_t i = 1; i < taken; ++i)
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), size,
                    bytes_.begin() + static_cast<std::ptrdiff_t>(offset + i * size));
    return cursor.Expect(")");
}

/// `(member := value, ...)`; members that are not named stay zero.
bool CAsmData::ReadStruct(CSourceCursor& cursor, const SymbolStruct& structure, std::size_t offset) {
    if (!cursor.Expect("(")) return false;
    do {
        ContinueLine(cursor);
        const SourcePlace start = cursor.Here();
        std::string name;
        if (!cursor.ReadIdentifier("a member", name)) return false;
        const SymbolMember* member = structure.FindMember(name);
        if (member == nullptr) return cursor.Fail(start, FormatText("%s has no member '%s'", structure.name, name));
        if (!cursor.Expect(":=") || !ReadInitialValue(cursor, member->type, offset + member->offset, true))
            return false;
    } while (cursor.Take(","));
    return cursor.Expect(")");
}

bool CAsmData::ReadScalar(CSourceCursor& cursor, const SymbolType& type, std::size_t offset, bool inList) {
    const SourcePlace start = cursor.Here();
    AsmLiteral literal;
    if (!ReadLiteral(cursor, inList, type.elementary, literal)) return false;
    if (literal.bytes.size() > type.GetSize())
        return cursor.Fail(start, FormatText("the string is longer than %u", type.length));
    std::copy(literal.bytes.begin(), literal.bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
    if (!literal.pointer.path.empty()) namedPointers_.push_back({offset, std::move(literal.pointer)});
    return true;
}

void CAsmData::ResolvePointers(CSourceCursor& cursor, const AsmNames& names) {
    for (NamedPointer& named : namedPointers_) {
        if (!ResolvePointer(cursor, names, named.pointer)) continue;
        std::memcpy(bytes_.data() + named.offset, &named.pointer.value, sizeof(PointerValue));
    }
    namedPointers_.clear();
}
