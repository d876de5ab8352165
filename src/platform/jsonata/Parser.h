#pragma once

#include <cstddef>
#include <string_view>

#include "platform/jsonata/Syntax.h"
#include "platform/jsonata/Tokenizer.h"

namespace tn61131::jsonata {

/// Reads expressions by the binding powers of their operators. Throws EvaluationError.
class Parser {
 public:
    explicit Parser(std::string_view text, std::size_t position = 0) noexcept : tokenizer_(text), position_(position) {}

    /// The expression at the position; stops before what cannot continue it.
    [[nodiscard]] SyntaxPtr ParsePart();
    /// The expression that the whole text is.
    [[nodiscard]] SyntaxPtr ParseWhole();
    /// Behind what was read, without the blanks and comments that follow.
    [[nodiscard]] std::size_t GetPosition() const noexcept { return position_; }

 private:
    [[nodiscard]] SyntaxPtr Expression(int bindingPower);
    [[nodiscard]] SyntaxPtr Prefix();
    [[nodiscard]] SyntaxPtr Infix(const Token& token, SyntaxPtr left);
    [[nodiscard]] SyntaxPtr PrefixOperator(const Token& token);
    [[nodiscard]] SyntaxPtr Brackets(const Token& token, SyntaxPtr left);
    [[nodiscard]] SyntaxPtr Call(const Token& token, SyntaxPtr left);
    [[nodiscard]] SyntaxPtr Lambda(const Token& token, const std::vector<SyntaxPtr>& parameters);
    [[nodiscard]] SyntaxPtr OrderBy(const Token& token, SyntaxPtr left);
    [[nodiscard]] SyntaxPtr Condition(const Token& token, SyntaxPtr left);
    [[nodiscard]] SyntaxPtr Transform(const Token& token);
    [[nodiscard]] SyntaxPtr ArrayItem();
    void Pairs(Syntax& syntax);
    [[nodiscard]] std::string VariableBehind(int bindingPower, std::string_view operation);

    [[nodiscard]] const Token& Peek(Tokenizer::Expect expect);
    [[nodiscard]] bool PeekIs(std::string_view operation, Tokenizer::Expect expect = Tokenizer::Expect::Operator);
    Token Take(Tokenizer::Expect expect);
    [[nodiscard]] bool TakeIf(std::string_view operation, Tokenizer::Expect expect = Tokenizer::Expect::Operator);
    void Require(std::string_view operation);

    Tokenizer tokenizer_;
    std::size_t position_;
    Token ahead_;
    std::size_t aheadFrom_ = static_cast<std::size_t>(-1);
    Tokenizer::Expect aheadExpect_ = Tokenizer::Expect::Operand;
    unsigned int nesting_ = 0;
};

}  // namespace tn61131::jsonata
