#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/jsonata/Value.h"

namespace tn61131::jsonata {

/// The types of a function's arguments, as the language writes them: "<s-nn?:s>".
class Signature {
 public:
    /// Throws S0401 and S0402 for type parameters where none may be.
    [[nodiscard]] static std::shared_ptr<const Signature> Parse(std::string_view text);

    /// The arguments of a call as the function takes them: the context in place of one left out, a single value made
    /// an array. Throws T0410 to T0412, which quote the argument's number and the function's name.
    void Apply(std::vector<Value>& arguments, const Value& context, std::string_view function, Heap& heap) const;
    [[nodiscard]] std::size_t GetParameterCount() const noexcept { return parameters_.size(); }
    [[nodiscard]] const std::string& GetText() const noexcept { return text_; }

 private:
    struct Parameter {
        std::string types;     ///< the letters of the types that it takes
        char elementType = 0;  ///< of an array's elements; 0 for any
        bool isArray = false;  ///< a single value is made an array
        bool takesContext = false;
        bool isOptional = false;
        bool repeats = false;
    };

    [[nodiscard]] bool Match(std::string_view supplied, std::size_t parameter, std::size_t argument,
                             std::vector<std::size_t>& counts, std::size_t& furthest, unsigned int& steps) const;
    void CheckElements(const Parameter& parameter, const Value& argument, std::size_t number,
                       std::string_view function) const;

    std::string text_;
    std::vector<Parameter> parameters_;
};

}  // namespace tn61131::jsonata
