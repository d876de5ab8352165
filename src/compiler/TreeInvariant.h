#pragma once

#include <string>
#include <vector>

#include "compiler/TreePrint.h"

namespace tn61131::st::testing {

/// Walks a checked tree and collects what breaks its invariant: values whose machine type is not that of their type,
/// operands that the machine would promote, aggregates on the stack.
class TreeInvariant {
 public:
    explicit TreeInvariant(const NameTable& names) : names_(names) {}

    void Visit(const Stmt* stmt) {
        switch (stmt->kind) {
            case StmtKind::Assign: {
                const auto& assign = *static_cast<const AssignStmt*>(stmt);
                Visit(assign.target);
                Visit(assign.value);
                Require(!IsAggregate(assign.target->type), assign.value, "aggregate in Assign");
                Same(assign.target->type, assign.value);
                break;
            }
            case StmtKind::Keep:
                Visit(static_cast<const KeepStmt*>(stmt)->place);
                Visit(static_cast<const KeepStmt*>(stmt)->body);
                break;
            case StmtKind::AssignAggregate: {
                const auto& assign = *static_cast<const AssignAggregateStmt*>(stmt);
                Visit(assign.target);
                Visit(assign.source);
                Require(Strip(assign.target->type) == Strip(assign.source->type), assign.source, "other aggregate");
                break;
            }
            case StmtKind::StoreBits: {
                const auto& store = *static_cast<const StoreBitsStmt*>(stmt);
                Visit(store.target);
                Visit(store.value);
                Require(store.firstBit + store.width <= store.target->type->size * 8, store.value, "bits outside");
                Require(store.value->type->size * (store.width == 1 ? 1U : 8U) == store.width, store.value, "width");
                break;
            }
            case StmtKind::Evaluate: Visit(static_cast<const EvaluateStmt*>(stmt)->value); break;
            case StmtKind::CallBlock: {
                const auto& call = *static_cast<const CallBlockStmt*>(stmt);
                if (call.instance != nullptr) Visit(call.instance);
                for (const BlockInput& input : call.inputs) {
                    Visit(input.value);
                    Same(input.input->type, input.value);
                }
                for (const BlockInOut& inOut : call.inOuts)
                    Visit(inOut.place);
                for (const OutputBinding& output : call.outputs)
                    VisitOutput(output);
                VisitEnable(call.enable, call.enableOutput);
                break;
            }
            case StmtKind::If: {
                const auto& choice = *static_cast<const IfStmt*>(stmt);
                Condition(choice.condition);
                Visit(choice.then);
                if (choice.otherwise != nullptr) Visit(choice.otherwise);
                break;
            }
            case StmtKind::Case: {
                const auto& selection = *static_cast<const CaseStmt*>(stmt);
                Visit(selection.selector);
                for (const CaseArm& arm : selection.arms)
                    Visit(arm.body);
                if (selection.otherwise != nullptr) Visit(selection.otherwise);
                break;
            }
            case StmtKind::For: {
                const auto& loop = *static_cast<const ForStmt*>(stmt);
                Visit(loop.counter);
                for (const Expr* expr : {loop.from, loop.to, loop.by}) {
                    if (expr == nullptr) continue;
                    Visit(expr);
                    Same(loop.counter->type, expr);
                }
                Visit(loop.body);
                break;
            }
            case StmtKind::While:
                Condition(static_cast<const WhileStmt*>(stmt)->condition);
                Visit(static_cast<const WhileStmt*>(stmt)->body);
                break;
            case StmtKind::Repeat:
                Visit(static_cast<const RepeatStmt*>(stmt)->body);
                Condition(static_cast<const RepeatStmt*>(stmt)->condition);
                break;
            case StmtKind::Block:
                for (const Stmt* inner : static_cast<const Block*>(stmt)->statements)
                    Visit(inner);
                break;
            case StmtKind::Exit:
            case StmtKind::Continue:
            case StmtKind::Return: break;
        }
    }

