// Addresses of places, loads and stores.
#include <cassert>

#include "compiler/RoutineChecks.h"
#include "value/TypeTable.h"

namespace tn61131::st {

namespace {

constexpr std::uint32_t kPointerSize = 8;

/// Bytes of one unit of a text.
std::uint32_t GetUnitSize(const Type* text) noexcept {
    return Strip(text)->storage == ElementaryType::WString ? 2 : 1;
}

}  // namespace

const Variable& RoutineGenerator::FollowAlias(const Variable& variable, std::uint32_t& offset) noexcept {
    const Variable* at = &variable;
    while (at->aliasOf != nullptr) {
        offset += at->aliasOffset;
        at = at->aliasOf;
    }
    return *at;
}

RoutineGenerator::Address RoutineGenerator::ResolveVariable(const Variable& variable) const {
    std::uint32_t offset = 0;
    const Storage& storage = FollowAlias(variable, offset).storage;
    offset += storage.offset;
    Address address;
    switch (storage.kind) {
        case StorageKind::Global: {
            const Pou* program = pou_->container != nullptr ? pou_->container : pou_;
            const bool isOwn = storage.offset - program->instanceOffset < program->instanceSize;
            return MakeStatic(LocationKind::Global, isOwn ? offset + routine_.instanceDelta : offset);
        }
        case StorageKind::Constant: return MakeStatic(LocationKind::GlobalConstant, offset);
        case StorageKind::Instance: return MakeStatic(LocationKind::Local, offset);
        case StorageKind::Temp: return MakeStatic(LocationKind::Temp, offset);
        case StorageKind::SlotPointer:
            if (static_cast<std::int64_t>(storage.offset) == frame_->instanceSlot)
                return MakeStatic(LocationKind::Local, offset - storage.offset);
            return AtOffset(MakeSlotPointer(storage.offset), offset - storage.offset);
        case StorageKind::InstancePointer:
            address.base = BaseKind::InstancePointer;
            address.pointerOffset = storage.offset;
            address.offset = offset - storage.offset;
            return address;
        case StorageKind::Tag:
            address.base = BaseKind::Tag;
            address.tagId = storage.tagId;
            address.offset = offset;
            return address;
        case StorageKind::Unassigned:
        case StorageKind::None:
        case StorageKind::Slot: break;
    }
    assert(false);
    return address;
}

RoutineGenerator::Address RoutineGenerator::Resolve(const Place& place) {
    switch (place.kind) {
        case PlaceKind::Variable: {
            Address address = ResolveVariable(*static_cast<const VariablePlace&>(place).variable);
            address.firstTerm = static_cast<std::uint32_t>(terms_.size());
            return address;
        }
        case PlaceKind::Member: {
            const auto& member = static_cast<const MemberPlace&>(place);
            return AtOffset(Resolve(*member.base), member.offset);
        }
        case PlaceKind::Element: {
            const auto& element = static_cast<const ElementPlace&>(place);
            Address address = Resolve(*element.base);
            AddIndexTerms(element, address);
            return address;
        }
        case PlaceKind::Deref: return ResolveDeref(static_cast<const DerefPlace&>(place));
        case PlaceKind::Char: {
            const auto& unit = static_cast<const CharPlace&>(place);
            Address address = Resolve(*unit.base);
            const std::uint32_t size = GetUnitSize(unit.base->type);
            address.offset += kTextHeader - size;
            AddIndex(address, {.index = unit.index,
                               .scale = size,
                               .bounds = {1, GetTextCapacity(GetStoredType(*unit.base))},
                               .isChecked = true,
                               .isBounded = false});
            address.range = place.range;
            return address;
        }
        case PlaceKind::This: {
            Address address = MakeStatic(LocationKind::Local, 0);
            address.firstTerm = static_cast<std::uint32_t>(terms_.size());
            return address;
        }
        case PlaceKind::Kept: {
            Address address = MakeSlotPointer(static_cast<const KeptPlace&>(place).slot);
            address.firstTerm = static_cast<std::uint32_t>(terms_.size());
            return address;
        }
        case PlaceKind::Result: break;
    }
    Address address;
    address.base = BaseKind::Result;
    address.expr = static_cast<const ResultPlace&>(place).call;
    address.firstTerm = static_cast<std::uint32_t>(terms_.size());
    return address;
}

RoutineGenerator::Address RoutineGenerator::ResolveDeref(const DerefPlace& place) {
    Address address;
    if (place.pointer->kind == ExprKind::Address) {
        address = Resolve(*static_cast<const AddressExpr&>(*place.pointer).place);
    } else {
        address.base = BaseKind::Deref;
        address.expr = place.pointer;
        address.firstTerm = static_cast<std::uint32_t>(terms_.size());
    }
    if (place.pointer->kind != ExprKind::Address && LeadsToCharacters(place.type)) address.offset -= kTextHeader;
    if (place.index != nullptr) {
        AddIndex(
            address,
            {.index = place.index, .scale = place.type->size, .bounds = {}, .isChecked = false, .isBounded = false});
    }
    return address;
}

void RoutineGenerator::AddIndexTerms(const ElementPlace& place, Address& address) {
    const std::vector<ArrayBound>& bounds = place.array->bounds;
    std::int64_t stride = place.array->element->size;
    for (const ArrayBound& bound : bounds)
        stride *= bound.GetCount();
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        stride /= bounds[i].GetCount();
        address.offset -= static_cast<std::uint32_t>(bounds[i].lower * stride);
        AddIndex(address, {.index = place.indices[i],
                           .scale = stride,
                           .bounds = {bounds[i].lower, bounds[i].upper},
                           .isChecked = place.checked && !place.array->isOpen,
                           .isBounded = !place.array->isOpen});
    }
    address.range = place.range;
}

