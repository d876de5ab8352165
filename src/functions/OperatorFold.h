#pragma once

#include "functions/BuiltInFunctions.h"
#include "functions/FunctionContext.h"
#include "value/Value.h"

using BinaryValueOperation = bool (CValue::*)(CErrorLog&, const ErrorLocation&, CValue&);

/// Body of a function of any number of arguments: the operation with each argument behind the first in turn, until one
/// fails. The first argument is in `result` already.
template <BinaryValueOperation kOperation>
CallStatus FoldArguments(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                         CValue* arguments, CValue& result) {
    for (unsigned int i = 1; i < argumentCount; ++i) {
        if (!(result.*kOperation)(log, context, arguments[i])) return CallStatus::Failed;
    }
    return CallStatus::Continue;
}
