#include "tools/TokensCommand.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "literal/LogicParseContext.h"
#include "platform/TextInput.h"
#include "tools/Describe.h"
#include "tools/FileContent.h"
#include "tools/JsonWriter.h"
#include "tools/Tool.h"

namespace tn61131 {
namespace {

void WriteJson(JsonWriter& json, const CLogicToken& token) {
    const TextPosition& start = token.Location().GetStart();
    json.BeginObject();
    json.Key("type");
    json.Number(std::int64_t{token.GetType()});
    json.Key("name");
    const char* const name = CLogicToken::GetTokenName(token.GetType());
    name != nullptr ? json.String(name) : json.Null();
    json.Member("text", token.GetText());
    json.Member("line", std::uint64_t{start.line});
    json.Member("column", std::uint64_t{start.column});
    if (token.IsNotTerminated()) {
        json.Key("terminated");
        json.Boolean(false);
    }
    if (token.IsKeyword()) {
        json.Key("keyword");
        json.Boolean(true);
    }
    json.EndObject();
    json.EndLine();
}

void WriteHuman(std::ostream& output, const CLogicToken& token) {
    const TextPosition& start = token.Location().GetStart();
    const char* const name = CLogicToken::GetTokenName(token.GetType());
    output << start.line << ':' << start.column << "  ";
    name != nullptr ? output << name : output << token.GetType();
    output << "  " << PrintableText(token.GetText()) << (token.IsNotTerminated() ? "  (not terminated)\n" : "\n");
}

}  // namespace

int ShowTokens(const TokensOptions& options, std::istream& input, std::ostream& output, std::ostream& messages) {
    std::string source;
    if (!ReadFileOrInput(options.path, input, source)) {
        messages << "tn61131: " << options.path << ": cannot be read\n";
        return kExitFailure;
    }
    TextInputTNString text(source);
    CLogicParseContext context(&text, nullptr);
    JsonWriter json(output);
    CLogicToken token;
    for (;;) {
        context.GetNextLogicTokenAfterWhitespace(token);
        if (token.IsType(CParseToken::kEndOfInput)) return kExitSuccess;
        options.json ? WriteJson(json, token) : WriteHuman(output, token);
    }
}

void AddTokensCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<TokensOptions>();
    CLI::App* command = app.add_subcommand("tokens", "List the tokens of a structured-text file");
    command->add_option("FILE", options->path, "structured text; - reads the standard input")->required();
    command->add_flag("--json", options->json, "JSON, a line per token");
    command->callback([options, &exitStatus] { exitStatus = ShowTokens(*options, std::cin, std::cout, std::cerr); });
}

}  // namespace tn61131
