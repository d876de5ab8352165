#include "value/ValueConvert.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "diag/Messages.h"
#include "platform/Transcode.h"
#include "value/NumberPayload.h"

using tn61131::Fail;

namespace {

constexpr int kMaxBCDDigits = 16;

constexpr auto kPowersOfTen = [] {
    std::array<std::uint64_t, kMaxBCDDigits> powers{};
    std::uint64_t power = 1;
    for (std::uint64_t& entry : powers) {
        entry = power;
        power *= 10;
    }
    return powers;
}();

/// SINT to LWORD.
bool IsIntegerType(ElementaryType type) noexcept {
    return type >= ElementaryType::SInt && type <= ElementaryType::LWord;
}

bool RefuseTarget(CErrorLog& log, const ErrorLocation& location, ElementaryType target) {
    return Fail<Message::ConversionTargetNotSupported>(log, location, CValueType(target).GetTypeName(false));
}

}  // namespace

bool CValueConvert::ChangeType(CErrorLog& log, const ErrorLocation& location, ElementaryType target) {
    if (type_ == target) return true;
    switch (target) {
        case ElementaryType::Bool: return ChangeTypeToBOOL(log, location);
        case ElementaryType::SInt:
        case ElementaryType::USInt:
        case ElementaryType::Byte:
        case ElementaryType::Int:
        case ElementaryType::UInt:
        case ElementaryType::Word:
        case ElementaryType::DInt:
        case ElementaryType::UDInt:
        case ElementaryType::DWord:
        case ElementaryType::LInt:
        case ElementaryType::ULInt:
        case ElementaryType::LWord: return ConvertToInteger(log, location, target);
        case ElementaryType::Real: return ChangeTypeToREAL(log, location);
        case ElementaryType::LReal: return ChangeTypeToLREAL(log, location);
        case ElementaryType::Time: return ChangeTypeToTIME(log, location);
        case ElementaryType::TimeOfDay: return ChangeTypeToTOD(log, location);
        case ElementaryType::Date: return ChangeTypeToDATE(log, location);
        case ElementaryType::DateAndTime: return ChangeTypeToDT(log, location);
        case ElementaryType::String: return ChangeTypeToSTRING(log, location);
        case ElementaryType::WString: return ChangeTypeToWSTRING(log, location);
        case ElementaryType::Char: return ChangeTypeToChar(log, location);
        case ElementaryType::WChar: return ChangeTypeToWChar(log, location);
        default: return RefuseTarget(log, location, target);
    }
}

bool CValueConvert::RefuseConversion(CErrorLog& log, const ErrorLocation& location, ElementaryType target) const {
    return Fail<Message::ConversionNotSupported>(log, location, GetTypeName(false),
                                                 CValueType(target).GetTypeName(false));
}

bool CValueConvert::ParseLiteral(CErrorLog& log, const ErrorLocation& location, const char* text,
                                 ElementaryType target) {
    switch (target) {
        case ElementaryType::Bool: return StringToBool(log, location, text);
        case ElementaryType::Real:
        case ElementaryType::LReal: return StringToReal(log, location, text, target);
        case ElementaryType::Time: return StringToTime(log, location, text);
        case ElementaryType::TimeOfDay: return StringToTimeOfDay(log, location, text);
        case ElementaryType::Date: return StringToDate(log, location, text);
        case ElementaryType::DateAndTime: return StringToDateAndTime(log, location, text);
        default: return StringToInteger(log, location, text, target);
    }
}

// Parsed in a value of its own, so that text that is no literal stays as it was.
bool CValueConvert::ConvertFromText(CErrorLog& log, const ErrorLocation& location, ElementaryType target) {
    char text[64];  // what does not fit takes no part
    if (type_ == ElementaryType::String) {
        WCharFromUtf8String(GetUtf8String(), text, sizeof text);
    } else if (type_ == ElementaryType::WString) {
        WCharFromUtf16String(GetUtf16String(), text, sizeof text);
    } else {
        return RefuseConversion(log, location, target);
    }
    CValueConvert parsed;
    if (!parsed.ParseLiteral(log, location, text, target)) return false;
    if (!parsed.ChangeType(log, location, target)) return false;  // a prefix in the text has the last word on the range
    ClearValue();
    TakeFrom(parsed);
    return true;
}

