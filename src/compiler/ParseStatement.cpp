#include "compiler/FileParser.h"

namespace tn61131::st {

using ast::Expr;
using ast::Stmt;
using ast::StmtKind;

namespace {

constexpr bool IsLiteralKind(TokenKind kind) noexcept {
    return kind >= TokenKind::Invalid && kind <= TokenKind::Located && kind != TokenKind::Identifier;
}

// Whether an expression may stand left of a further := at all.
constexpr bool CanBeTarget(const Expr& expression) noexcept {
    switch (expression.kind) {
        case ast::ExprKind::Name:
        case ast::ExprKind::Located:
        case ast::ExprKind::Member:
        case ast::ExprKind::Partial:
        case ast::ExprKind::Index:
        case ast::ExprKind::Deref: return true;
        default: return false;
    }
}

// The ends that a block of statements waits for.
constexpr bool IsStatementEnd(Keyword keyword) noexcept {
    switch (keyword) {
        case Keyword::EndIf:
        case Keyword::EndCase:
        case Keyword::EndFor:
        case Keyword::EndWhile:
        case Keyword::EndRepeat: return true;
        default: return false;
    }
}

}  // namespace

bool FileParser::IsStrayBound() const noexcept {
    switch (At().keyword) {
        case Keyword::Else: return !IsOpen(Keyword::EndIf) && !IsOpen(Keyword::EndCase);
        case Keyword::Elsif:
        case Keyword::Elseif: return !IsOpen(Keyword::EndIf);
        case Keyword::Until: return !IsOpen(Keyword::EndRepeat);
        case Keyword::EndVar:
        case Keyword::EndType:
        case Keyword::EndStruct:
        case Keyword::EndUnion: return !IsOpen(At().keyword);
        default: return IsStatementEnd(At().keyword) && depthOfBlocks_ == 0;
    }
}

void FileParser::SkipStrayBound() {
    diagnostics_.Report(DiagnosticCode::StrayEnd, At().range, {GetKeywordText(At().keyword)});
    const bool hasCondition = Is(Keyword::Elsif) || Is(Keyword::Elseif) || Is(Keyword::Until);
    Take();
    if (hasCondition && !At().startsLine && !IsBound(At()) && !Is(TokenKind::Semicolon)) {
        static_cast<void>(ParseExpression());
        Accept(Keyword::Then);
    }
    Accept(TokenKind::Semicolon);
}

std::span<Stmt*> FileParser::ParseBody() {
    List<Stmt*> list(*this);
    for (;;) {
        if (!IsBound(At())) {
            ParseStatement(list);
        } else if (IsStrayBound()) {
            SkipStrayBound();
        } else {
            return list.Finish();
        }
    }
}

void FileParser::ParseStatement(List<Stmt*>& list) {
    parentheses_ = 0;
    panic_ = false;
    const Token token = At();
    switch (token.keyword) {
        case Keyword::If:
        case Keyword::Case:
        case Keyword::For:
        case Keyword::While:
        case Keyword::Repeat: return ParseBlock(list);
        case Keyword::Exit: return ParseJump(StmtKind::Exit, list);
        case Keyword::Return: return ParseJump(StmtKind::Return, list);
        case Keyword::Continue:
            if (Ahead(1).kind != TokenKind::Semicolon && !IsBound(Ahead(1)) && !Ahead(1).startsLine) break;
            return ParseJump(StmtKind::Continue, list);
        default: break;
    }
    if (Accept(TokenKind::Semicolon)) return;
    const Token* const first = at_;
    if (IsName(token) || token.kind == TokenKind::LeftParen || IsLiteralKind(token.kind)) {
        ParseSimpleStatement(ParsePostfix(), list);
    } else {
        ReportExpected("a statement");
    }
    if (at_ == first) Take();
    if (panic_) Skip(Place::Statement);
}

void FileParser::ParseBlock(List<Stmt*>& list) {
    const Nest nest(*this);
    if (!nest.Ok()) return SkipBlock();
    ++depthOfBlocks_;
    Stmt* block = nullptr;
    switch (At().keyword) {
        case Keyword::If: block = ParseIf(); break;
        case Keyword::Case: block = ParseCase(); break;
        case Keyword::For: block = ParseFor(); break;
        case Keyword::While: block = ParseWhile(); break;
        default: block = ParseRepeat(); break;
    }
    --depthOfBlocks_;
    list.Add(block);
    AcceptBlockSemicolon();
}

void FileParser::ParseJump(StmtKind kind, List<Stmt*>& list) {
    list.Add(arena_.New<Stmt>(kind, At().range));
    Take();
    ExpectSemicolon(Place::Statement);
}

bool FileParser::TakeAssignment(ast::AssignStmt::Mode& mode) {
    using Mode = ast::AssignStmt::Mode;
    mode = Mode::Value;
    if (Accept(TokenKind::Assign)) return true;
    if (Accept(TokenKind::Attempt)) {
        mode = Mode::Attempt;
        return true;
    }
    const Token& sign = Ahead(1);
    if (sign.kind != TokenKind::Equal || sign.range.begin != At().range.end) return false;
    switch (At().keyword) {
        case Keyword::S: mode = Mode::Set; break;
        case Keyword::R: mode = Mode::Reset; break;
        case Keyword::Ref: mode = Mode::Reference; break;
        default: return false;
    }
    Take();
    Take();
    return true;
}

void FileParser::ParseSimpleStatement(Expr* target, List<Stmt*>& list) {
    Stmt* statement = nullptr;
    ast::AssignStmt::Mode mode{};
    if (panic_) return Skip(Place::Statement);
    if (Is(TokenKind::Equal)) {
        diagnostics_.Report(DiagnosticCode::EqualForAssignment, At().range);
        Take();
        statement = ParseAssignment(target, ast::AssignStmt::Mode::Value);
    } else if (TakeAssignment(mode)) {
        statement = ParseAssignment(target, mode);
    } else {
        Expr* call = ParseOperators(target, 0);
        statement = arena_.New<ast::CallStmt>(Stmt{StmtKind::Call, call->range}, call);
    }
    const bool isWhole = !panic_;
    const bool isEnded = Is(TokenKind::Semicolon);
    ExpectSemicolon(Place::Statement);
    // What is no call and has no semicolon either is one mistake, and has been reported.
    const bool isCall =
        statement->kind != StmtKind::Call || static_cast<ast::CallStmt*>(statement)->call->kind == ast::ExprKind::Call;
    if (isWhole && (isCall || isEnded)) list.Add(statement);
}

ast::AssignStmt* FileParser::ParseAssignment(Expr* target, ast::AssignStmt::Mode mode) {
    ast::AssignStmt* first = nullptr;
    ast::AssignStmt* last = nullptr;
    for (std::uint32_t count = 0;; ++count) {
        Expr* value = ParseExpression();
        const Stmt base{StmtKind::Assign, RangeFrom(target->range.begin)};
        auto* const assignment = arena_.New<ast::AssignStmt>(base, target, value, nullptr, mode);
        if (first == nullptr) first = assignment;
        if (last != nullptr) {
            last->chained = assignment;
            last->value = nullptr;
        }
        last = assignment;
        if (panic_ || !CanBeTarget(*value) || !TakeAssignment(mode)) break;
        target = value;
        if (count < kMaxNesting) continue;
        diagnostics_.Report(DiagnosticCode::NestingTooDeep, target->range, {std::to_string(kMaxNesting)});
        panic_ = true;
        break;
    }
    for (ast::AssignStmt* each = first; each != nullptr; each = each->chained)
        each->range.end = last->range.end;
    return first;
}

void FileParser::ExpectEnd(Keyword end, const Token& opener) {
    panic_ = false;
    parentheses_ = 0;
    if (Accept(end)) return;
    const Token* const found = at_;
    if (missingEnd_ != found) {
        Diagnostic& report =
            diagnostics_.Report(DiagnosticCode::MissingEnd, At().range, {GetKeywordText(end), Describe(At())});
        report.notes.push_back({opener.range, std::string(GetKeywordText(opener.keyword)) + " stands here"});
    }
    missingEnd_ = found;
    // The end of another block, which is not open, was meant for this one.
    if (IsStatementEnd(end) && IsStatementEnd(At().keyword) && !IsOpen(At().keyword)) Take();
}

void FileParser::AcceptBlockSemicolon() {
    if (Accept(TokenKind::Semicolon)) return SkipExtraSemicolons();
    const SourceOffset end = EndOfPrevious();
    Hint({end, end}, "no ';' behind the end of a block");
}

// Whoever nests this deep gets one message and no tree: what is inside is skipped without recursion.
void FileParser::SkipBlock() {
    std::uint32_t depth = 0;
    do {
        switch (At().keyword) {
            case Keyword::If:
            case Keyword::Case:
            case Keyword::For:
            case Keyword::While:
            case Keyword::Repeat: ++depth; break;
            default:
                if (IsStatementEnd(At().keyword)) --depth;
                break;
        }
        const bool isInside = IsStatementEnd(At().keyword) || Is(Keyword::Else) || Is(Keyword::Elsif) ||
                              Is(Keyword::Elseif) || Is(Keyword::Until);
        if (IsBound(At()) && !isInside) break;
        Take();
    } while (depth != 0);
    panic_ = false;
    Accept(TokenKind::Semicolon);
}

Stmt* FileParser::ParseIf() {
    const Token opener = At();
    ++OpenCount(Keyword::EndIf);
    List<ast::IfBranch> branches(*this);
    do {
        if (Is(Keyword::Elseif)) Hint(At().range, "ELSEIF for ELSIF");
        Take();
        ast::IfBranch branch;
        branch.condition = ParseExpression();
        ExpectWord(Keyword::Then);
        branch.body = ParseBody();
        branches.Add(branch);
    } while (Is(Keyword::Elsif) || Is(Keyword::Elseif));
    const bool hasElse = Accept(Keyword::Else);
    const std::span<Stmt*> otherwise = hasElse ? ParseElse() : std::span<Stmt*>{};
    while (Is(Keyword::Elsif) || Is(Keyword::Elseif) || Is(Keyword::Else)) {
        // Behind ELSE no further branch can stand.
        SkipStrayBound();
        (void)ParseBody();
    }
    --OpenCount(Keyword::EndIf);
    ExpectEnd(Keyword::EndIf, opener);
    const Stmt base{StmtKind::If, RangeFrom(opener.range.begin)};
    return arena_.New<ast::IfStmt>(base, branches.Finish(), otherwise, hasElse);
}

std::span<Stmt*> FileParser::ParseElse() {
    if (Accept(TokenKind::Colon)) Hint(at_[-1].range, "':' behind ELSE");
    return ParseBody();
}

Stmt* FileParser::ParseCase() {
    const Token opener = At();
    Take();
    Expr* selector = ParseExpression();
    ExpectWord(Keyword::Of);
    ++OpenCount(Keyword::EndCase);
    List<ast::CaseBranch> branches(*this);
    Expr* label = nullptr;  // the first one of the next branch
    while (!IsBound(At()) || label != nullptr || IsStrayBound()) {
        ast::CaseBranch branch;
        if (label == nullptr) {
            if (IsBound(At())) {
                SkipStrayBound();
                continue;
            }
            if (Accept(TokenKind::Semicolon)) continue;
            label = ParseExpression();
        }
        branch.labels = ParseCaseLabels(label);
        label = nullptr;
        branch.body = ParseCaseBody(label);
        branches.Add(branch);
    }
    const bool hasElse = Accept(Keyword::Else);
    const std::span<Stmt*> otherwise = hasElse ? ParseElse() : std::span<Stmt*>{};
    --OpenCount(Keyword::EndCase);
    ExpectEnd(Keyword::EndCase, opener);
    const Stmt base{StmtKind::Case, RangeFrom(opener.range.begin)};
    return arena_.New<ast::CaseStmt>(base, selector, branches.Finish(), otherwise, hasElse);
}

std::span<ast::CaseLabel> FileParser::ParseCaseLabels(Expr* first) {
    List<ast::CaseLabel> labels(*this);
    ast::CaseLabel label{first, nullptr};
    for (;;) {
        if (!panic_ && Accept(TokenKind::Range)) label.upper = ParseExpression();
        labels.Add(label);
        if (panic_ || !Accept(TokenKind::Comma)) break;
        label = {ParseExpression(), nullptr};
    }
    const bool isLabel = Expect(TokenKind::Colon, "',' or ':' behind the value of a CASE branch");
    // What the label was to stand in front of may be skipped with it.
    if (!isLabel) Skip(Place::Statement);
    panic_ = false;
    return isLabel ? labels.Finish() : std::span<ast::CaseLabel>{};
}

std::span<Stmt*> FileParser::ParseCaseBody(Expr*& nextLabel) {
    List<Stmt*> body(*this);
    for (;;) {
        if (IsBound(At())) {
            if (!IsStrayBound()) break;
            SkipStrayBound();
            continue;
        }
        const bool isExpression = (IsName(At()) && !Is(Keyword::Continue)) || IsLiteralKind(At().kind) ||
                                  Is(TokenKind::Minus) || Is(TokenKind::Plus) || Is(TokenKind::LeftParen) ||
                                  Is(Keyword::True) || Is(Keyword::False);
        if (!isExpression) {
            ParseStatement(body);
            continue;
        }
        parentheses_ = 0;
        panic_ = false;
        const Token* const begin = at_;
        Expr* first = ParseOperand();
        if (!Is(TokenKind::Equal)) first = ParseOperators(first, 0);
        if (!panic_ && (Is(TokenKind::Colon) || Is(TokenKind::Comma) || Is(TokenKind::Range))) {
            nextLabel = first;
            break;
        }
        ParseSimpleStatement(first, body);
        if (at_ == begin) Take();
    }
    return body.Finish();
}

Stmt* FileParser::ParseFor() {
    const Token opener = At();
    Take();
    Expr* counter = ParsePostfix();
    if (Is(TokenKind::Equal) && !panic_) {
        diagnostics_.Report(DiagnosticCode::EqualForAssignment, At().range);
        Take();
    } else {
        Expect(TokenKind::Assign, "':='");
    }
    Expr* from = panic_ ? MakeError(At().range) : ParseExpression();
    if (!panic_ && !Accept(Keyword::To)) ReportExpected("TO");
    Expr* to = panic_ ? MakeError(At().range) : ParseExpression();
    Expr* by = !panic_ && Accept(Keyword::By) ? ParseExpression() : nullptr;
    ExpectWord(Keyword::Do);
    ++OpenCount(Keyword::EndFor);
    const std::span<Stmt*> body = ParseBody();
    --OpenCount(Keyword::EndFor);
    ExpectEnd(Keyword::EndFor, opener);
    return arena_.New<ast::ForStmt>(Stmt{StmtKind::For, RangeFrom(opener.range.begin)}, counter, from, to, by, body);
}

Stmt* FileParser::ParseWhile() {
    const Token opener = At();
    Take();
    Expr* condition = ParseExpression();
    ExpectWord(Keyword::Do);
    ++OpenCount(Keyword::EndWhile);
    const std::span<Stmt*> body = ParseBody();
    --OpenCount(Keyword::EndWhile);
    ExpectEnd(Keyword::EndWhile, opener);
    return arena_.New<ast::WhileStmt>(Stmt{StmtKind::While, RangeFrom(opener.range.begin)}, condition, body);
}

Stmt* FileParser::ParseRepeat() {
    const Token opener = At();
    Take();
    ++OpenCount(Keyword::EndRepeat);
    const std::span<Stmt*> body = ParseBody();
    Expr* condition = nullptr;
    if (Accept(Keyword::Until)) {
        condition = ParseExpression();
        if (!panic_ && Is(TokenKind::Semicolon)) Hint(At().range, "';' behind the condition of UNTIL");
        if (panic_) Skip(Place::Statement);
        while (Accept(TokenKind::Semicolon)) {
        }
        // Statements behind the condition have no place.
        if (!IsBound(At())) {
            ReportExpected(GetKeywordText(Keyword::EndRepeat));
            missingEnd_ = at_;
            (void)ParseBody();
        }
    } else {
        condition = MakeError(At().range);
        if (missingEnd_ != at_) ReportExpected("UNTIL");
        missingEnd_ = Is(Keyword::EndRepeat) ? missingEnd_ : at_;
    }
    --OpenCount(Keyword::EndRepeat);
    ExpectEnd(Keyword::EndRepeat, opener);
    return arena_.New<ast::RepeatStmt>(Stmt{StmtKind::Repeat, RangeFrom(opener.range.begin)}, body, condition);
}

}  // namespace tn61131::st
