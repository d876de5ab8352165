#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Evaluator.h"
#include "platform/jsonata/Functions.h"
#include "platform/jsonata/TextFunctions.h"
#include "platform/jsonata/UrlText.h"

namespace tn61131::jsonata::functions {

namespace {

// A function of a text to a text; undefined stays undefined.
template <typename Function>
Value MapText(NativeCall& call, const Function& function) {
    if (call[0].IsUndefined()) return {};
    return call.evaluator.MakeText(function(call[0].GetText()));
}

template <typename Function>
Value MapTextOrThrow(NativeCall& call, const Function& function) {
    return MapText(call, [&](std::string_view text) { return ValueOrThrow(function(text)); });
}

}  // namespace

Value String(NativeCall& call) {
    if (call[0].IsUndefined() || call[0].IsString()) return call[0];
    const bool isIndented = call[1].IsBoolean() && call[1].GetBoolean();
    return call.evaluator.MakeText(TextOf(call[0], call.evaluator, isIndented));
}

Value Length(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    return Value(static_cast<double>(CountCodePoints(call[0].GetText())));
}

Value Substring(NativeCall& call) {
    const std::optional<double> length = call[2].IsNumber() ? std::optional(call[2].GetNumber()) : std::nullopt;
    const double start = call[1].IsNumber() ? call[1].GetNumber() : 0;
    return MapText(call, [&](std::string_view text) { return std::string(jsonata::Substring(text, start, length)); });
}

Value SubstringBefore(NativeCall& call) {
    if (call[1].IsUndefined()) return call[0];
    return MapText(call,
                   [&](std::string_view text) { return std::string(text.substr(0, text.find(call[1].GetText()))); });
}

Value SubstringAfter(NativeCall& call) {
    if (call[1].IsUndefined()) return call[0];
    return MapText(call, [&](std::string_view text) {
        const std::size_t at = text.find(call[1].GetText());
        return std::string(at == std::string_view::npos ? text : text.substr(at + call[1].GetText().size()));
    });
}

Value Uppercase(NativeCall& call) {
    return MapText(call, ToUpperCase);
}

Value Lowercase(NativeCall& call) {
    return MapText(call, ToLowerCase);
}

Value Trim(NativeCall& call) {
    return MapText(call, jsonata::Trim);
}

Value Pad(NativeCall& call) {
    const std::string_view fill = call[2].IsString() ? call[2].GetText() : std::string_view();
    const double width = call[1].IsNumber() ? call[1].GetNumber() : 0;
    call.evaluator.GetHeap().CheckText(width < 0 ? -width : width);
    return MapTextOrThrow(call, [&](std::string_view text) { return jsonata::Pad(text, width, fill); });
}

Value Join(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    const std::string_view separator = call[1].IsString() ? call[1].GetText() : std::string_view();
    std::string text;
    for (std::size_t i = 0; i < call[0].GetSize(); ++i) {
        call.evaluator.Tick();
        if (i > 0) text += separator;
        text += call[0].GetElement(i).GetText();
        call.evaluator.GetHeap().CheckText(static_cast<double>(text.size()));
    }
    return call.evaluator.MakeText(std::move(text));
}

Value Base64Encode(NativeCall& call) {
    return MapTextOrThrow(call, EncodeBase64);
}

Value Base64Decode(NativeCall& call) {
    return MapText(call, DecodeBase64);
}

Value EncodeUrlComponent(NativeCall& call) {
    return MapTextOrThrow(call, jsonata::EncodeUrlComponent);
}

Value EncodeUrl(NativeCall& call) {
    return MapTextOrThrow(call, jsonata::EncodeUrl);
}

Value DecodeUrlComponent(NativeCall& call) {
    return MapTextOrThrow(call, jsonata::DecodeUrlComponent);
}

Value DecodeUrl(NativeCall& call) {
    return MapTextOrThrow(call, jsonata::DecodeUrl);
}

// The text is an expression; its errors are wrapped, those of the limits are not.
Value Eval(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    Value input = call[1].IsUndefined() ? *call.site.context : call[1];
    const ArrayNode* array = input.AsArrayNode();
    if (input.IsArray() && (array == nullptr || !array->isSequence)) {
        Ref<ArrayNode> wrapper = call.evaluator.MakeSequence();
        wrapper->Push(std::move(input));
        wrapper->isInputWrapper = true;
        input = Value(std::move(wrapper));
    }
    const Expr* expr = nullptr;
    const auto wrap = [](const EvaluationError& error, std::string_view code) {
        if (error.code.starts_with('U')) throw error;
        Throw(code, error.code + ": " + error.text);
    };
    try {
        expr = &call.evaluator.ParseText(call[0].GetText());
    } catch (const EvaluationError& error) {
        wrap(error, "D3120");
    }
    try {
        return call.evaluator.Evaluate(*expr, input, call.site.frame);
    } catch (const EvaluationError& error) {
        wrap(error, "D3121");
    }
    return {};
}

}  // namespace tn61131::jsonata::functions
