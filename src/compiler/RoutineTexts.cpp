// Texts that pointers reach into: a program may change the characters of a STRING one by one and end it with a zero, as
// on machines whose texts are nothing else. The machine's length in front is brought up to date where the text is used
// as a whole again.
#include "compiler/RoutineGenerator.h"

namespace tn61131::st {

namespace {

constexpr std::uint32_t kLengthSize = 2;

}  // namespace

bool RoutineGenerator::LeadsToCharacters(const Type* type) const noexcept {
    return project_.options.switches.dataPointers && BaseOf(type)->storage == ElementaryType::String;
}

bool RoutineGenerator::IsExposedText(const Place& place) {
    if (BaseOf(place.type)->storage != ElementaryType::String) return false;
    for (const Place* at = &place;;) {
        if (at->kind == PlaceKind::Element) {
            at = static_cast<const ElementPlace*>(at)->base;
        } else if (at->kind == PlaceKind::Member) {
            const auto& member = static_cast<const MemberPlace&>(*at);
            const Type* owner = Strip(member.base->type);
            if (owner->kind == TypeKind::FunctionBlock) {
                const Variable* variable = static_cast<const FunctionBlockType*>(owner)->Find(member.member);
                if (variable != nullptr && variable->isTextExposed) return true;
            }
            at = member.base;
        } else {
            return at->kind == PlaceKind::Variable && static_cast<const VariablePlace*>(at)->variable->isTextExposed;
        }
    }
}

void RoutineGenerator::LoadExposedText(const Address& address, const Type* type) {
    if (IsCheap(address)) {
        MeasureText(address, type);
        LoadFrom(address, type);
        return;
    }
    const std::uint32_t value = code_.GetTopIndex();
    const Address kept = Keep(address, Rooted::No);
    MeasureText(kept, type);
    LoadFrom(kept, type);
    code_.StoreStack(value);
    code_.Pop();
}

void RoutineGenerator::StoreExposedText(const Address& address, const Type* type) {
    if (IsCheap(address)) {
        StoreTo(address, type);
        TerminateText(address, type);
        return;
    }
    const std::uint32_t value = code_.GetTopIndex();
    code_.Push();
    const Address kept = Keep(address, Rooted::No);
    LoadEntry(value);
    StoreTo(kept, type);
    TerminateText(kept, type);
    code_.Pop();
    code_.Pop();
}

void RoutineGenerator::MeasureText(const Address& address, const Type* type) {
    const auto storeLength = [&] {
        code_.Push();
        EmitAddress(address, Rooted::No);
        code_.PointerStore(ElementaryType::UInt, kLengthSize);
    };
    // With the length of the whole room, the place of the zero tells the length.
    code_.LoadInteger(ElementaryType::UInt, GetTextCapacity(type));
    storeLength();
    code_.Push();
    EmitAddress(address, Rooted::No);
    code_.PointerLoad(ElementaryType::String, GetValueSize(type));
    code_.Push();
    code_.LoadImmediate(CValue("\0", 1, ElementaryType::String));
    code_.CallBuiltIn(false, builtIns_.find.group, builtIns_.find.id, 3);
    const Label isFull = code_.NewLabel();
    code_.JumpZero(isFull);
    code_.Push();
    code_.LoadInteger(ElementaryType::UInt, 1);
    code_.Binary(BinaryOperator::Sub);
    storeLength();
    code_.Bind(isFull);
}

void RoutineGenerator::TerminateText(const Address& address, const Type* type) {
    const auto loadLength = [&] {
        EmitAddress(address, Rooted::No);
        code_.PointerLoad(ElementaryType::UInt, kLengthSize);
    };
    code_.Push();
    loadLength();
    code_.Push();
    code_.LoadInteger(ElementaryType::UInt, GetTextCapacity(type));
    code_.Binary(BinaryOperator::LT);
    const Label isFull = code_.NewLabel();
    code_.JumpZero(isFull);
    code_.LoadInteger(ElementaryType::Byte, 0);
    code_.Push();
    EmitAddress(AtOffset(address, kTextHeader), Rooted::No);
    code_.Push();
    loadLength();
    code_.Binary(BinaryOperator::Add);
    code_.PointerStore(ElementaryType::Byte, 1);
    code_.Bind(isFull);
    code_.Pop();
}

void RoutineGenerator::SettleParameterTexts(bool enters) {
    const auto settle = [&](Variable* parameter) {
        if (!parameter->isTextExposed || BaseOf(parameter->type)->storage != ElementaryType::String) return;
        const VariablePlace place{{PlaceKind::Variable, parameter->type, {}}, parameter};
        const Address address = ResolveVariable(*parameter);
        if (enters) {
            TerminateText(address, GetStoredType(place));
        } else {
            MeasureText(address, GetStoredType(place));
        }
    };
    for (Variable* inOut : pou_->inOuts)
        settle(inOut);
    if (enters) return;
    for (Variable* output : pou_->outputs)
        settle(output);
}

}  // namespace tn61131::st
