#include "platform/StringObject.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <new>
#include <vector>

#include "platform/Transcode.h"
#include "platform/UnitSearch.h"

namespace {

/// The string object of a unit type.
template <typename Unit>
struct ObjectType;
template <>
struct ObjectType<unsigned char> {
    using Type = Utf8String;
    static constexpr std::size_t kHeaderSize = offsetof(Utf8String, bytes);
};
template <>
struct ObjectType<unsigned short> {
    using Type = Utf16String;
    static constexpr std::size_t kHeaderSize = offsetof(Utf16String, units);
};
template <typename Unit>
using Object = typename ObjectType<Unit>::Type;

template <typename Unit>
using Units = std::span<const Unit>;

template <typename Unit>
Unit* MutableUnits(Object<Unit>* object) noexcept {
    return reinterpret_cast<Unit*>(reinterpret_cast<unsigned char*>(object) + ObjectType<Unit>::kHeaderSize);
}

/// An object whose units are not yet set; `count` is at most kMaxStringUnits.
template <typename Unit>
Object<Unit>* Allocate(std::size_t count) {
    const std::size_t size = ObjectType<Unit>::kHeaderSize + count * sizeof(Unit);
    void* const memory = ::operator new(std::max(size, sizeof(Object<Unit>)));
    auto* const object = new (memory) Object<Unit>;
    object->length = static_cast<unsigned short>(count);
    return object;
}

template <typename Unit>
Object<Unit>* AllocateZero(unsigned int count) {
    Object<Unit>* const object = Allocate<Unit>(std::min(count, kMaxStringUnits));
    std::memset(MutableUnits<Unit>(object), 0, object->length * sizeof(Unit));
    return object;
}

std::size_t FittingCount(Units<unsigned char> units) noexcept {
    return CutUtf8({reinterpret_cast<const char*>(units.data()), units.size()}, kMaxStringUnits);
}
std::size_t FittingCount(Units<unsigned short> units) noexcept {
    return std::min<std::size_t>(units.size(), kMaxStringUnits);
}

template <typename Unit>
Object<Unit>* MakeObject(Units<Unit> units) {
    const std::size_t count = FittingCount(units);
    Object<Unit>* const object = Allocate<Unit>(count);
    if (count != 0) std::memcpy(MutableUnits<Unit>(object), units.data(), count * sizeof(Unit));
    return object;
}

/// The pieces one behind the other.
template <typename Unit>
Object<Unit>* Join(std::initializer_list<Units<Unit>> pieces) {
    std::size_t total = 0;
    for (const Units<Unit> piece : pieces)
        total += piece.size();
    if (total > kMaxStringUnits) {
        std::vector<Unit> joined;
        joined.reserve(total);
        for (const Units<Unit> piece : pieces)
            joined.insert(joined.end(), piece.begin(), piece.end());
        return MakeObject(Units<Unit>(joined));
    }
    Object<Unit>* const object = Allocate<Unit>(total);
    Unit* out = MutableUnits<Unit>(object);
    for (const Units<Unit> piece : pieces) {
        if (!piece.empty()) std::memcpy(out, piece.data(), piece.size_bytes());
        out += piece.size();
    }
    return object;
}

/// `text` in the other encoding, cut to what an object holds.
Utf8String* Utf8FromUtf16(Units<unsigned short> text) {
    const std::size_t needed = CountUtf8Bytes(text.data(), text.size());
    if (needed > kMaxStringUnits) {
        std::vector<unsigned char> bytes(kMaxStringUnits);
        const unsigned int written =
            tn_utf8_from_utf16(bytes.data(), kMaxStringUnits, text.data(), static_cast<unsigned int>(text.size()));
        return MakeObject(Units<unsigned char>(bytes.data(), written));
    }
    Utf8String* const object = Allocate<unsigned char>(needed);
    (void)tn_utf8_from_utf16(MutableUnits<unsigned char>(object), object->length, text.data(),
                             static_cast<unsigned int>(text.size()));
    return object;
}

Utf16String* Utf16FromUtf8(Units<unsigned char> text) {
    const std::size_t needed = CountUtf16Units(text.data(), text.size());
    const char* const internal = reinterpret_cast<const char*>(text.data());
    const auto count = static_cast<unsigned int>(text.size());
    if (needed > kMaxStringUnits) {
        std::vector<unsigned short> units(kMaxStringUnits);
        const unsigned int written = tn_utf16_from_tnchar(units.data(), kMaxStringUnits, internal, count);
        return MakeObject(Units<unsigned short>(units.data(), written));
    }
    Utf16String* const object = Allocate<unsigned short>(needed);
    (void)tn_utf16_from_tnchar(MutableUnits<unsigned short>(object), object->length, internal, count);
    return object;
}

template <typename Unit>
void Free(Object<Unit>* object) noexcept {
    ::operator delete(object);
}

int CompareLengths(std::size_t left, std::size_t right) noexcept {
    return left < right ? -1 : left > right ? 1 : 0;
}

int Compare(Units<unsigned char> left, Units<unsigned char> right) noexcept {
    const std::size_t common = std::min(left.size(), right.size());
    const int order = common == 0 ? 0 : std::memcmp(left.data(), right.data(), common);
    return order != 0 ? order : CompareLengths(left.size(), right.size());
}

int Compare(Units<unsigned short> left, Units<unsigned short> right) noexcept {
    const std::size_t common = std::min(left.size(), right.size());
    // Little-endian units do not order as their bytes do, but they are equal as their bytes are.
    if (common == 0 || std::memcmp(left.data(), right.data(), common * sizeof left[0]) == 0)
        return CompareLengths(left.size(), right.size());
    const auto [atLeft, atRight] = std::mismatch(left.begin(), left.end(), right.begin());
    return *atLeft < *atRight ? -1 : 1;
}

/// Places in a text, 0-based; `end` is not included.
struct Range {
    std::size_t begin;
    std::size_t end;
};

std::size_t Clamp(std::int64_t value, std::size_t size) noexcept {
    return static_cast<std::size_t>(std::clamp<std::int64_t>(value, 0, static_cast<std::int64_t>(size)));
}

/// Those of the 1-based positions `position` to `position` + `length` - 1 that exist. An empty range still has its
/// place: where `position` is, or the nearer end of the text.
Range ExistingPositions(std::size_t size, int length, int position) noexcept {
    const std::int64_t begin = static_cast<std::int64_t>(position) - 1;
    const std::int64_t end = begin + std::max(length, 0);
    return {Clamp(begin, size), Clamp(end, size)};
}

template <typename Unit>
Object<Unit>* Left(Units<Unit> text, int length) {
    return MakeObject(text.first(Clamp(length, text.size())));
}

template <typename Unit>
Object<Unit>* Right(Units<Unit> text, int length) {
    return MakeObject(text.last(Clamp(length, text.size())));
}

template <typename Unit>
Object<Unit>* Mid(Units<Unit> text, int length, int position) {
    const Range range = ExistingPositions(text.size(), length, position);
    return MakeObject(text.subspan(range.begin, range.end - range.begin));
}

template <typename Unit>
Object<Unit>* Insert(Units<Unit> text, Units<Unit> inserted, int position) {
    const std::size_t at = Clamp(position, text.size());
    return Join<Unit>({text.first(at), inserted, text.subspan(at)});
}

template <typename Unit>
Object<Unit>* Replace(Units<Unit> text, Units<Unit> inserted, int length, int position) {
    const Range range = ExistingPositions(text.size(), length, position);
    return Join<Unit>({text.first(range.begin), inserted, text.subspan(range.end)});
}

template <typename Unit>
Object<Unit>* Delete(Units<Unit> text, int length, int position) {
    return Replace(text, Units<Unit>(), length, position);
}

int Find(Units<unsigned char> text, Units<unsigned char> wanted) noexcept {
    if (wanted.empty() || text.size() < wanted.size()) return -1;
    const void* const found = ::memmem(text.data(), text.size(), wanted.data(), wanted.size());
    return found == nullptr ? -1 : static_cast<int>(static_cast<const unsigned char*>(found) - text.data());
}

int Find(Units<unsigned short> text, Units<unsigned short> wanted) noexcept {
    if (wanted.empty() || text.size() < wanted.size()) return -1;
    const CUnitSearch<unsigned short> search(wanted);
    const std::size_t place = search.FindIn(text);
    return place == search.kNotFound ? -1 : static_cast<int>(place);
}

template <typename Unit>
Object<Unit>* GetElement(Units<Unit> text, Unit separator, int index) {
    if (index < 1) return Allocate<Unit>(0);
    auto begin = text.begin();
    for (;; --index) {
        const auto end = std::find(begin, text.end(), separator);
        if (index == 1) return MakeObject(Units<Unit>(begin, end));
        if (end == text.end()) return Allocate<Unit>(0);
        begin = end + 1;
    }
}

}  // namespace

