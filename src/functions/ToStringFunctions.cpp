#include "functions/ToStringFunctions.h"

#include <string>

#include "diag/Messages.h"
#include "functions/FormatCache.h"
#include "functions/FunctionTable.h"
#include "functions/QualityText.h"
#include "functions/SqlLiteral.h"
#include "platform/DataFormat.h"
#include "platform/TextOutput.h"
#include "platform/Time.h"
#include "value/Value.h"

using tn61131::Fail;

namespace {

/// The parameters of FORMAT_DATE_TIME and FORMAT_NUMBER.
enum FormatParameter : int { kValue = 1, kFormat = 2 };

CallStatus QualityToString(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                           CValue* arguments, CValue& result) {
    short quality = 0;
    bool nameOnly = false;
    if (!arguments[0].GetIntegerValue(log, context, quality) || !arguments[1].GetBoolValue(log, context, nameOnly))
        return CallStatus::Failed;
    result.SetString(CStringFromQuality(quality, nameOnly).Text(), ElementaryType::String);
    return CallStatus::Continue;
}

CallStatus LogReasonToString(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                             CValue* arguments, CValue& result) {
    short reason = 0;
    if (!arguments[0].GetIntegerValue(log, context, reason)) return CallStatus::Failed;
    const CDataFormatSettings* settings = context.GetDataFormatSettings();
    if (settings == nullptr) return CallStatus::Invalid;
    char text[64];
    const unsigned int length = StringFromValue::HistoricChangeReasonToString(
        settings->GetLocale(), static_cast<unsigned char>(reason), text, sizeof(text));
    result.SetString(text, length, ElementaryType::String);
    return CallStatus::Continue;
}

CallStatus ToSqlLiteral(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                        CValue* arguments, CValue& result) {
    TextOutputToUtf8String output;
    if (!StringFromValue::SqlLiteralFromValue(&arguments[0], output))
        return StatusOf(Fail<Message::NoSqlLiteral>(log, context, arguments[0].GetTypeName(false)));
    result.SetString(output.TakeString());
    return CallStatus::Continue;
}

/// The client's settings; null after a message.
const CDataFormatSettings* RequireSettings(CErrorLog& log, const CBuiltInFunctionContext& context) {
    if (context.GetDataFormatSettings() == nullptr)
        Fail<Message::InternalLogicError>(log, context, "No data format settings");
    return context.GetDataFormatSettings();
}

/// The pattern that FORMAT, the second argument, holds. Null, after a message, when it is no string or no pattern.
template <typename Format>
const Format* ReadPattern(CErrorLog& log, CBuiltInFunctionContext& context, const CValue& argument) {
    context.SetArgumentIndex(kFormat);
    if (!argument.IsTypeOf(ElementaryType::AnyString)) {
        Fail<Message::TypeNotSupported>(log, context, argument.GetTypeName(false));
        return nullptr;
    }
    std::string pattern;
    argument.GetStringValue(pattern);
    const Format* format = context.GetFormatCache().Find<Format>(pattern);
    if (format == nullptr) Fail<Message::InvalidFormat>(log, context, pattern);
    return format;
}

/// The moment to format and the zone it is shown in; a time of day is shown as it stands.
bool ReadMoment(CErrorLog& log, CBuiltInFunctionContext& context, const CDataFormatSettings& settings,
                const CValue& argument, CTNTimestamp& timestamp, const CTNTimeZone*& zone) {
    context.SetArgumentIndex(kValue);
    switch (argument.GetType()) {
        case ElementaryType::DateAndTime:
        case ElementaryType::Date:
            argument.GetTimestampValue(timestamp);
            zone = &settings.GetTimeZone();
            return true;
        case ElementaryType::TimeOfDay:
            timestamp.SetVMTimeMS(argument.GetPayload<std::uint32_t>());
            zone = nullptr;
            return true;
        default: return Fail<Message::TypeNotSupported>(log, context, argument.GetTypeName(false));
    }
}

CallStatus FormatDateTime(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                          CValue* arguments, CValue& result) {
    const CDataFormatSettings* settings = RequireSettings(log, context);
    if (settings == nullptr) return CallStatus::Failed;
    CTNTimestamp timestamp;
    const CTNTimeZone* zone = nullptr;
    if (!ReadMoment(log, context, *settings, arguments[0], timestamp, zone)) return CallStatus::Failed;
    const auto* format = ReadPattern<DateTimeFormat>(log, context, arguments[1]);
    if (format == nullptr) return CallStatus::Failed;
    CTextOutputString output;
    format->FormatDateTime(settings->GetLocale(), zone, timestamp, output);
    result.SetString(output.GetText(), arguments[1].GetType());
    return CallStatus::Continue;
}

/// Integers keep all their digits; BOOL is a bit string, but no number.
CallStatus WriteNumber(CErrorLog& log, CBuiltInFunctionContext& context, const DecimalFormat& format,
                       const CTNLocale& locale, CValue& number, CTextOutput& output) {
    context.SetArgumentIndex(kValue);
    if (number.IsTypeOf(ElementaryType::AnyReal)) {
        if (!number.ChangeTypeToLREAL(log, context)) return CallStatus::Failed;
        format.FormatDouble(locale, number.GetPayload<double>(), output);
    } else if (number.IsTypeOf(ElementaryType::AnySigned)) {
        if (!number.ChangeTypeToLINT(log, context)) return CallStatus::Failed;
        format.FormatInt64(locale, number.GetPayload<std::int64_t>(), output);
    } else if (number.IsTypeOf(ElementaryType::AnyIntegral) && number.GetType() != ElementaryType::Bool) {
        if (!number.ChangeTypeToULINT(log, context, ElementaryType::ULInt)) return CallStatus::Failed;
        format.FormatUInt64(locale, number.GetPayload<std::uint64_t>(), output);
    } else {
        return StatusOf(Fail<Message::TypeNotSupported>(log, context, number.GetTypeName(false)));
    }
    return CallStatus::Continue;
}

CallStatus FormatNumber(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                        CValue* arguments, CValue& result) {
    const CDataFormatSettings* settings = RequireSettings(log, context);
    if (settings == nullptr) return CallStatus::Failed;
    const auto* format = ReadPattern<DecimalFormat>(log, context, arguments[1]);
    if (format == nullptr) return CallStatus::Failed;
    CTextOutputString output;
    const CallStatus status = WriteNumber(log, context, *format, settings->GetLocale(), arguments[0], output);
    if (status == CallStatus::Continue) result.SetString(output.GetText(), arguments[1].GetType());
    return status;
}

constexpr auto kRefused = SurplusArguments::Refused;

constexpr FunctionRow kRows[] = {
    {0, "QUALITY_TO_STRING", 2, 2, kRefused, "QUALITY, NAME_ONLY", "STRING: the quality code's text", QualityToString},
    {1, "LOG_REASON_TO_STRING", 1, 1, kRefused, "REASON", "STRING: why a value was recorded", LogReasonToString},
    {2, "TO_SQL_LITERAL", 1, 1, kRefused, "VALUE", "STRING: the value as SQL has it", ToSqlLiteral},
    {3, "FORMAT_DATE_TIME", 2, 2, kRefused, "VALUE, FORMAT", "text of the date or time, of FORMAT's type",
     FormatDateTime},
    {4, "FORMAT_NUMBER", 2, 2, kRefused, "VALUE, FORMAT", "text of the number, of FORMAT's type", FormatNumber},
};
static_assert(HasConsecutiveIds(kRows));

}  // namespace

std::span<const FunctionRow> CVMFuncToString::GetTable() noexcept {
    return kRows;
}

CallStatus CVMFuncToString::ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context,
                                            unsigned char argumentCount, CValue* arguments, CValue& result) {
    return CallFunction(kRows, kGroupWord, log, context, argumentCount, arguments, result);
}

const char* CVMFuncToString::GetFunctionName(unsigned char id) const {
    return FindFunctionName(kRows, id);
}
