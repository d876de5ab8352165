// Sources of structured text in every role: whatever they hold, there is a tree to print and every message has a place.
// The first byte selects switches and role.

#include <cstdint>
#include <cstdlib>

#include "compiler/AstPrint.h"
#include "compiler/Parser.h"

using namespace tn61131::st;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    Switches switches;
    switches.hints = (data[0] & 1) != 0;
    switches.nestedComments = (data[0] & 2) != 0;
    SourceManager sources;
    NameTable names;
    Arena arena;
    Diagnostics diagnostics(sources);
    std::uint32_t file = 0;
    if (!sources.AddFile("a.st", std::string(reinterpret_cast<const char*>(data) + 1, size - 1), file)) return 0;
    const std::size_t textSize = sources.GetText(file).size();
    switch (data[0] >> 6) {
        case 0:
            (void)PrintExpression(names, ParseExpressionFile(sources, file, switches, names, arena, diagnostics));
            break;
        case 1:
            (void)PrintStatements(names, ParseStatementsFile(sources, file, switches, names, arena, diagnostics));
            break;
        default: (void)PrintUnit(names, *ParseFile(sources, file, switches, names, arena, diagnostics)); break;
    }
    for (const Diagnostic& diagnostic : diagnostics.Sort()) {
        const SourceRange range = diagnostic.range;
        const bool isInside = range.begin >= sources.GetStart(file) && range.begin <= range.end &&
                              range.end <= sources.GetStart(file) + textSize;
        if (!isInside || FormatDiagnostic(sources, diagnostic).empty()) std::abort();
    }
    return 0;
}