bool CValueConvert::Truncate(CErrorLog& log, const ErrorLocation& location, ElementaryType target) {
    if (type_ != ElementaryType::Real && type_ != ElementaryType::LReal) return ChangeType(log, location, target);
    CValueConvert whole;
    if (type_ == ElementaryType::Real) {
        whole.SetScalar(type_, std::trunc(GetPayload<float>()));
    } else {
        whole.SetScalar(type_, std::trunc(GetPayload<double>()));
    }
    if (!whole.ChangeType(log, location, target)) return false;
    TakeFrom(whole);
    return true;
}

bool CValueConvert::BCDToInt(CErrorLog& log, const ErrorLocation& location, ElementaryType bcdType, int digits,
                             ElementaryType resultType) {
    if (!IsIntegerType(resultType)) return RefuseTarget(log, location, resultType);
    if (!IsIntegerType(bcdType)) return RefuseTarget(log, location, bcdType);
    if (!ChangeType(log, location, bcdType)) return false;
    const std::uint64_t bcd = tn61131::ReadCount(*this);
    std::uint64_t number = 0;
    for (int i = std::min(digits, kMaxBCDDigits) - 1; i >= 0; --i) {
        number = number * 10 + ((bcd >> (4 * i)) & 15);
    }
    SetScalar(resultType, number);
    return true;
}

// The number is signed and digits are taken from its quotients as they are, in two's complement: a negative number
// gives digits that are none, which is not an error.
bool CValueConvert::IntToBCD(CErrorLog& log, const ErrorLocation& location, ElementaryType sourceType, int digits,
                             ElementaryType resultType) {
    if (!IsIntegerType(resultType)) return RefuseTarget(log, location, resultType);
    if (!IsIntegerType(sourceType)) return RefuseTarget(log, location, sourceType);
    if (!ChangeType(log, location, sourceType)) return false;
    std::uint64_t rest = tn61131::ReadCount(*this);
    std::uint64_t bcd = 0;
    for (int i = std::min(digits, kMaxBCDDigits) - 1; i >= 0; --i) {
        const std::uint64_t power = kPowersOfTen[static_cast<std::size_t>(i)];
        const auto quotient = static_cast<std::int64_t>(rest) / static_cast<std::int64_t>(power);
        const std::uint64_t digit = static_cast<std::uint64_t>(quotient) & 15;
        rest -= digit * power;
        bcd |= digit << (4 * i);
    }
    SetScalar(resultType, bcd);
    return true;
}

bool CValueConvert::GetBoolValue(CErrorLog& log, const ErrorLocation& location, bool& out) {
    if (!ChangeTypeToBOOL(log, location)) return false;
    out = GetPayload<unsigned char>() != 0;
    return true;
}

bool CValueConvert::GetTimeValue(CErrorLog& log, const ErrorLocation& location, long long& out) {
    if (!ChangeTypeToTIME(log, location)) return false;
    out = GetPayload<long long>();
    return true;
}

bool CValueConvert::GetIntegerValue(CErrorLog& log, const ErrorLocation& location, long long& out) {
    if (!ChangeTypeToLINT(log, location)) return false;
    out = GetPayload<long long>();
    return true;
}

bool CValueConvert::GetIntegerValue(CErrorLog& log, const ErrorLocation& location, int& out) {
    if (!ChangeTypeToDINT(log, location)) return false;
    out = GetPayload<int>();
    return true;
}

bool CValueConvert::GetIntegerValue(CErrorLog& log, const ErrorLocation& location, short& out) {
    if (!ChangeTypeToINT(log, location)) return false;
    out = GetPayload<short>();
    return true;
}

bool CValueConvert::GetLengthValue(CErrorLog& log, const ErrorLocation& location, int& out) {
    return GetIntegerValue(log, location, out);
}
