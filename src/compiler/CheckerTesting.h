#pragma once

#include <string>
#include <vector>

#include "compiler/Checker.h"
#include "compiler/Declarations.h"
#include "compiler/Parser.h"
#include "compiler/TreePrint.h"

namespace tn61131::st {

/// One source text taken through parser, declarations and checker.
class CheckedText {
 public:
    explicit CheckedText(const std::string& text, const CompileOptions& options = {})
        : options_(options),
          diagnostics_(sources_),
          project_(sources_, options_, diagnostics_),
          checker_(project_),
          declarations_(project_, checker_) {
        checker_.SetDeclarations(declarations_);
        std::uint32_t file = 0;
        if (!sources_.AddFile("test.st", text, file)) return;
        ast::SourceUnit* unit =
            ParseFile(sources_, file, options_.switches, project_.names, project_.arena, diagnostics_);
        declarations_.Enter(std::vector<ast::SourceUnit*>{unit});
        declarations_.Resolve();
        checker_.CheckAll();
        declarations_.Finish();
    }
    CheckedText(const CheckedText&) = delete;
    CheckedText& operator=(const CheckedText&) = delete;

    /// The statements of a POU's body, one a line; the messages when it has none.
    [[nodiscard]] std::string Body(std::string_view pouName) {
        const NameId name = project_.names.Find(pouName);
        for (const Pou& pou : project_.pous) {
            if (pou.name != name || pou.body == nullptr) continue;
            std::string text;
            for (const Stmt* stmt : pou.body->statements)
                text += PrintStmt(project_.names, *stmt) + "\n";
            return text;
        }
        return Messages();
    }
    /// All messages: "LINE:COLUMN CODE text", one a line, `W` and `H` in front of warnings and hints.
    [[nodiscard]] std::string Messages() {
        std::string text;
        for (const Diagnostic& diagnostic : diagnostics_.Sort()) {
            const SourceLocation place = sources_.Locate(diagnostic.range.begin);
            if (diagnostic.severity == Severity::Warning) text += "W ";
            if (diagnostic.severity == Severity::Hint) text += "H ";
            text += std::to_string(place.line) + ":" + std::to_string(place.column) + " " +
                    FormatCode(diagnostic.code) + " " + diagnostic.text + "\n";
        }
        return text;
    }
    [[nodiscard]] Project& GetProject() noexcept { return project_; }
    [[nodiscard]] Pou* FindPou(std::string_view pouName) {
        const NameId name = project_.names.Find(pouName);
        for (Pou& pou : project_.pous) {
            if (pou.name == name) return &pou;
        }
        return nullptr;
    }

 private:
    CompileOptions options_;
    SourceManager sources_;
    Diagnostics diagnostics_;
    Project project_;
    Checker checker_;
    Declarations declarations_;
};

/// The options of a profile, changed by switches "NAME=VALUE".
[[nodiscard]] inline CompileOptions OptionsOf(std::string_view profile, std::vector<std::string> switches = {}) {
    CompileOptions options;
    std::string error;
    static_cast<void>(SetProfile(profile, options));
    for (const std::string& assignment : switches)
        static_cast<void>(SetSwitch(assignment, options, error));
    return options;
}

}  // namespace tn61131::st
