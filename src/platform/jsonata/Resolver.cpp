#include <algorithm>
#include <array>
#include <deque>
#include <unordered_map>

#include "platform/TextOutput.h"
#include "platform/jsonata/EvaluationError.h"
#include "platform/jsonata/Expr.h"
#include "platform/jsonata/FunctionTable.h"
#include "platform/jsonata/NumberText.h"
#include "platform/jsonata/Regex.h"
#include "platform/jsonata/Syntax.h"

namespace tn61131::jsonata {

namespace {

using Kind = Expr::Kind;

struct OperationInfo {
    Operation operation;
    std::string_view sign;
};

constexpr std::array<OperationInfo, 19> kOperations{{
    {Operation::Add, "+"},       {Operation::Subtract, "-"},      {Operation::Multiply, "*"},
    {Operation::Divide, "/"},    {Operation::Modulo, "%"},        {Operation::Equal, "="},
    {Operation::NotEqual, "!="}, {Operation::Less, "<"},          {Operation::LessEqual, "<="},
    {Operation::Greater, ">"},   {Operation::GreaterEqual, ">="}, {Operation::Concatenate, "&"},
    {Operation::And, "and"},     {Operation::Or, "or"},           {Operation::In, "in"},
    {Operation::Range, ".."},    {Operation::Default, "?:"},      {Operation::Coalesce, "??"},
    {Operation::Apply, "~>"},
}};

/// A `%` on its way to the step that provides what it stands for: `level` more steps up.
struct Seeker {
    int level = 1;
    std::shared_ptr<const Symbol> label;
    Expr* parent = nullptr;
};

class Resolver {
 public:
    ExprPtr Resolve(const Syntax& syntax) {
        ExprPtr expr = Process(syntax);
        if (expr->kind == Kind::Parent) ThrowAt(expr->offset, "S0217");
        const std::vector<Seeker*>& unresolved = seeking_[expr.get()];
        if (!unresolved.empty()) ThrowAt(unresolved.front()->parent->offset, "S0217");
        for (const Seeker& seeker : seekers_)
            seeker.parent->symbol = *seeker.label;
        return expr;
    }

 private:
    static ExprPtr Make(Kind kind, const Syntax& syntax) {
        ExprPtr expr = std::make_unique<Expr>();
        expr->kind = kind;
        expr->offset = syntax.offset;
        expr->keepArray = syntax.keepArray;
        return expr;
    }

    ExprPtr Process(const Syntax& syntax) {
        ExprPtr expr = ProcessKind(syntax);
        if (syntax.keepArray) expr->keepArray = true;
        return expr;
    }

    ExprPtr ProcessKind(const Syntax& syntax) {
        ExprPtr expr;
        switch (syntax.kind) {
            case Syntax::Kind::Name: return ProcessName(syntax);
            case Syntax::Kind::String:
                expr = Make(Kind::Literal, syntax);
                expr->literal = JSONValue(syntax.text);
                return expr;
            case Syntax::Kind::Number:
                expr = Make(Kind::Literal, syntax);
                expr->literal = JSONValue(syntax.number);
                return expr;
            case Syntax::Kind::Constant:
                expr = Make(Kind::Literal, syntax);
                if (syntax.text != "null") expr->literal = JSONValue(syntax.text == "true");
                return expr;
            case Syntax::Kind::Variable:
                expr = Make(Kind::Variable, syntax);
                expr->symbol = Symbol(syntax.text);
                expr->builtIn = FindFunction(syntax.text);
                return expr;
            case Syntax::Kind::Regex:
                expr = Make(Kind::Regex, syntax);
                expr->regex = CompileRegex(syntax);
                return expr;
            case Syntax::Kind::Wildcard: return Make(Kind::Wildcard, syntax);
            case Syntax::Kind::Descendant: return Make(Kind::Descendant, syntax);
            case Syntax::Kind::Parent: return ProcessParent(syntax);
            case Syntax::Kind::Negate: return ProcessNegation(syntax);
            case Syntax::Kind::Array: return ProcessChildren(Kind::Array, syntax);
            case Syntax::Kind::Object:
                expr = Make(Kind::Object, syntax);
                expr->pairs = ProcessPairs(syntax, 0, expr.get());
                return expr;
            case Syntax::Kind::Block: return ProcessBlock(syntax);
            case Syntax::Kind::Binary: return syntax.text == "." ? ProcessPath(syntax) : ProcessBinary(syntax);
            case Syntax::Kind::Filter: return ProcessFilter(syntax);
            case Syntax::Kind::GroupBy: return ProcessGroup(syntax);
            case Syntax::Kind::OrderBy: return ProcessOrder(syntax);
            case Syntax::Kind::Focus: return ProcessFocus(syntax);
            case Syntax::Kind::Index: return ProcessIndex(syntax);
            case Syntax::Kind::Bind:
                expr = ProcessChildren(Kind::Bind, syntax);
                expr->symbol = Symbol(syntax.text);
                return expr;
            case Syntax::Kind::Condition: return ProcessChildren(Kind::Condition, syntax);
            case Syntax::Kind::Call:
            case Syntax::Kind::Partial: return ProcessCall(syntax);
            case Syntax::Kind::Lambda: return ProcessLambda(syntax);
            case Syntax::Kind::Transform:
                expr = Make(Kind::Transform, syntax);
                for (const SyntaxPtr& child : syntax.children)
                    expr->children.push_back(Process(*child));
                return expr;
            case Syntax::Kind::Missing: ThrowAt(syntax.offset, "S0207");
            case Syntax::Kind::SortTerm:
            case Syntax::Kind::Placeholder: break;  // read by those that contain them
        }
        ThrowAt(syntax.offset, "S0211", syntax.text);
    }

