#pragma once

#include <cstdint>
#include <memory>

#include "platform/ErrorLog.h"
#include "platform/Export.h"

class CBuiltInFunctions;
class CDataFormatSettings;
class CFormatCache;
class CVirtualMachineExec;

/// The built-in call in progress; as an error location it names the function and the parameter at fault. One for each
/// execution context.
class TN61131_API CBuiltInFunctionContext final : public ErrorLocation {
 public:
    /// `settings` and `exec` may be null; nothing is owned.
    CBuiltInFunctionContext(const CDataFormatSettings* settings, CVirtualMachineExec* exec,
                            CBuiltInFunctions& functions) noexcept;
    CBuiltInFunctionContext(const CBuiltInFunctionContext&) = delete;
    CBuiltInFunctionContext& operator=(const CBuiltInFunctionContext&) = delete;
    ~CBuiltInFunctionContext() override;

    /// Names the call that follows and forgets the argument index.
    void SetCurrentFunction(unsigned int callPosition, bool isFunctionBlock, unsigned char group,
                            unsigned char id) noexcept {
        callPosition_ = callPosition;
        isFunctionBlock_ = isFunctionBlock;
        group_ = group;
        id_ = id;
        argumentIndex_ = 0;
    }
    /// The 1-based number of the argument being processed; 0 for none in particular.
    void SetArgumentIndex(int index) noexcept { argumentIndex_ = index; }
    [[nodiscard]] unsigned int GetCallPosition() const noexcept { return callPosition_; }
    [[nodiscard]] unsigned char GetFunctionGroup() const noexcept { return group_; }
    [[nodiscard]] unsigned char GetFunctionId() const noexcept { return id_; }
    [[nodiscard]] CVirtualMachineExec* GetVMExec() const noexcept { return exec_; }
    [[nodiscard]] const CDataFormatSettings* GetDataFormatSettings() const noexcept { return settings_; }
    /// The patterns that functions called through this context have used; made when first asked for.
    [[nodiscard]] CFormatCache& GetFormatCache();

    /// "Function LEFT Parameter 2", "Function Block TON"; nothing for a function without a name.
    unsigned int PrintLocation(char* buffer, unsigned int size) const override;

 private:
    const CDataFormatSettings* settings_;
    CVirtualMachineExec* exec_;
    CBuiltInFunctions& functions_;
    std::unique_ptr<CFormatCache> formatCache_;
    unsigned int callPosition_ = 0;
    bool isFunctionBlock_ = false;
    unsigned char group_ = 0;
    unsigned char id_ = 0;
    int argumentIndex_ = 0;
};
