// FOR, WHILE, REPEAT.
#include <algorithm>

#include "compiler/NumberRange.h"
#include "compiler/RoutineGenerator.h"
#include "value/TypeTable.h"

namespace tn61131::st {

void RoutineGenerator::While(const WhileStmt& statement) {
    const Label body = code_.NewLabel();
    const Loop loop{.exit = code_.NewLabel(), .next = code_.NewLabel(), .depth = code_.GetDepth()};
    code_.Jump(loop.next);
    code_.BindLoop(body);
    loops_.push_back(loop);
    Statements(statement.body);
    loops_.pop_back();
    code_.Bind(loop.next);
    code_.SetPosition(statement.condition->range.begin);
    JumpIf(*statement.condition, true, body);
    code_.Bind(loop.exit);
}

void RoutineGenerator::Repeat(const RepeatStmt& statement) {
    const Label body = code_.NewLabel();
    const Loop loop{.exit = code_.NewLabel(), .next = code_.NewLabel(), .depth = code_.GetDepth()};
    code_.Bind(body);
    loops_.push_back(loop);
    Statements(statement.body);
    loops_.pop_back();
    code_.Bind(loop.next);
    if (code_.IsReachable()) {
        code_.SetPosition(statement.condition->range.begin);
        JumpIf(*statement.condition, false, body);
    }
    code_.Bind(loop.exit);
}

/// How the loop counts. The end and a step that is not constant lie in entries below the working one.
struct RoutineGenerator::ForPlan {
    const Place* counter = nullptr;
    ElementaryType type = ElementaryType::DInt;
    NumberRange range{};  ///< of the type
    std::optional<Int128> from;
    std::optional<Int128> to;
    std::optional<Int128> step;
    NumberRange end{};  ///< what the end can be
    std::uint32_t toSlot = 0;
    std::uint32_t stepSlot = 0;

