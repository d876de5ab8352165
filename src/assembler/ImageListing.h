#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "assembler/Image.h"
#include "assembler/SymbolMap.h"
#include "functions/BuiltInFunctions.h"

class CTextOutput;

/// The text form of an image: header, blocks with a dump and the state of their guard, tables, and the code as the
/// disassembler prints it, with a label line at each entry point and jump target. The text is a source for CAssembler
/// that gives the same image. With a symbol map places have their names. Borrows the image and the map.
class CImageListing {
 public:
    /// `symbols` may be null.
    CImageListing(const ImageContent& image, const CSymbolMap* symbols);

    void Write(CTextOutput& output) const;
    void WriteCode(CTextOutput& output) const;

 private:
    /// An instruction, or bytes that are none.
    struct Item {
        std::uint32_t offset;
        std::uint32_t length;
        std::string text;   ///< as the disassembler prints it, without the line end; empty for bytes
        std::string error;  ///< why they are only bytes
    };

    void CollectEntries();
    void DecodeCode();
    [[nodiscard]] std::uint32_t DecodeItem(std::uint32_t offset);
    void AddTarget(const Item& item);
    void NameLabels();
    void IndexVariables();

    void WriteHeader(CTextOutput& output) const;
    void WriteStructs(CTextOutput& output) const;
    void WriteTags(CTextOutput& output) const;
    void WriteBlock(const char* directive, const ImageContent::Block& block, LocationKind location,
                    CTextOutput& output) const;
    void WriteVariable(const SymbolVariable& variable, const ImageContent::Block& block, CTextOutput& output) const;
    void WriteTables(CTextOutput& output) const;
    void WriteItem(const Item& item, CTextOutput& output) const;
    void WriteLabel(std::uint32_t offset, CTextOutput& output) const;
    [[nodiscard]] std::string FormatTarget(std::uint32_t offset) const;
    [[nodiscard]] std::string FormatNote(const Item& item) const;
    [[nodiscard]] std::string FormatVariableAt(LocationKind location, std::uint32_t tagId, std::uint32_t offset) const;
    [[nodiscard]] std::uint32_t CodeWord(std::size_t at) const noexcept;

    const ImageContent& image_;
    const CSymbolMap* symbols_;
    CBuiltInFunctions builtIns_;
    std::map<std::uint32_t, std::vector<std::string>> entries_;  ///< what the tables say begins at an offset
    std::set<std::uint32_t> targets_;                            ///< entry points, jump and call targets
    std::vector<Item> items_;
    std::map<std::uint32_t, std::string> labels_;
    /// By location, tag and offset.
    std::map<std::tuple<LocationKind, std::uint32_t, std::uint32_t>, const SymbolVariable*> variables_;
};
