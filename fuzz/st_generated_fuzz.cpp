// Programs made from the bytes: each compiles, with and without the optimiser, and does what the interpreter of the
// tests says.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

#include "random_programs/ProgramCheck.h"
#include "random_programs/ProgramGenerator.h"

using namespace random_programs;
namespace st = tn61131::st;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const bool isCodesys = (data[0] & 1) != 0;
    ProgramOptions options{.promotesTo32Bits = isCodesys, .mixesBits = isCodesys};
    options.depth = 1 + (data[0] >> 1) % 5;
    options.statements = 1 + data[1] % 20;
    Choices choices(std::span(data, size).subspan(2));
    Program program;
    GenerateProgram(choices, options, program);
    const ProgramCheck check(program, 2);
    if (!check.IsShort()) return 0;
    for (const char* passes : {"optimise=all", "optimise=none"}) {
        st::CompileOptions compileOptions;
        std::string error;
        if (!st::SetProfile(isCodesys ? "codesys" : "iec", compileOptions) ||
            !st::SetSwitch(passes, compileOptions, error))
            std::abort();
        const std::string wrong = check.Run(compileOptions);
        if (wrong.empty()) continue;
        std::fprintf(stderr, "%s %s\n%s", passes, wrong.c_str(), check.GetText().c_str());
        std::abort();
    }
    return 0;
}
