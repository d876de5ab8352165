#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "assembler/SymbolProject.h"
#include "assembler/SymbolType.h"
#include "value/PointerValue.h"

class CMemoryBlock;
class CValue;

/// A variable at a fixed place.
struct SymbolVariable {
    std::string scope{};  ///< the program or function it belongs to; empty for a global variable
    std::string name{};
    LocationKind location = LocationKind::Global;
    std::uint32_t offset = 0;  ///< bytes from the start of the location's data; within the tag for a tag
    std::uint32_t tagId = 0;   ///< location Tag only
    SymbolType type{};
};

/// A named place in the code.
struct SymbolLabel {
    enum class Kind : std::uint8_t { Label, Function, Program, Expression, CodeBlock };
    Kind kind = Kind::Label;
    std::string name{};  ///< the id in decimal for expressions and code blocks
    std::uint32_t codeOffset = 0;
};

/// Where an instruction comes from. Lines and columns count from 1; a column of 0 is not known.
struct SymbolPosition {
    std::uint32_t codeOffset = 0;
    std::uint32_t file = 0;  ///< index into the files of the map
    std::uint32_t line = 0;
    std::uint32_t column = 0;
};

/// What a path like `Main.grid[2].level` stands for.
struct SymbolReference {
    LocationKind location = LocationKind::Null;
    std::uint32_t tagId = 0;
    std::uint32_t offset = 0;
    SymbolType type{};
};

/// The names of an image: variables with place and type, named code, which source line made which instruction, and what
/// a compiler adds of the project: its units, tasks, retained data and tags. The
/// image itself knows none of them. Kept as JSON text in a file beside the image (docs/assembler.md has the format).
/// Names are found without regard to ASCII case.
class CSymbolMap {
 public:
    /// The map's file when none is named: that of the image with ".map" behind it.
    [[nodiscard]] static std::string GetDefaultFileName(const std::string& imageFile) { return imageFile + ".map"; }

    void AddVariable(SymbolVariable variable);
    /// The same, unless the scope has a variable of that name: then nothing changes, and false.
    [[nodiscard]] bool AddUniqueVariable(SymbolVariable variable);
    void AddLabel(SymbolLabel label) { labels_.push_back(std::move(label)); }
    /// Returns the index of a file, which is added when it is new.
    std::uint32_t AddFile(std::string_view file);
    void AddPosition(const SymbolPosition& position) { positions_.push_back(position); }
    void AddPou(SymbolPou pou) { pous_.push_back(std::move(pou)); }
    void AddTask(SymbolTask task) { tasks_.push_back(std::move(task)); }
    void AddRetained(SymbolRetained retained) { retained_.push_back(std::move(retained)); }
    void AddTag(SymbolTag tag) { tags_.push_back(std::move(tag)); }
    void Clear();

    [[nodiscard]] const std::vector<SymbolVariable>& GetVariables() const noexcept { return variables_; }
    [[nodiscard]] const std::vector<SymbolLabel>& GetLabels() const noexcept { return labels_; }
    [[nodiscard]] const std::vector<std::string>& GetFiles() const noexcept { return files_; }
    [[nodiscard]] const std::vector<SymbolPosition>& GetPositions() const noexcept { return positions_; }
    /// The position with the highest code offset that is not above `codeOffset`; null when there is none. Positions
    /// must have been added by ascending code offset.
    [[nodiscard]] const SymbolPosition* FindPosition(std::uint32_t codeOffset) const noexcept;

    /// In the order of their code.
    [[nodiscard]] const std::vector<SymbolPou>& GetPous() const noexcept { return pous_; }
    [[nodiscard]] const std::vector<SymbolTask>& GetTasks() const noexcept { return tasks_; }
    [[nodiscard]] const std::vector<SymbolRetained>& GetRetained() const noexcept { return retained_; }
    [[nodiscard]] const std::vector<SymbolTag>& GetTags() const noexcept { return tags_; }
    /// The unit whose code an offset lies in; null when there is none. Units must have been added by ascending code
    /// offset.
    [[nodiscard]] const SymbolPou* FindPou(std::uint32_t codeOffset) const noexcept;

    /// The structures that the variables are made of, those of units included, each behind those that it contains.
    [[nodiscard]] std::vector<const SymbolStruct*> CollectStructs() const;
    /// The enumerations among their types.
    [[nodiscard]] std::vector<const SymbolEnum*> CollectEnums() const;

    /// The map as JSON text, ended by a line feed.
    [[nodiscard]] std::string Save() const;
    /// Replaces the content by that of a saved map. False, the map empty and the reason in `error`, when the text is
    /// none. Members that are not known are ignored.
    [[nodiscard]] bool Load(std::string_view text, std::string& error);

    /// Resolves `variable` or `scope.variable`, with `.member`, `[index]` and `[index,index]` behind it. A global
    /// variable is meant before those of scopes; without one, a bare name must be that of one scope only. False, the
    /// reason in `error`, `out` untouched, when the path means nothing.
    [[nodiscard]] bool Find(std::string_view path, SymbolReference& out, std::string& error) const;

    /// Reads the value of a reference out of the data it points into. An array of a fixed-size type gives a COMPOSITE;
    /// structures and other arrays have no value of their own. False, the reason in `error`, for those and for bytes
    /// that are not there.
    [[nodiscard]] static bool ReadValue(const SymbolReference& reference, std::span<const unsigned char> data,
                                        CValue& out, std::string& error);
    [[nodiscard]] static bool ReadValue(const SymbolReference& reference, const CMemoryBlock& block, CValue& out,
                                        std::string& error);
    /// The name that an enumeration has for a value; null where it has none, and for other types.
    [[nodiscard]] static const std::string* FindValueName(const SymbolType& type, const CValue& value) noexcept;

 private:
    [[nodiscard]] const SymbolVariable* FindVariable(std::string_view scope, std::string_view name) const;

    /// Variables of a name in any scope; no more than two.
    [[nodiscard]] std::vector<const SymbolVariable*> FindTwoByName(std::string_view name) const;

    std::vector<SymbolVariable> variables_;
    std::multimap<std::string, std::size_t, std::less<>> byName_;  ///< see MakeKey() to index
    std::vector<SymbolLabel> labels_;
    std::vector<std::string> files_;
    std::vector<SymbolPosition> positions_;
    std::vector<SymbolPou> pous_;
    std::vector<SymbolTask> tasks_;
    std::vector<SymbolRetained> retained_;
    std::vector<SymbolTag> tags_;
};
