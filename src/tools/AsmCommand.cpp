#include "tools/AsmCommand.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "assembler/Assembler.h"
#include "tools/FileContent.h"
#include "tools/Tool.h"

namespace tn61131 {
namespace {

bool WriteOrReport(const std::string& path, std::string_view content, std::ostream& messages) {
    if (WriteFileContent(path, content)) return true;
    messages << "tn61131: '" << path << "' cannot be written\n";
    return false;
}

}  // namespace

int AssembleFile(const AsmOptions& options, std::ostream& messages) {
    std::string text;
    if (!ReadFileContent(options.source, text)) {
        messages << "tn61131: '" << options.source << "' cannot be read\n";
        return kExitFailure;
    }
    CAssembler assembler;
    AssembledImage result;
    if (!assembler.Assemble(options.source, text, result)) {
        messages << FormatDiagnostics(options.source, assembler.GetDiagnostics());
        return kExitFailure;
    }
    const std::string_view bytes(reinterpret_cast<const char*>(result.bytes.data()), result.bytes.size());
    const bool written = WriteOrReport(options.image, bytes, messages) &&
                         WriteOrReport(CSymbolMap::GetDefaultFileName(options.image), result.symbols.Save(), messages);
    return written ? kExitSuccess : kExitFailure;
}

void AddAsmCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<AsmOptions>();
    CLI::App* command = app.add_subcommand("asm", "Assemble a text listing into an image");
    command->add_option("FILE", options->source, "source file")->required();
    command->add_option("-o,--output", options->image, "image to write; its symbol map goes to IMAGE.map")
        ->type_name("IMAGE")
        ->required();
    command->callback([options, &exitStatus] { exitStatus = AssembleFile(*options, std::cerr); });
}

}  // namespace tn61131
