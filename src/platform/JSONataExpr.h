#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/JSONValue.h"

class COutputLog;
class CTextOutput;

/// What one evaluation may cost. A limit reached ends the evaluation with an error.
struct JSONataLimits {
    /// Nested evaluations; a tail call takes none. Above 10000 counts as 10000. Error U1001.
    std::uint32_t maxDepth = 2000;
    /// Milliseconds of wall clock; 0 for no limit. Error U1001.
    std::uint32_t maxTimeMs = 5000;
    /// Bytes held by intermediate values at one time. Error U1002.
    std::size_t maxMemory = std::size_t{256} << 20;
    /// Bytes of the result, as JSON text, and of every single text made on the way. Error U1003.
    std::size_t maxOutput = std::size_t{64} << 20;
};

/// What an evaluation gets besides its input.
struct JSONataOptions {
    JSONataLimits limits;
    /// An object whose members are variables of the expression, named without the `$`; may be null. Must live as long
    /// as the result.
    const JSONValue* bindings = nullptr;
    /// What $now() and $millis() read: milliseconds since 1970-01-01T00:00:00Z; the system clock where not given.
    std::optional<std::int64_t> nowMs;
};

/// What an evaluation ended with. A value that is a part of the input (or of the bindings) is referred to and not
/// copied: the result must not outlive the input.
class TN61131_API JSONataResult {
 public:
    enum class Outcome : std::uint8_t {
        Value,      ///< GetValue() is the result
        Undefined,  ///< the expression selects nothing: no result, and no error
        Error       ///< reported to the log; GetErrorCode() and the functions beside it tell more
    };

    JSONataResult() noexcept;
    JSONataResult(JSONataResult&&) noexcept;
    JSONataResult& operator=(JSONataResult&&) noexcept;
    JSONataResult(const JSONataResult&) = delete;
    JSONataResult& operator=(const JSONataResult&) = delete;
    ~JSONataResult();

    [[nodiscard]] static JSONataResult OfReference(const JSONValue& value) noexcept;
    [[nodiscard]] static JSONataResult OfValue(JSONValue value) noexcept;
    [[nodiscard]] static JSONataResult OfError(std::string code, std::size_t offset, std::string text) noexcept;

    [[nodiscard]] Outcome GetOutcome() const noexcept { return outcome_; }
    /// The value; JSON null where the outcome is another.
    [[nodiscard]] const JSONValue& GetValue() const noexcept { return reference_ != nullptr ? *reference_ : value_; }
    /// The value as an object of its own: moved out where it was made by the expression, copied from the input else.
    [[nodiscard]] JSONValue TakeValue();

    /// The language's code of the error, such as "T2001"; empty where there is none.
    [[nodiscard]] const std::string& GetErrorCode() const noexcept { return errorCode_; }
    /// Where in the expression, in bytes from its start.
    [[nodiscard]] std::size_t GetErrorOffset() const noexcept { return errorOffset_; }
    /// The error in words, without code and position.
    [[nodiscard]] const std::string& GetErrorText() const noexcept { return errorText_; }

 private:
    Outcome outcome_ = Outcome::Undefined;
    const JSONValue* reference_ = nullptr;
    JSONValue value_;
    std::string errorCode_;
    std::size_t errorOffset_ = 0;
    std::string errorText_;
};

/// An expression of the query language JSONata, version 2. Immutable once parsed: it may be evaluated any number of
/// times, by several threads at once. docs/jsonata.md tells what is covered and where limits and differences are.
class TN61131_API JSONataExpr {
 public:
    JSONataExpr(const JSONataExpr&) = delete;
    JSONataExpr& operator=(const JSONataExpr&) = delete;
    ~JSONataExpr();

    /// Reads the expression that begins at the context's position and sets the position behind it: before the first
    /// character that cannot continue it, such as the `)` that closes a selector. On failure one error with code and
    /// position is reported to the context's log, nothing is returned and the position is unchanged.
    [[nodiscard]] static std::unique_ptr<JSONataExpr> ParseJSONataExpr(JSONParseContext& context);
    /// Reads a whole text that holds one expression and nothing else.
    [[nodiscard]] static std::unique_ptr<JSONataExpr> ParseJSONataText(std::string_view text, COutputLog& log);

    /// Evaluates the expression for an input. An error is reported to the log ("JSONata, line 1, column 7: T2001:
    /// ..."), with the position in the expression.
    [[nodiscard]] JSONataResult Evaluate(const JSONValue& input, COutputLog& log,
                                         const JSONataOptions& options = {}) const;
    /// The same without an input: `$` and every path have no value.
    [[nodiscard]] JSONataResult Evaluate(COutputLog& log, const JSONataOptions& options = {}) const;

    /// Writes the expression in a normalized form that parses to the same expression.
    void FormatJSONataExpr(CTextOutput& output) const;
    /// The text that the expression was read from.
    [[nodiscard]] const std::string& GetText() const noexcept;

 private:
    struct Parsed;

    explicit JSONataExpr(std::unique_ptr<const Parsed> parsed) noexcept;
    [[nodiscard]] JSONataResult EvaluateFor(const JSONValue* input, COutputLog& log,
                                            const JSONataOptions& options) const;

    std::unique_ptr<const Parsed> parsed_;
};
