#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "compiler/DiagnosticTable.h"
#include "compiler/Source.h"

namespace tn61131::st {

/// A further place that a message points at: the other declaration, the parameter meant.
struct DiagnosticNote {
    SourceRange range{};
    std::string text;
};

struct Diagnostic {
    DiagnosticCode code{};
    Severity severity = Severity::Error;
    SourceRange range{};
    std::string text;
    std::vector<DiagnosticNote> notes;
};

/// Takes what the compiler has to say. Errors are counted; a place gets no second error of the same code, and from
/// kMaxErrors on further errors are counted and dropped.
class Diagnostics {
 public:
    static constexpr std::uint32_t kMaxErrors = 1000;

    explicit Diagnostics(const SourceManager& sources) noexcept : sources_(sources) {}

    /// `arguments` replace {0}, {1}, ... of the code's text. The severity is that of the table unless one is given.
    /// Returns the diagnostic for notes, good until the next report; one that is thrown away when it was dropped.
    Diagnostic& Report(DiagnosticCode code, SourceRange range, std::initializer_list<std::string_view> arguments = {});
    Diagnostic& Report(DiagnosticCode code, Severity severity, SourceRange range,
                       std::initializer_list<std::string_view> arguments = {});

    [[nodiscard]] std::uint32_t GetErrorCount() const noexcept { return errors_; }
    [[nodiscard]] bool HasErrors() const noexcept { return errors_ != 0; }
    /// In the order of files and positions.
    [[nodiscard]] const std::vector<Diagnostic>& Sort();
    [[nodiscard]] const SourceManager& GetSources() const noexcept { return sources_; }

 private:
    const SourceManager& sources_;
    std::vector<Diagnostic> diagnostics_;
    std::unordered_set<std::uint64_t> reported_;  ///< place and code of the errors
    Diagnostic dropped_;
    std::uint32_t errors_ = 0;
};

/// `FILE:LINE:COLUMN: error[ST0123]: text`, the source line, a caret line, and the notes likewise. Ends with a line
/// feed.
[[nodiscard]] std::string FormatDiagnostic(const SourceManager& sources, const Diagnostic& diagnostic);
/// "ST0123".
[[nodiscard]] std::string FormatCode(DiagnosticCode code);

/// The candidate that a misspelt name most likely means (Damerau-Levenshtein distance, at most a third of the length);
/// empty when none is near.
[[nodiscard]] std::string_view FindNearestName(std::string_view name, std::span<const std::string_view> candidates);

}  // namespace tn61131::st
