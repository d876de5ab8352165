#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "compiler/Arena.h"
#include "compiler/Ast.h"
#include "compiler/Diagnostics.h"
#include "compiler/Options.h"
#include "compiler/Types.h"
#include "value/Value.h"

/// What a project declares, with names looked up: variables, program organisation units, their scopes.
namespace tn61131::st {

struct Block;
struct Expr;
struct Pou;
class Scope;

/// How far a declaration has been looked at; kept by Declarations.
enum class Progress : std::uint8_t { Entered, Running, Typed, Evaluating, Done };

/// Where a variable lives while the program runs.
enum class StorageKind : std::uint8_t {
    Unassigned,
    None,             ///< a constant that every use replaces by its value
    Global,           ///< `offset` into GlobalData: globals, and the variables of a program
    Constant,         ///< `offset` into GlobalConstants: constants with parts
    Instance,         ///< `offset` into the instance of the function block
    Temp,             ///< `offset` into the temporary data of the call
    Slot,             ///< stack slot `offset` of the frame holds the value
    SlotPointer,      ///< stack slot `offset` of the frame holds a pointer to the variable
    InstancePointer,  ///< the instance holds, at `offset`, a pointer to the variable: in-outs of function blocks
    Tag,              ///< `offset` bytes into the directly located variable `tagId`
};

struct Storage {
    StorageKind kind = StorageKind::Unassigned;
    std::uint32_t offset = 0;
    std::uint32_t tagId = 0;
};

struct Variable {
    NameId name = NameId::None;
    SourceRange declared{};
    const Type* type = nullptr;
    ast::VarSection section = ast::VarSection::Local;
    bool isConstant = false;
    bool isRetain = false;
    bool isPersistent = false;
    bool isReadOnly = false;                ///< a tag that cannot be written
    bool isResult = false;                  ///< the function's own name
    std::optional<bool> edge{};             ///< R_EDGE true, F_EDGE false
    Pou* owner = nullptr;                   ///< null for globals and fields of the library's blocks
    const InitialValue* initial = nullptr;  ///< null: the type's default
    std::optional<CValue> constantValue{};  ///< of a constant that is no aggregate
    Variable* aliasOf = nullptr;            ///< AT another variable, VAR_EXTERNAL: that one is meant
    std::uint32_t aliasOffset = 0;
    Storage storage{};
    const ast::VarDecl* declaration = nullptr;  ///< null for what the compiler adds itself
    Scope* scope = nullptr;                     ///< where the names in the declaration are looked up
    Progress progress = Progress::Done;