    ExprPtr ProcessName(const Syntax& syntax) {
        ExprPtr name = Make(Kind::Name, syntax);
        name->literal = JSONValue(syntax.text);
        ExprPtr path = Make(Kind::Path, syntax);
        path->keepsArrays = syntax.keepArray;
        path->children.push_back(std::move(name));
        return path;
    }

    static std::shared_ptr<const Regex> CompileRegex(const Syntax& syntax) {
        Result<std::shared_ptr<const Regex>> regex = Regex::Compile(syntax.text, syntax.flags);
        if (!regex)
            ThrowAt(syntax.offset, regex.GetFailure().code, regex.GetFailure().value, regex.GetFailure().detail);
        return std::move(*regex);
    }

    ExprPtr ProcessParent(const Syntax& syntax) {
        ExprPtr parent = Make(Kind::Parent, syntax);
        Seeker& seeker = seekers_.emplace_back();
        // No variable that can be written begins with "!".
        seeker.label = std::make_shared<const Symbol>("!" + std::to_string(seekers_.size()));
        seeker.parent = parent.get();
        own_[parent.get()] = &seeker;
        return parent;
    }

    ExprPtr ProcessNegation(const Syntax& syntax) {
        ExprPtr operand = Process(*syntax.children[0]);
        if (operand->kind == Kind::Literal && operand->literal.IsNumber() && operand->predicates.empty()) {
            operand->literal = JSONValue(-operand->literal.GetNumber());
            return operand;
        }
        ExprPtr negation = Make(Kind::Negate, syntax);
        PassOn(*negation, *operand);
        negation->children.push_back(std::move(operand));
        return negation;
    }

    // An expression that is made of its children, each of which may look for its parent further up.
    ExprPtr ProcessChildren(Kind kind, const Syntax& syntax) {
        ExprPtr expr = Make(kind, syntax);
        for (const SyntaxPtr& child : syntax.children) {
            ExprPtr part = Process(*child);
            PassOn(*expr, *part);
            expr->children.push_back(std::move(part));
        }
        return expr;
    }

    std::vector<std::pair<ExprPtr, ExprPtr>> ProcessPairs(const Syntax& syntax, std::size_t from, Expr* owner) {
        std::vector<std::pair<ExprPtr, ExprPtr>> pairs;
        for (std::size_t i = from; i + 1 < syntax.children.size(); i += 2) {
            ExprPtr name = Process(*syntax.children[i]);
            ExprPtr value = Process(*syntax.children[i + 1]);
            if (owner != nullptr) PassOn(*owner, *name);
            if (owner != nullptr) PassOn(*owner, *value);
            pairs.emplace_back(std::move(name), std::move(value));
        }
        return pairs;
    }

    ExprPtr ProcessBlock(const Syntax& syntax) {
        ExprPtr block = ProcessChildren(Kind::Block, syntax);
        for (const ExprPtr& part : block->children) {
            const bool beginsConstructed = part->kind == Kind::Path && part->children[0]->isConstructed;
            if (part->isConstructed || beginsConstructed) block->isConstructed = true;
        }
        return block;
    }

