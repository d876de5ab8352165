#pragma once

#include <string>

#include "platform/ClientAccess.h"
#include "value/Value.h"
#include "vm/MemoryBlock.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace function_test {

/// An execution context over an empty image, with global data that pointers can reach: what functions and function
/// blocks need of a machine.
class TestMachine {
 public:
    explicit TestMachine(unsigned int globalSize = 256) { globals_.AllocateNewData(globalSize); }

    CVirtualMachineExec& GetExec() { return exec_; }
    CMemoryBlock& GetGlobals() { return globals_; }
    /// VM time in milliseconds.
    void SetTime(long long timeMs) { exec_.SetCurrentTimestamp(&timeMs); }
    /// A pointer into the global data.
    static CValue PointerTo(unsigned int offset) {
        CValue pointer;
        pointer.SetAddress(static_cast<unsigned short>(LocationKind::Global), 0, offset);
        return pointer;
    }
    CValue Read(unsigned int offset, ElementaryType type) const {
        CValue value;
        globals_.GetValueAtOffset(offset, type, GetTypeInfo(type).size, value);
        return value;
    }

 private:
    CClientAccessContext access_{"test"};
    CVirtualMachine image_;
    CMemoryBlock globals_;
    CVirtualMachineExec exec_{access_, "test", &image_, &globals_, nullptr};
};

}  // namespace function_test
