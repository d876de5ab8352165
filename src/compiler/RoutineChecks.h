#pragma once

#include "compiler/NumberRange.h"
#include "compiler/RoutineGenerator.h"

namespace tn61131::st {

/// Numbers of a range that a type has; an empty range is upside down.
[[nodiscard]] inline NumberRange Intersect(ElementaryType type, NumberRange range) noexcept {
    const NumberRange all = GetRangeOfStorage(type).value_or(range);
    if (range.lower < all.lower) range.lower = all.lower;
    if (range.upper > all.upper) range.upper = all.upper;
    return range;
}

template <typename Emit>
void RoutineGenerator::EmitTrapOutside(ElementaryType type, const NumberRange& allowed, SourceRange range,
                                       Emit emitNumber) {
    const NumberRange possible = Intersect(type, allowed);
    if (GetRangeOfStorage(type) && possible.Contains(*GetRangeOfStorage(type))) return;
    emitNumber();
    if (possible.lower > possible.upper) {
        code_.LoadInteger(ElementaryType::Bool, 1);
    } else {
        EmitOutsideTest(type, possible);
    }
    code_.JumpNotZero(GetTrap(range));
}

template <typename Emit>
ElementaryType RoutineGenerator::EmitClamped(ElementaryType type, const NumberRange& allowed, Emit emitNumber) {
    const NumberRange possible = Intersect(type, allowed);
    const bool isEmpty = possible.lower > possible.upper;
    const NumberRange& limits = isEmpty ? allowed : possible;
    const ElementaryType common = isEmpty ? ElementaryType::LInt : type;
    code_.Push();
    code_.LoadInteger(common, static_cast<std::int64_t>(limits.lower));
    code_.Push();
    emitNumber();
    if (isEmpty) code_.Convert(common);
    code_.Push();
    code_.LoadInteger(common, static_cast<std::int64_t>(limits.upper));
    code_.CallBuiltIn(false, builtIns_.limit.group, builtIns_.limit.id, 4);
    return common;
}

}  // namespace tn61131::st
