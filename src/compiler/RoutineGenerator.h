#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "compiler/CodeBuffer.h"
#include "compiler/Declarations.h"
#include "compiler/GeneratorFrame.h"
#include "compiler/Model.h"
#include "compiler/NumberRange.h"
#include "compiler/Tree.h"

namespace tn61131::st {

/// One routine of the image. The same POU may be several: a program that runs on several instances, and a function
/// whose in-out texts have another capacity than declared.
struct Routine {
    Pou* pou = nullptr;
    std::uint32_t instanceDelta = 0;  ///< bytes from the program's own place in GlobalData to the instance (wraps)
    /// Of each parameter the argument's type where that is another text type; empty where none is.
    std::vector<const Type*> textTypes;
    const Standalone* standalone = nullptr;

    friend auto operator<=>(const Routine&, const Routine&) = default;
};

/// Gives numbers to routines that code calls.
class RoutineNumbering {
 public:
    virtual ~RoutineNumbering() = default;
    [[nodiscard]] virtual RoutineId GetRoutine(Routine routine) = 0;
};

/// The library's functions that generated code calls of its own accord.
struct UsedBuiltIns {
    struct Function {
        std::uint8_t group = 0;
        std::uint8_t id = 0;
    };
    /// A function that reads its first argument as a conversion to a type does, so that its success tells whether the
    /// conversion would succeed.
    struct Validator {
        Function function;
        std::uint32_t argumentCount = 1;
        ElementaryType type = ElementaryType::Undefined;
    };
    UsedBuiltIns();

    Function find;
    Function left;
    Function mid;
    Function limit;
    Function min;
    Function max;
    Validator readsInteger;
    Validator readsReal;
    Validator readsDateAndTime;
};

/// Makes the code of one routine after the other from the checked tree.
///
/// Every expression is evaluated in the working entry, the top of the stack: whoever still needs what is there pushes
/// an entry first. So a statement starts and ends with the same stack, and leaves what it likes in the working entry.
class RoutineGenerator {
 public:
    RoutineGenerator(Project& project, Declarations& declarations, RoutineNumbering& numbering);

    /// False after a message. `globalSize` grows by what the routine keeps in GlobalData.
    [[nodiscard]] bool Generate(const Routine& routine, bool mayRecur, std::uint32_t& globalSize);
    [[nodiscard]] const CodeBuffer& GetProlog() const noexcept { return prolog_; }
    [[nodiscard]] const CodeBuffer& GetBody() const noexcept { return code_; }
    [[nodiscard]] const Frame& GetFrame() const noexcept { return *frame_; }

 private:
    // --- addresses (RoutinePlaces.cpp) ---

    /// A computed part of an address: index x scale.
    struct IndexTerm {
        const Expr* index;
        std::int64_t scale;
        NumberRange bounds;
        bool isChecked;
        bool isBounded;  ///< the index is known to lie within the bounds
    };
    enum class BaseKind : std::uint8_t {
        Static,  ///< a location of the machine and an offset
        Tag,
        SlotPointer,      ///< a pointer in a slot
        InstancePointer,  ///< a pointer in the instance
        Deref,            ///< a pointer value
        Result,           ///< what a function left
    };
    struct Address {
        BaseKind base = BaseKind::Static;
        LocationKind location = LocationKind::Null;
        std::uint32_t slot = 0;
        std::uint32_t pointerOffset = 0;  ///< of InstancePointer
        std::uint32_t tagId = 0;
        const Expr* expr = nullptr;   ///< of Deref and Result
        std::uint32_t offset = 0;     ///< wraps
        std::uint32_t firstTerm = 0;  ///< in terms_
        std::uint32_t termCount = 0;
        SourceRange range{};
    };
    /// Whether the pointer must mean the same to other routines and later: then it leads to the data's own block and
    /// not by way of the running instance.
    enum class Rooted : std::uint8_t { No, Yes };

    [[nodiscard]] static const Variable& FollowAlias(const Variable& variable, std::uint32_t& offset) noexcept;
    [[nodiscard]] Address Resolve(const Place& place);
    [[nodiscard]] Address ResolveVariable(const Variable& variable) const;
    [[nodiscard]] Address ResolveDeref(const DerefPlace& place);
    [[nodiscard]] static Address AtOffset(Address address, std::uint32_t offset) noexcept {
        address.offset += offset;
        return address;
    }
    [[nodiscard]] static Address MakeStatic(LocationKind location, std::uint32_t offset) noexcept {
        Address address;
        address.location = location;
        address.offset = offset;
        return address;
    }
    [[nodiscard]] static Address MakeSlotPointer(std::uint32_t slot) noexcept {
        Address address;
        address.base = BaseKind::SlotPointer;
        address.slot = slot;
        return address;
    }
    void AddIndexTerms(const ElementPlace& place, Address& address);
    void AddIndex(Address& address, IndexTerm term);
    /// The slot of a variable whose value is in one; nothing for other places.
    [[nodiscard]] static std::optional<std::uint32_t> FindSlot(const Place& place);
    /// Leaves a pointer on the top.
    void EmitAddress(const Address& address, Rooted rooted);
    void EmitBase(const Address& address, Rooted rooted);
    void EmitTerm(const IndexTerm& term, bool isTested, SourceRange range);
    void EmitOffset(std::uint32_t offset);
    void EmitOwnInstance();
    /// Whether the address may as well be computed again where it is needed again.
    [[nodiscard]] static bool IsCheap(const Address& address) noexcept;
    /// Leaves the pointer in an entry of its own, with a new working entry above it.
    [[nodiscard]] Address Keep(const Address& address, Rooted rooted);
    [[nodiscard]] static bool IsForwarded(const Address& address, const Type* type) noexcept;
    void LoadFrom(const Address& address, const Type* type);
    /// The value stays on the top.
    void StoreTo(const Address& address, const Type* type);
    /// The type of what lies at a place: of an in-out text that of the argument.
    [[nodiscard]] const Type* GetStoredType(const Place& place) const;
    void LoadPlace(const Place& place);
    void StorePlace(const Place& place);
    void EmitPlaceAddress(const Place& place) { EmitAddress(Resolve(place), Rooted::Yes); }
    void LoadUnitOfSlot(const CharPlace& place, std::uint32_t slot);

