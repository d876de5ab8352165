#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "assembler/SymbolMap.h"
#include "tools/RunOptions.h"
#include "tools/TagTable.h"
#include "tools/Watch.h"
#include "vm/MemoryBlock.h"
#include "vm/VirtualMachine.h"

namespace tn61131 {

/// Why an image is refused: a message of the library, or one of the tool's own, which has the id 0.
struct ImageError {
    std::uint32_t id = 0;
    std::string location;
    std::string text;
    /// How a person is to see it, with line ends; empty: made from the members above.
    std::string rendering{};
};

/// An image with everything that a run of it needs. Contexts borrow from it: it must outlive them, and it does not
/// move.
class LoadedImage {
 public:
    LoadedImage() = default;
    LoadedImage(const LoadedImage&) = delete;
    LoadedImage& operator=(const LoadedImage&) = delete;

    /// Reads the image and, as the options say, its map and its tags; chooses the entry point. False, with at least one
    /// error, when any of that fails: the image must not be run then.
    [[nodiscard]] bool Load(const std::string& path, const RunOptions& options, std::vector<ImageError>& errors);
    /// The same for a project of structured text, which is compiled first. What its warnings say goes to `warnings`.
    [[nodiscard]] bool Compile(const std::vector<std::string>& paths, const RunOptions& options,
                               std::vector<ImageError>& errors, std::string& warnings);

    [[nodiscard]] const std::string& GetPath() const noexcept { return path_; }
    [[nodiscard]] CVirtualMachine& GetMachine() noexcept { return machine_; }
    [[nodiscard]] const CVirtualMachine& GetMachine() const noexcept { return machine_; }
    [[nodiscard]] CMemoryBlock& GetGlobalData() noexcept { return globalData_; }
    [[nodiscard]] const CMemoryBlock& GetGlobalData() const noexcept { return globalData_; }
    /// Null when no tags were asked for.
    [[nodiscard]] TagTable* GetTags() noexcept { return hasTags_ ? &tags_ : nullptr; }
    [[nodiscard]] const TagTable* GetTags() const noexcept { return hasTags_ ? &tags_ : nullptr; }
    /// Null when there is none.
    [[nodiscard]] const CSymbolMap* GetMap() const noexcept { return hasMap_ ? &map_ : nullptr; }
    [[nodiscard]] std::uint32_t GetEntryOffset() const noexcept { return entryOffset_; }
    /// "program Main", "expression 3", "code block 7".
    [[nodiscard]] const std::string& GetEntryName() const noexcept { return entryName_; }
    /// The variables that the options name.
    [[nodiscard]] const std::vector<WatchedVariable>& GetWatched() const noexcept { return watched_; }
    [[nodiscard]] WatchMemory GetWatchMemory() const noexcept {
        return {&globalData_, &machine_.GetGlobalConstantData(), GetTags()};
    }

 private:
    bool LoadMachine(std::vector<ImageError>& errors);
    bool LoadMachine(std::span<const unsigned char> bytes, std::vector<ImageError>& errors);
    bool FindWatchedVariables(const RunOptions& options, std::vector<ImageError>& errors);
    bool LoadMap(const RunOptions& options, std::vector<ImageError>& errors);
    bool LoadTags(const RunOptions& options, std::vector<ImageError>& errors);
    bool ChooseEntry(const RunOptions& options, std::vector<ImageError>& errors);

    std::string path_;
    CVirtualMachine machine_;
    CMemoryBlock globalData_;
    TagTable tags_;
    bool hasTags_ = false;
    CSymbolMap map_;
    bool hasMap_ = false;
    unsigned int entryOffset_ = 0;
    std::string entryName_;
    std::vector<WatchedVariable> watched_;
};

}  // namespace tn61131
