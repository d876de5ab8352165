#include <algorithm>

#include "compiler/BodyChecker.h"

// Calls of function block instances, actions and programs (IEC 61131-3, 6.6.3.4 and 6.6.4), and calls as statements.

namespace tn61131::st {

namespace {

[[nodiscard]] bool IsParameter(const Variable& variable) noexcept {
    return variable.section == ast::VarSection::Input || variable.section == ast::VarSection::Output ||
           variable.section == ast::VarSection::InOut;
}

}  // namespace

Stmt* BodyChecker::BuildBlockCall(const ast::CallExpr& call, Place* instance, const FunctionBlockType* block,
                                  Pou* action, std::span<Variable* const> variables, const std::string& name) {
    auto* node =
        New(CallBlockStmt{{StmtKind::CallBlock, call.range}, instance, block, action, {}, {}, {}, nullptr, nullptr});
    const std::size_t most = call.arguments.size();
    const std::span<BlockInput> inputs = project_.arena.NewArray<BlockInput>(most);
    const std::span<BlockInOut> inOuts = project_.arena.NewArray<BlockInOut>(most);
    const std::span<OutputBinding> outputs = project_.arena.NewArray<OutputBinding>(most);
    std::size_t inputCount = 0;
    std::size_t inOutCount = 0;
    std::size_t outputCount = 0;
    std::vector<const Variable*> seen;
    std::size_t nextPositional = 0;
    bool isNamed = false;
    const auto isControl = [&](const Variable& variable) {
        const std::string_view folded = project_.names.GetFolded(variable.name);
        return block != nullptr && (folded == "en" || folded == "eno") && variable.storage.offset < 2;
    };
    for (const ast::Argument& argument : call.arguments) {
        Variable* parameter = nullptr;
        if (argument.name.name == NameId::None) {
            if (isNamed) {
                Fail(DiagnosticCode::PositionalAfterNamed, argument.range);
                return nullptr;
            }
            while (nextPositional < variables.size() &&
                   (isControl(*variables[nextPositional]) || !IsParameter(*variables[nextPositional])))
                ++nextPositional;
            if (nextPositional == variables.size()) {
                const auto count = std::ranges::count_if(
                    variables, [&](const Variable* v) { return IsParameter(*v) && !isControl(*v); });
                Fail(DiagnosticCode::WrongArgumentCount, call.range,
                     {name, std::to_string(count), std::to_string(call.arguments.size())});
                break;
            }
            parameter = variables[nextPositional++];
        } else {
            isNamed = true;
            const auto found = std::ranges::find_if(variables, [&](const Variable* variable) {
                return variable->name == argument.name.name && IsParameter(*variable) && !isControl(*variable);
            });
            if (found == variables.end()) {
                if (TakeEnable(argument, node->enable, node->enableOutput)) continue;
                std::vector<std::string_view> candidates;
                for (const Variable* variable : variables) {
                    if (IsParameter(*variable)) candidates.push_back(project_.names.GetFolded(variable->name));
                }
                ReportUnknownParameter(name, argument, candidates);
                continue;
            }
            parameter = *found;
        }
        if (std::ranges::find(seen, parameter) != seen.end()) {
            Fail(DiagnosticCode::DuplicateArgument, argument.range, {Text(parameter->name)});
            continue;
        }
        seen.push_back(parameter);
        switch (parameter->section) {
            case ast::VarSection::InOut: {
                BlockInOut& inOut = inOuts[inOutCount++];
                inOut.inOut = parameter;
                BindInOut(parameter, argument, inOut.place);
                break;
            }
            case ast::VarSection::Output: {
                OutputBinding binding;
                BindOutput(parameter, argument, binding);
                if (binding.target != nullptr) outputs[outputCount++] = binding;
                break;
            }
            default: {
                BlockInput& input = inputs[inputCount++];
                input.input = parameter;
                BindInput(parameter, argument, input.value);
                parameter->isWritten = true;
                break;
            }
        }
    }
    if (action == nullptr || action->kind == ast::PouKind::Program) {
        for (Variable* variable : variables) {
            if (variable->section != ast::VarSection::InOut || std::ranges::find(seen, variable) != seen.end())
                continue;
            project_.diagnostics.Report(DiagnosticCode::InOutNotGiven, call.range, {Text(variable->name)});
        }
    }
    node->inputs = inputs.first(inputCount);
    node->inOuts = inOuts.first(inOutCount);
    node->outputs = outputs.first(outputCount);
    context_.writesOutside = true;
    return node;
}

Stmt* BodyChecker::CheckBlockCall(const ast::CallExpr& call, Place* instance, const FunctionBlockType& block,
                                  Pou* action) {
    MarkRead(instance);
    MarkWritten(instance, call.range);
    MarkAddressTaken(instance);
    const Pou* pou = context_.pou;
    if (pou != nullptr && pou->kind == ast::PouKind::Function) {
        const Place* root = instance;
        while (root->kind == PlaceKind::Member || root->kind == PlaceKind::Element) {
            root = root->kind == PlaceKind::Member ? static_cast<const MemberPlace*>(root)->base
                                                   : static_cast<const ElementPlace*>(root)->base;
        }
        if (root->kind == PlaceKind::Variable) {
            const Variable& variable = *static_cast<const VariablePlace*>(root)->variable;
            if (variable.owner == pou && variable.section != ast::VarSection::InOut &&
                variable.section != ast::VarSection::External && variable.section != ast::VarSection::Static) {
                Fail(DiagnosticCode::BlockInFunction, call.callee->range, {Text(variable.name)});
                return nullptr;
            }
        }
    }
    if (action != nullptr) {
        NoteCall(action);
    } else if (block.pou != nullptr) {
        NoteCall(block.pou);
    }
    const std::string name = Text(action != nullptr ? action->name : block.name);
    static const std::vector<Variable*> kNone;
    return BuildBlockCall(call, instance, &block, action, action != nullptr ? kNone : block.variables, name);
}

Stmt* BodyChecker::CheckProgramCall(const ast::CallExpr& call, Pou& program) {
    NoteCall(&program);
    const bool isProgram = program.kind == ast::PouKind::Program;
    static const std::vector<Variable*> kNone;
    return BuildBlockCall(call, nullptr, nullptr, &program, isProgram ? program.variables : kNone, Text(program.name));
}

Stmt* BodyChecker::CheckCallStatement(const ast::CallStmt& statement) {
    if (statement.call->kind != ast::ExprKind::Call) {
        if (statement.call->kind == ast::ExprKind::Error) return nullptr;
        const Entity entity = Resolve(*statement.call, nullptr);
        if (entity.kind != Entity::Kind::Error) Fail(DiagnosticCode::NoEffect, statement.call->range);
        return nullptr;
    }
    const auto& call = static_cast<const ast::CallExpr&>(*statement.call);
    const Entity callee = ResolveCallee(*call.callee);
    if (callee.kind == Entity::Kind::Error) return nullptr;
    if (callee.kind == Entity::Kind::Place) {
        const Type* type = Strip(callee.place->type);
        if (type->kind == TypeKind::FunctionBlock)
            return CheckBlockCall(call, callee.place, *static_cast<const FunctionBlockType*>(type), nullptr);
    }
    if (callee.kind == Entity::Kind::Pou) {
        Pou& pou = *callee.pou;
        if (pou.kind == ast::PouKind::Program) return CheckProgramCall(call, pou);
        if (pou.kind == ast::PouKind::Action) {
            if (pou.container == nullptr || pou.container->kind != ast::PouKind::FunctionBlock)
                return CheckProgramCall(call, pou);
            Place* instance = callee.place;
            if (!CheckMethodInstance(pou, instance, call.callee->range)) return nullptr;
            return CheckBlockCall(call, instance, *pou.container->type, &pou);
        }
    }
    Expr* value = CheckValueCall(call, callee, nullptr);
    if (IsError(value)) return nullptr;
    Settle(value);
    if (value->kind == ExprKind::Constant) {
        Fail(DiagnosticCode::NoEffect, call.range);
        return nullptr;
    }
    return New(EvaluateStmt{{StmtKind::Evaluate, statement.range}, value});
}

}  // namespace tn61131::st
