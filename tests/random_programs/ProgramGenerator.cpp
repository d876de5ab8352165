#include "random_programs/ProgramGenerator.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace random_programs {

std::uint64_t Choices::Bits() {
    if (isFromBytes_) {
        std::uint64_t value = 0;
        for (int i = 0; i < 8; ++i)
            value = value << 8 | Below(256);
        return value;
    }
    // SplitMix64
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t value = state_;
    value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9U;
    value = (value ^ value >> 27) * 0x94D049BB133111EBU;
    return value ^ value >> 31;
}

std::uint32_t Choices::Below(std::uint32_t count) {
    if (!isFromBytes_) return static_cast<std::uint32_t>(Bits() % count);
    if (bytes_.empty()) return 0;
    const std::uint32_t value = bytes_.front();
    bytes_ = bytes_.subspan(1);
    return value % count;
}

namespace {

enum class Want : std::uint8_t { Read, Write, Reference };

class Generator {
 public:
    Generator(Choices& choices, const ProgramOptions& options, Program& program)
        : choices_(choices), options_(options), program_(program) {}

    void Generate() {
        for (unsigned i = 0; i < kNumberTypes; ++i) {
            Shape& shape = program_.shapes.emplace_back();
            shape.type = static_cast<NumberType>(i);
            scalars_.push_back(&shape);
        }
        const unsigned structures = choices_.Below(3);
        for (unsigned i = 0; i < structures; ++i)
            MakeStructure();
        const unsigned globals = choices_.Below(6);
        for (unsigned i = 0; i < globals; ++i) {
            Variable variable = MakeVariable("g" + std::to_string(i), Section::Global, RandomShape(2));
            variable.firstCell = program_.globalCells;
            program_.globalCells += variable.shape->cells;
            program_.globals.push_back(std::move(variable));
        }
        const unsigned routines = choices_.Below(5);
        for (unsigned i = 0; i < routines; ++i) {
            if (choices_.OneIn(3)) {
                MakeBlock("Block" + std::to_string(i));
            } else {
                MakeFunction("Function" + std::to_string(i));
            }
        }
        MakeProgram();
    }

 private:
    // --- types and variables ---

    NumberType RandomType() { return static_cast<NumberType>(choices_.Below(kNumberTypes)); }
    NumberType RandomWhole() { return static_cast<NumberType>(1 + choices_.Below(12)); }
    NumberType RandomInteger() { return static_cast<NumberType>(1 + choices_.Below(8)); }

    const Shape* RandomScalar() { return scalars_[static_cast<std::size_t>(RandomType())]; }

    const Shape* RandomShape(unsigned depth) {
        const std::uint32_t choice = depth == 0 ? 0 : choices_.Below(8);
        if (choice < 5) return RandomScalar();
        if (choice == 5 && !program_.structures.empty())
            return program_.structures[choices_.Below(static_cast<std::uint32_t>(program_.structures.size()))];
        const Shape* element = RandomShape(depth - 1);
        Shape& shape = program_.shapes.emplace_back();
        shape.kind = Shape::Kind::Array;
        shape.element = element;
        shape.cells = element->cells;
        const unsigned dimensions = choices_.OneIn(4) ? 2 : 1;
        for (unsigned i = 0; i < dimensions; ++i) {
            const int lower = choices_.OneIn(2) ? 0 : static_cast<int>(choices_.Below(7)) - 3;
            shape.dimensions.push_back({lower, static_cast<int>(1 + choices_.Below(4))});
            shape.cells *= static_cast<std::size_t>(shape.dimensions.back().count);
        }
        return &shape;
    }

    void MakeStructure() {
        Shape structure;
        structure.kind = Shape::Kind::Structure;
        structure.name = "Record" + std::to_string(program_.structures.size());
        structure.cells = 0;
        const unsigned members = 1 + choices_.Below(4);
        for (unsigned i = 0; i < members; ++i) {
            const Shape* shape = RandomShape(1);
            structure.members.push_back({"m" + std::to_string(i), shape, structure.cells});
            structure.cells += shape->cells;
        }
        program_.structures.push_back(&program_.shapes.emplace_back(std::move(structure)));
    }

    Number RandomNumber(NumberType type) {
        if (type == NumberType::Bool) return Number::Whole(type, choices_.Below(2));
        if (IsReal(type)) {
            constexpr double kValues[] = {0.0, 1.0, -1.0, 0.5, 2.5, -3.5, 0.1, 1000000.0, 3.0e9, -7.25e4};
            if (choices_.OneIn(2)) return Number::Floating(type, kValues[choices_.Below(10)]);
            const auto mantissa = static_cast<double>(static_cast<std::int32_t>(choices_.Bits()));
            return Number::Floating(type, std::ldexp(mantissa, static_cast<int>(choices_.Below(40)) - 31));
        }
        const unsigned bits = GetBits(type);
        switch (choices_.Below(5)) {
            case 0: return Number::Whole(type, choices_.Below(8));
            case 1: return Number::Whole(type, (std::uint64_t{1} << (bits - 1)) - choices_.Below(3));
            case 2: return Number::Whole(type, 0 - std::uint64_t{choices_.Below(4)});
            case 3: return Number::Whole(type, std::uint64_t{1} << choices_.Below(bits));
            default: return Number::Whole(type, choices_.Bits());
        }
    }

