// Negation and the arithmetic operators. Each begins with the case that programs spend their time on: two operands of
// one type.
#include <cmath>
#include <concepts>
#include <type_traits>

#include "value/NumberPayload.h"
#include "value/OperatorRules.h"
#include "value/PayloadTypes.h"

using tn61131::ApplyUndefinedRule;
using tn61131::Fail;
using tn61131::MixedResult;
using tn61131::PayloadTag;
using tn61131::RefuseOperator;
using tn61131::SaturateTo;
using tn61131::StorePayload;
using tn61131::WithArithmetic;
using tn61131::WithScalar;

namespace {

constexpr std::uint32_t Integers() {
    std::uint32_t bits = 0;
    for (const TypeInfo& info : kTypeTable) {
        if (info.type >= ElementaryType::SInt && info.type <= ElementaryType::LWord) bits |= TypeBit(info.type);
    }
    return bits;
}
constexpr std::uint32_t kModuloTypes = Integers();
constexpr std::uint32_t kDivisionTypes =
    Integers() | TypeBit(ElementaryType::Time) | TypeBit(ElementaryType::Real) | TypeBit(ElementaryType::LReal);

// Sums, differences and products wrap: they are computed unsigned, and at least in the width of unsigned int, because
// narrower operands would be promoted to int, which a product of 16-bit numbers overflows.
template <typename T>
using Wrapping = std::common_type_t<T, unsigned int>;

struct Plus {
    static constexpr const char* kName = "+";
    template <typename T>
    static T Apply(T left, T right) noexcept {
        if constexpr (std::floating_point<T>)
            return left + right;
        else
            return static_cast<T>(Wrapping<T>{left} + Wrapping<T>{right});
    }
};

struct Minus {
    static constexpr const char* kName = "-";
    template <typename T>
    static T Apply(T left, T right) noexcept {
        if constexpr (std::floating_point<T>)
            return left - right;
        else
            return static_cast<T>(Wrapping<T>{left} - Wrapping<T>{right});
    }
};

struct Times {
    static constexpr const char* kName = "*";
    template <typename T>
    static T Apply(T left, T right) noexcept {
        if constexpr (std::floating_point<T>)
            return left * right;
        else
            return static_cast<T>(Wrapping<T>{left} * Wrapping<T>{right});
    }
};

/// Two operands of one type. False, nothing changed, for a type without this arithmetic. Inlined into the operators,
/// whose other cases are functions of their own: so the usual case saves no registers and calls nothing.
template <typename Operation>
[[gnu::always_inline]] inline bool Apply(CValue& left, const CValue& right) noexcept {
    return WithArithmetic(left.GetType(), [&]<typename T>(PayloadTag<T>) {
        StorePayload(left, Operation::Apply(left.GetPayload<T>(), right.GetPayload<T>()));
    });
}

template <typename Operation>
bool PromoteAndApply(CErrorLog& log, const ErrorLocation& location, CValue& left, CValue& right) {
    if (!left.PromoteTypes(log, location, right)) return false;
    return Apply<Operation>(left, right) || RefuseOperator(log, location, Operation::kName, left);
}

/// The divisor is not 0. The quotient of the lowest number and -1 does not exist in the type; it wraps.
template <std::integral T>
T DivideIntegers(T left, T right) noexcept {
    if constexpr (std::signed_integral<T>) {
        if (right == -1)
            return static_cast<T>(Minus::Apply<std::make_unsigned_t<T>>(0, static_cast<std::make_unsigned_t<T>>(left)));
    }
    return static_cast<T>(left / right);
}

template <std::integral T>
T Remainder(T left, T right) noexcept {
    if constexpr (std::signed_integral<T>) {
        if (right == -1) return 0;
    }
    return static_cast<T>(left % right);
}

enum class Quotient : unsigned char { Done, ZeroDivisor, NotSupported };

/// Two operands of one type; nothing changes unless it is done.
[[gnu::always_inline]] inline Quotient Divide(CValue& left, const CValue& right) noexcept {
    if ((TypeBit(left.GetType()) & kDivisionTypes) == 0) return Quotient::NotSupported;
    auto result = Quotient::Done;
    WithScalar(left.GetType(), [&]<typename T>(PayloadTag<T>) {
        const T divisor = right.GetPayload<T>();
        if (divisor == 0) {
            result = Quotient::ZeroDivisor;
        } else if constexpr (std::floating_point<T>) {
            StorePayload(left, left.GetPayload<T>() / divisor);
        } else {
            StorePayload(left, DivideIntegers(left.GetPayload<T>(), divisor));
        }
    });
    return result;
}

[[gnu::always_inline]] inline Quotient Modulo(CValue& left, const CValue& right) noexcept {
    if ((TypeBit(left.GetType()) & kModuloTypes) == 0) return Quotient::NotSupported;
    auto result = Quotient::Done;
    WithScalar(left.GetType(), [&]<typename T>(PayloadTag<T>) {
        if constexpr (std::integral<T>) {
            const T divisor = right.GetPayload<T>();
            if (divisor == 0) {
                result = Quotient::ZeroDivisor;
            } else {
                StorePayload(left, Remainder(left.GetPayload<T>(), divisor));
            }
        }
    });
    return result;
}

bool Finish(CErrorLog& log, const ErrorLocation& location, Quotient result, const char* name, const CValue& left) {
    switch (result) {
        case Quotient::Done: return true;
        case Quotient::ZeroDivisor: return Fail<Message::DivisionByZero>(log, location);
        case Quotient::NotSupported: break;
    }
    return RefuseOperator(log, location, name, left);
}

/// Two operands of one real type, the right one zero, as IEEE 754 has it: an infinity or NaN.
__attribute__((no_sanitize("float-divide-by-zero"))) void DivideByZero(CValue& left, const CValue& zero) noexcept {
    if (left.GetType() == ElementaryType::Real) {
        StorePayload(left, left.GetPayload<float>() / zero.GetPayload<float>());
    } else {
        StorePayload(left, left.GetPayload<double>() / zero.GetPayload<double>());
    }
}

bool IsReal(const CValue& value) noexcept {
    return value.GetType() == ElementaryType::Real || value.GetType() == ElementaryType::LReal;
}

void ScaleTime(CValue& time, const CValue& factor) noexcept {
    const double product = static_cast<double>(time.GetPayload<std::int64_t>()) * tn61131::ReadReal(factor);
    StorePayload(time, SaturateTo<std::int64_t>(product));
}

/// In the precision of the divisor, which is not 0: a REAL divides in single precision.
void DivideTime(CValue& time, const CValue& divisor) noexcept {
    const auto milliseconds = time.GetPayload<std::int64_t>();
    const double quotient = divisor.GetType() == ElementaryType::Real
                                ? static_cast<double>(static_cast<float>(milliseconds) / divisor.GetPayload<float>())
                                : static_cast<double>(milliseconds) / divisor.GetPayload<double>();
    StorePayload(time, SaturateTo<std::int64_t>(quotient));
}

// The operators on any two operands, in the order of their rules.

[[gnu::noinline]] bool AddAny(CErrorLog& log, const ErrorLocation& location, CValue& left, CValue& right) {
    if (ApplyUndefinedRule(left, right)) return true;
    const MixedResult mixed = tn61131::AddMixed(log, location, left, right);
    if (mixed != MixedResult::NotMine) return mixed == MixedResult::Done;
    return PromoteAndApply<Plus>(log, location, left, right);
}

[[gnu::noinline]] bool SubAny(CErrorLog& log, const ErrorLocation& location, CValue& left, CValue& right) {
    if (ApplyUndefinedRule(left, right)) return true;
    if (tn61131::SubMixed(left, right) == MixedResult::Done) return true;
    return PromoteAndApply<Minus>(log, location, left, right);
}

[[gnu::noinline]] bool MulAny(CErrorLog& log, const ErrorLocation& location, CValue& left, CValue& right) {
    if (ApplyUndefinedRule(left, right)) return true;
    if (left.GetType() == ElementaryType::Time && IsReal(right)) {
        ScaleTime(left, right);
        return true;
    }
    return PromoteAndApply<Times>(log, location, left, right);
}

// A zero divisor of a type outside ANY_MAGNITUDE (a bit string, a BOOL) gets past the test of the right operand's own
// type and is met again in the division of the common type: integers refuse it, reals divide by it.
[[gnu::noinline]] bool DivAny(CErrorLog& log, const ErrorLocation& location, CValue& left, CValue& right) {
    if (ApplyUndefinedRule(left, right)) return true;
    if (right.IsTypeOf(ElementaryType::AnyMagnitude) && right.IsZero()) {
        return Fail<Message::DivisionByZero>(log, location);
    }
    if (left.GetType() == ElementaryType::Time && IsReal(right)) {
        DivideTime(left, right);
        return true;
    }
    if (!left.PromoteTypes(log, location, right)) return false;
    const Quotient result = Divide(left, right);
    if (result == Quotient::ZeroDivisor && IsReal(left)) {
        DivideByZero(left, right);
        return true;
    }
    return Finish(log, location, result, "/", left);
}

// Unlike in a division, the zero divisor is looked for after promotion, and one within ANY_MAGNITUDE is the result.
[[gnu::noinline]] bool ModAny(CErrorLog& log, const ErrorLocation& location, CValue& left, CValue& right) {
    if (ApplyUndefinedRule(left, right)) return true;
    if (!left.PromoteTypes(log, location, right)) return false;
    if (right.IsTypeOf(ElementaryType::AnyMagnitude) && right.IsZero()) {
        StorePayload(left, right.GetPayload<std::uint64_t>());
        return true;
    }
    return Finish(log, location, Modulo(left, right), "MOD", left);
}

}  // namespace

