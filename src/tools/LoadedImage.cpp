#include "tools/LoadedImage.h"

#include "platform/BinaryStream.h"
#include "platform/ErrorLog.h"
#include "tools/FileContent.h"

namespace tn61131 {
namespace {

bool Refuse(std::vector<ImageError>& errors, std::string text) {
    errors.push_back({0, {}, std::move(text)});
    return false;
}

}  // namespace

bool LoadedImage::Load(const std::string& path, const RunOptions& options, std::vector<ImageError>& errors) {
    path_ = path;
    return LoadMachine(errors) && ChooseEntry(options, errors) && LoadTags(options, errors) && LoadMap(options, errors);
}

bool LoadedImage::LoadMachine(std::vector<ImageError>& errors) {
    std::string content;
    if (!ReadFileContent(path_, content)) return Refuse(errors, "The file cannot be read.");
    CBinaryInputMemory input({reinterpret_cast<const unsigned char*>(content.data()), content.size()});
    CErrorLog log;
    if (!machine_.LoadVMImage(log, input)) {
        for (const CErrorLog::Entry& entry : log.GetEntries())
            errors.push_back({entry.id, entry.location, entry.text});
        if (errors.empty()) return Refuse(errors, "The image cannot be loaded.");
        return false;
    }
    // The tables at an image's end report nothing themselves when the stream ends inside them.
    if (input.HasFailed()) return Refuse(errors, "The image is truncated.");
    globalData_ = machine_.GetGlobalData();
    return true;
}

bool LoadedImage::ChooseEntry(const RunOptions& options, std::vector<ImageError>& errors) {
    if (options.program) {
        entryName_ = "program " + *options.program;
        return machine_.FindProgram(*options.program, entryOffset_) ||
               Refuse(errors, "The image has no program '" + *options.program + "'.");
    }
    if (options.expression) {
        entryName_ = "expression " + std::to_string(*options.expression);
        return machine_.FindExpression(*options.expression, entryOffset_) ||
               Refuse(errors, "The image has no expression " + std::to_string(*options.expression) + ".");
    }
    if (options.codeBlock) {
        entryName_ = "code block " + std::to_string(*options.codeBlock);
        return machine_.FindStandaloneCodeBlock(*options.codeBlock, entryOffset_) ||
               Refuse(errors, "The image has no code block " + std::to_string(*options.codeBlock) + ".");
    }
    if (!machine_.GetPrograms().empty()) {
        const auto& [name, entryPoint] = *machine_.GetPrograms().begin();
        entryName_ = "program " + name;
        entryOffset_ = entryPoint.codeOffset;
        return true;
    }
    if (!machine_.GetExpressions().empty()) {
        const auto& [id, codeOffset] = *machine_.GetExpressions().begin();
        entryName_ = "expression " + std::to_string(id);
        entryOffset_ = codeOffset;
        return true;
    }
    return Refuse(errors, "The image has neither a program nor an expression.");
}

bool LoadedImage::LoadTags(const RunOptions& options, std::vector<ImageError>& errors) {
    if (options.tagsFile.empty()) return true;
    std::string content;
    if (!ReadFileContent(options.tagsFile, content)) {
        return Refuse(errors, "The tags file '" + options.tagsFile + "' cannot be read.");
    }
    std::string error;
    hasTags_ = tags_.Load(content, error);
    return hasTags_ || Refuse(errors, "Tags file '" + options.tagsFile + "': " + error);
}

/// A map that nobody asked for may be missing or damaged: the image runs without names then.
bool LoadedImage::LoadMap(const RunOptions& options, std::vector<ImageError>& errors) {
    const std::string mapFile = options.mapFile.empty() ? CSymbolMap::GetDefaultFileName(path_) : options.mapFile;
    std::string content;
    std::string error = "it cannot be read";
    hasMap_ = ReadFileContent(mapFile, content) && map_.Load(content, error);
    if (!hasMap_ && (!options.mapFile.empty() || !options.watch.empty() || !options.traceFile.empty())) {
        return Refuse(errors, "Symbol map '" + mapFile + "': " + error + ".");
    }
    return options.watch.empty() || FindWatched(map_, options.watch, watched_, error) || Refuse(errors, error);
}

}  // namespace tn61131