    void AppendInitial(const Shape& shape, std::vector<Number>& values) {
        if (shape.kind == Shape::Kind::Scalar) return values.push_back(RandomNumber(shape.type));
        if (shape.kind == Shape::Kind::Array) {
            for (std::size_t i = 0; i < shape.cells; i += shape.element->cells)
                AppendInitial(*shape.element, values);
            return;
        }
        for (const Shape::Member& member : shape.members)
            AppendInitial(*member.shape, values);
    }

    Variable MakeVariable(std::string name, Section section, const Shape* shape) {
        Variable variable{std::move(name), section, shape, {}, 0, false};
        if (section != Section::InOut && shape->kind != Shape::Kind::Block) AppendInitial(*shape, variable.initial);
        return variable;
    }

    void Add(Section section, const Shape* shape, const char* stem) {
        routine_->variables.push_back(MakeVariable(stem + std::to_string(routine_->variables.size()), section, shape));
    }

    void AddSome(Section section, unsigned least, unsigned most, unsigned depth, const char* stem) {
        const unsigned count = least + choices_.Below(most - least + 1);
        for (unsigned i = 0; i < count; ++i)
            Add(section, depth == 0 ? RandomScalar() : RandomShape(depth), stem);
    }

    std::size_t AddCounter(NumberType type) {
        Add(routine_->kind == RoutineKind::Function || choices_.OneIn(2) ? Section::Local : Section::Temporary,
            scalars_[static_cast<std::size_t>(type)], "n");
        Variable& counter = routine_->variables.back();
        counter.isLocked = true;
        return routine_->variables.size() - 1;
    }

    // --- units ---

    void Begin(RoutineKind kind, std::string name) {
        routine_ = &program_.routines.emplace_back();
        routine_->kind = kind;
        routine_->name = std::move(name);
    }

    void MakeFunction(const std::string& name) {
        Begin(RoutineKind::Function, name);
        AddSome(Section::Input, 0, 4, choices_.OneIn(3) ? 2 : 0, "i");
        AddSome(Section::InOut, 0, 2, choices_.OneIn(3) ? 2 : 0, "x");
        if (choices_.OneIn(3)) AddSome(Section::Output, 1, 2, 0, "o");
        AddSome(Section::Local, 0, 3, 1, "v");
        routine_->variables.push_back(MakeVariable(name, Section::Result, RandomScalar()));
        // The result starts as the default of its type.
        routine_->variables.back().initial = {Number{routine_->variables.back().shape->type, 0, 0}};
        const std::size_t result = routine_->variables.size() - 1;
        routine_->body = MakeBody(options_.statements / 2);
        Statement& last = New(StatementKind::Assign);
        last.target = {false, result, {}, routine_->variables[result].shape};
        last.value = MakeTyped(last.target.shape->type, options_.depth);
        routine_->body.push_back(&last);
        functions_.push_back(routine_);
    }

    void LayOut() {
        routine_->instanceCells = 0;
        for (Variable& variable : routine_->variables) {
            if (variable.section == Section::Temporary || variable.section == Section::InOut) continue;
            variable.firstCell = routine_->instanceCells;
            routine_->instanceCells += variable.shape->cells;
        }
    }

    void MakeBlock(const std::string& name) {
        Begin(RoutineKind::Block, name);
        AddSome(Section::Input, 0, 4, choices_.OneIn(3) ? 1 : 0, "i");
        AddSome(Section::Output, 0, 2, 0, "o");
        AddSome(Section::InOut, 0, 2, choices_.OneIn(3) ? 1 : 0, "x");
        AddSome(Section::Local, 1, 4, 2, "v");
        AddInstances();
        AddSome(Section::Temporary, 0, 2, 1, "t");
        routine_->body = MakeBody(options_.statements / 2);
        LayOut();
        Shape& shape = program_.shapes.emplace_back();
        shape.kind = Shape::Kind::Block;
        shape.block = routine_;
        shape.cells = routine_->instanceCells;
        for (const Variable& variable : routine_->variables)
            shape.members.push_back({variable.name, variable.shape, variable.firstCell});
        routine_->blockShape = &shape;
        blocks_.push_back(&shape);
    }

    void AddInstances() {
        for (const Shape* block : blocks_) {
            if (choices_.OneIn(2)) Add(Section::Local, block, "b");
        }
    }

