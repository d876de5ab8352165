#include "platform/JSONValue.h"

#include <algorithm>

JSONValue::JSONValue() noexcept = default;
JSONValue::JSONValue(bool value) noexcept : content_(value) {}
JSONValue::JSONValue(double value) noexcept : content_(value) {}
JSONValue::JSONValue(std::string text) noexcept : content_(std::move(text)) {}
JSONValue::JSONValue(const char* text) : content_(std::string(text)) {}
JSONValue::JSONValue(Array elements) noexcept : content_(std::move(elements)) {}
JSONValue::JSONValue(Object members) noexcept : content_(std::move(members)) {}
JSONValue::JSONValue(const JSONValue& other) = default;
JSONValue::JSONValue(JSONValue&& other) noexcept = default;
JSONValue& JSONValue::operator=(const JSONValue& other) = default;
JSONValue& JSONValue::operator=(JSONValue&& other) noexcept = default;
JSONValue::~JSONValue() = default;

namespace {

// The content of one kind, or an empty one that lives forever.
template <typename T, typename Content>
const T& GetOrEmpty(const Content& content) noexcept {
    static const T kEmpty{};
    const T* found = std::get_if<T>(&content);
    return found != nullptr ? *found : kEmpty;
}

}  // namespace

bool JSONValue::GetBoolean() const noexcept {
    return GetOrEmpty<bool>(content_);
}

double JSONValue::GetNumber() const noexcept {
    return GetOrEmpty<double>(content_);
}

const std::string& JSONValue::GetString() const noexcept {
    return GetOrEmpty<std::string>(content_);
}

const JSONValue::Array& JSONValue::GetElements() const noexcept {
    return GetOrEmpty<Array>(content_);
}

const JSONValue::Object& JSONValue::GetMembers() const noexcept {
    return GetOrEmpty<Object>(content_);
}

const JSONValue* JSONValue::Find(std::string_view name) const noexcept {
    const Object& members = GetMembers();
    const auto found =
        std::find_if(members.rbegin(), members.rend(), [&](const JSONMember& member) { return member.name == name; });
    return found != members.rend() ? &found->value : nullptr;
}

bool operator==(const JSONValue& left, const JSONValue& right) {
    return left.content_ == right.content_;
}

JSONValue* JSONValue::ParseProperty(JSONParseContext& context) {
    Owner value(new JSONValue());
    return value->Parse(context) ? value.release() : nullptr;
}

void JSONValue::Release() noexcept {
    delete this;
}
