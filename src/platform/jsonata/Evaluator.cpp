#include "platform/jsonata/Evaluator.h"

#include <algorithm>
#include <cmath>

#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/FunctionTable.h"
#include "platform/jsonata/Parser.h"

namespace tn61131::jsonata {

namespace {

using Kind = Expr::Kind;

constexpr std::uint32_t kMaxDepth = 10000;
/// Bytes of the machine's stack that one evaluation may take.
constexpr std::uintptr_t kMaxStack = std::uintptr_t{2} << 20;
/// What the tree of an expression takes at most.
constexpr std::size_t kTreeBytesPerCharacter = sizeof(Expr);

}  // namespace

Evaluator::Level::Level(Evaluator& evaluator, std::uint32_t levels) : evaluator_(evaluator), levels_(levels) {
    // The stack grows downwards.
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    const bool isTooDeep = evaluator.stackBase_ > here && evaluator.stackBase_ - here > kMaxStack;
    if (isTooDeep || evaluator.depth_ + levels > evaluator.options_.limits.maxDepth) Throw("U1001", "depth");
    evaluator.depth_ += levels;
}

Evaluator::Evaluator(const JSONataOptions& options)
    : heap_(options.limits.maxMemory, options.limits.maxOutput), options_(options) {
    options_.limits.maxDepth = std::min(options_.limits.maxDepth, kMaxDepth);
    if (options.limits.maxTimeMs > 0) {
        deadline_ = std::chrono::steady_clock::now() + std::chrono::milliseconds(options.limits.maxTimeMs);
    }
}

Evaluator::~Evaluator() = default;

void Evaluator::CheckTime() {
    if (deadline_ && std::chrono::steady_clock::now() > *deadline_) Throw("U1001", "time");
}

double Evaluator::GetNow() {
    if (!now_) {
        using std::chrono::milliseconds;
        using std::chrono::system_clock;
        const std::int64_t system =
            std::chrono::duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
        now_ = static_cast<double>(options_.nowMs.value_or(system));
    }
    return *now_;
}

Value Evaluator::Run(const Expr& expr, const JSONValue* input) {
    stackBase_ = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    const Ref<FrameNode> frame = heap_.Make<FrameNode>(Ref<FrameNode>());
    if (options_.bindings != nullptr) {
        for (const JSONMember& member : options_.bindings->GetMembers()) {
            frame->Bind(bindingSymbols_.emplace_back(member.name), Value::OfDocument(member.value));
        }
    }
    Value context = input == nullptr ? Value() : Value::OfDocument(*input);
    frame->Bind(bindingSymbols_.emplace_back("$"), context);
    if (context.IsArray()) {
        // An array is one input, not the sequence of its elements.
        Ref<ArrayNode> wrapper = MakeSequence();
        wrapper->Push(std::move(context));
        wrapper->isInputWrapper = true;
        context = Value(std::move(wrapper));
    }
    return Evaluate(expr, context, frame.Get());
}

const Expr& Evaluator::ParseText(std::string_view text) {
    ExprPtr& known = parsedTexts_[std::string(text)];
    if (known == nullptr) {
        if (!parsedTextCost_) parsedTextCost_ = heap_.Make<StringNode>(std::string());
        heap_.Charge(*parsedTextCost_, text.size() * kTreeBytesPerCharacter);
        known = ResolveSyntax(*Parser(text).ParseWhole());
    }
    return *known;
}

Ref<ArrayNode> Evaluator::MakeSequence() {
    Ref<ArrayNode> sequence = heap_.Make<ArrayNode>();
    sequence->isSequence = true;
    return sequence;
}

Value Evaluator::Evaluate(const Expr& expr, const Value& input, FrameNode* frame) {
    try {
        const Level level(*this, 1);
        Tick();
        Value value = EvaluateKind(expr, input, frame);
        for (const Stage& predicate : expr.predicates)
            value = Filter(*predicate.predicate, value, frame);
        if (expr.group != nullptr && expr.kind != Kind::Path) value = Group(expr.group->pairs, value, frame);
        return Reduce(expr, std::move(value));
    } catch (EvaluationError& error) {
        if (error.offset == kNoOffset) error.offset = expr.offset;
        throw;
    }
}

// A sequence of one value is that value, an empty one no value.
Value Evaluator::Reduce(const Expr& expr, Value value) {
    ArrayNode* array = value.AsArrayNode();
    if (array == nullptr || !array->isSequence || array->isTupleStream) return value;
    if (expr.keepArray) array->keepSingleton = true;
    if (array->GetSize() == 0) return {};
    if (array->GetSize() == 1 && !array->keepSingleton) return array->GetElement(0);
    return value;
}

Value Evaluator::EvaluateKind(const Expr& expr, const Value& input, FrameNode* frame) {
    switch (expr.kind) {
        case Kind::Literal:
            return expr.literal.IsString() ? Value::OfLiteral(expr.literal) : Value::OfDocument(expr.literal);
        case Kind::Name: return Lookup(input, expr.literal.GetString());
        case Kind::Variable: return EvaluateVariable(expr, input, frame);
        case Kind::Wildcard: return EvaluateWildcard(input);
        case Kind::Descendant: return EvaluateDescendants(input);
        case Kind::Parent: {
            const Value* parent = frame->Find(expr.symbol);
            return parent == nullptr ? Value() : *parent;
        }
        case Kind::Negate: return EvaluateNegation(expr, input, frame);
        case Kind::Array: return EvaluateArray(expr, input, frame);
        case Kind::Object: return Group(expr.pairs, input, frame);
        case Kind::Block: return EvaluateBlock(expr, input, frame);
        case Kind::Path: return EvaluatePath(expr, input, frame);
        case Kind::Sort: return Sort(expr, input, frame);
        case Kind::Binary: return EvaluateBinary(expr, input, frame);
        case Kind::Bind: return EvaluateBind(expr, input, frame);
        case Kind::Condition: return EvaluateCondition(expr, input, frame);
        case Kind::Call: return EvaluateCall(expr, input, frame, nullptr);
        case Kind::Partial: return EvaluatePartial(expr, input, frame);
        case Kind::Lambda:
        case Kind::Transform:
        case Kind::Regex: return EvaluateLambda(expr, input, frame);
    }
    return {};
}

Value Evaluator::EvaluateVariable(const Expr& expr, const Value& input, FrameNode* frame) {
    if (expr.symbol.text.empty()) {
        const ArrayNode* array = input.AsArrayNode();
        return array != nullptr && array->isInputWrapper ? array->GetElement(0) : input;
    }
    if (const Value* value = frame->Find(expr.symbol)) return *value;
    if (expr.builtIn == nullptr) return {};
    Ref<FunctionNode> function = heap_.Make<FunctionNode>(FunctionNode::Kind::Native);
    function->info = expr.builtIn;
    return Value(std::move(function));
}

Value Evaluator::Lookup(const Value& value, std::string_view name) {
    if (value.IsObject()) return value.FindMember(name, heap_);
    if (!value.IsArray()) return {};
    const Level level(*this, 1);
    Ref<ArrayNode> found = MakeSequence();
    const std::size_t size = value.GetSize();
    for (std::size_t i = 0; i < size; ++i) {
        Tick();
        found->Append(Lookup(value.GetElement(i), name));
    }
    return Value(std::move(found));
}

void Evaluator::AppendFlattened(const Value& value, ArrayNode& target, unsigned int depth) {
    if (depth > kMaxValueDepth) Throw("U1001", "depth");
    Tick();
    if (!value.IsArray()) return target.Push(value);
    for (std::size_t i = 0; i < value.GetSize(); ++i)
        AppendFlattened(value.GetElement(i), target, depth + 1);
}

Value Evaluator::EvaluateWildcard(const Value& input) {
    const ArrayNode* array = input.AsArrayNode();
    if (array != nullptr && array->isInputWrapper) return EvaluateWildcard(array->GetElement(0));
    Ref<ArrayNode> found = MakeSequence();
    const auto add = [&](const Value& value) {
        // Arrays are taken apart, but what comes of them stays an array.
        if (value.IsArray()) found->isSequence = false;
        AppendFlattened(value, *found, 0);
    };
    if (input.IsArray()) {
        for (std::size_t i = 0; i < input.GetSize(); ++i)
            add(input.GetElement(i));
    } else if (input.IsObject()) {
        for (std::size_t i = 0; i < input.GetMemberCount(); ++i)
            add(input.GetMemberValue(i));
    }
    return Value(std::move(found));
}

Value Evaluator::EvaluateDescendants(const Value& input) {
    Ref<ArrayNode> found = MakeSequence();
    if (!input.IsUndefined()) CollectDescendants(input, *found, 0);
    return Value(std::move(found));
}

void Evaluator::CollectDescendants(const Value& value, ArrayNode& found, unsigned int depth) {
    if (depth > kMaxValueDepth) Throw("U1001", "depth");
    Tick();
    if (value.IsArray()) {
        for (std::size_t i = 0; i < value.GetSize(); ++i)
            CollectDescendants(value.GetElement(i), found, depth + 1);
        return;
    }
    found.Push(value);
    if (!value.IsObject()) return;
    for (std::size_t i = 0; i < value.GetMemberCount(); ++i) {
        CollectDescendants(value.GetMemberValue(i), found, depth + 1);
    }
}

Value Evaluator::EvaluateNegation(const Expr& expr, const Value& input, FrameNode* frame) {
    const Value operand = Evaluate(*expr.children[0], input, frame);
    if (operand.IsUndefined()) return {};
    if (!operand.IsNumber()) Throw("D1002", TextOf(operand, *this));
    return Value(-operand.GetNumber());
}

Value Evaluator::EvaluateArray(const Expr& expr, const Value& input, FrameNode* frame) {
    Ref<ArrayNode> array = MakeArray();
    for (const ExprPtr& item : expr.children) {
        Value value = Evaluate(*item, input, frame);
        if (value.IsUndefined()) continue;
        const ArrayNode* node = value.AsArrayNode();
        if (item->kind == Kind::Array) {
            array->Push(std::move(value));
        } else if (expr.children.size() == 1 && node != nullptr && node->isRange) {
            array->isRange = true;
            array->rangeFirst = node->rangeFirst;
            array->rangeSize = node->rangeSize;
        } else {
            array->Append(value);
        }
    }
    array->isConstructed = expr.isConstructed;
    return Value(std::move(array));
}

Value Evaluator::EvaluateBlock(const Expr& expr, const Value& input, FrameNode* frame) {
    const Ref<FrameNode> inner = heap_.Make<FrameNode>(Ref<FrameNode>(frame));
    Value value;
    for (const ExprPtr& part : expr.children)
        value = Evaluate(*part, input, inner.Get());
    return value;
}

Value Evaluator::EvaluateBind(const Expr& expr, const Value& input, FrameNode* frame) {
    Value value = Evaluate(*expr.children[0], input, frame);
    frame->Bind(expr.symbol, value);
    return value;
}

Value Evaluator::EvaluateCondition(const Expr& expr, const Value& input, FrameNode* frame) {
    if (AsBoolean(Evaluate(*expr.children[0], input, frame), *this)) return Evaluate(*expr.children[1], input, frame);
    return expr.children.size() > 2 ? Evaluate(*expr.children[2], input, frame) : Value();
}

Value Evaluator::AsArray(const Value& value) {
    if (value.IsUndefined() || value.IsArray()) return value;
    Ref<ArrayNode> array = MakeSequence();
    array->Push(value);
    return Value(std::move(array));
}

Value Evaluator::Append(const Value& left, const Value& right) {
    if (left.IsUndefined()) return right;
    if (right.IsUndefined()) return left;
    Ref<ArrayNode> array = MakeArray();
    array->Append(left);
    array->Append(right);
    return Value(std::move(array));
}

}  // namespace tn61131::jsonata
