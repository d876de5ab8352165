#include "random_programs/Reduce.h"

namespace random_programs {

namespace {

class Reducer {
 public:
    explicit Reducer(const std::function<bool()>& fails) : fails_(fails) {}

    /// Whether anything could be taken out.
    bool Round(Program& program) {
        changed_ = false;
        for (Routine& routine : program.routines)
            Body(routine.body);
        return changed_;
    }

 private:
    bool Keep() {
        const bool fails = fails_();
        changed_ = changed_ || fails;
        return fails;
    }

    void Body(std::vector<Statement*>& body) {
        for (std::size_t i = body.size(); i-- > 0;) {
            const std::vector<Statement*> before = body;
            body.erase(body.begin() + static_cast<std::ptrdiff_t>(i));
            if (Keep()) continue;
            body = before;
            Lift(body, i);
            if (i < body.size()) Inside(*body[i]);
        }
    }

    /// Puts the statements of a branch in the place of the whole.
    void Lift(std::vector<Statement*>& body, std::size_t i) {
        // What counts the rounds of WHILE must stay in it.
        if (body[i]->kind != StatementKind::If && body[i]->kind != StatementKind::Case) return;
        const std::vector<Statement*> before = body;
        for (const Statement::Branch& branch : before[i]->branches) {
            body.erase(body.begin() + static_cast<std::ptrdiff_t>(i));
            body.insert(body.begin() + static_cast<std::ptrdiff_t>(i), branch.body.begin(), branch.body.end());
            if (Keep()) return;
            body = before;
        }
    }

    void Inside(Statement& statement) {
        for (std::size_t i = statement.branches.size(); i-- > 1;) {
            const std::vector<Statement::Branch> before = statement.branches;
            statement.branches.erase(statement.branches.begin() + static_cast<std::ptrdiff_t>(i));
            if (!Keep()) statement.branches = before;
        }
        const bool isWhile = statement.kind == StatementKind::While || statement.kind == StatementKind::Repeat;
        for (Statement::Branch& branch : statement.branches) {
            Value(branch.condition);
            Body(branch.body);
        }
        if (!isWhile) Value(statement.value);
        Arguments(statement.arguments);
        Value(statement.to);
    }

    void Arguments(std::vector<CallArgument>& arguments) {
        for (CallArgument& argument : arguments)
            Value(argument.value);
    }

    void Value(Expression*& value) {
        if (value == nullptr || value->kind == ExpressionKind::PlainLiteral) return;
        Expression* before = value;
        for (Expression* operand : before->operands) {
            if (operand->type != before->type || operand->kind == ExpressionKind::PlainLiteral) continue;
            value = operand;
            if (Keep()) return Value(value);
            value = before;
        }
        if (value->kind == ExpressionKind::Literal) return;
        const Expression whole = *value;
        const bool isReal = IsReal(whole.type);
        value->kind = ExpressionKind::Literal;
        value->value = isReal ? Number::Floating(whole.type, 1) : Number::Whole(whole.type, 1);
        value->operands.clear();
        value->arguments.clear();
        if (Keep()) return;
        *value = whole;
        for (Expression*& operand : value->operands)
            Value(operand);
        Arguments(value->arguments);
    }

    const std::function<bool()>& fails_;
    bool changed_ = false;
};

}  // namespace

void Reduce(Program& program, const std::function<bool()>& fails) {
    Reducer reducer(fails);
    while (reducer.Round(program)) {
    }
}

}  // namespace random_programs
