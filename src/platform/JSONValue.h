#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/Export.h"

class COutputLog;
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
/// ..."). The text is taken strictly by RFC 8259: no comments, no trailing commas, no byte-order mark, valid UTF-8
/// only, no escaped surrogates without their partner. Numbers beyond the range of a double and nesting deeper than
/// kMaxDepth are refused.
class TN61131_API JSONParseContext {
 public:
    static constexpr std::size_t kMaxDepth = 1000;

    JSONParseContext(std::string_view text, COutputLog& log) noexcept : text_(text), log_(log) {}

    [[nodiscard]] std::string_view GetText() const noexcept { return text_; }
    [[nodiscard]] COutputLog& GetLog() const noexcept { return log_; }
    /// The byte offset at which the next token begins to be read, from 0 to the text's length (what is beyond is cut to
    /// it). Parse() reads from the start of the text wherever it stands.
    [[nodiscard]] std::size_t GetPosition() const noexcept { return position_; }
    void SetPosition(std::size_t position) noexcept { position_ = position < text_.size() ? position : text_.size(); }
    /// Reports an error at a byte offset of the text. Lines and columns count from 1, columns in characters.
    void ReportError(std::size_t offset, std::string_view reason) const;

 private:
    std::string_view text_;
    COutputLog& log_;
    std::size_t position_ = 0;
};
