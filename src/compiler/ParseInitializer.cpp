#include <algorithm>

#include "compiler/FileParser.h"

namespace tn61131::st {

using ast::Expr;
using ast::ExprKind;

bool FileParser::IsStructInit() const noexcept {
    if (!Is(TokenKind::LeftParen)) return false;
    return Ahead(1).kind == TokenKind::RightParen || (IsName(Ahead(1)) && Ahead(2).kind == TokenKind::Assign);
}

Expr* FileParser::ParseInitializer() {
    const SourceOffset begin = At().range.begin;
    const ast::ArrayInitElement first = ParseArrayElement();
    if (first.repeat == nullptr && !Is(TokenKind::Comma)) return first.value;
    Expr* array = ParseOpenArrayInit(first, begin, false);
    Hint(array->range, "the values of an array without brackets");
    return array;
}

ast::ArrayInitElement FileParser::ParseArrayElement() {
    if (!Is(TokenKind::Integer) || Ahead(1).kind != TokenKind::LeftParen) return {nullptr, ParseExpression()};
    ast::ArrayInitElement element;
    element.repeat = ParseLiteral(ast::LiteralKind::Integer);
    const Nest nest(*this);
    if (!nest.Ok()) return element;
    Take();
    ++parentheses_;
    if (!Is(TokenKind::RightParen)) {
        const SourceOffset begin = At().range.begin;
        const ast::ArrayInitElement first = ParseArrayElement();
        const bool isList = first.repeat != nullptr || Is(TokenKind::Comma);
        element.value = isList ? ParseOpenArrayInit(first, begin, false) : first.value;
    }
    if (Expect(TokenKind::RightParen, "',' or ')'") && !panic_) --parentheses_;
    return element;
}

Expr* FileParser::ParseOpenArrayInit(const ast::ArrayInitElement& first, SourceOffset begin, bool inStruct) {
    List<ast::ArrayInitElement> elements(*this);
    elements.Add(first);
    std::uint32_t height = height_;
    while (!panic_ && Is(TokenKind::Comma)) {
        // In a structure, NAME := is the next member.
        if (inStruct && IsName(Ahead(1)) && Ahead(2).kind == TokenKind::Assign) break;
        Take();
        elements.Add(ParseArrayElement());
        height = std::max(height, height_);
    }
    Raise(height + 1, RangeFrom(begin));
    return arena_.New<ast::ArrayInitExpr>(Expr{ExprKind::ArrayInit, RangeFrom(begin)}, elements.Finish(), false);
}

Expr* FileParser::ParseArrayInit() {
    const SourceRange open = At().range;
    const Nest nest(*this);
    if (!nest.Ok()) return MakeError(open);
    Take();
    ++parentheses_;
    List<ast::ArrayInitElement> elements(*this);
    std::uint32_t height = 0;
    if (!Is(TokenKind::RightBracket)) {
        do {
            elements.Add(ParseArrayElement());
            height = std::max(height, height_);
        } while (!panic_ && Accept(TokenKind::Comma));
    }
    if (Expect(TokenKind::RightBracket, "',' or ']'") && !panic_) --parentheses_;
    Raise(height + 1, open);
    return arena_.New<ast::ArrayInitExpr>(Expr{ExprKind::ArrayInit, RangeFrom(open.begin)}, elements.Finish(), true);
}

Expr* FileParser::ParseStructInit() {
    const SourceRange open = At().range;
    const Nest nest(*this);
    if (!nest.Ok()) return MakeError(open);
    const std::span<ast::StructInitElement> elements = ParseStructElements();
    Raise(height_ + 1, open);
    return arena_.New<ast::StructInitExpr>(Expr{ExprKind::StructInit, RangeFrom(open.begin)}, elements);
}

std::span<ast::StructInitElement> FileParser::ParseStructElements() {
    if (!Expect(TokenKind::LeftParen, "'('")) return {};
    ++parentheses_;
    List<ast::StructInitElement> elements(*this);
    std::uint32_t height = 0;
    if (!Is(TokenKind::RightParen)) {
        do {
            ast::StructInitElement element;
            element.member = ExpectName("a member");
            Expect(TokenKind::Assign, "':='");
            if (panic_) break;
            const SourceOffset begin = At().range.begin;
            const ast::ArrayInitElement first = ParseArrayElement();
            const bool isNextMember = !Is(TokenKind::Comma) || (IsName(Ahead(1)) && Ahead(2).kind == TokenKind::Assign);
            const bool isList = first.repeat != nullptr || !isNextMember;
            element.value = isList ? ParseOpenArrayInit(first, begin, true) : first.value;
            elements.Add(element);
            height = std::max(height, height_);
        } while (!panic_ && Accept(TokenKind::Comma));
    }
    if (Expect(TokenKind::RightParen, "',' or ')'") && !panic_) --parentheses_;
    height_ = height;
    return elements.Finish();
}

}  // namespace tn61131::st
