// Sums and differences of pointers, times and dates. Everything wraps in the width of its type.
#include "platform/Time.h"
#include "value/OperatorRules.h"
#include "value/PayloadTypes.h"

using tn61131::MixedResult;

namespace {

using Type = ElementaryType;

constexpr auto kDayMs = static_cast<std::uint64_t>(kMillisecondsPerDay);

std::int64_t TimeOf(const CValue& time) noexcept {
    return time.GetPayload<std::int64_t>();
}

/// The payload of a TIME_OF_DAY or a DATE.
std::uint32_t CountOf(const CValue& value) noexcept {
    return value.GetPayload<std::uint32_t>();
}

/// The payload of a DATE_AND_TIME or a TIME as bits that wrap.
std::uint64_t WideCountOf(const CValue& value) noexcept {
    return value.GetPayload<std::uint64_t>();
}

void SetTime(CValue& value, std::uint64_t bits) noexcept {
    value.SetInteger(static_cast<long long>(bits), Type::Time);
}

void SetDateAndTime(CValue& value, std::uint64_t bits) noexcept {
    value.SetInteger(static_cast<long long>(bits), Type::DateAndTime);
}

bool AddToPointer(CErrorLog& log, const ErrorLocation& location, CValue& pointer, CValue& bytes) {
    if (!bytes.ChangeTypeToUDINT(log, location)) return false;
    auto target = pointer.GetPayload<PointerValue>();
    target.AddOffset(bytes.GetPayload<std::uint32_t>());
    tn61131::StorePayload(pointer, target);
    return true;
}

/// Goes round at midnight, in both directions.
std::uint32_t AddToTimeOfDay(std::uint32_t timeOfDay, std::int64_t time) noexcept {
    constexpr auto kDay = static_cast<std::uint32_t>(kDayMs);
    const std::uint32_t sum = timeOfDay + static_cast<std::uint32_t>(time % kMillisecondsPerDay);
    const auto signedSum = static_cast<std::int32_t>(sum);
    if (signedSum >= static_cast<std::int32_t>(kDay)) return sum - kDay;
    return signedSum < 0 ? sum + kDay : sum;
}

/// A time later than the time of day counts back from the end of the day: exactly whole days later is 24:00:00.
std::uint32_t SubFromTimeOfDay(std::uint32_t timeOfDay, std::int64_t time) noexcept {
    const std::uint64_t bits = timeOfDay - static_cast<std::uint64_t>(time);
    const auto rest = static_cast<std::int64_t>(bits) % kMillisecondsPerDay;
    return static_cast<std::uint32_t>(timeOfDay >= time ? rest : kMillisecondsPerDay + rest);
}

std::uint32_t WholeDays(std::int64_t time) noexcept {
    return static_cast<std::uint32_t>(time / kMillisecondsPerDay);
}

MixedResult AddTime(CValue& left, const CValue& time) noexcept {
    switch (left.GetType()) {
        case Type::TimeOfDay: tn61131::StorePayload(left, AddToTimeOfDay(CountOf(left), TimeOf(time))); break;
        case Type::DateAndTime: tn61131::StorePayload(left, WideCountOf(left) + WideCountOf(time)); break;
        case Type::Date: tn61131::StorePayload(left, CountOf(left) + WholeDays(TimeOf(time))); break;
        default: return MixedResult::NotMine;
    }
    return MixedResult::Done;
}

MixedResult SubTime(CValue& left, const CValue& time) noexcept {
    switch (left.GetType()) {
        case Type::TimeOfDay: tn61131::StorePayload(left, SubFromTimeOfDay(CountOf(left), TimeOf(time))); break;
        case Type::DateAndTime: tn61131::StorePayload(left, WideCountOf(left) - WideCountOf(time)); break;
        case Type::Date: tn61131::StorePayload(left, CountOf(left) - WholeDays(TimeOf(time))); break;
        default: return MixedResult::NotMine;
    }
    return MixedResult::Done;
}

/// The TIME between two operands of one type.
MixedResult SubSameType(CValue& left, const CValue& right) noexcept {
    switch (left.GetType()) {
        case Type::Date: SetTime(left, (std::uint64_t{CountOf(left)} - CountOf(right)) * kDayMs); break;
        case Type::TimeOfDay: {
            const auto difference = static_cast<std::int32_t>(CountOf(left) - CountOf(right));
            left.SetInteger(difference, Type::Time);
            break;
        }
        case Type::DateAndTime: SetTime(left, WideCountOf(left) - WideCountOf(right)); break;
        default: return MixedResult::NotMine;
    }
    return MixedResult::Done;
}

}  // namespace

MixedResult tn61131::AddMixed(CErrorLog& log, const ErrorLocation& location, CValue& left, CValue& right) {
    if (left.GetType() == Type::Pointer) {
        return AddToPointer(log, location, left, right) ? MixedResult::Done : MixedResult::Failed;
    }
    if (right.GetType() == Type::Time) return AddTime(left, right);
    if (left.GetType() != Type::Date || right.GetType() != Type::TimeOfDay) return MixedResult::NotMine;
    SetDateAndTime(left, CountOf(left) * kDayMs + CountOf(right));
    return MixedResult::Done;
}

MixedResult tn61131::SubMixed(CValue& left, const CValue& right) noexcept {
    if (right.GetType() == Type::Time) return SubTime(left, right);
    return left.GetType() == right.GetType() ? SubSameType(left, right) : MixedResult::NotMine;
}
