#include <cmath>
#include <cstdint>

#include "platform/Random.h"
#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Evaluator.h"
#include "platform/jsonata/Functions.h"
#include "platform/jsonata/IntegerPicture.h"
#include "platform/jsonata/NumberPicture.h"
#include "platform/jsonata/NumberText.h"

namespace tn61131::jsonata::functions {

namespace {

// A function of a number to a number; undefined stays undefined.
template <typename Function>
Value MapNumber(NativeCall& call, const Function& function) {
    if (call[0].IsUndefined()) return {};
    return Value(function(call[0].GetNumber()));
}

// Folds the numbers of the argument; undefined where there is no argument.
template <typename Function>
Value Fold(NativeCall& call, double first, const Function& function) {
    if (call[0].IsUndefined()) return {};
    double result = first;
    for (std::size_t i = 0; i < call[0].GetSize(); ++i) {
        call.evaluator.Tick();
        result = function(result, call[0].GetElement(i).GetNumber());
    }
    return Value(result);
}

bool IsEmpty(NativeCall& call) {
    return call[0].IsUndefined() || call[0].GetSize() == 0;
}

}  // namespace

Value Number(NativeCall& call) {
    if (call[0].IsUndefined() || call[0].IsNumber()) return call[0];
    if (call[0].IsBoolean()) return Value(call[0].GetBoolean() ? 1.0 : 0.0);
    return Value(ValueOrThrow(ParseNumber(call[0].GetText())));
}

Value Abs(NativeCall& call) {
    return MapNumber(call, [](double number) { return std::fabs(number); });
}

Value Floor(NativeCall& call) {
    return MapNumber(call, [](double number) { return std::floor(number); });
}

Value Ceil(NativeCall& call) {
    return MapNumber(call, [](double number) { return std::ceil(number); });
}

Value Round(NativeCall& call) {
    const double precision = call[1].IsNumber() ? call[1].GetNumber() : 0;
    return MapNumber(call, [&](double number) { return RoundNumber(number, precision); });
}

Value Power(NativeCall& call) {
    if (call[1].IsUndefined()) return {};
    return MapNumber(call, [&](double base) {
        const double power = std::pow(base, call[1].GetNumber());
        if (!std::isfinite(power)) Throw("D3061", PrintNumber(base), PrintNumber(call[1].GetNumber()));
        return power;
    });
}

Value Sqrt(NativeCall& call) {
    return MapNumber(call, [](double number) {
        if (number < 0) Throw("D3060", PrintNumber(number));
        return std::sqrt(number);
    });
}

Value Random(NativeCall& /*call*/) {
    std::uint64_t bits = 0;
    TNRandomGenerator::GenerateRandom(&bits, sizeof(bits));
    return Value(static_cast<double>(bits >> 11U) * 0x1p-53);
}

Value FormatNumber(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    DecimalFormat format;
    for (std::size_t i = 0; call[2].IsObject() && i < call[2].GetMemberCount(); ++i) {
        const Value value = call[2].GetMemberValue(i);
        if (value.IsString()) (void)format.Set(call[2].GetMemberName(i), value.GetText());  // others have no meaning
    }
    const std::string_view picture = call[1].IsString() ? call[1].GetText() : std::string_view();
    return call.evaluator.MakeText(ValueOrThrow(jsonata::FormatNumber(call[0].GetNumber(), picture, format)));
}

Value FormatBase(NativeCall& call) {
    if (call[0].IsUndefined()) return {};
    const double radix = call[1].IsNumber() ? call[1].GetNumber() : 10;
    return call.evaluator.MakeText(ValueOrThrow(jsonata::FormatBase(call[0].GetNumber(), radix)));
}

Value FormatInteger(NativeCall& call) {
    if (call[0].IsUndefined() || call[1].IsUndefined()) return {};
    return call.evaluator.MakeText(ValueOrThrow(jsonata::FormatInteger(call[0].GetNumber(), call[1].GetText())));
}

Value ParseInteger(NativeCall& call) {
    if (call[0].IsUndefined() || call[1].IsUndefined()) return {};
    const std::optional<double> number = ValueOrThrow(jsonata::ParseInteger(call[0].GetText(), call[1].GetText()));
    return number ? Value(*number) : Value();
}

Value Sum(NativeCall& call) {
    return Fold(call, 0, [](double sum, double number) { return sum + number; });
}

Value Max(NativeCall& call) {
    if (IsEmpty(call)) return {};
    return Fold(call, -HUGE_VAL, [](double most, double number) { return number > most ? number : most; });
}

Value Min(NativeCall& call) {
    if (IsEmpty(call)) return {};
    return Fold(call, HUGE_VAL, [](double least, double number) { return number < least ? number : least; });
}

Value Average(NativeCall& call) {
    if (IsEmpty(call)) return {};
    const Value sum = Sum(call);
    return Value(sum.GetNumber() / static_cast<double>(call[0].GetSize()));
}

}  // namespace tn61131::jsonata::functions
