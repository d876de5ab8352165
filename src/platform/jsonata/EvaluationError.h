#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/jsonata/Failure.h"

namespace tn61131::jsonata {

/// Where no position is known yet.
inline constexpr std::size_t kNoOffset = static_cast<std::size_t>(-1);

/// What ends the parsing or the evaluation of an expression. Thrown inside this folder, where any of a hundred nested
/// steps may fail, and caught by JSONataExpr: it never reaches a caller.
struct EvaluationError {
    std::string code;
    std::size_t offset = kNoOffset;  ///< filled in by the innermost expression that it passes
    std::string text;
};

/// The text of an error code, its placeholders filled with what is to be quoted.
std::string ErrorText(std::string_view code, std::string_view value = {}, std::string_view detail = {});

[[noreturn]] void Throw(std::string_view code, std::string_view value = {}, std::string_view detail = {});
[[noreturn]] void ThrowAt(std::size_t offset, std::string_view code, std::string_view value = {},
                          std::string_view detail = {});

/// The value of a result, its failure thrown.
template <typename T>
T ValueOrThrow(Result<T> result) {
    if (!result) Throw(result.GetFailure().code, result.GetFailure().value, result.GetFailure().detail);
    return std::move(*result);
}

}  // namespace tn61131::jsonata
