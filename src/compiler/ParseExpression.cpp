#include <algorithm>
#include <charconv>

#include "compiler/FileParser.h"

namespace tn61131::st {

using ast::Expr;
using ast::ExprKind;
using ast::LiteralKind;

namespace {

// Operators of two operands (IEC 61131-3, table 71); a higher level binds tighter, all associate to the left.
struct Operator {
    int level = 0;  ///< 0 for what is no operator
    ast::BinaryOp op{};
};

constexpr Operator OperatorOf(const Token& token) noexcept {
    switch (token.kind) {
        case TokenKind::Equal: return {4, ast::BinaryOp::Equal};
        case TokenKind::NotEqual: return {4, ast::BinaryOp::NotEqual};
        case TokenKind::Less: return {5, ast::BinaryOp::Less};
        case TokenKind::Greater: return {5, ast::BinaryOp::Greater};
        case TokenKind::LessEqual: return {5, ast::BinaryOp::LessEqual};
        case TokenKind::GreaterEqual: return {5, ast::BinaryOp::GreaterEqual};
        case TokenKind::Ampersand: return {3, ast::BinaryOp::And};
        case TokenKind::Plus: return {6, ast::BinaryOp::Add};
        case TokenKind::Minus: return {6, ast::BinaryOp::Subtract};
        case TokenKind::Star: return {7, ast::BinaryOp::Multiply};
        case TokenKind::Slash: return {7, ast::BinaryOp::Divide};
        case TokenKind::Power: return {8, ast::BinaryOp::Power};
        case TokenKind::Identifier: break;
        default: return {};
    }
    switch (token.keyword) {
        case Keyword::Or: return {1, ast::BinaryOp::Or};
        case Keyword::OrElse: return {1, ast::BinaryOp::OrElse};
        case Keyword::Xor: return {2, ast::BinaryOp::Xor};
        case Keyword::And: return {3, ast::BinaryOp::And};
        case Keyword::AndThen: return {3, ast::BinaryOp::AndThen};
        case Keyword::Mod: return {7, ast::BinaryOp::Modulo};
        default: return {};
    }
}

constexpr int kLowestLevel = 1;

// Whether a token can stand behind an operand: tells the name TO from the word that was meant.
constexpr bool FollowsOperand(const Token& token) noexcept {
    switch (token.kind) {
        case TokenKind::Invalid:
        case TokenKind::Integer:
        case TokenKind::Real:
        case TokenKind::String:
        case TokenKind::WString:
        case TokenKind::Char:
        case TokenKind::WChar:
        case TokenKind::Time:
        case TokenKind::Date:
        case TokenKind::DateAndTime:
        case TokenKind::TimeOfDay:
        case TokenKind::Bool:
        case TokenKind::Located:
        case TokenKind::LeftParen: return false;
        case TokenKind::Identifier: return GetKeywordRow(token.keyword).role != KeywordRole::Name;
        default: return true;
    }
}

}  // namespace

Expr* FileParser::MakeError(SourceRange range) {
    height_ = 1;
    return arena_.New<Expr>(ExprKind::Error, range);
}

void FileParser::Raise(std::uint32_t height, SourceRange range) {
    height_ = height;
    if (height <= kMaxExpressionHeight || panic_) return;
    diagnostics_.Report(DiagnosticCode::NestingTooDeep, range, {std::to_string(kMaxExpressionHeight)});
    panic_ = true;
}

Expr* FileParser::ParseExpression() {
    return ParseOperators(ParseOperand(), kLowestLevel);
}

Expr* FileParser::ParseOperators(Expr* left, int level) {
    while (!panic_) {
        const Operator found = OperatorOf(At());
        if (found.level < std::max(level, kLowestLevel)) break;
        const std::uint32_t leftHeight = height_;
        const SourceRange opRange = At().range;
        Take();
        Expr* right = ParseOperators(ParseOperand(), found.level + 1);
        const SourceRange range = Join(left->range, right->range);
        left = arena_.New<ast::BinaryExpr>(Expr{ExprKind::Binary, range}, found.op, left, right, opRange);
        Raise(std::max(leftHeight, height_) + 1, opRange);
    }
    return left;
}

Expr* FileParser::ParseOperand() {
    ast::UnaryOp op{};
    if (Is(TokenKind::Minus)) {
        op = ast::UnaryOp::Minus;
    } else if (Is(TokenKind::Plus)) {
        op = ast::UnaryOp::Plus;
    } else if (Is(Keyword::Not)) {
        op = ast::UnaryOp::Not;
    } else {
        return ParsePostfix();
    }
    const SourceRange range = At().range;
    const Nest nest(*this);
    if (!nest.Ok()) return MakeError(range);
    Take();
    Expr* operand = ParseOperand();
    Raise(height_ + 1, range);
    return arena_.New<ast::UnaryExpr>(Expr{ExprKind::Unary, Join(range, operand->range)}, op, operand);
}

Expr* FileParser::ParsePostfix() {
    Expr* base = ParsePrimary();
    if (base->kind == ExprKind::Literal) return base;
    while (!panic_) {
        const std::uint32_t height = height_;
        const SourceRange range = At().range;
        switch (At().kind) {
            case TokenKind::Dot: base = ParseMember(base); break;
            case TokenKind::Caret:
                Take();
                base = arena_.New<ast::DerefExpr>(Expr{ExprKind::Deref, Join(base->range, range)}, base);
                break;
            case TokenKind::LeftBracket: base = ParseIndex(base); break;
            case TokenKind::LeftParen: {
                const std::span<ast::Argument> arguments = ParseArguments();
                const SourceRange whole = RangeFrom(base->range.begin);
                base = arena_.New<ast::CallExpr>(Expr{ExprKind::Call, whole}, base, arguments);
                break;
            }
            default: return base;
        }
        Raise(std::max(height, height_) + 1, range);
    }
    return base;
}

Expr* FileParser::ParseMember(Expr* base) {
    Take();
    const Token token = At();
    const std::string_view text = TextOf(token.range);
    const SourceRange range = Join(base->range, token.range);
    height_ = 1;
    if (token.kind == TokenKind::Integer || token.kind == TokenKind::Partial) {
        const bool isBit = token.kind == TokenKind::Integer;
        const char letter = isBit ? 'X' : static_cast<char>(text[1] & ~0x20);
        const std::string_view digits = text.substr(isBit ? 0 : 2);
        std::uint32_t index = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), index);
        const bool isWhole = error == std::errc() && end == digits.data() + digits.size();
        if (isWhole && std::string_view("XBWDL").find(letter) != std::string_view::npos) {
            Take();
            return arena_.New<ast::PartialExpr>(Expr{ExprKind::Partial, range}, base, letter, index);
        }
        ReportExpected("the number of a bit, or %X, %B, %W, %D or %L and a number,");
        return MakeError(range);
    }
    if (!IsName(token)) {
        ReportExpected("the name of a member");
        return MakeError(RangeFrom(base->range.begin));
    }
    Take();
    return arena_.New<ast::MemberExpr>(Expr{ExprKind::Member, range}, base, ast::Identifier{token.name, token.range});
}

