#include "functions/NumericFunctions.h"

#include <cmath>

#include "functions/FunctionTable.h"
#include "platform/Round.h"
#include "value/Value.h"

namespace {

CallStatus Abs(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/, CValue* arguments,
               CValue& result) {
    result = arguments[0];
    return StatusOf(!result.IsNegative() || result.Negate(log, context));
}

CallStatus Sign(CErrorLog& /*log*/, CBuiltInFunctionContext& /*context*/, unsigned char /*argumentCount*/,
                CValue* arguments, CValue& result) {
    const CValue& value = arguments[0];
    const int positive = value.IsZero() ? 0 : 1;
    result.SetInteger(value.IsNegative() ? -1 : positive, ElementaryType::SInt);
    return CallStatus::Continue;
}

bool IsReal(const CValue& value) noexcept {
    return value.GetType() == ElementaryType::Real;
}

/// A function of one real number: in single precision for REAL, in double precision for everything else.
template <float (*kSingle)(float), double (*kDouble)(double)>
CallStatus OfReal(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/, CValue* arguments,
                  CValue& result) {
    if (IsReal(arguments[0])) {
        result.SetFloat(kSingle(arguments[0].GetPayload<float>()));
        return CallStatus::Continue;
    }
    if (!arguments[0].ChangeTypeToLREAL(log, context)) return CallStatus::Failed;
    result.SetDouble(kDouble(arguments[0].GetPayload<double>()));
    return CallStatus::Continue;
}

CallStatus Atan2(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/, CValue* arguments,
                 CValue& result) {
    CValue& y = arguments[0];
    CValue& x = arguments[1];
    if (IsReal(y) && IsReal(x)) {
        result.SetFloat(::atan2f(y.GetPayload<float>(), x.GetPayload<float>()));
        return CallStatus::Continue;
    }
    if (!y.ChangeTypeToLREAL(log, context) || !x.ChangeTypeToLREAL(log, context)) return CallStatus::Failed;
    result.SetDouble(::atan2(y.GetPayload<double>(), x.GetPayload<double>()));
    return CallStatus::Continue;
}

enum class Digits : bool { Significant = false, DecimalPlaces = true };

template <Digits kDigits>
CallStatus Round(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/, CValue* arguments,
                 CValue& result) {
    constexpr bool kDecimalPlaces = kDigits == Digits::DecimalPlaces;
    if (!arguments[1].ChangeTypeToDINT(log, context)) return CallStatus::Failed;
    const int digits = arguments[1].GetPayload<int>();
    if (IsReal(arguments[0])) {
        result.SetFloat(TNRoundFloat::RoundFloat(arguments[0].GetPayload<float>(), digits, kDecimalPlaces));
        return CallStatus::Continue;
    }
    if (!arguments[0].ChangeTypeToLREAL(log, context)) return CallStatus::Failed;
    result.SetDouble(TNRoundFloat::RoundDouble(arguments[0].GetPayload<double>(), digits, kDecimalPlaces));
    return CallStatus::Continue;
}

constexpr auto kRefused = SurplusArguments::Refused;

constexpr FunctionRow kRows[] = {
    {1, "ABS", 1, 1, kRefused, "IN", "the magnitude, of the same type", Abs},
    {2, "SQRT", 1, 1, kRefused, "IN", "REAL or LREAL: square root", OfReal<::sqrtf, ::sqrt>},
    {3, "LN", 1, 1, kRefused, "IN", "REAL or LREAL: natural logarithm", OfReal<::logf, ::log>},
    {4, "LOG", 1, 1, kRefused, "IN", "REAL or LREAL: logarithm to base 10", OfReal<::log10f, ::log10>},
    {5, "EXP", 1, 1, kRefused, "IN", "REAL or LREAL: e to the power IN", OfReal<::expf, ::exp>},
    {6, "SIN", 1, 1, kRefused, "IN", "REAL or LREAL: sine of radians", OfReal<::sinf, ::sin>},
    {7, "COS", 1, 1, kRefused, "IN", "REAL or LREAL: cosine of radians", OfReal<::cosf, ::cos>},
    {8, "TAN", 1, 1, kRefused, "IN", "REAL or LREAL: tangent of radians", OfReal<::tanf, ::tan>},
    {9, "ASIN", 1, 1, kRefused, "IN", "REAL or LREAL: arc sine in radians", OfReal<::asinf, ::asin>},
    {10, "ACOS", 1, 1, kRefused, "IN", "REAL or LREAL: arc cosine in radians", OfReal<::acosf, ::acos>},
    {11, "ATAN", 1, 1, kRefused, "IN", "REAL or LREAL: arc tangent in radians", OfReal<::atanf, ::atan>},
    {12, "CEILING", 1, 1, kRefused, "IN", "REAL or LREAL: next whole number up", OfReal<::ceilf, ::ceil>},
    {13, "FLOOR", 1, 1, kRefused, "IN", "REAL or LREAL: next whole number down", OfReal<::floorf, ::floor>},
    {14, "SIGN", 1, 1, kRefused, "IN", "SINT: -1, 0 or 1", Sign},
    {15, "ATAN2", 2, 2, kRefused, "Y, X", "REAL or LREAL: angle of the point (X, Y) in radians", Atan2},
    {16, "ROUND", 2, 2, kRefused, "IN, N", "REAL or LREAL: IN to N decimal places", Round<Digits::DecimalPlaces>},
    {17, "ROUNDSD", 2, 2, kRefused, "IN, N", "REAL or LREAL: IN to N significant digits", Round<Digits::Significant>},
};
static_assert(HasConsecutiveIds(kRows));

/// An id that the group does not have is found out after the argument has become a number.
CallStatus RefuseUnknownFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                                 CValue* arguments) {
    if (argumentCount != 1) {
        CVMFunc::LogInvalidFunctionArgumentCount(log, context, 1);
        return CallStatus::Failed;
    }
    if (!IsReal(arguments[0]) && !arguments[0].ChangeTypeToLREAL(log, context)) return CallStatus::Failed;
    CVMFunc::LogInvalidFunctionCode(log, context, CVMFuncNumeric::kGroupWord, context.GetFunctionId());
    return CallStatus::Invalid;
}

}  // namespace

std::span<const FunctionRow> CVMFuncNumeric::GetTable() noexcept {
    return kRows;
}

CallStatus CVMFuncNumeric::ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context,
                                           unsigned char argumentCount, CValue* arguments, CValue& result) {
    const FunctionRow* row = FindFunction(kRows, context.GetFunctionId());
    if (row == nullptr) return RefuseUnknownFunction(log, context, argumentCount, arguments);
    return CallFunction(*row, log, context, argumentCount, arguments, result);
}

const char* CVMFuncNumeric::GetFunctionName(unsigned char id) const {
    return FindFunctionName(kRows, id);
}
