// Complement, the logical operators, shifts and rotations.
#include <bit>

#include "value/OperatorRules.h"
#include "value/PayloadTypes.h"

using tn61131::Fail;
using tn61131::PayloadTag;
using tn61131::RefuseOperator;
using tn61131::StorePayload;
using tn61131::WithWidth;

namespace {

// ApplyToBool() works on the stored bytes, which are 0 or 1.

struct And {
    static constexpr const char* kName = "AND";
    static bool ApplyToBool(std::uint8_t left, std::uint8_t right) noexcept { return (left & right) != 0; }
    template <typename T>
    static T Apply(T left, T right) noexcept {
        return static_cast<T>(left & right);
    }
};

struct Or {
    static constexpr const char* kName = "OR";
    static bool ApplyToBool(std::uint8_t left, std::uint8_t right) noexcept { return (left | right) != 0; }
    template <typename T>
    static T Apply(T left, T right) noexcept {
        return static_cast<T>(left | right);
    }
};

struct Xor {
    static constexpr const char* kName = "XOR";
    static bool ApplyToBool(std::uint8_t left, std::uint8_t right) noexcept { return left != right; }
    template <typename T>
    static T Apply(T left, T right) noexcept {
        return static_cast<T>(left ^ right);
    }
};

template <typename T>
constexpr unsigned int kWidth = sizeof(T) * 8;

struct ShiftUp {
    static constexpr const char* kName = "SHL";
    template <typename T>
    static T Apply(T bits, unsigned int count) noexcept {
        return count < kWidth<T> ? static_cast<T>(std::uint64_t{bits} << count) : T{0};
    }
};

struct ShiftDown {
    static constexpr const char* kName = "SHR";
    template <typename T>
    static T Apply(T bits, unsigned int count) noexcept {
        return count < kWidth<T> ? static_cast<T>(bits >> count) : T{0};
    }
};

struct RotateDown {
    static constexpr const char* kName = "ROR";
    template <typename T>
    static T Apply(T bits, unsigned int count) noexcept {
        return std::rotr(bits, static_cast<int>(count % kWidth<T>));
    }
};

struct RotateUp {
    static constexpr const char* kName = "ROL";
    template <typename T>
    static T Apply(T bits, unsigned int count) noexcept {
        return std::rotl(bits, static_cast<int>(count % kWidth<T>));
    }
};

/// Two operands of one type. False, nothing changed, for a type without this operator.
template <typename Operation>
[[gnu::always_inline]] inline bool ApplyLogical(CValue& left, const CValue& right) noexcept {
    if (left.GetType() == ElementaryType::Bool) {
        left.SetBool(Operation::ApplyToBool(left.GetPayload<std::uint8_t>(), right.GetPayload<std::uint8_t>()));
        return true;
    }
    return WithWidth(left.GetType(), [&]<typename T>(PayloadTag<T>) {
        StorePayload(left, Operation::Apply(left.GetPayload<T>(), right.GetPayload<T>()));
    });
}

template <typename Operation>
[[gnu::noinline]] bool LogicalAny(CErrorLog& log, const ErrorLocation& location, CValue& left, CValue& right) {
    if (!left.PromoteTypes(log, location, right)) return false;
    return ApplyLogical<Operation>(left, right) || RefuseOperator(log, location, Operation::kName, left);
}

template <typename Operation>
bool Logical(CErrorLog& log, const ErrorLocation& location, CValue& left, CValue& right) {
    if (left.GetType() == right.GetType() && ApplyLogical<Operation>(left, right)) return true;
    return LogicalAny<Operation>(log, location, left, right);
}

/// Counts are unsigned here: a negative one is beyond every width, and rotates as its two's complement does.
template <typename Operation>
bool Shift(CErrorLog& log, const ErrorLocation& location, CValue& value, int count) {
    const bool isDone = WithWidth(value.GetType(), [&]<typename T>(PayloadTag<T>) {
        StorePayload(value, Operation::Apply(value.GetPayload<T>(), static_cast<unsigned int>(count)));
    });
    return isDone || RefuseOperator(log, location, Operation::kName, value);
}

}  // namespace

bool CValue::Not(CErrorLog& log, const ErrorLocation& location) {
    if (IsUndefined()) return true;
    if (type_ == ElementaryType::Bool) {
        PutPayload(static_cast<std::uint8_t>(GetPayload<std::uint8_t>() ^ 1));
        return true;
    }
    const bool isDone =
        WithWidth(type_, [this]<typename T>(PayloadTag<T>) { PutPayload(static_cast<T>(~GetPayload<T>())); });
    return isDone || Fail<Message::UnaryNotSupported>(log, location, "NOT", GetTypeName(false));
}

bool CValue::LogicalAnd(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    return Logical<And>(log, location, *this, right);
}

bool CValue::LogicalOr(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    return Logical<Or>(log, location, *this, right);
}

bool CValue::LogicalXor(CErrorLog& log, const ErrorLocation& location, CValue& right) {
    return Logical<Xor>(log, location, *this, right);
}

bool CValue::ShiftLeft(CErrorLog& log, const ErrorLocation& location, int count) {
    return Shift<ShiftUp>(log, location, *this, count);
}

bool CValue::ShiftRight(CErrorLog& log, const ErrorLocation& location, int count) {
    return Shift<ShiftDown>(log, location, *this, count);
}

bool CValue::RotateRight(CErrorLog& log, const ErrorLocation& location, int count) {
    return Shift<RotateDown>(log, location, *this, count);
}

bool CValue::RotateLeft(CErrorLog& log, const ErrorLocation& location, int count) {
    return Shift<RotateUp>(log, location, *this, count);
}
