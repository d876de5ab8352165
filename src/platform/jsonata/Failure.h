#pragma once

#include <cassert>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace tn61131::jsonata {

/// Why an expression has no result: one of the language's error codes ("D3080") and what the code's message quotes.
struct Failure {
    std::string_view code;  ///< a string literal
    std::string value;      ///< the offending text or number, as the message shows it; empty where it shows none
    std::string detail;     ///< a second text of the message; empty where there is none
};

/// What a computation gives: a value, or the failure that stands for it.
template <typename T>
class [[nodiscard]] Result {
 public:
    Result(T value) : content_(std::in_place_index<0>, std::move(value)) {}
    Result(Failure failure) : content_(std::in_place_index<1>, std::move(failure)) {}

    [[nodiscard]] bool IsValue() const noexcept { return content_.index() == 0; }
    explicit operator bool() const noexcept { return IsValue(); }

    /// Only for a value.
    [[nodiscard]] T& operator*() noexcept {
        assert(IsValue());
        return *std::get_if<0>(&content_);
    }
    [[nodiscard]] const T& operator*() const noexcept {
        assert(IsValue());
        return *std::get_if<0>(&content_);
    }
    [[nodiscard]] T* operator->() noexcept { return &**this; }
    [[nodiscard]] const T* operator->() const noexcept { return &**this; }

    /// Only for a failure.
    [[nodiscard]] const Failure& GetFailure() const noexcept {
        assert(!IsValue());
        return *std::get_if<1>(&content_);
    }
    [[nodiscard]] Failure&& TakeFailure() noexcept {
        assert(!IsValue());
        return std::move(*std::get_if<1>(&content_));
    }

 private:
    std::variant<T, Failure> content_;
};

}  // namespace tn61131::jsonata
