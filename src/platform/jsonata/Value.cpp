#include "platform/jsonata/Value.h"

#include <functional>

#include "platform/jsonata/Nodes.h"

namespace tn61131::jsonata {

namespace {

constexpr std::size_t kMembersWorthAnIndex = 12;

}  // namespace

Value::Value(Ref<StringNode> node) noexcept : Value(Tag::String, node.Take()) {}
Value::Value(Ref<ArrayNode> node) noexcept : Value(Tag::Array, node.Take()) {}
Value::Value(Ref<ObjectNode> node) noexcept : Value(Tag::Object, node.Take()) {}
Value::Value(Ref<FunctionNode> node) noexcept : Value(Tag::Function, node.Take()) {}
Value::Value(Ref<TupleNode> node) noexcept : Value(Tag::Tuple, node.Take()) {}

Value Value::OfDocument(const JSONValue& document) noexcept {
    Value value;
    switch (document.GetKind()) {
        case JSONValue::Kind::Null: return Null();
        case JSONValue::Kind::Boolean: return Value(document.GetBoolean());
        case JSONValue::Kind::Number: return Value(document.GetNumber());
        case JSONValue::Kind::String: value.tag_ = Tag::DocumentString; break;
        case JSONValue::Kind::Array: value.tag_ = Tag::DocumentArray; break;
        case JSONValue::Kind::Object: value.tag_ = Tag::DocumentObject; break;
    }
    value.content_.document = &document;
    return value;
}

Value Value::OfText(Heap& heap, std::string text) {
    heap.CheckText(static_cast<double>(text.size()));
    const std::size_t size = text.size();
    Ref<StringNode> node = heap.Make<StringNode>(std::move(text));
    heap.Charge(*node, size);
    return Value(std::move(node));
}

std::string_view Value::GetText() const noexcept {
    return tag_ == Tag::String ? std::string_view(static_cast<const StringNode*>(content_.node)->text)
                               : std::string_view(content_.document->GetString());
}

FunctionNode& Value::GetFunction() const noexcept {
    return *static_cast<FunctionNode*>(content_.node);
}

TupleNode& Value::GetTuple() const noexcept {
    return *static_cast<TupleNode*>(content_.node);
}

ArrayNode* Value::AsArrayNode() const noexcept {
    return tag_ == Tag::Array ? static_cast<ArrayNode*>(content_.node) : nullptr;
}

ObjectNode* Value::AsObjectNode() const noexcept {
    return tag_ == Tag::Object ? static_cast<ObjectNode*>(content_.node) : nullptr;
}

std::size_t Value::GetSize() const noexcept {
    if (const ArrayNode* array = AsArrayNode()) return array->GetSize();
    return content_.document->GetElements().size();
}

Value Value::GetElement(std::size_t index) const {
    if (const ArrayNode* array = AsArrayNode()) return array->GetElement(index);
    return OfDocument(content_.document->GetElements()[index]);
}

std::size_t Value::GetMemberCount() const noexcept {
    if (const ObjectNode* object = AsObjectNode()) return object->members.size();
    return content_.document->GetMembers().size();
}

std::string_view Value::GetMemberName(std::size_t index) const noexcept {
    if (const ObjectNode* object = AsObjectNode()) return object->members[index].name;
    return content_.document->GetMembers()[index].name;
}

Value Value::GetMemberValue(std::size_t index) const {
    if (const ObjectNode* object = AsObjectNode()) return object->members[index].value;
    return OfDocument(content_.document->GetMembers()[index].value);
}

Value Value::FindMember(std::string_view name, Heap& heap) const {
    if (const ObjectNode* object = AsObjectNode()) {
        const std::size_t position = object->Find(name);
        return position == object->members.size() ? Value() : object->members[position].value;
    }
    const JSONValue* member = heap.FindMember(*content_.document, name);
    return member == nullptr ? Value() : OfDocument(*member);
}

void ArrayNode::Materialize() {
    isRange = false;
    heap->Charge(*this, rangeSize * sizeof(Value));
    items.reserve(rangeSize + 1);
    for (std::size_t i = 0; i < rangeSize; ++i)
        items.emplace_back(rangeFirst + static_cast<double>(i));
}

void ArrayNode::Push(Value value) {
    if (isRange) Materialize();
    heap->Charge(*this, sizeof(Value));
    items.push_back(std::move(value));
}

void ArrayNode::Append(const Value& value) {
    if (value.IsUndefined()) return;
    if (!value.IsArray()) return Push(value);
    const std::size_t size = value.GetSize();
    for (std::size_t i = 0; i < size; ++i)
        Push(value.GetElement(i));
}

std::size_t ObjectNode::Find(std::string_view name) const {
    if (!index_.empty()) {
        const auto found = index_.find(std::string(name));
        return found == index_.end() ? members.size() : found->second;
    }
    std::size_t position = 0;
    while (position < members.size() && members[position].name != name)
        ++position;
    return position;
}

void ObjectNode::Index(std::size_t position) {
    if (members.size() < kMembersWorthAnIndex) return;
    if (!index_.empty()) {
        index_.emplace(members[position].name, position);
        return;
    }
    for (std::size_t i = 0; i < members.size(); ++i)
        index_.emplace(members[i].name, i);
}

void ObjectNode::Set(std::string_view name, Value value) {
    const std::size_t position = Find(name);
    if (position < members.size()) {
        members[position].value = std::move(value);
        return;
    }
    heap->Charge(*this, sizeof(ObjectMember) + name.size());
    members.push_back({std::string(name), std::move(value)});
    Index(position);
}

void ObjectNode::Remove(std::string_view name) {
    const std::size_t position = Find(name);
    if (position == members.size()) return;
    members.erase(members.begin() + static_cast<std::ptrdiff_t>(position));
    index_.clear();
    if (!members.empty()) Index(0);
}

Symbol::Symbol(std::string_view name) : text(name), hash(std::hash<std::string_view>()(name)) {}

namespace {

const Value* FindIn(const std::vector<Binding>& bindings, const Symbol& symbol) noexcept {
    for (auto binding = bindings.rbegin(); binding != bindings.rend(); ++binding) {
        if (binding->symbol == &symbol || *binding->symbol == symbol) return &binding->value;
    }
    return nullptr;
}

void BindIn(Node& node, std::vector<Binding>& bindings, const Symbol& symbol, Value value) {
    for (Binding& binding : bindings) {
        if (binding.symbol == &symbol || *binding.symbol == symbol) {
            binding.value = std::move(value);
            return;
        }
    }
    node.heap->Charge(node, sizeof(Binding));
    bindings.push_back({&symbol, std::move(value)});
}

}  // namespace

void TupleNode::Bind(const Symbol& symbol, Value value) {
    BindIn(*this, bindings, symbol, std::move(value));
}

const Value* TupleNode::Find(const Symbol& symbol) const noexcept {
    return FindIn(bindings, symbol);
}

void FrameNode::Bind(const Symbol& symbol, Value value) {
    BindIn(*this, bindings, symbol, std::move(value));
}

const Value* FrameNode::Find(const Symbol& symbol) const noexcept {
    for (const FrameNode* frame = this; frame != nullptr; frame = frame->parent.Get()) {
        if (const Value* value = FindIn(frame->bindings, symbol)) return value;
        if (!frame->tuple) continue;
        if (const Value* value = frame->tuple->Find(symbol)) return value;
    }
    return nullptr;
}

}  // namespace tn61131::jsonata