/// Offsets count modulo 2^32, so a constant may be taken out of a product that is computed later.
void RoutineGenerator::AddIndex(Address& address, IndexTerm term) {
    if (const std::optional<Int128> constant = GetConstantNumber(*term.index)) {
        address.offset += static_cast<std::uint32_t>(*constant * term.scale);
        return;
    }
    if (term.isChecked) {
        const std::optional<NumberRange> range = GetRange(*term.index);
        const bool isInside = range && term.bounds.Contains(*range);
        term.isBounded = isInside;
        term.isChecked = !isInside && project_.options.switches.bounds != Switches::Bounds::Off;
    }
    terms_.push_back(term);
    ++address.termCount;
}

std::optional<std::uint32_t> RoutineGenerator::FindSlot(const Place& place) {
    if (place.kind != PlaceKind::Variable) return std::nullopt;
    std::uint32_t offset = 0;
    const Variable& variable = FollowAlias(*static_cast<const VariablePlace&>(place).variable, offset);
    if (variable.storage.kind != StorageKind::Slot) return std::nullopt;
    return variable.storage.offset;
}

// --- code ---

void RoutineGenerator::EmitOffset(std::uint32_t offset) {
    if (offset == 0) return;
    code_.Push();
    code_.LoadInteger(ElementaryType::UDInt, offset);
    code_.Binary(BinaryOperator::Add);
}

void RoutineGenerator::EmitOwnInstance() {
    assert(frame_->instanceSlot >= 0);
    code_.LoadStack(static_cast<std::uint32_t>(frame_->instanceSlot));
}

void RoutineGenerator::EmitBase(const Address& address, Rooted rooted) {
    switch (address.base) {
        case BaseKind::Static:
            if (address.location != LocationKind::Local || rooted == Rooted::No) {
                code_.LoadAddr(address.location, address.offset);
                return;
            }
            EmitOwnInstance();
            break;
        case BaseKind::Tag: code_.LoadTagAddr(static_cast<std::uint16_t>(address.offset), address.tagId); return;
        case BaseKind::SlotPointer: LoadEntry(address.slot); break;
        case BaseKind::InstancePointer:
            code_.LoadAddr(LocationKind::Local, address.pointerOffset);
            code_.PointerLoad(ElementaryType::Pointer, kPointerSize);
            break;
        case BaseKind::Deref:
        case BaseKind::Result: Value(*address.expr); break;
    }
    EmitOffset(address.offset);
}

void RoutineGenerator::EmitAddress(const Address& address, Rooted rooted) {
    // A test in front of everything else finds the working entry free.
    const bool isTrap = project_.options.switches.bounds == Switches::Bounds::Trap;
    const bool hasEffects = address.base == BaseKind::Deref || address.base == BaseKind::Result;
    const auto isTestedFirst = [&](const IndexTerm& term) {
        return isTrap && !hasEffects && term.isChecked && IsCheapIndex(*term.index);
    };
    const std::uint32_t end = address.firstTerm + address.termCount;
    for (std::uint32_t i = address.firstTerm; i < end; ++i) {
        const IndexTerm term = terms_[i];
        if (!isTestedFirst(term)) continue;
        EmitTrapOutside(term.index->type->storage, term.bounds, address.range, [&] { Value(*term.index); });
    }
    EmitBase(address, rooted);
    for (std::uint32_t i = address.firstTerm; i < end; ++i) {
        const IndexTerm term = terms_[i];
        code_.Push();
        EmitTerm(term, isTestedFirst(term), address.range);
        code_.Binary(BinaryOperator::Add);
    }
}

