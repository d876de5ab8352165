#pragma once

#include "diag/Messages.h"
#include "value/Value.h"

// What the files of the operators share.

namespace tn61131 {

/// The rule of arithmetic and comparison: with an undefined operand the result is undefined. True when it applied.
inline bool ApplyUndefinedRule(CValue& left, const CValue& right) noexcept {
    if (left.IsUndefined()) return true;
    if (right.IsDefined()) return false;
    left.SetUndefined();
    return true;
}

/// Message 206 for the left operand's type.
inline bool RefuseOperator(CErrorLog& log, const ErrorLocation& location, const char* name, const CValue& left) {
    return Fail<Message::OperatorNotSupported>(log, location, name, left.GetTypeName(false));
}

/// Sums and differences in which a time, a date or a pointer decides the type of the result. `Done` has replaced the
/// left operand; `NotMine` has touched nothing.
enum class MixedResult : unsigned char { NotMine, Done, Failed };
MixedResult AddMixed(CErrorLog& log, const ErrorLocation& location, CValue& left, CValue& right);
MixedResult SubMixed(CValue& left, const CValue& right) noexcept;

}  // namespace tn61131
