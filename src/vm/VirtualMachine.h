#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "platform/ErrorLog.h"
#include "platform/Export.h"
#include "vm/MemoryBlock.h"

class CBinaryInput;

/// One loaded image: code, initial global data, constants and the tables of entry points. Read-only after loading; any
/// number of contexts on any threads may share it, and it must outlive them.
class TN61131_API CVirtualMachine {
 public:
    static constexpr std::uint16_t kMagicWithBuildIdentity = 0x4942;
    static constexpr std::uint16_t kMagic = 0x4956;
    static constexpr std::uint16_t kNewestVersion = 5;
    /// Zero bytes behind the code: opcode 0 is invalid, so running off the end fails cleanly.
    static constexpr unsigned int kCodePadding = 16;

    struct EntryPoint {
        std::uint32_t codeOffset = 0;
        std::uint32_t secondWord = 0;  ///< kept for the compiler; the machine does not read it
    };
    /// Orders names without regard to ASCII case.
    struct TN61131_API CompareStringNoCase {
        bool operator()(const std::string& left, const std::string& right) const noexcept;
    };
    using ProgramTable = std::map<std::string, EntryPoint, CompareStringNoCase>;
    using OffsetTable = std::map<std::uint32_t, std::uint32_t>;

    CVirtualMachine();
    CVirtualMachine(const CVirtualMachine&) = delete;
    CVirtualMachine& operator=(const CVirtualMachine&) = delete;
    ~CVirtualMachine();

    /// Reads one image. False after one message; what was read before the fault stays, and must not be run. A stream
    /// that ended inside the tables is noticed by the stream alone: refuse the image when `input.HasFailed()`
    /// afterwards.
    [[nodiscard]] bool LoadVMImage(CErrorLog& log, CBinaryInput& input);
    /// Reads one block; `name` is for the messages.
    [[nodiscard]] bool LoadGlobalMemory(const char* name, CErrorLog& log, CBinaryInput& input, CMemoryBlock& block);
    // The sections of an image. Always true: a short stream is noticed by the stream.
    bool LoadCode(CErrorLog& log, CBinaryInput& input);
    bool LoadProgramEntryPoints(CErrorLog& log, CBinaryInput& input);
    bool LoadStandaloneExpressionTable(unsigned short version, CErrorLog& log, CBinaryInput& input);
    bool LoadStandaloneCodeBlockTable(unsigned short version, CErrorLog& log, CBinaryInput& input);
    void Clear() noexcept;
    void FreeMemory() noexcept;

    /// Look-ups store the code offset; on failure the output is untouched. Program names ignore case.
    [[nodiscard]] bool FindProgram(const std::string& name, unsigned int& codeOffset) const;
    [[nodiscard]] bool FindExpression(unsigned int id, unsigned int& codeOffset) const;
    [[nodiscard]] bool FindStandaloneCodeBlock(unsigned int id, unsigned int& codeOffset) const;

    /// The code, followed by kCodePadding zero bytes. Never null.
    [[nodiscard]] const unsigned char* GetOpCodes() const noexcept { return code_ != nullptr ? code_.get() : kNoCode; }
    [[nodiscard]] unsigned int GetOpCodesLength() const noexcept { return codeLength_; }
    [[nodiscard]] CMemoryBlock& GetGlobalConstantData() noexcept { return constants_; }
    [[nodiscard]] const CMemoryBlock& GetGlobalConstantData() const noexcept { return constants_; }
    /// The initial content for a context's global data.
    [[nodiscard]] const CMemoryBlock& GetGlobalData() const noexcept { return globalData_; }
    [[nodiscard]] const ProgramTable& GetPrograms() const noexcept { return programs_; }
    [[nodiscard]] const OffsetTable& GetExpressions() const noexcept { return expressions_; }
    [[nodiscard]] const OffsetTable& GetStandaloneCodeBlocks() const noexcept { return codeBlocks_; }
    /// The image format version of the last load; 0 before.
    [[nodiscard]] std::uint16_t GetVersion() const noexcept { return version_; }

 private:
    static constexpr unsigned char kNoCode[kCodePadding] = {};

    std::unique_ptr<unsigned char[]> code_;
    unsigned int codeLength_ = 0;
    std::uint16_t version_ = 0;
    CMemoryBlock globalData_;
    CMemoryBlock constants_;
    ProgramTable programs_;
    OffsetTable expressions_;
    OffsetTable codeBlocks_;
};
