#include "random_programs/ProgramCheck.h"

#include <bit>
#include <cmath>

#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace random_programs {

namespace st = tn61131::st;

namespace {

constexpr std::uint32_t kInstructionLimit = 50'000'000;

Number FromValue(const CValue& value, NumberType type) {
    if (type == NumberType::Real) return Number::Floating(type, static_cast<double>(value.GetPayload<float>()));
    if (type == NumberType::LReal) return Number::Floating(type, value.GetPayload<double>());
    switch (GetBits(type)) {
        case 16: return Number::Whole(type, value.GetPayload<std::uint16_t>());
        case 32: return Number::Whole(type, value.GetPayload<std::uint32_t>());
        case 64: return Number::Whole(type, value.GetPayload<std::uint64_t>());
        default: return Number::Whole(type, value.GetPayload<std::uint8_t>());
    }
}

bool IsSame(const Number& left, const Number& right) {
    if (!IsReal(left.type)) return left.bits == right.bits;
    if (std::isnan(left.real)) return std::isnan(right.real);
    return std::bit_cast<std::uint64_t>(left.real) == std::bit_cast<std::uint64_t>(right.real);
}

std::string Describe(const Number& value) {
    return FormatLiteral(value, false);
}

}  // namespace

ProgramCheck::ProgramCheck(const Program& program, unsigned scans) {
    for (const std::string& unit : Print(program))
        text_ += unit;
    const auto add = [&](const std::string& path, const Shape& shape) {
        for (const auto& [cell, type] : ListCells(path, shape))
            cells_.push_back({cell, type});
    };
    for (const Variable& variable : program.globals)
        add(variable.name, *variable.shape);
    for (const Variable& variable : program.routines.back().variables) {
        if (variable.section != Section::Temporary) add("Main." + variable.name, *variable.shape);
    }
    Interpreter interpreter(program);
    for (unsigned scan = 0; scan < scans; ++scan) {
        if (!interpreter.Scan()) {
            expected_.clear();
            return;
        }
        std::vector<Number>& values = expected_.emplace_back();
        for (std::size_t i = 0; i < cells_.size(); ++i)
            values.push_back(i < program.globalCells ? interpreter.GetGlobal(i)
                                                     : interpreter.GetLocal(i - program.globalCells));
    }
}

std::string ProgramCheck::Run(const st::CompileOptions& options) const {
    std::vector<st::SourceText> sources;
    sources.push_back({"random.st", text_});
    return Run(st::Compile(std::move(sources), options));
}

std::string ProgramCheck::Run(const st::CompileResult& compiled) const {
    if (!compiled.succeeded) {
        std::string messages = "is refused:\n";
        for (const st::Diagnostic& diagnostic : compiled.diagnostics) {
            if (diagnostic.severity == st::Severity::Error)
                messages += st::FormatDiagnostic(compiled.sources, diagnostic);
        }
        return messages;
    }
    const std::vector<unsigned char> bytes = CImageWriter::Write(compiled.image);
    CBinaryInputMemory input(bytes);
    CErrorLog log;
    CVirtualMachine machine;
    if (!machine.LoadVMImage(log, input)) return "does not load";
    CMemoryBlock memory = machine.GetGlobalData();
    const CClientAccessContext access("test");
    CVirtualMachineExec exec(access, "test", &machine, &memory, nullptr);
    long long time = 1000;
    for (std::size_t scan = 0; scan < expected_.size(); ++scan) {
        const unsigned entry = machine.GetPrograms().begin()->second.codeOffset;
        exec.StartNewProgram(entry, kInstructionLimit, 0, &time);
        if (exec.ExecuteUntilCompleteOrSuspended(log) != RunResult::Completed) {
            const SymbolPosition* position = compiled.map.FindPosition(exec.GetCurrentPC());
            return "fails at line " + std::to_string(position == nullptr ? 0 : position->line) + ": " +
                   (log.GetEntries().empty() ? "" : log.GetEntries().back().text);
        }
        for (std::size_t i = 0; i < cells_.size(); ++i) {
            SymbolReference reference;
            CValue value;
            std::string error;
            if (!compiled.map.Find(cells_[i].path, reference, error) ||
                !CSymbolMap::ReadValue(reference, memory, value, error))
                return cells_[i].path + ": " + error;
            const Number actual = FromValue(value, cells_[i].type);
            if (IsSame(actual, expected_[scan][i])) continue;
            return "after scan " + std::to_string(scan + 1) + ", " + cells_[i].path + " is " + Describe(actual) +
                   ", not " + Describe(expected_[scan][i]);
        }
    }
    return {};
}

}  // namespace random_programs
