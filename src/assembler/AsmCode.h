#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "assembler/AsmData.h"
#include "functions/BuiltInFunctions.h"
#include "vm/Opcodes.h"

/// The code that a source builds: labels, instructions by their mnemonics, lines of a listing, and bytes. Labels may be
/// used before they are defined; ResolveLabels() fills them in. Borrows the cursor, the structures and the names.
class CAsmCode {
 public:
    struct Label {
        std::string name;
        std::uint32_t offset = 0;
        bool isFunction = false;  ///< the target of a CALL
    };
    /// A place in the code, by a label or by its offset.
    struct Target {
        SourcePlace place;
        std::string label;       ///< empty for an offset
        bool hasOffset = false;  ///< the offset holds where there is no such label
        std::uint32_t offset = 0;
    };
    struct Position {
        std::uint32_t codeOffset;
        SourcePlace place;
    };

    CAsmCode(CSourceCursor& cursor, const CStructTable& structs, const CSymbolMap& globals, std::uint32_t maxSize);

    /// Reads a line of code, and the lines that belong to it. False after reporting what is wrong.
    bool ReadLine();
    /// A label, or an offset in at least four hexadecimal digits or with a radix.
    bool ReadTarget(Target& out);
    /// Stores the offset of every label that was used before its definition.
    void ResolveLabels();
    /// False after reporting that there is no such label.
    bool Resolve(Target& target);

    [[nodiscard]] std::vector<unsigned char>& GetBytes() noexcept { return bytes_; }
    [[nodiscard]] const std::vector<Position>& GetPositions() const noexcept { return positions_; }
    /// By ascending offset.
    [[nodiscard]] std::vector<Label> GetLabels() const;

 private:
    using Operands = std::array<std::uint32_t, 4>;
    struct BuiltIn {
        unsigned char group = 0;
        unsigned char id = 0;
    };
    using NameOf = std::function<const char*(BuiltIn)>;
    using BuiltInNames = std::map<std::string, BuiltIn, std::less<>>;
    using Handler = bool (CAsmCode::*)(const OpcodeInfo& info);
    struct Row {
        const OpcodeInfo* info;
        Handler handler;
    };
    /// An operand that waits for its label.
    struct Fixup {
        Target target;
        std::size_t at;      ///< of the operand in the code
        std::uint32_t base;  ///< subtracted from the label's offset
        bool verify;         ///< the bytes are there already and must be the same
    };
    /// The address and byte columns of a listing line.
    struct Columns {
        SourcePlace place;
        std::uint32_t address = 0;
        std::vector<unsigned char> bytes;
    };

    static std::vector<Row> MakeRows();
    static BuiltInNames CollectNames(const NameOf& nameOf, unsigned int groups);
    // Null when there is none of that name.
    [[nodiscard]] static const BuiltIn* FindFunction(std::string_view name);
    [[nodiscard]] static const BuiltIn* FindBlock(std::string_view name);

    bool TakeColumns(Columns& columns);
    bool TakeColumnBytes(CSourceCursor& cursor, std::vector<unsigned char>& bytes) const;
    bool ReadListingLine(const Columns& columns);
    [[nodiscard]] std::string Disassemble(const Columns& columns) const;
    bool CompareWithColumns(const Columns& columns, SourcePlace textPlace);
    bool ReadInstruction();
    bool ReadNamedInstruction();
    bool ReadBuiltInCall(const BuiltIn* function, const BuiltIn* block);
    bool ReadNumberedCall();
    bool ReadOperator(SourcePlace place, std::string_view name);
    bool DefineLabel(SourcePlace place, std::string_view name);
    bool TakeLabel();

    // One for each form of operands; the mnemonic has been read.
    bool ReadNothing(const OpcodeInfo& info);
    bool ReadLoad(const OpcodeInfo& info);
    bool ReadLoadAddr(const OpcodeInfo& info);
    bool ReadLoadTagAddr(const OpcodeInfo& info);
    bool ReadPointerAccess(const OpcodeInfo& info);
    bool ReadPointerLoadArray(const OpcodeInfo& info);
    bool ReadStackIndex(const OpcodeInfo& info);
    bool ReadStatus(const OpcodeInfo& info);
    bool ReadType(const OpcodeInfo& info);
    bool ReadJump(const OpcodeInfo& info);
    bool ReadUserCall(const OpcodeInfo& info);
    bool ReadInitTempData(const OpcodeInfo& info);
    bool ReadTempBlock(const OpcodeInfo& info);
    bool ReadInitLocalData(const OpcodeInfo& info);
    bool ReadSfc(const OpcodeInfo& info);

    bool ReadTypeCode(std::uint32_t& code);
    /// `word number`, as in "ArgCount 3".
    bool ReadNamedNumber(std::string_view word, std::int64_t highest, std::uint32_t& out);
    bool Emit(const OpcodeInfo& info, const Operands& operands, const std::vector<unsigned char>& data = {});
    bool EmitBytes(const std::vector<unsigned char>& bytes);
    /// The four bytes of code from `at` on become the target's offset less `base`.
    void UseTarget(Target target, std::size_t at, std::uint32_t base);
    [[nodiscard]] AsmNames GetNames() const noexcept { return {&globals_, &localNames_, &tempNames_}; }

    CSourceCursor& cursor_;
    const CStructTable& structs_;
    const CSymbolMap& globals_;
    std::uint32_t maxSize_;
    CBuiltInFunctions builtIns_;
    std::vector<Row> rows_;  ///< longest mnemonic first
    std::vector<unsigned char> bytes_;
    std::map<std::string, Label, std::less<>> labels_;
    std::vector<Fixup> fixups_;
    std::vector<Position> positions_;
    std::set<std::uint32_t> callTargets_;
    CSymbolMap tempNames_;   ///< of the latest INIT_TEMP_DATA
    CSymbolMap localNames_;  ///< of the latest INIT_LOCAL_DATA
};