Expr* FileParser::ParseIndex(Expr* base) {
    const Nest nest(*this);
    if (!nest.Ok()) return base;
    Take();
    ++parentheses_;
    List<Expr*> indices(*this);
    std::uint32_t height = 0;
    do {
        indices.Add(ParseExpression());
        height = std::max(height, height_);
    } while (!panic_ && Accept(TokenKind::Comma));
    if (Expect(TokenKind::RightBracket, "',' or ']'") && !panic_) --parentheses_;
    height_ = height;
    return arena_.New<ast::IndexExpr>(Expr{ExprKind::Index, RangeFrom(base->range.begin)}, base, indices.Finish());
}

Expr* FileParser::ParseLiteral(LiteralKind kind) {
    const SourceRange range = At().range;
    Take();
    height_ = 1;
    return arena_.New<ast::LiteralExpr>(Expr{ExprKind::Literal, range}, kind, TextOf(range));
}

Expr* FileParser::ParsePrimary() {
    switch (At().kind) {
        case TokenKind::Identifier: return ParseWord();
        case TokenKind::Integer: return ParseLiteral(LiteralKind::Integer);
        case TokenKind::Real: return ParseLiteral(LiteralKind::Real);
        case TokenKind::String: return ParseLiteral(LiteralKind::String);
        case TokenKind::WString: return ParseLiteral(LiteralKind::WString);
        case TokenKind::Char: return ParseLiteral(LiteralKind::Char);
        case TokenKind::WChar: return ParseLiteral(LiteralKind::WChar);
        case TokenKind::Time: return ParseLiteral(LiteralKind::Time);
        case TokenKind::Date: return ParseLiteral(LiteralKind::Date);
        case TokenKind::DateAndTime: return ParseLiteral(LiteralKind::DateAndTime);
        case TokenKind::TimeOfDay: return ParseLiteral(LiteralKind::TimeOfDay);
        case TokenKind::Bool: return ParseLiteral(LiteralKind::Bool);
        case TokenKind::Located: height_ = 1; return ParseLocated();
        case TokenKind::LeftParen: return ParseParentheses();
        case TokenKind::LeftBracket: return ParseArrayInit();
        case TokenKind::Invalid: {
            // Reported already; the rest of the statement may be what an open string swallowed.
            const SourceRange range = At().range;
            Take();
            panic_ = panic_ || At().startsLine;
            return MakeError(range);
        }
        default: ReportExpected("an expression"); return MakeError(At().range);
    }
}

