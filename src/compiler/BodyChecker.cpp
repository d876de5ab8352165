#include "compiler/BodyChecker.h"

#include <algorithm>

#include "platform/TextOutput.h"

namespace tn61131::st {

Family FamilyOf(const Type* type) noexcept {
    type = BaseOf(type);
    switch (type->kind) {
        case TypeKind::Error: return Family::Error;
        case TypeKind::Void: return Family::Void;
        case TypeKind::Null: return Family::Null;
        case TypeKind::Pointer:
        case TypeKind::Reference: return Family::Pointer;
        case TypeKind::Enum: return Family::Enum;
        case TypeKind::Array:
        case TypeKind::Struct:
        case TypeKind::FunctionBlock:
        case TypeKind::Interface: return Family::Aggregate;
        case TypeKind::String: return type->storage == ElementaryType::WString ? Family::WString : Family::String;
        case TypeKind::Elementary:
        case TypeKind::Subrange:
        case TypeKind::Alias: break;
    }
    switch (type->storage) {
        case ElementaryType::Bool: return Family::Bool;
        case ElementaryType::SInt:
        case ElementaryType::Int:
        case ElementaryType::DInt:
        case ElementaryType::LInt: return Family::Signed;
        case ElementaryType::USInt:
        case ElementaryType::UInt:
        case ElementaryType::UDInt:
        case ElementaryType::ULInt: return Family::Unsigned;
        case ElementaryType::Byte:
        case ElementaryType::Word:
        case ElementaryType::DWord:
        case ElementaryType::LWord: return Family::Bits;
        case ElementaryType::Real:
        case ElementaryType::LReal: return Family::Real;
        case ElementaryType::Time: return Family::Time;
        case ElementaryType::TimeOfDay: return Family::TimeOfDay;
        case ElementaryType::Date: return Family::Date;
        case ElementaryType::DateAndTime: return Family::DateAndTime;
        case ElementaryType::Char: return Family::Char;
        case ElementaryType::WChar: return Family::WChar;
        default: return Family::Error;
    }
}

BodyChecker::BodyChecker(Project& project)
    : project_(project), builtIns_(project.types, project.options.switches.stringLength) {}

/// Sets a context aside for as long as another one is checked.
class BodyChecker::Enter {
 public:
    Enter(BodyChecker& checker, Scope* scope, Pou* pou) : checker_(checker), outer_(std::move(checker.context_)) {
        checker_.context_ = Context{};
        checker_.context_.scope = scope;
        checker_.context_.pou = pou;
    }
    Enter(const Enter&) = delete;
    Enter& operator=(const Enter&) = delete;
    ~Enter() { checker_.context_ = std::move(outer_); }

