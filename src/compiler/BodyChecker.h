#pragma once

#include <deque>
#include <initializer_list>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "compiler/BuiltInSignatures.h"
#include "compiler/Checker.h"
#include "compiler/Declarations.h"
#include "compiler/Model.h"
#include "compiler/Tree.h"

namespace tn61131::st {

/// What an expression of the syntax tree names before it is decided whether its value, its place or its address is
/// wanted.
struct Entity {
    enum class Kind : std::uint8_t { Error, Value, Place, Bits, Type, Pou, Namespace, BuiltIn };
    Kind kind = Kind::Error;
    std::uint8_t firstBit = 0;  ///< of Bits
    std::uint8_t width = 0;
    /// Why the place cannot be written, in words for a message; null when it can.
    const char* readOnly = nullptr;
    Expr* value = nullptr;
    Place* place = nullptr;  ///< of Place and Bits; of a Pou the instance it is called of, null where none is stated
    const Type* type = nullptr;  ///< of Type
    Pou* pou = nullptr;
    const Scope* scope = nullptr;  ///< of Namespace
    const BuiltIn* builtIn = nullptr;
    NameId name = NameId::None;
};

/// Families of values for which the language has different rules.
enum class Family : std::uint8_t {
    Error,
    Void,
    Null,
    Bool,
    Signed,
    Unsigned,
    Bits,
    Real,
    Time,
    TimeOfDay,
    Date,
    DateAndTime,
    Char,
    WChar,
    String,
    WString,
    Pointer,
    Enum,
    Aggregate,
};
[[nodiscard]] Family FamilyOf(const Type* type) noexcept;
[[nodiscard]] constexpr bool IsIntegerFamily(Family family) noexcept {
    return family == Family::Signed || family == Family::Unsigned;
}
[[nodiscard]] constexpr bool IsNumberFamily(Family family) noexcept {
    return IsIntegerFamily(family) || family == Family::Bits || family == Family::Real;
}

/// The work of the Checker: one body at a time, expressions of declarations in between.
class BodyChecker {
 public:
    explicit BodyChecker(Project& project);

    void SetDeclarations(Declarations& declarations) noexcept { declarations_ = &declarations; }

    Expr* CheckExpressionIn(const ast::Expr& expression, const Type* wanted, Scope* scope);
    std::optional<CValue> EvaluateConstantIn(const ast::Expr& expression, const Type* wanted, Scope* scope);
    std::optional<std::int64_t> EvaluateIntegerIn(const ast::Expr& expression, Scope* scope);
    void CheckPou(Pou& pou);
    void CheckProject();
    void CheckStandaloneExpression(Standalone& standalone, const ast::Expr& expression);
    void CheckStandaloneBlock(Standalone& standalone, std::span<ast::Stmt* const> statements);

 private:
    /// What is being checked. Declarations are resolved in the middle of bodies, so contexts nest.
    struct Context {
        Scope* scope = nullptr;
        Pou* pou = nullptr;  ///< null for expressions of declarations
        std::uint32_t loops = 0;
        bool writesOutside = false;         ///< the body changes more than its own variables
        std::vector<Variable*> counters{};  ///< of the FOR loops around
        std::vector<Pou*> calls{};          ///< every call of the project's POUs in the order met
    };
    class Enter;

    /// A node that evaluates its right side only when needed, as long as none of these calls has side effects.
    struct ShortCircuit {
        LogicalExpr* node;
        std::vector<Pou*> calls;
    };

