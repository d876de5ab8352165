// Loads any bytes as an image and runs every entry point of it: nothing may be read or written outside what the library
// owns, whatever the image says.
#include <cstdint>
#include <span>

#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "platform/ErrorLog.h"
#include "vm/DirectlyLocatedVariables.h"
#include "vm/MemoryRef.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace {

constexpr unsigned int kInstructionLimit = 2000;
constexpr int kScans = 2;
constexpr int kResumes = 3;

/// Tag 7, 16 bytes.
class Tags final : public CDirectlyLocatedVariables {
 public:
    Tags() { data_.AllocateNewData(16); }
    bool GetTagType(unsigned int, DirectlyLocatedType&) const override { return false; }
    bool ResolveTagAddress(const PointerValue* pointer, unsigned int size, CMemoryRef& out) const override {
        if (pointer->offset != 7 || !data_.IsDataWithinBlock(pointer->frame, size)) return false;
        out = CMemoryRef(data_, pointer->frame);
        return true;
    }

 private:
    CMemoryBlock data_;
};

void RunFrom(CVirtualMachineExec& exec, unsigned int codeOffset) {
    for (long long scan = 0; scan < kScans; ++scan) {
        CErrorLogToNull log;
        const long long timestamp = 1000 + 100 * scan;
        exec.StartNewProgram(codeOffset, kInstructionLimit, 0, &timestamp);
        RunResult result = RunResult::Suspended;
        for (int run = 0; run < kResumes && result == RunResult::Suspended; ++run)
            result = exec.ExecuteUntilCompleteOrSuspended(log);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CBinaryInputMemory input({data, size});
    CErrorLogToNull log;
    CVirtualMachine image;
    if (!image.LoadVMImage(log, input)) return 0;
    CMemoryBlock globalData = image.GetGlobalData();
    const CClientAccessContext access;
    Tags tags;
    CVirtualMachineExec exec(access, "", &image, &globalData, &tags);
    RunFrom(exec, 0);
    for (const auto& [name, program] : image.GetPrograms())
        RunFrom(exec, program.codeOffset);
    for (const auto& [id, codeOffset] : image.GetExpressions())
        RunFrom(exec, codeOffset);
    for (const auto& [id, codeOffset] : image.GetStandaloneCodeBlocks())
        RunFrom(exec, codeOffset);
    return 0;
}
