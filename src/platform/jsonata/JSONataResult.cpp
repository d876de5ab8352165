#include <utility>

#include "platform/JSONataExpr.h"

JSONataResult::JSONataResult() noexcept = default;
JSONataResult::JSONataResult(JSONataResult&&) noexcept = default;
JSONataResult& JSONataResult::operator=(JSONataResult&&) noexcept = default;
JSONataResult::~JSONataResult() = default;

JSONataResult JSONataResult::OfReference(const JSONValue& value) noexcept {
    JSONataResult result;
    result.outcome_ = Outcome::Value;
    result.reference_ = &value;
    return result;
}

JSONataResult JSONataResult::OfValue(JSONValue value) noexcept {
    JSONataResult result;
    result.outcome_ = Outcome::Value;
    result.value_ = std::move(value);
    return result;
}

JSONataResult JSONataResult::OfError(std::string code, std::size_t offset, std::string text) noexcept {
    JSONataResult result;
    result.outcome_ = Outcome::Error;
    result.errorCode_ = std::move(code);
    result.errorOffset_ = offset;
    result.errorText_ = std::move(text);
    return result;
}

JSONValue JSONataResult::TakeValue() {
    if (reference_ != nullptr) return *reference_;
    return std::move(value_);
}
