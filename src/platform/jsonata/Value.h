#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/JSONValue.h"
#include "platform/jsonata/Heap.h"

namespace tn61131::jsonata {

struct ArrayNode;
struct FunctionNode;
struct ObjectNode;
struct StringNode;
struct TupleNode;

/// What an expression evaluates to. Texts, arrays and objects of a document are referred to where they are; what the
/// evaluation makes itself lives in nodes of its heap, counted by their references. 16 bytes.
class Value {
 public:
    enum class Tag : std::uint8_t {
        Undefined,
        Null,
        Boolean,
        Number,
        LiteralString,  ///< a text of the expression
        DocumentString,
        DocumentArray,
        DocumentObject,
        // From here on nodes of the heap.
        String,
        Array,
        Object,
        Function,
        Tuple  ///< an element of a stream of tuples; never seen by functions
    };

    Value() noexcept : tag_(Tag::Undefined) { content_.document = nullptr; }
    explicit Value(bool value) noexcept : tag_(Tag::Boolean) { content_.boolean = value; }
    explicit Value(double value) noexcept : tag_(Tag::Number) { content_.number = value; }
    explicit Value(Ref<StringNode> node) noexcept;
    explicit Value(Ref<ArrayNode> node) noexcept;
    explicit Value(Ref<ObjectNode> node) noexcept;
    explicit Value(Ref<FunctionNode> node) noexcept;
    explicit Value(Ref<TupleNode> node) noexcept;
    Value(const Value& other) noexcept : tag_(other.tag_), content_(other.content_) {
        if (IsNode()) ++content_.node->references;
    }
    Value(Value&& other) noexcept : tag_(std::exchange(other.tag_, Tag::Undefined)), content_(other.content_) {}
    Value& operator=(const Value& other) noexcept {
        Value copy(other);
        Swap(copy);
        return *this;
    }
    Value& operator=(Value&& other) noexcept {
        Swap(other);
        return *this;
    }
    ~Value() {
        if (IsNode()) Heap::Release(content_.node);
    }

    static Value Null() noexcept {
        Value null;
        null.tag_ = Tag::Null;
        return null;
    }
    /// A value of a document; the document is referred to.
    static Value OfDocument(const JSONValue& document) noexcept;
    /// A text of the expression; it is referred to.
    static Value OfLiteral(const JSONValue& text) noexcept {
        Value value;
        value.tag_ = Tag::LiteralString;
        value.content_.document = &text;
        return value;
    }
    static Value OfText(Heap& heap, std::string text);

    [[nodiscard]] Tag GetTag() const noexcept { return tag_; }
    [[nodiscard]] bool IsUndefined() const noexcept { return tag_ == Tag::Undefined; }
    [[nodiscard]] bool IsNull() const noexcept { return tag_ == Tag::Null; }
    [[nodiscard]] bool IsBoolean() const noexcept { return tag_ == Tag::Boolean; }
    [[nodiscard]] bool IsNumber() const noexcept { return tag_ == Tag::Number; }
    [[nodiscard]] bool IsString() const noexcept {
        return tag_ == Tag::String || tag_ == Tag::DocumentString || tag_ == Tag::LiteralString;
    }
    [[nodiscard]] bool IsArray() const noexcept { return tag_ == Tag::Array || tag_ == Tag::DocumentArray; }
    [[nodiscard]] bool IsObject() const noexcept { return tag_ == Tag::Object || tag_ == Tag::DocumentObject; }
    [[nodiscard]] bool IsFunction() const noexcept { return tag_ == Tag::Function; }
    [[nodiscard]] bool IsTuple() const noexcept { return tag_ == Tag::Tuple; }

    // Each only for a value of that kind.
    [[nodiscard]] bool GetBoolean() const noexcept { return content_.boolean; }
    [[nodiscard]] double GetNumber() const noexcept { return content_.number; }
    [[nodiscard]] std::string_view GetText() const noexcept;
    [[nodiscard]] const JSONValue& GetDocument() const noexcept { return *content_.document; }
    [[nodiscard]] FunctionNode& GetFunction() const noexcept;
    [[nodiscard]] TupleNode& GetTuple() const noexcept;

    /// The array that the evaluation made; null for any other value.
    [[nodiscard]] ArrayNode* AsArrayNode() const noexcept;
    [[nodiscard]] ObjectNode* AsObjectNode() const noexcept;

    // An array of either origin.
    [[nodiscard]] std::size_t GetSize() const noexcept;
    [[nodiscard]] Value GetElement(std::size_t index) const;

    // An object of either origin.
    [[nodiscard]] std::size_t GetMemberCount() const noexcept;
    [[nodiscard]] std::string_view GetMemberName(std::size_t index) const noexcept;
    [[nodiscard]] Value GetMemberValue(std::size_t index) const;
    /// The value of a member, undefined where there is none.
    [[nodiscard]] Value FindMember(std::string_view name, Heap& heap) const;

 private:
    union Content {
        bool boolean;
        double number;
        const JSONValue* document;
        Node* node;
    };

    Value(Tag tag, Node* node) noexcept : tag_(tag) { content_.node = node; }
    [[nodiscard]] bool IsNode() const noexcept { return tag_ >= Tag::String; }
    void Swap(Value& other) noexcept {
        std::swap(tag_, other.tag_);
        std::swap(content_, other.content_);
    }

    Tag tag_;
    Content content_;
};

}  // namespace tn61131::jsonata
