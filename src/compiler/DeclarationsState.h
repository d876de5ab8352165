#pragma once

#include <deque>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "compiler/Declarations.h"
#include "compiler/InitialChecker.h"
#include "compiler/LocatedVariables.h"

namespace tn61131::st {

/// What Declarations works on. The functions stand in the files of their area: DeclarationsEnter, DeclarationsLookup,
/// DeclarationsTypes, DeclarationsVariables, DeclarationsLayout, DeclarationsConfigurations.
struct Declarations::State {
    State(Project& theProject, Checker& theChecker, Declarations& owner)
        : project(theProject),
          checker(theChecker),
          declarations(owner),
          initials(theProject, owner, theChecker),
          located(theProject) {}

    struct TypeEntry {
        const ast::TypeDecl* declaration;
        Scope* home;   ///< has the symbol
        Scope* scope;  ///< where the names in the declaration are looked up
        Symbol* symbol = nullptr;
        Progress progress = Progress::Entered;
        const Type* type = nullptr;
    };
    struct OpenStruct {
        StructType* type;
        const ast::StructTypeSpec* spec;
        Scope* scope;
        const ast::Expr* initial;  ///< of the type's declaration; null without
        Progress progress = Progress::Entered;
        bool hasInitials = false;  ///< the initial values of the fields have been checked
    };
    struct OpenAlias {
        AliasType* type;
        const ast::Expr* initial;
        Scope* scope;
    };
    struct OpenProgram {
        Pou* pou;
        const ast::ProgramInstance* instance;
    };
    struct ConfigurationEntry {
        const ast::Configuration* declaration;
        Scope* scope;
    };
    struct PairHash {
        std::size_t operator()(const std::pair<const void*, const void*>& pair) const noexcept {
            return std::hash<const void*>{}(pair.first) * 31 + std::hash<const void*>{}(pair.second);
        }
    };

    /// Counts how much is being resolved for the sake of what is being resolved, so that no chain of declarations
    /// exhausts the stack.
    class Depth {
     public:
        static constexpr std::uint32_t kLimit = 1000;
        static constexpr std::uint32_t kTypeWeight = 10;
        Depth(State& state, std::uint32_t weight) noexcept : state_(state), weight_(weight) { state_.depth += weight; }
        Depth(const Depth&) = delete;
        Depth& operator=(const Depth&) = delete;
        ~Depth() { state_.depth -= weight_; }
        /// False after a message.
        [[nodiscard]] bool Check(NameId name, SourceRange range) const;

     private:
        State& state_;
        std::uint32_t weight_;
    };

    // --- entering (DeclarationsEnter.cpp) ---
    void EnterUnit(const ast::SourceUnit& unit, Scope& scope);
    void EnterNamespace(const ast::Namespace& space, Scope& scope);
    void EnterType(const ast::TypeDecl& declaration, Scope& home, Scope& scope);
    void EnterGlobals(const ast::VarBlock& block, Scope& home, Scope& scope);
    /// `home` gets no symbol when it is null.
    Pou& EnterPou(const ast::Pou& declaration, Scope* home, Scope& scope, Pou* container);
    void EnterVariables(Pou& pou);
    void EnterEnable(Pou& pou);
    Variable& NewEnable(Pou& pou, bool isInput);
    void EnterMembers(Pou& pou);
    void EnterProperty(Pou& property);
    Variable& NewVariable(const ast::VarDecl& declaration, const ast::VarBlock& block, Pou* owner, Scope& scope);
    Variable& NewImplicit(NameId name, SourceRange declared, ast::VarSection section, Pou& owner);
    void AddParameter(Pou& pou, Variable& variable);
    Scope& NewScope(Scope* parent, Pou* owner = nullptr) { return project.scopes.emplace_back(parent, owner); }
    /// Reports a name that the scope has already.
    bool AddSymbol(Scope& scope, NameId name, const Symbol& symbol);
    void ReportDuplicate(NameId name, SourceRange range, SourceRange other);
    void ResolveBase(Pou& pou);
    void HintHidden(const Pou& pou);

    // --- names (DeclarationsLookup.cpp) ---
    const Symbol* Lookup(NameId name, const Scope* scope);
    const Symbol* LookupMember(NameId name, const Pou* pou);
    const Symbol* LookupEnumValue(NameId name);
    /// The first type or function block of that name; what else has the name in `other`.
    const Symbol* LookupType(NameId name, const Scope* scope, const Symbol*& other);
    /// The same for a name that may be "a.b".
    const Symbol* LookupQualifiedType(const ast::Identifier& name, Scope* scope);
    template <typename Accept>
    const Symbol* Search(NameId name, const Scope* scope, const Accept& accept);
    const Symbol* Ensure(Symbol* symbol);
    /// As Search(), for other files.
    const Symbol* FindSymbol(NameId name, const Scope* scope, bool (*accept)(const Symbol& symbol, const Scope* home));
    Scope* FindNamespace(std::span<const ast::Identifier> path, const Scope* scope, bool report);
    void Suggest(Diagnostic& diagnostic, NameId name, const std::vector<std::string_view>& candidates,
                 SourceRange range);
    std::vector<std::string_view> CollectNames(const Scope* scope, bool onlyTypes);

