#include "compiler/FixedPlace.h"

#include <string>

#include "compiler/Checker.h"
#include "compiler/Declarations.h"

namespace tn61131::st {

namespace {

class PlaceFinder {
 public:
    PlaceFinder(Scope* scope, Declarations& declarations, Checker& checker) noexcept
        : scope_(scope), declarations_(declarations), checker_(checker), project_(declarations.GetProject()) {}

    std::optional<FixedPlace> Find(const ast::Expr& expression) {
        switch (expression.kind) {
            case ast::ExprKind::Error: return std::nullopt;
            case ast::ExprKind::Name: return FindName(static_cast<const ast::NameExpr&>(expression));
            case ast::ExprKind::Located: {
                Variable* variable = declarations_.ResolveLocated(static_cast<const ast::LocatedExpr&>(expression));
                return variable == nullptr ? std::nullopt : std::optional(Whole(*variable));
            }
            case ast::ExprKind::Member: return FindMember(static_cast<const ast::MemberExpr&>(expression));
            case ast::ExprKind::Index: return FindElement(static_cast<const ast::IndexExpr&>(expression));
            default: return NoFixedPlace(expression.range);
        }
    }

 private:
    static FixedPlace Whole(Variable& variable) {
        if (variable.aliasOf != nullptr) return {variable.aliasOf, variable.aliasOffset, variable.type};
        return {&variable, 0, variable.type};
    }

    std::optional<FixedPlace> NoFixedPlace(SourceRange range) {
        project_.diagnostics.Report(DiagnosticCode::NoFixedPlace, range, {project_.sources.GetText(range)});
        return std::nullopt;
    }

    std::optional<FixedPlace> FromSymbol(const Symbol* symbol, NameId name, SourceRange range) {
        if (symbol == nullptr) {
            project_.diagnostics.Report(DiagnosticCode::UnknownName, range, {project_.names.GetSpelling(name)});
            return std::nullopt;
        }
        if (symbol->kind != Symbol::Kind::Variable) return NoFixedPlace(range);
        if (symbol->variable->type->kind == TypeKind::Error) return std::nullopt;
        return Whole(*symbol->variable);
    }

    std::optional<FixedPlace> FindName(const ast::NameExpr& expression) {
        return FromSymbol(declarations_.Lookup(expression.name, scope_), expression.name, expression.range);
    }

    std::optional<FixedPlace> FindMember(const ast::MemberExpr& expression) {
        if (const Pou* program = FindProgram(*expression.base)) {
            return FromSymbol(declarations_.LookupMember(expression.member.name, program), expression.member.name,
                              expression.member.range);
        }
        std::optional<FixedPlace> place = Find(*expression.base);
        if (!place) return std::nullopt;
        const Type* type = Strip(place->type);
        if (type->kind == TypeKind::Struct) {
            if (const Field* field = static_cast<const StructType*>(type)->Find(expression.member.name)) {
                return FixedPlace{place->variable, place->offset + field->offset, field->type};
            }
        } else if (type->kind == TypeKind::FunctionBlock) {
            const Variable* member = static_cast<const FunctionBlockType*>(type)->Find(expression.member.name);
            if (member != nullptr && member->storage.kind == StorageKind::Instance) {
                return FixedPlace{place->variable, place->offset + member->storage.offset, member->type};
            }
            if (member != nullptr) return NoFixedPlace(expression.range);
        }
        project_.diagnostics.Report(
            DiagnosticCode::NoSuchMember, expression.member.range,
            {GetTypeText(project_.names, place->type), project_.names.GetSpelling(expression.member.name)});
        return std::nullopt;
    }

    const Pou* FindProgram(const ast::Expr& base) {
        if (base.kind != ast::ExprKind::Name) return nullptr;
        const Symbol* symbol = declarations_.Lookup(static_cast<const ast::NameExpr&>(base).name, scope_);
        const bool isProgram =
            symbol != nullptr && symbol->kind == Symbol::Kind::Pou && symbol->pou->kind == ast::PouKind::Program;
        return isProgram ? symbol->pou : nullptr;
    }

    std::optional<FixedPlace> FindElement(const ast::IndexExpr& expression) {
        std::optional<FixedPlace> place = Find(*expression.base);
        if (!place) return std::nullopt;
        const Type* type = Strip(place->type);
        if (type->kind != TypeKind::Array || static_cast<const ArrayType*>(type)->isOpen) {
            return NoFixedPlace(expression.range);
        }
        const auto& array = *static_cast<const ArrayType*>(type);
        if (array.bounds.size() != expression.indices.size()) {
            project_.diagnostics.Report(
                DiagnosticCode::WrongIndexCount, expression.range,
                {std::to_string(array.bounds.size()), std::to_string(expression.indices.size())});
            return std::nullopt;
        }
        std::uint32_t element = 0;
        for (std::size_t i = 0; i < array.bounds.size(); ++i) {
            const std::optional<std::int64_t> index = checker_.EvaluateInteger(*expression.indices[i], scope_);
            if (!index) return std::nullopt;
            const ArrayBound& bound = array.bounds[i];
            if (*index < bound.lower || *index > bound.upper) {
                project_.diagnostics.Report(
                    DiagnosticCode::IndexOutOfBounds, expression.indices[i]->range,
                    {std::to_string(*index), std::to_string(bound.lower), std::to_string(bound.upper)});
                return std::nullopt;
            }
            element = element * bound.GetCount() + static_cast<std::uint32_t>(*index - bound.lower);
        }
        return FixedPlace{place->variable, place->offset + element * array.element->size, array.element};
    }

    Scope* scope_;
    Declarations& declarations_;
    Checker& checker_;
    Project& project_;
};

}  // namespace

std::optional<FixedPlace> FindFixedPlace(const ast::Expr& expression, Scope* scope, Declarations& declarations,
                                         Checker& checker) {
    return PlaceFinder(scope, declarations, checker).Find(expression);
}

bool HasFixedPlace(const Variable& variable) noexcept {
    if (variable.isConstant) return false;
    if (variable.storage.kind == StorageKind::Tag || variable.storage.kind == StorageKind::Global) return true;
    if (variable.section == ast::VarSection::Static) return true;
    if (variable.declaration != nullptr && variable.declaration->location != nullptr) return true;
    if (variable.owner == nullptr) return variable.storage.kind == StorageKind::Unassigned;
    return variable.owner->kind == ast::PouKind::Program && variable.section != ast::VarSection::Temp;
}

}  // namespace tn61131::st
