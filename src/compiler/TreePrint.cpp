#include "compiler/TreePrint.h"

#include "functions/FunctionTable.h"
#include "platform/TextOutput.h"

namespace tn61131::st {

namespace {

class Printer {
 public:
    explicit Printer(const NameTable& names) noexcept : names_(names) {}

    [[nodiscard]] std::string TakeText() { return std::move(text_); }

    void Print(const Expr* expr);
    void Print(const Place* place);
    void Print(const Stmt* stmt);

 private:
    void Add(std::string_view text) { text_ += text; }
    void Add(NameId name) { text_ += names_.GetFolded(name); }
    void AddType(const Type* type) { text_ += GetTypeText(names_, type); }
    /// A blank and the expression; `-` for none.
    void Argument(const Expr* expr);
    void Body(const Block* block);
    void Enable(const Expr* enable, const Place* enableOutput);
    void Output(const OutputBinding& output);

    void PrintConvert(const ConvertExpr& convert);
    void PrintCall(const CallFunctionExpr& call);
    void PrintCall(const CallBuiltInExpr& call);
    void PrintBlockCall(const CallBlockStmt& call);
    void PrintCase(const CaseStmt& stmt);

    const NameTable& names_;
    std::string text_;
};

void Printer::Argument(const Expr* expr) {
    Add(" ");
    if (expr == nullptr) {
        Add("-");
    } else {
        Print(expr);
    }
}

void Printer::Enable(const Expr* enable, const Place* enableOutput) {
    if (enable != nullptr) {
        Add(" EN:=");
        Print(enable);
    }
    if (enableOutput != nullptr) {
        Add(" ENO=>");
        Print(enableOutput);
    }
}

void Printer::Output(const OutputBinding& output) {
    if (output.target == nullptr) return;
    Add(output.negated ? " NOT " : " ");
    Add(output.output->name);
    Add("=>");
    Print(output.target);
    if (output.value->kind != ExprKind::Output) {
        Add("<-");
        Print(output.value);
    }
}

void Printer::PrintConvert(const ConvertExpr& convert) {
    Add("(");
    AddType(convert.type);
    if (!convert.isImplicit) Add("!");
    if (convert.truncate) Add("trunc");
    if (convert.zeroOnFailure) Add("zero");
    Argument(convert.operand);
    Add(")");
}

void Printer::PrintCall(const CallFunctionExpr& call) {
    Add("(call ");
    if (call.instance != nullptr) {
        Print(call.instance);
        Add(".");
    }
    Add(call.callee->name);
    for (const FunctionArgument& argument : call.arguments) {
        if (argument.value != nullptr) Argument(argument.value);
        if (argument.place != nullptr) {
            Add(" &");
            Print(argument.place);
        }
        Output(argument.output);
    }
    Enable(call.enable, call.enableOutput);
    Add(")");
}

void Printer::PrintCall(const CallBuiltInExpr& call) {
    Add("(");
    for (const FunctionGroup& group : GetFunctionGroups()) {
        if (group.number == call.group) Add(FindFunctionName(group.rows, call.id));
    }
    Add(":");
    AddType(call.type);
    for (const Expr* argument : call.arguments)
        Argument(argument);
    Enable(call.enable, call.enableOutput);
    Add(")");
}

void Printer::Print(const Expr* expr) {
    switch (expr->kind) {
        case ExprKind::Constant: {
            if (expr->type->kind == TypeKind::Error) {
                Add("(error)");
                break;
            }
            CTextOutputString output;
            static_cast<const ConstantExpr*>(expr)->value->GetDeclaration(output);
            Add(output.GetText());
            break;
        }
        case ExprKind::AggregateConstant: {
            constexpr std::string_view kDigits = "0123456789ABCDEF";
            Add("(bytes ");
            for (const unsigned char byte : static_cast<const AggregateConstantExpr*>(expr)->bytes) {
                text_ += kDigits[byte >> 4U];
                text_ += kDigits[byte & 15U];
            }
            Add(")");
            break;
        }
        case ExprKind::Load: Print(static_cast<const LoadExpr*>(expr)->place); break;
        case ExprKind::Address:
            Add("(adr ");
            Print(static_cast<const AddressExpr*>(expr)->place);
            Add(")");
            break;
        case ExprKind::Unary: {
            const auto& unary = *static_cast<const UnaryExpr*>(expr);
            Add("(");
            Add(kUnaryOperatorNames[static_cast<std::size_t>(unary.op)]);
            Add(":");
            AddType(expr->type);
            Argument(unary.operand);
            Add(")");
            break;
        }
        case ExprKind::Binary: {
            const auto& binary = *static_cast<const BinaryExpr*>(expr);
            Add("(");
            Add(kBinaryOperatorNames[static_cast<std::size_t>(binary.op)]);
            Add(":");
            AddType(expr->type);
            Argument(binary.left);
            Argument(binary.right);
            Add(")");
            break;
        }
        case ExprKind::Logical: {
            const auto& logical = *static_cast<const LogicalExpr*>(expr);
            Add(logical.isAnd ? "(AND_THEN" : "(OR_ELSE");
            Argument(logical.left);
            Argument(logical.right);
            Add(")");
            break;
        }
        case ExprKind::Convert: PrintConvert(*static_cast<const ConvertExpr*>(expr)); break;
        case ExprKind::Select: {
            const auto& select = *static_cast<const SelectExpr*>(expr);
            Add("(select");
            Argument(select.condition);
            Argument(select.whenTrue);
            Argument(select.whenFalse);
            Add(")");
            break;
        }
        case ExprKind::CallFunction: PrintCall(*static_cast<const CallFunctionExpr*>(expr)); break;
        case ExprKind::CallBuiltIn: PrintCall(*static_cast<const CallBuiltInExpr*>(expr)); break;
        case ExprKind::AddPointer: {
            const auto& sum = *static_cast<const AddPointerExpr*>(expr);
            Add("(addptr");
            Argument(sum.pointer);
            Argument(sum.bytes);
            Add(")");
            break;
        }
        case ExprKind::Output:
            Add("out:");
            Add(static_cast<const OutputExpr*>(expr)->output->name);
            break;
        case ExprKind::Status: Add("(status)"); break;
    }
}

void Printer::Print(const Place* place) {
    switch (place->kind) {
        case PlaceKind::Variable: Add(static_cast<const VariablePlace*>(place)->variable->name); break;
        case PlaceKind::Member: {
            const auto& member = *static_cast<const MemberPlace*>(place);
            Print(member.base);
            Add(".");
            Add(member.member);
            break;
        }
        case PlaceKind::Element: {
            const auto& element = *static_cast<const ElementPlace*>(place);
            Print(element.base);
            Add(element.checked ? "[?" : "[");
            for (std::size_t i = 0; i < element.indices.size(); ++i) {
                if (i != 0) Add(", ");
                Print(element.indices[i]);
            }
            Add("]");
            break;
        }
        case PlaceKind::Deref: {
            const auto& deref = *static_cast<const DerefPlace*>(place);
            Print(deref.pointer);
            Add("^");
            if (deref.index != nullptr) {
                Add("[");
                Print(deref.index);
                Add("]");
            }
            break;
        }
        case PlaceKind::Char: {
            const auto& unit = *static_cast<const CharPlace*>(place);
            Print(unit.base);
            Add("{");
            Print(unit.index);
            Add("}");
            break;
        }
        case PlaceKind::Kept: Add("(kept)"); break;
        case PlaceKind::Result:
            Add("(result ");
            Print(static_cast<const ResultPlace*>(place)->call);
            Add(")");
            break;
        case PlaceKind::This: Add("THIS^"); break;
    }
}

void Printer::Body(const Block* block) {
    Add(" (");
    bool isFirst = true;
    for (const Stmt* stmt : block->statements) {
        if (!isFirst) Add(" ");
        isFirst = false;
        Print(stmt);
    }
    Add(")");
}

void Printer::PrintBlockCall(const CallBlockStmt& call) {
    Add("(callblock ");
    if (call.instance != nullptr) {
        Print(call.instance);
        if (call.action != nullptr) Add(".");
    }
    if (call.action != nullptr) Add(call.action->name);
    for (const BlockInput& input : call.inputs) {
        Add(" ");
        Add(input.input->name);
        Add(":=");
        Print(input.value);
    }
    for (const BlockInOut& inOut : call.inOuts) {
        Add(" ");
        Add(inOut.inOut->name);
        Add(":=&");
        Print(inOut.place);
    }
    for (const OutputBinding& output : call.outputs)
        Output(output);
    Enable(call.enable, call.enableOutput);
    Add(")");
}

void Printer::PrintCase(const CaseStmt& stmt) {
    Add("(case ");
    Print(stmt.selector);
    for (const CaseArm& arm : stmt.arms) {
        Add(" (");
        for (std::size_t i = 0; i < arm.ranges.size(); ++i) {
            if (i != 0) Add(",");
            Add(std::to_string(arm.ranges[i].lower));
            if (arm.ranges[i].upper != arm.ranges[i].lower) Add(".." + std::to_string(arm.ranges[i].upper));
        }
        Add(":");
        Body(arm.body);
        Add(")");
    }
    if (stmt.otherwise != nullptr) {
        Add(" else");
        Body(stmt.otherwise);
    }
    Add(")");
}

void Printer::Print(const Stmt* stmt) {
    switch (stmt->kind) {
        case StmtKind::Assign: {
            const auto& assign = *static_cast<const AssignStmt*>(stmt);
            Add(assign.isRanged ? "(:=ranged " : "(:= ");
            Print(assign.target);
            Argument(assign.value);
            Add(")");
            break;
        }
        case StmtKind::AssignAggregate: {
            const auto& assign = *static_cast<const AssignAggregateStmt*>(stmt);
            Add("(copy ");
            Print(assign.target);
            Argument(assign.source);
            Add(")");
            break;
        }
        case StmtKind::StoreBits: {
            const auto& store = *static_cast<const StoreBitsStmt*>(stmt);
            Add("(bits ");
            Print(store.target);
            Add(" " + std::to_string(store.firstBit) + " " + std::to_string(store.width));
            Argument(store.value);
            Add(")");
            break;
        }
        case StmtKind::Evaluate: Print(static_cast<const EvaluateStmt*>(stmt)->value); break;
        case StmtKind::Keep: {
            const auto& keep = *static_cast<const KeepStmt*>(stmt);
            Add("(keep ");
            Print(keep.place);
            Body(keep.body);
            Add(")");
            break;
        }
        case StmtKind::CallBlock: PrintBlockCall(*static_cast<const CallBlockStmt*>(stmt)); break;
        case StmtKind::If: {
            const auto& choice = *static_cast<const IfStmt*>(stmt);
            Add("(if");
            Argument(choice.condition);
            Body(choice.then);
            if (choice.otherwise != nullptr) Body(choice.otherwise);
            Add(")");
            break;
        }
        case StmtKind::Case: PrintCase(*static_cast<const CaseStmt*>(stmt)); break;
        case StmtKind::For: {
            const auto& loop = *static_cast<const ForStmt*>(stmt);
            Add("(for ");
            Print(loop.counter);
            Argument(loop.from);
            Argument(loop.to);
            if (loop.by != nullptr) Argument(loop.by);
            Body(loop.body);
            Add(")");
            break;
        }
        case StmtKind::While: {
            const auto& loop = *static_cast<const WhileStmt*>(stmt);
            Add("(while");
            Argument(loop.condition);
            Body(loop.body);
            Add(")");
            break;
        }
        case StmtKind::Repeat: {
            const auto& loop = *static_cast<const RepeatStmt*>(stmt);
            Add("(repeat");
            Body(loop.body);
            Argument(loop.condition);
            Add(")");
            break;
        }
        case StmtKind::Exit: Add("(exit)"); break;
        case StmtKind::Continue: Add("(continue)"); break;
        case StmtKind::Return: Add("(return)"); break;
        case StmtKind::Block:
            Add("(block");
            Body(static_cast<const Block*>(stmt));
            Add(")");
            break;
    }
}

}  // namespace

std::string PrintExpr(const NameTable& names, const Expr& expr) {
    Printer printer(names);
    printer.Print(&expr);
    return printer.TakeText();
}

std::string PrintPlace(const NameTable& names, const Place& place) {
    Printer printer(names);
    printer.Print(&place);
    return printer.TakeText();
}

std::string PrintStmt(const NameTable& names, const Stmt& stmt) {
    Printer printer(names);
    printer.Print(&stmt);
    return printer.TakeText();
}

}  // namespace tn61131::st
