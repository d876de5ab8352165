#include <algorithm>

#include "random_programs/Program.h"

namespace random_programs {

namespace {

constexpr std::uint64_t kMostSteps = 20'000;

}  // namespace

Interpreter::Interpreter(const Program& program) : program_(program) {
    const Routine& main = program.routines.back();
    cells_.resize(program.globalCells + main.instanceCells);
    for (const Variable& variable : program.globals)
        Initialise(variable, variable.firstCell);
    for (const Variable& variable : main.variables) {
        if (variable.section != Section::Temporary) Initialise(variable, program.globalCells + variable.firstCell);
    }
}

void Interpreter::Initialise(const Variable& variable, std::size_t cell) {
    if (variable.initial.empty()) return InitialiseShape(*variable.shape, cell);
    std::ranges::copy(variable.initial, cells_.begin() + static_cast<std::ptrdiff_t>(cell));
}

void Interpreter::InitialiseShape(const Shape& shape, std::size_t cell) {
    switch (shape.kind) {
        case Shape::Kind::Scalar: cells_[cell] = Number{shape.type, 0, 0}; return;
        case Shape::Kind::Array:
            for (std::size_t i = 0; i < shape.cells; i += shape.element->cells)
                InitialiseShape(*shape.element, cell + i);
            return;
        case Shape::Kind::Structure:
            for (const Shape::Member& member : shape.members)
                InitialiseShape(*member.shape, cell + member.firstCell);
            return;
        case Shape::Kind::Block:
            for (const Variable& variable : shape.block->variables) {
                if (variable.section != Section::Temporary && variable.section != Section::InOut)
                    Initialise(variable, cell + variable.firstCell);
            }
            return;
    }
}

Interpreter::Addresses Interpreter::EnterInstance(const Routine& routine, std::size_t instance) {
    Addresses addresses;
    for (const Variable& variable : routine.variables) {
        if (variable.section == Section::Temporary) {
            addresses.push_back(cells_.size());
            cells_.resize(cells_.size() + variable.shape->cells);
            Initialise(variable, addresses.back());
        } else {
            addresses.push_back(instance + variable.firstCell);
        }
    }
    return addresses;
}

bool Interpreter::Scan() {
    steps_ = 0;
    const Routine& main = program_.routines.back();
    const std::size_t size = cells_.size();
    Run({&main, EnterInstance(main, program_.globalCells)}, main.body);
    cells_.resize(size);
    return steps_ <= kMostSteps;
}

std::size_t Interpreter::Locate(const Frame& frame, const Place& place) {
    const Shape* shape = nullptr;
    std::size_t cell = 0;
    if (place.isGlobal) {
        shape = program_.globals[place.variable].shape;
        cell = program_.globals[place.variable].firstCell;
    } else {
        shape = frame.routine->variables[place.variable].shape;
        cell = frame.addresses[place.variable];
    }
    for (const Place::Step& step : place.steps) {
        if (step.indices.empty()) {
            cell += shape->members[step.member].firstCell;
            shape = shape->members[step.member].shape;
            continue;
        }
        std::size_t element = 0;
        for (std::size_t i = 0; i < step.indices.size(); ++i) {
            const Shape::Dimension& dimension = shape->dimensions[i];
            const std::int64_t index = Evaluate(frame, *step.indices[i]).Signed() - dimension.lower;
            element = element * static_cast<std::size_t>(dimension.count) + static_cast<std::size_t>(index);
        }
        shape = shape->element;
        cell += element * shape->cells;
    }
    return cell;
}

void Interpreter::Copy(std::size_t target, std::size_t source, std::size_t count) {
    const std::vector<Number> values(cells_.begin() + static_cast<std::ptrdiff_t>(source),
                                     cells_.begin() + static_cast<std::ptrdiff_t>(source + count));
    std::ranges::copy(values, cells_.begin() + static_cast<std::ptrdiff_t>(target));
}

Number Interpreter::Evaluate(const Frame& frame, const Expression& expression) {
    if (++steps_ > kMostSteps) return Number{expression.type, 0, 0};
    const auto operand = [&](std::size_t index) { return Evaluate(frame, *expression.operands[index]); };
    switch (expression.kind) {
        case ExpressionKind::Literal:
        case ExpressionKind::PlainLiteral: return expression.value;
        case ExpressionKind::Load: return cells_[Locate(frame, expression.place)];
        case ExpressionKind::Negate: return Negate(Convert(operand(0), expression.type));
        case ExpressionKind::Not: return Complement(operand(0));
        case ExpressionKind::Binary: {
            const Number left = Convert(operand(0), expression.operandType);
            const Number right = Convert(operand(1), expression.operandType);
            const bool divides = expression.op == Operator::Div;
            // Only a run that has been given up divides by zero.
            if (divides && right.IsZero()) return left;
            return Apply(expression.op, left, right);
        }
        case ExpressionKind::AndThen: {
            const Number left = operand(0);
            return left.IsZero() ? left : operand(1);
        }
        case ExpressionKind::OrElse: {
            const Number left = operand(0);
            return left.IsZero() ? operand(1) : left;
        }
        case ExpressionKind::Convert:
        case ExpressionKind::ConvertTo: return Convert(operand(0), expression.type);
        case ExpressionKind::Minimum: {
            const Number first = operand(0);
            const Number second = operand(1);
            return Apply(Operator::LT, second, first).IsZero() ? first : second;
        }
        case ExpressionKind::Maximum: {
            const Number first = operand(0);
            const Number second = operand(1);
            return Apply(Operator::GT, second, first).IsZero() ? first : second;
        }
        case ExpressionKind::Limit: {
            const Number least = operand(0);
            const Number value = operand(1);
            const Number most = operand(2);
            if (!Apply(Operator::GT, least, value).IsZero()) return least;
            return Apply(Operator::LT, most, value).IsZero() ? value : most;
        }
        case ExpressionKind::Select: {
            const Number selector = operand(0);
            const Number first = operand(1);
            const Number second = operand(2);
            return selector.IsZero() ? first : second;
        }
        case ExpressionKind::Multiplex: {
            const Number selector = operand(0);
            std::vector<Number> inputs;
            for (std::size_t i = 1; i < expression.operands.size(); ++i)
                inputs.push_back(operand(i));
            const auto last = static_cast<std::int64_t>(inputs.size() - 1);
            return inputs[static_cast<std::size_t>(std::clamp<std::int64_t>(selector.Signed(), 0, last))];
        }
        case ExpressionKind::Shift: {
            const Number value = operand(0);
            return ApplyShift(expression.shift, value, operand(1).Signed());
        }
        case ExpressionKind::Bit: {
            const std::uint64_t bits = cells_[Locate(frame, expression.place)].bits;
            return Number::Whole(NumberType::Bool, bits >> expression.bit & 1);
        }
        case ExpressionKind::Absolute: {
            const Number value = operand(0);
            const bool isNegative = IsReal(value.type)
                                        ? value.real < 0
                                        : GetFamily(value.type) == NumberFamily::Signed && value.Signed() < 0;
            return isNegative ? Negate(value) : value;
        }
        case ExpressionKind::Call: return CallFunction(frame, *expression.routine, expression.arguments);
    }
    return {};
}

Number Interpreter::CallFunction(const Frame& frame, const Routine& routine,
                                 const std::vector<CallArgument>& arguments) {
    const std::size_t size = cells_.size();
    Frame callee{&routine, {}};
    std::size_t result = 0;
    for (const Variable& variable : routine.variables) {
        callee.addresses.push_back(cells_.size());
        if (variable.section == Section::Result) result = cells_.size();
        if (variable.section == Section::InOut) continue;
        cells_.resize(cells_.size() + variable.shape->cells);
        Initialise(variable, callee.addresses.back());
    }
    for (const CallArgument& argument : arguments) {
        const Variable& parameter = routine.variables[argument.parameter];
        const std::size_t address = callee.addresses[argument.parameter];
        if (argument.value != nullptr) {
            const Number value = Evaluate(frame, *argument.value);
            cells_[address] = Convert(value, parameter.shape->type);
        } else if (parameter.section == Section::Input) {
            Copy(address, Locate(frame, argument.place), parameter.shape->cells);
        } else {
            callee.addresses[argument.parameter] = Locate(frame, argument.place);
        }
    }
    for (const CallArgument& argument : arguments) {
        const Variable& parameter = routine.variables[argument.parameter];
        if (parameter.section == Section::Output) Initialise(parameter, callee.addresses[argument.parameter]);
    }
    Run(callee, routine.body);
    const Number value = cells_[result];
    cells_.resize(size);
    return value;
}

void Interpreter::CallBlock(const Frame& frame, const Statement& statement) {
    const std::size_t size = cells_.size();
    const Routine& routine = *statement.target.shape->block;
    const std::size_t instance = Locate(frame, statement.target);
    Addresses inOuts(routine.variables.size());
    for (const CallArgument& argument : statement.arguments) {
        const Variable& parameter = routine.variables[argument.parameter];
        const std::size_t cell = instance + parameter.firstCell;
        if (parameter.section == Section::InOut) {
            inOuts[argument.parameter] = Locate(frame, argument.place);
        } else if (argument.value != nullptr) {
            const Number value = Evaluate(frame, *argument.value);
            cells_[cell] = Convert(value, parameter.shape->type);
        } else if (parameter.section == Section::Input) {
            Copy(cell, Locate(frame, argument.place), parameter.shape->cells);
        }
    }
    Frame callee{&routine, EnterInstance(routine, instance)};
    for (std::size_t i = 0; i < inOuts.size(); ++i) {
        if (routine.variables[i].section == Section::InOut) callee.addresses[i] = inOuts[i];
    }
    Run(callee, routine.body);
    for (const CallArgument& argument : statement.arguments) {
        const Variable& parameter = routine.variables[argument.parameter];
        if (parameter.section != Section::Output) continue;
        cells_[Locate(frame, argument.place)] = cells_[instance + parameter.firstCell];
    }
    cells_.resize(size);
}

Interpreter::Flow Interpreter::Run(const Frame& frame, const std::vector<Statement*>& statements) {
    for (const Statement* statement : statements) {
        if (++steps_ > kMostSteps) return Flow::Return;
        const Flow flow = Execute(frame, *statement);
        if (flow != Flow::Next) return flow;
    }
    return Flow::Next;
}

Interpreter::Flow Interpreter::RunFor(const Frame& frame, const Statement& statement) {
    const std::size_t counter = Locate(frame, statement.target);
    const NumberType type = cells_[counter].type;
    const Number from = Convert(Evaluate(frame, *statement.value), type);
    const Number to = Convert(Evaluate(frame, *statement.to), type);
    const Number by = statement.by == nullptr ? Number::Whole(type, 1) : Convert(Evaluate(frame, *statement.by), type);
    const bool isDownwards = GetFamily(type) == NumberFamily::Signed && by.Signed() < 0;
    const Number& low = isDownwards ? to : from;
    const Number& high = isDownwards ? from : to;
    cells_[counter] = from;
    // Only a run that has been given up has a step of zero.
    if (by.IsZero() || !Apply(Operator::GT, low, high).IsZero()) return Flow::Next;
    // Counting the rounds, there is no counter that could overflow.
    const std::uint64_t step = isDownwards ? 0 - by.bits : by.bits;
    std::uint64_t more = (high.bits - low.bits) / step;
    for (std::uint64_t value = from.bits;; value += by.bits) {
        cells_[counter] = Number::Whole(type, value);
        const Flow flow = Run(frame, statement.branches[0].body);
        if (flow == Flow::Return) return flow;
        if (flow == Flow::Exit) return Flow::Next;
        cells_[counter] = Number::Whole(type, value + by.bits);
        if (more-- == 0) break;
    }
    return Flow::Next;
}

Interpreter::Flow Interpreter::Execute(const Frame& frame, const Statement& statement) {
    switch (statement.kind) {
        case StatementKind::Assign: {
            const Number value = Evaluate(frame, *statement.value);
            cells_[Locate(frame, statement.target)] = Convert(value, statement.target.shape->type);
            return Flow::Next;
        }
        case StatementKind::AssignBit: {
            const std::uint64_t bit = Evaluate(frame, *statement.value).bits;
            Number& cell = cells_[Locate(frame, statement.target)];
            const std::uint64_t mask = std::uint64_t{1} << statement.bit;
            cell = Number::Whole(cell.type, bit != 0 ? cell.bits | mask : cell.bits & ~mask);
            return Flow::Next;
        }
        case StatementKind::Copy: {
            const std::size_t source = Locate(frame, statement.source);
            Copy(Locate(frame, statement.target), source, statement.target.shape->cells);
            return Flow::Next;
        }
        case StatementKind::If:
            for (const Statement::Branch& branch : statement.branches) {
                if (branch.condition == nullptr || !Evaluate(frame, *branch.condition).IsZero())
                    return Run(frame, branch.body);
            }
            return Flow::Next;
        case StatementKind::Case: {
            const Number selector = Evaluate(frame, *statement.value);
            for (const Statement::Branch& branch : statement.branches) {
                const bool matches = std::ranges::any_of(branch.labels, [&](const Statement::Label& label) {
                    return !Apply(Operator::GE, selector, label.lower).IsZero() &&
                           !Apply(Operator::LE, selector, label.upper).IsZero();
                });
                if (matches || branch.labels.empty()) return Run(frame, branch.body);
            }
            return Flow::Next;
        }
        case StatementKind::For: return RunFor(frame, statement);
        case StatementKind::While:
        case StatementKind::Repeat: {
            const bool isRepeat = statement.kind == StatementKind::Repeat;
            while (steps_ <= kMostSteps) {
                if (!isRepeat && Evaluate(frame, *statement.value).IsZero()) break;
                const Flow flow = Run(frame, statement.branches[0].body);
                if (flow == Flow::Return) return flow;
                if (flow == Flow::Exit) break;
                if (isRepeat && !Evaluate(frame, *statement.value).IsZero()) break;
            }
            return Flow::Next;
        }
        case StatementKind::CallBlock: CallBlock(frame, statement); return Flow::Next;
        case StatementKind::CallFunction: static_cast<void>(Evaluate(frame, *statement.value)); return Flow::Next;
        case StatementKind::Exit: return Flow::Exit;
        case StatementKind::Continue: return Flow::Continue;
        case StatementKind::Return: return Flow::Return;
    }
    return Flow::Next;
}

}  // namespace random_programs
