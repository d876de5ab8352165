#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tn61131::jsonata {

struct Token {
    enum class Kind : std::uint8_t { End, Name, Variable, String, Number, Constant, Regex, Operator };

    Kind kind = Kind::End;
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string text;   ///< the name, the content of a string, the body of a regular expression, the operator
    std::string flags;  ///< of a regular expression
    double number = 0;

    [[nodiscard]] bool IsOperator(std::string_view name) const noexcept {
        return kind == Kind::Operator && text == name;
    }
};

/// Splits the text of an expression. Throws the errors S0101 to S0106, S0301, S0302 with their position.
class Tokenizer {
 public:
    /// Whether `/` begins a regular expression or divides.
    enum class Expect : std::uint8_t { Operand, Operator };

    explicit Tokenizer(std::string_view text) noexcept : text_(text) {}

    [[nodiscard]] std::string_view GetText() const noexcept { return text_; }
    [[nodiscard]] Token Read(std::size_t from, Expect expect) const;
    /// Where the type signature that begins at `from` with "<" ends.
    [[nodiscard]] std::size_t EndOfSignature(std::size_t from) const;

 private:
    [[nodiscard]] std::size_t SkipBlanks(std::size_t from) const;
    [[nodiscard]] char At(std::size_t index) const noexcept { return index < text_.size() ? text_[index] : '\0'; }
    [[nodiscard]] Token ReadString(std::size_t from) const;
    [[nodiscard]] Token ReadNumber(std::size_t from) const;
    [[nodiscard]] Token ReadRegex(std::size_t from) const;
    [[nodiscard]] Token ReadName(std::size_t from) const;
    [[nodiscard]] Token ReadQuotedName(std::size_t from) const;
    [[nodiscard]] char32_t ReadHexEscape(std::size_t at) const;

    std::string_view text_;
};

/// Whether a name can be written without quotes.
[[nodiscard]] bool IsPlainName(std::string_view name) noexcept;

}  // namespace tn61131::jsonata
