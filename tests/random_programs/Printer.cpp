#include <array>
#include <string_view>

#include "random_programs/Program.h"

namespace random_programs {

namespace {

constexpr std::array<const char*, 14> kOperatorTexts = {" + ",   " - ", " * ",  " / ", " MOD ", " AND ", " OR ",
                                                        " XOR ", " = ", " <> ", " < ", " > ",   " <= ",  " >= "};
constexpr std::array<const char*, 4> kShiftNames = {"SHL", "SHR", "ROR", "ROL"};

class Printer {
 public:
    explicit Printer(const Program& program) : program_(program) {}

    std::vector<std::string> Print() {
        for (const Shape* structure : program_.structures) {
            text_ += "TYPE " + structure->name + " : STRUCT\n";
            for (const Shape::Member& member : structure->members)
                text_ += "    " + member.name + " : " + TypeText(*member.shape) + ";\n";
            text_ += "END_STRUCT END_TYPE\n";
            EndUnit();
        }
        if (!program_.globals.empty()) {
            text_ += "VAR_GLOBAL\n";
            for (const Variable& variable : program_.globals)
                Declare(variable);
            text_ += "END_VAR\n";
            EndUnit();
        }
        for (const Routine& routine : program_.routines) {
            PrintRoutine(routine);
            EndUnit();
        }
        return std::move(units_);
    }

 private:
    void EndUnit() {
        units_.push_back(std::move(text_));
        text_.clear();
    }

    static std::string TypeText(const Shape& shape) {
        switch (shape.kind) {
            case Shape::Kind::Scalar: return GetName(shape.type);
            case Shape::Kind::Structure: return shape.name;
            case Shape::Kind::Block: return shape.block->name;
            case Shape::Kind::Array: break;
        }
        std::string text = "ARRAY[";
        for (const Shape::Dimension& dimension : shape.dimensions) {
            if (text.back() != '[') text += ", ";
            text += std::to_string(dimension.lower) + ".." + std::to_string(dimension.lower + dimension.count - 1);
        }
        return text + "] OF " + TypeText(*shape.element);
    }

    void Initial(const Shape& shape, const Number*& value) {
        if (shape.kind == Shape::Kind::Scalar) {
            text_ += FormatLiteral(*value++, shape.type != NumberType::Bool);
        } else if (shape.kind == Shape::Kind::Array) {
            InitialRow(shape, 0, value);
        } else {
            text_ += '(';
            for (const Shape::Member& member : shape.members) {
                if (&member != shape.members.data()) text_ += ", ";
                text_ += member.name + " := ";
                Initial(*member.shape, value);
            }
            text_ += ')';
        }
    }

    /// Brackets within brackets are rows, so rows are written out where the elements are arrays themselves.
    void InitialRow(const Shape& shape, std::size_t dimension, const Number*& value) {
        const bool hasRows = shape.element->kind == Shape::Kind::Array;
        const std::size_t last = hasRows ? dimension + 1 : shape.dimensions.size();
        int count = 1;
        for (std::size_t i = dimension; i < last; ++i)
            count *= shape.dimensions[i].count;
        text_ += '[';
        for (int i = 0; i < count; ++i) {
            if (i > 0) text_ += ", ";
            if (last < shape.dimensions.size()) {
                InitialRow(shape, last, value);
            } else {
                Initial(*shape.element, value);
            }
        }
        text_ += ']';
    }

    void Declare(const Variable& variable) {
        text_ += "    " + variable.name + " : " + TypeText(*variable.shape);
        if (!variable.initial.empty()) {
            text_ += " := ";
            const Number* value = variable.initial.data();
            Initial(*variable.shape, value);
        }
        text_ += ";\n";
    }

    void PrintRoutine(const Routine& routine) {
        constexpr std::array<std::string_view, 3> kKinds = {"PROGRAM", "FUNCTION", "FUNCTION_BLOCK"};
        const std::string_view kind = kKinds[static_cast<std::size_t>(routine.kind)];
        routine_ = &routine;
        text_.append(kind).append(" ").append(routine.name);
        for (const Variable& variable : routine.variables) {
            if (variable.section == Section::Result) text_.append(" : ").append(TypeText(*variable.shape));
        }
        text_ += '\n';
        constexpr std::array<std::pair<Section, const char*>, 5> kSections = {{{Section::Input, "VAR_INPUT"},
                                                                               {Section::Output, "VAR_OUTPUT"},
                                                                               {Section::InOut, "VAR_IN_OUT"},
                                                                               {Section::Local, "VAR"},
                                                                               {Section::Temporary, "VAR_TEMP"}}};
        // In the order of the list, for the arguments of a call go by it.
        const char* open = nullptr;
        for (const Variable& variable : routine.variables) {
            for (const auto& [section, name] : kSections) {
                if (variable.section != section) continue;
                if (open != name) {
                    if (open != nullptr) text_ += "END_VAR\n";
                    text_.append(name).append("\n");
                    open = name;
                }
                Declare(variable);
            }
        }
        if (open != nullptr) text_ += "END_VAR\n";
        Body(routine.body, 0);
        text_.append("END_").append(kind).append("\n");
    }

