#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "assembler/AsmValues.h"
#include "assembler/TypeText.h"

/// One declaration line: `scope.name AT place : type := initial value`, the scope, the place and the value optional.
struct AsmDeclaration {
    SourcePlace start;
    std::string scope;
    std::string name;
    bool located = false;
    std::uint32_t offset = 0;  ///< where it is located; of a tag the offset within the tag
    std::uint32_t tagId = 0;
    SymbolType type;
};

enum class AsmPlaceKind : std::uint8_t { Offset, Tag };

/// Reads a declaration up to its type; an initial value is left for the caller. False after reporting what is wrong.
bool ReadDeclaration(CSourceCursor& cursor, const CStructTable& structs, AsmPlaceKind placeKind, AsmDeclaration& out);

/// Reads `byte, byte, ...` in numbers, respectively pairs of hexadecimal digits up to the end of the line.
bool ReadByteList(CSourceCursor& cursor, std::vector<unsigned char>& out);
bool ReadHexBytes(CSourceCursor& cursor, std::vector<unsigned char>& out);

/// A data block that a source builds line by line, each declaration behind the one before.
class CAsmData {
 public:
    /// `location` is where the block's variables are; the block grows to `maxSize` bytes at most.
    CAsmData(LocationKind location, std::uint32_t maxSize) noexcept : location_(location), maxSize_(maxSize) {}

    /// Reads a declaration or one of .hex, .byte and .space, and adds the variable to `symbols`. False after reporting
    /// what is wrong.
    bool ReadLine(CSourceCursor& cursor, const CStructTable& structs, CSymbolMap& symbols);
    /// Makes the block at least so long. False after reporting that it would be too large.
    bool Reserve(CSourceCursor& cursor, std::uint64_t size);
    /// Fills in the initial values of pointers that name variables.
    void ResolvePointers(CSourceCursor& cursor, const AsmNames& names);
    [[nodiscard]] std::vector<unsigned char>& GetBytes() noexcept { return bytes_; }

 private:
    struct NamedPointer {
        std::size_t offset;
        AsmPointer pointer;
    };

    bool ReadVariable(CSourceCursor& cursor, const CStructTable& structs, CSymbolMap& symbols);
    bool ReadInitialValue(CSourceCursor& cursor, const SymbolType& type, std::size_t offset, bool inList);
    bool ReadArray(CSourceCursor& cursor, const SymbolType& type, std::size_t offset, bool inList);
    bool ReadElements(CSourceCursor& cursor, const SymbolType& type, std::size_t offset);
    bool ReadRepeated(CSourceCursor& cursor, const SymbolType& element, std::size_t offset, std::uint64_t left,
                      std::uint64_t& taken);
    bool ReadStruct(CSourceCursor& cursor, const SymbolStruct& structure, std::size_t offset);
    bool ReadScalar(CSourceCursor& cursor, const SymbolType& type, std::size_t offset, bool inList);
    bool Append(CSourceCursor& cursor, const std::vector<unsigned char>& bytes);

    LocationKind location_;
    std::uint32_t maxSize_;
    std::size_t position_ = 0;  ///< where the next declaration goes
    std::vector<unsigned char> bytes_;
    std::vector<NamedPointer> namedPointers_;
};
