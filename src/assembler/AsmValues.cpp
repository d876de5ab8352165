#include "assembler/AsmValues.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "assembler/TypeText.h"
#include "platform/ErrorLog.h"
#include "platform/FormatText.h"
#include "platform/StringObject.h"
#include "platform/TextOutput.h"
#include "value/TypeTable.h"
#include "value/Value.h"

namespace {

using enum ElementaryType;

constexpr std::int64_t kHighest16 = std::numeric_limits<std::uint16_t>::max();
constexpr std::int64_t kHighest32 = std::numeric_limits<std::uint32_t>::max();

constexpr std::uint32_t kIntegerTypes = TypeBit(SInt) | TypeBit(USInt) | TypeBit(Byte) | TypeBit(Int) | TypeBit(UInt) |
                                        TypeBit(Word) | TypeBit(DInt) | TypeBit(UDInt) | TypeBit(DWord) |
                                        TypeBit(LInt) | TypeBit(ULInt) | TypeBit(LWord);
constexpr std::uint32_t kCalendarTypes = TypeBit(TimeOfDay) | TypeBit(Date) | TypeBit(DateAndTime);

/// The words of an address text in front of its one or two numbers.
struct LocationForm {
    std::string_view name;
    LocationKind kind;
    std::string_view fieldWord;   ///< in front of the 16-bit field; empty for none
    std::string_view offsetWord;  ///< in front of the 32-bit field
    bool fieldFirst;
};

constexpr std::array kLocationForms = {
    LocationForm{"Global", LocationKind::Global, "", "", false},
    LocationForm{"Local", LocationKind::Local, "Frame", "Offset", true},
    LocationForm{"Temp", LocationKind::Temp, "Frame", "Offset", true},
    LocationForm{"Tag", LocationKind::Tag, "Offset", "Id", false},
    LocationForm{"GlobalConstant", LocationKind::GlobalConstant, "", "", false},
    LocationForm{"MemBlockPtr", LocationKind::MemBlockPtr, "Type", "Id", true},
};

bool ReadField(CSourceCursor& cursor, const LocationForm& form, PointerValue& value) {
    if (form.fieldWord.empty()) return true;
    if (!cursor.TakeWord(form.fieldWord)) return cursor.Fail(FormatText("'%s' expected", form.fieldWord));
    return cursor.ReadUnsigned("the number", kHighest16, value.frame);
}

bool ReadOffset(CSourceCursor& cursor, const LocationForm& form, PointerValue& value) {
    if (!form.offsetWord.empty() && !cursor.TakeWord(form.offsetWord))
        return cursor.Fail(FormatText("'%s' expected", form.offsetWord));
    return cursor.ReadUnsigned("the offset", kHighest32, value.offset);
}

/// Whether numbers follow, in the form that listings print.
bool IsNumeric(CSourceCursor cursor, const LocationForm& form) {
    const std::string_view word = form.fieldFirst ? form.fieldWord : form.offsetWord;
    if (!word.empty() && !cursor.TakeWord(word)) return false;
    const char next = cursor.Peek();
    return next >= '0' && next <= '9';
}

bool ReadLocation(CSourceCursor& cursor, const LocationForm& form, bool inList, AsmPointer& out) {
    out.value.location = form.kind;
    if (!cursor.Expect(":")) return false;
    out.place = cursor.Here();
    if (!IsNumeric(cursor, form)) {
        out.path = cursor.TakeLiteral(inList);
        return !out.path.empty() || cursor.Fail("an offset or the name of a variable expected");
    }
    if (form.fieldFirst) return ReadField(cursor, form, out.value) && ReadOffset(cursor, form, out.value);
    return ReadOffset(cursor, form, out.value) && ReadField(cursor, form, out.value);
}

/// `kind: offset`, both in numbers.
bool ReadRawLocation(CSourceCursor& cursor, PointerValue& value) {
    std::uint16_t kind = 0;
    if (!cursor.ReadUnsigned("a location kind", kHighest16, kind) || !cursor.Expect(":") ||
        !cursor.ReadUnsigned("the offset", kHighest32, value.offset))
        return false;
    value.location = static_cast<LocationKind>(kind);
    return true;
}

/// The prefix that listings give a TYPE; the machine's own parsers do not take it for one.
constexpr std::string_view kTypeWord = "TYPE#";

bool HasTypeWord(std::string_view text) noexcept {
    return IsSameName(text.substr(0, kTypeWord.size()), kTypeWord);
}

ElementaryType GuessType(std::string_view text) {
    if (text.empty()) return Undefined;
    if (HasTypeWord(text)) return Type;
    CValueType prefix;
    const std::string copy(text);
    const char* at = copy.c_str();
    prefix.ParseTypePrefix(at);
    if (prefix.IsDefined()) return prefix.GetType();
    if (text.front() == '\'') return String;
    if (text.front() == '"') return WString;
    if (IsSameName(text, "TRUE") || IsSameName(text, "FALSE")) return Bool;
    if (IsSameName(text, "NULL")) return Pointer;
    const bool number = text.find_first_of("0123456789") <= 1;
    if (!number || text.find('#') != std::string_view::npos) return Undefined;
    return text.find_first_of(".eE") == std::string_view::npos ? Undefined : LReal;
}

/// The text behind a prefix like DINT#.
std::string_view SkipPrefix(std::string_view text) noexcept {
    constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";
    const std::size_t end = text.find_first_not_of(kLetters);
    const bool prefix = end != std::string_view::npos && end > 0 && text[end] == '#';
    return prefix ? text.substr(end + 1) : text;
}

/// Sign, digits and an optional radix in front of further digits; what is too large for 64 bits is none.
bool IsInteger(std::string_view text) {
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) text.remove_prefix(1);
    const std::size_t mark = text.find('#');
    const std::string radixText(text.substr(0, mark == std::string_view::npos ? 0 : mark));
    const std::uint64_t radix = radixText == "2" ? 2 : radixText == "8" ? 8 : radixText == "16" ? 16 : 10;
    if (mark != std::string_view::npos) text.remove_prefix(mark + 1);
    std::uint64_t value = 0;
    for (const char c : text) {
        if (c == '_') continue;
        const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
        const bool digit = lower >= '0' && lower <= '9';
        if (!digit && (lower < 'a' || lower > 'f')) return false;
        const auto digitValue = static_cast<std::uint64_t>(digit ? lower - '0' : lower - 'a' + 10);
        if (digitValue >= radix) return false;
        if (value > (std::numeric_limits<std::uint64_t>::max() - digitValue) / radix) return false;
        value = value * radix + digitValue;
    }
    return !text.empty();
}

