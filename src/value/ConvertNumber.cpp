// Conversions to BOOL, the integers and bit strings, and the reals.
#include <cmath>

#include "value/NumberPayload.h"
#include "value/ValueConvert.h"

using tn61131::HoldsCount;
using tn61131::IsCharacter;
using tn61131::ReadCount;
using tn61131::ReadReal;
using tn61131::SaturateTo;

namespace {

bool IsReal(const CValueType& value) noexcept {
    return GetTypeInfo(value.GetType()).payload == PayloadKind::Float;
}

/// The characters that mean TRUE.
bool IsTrueLetter(std::uint64_t character) noexcept {
    return character == 'T' || character == '1' || character == 'Y' || character == 'y';
}

/// The nearest whole number, halves to even. An infinity has no remainder, and gives NaN.
double RoundToWhole(double number) noexcept {
    return number - std::remainder(number, 1.0);
}

/// The bits of a whole number in a target; those above the target's width are cut off by its payload. Targets below 64
/// bits go through 32 bits: 300.0 gives a SINT of 44.
std::uint64_t BitsOfWhole(double whole, const TypeInfo& target) noexcept {
    const bool isSigned = target.payload == PayloadKind::Signed;
    if (target.size == 8) {
        return isSigned ? static_cast<std::uint64_t>(SaturateTo<std::int64_t>(whole))
                        : SaturateTo<std::uint64_t>(whole);
    }
    return isSigned ? static_cast<std::uint32_t>(SaturateTo<std::int32_t>(whole)) : SaturateTo<std::uint32_t>(whole);
}

}  // namespace

bool CValueConvert::ChangeTypeToBOOL(CErrorLog& log, const ErrorLocation& location) {
    bool isTrue = false;
    if (IsCharacter(*this)) {
        isTrue = IsTrueLetter(ReadCount(*this));
    } else if (HoldsCount(*this)) {
        isTrue = ReadCount(*this) != 0;
    } else if (IsReal(*this)) {
        isTrue = ReadReal(*this) != 0.0;
    } else {
        return ConvertFromText(log, location, ElementaryType::Bool);
    }
    SetScalar(ElementaryType::Bool, static_cast<unsigned char>(isTrue));
    return true;
}

bool CValueConvert::ConvertToInteger(CErrorLog& log, const ErrorLocation& location, ElementaryType target) {
    if (HoldsCount(*this)) {
        SetScalar(target, ReadCount(*this));
    } else if (IsReal(*this)) {
        SetScalar(target, BitsOfWhole(RoundToWhole(ReadReal(*this)), GetTypeInfo(target)));
    } else {
        return ConvertFromText(log, location, target);
    }
    return true;
}

bool CValueConvert::ChangeTypeToSINT(CErrorLog& log, const ErrorLocation& location) {
    return ConvertToInteger(log, location, ElementaryType::SInt);
}

bool CValueConvert::ChangeTypeToUSINT(CErrorLog& log, const ErrorLocation& location, ElementaryType target) {
    return ChangeType(log, location, target);
}

bool CValueConvert::ChangeTypeToINT(CErrorLog& log, const ErrorLocation& location) {
    return ConvertToInteger(log, location, ElementaryType::Int);
}

bool CValueConvert::ChangeTypeToUINT(CErrorLog& log, const ErrorLocation& location, ElementaryType target) {
    return ChangeType(log, location, target);
}

bool CValueConvert::ChangeTypeToDINT(CErrorLog& log, const ErrorLocation& location) {
    return ConvertToInteger(log, location, ElementaryType::DInt);
}

bool CValueConvert::ChangeTypeToUDINT(CErrorLog& log, const ErrorLocation& location, ElementaryType target) {
    return ChangeType(log, location, target);
}

bool CValueConvert::ChangeTypeToLINT(CErrorLog& log, const ErrorLocation& location) {
    return ConvertToInteger(log, location, ElementaryType::LInt);
}

bool CValueConvert::ChangeTypeToULINT(CErrorLog& log, const ErrorLocation& location, ElementaryType target) {
    return ChangeType(log, location, target);
}

template <typename T>
bool CValueConvert::ConvertToFloat(CErrorLog& log, const ErrorLocation& location, ElementaryType target) {
    if (HoldsCount(*this) && !IsCharacter(*this)) {
        const std::uint64_t count = ReadCount(*this);
        const bool isSigned = GetTypeInfo(type_).payload == PayloadKind::Signed;
        SetScalar(target, isSigned ? static_cast<T>(static_cast<std::int64_t>(count)) : static_cast<T>(count));
    } else if (IsReal(*this)) {
        SetScalar(target, static_cast<T>(ReadReal(*this)));
    } else {
        return ConvertFromText(log, location, target);
    }
    return true;
}

bool CValueConvert::ChangeTypeToREAL(CErrorLog& log, const ErrorLocation& location) {
    return ConvertToFloat<float>(log, location, ElementaryType::Real);
}

bool CValueConvert::ChangeTypeToLREAL(CErrorLog& log, const ErrorLocation& location) {
    return ConvertToFloat<double>(log, location, ElementaryType::LReal);
}
