// Lists any bytes as code, and decodes them once more with a driver that hands over what it was asked for, byte by
// byte.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "functions/BuiltInFunctions.h"
#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "platform/ErrorLog.h"
#include "platform/TextOutput.h"
#include "vm/Disassembler.h"
#include "vm/Opcodes.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace {

void ListCode(std::span<const std::uint8_t> code) {
    std::vector<unsigned char> section(sizeof(std::uint32_t));
    const auto length = static_cast<std::uint32_t>(code.size());
    std::memcpy(section.data(), &length, sizeof(length));
    section.insert(section.end(), code.begin(), code.end());
    CBinaryInputMemory input(section);
    CErrorLogToNull log;
    CVirtualMachine image;
    image.LoadCode(log, input);
    CMemoryBlock globalData;
    const CClientAccessContext access;
    CVirtualMachineExec exec(access, "", &image, &globalData, nullptr);
    CTextOutputString listing;
    (void)exec.DisassembleCode(0, listing);
}

/// Decodes one instruction; how many bytes it took, 0 for none.
std::size_t DecodeBytewise(const CBuiltInFunctions& functions, std::span<const std::uint8_t> code) {
    CTextOutputString listing;
    CDisassembler disassembler(functions, 0, &listing);
    int needed = disassembler.FirstByte(code[0]);
    std::size_t at = 1;
    for (; needed > 0 && at < code.size(); ++at)
        needed = disassembler.MoreBytes(&code[at], 1);
    return needed == 0 ? at : 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::span<const std::uint8_t> rest(data, size);
    ListCode(rest);
    const CBuiltInFunctions functions;
    while (!rest.empty()) {
        const std::size_t length = DecodeBytewise(functions, rest);
        if (length == 0) break;
        if (length != InstructionLength(rest)) std::abort();
        rest = rest.subspan(length);
    }
    return 0;
}