 private:
    BodyChecker& checker_;
    Context outer_;
};

// --- messages ---

Expr* BodyChecker::Error(SourceRange range) {
    return New(Expr{ExprKind::Constant, project_.types.Error(), range});
}

Expr* BodyChecker::Fail(DiagnosticCode code, SourceRange range, std::initializer_list<std::string_view> arguments) {
    project_.diagnostics.Report(code, range, arguments);
    return Error(range);
}

bool BodyChecker::Allow(Switches::Strictness strictness, DiagnosticCode code, SourceRange range,
                        std::initializer_list<std::string_view> arguments) {
    switch (strictness) {
        case Switches::Strictness::Silent: return true;
        case Switches::Strictness::Warning:
            project_.diagnostics.Report(code, Severity::Warning, range, arguments);
            return true;
        case Switches::Strictness::Error: break;
    }
    project_.diagnostics.Report(code, Severity::Error, range, arguments);
    return false;
}

void BodyChecker::Hint(DiagnosticCode code, SourceRange range, std::initializer_list<std::string_view> arguments) {
    if (GetSwitches().hints) project_.diagnostics.Report(code, Severity::Hint, range, arguments);
}

void BodyChecker::ReportUnknownName(NameId name, SourceRange range) {
    const std::string spelling = SourceText(range);
    Diagnostic& diagnostic = project_.diagnostics.Report(DiagnosticCode::UnknownName, range, {spelling});
    // Looking through all names takes its time; nobody reads hundreds of guesses.
    constexpr std::uint32_t kMostGuesses = 50;
    if (++unknownNames_ > kMostGuesses) return;
    std::vector<std::string_view> candidates = declarations_->CollectNames(context_.scope);
    const std::vector<std::string_view> builtIns = builtIns_.CollectNames();
    candidates.insert(candidates.end(), builtIns.begin(), builtIns.end());
    const std::string_view nearest = FindNearestName(project_.names.GetFolded(name), candidates);
    if (!nearest.empty()) diagnostic.notes.push_back({range, "did you mean '" + std::string(nearest) + "'?"});
}

std::string BodyChecker::Text(const Type* type) const {
    return GetTypeText(project_.names, type);
}

std::string BodyChecker::SourceText(SourceRange range) const {
    constexpr std::size_t kLongest = 40;
    const std::string_view text = project_.sources.GetText(range);
    if (text.size() <= kLongest) return std::string(text);
    return std::string(text.substr(0, kLongest)) + "...";
}

std::string BodyChecker::ValueText(const ConstantExpr& constant) const {
    CTextOutputString output;
    constant.value->GetAsLiteral(output);
    return output.GetText();
}

std::string BodyChecker::NumberText(const ConstantExpr& constant) const {
    std::string text = SourceText(constant.range);
    const bool isLiteral = text.find_first_not_of("0123456789ABCDEFabcdef_#.+-") == std::string::npos;
    return isLiteral ? text : ValueText(constant);
}

// --- nodes ---

ConstantExpr* BodyChecker::NewConstant(const Type* type, CValue value, SourceRange range, bool untyped) {
    constants_.push_back(std::move(value));
    return New(ConstantExpr{{ExprKind::Constant, type, range}, &constants_.back(), untyped});
}

ConstantExpr* BodyChecker::NewInteger(const Type* type, std::int64_t value, SourceRange range) {
    CValue number;
    number.SetInteger(value, type->storage);
    return NewConstant(type, std::move(number), range);
}

Expr* BodyChecker::NewLoad(Place* place, SourceRange range) {
    return New(LoadExpr{{ExprKind::Load, place->type, range}, place});
}

Expr* BodyChecker::NewConvert(Expr* operand, const Type* type, bool isImplicit, bool truncate) {
    if (IsError(operand)) return operand;
    if (operand->kind == ExprKind::Constant) {
        if (ConstantExpr* folded = FoldConvert(*static_cast<ConstantExpr*>(operand), type, truncate)) return folded;
    }
    const bool fromText = IsString(operand->type) && !IsString(type);
    return New(ConvertExpr{{ExprKind::Convert, type, operand->range},
                           truncate,
                           fromText && !GetSwitches().stringFail,
                           isImplicit,
                           operand});
}

Expr* BodyChecker::NewBuiltInCall(std::uint8_t group, std::uint8_t id, const Type* type, SourceRange range,
                                  std::initializer_list<Expr*> arguments) {
    const std::span<Expr*> list = project_.arena.NewArray<Expr*>(arguments.size());
    std::ranges::copy(arguments, list.begin());
    return New(CallBuiltInExpr{{ExprKind::CallBuiltIn, type, range}, group, id, list, false, nullptr, nullptr});
}

std::optional<std::int64_t> BodyChecker::GetInteger(const Expr* expr) {
    if (expr->kind != ExprKind::Constant || expr->type->kind == TypeKind::Error) return std::nullopt;
    const CValue& value = *static_cast<const ConstantExpr*>(expr)->value;
    switch (value.GetType()) {
        case ElementaryType::SInt: return value.GetPayload<std::int8_t>();
        case ElementaryType::USInt:
        case ElementaryType::Byte: return value.GetPayload<std::uint8_t>();
        case ElementaryType::Int: return value.GetPayload<std::int16_t>();
        case ElementaryType::UInt:
        case ElementaryType::Word: return value.GetPayload<std::uint16_t>();
        case ElementaryType::DInt: return value.GetPayload<std::int32_t>();
        case ElementaryType::UDInt:
        case ElementaryType::DWord: return value.GetPayload<std::uint32_t>();
        case ElementaryType::LInt:
        case ElementaryType::ULInt:
        case ElementaryType::LWord: return value.GetPayload<std::int64_t>();
        default: return std::nullopt;
    }
}

// --- entries ---

Expr* BodyChecker::CheckExpressionIn(const ast::Expr& expression, const Type* wanted, Scope* scope) {
    const Enter enter(*this, scope, scope->GetOwner());
    Expr* expr = wanted == nullptr ? Settle(Check(expression, nullptr)) : CheckAs(expression, wanted);
    return IsError(expr) ? nullptr : expr;
}

std::optional<CValue> BodyChecker::EvaluateConstantIn(const ast::Expr& expression, const Type* wanted, Scope* scope) {
    const Expr* expr = CheckExpressionIn(expression, wanted, scope);
    if (expr == nullptr) return std::nullopt;
    if (expr->kind != ExprKind::Constant) {
        project_.diagnostics.Report(DiagnosticCode::NotConstant, expression.range);
        return std::nullopt;
    }
    return *static_cast<const ConstantExpr*>(expr)->value;
}

std::optional<std::int64_t> BodyChecker::EvaluateIntegerIn(const ast::Expr& expression, Scope* scope) {
    const Expr* expr = CheckExpressionIn(expression, nullptr, scope);
    if (expr == nullptr) return std::nullopt;
    if (expr->kind != ExprKind::Constant) {
        project_.diagnostics.Report(DiagnosticCode::NotConstant, expression.range);
        return std::nullopt;
    }
    const std::optional<std::int64_t> value = GetInteger(expr);
    if (!value) {
        project_.diagnostics.Report(DiagnosticCode::TypeMismatch, expression.range,
                                    {"a whole number", Text(expr->type)});
    }
    return value;
}

void BodyChecker::CheckPou(Pou& pou) {
    if (pou.declaration == nullptr) return;
    const std::uint32_t errorsBefore = project_.diagnostics.GetErrorCount();
    {
        const Enter enter(*this, pou.scope, &pou);
        if (pou.declaration->sfc == nullptr) {
            Block* body = CheckBlock(pou.declaration->body, pou.declaration->range);
            if (project_.diagnostics.GetErrorCount() == errorsBefore) pou.body = body;
        } else {
            Fail(DiagnosticCode::AttemptUnsupported, pou.declaration->name.range,
                 {"a sequential function chart", Text(pou.name)});
        }
        pou.hasSideEffects = context_.writesOutside;
    }
    for (Pou* accessor : {pou.getter, pou.setter}) {
        if (accessor != nullptr) CheckPou(*accessor);
    }
    for (const auto& [name, member] : pou.members) {
        if (member->container == &pou) CheckPou(*member);
    }
}

void BodyChecker::CheckStandaloneExpression(Standalone& standalone, const ast::Expr& expression) {
    const Enter enter(*this, standalone.pou->scope, standalone.pou);
    Expr* expr = Settle(Check(expression, nullptr));
    if (!IsError(expr) && (IsAggregate(expr->type) || FamilyOf(expr->type) == Family::Void))
        expr = Fail(DiagnosticCode::AggregateOperand, expression.range, {SourceText(expression.range)});
    standalone.expression = IsError(expr) ? nullptr : expr;
    DecideSideEffects();
}

void BodyChecker::CheckStandaloneBlock(Standalone& standalone, std::span<ast::Stmt* const> statements) {
    const std::uint32_t errorsBefore = project_.diagnostics.GetErrorCount();
    const Enter enter(*this, standalone.pou->scope, standalone.pou);
    Block* body = CheckBlock(statements, {});
    if (project_.diagnostics.GetErrorCount() == errorsBefore) standalone.pou->body = body;
    DecideSideEffects();
}

}  // namespace tn61131::st
