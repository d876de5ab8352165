#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/jsonata/Value.h"

namespace tn61131::jsonata {

class Regex;
struct Expr;
struct FrameNode;
struct FunctionInfo;
struct Symbol;

struct StringNode final : Node {
    StringNode(Heap& heap, std::string content) noexcept : Node(heap), text(std::move(content)) {}
    void Clear() noexcept override {}

    std::string text;
};

/// An array that the evaluation made. A range is kept as its first number and its size until somebody adds to it.
struct ArrayNode final : Node {
    explicit ArrayNode(Heap& heap) noexcept : Node(heap) {}
    void Clear() noexcept override { items.clear(); }

    [[nodiscard]] std::size_t GetSize() const noexcept { return isRange ? rangeSize : items.size(); }
    [[nodiscard]] Value GetElement(std::size_t index) const {
        return isRange ? Value(rangeFirst + static_cast<double>(index)) : items[index];
    }
    void Push(Value value);
    /// Adds the elements of an array, or the value itself where it is none; nothing for an undefined one.
    void Append(const Value& value);
    void Reserve(std::size_t count) { items.reserve(count); }

    std::vector<Value> items;
    double rangeFirst = 0;
    std::size_t rangeSize = 0;
    bool isRange = false;
    /// The result of a path or of a function that selects: one element stands for itself, none for no value.
    bool isSequence = false;
    /// A sequence that stays an array when it has one element.
    bool keepSingleton = false;
    /// Written as an array constructor in a path: steps do not take it apart.
    bool isConstructed = false;
    bool isTupleStream = false;
    /// The sequence of one element that stands for an input that is an array.
    bool isInputWrapper = false;

 private:
    void Materialize();
};

struct ObjectMember {
    std::string name;
    Value value;
};

/// An object that the evaluation made; members in the order in which they were first set.
struct ObjectNode final : Node {
    explicit ObjectNode(Heap& heap) noexcept : Node(heap) {}
    void Clear() noexcept override { members.clear(); }

    /// The position of a member, the number of members where there is none.
    [[nodiscard]] std::size_t Find(std::string_view name) const;
    void Set(std::string_view name, Value value);
    void Remove(std::string_view name);

    std::vector<ObjectMember> members;

 private:
    void Index(std::size_t position);

    std::unordered_map<std::string, std::size_t> index_;  // only filled for objects of many members
};

/// The name of a variable with its hash.
struct Symbol {
    Symbol() = default;
    explicit Symbol(std::string_view name);
    friend bool operator==(const Symbol& left, const Symbol& right) noexcept {
        return left.hash == right.hash && left.text == right.text;
    }

    std::string text;
    std::size_t hash = 0;
};

/// A variable's value. The symbol belongs to the expression.
struct Binding {
    const Symbol* symbol;
    Value value;
};

/// One element of a stream of tuples: the item and the variables bound on the way to it.
struct TupleNode final : Node {
    explicit TupleNode(Heap& heap) noexcept : Node(heap) {}
    void Clear() noexcept override {
        item = Value();
        bindings.clear();
    }
    void Bind(const Symbol& symbol, Value value);
    [[nodiscard]] const Value* Find(const Symbol& symbol) const noexcept;

    Value item;
    std::vector<Binding> bindings;
};

/// The variables of a block, of a function's call or of a tuple.
struct FrameNode final : Node {
    FrameNode(Heap& heap, Ref<FrameNode> outer) noexcept : Node(heap), parent(std::move(outer)) {}
    void Clear() noexcept override {
        parent = Ref<FrameNode>();
        tuple = Ref<TupleNode>();
        bindings.clear();
    }
    void Bind(const Symbol& symbol, Value value);
    /// The innermost value of a variable; null where none is bound.
    [[nodiscard]] const Value* Find(const Symbol& symbol) const noexcept;

    Ref<FrameNode> parent;
    Ref<TupleNode> tuple;  ///< whose variables are seen as well
    std::vector<Binding> bindings;
};

/// Something that can be called.
struct FunctionNode final : Node {
    enum class Kind : std::uint8_t {
        Native,       ///< `info`
        Lambda,       ///< `expression`, a lambda, in `frame` with the context `input`
        Transform,    ///< `expression`, a transform, in `frame`
        Partial,      ///< `target` called with `arguments`, those of `holes` filled in
        Composition,  ///< `second` of `target` of the argument
        Matcher,      ///< `regex`, searched in the argument
        NextMatch     ///< `regex`, searched in the text `input` from the byte `from` on, its UTF-16 unit `fromUnit`
    };

    FunctionNode(Heap& heap, Kind what) noexcept : Node(heap), kind(what) {}
    void Clear() noexcept override {
        frame = Ref<FrameNode>();
        input = target = second = Value();
        arguments.clear();
    }

    Kind kind;
    const FunctionInfo* info = nullptr;
    const Expr* expression = nullptr;
    Ref<FrameNode> frame;
    Value input;
    Value target;
    Value second;
    std::vector<Value> arguments;
    std::vector<bool> holes;
    std::shared_ptr<const Regex> regex;
    std::size_t from = 0;
    std::size_t fromUnit = 0;
};

}  // namespace tn61131::jsonata
