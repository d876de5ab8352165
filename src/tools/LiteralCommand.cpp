#include "tools/LiteralCommand.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include <strings.h>

#include "platform/ErrorLog.h"
#include "platform/TextOutput.h"
#include "tools/Describe.h"
#include "tools/JsonWriter.h"
#include "tools/Tool.h"
#include "value/Value.h"

namespace tn61131 {
namespace {

bool EqualsNoCase(const std::string& text, const char* word) {
    return strcasecmp(text.c_str(), word) == 0;
}

bool HasTypePrefix(const std::string& text) {
    CValueType type;
    const char* behindPrefix = text.c_str();
    type.ParseTypePrefix(behindPrefix);
    return type.IsDefined();
}

/// Stands before each text while the command line is parsed.
constexpr char kTextMask = 1;

/// "--type", "-h"; a negative number is none.
bool LooksLikeOption(std::string_view argument) {
    return argument.size() > 1 && argument[0] == '-' && (argument[1] < '0' || argument[1] > '9') && argument[1] != '.';
}

/// A digit and behind it the E of an exponent.
bool HasExponent(std::string_view text) {
    for (std::size_t at = text.find_first_of("eE"); at != std::string_view::npos;
         at = text.find_first_of("eE", at + 1)) {
        if (at > 0 && text[at - 1] >= '0' && text[at - 1] <= '9') return true;
    }
    return false;
}

/// A literal in every form.
struct LiteralForms {
    std::string type;
    std::string plain;
    std::string literal;
    std::string declaration;
    std::string raw;  ///< hexadecimal
};

std::string RawText(const CValue& value) {
    std::vector<unsigned char> raw(value.GetRawDataSize());
    return value.GetRawData(raw.data(), raw.size()) ? HexText(raw.data(), raw.size()) : std::string();
}

LiteralForms FormsOf(const CValue& value) {
    CTextOutputString plain;
    CTextOutputString literal;
    CTextOutputString declaration;
    value.GetAsText(nullptr, plain);
    value.GetAsLiteral(literal);
    value.GetDeclaration(declaration);
    constexpr bool kShortForm = false;
    return {value.GetTypeName(kShortForm), plain.TakeText(), literal.TakeText(), declaration.TakeText(),
            RawText(value)};
}

void WriteJson(JsonWriter& json, const std::string& text, const LiteralForms& forms) {
    json.BeginObject();
    json.Member("text", text);
    json.Member("type", forms.type);
    json.Member("plain", forms.plain);
    json.Member("literal", forms.literal);
    json.Member("declaration", forms.declaration);
    json.Member("raw", forms.raw);
    json.EndObject();
    json.EndLine();
}

void WriteJson(JsonWriter& json, const std::string& text, const CErrorLog::Entry& entry) {
    json.BeginObject();
    json.Member("text", text);
    json.Key("errors");
    json.BeginArray();
    json.BeginObject();
    json.Member("id", std::uint64_t{entry.id});
    json.Member("location", entry.location);
    json.Member("text", entry.text);
    json.EndObject();
    json.EndArray();
    json.EndObject();
    json.EndLine();
}

/// An integer finds its own type only through its parser: SetFromText() takes no type from a text without a prefix.
bool ParseLiteral(CErrorLog& log, const std::string& text, ElementaryType wanted, CValue& value) {
    const ErrorLocationNull& nowhere = ErrorLocationNull::Get();
    if (wanted != ElementaryType::Undefined) return value.SetFromText(log, nowhere, text, wanted);
    if (HasTypePrefix(text)) return value.SetFromText(log, nowhere, text, ElementaryType::Undefined);
    const ElementaryType guessed = GuessLiteralType(text);
    if (guessed != ElementaryType::Undefined) return value.SetFromText(log, nowhere, text, guessed);
    return value.StringToInteger(log, nowhere, text.c_str(), ElementaryType::Undefined);
}

void WriteHuman(std::ostream& output, const std::string& text, const LiteralForms& forms) {
    output << PrintableText(text) << "\n  type         " << forms.type << "\n  plain        " << forms.plain
           << "\n  literal      " << forms.literal << "\n  declaration  " << forms.declaration << "\n  raw          "
           << forms.raw << '\n';
}

}  // namespace

ElementaryType GuessLiteralType(std::string_view text) {
    const std::string terminated(text);
    if (HasTypePrefix(terminated)) return ElementaryType::Undefined;
    if (text.starts_with('\'')) return ElementaryType::String;
    if (text.starts_with('"')) return ElementaryType::WString;
    if (EqualsNoCase(terminated, "TRUE") || EqualsNoCase(terminated, "FALSE")) return ElementaryType::Bool;
    if (EqualsNoCase(terminated, "NULL")) return ElementaryType::Pointer;
    const bool looksReal = text.find('.') != std::string_view::npos || HasExponent(text);
    return looksReal && text.find("16#") == std::string_view::npos ? ElementaryType::LReal : ElementaryType::Undefined;
}

void MaskLiteralTexts(std::vector<std::string>& arguments) {
    bool onlyTexts = false;
    bool isValue = false;
    std::vector<std::string> masked;
    for (std::string& argument : arguments) {
        const bool isOption = !onlyTexts && LooksLikeOption(argument);
        if (isOption && argument == "--") {
            onlyTexts = true;
        } else if (isOption || isValue) {
            isValue = isOption && argument == "--type";
            masked.push_back(std::move(argument));
        } else {
            masked.push_back(kTextMask + argument);
        }
    }
    arguments = std::move(masked);
}

int ShowLiterals(const LiteralOptions& options, std::ostream& output, std::ostream& messages) {
    JsonWriter json(output);
    int exitStatus = kExitSuccess;
    for (const std::string& text : options.texts) {
        CErrorLog log;
        CValue value;
        if (ParseLiteral(log, text, options.type, value)) {
            const LiteralForms forms = FormsOf(value);
            options.json ? WriteJson(json, text, forms) : WriteHuman(output, text, forms);
            continue;
        }
        exitStatus = kExitFailure;
        const CErrorLog::Entry error =
            log.GetEntries().empty()
                ? CErrorLog::Entry{nullptr, 0, CErrorLog::Severity::Error, {}, "The type has no literal."}
                : log.GetEntries().front();
        if (options.json) WriteJson(json, text, error);
        messages << "tn61131: error " << error.id << ": " << PrintableText(error.text) << '\n';
    }
    return exitStatus;
}

void AddLiteralCommand(CLI::App& app, int& exitStatus) {
    struct Arguments {
        LiteralOptions options;
        std::string typeName;
    };
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand("literal", "Parse literals and show them in every form");
    command->add_option("TEXT", arguments->options.texts, "literals")->required();
    command->add_option("--type", arguments->typeName, "elementary type, default: as the text says")
        ->check(CLI::Validator(
            [](const std::string& name) {
                return CValueType::FindType(name) == ElementaryType::Undefined ? "unknown type '" + name + "'"
                                                                               : std::string();
            },
            ""));
    command->add_flag("--json", arguments->options.json, "JSON, a line per literal");
    command->callback([arguments, &exitStatus] {
        for (std::string& text : arguments->options.texts)
            text.erase(0, 1);  // the mask
        arguments->options.type = CValueType::FindType(arguments->typeName);
        exitStatus = ShowLiterals(arguments->options, std::cout, std::cerr);
    });
}

}  // namespace tn61131
