#include "tools/LoadedImage.h"

#include "assembler/Image.h"
#include "compiler/Compiler.h"
#include "platform/BinaryStream.h"
#include "platform/ErrorLog.h"
#include "tools/FileContent.h"
#include "tools/ProjectFiles.h"

namespace tn61131 {
namespace {

bool Refuse(std::vector<ImageError>& errors, std::string text) {
    errors.push_back({0, {}, std::move(text)});
    return false;
}

/// "FILE:LINE:COLUMN"; empty without a place.
std::string PlaceText(const st::SourceManager& sources, const st::SourceRange& range) {
    const st::SourceLocation place = sources.Locate(range.begin);
    if (place.line == 0) return {};
    return sources.GetName(place.file) + ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
}

}  // namespace

bool LoadedImage::Load(const std::string& path, const RunOptions& options, std::vector<ImageError>& errors) {
    path_ = path;
    return LoadMachine(errors) && ChooseEntry(options, errors) && LoadTags(options, errors) && LoadMap(options, errors);
}

bool LoadedImage::Compile(const std::vector<std::string>& paths, const RunOptions& options,
                          std::vector<ImageError>& errors, std::string& warnings) {
    path_ = paths.front();
    st::CompileOptions compileOptions;
    std::vector<st::SourceText> sources;
    std::string error;
    if (!MakeCompileOptions(options.compile, compileOptions, error) ||
        !ReadTagSymbols(options.tagsFile, compileOptions.tags, error) || !ReadProjectFiles(paths, sources, error)) {
        return Refuse(errors, error);
    }
    st::CompileResult result = st::Compile(std::move(sources), compileOptions);
    for (const st::Diagnostic& diagnostic : result.diagnostics) {
        std::string rendering = st::FormatDiagnostic(result.sources, diagnostic);
        if (diagnostic.severity != st::Severity::Error) {
            warnings += rendering;
            continue;
        }
        errors.push_back({0, PlaceText(result.sources, diagnostic.range), diagnostic.text, std::move(rendering)});
    }
    if (!result.succeeded) return false;
    map_ = std::move(result.map);
    hasMap_ = true;
    return LoadMachine(CImageWriter::Write(result.image), errors) && ChooseEntry(options, errors) &&
           LoadTags(options, errors) && FindWatchedVariables(options, errors);
}

bool LoadedImage::LoadMachine(std::vector<ImageError>& errors) {
    std::string content;
    if (!ReadFileContent(path_, content)) return Refuse(errors, "The file cannot be read.");
    return LoadMachine({reinterpret_cast<const unsigned char*>(content.data()), content.size()}, errors);
}

bool LoadedImage::LoadMachine(std::span<const unsigned char> bytes, std::vector<ImageError>& errors) {
    CBinaryInputMemory input(bytes);
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
    return FindWatchedVariables(options, errors);
}

bool LoadedImage::FindWatchedVariables(const RunOptions& options, std::vector<ImageError>& errors) {
    std::string error;
    return options.watch.empty() || FindWatched(map_, options.watch, watched_, error) || Refuse(errors, error);
}

}  // namespace tn61131
