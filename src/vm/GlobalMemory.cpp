#include "vm/GlobalMemory.h"

#include "diag/Messages.h"
#include "platform/Time.h"
#include "vm/DirectlyLocatedVariables.h"
#include "vm/MemoryRef.h"

using tn61131::Fail;

CVirtualMachineGlobalMem::~CVirtualMachineGlobalMem() = default;

void CVirtualMachineGlobalMem::SetCurrentTimestamp(const long long* milliseconds) noexcept {
    if (milliseconds != nullptr) {
        timestampMS_ = *milliseconds;
        return;
    }
    CTNTimestamp now;
    now.SetUTC();
    timestampMS_ = now.GetVMTimeMS();
}

InstructionResult CVirtualMachineGlobalMem::GetGlobalPointerAddress(CErrorLog& log, const ErrorLocation& location,
                                                                    const PointerValue* pointer, unsigned int size,
                                                                    CMemoryRef& out) const {
    const auto resolve = [&] {
        switch (pointer->location) {
            case LocationKind::Null: return Fail<Message::NullPointer>(log, location);
            case LocationKind::Global:
            case LocationKind::GlobalConstant:
                out = CMemoryRef(*(pointer->location == LocationKind::Global ? globalData_ : constants_),
                                 pointer->offset);
                if (!out.IsDataWithinBlock(0, size)) {
                    char text[PointerValue::kTextSize];
                    return Fail<Message::AccessViolation>(log, location, pointer->FormatPointerValue(text));
                }
                return true;
            case LocationKind::Tag:
                if (locatedVariables_ == nullptr) {
                    return Fail<Message::NoDirectlyLocatedVariables>(log, location, pointer->frame, pointer->offset);
                }
                out = CMemoryRef();  // nothing old must pass for the provider's answer
                if (!locatedVariables_->ResolveTagAddress(pointer, size, out)) {
                    return Fail<Message::InvalidTagAddress>(log, location, pointer->frame, pointer->offset);
                }
                return true;
            default: return Fail<Message::InvalidAddressType>(log, location, pointer->location);
        }
    };
    return resolve() ? InstructionResult::Continue : InstructionResult::Failed;
}