Utf8String* Utf8StringAlloc(unsigned int count) {
    return AllocateZero<unsigned char>(count);
}

Utf8String* Utf8StringCopy(const unsigned char* data, unsigned int count) {
    return MakeObject(Units<unsigned char>(data, count));
}

Utf8String* Utf8StringCopy(const char* text, unsigned int length) {
    return Utf8StringCopy(reinterpret_cast<const unsigned char*>(text), length);
}

Utf8String* Utf8StringCopy(const unsigned short* units, unsigned int count) {
    return Utf8FromUtf16({units, count});
}

Utf8String* Utf8StringCopy(const Utf8String* text) {
    return MakeObject(GetUnits(text));
}

void Utf8StringFree(Utf8String* text) noexcept {
    Free<unsigned char>(text);
}

Utf16String* Utf16StringAlloc(unsigned int count) {
    return AllocateZero<unsigned short>(count);
}

Utf16String* Utf16StringCopy(const unsigned short* units, unsigned int count) {
    return MakeObject(Units<unsigned short>(units, count));
}

Utf16String* Utf16StringCopy(const unsigned char* data, unsigned int count) {
    return Utf16FromUtf8({data, count});
}

Utf16String* Utf16StringCopy(const char* text, unsigned int length) {
    return Utf16StringCopy(reinterpret_cast<const unsigned char*>(text), length);
}

