// Any text as declarations: whatever it says, types have sizes within the limits, and everything that has a place lies
// within the memory that it is placed in. First byte: the profile; the rest is the source.
#include <cstdlib>
#include <string>
#include <vector>

#include "compiler/Checker.h"
#include "compiler/Declarations.h"
#include "compiler/Parser.h"

namespace {

using namespace tn61131::st;

// Memory that a case may take; larger variables are legal but slow to write.
constexpr std::uint32_t kMaxWritten = 0x100000;

void CheckPlace(const Project& project, const Variable& variable) {
    if (variable.type == nullptr || !variable.type->isComplete || variable.type->size > kMaxTypeSize) abort();
    const std::uint64_t end = std::uint64_t{variable.storage.offset} + variable.type->size;
    if (variable.storage.kind == StorageKind::Global && end > project.globalData.size()) abort();
    if (variable.storage.kind == StorageKind::Constant && end > project.constants.size()) abort();
    if (variable.storage.kind == StorageKind::Instance && variable.owner != nullptr &&
        variable.owner->kind == ast::PouKind::FunctionBlock && end > variable.owner->type->size) {
        abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size == 0 || size > 20000) return 0;
    CompileOptions options;
    if (!SetProfile((data[0] & 1) != 0 ? "codesys" : "iec", options)) abort();
    SourceManager sources;
    std::uint32_t file = 0;
    if (!sources.AddFile("a.st", std::string(reinterpret_cast<const char*>(data) + 1, size - 1), file)) return 0;
    Diagnostics diagnostics(sources);
    Project project(sources, options, diagnostics);
    Checker checker(project);
    Declarations declarations(project, checker);
    checker.SetDeclarations(declarations);
    const std::vector<ast::SourceUnit*> units = {
        ParseFile(sources, file, options.switches, project.names, project.arena, diagnostics)};
    declarations.Enter(units);
    declarations.Resolve();
    declarations.Finish();
    if (diagnostics.HasErrors()) return 0;
    for (const Variable& variable : project.variables) {
        CheckPlace(project, variable);
        if (variable.type->size > kMaxWritten) continue;
        std::vector<unsigned char> bytes(variable.type->size);
        declarations.WriteInitial(variable.type, variable.initial, bytes);
    }
    return 0;
}