    ExprPtr ProcessBinary(const Syntax& syntax) {
        ExprPtr expr = ProcessChildren(Kind::Binary, syntax);
        const auto* found = std::ranges::find(kOperations, syntax.text, &OperationInfo::sign);
        expr->operation = found->operation;
        if (expr->operation == Operation::Apply) {
            expr->keepArray = expr->children[0]->keepArray || expr->children[1]->keepArray;
        }
        return expr;
    }

    ExprPtr AsPath(ExprPtr expr, const Syntax& syntax) {
        if (expr->kind == Kind::Path) return expr;
        ExprPtr path = Make(Kind::Path, syntax);
        path->keepArray = false;
        if (expr->kind == Kind::Parent) seeking_[path.get()] = {own_[expr.get()]};
        path->children.push_back(std::move(expr));
        return path;
    }

    ExprPtr ProcessPath(const Syntax& syntax) {
        ExprPtr path = AsPath(Process(*syntax.children[0]), syntax);
        ExprPtr rest = Process(*syntax.children[1]);
        std::vector<ExprPtr>& steps = path->children;
        if (rest->kind == Kind::Path && rest->group == nullptr && rest->predicates.empty()) {
            // A step that looks for its parent does so from where it now stands.
            for (ExprPtr& step : rest->children)
                steps.push_back(std::move(step));
        } else {
            rest->stages = std::move(rest->predicates);
            rest->predicates.clear();
            steps.push_back(std::move(rest));
        }
        for (const ExprPtr& step : steps) {
            if (step->kind == Kind::Literal) MakeName(*step);
            if (step->keepArray) path->keepsArrays = true;
        }
        if (steps.front()->kind == Kind::Array) steps.front()->isConstructed = true;
        if (steps.back()->kind == Kind::Array) steps.back()->isConstructed = true;
        ResolveLastStep(*path);
        return path;
    }

    // A text in a path is a quoted name; other literals are no steps.
    static void MakeName(Expr& step) {
        if (!step.literal.IsString()) {
            CTextOutputString text;
            step.literal.Write(text);
            ThrowAt(step.offset, "S0213", text.GetText());
        }
        step.kind = Kind::Name;
    }

    ExprPtr ProcessFilter(const Syntax& syntax) {
        ExprPtr expr = Process(*syntax.children[0]);
        const bool isPath = expr->kind == Kind::Path;
        Expr& step = isPath ? *expr->children.back() : *expr;
        if (expr->group != nullptr || step.group != nullptr) ThrowAt(syntax.offset, "S0209");
        ExprPtr predicate = Process(*syntax.children[1]);
        for (Seeker* seeker : seeking_[predicate.get()]) {
            if (seeker->level == 1) {
                Seek(step, *seeker);
            } else {
                --seeker->level;
            }
        }
        PassOn(step, *predicate);
        (isPath ? step.stages : step.predicates).push_back({std::move(predicate), Symbol()});
        return expr;
    }

    ExprPtr ProcessGroup(const Syntax& syntax) {
        ExprPtr expr = Process(*syntax.children[0]);
        if (expr->group != nullptr) ThrowAt(syntax.offset, "S0210");
        expr->group = std::make_unique<Grouping>();
        expr->group->offset = syntax.offset;
        expr->group->pairs = ProcessPairs(syntax, 1, nullptr);
        return expr;
    }

    ExprPtr ProcessOrder(const Syntax& syntax) {
        ExprPtr path = AsPath(Process(*syntax.children[0]), syntax);
        ExprPtr sort = Make(Kind::Sort, syntax);
        sort->keepArray = false;
        for (std::size_t i = 1; i < syntax.children.size(); ++i) {
            const Syntax& term = *syntax.children[i];
            ExprPtr key = Process(*term.children[0]);
            PassOn(*sort, *key);
            sort->descending.push_back(term.text == ">");
            sort->children.push_back(std::move(key));
        }
        path->children.push_back(std::move(sort));
        ResolveLastStep(*path);
        return path;
    }

    ExprPtr ProcessFocus(const Syntax& syntax) {
        ExprPtr expr = Process(*syntax.children[0]);
        Expr& step = expr->kind == Kind::Path ? *expr->children.back() : *expr;
        if (!step.stages.empty() || !step.predicates.empty()) ThrowAt(syntax.offset, "S0215");
        if (step.kind == Kind::Sort) ThrowAt(syntax.offset, "S0216");
        if (syntax.keepArray) step.keepArray = true;
        step.focus = std::make_unique<Symbol>(syntax.text);
        step.isTuple = true;
        return expr;
    }

