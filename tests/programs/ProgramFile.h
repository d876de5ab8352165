#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "compiler/Options.h"

/// What the comments of a test program say; README.md beside this file describes them.
namespace program_test {

/// The value of a variable after a scan.
struct ExpectedValue {
    std::uint32_t line = 0;
    std::uint64_t scan = 0;  ///< 0: the last
    std::string path{};      ///< empty: the result of the expression
    std::string value{};
};

struct ExpectedDiagnostic {
    std::uint32_t line = 0;
    std::string code{};
    std::uint32_t column = 0;  ///< 0: any
    friend auto operator<=>(const ExpectedDiagnostic&, const ExpectedDiagnostic&) = default;
};

struct ExpectedFault {
    std::uint32_t line = 0;
    std::uint32_t message = 0;
};

struct TagBytes {
    std::uint32_t id = 0;
    std::string bytes{};
};

struct ProgramFile {
    std::string name;
    std::string text;
    tn61131::st::CompileOptions options;
    std::uint64_t scans = 1;
    std::int64_t stepMs = 100;
    std::uint32_t instructionLimit = 100000;
    std::string program;  ///< empty: the first by name
    bool runsExpression = false;
    bool compareWarnings = true;
    std::vector<ExpectedValue> values;
    std::vector<ExpectedDiagnostic> diagnostics;
    std::optional<ExpectedFault> fault;
    std::vector<TagBytes> tags;
};

/// Reads the comments of a program. False, the reason in `error`, for a comment that is none of the forms.
[[nodiscard]] bool ReadProgramFile(std::string name, std::string text, ProgramFile& file, std::string& error);

}  // namespace program_test