/// A type name, with a length in brackets or without.
bool IsTypeDescription(std::string_view text) {
    const std::size_t bracket = text.find('[');
    if (bracket == std::string_view::npos) return FindTypeCode(text) >= 0;
    const std::string_view length = text.substr(bracket + 1);
    const bool closed = length.size() > 1 && length.size() <= 6 && length.back() == ']';
    if (!closed || length.find_first_not_of("0123456789") != length.size() - 1) return false;
    return FindTypeCode(text.substr(0, bracket)) >= 0 && std::stoul(std::string(length)) <= kHighest16;
}

/// What the literal parsers of the machine would read to its end, without ignoring a rest.
bool IsWellFormed(ElementaryType type, std::string_view text) {
    const std::string_view body = SkipPrefix(text);
    if ((TypeBit(type) & kIntegerTypes) != 0) return IsInteger(body);
    if ((TypeBit(type) & kCalendarTypes) != 0)
        return !body.empty() && body.find_first_not_of("0123456789-:. ") == std::string_view::npos;
    if (type == Type) return IsTypeDescription(body);
    if (type == String || type == WString || type == Char || type == WChar)
        return !body.empty() && QuotedLength(body, 0) == body.size() && body.size() > 1 && body.front() == body.back();
    return true;
}

bool ReadPointerLiteral(CSourceCursor& cursor, bool inList, AsmLiteral& out) {
    cursor.Take("POINTER#");
    if (!ReadPointer(cursor, inList, out.pointer)) return false;
    out.type = Pointer;
    out.bytes.resize(sizeof(PointerValue));
    std::memcpy(out.bytes.data(), &out.pointer.value, sizeof(PointerValue));
    return true;
}

bool FailWithLog(CSourceCursor& cursor, SourcePlace place, const CErrorLog& log, std::string_view text) {
    if (!log.GetEntries().empty()) return cursor.Fail(place, log.GetEntries().front().text);
    return cursor.Fail(place, FormatText("'%s' is not a valid literal", text));
}

/// Whether a string may have lost its end: it is as long as a string can be, and its text is not the one of that value.
bool IsCut(const CValue& value, std::string_view text) {
    if (value.GetRawDataSize() < kMaxStringUnits) return false;
    const bool wide = value.GetType() == WString;
    if (value.GetRawDataSize() < (wide ? 2 : 1) * kMaxStringUnits + 2) return false;
    CTextOutputString canonical;
    value.GetAsText(nullptr, canonical);
    return canonical.GetText() != SkipPrefix(text);
}

/// The machine's parsers cut a fraction of a second that binary numbers do not have to the millisecond below. A text
/// that is the canonical one of the next millisecond means that.
void RoundToMillisecond(std::string_view text, CValue& value) {
    if ((TypeBit(value.GetType()) & kCalendarTypes) == 0 || value.GetType() == Date) return;
    CValue next = value;
    const std::uint64_t following = value.GetPayload<std::uint64_t>() + 1;
    next.SetInteger(static_cast<long long>(following), value.GetType());
    CTextOutputString canonical;
    next.GetAsText(nullptr, canonical);
    if (canonical.GetText() == SkipPrefix(text)) value = std::move(next);
}

