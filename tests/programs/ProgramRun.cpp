#include "programs/ProgramRun.h"

#include <algorithm>
#include <map>
#include <memory>

#include "compiler/Compiler.h"
#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "platform/TextOutput.h"
#include "vm/DirectlyLocatedVariables.h"
#include "vm/MemoryRef.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace program_test {
namespace {

namespace st = tn61131::st;

constexpr long long kFirstScanMs = 1000;

/// Tags as plain bytes.
class Tags final : public CDirectlyLocatedVariables {
 public:
    explicit Tags(const ProgramFile& file) {
        for (const TagBytes& tag : file.tags) {
            blocks_[tag.id].CopyData(static_cast<unsigned int>(tag.bytes.size()),
                                     reinterpret_cast<const unsigned char*>(tag.bytes.data()));
        }
    }
    [[nodiscard]] const CMemoryBlock* Find(std::uint32_t id) const {
        const auto found = blocks_.find(id);
        return found == blocks_.end() ? nullptr : &found->second;
    }
    bool GetTagType(unsigned int tagId, DirectlyLocatedType& type) const override {
        const CMemoryBlock* block = Find(tagId);
        if (block == nullptr) return false;
        type = {.type = ElementaryType::Byte, .length = block->GetDataSize(), .readOnly = false};
        return true;
    }
    bool ResolveTagAddress(const PointerValue* pointer, unsigned int size, CMemoryRef& out) const override {
        const CMemoryBlock* block = Find(pointer->offset);
        if (block == nullptr || !block->IsDataWithinBlock(pointer->frame, size)) return false;
        out = CMemoryRef(*block, pointer->frame);
        return true;
    }

 private:
    std::map<std::uint32_t, CMemoryBlock> blocks_;
};

std::string Declaration(const CValue& value) {
    CTextOutputString text;
    value.GetDeclaration(text);
    return text.TakeText();
}

/// Whether a value is what the text says. The text is a literal, of the value's type where it has no prefix.
bool HasValue(const CValue& value, const std::string& text) {
    if (Declaration(value) == text) return true;
    CValue expected;
    CErrorLogToNull log;
    return expected.SetFromText(log, ErrorLocationNull::Get(), text, value.GetType()) && value.IsEqual(expected);
}

class Run {
 public:
    Run(const ProgramFile& file, const st::CompileResult& compiled, std::vector<std::string>& failures)
        : file_(file), compiled_(compiled), failures_(failures), tags_(file) {}

    void Execute() {
        const std::vector<unsigned char> bytes = CImageWriter::Write(compiled_.image);
        CBinaryInputMemory input(bytes);
        CErrorLog log;
        if (!machine_.LoadVMImage(log, input) || input.HasFailed()) return Fail("the image does not load");
        unsigned int entry = 0;
        if (!FindEntry(entry)) return Fail("there is no entry point");
        CopyGlobalData();
        const CClientAccessContext access("test", CDataFormatSettings());
        CVirtualMachineExec exec(access, "test", &machine_, &globalData_, &tags_);
        long long time = kFirstScanMs;
        for (std::uint64_t scan = 1; scan <= file_.scans; ++scan) {
            log.Clear();
            exec.StartNewProgram(entry, file_.instructionLimit, 0, &time);
            if (exec.ExecuteUntilCompleteOrSuspended(log) != RunResult::Completed) return CheckFault(exec, log, scan);
            CheckValues(exec, scan, scan == file_.scans);
            time += file_.stepMs;
        }
        if (file_.fault) Fail("the run was to fail at line " + std::to_string(file_.fault->line));
    }

 private:
    void Fail(std::string text) { failures_.push_back(std::move(text)); }

    bool FindEntry(unsigned int& entry) const {
        if (file_.runsExpression) return machine_.FindExpression(1, entry);
        if (!file_.program.empty()) return machine_.FindProgram(file_.program, entry);
        const auto& programs = machine_.GetPrograms();
        if (programs.empty()) return false;
        entry = programs.begin()->second.codeOffset;
        return true;
    }

    void CopyGlobalData() {
        const CMemoryBlock& initial = machine_.GetGlobalData();
        globalData_.CopyData(initial.GetDataSize(), initial.GetVMData());
    }

