#include <algorithm>

#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Evaluator.h"
#include "platform/jsonata/FunctionTable.h"
#include "platform/jsonata/Regex.h"
#include "platform/jsonata/Signature.h"
#include "platform/jsonata/TextFunctions.h"

namespace tn61131::jsonata {

namespace {

using Kind = Expr::Kind;

// What a call calls, for messages.
std::string_view NameOf(const Expr* call) noexcept {
    if (call == nullptr) return {};
    const bool isCall = call->kind == Kind::Call || call->kind == Kind::Partial;
    const Expr& function = isCall ? *call->children[0] : *call;
    if (function.kind == Kind::Variable) return function.symbol.text;
    if (function.kind == Kind::Path) return function.children.front()->literal.GetString();
    return {};
}

}  // namespace

Value Evaluator::EvaluateFunctionName(const Expr& expr, const Value& input, FrameNode* frame) {
    const Expr& name = *expr.children[0];
    Value function = Evaluate(name, input, frame);
    const bool isName = name.kind == Kind::Path && name.children.size() == 1 && name.children[0]->kind == Kind::Name;
    if (function.IsUndefined() && isName) {
        const std::string& text = name.children[0]->literal.GetString();
        const bool exists = frame->Find(Symbol(text)) != nullptr || FindFunction(text) != nullptr;
        if (exists) Throw(expr.kind == Kind::Call ? "T1005" : "T1007", text);
    }
    return function;
}

Value Evaluator::EvaluateCall(const Expr& expr, const Value& input, FrameNode* frame, const Value* first) {
    const Value function = EvaluateFunctionName(expr, input, frame);
    std::vector<Value> arguments;
    arguments.reserve(expr.children.size());
    if (first != nullptr) arguments.push_back(*first);
    for (std::size_t i = 1; i < expr.children.size(); ++i) {
        arguments.push_back(Evaluate(*expr.children[i], input, frame));
    }
    if (expr.isTailCall && first == nullptr) {
        pending_ = PendingCall{function, std::move(arguments), input, Ref<FrameNode>(frame), &expr};
        return {};
    }
    return Call(function, std::move(arguments), {&input, frame, &expr});
}

Value Evaluator::EvaluatePartial(const Expr& expr, const Value& input, FrameNode* frame) {
    Ref<FunctionNode> partial = heap_.Make<FunctionNode>(FunctionNode::Kind::Partial);
    for (std::size_t i = 1; i < expr.children.size(); ++i) {
        const Expr* argument = expr.children[i].get();
        partial->arguments.push_back(argument == nullptr ? Value() : Evaluate(*argument, input, frame));
        partial->holes.push_back(argument == nullptr);
    }
    partial->target = EvaluateFunctionName(expr, input, frame);
    if (!partial->target.IsFunction()) Throw("T1008", NameOf(&expr));
    return Value(std::move(partial));
}

Value Evaluator::EvaluateLambda(const Expr& expr, const Value& input, FrameNode* frame) {
    const FunctionNode::Kind kind = expr.kind == Kind::Lambda      ? FunctionNode::Kind::Lambda
                                    : expr.kind == Kind::Transform ? FunctionNode::Kind::Transform
                                                                   : FunctionNode::Kind::Matcher;
    Ref<FunctionNode> function = heap_.Make<FunctionNode>(kind);
    if (kind == FunctionNode::Kind::Matcher) {
        function->regex = expr.regex;
    } else {
        function->expression = &expr;
        function->frame = Ref<FrameNode>(frame);
        function->input = input;
    }
    return Value(std::move(function));
}

// Calls in tail position do not nest: the call around them takes them over.
Value Evaluator::Call(const Value& function, std::vector<Value> arguments, const CallSite& site) {
    const Level level(*this, site.call == nullptr ? 1 : 0);  // calls in expressions are counted as these
    Value target = function;
    CallSite here = site;
    PendingCall last;  // keeps alive what `here` refers to
    while (true) {
        Tick();
        if (!target.IsFunction()) Throw("T1006", NameOf(here.call));
        const FunctionNode& node = target.GetFunction();
        switch (node.kind) {
            case FunctionNode::Kind::Native: {
                SignatureOf(*node.info).Apply(arguments, *here.context, node.info->name, heap_);
                const bool callsBack = std::ranges::any_of(arguments, &Value::IsFunction);
                if (!callsBack && !node.info->readsVariables) {
                    // The variables of a function that this call ends go first: arrays that no one else refers to can
                    // then grow in place.
                    last.frame = Ref<FrameNode>();
                    here.frame = nullptr;
                }
                NativeCall call{*this, arguments, here};
                return node.info->body(call);
            }
            case FunctionNode::Kind::Lambda: {
                Value result = CallLambda(node, arguments, here);
                if (!pending_) return result;
                PendingCall next = std::move(*pending_);
                pending_.reset();
                target = next.function;
                arguments = std::move(next.arguments);
                last = std::move(next);
                here = CallSite{&last.context, last.frame.Get(), last.expr};
                break;
            }
            case FunctionNode::Kind::Transform: return CallTransform(node, arguments);
            case FunctionNode::Kind::Partial: {
                std::vector<Value> filled = node.arguments;
                std::size_t next = 0;
                for (std::size_t i = 0; i < filled.size(); ++i) {
                    if (node.holes[i] && next < arguments.size()) filled[i] = arguments[next++];
                }
                arguments = std::move(filled);
                Value called = node.target;
                target = std::move(called);
                break;
            }
            case FunctionNode::Kind::Composition: {
                Value inner = Call(node.target, std::move(arguments), here);
                arguments.clear();
                arguments.push_back(std::move(inner));
                Value called = node.second;
                target = std::move(called);
                break;
            }
            case FunctionNode::Kind::Matcher: return CallMatcher(node, arguments.empty() ? Value() : arguments[0]);
            case FunctionNode::Kind::NextMatch: return CallMatcher(node, node.input);
        }
    }
}

Value Evaluator::CallLambda(const FunctionNode& function, std::vector<Value>& arguments, const CallSite& site) {
    const Expr& lambda = *function.expression;
    if (lambda.signature != nullptr) lambda.signature->Apply(arguments, *site.context, NameOf(site.call), heap_);
    const Ref<FrameNode> frame = heap_.Make<FrameNode>(function.frame);
    for (std::size_t i = 0; i < lambda.parameters.size(); ++i) {
        frame->Bind(lambda.parameters[i], i < arguments.size() ? std::move(arguments[i]) : Value());
    }
    return Evaluate(*lambda.children[0], function.input, frame.Get());
}

// A copy of the argument in which every object that the pattern selects is changed.
Value Evaluator::CallTransform(const FunctionNode& function, std::vector<Value>& arguments) {
    const Expr& transform = *function.expression;
    const Value argument = arguments.empty() ? Value() : arguments[0];
    if (argument.IsUndefined()) return {};
    if (!argument.IsObject() && !argument.IsArray()) Throw("T0410", "1", "transform");
    Value copy = Clone(argument, *this);
    const Value matches = AsArray(Evaluate(*transform.children[0], copy, function.frame.Get()));
    const std::size_t count = matches.IsUndefined() ? 0 : matches.GetSize();
    for (std::size_t i = 0; i < count; ++i) {
        Tick();
        ChangeMatch(transform, matches.GetElement(i), function.frame.Get());
    }
    return copy;
}

void Evaluator::ChangeMatch(const Expr& transform, const Value& match, FrameNode* frame) {
    const Value update = Evaluate(*transform.children[1], match, frame);
    ObjectNode* object = match.AsObjectNode();
    if (!update.IsUndefined()) {
        if (!update.IsObject()) ThrowAt(transform.children[1]->offset, "T2011", TextOf(update, *this));
        for (std::size_t i = 0; object != nullptr && i < update.GetMemberCount(); ++i) {
            object->Set(update.GetMemberName(i), update.GetMemberValue(i));
        }
    }
    if (transform.children.size() < 3) return;
    const Value names = AsArray(Evaluate(*transform.children[2], match, frame));
    for (std::size_t i = 0; !names.IsUndefined() && i < names.GetSize(); ++i) {
        const Value name = names.GetElement(i);
        if (!name.IsString()) ThrowAt(transform.children[2]->offset, "T2012", TextOf(names, *this));
        if (object != nullptr) object->Remove(name.GetText());
    }
}

// A match as an object; its positions count UTF-16 units, `next` finds the match behind it.
Value Evaluator::CallMatcher(const FunctionNode& function, const Value& text) {
    if (!text.IsString()) return {};
    const std::optional<RegexMatch> match = function.regex->Find(text.GetText(), function.from);
    if (!match) return {};
    if (match->begin == match->end) Throw("D1004", function.regex->GetSource());
    const std::string_view matched = text.GetText().substr(match->begin, match->end - match->begin);
    const std::string_view skipped = text.GetText().substr(function.from, match->begin - function.from);
    const std::size_t start = function.fromUnit + CountUTF16Units(skipped);
    const std::size_t end = start + CountUTF16Units(matched);
    Ref<ArrayNode> groups = MakeArray();
    for (const std::optional<std::string_view>& group : match->groups) {
        groups->Push(group ? MakeText(std::string(*group)) : Value());
    }
    Ref<FunctionNode> next = heap_.Make<FunctionNode>(FunctionNode::Kind::NextMatch);
    next->regex = function.regex;
    next->input = text;
    next->from = match->end;
    next->fromUnit = end;
    Ref<ObjectNode> result = heap_.Make<ObjectNode>();
    result->Set("match", MakeText(std::string(matched)));
    result->Set("start", Value(static_cast<double>(start)));
    result->Set("end", Value(static_cast<double>(end)));
    result->Set("groups", Value(std::move(groups)));
    result->Set("next", Value(std::move(next)));
    return Value(std::move(result));
}

}  // namespace tn61131::jsonata
