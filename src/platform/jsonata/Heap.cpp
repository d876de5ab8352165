#include "platform/jsonata/Heap.h"

#include "platform/JSONValue.h"
#include "platform/jsonata/EvaluationError.h"

namespace tn61131::jsonata {

namespace {

constexpr std::size_t kMembersWorthAnIndex = 32;

}  // namespace

Heap::~Heap() {
    // What is left hangs together in cycles. Every node is pinned while all of them let go of each other.
    for (Node* node = first_; node != nullptr; node = node->next)
        ++node->references;
    for (Node* node = first_; node != nullptr; node = node->next)
        node->Clear();
    while (first_ != nullptr) {
        const std::unique_ptr<Node> node(first_);
        first_ = node->next;
    }
}

void Heap::ThrowExhausted() const {
    Throw("U1002", std::to_string(maxBytes_));
}

void Heap::ThrowTextTooLong() const {
    Throw("U1003", std::to_string(maxTextBytes_));
}

void Heap::Link(Node& node) noexcept {
    node.next = first_;
    if (first_ != nullptr) first_->previous = &node;
    first_ = &node;
}

void Heap::Unlink(Node& node) noexcept {
    if (node.previous != nullptr) node.previous->next = node.next;
    if (node.next != nullptr) node.next->previous = node.previous;
    if (first_ == &node) first_ = node.next;
}

void Heap::Retire(Node& node) noexcept {
    Unlink(node);
    node.next = retired_;
    retired_ = &node;
    if (freeing_) return;
    freeing_ = true;
    while (retired_ != nullptr) {
        const std::unique_ptr<Node> dead(retired_);
        retired_ = dead->next;
        used_ -= dead->charged;
        dead->Clear();
    }
    freeing_ = false;
}

const JSONValue* Heap::FindMember(const JSONValue& object, std::string_view name) {
    const JSONValue::Object& members = object.GetMembers();
    if (members.size() < kMembersWorthAnIndex) return object.Find(name);
    const auto [entry, isFirst] = indexes_.try_emplace(&object);
    if (isFirst) return object.Find(name);
    MemberIndex& index = entry->second;
    if (!index.filled) {
        index.members.reserve(members.size());
        for (const JSONMember& member : members)
            index.members[member.name] = &member.value;
        index.filled = true;
    }
    const auto found = index.members.find(name);
    return found == index.members.end() ? nullptr : found->second;
}

}  // namespace tn61131::jsonata
