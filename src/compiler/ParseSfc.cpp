#include "compiler/FileParser.h"

namespace tn61131::st {

bool FileParser::IsSfc() const noexcept {
    const bool isStep = Is(Keyword::InitialStep) || Is(Keyword::Step);
    return isStep && Ahead(1).kind == TokenKind::Identifier;
}

ast::Sfc* FileParser::ParseSfc() {
    auto* const chart = arena_.New<ast::Sfc>();
    List<ast::SfcStep*> steps(*this);
    List<ast::SfcTransition*> transitions(*this);
    List<ast::SfcAction*> actions(*this);
    for (;;) {
        if (Is(Keyword::InitialStep) || Is(Keyword::Step)) {
            steps.Add(ParseStep());
        } else if (Is(Keyword::Transition)) {
            transitions.Add(ParseTransition());
        } else if (Is(Keyword::Action)) {
            actions.Add(ParseSfcAction());
        } else if (Accept(TokenKind::Semicolon)) {
            Hint(at_[-1].range, "superfluous ';'");
        } else if (IsBound(At()) || IsMember()) {
            break;
        } else {
            ReportExpected("STEP, TRANSITION or ACTION");
            while (!IsBound(At()) && !Is(Keyword::InitialStep) && !Is(Keyword::Step) && !Is(Keyword::Transition) &&
                   !Is(Keyword::Action))
                Take();
            panic_ = false;
        }
    }
    chart->steps = steps.Finish();
    chart->transitions = transitions.Finish();
    chart->actions = actions.Finish();
    return chart;
}

ast::SfcStep* FileParser::ParseStep() {
    auto* const step = arena_.New<ast::SfcStep>();
    const Token opener = At();
    step->initial = Is(Keyword::InitialStep);
    Take();
    step->name = ExpectName("a step");
    Expect(TokenKind::Colon, "':'");
    SkipRestOfHeader();
    List<ast::SfcActionUse> actions(*this);
    while (IsName(At())) {
        actions.Add(ParseActionUse());
        ExpectSemicolon(Place::Statement);
    }
    step->actions = actions.Finish();
    SkipTo(Keyword::EndStep);
    ExpectEnd(Keyword::EndStep, opener);
    Accept(TokenKind::Semicolon);
    return step;
}

// Where something else than `end` stands, reports it and skips to the next word that ends something.
void FileParser::SkipTo(Keyword end) {
    if (IsBound(At())) return;
    ReportExpected(GetKeywordText(end));
    while (!IsBound(At()))
        Take();
    missingEnd_ = Is(end) ? missingEnd_ : at_;
    panic_ = false;
}

ast::SfcActionUse FileParser::ParseActionUse() {
    ast::SfcActionUse use;
    use.action = ExpectName("an action");
    if (panic_ || !Accept(TokenKind::LeftParen)) return use;
    ++parentheses_;
    if (!Is(TokenKind::RightParen)) {
        use.qualifier = ExpectName("a qualifier");
        List<ast::Expr*> indicators(*this);
        while (!panic_ && Accept(TokenKind::Comma)) {
            ast::Expr* const operand = ParseExpression();
            // The qualifiers L, D, SD, DS and SL have a time in front of the indicators.
            const std::string_view qualifier = names_.GetFolded(use.qualifier.name);
            const bool isTimed = qualifier.find_first_of("dl") != std::string_view::npos;
            if (isTimed && use.time == nullptr) {
                use.time = operand;
            } else {
                indicators.Add(operand);
            }
        }
        use.indicators = indicators.Finish();
    }
    if (Expect(TokenKind::RightParen, "',' or ')'") && !panic_) --parentheses_;
    return use;
}

std::span<ast::Identifier> FileParser::ParseStepNames() {
    List<ast::Identifier> steps(*this);
    if (!Accept(TokenKind::LeftParen)) {
        steps.Add(ExpectName("a step"));
        return steps.Finish();
    }
    ++parentheses_;
    do
        steps.Add(ExpectName("a step"));
    while (!panic_ && Accept(TokenKind::Comma));
    if (Expect(TokenKind::RightParen, "',' or ')'") && !panic_) --parentheses_;
    return steps.Finish();
}

ast::SfcTransition* FileParser::ParseTransition() {
    auto* const transition = arena_.New<ast::SfcTransition>();
    const Token opener = At();
    Take();
    if (!Is(Keyword::From) && IsName(At())) {
        transition->name = {At().name, At().range};
        Take();
    }
    if (Accept(TokenKind::LeftParen)) {
        if (!Accept(Keyword::Priority)) ReportExpected("PRIORITY");
        Expect(TokenKind::Assign, "':='");
        if (!panic_) transition->priority = ParseExpression();
        Expect(TokenKind::RightParen, "')'");
    }
    if (!Accept(Keyword::From)) ReportExpected("FROM");
    if (!panic_) transition->from = ParseStepNames();
    if (!Accept(Keyword::To)) ReportExpected("TO");
    if (!panic_) transition->to = ParseStepNames();
    Expect(TokenKind::Assign, "':='");
    if (!panic_) transition->condition = ParseExpression();
    ExpectSemicolon(Place::Statement);
    SkipTo(Keyword::EndTransition);
    ExpectEnd(Keyword::EndTransition, opener);
    Accept(TokenKind::Semicolon);
    transition->range = RangeFrom(opener.range.begin);
    return transition;
}

ast::SfcAction* FileParser::ParseSfcAction() {
    auto* const action = arena_.New<ast::SfcAction>();
    const Token opener = At();
    Take();
    action->name = ExpectName("an action");
    if (!panic_) Accept(TokenKind::Colon);
    SkipRestOfHeader();
    ++OpenCount(Keyword::EndAction);
    action->body = ParseBody();
    --OpenCount(Keyword::EndAction);
    ExpectEnd(Keyword::EndAction, opener);
    Accept(TokenKind::Semicolon);
    return action;
}

}  // namespace tn61131::st
