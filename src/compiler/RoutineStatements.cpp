// Statements but loops.
#include <algorithm>
#include <limits>

#include "compiler/NumberRange.h"
#include "compiler/RoutineGenerator.h"
#include "value/TypeTable.h"

namespace tn61131::st {

namespace {

/// The most that one instruction copies.
constexpr std::uint32_t kMaxCopy = UINT16_MAX;

/// From this many tests on a CASE looks for its arm by halving.
constexpr std::size_t kMostLinearTests = 8;
/// Ranges that one leaf of the search tests one after the other.
constexpr std::size_t kMostTestsOfLeaf = 3;

ElementaryType GetBitString(unsigned int bits) noexcept {
    switch (bits) {
        case 8: return ElementaryType::Byte;
        case 16: return ElementaryType::Word;
        case 32: return ElementaryType::DWord;
        default: return ElementaryType::LWord;
    }
}

}  // namespace

void RoutineGenerator::Statements(const Block* block) {
    if (block == nullptr) return;
    for (const Stmt* statement : block->statements) {
        if (!code_.IsReachable()) return;
        Statement(*statement);
    }
}

void RoutineGenerator::Statement(const Stmt& statement) {
    code_.SetPosition(statement.range.begin);
    terms_.clear();
    const std::uint32_t tempInUse = tempInUse_;
    switch (statement.kind) {
        case StmtKind::Assign: Assign(static_cast<const AssignStmt&>(statement)); break;
        case StmtKind::AssignAggregate: AssignAggregate(static_cast<const AssignAggregateStmt&>(statement)); break;
        case StmtKind::StoreBits: StoreBits(static_cast<const StoreBitsStmt&>(statement)); break;
        case StmtKind::Evaluate: Evaluate(*static_cast<const EvaluateStmt&>(statement).value); break;
        case StmtKind::CallBlock: CallBlock(static_cast<const CallBlockStmt&>(statement)); break;
        case StmtKind::If: If(static_cast<const IfStmt&>(statement)); break;
        case StmtKind::Case: Case(static_cast<const CaseStmt&>(statement)); break;
        case StmtKind::For: For(static_cast<const ForStmt&>(statement)); break;
        case StmtKind::While: While(static_cast<const WhileStmt&>(statement)); break;
        case StmtKind::Repeat: Repeat(static_cast<const RepeatStmt&>(statement)); break;
        case StmtKind::Exit: LeaveLoop(&Loop::exit); break;
        case StmtKind::Continue: LeaveLoop(&Loop::next); break;
        case StmtKind::Return: LeaveRoutine(); break;
        case StmtKind::Block: Statements(static_cast<const Block*>(&statement)); break;
        case StmtKind::Keep: KeepAddress(static_cast<const KeepStmt&>(statement)); break;
    }
    tempInUse_ = tempInUse;
}

void RoutineGenerator::KeepAddress(const KeepStmt& statement) {
    const Address kept = Keep(Resolve(*statement.place), statement.isRooted ? Rooted::Yes : Rooted::No);
    statement.kept->slot = kept.slot;
    Statements(statement.body);
    code_.Pop();
}

void RoutineGenerator::Evaluate(const Expr& value) {
    if (value.kind == ExprKind::CallFunction) {
        CallFunction(static_cast<const CallFunctionExpr&>(value), false);
    } else {
        Value(value);
    }
}

void RoutineGenerator::Assign(const AssignStmt& statement) {
    Value(*statement.value);
    if (statement.isRanged) EmitRangeCheckOfTop(statement.target->type, statement.range);
    StorePlace(*statement.target);
}

void RoutineGenerator::AssignAggregate(const AssignAggregateStmt& statement) {
    AggregateAddress(*statement.source);
    CopyToTop(statement.target->type->size, Resolve(*statement.target));
}

/// Copies from where the pointer on the top leads. Larger copies go in pieces, so that pieces which were written may be
/// read again where the two overlap: only pointers make them.
void RoutineGenerator::CopyToTop(std::uint32_t size, const Address& target) {
    if (size == 0) return;
    if (size <= kMaxCopy) {
        code_.Push();
        EmitAddress(target, Rooted::No);
        code_.PointerStore(ElementaryType::Composite, size);
        return;
    }
    Address source = MakeSlotPointer(code_.GetTopIndex());
    Address to = target;
    code_.Push();
    const bool isKept = !IsCheap(to);
    if (isKept) to = Keep(to, Rooted::Yes);
    if (target.base == BaseKind::Deref || target.base == BaseKind::SlotPointer) {
        const std::uint32_t between = *globalSize_;
        *globalSize_ += size;
        CopyPieces(size, source, MakeStatic(LocationKind::Global, between));
        source = MakeStatic(LocationKind::Global, between);
    }
    CopyPieces(size, source, to);
    if (isKept) code_.Pop();
    code_.Pop();
}

void RoutineGenerator::CopyPieces(std::uint32_t size, const Address& source, const Address& target) {
    for (std::uint32_t at = 0; at < size;) {
        const std::uint32_t piece = std::min(size - at, kMaxCopy);
        EmitAddress(AtOffset(source, at), Rooted::No);
        code_.Push();
        EmitAddress(AtOffset(target, at), Rooted::No);
        code_.PointerStore(ElementaryType::Composite, piece);
        at += piece;
    }
}

// --- bits ---

void RoutineGenerator::StoreBits(const StoreBitsStmt& statement) {
    const bool isWholeBytes = statement.width >= 8 && statement.width % 8 == 0 && statement.firstBit % 8 == 0;
    const std::optional<std::uint32_t> slot = FindSlot(*statement.target);
    Address target;
    if (!slot) {
        target = Resolve(*statement.target);
        if (isWholeBytes && target.base == BaseKind::Static) {
            Value(*statement.value);
            target.offset += statement.firstBit / 8U;
            return StoreTo(target, project_.types.Elementary(GetBitString(statement.width)));
        }
    }
    if (slot || IsCheap(target)) {
        StoreBitsIn({slot, target, statement.target->type}, statement, [&] { Value(*statement.value); });
        return;
    }
    Value(*statement.value);
    const std::uint32_t value = code_.GetTopIndex();
    code_.Push();
    const Address kept = Keep(target, Rooted::No);
    StoreBitsIn({std::nullopt, kept, statement.target->type}, statement, [&] { LoadEntry(value); });
    code_.Pop();
    code_.Pop();
}

void RoutineGenerator::LoadWord(const WordPlace& word) {
    if (word.slot) {
        code_.LoadStack(*word.slot);
    } else {
        LoadFrom(word.address, word.type);
    }
}

void RoutineGenerator::StoreWord(const WordPlace& word) {
    if (word.slot) {
        code_.StoreStack(*word.slot);
    } else {
        StoreTo(word.address, word.type);
    }
}

void RoutineGenerator::CombineWord(BinaryOperator op, ElementaryType type, std::uint64_t mask) {
    code_.Push();
    code_.LoadInteger(type, static_cast<std::int64_t>(mask));
    code_.Binary(op);
}

template <typename Emit>
void RoutineGenerator::StoreBitsIn(const WordPlace& word, const StoreBitsStmt& statement, Emit emitValue) {
    const ElementaryType type = word.type->storage;
    const std::uint64_t ones = statement.width >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << statement.width) - 1;
    const std::uint64_t mask = ones << statement.firstBit;
    if (statement.width == 1) {
        const std::optional<Int128> constant = GetConstantNumber(*statement.value);
        const Label clear = code_.NewLabel();
        const Label store = code_.NewLabel();
        if (!constant) {
            emitValue();
            code_.JumpZero(clear);
        }
        if (!constant || *constant != 0) {
            LoadWord(word);
            CombineWord(BinaryOperator::Or, type, mask);
            if (!constant) code_.Jump(store);
        }
        code_.Bind(clear);
        if (!constant || *constant == 0) {
            LoadWord(word);
            CombineWord(BinaryOperator::And, type, ~mask);
        }
        code_.Bind(store);
        return StoreWord(word);
    }
    emitValue();
    if (statement.value->type->storage != type) code_.Convert(type);
    if (statement.firstBit != 0) CombineWord(BinaryOperator::Mul, type, std::uint64_t{1} << statement.firstBit);
    code_.Push();
    LoadWord(word);
    CombineWord(BinaryOperator::And, type, ~mask);
    code_.Binary(BinaryOperator::Or);
    StoreWord(word);
}

