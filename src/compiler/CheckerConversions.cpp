#include "compiler/BodyChecker.h"

// X_TO_Y and what the language does itself: SIZEOF, ADR, TIME().

namespace tn61131::st {

bool BodyChecker::TakeArguments(const ast::CallExpr& call, const BuiltIn& builtIn, std::size_t count,
                                BuiltInArguments& sorted) {
    if (!SortArguments(call, builtIn, sorted)) return false;
    if (sorted.values.size() != count) {
        Fail(DiagnosticCode::WrongArgumentCount, call.range,
             {builtIn.name, std::to_string(count), std::to_string(sorted.values.size())});
        return false;
    }
    if (sorted.enable != nullptr || sorted.enableOutput != nullptr) {
        Fail(DiagnosticCode::EnableNotSupported, call.range, {builtIn.name});
        return false;
    }
    return true;
}

Expr* BodyChecker::CheckConversionCall(const ast::CallExpr& call, const BuiltIn& builtIn, const Type* wanted) {
    BuiltInArguments sorted;
    if (!TakeArguments(call, builtIn, 1, sorted)) return Error(call.range);
    Expr* value = Check(*sorted.values[0], builtIn.source);
    if (IsError(value)) return value;
    if (FamilyOf(value->type) == Family::Enum && (builtIn.source == nullptr || !IsString(builtIn.source)))
        value = DropEnum(value, true);
    if (builtIn.source != nullptr) {
        // A text of any length is one of the source's kind.
        const bool isSameText = IsString(builtIn.source) && BaseOf(value->type)->storage == builtIn.source->storage;
        if (!isSameText) value = Coerce(value, builtIn.source);
        if (IsError(value)) return value;
    }
    if (builtIn.isBcd) {
        const BuiltInSignature& row = *builtIn.signature;
        Expr* argument = ConvertExplicitly(value, Elementary(row.exact), false, value->range);
        if (IsError(argument)) return argument;
        const std::span<Expr*> arguments = project_.arena.NewArray<Expr*>(1);
        arguments[0] = argument;
        Expr* converted = BuildRowCall(builtIn, arguments, sorted, Elementary(row.type), call.range);
        return ConvertExplicitly(converted, builtIn.target, false, call.range);
    }
    const Type* target = builtIn.target;
    if (target == nullptr) {
        // TRUNC gives the integer that is wanted.
        target = wanted != nullptr && IsInteger(wanted) ? BaseOf(wanted) : Elementary(ElementaryType::DInt);
    }
    if (builtIn.truncate && !IsNumberFamily(FamilyOf(value->type))) return RefuseArgument(builtIn, 0, value);
    return ConvertExplicitly(value, target, builtIn.truncate, call.range);
}

Expr* BodyChecker::CheckSizeOf(const ast::Expr& operand, SourceRange range) {
    const Entity entity = Resolve(operand, nullptr);
    const Type* type = nullptr;
    switch (entity.kind) {
        case Entity::Kind::Error: return Error(range);
        case Entity::Kind::Type: type = entity.type; break;
        case Entity::Kind::Place: type = entity.place->type; break;
        case Entity::Kind::Value: type = entity.value->type; break;
        default: return Fail(DiagnosticCode::VariableExpected, operand.range);
    }
    if (type->kind == TypeKind::Error) return Error(range);
    // STRING as a type's name has the length of the dialect.
    if (type->kind == TypeKind::Elementary && type->storage == ElementaryType::String)
        type = project_.types.String(ElementaryType::String, GetSwitches().stringLength);
    // Where texts are known by their characters, they have the zero behind them instead of the length in front.
    const bool isCharacters = GetSwitches().dataPointers && BaseOf(type)->storage == ElementaryType::String;
    return UntypedFromInteger(false, isCharacters ? type->size - kTextHeader : type->size, false, range);
}

Expr* BodyChecker::CheckBoundOf(const ast::CallExpr& call, const BuiltIn& builtIn) {
    BuiltInArguments sorted;
    if (!TakeArguments(call, builtIn, 2, sorted)) return Error(call.range);
    const Entity entity = Resolve(*sorted.values[0], nullptr);
    if (entity.kind == Entity::Kind::Error) return Error(call.range);
    const Type* type = nullptr;
    if (entity.kind == Entity::Kind::Type) type = entity.type;
    if (entity.kind == Entity::Kind::Place) type = entity.place->type;
    if (type == nullptr) return Fail(DiagnosticCode::VariableExpected, sorted.values[0]->range);
    type = Strip(type);
    if (type->kind != TypeKind::Array) return Fail(DiagnosticCode::NotIndexable, sorted.values[0]->range, {Text(type)});
    const auto& array = *static_cast<const ArrayType*>(type);
    const Expr* dimension = Check(*sorted.values[1], nullptr);
    if (IsError(dimension)) return Error(call.range);
    const std::optional<std::int64_t> number = GetInteger(dimension);
    if (!number) return Fail(DiagnosticCode::NotConstant, sorted.values[1]->range);
    const auto count = static_cast<std::int64_t>(array.bounds.size());
    if (*number < 1 || *number > count) {
        return Fail(DiagnosticCode::IndexOutOfBounds, sorted.values[1]->range,
                    {std::to_string(*number), "1", std::to_string(count)});
    }
    if (array.isOpen) {
        return Fail(DiagnosticCode::AttemptUnsupported, call.range, {builtIn.name, Text(type)});
    }
    const ArrayBound& bound = array.bounds[static_cast<std::size_t>(*number - 1)];
    const bool isUpper = builtIn.special == SpecialFunction::UpperBound;
    const std::int64_t value = isUpper ? bound.upper : bound.lower;
    return UntypedFromInteger(value < 0, static_cast<std::uint64_t>(value < 0 ? -value : value), false, call.range);
}

Expr* BodyChecker::CheckAddressOf(const ast::Expr& operand, bool isTyped, SourceRange range) {
    const Entity entity = Resolve(operand, nullptr);
    if (entity.kind == Entity::Kind::Error) return Error(range);
    if (entity.kind == Entity::Kind::Bits) return Fail(DiagnosticCode::NoAddress, operand.range, {"a bit"});
    if (entity.kind == Entity::Kind::Value && entity.value->kind == ExprKind::Constant)
        return Fail(DiagnosticCode::NoAddress, operand.range, {"a constant"});
    if (entity.readOnly != nullptr && std::string_view(entity.readOnly) == "a constant")
        return Fail(DiagnosticCode::NoAddress, operand.range, {"a constant"});
    Place* place = PlaceOf(entity, operand.range);
    if (place == nullptr) return Error(range);
    if (place->kind == PlaceKind::Result) return Fail(DiagnosticCode::NoAddress, operand.range, {"a result"});
    MarkRead(place);
    MarkWritten(place, operand.range);
    MarkAddressTaken(place);
    ExposeText(place);
    // CODESYS gives ADR no type: the pointer may be assigned to any other.
    const Type* type = project_.types.Pointer(isTyped ? place->type : project_.types.Void());
    return New(AddressExpr{{ExprKind::Address, type, range}, place});
}

Expr* BodyChecker::CheckSpecialCall(const ast::CallExpr& call, const BuiltIn& builtIn, const Type* wanted) {
    const auto takeOne = [&](BuiltInArguments& sorted) { return TakeArguments(call, builtIn, 1, sorted); };
    BuiltInArguments sorted;
    switch (builtIn.special) {
        case SpecialFunction::None: break;
        case SpecialFunction::Not:
            if (!takeOne(sorted)) break;
            return ApplyUnary(ast::UnaryOp::Not, Check(*sorted.values[0], wanted), call.range);
        case SpecialFunction::Time: {
            if (!TakeArguments(call, builtIn, 0, sorted)) break;
            constexpr std::uint8_t kSystemGroup = 11;
            constexpr std::uint8_t kGetTimestamp = 1;
            Expr* now =
                NewBuiltInCall(kSystemGroup, kGetTimestamp, Elementary(ElementaryType::DateAndTime), call.range, {});
            return NewConvert(now, Elementary(ElementaryType::Time), false);
        }
        case SpecialFunction::SizeOf:
            if (!takeOne(sorted)) break;
            return CheckSizeOf(*sorted.values[0], call.range);
        case SpecialFunction::Address:
        case SpecialFunction::Reference:
            if (!takeOne(sorted)) break;
            return CheckAddressOf(*sorted.values[0], builtIn.special == SpecialFunction::Reference, call.range);
        case SpecialFunction::LowerBound:
        case SpecialFunction::UpperBound: return CheckBoundOf(call, builtIn);
        case SpecialFunction::ConcatDateTod:
        case SpecialFunction::TimeOperator: {
            if (!TakeArguments(call, builtIn, 2, sorted)) break;
            const auto op = builtIn.special == SpecialFunction::TimeOperator ? static_cast<ast::BinaryOp>(builtIn.op)
                                                                             : ast::BinaryOp::Add;
            Expr* left = Check(*sorted.values[0], nullptr);
            Expr* right = Check(*sorted.values[1], nullptr);
            if (IsError(left)) return left;
            if (IsError(right)) return right;
            Expr* result = ApplyBinary(op, left, right, call.range, nullptr);
            const Family family = FamilyOf(result->type);
            if (family != Family::Error && IsNumberFamily(family)) return RefuseArgument(builtIn, 0, left);
            return result;
        }
        case SpecialFunction::IsValidRef: {
            if (!takeOne(sorted)) break;
            const Entity entity = Resolve(*sorted.values[0], nullptr);
            if (entity.kind == Entity::Kind::Error) break;
            Expr* pointer = nullptr;
            if (entity.kind == Entity::Kind::Place && entity.place->kind == PlaceKind::Deref)
                pointer = static_cast<DerefPlace*>(entity.place)->pointer;
            if (pointer == nullptr || Strip(pointer->type)->kind != TypeKind::Reference) {
                return Fail(DiagnosticCode::TypeMismatch, sorted.values[0]->range,
                            {"a variable of type REFERENCE TO", SourceText(sorted.values[0]->range)});
            }
            CValue null;
            null.SetAddress(0, 0, 0);
            Expr* nothing = NewConstant(pointer->type, std::move(null), call.range);
            return New(BinaryExpr{
                {ExprKind::Binary, project_.types.Bool(), call.range}, BinaryOperator::NE, pointer, nothing});
        }
    }
    return Error(call.range);
}

}  // namespace tn61131::st
