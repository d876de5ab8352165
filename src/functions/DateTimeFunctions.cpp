#include "functions/DateTimeFunctions.h"

#include <array>
#include <cstddef>

#include "diag/Messages.h"
#include "functions/FunctionTable.h"
#include "platform/Time.h"
#include "value/Value.h"
#include "vm/VirtualMachineExec.h"

using tn61131::Fail;

namespace {

/// Reads the first arguments as numbers, each under its own parameter number.
template <std::size_t kCount>
bool ReadParts(CErrorLog& log, CBuiltInFunctionContext& context, CValue* arguments, std::array<int, kCount>& parts) {
    for (std::size_t i = 0; i < kCount; ++i) {
        context.SetArgumentIndex(static_cast<int>(i) + 1);
        if (!arguments[i].GetIntegerValue(log, context, parts[i])) return false;
    }
    return true;
}

/// Calendar fields of the first argument, a DATE or anything that becomes a DATE_AND_TIME.
bool ReadFields(CErrorLog& log, CBuiltInFunctionContext& context, CValue* arguments, TimestampStruct& fields) {
    context.SetArgumentIndex(1);
    if (!arguments[0].ChangeTypeToDT(log, context)) return false;
    CTNTimestamp timestamp;
    arguments[0].GetTimestampValue(timestamp);
    CTNTimestamp::GetTimestampStruct(timestamp.GetTicks(), fields);
    return true;
}

/// Writes the parts through the outputs, which are the parameters from the second on.
template <std::size_t kCount>
CallStatus WriteParts(CErrorLog& log, CBuiltInFunctionContext& context, const CValue* arguments,
                      const std::array<int, kCount>& parts) {
    CVirtualMachineExec* exec = context.GetVMExec();
    if (exec == nullptr) return CallStatus::Failed;
    for (std::size_t i = 0; i < kCount; ++i) {
        context.SetArgumentIndex(static_cast<int>(i) + 2);
        const CValue& pointer = arguments[2 + 2 * i];
        if (!exec->SetIntegerValueViaPointer(log, pointer, static_cast<short>(parts[i]))) return CallStatus::Failed;
    }
    return CallStatus::Continue;
}

CallStatus ConcatDate(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                      CValue* arguments, CValue& result) {
    std::array<int, 3> parts{};
    if (!ReadParts(log, context, arguments, parts)) return CallStatus::Failed;
    const auto [year, month, day] = parts;
    CTNTimestamp date;
    if (!date.SetDate(year, month, day)) {
        context.SetArgumentIndex(0);
        return StatusOf(Fail<Message::InvalidDateValue>(log, context, year, month, day));
    }
    result.SetInteger(date.GetVMTimeMS() / kMillisecondsPerDay, ElementaryType::Date);
    return CallStatus::Continue;
}

/// The parts are added up whatever they are: 25 hours are no error.
CallStatus ConcatTimeOfDay(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                           CValue* arguments, CValue& result) {
    std::array<int, 4> parts{};
    if (!ReadParts(log, context, arguments, parts)) return CallStatus::Failed;
    constexpr std::array<std::uint32_t, 4> kMillisecondsPerPart = {3'600'000, 60'000, 1'000, 1};
    std::uint32_t milliseconds = 0;  // wraps
    for (std::size_t i = 0; i < parts.size(); ++i)
        milliseconds += static_cast<std::uint32_t>(parts[i]) * kMillisecondsPerPart[i];
    result.SetInteger(milliseconds, ElementaryType::TimeOfDay);
    return CallStatus::Continue;
}

CallStatus ConcatDateTime(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                          CValue* arguments, CValue& result) {
    std::array<int, 7> parts{};
    if (!ReadParts(log, context, arguments, parts)) return CallStatus::Failed;
    const auto [year, month, day, hour, minute, second, millisecond] = parts;
    CTNTimestamp timestamp;
    if (!timestamp.SetDateAndHHMMSSFFF(year, month, day, hour, minute, second, millisecond))
        return StatusOf(
            Fail<Message::InvalidDateTimeValue>(log, context, year, month, day, hour, minute, second, millisecond));
    result.SetTimestamp(timestamp);
    return CallStatus::Continue;
}

CallStatus SplitDate(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                     CValue* arguments, CValue& /*result*/) {
    TimestampStruct fields{};
    if (!ReadFields(log, context, arguments, fields)) return CallStatus::Failed;
    return WriteParts(log, context, arguments, std::array{fields.year, fields.month, fields.day});
}

CallStatus SplitTimeOfDay(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                          CValue* arguments, CValue& /*result*/) {
    std::array<int, 1> parts{};
    if (!ReadParts(log, context, arguments, parts)) return CallStatus::Failed;
    const int milliseconds = parts[0];
    return WriteParts(log, context, arguments,
                      std::array{milliseconds / 3'600'000, milliseconds % 3'600'000 / 60'000,
                                 milliseconds % 60'000 / 1'000, milliseconds % 1'000});
}

CallStatus SplitDateTime(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                         CValue* arguments, CValue& /*result*/) {
    TimestampStruct fields{};
    if (!ReadFields(log, context, arguments, fields)) return CallStatus::Failed;
    return WriteParts(log, context, arguments,
                      std::array{fields.year, fields.month, fields.day, fields.hour, fields.minute, fields.second,
                                 fields.millisecond});
}

CallStatus DayOfWeek(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char /*argumentCount*/,
                     CValue* arguments, CValue& result) {
    TimestampStruct fields{};
    if (!ReadFields(log, context, arguments, fields)) return CallStatus::Failed;
    result.SetInteger(fields.dayOfWeek, ElementaryType::Int);
    return CallStatus::Continue;
}

constexpr auto kRefused = SurplusArguments::Refused;

// Message 242 asks a SPLIT function's callers for parameters, not for argument values: one for IN and one for each
// output. SPLIT_DT has always asked for one too few.
constexpr FunctionRow kRows[] = {
    {1, "CONCAT_DATE", 3, 3, kRefused, "YEAR, MONTH, DAY", "DATE", ConcatDate},
    {2, "CONCAT_TOD", 4, 4, kRefused, "HOUR, MINUTE, SECOND, MILLISECOND", "TIME_OF_DAY: their sum", ConcatTimeOfDay},
    {3, "CONCAT_DT", 7, 7, kRefused, "YEAR, MONTH, DAY, HOUR, MINUTE, SECOND, MILLISECOND", "DATE_AND_TIME",
     ConcatDateTime},
    {4, "SPLIT_DATE", 7, 7, kRefused, "IN, YEAR, MONTH, DAY", "none; all but IN are INT outputs", SplitDate, 4},
    {5, "SPLIT_TOD", 9, 9, kRefused, "IN, HOUR, MINUTE, SECOND, MILLISECOND", "none; all but IN are INT outputs",
     SplitTimeOfDay, 5},
    {6, "SPLIT_DT", 15, 15, kRefused, "IN, YEAR, MONTH, DAY, HOUR, MINUTE, SECOND, MILLISECOND",
     "none; all but IN are INT outputs", SplitDateTime, 7},
    {7, "DAY_OF_WEEK", 1, 1, kRefused, "IN", "INT: 0 Sunday to 6 Saturday", DayOfWeek},
};
static_assert(HasConsecutiveIds(kRows));

}  // namespace

std::span<const FunctionRow> VMFuncDateTime::GetTable() noexcept {
    return kRows;
}

CallStatus VMFuncDateTime::ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context,
                                           unsigned char argumentCount, CValue* arguments, CValue& result) {
    return CallFunction(kRows, kGroupWord, log, context, argumentCount, arguments, result);
}

const char* VMFuncDateTime::GetFunctionName(unsigned char id) const {
    return FindFunctionName(kRows, id);
}