// --- IF, EXIT, CONTINUE ---

void RoutineGenerator::If(const IfStmt& statement) {
    const Label otherwise = code_.NewLabel();
    JumpIf(*statement.condition, false, otherwise);
    Statements(statement.then);
    if (statement.otherwise == nullptr || statement.otherwise->statements.empty()) {
        code_.Bind(otherwise);
        return;
    }
    const Label end = code_.NewLabel();
    code_.Jump(end);
    code_.Bind(otherwise);
    Statements(statement.otherwise);
    code_.Bind(end);
}

void RoutineGenerator::LeaveLoop(Label Loop::*target) {
    const Loop& loop = loops_.back();
    const std::uint32_t depth = code_.GetDepth();
    while (code_.GetDepth() > loop.depth)
        code_.Pop();
    code_.Jump(loop.*target);
    code_.SetDepth(depth);
}

// --- CASE ---

void RoutineGenerator::Case(const CaseStmt& statement) {
    const ElementaryType type = statement.selector->type->storage;
    std::vector<CaseTest> tests;
    std::vector<Label> arms;
    for (const CaseArm& arm : statement.arms) {
        arms.push_back(code_.NewLabel());
        for (const CaseRange& range : arm.ranges)
            tests.push_back({ToNumber(type, range.lower), ToNumber(type, range.upper), arms.back()});
    }
    const Label otherwise = code_.NewLabel();
    const Label end = code_.NewLabel();
    CaseSelector selector{.type = type, .expr = statement.selector, .slot = 0};
    const bool isSlot = statement.selector->kind == ExprKind::Load &&
                        FindSlot(*static_cast<const LoadExpr&>(*statement.selector).place).has_value();
    const bool isKept = !isSlot && !(tests.size() <= 2 && IsCheapIndex(*statement.selector));
    if (isKept) {
        Value(*statement.selector);
        selector.expr = nullptr;
        selector.slot = code_.GetTopIndex();
        code_.Push();
    }
    if (tests.size() > kMostLinearTests) {
        std::sort(tests.begin(), tests.end(),
                  [](const CaseTest& left, const CaseTest& right) { return left.lower < right.lower; });
        CaseSearch(selector, tests, otherwise);
    } else {
        for (const CaseTest& test : tests)
            CaseTestOne(selector, test);
    }
    code_.Bind(otherwise);
    if (isKept) code_.Pop();
    Statements(statement.otherwise);
    code_.Jump(end);
    for (std::size_t i = 0; i < arms.size(); ++i) {
        code_.Bind(arms[i]);
        if (!code_.IsReachable()) continue;
        if (isKept) code_.Pop();
        Statements(statement.arms[i].body);
        code_.Jump(end);
    }
    code_.Bind(end);
}