Utf16String* Utf16StringCopy(const Utf16String* text) {
    return MakeObject(GetUnits(text));
}

void Utf16StringFree(Utf16String* text) noexcept {
    Free<unsigned short>(text);
}

int Utf8StringCompare(const Utf8String* left, const Utf8String* right) noexcept {
    return Compare(GetUnits(left), GetUnits(right));
}

int Utf16StringCompare(const Utf16String* left, const Utf16String* right) noexcept {
    return Compare(GetUnits(left), GetUnits(right));
}

unsigned int Utf8StringLen(const Utf8String* text) noexcept {
    return static_cast<unsigned int>(GetUnits(text).size());
}

unsigned int Utf16StringLen(const Utf16String* text) noexcept {
    return static_cast<unsigned int>(GetUnits(text).size());
}

Utf8String* Utf8StringLeft(const Utf8String* text, int length) {
    return Left(GetUnits(text), length);
}

Utf16String* Utf16StringLeft(const Utf16String* text, int length) {
    return Left(GetUnits(text), length);
}

Utf8String* Utf8StringRight(const Utf8String* text, int length) {
    return Right(GetUnits(text), length);
}

Utf16String* Utf16StringRight(const Utf16String* text, int length) {
    return Right(GetUnits(text), length);
}

Utf8String* Utf8StringMid(const Utf8String* text, int length, int position) {
    return Mid(GetUnits(text), length, position);
}

Utf16String* Utf16StringMid(const Utf16String* text, int length, int position) {
    return Mid(GetUnits(text), length, position);
}

Utf8String* Utf8StringInsert(const Utf8String* text, const Utf8String* inserted, int position) {
    return Insert(GetUnits(text), GetUnits(inserted), position);
}

Utf16String* Utf16StringInsert(const Utf16String* text, const Utf16String* inserted, int position) {
    return Insert(GetUnits(text), GetUnits(inserted), position);
}

Utf8String* Utf8StringDelete(const Utf8String* text, int length, int position) {
    return Delete(GetUnits(text), length, position);
}

Utf16String* Utf16StringDelete(const Utf16String* text, int length, int position) {
    return Delete(GetUnits(text), length, position);
}

Utf8String* Utf8StringReplace(const Utf8String* text, const Utf8String* inserted, int length, int position) {
    return Replace(GetUnits(text), GetUnits(inserted), length, position);
}

Utf16String* Utf16StringReplace(const Utf16String* text, const Utf16String* inserted, int length, int position) {
    return Replace(GetUnits(text), GetUnits(inserted), length, position);
}

int Utf8StringFind(const Utf8String* text, const Utf8String* wanted) noexcept {
    return Find(GetUnits(text), GetUnits(wanted));
}

int Utf16StringFind(const Utf16String* text, const Utf16String* wanted) noexcept {
    return Find(GetUnits(text), GetUnits(wanted));
}

Utf8String* Utf8StringGetElement(const Utf8String* text, unsigned char separator, int index) {
    return GetElement(GetUnits(text), separator, index);
}

Utf16String* Utf16StringGetElement(const Utf16String* text, unsigned short separator, int index) {
    return GetElement(GetUnits(text), separator, index);
}

Utf8String* Utf8StringConcat(const Utf8String* left, const Utf8String* right) {
    return Join<unsigned char>({GetUnits(left), GetUnits(right)});
}

Utf16String* Utf16StringConcat(const Utf16String* left, const Utf16String* right) {
    return Join<unsigned short>({GetUnits(left), GetUnits(right)});
}