    // --- types (DeclarationsTypes.cpp) ---
    const Type* ResolveEntry(TypeEntry& entry);
    const Type* ResolveDeclared(TypeEntry& entry);
    /// The type may be incomplete.
    const Type* ResolveSpec(const ast::TypeSpec& spec, Scope* scope, NameId name = NameId::None);
    const Type* MakeSpec(const ast::TypeSpec& spec, Scope* scope, NameId name);
    const Type* ResolveNamed(const ast::NamedTypeSpec& spec, Scope* scope);
    const Type* ResolveString(const ast::StringTypeSpec& spec, Scope* scope);
    const Type* ResolveSubrange(const ast::SubrangeTypeSpec& spec, Scope* scope, NameId name);
    const Type* ResolveArray(const ast::ArrayTypeSpec& spec, Scope* scope);
    StructType* OpenStructure(const ast::StructTypeSpec& spec, Scope* scope, NameId name, const ast::Expr* initial);
    const Type* MakeEnum(const ast::EnumTypeSpec& spec, Scope* scope, NameId name, TypeEntry* entry);
    void FillEnum(EnumType& type, const ast::EnumTypeSpec& spec, Scope* scope);
    void AddLocalEnumValues(const EnumType& type, Scope* scope);
    /// Makes sure that size and parts are known; false after a message.
    bool Complete(const Type* type, SourceRange range);
    bool CompleteStruct(OpenStruct& open);
    bool FillStruct(OpenStruct& open);
    void CheckFieldInitials(OpenStruct& open);
    const Type* ElementaryIntegerBase(const ast::TypeSpec* spec, Scope* scope);

    // --- variables and units (DeclarationsVariables.cpp) ---
    void ResolveVariable(Variable& variable);
    void ResolveValue(Variable& variable);
    void BindExternal(Variable& variable);
    void ResolvePou(Pou& pou);
    void CheckSections(const Pou& pou);
    const InitialValue* GetInitial(Variable& variable);
    void CheckInitial(Variable& variable);
    const CValue* GetStartValue(Variable& variable);

    // --- layout (DeclarationsLayout.cpp) ---
    bool CompleteBlock(Pou& pou);
    bool LayOutBlock(Pou& pou);
    void LayOut();
    void LayOutProgram(Pou& pou);
    void PlaceGlobal(Variable& variable);
    void PlaceConstant(Variable& variable);
    void PlaceAlias(Variable& variable);
    void PlaceElsewhere(Variable& variable);
    /// Variables that stand for others take over their place.
    void FollowAliases();
    void WriteGlobals();
    std::uint32_t AddConstant(std::span<const unsigned char> bytes);

    // --- configurations (DeclarationsConfigurations.cpp) ---
    void EnterConfiguration(const ast::Configuration& configuration, Scope& scope);
    void ResolveConfigurations();
    void ResolveResource(const ast::Resource& resource, Scope* scope);
    const Symbol* FindProgram(NameId name, const Scope* scope);
    void ResolveConfigVariable(const ast::VarDecl& config, Scope* scope);
    void ResolveTask(const ast::TaskDecl& declaration, Scope* scope);
    void ResolveProgram(const ast::ProgramInstance& instance, Scope* scope);
    void CheckProgramArguments();
    void AddPlainPrograms();

    [[nodiscard]] std::string_view Spelling(NameId name) const { return project.names.GetSpelling(name); }
    [[nodiscard]] std::string TextOf(const Type* type) const { return GetTypeText(project.names, type); }
    Diagnostic& Report(DiagnosticCode code, SourceRange range, std::initializer_list<std::string_view> arguments = {}) {
        return project.diagnostics.Report(code, range, arguments);
    }

    Project& project;
    Checker& checker;
    Declarations& declarations;
    InitialChecker initials;
    LocatedVariables located;

    std::deque<TypeEntry> entries;  ///< Symbol::entry - 1 is the index
    std::unordered_map<NameId, std::vector<Symbol>> enumValues;
    /// Namespaces that the names in a scope may leave out.
    std::unordered_map<const Scope*, std::vector<Scope*>> usings;
    std::vector<std::pair<Scope*, std::span<const std::span<ast::Identifier>>>> openUsings;
    /// Types and blocks that have the name of a variable in the same scope.
    std::map<std::pair<const Scope*, NameId>, Symbol> hiddenTypes;
    std::unordered_map<std::pair<const void*, const void*>, const Type*, PairHash> specTypes;
    std::deque<OpenStruct> structs;
    std::unordered_map<const Type*, OpenStruct*> structByType;
    std::vector<OpenAlias> aliases;
    std::vector<OpenProgram> programArguments;
    std::vector<ConfigurationEntry> configurations;
    std::vector<std::pair<const ast::VarDecl*, Scope*>> configVariables;
    std::vector<Variable*> placed;  ///< in GlobalData, in the order of their offsets
    std::unordered_map<std::string, std::uint32_t> constantPlaces;
    std::uint32_t depth = 0;
    std::uint32_t suggestions = 0;
};

/// As declarations write it: "VAR_INPUT".
[[nodiscard]] std::string_view GetSectionText(ast::VarSection section) noexcept;
/// As declarations write it: "FUNCTION_BLOCK".
[[nodiscard]] std::string_view GetPouText(ast::PouKind kind) noexcept;

}  // namespace tn61131::st
