#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "compiler/Checker.h"
#include "compiler/Declarations.h"
#include "compiler/InitialValue.h"
#include "compiler/ParserTesting.h"

/// What the tests of declarations share.
namespace tn61131::st::testing {

/// A project of one file or more, declarations resolved and laid out, bodies not looked at.
class Resolved {
 public:
    explicit Resolved(std::string_view text, CompileOptions options = {})
        : Resolved(std::vector<std::string>{std::string(text)}, std::move(options)) {}
    explicit Resolved(const std::vector<std::string>& texts, CompileOptions options = {})
        : options_(std::move(options)),
          diagnostics_(sources_),
          project_(sources_, options_, diagnostics_),
          checker_(project_),
          declarations_(project_, checker_) {
        checker_.SetDeclarations(declarations_);
        std::vector<ast::SourceUnit*> units;
        for (const std::string& text : texts) {
            std::uint32_t file = 0;
            const std::string name(1, static_cast<char>('a' + units.size()));
            if (!sources_.AddFile(name + ".st", text, file)) return;
            units.push_back(ParseFile(sources_, file, options_.switches, project_.names, project_.arena, diagnostics_));
        }
        declarations_.Enter(units);
        declarations_.Resolve();
        declarations_.Finish();
    }

    [[nodiscard]] Project& GetProject() noexcept { return project_; }
    [[nodiscard]] Declarations& GetDeclarations() noexcept { return declarations_; }

    [[nodiscard]] std::vector<Reported> Errors() {
        std::vector<Reported> result;
        for (const Diagnostic& diagnostic : diagnostics_.Sort()) {
            const SourceLocation place = sources_.Locate(diagnostic.range.begin);
            result.push_back({place.line, place.column, diagnostic.code});
        }
        return result;
    }
    [[nodiscard]] std::string Messages() {
        std::string result;
        for (const Diagnostic& diagnostic : diagnostics_.Sort())
            result += FormatDiagnostic(sources_, diagnostic);
        return result;
    }

    /// "x" of the globals, "Main.x" of a unit; null when there is none.
    [[nodiscard]] Variable* Find(std::string_view path) {
        const std::size_t dot = path.find('.');
        const NameId first = project_.names.Find(path.substr(0, dot));
        const Symbol* symbol = declarations_.Lookup(first, &project_.globalScope);
        if (dot != std::string_view::npos && symbol != nullptr && symbol->pou != nullptr) {
            symbol = declarations_.LookupMember(project_.names.Find(path.substr(dot + 1)), symbol->pou);
        }
        return symbol == nullptr ? nullptr : symbol->variable;
    }
    /// As messages print it, with the size behind a blank.
    [[nodiscard]] std::string TypeOf(std::string_view path) {
        const Variable* variable = Find(path);
        if (variable == nullptr) return "none";
        return GetTypeText(project_.names, variable->type) + " " + std::to_string(variable->type->size);
    }
    /// The initial bytes in hexadecimal.
    [[nodiscard]] std::string BytesOf(std::string_view path) {
        const Variable* variable = Find(path);
        if (variable == nullptr) return "none";
        std::vector<unsigned char> bytes(variable->type->size);
        declarations_.WriteInitial(variable->type, variable->initial, bytes);
        return ToHex(bytes);
    }
    /// "name@offset" of each variable of an instance or member of a structure, then the size.
    [[nodiscard]] std::string LayoutOf(std::string_view type) {
        const Symbol* symbol = declarations_.Lookup(project_.names.Find(type), &project_.globalScope);
        if (symbol == nullptr || symbol->type == nullptr) return "none";
        std::string result;
        const Type* stripped = Strip(symbol->type);
        if (stripped->kind == TypeKind::Struct) {
            for (const Field& field : static_cast<const StructType*>(stripped)->fields) {
                Append(result, field.name, field.offset);
            }
        } else if (stripped->kind == TypeKind::FunctionBlock) {
            for (const Variable* variable : static_cast<const FunctionBlockType*>(stripped)->variables) {
                Append(result, variable->name, variable->storage.offset);
            }
        }
        return result + std::to_string(stripped->size);
    }
    /// GlobalData in hexadecimal.
    [[nodiscard]] std::string GlobalData() const { return ToHex(project_.globalData); }
    [[nodiscard]] std::string ConstantData() const { return ToHex(project_.constants); }

    static std::string ToHex(std::span<const unsigned char> bytes) {
        constexpr std::string_view kDigits = "0123456789ABCDEF";
        std::string result;
        for (const unsigned char byte : bytes) {
            result += kDigits[byte >> 4U];
            result += kDigits[byte & 15U];
        }
        return result;
    }

 private:
    void Append(std::string& text, NameId name, std::uint32_t offset) const {
        text += std::string(project_.names.GetSpelling(name)) + "@" + std::to_string(offset) + " ";
    }

    CompileOptions options_;
    SourceManager sources_;
    Diagnostics diagnostics_;
    Project project_;
    Checker checker_;
    Declarations declarations_;
};

}  // namespace tn61131::st::testing
