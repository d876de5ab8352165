#include "functions/FunctionContext.h"

#include "functions/BuiltInFunctions.h"
#include "functions/FormatCache.h"
#include "platform/FormatText.h"

CBuiltInFunctionContext::CBuiltInFunctionContext(const CDataFormatSettings* settings, CVirtualMachineExec* exec,
                                                 CBuiltInFunctions& functions) noexcept
    : settings_(settings), exec_(exec), functions_(functions) {}

CBuiltInFunctionContext::~CBuiltInFunctionContext() = default;

CFormatCache& CBuiltInFunctionContext::GetFormatCache() {
    if (formatCache_ == nullptr) formatCache_ = std::make_unique<CFormatCache>();
    return *formatCache_;
}

unsigned int CBuiltInFunctionContext::PrintLocation(char* buffer, unsigned int size) const {
    const char* name =
        isFunctionBlock_ ? functions_.GetFunctionBlockName(group_, id_) : functions_.GetFunctionName(group_, id_);
    if (name == nullptr) return 0;
    const char* kind = isFunctionBlock_ ? "Function Block" : "Function";
    if (argumentIndex_ != 0) return tn_sprintf(buffer, size, "%s %s Parameter %d", kind, name, argumentIndex_);
    return tn_sprintf(buffer, size, "%s %s", kind, name);
}
