#include "vm/VirtualMachine.h"

#include <algorithm>
#include <utility>

#include "diag/Messages.h"
#include "platform/BinaryStream.h"
#include "platform/BuildIdentity.h"

using tn61131::Fail;

namespace {

constexpr std::uint16_t kFirstVersionWithConstants = 2;
constexpr std::uint16_t kFirstVersionWithExpressionIds = 3;
constexpr std::uint16_t kFirstVersionWithCodeBlocks = 4;
constexpr std::uint16_t kFirstVersionWithoutObsoleteWord = 5;

const ErrorLocation& NoLocation() noexcept {
    return ErrorLocationNull::Get();
}

template <typename T>
T Read(CBinaryInput& input) {
    T value{};
    input >> value;
    return value;
}

constexpr int ToLowerAscii(char character) noexcept {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte;
}

/// Calls `readEntry` for each of `count` entries until it finds the stream failed. The count is not believed: nothing
/// is reserved for it.
template <typename ReadEntry>
void ReadTable(CBinaryInput& input, ReadEntry readEntry) {
    const auto count = Read<std::uint32_t>(input);
    for (std::uint32_t index = 0; index < count && !input.HasFailed(); ++index)
        readEntry(index);
}

bool FindOffset(const CVirtualMachine::OffsetTable& table, unsigned int id, unsigned int& codeOffset) {
    const auto entry = table.find(id);
    if (entry == table.end()) return false;
    codeOffset = entry->second;
    return true;
}

}  // namespace

bool CVirtualMachine::CompareStringNoCase::operator()(const std::string& left,
                                                      const std::string& right) const noexcept {
    const char* l = left.c_str();
    const char* r = right.c_str();
    while (*l != 0 && ToLowerAscii(*l) == ToLowerAscii(*r)) {
        ++l;
        ++r;
    }
    return ToLowerAscii(*l) < ToLowerAscii(*r);
}

CVirtualMachine::CVirtualMachine() = default;

CVirtualMachine::~CVirtualMachine() = default;

bool CVirtualMachine::LoadVMImage(CErrorLog& log, CBinaryInput& input) {
    Clear();
    const auto magic = Read<std::uint16_t>(input);
    if (magic == kMagicWithBuildIdentity) {
        CBuildIdentity compiler;
        if (!compiler.LoadContent(input)) return Fail<Message::InvalidBuildIdentity>(log, NoLocation());
    } else if (magic != kMagic) {
        return Fail<Message::InvalidImage>(log, NoLocation());
    }
    version_ = Read<std::uint16_t>(input);
    if (version_ == 0 || version_ > kNewestVersion) {
        return Fail<Message::InvalidVersion>(log, NoLocation(), version_);
    }
    if (!LoadGlobalMemory("GlobalData", log, input, globalData_)) return false;
    if (version_ >= kFirstVersionWithConstants && !LoadGlobalMemory("GlobalConstants", log, input, constants_)) {
        return false;
    }
    if (version_ < kFirstVersionWithoutObsoleteWord) Read<std::int32_t>(input);
    LoadCode(log, input);
    LoadProgramEntryPoints(log, input);
    LoadStandaloneExpressionTable(version_, log, input);
    return version_ < kFirstVersionWithCodeBlocks || LoadStandaloneCodeBlockTable(version_, log, input);
}

bool CVirtualMachine::LoadGlobalMemory(const char* name, CErrorLog& log, CBinaryInput& input, CMemoryBlock& block) {
    const auto total = Read<std::uint32_t>(input);
    if (total < CMemoryBlock::kGuardSize) {
        return Fail<Message::InvalidBlockLength>(log, NoLocation(), name, total);
    }
    return block.LoadData(total, input) || Fail<Message::BlockTruncated>(log, NoLocation(), name);
}

bool CVirtualMachine::LoadCode(CErrorLog& /*log*/, CBinaryInput& input) {
    const auto stated = Read<std::uint32_t>(input);
    const std::size_t left = input.GetBytesLeft();
    if (stated > left) input.SetFailed();
    codeLength_ = static_cast<unsigned int>(std::min<std::size_t>(stated, left));
    code_ = std::make_unique<unsigned char[]>(std::size_t{codeLength_} + kCodePadding);
    input.ReadBytes(code_.get(), codeLength_);
    return true;
}

bool CVirtualMachine::LoadProgramEntryPoints(CErrorLog& /*log*/, CBinaryInput& input) {
    ReadTable(input, [&](std::uint32_t) {
        auto name = Read<std::string>(input);
        EntryPoint entry;
        input >> entry.codeOffset >> entry.secondWord;
        if (!input.HasFailed()) programs_.try_emplace(std::move(name), entry);
    });
    return true;
}

bool CVirtualMachine::LoadStandaloneExpressionTable(unsigned short version, CErrorLog& /*log*/, CBinaryInput& input) {
    ReadTable(input, [&](std::uint32_t index) {
        const auto id = version >= kFirstVersionWithExpressionIds ? Read<std::uint32_t>(input) : index;
        const auto codeOffset = Read<std::uint32_t>(input);
        if (!input.HasFailed()) expressions_.try_emplace(id, codeOffset);
    });
    return true;
}

bool CVirtualMachine::LoadStandaloneCodeBlockTable(unsigned short /*version*/, CErrorLog& /*log*/,
                                                   CBinaryInput& input) {
    ReadTable(input, [&](std::uint32_t) {
        const auto id = Read<std::uint32_t>(input);
        const auto codeOffset = Read<std::uint32_t>(input);
        if (!input.HasFailed()) codeBlocks_.try_emplace(id, codeOffset);
    });
    return true;
}

void CVirtualMachine::Clear() noexcept {
    code_.reset();
    codeLength_ = 0;
    version_ = 0;
    programs_.clear();
    expressions_.clear();
    codeBlocks_.clear();
    FreeMemory();
}

void CVirtualMachine::FreeMemory() noexcept {
    globalData_.FreeMemoryBlock();
    constants_.FreeMemoryBlock();
}

bool CVirtualMachine::FindProgram(const std::string& name, unsigned int& codeOffset) const {
    const auto entry = programs_.find(name);
    if (entry == programs_.end()) return false;
    codeOffset = entry->second.codeOffset;
    return true;
}

bool CVirtualMachine::FindExpression(unsigned int id, unsigned int& codeOffset) const {
    return FindOffset(expressions_, id, codeOffset);
}

bool CVirtualMachine::FindStandaloneCodeBlock(unsigned int id, unsigned int& codeOffset) const {
    return FindOffset(codeBlocks_, id, codeOffset);
}