    void CheckFault(const CVirtualMachineExec& exec, const CErrorLog& log, std::uint64_t scan) {
        const std::uint32_t message = log.GetEntries().empty() ? 0 : log.GetEntries().front().id;
        const SymbolPosition* position = compiled_.map.FindPosition(exec.GetCurrentPC());
        const std::uint32_t line = position == nullptr ? 0 : position->line;
        if (file_.fault && file_.fault->message == message && file_.fault->line == line) return;
        const std::string text = log.GetEntries().empty() ? std::string("no message") : log.GetEntries().front().text;
        Fail("scan " + std::to_string(scan) + " fails at line " + std::to_string(line) + " with " +
             std::to_string(message) + ": " + text);
    }

    void CheckValues(const CVirtualMachineExec& exec, std::uint64_t scan, bool isLast) {
        for (const ExpectedValue& expected : file_.values) {
            if (expected.scan != scan && !(expected.scan == 0 && isLast)) continue;
            CValue value;
            std::string error;
            if (expected.path.empty()) {
                if (Declaration(exec.GetResultValue()) != expected.value) {
                    Fail(Describe(expected, scan) + "the expression gives " + Declaration(exec.GetResultValue()));
                }
            } else if (!ReadVariable(expected.path, value, error)) {
                Fail(Describe(expected, scan) + error);
            } else if (!HasValue(value, expected.value)) {
                Fail(Describe(expected, scan) + expected.path + " is " + Declaration(value));
            }
        }
    }

    static std::string Describe(const ExpectedValue& expected, std::uint64_t scan) {
        return "line " + std::to_string(expected.line) + ", scan " + std::to_string(scan) + ": expected " +
               expected.value + ", ";
    }

    bool ReadVariable(const std::string& path, CValue& value, std::string& error) const {
        SymbolReference reference;
        if (!compiled_.map.Find(path, reference, error)) return false;
        const CMemoryBlock* block = &globalData_;
        if (reference.location == LocationKind::GlobalConstant) block = &machine_.GetGlobalConstantData();
        if (reference.location == LocationKind::Tag) block = tags_.Find(reference.tagId);
        return block != nullptr && CSymbolMap::ReadValue(reference, *block, value, error);
    }

    const ProgramFile& file_;
    const st::CompileResult& compiled_;
    std::vector<std::string>& failures_;
    Tags tags_;
    CVirtualMachine machine_;
    CMemoryBlock globalData_;
};

void CheckDiagnostics(const ProgramFile& file, const st::CompileResult& compiled, std::vector<std::string>& failures) {
    std::vector<ExpectedDiagnostic> missing = file.diagnostics;
    for (const st::Diagnostic& diagnostic : compiled.diagnostics) {
        if (diagnostic.severity == st::Severity::Hint) continue;
        if (diagnostic.severity == st::Severity::Warning && !file.compareWarnings) continue;
        const st::SourceLocation place = compiled.sources.Locate(diagnostic.range.begin);
        const std::string code = st::FormatCode(diagnostic.code);
        const auto found = std::find_if(missing.begin(), missing.end(), [&](const ExpectedDiagnostic& expected) {
            return expected.line == place.line && expected.code == code &&
                   (expected.column == 0 || expected.column == place.column);
        });
        if (found == missing.end()) {
            failures.push_back(st::FormatDiagnostic(compiled.sources, diagnostic));
        } else {
            missing.erase(found);
        }
    }
    for (const ExpectedDiagnostic& expected : missing) {
        failures.push_back("line " + std::to_string(expected.line) + ": " + expected.code + " was not reported");
    }
}

std::vector<std::string> CheckOnce(const ProgramFile& file) {
    std::vector<std::string> failures;
    std::vector<st::SourceText> sources;
    sources.push_back({file.name, file.text});
    const st::CompileResult compiled = st::Compile(std::move(sources), file.options);
    CheckDiagnostics(file, compiled, failures);
    const bool runs = !file.values.empty() || file.fault.has_value();
    if (runs && !compiled.succeeded) failures.emplace_back("the program was refused");
    if (runs && compiled.succeeded) Run(file, compiled, failures).Execute();
    return failures;
}

}  // namespace

std::vector<std::string> CheckProgram(const ProgramFile& file) {
    std::vector<std::string> failures = CheckOnce(file);
    ProgramFile plain = file;
    plain.options.passes = {
        .foldConstants = false, .commonAddresses = false, .inlineLeaves = false, .deadStores = false, .jumps = false};
    for (std::string& failure : CheckOnce(plain))
        failures.push_back("without the optimiser: " + std::move(failure));
    return failures;
}

}  // namespace program_test