    // What the checker of bodies has seen.
    bool isRead = false;
    bool isWritten = false;
    bool isAddressTaken = false;  ///< ADR, REF, in-out argument: must lie in memory
    bool isPartWritten = false;   ///< a bit, an element or a member is written on its own
    /// Its text, or one in it, may change behind the machine's back, by way of a pointer to the characters: what ends
    /// it is the first zero character.
    bool isTextExposed = false;
};

struct Pou {
    ast::PouKind kind = ast::PouKind::Program;
    NameId name = NameId::None;
    const ast::Pou* declaration = nullptr;  ///< null for standalone expressions and code blocks
    Scope* scope = nullptr;
    /// All variables in the order of declaration; of functions with a result, the result variable is the first.
    std::vector<Variable*> variables;
    std::vector<Variable*> inputs;  ///< in order, those of the base first
    std::vector<Variable*> outputs;
    std::vector<Variable*> inOuts;
    /// Inputs, outputs and in-outs of functions as declared: what positional arguments mean.
    std::vector<Variable*> parameters;
    Variable* result = nullptr;
    const Type* resultType = nullptr;   ///< Void without a result
    FunctionBlockType* type = nullptr;  ///< of function blocks
    Pou* base = nullptr;                ///< EXTENDS
    Pou* container = nullptr;           ///< of methods and actions: the block or program they belong to
    std::map<NameId, Pou*> members;     ///< methods, properties and actions
    Pou* getter = nullptr;              ///< of properties: a method without parameters; null without
    Pou* setter = nullptr;              ///< of properties: a method with one input; null without
    Block* body = nullptr;              ///< the checked body; null until checked, and after errors
    std::uint32_t instanceOffset = 0;   ///< of programs: where the instance starts in GlobalData
    std::uint32_t instanceSize = 0;     ///< of programs
    // What the checker of bodies has seen.
    std::vector<Pou*> callees;   ///< each once
    bool hasSideEffects = true;  ///< a function that only computes: writes nothing but its own variables
    Progress progress = Progress::Entered;
};

/// What a name means.
struct Symbol {
    enum class Kind : std::uint8_t { Variable, Type, Pou, EnumMember, Namespace };
    Kind kind = Kind::Variable;
    SourceRange declared{};
    Variable* variable = nullptr;
    const Type* type = nullptr;  ///< of Type, and of the enumeration of an EnumMember
    Pou* pou = nullptr;
    const EnumMember* member = nullptr;
    Scope* scope = nullptr;  ///< of a namespace
    /// Of an EnumMember that several enumerations have under this name: one symbol each. Null otherwise. Whoever uses
    /// such a name without a type that picks one reports AmbiguousName.
    const std::vector<Symbol>* alternatives = nullptr;
    std::uint32_t entry = 0;  ///< of Declarations: number of the type's declaration, from 1
};

/// Names and what they mean; one in another.
class Scope {
 public:
    explicit Scope(Scope* parent, Pou* owner = nullptr) noexcept : parent_(parent), owner_(owner) {}
    [[nodiscard]] Scope* GetParent() const noexcept { return parent_; }
    [[nodiscard]] Pou* GetOwner() const noexcept { return owner_; }
    /// Null when the scope itself has no such name.
    [[nodiscard]] const Symbol* FindHere(NameId name) const {
        const auto found = symbols_.find(name);
        return found == symbols_.end() ? nullptr : &found->second;
    }
    [[nodiscard]] Symbol* FindHere(NameId name) {
        const auto found = symbols_.find(name);
        return found == symbols_.end() ? nullptr : &found->second;
    }
    /// Adds a symbol, or returns the one that has the name already.
    const Symbol* Add(NameId name, Symbol symbol) {
        const auto [place, isNew] = symbols_.emplace(name, symbol);
        return isNew ? nullptr : &place->second;
    }
    [[nodiscard]] const std::unordered_map<NameId, Symbol>& GetSymbols() const noexcept { return symbols_; }

 private:
    Scope* parent_;
    Pou* owner_;
    std::unordered_map<NameId, Symbol> symbols_;
};

/// A program that the host can start: PROGRAM name, or an instance that a configuration declares.
struct ProgramEntry {
    NameId name = NameId::None;
    Pou* pou = nullptr;
    std::uint32_t instanceOffset = 0;
    NameId task = NameId::None;
    SourceRange declared{};
};

struct Task {
    NameId name = NameId::None;
    std::optional<std::int64_t> intervalMs;
    std::optional<std::int64_t> priority;
    std::string single;  ///< the variable as written; empty without
};

/// A standalone expression or code block.
struct Standalone {
    std::uint32_t id = 0;
    bool isExpression = true;
    Pou* pou = nullptr;          ///< its scope is the project's; owns temporaries only
    Expr* expression = nullptr;  ///< of an expression, checked
};

/// The whole project between parsing and code generation.
struct Project {
    Project(const SourceManager& sourceManager, const CompileOptions& compileOptions, Diagnostics& log)
        : sources(sourceManager),
          options(compileOptions),
          diagnostics(log),
          types(names, compileOptions.switches.dataPointers),
          globalScope(nullptr) {}

    const SourceManager& sources;
    const CompileOptions& options;
    Diagnostics& diagnostics;
    NameTable names;
    Arena arena;  ///< of the syntax trees and the checked trees
    TypeTable types;
    Scope globalScope;
    std::deque<Scope> scopes;
    std::deque<Variable> variables;  ///< all of the project
    std::deque<Pou> pous;            ///< all of the project
    std::vector<Variable*> globals;
    std::vector<ProgramEntry> programs;
    std::vector<Task> tasks;
    std::vector<Standalone> standalones;
    /// Set while the initial value of what exists from the start is evaluated: in it, variables stand for the values
    /// that they start with (see Declarations::GetStartValue).
    bool usesStartValues = false;
    std::vector<unsigned char> globalData;  ///< with the initial values
    std::vector<unsigned char> constants;
    std::deque<CValue> madeConstants;  ///< values of constants that passes of the optimiser made
};

}  // namespace tn61131::st
