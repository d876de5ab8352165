// Operators by their code, and promotion.
#include "value/Operators.h"

#include <array>
#include <limits>

#include "diag/Messages.h"
#include "value/Value.h"

using tn61131::Fail;

namespace {

using UnaryMember = bool (CValue::*)(CErrorLog&, const ErrorLocation&);
using BinaryMember = bool (CValue::*)(CErrorLog&, const ErrorLocation&, CValue&);
using ShiftMember = bool (CValue::*)(CErrorLog&, const ErrorLocation&, int);

constexpr std::array<UnaryMember, kUnaryOperatorNames.size()> kUnaryMembers = {nullptr, &CValue::Negate, &CValue::Not};

constexpr std::array<BinaryMember, kBinaryOperatorNames.size()> kBinaryMembers = {
    nullptr,      &CValue::Add,        &CValue::Sub,       &CValue::Mul,       &CValue::Div, &CValue::Mod,
    &CValue::Pow, &CValue::EQ,         &CValue::NE,        &CValue::GT,        &CValue::GE,  &CValue::LT,
    &CValue::LE,  &CValue::LogicalAnd, &CValue::LogicalOr, &CValue::LogicalXor};

/// SHL, SHR, ROR, ROL by code, each with its opposite for negative counts.
struct ShiftRow {
    ShiftMember forward;
    ShiftMember backward;
};
constexpr std::array<ShiftRow, 5> kShifts = {{
    {nullptr, nullptr},
    {&CValue::ShiftLeft, &CValue::ShiftRight},
    {&CValue::ShiftRight, &CValue::ShiftLeft},
    {&CValue::RotateRight, &CValue::RotateLeft},
    {&CValue::RotateLeft, &CValue::RotateRight},
}};

}  // namespace

bool CValue::UnaryOperation(CErrorLog& log, const ErrorLocation& location, unsigned char code) {
    if (code == 0 || code >= kUnaryMembers.size()) return Fail<Message::InvalidUnaryOperation>(log, location, code);
    return (this->*kUnaryMembers[code])(log, location);
}

bool CValue::BinaryOperation(CErrorLog& log, const ErrorLocation& location, unsigned char code, CValue& right) {
    if (code == 0 || code >= kBinaryMembers.size()) return Fail<Message::InvalidBinaryOperation>(log, location, code);
    return (this->*kBinaryMembers[code])(log, location, right);
}

bool CValue::ShiftOperation(CErrorLog& log, const ErrorLocation& location, unsigned char code, int count) {
    if (code == 0 || code >= kShifts.size()) {
        return Fail<Message::InvalidFunctionCode>(log, location, "Bitstring", code);
    }
    if (count == 0) return true;
    const ShiftRow& row = kShifts[code];
    if (count > 0) return (this->*row.forward)(log, location, count);
    // The magnitude of the lowest count is a multiple of every width, and so is the lowest count itself: a rotation by
    // it turns nothing and a shift by it leaves nothing, whichever way.
    const bool hasMagnitude = count != std::numeric_limits<int>::min();
    return (this->*row.backward)(log, location, hasMagnitude ? -count : count);
}

// A type without a rank (TYPE) is below all others, so that it is the one whose conversion fails.
bool CValue::PromoteTypes(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    if (type_ == right.type_) return true;
    const int rank = GetTypeInfo(type_).precedence;
    const int rightRank = GetTypeInfo(right.type_).precedence;
    if (rank == rightRank) return true;
    return rank < rightRank ? ChangeType(log, location, right.type_) : right.ChangeType(log, location, type_);
}
