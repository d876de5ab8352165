#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/JSONataExpr.h"
#include "platform/jsonata/Expr.h"
#include "platform/jsonata/Heap.h"
#include "platform/jsonata/Nodes.h"
#include "platform/jsonata/Value.h"

namespace tn61131::jsonata {

/// Where a function is called.
struct CallSite {
    const Value* context;
    FrameNode* frame;
    const Expr* call;  ///< null where the caller is no expression
};

/// One evaluation of one expression. Throws EvaluationError.
class Evaluator {
 public:
    explicit Evaluator(const JSONataOptions& options);
    Evaluator(const Evaluator&) = delete;
    Evaluator& operator=(const Evaluator&) = delete;
    ~Evaluator();

    /// The value of an expression for an input, null for none. The value must not outlive the evaluator.
    [[nodiscard]] Value Run(const Expr& expr, const JSONValue* input);

    // What functions use.
    [[nodiscard]] Heap& GetHeap() noexcept { return heap_; }
    [[nodiscard]] Value Evaluate(const Expr& expr, const Value& input, FrameNode* frame);
    /// Calls a function value.
    [[nodiscard]] Value Call(const Value& function, std::vector<Value> arguments, const CallSite& site);
    /// Parses an expression, which lives as long as the evaluation.
    [[nodiscard]] const Expr& ParseText(std::string_view text);
    /// The time of the evaluation in milliseconds since 1970, the same for all of it.
    [[nodiscard]] double GetNow();
    /// To be called in every loop whose length the expression decides: ends an evaluation that is over time.
    void Tick() {
        if ((++ticks_ & 0xFFU) == 0) CheckTime();
    }
    [[nodiscard]] Value MakeText(std::string text) { return Value::OfText(heap_, std::move(text)); }
    [[nodiscard]] Ref<ArrayNode> MakeArray() { return heap_.Make<ArrayNode>(); }
    [[nodiscard]] Ref<ArrayNode> MakeSequence();
    /// The value of a member; of all elements' members, flattened, where the value is an array.
    [[nodiscard]] Value Lookup(const Value& value, std::string_view name);
    /// An array as it is, a single value as the array of it, none for an undefined one.
    [[nodiscard]] Value AsArray(const Value& value);
    /// Both as one array; the other where one is undefined.
    [[nodiscard]] Value Append(const Value& left, const Value& right);

 private:
    /// A call in tail position, left to the call around it.
    struct PendingCall {
        Value function;
        std::vector<Value> arguments;
        Value context;
        Ref<FrameNode> frame;
        const Expr* expr;
    };

    /// Counts levels of nesting for as long as it lives; throws U1001 where there are too many.
    class Level {
     public:
        Level(Evaluator& evaluator, std::uint32_t levels);
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;
        ~Level() { evaluator_.depth_ -= levels_; }

     private:
        Evaluator& evaluator_;
        std::uint32_t levels_;
    };

    [[nodiscard]] Value EvaluateKind(const Expr& expr, const Value& input, FrameNode* frame);
    [[nodiscard]] Value EvaluateVariable(const Expr& expr, const Value& input, FrameNode* frame);
    [[nodiscard]] Value EvaluateWildcard(const Value& input);
    [[nodiscard]] Value EvaluateDescendants(const Value& input);
    void CollectDescendants(const Value& value, ArrayNode& found, unsigned int depth);
    void AppendFlattened(const Value& value, ArrayNode& target, unsigned int depth);
    [[nodiscard]] Value EvaluateNegation(const Expr& expr, const Value& input, FrameNode* frame);
    [[nodiscard]] Value EvaluateArray(const Expr& expr, const Value& input, FrameNode* frame);
    [[nodiscard]] Value EvaluateBlock(const Expr& expr, const Value& input, FrameNode* frame);
    [[nodiscard]] Value EvaluateBind(const Expr& expr, const Value& input, FrameNode* frame);
    [[nodiscard]] Value EvaluateCondition(const Expr& expr, const Value& input, FrameNode* frame);

    // Operators.
    [[nodiscard]] Value EvaluateBinary(const Expr& expr, const Value& input, FrameNode* frame);
    [[nodiscard]] Value EvaluateArithmetic(const Expr& expr, const Value& left, const Value& right);
    [[nodiscard]] Value EvaluateComparison(const Expr& expr, const Value& left, const Value& right);
    [[nodiscard]] Value EvaluateConcatenation(const Value& left, const Value& right);
    [[nodiscard]] Value EvaluateInclusion(const Value& left, const Value& right);
    [[nodiscard]] Value EvaluateRange(const Value& left, const Value& right);
    [[nodiscard]] Value EvaluateApplication(const Expr& expr, const Value& input, FrameNode* frame);