    // --- texts that pointers reach into (RoutineTexts.cpp) ---

    /// Whether pointers to a type are pointers to a text's characters.
    [[nodiscard]] bool LeadsToCharacters(const Type* type) const noexcept;
    /// Whether the text at a place may have been changed through a pointer to its characters.
    [[nodiscard]] static bool IsExposedText(const Place& place);
    void LoadExposedText(const Address& address, const Type* type);
    void StoreExposedText(const Address& address, const Type* type);
    /// Lets the length end at the first zero character. The working entry is lost.
    void MeasureText(const Address& address, const Type* type);
    /// Writes the zero character behind the text, where there is room. The working entry stays.
    void TerminateText(const Address& address, const Type* type);
    /// Makes the texts of others that the routine has exposed whole: `enters` at its start, else at its end.
    void SettleParameterTexts(bool enters);

    // --- range tests (RoutineChecks.cpp) ---

    /// Replaces a number on the top by whether it lies outside of a range, which is part of the type's.
    void EmitOutsideTest(ElementaryType type, const NumberRange& allowed);
    /// Ends the run with a fault when the number that `emitNumber` puts on the top is outside. The top is lost.
    template <typename Emit>
    void EmitTrapOutside(ElementaryType type, const NumberRange& allowed, SourceRange range, Emit emitNumber);
    /// Leaves the number of the range that is nearest to the one that `emitNumber` puts on the top. Returns its type.
    template <typename Emit>
    ElementaryType EmitClamped(ElementaryType type, const NumberRange& allowed, Emit emitNumber);
    [[nodiscard]] Label GetTrap(SourceRange range);
    void EmitTraps();
    [[nodiscard]] bool IsCheapIndex(const Expr& index);
    void EmitRangeCheckOfTop(const Type* type, SourceRange range);

    // --- values (RoutineExpressions.cpp) ---

    /// Replaces the top by the value.
    void Value(const Expr& expr);
    void Constant(const ConstantExpr& expr);
    void BinaryValue(const BinaryExpr& expr);
    void LogicalValue(const LogicalExpr& expr);
    void ConvertValue(const ConvertExpr& expr);
    void ConvertOrZero(const ConvertExpr& expr);
    [[nodiscard]] const UsedBuiltIns::Validator* FindValidator(const ConvertExpr& expr) const noexcept;
    void SelectValue(const SelectExpr& expr);
    void DefaultValue(const Type* type);
    /// Jumps when the condition has the value, else goes on. The top is lost.
    void JumpIf(const Expr& condition, bool value, Label target);
    void JumpIfLogical(const LogicalExpr& condition, bool value, Label target);
    /// Leaves a pointer to an aggregate.
    void AggregateAddress(const Expr& expr);
    void LoadComposite(const Place& place);
    [[nodiscard]] bool IsNeverUndefined(const Expr& expr);

    // --- calls (RoutineCalls.cpp) ---

    /// An output that the callee leaves in temporary data.
    struct OutputCopy {
        const OutputBinding* binding;
        std::uint32_t temp;
    };
    /// A copy of a text that a function block takes as in-out of a larger capacity.
    struct TextCopy {
        const Place* place;
        const Type* type;
        std::uint32_t temp;
    };
    void CallFunction(const CallFunctionExpr& call, bool isValueWanted);
    void FinishCall(const CallFunctionExpr& call, std::size_t firstOutput, bool isValueWanted);
    void CallBuiltIn(const CallBuiltInExpr& call);
    void EmitCall(Routine callee, std::uint32_t count, SourceRange range);
    [[nodiscard]] std::vector<const Type*> GetTextTypes(const CallFunctionExpr& call) const;
    void Argument(const FunctionArgument& argument);
    void InputArgument(const Variable& parameter, const Expr& value);
    void OutputArgument(const Variable& parameter, const OutputBinding& output);
    void CopyTextBack(std::size_t index);
    void FinishOutput(const OutputBinding& binding, const Address& source);
    void StoreBool(const Place& place, bool value);
    void CallBlock(const CallBlockStmt& call);
    void CallProgram(const CallBlockStmt& call);
    void CallUserBlock(const CallBlockStmt& call, const Address& instance);
    void CallLibraryBlock(const CallBlockStmt& call, const Address& instance);
    void StoreBlockInput(const BlockInput& input, const Address& instance);
    void StoreBlockInOut(const BlockInOut& inOut, const Address& instance);
    void RunOmittedEdges(const CallBlockStmt& call, const Address& instance);
    void BindBlockOutputs(const CallBlockStmt& call, const Address& instance);
    void StoreControl(const Address& instance, std::uint32_t offset, bool value);
    [[nodiscard]] static const Variable* FindControl(const FunctionBlockType& block, std::uint32_t offset) noexcept;
    [[nodiscard]] Routine GetCallee(Pou& callee) const;
    /// Bytes of temporary data that the current statement may use.
    [[nodiscard]] std::uint32_t NewTemp(std::uint32_t size);