    // --- BodyChecker.cpp: messages and nodes ---
    Expr* Error(SourceRange range);
    Expr* Fail(DiagnosticCode code, SourceRange range, std::initializer_list<std::string_view> arguments = {});
    /// False, after an error, when the strictness says so.
    bool Allow(Switches::Strictness strictness, DiagnosticCode code, SourceRange range,
               std::initializer_list<std::string_view> arguments);
    void Hint(DiagnosticCode code, SourceRange range, std::initializer_list<std::string_view> arguments = {});
    void ReportUnknownName(NameId name, SourceRange range);
    [[nodiscard]] std::string Text(const Type* type) const;
    [[nodiscard]] std::string Text(NameId name) const { return std::string(project_.names.GetSpelling(name)); }
    /// What the program wrote, for messages; long texts are cut.
    [[nodiscard]] std::string SourceText(SourceRange range) const;
    /// As written where that is a literal, else the value.
    [[nodiscard]] std::string NumberText(const ConstantExpr& constant) const;
    [[nodiscard]] std::string ValueText(const ConstantExpr& constant) const;
    [[nodiscard]] bool IsCodesys() const noexcept { return project_.options.profile == Profile::Codesys; }
    [[nodiscard]] const Switches& GetSwitches() const noexcept { return project_.options.switches; }
    [[nodiscard]] const Type* Elementary(ElementaryType type) const { return project_.types.Elementary(type); }
    template <typename Node>
    Node* New(Node node) {
        return project_.arena.New<Node>(std::move(node));
    }
    ConstantExpr* NewConstant(const Type* type, CValue value, SourceRange range, bool untyped = false);
    ConstantExpr* NewInteger(const Type* type, std::int64_t value, SourceRange range);
    Expr* NewLoad(Place* place, SourceRange range);
    Expr* NewConvert(Expr* operand, const Type* type, bool isImplicit, bool truncate = false);
    Expr* NewBuiltInCall(std::uint8_t group, std::uint8_t id, const Type* type, SourceRange range,
                         std::initializer_list<Expr*> arguments);
    [[nodiscard]] static bool IsError(const Expr* expr) noexcept { return expr->type->kind == TypeKind::Error; }

    // --- CheckerNames.cpp, CheckerMembers.cpp: names and places ---
    Entity Resolve(const ast::Expr& expression, const Type* wanted);
    Entity ResolveName(NameId name, SourceRange range, const Type* wanted);
    Entity FromSymbol(const Symbol& symbol, NameId name, SourceRange range);
    Entity FromVariable(Variable* variable, SourceRange range);
    Entity FromPlace(Place* place, const char* readOnly);
    Entity FromEnumMember(const Type* type, const EnumMember& member, SourceRange range);
    Entity ResolveMember(const ast::MemberExpr& member);
    Entity MemberOfType(const Type* type, const ast::MemberExpr& member);
    Entity MemberOfProgram(Pou& program, const ast::MemberExpr& member);
    Entity MemberOfBlock(Place* place, const FunctionBlockType& block, const char* readOnly,
                         const ast::MemberExpr& member);
    Entity NoSuchMember(const std::string& what, const ast::MemberExpr& member,
                        std::span<const std::string_view> candidates);
    Entity ResolvePartial(const ast::PartialExpr& partial);
    Entity BitsOf(Place* place, const char* readOnly, std::uint32_t firstBit, std::uint32_t width, SourceRange range);
    Entity ResolveIndex(const ast::IndexExpr& index);
    Entity IndexOnce(Entity base, std::span<const ast::Expr* const> indices, std::size_t& used, SourceRange range);
    Expr* CheckIndex(const ast::Expr& index, const ArrayBound* bound);
    Entity ResolveDeref(const ast::DerefExpr& deref);
    Entity ResolveThis(SourceRange range, bool super);
    /// The block whose instance `THIS^` is; null outside of one.
    [[nodiscard]] Pou* GetBlock() const noexcept;
    /// Null after a message. An aggregate that a function returns counts as a place.
    Place* PlaceOf(const Entity& entity, SourceRange range);
    /// The place that an expression writes; Error after a message.
    Entity CheckTarget(const ast::Expr& expression);
    /// A place whose address is taken; null after a message.
    Place* CheckAddressable(const ast::Expr& expression, bool willBeWritten);
    Expr* ToValue(const Entity& entity, SourceRange range);
    Expr* ReadBits(const Entity& bits, SourceRange range);
    void MarkRead(const Place* place);
    void MarkWritten(const Place* place, SourceRange range);
    void MarkAddressTaken(const Place* place);
    /// Notes that a pointer leads to the characters of a text.
    void ExposeText(const Place* place);

