#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "compiler/AstPrint.h"
#include "compiler/Parser.h"

/// What the tests of the parser share.
namespace tn61131::st::testing {

/// Where a diagnostic stands and which one it is.
struct Reported {
    std::uint32_t line = 0;
    std::uint32_t column = 0;
    DiagnosticCode code{};

    friend bool operator==(const Reported&, const Reported&) = default;
    friend std::ostream& operator<<(std::ostream& stream, const Reported& reported) {
        return stream << reported.line << ':' << reported.column << ' ' << FormatCode(reported.code);
    }
};

/// One text, parsed.
class Parsed {
 public:
    enum class As { Unit, Expression, Statements };

    explicit Parsed(std::string_view text, As as = As::Unit, Switches switches = {}) : diagnostics_(sources_) {
        std::uint32_t file = 0;
        if (!sources_.AddFile("a.st", std::string(text), file)) return;
        switch (as) {
            case As::Unit:
                unit_ = ParseFile(sources_, file, switches, names_, arena_, diagnostics_);
                printed_ = PrintUnit(names_, *unit_);
                break;
            case As::Expression:
                printed_ = PrintExpression(names_,
                                           ParseExpressionFile(sources_, file, switches, names_, arena_, diagnostics_));
                break;
            case As::Statements:
                printed_ = PrintStatements(names_,
                                           ParseStatementsFile(sources_, file, switches, names_, arena_, diagnostics_));
                break;
        }
        for (const Diagnostic& diagnostic : diagnostics_.Sort()) {
            const SourceLocation place = sources_.Locate(diagnostic.range.begin);
            reported_.push_back({place.line, place.column, diagnostic.code});
            messages_ += FormatDiagnostic(sources_, diagnostic);
        }
    }

    [[nodiscard]] const ast::SourceUnit& Unit() const { return *unit_; }
    [[nodiscard]] const std::string& Printed() const { return printed_; }
    [[nodiscard]] const std::vector<Reported>& Errors() const { return reported_; }
    [[nodiscard]] const std::string& Messages() const { return messages_; }

 private:
    SourceManager sources_;
    NameTable names_;
    Arena arena_;
    Diagnostics diagnostics_;
    ast::SourceUnit* unit_ = nullptr;
    std::string printed_;
    std::vector<Reported> reported_;
    std::string messages_;
};

}  // namespace tn61131::st::testing
