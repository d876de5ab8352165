// How a context's instructions, functions and function blocks reach memory through pointer values.
#include "diag/Messages.h"
#include "vm/VirtualMachineExec.h"

using tn61131::Fail;

CMemoryRef CVirtualMachineExec::LocateInFrame(const PointerValue& pointer) const noexcept {
    const Frame& frame = pointer.frame == depth_ ? *running_ : frames_[pointer.frame];
    if (pointer.location == LocationKind::Temp) return {frame.tempData, pointer.offset};
    return {frame.localData, pointer.offset};
}

InstructionResult CVirtualMachineExec::GetPointerAddress(CErrorLog& log, const PointerValue* pointer, unsigned int size,
                                                         CMemoryRef& out) const {
    const ErrorLocation& location = ErrorLocationNull::Get();
    if (pointer->location != LocationKind::Local && pointer->location != LocationKind::Temp) {
        return GetGlobalPointerAddress(log, location, pointer, size, out);
    }
    if (pointer->frame > depth_) {
        Fail<Message::InvalidPointerFrame>(log, location, pointer->frame);
        return InstructionResult::Failed;
    }
    out = LocateInFrame(*pointer);
    if (out.IsDataWithinBlock(0, size)) return InstructionResult::Continue;
    char text[PointerValue::kTextSize];
    Fail<Message::AccessViolation>(log, location, pointer->FormatPointerValue(text));
    return InstructionResult::Failed;
}

InstructionResult CVirtualMachineExec::GetPointerAddressFromStackTop(CErrorLog& log, unsigned int size,
                                                                     CMemoryRef& out) {
    const CValue& top = stack_.back();
    if (top.GetType() != ElementaryType::Pointer) {
        Fail<Message::NotAPointer>(log, ErrorLocationNull::Get(), top.GetType());
        return InstructionResult::Failed;
    }
    const auto pointer = top.GetPayload<PointerValue>();
    return GetPointerAddress(log, &pointer, size, out);
}

bool CVirtualMachineExec::WriteViaPointer(CErrorLog& log, const CValue& pointer, unsigned int checkedSize,
                                          unsigned int writtenSize, const CValue& value) {
    if (pointer.IsUndefined()) return true;
    if (pointer.GetType() != ElementaryType::Pointer) {
        return Fail<Message::InternalLogicError>(log, ErrorLocationNull::Get(), "Pointer value expected");
    }
    const auto address = pointer.GetPayload<PointerValue>();
    CMemoryRef target;
    return GetPointerAddress(log, &address, checkedSize, target) == InstructionResult::Continue &&
           target.SetValueAtOffset(access_, 0, writtenSize, value, ErrorLocationNull::Get(), log) ==
               InstructionResult::Continue;
}

bool CVirtualMachineExec::SetBoolValueViaPointer(CErrorLog& log, const CValue& pointer, bool value) {
    return WriteViaPointer(log, pointer, 1, 1, CValue(value));
}

bool CVirtualMachineExec::SetTimeValueViaPointer(CErrorLog& log, const CValue& pointer, long long value) {
    return WriteViaPointer(log, pointer, 8, 8, CValue(value, ElementaryType::LInt));
}

bool CVirtualMachineExec::SetIntegerValueViaPointer(CErrorLog& log, const CValue& pointer, short value) {
    return WriteViaPointer(log, pointer, 2, 2, CValue(value));
}

bool CVirtualMachineExec::SetUDINTValueViaPointer(CErrorLog& log, const CValue& pointer, unsigned int value) {
    return WriteViaPointer(log, pointer, 2, 4, CValue(value));
}

bool CVirtualMachineExec::SetVMWStringViaPointer(CErrorLog& log, const CValue& pointer, const Utf16String* text) {
    const auto units = GetUnits(text);
    return SetVMWStringViaPointer(log, pointer, static_cast<unsigned int>(units.size()), units.data());
}

bool CVirtualMachineExec::SetVMWStringViaPointer(CErrorLog& log, const CValue& pointer, unsigned int count,
                                                 const unsigned short* units) {
    if (pointer.IsUndefined()) return true;
    CValue text;
    text.SetFromVMWString(units, count);
    const unsigned int size = text.GetRawDataSize();
    return WriteViaPointer(log, pointer, size, size, text);
}

bool CVirtualMachineExec::SetVMWStringViaPointer(CErrorLog& log, const CValue& pointer, const CValue& text) {
    if (pointer.IsUndefined()) return true;
    if (text.GetType() != ElementaryType::WString || pointer.GetType() != ElementaryType::Pointer) return false;
    const unsigned int size = text.GetRawDataSize();
    return WriteViaPointer(log, pointer, size, size, text);
}
