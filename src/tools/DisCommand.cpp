#include "tools/DisCommand.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "assembler/ImageListing.h"
#include "platform/TextOutput.h"
#include "tools/Describe.h"
#include "tools/FileContent.h"
#include "tools/Tool.h"

namespace tn61131 {
namespace {

/// Text that goes straight to a stream.
class StreamTextOutput final : public CTextOutput {
 public:
    explicit StreamTextOutput(std::ostream& stream) noexcept : stream_(stream) {}
    void Write(std::string_view text) override { stream_ << text; }

 private:
    std::ostream& stream_;
};

int Refuse(std::ostream& messages, const std::string& file, const std::string& reason) {
    messages << "tn61131: " << file << ": " << PrintableText(reason) << '\n';
    return kExitFailure;
}

/// A map that nobody asked for may be missing or damaged: the image is listed without names then.
bool LoadMap(const DisOptions& options, CSymbolMap& map, std::string& error) {
    const bool wanted = !options.mapFile.empty();
    std::string content;
    error = "the file cannot be read";
    if (ReadFileContent(wanted ? options.mapFile : CSymbolMap::GetDefaultFileName(options.image), content) &&
        map.Load(content, error))
        return true;
    return !wanted;
}

}  // namespace

int ListImage(const DisOptions& options, std::ostream& output, std::ostream& messages) {
    std::string content;
    if (!ReadFileContent(options.image, content)) return Refuse(messages, options.image, "the file cannot be read");
    const std::span<const unsigned char> bytes(reinterpret_cast<const unsigned char*>(content.data()), content.size());
    ImageContent image;
    std::string error;
    if (!ReadImage(bytes, image, error)) return Refuse(messages, options.image, error);
    CSymbolMap map;
    if (!LoadMap(options, map, error)) return Refuse(messages, options.mapFile, error);
    StreamTextOutput text(output);
    const CImageListing listing(image, &map);
    options.codeOnly ? listing.WriteCode(text) : listing.Write(text);
    return kExitSuccess;
}

void AddDisCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<DisOptions>();
    CLI::App* command = app.add_subcommand("dis", "List an image: blocks, tables and code");
    command->add_option("IMAGE", options->image, "image file")->required();
    command->add_option("--map", options->mapFile, "symbol map; default: IMAGE.map, if there is one")
        ->type_name("FILE");
    command->add_flag("--code-only", options->codeOnly, "only the code");
    command->callback([options, &exitStatus] { exitStatus = ListImage(*options, std::cout, std::cerr); });
}

}  // namespace tn61131
