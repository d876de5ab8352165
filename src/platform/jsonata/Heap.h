#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>

class JSONValue;

namespace tn61131::jsonata {

class Heap;

/// What an evaluation allocates. Every node is in the list of its heap, so that cycles, which closures and their
/// variables form, go with the heap.
struct Node {
    explicit Node(Heap& owner) noexcept : heap(&owner) {}
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    virtual ~Node() = default;
    /// Lets go of every other node.
    virtual void Clear() noexcept = 0;

    Heap* heap;
    Node* previous = nullptr;
    Node* next = nullptr;
    std::size_t charged = 0;  ///< bytes counted for this node
    std::uint32_t references = 0;
};

/// A counted reference to a node; may be null.
template <typename T>
class Ref;

/// The nodes of one evaluation, bounded in bytes. Nodes that nobody refers to any more are freed at once, without
/// recursion; all others with the heap.
class Heap {
 public:
    Heap(std::size_t maxBytes, std::size_t maxTextBytes) noexcept : maxBytes_(maxBytes), maxTextBytes_(maxTextBytes) {}
    Heap(const Heap&) = delete;
    Heap& operator=(const Heap&) = delete;
    ~Heap();

    template <typename T, typename... Args>
    Ref<T> Make(Args&&... args) {
        auto node = std::make_unique<T>(*this, std::forward<Args>(args)...);
        Charge(*node, sizeof(T));
        Link(*node);
        return Ref<T>(node.release());
    }
    /// Counts more bytes for a node. Throws U1002 beyond the bound.
    void Charge(Node& node, std::size_t bytes) {
        if (bytes > maxBytes_ - used_) ThrowExhausted();
        used_ += bytes;
        node.charged += bytes;
    }
    /// Throws U1003 for a text longer than one text may be.
    void CheckText(double bytes) const {
        if (bytes > static_cast<double>(maxTextBytes_)) ThrowTextTooLong();
    }
    [[nodiscard]] std::size_t GetMaxText() const noexcept { return maxTextBytes_; }
    static void Release(Node* node) noexcept {
        if (--node->references == 0) node->heap->Retire(*node);
    }
    /// The member of a document's object, null where there is none. Objects of many members are indexed when they are
    /// asked a second time.
    const JSONValue* FindMember(const JSONValue& object, std::string_view name);

 private:
    struct MemberIndex {
        std::unordered_map<std::string_view, const JSONValue*> members;
        bool filled = false;
    };

    [[noreturn]] void ThrowExhausted() const;
    [[noreturn]] void ThrowTextTooLong() const;
    void Link(Node& node) noexcept;
    void Unlink(Node& node) noexcept;
    void Retire(Node& node) noexcept;

    std::size_t maxBytes_;
    std::size_t maxTextBytes_;
    std::size_t used_ = 0;
    Node* first_ = nullptr;
    Node* retired_ = nullptr;
    bool freeing_ = false;
    std::unordered_map<const JSONValue*, MemberIndex> indexes_;
};

template <typename T>
class Ref {
 public:
    Ref() noexcept = default;
    explicit Ref(T* node) noexcept : node_(node) {
        if (node_ != nullptr) ++node_->references;
    }
    Ref(const Ref& other) noexcept : Ref(other.node_) {}
    Ref(Ref&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
        std::swap(node_, other.node_);
        return *this;
    }
    ~Ref() {
        if (node_ != nullptr) Heap::Release(node_);
    }

    [[nodiscard]] T* Get() const noexcept { return node_; }
    T* operator->() const noexcept { return node_; }
    T& operator*() const noexcept { return *node_; }
    explicit operator bool() const noexcept { return node_ != nullptr; }
    /// Gives the counted reference to the caller.
    [[nodiscard]] T* Take() noexcept { return std::exchange(node_, nullptr); }

 private:
    T* node_ = nullptr;
};

}  // namespace tn61131::jsonata
