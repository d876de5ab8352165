#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "compiler/Names.h"
#include "compiler/Source.h"

/// The syntax tree: what the sources say, names not looked up, nothing checked. Nodes live in an Arena and never change
/// once the parser has made them; texts point into the sources.
namespace tn61131::st::ast {

struct Expr;
struct Stmt;
struct TypeSpec;

struct Identifier {
    NameId name = NameId::None;
    SourceRange range{};
};

// --- expressions (IEC 61131-3, 7.3.2) and initial values (6.4.4, 6.5.1.2) ---

enum class ExprKind : std::uint8_t {
    Error,  ///< stands for what could not be parsed; already reported
    Literal,
    Name,     ///< an identifier
    Located,  ///< %"address", %IX0.1
    Member,   ///< a.b
    Partial,  ///< a.3, a.%X3, a.%B1 (6.5.5)
    Index,    ///< a[i, j]
    Deref,    ///< a^
    Call,     ///< f(...)
    Unary,
    Binary,
    TypePrefix,  ///< TYPE#operand where the operand is no literal that the tokenizer joins: an enumeration value, INT#x
    This,        ///< THIS
    Super,       ///< SUPER^
    ArrayInit,   ///< [1, 2, 3(0)] or the same without brackets
    StructInit,  ///< (a := 1, b := 2)
};

enum class LiteralKind : std::uint8_t {
    Integer,
    Real,
    String,
    WString,
    Char,
    WChar,
    Time,
    Date,
    DateAndTime,
    TimeOfDay,
    Bool,
    Null
};

enum class UnaryOp : std::uint8_t { Plus, Minus, Not };

enum class BinaryOp : std::uint8_t {
    Or,
    OrElse,
    Xor,
    And,
    AndThen,
    Equal,
    NotEqual,
    Less,
    Greater,
    LessEqual,
    GreaterEqual,
    Add,
    Subtract,
    Multiply,
    Divide,
    Modulo,
    Power
};

struct Expr {
    ExprKind kind;
    SourceRange range;
};

/// The text as written, with prefix, quotes and escapes; the library's literal parsers read it.
struct LiteralExpr : Expr {
    LiteralKind literal;
    std::string_view text;
};

struct NameExpr : Expr {
    NameId name;
};

/// `address` is the text between the quotes, or what follows the percent sign.
struct LocatedExpr : Expr {
    std::string_view address;
    bool quoted;
};

struct MemberExpr : Expr {
    Expr* base;
    Identifier member;
};

/// Bit 3 of a.3 and a.%X3; byte 1 of a.%B1, and so on for W, D, L.
struct PartialExpr : Expr {
    Expr* base;
    char width;  ///< 'X', 'B', 'W', 'D' or 'L'
    std::uint32_t index;
};

struct IndexExpr : Expr {
    Expr* base;
    std::span<Expr*> indices;
};

struct DerefExpr : Expr {
    Expr* base;
};

/// One argument: `name` is None for a positional one. `target := expression` for inputs and in-outs, `name =>
/// expression` for outputs; `NOT name => x` is negated. An empty `name =>` or `name :=` has no value.
struct Argument {
    Identifier name{};
    Expr* value = nullptr;
    bool isOutput = false;
    bool negated = false;
    SourceRange range{};
};

struct CallExpr : Expr {
    Expr* callee;
    std::span<Argument> arguments;
};

struct UnaryExpr : Expr {
    UnaryOp op;
    Expr* operand;
};

struct BinaryExpr : Expr {
    BinaryOp op;
    Expr* left;
    Expr* right;
    SourceRange opRange;
};

struct TypePrefixExpr : Expr {
    Identifier type;
    Expr* operand;
};

/// `repeat` is null for a single element; `value` is null for an element left out: 3().
struct ArrayInitElement {
    Expr* repeat = nullptr;
    Expr* value = nullptr;
};

struct ArrayInitExpr : Expr {
    std::span<ArrayInitElement> elements;
    bool bracketed;
};

struct StructInitElement {
    Identifier member;
    Expr* value = nullptr;
};

struct StructInitExpr : Expr {
    std::span<StructInitElement> elements;
};

// --- types (6.4.4) ---

enum class TypeSpecKind : std::uint8_t {
    Error,
    Named,     ///< INT, MyType, Namespace.MyType
    String,    ///< STRING[20], WSTRING(n); without length: the profile's default
    Subrange,  ///< INT(0..10)
    Array,
    Pointer,    ///< POINTER TO T, REF_TO T
    Reference,  ///< REFERENCE TO T: dereferenced by every use
    Struct,
    Enum,
    Edge,  ///< BOOL R_EDGE, BOOL F_EDGE
};

struct TypeSpec {
    TypeSpecKind kind;
    SourceRange range;
};

struct NamedTypeSpec : TypeSpec {
    std::span<Identifier> path;  ///< at least one
};

struct StringTypeSpec : TypeSpec {
    bool wide;
    Expr* length;  ///< null where none is stated
};

struct SubrangeTypeSpec : TypeSpec {
    TypeSpec* base;
    Expr* lower;
    Expr* upper;
};

struct ArrayDimension {
    Expr* lower = nullptr;  ///< both null for [*]
    Expr* upper = nullptr;
};

struct ArrayTypeSpec : TypeSpec {
    std::span<ArrayDimension> dimensions;
    TypeSpec* element;
};

struct PointerTypeSpec : TypeSpec {  // Pointer and Reference
    TypeSpec* target;
    bool isRefTo;  ///< written REF_TO
};

struct VarDecl;

struct StructTypeSpec : TypeSpec {
    Identifier base;  ///< of EXTENDS, named as in Pou::extends; None without
    std::span<VarDecl*> fields;
    bool isUnion;
    bool overlap;
};

struct EnumValue {
    Identifier name;
    Expr* value = nullptr;
};

struct EnumTypeSpec : TypeSpec {
    TypeSpec* base;  ///< null where none is stated
    std::span<EnumValue> values;
};

struct EdgeTypeSpec : TypeSpec {
    bool rising;
};

// --- declarations ---

/// One declared name list: a, b AT %QX0.1 : INT := 5; every name becomes one VarDecl that shares the rest.
struct VarDecl {
    Identifier name;
    LocatedExpr* location = nullptr;  ///< AT %...; null without
    Expr* alias = nullptr;            ///< AT another variable; the variable that VAR_ACCESS and VAR_CONFIG name
    TypeSpec* type = nullptr;
    Expr* initial = nullptr;                   ///< null without
    std::span<Argument> blockInit{};           ///< arguments behind the type of a function block: fb : TON(PT := T#1s)
    std::span<std::string_view> attributes{};  ///< texts of the pragmas in front of it, without braces
    bool readWrite = false;                    ///< READ_WRITE of VAR_ACCESS
};

enum class Access : std::uint8_t { Unstated, Public, Protected, Private, Internal };

enum class VarSection : std::uint8_t {
    Input,
    Output,
    InOut,
    Local,
    Temp,
    Static,
    Global,
    External,
    Access,
    Config,
    Instance
};

struct VarBlock {
    VarSection section = VarSection::Local;
    bool constant = false;
    bool retain = false;
    bool nonRetain = false;
    bool persistent = false;
    std::span<VarDecl*> variables{};
    SourceRange range{};
    Access access = Access::Unstated;
};

enum class PouKind : std::uint8_t { Program, Function, FunctionBlock, Method, Property, Action, Interface };

struct Sfc;

struct Pou {
    PouKind kind = PouKind::Program;
    Identifier name{};
    Access access = Access::Unstated;
    bool isAbstract = false;
    bool isFinal = false;
    bool isOverride = false;
    TypeSpec* result = nullptr;       ///< of functions, methods and properties; null without
    std::span<Identifier> extends{};  ///< several for interfaces; the name of a.b is "a.b"
    std::span<Identifier> implements{};
    std::span<VarBlock*> variables{};
    std::span<Stmt*> body{};
    Sfc* sfc = nullptr;         ///< instead of the body
    std::span<Pou*> members{};  ///< methods, properties, actions
    Pou* getter = nullptr;      ///< of a property
    Pou* setter = nullptr;
    std::span<std::string_view> attributes{};
    SourceRange range{};  ///< from the keyword to the end keyword
    std::span<std::span<Identifier>> usings{};
    bool isClass = false;  ///< a function block written CLASS
};

struct TypeDecl {
    Identifier name;
    TypeSpec* type = nullptr;
    Expr* initial = nullptr;
    std::span<std::string_view> attributes{};
};

struct TaskDecl {
    Identifier name;
    std::span<StructInitElement> properties;  ///< SINGLE, INTERVAL, PRIORITY
};

/// A function block of a program that runs in a task of its own: fb WITH task.
struct BlockTask {
    Identifier block;
    Identifier task;
};

struct ProgramInstance {
    Identifier name;
    Identifier task{};  ///< None without WITH
    Identifier type;    ///< named as in Pou::extends
    std::span<Argument> arguments{};
    bool retain = false;
    std::span<BlockTask> blockTasks{};
};

struct Resource {
    Identifier name;
    Identifier on{};
    std::span<VarBlock*> globals{};
    std::span<TaskDecl*> tasks{};
    std::span<ProgramInstance*> programs{};
};

struct Configuration {
    Identifier name;
    std::span<VarBlock*> variables{};  ///< VAR_GLOBAL, VAR_ACCESS, VAR_CONFIG
    std::span<Resource*> resources{};  ///< one without a name where tasks stand in the configuration itself
};

struct Namespace;

/// What one file declares, each kind in the order of the text.
struct SourceUnit {
    std::uint32_t file = 0;
    std::span<TypeDecl*> types{};
    std::span<VarBlock*> globals{};  ///< VAR_GLOBAL outside of everything
    std::span<Pou*> pous{};
    std::span<Configuration*> configurations{};
    std::span<Namespace*> namespaces{};
    std::span<std::span<Identifier>> usings{};
};

struct Namespace {
    std::span<Identifier> path;
    bool isInternal = false;
    SourceUnit content{};
};

// --- statements (7.3.3) ---

enum class StmtKind : std::uint8_t {
    Error,
    Empty,
    Assign,
    Call,
    If,
    Case,
    For,
    While,
    Repeat,
    Exit,
    Continue,
    Return,
    Block
};

struct Stmt {
    StmtKind kind;
    SourceRange range;
};

/// target := value; REF= has isReference; several targets a := b := c nest as an AssignStmt chain: `chained` is the
/// assignment whose target is this one's value, null for the last.
struct AssignStmt : Stmt {
    enum class Mode : std::uint8_t { Value, Reference, Set, Reset, Attempt };
    Expr* target;
    Expr* value;  ///< null when chained
    AssignStmt* chained;
    Mode mode;  ///< := , REF= , S= , R= , ?=
};

struct CallStmt : Stmt {
    Expr* call;  ///< CallExpr, or whatever expression stands alone, which the checker refuses
};

struct IfBranch {
    Expr* condition = nullptr;
    std::span<Stmt*> body{};
};

struct IfStmt : Stmt {
    std::span<IfBranch> branches;
    std::span<Stmt*> otherwise;
    bool hasElse;
};

struct CaseLabel {
    Expr* lower = nullptr;
    Expr* upper = nullptr;  ///< null for a single value
};

struct CaseBranch {
    std::span<CaseLabel> labels{};
    std::span<Stmt*> body{};
};

struct CaseStmt : Stmt {
    Expr* selector;
    std::span<CaseBranch> branches;
    std::span<Stmt*> otherwise;
    bool hasElse;
};

struct ForStmt : Stmt {
    Expr* counter;
    Expr* from;
    Expr* to;
    Expr* by;  ///< null without
    std::span<Stmt*> body;
};

struct WhileStmt : Stmt {
    Expr* condition;
    std::span<Stmt*> body;
};

struct RepeatStmt : Stmt {
    std::span<Stmt*> body;
    Expr* condition;
};

// --- sequential function charts in text (6.7) ---

struct SfcActionUse {
    Identifier action;
    Identifier qualifier{};  ///< None for N
    Expr* time = nullptr;
    std::span<Expr*> indicators{};
};

struct SfcStep {
    Identifier name;
    bool initial = false;
    std::span<SfcActionUse> actions{};
};

struct SfcTransition {
    Identifier name{};
    Expr* priority = nullptr;
    std::span<Identifier> from{};
    std::span<Identifier> to{};
    Expr* condition = nullptr;
    SourceRange range{};
};

struct SfcAction {
    Identifier name;
    std::span<Stmt*> body{};
};

struct Sfc {
    std::span<SfcStep*> steps{};
    std::span<SfcTransition*> transitions{};
    std::span<SfcAction*> actions{};
};

}  // namespace tn61131::st::ast
