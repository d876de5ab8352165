#include "compiler/FileParser.h"

#include "compiler/TokenStream.h"

namespace tn61131::st {

FileParser::FileParser(const SourceManager& sources, std::uint32_t file, const Switches& switches, NameTable& names,
                       Arena& arena, Diagnostics& diagnostics)
    : text_(sources.GetText(file)),
      start_(sources.GetStart(file)),
      switches_(switches),
      names_(names),
      arena_(arena),
      diagnostics_(diagnostics) {
    TokenList list = ReadTokens(sources, file, switches, names, diagnostics);
    tokens_ = std::move(list.tokens);
    pragmas_ = std::move(list.pragmas);
    at_ = tokens_.data();
}

bool FileParser::Accept(TokenKind kind) noexcept {
    if (!Is(kind)) return false;
    Take();
    return true;
}

bool FileParser::Accept(Keyword keyword) noexcept {
    if (!Is(keyword)) return false;
    Take();
    return true;
}

SourceRange FileParser::RangeFrom(SourceOffset begin) const noexcept {
    const SourceOffset end = EndOfPrevious();
    return {begin, end > begin ? end : begin};
}

std::string FileParser::Describe(const Token& token) const {
    constexpr std::size_t kLongest = 40;
    if (token.kind == TokenKind::End) return "the end of the file";
    if (token.keyword != Keyword::None && !IsName(token)) return std::string(GetKeywordText(token.keyword));
    std::string_view text = TextOf(token.range);
    const bool isCut = text.size() > kLongest;
    text = text.substr(0, kLongest);
    while (isCut && !text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80)
        text.remove_suffix(1);
    return "'" + std::string(text) + (isCut ? "..." : "") + "'";
}

std::span<std::string_view> FileParser::TakeAttributes() {
    const auto index = static_cast<std::uint32_t>(at_ - tokens_.data());
    while (nextPragma_ < pragmas_.size() && pragmas_[nextPragma_].token < index)
        ++nextPragma_;
    List<std::string_view> attributes(*this);
    while (nextPragma_ < pragmas_.size() && pragmas_[nextPragma_].token == index)
        attributes.Add(pragmas_[nextPragma_++].text);
    return attributes.Finish();
}

void FileParser::ReportExpected(std::string_view what) {
    if (!panic_) diagnostics_.Report(DiagnosticCode::UnexpectedToken, At().range, {what, Describe(At())});
    panic_ = true;
}

bool FileParser::Expect(TokenKind kind, std::string_view what) {
    if (Accept(kind)) return true;
    ReportExpected(what);
    return false;
}

bool FileParser::ExpectWord(Keyword keyword) {
    if (!Is(keyword)) {
        ReportExpected(GetKeywordText(keyword));
        while (!Is(keyword) && !IsBound(At()) && !Is(TokenKind::Semicolon)) {
            // Where a statement begins, the word and what should stand in front of it are missing.
            const bool beginsNew = At().startsLine || Ahead(1).kind == TokenKind::Assign;
            if (beginsNew && BeginsStatement(at_)) break;
            // Behind CASE x stand labels, which begin like expressions.
            if (keyword == Keyword::Of && At().startsLine) break;
            Take();
        }
    }
    panic_ = false;
    parentheses_ = 0;
    if (Accept(keyword)) return true;
    Accept(TokenKind::Semicolon);
    return false;
}

ast::Identifier FileParser::ExpectName(std::string_view owner) {
    const Token& token = At();
    if (IsName(token)) {
        Take();
        return {token.name, token.range};
    }
    if (!panic_ && token.kind == TokenKind::Identifier && !IsBound(token)) {
        diagnostics_.Report(DiagnosticCode::KeywordAsName, token.range, {Describe(token), owner});
        panic_ = true;
        return {NameId::None, token.range};
    }
    ReportExpected("the name of " + std::string(owner));
    return {NameId::None, token.range};
}

void FileParser::Hint(SourceRange range, std::string_view text) {
    if (switches_.hints) diagnostics_.Report(DiagnosticCode::OtherSpelling, range, {text});
}

bool FileParser::BeginsStatement(const Token* token) const noexcept {
    if (GetKeywordRow(token->keyword).role == KeywordRole::Statement) return true;
    if (!IsName(*token) || parentheses_ != 0) return false;
    switch (token[1].kind) {
        case TokenKind::Assign:
        case TokenKind::LeftParen:
        case TokenKind::Dot:
        case TokenKind::LeftBracket:
        case TokenKind::Caret: return true;
        default: return false;
    }
}

bool FileParser::BeginsDeclaration(const Token* token) const noexcept {
    if (!IsName(*token) || parentheses_ != 0) return false;
    return token[1].kind == TokenKind::Colon || token[1].kind == TokenKind::Comma || token[1].keyword == Keyword::At;
}

bool FileParser::Begins(Place place, const Token* token) const noexcept {
    return place == Place::Statement ? BeginsStatement(token) : BeginsDeclaration(token);
}

void FileParser::ExpectSemicolon(Place place) {
    if (!panic_ && !Is(TokenKind::Semicolon)) {
        const SourceOffset end = EndOfPrevious();
        const std::string_view what = place == Place::Statement ? "this statement" : "this declaration";
        diagnostics_.Report(DiagnosticCode::MissingSemicolon, {end, end}, {what, Describe(At())});
        if (IsBound(At()) || At().startsLine || Begins(place, at_)) return;
        panic_ = true;
    }
    if (panic_) return Skip(place);
    Take();
    SkipExtraSemicolons();
}

void FileParser::SkipExtraSemicolons() {
    while (Is(TokenKind::Semicolon) && !At().startsLine) {
        Hint(At().range, "superfluous ';'");
        Take();
    }
}

void FileParser::Skip(Place place) {
    while (!IsBound(At()) && !Is(TokenKind::Semicolon)) {
        const bool beginsLine = At().startsLine && Begins(place, at_);
        const bool isStatement = GetKeywordRow(At().keyword).role == KeywordRole::Statement;
        if (beginsLine || (isStatement && place == Place::Statement)) break;
        Take();
    }
    panic_ = false;
    parentheses_ = 0;
    Accept(TokenKind::Semicolon);
}

FileParser::Nest::Nest(FileParser& parser) : parser_(parser), ok_(++parser.depth_ <= kMaxNesting) {
    if (ok_) return;
    const bool isNews = !parser.nestingReported_ && !parser.panic_;
    if (isNews)
        parser.diagnostics_.Report(DiagnosticCode::NestingTooDeep, parser.At().range, {std::to_string(kMaxNesting)});
    parser.nestingReported_ = parser.nestingReported_ || isNews;
    parser.panic_ = true;
}

ast::SourceUnit* ParseFile(const SourceManager& sources, std::uint32_t file, const Switches& switches, NameTable& names,
                           Arena& arena, Diagnostics& diagnostics) {
    ast::SourceUnit* unit = FileParser(sources, file, switches, names, arena, diagnostics).ParseUnit();
    unit->file = file;
    return unit;
}

ast::Expr* ParseExpressionFile(const SourceManager& sources, std::uint32_t file, const Switches& switches,
                               NameTable& names, Arena& arena, Diagnostics& diagnostics) {
    return FileParser(sources, file, switches, names, arena, diagnostics).ParseLone();
}

std::span<ast::Stmt*> ParseStatementsFile(const SourceManager& sources, std::uint32_t file, const Switches& switches,
                                          NameTable& names, Arena& arena, Diagnostics& diagnostics) {
    return FileParser(sources, file, switches, names, arena, diagnostics).ParseLoneStatements();
}

}  // namespace tn61131::st
