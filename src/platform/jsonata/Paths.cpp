#include <cmath>

#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Evaluator.h"

namespace tn61131::jsonata {

namespace {

using Kind = Expr::Kind;

bool IsSequence(const Value& value) noexcept {
    const ArrayNode* array = value.AsArrayNode();
    return array != nullptr && array->isSequence;
}

bool IsConstructed(const Value& value) noexcept {
    const ArrayNode* array = value.AsArrayNode();
    return array != nullptr && array->isConstructed;
}

bool IsTupleStream(const Value& value) noexcept {
    const ArrayNode* array = value.AsArrayNode();
    return array != nullptr && array->isTupleStream;
}

bool HasElements(const Value& value) noexcept {
    return value.IsArray() && value.GetSize() > 0;
}

}  // namespace

// A path is evaluated step by step. As long as there is one item, it is passed on as it is; sequences are only made
// where a step has several items, and the elements of an array are taken from where they are.
Value Evaluator::EvaluatePath(const Expr& path, const Value& input, FrameNode* frame) {
    const std::vector<ExprPtr>& steps = path.children;
    Value current = input;
    bool isSingle = !input.IsArray() || steps.front()->kind == Kind::Variable;
    std::size_t next = 0;
    if (steps.front()->isConstructed && !steps.front()->isTuple) {
        current = Evaluate(*steps.front(), isSingle ? AsArray(current) : current, frame);
        isSingle = false;
        ++next;
        if (!HasElements(current)) next = steps.size();
    }
    for (; next < steps.size() && !steps[next]->isTuple; ++next) {
        const Expr& step = *steps[next];
        const bool isLast = next + 1 == steps.size();
        if (!isSingle || step.kind == Kind::Sort) {
            current = StepOverItems(step, isSingle ? AsArray(current) : current, frame, isLast);
            isSingle = false;
        } else {
            Value value = StepValue(step, current, frame);
            isSingle = !value.IsArray() || (IsConstructed(value) && !isLast);
            if (isLast && IsSequence(value)) {
                Ref<ArrayNode> sequence = MakeSequence();
                sequence->Append(value);
                value = Value(std::move(sequence));
            }
            current = std::move(value);
        }
        if (current.IsUndefined() || (!isSingle && !HasElements(current))) {
            if (!isLast) current = Value();
            next = steps.size();
            break;
        }
    }
    Value tuples;
    if (next < steps.size()) {
        if (isSingle) {
            Ref<ArrayNode> items = MakeSequence();
            items->Push(std::move(current));
            current = Value(std::move(items));
        }
        tuples = EvaluateTupleSteps(path, MakeTuples(current), frame, next);
        if (path.isTuple) {
            current = tuples;
        } else {
            Ref<ArrayNode> items = MakeSequence();
            for (std::size_t i = 0; i < tuples.GetSize(); ++i)
                items->Push(tuples.GetElement(i).GetTuple().item);
            current = Value(std::move(items));
        }
    }
    if (path.keepsArrays && !current.IsUndefined()) {
        if (!current.IsArray() || (IsConstructed(current) && !IsSequence(current))) {
            Ref<ArrayNode> kept = MakeSequence();
            kept->Push(std::move(current));
            current = Value(std::move(kept));
        }
        if (ArrayNode* array = current.AsArrayNode()) array->keepSingleton = true;
    }
    if (path.group != nullptr) current = Group(path.group->pairs, tuples.IsUndefined() ? current : tuples, frame);
    return current;
}

// One step for one item, reduced as any expression, with its predicates.
Value Evaluator::StepValue(const Expr& step, const Value& item, FrameNode* frame) {
    Value value = step.kind == Kind::Name && step.group == nullptr
                      ? Reduce(step, Lookup(item, step.literal.GetString()))
                      : Evaluate(step, item, frame);
    return step.stages.empty() ? value : ApplyStages(step, std::move(value), frame);
}

Value Evaluator::StepOverItems(const Expr& step, const Value& items, FrameNode* frame, bool isLast) {
    if (step.kind == Kind::Sort) return ApplyStages(step, Sort(step, items, frame), frame);
    Ref<ArrayNode> result = MakeSequence();
    Value first;  // the only result so far
    bool isFirst = true;
    const std::size_t size = items.GetSize();
    for (std::size_t i = 0; i < size; ++i) {
        Tick();
        Value value = StepValue(step, items.GetElement(i), frame);
        if (value.IsUndefined()) continue;
        if (isFirst && isLast && value.IsArray() && !IsSequence(value)) first = value;
        if (!isFirst) first = Value();
        isFirst = false;
        if (IsConstructed(value)) {
            result->Push(std::move(value));
        } else {
            result->Append(value);
        }
    }
    // One array at the end of a path is the result itself.
    return first.IsUndefined() ? Value(std::move(result)) : first;
}

Value Evaluator::MakeTuples(const Value& items) {
    Ref<ArrayNode> tuples = MakeSequence();
    tuples->isTupleStream = true;
    const std::size_t size = items.IsUndefined() ? 0 : items.GetSize();
    for (std::size_t i = 0; i < size; ++i) {
        Value item = items.GetElement(i);
        if (!item.IsTuple()) {
            Ref<TupleNode> tuple = heap_.Make<TupleNode>();
            tuple->item = std::move(item);
            item = Value(std::move(tuple));
        }
        tuples->Push(std::move(item));
    }
    return Value(std::move(tuples));
}

Value Evaluator::EvaluateTupleSteps(const Expr& path, Value tuples, FrameNode* frame, std::size_t step) {
    for (; step < path.children.size(); ++step)
        tuples = TupleStep(*path.children[step], tuples, frame);
    return tuples;
}

Ref<FrameNode> Evaluator::FrameOfTuple(const Value& tuple, FrameNode* frame) {
    Ref<FrameNode> inner = heap_.Make<FrameNode>(Ref<FrameNode>(frame));
    inner->tuple = Ref<TupleNode>(&tuple.GetTuple());
    return inner;
}

Value Evaluator::TupleStep(const Expr& step, const Value& tuples, FrameNode* frame) {
    Ref<ArrayNode> result = MakeSequence();
    result->isTupleStream = true;
    const auto derive = [this](const TupleNode& from) {
        Ref<TupleNode> tuple = heap_.Make<TupleNode>();
        heap_.Charge(*tuple, from.bindings.size() * sizeof(Binding));
        tuple->item = from.item;
        tuple->bindings = from.bindings;
        return tuple;
    };
    if (step.kind == Kind::Sort) {
        const Value sorted = Sort(step, tuples, frame);
        for (std::size_t i = 0; i < sorted.GetSize(); ++i) {
            Ref<TupleNode> tuple = derive(sorted.GetElement(i).GetTuple());
            if (step.index != nullptr) tuple->Bind(*step.index, Value(static_cast<double>(i)));
            result->Push(Value(std::move(tuple)));
        }
        return ApplyStages(step, Value(std::move(result)), frame);
    }
    for (std::size_t i = 0; i < tuples.GetSize(); ++i) {
        Tick();
        const Value from = tuples.GetElement(i);
        const TupleNode& origin = from.GetTuple();
        const Ref<FrameNode> inner = FrameOfTuple(from, frame);
        const Value value = Evaluate(step, origin.item, inner.Get());
        if (value.IsUndefined()) continue;
        const std::size_t count = value.IsArray() ? value.GetSize() : 1;
        for (std::size_t k = 0; k < count; ++k) {
            Value element = value.IsArray() ? value.GetElement(k) : value;
            Ref<TupleNode> tuple = derive(origin);
            if (element.IsTuple()) {
                const TupleNode& found = element.GetTuple();
                for (const Binding& binding : found.bindings)
                    tuple->Bind(*binding.symbol, binding.value);
                tuple->item = found.item;
            } else if (step.focus != nullptr) {
                tuple->Bind(*step.focus, std::move(element));
            } else {
                tuple->item = std::move(element);
            }
            if (step.index != nullptr) tuple->Bind(*step.index, Value(static_cast<double>(k)));
            if (step.ancestor != nullptr) tuple->Bind(*step.ancestor, origin.item);
            result->Push(Value(std::move(tuple)));
        }
    }
    return ApplyStages(step, Value(std::move(result)), frame);
}

Value Evaluator::ApplyStages(const Expr& step, Value value, FrameNode* frame) {
    for (const Stage& stage : step.stages) {
        if (stage.predicate != nullptr) {
            value = Filter(*stage.predicate, value, frame);
            continue;
        }
        for (std::size_t i = 0; IsTupleStream(value) && i < value.GetSize(); ++i) {
            value.GetElement(i).GetTuple().Bind(stage.position, Value(static_cast<double>(i)));
        }
    }
    return value;
}

// How often a predicate's result selects the element at `index`: by a number, by each number of an array, or by being
// true.
std::size_t Evaluator::CountSelections(const Value& result, std::size_t index, std::size_t size) {
    const auto isIndex = [&](double number) {
        double wanted = std::floor(number);
        if (wanted < 0) wanted += static_cast<double>(size);
        return wanted == static_cast<double>(index);
    };
    if (result.IsNumber()) return isIndex(result.GetNumber()) ? 1 : 0;
    if (!result.IsArray()) return AsBoolean(result, *this) ? 1 : 0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < result.GetSize(); ++i) {
        Tick();
        const Value element = result.GetElement(i);
        if (!element.IsNumber()) return AsBoolean(result, *this) ? 1 : 0;
        if (isIndex(element.GetNumber())) ++count;
    }
    return count;
}

