#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "random_programs/Number.h"

namespace random_programs {

struct Expression;
struct Routine;

/// The type of a variable. Its values are kept as cells, one for each elementary part.
struct Shape {
    enum class Kind : std::uint8_t { Scalar, Array, Structure, Block };
    struct Member {
        std::string name;
        const Shape* shape = nullptr;
        std::size_t firstCell = 0;
    };
    struct Dimension {
        int lower = 0;
        int count = 0;
    };

    Kind kind = Kind::Scalar;
    NumberType type = NumberType::Bool;
    std::string name;  ///< of a structure
    const Shape* element = nullptr;
    std::vector<Dimension> dimensions;
    std::vector<Member> members;
    const Routine* block = nullptr;
    std::size_t cells = 1;
};

enum class Section : std::uint8_t { Global, Local, Temporary, Input, Output, InOut, Result };

struct Variable {
    std::string name;
    Section section = Section::Local;
    const Shape* shape = nullptr;
    std::vector<Number> initial;  ///< a value for each cell; empty for a block, whose routine has them
    std::size_t firstCell = 0;    ///< within an instance or the program's data
    bool isLocked = false;        ///< belongs to the loop that is being made
};

/// A variable and the way into it.
struct Place {
    struct Step {
        std::size_t member = 0;              ///< of a structure
        std::vector<Expression*> indices{};  ///< of an array
    };

    bool isGlobal = false;
    std::size_t variable = 0;
    std::vector<Step> steps;
    const Shape* shape = nullptr;  ///< of what is reached
};

enum class ExpressionKind : std::uint8_t {
    Literal,
    PlainLiteral,
    Load,
    Negate,
    Not,
    Binary,
    AndThen,
    OrElse,
    Convert,
    ConvertTo,
    Minimum,
    Maximum,
    Limit,
    Select,
    Multiplex,
    Shift,
    Bit,
    Absolute,
    Call
};

struct CallArgument {
    std::size_t parameter = 0;
    Expression* value = nullptr;  ///< of an input
    Place place;                  ///< of another section, and of an input that is no elementary value
};

struct Expression {
    ExpressionKind kind = ExpressionKind::Literal;
    NumberType type = NumberType::Bool;
    Operator op = Operator::Add;
    NumberType operandType = NumberType::Bool;  ///< both operands are brought to it
    Shift shift = Shift::Left;
    unsigned bit = 0;
    Number value;
    Place place;
    const Routine* routine = nullptr;
    std::vector<CallArgument> arguments;
    std::vector<Expression*> operands;
};

enum class StatementKind : std::uint8_t {
    Assign,
    AssignBit,
    Copy,
    If,
    Case,
    For,
    While,
    Repeat,
    CallBlock,
    CallFunction,
    Exit,
    Continue,
    Return
};

struct Statement {
    struct Label {
        Number lower;
        Number upper;
    };
    struct Branch {
        Expression* condition = nullptr;  ///< of IF; null for ELSE
        std::vector<Label> labels;        ///< of CASE; none for ELSE
        std::vector<Statement*> body;
    };

    StatementKind kind = StatementKind::Assign;
    Place target;
    Place source;
    unsigned bit = 0;
    Expression* value = nullptr;
    Expression* to = nullptr;
    Expression* by = nullptr;
    std::vector<Branch> branches;
    std::vector<CallArgument> arguments;
};

enum class RoutineKind : std::uint8_t { Program, Function, Block };

struct Routine {
    RoutineKind kind = RoutineKind::Function;
    std::string name;
    std::vector<Variable> variables;
    std::vector<Statement*> body;
    std::size_t instanceCells = 0;
    const Shape* blockShape = nullptr;
};

/// A project. Its parts live in the pools.
struct Program {
    std::deque<Shape> shapes;
    std::deque<Expression> expressions;
    std::deque<Statement> statements;
    std::deque<Routine> routines;  ///< the program is the last
    std::vector<const Shape*> structures;
    std::vector<Variable> globals;
    std::size_t globalCells = 0;
};

/// The project as structured text, each unit for itself.
[[nodiscard]] std::vector<std::string> Print(const Program& program);

/// The paths of a variable's cells, in their order.
[[nodiscard]] std::vector<std::pair<std::string, NumberType>> ListCells(const std::string& path, const Shape& shape);

/// Executes a project the way the language defines it.
class Interpreter {
 public:
    explicit Interpreter(const Program& program);
    /// Runs the program once. False when that takes too long; the values mean nothing then.
    [[nodiscard]] bool Scan();
    [[nodiscard]] const Number& GetGlobal(std::size_t cell) const { return cells_[cell]; }
    /// A cell of the program's own variables.
    [[nodiscard]] const Number& GetLocal(std::size_t cell) const { return cells_[program_.globalCells + cell]; }

 private:
    enum class Flow : std::uint8_t { Next, Exit, Continue, Return };
    using Addresses = std::vector<std::size_t>;  // first cell of each variable of a routine
    struct Frame {
        const Routine* routine;
        Addresses addresses;
    };

    void Initialise(const Variable& variable, std::size_t cell);
    void InitialiseShape(const Shape& shape, std::size_t cell);
    [[nodiscard]] Addresses EnterInstance(const Routine& routine, std::size_t instance);
    [[nodiscard]] std::size_t Locate(const Frame& frame, const Place& place);
    [[nodiscard]] Number Evaluate(const Frame& frame, const Expression& expression);
    [[nodiscard]] Number CallFunction(const Frame& frame, const Routine& routine,
                                      const std::vector<CallArgument>& arguments);
    void CallBlock(const Frame& frame, const Statement& statement);
    Flow Run(const Frame& frame, const std::vector<Statement*>& statements);
    Flow Execute(const Frame& frame, const Statement& statement);
    Flow RunFor(const Frame& frame, const Statement& statement);
    void Copy(std::size_t target, std::size_t source, std::size_t count);

    const Program& program_;
    std::vector<Number> cells_;
    std::uint64_t steps_ = 0;
};

}  // namespace random_programs
