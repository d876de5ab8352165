#include "platform/JSONValue.h"

#include <algorithm>

#include "platform/ErrorLog.h"
#include "platform/FormatText.h"

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

void JSONParseContext::ReportError(std::size_t offset, std::string_view reason) const {
    const std::string_view before = text_.substr(0, offset);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::size_t lineEnd = before.rfind('\n');
    const std::string_view inLine = before.substr(lineEnd == std::string_view::npos ? 0 : lineEnd + 1);
    const auto isCharacterStart = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; };
    const auto column = 1 + std::count_if(inLine.begin(), inLine.end(), isCharacterStart);
    log_.LogError(FormatText("JSON, line %lld, column %lld: %s", line, column, reason));
}