    void MakeProgram() {
        Begin(RoutineKind::Program, "Main");
        AddSome(Section::Local, 4, 12, 2, "v");
        AddInstances();
        AddSome(Section::Temporary, 0, 3, 1, "t");
        routine_->body = MakeBody(options_.statements);
        LayOut();
    }

    // --- places ---

    void Descend(Place& place, bool mayCall) {
        while (place.shape->kind != Shape::Kind::Scalar) {
            if (place.shape->kind == Shape::Kind::Structure) {
                const auto member = choices_.Below(static_cast<std::uint32_t>(place.shape->members.size()));
                place.steps.push_back({member, {}});
                place.shape = place.shape->members[member].shape;
            } else {
                DescendArray(place, mayCall);
            }
        }
    }

    void DescendArray(Place& place, bool mayCall) {
        Place::Step step;
        for (const Shape::Dimension& dimension : place.shape->dimensions)
            step.indices.push_back(MakeIndex(dimension, mayCall));
        place.steps.push_back(std::move(step));
        place.shape = place.shape->element;
    }

    Expression* MakeIndex(const Shape::Dimension& dimension, bool computed) {
        const auto literal = [&](int value) {
            return Plain(Number::Whole(NumberType::DInt, static_cast<std::uint64_t>(std::int64_t{value})));
        };
        if (!computed || choices_.OneIn(2) || inIndex_)
            return literal(dimension.lower +
                           static_cast<int>(choices_.Below(static_cast<std::uint32_t>(dimension.count))));
        constexpr NumberType kTypes[] = {NumberType::USInt, NumberType::UInt, NumberType::UDInt};
        inIndex_ = true;
        Expression* value = MakeTyped(kTypes[choices_.Below(3)], 1);
        inIndex_ = false;
        Expression* rest = Binary(Operator::Mod, value,
                                  Plain(Number::Whole(value->type, static_cast<std::uint64_t>(dimension.count))));
        if (dimension.lower == 0) return rest;
        Expression* index = BringTo(rest, NumberType::DInt);
        return Binary(Operator::Add, index, literal(dimension.lower));
    }

    [[nodiscard]] bool MayUse(const Variable& variable, Want want) const {
        if (variable.shape->kind == Shape::Kind::Block) return false;
        return want == Want::Read ||
               (!variable.isLocked && (want == Want::Write || variable.section != Section::Result));
    }

    /// A place of the shape, or of any elementary type within a variable; false where there is none.
    bool FindPlace(Want want, const Shape* exact, bool computed, Place& place) {
        for (int attempt = 0; attempt < 12; ++attempt) {
            const auto locals = static_cast<std::uint32_t>(routine_->variables.size());
            const std::uint32_t choice =
                choices_.Below(locals + static_cast<std::uint32_t>(program_.globals.size()) + 1);
            if (choice + 1 > locals + program_.globals.size()) continue;
            place = {};
            place.isGlobal = choice >= locals;
            place.variable = place.isGlobal ? choice - locals : choice;
            const Variable& variable =
                place.isGlobal ? program_.globals[place.variable] : routine_->variables[place.variable];
            place.shape = variable.shape;
            if (variable.shape->kind == Shape::Kind::Block && want == Want::Read && !inBlockCall_) {
                if (!EnterBlock(place)) continue;
            } else if (!MayUse(variable, want)) {
                continue;
            }
            if (exact != nullptr && exact->kind != Shape::Kind::Scalar) {
                while (place.shape != exact && place.shape->kind != Shape::Kind::Scalar)
                    Step(place, computed);
            } else {
                Descend(place, computed);
            }
            if (exact == nullptr || place.shape == exact) return true;
        }
        return false;
    }

    void Step(Place& place, bool computed) {
        if (place.shape->kind == Shape::Kind::Array) return DescendArray(place, computed);
        const auto member = choices_.Below(static_cast<std::uint32_t>(place.shape->members.size()));
        place.steps.push_back({member, {}});
        place.shape = place.shape->members[member].shape;
    }

    /// An output of an instance.
    bool EnterBlock(Place& place) {
        const Routine& block = *place.shape->block;
        for (std::size_t i = 0; i < block.variables.size(); ++i) {
            if (block.variables[i].section != Section::Output || choices_.OneIn(3)) continue;
            place.steps.push_back({i, {}});
            place.shape = block.variables[i].shape;
            return true;
        }
        return false;
    }

    // --- expressions ---

    Expression& NewExpression(ExpressionKind kind, NumberType type) {
        Expression& expression = program_.expressions.emplace_back();
        expression.kind = kind;
        expression.type = type;
        return expression;
    }

    Expression* Operation(ExpressionKind kind, NumberType type, std::vector<Expression*> operands) {
        Expression& expression = NewExpression(kind, type);
        expression.operands = std::move(operands);
        return &expression;
    }

    Expression* Plain(const Number& value) {
        Expression& expression = NewExpression(ExpressionKind::PlainLiteral, value.type);
        expression.value = value;
        return &expression;
    }

