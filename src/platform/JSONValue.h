#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/Export.h"
#include "platform/ParseContext.h"

class CTextOutput;
class JSONParseContext;
struct JSONMember;

/// A JSON value (RFC 8259) that owns what it contains. Texts are UTF-8, numbers doubles; an object keeps its members in
/// the order of the text, members of the same name included.
class TN61131_API JSONValue {
 public:
    enum class Kind : std::uint8_t { Null, Boolean, Number, String, Array, Object };
    using Array = std::vector<JSONValue>;
    using Object = std::vector<JSONMember>;

    JSONValue() noexcept;
    explicit JSONValue(bool value) noexcept;
    explicit JSONValue(double value) noexcept;
    explicit JSONValue(std::string text) noexcept;
    explicit JSONValue(const char* text);
    explicit JSONValue(Array elements) noexcept;
    explicit JSONValue(Object members) noexcept;
    JSONValue(const JSONValue& other);
    JSONValue(JSONValue&& other) noexcept;
    JSONValue& operator=(const JSONValue& other);
    JSONValue& operator=(JSONValue&& other) noexcept;
    ~JSONValue();

    [[nodiscard]] Kind GetKind() const noexcept { return static_cast<Kind>(content_.index()); }
    [[nodiscard]] bool IsNull() const noexcept { return GetKind() == Kind::Null; }
    [[nodiscard]] bool IsBoolean() const noexcept { return GetKind() == Kind::Boolean; }
    [[nodiscard]] bool IsNumber() const noexcept { return GetKind() == Kind::Number; }
    [[nodiscard]] bool IsString() const noexcept { return GetKind() == Kind::String; }
    [[nodiscard]] bool IsArray() const noexcept { return GetKind() == Kind::Array; }
    [[nodiscard]] bool IsObject() const noexcept { return GetKind() == Kind::Object; }

    // The content; false, 0, or empty for a value of another kind.
    [[nodiscard]] bool GetBoolean() const noexcept;
    [[nodiscard]] double GetNumber() const noexcept;
    [[nodiscard]] const std::string& GetString() const noexcept;
    [[nodiscard]] const Array& GetElements() const noexcept;
    [[nodiscard]] const Object& GetMembers() const noexcept;
    /// The value of a member; of the last one where several have the name, null where none has it.
    [[nodiscard]] const JSONValue* Find(std::string_view name) const noexcept;

    /// Reads a whole text that holds one value and nothing else. On failure one error is reported to the context's log
    /// and the value is unchanged.
    [[nodiscard]] bool Parse(JSONParseContext& context);
    /// The same into a new value, which the caller ends with Release(); null on failure.
    [[nodiscard]] static JSONValue* ParseProperty(JSONParseContext& context);
    /// Deletes a value that ParseProperty() made.
    void Release() noexcept;
    struct Releaser {
        void operator()(JSONValue* value) const noexcept { value->Release(); }
    };
    using Owner = std::unique_ptr<JSONValue, Releaser>;
    /// Writes JSON without white space. Numbers print the shortest digits that read back to the same value, whole ones
    /// below 10^21 without a fraction or exponent; infinities and NaN, which JSON does not know, as null. Bytes that
    /// are not valid UTF-8 are passed on.
    void Write(CTextOutput& output) const;

    friend bool operator==(const JSONValue& left, const JSONValue& right);

 private:
    std::variant<std::monostate, bool, double, std::string, Array, Object> content_;
};

/// One member of an object.
struct JSONMember {
    std::string name;
    JSONValue value;

    friend bool operator==(const JSONMember&, const JSONMember&) = default;
};

/// A JSON text to be read, which the caller keeps alive, and the log that takes its errors ("JSON, line 3, column 7:
/// ..."; with a file name "NAME(3,7): error: ..."). The text is taken strictly by RFC 8259: no comments, no trailing
/// commas, no byte-order mark, valid UTF-8 only, no escaped surrogates without their partner. Numbers beyond the range
/// of a double and nesting deeper than kMaxDepth are refused.
///
/// JSONValue reads the whole text at once. Languages with JSON's tokens read it token by token instead.
class TN61131_API JSONParseContext : public CParseContext {
 public:
    static constexpr std::size_t kMaxDepth = 1000;

    // Types of tokens beside the elementary ones.
    static constexpr int kString =
        CParseToken::kFirstCompoundType;  ///< in double quotes; its text has quotes and escapes
    static constexpr int kInteger = CParseToken::kFirstCompoundType + 1;  ///< digits, with or without a minus sign
    static constexpr int kReal = CParseToken::kFirstCompoundType + 2;     ///< a number with a fraction or an exponent

    JSONParseContext(std::string_view text, COutputLog& log) noexcept : CParseContext(text, &log) {}
    ~JSONParseContext() override;

    [[nodiscard]] COutputLog& GetLog() noexcept { return GetOutputLog(); }
    /// The byte offset at which the next token begins to be read, from 0 to the text's length. What is set must not lie
    /// inside a character; what is beyond the end is cut to it. Parse() reads from the start wherever it stands.
    [[nodiscard]] std::size_t GetPosition() const noexcept { return GetTextPosition().offset; }
    void SetPosition(std::size_t position) noexcept;
    /// The next token behind white space, at the end of the text kEndOfInput: an identifier (letters, digits and
    /// underscores that begin with no digit), a string, an integer, a real, or a single character. A string that is not
    /// closed reaches to the end of the text and is marked as not terminated.
    void GetNextJSONToken(CParseToken& token);
    /// Reports an error at a byte offset of the text. Lines and columns count from 1, columns in characters.
    void ReportError(std::size_t offset, std::string_view reason);
};