    // --- CheckerLiterals.cpp ---
    Expr* CheckLiteral(const ast::LiteralExpr& literal);
    Expr* CheckInteger(const ast::LiteralExpr& literal);
    Expr* CheckTimeLiteral(const ast::LiteralExpr& literal);
    Expr* CheckInitializer(const ast::Expr& expression, const Type* wanted);

    // --- CheckerConvert.cpp ---
    /// The expression as a value of the type, as an assignment takes it.
    Expr* Coerce(Expr* expr, const Type* target);
    Expr* CoerceUntyped(ConstantExpr* constant, const Type* target);
    Expr* CoerceUntypedInteger(ConstantExpr* constant, const Type* target);
    Expr* CoerceText(Expr* expr, const Type* target);
    Expr* CoerceNumber(Expr* expr, const Type* target);
    Expr* CoercePointer(Expr* expr, const Type* target);
    Expr* CoerceReference(Expr* expr, const Type* target);
    Expr* CheckSubrange(Expr* expr, const Type* target);
    Expr* RefuseConversion(Expr* expr, const Type* target);
    /// Enumerations become numbers of their base type, after a message where the dialect wants one.
    Expr* DropEnum(Expr* expr, bool silent);
    /// A constant of the type with the bits or characters that the machine's conversion gives; null when it refuses.
    ConstantExpr* FoldConvert(const ConstantExpr& constant, const Type* type, bool truncate);
    /// Gives untyped constants the type they have alone.
    Expr* Settle(Expr* expr);
    /// The type that the value has when implicit widening is not counted.
    [[nodiscard]] const Type* NaturalType(const Expr* expr) const;
    /// Whether each value of the first type is one of the second.
    [[nodiscard]] bool IsLossless(const Type* from, const Type* to) const;
    /// The smallest type that holds the values of both numbers; null when there is none.
    [[nodiscard]] const Type* CommonNumber(const Type* left, const Type* right) const;
    /// Writes the conversion that the program asked for by X_TO_Y.
    Expr* ConvertExplicitly(Expr* expr, const Type* target, bool truncate, SourceRange range);

    // --- CheckerOperators.cpp ---
    /// The value of an expression. `wanted` only helps where the expression leaves its type open.
    Expr* Check(const ast::Expr& expression, const Type* wanted);
    /// As an assignment to the type takes it.
    Expr* CheckAs(const ast::Expr& expression, const Type* target);
    Expr* CheckCondition(const ast::Expr& expression);
    Expr* CheckUnary(const ast::UnaryExpr& unary, const Type* wanted);
    Expr* ApplyUnary(ast::UnaryOp op, Expr* operand, SourceRange range);
    Expr* CheckBinaryChain(const ast::BinaryExpr& binary, const Type* wanted);
    Expr* ApplyBinary(ast::BinaryOp op, Expr* left, Expr* right, SourceRange range, const Type* wanted);
    Expr* ApplyLogical(ast::BinaryOp op, Expr* left, Expr* right, SourceRange range);
    Expr* ApplyArithmetic(ast::BinaryOp op, Expr* left, Expr* right, SourceRange range, const Type* wanted);
    Expr* ApplyTimeArithmetic(ast::BinaryOp op, Expr* left, Expr* right, SourceRange range);
    Expr* ApplyPointerArithmetic(ast::BinaryOp op, Expr* left, Expr* right, SourceRange range);
    Expr* ApplyPower(Expr* left, Expr* right, SourceRange range, const Type* wanted);
    Expr* ApplyComparison(ast::BinaryOp op, Expr* left, Expr* right, SourceRange range);
    Expr* RefuseOperands(std::string_view op, const Expr* left, const Expr* right, SourceRange range);
    /// Brings two numbers to one type; false after a message. Both stay untyped when they are.
    bool UnifyNumbers(std::string_view op, Expr*& left, Expr*& right, const Type* wanted, SourceRange range);
    /// Brings the branches of a selection to one type; null after a message.
    const Type* UnifyValues(std::string_view function, std::span<Expr*> values, const Type* wanted, SourceRange range);
    Expr* MakeBinary(BinaryOperator op, const Type* type, Expr* left, Expr* right, SourceRange range);
    void WarnOfComparison(ast::BinaryOp op, const Expr* left, const Expr* right, SourceRange range);
    Expr* CheckTypePrefix(const ast::TypePrefixExpr& prefix);

