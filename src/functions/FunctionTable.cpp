#include "functions/FunctionTable.h"

#include "functions/ArithmeticFunctions.h"
#include "functions/BitstringFunctions.h"
#include "functions/BitwiseFunctions.h"
#include "functions/ComparisonFunctions.h"
#include "functions/DateTimeFunctions.h"
#include "functions/NumericFunctions.h"
#include "functions/SelectionFunctions.h"
#include "functions/StandardFunctionBlocks.h"
#include "functions/StringFunctions.h"
#include "functions/SystemFunctions.h"
#include "functions/ToStringFunctions.h"
#include "functions/TypeConversionFunctions.h"

namespace {

/// The one object of a group. It has no state, so all registries share it.
template <typename Group>
constinit Group groupObject{};

template <typename Group>
FunctionGroup DescribeGroup() noexcept {
    return {Group::kGroupNumber, Group::kGroupWord, Group::GetTable(), &groupObject<Group>};
}

}  // namespace

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

CallStatus CallFunction(std::span<const FunctionRow> rows, const char* groupWord, CErrorLog& log,
                        CBuiltInFunctionContext& context, unsigned char argumentCount, CValue* arguments,
                        CValue& result) {
    const FunctionRow* row = FindFunction(rows, context.GetFunctionId());
    if (row == nullptr) {
        CVMFunc::LogInvalidFunctionCode(log, context, groupWord, context.GetFunctionId());
        return CallStatus::Invalid;
    }
    return CallFunction(*row, log, context, argumentCount, arguments, result);
}

// clang-format off
std::span<const FunctionGroup> GetFunctionGroups() noexcept {
    // A further group is one line here: every registry starts with these.
    static const FunctionGroup groups[] = {
        DescribeGroup<CVMFuncNumeric>(),
        DescribeGroup<CVMFuncArithmetic>(),
        DescribeGroup<CVMFuncBitstring>(),
        DescribeGroup<CVMFuncBitwiseBoolean>(),
        DescribeGroup<CVMFuncSelection>(),
        DescribeGroup<CVMFuncComparison>(),
        DescribeGroup<CVMFuncString>(),
        DescribeGroup<CVMFuncTypeConv>(),
        DescribeGroup<CVMFuncToString>(),
        DescribeGroup<CVMFuncSys>(),
        DescribeGroup<VMFuncDateTime>(),
    };
    return groups;
}
// clang-format on

std::span<const BlockGroup> GetBlockGroups() noexcept {
    static const BlockGroup groups[] = {
        {CVMFunctionBlockStandard::kGroupNumber, CVMFunctionBlockStandard::GetTable(),
         &groupObject<CVMFunctionBlockStandard>},
    };
    return groups;
}