    Expression* Literal(const Number& value) {
        Expression& expression = NewExpression(ExpressionKind::Literal, value.type);
        expression.value = value;
        return &expression;
    }

    [[nodiscard]] NumberType Promote(NumberType type) const {
        if (!options_.promotesTo32Bits || GetBits(type) >= 32 || type == NumberType::Bool) return type;
        return GetNumberType(GetFamily(type), 32);
    }

    /// The operands' types meet, whatever the operator.
    Expression* Binary(Operator op, Expression* left, Expression* right) {
        NumberType type = *FindCommonType(left->type, right->type, options_.mixesBits);
        if (op <= Operator::Mod) type = Promote(type);
        const bool isLogical = op >= Operator::And && op <= Operator::Xor;
        if (isLogical && IsBits(left->type) != IsBits(right->type))
            type = GetNumberType(NumberFamily::Bits, std::max(GetBits(left->type), GetBits(right->type)));
        Expression* result =
            Operation(ExpressionKind::Binary, op >= Operator::EQ ? NumberType::Bool : type, {left, right});
        result->op = op;
        result->operandType = type;
        return result;
    }

    /// Converts by name unless the type is there already.
    Expression* BringTo(Expression* value, NumberType type) {
        if (value->type == type) return value;
        if (IsReal(value->type) && type != NumberType::Bool && !IsReal(type) && GetBits(type) == 64) {
            // What such a conversion does with numbers too large is not said.
            const double least = GetFamily(type) == NumberFamily::Signed ? -1.0e9 : 0.0;
            value = Operation(
                ExpressionKind::Limit, value->type,
                {Literal(Number::Floating(value->type, least)), value, Literal(Number::Floating(value->type, 1.0e9))});
        }
        return Operation(choices_.OneIn(2) ? ExpressionKind::Convert : ExpressionKind::ConvertTo, type, {value});
    }

    Expression* MakeLeaf(NumberType type) {
        Place place;
        if (!choices_.OneIn(5)) {
            if (FindPlace(Want::Read, scalars_[static_cast<std::size_t>(type)], !inIndex_, place)) return Load(place);
            if (choices_.OneIn(2) && FindPlace(Want::Read, nullptr, false, place)) return BringTo(Load(place), type);
        }
        return Literal(RandomNumber(type));
    }

    Expression* Load(const Place& place) {
        Expression& expression = NewExpression(ExpressionKind::Load, place.shape->type);
        expression.place = place;
        return &expression;
    }

    /// The second operand of an operator: of the same type, or one that meets with it, or a plain literal.
    Expression* MakeOther(NumberType type, unsigned depth) {
        if (choices_.OneIn(4)) return Plain(RandomNumber(type));
        for (int attempt = 0; attempt < 3 && choices_.OneIn(2); ++attempt) {
            const NumberType other = RandomType();
            if (FindCommonType(type, other, options_.mixesBits)) return MakeTyped(other, depth);
        }
        return MakeTyped(type, depth);
    }

    /// Never zero, for any dialect's width.
    Expression* MakeDivisor(NumberType type, unsigned depth) {
        if (choices_.OneIn(2)) {
            const Number value = RandomNumber(type);
            if (!value.IsZero()) return choices_.OneIn(2) ? Plain(value) : Literal(value);
        }
        const Number one = IsReal(type) ? Number::Floating(type, 1.5) : Number::Whole(type, 1);
        if (IsReal(type)) {
            Expression* value = Operation(ExpressionKind::Absolute, type, {MakeTyped(type, depth)});
            return Binary(Operator::Add, value, Plain(one));
        }
        Expression* value = MakeTyped(type, depth);
        return Binary(Operator::Or, value, Plain(one));
    }

    Expression* MakeArithmetic(NumberType type, unsigned depth) {
        const bool isReal = IsReal(type);
        const auto op = static_cast<Operator>(choices_.Below(isReal ? 4 : 5));
        Expression* left = MakeTyped(type, depth);
        if (op == Operator::Div) return Binary(op, left, MakeDivisor(type, depth));
        Expression* right = MakeOther(type, depth);
        // A rest needs whole numbers; by zero it is 0 for integers only, and a plain zero is not accepted everywhere.
        const bool isPlain = right->kind == ExpressionKind::PlainLiteral;
        if (op == Operator::Mod && (!IsInteger(right->type) || IsBits(type) || isPlain))
            return Binary(op, left, MakeDivisor(type, depth));
        if (!isPlain && choices_.OneIn(2)) std::swap(left, right);
        return Binary(op, left, right);
    }