void RoutineGenerator::EmitTerm(const IndexTerm& term, bool isTested, SourceRange range) {
    ElementaryType type = term.index->type->storage;
    if (term.isChecked && !isTested) {
        if (project_.options.switches.bounds == Switches::Bounds::Clamp) {
            type = EmitClamped(type, term.bounds, [&] { Value(*term.index); });
        } else {
            Value(*term.index);
            const std::uint32_t index = code_.GetTopIndex();
            code_.Push();
            EmitTrapOutside(type, term.bounds, range, [&] { LoadEntry(index); });
            code_.Pop();
        }
    } else {
        Value(*term.index);
    }
    if (term.scale == 1) return;
    // The sum takes the low 32 bits; a product of a narrower type must not overflow before.
    ElementaryType productType = type;
    const std::optional<NumberRange> all = GetRangeOfStorage(type);
    const bool isBounded = term.isChecked || term.isBounded;
    const bool fits = isBounded && all && all->Contains(term.bounds.lower * term.scale) &&
                      all->Contains(term.bounds.upper * term.scale) && all->Contains(term.scale);
    if (!fits && GetTypeInfo(type).size < 4) {
        productType = IsSignedStorage(type) ? ElementaryType::DInt : ElementaryType::UDInt;
        code_.Convert(productType);
    }
    code_.Push();
    code_.LoadInteger(productType, term.scale);
    code_.Binary(BinaryOperator::Mul);
}

bool RoutineGenerator::IsCheap(const Address& address) noexcept {
    const bool isPlain = address.base == BaseKind::Static || address.base == BaseKind::Tag ||
                         (address.base == BaseKind::SlotPointer && address.offset == 0);
    return isPlain && address.termCount == 0;
}

RoutineGenerator::Address RoutineGenerator::Keep(const Address& address, Rooted rooted) {
    EmitAddress(address, rooted);
    const std::uint32_t slot = code_.GetTopIndex();
    code_.Push();
    return MakeSlotPointer(slot);
}

/// A store may cut a text, so only other values are the same in memory and on the stack.
bool RoutineGenerator::IsForwarded(const Address& address, const Type* type) noexcept {
    return address.base == BaseKind::Static && address.termCount == 0 && GetTypeInfo(type->storage).size != 0;
}

void RoutineGenerator::LoadFrom(const Address& address, const Type* type) {
    const CodeBuffer::StoredValue value{address.location, address.offset, type->storage};
    const bool isForwarded = IsForwarded(address, type);
    if (isForwarded && code_.TopHolds(value)) return;
    EmitAddress(address, Rooted::No);
    code_.PointerLoad(type->storage, GetValueSize(type));
    if (isForwarded) code_.NoteTop(value);
}

void RoutineGenerator::StoreTo(const Address& address, const Type* type) {
    code_.Push();
    EmitAddress(address, Rooted::No);
    code_.PointerStore(type->storage, GetValueSize(type));
    if (IsForwarded(address, type)) code_.NoteTop({address.location, address.offset, type->storage});
}

const Type* RoutineGenerator::GetStoredType(const Place& place) const {
    if (place.kind != PlaceKind::Variable || routine_.textTypes.empty()) return place.type;
    const Storage& storage = static_cast<const VariablePlace&>(place).variable->storage;
    if (storage.kind != StorageKind::SlotPointer || storage.offset == 0) return place.type;
    const Type* type = routine_.textTypes[storage.offset - 1];
    return type != nullptr ? type : place.type;
}

void RoutineGenerator::LoadPlace(const Place& place) {
    if (const auto slot = FindSlot(place)) {
        code_.LoadStack(*slot);
        return;
    }
    if (place.kind == PlaceKind::Char) {
        const auto& unit = static_cast<const CharPlace&>(place);
        if (const auto slot = FindSlot(*unit.base)) {
            LoadUnitOfSlot(unit, *slot);
            return;
        }
    }
    const Address address = Resolve(place);
    if (IsExposedText(place)) {
        LoadExposedText(address, GetStoredType(place));
    } else {
        LoadFrom(address, GetStoredType(place));
    }
}

void RoutineGenerator::StorePlace(const Place& place) {
    if (const auto slot = FindSlot(place)) {
        code_.StoreStack(*slot);
        return;
    }
    const Address address = Resolve(place);
    if (IsExposedText(place)) {
        StoreExposedText(address, GetStoredType(place));
    } else {
        StoreTo(address, GetStoredType(place));
    }
}

/// A text in a slot has no address: its unit is what a text of one unit starts with.
void RoutineGenerator::LoadUnitOfSlot(const CharPlace& place, std::uint32_t slot) {
    code_.Push();
    code_.LoadStack(slot);
    code_.Push();
    code_.LoadInteger(ElementaryType::Int, 1);
    code_.Push();
    Value(*place.index);
    code_.CallBuiltIn(false, builtIns_.mid.group, builtIns_.mid.id, 4);
    const bool isWide = GetUnitSize(place.base->type) == 2;
    code_.Convert(isWide ? ElementaryType::WChar : ElementaryType::Char);
    code_.Convert(place.type->storage);
}

}  // namespace tn61131::st