    void Visit(const Expr* expr) {
        if (expr->type->kind == TypeKind::Error) {
            failures_.emplace_back("error node");
            return;
        }
        switch (expr->kind) {
            case ExprKind::Constant: {
                const auto& constant = *static_cast<const ConstantExpr*>(expr);
                Require(constant.value->GetType() == expr->type->storage, expr, "constant of another type");
                Require(!constant.untyped, expr, "untyped constant");
                break;
            }
            case ExprKind::AggregateConstant:
                Require(static_cast<const AggregateConstantExpr*>(expr)->bytes.size() == expr->type->size, expr,
                        "size");
                break;
            case ExprKind::Load:
                Visit(static_cast<const LoadExpr*>(expr)->place);
                Require(static_cast<const LoadExpr*>(expr)->place->type->storage == expr->type->storage, expr, "load");
                break;
            case ExprKind::Address: Visit(static_cast<const AddressExpr*>(expr)->place); break;
            case ExprKind::Unary:
                Visit(static_cast<const UnaryExpr*>(expr)->operand);
                Same(expr->type, static_cast<const UnaryExpr*>(expr)->operand);
                break;
            case ExprKind::Binary: VisitBinary(*static_cast<const BinaryExpr*>(expr)); break;
            case ExprKind::Logical:
                Condition(static_cast<const LogicalExpr*>(expr)->left);
                Condition(static_cast<const LogicalExpr*>(expr)->right);
                break;
            case ExprKind::Convert: {
                const Expr* operand = static_cast<const ConvertExpr*>(expr)->operand;
                Visit(operand);
                Require(operand->type->storage != ElementaryType::Pointer, expr, "conversion of a pointer");
                Require(!IsAggregate(operand->type), expr, "conversion of an aggregate");
                break;
            }
            case ExprKind::Select: {
                const auto& select = *static_cast<const SelectExpr*>(expr);
                Condition(select.condition);
                Visit(select.whenTrue);
                Visit(select.whenFalse);
                Same(expr->type, select.whenTrue);
                Same(expr->type, select.whenFalse);
                break;
            }
            case ExprKind::CallFunction: {
                const auto& call = *static_cast<const CallFunctionExpr*>(expr);
                if (call.instance != nullptr) Visit(call.instance);
                for (const FunctionArgument& argument : call.arguments) {
                    if (argument.value != nullptr) {
                        Visit(argument.value);
                        Same(argument.parameter->type, argument.value);
                    }
                    if (argument.place != nullptr) Visit(argument.place);
                    VisitOutput(argument.output);
                }
                VisitEnable(call.enable, call.enableOutput);
                break;
            }
            case ExprKind::CallBuiltIn: {
                const auto& call = *static_cast<const CallBuiltInExpr*>(expr);
                for (const Expr* argument : call.arguments)
                    Visit(argument);
                VisitEnable(call.enable, call.enableOutput);
                break;
            }
            case ExprKind::AddPointer: {
                const auto& sum = *static_cast<const AddPointerExpr*>(expr);
                Visit(sum.pointer);
                Visit(sum.bytes);
                Require(sum.bytes->type->storage == ElementaryType::DInt, expr, "distance");
                break;
            }
            case ExprKind::Output:
            case ExprKind::Status: break;
        }
    }

    void Visit(const Place* place) {
        switch (place->kind) {
            case PlaceKind::Member: Visit(static_cast<const MemberPlace*>(place)->base); break;
            case PlaceKind::Element:
                Visit(static_cast<const ElementPlace*>(place)->base);
                for (const Expr* index : static_cast<const ElementPlace*>(place)->indices)
                    Visit(index);
                break;
            case PlaceKind::Deref:
                Visit(static_cast<const DerefPlace*>(place)->pointer);
                if (static_cast<const DerefPlace*>(place)->index != nullptr)
                    Visit(static_cast<const DerefPlace*>(place)->index);
                break;
            case PlaceKind::Char:
                Visit(static_cast<const CharPlace*>(place)->base);
                Visit(static_cast<const CharPlace*>(place)->index);
                break;
            case PlaceKind::Result: Visit(static_cast<const ResultPlace*>(place)->call); break;
            case PlaceKind::Variable:
            case PlaceKind::This:
            case PlaceKind::Kept: break;
        }
    }

    [[nodiscard]] const std::vector<std::string>& GetFailures() const noexcept { return failures_; }

 private:
    void Require(bool holds, const Expr* expr, const char* what) {
        if (!holds) failures_.push_back(std::string(what) + ": " + PrintExpr(names_, *expr));
    }
    void Same(const Type* type, const Expr* expr) {
        Require(type->storage == expr->type->storage, expr, "not of the type that is needed");
    }
    void Condition(const Expr* expr) {
        Visit(expr);
        Require(expr->type->storage == ElementaryType::Bool, expr, "condition");
    }
    void VisitEnable(const Expr* enable, const Place* enableOutput) {
        if (enable != nullptr) Condition(enable);
        if (enableOutput != nullptr) Visit(enableOutput);
    }
    void VisitOutput(const OutputBinding& output) {
        if (output.target == nullptr) return;
        Visit(output.target);
        Visit(output.value);
        Same(output.target->type, output.value);
    }
    void VisitBinary(const BinaryExpr& binary) {
        Visit(binary.left);
        Visit(binary.right);
        const ElementaryType left = binary.left->type->storage;
        const ElementaryType right = binary.right->type->storage;
        const bool isComparison = binary.op >= BinaryOperator::EQ && binary.op <= BinaryOperator::LE;
        // The sums and products in which a time or a date decides are done without promotion.
        const bool isMixedTime = right == ElementaryType::Time || left == ElementaryType::Time ||
                                 left == ElementaryType::Date || left == ElementaryType::TimeOfDay ||
                                 left == ElementaryType::DateAndTime;
        Require(left == right || (isMixedTime && !isComparison), &binary, "operands of different types");
        Require(!isComparison || binary.type->storage == ElementaryType::Bool, &binary, "comparison");
        Require(isComparison || isMixedTime || binary.type->storage == left, &binary, "result of an operator");
    }

    const NameTable& names_;
    std::vector<std::string> failures_;
};

/// What is wrong with the bodies of a project that was checked without errors, one a line.
[[nodiscard]] inline std::string BrokenInvariants(Project& project) {
    TreeInvariant invariant(project.names);
    for (const Pou& pou : project.pous) {
        if (pou.body != nullptr) invariant.Visit(pou.body);
    }
    std::string text;
    for (const std::string& failure : invariant.GetFailures())
        text += failure + "\n";
    return text;
}

}  // namespace tn61131::st::testing