    Expression* MakeTruth(unsigned depth) {
        const std::uint32_t choice = choices_.Below(9);
        if (choice < 4) {
            NumberType type = RandomType();
            Expression* left = MakeTyped(type, depth);
            const auto op = static_cast<Operator>(static_cast<unsigned>(Operator::EQ) + choices_.Below(6));
            return Binary(op, left, type == NumberType::Bool ? MakeTyped(type, depth) : MakeOther(type, depth));
        }
        if (choice < 7) {
            Expression* left = MakeTyped(NumberType::Bool, depth);
            const auto op = static_cast<Operator>(static_cast<unsigned>(Operator::And) + choices_.Below(3));
            return Binary(op, left, MakeTyped(NumberType::Bool, depth));
        }
        if (choice == 7) {
            return Operation(choices_.OneIn(2) ? ExpressionKind::AndThen : ExpressionKind::OrElse, NumberType::Bool,
                             {MakeTyped(NumberType::Bool, depth), MakeTyped(NumberType::Bool, depth)});
        }
        Place place;
        if (!FindPlace(Want::Read, scalars_[static_cast<std::size_t>(RandomWhole())], !inIndex_, place))
            return Operation(ExpressionKind::Not, NumberType::Bool, {MakeTyped(NumberType::Bool, depth)});
        Expression& bit = NewExpression(ExpressionKind::Bit, NumberType::Bool);
        bit.place = place;
        bit.bit = choices_.Below(GetBits(place.shape->type));
        return &bit;
    }

    Expression* MakeSelection(NumberType type, unsigned depth) {
        const auto value = [&] { return MakeTyped(type, depth); };
        switch (choices_.Below(type == NumberType::Bool ? 2 : 5)) {
            case 0: {
                Expression* selector = MakeTyped(NumberType::Bool, depth);
                Expression* first = value();
                return Operation(ExpressionKind::Select, type, {selector, first, value()});
            }
            case 1: {
                std::vector<Expression*> operands = {MakeTyped(RandomInteger(), depth)};
                // Of the widest, only what is positive as a signed number is a choice of its own.
                if (operands[0]->type == NumberType::ULInt) operands[0] = BringTo(operands[0], NumberType::UInt);
                const unsigned count = 2 + choices_.Below(3);
                for (unsigned i = 0; i < count; ++i)
                    operands.push_back(value());
                return Operation(ExpressionKind::Multiplex, type, std::move(operands));
            }
            case 2: {
                Expression* least = value();
                Expression* middle = value();
                return Operation(ExpressionKind::Limit, type, {least, middle, value()});
            }
            default: {
                Expression* first = value();
                return Operation(choices_.OneIn(2) ? ExpressionKind::Minimum : ExpressionKind::Maximum, type,
                                 {first, value()});
            }
        }
    }

    Expression* MakeShift(NumberType type, unsigned depth) {
        Expression* value = MakeTyped(type, depth);
        Expression* count = nullptr;
        if (choices_.OneIn(2)) {
            count = Plain(Number::Whole(NumberType::DInt, choices_.Below(70)));
        } else {
            count = MakeTyped(choices_.OneIn(2) ? NumberType::USInt : NumberType::SInt, depth);
        }
        Expression* result = Operation(ExpressionKind::Shift, type, {value, count});
        result->shift = static_cast<Shift>(choices_.Below(4));
        return result;
    }

    Expression* MakeCall(unsigned depth) {
        if (functions_.empty() || inIndex_ || inFor_) return nullptr;
        const Routine& routine = *functions_[choices_.Below(static_cast<std::uint32_t>(functions_.size()))];
        Expression& call = NewExpression(ExpressionKind::Call, NumberType::Bool);
        call.routine = &routine;
        for (const Variable& variable : routine.variables) {
            if (variable.section == Section::Result) call.type = variable.shape->type;
        }
        return MakeArguments(routine, call.arguments, depth) ? &call : nullptr;
    }

    bool MakeArguments(const Routine& routine, std::vector<CallArgument>& arguments, unsigned depth) {
        std::vector<std::pair<bool, std::size_t>> outputs;
        for (std::size_t i = 0; i < routine.variables.size(); ++i) {
            const Variable& parameter = routine.variables[i];
            CallArgument argument{i, nullptr, {}};
            switch (parameter.section) {
                case Section::Input:
                    if (choices_.OneIn(8)) continue;
                    if (parameter.shape->kind == Shape::Kind::Scalar) {
                        argument.value = MakeStored(parameter.shape->type, depth == 0 ? 0 : depth - 1);
                    } else if (!FindPlace(Want::Read, parameter.shape, false, argument.place)) {
                        continue;
                    }
                    break;
                case Section::InOut:
                    if (!FindPlace(Want::Reference, parameter.shape, choices_.OneIn(2), argument.place)) return false;
                    outputs.emplace_back(argument.place.isGlobal, argument.place.variable);
                    break;
                case Section::Output: {
                    if (choices_.OneIn(2) || !FindPlace(Want::Reference, parameter.shape, false, argument.place))
                        continue;
                    // Each goes to a variable of its own, for when it arrives is not said.
                    const std::pair<bool, std::size_t> target{argument.place.isGlobal, argument.place.variable};
                    if (argument.place.isGlobal || std::ranges::count(outputs, target) != 0) continue;
                    if (routine_->variables[target.second].section == Section::InOut) continue;
                    outputs.push_back(target);
                    break;
                }
                default: continue;
            }
            arguments.push_back(std::move(argument));
        }
        return true;
    }

