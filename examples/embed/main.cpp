// A host in one file: it makes a tiny image in memory, offers one tag, and runs the program over a few scans. A real
// host reads the image that a compiler or `tn61131 asm` wrote.

#include <cstdio>
#include <vector>

#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "platform/ErrorLog.h"
#include "platform/TextOutput.h"
#include "vm/DirectlyLocatedVariables.h"
#include "vm/MemoryRef.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace {

/// The tags of this host: one DINT with the id 7.
class Tags final : public CDirectlyLocatedVariables {
 public:
    static constexpr unsigned int kSpeed = 7;

    Tags() { speed_.AllocateNewData(4); }
    void SetSpeed(int value) { CMemoryRef(speed_, 0).SetDINTAtOffset(0, value); }

    bool GetTagType(unsigned int tagId, DirectlyLocatedType& type) const override {
        if (tagId == kSpeed) type = DirectlyLocatedType{.type = ElementaryType::DInt, .readOnly = false};
        return tagId == kSpeed;
    }
    bool ResolveTagAddress(const PointerValue* pointer, unsigned int size, CMemoryRef& out) const override {
        // Of a tag's pointer, `offset` is the tag's id and `frame` the byte within it.
        if (pointer->offset != kSpeed || !speed_.IsDataWithinBlock(pointer->frame, size)) return false;
        out = CMemoryRef(speed_, pointer->frame);
        return true;
    }

 private:
    CMemoryBlock speed_;
};

/// total := total + speed, with `total` a DINT at offset 0 of the global data.
const std::vector<unsigned char> kCode = {
    2,  1, 0, 0, 0, 0,     // LD ADDR Global: 0
    4,  8, 4, 0,           // PTR LD DINT (4)
    10,                    // PUSH
    3,  0, 0, 7, 0, 0, 0,  // LD TAG ADDR Tag: Id 7 Offset 0
    4,  8, 4, 0,           // PTR LD DINT (4)
    15, 1,                 // ADD
    10,                    // PUSH
    2,  1, 0, 0, 0, 0,     // LD ADDR Global: 0
    5,  8, 4, 0,           // PTR ST DINT (4)
    12,                    // RET
};

void WriteBlock(CBinaryOutput& image, unsigned int dataSize) {
    const std::vector<unsigned char> zeros(dataSize);
    image << dataSize + CMemoryBlock::kGuardSize;
    image.WriteBytes(zeros.data(), zeros.size());
    image.WriteBytes(CMemoryBlock::kGuard, CMemoryBlock::kGuardSize);
}

void WriteImage(CBinaryOutput& image) {
    image << static_cast<unsigned short>(CVirtualMachine::kMagic) << static_cast<unsigned short>(5);
    WriteBlock(image, 4);  // global data
    WriteBlock(image, 0);  // constants
    image << static_cast<unsigned int>(kCode.size());
    image.WriteBytes(kCode.data(), kCode.size());
    image << 1U << std::string("Main") << 0U << 0U;  // one program: its name, code offset, a spare word
    image << 0U << 0U;                               // no expressions, no code blocks
}

}  // namespace

int main() {
    CBinaryOutputBuffer file;
    WriteImage(file);

    CErrorLog log;
    CVirtualMachine machine;
    CBinaryInputMemory input(file.GetData());
    unsigned int codeOffset = 0;
    if (!machine.LoadVMImage(log, input) || input.HasFailed() || !machine.FindProgram("MAIN", codeOffset)) return 1;

    Tags tags;
    CMemoryBlock globalData = machine.GetGlobalData();
    const CClientAccessContext access("embed");
    CVirtualMachineExec exec(access, "", &machine, &globalData, &tags);
    for (int scan = 1; scan <= 3; ++scan) {
        tags.SetSpeed(10 * scan);
        const long long timestampMS = 100 * scan;
        exec.StartNewProgram(codeOffset, CVirtualMachineExec::kDefaultInstructionLimit, 0, &timestampMS);
        if (exec.ExecuteUntilCompleteOrSuspended(log) != RunResult::Completed) {
            for (const CErrorLog::Entry& entry : log.GetEntries())
                std::printf("error %u: %s\n", entry.id, entry.text.c_str());
            return 1;
        }
        CTextOutputString value;
        exec.GetResultValue().GetDeclaration(value);
        std::printf("scan %d: %s\n", scan, value.GetText().c_str());
    }
    return 0;
}