    ExprPtr ProcessIndex(const Syntax& syntax) {
        ExprPtr path = AsPath(Process(*syntax.children[0]), syntax);
        Expr& step = *path->children.back();
        for (Stage& stage : step.predicates)
            step.stages.push_back(std::move(stage));
        step.predicates.clear();
        if (step.stages.empty()) {
            step.index = std::make_unique<Symbol>(syntax.text);
        } else {
            step.stages.push_back({nullptr, Symbol(syntax.text)});
        }
        step.isTuple = true;
        return path;
    }

    ExprPtr ProcessCall(const Syntax& syntax) {
        ExprPtr call = Make(syntax.kind == Syntax::Kind::Call ? Kind::Call : Kind::Partial, syntax);
        call->children.push_back(Process(*syntax.children[0]));
        for (std::size_t i = 1; i < syntax.children.size(); ++i) {
            const Syntax& child = *syntax.children[i];
            ExprPtr argument = child.kind == Syntax::Kind::Placeholder ? nullptr : Process(child);
            if (argument != nullptr) PassOn(*call, *argument);
            call->children.push_back(std::move(argument));
        }
        return call;
    }

    ExprPtr ProcessLambda(const Syntax& syntax) {
        ExprPtr lambda = Make(Kind::Lambda, syntax);
        for (const std::string& name : syntax.names)
            lambda->parameters.emplace_back(name);
        lambda->signature = syntax.signature;
        lambda->children.push_back(Process(*syntax.children[0]));
        MarkTailCalls(*lambda->children[0]);
        return lambda;
    }

    static void MarkTailCalls(Expr& expr) {
        if (!expr.predicates.empty() || expr.group != nullptr || expr.keepArray) return;
        if (expr.kind == Kind::Call) expr.isTailCall = true;
        if (expr.kind == Kind::Condition) {
            for (std::size_t i = 1; i < expr.children.size(); ++i)
                MarkTailCalls(*expr.children[i]);
        }
        if (expr.kind == Kind::Block && !expr.children.empty()) MarkTailCalls(*expr.children.back());
    }

    // What looks for its parent inside of `part` goes on looking from `expr`.
    void PassOn(Expr& expr, Expr& part) {
        std::vector<Seeker*> seekers = seeking_[&part];
        if (part.kind == Kind::Parent) seekers.push_back(own_[&part]);
        std::vector<Seeker*>& all = seeking_[&expr];
        all.insert(all.end(), seekers.begin(), seekers.end());
    }

    void ResolveLastStep(Expr& path) {
        Expr& last = *path.children.back();
        std::vector<Seeker*> seekers = seeking_[&last];
        if (last.kind == Kind::Parent) seekers.push_back(own_[&last]);
        for (Seeker* seeker : seekers) {
            std::size_t next = path.children.size() - 1;  // the steps below are still to be asked
            while (seeker->level > 0 && next > 0) {
                Expr* step = path.children[--next].get();
                // Steps in a row that bind their items leave the context where it was.
                while (next > 0 && step->focus != nullptr && path.children[next - 1]->focus != nullptr) {
                    step = path.children[--next].get();
                }
                Seek(*step, *seeker);
            }
            if (seeker->level > 0) seeking_[&path].push_back(seeker);
        }
    }

    void Seek(Expr& step, Seeker& seeker) {
        switch (step.kind) {
            case Kind::Name:
            case Kind::Wildcard:
                if (--seeker.level > 0) return;
                if (step.ancestor != nullptr) {
                    seeker.label = step.ancestor;
                } else {
                    step.ancestor = seeker.label;
                }
                step.isTuple = true;
                return;
            case Kind::Parent: ++seeker.level; return;
            case Kind::Block:
                if (step.children.empty()) return;
                step.isTuple = true;
                Seek(*step.children.back(), seeker);
                return;
            case Kind::Path: {
                step.isTuple = true;
                std::size_t next = step.children.size();
                do {
                    Seek(*step.children[--next], seeker);
                } while (seeker.level > 0 && next > 0);
                return;
            }
            default: ThrowAt(seeker.parent->offset, "S0217");
        }
    }

    std::deque<Seeker> seekers_;
    std::unordered_map<const Expr*, Seeker*> own_;
    std::unordered_map<const Expr*, std::vector<Seeker*>> seeking_;
};

}  // namespace

std::string_view SignOf(Operation operation) noexcept {
    return std::ranges::find(kOperations, operation, &OperationInfo::operation)->sign;
}

ExprPtr ResolveSyntax(const Syntax& syntax) {
    return Resolver().Resolve(syntax);
}

}  // namespace tn61131::jsonata