    /// What can be assigned to the type.
    Expression* MakeStored(NumberType type, unsigned depth) {
        if (choices_.OneIn(6)) return Plain(RandomNumber(type));
        if (choices_.OneIn(4)) {
            const NumberType other = RandomType();
            const bool narrows = options_.mixesBits && !IsReal(other) && !IsReal(type) && other != NumberType::Bool &&
                                 type != NumberType::Bool;
            if (narrows || ConvertsImplicitly(other, type)) return MakeTyped(other, depth);
        }
        return MakeTyped(type, depth);
    }

    Expression* MakeTyped(NumberType type, unsigned depth) {
        // Deep trees are rare in programs too.
        if (depth == 0 || choices_.OneIn(4) || choices_.AreUsedUp()) return MakeLeaf(type);
        --depth;
        const bool isWhole = IsInteger(type) || IsBits(type);
        const std::uint32_t choice = choices_.Below(16);
        if (choice == 0) {
            if (Expression* call = MakeCall(depth)) return BringTo(call, type);
        }
        if (choice == 1) return BringTo(MakeTyped(RandomType(), depth), type);
        if (choice == 2 || choice == 3) return MakeSelection(type, depth);
        if (type == NumberType::Bool) {
            if (choice == 4) return Operation(ExpressionKind::Not, type, {MakeTyped(type, depth)});
            return MakeTruth(depth);
        }
        if (choice == 4 && isWhole) return Operation(ExpressionKind::Not, type, {MakeTyped(type, depth)});
        if (choice == 5) {
            NumberType result = type;
            if (options_.promotesTo32Bits && isWhole && GetBits(type) < 32) result = NumberType::DInt;
            return BringTo(Operation(ExpressionKind::Negate, result, {MakeTyped(type, depth)}), type);
        }
        if (choice == 6 && (GetFamily(type) == NumberFamily::Signed || IsReal(type)))
            return Operation(ExpressionKind::Absolute, type, {MakeTyped(type, depth)});
        if ((choice == 7 || choice == 8) && isWhole) return MakeShift(type, depth);
        if ((choice == 9 || choice == 10) && isWhole) {
            const auto op = static_cast<Operator>(static_cast<unsigned>(Operator::And) + choices_.Below(3));
            Expression* left = MakeTyped(type, depth);
            Expression* right = MakeOther(type, depth);
            if (IsReal(right->type)) right = MakeTyped(type, depth);
            return BringTo(Binary(op, left, right), type);
        }
        return BringTo(MakeArithmetic(type, depth), type);
    }

    // --- statements ---

    Statement& New(StatementKind kind) {
        Statement& statement = program_.statements.emplace_back();
        statement.kind = kind;
        return statement;
    }

    std::vector<Statement*> MakeBody(unsigned count) {
        std::vector<Statement*> body;
        count = 1 + choices_.Below(std::max(1U, count));
        for (unsigned i = 0; i < count && !choices_.AreUsedUp(); ++i)
            MakeStatement(body);
        return body;
    }

    std::vector<Statement*> MakeInner() {
        ++nesting_;
        std::vector<Statement*> body = MakeBody(3);
        --nesting_;
        return body;
    }

    void MakeStatement(std::vector<Statement*>& body) {
        const std::uint32_t choice = choices_.Below(nesting_ > 2 ? 10 : 18);
        Statement* statement = nullptr;
        switch (choice) {
            case 6: statement = MakeBitAssignment(); break;
            case 7: statement = MakeCopy(); break;
            case 8:
            case 9: statement = choices_.OneIn(2) ? MakeBlockCall() : MakeFunctionCall(); break;
            case 10:
            case 11:
            case 12: statement = MakeIf(); break;
            case 13:
            case 14: statement = MakeCase(); break;
            case 15:
            case 16: return MakeFor(body);
            case 17: return MakeWhile(body);
            default: break;
        }
        if (statement == nullptr) statement = MakeAssignment();
        if (statement != nullptr) body.push_back(statement);
    }

    Statement* MakeAssignment() {
        Place target;
        if (!FindPlace(Want::Write, nullptr, true, target)) return nullptr;
        Statement& statement = New(StatementKind::Assign);
        statement.target = target;
        statement.value = MakeStored(target.shape->type, options_.depth);
        return &statement;
    }

