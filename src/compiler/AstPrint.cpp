#include "compiler/AstPrint.h"

#include <array>
#include <string_view>

namespace tn61131::st {

namespace {

using namespace ast;

constexpr std::string_view kUnaryNames[] = {"+", "-", "NOT"};
constexpr std::string_view kBinaryNames[] = {"OR", "OR_ELSE", "XOR", "AND", "AND_THEN", "=", "<>",  "<", ">",
                                             "<=", ">=",      "+",   "-",   "*",        "/", "MOD", "**"};
constexpr std::string_view kModeNames[] = {":=", "REF=", "S=", "R=", "?="};
constexpr std::string_view kSectionNames[] = {"VAR_INPUT",  "VAR_OUTPUT", "VAR_IN_OUT", "VAR",
                                              "VAR_TEMP",   "VAR_STAT",   "VAR_GLOBAL", "VAR_EXTERNAL",
                                              "VAR_ACCESS", "VAR_CONFIG", "VAR_INST"};
constexpr std::string_view kPouNames[] = {"PROGRAM",  "FUNCTION", "FUNCTION_BLOCK", "METHOD",
                                          "PROPERTY", "ACTION",   "INTERFACE"};
constexpr std::string_view kAccessNames[] = {"", "PUBLIC", "PROTECTED", "PRIVATE", "INTERNAL"};

template <typename Node, typename Base>
const Node& As(const Base* base) {
    return static_cast<const Node&>(*base);
}

/// Writes words and lists with blanks between them.
class Printer {
 public:
    explicit Printer(const NameTable& names) : names_(names) {}

    [[nodiscard]] std::string Take() { return std::move(text_); }

    void Word(std::string_view word) {
        if (!text_.empty() && text_.back() != '(') text_ += ' ';
        text_ += word;
    }
    void Open(std::string_view word) {
        Word("(");
        text_ += word;
    }
    void Close() { text_ += ')'; }
    void Name(const Identifier& name) { Word(name.name == NameId::None ? "?" : names_.GetSpelling(name.name)); }
    void Flag(bool set, std::string_view word) {
        if (set) Word(word);
    }
    void Names(std::string_view word, std::span<const Identifier> names) {
        if (names.empty()) return;
        Open(word);
        for (const Identifier& name : names)
            Name(name);
        Close();
    }
    void Path(std::span<const Identifier> path) {
        std::string whole;
        for (const Identifier& part : path)
            whole.append(whole.empty() ? "" : ".").append(names_.GetSpelling(part.name));
        Word(whole);
    }

    void Expression(const Expr* expression);
    void Arguments(std::span<const Argument> arguments);
    void Elements(std::span<const StructInitElement> elements);
    void Type(const TypeSpec* type);
    void Variable(const VarDecl& variable);
    void Block(const VarBlock& block);
    void Statement(const Stmt* statement);
    void Body(std::span<Stmt* const> body) {
        for (const Stmt* statement : body)
            Statement(statement);
    }
    void Labels(std::span<const CaseLabel> labels);
    void Unit(const SourceUnit& unit);
    void Declaration(const TypeDecl& type);
    void Organisation(const Pou& pou);
    void Chart(const Sfc& chart);
    void Settings(const Configuration& configuration);
    void Part(const Resource& resource);
    void Attributes(std::span<const std::string_view> attributes) {
        for (const std::string_view attribute : attributes)
            Word("{" + std::string(attribute) + "}");
    }