ast::LocatedExpr* FileParser::ParseLocated() {
    const SourceRange range = At().range;
    std::string_view address = TextOf(range).substr(1);
    Take();
    const bool quoted = address.starts_with('"') || address.starts_with('\'');
    if (quoted) address = address.substr(1, address.size() - 2);
    return arena_.New<ast::LocatedExpr>(Expr{ExprKind::Located, range}, address, quoted);
}

Expr* FileParser::ParseWord() {
    const Token token = At();
    height_ = 1;
    switch (token.keyword) {
        case Keyword::True:
        case Keyword::False: return ParseLiteral(LiteralKind::Bool);
        case Keyword::Null: return ParseLiteral(LiteralKind::Null);
        case Keyword::This: Take(); return arena_.New<Expr>(ExprKind::This, token.range);
        case Keyword::Super:
            Take();
            Accept(TokenKind::Caret);
            return arena_.New<Expr>(ExprKind::Super, RangeFrom(token.range.begin));
        case Keyword::Of:
        case Keyword::To:
        case Keyword::By:
            if (FollowsOperand(Ahead(1))) break;
            ReportExpected("an expression");
            return MakeError(token.range);
        case Keyword::And:
        case Keyword::Or:
        case Keyword::Xor:
        case Keyword::Mod:
            // Where an operand stands, AND(a, b) is a call of the function.
            if (Ahead(1).kind != TokenKind::LeftParen) break;
            Take();
            return arena_.New<ast::NameExpr>(Expr{ExprKind::Name, token.range}, token.name);
        default: break;
    }
    if (!IsName(token)) {
        ReportExpected("an expression");
        return MakeError(token.range);
    }
    Take();
    if (!Is(TokenKind::Hash)) return arena_.New<ast::NameExpr>(Expr{ExprKind::Name, token.range}, token.name);
    const Nest nest(*this);
    if (!nest.Ok()) return MakeError(token.range);
    Take();
    Expr* operand = ParseOperand();
    Raise(height_ + 1, token.range);
    return arena_.New<ast::TypePrefixExpr>(Expr{ExprKind::TypePrefix, Join(token.range, operand->range)},
                                           ast::Identifier{token.name, token.range}, operand);
}

Expr* FileParser::ParseParentheses() {
    if (IsStructInit()) return ParseStructInit();
    const Nest nest(*this);
    if (!nest.Ok()) return MakeError(At().range);
    Take();
    ++parentheses_;
    Expr* inner = ParseExpression();
    if (Expect(TokenKind::RightParen, "')'") && !panic_) --parentheses_;
    return inner;
}

std::span<ast::Argument> FileParser::ParseArguments() {
    const Nest nest(*this);
    if (!nest.Ok()) return {};
    Take();
    ++parentheses_;
    List<ast::Argument> arguments(*this);
    std::uint32_t height = 0;
    if (!Is(TokenKind::RightParen)) {
        do {
            arguments.Add(ParseArgument());
            height = std::max(height, height_);
        } while (!panic_ && Accept(TokenKind::Comma));
    }
    if (Expect(TokenKind::RightParen, "',' or ')'") && !panic_) --parentheses_;
    height_ = height;
    return arguments.Finish();
}

ast::Argument FileParser::ParseArgument() {
    ast::Argument argument;
    const SourceOffset begin = At().range.begin;
    height_ = 1;
    argument.negated = Is(Keyword::Not) && IsName(Ahead(1)) && Ahead(2).kind == TokenKind::Output;
    if (argument.negated) Take();
    const TokenKind sign = Ahead(1).kind;
    const bool isNamed = IsName(At()) && (sign == TokenKind::Assign || sign == TokenKind::Output);
    if (isNamed) {
        argument.name = {At().name, At().range};
        argument.isOutput = sign == TokenKind::Output;
        Take();
        Take();
    }
    const bool isEmpty = isNamed && (Is(TokenKind::Comma) || Is(TokenKind::RightParen));
    if (!isEmpty) argument.value = ParseExpression();
    argument.range = RangeFrom(begin);
    return argument;
}

Expr* FileParser::ParseLone() {
    Expr* expression = ParseExpression();
    if (!panic_) Accept(TokenKind::Semicolon);
    if (!panic_ && !IsAtEnd()) ReportExpected("the end of the expression");
    return expression;
}

}  // namespace tn61131::st
