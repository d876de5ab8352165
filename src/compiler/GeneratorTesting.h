#pragma once

// Compiles sources and runs what comes of them.
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "compiler/Compiler.h"
#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "platform/TextOutput.h"
#include "value/Value.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace tn61131::st {

[[nodiscard]] inline Passes NoPasses() {
    Passes passes;
    passes.foldConstants = false;
    passes.commonAddresses = false;
    passes.inlineLeaves = false;
    passes.deadStores = false;
    passes.jumps = false;
    return passes;
}

/// A source, its image, and a machine that runs its programs in the order of the image.
class CompiledRun {
 public:
    static constexpr std::uint32_t kInstructionLimit = 10'000'000;

    explicit CompiledRun(std::string source, const CompileOptions& options = {}) {
        std::vector<SourceText> texts;
        texts.push_back({"test.st", std::move(source)});
        result = Compile(std::move(texts), options);
        for (const Diagnostic& diagnostic : result.diagnostics)
            messages += FormatDiagnostic(result.sources, diagnostic);
        if (!result.succeeded) return;
        const std::vector<unsigned char> bytes = CImageWriter::Write(result.image);
        CBinaryInputMemory input(bytes);
        EXPECT_TRUE(machine_.LoadVMImage(log_, input));
        memory = machine_.GetGlobalData();
        exec = std::make_unique<CVirtualMachineExec>(access_, "Host", &machine_, &memory, nullptr);
    }

    /// Runs every program once. False when one fails.
    bool Scan() {
        for (const ImageContent::Program& program : result.image.programs) {
            if (!RunAt(program.codeOffset)) return false;
        }
        return true;
    }
    bool RunAt(std::uint32_t codeOffset) {
        exec->StartNewProgram(codeOffset, kInstructionLimit, 0, &timestamp);
        const RunResult runResult = exec->ExecuteUntilCompleteOrSuspended(log_);
        instructions += exec->GetInstructionCount();
        return runResult == RunResult::Completed;
    }
    /// Message id of the last fault; 0 without.
    [[nodiscard]] unsigned int GetFault() const { return log_.GetEntries().empty() ? 0 : log_.GetEntries().back().id; }
    [[nodiscard]] std::string GetFaultText() const {
        return log_.GetEntries().empty() ? "" : log_.GetEntries().back().text;
    }
    /// Line of the instruction that ended the run; 0 for none.
    [[nodiscard]] std::uint32_t GetLine() const {
        const SymbolPosition* position = result.map.FindPosition(exec->GetCurrentPC());
        return position == nullptr ? 0 : position->line;
    }
    [[nodiscard]] std::uint32_t GetColumn() const {
        const SymbolPosition* position = result.map.FindPosition(exec->GetCurrentPC());
        return position == nullptr ? 0 : position->column;
    }
    /// A variable by its path as text; the reason where it has none.
    [[nodiscard]] std::string Value(std::string_view path) const {
        SymbolReference reference;
        std::string error;
        CValue value;
        if (!result.map.Find(path, reference, error) ||
            !CSymbolMap::ReadValue(reference,
                                   reference.location == LocationKind::Global
                                       ? std::span<const unsigned char>(memory.GetVMData(), memory.GetDataSize())
                                       : std::span<const unsigned char>(result.image.constants.data),
                                   value, error)) {
            return error;
        }
        CTextOutputString output;
        value.GetAsText(nullptr, output);
        return output.GetText();
    }
    [[nodiscard]] std::string Listing() const {
        CTextOutputString output;
        EXPECT_TRUE(exec->DisassembleCode(0, output));
        return output.GetText();
    }

    CompileResult result;
    std::string messages;
    CMemoryBlock memory;
    std::unique_ptr<CVirtualMachineExec> exec;
    std::uint64_t instructions = 0;
    long long timestamp = 1000;

 private:
    CVirtualMachine machine_;
    CClientAccessContext access_{"client"};
    CErrorLog log_;
};

}  // namespace tn61131::st
