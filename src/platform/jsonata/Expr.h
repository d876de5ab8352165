#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/JSONValue.h"
#include "platform/jsonata/Nodes.h"

namespace tn61131::jsonata {

class Regex;
class Signature;
struct Expr;
struct FunctionInfo;
struct Syntax;
using ExprPtr = std::unique_ptr<Expr>;

/// What follows a step of a path, applied to its result in order: a predicate, or the variable that takes the position.
struct Stage {
    ExprPtr predicate;  ///< null for a position
    Symbol position;
};

/// The grouping braces behind an expression.
struct Grouping {
    std::size_t offset = 0;
    std::vector<std::pair<ExprPtr, ExprPtr>> pairs;
};

enum class Operation : std::uint8_t {
    Add,
    Subtract,
    Multiply,
    Divide,
    Modulo,
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    Concatenate,
    And,
    Or,
    In,
    Range,
    Default,   ///< ?:
    Coalesce,  ///< ??
    Apply      ///< ~>
};

/// The sign of an operation, as it is written.
[[nodiscard]] std::string_view SignOf(Operation operation) noexcept;

/// An expression ready to be evaluated: paths are lists of steps, and every `%` knows the step that provides it.
struct Expr {
    enum class Kind : std::uint8_t {
        Literal,   ///< `literal`
        Name,      ///< a step of a path: `literal` is the member's name
        Variable,  ///< `symbol`; the context for an empty one
        Wildcard,
        Descendant,
        Parent,     ///< `symbol`, bound by the step that provides it
        Negate,     ///< children[0]
        Array,      ///< children
        Object,     ///< `pairs`
        Block,      ///< children
        Path,       ///< children are the steps
        Sort,       ///< a step of a path: children are the terms, `descending` their direction
        Binary,     ///< children[0] `operation` children[1]
        Bind,       ///< `symbol` := children[0]
        Condition,  ///< children[0] ? children[1] : children[2]
        Call,       ///< children[0] is the function, the others are the arguments
        Partial,    ///< the same; an argument that is null stays open
        Lambda,     ///< `parameters`, `signature`, children[0] is the body
        Transform,  ///< children: pattern, update, optionally what to delete
        Regex       ///< `regex`
    };

    Kind kind = Kind::Literal;
    Operation operation = Operation::Add;
    bool keepArray = false;      ///< written with []: a single value stays an array
    bool keepsArrays = false;    ///< a path with such a step
    bool isConstructed = false;  ///< an array constructor that begins or ends a path, or a block that ends in one
    bool isTuple = false;        ///< a step that adds variables to its items, or something made of such steps
    bool isTailCall = false;     ///< a call whose result is the result of the function around it
    std::size_t offset = 0;
    JSONValue literal;
    Symbol symbol;
    std::vector<ExprPtr> children;
    std::vector<std::pair<ExprPtr, ExprPtr>> pairs;
    std::vector<bool> descending;
    std::vector<Stage> predicates;  ///< for anything but a step of a path
    std::vector<Stage> stages;      ///< for a step of a path
    std::unique_ptr<Grouping> group;
    std::unique_ptr<Symbol> focus;           ///< the variable after @
    std::unique_ptr<Symbol> index;           ///< the variable after #
    std::shared_ptr<const Symbol> ancestor;  ///< under which a step keeps what it was applied to, for a later %
    std::vector<Symbol> parameters;
    std::shared_ptr<const Signature> signature;
    std::shared_ptr<const Regex> regex;
    const FunctionInfo* builtIn = nullptr;  ///< of a variable that no one has bound
    bool isNameLike = false;                ///< a call's function that is a plain name, for a better message
};

/// Makes an expression ready to be evaluated. Throws EvaluationError.
[[nodiscard]] ExprPtr ResolveSyntax(const Syntax& syntax);

}  // namespace tn61131::jsonata