    void PrintPlace(const Place& place) {
        const Variable& variable =
            place.isGlobal ? program_.globals[place.variable] : routine_->variables[place.variable];
        const Shape* shape = variable.shape;
        text_ += variable.name;
        for (const Place::Step& step : place.steps) {
            if (step.indices.empty()) {
                text_ += '.' + shape->members[step.member].name;
                shape = shape->members[step.member].shape;
                continue;
            }
            text_ += '[';
            for (const Expression* index : step.indices) {
                if (index != step.indices[0]) text_ += ", ";
                PrintExpression(*index);
            }
            text_ += ']';
            shape = shape->element;
        }
    }

    void Operands(const char* name, const Expression& expression) {
        text_.append(name).append("(");
        for (const Expression* operand : expression.operands) {
            if (operand != expression.operands[0]) text_ += ", ";
            PrintExpression(*operand);
        }
        text_ += ')';
    }

    void Infix(const char* op, const Expression& expression) {
        text_ += '(';
        PrintExpression(*expression.operands[0]);
        text_ += op;
        PrintExpression(*expression.operands[1]);
        text_ += ')';
    }

    void PrintExpression(const Expression& expression) {
        switch (expression.kind) {
            case ExpressionKind::Literal: text_ += FormatLiteral(expression.value, false); break;
            case ExpressionKind::PlainLiteral: {
                const std::string literal = FormatLiteral(expression.value, true);
                text_ += literal[0] == '-' ? "(" + literal + ")" : literal;
                break;
            }
            case ExpressionKind::Load: PrintPlace(expression.place); break;
            case ExpressionKind::Negate: Operands("-", expression); break;
            case ExpressionKind::Not: Operands("NOT ", expression); break;
            case ExpressionKind::Binary:
                Infix(kOperatorTexts[static_cast<std::size_t>(expression.op)], expression);
                break;
            case ExpressionKind::AndThen: Infix(" AND_THEN ", expression); break;
            case ExpressionKind::OrElse: Infix(" OR_ELSE ", expression); break;
            case ExpressionKind::Convert:
                text_.append(GetName(expression.operands[0]->type)).append("_");
                [[fallthrough]];
            case ExpressionKind::ConvertTo:
                text_ += "TO_";
                Operands(GetName(expression.type), expression);
                break;
            case ExpressionKind::Minimum: Operands("MIN", expression); break;
            case ExpressionKind::Maximum: Operands("MAX", expression); break;
            case ExpressionKind::Limit: Operands("LIMIT", expression); break;
            case ExpressionKind::Select: Operands("SEL", expression); break;
            case ExpressionKind::Multiplex: Operands("MUX", expression); break;
            case ExpressionKind::Absolute: Operands("ABS", expression); break;
            case ExpressionKind::Shift:
                Operands(kShiftNames[static_cast<std::size_t>(expression.shift)], expression);
                break;
            case ExpressionKind::Bit:
                PrintPlace(expression.place);
                text_ += '.' + std::to_string(expression.bit);
                break;
            case ExpressionKind::Call:
                text_ += expression.routine->name;
                Arguments(*expression.routine, expression.arguments);
                break;
        }
    }

    void Arguments(const Routine& routine, const std::vector<CallArgument>& arguments) {
        text_ += '(';
        for (const CallArgument& argument : arguments) {
            const Variable& parameter = routine.variables[argument.parameter];
            if (text_.back() != '(') text_ += ", ";
            text_ += parameter.name + (parameter.section == Section::Output ? " => " : " := ");
            if (argument.value != nullptr) {
                PrintExpression(*argument.value);
            } else {
                PrintPlace(argument.place);
            }
        }
        text_ += ')';
    }

    void Body(const std::vector<Statement*>& statements, std::size_t depth) {
        for (const Statement* statement : statements) {
            text_.append((depth + 1) * 2, ' ');
            PrintStatement(*statement, depth + 1);
            text_ += ";\n";
        }
    }

    void End(const char* keyword, std::size_t depth) { text_.append(depth * 2, ' ').append(keyword); }

