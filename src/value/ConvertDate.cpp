// Conversions to TIME, TIME_OF_DAY, DATE and DATE_AND_TIME. Counts are taken over as they are, except between the types
// that share a scale.
#include <cmath>

#include "platform/Time.h"
#include "value/NumberPayload.h"
#include "value/ValueConvert.h"

using tn61131::HoldsCount;
using tn61131::IsCharacter;
using tn61131::ReadCount;
using tn61131::ReadReal;
using tn61131::SaturateTo;

namespace {

constexpr auto kDayMs = static_cast<std::uint64_t>(kMillisecondsPerDay);

/// The part of a real number of milliseconds behind whole days, in the precision of its type.
template <typename T>
std::uint32_t TimeOfDayFromReal(T milliseconds) noexcept {
    constexpr auto kDay = static_cast<T>(kMillisecondsPerDay);
    T wholeDays = 0;
    const T fraction = std::modf(milliseconds / kDay, &wholeDays);
    return SaturateTo<std::uint32_t>(static_cast<double>(fraction * kDay));
}

/// Numbers below 32 bits are taken over, wider ones reduced to one day: 64-bit signed ones keep their sign.
std::uint32_t TimeOfDayFromCount(const CValueLiteral& value) noexcept {
    const std::uint64_t count = ReadCount(value);
    const TypeInfo& info = GetTypeInfo(value.GetType());
    if (info.size < 4) return static_cast<std::uint32_t>(count);
    if (info.size == 4) return static_cast<std::uint32_t>(count) % static_cast<std::uint32_t>(kDayMs);
    if (info.payload == PayloadKind::Unsigned) return static_cast<std::uint32_t>(count % kDayMs);
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(count) % kMillisecondsPerDay);
}

}  // namespace

bool CValueConvert::ChangeTypeToTIME(CErrorLog& log, const ErrorLocation& location) {
    if (HoldsCount(*this) && !IsCharacter(*this)) {
        SetScalar(ElementaryType::Time, ReadCount(*this));
    } else if (GetTypeInfo(type_).payload == PayloadKind::Float) {
        SetScalar(ElementaryType::Time, SaturateTo<std::int64_t>(ReadReal(*this)));
    } else {
        return ConvertFromText(log, location, ElementaryType::Time);
    }
    return true;
}

bool CValueConvert::ChangeTypeToTOD(CErrorLog& log, const ErrorLocation& location) {
    if (HoldsCount(*this) && !IsCharacter(*this)) {
        SetScalar(ElementaryType::TimeOfDay, TimeOfDayFromCount(*this));
    } else if (type_ == ElementaryType::Real) {
        SetScalar(ElementaryType::TimeOfDay, TimeOfDayFromReal(GetPayload<float>()));
    } else if (type_ == ElementaryType::LReal) {
        SetScalar(ElementaryType::TimeOfDay, TimeOfDayFromReal(GetPayload<double>()));
    } else {
        return ConvertFromText(log, location, ElementaryType::TimeOfDay);
    }
    return true;
}

bool CValueConvert::ChangeTypeToDATE(CErrorLog& log, const ErrorLocation& location) {
    if (type_ == ElementaryType::DateAndTime) {
        SetScalar(ElementaryType::Date, GetPayload<std::uint64_t>() / kDayMs);
    } else if (HoldsCount(*this) && !IsCharacter(*this)) {
        SetScalar(ElementaryType::Date, ReadCount(*this));
    } else if (GetTypeInfo(type_).payload == PayloadKind::Float) {
        SetScalar(ElementaryType::Date, SaturateTo<std::uint32_t>(ReadReal(*this)));
    } else {
        return ConvertFromText(log, location, ElementaryType::Date);
    }
    return true;
}

bool CValueConvert::ChangeTypeToDT(CErrorLog& log, const ErrorLocation& location) {
    if (type_ == ElementaryType::Date) {
        SetScalar(ElementaryType::DateAndTime, GetPayload<std::uint32_t>() * kDayMs);
    } else if (HoldsCount(*this) && !IsCharacter(*this)) {
        SetScalar(ElementaryType::DateAndTime, ReadCount(*this));
    } else if (GetTypeInfo(type_).payload == PayloadKind::Float) {
        SetScalar(ElementaryType::DateAndTime, SaturateTo<std::uint64_t>(ReadReal(*this)));
    } else {
        return ConvertFromText(log, location, ElementaryType::DateAndTime);
    }
    return true;
}