    // --- CheckerFold.cpp ---
    Expr* FoldUnary(UnaryOperator op, ConstantExpr* operand, SourceRange range);
    Expr* FoldBinary(BinaryOperator op, const Type* type, ConstantExpr* left, ConstantExpr* right, SourceRange range);
    Expr* FoldUntyped(BinaryOperator op, ConstantExpr* left, ConstantExpr* right, SourceRange range);
    Expr* FoldBuiltIn(const BuiltInSignature& signature, const Type* type, std::span<Expr*> arguments,
                      SourceRange range);
    Expr* UntypedFromInteger(bool negative, std::uint64_t magnitude, bool based, SourceRange range);

    // --- CheckerCalls.cpp, CheckerBlockCalls.cpp ---
    Expr* CheckCall(const ast::CallExpr& call, const Type* wanted);
    Entity ResolveCallee(const ast::Expr& callee);
    Expr* CheckValueCall(const ast::CallExpr& call, const Entity& callee, const Type* wanted);
    void ReportUnknownParameter(const std::string& callee, const ast::Argument& argument,
                                std::span<const std::string_view> candidates);
    Expr* CheckFunctionCall(const ast::CallExpr& call, Pou& callee, Place* instance);
    Stmt* CheckCallStatement(const ast::CallStmt& statement);
    Stmt* CheckBlockCall(const ast::CallExpr& call, Place* instance, const FunctionBlockType& block, Pou* action);
    Stmt* CheckProgramCall(const ast::CallExpr& call, Pou& program);
    Stmt* BuildBlockCall(const ast::CallExpr& call, Place* instance, const FunctionBlockType* block, Pou* action,
                         std::span<Variable* const> variables, const std::string& name);
    /// Reads a property, or writes `value` to it.
    Expr* CallAccessor(const Entity& property, Pou& accessor, Expr* value, SourceRange range);
    /// EN and ENO, taken out of the arguments; false when the argument is another one.
    bool TakeEnable(const ast::Argument& argument, Expr*& enable, Place*& enableOutput);
    void BindInput(Variable* parameter, const ast::Argument& argument, Expr*& value);
    void BindInOut(Variable* parameter, const ast::Argument& argument, Place*& place);
    void BindOutput(Variable* parameter, const ast::Argument& argument, OutputBinding& output);
    [[nodiscard]] bool InOutAccepts(const Type* parameter, const Type* argument) const;
    Expr* DefaultOf(Variable& input, SourceRange range);
    void NoteCall(Pou* callee);
    /// Fills in the instance of the caller where none is stated; false after a message.
    bool CheckMethodInstance(const Pou& callee, Place*& instance, SourceRange range);

