// Values.
#include <cassert>

#include "compiler/NumberRange.h"
#include "compiler/RoutineGenerator.h"
#include "functions/FunctionTable.h"
#include "value/TypeTable.h"

namespace tn61131::st {

namespace {

bool IsZeroConstant(const Expr& expr) noexcept {
    const std::optional<Int128> number = GetConstantNumber(expr);
    return number && *number == 0;
}

/// Looks a function up by the name that its table has.
UsedBuiltIns::Function FindFunctionByName(std::string_view name) noexcept {
    for (const FunctionGroup& group : GetFunctionGroups()) {
        for (const FunctionRow& row : group.rows) {
            if (name == row.name) return {group.number, row.id};
        }
    }
    assert(false);
    return {};
}

}  // namespace

UsedBuiltIns::UsedBuiltIns()
    : find(FindFunctionByName("FIND")),
      left(FindFunctionByName("LEFT")),
      mid(FindFunctionByName("MID")),
      limit(FindFunctionByName("LIMIT")),
      min(FindFunctionByName("MIN")),
      max(FindFunctionByName("MAX")),
      readsInteger{FindFunctionByName("MUX"), 2, ElementaryType::LInt},
      readsReal{FindFunctionByName("FLOOR"), 1, ElementaryType::LReal},
      readsDateAndTime{FindFunctionByName("DAY_OF_WEEK"), 1, ElementaryType::DateAndTime} {}

void RoutineGenerator::Value(const Expr& expr) {
    switch (expr.kind) {
        case ExprKind::Constant: return Constant(static_cast<const ConstantExpr&>(expr));
        case ExprKind::AggregateConstant: return AggregateAddress(expr);
        case ExprKind::Load: {
            const Place& place = *static_cast<const LoadExpr&>(expr).place;
            return IsAggregate(expr.type) ? LoadComposite(place) : LoadPlace(place);
        }
        case ExprKind::Address: {
            const Place& place = *static_cast<const AddressExpr&>(expr).place;
            return EmitAddress(AtOffset(Resolve(place), LeadsToCharacters(place.type) ? kTextHeader : 0), Rooted::Yes);
        }
        case ExprKind::Unary:
            Value(*static_cast<const UnaryExpr&>(expr).operand);
            return code_.Unary(static_cast<const UnaryExpr&>(expr).op);
        case ExprKind::Binary: return BinaryValue(static_cast<const BinaryExpr&>(expr));
        case ExprKind::Logical: return LogicalValue(static_cast<const LogicalExpr&>(expr));
        case ExprKind::Convert: return ConvertValue(static_cast<const ConvertExpr&>(expr));
        case ExprKind::Select: return SelectValue(static_cast<const SelectExpr&>(expr));
        case ExprKind::CallFunction: return CallFunction(static_cast<const CallFunctionExpr&>(expr), true);
        case ExprKind::CallBuiltIn: return CallBuiltIn(static_cast<const CallBuiltInExpr&>(expr));
        case ExprKind::AddPointer: {
            const auto& sum = static_cast<const AddPointerExpr&>(expr);
            Value(*sum.pointer);
            code_.Push();
            Value(*sum.bytes);
            return code_.Binary(BinaryOperator::Add);
        }
        case ExprKind::Output: return LoadFrom(outputSource_, expr.type);
        case ExprKind::Status: return code_.LoadStatus(1);
    }
}

void RoutineGenerator::Constant(const ConstantExpr& expr) {
    if (expr.type->storage != ElementaryType::Pointer || !expr.value->IsZero()) return code_.LoadImmediate(*expr.value);
    code_.LoadAddr(LocationKind::Null, 0);
}

/// What a type's values are where nothing else is said; an aggregate's as a pointer.
void RoutineGenerator::DefaultValue(const Type* type) {
    scratch_.assign(type->size, 0);
    declarations_.WriteInitial(type, nullptr, scratch_);
    if (IsAggregate(type)) {
        code_.LoadAddr(LocationKind::GlobalConstant, declarations_.AddConstant(scratch_));
        return;
    }
    if (type->storage == ElementaryType::Pointer) return code_.LoadAddr(LocationKind::Null, 0);
    CValue value;
    if (value.SetFromDataBytes(type->storage, scratch_.data(), static_cast<unsigned int>(scratch_.size()))) {
        code_.LoadImmediate(value);
    }
}

void RoutineGenerator::BinaryValue(const BinaryExpr& expr) {
    Value(*expr.left);
    code_.Push();
    Value(*expr.right);
    if (expr.op != BinaryOperator::Div) return code_.Binary(expr.op);
    // It may fail, and the expression may have come from elsewhere.
    const SourceOffset before = code_.GetPosition();
    code_.SetPosition(expr.range.begin);
    code_.Binary(expr.op);
    code_.SetPosition(before);
}

void RoutineGenerator::LogicalValue(const LogicalExpr& expr) {
    const Label end = code_.NewLabel();
    Value(*expr.left);
    if (expr.isAnd) {
        code_.JumpZero(end);
    } else {
        code_.JumpNotZero(end);
    }
    Value(*expr.right);
    code_.Bind(end);
}

void RoutineGenerator::ConvertValue(const ConvertExpr& expr) {
    if (expr.zeroOnFailure && FindValidator(expr) != nullptr) return ConvertOrZero(expr);
    Value(*expr.operand);
    if (expr.truncate) {
        code_.Truncate(expr.type->storage);
    } else {
        code_.Convert(expr.type->storage);
    }
}

/// A function that reads its first argument as the conversion does, and whose failure does not end the run. Null for
/// types that no function reads from text.
const UsedBuiltIns::Validator* RoutineGenerator::FindValidator(const ConvertExpr& expr) const noexcept {
    const std::uint32_t source = TypeBit(expr.operand->type->storage);
    if ((source & (TypeBit(ElementaryType::String) | TypeBit(ElementaryType::WString))) == 0) return nullptr;
    switch (expr.type->storage) {
        case ElementaryType::Real:
        case ElementaryType::LReal: return &builtIns_.readsReal;
        case ElementaryType::DateAndTime: return &builtIns_.readsDateAndTime;
        default:
            return GetRangeOfStorage(expr.type->storage) && expr.type->storage != ElementaryType::Bool
                       ? &builtIns_.readsInteger
                       : nullptr;
    }
}

// The text stays below while the function tries it. A number that the function reads is converted by way of the
// function's own type, so that one too large for the target is cut and does not fail.
void RoutineGenerator::ConvertOrZero(const ConvertExpr& expr) {
    const UsedBuiltIns::Validator& validator = *FindValidator(expr);
    const Label isBad = code_.NewLabel();
    const Label end = code_.NewLabel();
    Value(*expr.operand);
    const std::uint32_t text = code_.GetTopIndex();
    code_.Push();
    code_.Push();
    LoadEntry(text);
    for (std::uint32_t i = 1; i < validator.argumentCount; ++i) {
        code_.Push();
        code_.LoadInteger(ElementaryType::SInt, 0);
    }
    code_.CallBuiltIn(true, validator.function.group, validator.function.id, validator.argumentCount + 1);
    code_.LoadStatus(1);
    code_.JumpZero(isBad);
    code_.Pop();
    if (expr.type->storage != validator.type) code_.Convert(validator.type);
    code_.Convert(expr.type->storage);
    code_.Jump(end);
    code_.Bind(isBad);
    code_.Pop();
    DefaultValue(project_.types.Elementary(expr.type->storage));
    code_.Bind(end);
}

void RoutineGenerator::SelectValue(const SelectExpr& expr) {
    const Label otherwise = code_.NewLabel();
    const Label end = code_.NewLabel();
    JumpIf(*expr.condition, false, otherwise);
    Value(*expr.whenTrue);
    code_.Jump(end);
    code_.Bind(otherwise);
    Value(*expr.whenFalse);
    code_.Bind(end);
}

/// Whether a value cannot be undefined: tags and unset variables may be, and then no comparison with them holds.
bool RoutineGenerator::IsNeverUndefined(const Expr& expr) {
    if (expr.kind != ExprKind::Load) return false;
    const Place& place = *static_cast<const LoadExpr&>(expr).place;
    if (FindSlot(place) || (place.kind != PlaceKind::Variable && place.kind != PlaceKind::Member)) return false;
    const Address address = Resolve(place);
    return address.base == BaseKind::Static;
}

void RoutineGenerator::JumpIf(const Expr& condition, bool value, Label target) {
    if (const std::optional<Int128> constant = GetConstantNumber(condition)) {
        if ((*constant != 0) == value) code_.Jump(target);
        return;
    }
    if (condition.kind == ExprKind::Unary && static_cast<const UnaryExpr&>(condition).op == UnaryOperator::Not &&
        condition.type->storage == ElementaryType::Bool) {
        return JumpIf(*static_cast<const UnaryExpr&>(condition).operand, !value, target);
    }
    if (condition.kind == ExprKind::Logical)
        return JumpIfLogical(static_cast<const LogicalExpr&>(condition), value, target);
    bool isInverted = false;
    const Expr* tested = &condition;
    if (condition.kind == ExprKind::Binary) {
        // Comparing with 0 is what the jump does itself.
        const auto& binary = static_cast<const BinaryExpr&>(condition);
        const bool isEqual = binary.op == BinaryOperator::EQ;
        if ((isEqual || binary.op == BinaryOperator::NE) && IsZeroConstant(*binary.right) &&
            (!isEqual || IsNeverUndefined(*binary.left))) {
            tested = binary.left;
            isInverted = isEqual;
        }
    }
    Value(*tested);
    if (value != isInverted) {
        code_.JumpNotZero(target);
    } else {
        code_.JumpZero(target);
    }
}

void RoutineGenerator::JumpIfLogical(const LogicalExpr& condition, bool value, Label target) {
    // AND that jumps when FALSE, OR that jumps when TRUE: either side alone decides.
    if (condition.isAnd != value) {
        JumpIf(*condition.left, value, target);
        JumpIf(*condition.right, value, target);
        return;
    }
    const Label end = code_.NewLabel();
    JumpIf(*condition.left, !value, end);
    JumpIf(*condition.right, value, target);
    code_.Bind(end);
}

void RoutineGenerator::AggregateAddress(const Expr& expr) {
    switch (expr.kind) {
        case ExprKind::Load: return EmitPlaceAddress(*static_cast<const LoadExpr&>(expr).place);
        case ExprKind::AggregateConstant:
            return code_.LoadAddr(LocationKind::GlobalConstant,
                                  declarations_.AddConstant(static_cast<const AggregateConstantExpr&>(expr).bytes));
        default: return Value(expr);
    }
}

/// An array as one value, which only built-in functions take.
void RoutineGenerator::LoadComposite(const Place& place) {
    const Type* element = Strip(place.type);
    std::uint32_t count = 1;
    while (element->kind == TypeKind::Array) {
        for (const ArrayBound& bound : static_cast<const ArrayType&>(*element).bounds)
            count *= bound.GetCount();
        element = Strip(static_cast<const ArrayType&>(*element).element);
    }
    EmitAddress(Resolve(place), Rooted::No);
    if (element->storage != ElementaryType::Undefined) code_.PointerLoadArray(element->storage, count);
}

}  // namespace tn61131::st