    // Paths.
    [[nodiscard]] Value EvaluatePath(const Expr& path, const Value& input, FrameNode* frame);
    [[nodiscard]] Value EvaluatePlainSteps(const Expr& path, const Value& input, FrameNode* frame, std::size_t& step,
                                           bool& isSingle);
    [[nodiscard]] Value EvaluateTupleSteps(const Expr& path, Value items, FrameNode* frame, std::size_t step);
    [[nodiscard]] Value StepValue(const Expr& step, const Value& item, FrameNode* frame);
    [[nodiscard]] Value StepOverItems(const Expr& step, const Value& items, FrameNode* frame, bool isLast);
    [[nodiscard]] Value TupleStep(const Expr& step, const Value& tuples, FrameNode* frame);
    [[nodiscard]] Value MakeTuples(const Value& items);
    [[nodiscard]] Value ApplyStages(const Expr& step, Value value, FrameNode* frame);
    [[nodiscard]] Value Filter(const Expr& predicate, const Value& value, FrameNode* frame);
    [[nodiscard]] std::size_t CountSelections(const Value& result, std::size_t index, std::size_t size);
    [[nodiscard]] Value Sort(const Expr& sort, const Value& items, FrameNode* frame);
    [[nodiscard]] Value Group(const std::vector<std::pair<ExprPtr, ExprPtr>>& pairs, const Value& input,
                              FrameNode* frame);
    [[nodiscard]] Value MergeTuples(const Value& tuples);
    [[nodiscard]] Ref<FrameNode> FrameOfTuple(const Value& tuple, FrameNode* frame);
    [[nodiscard]] Value Reduce(const Expr& expr, Value value);

    // Functions.
    [[nodiscard]] Value EvaluateCall(const Expr& expr, const Value& input, FrameNode* frame, const Value* first);
    [[nodiscard]] Value EvaluatePartial(const Expr& expr, const Value& input, FrameNode* frame);
    [[nodiscard]] Value EvaluateLambda(const Expr& expr, const Value& input, FrameNode* frame);
    [[nodiscard]] Value EvaluateFunctionName(const Expr& expr, const Value& input, FrameNode* frame);
    [[nodiscard]] Value CallLambda(const FunctionNode& function, std::vector<Value>& arguments, const CallSite& site);
    [[nodiscard]] Value CallTransform(const FunctionNode& function, std::vector<Value>& arguments);
    void ChangeMatch(const Expr& transform, const Value& match, FrameNode* frame);
    [[nodiscard]] Value CallMatcher(const FunctionNode& function, const Value& text);

    void CheckTime();

    Heap heap_;
    JSONataOptions options_;
    std::deque<Symbol> bindingSymbols_;
    std::unordered_map<std::string, ExprPtr> parsedTexts_;
    Ref<StringNode> parsedTextCost_;  // what they are charged to
    std::optional<PendingCall> pending_;
    std::optional<std::chrono::steady_clock::time_point> deadline_;
    std::optional<double> now_;
    std::uintptr_t stackBase_ = 0;
    std::uint32_t depth_ = 0;
    std::uint32_t ticks_ = 0;
};

/// Whether a value counts as true.
[[nodiscard]] bool AsBoolean(const Value& value, Evaluator& evaluator);
/// Deep equality; functions equal nothing but themselves.
[[nodiscard]] bool Equals(const Value& left, const Value& right, Evaluator& evaluator);
/// A hash that equal values have in common.
[[nodiscard]] std::size_t HashOf(const Value& value, Evaluator& evaluator);
/// The text of a value as $string() makes it. Indented by two blanks where `isIndented`.
[[nodiscard]] std::string TextOf(const Value& value, Evaluator& evaluator, bool isIndented = false);
/// A deep copy that the evaluation may change.
[[nodiscard]] Value Clone(const Value& value, Evaluator& evaluator);
/// The value as JSON, bounded in size; nothing for what JSON does not know.
[[nodiscard]] std::optional<JSONValue> ToJSON(const Value& value, Evaluator& evaluator);

/// Nesting that the functions above go into; deeper values are the error U1001.
inline constexpr unsigned int kMaxValueDepth = 1000;

}  // namespace tn61131::jsonata
