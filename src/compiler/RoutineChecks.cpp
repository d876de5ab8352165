// Tests that numbers lie in a range, and the faults that end the run where they do not.
#include "compiler/RoutineChecks.h"

#include <algorithm>

#include "value/TypeTable.h"

namespace tn61131::st {

bool RoutineGenerator::IsCheapIndex(const Expr& index) {
    if (index.kind == ExprKind::Convert) {
        const auto& convert = static_cast<const ConvertExpr&>(index);
        return convert.operand->kind == ExprKind::Load && IsCheapIndex(*convert.operand);
    }
    if (index.kind != ExprKind::Load) return false;
    const Place& place = *static_cast<const LoadExpr&>(index).place;
    if (FindSlot(place)) return true;
    if (place.kind != PlaceKind::Variable && place.kind != PlaceKind::Member) return false;
    const Address address = Resolve(place);
    return address.base == BaseKind::Static && address.termCount == 0;
}

// With one subtraction both ends are tested by one unsigned comparison.
void RoutineGenerator::EmitOutsideTest(ElementaryType type, const NumberRange& allowed) {
    const NumberRange all = GetRangeOfStorage(type).value_or(allowed);
    const auto compare = [this](BinaryOperator op, ElementaryType comparedType, Int128 limit) {
        code_.Push();
        code_.LoadInteger(comparedType, static_cast<std::int64_t>(limit));
        code_.Binary(op);
    };
    if (allowed.lower == all.lower) return compare(BinaryOperator::GT, type, allowed.upper);
    if (allowed.upper == all.upper) return compare(BinaryOperator::LT, type, allowed.lower);
    if (allowed.lower == allowed.upper) return compare(BinaryOperator::NE, type, allowed.lower);
    if (allowed.lower != 0) {
        code_.Push();
        code_.LoadInteger(type, static_cast<std::int64_t>(allowed.lower));
        code_.Binary(BinaryOperator::Sub);
    }
    ElementaryType comparedType = type;
    if (IsSignedStorage(type)) {
        comparedType = GetUnsignedStorage(type);
        code_.Convert(comparedType);
    }
    compare(BinaryOperator::GT, comparedType, allowed.upper - allowed.lower);
}

/// The value on the top is to be stored in a variable of a subrange type.
void RoutineGenerator::EmitRangeCheckOfTop(const Type* type, SourceRange range) {
    const Type* stripped = Strip(type);
    if (stripped->kind != TypeKind::Subrange || project_.options.switches.bounds == Switches::Bounds::Off) return;
    const auto& subrange = static_cast<const SubrangeType&>(*stripped);
    const ElementaryType storage = subrange.storage;
    const NumberRange allowed{ToNumber(storage, subrange.lower), ToNumber(storage, subrange.upper)};
    const std::uint32_t index = code_.GetTopIndex();
    if (project_.options.switches.bounds == Switches::Bounds::Clamp) {
        code_.Push();
        const ElementaryType common = EmitClamped(storage, allowed, [&] { LoadEntry(index); });
        if (common != storage) code_.Convert(storage);
        code_.StoreStack(index);
    } else {
        code_.Push();
        EmitTrapOutside(storage, allowed, range, [&] { LoadEntry(index); });
    }
    code_.Pop();
}

Label RoutineGenerator::GetTrap(SourceRange range) {
    const std::uint32_t depth = code_.GetDepth();
    const auto found = std::find_if(traps_.rbegin(), traps_.rend(), [&](const Trap& trap) {
        return trap.source == range.begin && trap.depth == depth;
    });
    if (found != traps_.rend()) return found->label;
    return traps_.emplace_back(Trap{range.begin, depth, code_.NewLabel()}).label;
}

/// Each fault stands behind the routine, so that its place in the sources is known and nothing else pays for it.
void RoutineGenerator::EmitTraps() {
    for (const Trap& trap : traps_) {
        if (!code_.IsUsed(trap.label)) continue;
        code_.Bind(trap.label);
        code_.SetPosition(trap.source);
        code_.LoadAddr(LocationKind::Null, 0);
        code_.PointerLoad(ElementaryType::Bool, 1);
        code_.Return();
    }
}

}  // namespace tn61131::st
