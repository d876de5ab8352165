// Sources of structured text: what compiles loads and runs, whatever the text is. The first and the last byte select
// the profile and the passes, and are part of the text all the same, so that any program is a seed; U+001E separates
// files.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "compiler/Compiler.h"
#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace st = tn61131::st;

namespace {

constexpr unsigned kScans = 3;
constexpr unsigned kInstructionLimit = 3000;

void Run(const st::CompileResult& compiled) {
    const std::vector<unsigned char> bytes = CImageWriter::Write(compiled.image);
    CBinaryInputMemory input(bytes);
    CErrorLog log;
    CVirtualMachine machine;
    if (!machine.LoadVMImage(log, input)) std::abort();
    CMemoryBlock memory = machine.GetGlobalData();
    const CClientAccessContext access("fuzz");
    CVirtualMachineExec exec(access, "fuzz", &machine, &memory, nullptr);
    exec.SetLimits(
        {.maxFrames = 1000, .maxStackEntries = 10'000, .maxTempData = 16 * 1024 * 1024, .maxValueData = 1024 * 1024});
    long long time = 1000;
    for (unsigned scan = 0; scan < kScans; ++scan) {
        for (const ImageContent::Program& program : compiled.image.programs) {
            exec.StartNewProgram(program.codeOffset, kInstructionLimit, 0, &time);
            (void)exec.ExecuteUntilCompleteOrSuspended(log);
        }
        time += 100;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    st::CompileOptions options;
    std::string error;
    if (!st::SetProfile((data[0] & 1) != 0 ? "codesys" : "iec", options)) return 0;
    if (!st::SetSwitch((data[size - 1] & 1) != 0 ? "optimise=none" : "optimise=all", options, error)) return 0;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::vector<st::SourceText> sources;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('\x1E', begin), text.size());
        sources.push_back(
            {"file" + std::to_string(sources.size()) + ".st", std::string(text.substr(begin, end - begin))});
        begin = end + 1;
    }
    const st::CompileResult compiled = st::Compile(std::move(sources), options);
    for (const st::Diagnostic& diagnostic : compiled.diagnostics) {
        if (st::FormatDiagnostic(compiled.sources, diagnostic).empty()) std::abort();
        // What has an error has no image, and what has none has one.
        if (diagnostic.severity == st::Severity::Error && compiled.succeeded) std::abort();
    }
    if (compiled.succeeded) Run(compiled);
    return 0;
}
