#include "functions/BuiltInFunctions.h"

#include "diag/Messages.h"
#include "functions/FunctionContext.h"
#include "functions/FunctionTable.h"

using tn61131::Fail;

namespace {

/// The object of a group; null for an empty slot and for a number that has none.
template <typename Group, std::size_t kCount>
Group* FindGroup(const std::array<Group*, kCount>& groups, unsigned char number) noexcept {
    const std::size_t index = static_cast<std::size_t>(number) - 1;
    return index < kCount ? groups[index] : nullptr;
}

/// Says why a group has no object. Always false.
bool FailMissingGroup(CErrorLog& log, const ErrorLocation& location, std::size_t groupCount, unsigned char number) {
    if (number == 0 || number > groupCount) return Fail<Message::InvalidFunctionGroup>(log, location, number);
    return Fail<Message::FunctionGroupNotSupported>(log, location, number);
}

}  // namespace

bool CVMFunc::IsInvariant(unsigned char /*id*/) const {
    return true;
}

void CVMFunc::LogInvalidFunctionArgumentCount(CErrorLog& log, const ErrorLocation& location, int expected) {
    Fail<Message::ArgumentCount>(log, location, expected);
}

void CVMFunc::LogInvalidFunctionCode(CErrorLog& log, const ErrorLocation& location, const char* groupWord,
                                     unsigned char id) {
    Fail<Message::InvalidFunctionCode>(log, location, groupWord, id);
}

CVMFunctionBlock::~CVMFunctionBlock() = default;

CBuiltInFunctions::CBuiltInFunctions() noexcept : functionGroups_{}, blockGroups_{} {
    for (const FunctionGroup& group : GetFunctionGroups())
        RegisterFunctionGroup(group.number, group.functions);
    for (const BlockGroup& group : GetBlockGroups())
        RegisterFunctionBlockGroup(group.number, group.blocks);
}

void CBuiltInFunctions::RegisterFunctionGroup(unsigned char group, CVMFunc* functions) noexcept {
    if (group >= 1 && group <= kFunctionGroups) functionGroups_[group - 1U] = functions;
}

void CBuiltInFunctions::RegisterFunctionBlockGroup(unsigned char group, CVMFunctionBlock* blocks) noexcept {
    if (group >= 1 && group <= kBlockGroups) blockGroups_[group - 1U] = blocks;
}

CallStatus CBuiltInFunctions::Execute(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                                      CValue* arguments, CValue& result) {
    CVMFunc* functions = FindGroup(functionGroups_, context.GetFunctionGroup());
    if (functions == nullptr) {
        FailMissingGroup(log, context, kFunctionGroups, context.GetFunctionGroup());
        return CallStatus::Failed;
    }
    return functions->ExecuteFunction(log, context, argumentCount, arguments, result);
}

CallStatus CBuiltInFunctions::ExecuteFunctionBlock(CVirtualMachineExec& exec, CBuiltInFunctionContext& context,
                                                   CMemoryRef& instance, unsigned int dataSize,
                                                   unsigned char inputCount, CValue* inputs, CErrorLog& log) {
    CVMFunctionBlock* blocks = FindGroup(blockGroups_, context.GetFunctionGroup());
    if (blocks == nullptr) {
        FailMissingGroup(log, context, kBlockGroups, context.GetFunctionGroup());
        return CallStatus::Invalid;
    }
    const unsigned int expectedSize = blocks->GetDataSize(context.GetFunctionId());
    if (dataSize != expectedSize) {
        Fail<Message::BlockDataSize>(log, context, expectedSize, dataSize);
        return CallStatus::Invalid;
    }
    return blocks->ExecuteFunctionBlock(exec, context, instance, dataSize, inputCount, inputs, log);
}

bool CBuiltInFunctions::IsInvariant(CBuiltInFunctionContext& context) const {
    const CVMFunc* functions = FindGroup(functionGroups_, context.GetFunctionGroup());
    return functions != nullptr && functions->IsInvariant(context.GetFunctionId());
}

const char* CBuiltInFunctions::GetFunctionName(unsigned char group, unsigned char id) const {
    const CVMFunc* functions = FindGroup(functionGroups_, group);
    return functions == nullptr ? nullptr : functions->GetFunctionName(id);
}

const char* CBuiltInFunctions::GetFunctionBlockName(unsigned char group, unsigned char id) const {
    const CVMFunctionBlock* blocks = FindGroup(blockGroups_, group);
    return blocks == nullptr ? nullptr : blocks->GetName(id);
}

unsigned int CBuiltInFunctions::GetFunctionBlockDataSize(unsigned char group, unsigned char id) const {
    const CVMFunctionBlock* blocks = FindGroup(blockGroups_, group);
    return blocks == nullptr ? 0 : blocks->GetDataSize(id);
}
