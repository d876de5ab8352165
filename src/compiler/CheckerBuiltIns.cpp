#include <algorithm>
#include <string>

#include "compiler/BodyChecker.h"

// Calls of the library's functions: arguments by name and position, conversions to what each function takes.

namespace tn61131::st {

namespace {

[[nodiscard]] bool EqualsIgnoringCase(std::string_view left, std::string_view right) noexcept {
    const auto fold = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(left, right, [&](char a, char b) { return fold(a) == fold(b); });
}

constexpr std::size_t kNoPosition = 0xFFFF;

/// Takes the first name of a list "IN1, IN2, ..." off.
[[nodiscard]] std::string_view TakeName(std::string_view& names) noexcept {
    const std::size_t comma = names.find(", ");
    const std::string_view first = names.substr(0, comma);
    names.remove_prefix(comma == std::string_view::npos ? names.size() : comma + 2);
    return first;
}

/// A name with a number at its end, and the number.
[[nodiscard]] std::pair<std::string_view, std::size_t> SplitNumber(std::string_view name) noexcept {
    std::size_t digits = name.size();
    while (digits > 0 && name[digits - 1] >= '0' && name[digits - 1] <= '9')
        --digits;
    std::size_t number = 0;
    for (const char c : name.substr(digits, 4))
        number = number * 10 + static_cast<std::size_t>(c - '0');
    return {name.substr(0, digits), number};
}

/// The position of a parameter in a row's list; kNoPosition for another name.
[[nodiscard]] std::size_t FindParameter(std::string_view names, std::string_view name) noexcept {
    std::string_view last;
    for (std::size_t position = 0; !names.empty(); ++position) {
        const std::string_view known = TakeName(names);
        if (known == "...") {
            const auto [stem, first] = SplitNumber(last);
            const auto [given, number] = SplitNumber(name);
            constexpr std::size_t kMostArguments = 255;
            if (EqualsIgnoringCase(stem, given) && given.size() < name.size() && number >= first &&
                number <= kMostArguments)
                return position - 1 + number - first;
            return kNoPosition;
        }
        if (EqualsIgnoringCase(known, name)) return position;
        last = known;
    }
    return kNoPosition;
}

[[nodiscard]] std::string ParameterName(std::string_view names, std::size_t position) {
    std::string_view name;
    for (std::size_t i = 0; i <= position && !names.empty(); ++i) {
        const std::string_view known = TakeName(names);
        if (known == "...") {
            const auto [stem, first] = SplitNumber(name);
            return std::string(stem) + std::to_string(first + position - i + 1);
        }
        name = known;
    }
    return std::string(name);
}

[[nodiscard]] std::string_view ParametersOf(const BuiltIn& builtIn) noexcept {
    if (builtIn.row != nullptr) return builtIn.row->parameters;
    switch (builtIn.special) {
        case SpecialFunction::TimeOperator: return "IN1, IN2";
        case SpecialFunction::ConcatDateTod: return "DATE, TOD";
        case SpecialFunction::LowerBound:
        case SpecialFunction::UpperBound: return "ARR, DIM";
        case SpecialFunction::Time: return "";
        default: return "IN";
    }
}

[[nodiscard]] ParamRule RuleOf(const BuiltInSignature& signature, std::size_t position) noexcept {
    ParamRule rule = signature.parameters[0];
    for (std::size_t i = 1; i <= position && i < signature.parameters.size(); ++i) {
        if (signature.parameters[i] == ParamRule::None) break;
        rule = signature.parameters[i];
    }
    return rule;
}

[[nodiscard]] bool IsUntyped(const Expr* expr) noexcept {
    return expr->kind == ExprKind::Constant && static_cast<const ConstantExpr*>(expr)->untyped;
}

[[nodiscard]] bool IsElementaryFamily(Family family) noexcept {
    return family != Family::Error && family != Family::Void && family != Family::Null && family != Family::Aggregate &&
           family != Family::Pointer;
}

}  // namespace

Expr* BodyChecker::RefuseArgument(const BuiltIn& builtIn, std::size_t position, const Expr* argument) {
    if (FamilyOf(argument->type) == Family::Void)
        return Fail(DiagnosticCode::NoValue, argument->range, {SourceText(argument->range)});
    return Fail(DiagnosticCode::ArgumentType, argument->range,
                {builtIn.name, Text(argument->type), ParameterName(ParametersOf(builtIn), position)});
}

bool BodyChecker::SortArguments(const ast::CallExpr& call, const BuiltIn& builtIn, BuiltInArguments& sorted) {
    const std::string_view names = ParametersOf(builtIn);
    bool isNamed = false;
    bool isFine = true;
    for (const ast::Argument& argument : call.arguments) {
        std::size_t position = sorted.values.size();
        if (argument.name.name == NameId::None) {
            if (isNamed) {
                Fail(DiagnosticCode::PositionalAfterNamed, argument.range);
                return false;
            }
        } else {
            isNamed = true;
            position = FindParameter(names, project_.names.GetFolded(argument.name.name));
            if (position == kNoPosition) {
                if (TakeEnable(argument, sorted.enable, sorted.enableOutput)) continue;
                std::vector<std::string> known;
                std::vector<std::string_view> candidates;
                for (std::string_view rest = names; !rest.empty();) {
                    std::string folded(TakeName(rest));
                    std::ranges::transform(folded, folded.begin(), [](char c) {
                        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
                    });
                    known.push_back(std::move(folded));
                }
                candidates.assign(known.begin(), known.end());
                ReportUnknownParameter(builtIn.name, argument, candidates);
                isFine = false;
                continue;
            }
        }
        if (argument.value == nullptr && !argument.isOutput) {
            Fail(DiagnosticCode::EmptyArgument, argument.range, {ParameterName(names, position)});
            isFine = false;
            continue;
        }
        if (position >= sorted.values.size()) {
            sorted.values.resize(position + 1);
            sorted.outputs.resize(position + 1);
        }
        if (sorted.values[position] != nullptr) {
            Fail(DiagnosticCode::DuplicateArgument, argument.range, {ParameterName(names, position)});
            isFine = false;
            continue;
        }
        sorted.values[position] = argument.value;
        sorted.outputs[position] = &argument;
    }
    // What an argument should be in front of is missing.
    for (std::size_t i = 0; isFine && i < sorted.values.size(); ++i) {
        if (sorted.values[i] != nullptr || sorted.outputs[i] != nullptr) continue;
        Fail(DiagnosticCode::MissingArgument, call.range, {ParameterName(names, i), builtIn.name});
        isFine = false;
    }
    return isFine;
}

Expr* BodyChecker::CheckParameter(ParamRule rule, const ast::Expr& argument, const BuiltIn& builtIn,
                                  std::size_t position, const Type* wanted) {
    const Type* wish = nullptr;
    const Type* real = Elementary(ElementaryType::Real);
    const Type* lreal = Elementary(ElementaryType::LReal);
    const bool wantsReal = wanted != nullptr && BaseOf(wanted)->storage == ElementaryType::Real;
    switch (rule) {
        case ParamRule::Number:
        case ParamRule::Shared:
        case ParamRule::Real:
        case ParamRule::SharedReal:
        case ParamRule::Any:
        case ParamRule::Bits: wish = wanted; break;
        case ParamRule::Bool: wish = project_.types.Bool(); break;
        default: break;
    }
    Expr* value = Check(argument, wish);
    if (IsError(value)) return value;
    if (rule != ParamRule::Shared && rule != ParamRule::Any) value = DropEnum(value, true);
    const Family family = FamilyOf(value->type);
    const auto settleAsWanted = [&](bool fits) {
        if (IsUntyped(value) && wanted != nullptr && fits && (!IsReal(value->type) || IsReal(wanted)))
            return CoerceUntyped(static_cast<ConstantExpr*>(value), wanted);
        return Settle(value);
    };
    switch (rule) {
        case ParamRule::None: return value;
        case ParamRule::Number:
            if (!IsNumberFamily(family)) break;
            return settleAsWanted(wanted != nullptr && IsNumberFamily(FamilyOf(wanted)));
        case ParamRule::Bits:
            if (!IsIntegerFamily(family) && family != Family::Bits) break;
            return settleAsWanted(wanted != nullptr && (IsInteger(wanted) || IsBitString(wanted)));
        case ParamRule::Real:
        case ParamRule::SharedReal: {
            if (!IsNumberFamily(family)) break;
            if (IsUntyped(value)) return CoerceUntyped(static_cast<ConstantExpr*>(value), wantsReal ? real : lreal);
            if (family == Family::Real) return value;
            const bool staysReal = wantsReal && value->type->size < 4;
            return NewConvert(value, staysReal ? real : lreal, true);
        }
        case ParamRule::Integer:
            if (!IsIntegerFamily(family) && family != Family::Bits) break;
            return Settle(value);
        case ParamRule::Bool: return Coerce(value, project_.types.Bool());
        case ParamRule::Shared:
        case ParamRule::Any:
            if (!IsElementaryFamily(family)) break;
            return rule == ParamRule::Any ? Settle(value) : value;
        case ParamRule::Text:
        case ParamRule::TextOrChar:
            if (family == Family::String || family == Family::WString) return Settle(value);
            if (family != Family::Char && family != Family::WChar) break;
            if (rule == ParamRule::TextOrChar) return Settle(value);
            return NewConvert(
                value,
                project_.types.String(family == Family::Char ? ElementaryType::String : ElementaryType::WString, 1),
                true);
        case ParamRule::DateOrDateAndTime:
            if (family != Family::Date && family != Family::DateAndTime) break;
            return value;
        case ParamRule::TimeOfDay:
            if (family != Family::TimeOfDay) break;
            return value;
        case ParamRule::DateAndTime:
            if (family != Family::DateAndTime) break;
            return value;
        case ParamRule::AnyDate:
            if (family != Family::Date && family != Family::DateAndTime && family != Family::TimeOfDay) break;
            return value;
        case ParamRule::Exact: return Coerce(value, Elementary(builtIn.signature->exact));
        case ParamRule::TextLikeFirst:
        case ParamRule::AnyAsText:
        case ParamRule::CharLikeFirst: return value;
    }
    return RefuseArgument(builtIn, position, value);
}

Expr* BodyChecker::CheckTextParameter(ParamRule rule, Expr* value, const Type* first, const BuiltIn& builtIn,
                                      std::size_t position) {
    if (IsError(value)) return value;
    const bool isWide = first->storage == ElementaryType::WString;
    const Family family = FamilyOf(value->type);
    const bool isText = family == Family::String || family == Family::WString;
    const bool isChar = family == Family::Char || family == Family::WChar;
    const std::uint16_t capacity =
        isText ? static_cast<const StringType*>(BaseOf(value->type))->capacity : GetSwitches().stringLength;
    const Type* text = project_.types.String(first->storage, capacity);
    switch (rule) {
        case ParamRule::TextLikeFirst:
            if (!isText && !isChar) return RefuseArgument(builtIn, position, value);
            return Settle(Coerce(value, text));
        case ParamRule::AnyAsText:
            if (!IsElementaryFamily(family)) return RefuseArgument(builtIn, position, value);
            if (isText && value->type->storage == first->storage) return Settle(value);
            return NewConvert(Settle(value), text, false);
        case ParamRule::CharLikeFirst: {
            const Type* unit = Elementary(isWide ? ElementaryType::WChar : ElementaryType::Char);
            if (!isText && !isChar) return RefuseArgument(builtIn, position, value);
            if (isText && !IsUntyped(value)) return NewConvert(value, unit, false);
            return Coerce(value, unit);
        }
        default: return value;
    }
}

Expr* BodyChecker::BuildRowCall(const BuiltIn& builtIn, std::span<Expr*> arguments, const BuiltInArguments& sorted,
                                const Type* type, SourceRange range) {
    const bool hasEnable = sorted.enable != nullptr || sorted.enableOutput != nullptr;
    if (!hasEnable) {
        if (Expr* folded = FoldBuiltIn(*builtIn.signature, type, arguments, range)) return folded;
    }
    return New(CallBuiltInExpr{{ExprKind::CallBuiltIn, type, range},
                               builtIn.signature->group,
                               builtIn.signature->id,
                               arguments,
                               hasEnable,
                               sorted.enable,
                               sorted.enableOutput});
}

const Type* BodyChecker::UnifyValues(std::string_view function, std::span<Expr*> values, const Type* wanted,
                                     SourceRange range) {
    for (Expr*& value : values) {
        if (IsError(value)) return nullptr;
    }
    // All of one enumeration stay what they are.
    const Type* first = BaseOf(values[0]->type);
    if (std::ranges::all_of(values, [&](const Expr* value) { return BaseOf(value->type) == first; }) &&
        !IsUntyped(values[0]) && std::ranges::none_of(values, IsUntyped))
        return first;
    for (Expr*& value : values) {
        value = DropEnum(value, false);
        if (IsError(value)) return nullptr;
    }
    const auto isNumber = [](const Expr* value) { return IsNumberFamily(FamilyOf(value->type)); };
    if (std::ranges::all_of(values, isNumber)) {
        if (wanted != nullptr && IsNumberFamily(FamilyOf(wanted)) && std::ranges::all_of(values, IsUntyped)) {
            for (Expr*& value : values) {
                value = CoerceUntyped(static_cast<ConstantExpr*>(value), BaseOf(wanted));
                if (IsError(value)) return nullptr;
            }
            return BaseOf(wanted);
        }
        // Typed values decide first, literals follow them.
        std::size_t leader = 0;
        while (leader + 1 < values.size() && IsUntyped(values[leader]))
            ++leader;
        for (int round = 0; round < 2; ++round) {
            for (std::size_t i = 0; i < values.size(); ++i) {
                if (i != leader && !UnifyNumbers(function, values[leader], values[i], wanted, range)) return nullptr;
            }
        }
        for (Expr*& value : values) {
            Settle(value);
            if (value->type->storage != values[leader]->type->storage)
                value = NewConvert(value, CommonNumber(value->type, values[leader]->type), true);
        }
        return BaseOf(values[leader]->type);
    }
    const auto isText = [](const Expr* value) {
        const Family family = FamilyOf(value->type);
        return family == Family::String || family == Family::WString || family == Family::Char ||
               family == Family::WChar;
    };
    if (std::ranges::all_of(values, isText)) {
        const Expr* longest = values[0];
        for (const Expr* value : values) {
            if (IsString(value->type) && (!IsString(longest->type) || value->type->size > longest->type->size))
                longest = value;
        }
        const Type* type = BaseOf(longest->type);
        for (Expr*& value : values) {
            value = Coerce(value, type);
            if (IsError(value)) return nullptr;
        }
        return type;
    }
    // Whatever else it is, all must be of the same type; a 0 or 1 may be a BOOL.
    const auto typed = std::ranges::find_if_not(values, IsUntyped);
    const Type* type = typed == values.end() ? first : BaseOf((*typed)->type);
    for (Expr*& value : values) {
        if (IsUntyped(value)) value = Coerce(value, type);
        if (IsError(value)) return nullptr;
        if (BaseOf(value->type)->storage != type->storage || FamilyOf(value->type) != FamilyOf(type)) {
            RefuseOperands(function, values[0], value, range);
            return nullptr;
        }
    }
    return type;
}

Expr* BodyChecker::CheckOperatorFunction(const BuiltIn& builtIn, const BuiltInArguments& sorted, const Type* wanted,
                                         SourceRange range) {
    const auto op = static_cast<ast::BinaryOp>(builtIn.op);
    const bool isComparison = op >= ast::BinaryOp::Equal && op <= ast::BinaryOp::GreaterEqual;
    const bool hasEnable = sorted.enable != nullptr || sorted.enableOutput != nullptr;
    const std::span<Expr*> values = project_.arena.NewArray<Expr*>(sorted.values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = Check(*sorted.values[i], isComparison ? nullptr : wanted);
        if (IsError(values[i])) return values[i];
    }
    if (hasEnable || (isComparison && values.size() > 2)) {
        const Type* type = UnifyValues(builtIn.name, values, isComparison ? nullptr : wanted, range);
        if (type == nullptr) return Error(range);
        if (op == ast::BinaryOp::Power) {
            type = Elementary(ElementaryType::LReal);
            for (Expr*& value : values)
                value = NewConvert(value, type, true);
        }
        if (isComparison) type = project_.types.Bool();
        return BuildRowCall(builtIn, values, sorted, type, range);
    }
    Expr* result = values[0];
    for (std::size_t i = 1; i < values.size(); ++i)
        result = ApplyBinary(op, result, values[i], range, wanted);
    return result;
}

Expr* BodyChecker::CheckSelection(const BuiltIn& builtIn, const BuiltInArguments& sorted, const Type* wanted,
                                  SourceRange range) {
    const std::span<Expr*> values = project_.arena.NewArray<Expr*>(3);
    const std::size_t callsBefore = context_.calls.size();
    for (std::size_t i = 0; i < 3; ++i) {
        values[i] = CheckParameter(RuleOf(*builtIn.signature, i), *sorted.values[i], builtIn, i, wanted);
    }
    const Type* type = UnifyValues(builtIn.name, values.subspan(1), wanted, range);
    if (type == nullptr || IsError(values[0])) return Error(range);
    const bool hasEnable = sorted.enable != nullptr || sorted.enableOutput != nullptr;
    const bool mayHaveEffects = context_.calls.size() > callsBefore;
    if (hasEnable || mayHaveEffects) return BuildRowCall(builtIn, values, sorted, type, range);
    if (const auto* condition = static_cast<ConstantExpr*>(values[0]); condition->kind == ExprKind::Constant)
        return condition->value->IsZero() ? values[1] : values[2];
    return New(SelectExpr{{ExprKind::Select, type, range}, values[0], values[2], values[1]});
}

Expr* BodyChecker::CheckSplit(const ast::CallExpr& call, const BuiltIn& builtIn, const BuiltInArguments& sorted) {
    const std::size_t outputs = (builtIn.row->minCount - 1U) / 2;
    if (sorted.values.size() != outputs + 1) {
        return Fail(DiagnosticCode::WrongArgumentCount, call.range,
                    {builtIn.name, std::to_string(outputs + 1), std::to_string(sorted.values.size())});
    }
    const Type* integer = Elementary(ElementaryType::Int);
    const std::span<Expr*> arguments = project_.arena.NewArray<Expr*>(builtIn.row->minCount);
    arguments[0] = CheckParameter(builtIn.signature->parameters[0], *sorted.values[0], builtIn, 0, nullptr);
    bool isFine = !IsError(arguments[0]);
    for (std::size_t i = 1; i <= outputs; ++i) {
        if (sorted.values[i] == nullptr) {
            Fail(DiagnosticCode::EmptyArgument, sorted.outputs[i]->range, {ParameterName(ParametersOf(builtIn), i)});
            return Error(call.range);
        }
        const SourceRange range = sorted.values[i]->range;
        Place* place = CheckAddressable(*sorted.values[i], true);
        arguments[2 * i - 1] = NewInteger(integer, 0, range);
        if (place != nullptr && place->type->storage != ElementaryType::Int) {
            Fail(DiagnosticCode::TypeMismatch, range, {"a variable of type INT", Text(place->type)});
            place = nullptr;
        }
        isFine &= place != nullptr;
        if (place == nullptr) continue;
        MarkWritten(place, range);
        MarkAddressTaken(place);
        arguments[2 * i] = New(AddressExpr{{ExprKind::Address, project_.types.Pointer(place->type), range}, place});
    }
    if (!isFine) return Error(call.range);
    return BuildRowCall(builtIn, arguments, sorted, project_.types.Void(), call.range);
}

Expr* BodyChecker::CheckRowCall(const ast::CallExpr& call, const BuiltIn& builtIn, const Type* wanted) {
    BuiltInArguments sorted;
    if (!SortArguments(call, builtIn, sorted)) return Error(call.range);
    const BuiltInSignature& signature = *builtIn.signature;
    if (signature.form == CallForm::Split) return CheckSplit(call, builtIn, sorted);
    const FunctionRow& row = *builtIn.row;
    const std::size_t count = sorted.values.size();
    const std::size_t most = row.maxCount == FunctionRow::kAnyCount ? 254 : row.maxCount;
    if (count < row.minCount || count > most) {
        std::string expected = std::to_string(row.minCount);
        if (row.maxCount == FunctionRow::kAnyCount) expected += " or more";
        return Fail(DiagnosticCode::WrongArgumentCount, call.range, {builtIn.name, expected, std::to_string(count)});
    }
    switch (signature.form) {
        case CallForm::Operator: return CheckOperatorFunction(builtIn, sorted, wanted, call.range);
        case CallForm::Selection: return CheckSelection(builtIn, sorted, wanted, call.range);
        case CallForm::Move:
            if (sorted.enable == nullptr && sorted.enableOutput == nullptr) return Check(*sorted.values[0], wanted);
            break;
        default: break;
    }
    const std::span<Expr*> arguments = project_.arena.NewArray<Expr*>(count);
    std::size_t sharedFrom = count;
    for (std::size_t i = 0; i < count; ++i) {
        const ParamRule rule = RuleOf(signature, i);
        arguments[i] = CheckParameter(rule, *sorted.values[i], builtIn, i, wanted);
        if (rule == ParamRule::Shared && sharedFrom == count) sharedFrom = i;
        if (i > 0 && !IsError(arguments[0]) && IsString(arguments[0]->type))
            arguments[i] = CheckTextParameter(rule, arguments[i], BaseOf(arguments[0]->type), builtIn, i);
    }
    if (std::ranges::any_of(arguments, IsError)) return Error(call.range);
    const Type* type = nullptr;
    if (sharedFrom < count) {
        type = UnifyValues(builtIn.name, arguments.subspan(sharedFrom), wanted, call.range);
        if (type == nullptr) return Error(call.range);
    }
    const Type* lreal = Elementary(ElementaryType::LReal);
    if (RuleOf(signature, 0) == ParamRule::SharedReal) {
        const bool areReal = std::ranges::all_of(
            arguments, [](const Expr* argument) { return argument->type->storage == ElementaryType::Real; });
        for (Expr*& argument : arguments) {
            if (!areReal && argument->type->storage != lreal->storage) argument = NewConvert(argument, lreal, true);
        }
    }
    const auto textOf = [&](std::uint32_t capacity) -> const Type* {
        const bool isWide = arguments[0]->type->storage == ElementaryType::WString;
        const std::uint32_t longest = isWide ? 32766 : 65533;
        return project_.types.String(arguments[0]->type->storage,
                                     static_cast<std::uint16_t>(std::min(capacity, longest)));
    };
    const auto capacityOf = [](const Expr* text) -> std::uint32_t {
        return IsString(text->type) ? static_cast<const StringType*>(BaseOf(text->type))->capacity : 0;
    };
    switch (signature.result) {
        case ResultRule::Void: type = project_.types.Void(); break;
        case ResultRule::First: type = BaseOf(arguments[0]->type); break;
        case ResultRule::Shared: break;
        case ResultRule::RealLike: type = BaseOf(arguments[0]->type); break;
        case ResultRule::Text: type = textOf(capacityOf(arguments[0])); break;
        case ResultRule::LongText: {
            std::uint32_t capacity = 0;
            for (const Expr* argument : arguments)
                capacity += capacityOf(argument);
            type = textOf(capacity);
            break;
        }
        case ResultRule::LikeFormat:
            type = project_.types.String(arguments[1]->type->storage, GetSwitches().stringLength);
            break;
        case ResultRule::Fixed:
            type = signature.type == ElementaryType::String
                       ? project_.types.String(ElementaryType::String, GetSwitches().stringLength)
                       : Elementary(signature.type);
            break;
        case ResultRule::Count: {
            Expr* counted = BuildRowCall(builtIn, arguments, sorted, Elementary(ElementaryType::UInt), call.range);
            const bool fitsWanted = wanted != nullptr && IsInteger(wanted) && wanted->size >= 2;
            constexpr std::uint32_t kLargestInt = 32767;
            const ElementaryType alone =
                capacityOf(arguments[0]) > kLargestInt ? ElementaryType::DInt : ElementaryType::Int;
            const Type* integer = fitsWanted ? BaseOf(wanted) : Elementary(alone);
            return integer->storage == ElementaryType::UInt ? counted : NewConvert(counted, integer, true);
        }
    }
    return BuildRowCall(builtIn, arguments, sorted, type, call.range);
}

Expr* BodyChecker::CheckBuiltInCall(const ast::CallExpr& call, const BuiltIn& builtIn, const Type* wanted) {
    switch (builtIn.kind) {
        case BuiltIn::Kind::Row: return CheckRowCall(call, builtIn, wanted);
        case BuiltIn::Kind::Conversion: return CheckConversionCall(call, builtIn, wanted);
        case BuiltIn::Kind::Special: return CheckSpecialCall(call, builtIn, wanted);
    }
    return Error(call.range);
}

}  // namespace tn61131::st