void RoutineGenerator::LoadSelector(const CaseSelector& selector) {
    if (selector.expr != nullptr) {
        Value(*selector.expr);
    } else {
        LoadEntry(selector.slot);
    }
}

void RoutineGenerator::CompareSelector(const CaseSelector& selector, BinaryOperator op, Int128 limit) {
    LoadSelector(selector);
    code_.Push();
    code_.LoadInteger(selector.type, static_cast<std::int64_t>(limit));
    code_.Binary(op);
}

void RoutineGenerator::CaseTestOne(const CaseSelector& selector, const CaseTest& test) {
    if (test.lower == test.upper) {
        CompareSelector(selector, BinaryOperator::EQ, test.lower);
        code_.JumpNotZero(test.arm);
        return;
    }
    const NumberRange all = GetRangeOfStorage(selector.type).value_or(NumberRange{test.lower, test.upper});
    if (NumberRange{test.lower, test.upper}.Contains(all)) {
        code_.Jump(test.arm);
        return;
    }
    // An undefined selector is in no range, so none of the comparisons holds.
    const Label next = code_.NewLabel();
    if (test.lower > all.lower) {
        CompareSelector(selector, BinaryOperator::GE, test.lower);
        if (test.upper < all.upper) {
            code_.JumpZero(next);
        } else {
            code_.JumpNotZero(test.arm);
        }
    }
    if (test.upper < all.upper) {
        CompareSelector(selector, BinaryOperator::LE, test.upper);
        code_.JumpNotZero(test.arm);
    }
    code_.Bind(next);
}

/// The tests are in order and do not overlap.
void RoutineGenerator::CaseSearch(const CaseSelector& selector, std::span<const CaseTest> tests, Label otherwise) {
    if (tests.size() <= kMostTestsOfLeaf) {
        for (const CaseTest& test : tests)
            CaseTestOne(selector, test);
        code_.Jump(otherwise);
        return;
    }
    const std::size_t middle = tests.size() / 2;
    const Label below = code_.NewLabel();
    CompareSelector(selector, BinaryOperator::LT, tests[middle].lower);
    code_.JumpNotZero(below);
    CaseSearch(selector, tests.subspan(middle), otherwise);
    code_.Bind(below);
    CaseSearch(selector, tests.first(middle), otherwise);
}

}  // namespace tn61131::st
