#include <algorithm>
#include <array>

#include "compiler/BodyChecker.h"

// Names and places: what an expression stands for, what may be written, what is seen of variables.

namespace tn61131::st {

namespace {

[[nodiscard]] std::string_view DescribeSymbol(const Entity& entity) noexcept {
    switch (entity.kind) {
        case Entity::Kind::Type: return "a type";
        case Entity::Kind::Namespace: return "a namespace";
        case Entity::Kind::BuiltIn: return "a function";
        case Entity::Kind::Pou: break;
        default: return "a value";
    }
    switch (entity.pou->kind) {
        case ast::PouKind::Program: return "a program";
        case ast::PouKind::FunctionBlock: return "a function block";
        case ast::PouKind::Method: return "a method";
        case ast::PouKind::Action: return "an action";
        case ast::PouKind::Interface: return "an interface";
        case ast::PouKind::Property: return "a property";
        case ast::PouKind::Function: break;
    }
    return "a function";
}

/// The variable that a place is part of; null behind a pointer.
[[nodiscard]] Variable* RootOf(const Place* place) noexcept {
    while (true) {
        switch (place->kind) {
            case PlaceKind::Variable: return static_cast<const VariablePlace*>(place)->variable;
            case PlaceKind::Member: place = static_cast<const MemberPlace*>(place)->base; break;
            case PlaceKind::Element: place = static_cast<const ElementPlace*>(place)->base; break;
            case PlaceKind::Char: place = static_cast<const CharPlace*>(place)->base; break;
            case PlaceKind::Deref:
            case PlaceKind::Result:
            case PlaceKind::This:
            case PlaceKind::Kept: return nullptr;
        }
    }
}

/// The variable that is meant, behind VAR_EXTERNAL and AT.
[[nodiscard]] Variable* Behind(Variable* variable) noexcept {
    while (variable->aliasOf != nullptr && variable->aliasOffset == 0 &&
           Strip(variable->type) == Strip(variable->aliasOf->type))
        variable = variable->aliasOf;
    return variable;
}

}  // namespace

Pou* BodyChecker::GetBlock() const noexcept {
    Pou* pou = context_.pou;
    if (pou == nullptr) return nullptr;
    if (pou->container != nullptr) pou = pou->container;
    return pou->kind == ast::PouKind::FunctionBlock ? pou : nullptr;
}

// --- facts ---

void BodyChecker::MarkRead(const Place* place) {
    if (Variable* variable = RootOf(place)) variable->isRead = true;
}

void BodyChecker::MarkWritten(const Place* place, SourceRange range) {
    Variable* variable = RootOf(place);
    if (variable == nullptr) {
        if (place->kind != PlaceKind::Result) context_.writesOutside = true;
        return;
    }
    for (Variable* written = variable; written != nullptr; written = written->aliasOf) {
        written->isWritten = true;
        if (place->kind != PlaceKind::Variable) written->isPartWritten = true;
    }
    const bool isOwn = variable->owner == context_.pou && variable->aliasOf == nullptr && context_.pou != nullptr &&
                       context_.pou->kind == ast::PouKind::Function && variable->section != ast::VarSection::InOut &&
                       variable->section != ast::VarSection::Output && variable->section != ast::VarSection::External;
    if (!isOwn) context_.writesOutside = true;
    if (place->kind == PlaceKind::Variable && std::ranges::find(context_.counters, variable) != context_.counters.end())
        project_.diagnostics.Report(DiagnosticCode::CounterWritten, range, {Text(variable->name)});
}

void BodyChecker::MarkAddressTaken(const Place* place) {
    for (Variable* variable = RootOf(place); variable != nullptr; variable = variable->aliasOf)
        variable->isAddressTaken = true;
}

void BodyChecker::ExposeText(const Place* place) {
    if (!GetSwitches().dataPointers || BaseOf(place->type)->storage != ElementaryType::String) return;
    for (Variable* variable = RootOf(place); variable != nullptr; variable = variable->aliasOf)
        variable->isTextExposed = true;
    if (place->kind != PlaceKind::Member) return;
    const auto& member = static_cast<const MemberPlace&>(*place);
    const Type* owner = Strip(member.base->type);
    if (owner->kind != TypeKind::FunctionBlock) return;
    if (Variable* variable = static_cast<const FunctionBlockType*>(owner)->Find(member.member))
        variable->isTextExposed = true;
}

// --- names ---

Entity BodyChecker::FromPlace(Place* place, const char* readOnly) {
    Entity entity;
    entity.kind = Entity::Kind::Place;
    entity.place = place;
    entity.readOnly = readOnly;
    // Every use of a reference means what it refers to.
    const Type* type = Strip(place->type);
    if (type->kind == TypeKind::Reference) {
        MarkRead(place);
        const Type* target = static_cast<const PointerType*>(type)->target;
        entity.place = New(DerefPlace{{PlaceKind::Deref, target, place->range}, NewLoad(place, place->range), nullptr});
        entity.readOnly = nullptr;
    }
    return entity;
}

Entity BodyChecker::FromEnumMember(const Type* type, const EnumMember& member, SourceRange range) {
    Entity entity;
    entity.kind = Entity::Kind::Value;
    entity.value = NewInteger(type, member.value, range);
    return entity;
}

Entity BodyChecker::FromVariable(Variable* declared, SourceRange range) {
    Variable* variable = Behind(declared);
    if (variable != declared) declared->isRead = true;
    if (variable->type == nullptr || variable->type->kind == TypeKind::Error) return {};
    if (variable->isConstant && variable->constantValue.has_value()) {
        variable->isRead = true;
        Entity entity;
        entity.kind = Entity::Kind::Value;
        entity.value = New(ConstantExpr{{ExprKind::Constant, variable->type, range}, &*variable->constantValue, false});
        return entity;
    }
    if (project_.usesStartValues) {
        if (const CValue* start = declarations_->GetStartValue(*variable)) {
            variable->isRead = true;
            Entity entity;
            entity.kind = Entity::Kind::Value;
            entity.value = New(ConstantExpr{{ExprKind::Constant, variable->type, range}, start, false});
            return entity;
        }
    }
    const char* readOnly = nullptr;
    if (variable->isConstant) {
        readOnly = "a constant";
    } else if (variable->isReadOnly) {
        readOnly = "a read-only directly located variable";
    }
    return FromPlace(New(VariablePlace{{PlaceKind::Variable, variable->type, range}, variable}), readOnly);
}

Entity BodyChecker::FromSymbol(const Symbol& symbol, NameId name, SourceRange range) {
    Entity entity;
    entity.name = name;
    switch (symbol.kind) {
        case Symbol::Kind::Variable: return FromVariable(symbol.variable, range);
        case Symbol::Kind::EnumMember:
            if (symbol.alternatives != nullptr) {
                Diagnostic& diagnostic =
                    project_.diagnostics.Report(DiagnosticCode::AmbiguousName, range, {SourceText(range)});
                for (const Symbol& each : *symbol.alternatives)
                    diagnostic.notes.push_back({each.declared, "a value of " + Text(each.type)});
                return {};
            }
            return FromEnumMember(symbol.type, *symbol.member, range);
        case Symbol::Kind::Type:
            entity.kind = Entity::Kind::Type;
            entity.type = symbol.type;
            break;
        case Symbol::Kind::Pou:
            entity.kind = Entity::Kind::Pou;
            entity.pou = symbol.pou;
            break;
        case Symbol::Kind::Namespace:
            entity.kind = Entity::Kind::Namespace;
            entity.scope = symbol.scope;
            break;
    }
    return entity;
}

Entity BodyChecker::ResolveName(NameId name, SourceRange range, const Type* wanted) {
    const Symbol* symbol = declarations_->Lookup(name, context_.scope);
    const Type* base = wanted == nullptr ? nullptr : BaseOf(wanted);
    if (base != nullptr && base->kind == TypeKind::Enum &&
        (symbol == nullptr || symbol->kind == Symbol::Kind::EnumMember)) {
        // Of several enumerations that have the name, the one that is expected.
        if (const EnumMember* member = static_cast<const EnumType*>(base)->Find(name))
            return FromEnumMember(base, *member, range);
    }
    if (symbol != nullptr) return FromSymbol(*symbol, name, range);
    Entity entity;
    entity.name = name;
    if (const Type* type = project_.types.FindElementaryByName(project_.names.GetFolded(name))) {
        entity.kind = Entity::Kind::Type;
        entity.type = type;
        // TIME() is a function too: whoever calls the entity asks for it.
        entity.builtIn = builtIns_.Find(name);
        return entity;
    }
    if (const BuiltIn* builtIn = builtIns_.Find(name)) {
        entity.kind = Entity::Kind::BuiltIn;
        entity.builtIn = builtIn;
        return entity;
    }
    if (const Type* block = project_.types.FindLibraryBlock(name)) {
        entity.kind = Entity::Kind::Type;
        entity.type = block;
        return entity;
    }
    ReportUnknownName(name, range);
    return {};
}

Entity BodyChecker::Resolve(const ast::Expr& expression, const Type* wanted) {
    switch (expression.kind) {
        case ast::ExprKind::Error: return {};
        case ast::ExprKind::Name:
            return ResolveName(static_cast<const ast::NameExpr&>(expression).name, expression.range, wanted);
        case ast::ExprKind::Located: {
            Variable* variable = declarations_->ResolveLocated(static_cast<const ast::LocatedExpr&>(expression));
            return variable == nullptr ? Entity{} : FromVariable(variable, expression.range);
        }
        case ast::ExprKind::Member: return ResolveMember(static_cast<const ast::MemberExpr&>(expression));
        case ast::ExprKind::Partial: return ResolvePartial(static_cast<const ast::PartialExpr&>(expression));
        case ast::ExprKind::Index: return ResolveIndex(static_cast<const ast::IndexExpr&>(expression));
        case ast::ExprKind::Deref: return ResolveDeref(static_cast<const ast::DerefExpr&>(expression));
        case ast::ExprKind::This:
        case ast::ExprKind::Super: {
            const bool isSuper = expression.kind == ast::ExprKind::Super;
            Entity instance = ResolveThis(expression.range, isSuper);
            if (isSuper || instance.kind != Entity::Kind::Place) return instance;
            // THIS alone is the pointer.
            Entity pointer;
            pointer.kind = Entity::Kind::Value;
            pointer.value = New(AddressExpr{
                {ExprKind::Address, project_.types.Pointer(instance.place->type), expression.range}, instance.place});
            return pointer;
        }
        default: break;
    }
    Entity entity;
    entity.value = Check(expression, wanted);
    if (!IsError(entity.value)) entity.kind = Entity::Kind::Value;
    return entity;
}

Entity BodyChecker::ResolveThis(SourceRange range, bool super) {
    Pou* block = GetBlock();
    if (block != nullptr && super) block = block->base;
    if (block == nullptr || block->type == nullptr) {
        Fail(DiagnosticCode::NoInstance, range, {super ? "SUPER" : "THIS"});
        return {};
    }
    Entity entity;
    entity.kind = Entity::Kind::Place;
    entity.place = New(ThisPlace{{PlaceKind::This, block->type, range}});
    return entity;
}

// --- places ---

Expr* BodyChecker::ToValue(const Entity& entity, SourceRange range) {
    switch (entity.kind) {
        case Entity::Kind::Error: return Error(range);
        case Entity::Kind::Value: return entity.value;
        case Entity::Kind::Place: MarkRead(entity.place); return NewLoad(entity.place, range);
        case Entity::Kind::Bits: return ReadBits(entity, range);
        case Entity::Kind::Pou:
            if (entity.pou->kind == ast::PouKind::Property && entity.pou->getter != nullptr)
                return CallAccessor(entity, *entity.pou->getter, nullptr, range);
            [[fallthrough]];
        default: return Fail(DiagnosticCode::NotAValue, range, {SourceText(range), DescribeSymbol(entity)});
    }
}

Place* BodyChecker::PlaceOf(const Entity& entity, SourceRange range) {
    if (entity.kind == Entity::Kind::Place) return entity.place;
    if (entity.kind == Entity::Kind::Value) {
        if (entity.value->kind == ExprKind::CallFunction && IsAggregate(entity.value->type))
            return New(ResultPlace{{PlaceKind::Result, entity.value->type, range}, entity.value});
        if (entity.value->kind == ExprKind::Load) return static_cast<LoadExpr*>(entity.value)->place;
    }
    if (entity.kind != Entity::Kind::Error) Fail(DiagnosticCode::VariableExpected, range);
    return nullptr;
}

Entity BodyChecker::CheckTarget(const ast::Expr& expression) {
    Entity entity = Resolve(expression, nullptr);
    if (entity.kind == Entity::Kind::Error) return entity;
    const char* reason = entity.readOnly;
    if (entity.kind == Entity::Kind::Value) {
        reason = entity.value->kind == ExprKind::Constant ? "a constant" : "no variable";
    } else if (entity.kind == Entity::Kind::Pou && entity.pou->kind == ast::PouKind::Property) {
        reason = entity.pou->setter == nullptr ? "a property without SET" : nullptr;
    } else if (entity.kind != Entity::Kind::Place && entity.kind != Entity::Kind::Bits) {
        reason = DescribeSymbol(entity).data();
    } else if (entity.kind == Entity::Kind::Place && entity.place->kind == PlaceKind::This) {
        reason = "the instance itself";
    }
    if (reason == nullptr) return entity;
    Fail(DiagnosticCode::NotAssignable, expression.range, {SourceText(expression.range), reason});
    return {};
}

Place* BodyChecker::CheckAddressable(const ast::Expr& expression, bool willBeWritten) {
    const Entity entity = willBeWritten ? CheckTarget(expression) : Resolve(expression, nullptr);
    if (entity.kind == Entity::Kind::Error) return nullptr;
    if (entity.kind == Entity::Kind::Bits) {
        Fail(DiagnosticCode::NoAddress, expression.range, {"a bit"});
        return nullptr;
    }
    if (entity.kind == Entity::Kind::Value && entity.value->kind == ExprKind::Constant) {
        Fail(DiagnosticCode::NoAddress, expression.range, {"a constant"});
        return nullptr;
    }
    return PlaceOf(entity, expression.range);
}

// --- bits ---

Expr* BodyChecker::ReadBits(const Entity& bits, SourceRange range) {
    MarkRead(bits.place);
    const Type* whole = BaseOf(bits.place->type);
    if (whole->kind == TypeKind::Enum) whole = static_cast<const EnumType*>(whole)->base;
    Expr* load = NewLoad(bits.place, range);
    load->type = whole;
    if (bits.width == 1) {
        CValue mask;
        mask.SetInteger(static_cast<std::int64_t>(std::uint64_t{1} << bits.firstBit), whole->storage);
        Expr* masked = MakeBinary(BinaryOperator::And, whole, load, NewConstant(whole, std::move(mask), range), range);
        return MakeBinary(BinaryOperator::NE, project_.types.Bool(), masked, NewInteger(whole, 0, range), range);
    }
    constexpr std::uint8_t kBitstringGroup = 3;
    constexpr std::uint8_t kShiftRight = 2;
    Expr* shifted = load;
    if (bits.firstBit != 0) {
        shifted = NewBuiltInCall(kBitstringGroup, kShiftRight, whole, range,
                                 {load, NewInteger(Elementary(ElementaryType::USInt), bits.firstBit, range)});
    }
    ElementaryType part = ElementaryType::DWord;
    if (bits.width == 8) part = ElementaryType::Byte;
    if (bits.width == 16) part = ElementaryType::Word;
    if (bits.width == 64) part = ElementaryType::LWord;
    if (shifted->type->storage == part) return shifted;
    return NewConvert(shifted, Elementary(part), false);
}

Entity BodyChecker::BitsOf(Place* place, const char* readOnly, std::uint32_t firstBit, std::uint32_t width,
                           SourceRange range) {
    const Family family = FamilyOf(place->type);
    const std::uint32_t available = (IsIntegerFamily(family) || family == Family::Bits) ? place->type->size * 8 : 0;
    if (available == 0 || width > available || firstBit > available - width) {
        std::string_view unit = "bit";
        if (width == 8) unit = "byte";
        if (width == 16) unit = "word";
        if (width == 32) unit = "double word";
        if (width == 64) unit = "long word";
        Fail(DiagnosticCode::NoSuchBit, range, {Text(place->type), unit, std::to_string(firstBit / width)});
        return {};
    }
    Entity entity;
    entity.kind = Entity::Kind::Bits;
    entity.place = place;
    entity.readOnly = readOnly;
    entity.firstBit = static_cast<std::uint8_t>(firstBit);
    entity.width = static_cast<std::uint8_t>(width);
    return entity;
}

Entity BodyChecker::ResolvePartial(const ast::PartialExpr& partial) {
    const Entity base = Resolve(*partial.base, nullptr);
    if (base.kind == Entity::Kind::Error) return base;
    std::uint32_t width = 1;
    switch (partial.width) {
        case 'B': width = 8; break;
        case 'W': width = 16; break;
        case 'D': width = 32; break;
        case 'L': width = 64; break;
        default: break;
    }
    Place* place = PlaceOf(base, partial.base->range);
    if (place == nullptr) return {};
    constexpr std::uint32_t kWidest = 64;
    const std::uint32_t firstBit = partial.index < kWidest ? partial.index * width : kWidest * width;
    return BitsOf(place, base.readOnly, firstBit, width, partial.range);
}

}  // namespace tn61131::st