    void PrintStatement(const Statement& statement, std::size_t depth) {
        switch (statement.kind) {
            case StatementKind::Assign:
            case StatementKind::AssignBit:
                PrintPlace(statement.target);
                if (statement.kind == StatementKind::AssignBit) text_ += '.' + std::to_string(statement.bit);
                text_ += " := ";
                PrintExpression(*statement.value);
                break;
            case StatementKind::Copy:
                PrintPlace(statement.target);
                text_ += " := ";
                PrintPlace(statement.source);
                break;
            case StatementKind::If:
                for (const Statement::Branch& branch : statement.branches) {
                    if (&branch != statement.branches.data()) text_.append(depth * 2, ' ');
                    if (branch.condition == nullptr) {
                        text_ += "ELSE\n";
                    } else {
                        text_ += &branch == statement.branches.data() ? "IF " : "ELSIF ";
                        PrintExpression(*branch.condition);
                        text_ += " THEN\n";
                    }
                    Body(branch.body, depth);
                }
                End("END_IF", depth);
                break;
            case StatementKind::Case: PrintCase(statement, depth); break;
            case StatementKind::For:
                text_ += "FOR ";
                PrintPlace(statement.target);
                text_ += " := ";
                PrintExpression(*statement.value);
                text_ += " TO ";
                PrintExpression(*statement.to);
                if (statement.by != nullptr) {
                    text_ += " BY ";
                    PrintExpression(*statement.by);
                }
                text_ += " DO\n";
                Body(statement.branches[0].body, depth);
                End("END_FOR", depth);
                break;
            case StatementKind::While:
                text_ += "WHILE ";
                PrintExpression(*statement.value);
                text_ += " DO\n";
                Body(statement.branches[0].body, depth);
                End("END_WHILE", depth);
                break;
            case StatementKind::Repeat:
                text_ += "REPEAT\n";
                Body(statement.branches[0].body, depth);
                End("UNTIL ", depth);
                PrintExpression(*statement.value);
                text_ += " END_REPEAT";
                break;
            case StatementKind::CallBlock:
                PrintPlace(statement.target);
                Arguments(*statement.target.shape->block, statement.arguments);
                break;
            case StatementKind::CallFunction: PrintExpression(*statement.value); break;
            case StatementKind::Exit: text_ += "EXIT"; break;
            case StatementKind::Continue: text_ += "CONTINUE"; break;
            case StatementKind::Return: text_ += "RETURN"; break;
        }
    }

    void PrintCase(const Statement& statement, std::size_t depth) {
        text_ += "CASE ";
        PrintExpression(*statement.value);
        text_ += " OF\n";
        for (const Statement::Branch& branch : statement.branches) {
            text_.append(depth * 2, ' ');
            if (branch.labels.empty()) text_ += "ELSE";
            for (const Statement::Label& label : branch.labels) {
                if (&label != branch.labels.data()) text_ += ", ";
                text_ += FormatLiteral(label.lower, true);
                if (label.lower.bits != label.upper.bits) text_ += ".." + FormatLiteral(label.upper, true);
            }
            text_ += branch.labels.empty() ? "\n" : ":\n";
            Body(branch.body, depth);
        }
        End("END_CASE", depth);
    }

    const Program& program_;
    const Routine* routine_ = nullptr;
    std::string text_;
    std::vector<std::string> units_;
};

void List(const std::string& path, const Shape& shape, std::vector<std::pair<std::string, NumberType>>& cells) {
    switch (shape.kind) {
        case Shape::Kind::Scalar: cells.emplace_back(path, shape.type); return;
        case Shape::Kind::Structure:
            for (const Shape::Member& member : shape.members)
                List(path + "." + member.name, *member.shape, cells);
            return;
        case Shape::Kind::Block:
            for (const Variable& variable : shape.block->variables) {
                if (variable.section != Section::Temporary && variable.section != Section::InOut)
                    List(path + "." + variable.name, *variable.shape, cells);
            }
            return;
        case Shape::Kind::Array: break;
    }
    const std::size_t count = shape.cells / shape.element->cells;
    for (std::size_t i = 0; i < count; ++i) {
        std::string indices;
        std::size_t rest = i;
        for (std::size_t d = shape.dimensions.size(); d-- > 0;) {
            const auto size = static_cast<std::size_t>(shape.dimensions[d].count);
            const std::string index = std::to_string(shape.dimensions[d].lower + static_cast<int>(rest % size));
            indices = indices.empty() ? index : index + "," + indices;
            rest /= size;
        }
        List(path + "[" + indices + "]", *shape.element, cells);
    }
}

}  // namespace

std::vector<std::string> Print(const Program& program) {
    return Printer(program).Print();
}

std::vector<std::pair<std::string, NumberType>> ListCells(const std::string& path, const Shape& shape) {
    std::vector<std::pair<std::string, NumberType>> cells;
    List(path, shape, cells);
    return cells;
}

}  // namespace random_programs
