#include "assembler/Image.h"

#include "platform/BinaryStream.h"
#include "platform/ErrorLog.h"

namespace {

void WriteBlock(CBinaryOutput& output, const ImageContent::Block& block) {
    output << static_cast<std::uint32_t>(block.data.size() + block.guard.size());
    output.WriteBytes(block.data.data(), block.data.size());
    output.WriteBytes(block.guard.data(), block.guard.size());
}

void WriteEntries(CBinaryOutput& output, const std::vector<ImageContent::Entry>& entries, bool withIds) {
    output << static_cast<std::uint32_t>(entries.size());
    for (const ImageContent::Entry& entry : entries) {
        if (withIds) output << entry.id;
        output << entry.codeOffset;
    }
}

/// `size` bytes of a stream that holds as many.
std::vector<unsigned char> ReadVector(CBinaryInput& input, std::size_t size) {
    std::vector<unsigned char> bytes(size);
    input.ReadBytes(bytes.data(), size);
    return bytes;
}

void ReadBlock(CBinaryInput& input, ImageContent::Block& block) {
    std::uint32_t total = 0;
    input >> total;
    block.data = ReadVector(input, total - block.guard.size());
    input.ReadBytes(block.guard.data(), block.guard.size());
}

void ReadEntries(CBinaryInput& input, bool withIds, std::vector<ImageContent::Entry>& entries) {
    std::uint32_t count = 0;
    input >> count;
    for (std::uint32_t i = 0; i < count; ++i) {
        ImageContent::Entry entry{.id = i};
        if (withIds) input >> entry.id;
        input >> entry.codeOffset;
        entries.push_back(entry);
    }
}

void ReadPrograms(CBinaryInput& input, std::vector<ImageContent::Program>& programs) {
    std::uint32_t count = 0;
    input >> count;
    for (std::uint32_t i = 0; i < count; ++i) {
        ImageContent::Program program;
        input >> program.name >> program.codeOffset >> program.secondWord;
        programs.push_back(std::move(program));
    }
}

/// Whether the machine takes the image whole. Every length and count in it then fits the bytes that are there.
bool IsAccepted(std::span<const unsigned char> bytes, std::string& error) {
    CBinaryInputMemory input(bytes);
    CErrorLog log;
    CVirtualMachine image;
    if (!image.LoadVMImage(log, input)) {
        error = log.GetEntries().empty() ? "the image does not load" : log.GetEntries().front().text;
        return false;
    }
    if (input.HasFailed()) error = "the image ends too early";
    return !input.HasFailed();
}

}  // namespace

std::vector<unsigned char> CImageWriter::Write(const ImageContent& image) {
    CBinaryOutputBuffer output;
    output << (image.build ? CVirtualMachine::kMagicWithBuildIdentity : CVirtualMachine::kMagic);
    if (image.build) image.build->SaveContent(output);
    output << image.version;
    WriteBlock(output, image.globalData);
    if (image.HasConstants()) WriteBlock(output, image.constants);
    if (image.HasObsoleteWord()) output << image.obsoleteWord;
    output << static_cast<std::uint32_t>(image.code.size());
    output.WriteBytes(image.code.data(), image.code.size());
    output << static_cast<std::uint32_t>(image.programs.size());
    for (const ImageContent::Program& program : image.programs)
        output << program.name << program.codeOffset << program.secondWord;
    WriteEntries(output, image.expressions, image.HasExpressionIds());
    if (image.HasCodeBlocks()) WriteEntries(output, image.codeBlocks, true);
    return output.GetData();
}

bool ReadImage(std::span<const unsigned char> bytes, ImageContent& image, std::string& error) {
    image = ImageContent();
    if (!IsAccepted(bytes, error)) return false;
    CBinaryInputMemory input(bytes);
    std::uint16_t magic = 0;
    input >> magic;
    if (magic == CVirtualMachine::kMagicWithBuildIdentity) {
        (void)image.build.emplace().LoadContent(input);  // it did load a moment ago
    }
    input >> image.version;
    ReadBlock(input, image.globalData);
    if (image.HasConstants()) ReadBlock(input, image.constants);
    if (image.HasObsoleteWord()) input >> image.obsoleteWord;
    std::uint32_t codeLength = 0;
    input >> codeLength;
    image.code = ReadVector(input, codeLength);
    ReadPrograms(input, image.programs);
    ReadEntries(input, image.HasExpressionIds(), image.expressions);
    if (image.HasCodeBlocks()) ReadEntries(input, true, image.codeBlocks);
    return true;
}