bool CValue::Negate(CErrorLog& log, const ErrorLocation& location) {
    if (IsUndefined()) return true;
    const bool isDone = WithArithmetic(type_, [this]<typename T>(PayloadTag<T>) {
        if constexpr (std::floating_point<T>) {
            PutPayload(-GetPayload<T>());
        } else {
            PutPayload(Minus::Apply<T>(0, GetPayload<T>()));
        }
    });
    return isDone || Fail<Message::UnaryNotSupported>(log, location, "-", GetTypeName(false));
}

bool CValue::Add(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    if (type_ == right.type_ && Apply<Plus>(*this, right)) return true;
    return AddAny(log, location, *this, right);
}

bool CValue::Sub(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    if (type_ == right.type_ && Apply<Minus>(*this, right)) return true;
    return SubAny(log, location, *this, right);
}

bool CValue::Mul(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    if (type_ == right.type_ && Apply<Times>(*this, right)) return true;
    return MulAny(log, location, *this, right);
}

bool CValue::Div(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    if (type_ == right.type_ && Divide(*this, right) == Quotient::Done) return true;
    return DivAny(log, location, *this, right);
}

bool CValue::Mod(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    if (type_ == right.type_ && Modulo(*this, right) == Quotient::Done) return true;
    return ModAny(log, location, *this, right);
}

bool CValue::Pow(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    if (ApplyUndefinedRule(*this, right)) return true;
    if (type_ == ElementaryType::Real && right.type_ == ElementaryType::Real) {
        PutPayload(std::pow(GetPayload<float>(), right.GetPayload<float>()));
        return true;
    }
    if (!ChangeTypeToLREAL(log, location) || !right.ChangeTypeToLREAL(log, location)) return false;
    PutPayload(std::pow(GetPayload<double>(), right.GetPayload<double>()));
    return true;
}
