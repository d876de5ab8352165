#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tn61131::jsonata {

class Signature;
struct Syntax;
using SyntaxPtr = std::unique_ptr<Syntax>;

/// An expression as it is written, before paths are put together and parents resolved.
struct Syntax {
    enum class Kind : std::uint8_t {
        Missing,      ///< the end of the text where an operand should be; refused by whoever needs more, or at last
        Name,         ///< `text`
        String,       ///< `text`
        Number,       ///< `number`
        Constant,     ///< `text`: true, false, null
        Variable,     ///< `text`, without the $
        Regex,        ///< `text` between the slashes, `flags`
        Wildcard,     // *
        Descendant,   // **
        Parent,       // %
        Placeholder,  ///< ? in the arguments of a partial application
        Negate,       ///< - child
        Array,        ///< [children]
        Object,       ///< {children: names and values by turns}
        Block,        ///< (children)
        Binary,       ///< child `text` child; `text` is the operator
        Filter,       ///< child[child]
        GroupBy,      ///< child{other children: names and values by turns}
        OrderBy,      ///< child^(other children: SortTerm)
        SortTerm,     ///< child, `text` ">" for descending, else "<"
        Focus,        ///< child@$text
        Index,        ///< child#$text
        Bind,         ///< $text := child
        Condition,    ///< child ? child : child, the last may be absent
        Call,         ///< child(other children)
        Partial,      ///< the same with at least one placeholder
        Lambda,       ///< function(names)signature{child}; the signature in `text`
        Transform     ///< |child|child, child|, the last may be absent
    };

    Kind kind = Kind::Name;
    std::size_t offset = 0;  ///< of the token that makes the expression, in bytes
    std::string text;
    std::string flags;
    double number = 0;
    std::vector<SyntaxPtr> children;
    std::vector<std::string> names;
    std::shared_ptr<const Signature> signature;  ///< of a lambda that has one
    bool keepArray = false;                      ///< followed by []
    std::uint32_t depth = 1;
};

/// Whether two expressions are the same but for positions.
[[nodiscard]] bool SameSyntax(const Syntax& left, const Syntax& right);
/// The expression in its normalized form.
[[nodiscard]] std::string FormatSyntax(const Syntax& syntax);

}  // namespace tn61131::jsonata
