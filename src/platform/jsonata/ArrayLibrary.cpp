#include <algorithm>
#include <compare>
#include <limits>
#include <numeric>
#include <unordered_map>

#include "platform/Random.h"
#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Evaluator.h"
#include "platform/jsonata/Functions.h"
#include "platform/jsonata/MergeSort.h"
#include "platform/jsonata/TextFunctions.h"

namespace tn61131::jsonata::functions {

namespace {

Value Ordered(NativeCall& call, const std::vector<std::size_t>& positions) {
    Ref<ArrayNode> array = call.evaluator.MakeArray();
    for (const std::size_t position : positions)
        array->Push(call[0].GetElement(position));
    return Value(std::move(array));
}

std::vector<std::size_t> PositionsOf(const Value& array) {
    std::vector<std::size_t> positions(array.GetSize());
    std::iota(positions.begin(), positions.end(), std::size_t{0});
    return positions;
}

// Without a function only numbers or only texts have an order.
bool Follows(const Value& left, const Value& right) {
    if (left.IsNumber()) return left.GetNumber() > right.GetNumber();
    return std::is_gt(CompareTexts(left.GetText(), right.GetText()));
}

void CheckSortable(const Value& array) {
    const bool areNumbers = array.GetElement(0).IsNumber();
    for (std::size_t i = 0; i < array.GetSize(); ++i) {
        const Value element = array.GetElement(i);
        if (areNumbers ? !element.IsNumber() : !element.IsString()) Throw("D3070");
    }
}

}  // namespace

Value Boolean(NativeCall& call) {
    return call[0].IsUndefined() ? Value() : Value(AsBoolean(call[0], call.evaluator));
}

Value Not(NativeCall& call) {
    return call[0].IsUndefined() ? Value() : Value(!AsBoolean(call[0], call.evaluator));
}

Value Exists(NativeCall& call) {
    return Value(!call[0].IsUndefined());
}

Value Count(NativeCall& call) {
    return Value(call[0].IsUndefined() ? 0.0 : static_cast<double>(call[0].GetSize()));
}

Value Append(NativeCall& call) {
    // An array that no one else refers to grows in place.
    ArrayNode* left = call[0].AsArrayNode();
    const bool isOwn = left != nullptr && left->references == 1 && !left->isSequence && !left->isConstructed;
    if (!isOwn || call[1].IsUndefined()) return call.evaluator.Append(call[0], call[1]);
    left->Append(call[1]);
    return std::move(call.arguments[0]);
}

Value Sort(NativeCall& call) {
    if (call[0].IsUndefined() || call[0].GetSize() <= 1) return call[0];
    std::vector<std::size_t> positions = PositionsOf(call[0]);
    if (call[1].IsUndefined()) CheckSortable(call[0]);
    MergeSort(positions, [&](std::size_t left, std::size_t right) {
        call.evaluator.Tick();
        const Value a = call[0].GetElement(left);
        const Value b = call[0].GetElement(right);
        return call[1].IsUndefined() ? Follows(a, b) : AsBoolean(call.Invoke(call[1], {a, b}), call.evaluator);
    });
    return Ordered(call, positions);
}

Value Reverse(NativeCall& call) {
    if (call[0].IsUndefined() || call[0].GetSize() <= 1) return call[0];
    std::vector<std::size_t> positions = PositionsOf(call[0]);
    std::ranges::reverse(positions);
    return Ordered(call, positions);
}

Value Shuffle(NativeCall& call) {
    if (call[0].IsUndefined() || call[0].GetSize() <= 1) return call[0];
    std::vector<std::size_t> positions = PositionsOf(call[0]);
    std::vector<std::uint64_t> random(positions.size());
    TNRandomGenerator::GenerateRandom(random.data(), random.size() * sizeof(std::uint64_t));
    for (std::size_t i = positions.size() - 1; i > 0; --i)
        std::swap(positions[i], positions[random[i] % (i + 1)]);
    return Ordered(call, positions);
}

Value Distinct(NativeCall& call) {
    if (!call[0].IsArray() || call[0].GetSize() <= 1) return call[0];
    const ArrayNode* origin = call[0].AsArrayNode();
    Ref<ArrayNode> result = call.evaluator.MakeArray();
    result->isSequence = origin != nullptr && origin->isSequence;
    std::unordered_multimap<std::size_t, std::size_t> known;  // positions in the result by hash
    for (std::size_t i = 0; i < call[0].GetSize(); ++i) {
        call.evaluator.Tick();
        Value element = call[0].GetElement(i);
        const std::size_t hash = HashOf(element, call.evaluator);
        const auto [first, last] = known.equal_range(hash);
        const bool isKnown = std::any_of(first, last, [&](const auto& entry) {
            return Equals(result->GetElement(entry.second), element, call.evaluator);
        });
        if (isKnown) continue;
        known.emplace(hash, result->GetSize());
        result->Push(std::move(element));
    }
    return Value(std::move(result));
}

Value Zip(NativeCall& call) {
    std::size_t length = std::numeric_limits<std::size_t>::max();
    for (const Value& array : call.arguments)
        length = std::min(length, array.IsArray() ? array.GetSize() : 0);
    Ref<ArrayNode> result = call.evaluator.MakeArray();
    for (std::size_t i = 0; !call.arguments.empty() && i < length; ++i) {
        call.evaluator.Tick();
        Ref<ArrayNode> tuple = call.evaluator.MakeArray();
        for (const Value& array : call.arguments)
            tuple->Push(array.GetElement(i));
        result->Push(Value(std::move(tuple)));
    }
    return Value(std::move(result));
}

Value Map(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    Ref<ArrayNode> result = call.evaluator.MakeSequence();
    for (std::size_t i = 0; i < call[0].GetSize(); ++i) {
        Value value = call.InvokeFor(call[1], call[0].GetElement(i), Value(static_cast<double>(i)), call[0]);
        if (!value.IsUndefined()) result->Push(std::move(value));
    }
    return Value(std::move(result));
}

Value Filter(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    Ref<ArrayNode> result = call.evaluator.MakeSequence();
    for (std::size_t i = 0; i < call[0].GetSize(); ++i) {
        Value element = call[0].GetElement(i);
        const Value isWanted = call.InvokeFor(call[1], element, Value(static_cast<double>(i)), call[0]);
        if (AsBoolean(isWanted, call.evaluator)) result->Push(std::move(element));
    }
    return Value(std::move(result));
}

Value Single(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    Value found;
    bool isFound = false;
    for (std::size_t i = 0; i < call[0].GetSize(); ++i) {
        call.evaluator.Tick();
        Value element = call[0].GetElement(i);
        const bool isWanted =
            call[1].IsUndefined() ||
            AsBoolean(call.InvokeFor(call[1], element, Value(static_cast<double>(i)), call[0]), call.evaluator);
        if (!isWanted) continue;
        if (isFound) Throw("D3138", std::to_string(i));
        found = std::move(element);
        isFound = true;
    }
    if (!isFound) Throw("D3139");
    return found;
}

Value Reduce(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    const std::size_t arity = ArityOf(call[1]);
    if (arity < 2) Throw("D3050");
    Value result = call[2];
    std::size_t i = 0;
    if (result.IsUndefined() && call[0].GetSize() > 0) result = call[0].GetElement(i++);
    if (call.arguments.size() > 2) call.arguments[2] = Value();
    for (; i < call[0].GetSize(); ++i) {
        std::vector<Value> arguments;
        arguments.push_back(std::move(result));
        arguments.push_back(call[0].GetElement(i));
        if (arity > 2) arguments.emplace_back(static_cast<double>(i));
        if (arity > 3) arguments.push_back(call[0]);
        result = call.Invoke(call[1], std::move(arguments));
    }
    return result;
}

}  // namespace tn61131::jsonata::functions
