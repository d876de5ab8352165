#include "platform/jsonata/DatePicture.h"
#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Evaluator.h"
#include "platform/jsonata/Functions.h"
#include "platform/jsonata/NumberText.h"

namespace tn61131::jsonata::functions {

namespace {

void CollectKeys(const Value& value, ObjectNode& keys, Evaluator& evaluator, unsigned int depth) {
    if (depth > kMaxValueDepth) Throw("U1001", "depth");
    evaluator.Tick();
    if (value.IsArray()) {
        for (std::size_t i = 0; i < value.GetSize(); ++i)
            CollectKeys(value.GetElement(i), keys, evaluator, depth + 1);
    } else if (value.IsObject()) {
        for (std::size_t i = 0; i < value.GetMemberCount(); ++i)
            keys.Set(value.GetMemberName(i), Value(true));
    }
}

void SpreadInto(const Value& value, ArrayNode& result, Evaluator& evaluator, unsigned int depth) {
    if (depth > kMaxValueDepth) Throw("U1001", "depth");
    evaluator.Tick();
    if (value.IsArray()) {
        for (std::size_t i = 0; i < value.GetSize(); ++i)
            SpreadInto(value.GetElement(i), result, evaluator, depth + 1);
    } else if (value.IsObject()) {
        for (std::size_t i = 0; i < value.GetMemberCount(); ++i) {
            Ref<ObjectNode> single = evaluator.GetHeap().Make<ObjectNode>();
            single->Set(value.GetMemberName(i), value.GetMemberValue(i));
            result.Push(Value(std::move(single)));
        }
    } else {
        result.Push(value);
    }
}

std::optional<std::string_view> OptionalText(const Value& value) {
    return value.IsString() ? std::optional(value.GetText()) : std::nullopt;
}

}  // namespace

Value Keys(NativeCall& call) {
    const Ref<ObjectNode> keys = call.evaluator.GetHeap().Make<ObjectNode>();
    CollectKeys(call[0], *keys, call.evaluator, 0);
    Ref<ArrayNode> result = call.evaluator.MakeSequence();
    for (const ObjectMember& key : keys->members)
        result->Push(call.evaluator.MakeText(key.name));
    return Value(std::move(result));
}

Value Lookup(NativeCall& call) {
    return call[1].IsString() ? call.evaluator.Lookup(call[0], call[1].GetText()) : Value();
}

Value Spread(NativeCall& call) {
    if (!call[0].IsArray() && !call[0].IsObject()) return call[0];
    Ref<ArrayNode> result = call.evaluator.MakeSequence();
    SpreadInto(call[0], *result, call.evaluator, 0);
    result->isSequence = !call[0].IsArray() || call[0].GetSize() == 0;  // an array spreads to an array
    return Value(std::move(result));
}

Value Merge(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    Ref<ObjectNode> result = call.evaluator.GetHeap().Make<ObjectNode>();
    for (std::size_t i = 0; i < call[0].GetSize(); ++i) {
        const Value object = call[0].GetElement(i);
        for (std::size_t k = 0; k < object.GetMemberCount(); ++k) {
            call.evaluator.Tick();
            result->Set(object.GetMemberName(k), object.GetMemberValue(k));
        }
    }
    return Value(std::move(result));
}

Value Sift(NativeCall& call) {
    if (!call[0].IsObject() || call[1].IsUndefined()) return {};
    Ref<ObjectNode> result = call.evaluator.GetHeap().Make<ObjectNode>();
    for (std::size_t i = 0; i < call[0].GetMemberCount(); ++i) {
        Value value = call[0].GetMemberValue(i);
        const Value name = call.evaluator.MakeText(std::string(call[0].GetMemberName(i)));
        const bool isWanted = AsBoolean(call.InvokeFor(call[1], value, name, call[0]), call.evaluator);
        if (isWanted) result->Set(call[0].GetMemberName(i), std::move(value));
    }
    return result->members.empty() ? Value() : Value(std::move(result));
}

Value Each(NativeCall& call) {
    Ref<ArrayNode> result = call.evaluator.MakeSequence();
    const std::size_t count = call[0].IsObject() ? call[0].GetMemberCount() : 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Value name = call.evaluator.MakeText(std::string(call[0].GetMemberName(i)));
        Value value = call.InvokeFor(call[1], call[0].GetMemberValue(i), name, call[0]);
        if (!value.IsUndefined()) result->Push(std::move(value));
    }
    return Value(std::move(result));
}

Value Error(NativeCall& call) {
    Throw("D3137", call[0].IsString() ? call[0].GetText() : "$error() function evaluated");
}

Value Assert(NativeCall& call) {
    if (!call[0].IsBoolean() || !call[0].GetBoolean()) {
        Throw("D3141", call[1].IsString() ? call[1].GetText() : "$assert() statement failed");
    }
    return {};
}

Value Type(NativeCall& call) {
    const Value& value = call[0];
    if (value.IsUndefined()) return {};
    const char* name = value.IsNull()      ? "null"
                       : value.IsNumber()  ? "number"
                       : value.IsString()  ? "string"
                       : value.IsBoolean() ? "boolean"
                       : value.IsArray()   ? "array"
                       : value.IsObject()  ? "object"
                                           : "function";
    return call.evaluator.MakeText(name);
}

Value CloneValue(NativeCall& call) {
    return call[0].IsUndefined() ? Value() : Clone(call[0], call.evaluator);
}

Value Now(NativeCall& call) {
    return call.evaluator.MakeText(
        ValueOrThrow(FormatDateTime(call.evaluator.GetNow(), OptionalText(call[0]), OptionalText(call[1]))));
}

Value Millis(NativeCall& call) {
    return Value(call.evaluator.GetNow());
}

Value FromMillis(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    return call.evaluator.MakeText(
        ValueOrThrow(FormatDateTime(call[0].GetNumber(), OptionalText(call[1]), OptionalText(call[2]))));
}

Value ToMillis(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    if (call[1].IsUndefined()) return Value(ValueOrThrow(ParseISODateTime(call[0].GetText())));
    const std::optional<double> millis =
        ValueOrThrow(ParseDateTime(call[0].GetText(), call[1].GetText(), call.evaluator.GetNow()));
    return millis ? Value(*millis) : Value();
}

}  // namespace tn61131::jsonata::functions
