#pragma once

#include <cstdint>
#include <span>

#include "compiler/Model.h"
#include "value/Operators.h"

/// The checked tree: what the bodies do, with every type decided and every conversion written out. The checker makes
/// it, the optimiser passes rewrite it, the code generator reads it. Nodes live in the project's arena; constant values
/// and lists that own memory live in the project (see Constant).
///
/// Invariant: evaluating an expression leaves on the machine's stack a value whose type is exactly
/// `type->storage`; operands of a binary operator have the same type wherever the machine would otherwise promote.
/// Aggregates (arrays, structures, function blocks) are never values on the stack: an expression of such a type is a
/// Load of a place, a CallFunction or an AggregateConstant, and whoever takes it takes its address.
namespace tn61131::st {

// --- places: what has an address ---

enum class PlaceKind : std::uint8_t {
    Variable,
    Member,   ///< a field of a structure, a variable of a function block's instance
    Element,  ///< of an array
    Deref,    ///< what a pointer points to
    Char,     ///< one unit of a string, counted from 1: CHAR or BYTE of a STRING, WCHAR or WORD of a WSTRING
    Result,   ///< the temporary that holds an aggregate function result
    This,     ///< the instance whose body, method or action runs: THIS^, and SUPER^ with the type of the base
    Kept,     ///< of the optimiser: the place of the Keep statement around it
};

struct Place {
    PlaceKind kind;
    const Type* type;
    SourceRange range;
};

struct VariablePlace : Place {
    Variable* variable;
};

struct MemberPlace : Place {
    Place* base;
    std::uint32_t offset;
    NameId member;
};

/// One index for each dimension of the array. Constant indices have been checked; others are integers, bit strings or
/// enumerations of any size, and `checked` says whether the generated code must test them.
struct ElementPlace : Place {
    Place* base;
    const ArrayType* array;
    std::span<Expr*> indices;
    bool checked;
};

struct DerefPlace : Place {
    Expr* pointer;
    /// Added to the pointer first: elements for POINTER TO, may be null. An integer.
    Expr* index;
};

struct CharPlace : Place {
    Place* base;
    Expr* index;
};

struct ResultPlace : Place {
    Expr* call;  ///< CallFunction with an aggregate result
};

struct ThisPlace : Place {};

/// All uses of one kept address are one object.
struct KeptPlace : Place {
    std::uint32_t slot = 0;  ///< entry of the frame with the pointer; set by the code generator
};

// --- expressions ---

enum class ExprKind : std::uint8_t {
    Constant,
    AggregateConstant,
    Load,     ///< the value at a place
    Address,  ///< ADR, REF: a pointer to a place
    Unary,
    Binary,
    Logical,       ///< AND, OR of BOOL that evaluate the right side only when it decides
    Convert,       ///< CONVERT or TRUNCATE
    Select,        ///< one of two values; only the one taken is evaluated
    CallFunction,  ///< a function or method of the project
    CallBuiltIn,
    AddPointer,  ///< pointer + bytes
    Output,      ///< stands for the value of an output in OutputBinding::value
    Status,      ///< LD STATUS 1: whether the last built-in call succeeded
};

struct Expr {
    ExprKind kind;
    const Type* type;
    SourceRange range;
};

/// `value` has the type's storage; it is kept alive by the project's checker.
struct ConstantExpr : Expr {
    const CValue* value;
    /// A literal whose type the context may still choose (5, 2.5, 16#FF).
    bool untyped;
};

/// Bytes of a constant array, structure or string table, to be placed in GlobalConstants.
struct AggregateConstantExpr : Expr {
    std::span<const unsigned char> bytes;
};

struct LoadExpr : Expr {
    Place* place;
};

struct AddressExpr : Expr {
    Place* place;
};

struct UnaryExpr : Expr {
    UnaryOperator op;
    Expr* operand;
};

struct BinaryExpr : Expr {
    BinaryOperator op;
    Expr* left;
    Expr* right;
};

struct LogicalExpr : Expr {
    bool isAnd;
    Expr* left;
    Expr* right;
};

struct ConvertExpr : Expr {
    bool truncate;
    /// What a text that is no number gives: 0 instead of a failed run.
    bool zeroOnFailure;
    /// Written by the checker because the types differ, not by the program.
    bool isImplicit;
    Expr* operand;
};

struct SelectExpr : Expr {
    Expr* condition;
    Expr* whenTrue;
    Expr* whenFalse;
};

/// What becomes of an output after the call. `value` is an Output expression with the conversions around it that
/// bring it to `target`'s type; where it is the bare Output the callee may write the target directly.
struct OutputBinding {
    Variable* output = nullptr;
    Place* target = nullptr;
    Expr* value = nullptr;
    bool negated = false;
};

/// One argument for each parameter of the callee in the order of Pou::parameters: `value` for inputs (never null:
/// defaults are filled in), `place` for in-outs, `output` for outputs (target null when not connected).
struct FunctionArgument {
    Variable* parameter = nullptr;
    Expr* value = nullptr;
    Place* place = nullptr;
    OutputBinding output{};
};

struct CallFunctionExpr : Expr {
    Pou* callee;
    Place* instance;  ///< of a method: the instance it works on; null for functions
    std::span<FunctionArgument> arguments;
    Expr* enable;         ///< EN; null without
    Place* enableOutput;  ///< ENO; null without
};

/// Arguments have exactly the types that the function takes. Outputs of SPLIT_... are two arguments each, an INT that
/// is not read and the Address of an INT.
struct CallBuiltInExpr : Expr {
    std::uint8_t group;
    std::uint8_t id;
    std::span<Expr*> arguments;
    bool withEno;  ///< the failure of the call does not fail the run
    Expr* enable;
    Place* enableOutput;
};

/// Bytes may be negative.
struct AddPointerExpr : Expr {
    Expr* pointer;
    Expr* bytes;
};

struct OutputExpr : Expr {
    Variable* output;
};

// --- statements ---

enum class StmtKind : std::uint8_t {
    Assign,
    AssignAggregate,
    StoreBits,
    Evaluate,
    CallBlock,
    If,
    Case,
    For,
    While,
    Repeat,
    Exit,
    Continue,
    Return,
    Block,
    Keep,  ///< of the optimiser
};

struct Stmt {
    StmtKind kind;
    SourceRange range;
};

struct Block : Stmt {
    std::span<Stmt*> statements;
};

/// Of a value that is no aggregate; `value` has the type of the target. The value is evaluated before the target's
/// address. `isRanged` asks for the test of the target's subrange.
struct AssignStmt : Stmt {
    Place* target;
    Expr* value;
    bool isRanged;
};

/// Copies `size` bytes; they may overlap.
struct AssignAggregateStmt : Stmt {
    Place* target;
    Expr* source;  ///< see the invariant above
};

/// Writes some bits of the integer or bit string at a place: BOOL for width 1, else a bit string of that width.
struct StoreBitsStmt : Stmt {
    Place* target;
    std::uint8_t firstBit;
    std::uint8_t width;
    Expr* value;
};

/// For its effects only.
struct EvaluateStmt : Stmt {
    Expr* value;
};

struct BlockInput {
    Variable* input = nullptr;
    Expr* value = nullptr;  ///< of the input's type
};

struct BlockInOut {
    Variable* inOut = nullptr;
    Place* place = nullptr;
};

/// Calls a function block: given inputs, in-outs, the body, outputs in the order written. A program and its actions are
/// called likewise, without instance and block: their variables are global.
struct CallBlockStmt : Stmt {
    Place* instance;                 ///< null for programs
    const FunctionBlockType* block;  ///< null for programs
    Pou* action;                     ///< an action instead of the body, or a program; null for the body of the block
    std::span<BlockInput> inputs;
    std::span<BlockInOut> inOuts;
    std::span<OutputBinding> outputs;
    Expr* enable;
    Place* enableOutput;
};

struct IfStmt : Stmt {
    Expr* condition;
    Block* then;
    Block* otherwise;  ///< null without; ELSIF is an If in it
};

struct CaseRange {
    std::int64_t lower = 0;  ///< of ULINT and LWORD as the bits of the number
    std::int64_t upper = 0;
};

struct CaseArm {
    std::span<CaseRange> ranges{};
    Block* body = nullptr;
};

struct CaseStmt : Stmt {
    Expr* selector;  ///< integer, bit string or enumeration
    std::span<CaseArm> arms;
    Block* otherwise;  ///< null without
};

/// The end and the step are evaluated once. Step is null for 1. All of the counter's type.
struct ForStmt : Stmt {
    Place* counter;
    Expr* from;
    Expr* to;
    Expr* by;
    Block* body;
};

/// Computes the address of a place once for everything in the body. `isRooted`: the pointer is handed to others.
struct KeepStmt : Stmt {
    Place* place;
    KeptPlace* kept;
    bool isRooted;
    Block* body;
};

struct WhileStmt : Stmt {
    Expr* condition;
    Block* body;
};

struct RepeatStmt : Stmt {
    Block* body;
    Expr* condition;
};

}  // namespace tn61131::st
