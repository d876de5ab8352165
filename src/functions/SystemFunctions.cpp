#include "functions/SystemFunctions.h"

#include <cstdint>

#include "functions/FunctionTable.h"
#include "platform/DataFormat.h"
#include "platform/Random.h"
#include "platform/Time.h"
#include "value/Value.h"
#include "vm/VirtualMachineExec.h"

namespace {

/// The time of the scan, not that of the clock: all calls of one scan agree.
long long ScanTimeMs(const CBuiltInFunctionContext& context) noexcept {
    return context.GetVMExec()->GetCurrentTimestampMS();
}

CallStatus GetTimestamp(CErrorLog& /*log*/, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                        CValue* /*arguments*/, CValue& result) {
    result.SetInteger(ScanTimeMs(context), ElementaryType::DateAndTime);
    return CallStatus::Continue;
}

CallStatus GetDate(CErrorLog& /*log*/, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                   CValue* /*arguments*/, CValue& result) {
    result.SetInteger(ScanTimeMs(context) / kMillisecondsPerDay, ElementaryType::Date);
    return CallStatus::Continue;
}

CallStatus GetTimeOfDay(CErrorLog& /*log*/, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                        CValue* /*arguments*/, CValue& result) {
    std::int64_t timeOfDayMs = ScanTimeMs(context) % kMillisecondsPerDay;
    if (timeOfDayMs < 0) timeOfDayMs += kMillisecondsPerDay;  // before the epoch
    result.SetInteger(timeOfDayMs, ElementaryType::TimeOfDay);
    return CallStatus::Continue;
}

CallStatus GetRandomWord(CErrorLog& /*log*/, CBuiltInFunctionContext& /*context*/, unsigned char /*argumentCount*/,
                         CValue* /*arguments*/, CValue& result) {
    std::uint16_t bits = 0;
    TNRandomGenerator::GenerateRandom(&bits, sizeof(bits));
    result.SetInteger(bits, ElementaryType::Word);
    return CallStatus::Continue;
}

/// SYS_DATE_TIME_TO_LOCAL and SYS_DATE_TIME_TO_UTC.
template <void (CTNTimestamp::*kConvert)(const CTNTimeZone&)>
CallStatus ConvertZone(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                       CValue* arguments, CValue& result) {
    context.SetArgumentIndex(1);
    if (!arguments[0].ChangeType(log, context, ElementaryType::DateAndTime)) return CallStatus::Failed;
    CTNTimestamp timestamp;
    arguments[0].GetTimestampValue(timestamp);
    const CDataFormatSettings* settings = context.GetDataFormatSettings();
    (timestamp.*kConvert)(settings != nullptr ? settings->GetTimeZone() : CTNTimeZone());
    result.SetTimestamp(timestamp);
    return CallStatus::Continue;
}

constexpr auto kRefused = SurplusArguments::Refused;
constexpr auto kSurplus = SurplusArguments::Ignored;

constexpr FunctionRow kRows[] = {
    {1, "SYS_GET_TIMESTAMP", 0, 0, kSurplus, "", "DATE_AND_TIME: UTC time of the scan", GetTimestamp},
    {2, "SYS_GET_DATE", 0, 0, kSurplus, "", "DATE: UTC date of the scan", GetDate},
    {3, "SYS_GET_TOD", 0, 0, kSurplus, "", "TIME_OF_DAY: UTC time of day of the scan", GetTimeOfDay},
    {4, "SYS_GET_RANDOM_WORD", 0, 0, kSurplus, "", "WORD: 16 random bits", GetRandomWord},
    {5, "SYS_DATE_TIME_TO_LOCAL", 1, 1, kRefused, "DT", "DATE_AND_TIME: UTC to the client's local time",
     ConvertZone<&CTNTimestamp::ToLocalTime>},
    {6, "SYS_DATE_TIME_TO_UTC", 1, 1, kRefused, "DT", "DATE_AND_TIME: the client's local time to UTC",
     ConvertZone<&CTNTimestamp::ToUTC>},
};
static_assert(HasConsecutiveIds(kRows));

}  // namespace

std::span<const FunctionRow> CVMFuncSys::GetTable() noexcept {
    return kRows;
}

CallStatus CVMFuncSys::ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                                       CValue* arguments, CValue& result) {
    if (context.GetVMExec() == nullptr) return CallStatus::Failed;
    return CallFunction(kRows, kGroupWord, log, context, argumentCount, arguments, result);
}

const char* CVMFuncSys::GetFunctionName(unsigned char id) const {
    return FindFunctionName(kRows, id);
}

bool CVMFuncSys::IsInvariant(unsigned char /*id*/) const {
    return false;
}
