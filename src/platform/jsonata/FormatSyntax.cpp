#include <algorithm>

#include "platform/JSONValue.h"
#include "platform/TextOutput.h"
#include "platform/jsonata/NumberText.h"
#include "platform/jsonata/Syntax.h"
#include "platform/jsonata/Tokenizer.h"

namespace tn61131::jsonata {

namespace {

using Kind = Syntax::Kind;

/// Writes what was parsed token by token. Parentheses are blocks, and so part of the tree: none has to be added.
class SyntaxWriter {
 public:
    [[nodiscard]] std::string TakeText() noexcept { return std::move(text_); }

    void Write(const Syntax& syntax) {
        WriteBare(syntax);
        if (syntax.keepArray) text_ += "[]";
    }

 private:
    void WriteBare(const Syntax& syntax) {
        switch (syntax.kind) {
            case Kind::Missing: break;
            case Kind::Name: WriteName(syntax.text); break;
            case Kind::String: WriteString(syntax.text); break;
            case Kind::Number: text_ += PrintNumber(syntax.number); break;
            case Kind::Constant: text_ += syntax.text; break;
            case Kind::Variable: WriteVariable(syntax.text); break;
            case Kind::Regex: text_ += "/" + syntax.text + "/" + syntax.flags; break;
            case Kind::Wildcard: text_ += "*"; break;
            case Kind::Descendant: text_ += "**"; break;
            case Kind::Parent: text_ += "%"; break;
            case Kind::Placeholder: text_ += "?"; break;
            case Kind::Negate: WriteAfter("-", syntax); break;
            case Kind::Array: WriteList("[", syntax, 0, ", ", "]"); break;
            case Kind::Object: WritePairs(syntax, 0); break;
            case Kind::Block: WriteList("(", syntax, 0, "; ", ")"); break;
            case Kind::Binary: WriteBinary(syntax); break;
            case Kind::Filter: WriteFirst(syntax), WriteList("[", syntax, 1, "", "]"); break;
            case Kind::GroupBy: WriteFirst(syntax), WritePairs(syntax, 1); break;
            case Kind::OrderBy: WriteFirst(syntax), WriteList("^(", syntax, 1, ", ", ")"); break;
            case Kind::SortTerm: WriteAfter(syntax.text == ">" ? ">" : "", syntax); break;
            case Kind::Focus: WriteFirst(syntax), text_ += "@", WriteVariable(syntax.text); break;
            case Kind::Index: WriteFirst(syntax), text_ += "#", WriteVariable(syntax.text); break;
            case Kind::Bind: WriteVariable(syntax.text), WriteAfter(" := ", syntax); break;
            case Kind::Condition: WriteCondition(syntax); break;
            case Kind::Call:
            case Kind::Partial: WriteFirst(syntax), WriteList("(", syntax, 1, ", ", ")"); break;
            case Kind::Lambda: WriteLambda(syntax); break;
            case Kind::Transform: WriteTransform(syntax); break;
        }
    }

    void WriteFirst(const Syntax& syntax) { Write(*syntax.children[0]); }

    void WriteAfter(std::string_view sign, const Syntax& syntax) {
        text_ += sign;
        WriteFirst(syntax);
    }

    void WriteList(std::string_view open, const Syntax& syntax, std::size_t from, std::string_view separator,
                   std::string_view close) {
        text_ += open;
        for (std::size_t i = from; i < syntax.children.size(); ++i) {
            if (i > from) text_ += separator;
            Write(*syntax.children[i]);
        }
        text_ += close;
    }

    void WritePairs(const Syntax& syntax, std::size_t from) {
        text_ += "{";
        for (std::size_t i = from; i < syntax.children.size(); ++i) {
            const bool isValue = (i - from) % 2 == 1;
            if (i > from) text_ += isValue ? ": " : ", ";
            Write(*syntax.children[i]);
        }
        text_ += "}";
    }

    void WriteBinary(const Syntax& syntax) {
        Write(*syntax.children[0]);
        text_ += syntax.text == "." ? "." : " " + syntax.text + " ";
        Write(*syntax.children[1]);
    }

    void WriteCondition(const Syntax& syntax) {
        WriteFirst(syntax);
        text_ += " ? ";
        Write(*syntax.children[1]);
        if (syntax.children.size() < 3) return;
        text_ += " : ";
        Write(*syntax.children[2]);
    }

    void WriteLambda(const Syntax& syntax) {
        text_ += "function(";
        for (std::size_t i = 0; i < syntax.names.size(); ++i) {
            if (i > 0) text_ += ", ";
            WriteVariable(syntax.names[i]);
        }
        text_ += ")" + syntax.text;
        WriteList("{", syntax, 0, "", "}");
    }

    void WriteTransform(const Syntax& syntax) {
        WriteAfter("|", syntax);
        text_ += "|";
        Write(*syntax.children[1]);
        if (syntax.children.size() > 2) {
            text_ += ", ";
            Write(*syntax.children[2]);
        }
        text_ += "|";
    }

    void WriteName(const std::string& name) {
        if (IsPlainName(name)) {
            text_ += name;
        } else {
            text_ += "`" + name + "`";
        }
    }

    void WriteVariable(const std::string& name) { text_ += "$" + name; }

    void WriteString(const std::string& content) {
        CTextOutputString quoted;
        JSONValue(content).Write(quoted);
        text_ += quoted.GetText();
    }

    std::string text_;
};

}  // namespace

bool SameSyntax(const Syntax& left, const Syntax& right) {
    return left.kind == right.kind && left.text == right.text && left.flags == right.flags &&
           left.number == right.number && left.names == right.names && left.keepArray == right.keepArray &&
           std::ranges::equal(left.children, right.children,
                              [](const SyntaxPtr& a, const SyntaxPtr& b) { return SameSyntax(*a, *b); });
}

std::string FormatSyntax(const Syntax& syntax) {
    SyntaxWriter writer;
    writer.Write(syntax);
    return writer.TakeText();
}

}  // namespace tn61131::jsonata
