#include "platform/jsonata/Parser.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Signature.h"

namespace tn61131::jsonata {

namespace {

using Expect = Tokenizer::Expect;

/// The depth of the tree, and of the recursion that reads it.
constexpr unsigned int kMaxNesting = 1000;

struct OperatorInfo {
    std::string_view name;
    int bindingPower;  ///< to what stands on its left
};

// What may follow an operand. The highest binds closest.
constexpr std::array<OperatorInfo, 27> kInfixOperators{{
    {"[", 80},  {"(", 80},  {"@", 80}, {"#", 80},  {".", 75},  {"{", 70},   {"*", 60},  {"/", 60}, {"%", 60},
    {"+", 50},  {"-", 50},  {"&", 50}, {"=", 40},  {"!=", 40}, {"<", 40},   {"<=", 40}, {">", 40}, {">=", 40},
    {"~>", 40}, {"in", 40}, {"^", 40}, {"?:", 40}, {"??", 40}, {"and", 30}, {"or", 25}, {"?", 20}, {":=", 10},
}};

int BindingPower(const Token& token) noexcept {
    if (token.kind != Token::Kind::Operator) return 0;
    const auto* found = std::ranges::find(kInfixOperators, token.text, &OperatorInfo::name);
    return found == kInfixOperators.end() ? 0 : found->bindingPower;
}

SyntaxPtr Make(Syntax::Kind kind, const Token& token) {
    SyntaxPtr syntax = std::make_unique<Syntax>();
    syntax->kind = kind;
    syntax->offset = token.begin;
    return syntax;
}

void Adopt(Syntax& parent, SyntaxPtr child) {
    parent.depth = std::max(parent.depth, child->depth + 1);
    if (parent.depth > kMaxNesting) ThrowAt(parent.offset, "U1004", std::to_string(kMaxNesting));
    parent.children.push_back(std::move(child));
}

std::shared_ptr<const Signature> ParseSignature(std::string_view text, std::size_t offset) {
    try {
        return Signature::Parse(text);
    } catch (EvaluationError& error) {
        error.offset = offset;
        throw;
    }
}

}  // namespace

const Token& Parser::Peek(Expect expect) {
    if (aheadFrom_ != position_ || aheadExpect_ != expect) {
        ahead_ = tokenizer_.Read(position_, expect);
        aheadFrom_ = position_;
        aheadExpect_ = expect;
    }
    return ahead_;
}

bool Parser::PeekIs(std::string_view operation, Expect expect) {
    return Peek(expect).IsOperator(operation);
}

Token Parser::Take(Expect expect) {
    Token token = Peek(expect);
    position_ = token.end;
    return token;
}

bool Parser::TakeIf(std::string_view operation, Expect expect) {
    if (!PeekIs(operation, expect)) return false;
    position_ = ahead_.end;
    return true;
}

void Parser::Require(std::string_view operation) {
    const Token& token = Peek(Expect::Operator);
    if (token.kind == Token::Kind::End) ThrowAt(token.begin, "S0203", operation);
    if (!token.IsOperator(operation)) ThrowAt(token.begin, "S0202", operation, token.text);
    position_ = token.end;
}

SyntaxPtr Parser::ParsePart() {
    return Expression(0);
}

SyntaxPtr Parser::ParseWhole() {
    SyntaxPtr syntax = Expression(0);
    const Token& rest = Peek(Expect::Operator);
    if (rest.kind != Token::Kind::End) {
        ThrowAt(rest.begin, "S0201", rest.text);
    }
    return syntax;
}

SyntaxPtr Parser::Expression(int bindingPower) {
    if (++nesting_ > kMaxNesting) ThrowAt(position_, "U1004", std::to_string(kMaxNesting));
    SyntaxPtr left = Prefix();
    while (true) {
        // What cannot be read cannot continue the expression either; whoever needs more reads it again and fails.
        Token next;
        try {
            next = Peek(Expect::Operator);
        } catch (const EvaluationError&) {
            break;
        }
        if (bindingPower >= BindingPower(next)) break;
        position_ = next.end;
        left = Infix(next, std::move(left));
    }
    --nesting_;
    return left;
}

SyntaxPtr Parser::Prefix() {
    const Token token = Take(Expect::Operand);
    SyntaxPtr syntax;
    switch (token.kind) {
        case Token::Kind::End: return Make(Syntax::Kind::Missing, token);
        case Token::Kind::Name: syntax = Make(Syntax::Kind::Name, token); break;
        case Token::Kind::Variable: syntax = Make(Syntax::Kind::Variable, token); break;
        case Token::Kind::String: syntax = Make(Syntax::Kind::String, token); break;
        case Token::Kind::Constant: syntax = Make(Syntax::Kind::Constant, token); break;
        case Token::Kind::Operator: return PrefixOperator(token);
        case Token::Kind::Number:
            syntax = Make(Syntax::Kind::Number, token);
            syntax->number = token.number;
            return syntax;
        case Token::Kind::Regex:
            syntax = Make(Syntax::Kind::Regex, token);
            syntax->flags = token.flags;
            break;
    }
    syntax->text = token.text;
    return syntax;
}

SyntaxPtr Parser::PrefixOperator(const Token& token) {
    if (token.text == "*") return Make(Syntax::Kind::Wildcard, token);
    if (token.text == "**") return Make(Syntax::Kind::Descendant, token);
    if (token.text == "%") return Make(Syntax::Kind::Parent, token);
    if (token.text == "|") return Transform(token);
    if (token.text == "and" || token.text == "or" || token.text == "in") {
        SyntaxPtr name = Make(Syntax::Kind::Name, token);
        name->text = token.text;
        return name;
    }
    if (token.text == "-") {
        SyntaxPtr negation = Make(Syntax::Kind::Negate, token);
        Adopt(*negation, Expression(70));
        return negation;
    }
    if (token.text == "(") {
        SyntaxPtr block = Make(Syntax::Kind::Block, token);
        while (!PeekIs(")", Expect::Operand)) {
            Adopt(*block, Expression(0));
            if (!TakeIf(";")) break;
        }
        Require(")");
        return block;
    }
    if (token.text == "[") {
        SyntaxPtr array = Make(Syntax::Kind::Array, token);
        if (!PeekIs("]", Expect::Operand)) {
            do {
                Adopt(*array, ArrayItem());
            } while (TakeIf(","));
        }
        Require("]");
        return array;
    }
    if (token.text == "{") {
        SyntaxPtr object = Make(Syntax::Kind::Object, token);
        Pairs(*object);
        return object;
    }
    ThrowAt(token.begin, "S0211", token.text);
}

SyntaxPtr Parser::ArrayItem() {
    SyntaxPtr item = Expression(0);
    if (!PeekIs("..")) return item;
    SyntaxPtr range = Make(Syntax::Kind::Binary, Take(Expect::Operator));
    range->text = "..";
    Adopt(*range, std::move(item));
    Adopt(*range, Expression(0));
    return range;
}

void Parser::Pairs(Syntax& syntax) {
    if (!PeekIs("}", Expect::Operand)) {
        do {
            Adopt(syntax, Expression(0));
            Require(":");
            Adopt(syntax, Expression(0));
        } while (TakeIf(","));
    }
    Require("}");
}

SyntaxPtr Parser::Infix(const Token& token, SyntaxPtr left) {
    const std::string_view operation = token.text;
    if (operation == "[") return Brackets(token, std::move(left));
    if (operation == "(") return Call(token, std::move(left));
    if (operation == "^") return OrderBy(token, std::move(left));
    if (operation == "?") return Condition(token, std::move(left));
    if (operation == "{") {
        SyntaxPtr group = Make(Syntax::Kind::GroupBy, token);
        Adopt(*group, std::move(left));
        Pairs(*group);
        return group;
    }
    if (operation == "@" || operation == "#") {
        SyntaxPtr binding = Make(operation == "@" ? Syntax::Kind::Focus : Syntax::Kind::Index, token);
        Adopt(*binding, std::move(left));
        binding->text = VariableBehind(BindingPower(token), operation);
        return binding;
    }
    if (operation == ":=") {
        if (left->kind != Syntax::Kind::Variable) ThrowAt(left->offset, "S0212");
        SyntaxPtr binding = Make(Syntax::Kind::Bind, token);
        binding->text = left->text;
        Adopt(*binding, Expression(BindingPower(token) - 1));  // binds to the right
        return binding;
    }
    SyntaxPtr binary = Make(Syntax::Kind::Binary, token);
    binary->text = operation;
    Adopt(*binary, std::move(left));
    const bool takesAll = operation == "?:" || operation == "??";
    Adopt(*binary, Expression(takesAll ? 0 : BindingPower(token)));
    return binary;
}

SyntaxPtr Parser::Brackets(const Token& token, SyntaxPtr left) {
    if (TakeIf("]", Expect::Operand)) {
        Syntax* step = left.get();
        while (step->kind == Syntax::Kind::Filter)
            step = step->children[0].get();
        step->keepArray = true;
        return left;
    }
    SyntaxPtr filter = Make(Syntax::Kind::Filter, token);
    Adopt(*filter, std::move(left));
    Adopt(*filter, Expression(0));
    Require("]");
    return filter;
}

std::string Parser::VariableBehind(int bindingPower, std::string_view operation) {
    const SyntaxPtr right = Expression(bindingPower);
    if (right->kind != Syntax::Kind::Variable) ThrowAt(right->offset, "S0214", operation);
    return right->text;
}

SyntaxPtr Parser::Call(const Token& token, SyntaxPtr left) {
    std::vector<SyntaxPtr> arguments;
    bool isPartial = false;
    if (!PeekIs(")", Expect::Operand)) {
        do {
            if (PeekIs("?", Expect::Operand)) {
                isPartial = true;
                arguments.push_back(Make(Syntax::Kind::Placeholder, Take(Expect::Operand)));
            } else {
                arguments.push_back(Expression(0));
            }
        } while (TakeIf(","));
    }
    Require(")");
    const bool isLambda = left->kind == Syntax::Kind::Name && (left->text == "function" || left->text == "\u03BB");
    if (isLambda) return Lambda(token, arguments);
    SyntaxPtr call = Make(isPartial ? Syntax::Kind::Partial : Syntax::Kind::Call, token);
    Adopt(*call, std::move(left));
    for (SyntaxPtr& argument : arguments)
        Adopt(*call, std::move(argument));
    return call;
}

SyntaxPtr Parser::Lambda(const Token& token, const std::vector<SyntaxPtr>& parameters) {
    SyntaxPtr lambda = Make(Syntax::Kind::Lambda, token);
    for (const SyntaxPtr& parameter : parameters) {
        if (parameter->kind != Syntax::Kind::Variable) ThrowAt(parameter->offset, "S0208", parameter->text);
        lambda->names.push_back(parameter->text);
    }
    if (PeekIs("<")) {
        const std::size_t begin = ahead_.begin;
        position_ = tokenizer_.EndOfSignature(begin);
        lambda->text = tokenizer_.GetText().substr(begin, position_ - begin);
        lambda->signature = ParseSignature(lambda->text, begin);
    }
    Require("{");
    Adopt(*lambda, Expression(0));
    Require("}");
    return lambda;
}

SyntaxPtr Parser::OrderBy(const Token& token, SyntaxPtr left) {
    SyntaxPtr order = Make(Syntax::Kind::OrderBy, token);
    Adopt(*order, std::move(left));
    Require("(");
    do {
        SyntaxPtr term = Make(Syntax::Kind::SortTerm, Peek(Expect::Operand));
        const bool isDescending = TakeIf(">", Expect::Operand);
        if (!isDescending) (void)TakeIf("<", Expect::Operand);
        term->text = isDescending ? ">" : "<";
        Adopt(*term, Expression(0));
        Adopt(*order, std::move(term));
    } while (TakeIf(","));
    Require(")");
    return order;
}

SyntaxPtr Parser::Condition(const Token& token, SyntaxPtr left) {
    SyntaxPtr condition = Make(Syntax::Kind::Condition, token);
    Adopt(*condition, std::move(left));
    Adopt(*condition, Expression(0));
    if (TakeIf(":")) Adopt(*condition, Expression(0));
    return condition;
}

SyntaxPtr Parser::Transform(const Token& token) {
    SyntaxPtr transform = Make(Syntax::Kind::Transform, token);
    Adopt(*transform, Expression(0));
    Require("|");
    Adopt(*transform, Expression(0));
    if (TakeIf(",")) Adopt(*transform, Expression(0));
    Require("|");
    return transform;
}

}  // namespace tn61131::jsonata