    // --- CheckerBuiltIns.cpp ---
    Expr* CheckBuiltInCall(const ast::CallExpr& call, const BuiltIn& builtIn, const Type* wanted);
    Expr* CheckRowCall(const ast::CallExpr& call, const BuiltIn& builtIn, const Type* wanted);
    struct BuiltInArguments {
        std::vector<const ast::Expr*> values;  ///< by position; null for one left out
        std::vector<const ast::Argument*> outputs;
        Expr* enable = nullptr;
        Place* enableOutput = nullptr;
    };
    bool SortArguments(const ast::CallExpr& call, const BuiltIn& builtIn, BuiltInArguments& arguments);
    Expr* BuildRowCall(const BuiltIn& builtIn, std::span<Expr*> arguments, const BuiltInArguments& sorted,
                       const Type* type, SourceRange range);
    Expr* CheckOperatorFunction(const BuiltIn& builtIn, const BuiltInArguments& sorted, const Type* wanted,
                                SourceRange range);
    Expr* CheckSelection(const BuiltIn& builtIn, const BuiltInArguments& sorted, const Type* wanted, SourceRange range);
    Expr* CheckSplit(const ast::CallExpr& call, const BuiltIn& builtIn, const BuiltInArguments& sorted);
    Expr* CheckConversionCall(const ast::CallExpr& call, const BuiltIn& builtIn, const Type* wanted);
    Expr* CheckSpecialCall(const ast::CallExpr& call, const BuiltIn& builtIn, const Type* wanted);
    Expr* CheckSizeOf(const ast::Expr& operand, SourceRange range);
    Expr* CheckBoundOf(const ast::CallExpr& call, const BuiltIn& builtIn);
    Expr* CheckAddressOf(const ast::Expr& operand, bool isTyped, SourceRange range);
    /// Exactly `count` arguments, no EN and ENO; false after a message.
    bool TakeArguments(const ast::CallExpr& call, const BuiltIn& builtIn, std::size_t count, BuiltInArguments& sorted);
    Expr* CheckParameter(ParamRule rule, const ast::Expr& argument, const BuiltIn& builtIn, std::size_t position,
                         const Type* wanted);
    Expr* RefuseArgument(const BuiltIn& builtIn, std::size_t position, const Expr* argument);
    Expr* CheckTextParameter(ParamRule rule, Expr* value, const Type* first, const BuiltIn& builtIn,
                             std::size_t position);

    // --- CheckerStatements.cpp, CheckerLoops.cpp ---
    Block* CheckBlock(std::span<ast::Stmt* const> statements, SourceRange range);
    Stmt* CheckStatement(const ast::Stmt& statement);
    Stmt* CheckAssign(const ast::AssignStmt& assign);
    Stmt* CheckChain(const ast::AssignStmt& assign);
    Stmt* CheckReferenceAssign(const ast::AssignStmt& assign);
    Stmt* CheckSetReset(const ast::AssignStmt& assign);
    Stmt* AssignTo(const Entity& target, Expr* value, SourceRange targetRange, SourceRange range);
    Stmt* CheckIf(const ast::IfStmt& statement);
    Stmt* CheckCase(const ast::CaseStmt& statement);
    struct Label;
    void CheckLabel(const ast::CaseLabel& label, const Type* type, std::vector<Label>& labels, CaseRange& range);
    void ReportOverlaps(const std::vector<Label>& labels, bool isUnsigned);
    void ReportMissingLabels(const EnumType& type, const std::vector<Label>& labels, SourceRange range);
    Stmt* CheckFor(const ast::ForStmt& statement);
    void WarnOfLoopEnd(const Type* type, const Expr* to, bool downward);
    Stmt* CheckWhile(const ast::WhileStmt& statement);
    Stmt* CheckRepeat(const ast::RepeatStmt& statement);
    Stmt* CheckJump(const ast::Stmt& statement);

    // --- CheckerProject.cpp ---
    void DecideSideEffects();
    void FindRecursion();
    void ReportUnused();

    /// The integer that a constant holds; nothing for one that is no integer.
    [[nodiscard]] static std::optional<std::int64_t> GetInteger(const Expr* expr);

    Project& project_;
    Declarations* declarations_ = nullptr;
    Context context_;
    std::deque<CValue> constants_;
    BuiltInTable builtIns_;
    std::vector<ShortCircuit> shortCircuits_;
    std::uint32_t unknownNames_ = 0;
    std::uint32_t depth_ = 0;         ///< of expressions being checked
    std::uint32_t openBranches_ = 0;  ///< of IF and ELSIF around the statement being checked
};

struct Checker::State : BodyChecker {
    using BodyChecker::BodyChecker;
};

}  // namespace tn61131::st
