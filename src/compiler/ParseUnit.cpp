#include "compiler/FileParser.h"

namespace tn61131::st {

using ast::Pou;
using ast::PouKind;

/// What a file or a namespace collects.
struct FileParser::UnitLists {
    explicit UnitLists(FileParser& parser)
        : types(parser), globals(parser), pous(parser), configurations(parser), namespaces(parser), usings(parser) {}

    void Fill(ast::SourceUnit& unit) {
        unit.types = types.Finish();
        unit.globals = globals.Finish();
        unit.pous = pous.Finish();
        unit.configurations = configurations.Finish();
        unit.namespaces = namespaces.Finish();
        unit.usings = usings.Finish();
    }

    List<ast::TypeDecl*> types;
    List<ast::VarBlock*> globals;
    List<Pou*> pous;
    List<ast::Configuration*> configurations;
    List<ast::Namespace*> namespaces;
    List<std::span<ast::Identifier>> usings;
};

ast::SourceUnit* FileParser::ParseUnit() {
    auto* const unit = arena_.New<ast::SourceUnit>();
    UnitLists lists(*this);
    ParseUnitItems(lists, Keyword::None);
    lists.Fill(*unit);
    return unit;
}

std::span<ast::Stmt*> FileParser::ParseLoneStatements() {
    List<ast::Stmt*> list(*this);
    while (!IsAtEnd()) {
        if (!IsBound(At())) {
            ParseStatement(list);
        } else {
            SkipStrayBound();
        }
    }
    return list.Finish();
}

// Declarations up to `end` or, where that is None, the end of the file.
void FileParser::ParseUnitItems(UnitLists& lists, Keyword end) {
    bool isLost = false;  // reported, and nothing known found since
    while (!IsAtEnd() && (end == Keyword::None || !Is(end))) {
        panic_ = false;
        parentheses_ = 0;
        if (isLost && Accept(TokenKind::Semicolon)) continue;
        if (ParseUnitItem(lists)) {
            isLost = false;
            continue;
        }
        if (!isLost) {
            const bool isEnd = GetKeywordText(At().keyword).starts_with("END_");
            if (isEnd) {
                diagnostics_.Report(DiagnosticCode::StrayEnd, At().range, {GetKeywordText(At().keyword)});
            } else {
                diagnostics_.Report(DiagnosticCode::DeclarationExpected, At().range, {Describe(At())});
            }
            isLost = !isEnd;
        }
        Take();
    }
}

bool FileParser::ParseUnitItem(UnitLists& lists) {
    const bool isNamed = Ahead(1).kind == TokenKind::Identifier;
    switch (At().keyword) {
        case Keyword::Type: ParseTypeBlock(lists.types); return true;
        case Keyword::VarGlobal:
        case Keyword::VarConfig:
        case Keyword::VarAccess: lists.globals.Add(ParseVarBlock()); return true;
        case Keyword::Function: lists.pous.Add(ParsePou(PouKind::Function, Keyword::EndFunction)); return true;
        case Keyword::FunctionBlock:
        case Keyword::Functionblock:
            lists.pous.Add(ParsePou(PouKind::FunctionBlock, Keyword::EndFunctionBlock));
            return true;
        case Keyword::Program: lists.pous.Add(ParsePou(PouKind::Program, Keyword::EndProgram)); return true;
        case Keyword::Configuration: lists.configurations.Add(ParseConfiguration()); return true;
        case Keyword::Class:
            if (isNamed) lists.pous.Add(ParsePou(PouKind::FunctionBlock, Keyword::EndClass));
            return isNamed;
        case Keyword::Interface:
            if (isNamed) lists.pous.Add(ParsePou(PouKind::Interface, Keyword::EndInterface));
            return isNamed;
        case Keyword::Namespace:
            if (isNamed) lists.namespaces.Add(ParseNamespace());
            return isNamed;
        case Keyword::Using:
            if (isNamed) ParseUsing(lists.usings);
            return isNamed;
        case Keyword::Action:
            if (!isNamed || lists.pous.Size() == 0) return false;
            AppendMember(*lists.pous[lists.pous.Size() - 1], ParseAction());
            return true;
        default: break;
    }
    if (!Accept(TokenKind::Semicolon)) return false;
    Hint(at_[-1].range, "superfluous ';'");
    return true;
}

// An action that stands behind the end of its program or function block belongs to that.
void FileParser::AppendMember(Pou& owner, Pou* member) {
    List<Pou*> members(*this);
    for (Pou* each : owner.members)
        members.Add(each);
    members.Add(member);
    owner.members = members.Finish();
}

Pou* FileParser::ParsePou(PouKind kind, Keyword end) {
    auto* const pou = arena_.New<Pou>();
    pou->kind = kind;
    pou->attributes = TakeAttributes();
    pou->isClass = Is(Keyword::Class);
    const Token opener = At();
    if (Is(Keyword::Functionblock)) Hint(opener.range, "FUNCTIONBLOCK for FUNCTION_BLOCK");
    Take();
    ParseModifiers(*pou);
    const std::string owner = kind == PouKind::Function        ? "a function"
                              : kind == PouKind::FunctionBlock ? "a function block"
                              : kind == PouKind::Program       ? "a program"
                              : kind == PouKind::Method        ? "a method"
                                                               : "an interface";
    pou->name = ExpectName(owner);
    const bool hasResult = kind == PouKind::Function || kind == PouKind::Method;
    if (!panic_ && hasResult) {
        const bool lacksColon =
            At().kind == TokenKind::Identifier && !At().startsLine && Ahead(1).startsLine && !IsBound(At());
        if (lacksColon) ReportExpected("':'");
        panic_ = false;
        if (lacksColon || Accept(TokenKind::Colon)) pou->result = ParseType(TypePlace::Other);
    }
    ParseInheritance(*pou);
    SkipRestOfHeader();
    ++OpenCount(end);
    const std::uint32_t blocks = std::exchange(depthOfBlocks_, 0);
    ParsePouContent(*pou);
    depthOfBlocks_ = blocks;
    --OpenCount(end);
    ExpectPouEnd(end, opener);
    pou->range = RangeFrom(opener.range.begin);
    return pou;
}

// What is left of a heading that holds an error ends with its line.
void FileParser::SkipRestOfHeader() {
    while (panic_ && !At().startsLine && !IsBound(At()) && !Is(TokenKind::Semicolon))
        Take();
    panic_ = false;
    parentheses_ = 0;
    while (Accept(TokenKind::Semicolon))
        Hint(at_[-1].range, "';' behind a heading");
}

void FileParser::ParseModifiers(Pou& pou) {
    while (Ahead(1).kind == TokenKind::Identifier && IsName(Ahead(1)) && !Ahead(1).startsLine) {
        switch (At().keyword) {
            case Keyword::Public: pou.access = ast::Access::Public; break;
            case Keyword::Protected: pou.access = ast::Access::Protected; break;
            case Keyword::Private: pou.access = ast::Access::Private; break;
            case Keyword::Internal: pou.access = ast::Access::Internal; break;
            case Keyword::Abstract: pou.isAbstract = true; break;
            case Keyword::Final: pou.isFinal = true; break;
            case Keyword::Override: pou.isOverride = true; break;
            default: return;
        }
        // FUNCTION_BLOCK Final EXTENDS Base: the name of the block is Final.
        const bool isName = Ahead(1).keyword == Keyword::Extends || Ahead(1).keyword == Keyword::Implements;
        if (isName && Ahead(2).kind == TokenKind::Identifier) {
            pou.isFinal = pou.isFinal && !Is(Keyword::Final);
            return;
        }
        Take();
    }
}

void FileParser::ParseInheritance(Pou& pou) {
    const auto parseNames = [this](std::string_view owner) {
        List<ast::Identifier> names(*this);
        do
            names.Add(ParseQualifiedName(owner));
        while (!panic_ && Accept(TokenKind::Comma));
        return names.Finish();
    };
    if (!panic_ && Accept(Keyword::Extends)) pou.extends = parseNames("what is extended");
    if (!panic_ && Accept(Keyword::Implements)) pou.implements = parseNames("an interface");
}

// Whether statements may follow END_X; all words that a unit of program organisation ends with.
bool FileParser::IsUnitBound(Keyword keyword) noexcept {
    switch (keyword) {
        case Keyword::Type:
        case Keyword::VarGlobal:
        case Keyword::Function:
        case Keyword::FunctionBlock:
        case Keyword::Functionblock:
        case Keyword::Program:
        case Keyword::Configuration:
        case Keyword::EndAction:
        case Keyword::EndClass:
        case Keyword::EndConfiguration:
        case Keyword::EndFunction:
        case Keyword::EndFunctionBlock:
        case Keyword::EndFunctionblock:
        case Keyword::EndGet:
        case Keyword::EndInterface:
        case Keyword::EndMethod:
        case Keyword::EndNamespace:
        case Keyword::EndProgram:
        case Keyword::EndProperty:
        case Keyword::EndResource:
        case Keyword::EndSet:
        case Keyword::EndStep:
        case Keyword::EndTransition: return true;
        default: return false;
    }
}

void FileParser::ParsePouContent(Pou& pou) {
    List<ast::VarBlock*> blocks(*this);
    List<Pou*> members(*this);
    List<std::span<ast::Identifier>> usings(*this);
    List<ast::Stmt*> body(*this);
    const bool isMember = pou.kind == PouKind::Method || pou.kind == PouKind::Action || pou.kind == PouKind::Property;
    for (;;) {
        if (IsAtEnd() || IsUnitBound(At().keyword)) break;
        // A method ends where the next one begins.
        if (IsMember()) {
            if (isMember) break;
            members.Add(ParseMember());
        } else if (IsVarSection(At().keyword)) {
            if (body.Size() != 0) Hint(At().range, "declarations behind statements");
            blocks.Add(ParseVarBlock());
        } else if (IsBound(At())) {
            SkipStrayBound();
        } else if (Is(Keyword::Using) && Ahead(1).kind == TokenKind::Identifier) {
            ParseUsing(usings);
        } else if (IsSfc()) {
            pou.sfc = ParseSfc();
        } else if (isMember && (Is(Keyword::Get) || Is(Keyword::Set)) && Ahead(1).startsLine) {
            break;
        } else {
            ParseStatement(body);
        }
    }
    pou.variables = blocks.Finish();
    pou.members = members.Finish();
    pou.usings = usings.Finish();
    pou.body = body.Finish();
}

bool FileParser::IsMember() const noexcept {
    const bool isWord = Is(Keyword::Method) || Is(Keyword::Property) || Is(Keyword::Action);
    return isWord && Ahead(1).kind == TokenKind::Identifier && !Ahead(1).startsLine;
}

Pou* FileParser::ParseMember() {
    if (Is(Keyword::Method)) return ParsePou(PouKind::Method, Keyword::EndMethod);
    return Is(Keyword::Property) ? ParseProperty() : ParseAction();
}

Pou* FileParser::ParseProperty() {
    auto* const property = arena_.New<Pou>();
    property->kind = PouKind::Property;
    property->attributes = TakeAttributes();
    const Token opener = At();
    Take();
    ParseModifiers(*property);
    property->name = ExpectName("a property");
    Expect(TokenKind::Colon, "':'");
    property->result =
        panic_ ? arena_.New<ast::TypeSpec>(ast::TypeSpecKind::Error, At().range) : ParseType(TypePlace::Other);
    SkipRestOfHeader();
    ++OpenCount(Keyword::EndProperty);
    while (Is(Keyword::Get) || Is(Keyword::Set)) {
        const bool isGetter = Is(Keyword::Get);
        (isGetter ? property->getter : property->setter) = ParseAccessor(*property);
    }
    --OpenCount(Keyword::EndProperty);
    ExpectPouEnd(Keyword::EndProperty, opener);
    property->range = RangeFrom(opener.range.begin);
    return property;
}

Pou* FileParser::ParseAccessor(const Pou& property) {
    const Token opener = At();
    const Keyword end = Is(Keyword::Get) ? Keyword::EndGet : Keyword::EndSet;
    auto* const accessor = arena_.New<Pou>();
    accessor->kind = PouKind::Property;
    accessor->attributes = TakeAttributes();
    accessor->name = property.name;
    Take();
    SkipRestOfHeader();
    ++OpenCount(end);
    const std::uint32_t blocks = std::exchange(depthOfBlocks_, 0);
    ParsePouContent(*accessor);
    depthOfBlocks_ = blocks;
    --OpenCount(end);
    ExpectPouEnd(end, opener);
    accessor->range = RangeFrom(opener.range.begin);
    return accessor;
}

Pou* FileParser::ParseAction() {
    auto* const action = arena_.New<Pou>();
    action->kind = PouKind::Action;
    action->attributes = TakeAttributes();
    const Token opener = At();
    Take();
    ParseModifiers(*action);
    action->name = ExpectName("an action");
    Accept(TokenKind::Colon);
    SkipRestOfHeader();
    ++OpenCount(Keyword::EndAction);
    const std::uint32_t blocks = std::exchange(depthOfBlocks_, 0);
    ParsePouContent(*action);
    depthOfBlocks_ = blocks;
    --OpenCount(Keyword::EndAction);
    ExpectPouEnd(Keyword::EndAction, opener);
    action->range = RangeFrom(opener.range.begin);
    return action;
}

void FileParser::ExpectPouEnd(Keyword end, const Token& opener) {
    panic_ = false;
    parentheses_ = 0;
    const bool isOther = end == Keyword::EndFunctionBlock && Is(Keyword::EndFunctionblock);
    if (isOther) Hint(At().range, "END_FUNCTIONBLOCK for END_FUNCTION_BLOCK");
    if (isOther || Is(end)) {
        Take();
        if (Accept(TokenKind::Semicolon)) Hint(at_[-1].range, "';' behind the end of a declaration");
        return;
    }
    if (IsAtEnd()) {
        Hint(At().range, "no " + std::string(GetKeywordText(end)) + " at the end of the file");
        return;
    }
    ExpectEnd(end, opener);
    // END_X of something that is not open was meant for this one.
    const bool isEnd = GetKeywordText(At().keyword).starts_with("END_");
    if (isEnd && !IsOpen(At().keyword) && IsUnitBound(At().keyword)) Take();
}

ast::Namespace* FileParser::ParseNamespace() {
    auto* const result = arena_.New<ast::Namespace>();
    const Token opener = At();
    Take();
    result->isInternal = Is(Keyword::Internal) && IsName(Ahead(1));
    if (result->isInternal) Take();
    List<ast::Identifier> path(*this);
    do
        path.Add(ExpectName("a namespace"));
    while (!panic_ && Accept(TokenKind::Dot));
    result->path = path.Finish();
    SkipRestOfHeader();
    const Nest nest(*this);
    ++OpenCount(Keyword::EndNamespace);
    if (nest.Ok()) {
        UnitLists lists(*this);
        ParseUnitItems(lists, Keyword::EndNamespace);
        lists.Fill(result->content);
    } else {
        while (!IsAtEnd())
            Take();
    }
    --OpenCount(Keyword::EndNamespace);
    ExpectPouEnd(Keyword::EndNamespace, opener);
    return result;
}

void FileParser::ParseUsing(List<std::span<ast::Identifier>>& list) {
    Take();
    do {
        List<ast::Identifier> path(*this);
        do
            path.Add(ExpectName("a namespace"));
        while (!panic_ && Accept(TokenKind::Dot));
        list.Add(path.Finish());
    } while (!panic_ && Accept(TokenKind::Comma));
    ExpectSemicolon(Place::Declaration);
}

}  // namespace tn61131::st