bool StoreRawData(const CValue& value, AsmLiteral& out) {
    out.type = value.GetType();
    out.bytes.resize(value.GetRawDataSize());
    return value.GetRawData(out.bytes.data(), out.bytes.size());
}

}  // namespace

bool ReadPointer(CSourceCursor& cursor, bool inList, AsmPointer& out) {
    out = AsmPointer();
    out.place = cursor.Here();
    if (cursor.TakeWord("NULL")) return true;
    for (const LocationForm& form : kLocationForms) {
        if (cursor.TakeWord(form.name)) return ReadLocation(cursor, form, inList, out);
    }
    if (cursor.TakeWords("Invalid location")) {
        std::uint16_t kind = 0;
        if (!cursor.ReadUnsigned("a location kind", kHighest16, kind)) return false;
        out.value.location = static_cast<LocationKind>(kind);
        return true;
    }
    const char next = cursor.Peek();
    if (next >= '0' && next <= '9') return ReadRawLocation(cursor, out.value);
    return cursor.Fail("an address expected: Null, Global, Local, Temp, Tag, GlobalConstant or MemBlockPtr");
}

bool ResolvePointer(CSourceCursor& cursor, const AsmNames& names, AsmPointer& pointer) {
    if (pointer.path.empty()) return true;
    const LocationKind kind = pointer.value.location;
    const CSymbolMap* map = kind == LocationKind::Local  ? names.locals
                            : kind == LocationKind::Temp ? names.temps
                                                         : names.globals;
    SymbolReference reference;
    std::string error;
    if (map == nullptr) return cursor.Fail(pointer.place, "there are no names for this location here");
    if (!map->Find(pointer.path, reference, error)) return cursor.Fail(pointer.place, error);
    if (reference.location != kind)
        return cursor.Fail(pointer.place, FormatText("'%s' is in another location", pointer.path));
    pointer.value.offset = reference.offset;
    if (kind == LocationKind::Tag) {
        if (reference.offset > kHighest16) return cursor.Fail(pointer.place, "the offset within the tag is too large");
        pointer.value.frame = static_cast<std::uint16_t>(reference.offset);
        pointer.value.offset = reference.tagId;
    }
    pointer.path.clear();
    return true;
}

bool ReadLiteral(CSourceCursor& cursor, bool inList, ElementaryType wanted, AsmLiteral& out) {
    const SourcePlace place = cursor.Here();
    std::string text(CSourceCursor(cursor).TakeLiteral(inList));
    if (text.empty()) return cursor.Fail(place, "a literal expected");
    const ElementaryType type = wanted == Undefined ? GuessType(text) : wanted;
    if (type == Type && HasTypeWord(text)) text.erase(0, kTypeWord.size());
    if (type == Pointer) return ReadPointerLiteral(cursor, inList, out);
    (void)cursor.TakeLiteral(inList);
    CErrorLog log;
    CValue value;
    // Without a type only a number is left; the parser gives it the type of its size.
    const bool parsed = type == Undefined
                            ? value.StringToInteger(log, ErrorLocationNull::Get(), text.c_str(), Undefined)
                            : value.SetFromText(log, ErrorLocationNull::Get(), text, type);
    if (!parsed) return FailWithLog(cursor, place, log, text);
    if (wanted != Undefined && value.GetType() != wanted)
        return cursor.Fail(place, FormatText("the literal is a %s, a %s is expected", value.GetTypeName(false),
                                             CValueType(wanted).GetTypeName(false)));
    if (IsCut(value, text)) return cursor.Fail(place, "the string is too long");
    RoundToMillisecond(text, value);
    if (!IsWellFormed(value.GetType(), text) || !StoreRawData(value, out))
        return cursor.Fail(place, FormatText("'%s' is not a valid literal", text));
    return true;
}

bool ReadQuoted(CSourceCursor& cursor, std::string_view what, std::string& out) {
    const SourcePlace place = cursor.Here();
    const std::string text(cursor.TakeQuoted());
    if (text.empty()) return cursor.Fail(place, FormatText("%s in single quotes expected", what));
    CErrorLog log;
    CValue value;
    if (!IsWellFormed(String, text) || !value.StringToString(log, ErrorLocationNull::Get(), text.c_str()))
        return FailWithLog(cursor, place, log, text);
    if (IsCut(value, text)) return cursor.Fail(place, "the string is too long");
    const auto bytes = GetUnits(value.GetUtf8String());
    out.assign(bytes.begin(), bytes.end());
    return true;
}