 private:
    const NameTable& names_;
    std::string text_;
};

void Printer::Arguments(std::span<const Argument> arguments) {
    for (const Argument& argument : arguments) {
        const bool isNamed = argument.name.name != NameId::None;
        if (isNamed) {
            Open(argument.negated ? "NOT=>" : argument.isOutput ? "=>" : ":=");
            Name(argument.name);
        }
        if (argument.value != nullptr) Expression(argument.value);
        if (isNamed) Close();
    }
}

void Printer::Elements(std::span<const StructInitElement> elements) {
    for (const StructInitElement& element : elements) {
        Open(":=");
        Name(element.member);
        Expression(element.value);
        Close();
    }
}

void Printer::Expression(const Expr* expression) {
    if (expression == nullptr) return Word("-");
    switch (expression->kind) {
        case ExprKind::Error: return Word("<error>");
        case ExprKind::Literal: return Word(As<LiteralExpr>(expression).text);
        case ExprKind::Name: return Word(names_.GetSpelling(As<NameExpr>(expression).name));
        case ExprKind::This: return Word("THIS");
        case ExprKind::Super: return Word("SUPER");
        case ExprKind::Located: {
            const auto& located = As<LocatedExpr>(expression);
            const std::string_view quote = located.quoted ? "\"" : "";
            return Word("%" + std::string(quote) + std::string(located.address) + std::string(quote));
        }
        case ExprKind::Member: {
            const auto& member = As<MemberExpr>(expression);
            Open(".");
            Expression(member.base);
            Name(member.member);
            break;
        }
        case ExprKind::Partial: {
            const auto& partial = As<PartialExpr>(expression);
            Open(".%");
            text_ += partial.width;
            Expression(partial.base);
            Word(std::to_string(partial.index));
            break;
        }
        case ExprKind::Index: {
            const auto& index = As<IndexExpr>(expression);
            Open("[]");
            Expression(index.base);
            for (const Expr* each : index.indices)
                Expression(each);
            break;
        }
        case ExprKind::Deref:
            Open("^");
            Expression(As<DerefExpr>(expression).base);
            break;
        case ExprKind::Call: {
            const auto& call = As<CallExpr>(expression);
            Open("call");
            Expression(call.callee);
            Arguments(call.arguments);
            break;
        }
        case ExprKind::Unary: {
            const auto& unary = As<UnaryExpr>(expression);
            Open(kUnaryNames[static_cast<std::size_t>(unary.op)]);
            Expression(unary.operand);
            break;
        }
        case ExprKind::Binary: {
            const auto& binary = As<BinaryExpr>(expression);
            Open(kBinaryNames[static_cast<std::size_t>(binary.op)]);
            Expression(binary.left);
            Expression(binary.right);
            break;
        }
        case ExprKind::TypePrefix: {
            const auto& prefix = As<TypePrefixExpr>(expression);
            Open("#");
            Name(prefix.type);
            Expression(prefix.operand);
            break;
        }
        case ExprKind::ArrayInit: {
            const auto& array = As<ArrayInitExpr>(expression);
            Open(array.bracketed ? "array" : "open-array");
            for (const ArrayInitElement& element : array.elements) {
                if (element.repeat == nullptr) {
                    Expression(element.value);
                    continue;
                }
                Open("times");
                Expression(element.repeat);
                if (element.value != nullptr) Expression(element.value);
                Close();
            }
            break;
        }
        case ExprKind::StructInit:
            Open("struct");
            Elements(As<StructInitExpr>(expression).elements);
            break;
    }
    Close();
}

void Printer::Type(const TypeSpec* type) {
    if (type == nullptr) return Word("-");
    switch (type->kind) {
        case TypeSpecKind::Error: return Word("<error>");
        case TypeSpecKind::Named: return Path(As<NamedTypeSpec>(type).path);
        case TypeSpecKind::String: {
            const auto& string = As<StringTypeSpec>(type);
            const std::string_view name = string.wide ? "WSTRING" : "STRING";
            if (string.length == nullptr) return Word(name);
            Open(name);
            Expression(string.length);
            break;
        }
        case TypeSpecKind::Subrange: {
            const auto& range = As<SubrangeTypeSpec>(type);
            Open("range");
            Type(range.base);
            Expression(range.lower);
            Expression(range.upper);
            break;
        }
        case TypeSpecKind::Array: {
            const auto& array = As<ArrayTypeSpec>(type);
            Open("ARRAY");
            for (const ArrayDimension& dimension : array.dimensions) {
                if (dimension.lower == nullptr) {
                    Word("*");
                    continue;
                }
                Open("..");
                Expression(dimension.lower);
                Expression(dimension.upper);
                Close();
            }
            Type(array.element);
            break;
        }
        case TypeSpecKind::Pointer:
        case TypeSpecKind::Reference: {
            const auto& pointer = As<PointerTypeSpec>(type);
            const bool isReference = type->kind == TypeSpecKind::Reference;
            Open(isReference ? "REFERENCE" : pointer.isRefTo ? "REF_TO" : "POINTER");
            Type(pointer.target);
            break;
        }
        case TypeSpecKind::Struct: {
            const auto& structure = As<StructTypeSpec>(type);
            Open(structure.isUnion ? "UNION" : "STRUCT");
            Flag(structure.overlap, "OVERLAP");
            if (structure.base.name != NameId::None) Names("extends", {&structure.base, 1});
            for (const VarDecl* field : structure.fields)
                Variable(*field);
            break;
        }
        case TypeSpecKind::Enum: {
            const auto& enumeration = As<EnumTypeSpec>(type);
            Open("enum");
            if (enumeration.base != nullptr) Type(enumeration.base);
            for (const EnumValue& value : enumeration.values) {
                Open("");
                Name(value.name);
                if (value.value != nullptr) Expression(value.value);
                Close();
            }
            break;
        }
        case TypeSpecKind::Edge: return Word(As<EdgeTypeSpec>(type).rising ? "R_EDGE" : "F_EDGE");
    }
    Close();
}

void Printer::Variable(const VarDecl& variable) {
    Open("");
    if (variable.name.name != NameId::None) Name(variable.name);
    Attributes(variable.attributes);
    if (variable.location != nullptr || variable.alias != nullptr) {
        Open("at");
        if (variable.alias != nullptr) Expression(variable.alias);
        if (variable.location != nullptr) Expression(variable.location);
        Close();
    }
    Type(variable.type);
    Flag(variable.readWrite, "READ_WRITE");
    if (!variable.blockInit.empty()) {
        Open("init");
        Arguments(variable.blockInit);
        Close();
    }
    if (variable.initial != nullptr) Expression(variable.initial);
    Close();
}

void Printer::Block(const VarBlock& block) {
    Open(kSectionNames[static_cast<std::size_t>(block.section)]);
    Flag(block.access != Access::Unstated, kAccessNames[static_cast<std::size_t>(block.access)]);
    Flag(block.constant, "CONSTANT");
    Flag(block.retain, "RETAIN");
    Flag(block.nonRetain, "NON_RETAIN");
    Flag(block.persistent, "PERSISTENT");
    for (const VarDecl* variable : block.variables)
        Variable(*variable);
    Close();
}

void Printer::Labels(std::span<const CaseLabel> labels) {
    Open("");
    for (const CaseLabel& label : labels) {
        if (label.upper == nullptr) {
            Expression(label.lower);
            continue;
        }
        Open("..");
        Expression(label.lower);
        Expression(label.upper);
        Close();
    }
    Close();
}

void Printer::Statement(const Stmt* statement) {
    switch (statement->kind) {
        case StmtKind::Error: return Word("<error>");
        case StmtKind::Empty: return Word("<empty>");
        case StmtKind::Block: return Word("<block>");
        case StmtKind::Exit: return Word("EXIT");
        case StmtKind::Continue: return Word("CONTINUE");
        case StmtKind::Return: return Word("RETURN");
        case StmtKind::Assign: {
            const auto& assign = As<AssignStmt>(statement);
            Open(kModeNames[static_cast<std::size_t>(assign.mode)]);
            Expression(assign.target);
            if (assign.chained != nullptr) {
                Statement(assign.chained);
            } else {
                Expression(assign.value);
            }
            break;
        }
        case StmtKind::Call: return Expression(As<CallStmt>(statement).call);
        case StmtKind::If: {
            const auto& conditional = As<IfStmt>(statement);
            Open("IF");
            for (const IfBranch& branch : conditional.branches) {
                Open("");
                Expression(branch.condition);
                Body(branch.body);
                Close();
            }
            if (conditional.hasElse) {
                Open("ELSE");
                Body(conditional.otherwise);
                Close();
            }
            break;
        }
        case StmtKind::Case: {
            const auto& choice = As<CaseStmt>(statement);
            Open("CASE");
            Expression(choice.selector);
            for (const CaseBranch& branch : choice.branches) {
                Open("");
                Labels(branch.labels);
                Body(branch.body);
                Close();
            }
            if (choice.hasElse) {
                Open("ELSE");
                Body(choice.otherwise);
                Close();
            }
            break;
        }
        case StmtKind::For: {
            const auto& loop = As<ForStmt>(statement);
            Open("FOR");
            Expression(loop.counter);
            Expression(loop.from);
            Expression(loop.to);
            if (loop.by != nullptr) {
                Open("BY");
                Expression(loop.by);
                Close();
            }
            Body(loop.body);
            break;
        }
        case StmtKind::While: {
            const auto& loop = As<WhileStmt>(statement);
            Open("WHILE");
            Expression(loop.condition);
            Body(loop.body);
            break;
        }
        case StmtKind::Repeat: {
            const auto& loop = As<RepeatStmt>(statement);
            Open("REPEAT");
            Body(loop.body);
            Open("UNTIL");
            Expression(loop.condition);
            Close();
            break;
        }
    }
    Close();
}

void Printer::Chart(const Sfc& chart) {
    for (const SfcStep* step : chart.steps) {
        Open(step->initial ? "INITIAL_STEP" : "STEP");
        Name(step->name);
        for (const SfcActionUse& use : step->actions) {
            Open("");
            Name(use.action);
            if (use.qualifier.name != NameId::None) Name(use.qualifier);
            if (use.time != nullptr) Expression(use.time);
            for (const Expr* indicator : use.indicators)
                Expression(indicator);
            Close();
        }
        Close();
    }
    for (const SfcTransition* transition : chart.transitions) {
        Open("TRANSITION");
        if (transition->name.name != NameId::None) Name(transition->name);
        if (transition->priority != nullptr) Expression(transition->priority);
        Names("from", transition->from);
        Names("to", transition->to);
        Expression(transition->condition);
        Close();
    }
    for (const SfcAction* action : chart.actions) {
        Open("ACTION");
        Name(action->name);
        Body(action->body);
        Close();
    }
}

void Printer::Organisation(const Pou& pou) {
    Open(pou.isClass ? "CLASS" : kPouNames[static_cast<std::size_t>(pou.kind)]);
    Flag(pou.access != Access::Unstated, kAccessNames[static_cast<std::size_t>(pou.access)]);
    Flag(pou.isAbstract, "ABSTRACT");
    Flag(pou.isFinal, "FINAL");
    Flag(pou.isOverride, "OVERRIDE");
    Name(pou.name);
    Attributes(pou.attributes);
    if (pou.result != nullptr) Type(pou.result);
    Names("extends", pou.extends);
    Names("implements", pou.implements);
    for (const std::span<Identifier> path : pou.usings)
        Names("using", path);
    for (const VarBlock* block : pou.variables)
        Block(*block);
    for (const Pou* member : pou.members)
        Organisation(*member);
    for (const auto& [word, accessor] : {std::pair{"get", pou.getter}, std::pair{"set", pou.setter}}) {
        if (accessor == nullptr) continue;
        Open(word);
        for (const VarBlock* block : accessor->variables)
            Block(*block);
        Body(accessor->body);
        Close();
    }
    if (pou.sfc != nullptr) Chart(*pou.sfc);
    Body(pou.body);
    Close();
}

void Printer::Part(const Resource& resource) {
    Open("RESOURCE");
    if (resource.name.name != NameId::None) Name(resource.name);
    if (resource.on.name != NameId::None) Names("on", {&resource.on, 1});
    for (const VarBlock* block : resource.globals)
        Block(*block);
    for (const TaskDecl* task : resource.tasks) {
        Open("TASK");
        Name(task->name);
        Elements(task->properties);
        Close();
    }
    for (const ProgramInstance* program : resource.programs) {
        Open("PROGRAM");
        Flag(program->retain, "RETAIN");
        Name(program->name);
        if (program->task.name != NameId::None) Names("with", {&program->task, 1});
        Name(program->type);
        Arguments(program->arguments);
        for (const BlockTask& each : program->blockTasks) {
            Open("with");
            Name(each.block);
            Name(each.task);
            Close();
        }
        Close();
    }
    Close();
}

void Printer::Settings(const Configuration& configuration) {
    Open("CONFIGURATION");
    Name(configuration.name);
    for (const VarBlock* block : configuration.variables)
        Block(*block);
    for (const Resource* resource : configuration.resources)
        Part(*resource);
    Close();
}

void Printer::Declaration(const TypeDecl& type) {
    Open("TYPE");
    Name(type.name);
    Attributes(type.attributes);
    Type(type.type);
    if (type.initial != nullptr) Expression(type.initial);
    Close();
}

void Printer::Unit(const SourceUnit& unit) {
    for (const std::span<Identifier> path : unit.usings)
        Names("using", path);
    for (const TypeDecl* type : unit.types)
        Declaration(*type);
    for (const VarBlock* block : unit.globals)
        Block(*block);
    for (const Pou* pou : unit.pous)
        Organisation(*pou);
    for (const Configuration* configuration : unit.configurations)
        Settings(*configuration);
    for (const Namespace* each : unit.namespaces) {
        Open("NAMESPACE");
        Flag(each->isInternal, "INTERNAL");
        Path(each->path);
        Unit(each->content);
        Close();
    }
}

}  // namespace

std::string PrintExpression(const NameTable& names, const Expr* expression) {
    Printer printer(names);
    printer.Expression(expression);
    return printer.Take();
}

std::string PrintType(const NameTable& names, const TypeSpec* type) {
    Printer printer(names);
    printer.Type(type);
    return printer.Take();
}

std::string PrintStatements(const NameTable& names, std::span<Stmt* const> statements) {
    Printer printer(names);
    printer.Body(statements);
    return printer.Take();
}

std::string PrintUnit(const NameTable& names, const SourceUnit& unit) {
    Printer printer(names);
    printer.Unit(unit);
    return printer.Take();
}

}  // namespace tn61131::st
