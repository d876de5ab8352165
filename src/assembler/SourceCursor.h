#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// One error in a source text. Line and column count from 1, columns in characters.
struct SourceDiagnostic {
    std::uint32_t line = 0;
    std::uint32_t column = 0;
    std::string text;
};

/// A place in a source text: line and byte of the line, both from 0.
struct SourcePlace {
    std::size_t line = 0;
    std::size_t at = 0;
};

/// The lines of a source text with comments, `;` to the end of the line and (* ... *), blanked out, so that places stay
/// what they were. Quoted strings are left alone.
[[nodiscard]] std::vector<std::string> SplitSourceLines(std::string_view text,
                                                        std::vector<SourceDiagnostic>& diagnostics);

/// The reading position in the lines of a source text: the lexer of the assembler, of type texts and of paths. Every
/// reading step skips blanks first and stays in its line. Borrows the lines and the list of errors.
class CSourceCursor {
 public:
    /// After so many errors no more are kept.
    static constexpr std::size_t kMaxDiagnostics = 100;

    CSourceCursor(std::span<const std::string> lines, std::vector<SourceDiagnostic>& diagnostics) noexcept
        : lines_(lines), diagnostics_(diagnostics) {}

    /// Moves to the start of the next line; false at the end of the text.
    bool NextLine() noexcept;
    [[nodiscard]] bool HasLine() const noexcept { return place_.line < lines_.size(); }
    void MoveTo(SourcePlace place) noexcept { place_ = place; }
    /// The place of what comes next.
    [[nodiscard]] SourcePlace Here() noexcept;
    [[nodiscard]] bool AtLineEnd() noexcept { return Peek() == '\0'; }
    /// The next character; 0 at the end of the line.
    [[nodiscard]] char Peek() noexcept;
    /// What is left of the line, trailing blanks dropped.
    [[nodiscard]] std::string_view PeekRest() noexcept;

    // Each of these takes what it names when it comes next and says whether it did.

    bool Take(std::string_view symbol) noexcept;
    /// A whole word, without regard to case.
    bool TakeWord(std::string_view word) noexcept;
    /// Several words with blanks between them, or nothing.
    bool TakeWords(std::string_view words) noexcept;
    /// A letter or underscore, then letters, digits and underscores; bytes above 127 count as letters. Empty for none.
    std::string_view TakeIdentifier() noexcept;
    /// `count` or more hexadecimal digits that no letter or digit follows; empty for none.
    std::string_view TakeHexDigits(std::size_t count) noexcept;
    /// A string in single quotes with them; empty for none.
    std::string_view TakeQuoted() noexcept;
    /// Everything up to the end of the line, or (`inList`) to a comma or closing bracket that is not part of it. Quoted
    /// strings and bracket pairs are kept whole. Trailing blanks are dropped.
    std::string_view TakeLiteral(bool inList) noexcept;

    // These report what is missing and return false.

    bool Expect(std::string_view symbol);
    bool ExpectLineEnd();
    bool ReadIdentifier(std::string_view what, std::string& out);
    /// A whole number, decimal or with a radix (16#FF), signed, with underscores between digits, from `lowest` to
    /// `highest`; `what` names it in messages.
    bool ReadInteger(std::string_view what, std::int64_t lowest, std::int64_t highest, std::int64_t& out);
    template <typename T>
    bool ReadUnsigned(std::string_view what, std::int64_t highest, T& out) {
        std::int64_t value = 0;
        if (!ReadInteger(what, 0, highest, value)) return false;
        out = static_cast<T>(value);
        return true;
    }
    /// Reports an error at the place of what comes next, respectively at a given place; always false.
    bool Fail(std::string text) { return Fail(Here(), std::move(text)); }
    bool Fail(SourcePlace place, std::string text);

    [[nodiscard]] std::size_t GetDiagnosticCount() const noexcept { return diagnostics_.size(); }

 private:
    [[nodiscard]] std::string_view Line() const noexcept;
    [[nodiscard]] std::string_view Rest() const noexcept { return Line().substr(place_.at); }
    void SkipBlanks() noexcept;

    std::span<const std::string> lines_;
    std::vector<SourceDiagnostic>& diagnostics_;
    SourcePlace place_;
};

/// Bytes from `at` that a quoted string takes, closing quote included, `$` escapes respected; the rest of the text when
/// it is not closed.
[[nodiscard]] std::size_t QuotedLength(std::string_view text, std::size_t at) noexcept;

/// Characters before a byte of a line.
[[nodiscard]] std::uint32_t CountCharacters(std::string_view line, std::size_t at) noexcept;

/// Whether a text is one identifier of the sources, from its first byte to its last.
[[nodiscard]] bool IsIdentifier(std::string_view text) noexcept;
