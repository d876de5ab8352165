#include "compiler/FileParser.h"

namespace tn61131::st {

ast::Configuration* FileParser::ParseConfiguration() {
    auto* const configuration = arena_.New<ast::Configuration>();
    const Token opener = At();
    Take();
    configuration->name = ExpectName("a configuration");
    SkipRestOfHeader();
    List<ast::VarBlock*> variables(*this);
    List<ast::Resource*> resources(*this);
    ++OpenCount(Keyword::EndConfiguration);
    for (;;) {
        if (IsVarSection(At().keyword)) {
            variables.Add(ParseVarBlock());
        } else if (Is(Keyword::Resource)) {
            resources.Add(ParseResource());
        } else if (Is(Keyword::Task) || Is(Keyword::Program)) {
            // Tasks in the configuration itself belong to a resource without a name.
            auto* const resource = arena_.New<ast::Resource>();
            ParseTasks(*resource);
            resources.Add(resource);
        } else if (Accept(TokenKind::Semicolon)) {
            Hint(at_[-1].range, "superfluous ';'");
        } else {
            if (IsBound(At())) break;
            SkipToBlock("RESOURCE, TASK, PROGRAM, VAR_GLOBAL or END_CONFIGURATION");
        }
    }
    --OpenCount(Keyword::EndConfiguration);
    configuration->variables = variables.Finish();
    configuration->resources = resources.Finish();
    ExpectPouEnd(Keyword::EndConfiguration, opener);
    return configuration;
}

// Where nothing known stands: reports that once, and skips to the next word that begins or ends a block.
void FileParser::SkipToBlock(std::string_view what) {
    ReportExpected(what);
    do
        Take();
    while (!IsBound(At()) && !(At().startsLine && (Is(Keyword::Resource) || Is(Keyword::Task))));
    panic_ = false;
    parentheses_ = 0;
}

ast::Resource* FileParser::ParseResource() {
    auto* const resource = arena_.New<ast::Resource>();
    const Token opener = At();
    Take();
    resource->name = ExpectName("a resource");
    if (!panic_ && Accept(Keyword::On)) resource->on = ExpectName("a type of resource");
    SkipRestOfHeader();
    ++OpenCount(Keyword::EndResource);
    ParseTasks(*resource);
    --OpenCount(Keyword::EndResource);
    ExpectPouEnd(Keyword::EndResource, opener);
    return resource;
}

void FileParser::ParseTasks(ast::Resource& resource) {
    List<ast::VarBlock*> globals(*this);
    List<ast::TaskDecl*> tasks(*this);
    List<ast::ProgramInstance*> programs(*this);
    const bool isNamed = resource.name.range.end != 0;
    for (;;) {
        if (isNamed && IsVarSection(At().keyword)) {
            globals.Add(ParseVarBlock());
        } else if (Is(Keyword::Task)) {
            tasks.Add(ParseTask());
        } else if (Is(Keyword::Program)) {
            programs.Add(ParseProgramInstance());
        } else if (Accept(TokenKind::Semicolon)) {
            Hint(at_[-1].range, "superfluous ';'");
        } else {
            if (IsBound(At()) || !isNamed) break;
            SkipToBlock("TASK, PROGRAM, VAR_GLOBAL or END_RESOURCE");
        }
    }
    resource.globals = globals.Finish();
    resource.tasks = tasks.Finish();
    resource.programs = programs.Finish();
}

ast::TaskDecl* FileParser::ParseTask() {
    auto* const task = arena_.New<ast::TaskDecl>();
    Take();
    task->name = ExpectName("a task");
    if (!panic_) task->properties = ParseStructElements();
    ExpectSemicolon(Place::Declaration);
    return task;
}

ast::ProgramInstance* FileParser::ParseProgramInstance() {
    auto* const program = arena_.New<ast::ProgramInstance>();
    Take();
    const bool isQualified = Is(Keyword::Retain) || Is(Keyword::NonRetain);
    if (isQualified && Ahead(1).kind == TokenKind::Identifier && Ahead(1).keyword != Keyword::With) {
        program->retain = Is(Keyword::Retain);
        Take();
    }
    program->name = ExpectName("a program");
    if (!panic_ && Accept(Keyword::With)) program->task = ExpectName("a task");
    Expect(TokenKind::Colon, "':'");
    if (!panic_) program->type = ParseQualifiedName("a type of program");
    if (!panic_ && Is(TokenKind::LeftParen)) ParseProgramArguments(*program);
    ExpectSemicolon(Place::Declaration);
    return program;
}

void FileParser::ParseProgramArguments(ast::ProgramInstance& program) {
    Take();
    ++parentheses_;
    List<ast::Argument> arguments(*this);
    List<ast::BlockTask> tasks(*this);
    if (!Is(TokenKind::RightParen)) {
        do {
            if (Ahead(1).keyword == Keyword::With) {
                ast::BlockTask each;
                each.block = ExpectName("a function block");
                Take();
                if (!panic_) each.task = ExpectName("a task");
                tasks.Add(each);
            } else {
                arguments.Add(ParseArgument());
            }
        } while (!panic_ && Accept(TokenKind::Comma));
    }
    if (Expect(TokenKind::RightParen, "',' or ')'") && !panic_) --parentheses_;
    program.arguments = arguments.Finish();
    program.blockTasks = tasks.Finish();
}

}  // namespace tn61131::st
