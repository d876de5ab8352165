#pragma once

#include <string>
#include <vector>

#include "compiler/Compiler.h"
#include "random_programs/Program.h"

namespace random_programs {

/// Compares what a program does on the machine with what the interpreter says.
class ProgramCheck {
 public:
    /// The program must outlive the check.
    ProgramCheck(const Program& program, unsigned scans);

    [[nodiscard]] const std::string& GetText() const noexcept { return text_; }
    /// Whether the program ends soon; one that does not cannot be checked.
    [[nodiscard]] bool IsShort() const noexcept { return !expected_.empty(); }
    /// What is wrong with the program compiled in one way, as one file; empty when nothing is.
    [[nodiscard]] std::string Run(const tn61131::st::CompileOptions& options) const;
    /// The same of what has been compiled already.
    [[nodiscard]] std::string Run(const tn61131::st::CompileResult& compiled) const;

 private:
    /// A cell as the symbol map knows it.
    struct Cell {
        std::string path;
        NumberType type;
    };

    std::string text_;
    std::vector<Cell> cells_;
    std::vector<std::vector<Number>> expected_;  // after each scan, each cell
};

}  // namespace random_programs