    [[nodiscard]] bool IsDownwards() const noexcept { return step && *step < 0; }
    /// Whether the counter can be moved on from every value that the loop runs with.
    [[nodiscard]] bool CanAlwaysStep() const noexcept {
        if (*step == 0) return false;
        if (from && to) return range.Contains(*from + (*to - *from) / *step * *step + *step);
        return range.Contains(end.lower + std::min(*step, Int128{0})) &&
               range.Contains(end.upper + std::max(*step, Int128{0}));
    }
};

void RoutineGenerator::For(const ForStmt& statement) {
    ForPlan plan;
    plan.counter = statement.counter;
    plan.type = statement.counter->type->storage;
    plan.range = GetRangeOfStorage(plan.type).value_or(NumberRange{});
    plan.from = GetConstantNumber(*statement.from);
    plan.to = GetConstantNumber(*statement.to);
    plan.step = statement.by == nullptr ? Int128{1} : GetConstantNumber(*statement.by);
    plan.end = GetRange(*statement.to).value_or(plan.range);
    const std::uint32_t depth = code_.GetDepth();
    if (!plan.to) {
        Value(*statement.to);
        plan.toSlot = code_.GetTopIndex();
        code_.Push();
    }
    if (!plan.step) {
        Value(*statement.by);
        plan.stepSlot = code_.GetTopIndex();
        code_.Push();
    }
    Value(*statement.from);
    StorePlace(*plan.counter);
    ForBody(statement, plan);
    while (code_.GetDepth() > depth)
        code_.Pop();
}

// The step stands in front of the body where the test before it can end the loop for good:
//     test of the first value, to body or exit
//     more: counter := counter + step
//     body: ...
//     next: test whether there is a next value, to more
//     exit:
void RoutineGenerator::ForBody(const ForStmt& statement, const ForPlan& plan) {
    const Label body = code_.NewLabel();
    const Label more = code_.NewLabel();
    const Loop loop{.exit = code_.NewLabel(), .next = code_.NewLabel(), .depth = code_.GetDepth()};
    const bool stepsFirst = plan.step && plan.CanAlwaysStep();
    EnterFor(plan, body, loop.exit);
    if (!code_.IsReachable() && !code_.IsUsed(body)) {
        code_.Bind(loop.exit);
        return;
    }
    if (!stepsFirst) {
        code_.Jump(body);
        code_.BindLoop(more);
        AddToCounter(plan);
    }
    code_.Bind(body);
    loops_.push_back(loop);
    Statements(statement.body);
    loops_.pop_back();
    code_.Bind(loop.next);
    code_.SetPosition(statement.range.begin);
    if (stepsFirst) {
        AddToCounter(plan);
        CompareWithEnd(plan, plan.IsDownwards() ? BinaryOperator::GE : BinaryOperator::LE);
        code_.JumpNotZero(body);
    } else if (plan.step) {
        NextByConstantStep(plan, more, loop.exit);
    } else {
        NextByVariableStep(plan, more, loop.exit);
    }
    code_.Bind(loop.exit);
}

/// The counter's first value is in the working entry.
void RoutineGenerator::EnterFor(const ForPlan& plan, Label body, Label exit) {
    if (!plan.step) {
        if (!IsSignedStorage(plan.type)) {
            CompareWithEnd(plan, BinaryOperator::LE);
            code_.JumpZero(exit);
            return;
        }
        // Which end it is depends on the sign.
        const Label upwards = code_.NewLabel();
        LoadEntry(plan.stepSlot);
        CompareWithNumber(plan, BinaryOperator::GE, 0);
        code_.JumpNotZero(upwards);
        LoadPlace(*plan.counter);
        CompareWithEnd(plan, BinaryOperator::GE);
        code_.JumpNotZero(body);
        code_.Jump(exit);
        code_.Bind(upwards);
        LoadPlace(*plan.counter);
        CompareWithEnd(plan, BinaryOperator::LE);
        code_.JumpZero(exit);
        return;
    }
    if (plan.from && plan.to) {
        const bool isEmpty = plan.IsDownwards() ? *plan.from < *plan.to : *plan.from > *plan.to;
        if (isEmpty) code_.Jump(exit);
        return;
    }
    CompareWithEnd(plan, plan.IsDownwards() ? BinaryOperator::GE : BinaryOperator::LE);
    if (plan.CanAlwaysStep() || (*plan.step != 1 && *plan.step != -1 && !plan.to)) {
        code_.JumpZero(exit);
    } else {
        code_.JumpNotZero(body);
        code_.Jump(exit);
        return;
    }
    if (!plan.CanAlwaysStep()) MoveEnd(plan);
}

/// Makes the end the last value from which there is a next one, plus or minus 1: the next value is then inside exactly
/// when the counter has not reached it. Where the type has no such value, its first or last takes the place.
void RoutineGenerator::MoveEnd(const ForPlan& plan) {
    const Int128 magnitude = (plan.IsDownwards() ? -*plan.step : *plan.step) - 1;
    const UsedBuiltIns::Function& nearest = plan.IsDownwards() ? builtIns_.min : builtIns_.max;
    code_.Push();
    LoadEntry(plan.toSlot);
    code_.Push();
    code_.LoadInteger(plan.type, static_cast<std::int64_t>(plan.IsDownwards() ? plan.range.upper - magnitude
                                                                              : plan.range.lower + magnitude));
    code_.CallBuiltIn(false, nearest.group, nearest.id, 3);
    code_.Push();
    code_.LoadInteger(plan.type, static_cast<std::int64_t>(magnitude));
    code_.Binary(plan.IsDownwards() ? BinaryOperator::Add : BinaryOperator::Sub);
    code_.StoreStack(plan.toSlot);
}

void RoutineGenerator::CompareWithNumber(const ForPlan& plan, BinaryOperator op, Int128 number) {
    code_.Push();
    code_.LoadInteger(plan.type, static_cast<std::int64_t>(number));
    code_.Binary(op);
}

void RoutineGenerator::CompareWithEnd(const ForPlan& plan, BinaryOperator op) {
    if (plan.to) return CompareWithNumber(plan, op, *plan.to);
    code_.Push();
    LoadEntry(plan.toSlot);
    code_.Binary(op);
}

void RoutineGenerator::AddToCounter(const ForPlan& plan) {
    LoadPlace(*plan.counter);
    code_.Push();
    if (plan.step) {
        code_.LoadInteger(plan.type, static_cast<std::int64_t>(*plan.step));
    } else {
        LoadEntry(plan.stepSlot);
    }
    code_.Binary(BinaryOperator::Add);
    StorePlace(*plan.counter);
}

/// The last value may be too near to the end of the type for another step: the counter is moved on only where it can.
void RoutineGenerator::NextByConstantStep(const ForPlan& plan, Label more, Label exit) {
    const bool isDown = plan.IsDownwards();
    if (plan.to) {
        const Int128 last = *plan.to - *plan.step;
        if (plan.range.Contains(last)) {
            LoadPlace(*plan.counter);
            CompareWithNumber(plan, isDown ? BinaryOperator::GE : BinaryOperator::LE, last);
            code_.JumpNotZero(more);
        }
    } else {
        LoadPlace(*plan.counter);
        CompareWithEnd(plan, isDown ? BinaryOperator::GT : BinaryOperator::LT);
        code_.JumpNotZero(more);
    }
    LoadPlace(*plan.counter);
    CompareWithNumber(plan, isDown ? BinaryOperator::LT : BinaryOperator::GT,
                      isDown ? plan.range.lower - *plan.step : plan.range.upper - *plan.step);
    code_.JumpNotZero(exit);
    AddToCounter(plan);
}

/// There is a next value when the way to the end, which as an unsigned number always fits, is no shorter than the step.
void RoutineGenerator::NextByVariableStep(const ForPlan& plan, Label more, Label exit) {
    const ElementaryType distance = GetUnsignedStorage(plan.type);
    const bool isSigned = IsSignedStorage(plan.type);
    const Label upwards = code_.NewLabel();
    const Label lastUp = code_.NewLabel();
    const Label lastDown = code_.NewLabel();
    const auto compareDistance = [&](bool isDown) {
        LoadPlace(*plan.counter);
        CompareWithEnd(plan, isDown ? BinaryOperator::LE : BinaryOperator::GE);
        code_.JumpNotZero(isDown ? lastDown : lastUp);
        if (isDown) {
            LoadPlace(*plan.counter);
            code_.Push();
            LoadEnd(plan);
        } else {
            LoadEnd(plan);
            code_.Push();
            LoadPlace(*plan.counter);
        }
        code_.Binary(BinaryOperator::Sub);
        if (distance != plan.type) code_.Convert(distance);
        code_.Push();
        LoadEntry(plan.stepSlot);
        if (isDown) code_.Unary(UnaryOperator::Negate);
        if (distance != plan.type) code_.Convert(distance);
        code_.Binary(BinaryOperator::GE);
        code_.JumpNotZero(more);
    };
    const auto finish = [&](bool isDown) {
        // The sum wraps exactly when it lies on the other side of the counter.
        LoadPlace(*plan.counter);
        code_.Push();
        LoadEntry(plan.stepSlot);
        code_.Binary(BinaryOperator::Add);
        code_.Push();
        LoadPlace(*plan.counter);
        code_.Binary(isDown ? BinaryOperator::GT : BinaryOperator::LT);
        code_.JumpNotZero(exit);
        AddToCounter(plan);
        code_.Jump(exit);
    };
    if (isSigned) {
        LoadEntry(plan.stepSlot);
        CompareWithNumber(plan, BinaryOperator::GE, 0);
        code_.JumpNotZero(upwards);
        compareDistance(true);
        code_.Bind(lastDown);
        finish(true);
        code_.Bind(upwards);
    }
    compareDistance(false);
    code_.Bind(lastUp);
    finish(false);
}

void RoutineGenerator::LoadEnd(const ForPlan& plan) {
    if (plan.to) {
        code_.LoadInteger(plan.type, static_cast<std::int64_t>(*plan.to));
    } else {
        LoadEntry(plan.toSlot);
    }
}

}  // namespace tn61131::st
