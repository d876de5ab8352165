#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "platform/jsonata/Signature.h"
#include "platform/jsonata/Value.h"

namespace tn61131::jsonata {

class Evaluator;
struct CallSite;

/// One call of a function of the library, its arguments as the signature has made them.
struct NativeCall {
    Evaluator& evaluator;
    std::vector<Value>& arguments;
    const CallSite& site;

    /// An argument; undefined where it was left out.
    [[nodiscard]] const Value& operator[](std::size_t index) const noexcept;
    /// Calls a function that was given as an argument; there is no context that could stand for missing ones.
    [[nodiscard]] Value Invoke(const Value& function, std::vector<Value> values) const;
    /// Calls it with as many of a value, its position or name, and what it is part of as the function takes.
    [[nodiscard]] Value InvokeFor(const Value& function, const Value& value, const Value& position,
                                  const Value& whole) const;
};

using NativeFunction = Value (*)(NativeCall& call);

/// A function of the library.
struct FunctionInfo {
    std::string_view name;  ///< without the $
    std::string_view signature;
    std::size_t arity;  ///< arguments that a function which calls it back, as $map() does, passes at most
    NativeFunction body;
    bool readsVariables = false;  ///< by name, those of its caller
};

/// All functions, in the order of the language's documentation.
[[nodiscard]] std::span<const FunctionInfo> AllFunctions() noexcept;
/// The function of a name; null where there is none.
[[nodiscard]] const FunctionInfo* FindFunction(std::string_view name);
[[nodiscard]] const Signature& SignatureOf(const FunctionInfo& function);
/// The number of arguments that a function value takes.
[[nodiscard]] std::size_t ArityOf(const Value& function);

}  // namespace tn61131::jsonata