    // --- statements (RoutineStatements.cpp) ---

    struct Loop {
        Label exit;
        Label next;
        std::uint32_t depth;
    };
    /// An integer or bit string of which bits are written.
    struct WordPlace {
        std::optional<std::uint32_t> slot;
        Address address;
        const Type* type;
    };
    struct CaseTest {
        Int128 lower;
        Int128 upper;
        Label arm;
    };
    struct CaseSelector {
        ElementaryType type;
        const Expr* expr;  ///< null when the value is in the slot
        std::uint32_t slot;
    };
    void Statement(const Stmt& statement);
    void Statements(const Block* block);
    void Assign(const AssignStmt& statement);
    void AssignAggregate(const AssignAggregateStmt& statement);
    void Evaluate(const Expr& value);
    void KeepAddress(const KeepStmt& statement);
    void CopyToTop(std::uint32_t size, const Address& target);
    void CopyPieces(std::uint32_t size, const Address& source, const Address& target);
    void StoreBits(const StoreBitsStmt& statement);
    template <typename Emit>
    void StoreBitsIn(const WordPlace& word, const StoreBitsStmt& statement, Emit emitValue);
    void LoadWord(const WordPlace& word);
    void StoreWord(const WordPlace& word);
    void CombineWord(BinaryOperator op, ElementaryType type, std::uint64_t mask);
    void If(const IfStmt& statement);
    void LeaveLoop(Label Loop::*target);
    void Case(const CaseStmt& statement);
    void LoadSelector(const CaseSelector& selector);
    void CompareSelector(const CaseSelector& selector, BinaryOperator op, Int128 limit);
    void CaseSearch(const CaseSelector& selector, std::span<const CaseTest> tests, Label otherwise);
    void CaseTestOne(const CaseSelector& selector, const CaseTest& test);

    // --- loops (RoutineLoops.cpp) ---

    struct ForPlan;
    void While(const WhileStmt& statement);
    void Repeat(const RepeatStmt& statement);
    void For(const ForStmt& statement);
    void ForBody(const ForStmt& statement, const ForPlan& plan);
    void EnterFor(const ForPlan& plan, Label body, Label exit);
    void MoveEnd(const ForPlan& plan);
    void LoadEnd(const ForPlan& plan);
    void CompareWithNumber(const ForPlan& plan, BinaryOperator op, Int128 number);
    void CompareWithEnd(const ForPlan& plan, BinaryOperator op);
    void AddToCounter(const ForPlan& plan);
    void NextByConstantStep(const ForPlan& plan, Label more, Label exit);
    void NextByVariableStep(const ForPlan& plan, Label more, Label exit);

    // --- routine (RoutineGenerator.cpp) ---

    struct Trap {
        SourceOffset source;
        std::uint32_t depth;
        Label label;
    };
    void EmitProlog();
    void EmitSlots();
    void InitialiseMemory();
    void InitialValueOf(const Variable& variable);
    void LoadInitialBytes(const Variable& variable);
    void CopyInput(const Frame::CopiedInput& input);
    void ResetThroughPointer(const Variable& variable);
    void LeaveRoutine();
    /// LD STACK of an entry that is no slot.
    void LoadEntry(std::uint32_t index);

    Project& project_;
    Declarations& declarations_;
    RoutineNumbering& numbering_;
    const UsedBuiltIns builtIns_;
    std::map<const Pou*, Frame> frames_;
    CodeBuffer prolog_;
    CodeBuffer code_;
    Frame* frame_ = nullptr;
    Routine routine_{};
    Pou* pou_ = nullptr;
    std::uint32_t* globalSize_ = nullptr;
    std::uint32_t tempInUse_ = 0;
    std::uint32_t tempSize_ = 0;
    std::vector<IndexTerm> terms_;  ///< of the addresses of the current statement
    std::vector<Loop> loops_;
    std::vector<Trap> traps_;
    std::vector<OutputCopy> outputCopies_;
    std::vector<TextCopy> textCopies_;
    std::vector<unsigned char> scratch_;
    Address outputSource_{};  ///< what an Output expression stands for
    bool failed_ = false;
};

}  // namespace tn61131::st
