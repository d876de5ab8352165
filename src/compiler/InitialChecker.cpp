#include "compiler/InitialChecker.h"

#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>

#include "compiler/Checker.h"
#include "compiler/Declarations.h"
#include "compiler/FixedPlace.h"

namespace tn61131::st {

namespace {

/// Elements of the dimensions: those of an array that has been made, so the product fits.
std::uint32_t CountOf(std::span<const ArrayBound> dimensions) noexcept {
    std::uint32_t count = 1;
    for (const ArrayBound& bound : dimensions)
        count *= bound.GetCount();
    return count;
}

bool IsPlace(const ast::Expr& value) noexcept {
    return value.kind == ast::ExprKind::Name || value.kind == ast::ExprKind::Member ||
           value.kind == ast::ExprKind::Index || value.kind == ast::ExprKind::Located;
}

bool IsBracketed(const ast::Expr& value) noexcept {
    return value.kind == ast::ExprKind::ArrayInit && static_cast<const ast::ArrayInitExpr&>(value).bracketed;
}

bool IsNull(const ast::Expr& value) noexcept {
    if (value.kind != ast::ExprKind::Literal) return false;
    const auto& literal = static_cast<const ast::LiteralExpr&>(value);
    if (literal.literal == ast::LiteralKind::Null) return true;
    return literal.literal == ast::LiteralKind::Integer &&
           (literal.text.ends_with('0') &&
            literal.text.find_first_of("123456789ABCDEFabcdef#") == std::string_view::npos);
}

}  // namespace

const InitialValue* InitialChecker::NoInitial(SourceRange range, const Type* type) {
    project_.diagnostics.Report(DiagnosticCode::BadInitialValue, range, {TextOf(type)});
    return nullptr;
}

const InitialValue* InitialChecker::MakeScalar(const Type* type, CValue value) {
    return &scalars_.emplace_back(ScalarInitial{{InitialValue::Kind::Scalar, type}, std::move(value)});
}

const InitialValue* InitialChecker::Check(const ast::Expr& value, const Type* type, Scope* scope) {
    const Type* const plain = Strip(type);
    if (value.kind == ast::ExprKind::Error) return nullptr;
    switch (plain->kind) {
        case TypeKind::Error: return nullptr;
        case TypeKind::Array: return CheckArray(value, type, scope);
        case TypeKind::Struct:
        case TypeKind::FunctionBlock: {
            if (value.kind != ast::ExprKind::StructInit) return CopyOf(value, type, scope);
            std::vector<Member> members;
            for (const ast::StructInitElement& element : static_cast<const ast::StructInitExpr&>(value).elements) {
                members.push_back({element.member, element.value});
            }
            return CheckMembers(members, value.range, type, scope);
        }
        case TypeKind::Pointer:
        case TypeKind::Reference: return CheckPointer(value, type, scope);
        case TypeKind::Elementary:
        case TypeKind::String:
        case TypeKind::Enum:
        case TypeKind::Subrange: return CheckScalar(value, type, scope);
        default: return NoInitial(value.range, type);
    }
}

const InitialValue* InitialChecker::CheckArguments(std::span<const ast::Argument> arguments, SourceRange range,
                                                   const Type* type, Scope* scope) {
    const Type* const plain = Strip(type);
    if (plain->kind == TypeKind::Error) return nullptr;
    if (plain->kind != TypeKind::FunctionBlock && plain->kind != TypeKind::Struct) return NoInitial(range, type);
    std::vector<Member> members;
    for (const ast::Argument& argument : arguments) {
        if (argument.name.name == NameId::None || argument.isOutput) return NoInitial(argument.range, type);
        members.push_back({argument.name, argument.value});
    }
    return CheckMembers(members, range, type, scope);
}

const InitialValue* InitialChecker::CheckScalar(const ast::Expr& value, const Type* type, Scope* scope) {
    if (value.kind == ast::ExprKind::ArrayInit || value.kind == ast::ExprKind::StructInit) {
        return NoInitial(value.range, type);
    }
    std::optional<CValue> constant = checker_.EvaluateConstant(value, type, scope);
    if (!constant) return nullptr;
    return MakeScalar(type, std::move(*constant));
}

/// The initial value of the variable or constant of the same type that `value` names.
const InitialValue* InitialChecker::CopyOf(const ast::Expr& value, const Type* type, Scope* scope) {
    if (value.kind != ast::ExprKind::Name) return NoInitial(value.range, type);
    const NameId name = static_cast<const ast::NameExpr&>(value).name;
    const Symbol* symbol = declarations_.Lookup(name, scope);
    if (symbol == nullptr) {
        project_.diagnostics.Report(DiagnosticCode::UnknownName, value.range, {project_.names.GetSpelling(name)});
        return nullptr;
    }
    if (symbol->kind != Symbol::Kind::Variable) return NoInitial(value.range, type);
    Variable& other = symbol->variable->aliasOf != nullptr ? *symbol->variable->aliasOf : *symbol->variable;
    if (other.type->kind == TypeKind::Error) return nullptr;
    if (Strip(other.type) != Strip(type)) return NoInitial(value.range, type);
    if (!other.isConstant && !(project_.usesStartValues && HasFixedPlace(other))) {
        project_.diagnostics.Report(DiagnosticCode::NotConstant, value.range);
        return nullptr;
    }
    if (const InitialValue* initial = declarations_.GetInitial(other)) return initial;
    // The other one has the default of its own type, all members included.
    return project_.arena.New<MembersInitial>(
        MembersInitial{{InitialValue::Kind::Members, other.type}, std::span<const InitialMember>()});
}

const InitialValue* InitialChecker::CheckPointer(const ast::Expr& value, const Type* type, Scope* scope) {
    const auto& pointer = *static_cast<const PointerType*>(Strip(type));
    if (IsNull(value)) return MakeScalar(type, CValue(ElementaryType::Pointer));
    if (value.kind == ast::ExprKind::Call) {
        const auto& call = static_cast<const ast::CallExpr&>(value);
        if (call.callee->kind == ast::ExprKind::Name && call.arguments.size() == 1 &&
            call.arguments[0].name.name == NameId::None && call.arguments[0].value != nullptr) {
            const std::string_view callee =
                project_.names.GetFolded(static_cast<const ast::NameExpr&>(*call.callee).name);
            if (callee == "adr" || callee == "ref") return CheckAddress(*call.arguments[0].value, pointer, scope);
        }
    }
    if (!IsPlace(value)) return NoInitial(value.range, type);
    if (pointer.kind == TypeKind::Reference) return CheckAddress(value, pointer, scope);
    return CopyOf(value, type, scope);
}

const InitialValue* InitialChecker::CheckAddress(const ast::Expr& expression, const PointerType& type, Scope* scope) {
    const std::optional<FixedPlace> place = FindFixedPlace(expression, scope, declarations_, checker_);
    if (!place) return nullptr;
    if (!HasFixedPlace(*place->variable)) {
        project_.diagnostics.Report(DiagnosticCode::NoFixedPlace, expression.range,
                                    {project_.sources.GetText(expression.range)});
        return nullptr;
    }
    const Type* const target = Strip(type.target);
    const Type* const found = Strip(place->type);
    const bool bothStrings = target->kind == TypeKind::String && found->storage == target->storage;
    if (target != found && !bothStrings && target->kind != TypeKind::Error && target->kind != TypeKind::Void) {
        project_.diagnostics.Report(DiagnosticCode::PointerDiffers, expression.range,
                                    {TextOf(&type), TextOf(place->type)});
        return nullptr;
    }
    std::uint32_t offset = place->offset;
    if (project_.options.switches.dataPointers && found->storage == ElementaryType::String) {
        offset += kTextHeader;
        place->variable->isTextExposed = true;
    }
    return project_.arena.New<AddressInitial>(
        AddressInitial{{InitialValue::Kind::Address, &type}, place->variable, offset});
}

const InitialValue* InitialChecker::CheckArray(const ast::Expr& value, const Type* type, Scope* scope) {
    const auto& array = *static_cast<const ArrayType*>(Strip(type));
    if (array.isOpen) return NoInitial(value.range, type);
    const Row row{type, array.bounds, array.element, scope, 0};
    if (value.kind == ast::ExprKind::ArrayInit) {
        return CheckRow(static_cast<const ast::ArrayInitExpr&>(value).elements, row);
    }
    if (value.kind == ast::ExprKind::Name) {
        const Symbol* symbol = declarations_.Lookup(static_cast<const ast::NameExpr&>(value).name, scope);
        const bool isArray = symbol != nullptr && symbol->kind == Symbol::Kind::Variable &&
                             Strip(symbol->variable->type)->kind == TypeKind::Array;
        if (isArray) return CopyOf(value, type, scope);
    }
    // Without brackets a single value is a list of one.
    const ast::ArrayInitElement only{nullptr, const_cast<ast::Expr*>(&value)};
    return CheckRow({&only, 1}, row);
}

const InitialValue* InitialChecker::CheckRow(std::span<const ast::ArrayInitElement> elements, const Row& row) {
    // An array of arrays without inner brackets is filled like one of more dimensions.
    const bool isFlat = std::ranges::none_of(elements, [](const ast::ArrayInitElement& each) {
        return each.value != nullptr && (IsBracketed(*each.value) || IsPlace(*each.value));
    });
    Row filled = row;
    std::uint32_t left = CountOf(row.dimensions);
    while (isFlat && filled.element->kind == TypeKind::Array) {
        const auto& inner = *static_cast<const ArrayType*>(filled.element);
        left *= CountOf(inner.bounds);
        filled.element = inner.element;
    }
    filled.total = left;
    std::vector<InitialRun> runs;
    if (!CheckSequence(elements, filled, left, runs)) return nullptr;
    return project_.arena.New<ArrayInitial>(
        ArrayInitial{{InitialValue::Kind::Array, row.type}, filled.element, project_.arena.Copy(runs)});
}

bool InitialChecker::CheckSequence(std::span<const ast::ArrayInitElement> elements, const Row& row, std::uint32_t& left,
                                   std::vector<InitialRun>& runs) {
    for (const ast::ArrayInitElement& each : elements) {
        ast::ArrayInitElement element = each;
        if (element.repeat == nullptr && IsNamedRepeat(element.value, row.scope)) {
            const auto& call = static_cast<const ast::CallExpr&>(*element.value);
            element = {call.callee, MakeSequence(call)};
        }
        InitialRun run;
        if (!CheckRepeat(element.repeat, row.scope, run.repeat)) return false;
        if (!CheckRepeated(element, row, left, run)) return false;
        const std::uint64_t count = std::uint64_t{run.repeat} * run.elements;
        if (count > left) {
            const SourceRange range = each.value != nullptr ? each.value->range : each.repeat->range;
            project_.diagnostics.Report(DiagnosticCode::TooManyElements,
                                        each.repeat != nullptr ? Join(each.repeat->range, range) : range,
                                        {std::to_string(row.total), TextOf(row.type)});
            return false;
        }
        left -= static_cast<std::uint32_t>(count);
        if (count != 0) runs.push_back(run);
    }
    return true;
}

bool InitialChecker::CheckRepeated(const ast::ArrayInitElement& element, const Row& row, std::uint32_t left,
                                   InitialRun& run) {
    if (element.value == nullptr) return true;
    if (element.value->kind != ast::ExprKind::ArrayInit) {
        run.value = Check(*element.value, row.element, row.scope);
        return run.value != nullptr;
    }
    const auto& list = static_cast<const ast::ArrayInitExpr&>(*element.value);
    if (!list.bracketed) {
        // 3(1, 2) repeats the values within the same row.
        std::vector<InitialRun> runs;
        std::uint32_t rest = left;
        if (!CheckSequence(list.elements, row, rest, runs)) return false;
        run.elements = left - rest;
        run.value = project_.arena.New<ArrayInitial>(
            ArrayInitial{{InitialValue::Kind::Array, row.type}, row.element, project_.arena.Copy(runs)});
        return true;
    }
    if (row.dimensions.size() > 1) {
        const std::span<const ArrayBound> inner = row.dimensions.subspan(1);
        run.elements = CountOf(inner);
        run.value = CheckRow(list.elements, {row.type, inner, row.element, row.scope, 0});
    } else {
        run.value = Check(list, row.element, row.scope);
    }
    return run.value != nullptr;
}

bool InitialChecker::CheckRepeat(const ast::Expr* repeat, Scope* scope, std::uint32_t& out) {
    if (repeat == nullptr) return true;
    const std::optional<std::int64_t> count = checker_.EvaluateInteger(*repeat, scope);
    if (!count) return false;
    if (*count < 0 || *count > kMaxTypeSize) {
        project_.diagnostics.Report(DiagnosticCode::BadRepeatCount, repeat->range, {std::to_string(*count)});
        return false;
    }
    out = static_cast<std::uint32_t>(*count);
    return true;
}

bool InitialChecker::IsNamedRepeat(const ast::Expr* value, Scope* scope) {
    if (value == nullptr || value->kind != ast::ExprKind::Call) return false;
    const ast::Expr& callee = *static_cast<const ast::CallExpr*>(value)->callee;
    if (callee.kind != ast::ExprKind::Name) return false;
    const Symbol* symbol = declarations_.Lookup(static_cast<const ast::NameExpr&>(callee).name, scope);
    return symbol != nullptr && symbol->kind == Symbol::Kind::Variable && symbol->variable->isConstant;
}

ast::Expr* InitialChecker::MakeSequence(const ast::CallExpr& call) {
    if (call.arguments.empty()) return nullptr;
    if (call.arguments.size() == 1) return call.arguments.front().value;
    std::vector<ast::ArrayInitElement> elements;
    for (const ast::Argument& argument : call.arguments)
        elements.push_back({nullptr, argument.value});
    return project_.arena.New<ast::ArrayInitExpr>(ast::Expr{ast::ExprKind::ArrayInit, call.range},
                                                  project_.arena.Copy(elements), false);
}

const InitialValue* InitialChecker::CheckMembers(std::span<const Member> members, SourceRange range, const Type* type,
                                                 Scope* scope) {
    static_cast<void>(range);
    std::vector<InitialMember> checked;
    std::unordered_set<NameId> seen;
    bool failed = false;
    for (const Member& member : members) {
        InitialMember place;
        if (!FindMember(Strip(type), member.name, place)) {
            failed = true;
            continue;
        }
        if (!seen.insert(member.name.name).second) {
            project_.diagnostics.Report(DiagnosticCode::MemberTwice, member.name.range,
                                        {project_.names.GetSpelling(member.name.name)});
            failed = true;
        }
        if (member.value == nullptr) continue;
        place.value = CheckMemberValue(*member.value, place, scope);
        if (place.value == nullptr) {
            failed = true;
            continue;
        }
        checked.push_back(place);
    }
    if (failed) return nullptr;
    return project_.arena.New<MembersInitial>(
        MembersInitial{{InitialValue::Kind::Members, type}, project_.arena.Copy(checked)});
}

bool InitialChecker::FindMember(const Type* type, const ast::Identifier& name, InitialMember& out) {
    if (type->kind == TypeKind::Struct) {
        if (const Field* field = static_cast<const StructType*>(type)->Find(name.name)) {
            out = {name.name, field->offset, field->type, nullptr};
            return true;
        }
    } else if (const Variable* variable = static_cast<const FunctionBlockType*>(type)->Find(name.name)) {
        if (variable->storage.kind == StorageKind::Instance && !variable->edge.has_value()) {
            out = {name.name, variable->storage.offset, variable->type, nullptr};
            return true;
        }
        if (variable->storage.kind == StorageKind::InstancePointer) {
            out = {name.name, variable->storage.offset, project_.types.Reference(variable->type), nullptr};
            return true;
        }
        project_.diagnostics.Report(DiagnosticCode::InitialNotWritable, name.range,
                                    {project_.names.GetSpelling(name.name)});
        return false;
    }
    project_.diagnostics.Report(DiagnosticCode::NoSuchMember, name.range,
                                {TextOf(type), project_.names.GetSpelling(name.name)});
    return false;
}

const InitialValue* InitialChecker::CheckMemberValue(const ast::Expr& value, const InitialMember& member,
                                                     Scope* scope) {
    if (member.type->kind == TypeKind::Error) return nullptr;
    return Check(value, member.type, scope);
}

}  // namespace tn61131::st
