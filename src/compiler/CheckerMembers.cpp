#include <algorithm>
#include <array>

#include "compiler/BodyChecker.h"

// Members of structures, blocks, programs, types and namespaces; elements; what pointers point to.

namespace tn61131::st {

Entity BodyChecker::NoSuchMember(const std::string& what, const ast::MemberExpr& member,
                                 std::span<const std::string_view> candidates) {
    Diagnostic& diagnostic = project_.diagnostics.Report(DiagnosticCode::NoSuchMember, member.member.range,
                                                         {what, SourceText(member.member.range)});
    const std::string_view nearest = FindNearestName(project_.names.GetFolded(member.member.name), candidates);
    if (!nearest.empty())
        diagnostic.notes.push_back({member.member.range, "did you mean '" + std::string(nearest) + "'?"});
    return {};
}

Entity BodyChecker::MemberOfType(const Type* type, const ast::MemberExpr& member) {
    const Type* base = BaseOf(type);
    if (base->kind == TypeKind::Error) return {};
    std::vector<std::string_view> candidates;
    if (base->kind == TypeKind::Enum) {
        const auto& enumeration = *static_cast<const EnumType*>(base);
        if (const EnumMember* found = enumeration.Find(member.member.name))
            return FromEnumMember(base, *found, member.range);
        for (const EnumMember& known : enumeration.members)
            candidates.push_back(project_.names.GetFolded(known.name));
    }
    return NoSuchMember(Text(type), member, candidates);
}

Entity BodyChecker::MemberOfProgram(Pou& program, const ast::MemberExpr& member) {
    const Symbol* symbol = declarations_->LookupMember(member.member.name, &program);
    if (symbol == nullptr) return NoSuchMember("'" + Text(program.name) + "'", member, {});
    Entity entity = FromSymbol(*symbol, member.member.name, member.range);
    if (symbol->kind != Symbol::Kind::Variable || context_.pou == &program ||
        (context_.pou != nullptr && context_.pou->container == &program))
        return entity;
    switch (symbol->variable->section) {
        case ast::VarSection::Input: break;
        case ast::VarSection::Output: entity.readOnly = "an output of another program"; break;
        case ast::VarSection::InOut:
        case ast::VarSection::Temp:
            Fail(DiagnosticCode::InaccessibleVariable, member.member.range,
                 {Text(member.member.name), Text(program.name), "only valid while it runs"});
            return {};
        default:
            // The host's own expressions stand outside of every program.
            if (!IsCodesys() && context_.pou != nullptr && context_.pou->declaration != nullptr) {
                project_.diagnostics.Report(DiagnosticCode::InternalVariable, member.member.range,
                                            {Text(member.member.name), Text(program.name)});
            }
            entity.readOnly = "a variable of another program";
            break;
    }
    return entity;
}

Entity BodyChecker::MemberOfBlock(Place* place, const FunctionBlockType& block, const char* readOnly,
                                  const ast::MemberExpr& member) {
    const Symbol* symbol = block.pou == nullptr ? nullptr : declarations_->LookupMember(member.member.name, block.pou);
    if (symbol != nullptr && symbol->kind == Symbol::Kind::Pou) {
        Entity entity = FromSymbol(*symbol, member.member.name, member.range);
        entity.place = place;
        return entity;
    }
    Variable* variable = symbol == nullptr ? block.Find(member.member.name) : symbol->variable;
    if (variable == nullptr) {
        std::vector<std::string_view> candidates;
        for (const Variable* known : block.variables)
            candidates.push_back(project_.names.GetFolded(known->name));
        return NoSuchMember("'" + Text(&block) + "'", member, candidates);
    }
    // Of the instance itself nothing is hidden, and in-outs are known.
    if (place->kind == PlaceKind::This) return FromVariable(variable, member.range);
    if (variable->isConstant && variable->constantValue.has_value()) return FromVariable(variable, member.range);
    const Pou* inside = GetBlock();
    while (inside != nullptr && inside != block.pou)
        inside = inside->base;
    const auto refuse = [&](const char* why) {
        Fail(DiagnosticCode::InaccessibleVariable, member.member.range, {Text(variable->name), Text(&block), why});
        return Entity{};
    };
    switch (variable->section) {
        case ast::VarSection::Input: break;
        case ast::VarSection::Output: readOnly = readOnly == nullptr ? "an output" : readOnly; break;
        case ast::VarSection::InOut: return refuse("a VAR_IN_OUT, known only during the call");
        case ast::VarSection::Temp: return refuse("a temporary variable");
        case ast::VarSection::External: return FromVariable(variable, member.range);
        default:
            if (inside != nullptr) break;
            project_.diagnostics.Report(DiagnosticCode::InternalVariable, member.member.range,
                                        {Text(variable->name), Text(&block)});
            readOnly = readOnly == nullptr ? "an internal variable of its block" : readOnly;
            break;
    }
    return FromPlace(
        New(MemberPlace{
            {PlaceKind::Member, variable->type, member.range}, place, variable->storage.offset, member.member.name}),
        readOnly);
}

Entity BodyChecker::ResolveMember(const ast::MemberExpr& member) {
    const NameId name = member.member.name;
    // Members of a type are read before those of a variable only when the type's name stands there.
    // THIS.x is THIS^.x.
    const Entity base = member.base->kind == ast::ExprKind::This ? ResolveThis(member.base->range, false)
                                                                 : Resolve(*member.base, nullptr);
    switch (base.kind) {
        case Entity::Kind::Error: return {};
        case Entity::Kind::Type: return MemberOfType(base.type, member);
        case Entity::Kind::Namespace: {
            const Symbol* symbol =
                base.scope->FindHere(name) == nullptr ? nullptr : declarations_->Lookup(name, base.scope);
            if (symbol == nullptr) return NoSuchMember("'" + SourceText(member.base->range) + "'", member, {});
            return FromSymbol(*symbol, name, member.range);
        }
        case Entity::Kind::Pou:
            if (base.pou->kind == ast::PouKind::Program) return MemberOfProgram(*base.pou, member);
            if (const Symbol* part = base.pou->scope->FindHere(name);
                part != nullptr && part->kind == Symbol::Kind::Pou) {
                Fail(DiagnosticCode::MethodNeedsInstance, member.range, {Text(name), Text(base.pou->name)});
                return {};
            }
            return NoSuchMember("'" + SourceText(member.base->range) + "'", member, {});
        case Entity::Kind::BuiltIn:
        case Entity::Kind::Bits: return NoSuchMember("'" + SourceText(member.base->range) + "'", member, {});
        case Entity::Kind::Value:
        case Entity::Kind::Place: break;
    }
    const Type* type = Strip(base.kind == Entity::Kind::Place ? base.place->type : base.value->type);
    if (type->kind == TypeKind::Error) return {};
    const Family family = FamilyOf(type);
    if (IsIntegerFamily(family) || family == Family::Bits) {
        // The bit that a constant names.
        const Symbol* symbol = declarations_->Lookup(name, context_.scope);
        if (symbol != nullptr) {
            const Entity bit = FromSymbol(*symbol, name, member.member.range);
            const std::optional<std::int64_t> number =
                bit.kind == Entity::Kind::Value ? GetInteger(bit.value) : std::nullopt;
            Place* place = number ? PlaceOf(base, member.base->range) : nullptr;
            if (number && place == nullptr) return {};
            if (number) {
                const auto index = *number < 0 || *number > 64 ? 64U : static_cast<std::uint32_t>(*number);
                return BitsOf(place, base.readOnly, index, 1, member.range);
            }
        }
    }
    if (type->kind != TypeKind::Struct && type->kind != TypeKind::FunctionBlock)
        return NoSuchMember(Text(type), member, {});
    Place* place = PlaceOf(base, member.base->range);
    if (place == nullptr) return {};
    if (type->kind == TypeKind::FunctionBlock)
        return MemberOfBlock(place, *static_cast<const FunctionBlockType*>(type), base.readOnly, member);
    const auto& structure = *static_cast<const StructType*>(type);
    const Field* field = structure.Find(name);
    if (field == nullptr) {
        std::vector<std::string_view> candidates;
        for (const Field& known : structure.fields)
            candidates.push_back(project_.names.GetFolded(known.name));
        return NoSuchMember(Text(type), member, candidates);
    }
    return FromPlace(New(MemberPlace{{PlaceKind::Member, field->type, member.range}, place, field->offset, name}),
                     base.readOnly);
}

// --- elements ---

Expr* BodyChecker::CheckIndex(const ast::Expr& index, const ArrayBound* bound) {
    Expr* value = DropEnum(Check(index, Elementary(ElementaryType::DInt)), true);
    if (IsError(value)) return value;
    const Family family = FamilyOf(value->type);
    if (!IsIntegerFamily(family) && family != Family::Bits)
        return Fail(DiagnosticCode::IndexType, index.range, {Text(value->type)});
    if (const std::optional<std::int64_t> number = GetInteger(value)) {
        const bool isLarge = value->type->storage == ElementaryType::ULInt && *number < 0;
        if (bound != nullptr && (isLarge || *number < bound->lower || *number > bound->upper)) {
            return Fail(DiagnosticCode::IndexOutOfBounds, index.range,
                        {std::to_string(*number), std::to_string(bound->lower), std::to_string(bound->upper)});
        }
        if (bound != nullptr) return NewInteger(Elementary(ElementaryType::DInt), *number, index.range);
    }
    return Settle(value);
}

Entity BodyChecker::IndexOnce(Entity base, std::span<const ast::Expr* const> indices, std::size_t& used,
                              SourceRange range) {
    const std::size_t left = indices.size() - used;
    Place* place = nullptr;
    const Type* type = nullptr;
    if (base.kind == Entity::Kind::Value && FamilyOf(base.value->type) == Family::Pointer) {
        type = Strip(base.value->type);
    } else {
        place = PlaceOf(base, range);
        if (place == nullptr) return {};
        type = Strip(place->type);
    }
    if (type->kind == TypeKind::Array) {
        const auto& array = *static_cast<const ArrayType*>(type);
        const std::size_t dimensions = array.bounds.size();
        if (left < dimensions) {
            Fail(DiagnosticCode::WrongIndexCount, range, {std::to_string(dimensions), std::to_string(left)});
            return {};
        }
        const std::span<Expr*> list = project_.arena.NewArray<Expr*>(dimensions);
        bool isConstant = true;
        bool isWrong = false;
        for (std::size_t i = 0; i < dimensions; ++i) {
            list[i] = CheckIndex(*indices[used + i], array.isOpen ? nullptr : &array.bounds[i]);
            isWrong |= IsError(list[i]);
            isConstant &= list[i]->kind == ExprKind::Constant;
        }
        used += dimensions;
        if (isWrong) return {};
        const bool isChecked = (array.isOpen || !isConstant) && GetSwitches().bounds != Switches::Bounds::Off;
        return FromPlace(New(ElementPlace{{PlaceKind::Element, array.element, range}, place, &array, list, isChecked}),
                         base.readOnly);
    }
    if (type->kind == TypeKind::String) {
        const bool isWide = type->storage == ElementaryType::WString;
        Expr* index = CheckIndex(*indices[used++], nullptr);
        if (IsError(index)) return {};
        const auto capacity = static_cast<std::int32_t>(static_cast<const StringType*>(type)->capacity);
        // The machine counts from 1, as the standard does; CODESYS counts from 0.
        const ArrayBound bound{IsCodesys() ? 0 : 1, IsCodesys() ? capacity - 1 : capacity};
        if (const std::optional<std::int64_t> number = GetInteger(index)) {
            if (*number < bound.lower || *number > bound.upper) {
                Fail(DiagnosticCode::IndexOutOfBounds, index->range,
                     {std::to_string(*number), std::to_string(bound.lower), std::to_string(bound.upper)});
                return {};
            }
            index = NewInteger(Elementary(ElementaryType::DInt), *number + 1 - bound.lower, index->range);
        } else if (IsCodesys()) {
            const Type* dint = Elementary(ElementaryType::DInt);
            if (index->type->storage != dint->storage) index = NewConvert(index, dint, true);
            index = MakeBinary(BinaryOperator::Add, dint, index, NewInteger(dint, 1, index->range), index->range);
        }
        ElementaryType unit = isWide ? ElementaryType::WChar : ElementaryType::Char;
        if (IsCodesys()) unit = isWide ? ElementaryType::Word : ElementaryType::Byte;
        return FromPlace(New(CharPlace{{PlaceKind::Char, Elementary(unit), range}, place, index}), base.readOnly);
    }
    if (type->kind == TypeKind::Pointer) {
        const Type* target = static_cast<const PointerType*>(type)->target;
        Expr* pointer = base.kind == Entity::Kind::Value ? base.value : ToValue(base, range);
        Expr* index = CheckIndex(*indices[used++], nullptr);
        if (IsError(index)) return {};
        return FromPlace(New(DerefPlace{{PlaceKind::Deref, target, range}, pointer, index}), nullptr);
    }
    if (type->kind != TypeKind::Error) Fail(DiagnosticCode::NotIndexable, range, {Text(type)});
    return {};
}

Entity BodyChecker::ResolveIndex(const ast::IndexExpr& index) {
    // a[i][j] and a[i, j] mean the same: all indices in a row are taken together.
    std::vector<const ast::IndexExpr*> chain;
    const ast::Expr* root = &index;
    while (root->kind == ast::ExprKind::Index) {
        chain.push_back(static_cast<const ast::IndexExpr*>(root));
        root = chain.back()->base;
    }
    std::vector<const ast::Expr*> indices;
    for (auto link = chain.rbegin(); link != chain.rend(); ++link)
        indices.insert(indices.end(), (*link)->indices.begin(), (*link)->indices.end());
    Entity entity = Resolve(*root, nullptr);
    std::size_t used = 0;
    while (used < indices.size() && entity.kind != Entity::Kind::Error) {
        if (used > 0 && entity.kind == Entity::Kind::Place) {
            const TypeKind kind = Strip(entity.place->type)->kind;
            if (kind != TypeKind::Array && kind != TypeKind::String && kind != TypeKind::Pointer) {
                Fail(DiagnosticCode::WrongIndexCount, index.range,
                     {std::to_string(used), std::to_string(indices.size())});
                return {};
            }
        }
        entity = IndexOnce(entity, indices, used, index.range);
    }
    return entity;
}

Entity BodyChecker::ResolveDeref(const ast::DerefExpr& deref) {
    if (deref.base->kind == ast::ExprKind::This) return ResolveThis(deref.range, false);
    if (deref.base->kind == ast::ExprKind::Super) return ResolveThis(deref.range, true);
    const Entity base = Resolve(*deref.base, nullptr);
    if (base.kind == Entity::Kind::Error) return base;
    Expr* pointer = ToValue(base, deref.base->range);
    if (IsError(pointer)) return {};
    const Type* type = Strip(pointer->type);
    // What ADR and REF point to is known better than their type tells.
    if (pointer->kind == ExprKind::Address) return FromPlace(static_cast<AddressExpr*>(pointer)->place, nullptr);
    if (type->kind != TypeKind::Pointer || static_cast<const PointerType*>(type)->target->kind == TypeKind::Void) {
        Fail(DiagnosticCode::NotAPointer, deref.base->range, {"'" + SourceText(deref.base->range) + "'"});
        return {};
    }
    return FromPlace(
        New(DerefPlace{
            {PlaceKind::Deref, static_cast<const PointerType*>(type)->target, deref.range}, pointer, nullptr}),
        nullptr);
}

}  // namespace tn61131::st
