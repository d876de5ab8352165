#include "compiler/Compiler.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "compiler/Checker.h"
#include "compiler/Declarations.h"
#include "compiler/Generator.h"
#include "compiler/Parser.h"

namespace tn61131::st {

namespace {

/// One compilation: what it reads is the result's sources, what it finds goes to the result.
class Compilation {
 public:
    Compilation(CompileResult& result, const CompileOptions& options)
        : result_(result),
          options_(options),
          diagnostics_(result.sources),
          project_(result.sources, options, diagnostics_),
          checker_(project_),
          declarations_(project_, checker_) {
        checker_.SetDeclarations(declarations_);
    }

    void Run(std::vector<SourceText> texts) {
        if (ParseFiles(std::move(texts))) {
            declarations_.Enter(units_);
            declarations_.Resolve();
            checker_.CheckAll();
            CheckStandalones();
            declarations_.Finish();
            if (!diagnostics_.HasErrors()) Produce();
        }
        result_.diagnostics = diagnostics_.Sort();
        // A program that runs more than once has been checked as often.
        const auto isSame = [](const Diagnostic& left, const Diagnostic& right) {
            return left.code == right.code && left.range.begin == right.range.begin &&
                   left.range.end == right.range.end && left.text == right.text;
        };
        const auto last = std::unique(result_.diagnostics.begin(), result_.diagnostics.end(), isSame);
        result_.diagnostics.erase(last, result_.diagnostics.end());
    }

 private:
    void Produce() {
        Optimise(project_);
        result_.succeeded = Generate(project_, declarations_, result_.image, result_.map) && !diagnostics_.HasErrors();
    }

    bool AddFile(std::string name, std::string text, std::uint32_t& file) {
        if (result_.sources.AddFile(std::move(name), std::move(text), file)) return true;
        diagnostics_.Report(DiagnosticCode::ProjectTooLarge, {}, {std::to_string(SourceManager::kMaxBytes)});
        return false;
    }

    bool ParseFiles(std::vector<SourceText> texts) {
        for (SourceText& text : texts) {
            std::uint32_t file = 0;
            if (!AddFile(std::move(text.name), std::move(text.text), file)) return false;
            units_.push_back(
                ParseFile(result_.sources, file, options_.switches, project_.names, project_.arena, diagnostics_));
        }
        return true;
    }

    Standalone& AddStandalone(std::uint32_t id, bool isExpression) {
        Pou& pou = project_.pous.emplace_back();
        pou.kind = ast::PouKind::Function;
        pou.resultType = project_.types.Void();
        pou.progress = Progress::Done;
        pou.scope = &project_.scopes.emplace_back(&project_.globalScope, &pou);
        return project_.standalones.emplace_back(Standalone{.id = id, .isExpression = isExpression, .pou = &pou});
    }

    void CheckStandalones() {
        // Their addresses stay as they are: what has been checked may point to them.
        project_.standalones.reserve(options_.expressions.size() + options_.codeBlocks.size());
        for (const StandaloneText& each : options_.expressions) {
            std::uint32_t file = 0;
            if (!AddFile("<expression " + std::to_string(each.id) + ">", each.text, file)) return;
            const ast::Expr* expression = ParseExpressionFile(result_.sources, file, options_.switches, project_.names,
                                                              project_.arena, diagnostics_);
            Standalone& standalone = AddStandalone(each.id, true);
            if (expression != nullptr) checker_.CheckStandaloneExpression(standalone, *expression);
        }
        for (const StandaloneText& each : options_.codeBlocks) {
            std::uint32_t file = 0;
            if (!AddFile("<code block " + std::to_string(each.id) + ">", each.text, file)) return;
            const std::span<ast::Stmt*> statements = ParseStatementsFile(result_.sources, file, options_.switches,
                                                                         project_.names, project_.arena, diagnostics_);
            checker_.CheckStandaloneBlock(AddStandalone(each.id, false), statements);
        }
    }

    CompileResult& result_;
    const CompileOptions& options_;
    Diagnostics diagnostics_;
    Project project_;
    Checker checker_;
    Declarations declarations_;
    std::vector<ast::SourceUnit*> units_;
};

}  // namespace

CompileResult Compile(std::vector<SourceText> texts, const CompileOptions& options) {
    CompileResult result;
    Compilation(result, options).Run(std::move(texts));
    return result;
}

}  // namespace tn61131::st