    Statement* MakeBitAssignment() {
        Place target;
        if (!FindPlace(Want::Write, scalars_[static_cast<std::size_t>(RandomWhole())], true, target)) return nullptr;
        Statement& statement = New(StatementKind::AssignBit);
        statement.target = target;
        statement.bit = choices_.Below(GetBits(target.shape->type));
        statement.value = MakeTyped(NumberType::Bool, options_.depth);
        return &statement;
    }

    Statement* MakeCopy() {
        std::vector<const Shape*> shapes;
        for (const Variable& variable : routine_->variables) {
            const Shape::Kind kind = variable.shape->kind;
            if (kind == Shape::Kind::Array || kind == Shape::Kind::Structure) shapes.push_back(variable.shape);
        }
        if (shapes.empty()) return nullptr;
        const Shape* shape = shapes[choices_.Below(static_cast<std::uint32_t>(shapes.size()))];
        Place target;
        Place source;
        if (!FindPlace(Want::Write, shape, true, target) || !FindPlace(Want::Read, shape, true, source)) return nullptr;
        Statement& statement = New(StatementKind::Copy);
        statement.target = target;
        statement.source = source;
        return &statement;
    }

    Statement* MakeBlockCall() {
        std::vector<std::size_t> instances;
        for (std::size_t i = 0; i < routine_->variables.size(); ++i) {
            if (routine_->variables[i].shape->kind == Shape::Kind::Block) instances.push_back(i);
        }
        if (instances.empty()) return nullptr;
        const std::size_t instance = instances[choices_.Below(static_cast<std::uint32_t>(instances.size()))];
        Statement& statement = New(StatementKind::CallBlock);
        statement.target = {false, instance, {}, routine_->variables[instance].shape};
        // What an argument sees of an instance whose inputs are being set is not said.
        inBlockCall_ = true;
        const bool isMade = MakeArguments(*statement.target.shape->block, statement.arguments, options_.depth);
        inBlockCall_ = false;
        return isMade ? &statement : nullptr;
    }

    Statement* MakeFunctionCall() {
        Expression* call = MakeCall(options_.depth);
        if (call == nullptr) return nullptr;
        Statement& statement = New(StatementKind::CallFunction);
        statement.value = call;
        return &statement;
    }

    /// Bodies may end with a jump out of the loop or the unit.
    std::vector<Statement*> MakeBranch() {
        std::vector<Statement*> body = MakeInner();
        if (choices_.OneIn(6)) {
            StatementKind kind = StatementKind::Return;
            if (loops_ > 0 && !choices_.OneIn(4))
                kind = choices_.OneIn(2) ? StatementKind::Exit : StatementKind::Continue;
            body.push_back(&New(kind));
        }
        return body;
    }

    Statement* MakeIf() {
        Statement& statement = New(StatementKind::If);
        const unsigned branches = 1 + choices_.Below(3);
        for (unsigned i = 0; i < branches; ++i)
            statement.branches.push_back({MakeTyped(NumberType::Bool, options_.depth), {}, MakeBranch()});
        if (choices_.OneIn(2)) statement.branches.push_back({nullptr, {}, MakeBranch()});
        return &statement;
    }

    Statement* MakeCase() {
        Statement& statement = New(StatementKind::Case);
        const NumberType type = RandomWhole();
        statement.value = MakeTyped(type, options_.depth);
        // Labels go up from somewhere; long lists are searched in another way.
        const unsigned count = choices_.OneIn(3) ? 12 + choices_.Below(12) : 1 + choices_.Below(6);
        const bool isSigned = GetFamily(type) == NumberFamily::Signed;
        std::int64_t next = isSigned ? static_cast<std::int64_t>(choices_.Below(60)) - 50 : choices_.Below(5);
        for (unsigned i = 0; i < count && next < 100; ++i) {
            if (i == 0 || choices_.OneIn(2)) statement.branches.emplace_back();
            const std::int64_t length = choices_.OneIn(3) ? choices_.Below(5) : 0;
            statement.branches.back().labels.push_back(
                {Number::Whole(type, static_cast<std::uint64_t>(next)),
                 Number::Whole(type, static_cast<std::uint64_t>(next + length))});
            next += length + 1 + (choices_.OneIn(2) ? choices_.Below(8) : 0);
        }
        for (Statement::Branch& branch : statement.branches)
            branch.body = MakeBranch();
        if (choices_.OneIn(2)) statement.branches.push_back({nullptr, {}, MakeBranch()});
        return &statement;
    }

    std::vector<Statement*> MakeLoopBody() {
        ++loops_;
        std::vector<Statement*> body = MakeInner();
        --loops_;
        return body;
    }

