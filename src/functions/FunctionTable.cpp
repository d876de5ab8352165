#include "functions/FunctionTable.h"

bool CheckArgumentCount(CErrorLog& log, const ErrorLocation& location, const FunctionRow& row,
                        unsigned char argumentCount) {
    const bool tooMany = row.surplus == SurplusArguments::Refused && argumentCount > row.maxCount;
    if (argumentCount >= row.minCount && !tooMany) return true;
    CVMFunc::LogInvalidFunctionArgumentCount(log, location, row.statedCount != 0 ? row.statedCount : row.minCount);
    return false;
}

CallStatus CallFunction(const FunctionRow& row, CErrorLog& log, CBuiltInFunctionContext& context,
                        unsigned char argumentCount, CValue* arguments, CValue& result) {
    if (!CheckArgumentCount(log, context, row, argumentCount)) return CallStatus::Failed;
    return row.body(log, context, argumentCount, arguments, result);
}

// Add a group of functions here: its object and its row. The registry of every context starts with these.
std::span<const FunctionGroup> GetFunctionGroups() noexcept {
    return {};
}

std::span<const BlockGroup> GetBlockGroups() noexcept {
    return {};
}
