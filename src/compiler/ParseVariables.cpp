#include <algorithm>
#include <iterator>
#include <optional>

#include "compiler/FileParser.h"

namespace tn61131::st {

namespace {

struct SectionRow {
    Keyword keyword;
    ast::VarSection section;
};

constexpr SectionRow kSections[] = {
    {Keyword::Var, ast::VarSection::Local},        {Keyword::VarInput, ast::VarSection::Input},
    {Keyword::VarOutput, ast::VarSection::Output}, {Keyword::VarInOut, ast::VarSection::InOut},
    {Keyword::VarTemp, ast::VarSection::Temp},     {Keyword::VarStat, ast::VarSection::Static},
    {Keyword::VarInst, ast::VarSection::Instance}, {Keyword::VarExternal, ast::VarSection::External},
    {Keyword::VarGlobal, ast::VarSection::Global}, {Keyword::VarAccess, ast::VarSection::Access},
    {Keyword::VarConfig, ast::VarSection::Config},
};

const SectionRow* FindSection(Keyword keyword) noexcept {
    const auto* const row = std::find_if(std::begin(kSections), std::end(kSections),
                                         [keyword](const SectionRow& each) { return each.keyword == keyword; });
    return row == std::end(kSections) ? nullptr : row;
}

// The ends that a list of declarations waits for.
constexpr bool IsDeclarationEnd(Keyword keyword) noexcept {
    return keyword == Keyword::EndVar || keyword == Keyword::EndStruct || keyword == Keyword::EndUnion;
}

}  // namespace

bool FileParser::IsVarSection(Keyword keyword) noexcept {
    return FindSection(keyword) != nullptr;
}

ast::VarBlock* FileParser::ParseVarBlock() {
    const Token opener = At();
    auto* const block = arena_.New<ast::VarBlock>();
    block->section = FindSection(opener.keyword)->section;
    Take();
    ParseQualifiers(*block);
    SkipExtraSemicolons();
    ++OpenCount(Keyword::EndVar);
    block->variables = ParseDeclarations(block->section, "a variable");
    --OpenCount(Keyword::EndVar);
    ExpectEnd(Keyword::EndVar, opener);
    block->range = RangeFrom(opener.range.begin);
    if (Accept(TokenKind::Semicolon)) Hint(at_[-1].range, "';' behind END_VAR");
    return block;
}

void FileParser::ParseQualifiers(ast::VarBlock& block) {
    while (!BeginsDeclaration(at_)) {
        switch (At().keyword) {
            case Keyword::Constant: block.constant = true; break;
            case Keyword::Retain: block.retain = true; break;
            case Keyword::NonRetain: block.nonRetain = true; break;
            case Keyword::Persistent: block.persistent = true; break;
            case Keyword::Volatile: break;
            case Keyword::Public: block.access = ast::Access::Public; break;
            case Keyword::Protected: block.access = ast::Access::Protected; break;
            case Keyword::Private: block.access = ast::Access::Private; break;
            case Keyword::Internal: block.access = ast::Access::Internal; break;
            default: return;
        }
        Take();
    }
}

std::span<ast::VarDecl*> FileParser::ParseDeclarations(ast::VarSection section, std::string_view what) {
    List<ast::VarDecl*> list(*this);
    const bool hasPaths = section == ast::VarSection::Access || section == ast::VarSection::Config;
    // Whether END_VAR comes before anything that statements could be part of.
    std::optional<bool> isEnded;
    const auto looksLikeStatement = [&] {
        if (!IsName(At()) || !At().startsLine || Ahead(1).kind != TokenKind::Assign) return false;
        if (!isEnded) {
            const Token* bound = at_;
            while (!IsBound(*bound))
                ++bound;
            isEnded = IsDeclarationEnd(bound->keyword);
        }
        return !*isEnded;
    };
    for (;;) {
        while (Accept(TokenKind::Semicolon))
            Hint(at_[-1].range, "superfluous ';'");
        if (IsBound(At())) break;
        // A statement where a declaration should be: the end of the block is missing.
        const bool isStatement = GetKeywordRow(At().keyword).role == KeywordRole::Statement;
        if (isStatement && Ahead(1).kind != TokenKind::Colon && Ahead(1).kind != TokenKind::Comma) break;
        if (looksLikeStatement()) break;
        const Token* const first = at_;
        if (hasPaths) {
            ParsePathDeclaration(section, list);
        } else {
            ParseDeclaration(what, list);
        }
        if (at_ == first) Take();
    }
    return list.Finish();
}

void FileParser::ParseDeclaration(std::string_view what, List<ast::VarDecl*>& list) {
    const std::size_t first = list.Size();
    const std::span<std::string_view> attributes = TakeAttributes();
    do {
        const ast::Identifier name = ExpectName(what);
        if (name.name == NameId::None) break;
        auto* const variable = arena_.New<ast::VarDecl>();
        variable->name = name;
        if (Is(Keyword::At)) ParseLocation(*variable);
        list.Add(variable);
    } while (!panic_ && Accept(TokenKind::Comma));
    Expect(TokenKind::Colon, "',' or ':'");
    ast::VarDecl shared;
    shared.attributes = attributes;
    if (!panic_) {
        shared.type = ParseType(TypePlace::Variable, &shared.blockInit);
        if (!panic_ && Accept(TokenKind::Assign)) shared.initial = ParseInitializer();
    } else {
        shared.type = arena_.New<ast::TypeSpec>(ast::TypeSpecKind::Error, At().range);
    }
    for (std::size_t i = first; i < list.Size(); ++i) {
        list[i]->type = shared.type;
        list[i]->initial = shared.initial;
        list[i]->blockInit = shared.blockInit;
        list[i]->attributes = shared.attributes;
    }
    const bool isStruct = shared.type->kind == ast::TypeSpecKind::Struct && shared.initial == nullptr;
    if (!panic_ && isStruct && !Is(TokenKind::Semicolon)) {
        Hint(RangeFrom(EndOfPrevious()), "no ';' behind END_STRUCT");
        return;
    }
    ExpectSemicolon(Place::Declaration);
}

void FileParser::ParseLocation(ast::VarDecl& variable) {
    Take();
    if (Is(TokenKind::Located)) {
        variable.location = ParseLocated();
    } else {
        variable.alias = ParsePostfix();
    }
}

// name : path : type READ_WRITE; of VAR_ACCESS, path AT address : type := value; of VAR_CONFIG.
void FileParser::ParsePathDeclaration(ast::VarSection section, List<ast::VarDecl*>& list) {
    auto* const variable = arena_.New<ast::VarDecl>();
    variable->attributes = TakeAttributes();
    if (section == ast::VarSection::Access) {
        variable->name = ExpectName("an access path");
        Expect(TokenKind::Colon, "':'");
    }
    if (!panic_) variable->alias = ParsePostfix();
    if (section == ast::VarSection::Config && Is(Keyword::At)) {
        Take();
        if (Is(TokenKind::Located)) {
            variable->location = ParseLocated();
        } else {
            ReportExpected("a direct address");
        }
    }
    Expect(TokenKind::Colon, "':'");
    if (!panic_) {
        variable->type = ParseType(TypePlace::Variable, &variable->blockInit);
        if (Is(Keyword::ReadOnly) || Is(Keyword::ReadWrite)) {
            variable->readWrite = Is(Keyword::ReadWrite);
            Take();
        }
        if (!panic_ && Accept(TokenKind::Assign)) variable->initial = ParseInitializer();
        list.Add(variable);
    }
    ExpectSemicolon(Place::Declaration);
}

}  // namespace tn61131::st