Value Evaluator::Filter(const Expr& predicate, const Value& value, FrameNode* frame) {
    const bool isList = value.IsArray();
    const std::size_t size = isList ? value.GetSize() : 1;
    const auto element = [&](std::size_t i) { return isList ? value.GetElement(i) : value; };
    Ref<ArrayNode> result = MakeSequence();
    result->isTupleStream = IsTupleStream(value);
    if (predicate.kind == Kind::Literal && predicate.literal.IsNumber() && predicate.predicates.empty()) {
        double index = std::floor(predicate.literal.GetNumber());
        if (index < 0) index += static_cast<double>(size);
        if (!(index >= 0 && index < static_cast<double>(size))) return Value(std::move(result));
        Value found = element(static_cast<std::size_t>(index));
        if (found.IsArray()) return found;
        if (!found.IsUndefined()) result->Push(std::move(found));
        return Value(std::move(result));
    }
    for (std::size_t i = 0; i < size; ++i) {
        Tick();
        const Value item = element(i);
        const bool isTuple = item.IsTuple();
        const Ref<FrameNode> inner = isTuple ? FrameOfTuple(item, frame) : Ref<FrameNode>(frame);
        const Value context = isTuple ? item.GetTuple().item : item;
        std::size_t selections = CountSelections(Evaluate(predicate, context, inner.Get()), i, size);
        for (; selections > 0; --selections)
            result->Push(item);
    }
    return Value(std::move(result));
}