    void MakeFor(std::vector<Statement*>& body) {
        const NumberType type = RandomInteger();
        const std::size_t counter = AddCounter(type);
        const bool isSigned = GetFamily(type) == NumberFamily::Signed;
        const bool isAtEdge = choices_.OneIn(3);
        std::int64_t step = 1 + static_cast<std::int64_t>(choices_.Below(3));
        if (isSigned && choices_.OneIn(3)) step = -step;
        const auto number = [&](std::int64_t value) { return Number::Whole(type, static_cast<std::uint64_t>(value)); };
        Statement& statement = New(StatementKind::For);
        statement.target = {false, counter, {}, routine_->variables[counter].shape};
        const unsigned bits = GetBits(type);
        std::int64_t from = 20 + static_cast<std::int64_t>(choices_.Below(10));
        std::int64_t to = from + (step > 0 ? 1 : -1) * static_cast<std::int64_t>(choices_.Below(12));
        if (isAtEdge) {
            // Up to the largest number or down to the smallest.
            to = static_cast<std::int64_t>(~std::uint64_t{0} >> (64 - bits + (isSigned ? 1 : 0)));
            if (step < 0) to = -to - 1;
            from = step > 0 ? to - static_cast<std::int64_t>(choices_.Below(8))
                            : to + static_cast<std::int64_t>(choices_.Below(8));
        }
        inFor_ = true;
        statement.value = Plain(number(from));
        statement.to = Plain(number(to));
        if (!isAtEdge && choices_.OneIn(2)) {
            // An end that is computed.
            Expression* value = MakeTyped(NumberType::USInt, 2);
            Expression* rest = Binary(Operator::Mod, value, Plain(Number::Whole(NumberType::USInt, 40)));
            statement.to = BringTo(rest, type);
        }
        if (isAtEdge && choices_.OneIn(2)) statement.to = Sum(number(to));
        if (choices_.OneIn(2)) statement.value = Sum(statement.value->value);
        if (step != 1 || choices_.OneIn(3)) {
            statement.by = Plain(number(step));
            if (choices_.OneIn(3)) statement.by = Sum(number(step));
        }
        inFor_ = false;
        statement.branches.push_back({nullptr, {}, MakeLoopBody()});
        body.push_back(&statement);
        routine_->variables[counter].isLocked = false;
        // The counter stops at the edge in a way of its own.
        if (isAtEdge) Set(counter, number(0), body);
    }

    /// A number that is not known before the program runs.
    Expression* Sum(const Number& value) {
        Place place;
        if (!FindPlace(Want::Read, scalars_[static_cast<std::size_t>(value.type)], false, place)) return Literal(value);
        Expression* loaded = Load(place);
        Expression* nothing = Operation(ExpressionKind::Binary, value.type, {loaded, loaded});
        nothing->op = Operator::Xor;
        nothing->operandType = value.type;
        Expression* sum = Operation(ExpressionKind::Binary, value.type, {nothing, Plain(value)});
        sum->op = Operator::Or;
        sum->operandType = value.type;
        return sum;
    }

    void Set(std::size_t variable, const Number& value, std::vector<Statement*>& body) {
        Statement& statement = New(StatementKind::Assign);
        statement.target = {false, variable, {}, routine_->variables[variable].shape};
        statement.value = Plain(value);
        body.push_back(&statement);
    }

    void MakeWhile(std::vector<Statement*>& body) {
        const std::size_t counter = AddCounter(NumberType::DInt);
        const Place place{false, counter, {}, routine_->variables[counter].shape};
        const auto number = [](std::uint64_t value) { return Number::Whole(NumberType::DInt, value); };
        Set(counter, number(0), body);
        const bool isRepeat = choices_.OneIn(2);
        Statement& statement = New(isRepeat ? StatementKind::Repeat : StatementKind::While);
        const std::uint64_t rounds = 1 + choices_.Below(6);
        Expression* limit = Binary(isRepeat ? Operator::GE : Operator::LT, Load(place), Plain(number(rounds)));
        Expression* condition = MakeTyped(NumberType::Bool, 2);
        statement.value = Binary(isRepeat ? Operator::Or : Operator::And, limit, condition);
        std::vector<Statement*> inner;
        Statement& count = New(StatementKind::Assign);
        count.target = place;
        count.value = Binary(Operator::Add, Load(place), Plain(number(1)));
        inner.push_back(&count);
        std::ranges::copy(MakeLoopBody(), std::back_inserter(inner));
        statement.branches.push_back({nullptr, {}, std::move(inner)});
        body.push_back(&statement);
        routine_->variables[counter].isLocked = false;
    }

    Choices& choices_;
    const ProgramOptions& options_;
    Program& program_;
    std::vector<const Shape*> scalars_;
    std::vector<const Routine*> functions_;
    std::vector<const Shape*> blocks_;
    Routine* routine_ = nullptr;
    bool inIndex_ = false;
    bool inFor_ = false;
    bool inBlockCall_ = false;
    unsigned nesting_ = 0;
    unsigned loops_ = 0;
};

}  // namespace

void GenerateProgram(Choices& choices, const ProgramOptions& options, Program& program) {
    Generator(choices, options, program).Generate();
}

}  // namespace random_programs
