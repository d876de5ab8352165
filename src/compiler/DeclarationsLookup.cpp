#include <algorithm>
#include <unordered_set>

#include "compiler/DeclarationsState.h"

namespace tn61131::st {

/// The first symbol that `accept` takes: of the scope, of what its unit inherits, of the namespaces that it uses, and
/// so on outwards.
template <typename Accept>
const Symbol* Declarations::State::Search(NameId name, const Scope* scope, const Accept& accept) {
    for (; scope != nullptr; scope = scope->GetParent()) {
        const Symbol* symbol = scope->FindHere(name);
        if (symbol != nullptr && accept(*symbol, scope)) return symbol;
        const Pou* owner = scope->GetOwner();
        for (const Pou* base = owner != nullptr ? owner->base : nullptr; base != nullptr; base = base->base) {
            symbol = std::as_const(*base->scope).FindHere(name);
            if (symbol != nullptr && accept(*symbol, base->scope)) return symbol;
        }
        const auto used = usings.find(scope);
        if (used == usings.end()) continue;
        for (const Scope* space : used->second) {
            symbol = space->FindHere(name);
            if (symbol != nullptr && accept(*symbol, space)) return symbol;
        }
    }
    return nullptr;
}

const Symbol* Declarations::State::Ensure(Symbol* symbol) {
    switch (symbol->kind) {
        case Symbol::Kind::Variable: {
            Variable& variable = *symbol->variable;
            ResolveVariable(variable);
            // A use inside the declaration of its own type must not ask for the size; it will fail on its own.
            if (variable.progress == Progress::Typed && !variable.type->isComplete) {
                static_cast<void>(Complete(variable.type, variable.declared));
            }
            ResolveValue(variable);
            break;
        }
        case Symbol::Kind::Type:
            if (symbol->entry != 0) symbol->type = ResolveEntry(entries[symbol->entry - 1]);
            break;
        default: break;
    }
    return symbol;
}

const Symbol* Declarations::State::Lookup(NameId name, const Scope* scope) {
    const Symbol* symbol = Search(name, scope, [](const Symbol&, const Scope*) { return true; });
    return symbol != nullptr ? Ensure(const_cast<Symbol*>(symbol)) : LookupEnumValue(name);
}

const Symbol* Declarations::State::LookupMember(NameId name, const Pou* pou) {
    for (; pou != nullptr; pou = pou->base) {
        if (Symbol* symbol = pou->scope->FindHere(name)) return Ensure(symbol);
    }
    return nullptr;
}

const Symbol* Declarations::State::LookupEnumValue(NameId name) {
    const auto found = enumValues.find(name);
    if (found == enumValues.end()) return nullptr;
    std::vector<Symbol>& symbols = found->second;
    for (Symbol& symbol : symbols) {
        TypeEntry& entry = entries[symbol.entry - 1];
        const Type* type = entry.type != nullptr ? entry.type : ResolveEntry(entry);
        if (type->kind != TypeKind::Enum) return nullptr;
        symbol.type = type;
        symbol.member = static_cast<const EnumType*>(type)->Find(name);
        if (symbol.member == nullptr) return nullptr;
    }
    if (symbols.size() > 1) symbols.front().alternatives = &symbols;
    return symbols.data();
}

const Symbol* Declarations::State::LookupQualifiedType(const ast::Identifier& name, Scope* scope) {
    const std::string_view spelling = Spelling(name.name);
    const Symbol* other = nullptr;
    if (spelling.find('.') == std::string_view::npos) return LookupType(name.name, scope, other);
    std::vector<ast::Identifier> path;
    for (std::size_t begin = 0; begin <= spelling.size();) {
        const std::size_t end = std::min(spelling.find('.', begin), spelling.size());
        path.push_back({project.names.Find(spelling.substr(begin, end - begin)), name.range});
        begin = end + 1;
    }
    const Scope* space = FindNamespace(std::span(path).first(path.size() - 1), scope, false);
    if (space == nullptr) return nullptr;
    const Symbol* symbol = space->FindHere(path.back().name);
    return symbol == nullptr ? nullptr : Ensure(const_cast<Symbol*>(symbol));
}

const Symbol* Declarations::State::LookupType(NameId name, const Scope* scope, const Symbol*& other) {
    const Symbol* found = nullptr;
    Search(name, scope, [&](const Symbol& symbol, const Scope* home) {
        found = &symbol;
        if (symbol.kind == Symbol::Kind::Type || (symbol.kind == Symbol::Kind::Pou && symbol.type != nullptr)) {
            return true;
        }
        const auto hidden = hiddenTypes.find({home, name});
        found = hidden != hiddenTypes.end() ? &hidden->second : nullptr;
        if (found == nullptr && other == nullptr) other = &symbol;
        return found != nullptr;
    });
    return found == nullptr ? nullptr : Ensure(const_cast<Symbol*>(found));
}

const Symbol* Declarations::State::FindSymbol(NameId name, const Scope* scope,
                                              bool (*accept)(const Symbol& symbol, const Scope* home)) {
    return Search(name, scope, accept);
}

Scope* Declarations::State::FindNamespace(std::span<const ast::Identifier> path, const Scope* scope, bool report) {
    Scope* inner = nullptr;
    for (const ast::Identifier& name : path) {
        const auto isNamespace = [](const Symbol& symbol, const Scope*) {
            return symbol.kind == Symbol::Kind::Namespace;
        };
        const Symbol* symbol =
            inner != nullptr ? std::as_const(*inner).FindHere(name.name) : Search(name.name, scope, isNamespace);
        if (symbol == nullptr || symbol->kind != Symbol::Kind::Namespace) {
            if (report) Report(DiagnosticCode::UnknownNamespace, name.range, {Spelling(name.name)});
            return nullptr;
        }
        inner = symbol->scope;
    }
    return inner;
}

std::vector<std::string_view> Declarations::State::CollectNames(const Scope* scope, bool onlyTypes) {
    std::vector<std::string_view> result;
    const auto add = [&](const Scope& each) {
        for (const auto& [name, symbol] : each.GetSymbols()) {
            const bool isType = symbol.kind == Symbol::Kind::Type || symbol.type != nullptr;
            if (isType || !onlyTypes) result.push_back(Spelling(name));
        }
    };
    for (; scope != nullptr; scope = scope->GetParent()) {
        add(*scope);
        const Pou* owner = scope->GetOwner();
        for (const Pou* base = owner != nullptr ? owner->base : nullptr; base != nullptr; base = base->base) {
            add(*base->scope);
        }
    }
    if (!onlyTypes) {
        for (const auto& [name, symbols] : enumValues)
            result.push_back(Spelling(name));
    }
    // Hash tables have no order of their own; the nearest of equally near names should not depend on it.
    std::ranges::sort(result);
    return result;
}

void Declarations::State::Suggest(Diagnostic& diagnostic, NameId name, const std::vector<std::string_view>& candidates,
                                  SourceRange range) {
    const std::string_view nearest = FindNearestName(Spelling(name), candidates);
    if (!nearest.empty()) diagnostic.notes.push_back({range, "did you mean '" + std::string(nearest) + "'?"});
}

}  // namespace tn61131::st