Value Evaluator::MergeTuples(const Value& tuples) {
    if (!tuples.IsArray()) return tuples;
    Ref<TupleNode> merged = heap_.Make<TupleNode>();
    merged->item = tuples.GetElement(0).GetTuple().item;
    merged->bindings = tuples.GetElement(0).GetTuple().bindings;
    for (std::size_t i = 1; i < tuples.GetSize(); ++i) {
        Tick();
        const Value element = tuples.GetElement(i);
        const TupleNode& tuple = element.GetTuple();
        const auto join = [this](const Value& left, const Value& right, bool isOwn) {
            // From the third tuple on, the array is the merged tuple's own and can grow in place.
            ArrayNode* array = left.AsArrayNode();
            if (!isOwn || array == nullptr) return Append(left, right);
            array->Append(right);
            return left;
        };
        merged->item = join(merged->item, tuple.item, i > 1);
        for (const Binding& binding : tuple.bindings) {
            const Value* old = merged->Find(*binding.symbol);
            merged->Bind(*binding.symbol, old == nullptr ? binding.value : join(*old, binding.value, i > 1));
        }
    }
    return Value(std::move(merged));
}

Value Evaluator::Group(const std::vector<std::pair<ExprPtr, ExprPtr>>& pairs, const Value& input, FrameNode* frame) {
    struct Member {
        std::size_t pair = 0;
        Value items;
        bool isGrown = false;  // items is an array of this group's own
    };
    const bool isTuples = IsTupleStream(input);
    // Without an item, the names that need none are evaluated all the same.
    const std::size_t size = input.IsArray() ? std::max<std::size_t>(input.GetSize(), 1) : 1;
    Ref<ObjectNode> names = heap_.Make<ObjectNode>();
    std::vector<Member> members;
    for (std::size_t i = 0; i < size; ++i) {
        const Value item = !input.IsArray() ? input : i < input.GetSize() ? input.GetElement(i) : Value();
        const bool isTuple = item.IsTuple();
        const Ref<FrameNode> inner = isTuple ? FrameOfTuple(item, frame) : Ref<FrameNode>(frame);
        const Value context = isTuple ? item.GetTuple().item : item;
        for (std::size_t pair = 0; pair < pairs.size(); ++pair) {
            Tick();
            const Value name = Evaluate(*pairs[pair].first, context, inner.Get());
            if (name.IsUndefined()) continue;
            if (!name.IsString()) ThrowAt(pairs[pair].first->offset, "T1003", TextOf(name, *this));
            const std::size_t position = names->Find(name.GetText());
            if (position == members.size()) {
                names->Set(name.GetText(), Value());
                members.push_back({pair, item, false});
                continue;
            }
            Member& member = members[position];
            if (member.pair != pair) ThrowAt(pairs[pair].first->offset, "D1009", name.GetText());
            if (member.isGrown) {
                member.items.AsArrayNode()->Append(item);
            } else {
                const bool wasUndefined = member.items.IsUndefined() || item.IsUndefined();
                member.items = Append(member.items, item);
                member.isGrown = !wasUndefined;
            }
        }
    }
    Ref<ObjectNode> object = heap_.Make<ObjectNode>();
    for (std::size_t i = 0; i < members.size(); ++i) {
        Tick();
        Value context = members[i].items;
        Ref<FrameNode> inner(frame);
        if (isTuples && !context.IsUndefined()) {
            const Value merged = MergeTuples(context);
            inner = FrameOfTuple(merged, frame);
            context = merged.GetTuple().item;
        }
        Value value = Evaluate(*pairs[members[i].pair].second, context, inner.Get());
        if (!value.IsUndefined()) object->Set(names->members[i].name, std::move(value));
    }
    return Value(std::move(object));
}

}  // namespace tn61131::jsonata
