// Conversions to strings, characters and the text of a user interface.
#include "platform/DataFormat.h"
#include "platform/TextOutput.h"
#include "platform/Transcode.h"
#include "value/NumberPayload.h"
#include "value/ValueConvert.h"

namespace {

constexpr unsigned char BoolLetter(bool value) noexcept {
    return value ? 'T' : 'F';
}

template <typename Unit>
unsigned int CountOf(std::span<const Unit> units) noexcept {
    return static_cast<unsigned int>(units.size());
}

template <typename Unit, typename Decode>
char32_t FirstCodePoint(std::span<const Unit> units, Decode decode) noexcept {
    char32_t codePoint = 0;
    decode(units.data(), CountOf(units), codePoint);  // takes nothing, and stores nothing, of an empty string
    return units.empty() ? 0 : codePoint;
}

}  // namespace

bool CValueConvert::ChangeTypeToSTRING(CErrorLog& /*log*/, const ErrorLocation& /*location*/) {
    switch (type_) {
        case ElementaryType::String: break;
        case ElementaryType::WString: {
            const auto units = GetUnits(GetUtf16String());
            SetScalar(ElementaryType::String, Utf8StringCopy(units.data(), CountOf(units)));
            break;
        }
        case ElementaryType::Char: {
            const auto byte = GetPayload<unsigned char>();
            SetScalar(ElementaryType::String, Utf8StringCopy(&byte, 1));
            break;
        }
        case ElementaryType::WChar: {
            const auto unit = GetPayload<unsigned short>();
            SetScalar(ElementaryType::String, Utf8StringCopy(&unit, 1));
            break;
        }
        default: {
            TextOutputToUtf8String output;
            GetAsText(nullptr, output);
            SetScalar(ElementaryType::String, output.TakeString());
            break;
        }
    }
    return true;
}

bool CValueConvert::ChangeTypeToWSTRING(CErrorLog& /*log*/, const ErrorLocation& /*location*/) {
    switch (type_) {
        case ElementaryType::WString: break;
        case ElementaryType::String: {
            const auto bytes = GetUnits(GetUtf8String());
            SetScalar(ElementaryType::WString, Utf16StringCopy(bytes.data(), CountOf(bytes)));
            break;
        }
        case ElementaryType::Char:
        case ElementaryType::WChar: {
            const auto unit = static_cast<unsigned short>(tn61131::ReadCount(*this));
            SetScalar(ElementaryType::WString, Utf16StringCopy(&unit, 1));
            break;
        }
        default: {
            TextOutputToUtf16String output;
            GetAsText(nullptr, output);
            SetScalar(ElementaryType::WString, output.TakeString());
            break;
        }
    }
    return true;
}

bool CValueConvert::ChangeTypeToChar(CErrorLog& log, const ErrorLocation& location) {
    switch (type_) {
        case ElementaryType::Bool:
            SetScalar(ElementaryType::Char, BoolLetter(GetPayload<unsigned char>() != 0));
            return true;
        case ElementaryType::String: {
            const auto bytes = GetUnits(GetUtf8String());
            SetScalar(ElementaryType::Char, bytes.empty() ? static_cast<unsigned char>(0) : bytes.front());
            return true;
        }
        case ElementaryType::WString: {
            const char32_t codePoint = FirstCodePoint(GetUnits(GetUtf16String()), tn_decode_utf16);
            SetScalar(ElementaryType::Char, static_cast<unsigned char>(codePoint));
            return true;
        }
        default: return ConvertToInteger(log, location, ElementaryType::Char);
    }
}

bool CValueConvert::ChangeTypeToWChar(CErrorLog& log, const ErrorLocation& location) {
    switch (type_) {
        case ElementaryType::Bool:
            SetScalar<unsigned short>(ElementaryType::WChar, BoolLetter(GetPayload<unsigned char>() != 0));
            return true;
        case ElementaryType::String: {
            const char32_t codePoint = FirstCodePoint(GetUnits(GetUtf8String()), tn_decode_utf8);
            SetScalar(ElementaryType::WChar, static_cast<unsigned short>(codePoint));
            return true;
        }
        case ElementaryType::WString: {
            const auto units = GetUnits(GetUtf16String());
            SetScalar(ElementaryType::WChar, units.empty() ? static_cast<unsigned short>(0) : units.front());
            return true;
        }
        default: return ConvertToInteger(log, location, ElementaryType::WChar);
    }
}

bool CValueConvert::ChangeTypeToDisplayWString(const CDataFormatSettings* settings, CErrorLog& log,
                                               const ErrorLocation& location) {
    if (type_ == ElementaryType::WString) return true;
    if (type_ == ElementaryType::String) return ChangeTypeToSTRING(log, location);
    if (settings == nullptr) {
        const CDataFormatSettings defaults;
        return ChangeTypeToDisplayWString(&defaults, log, location);
    }
    TextOutputToUtf16String output;
    CTNTimestamp timestamp;
    GetTimestampValue(timestamp);
    switch (type_) {
        case ElementaryType::DateAndTime: settings->FormatDateAndTime(timestamp.GetTicks(), output); break;
        case ElementaryType::Date:
            settings->GetDateFormat().FormatDateTime(settings->GetLocale(), &settings->GetTimeZone(), timestamp,
                                                     output);
            break;
        case ElementaryType::TimeOfDay:
            timestamp.SetVMTimeMS(GetPayload<std::uint32_t>());
            settings->GetTimeFormat().FormatDateTime(settings->GetLocale(), &settings->GetTimeZone(), timestamp,
                                                     output);
            break;
        default: GetAsText(nullptr, output); break;
    }
    SetScalar(ElementaryType::WString, output.TakeString());
    return true;
}
