#pragma once

#include <memory>
#include <string>

#include "platform/Export.h"

class CellReference;
class COutputLog;
class CTextInput;
class CTextOutput;
class JSONataExpr;
class JSONParseContext;

/// What a selector picks, and from what kind of document.
enum class ReadSelectorType : int {
    None = 0,     ///< the whole document
    Line = 1,     ///< a line of plain text
    JSONata = 2,  ///< what an expression finds in a JSON document
    CSV = 3       ///< a cell of a comma-separated document
};

/// Picks one value out of a text document. Written as `Line(3)`, `JSONata(order.items[0].price)` or `CSV(B3)`; the
/// words in any case, white space where it pleases. Once parsed it may be used by several threads at a time.
class TN61131_API TextPayloadSelector {
 public:
    /// Of type none, with line number 0.
    TextPayloadSelector();
    TextPayloadSelector(TextPayloadSelector&&) noexcept;
    TextPayloadSelector& operator=(TextPayloadSelector&&) noexcept;
    TextPayloadSelector(const TextPayloadSelector&) = delete;
    TextPayloadSelector& operator=(const TextPayloadSelector&) = delete;
    ~TextPayloadSelector();

    /// Makes the type none and drops expression and cell reference; the line number stays.
    void Clear() noexcept;

    /// Parses the selector at the start of the input; what stands behind its `)` is not looked at. On failure the
    /// selector is of type none and one error with its position in the input, named "Selector", is reported to `log`,
    /// which may be null. The numbers of lines are cut to 32 bits signed.
    bool ParseSelector(CTextInput* input, COutputLog* log);
    bool ParseSelector(const std::string& text);
    /// Sets the type and for JSONata the expression, for CSV the cell reference from a text that holds it and nothing
    /// else. Where that fails there is no expression or reference, and nothing can be selected. For the other types
    /// the text is not looked at and may be null.
    void SetReadSelector(ReadSelectorType type, const char* text, unsigned int length);

    /// Writes the selector as ParseSelector() reads it; nothing for type none.
    void FormatSelector(CTextOutput& output) const;
    /// Writes the expression or the cell reference alone, a line selector as FormatSelector() does.
    void FormatSelectorContent(CTextOutput& output) const;
    /// The media type of the documents it is meant for: "text/plain", "application/json", "text/csv", or
    /// "application/octet-stream" for type none.
    [[nodiscard]] const char* GetRequiredDocumentType() const noexcept;

    [[nodiscard]] ReadSelectorType GetReadSelectorType() const noexcept { return type_; }
    /// Counted from 1; means something for a line selector only.
    [[nodiscard]] int GetLineNumber() const noexcept { return lineNumber_; }
    /// The selector's own, null where there is none.
    [[nodiscard]] const JSONataExpr* GetJSONReadSelector() const noexcept { return expression_.get(); }
    [[nodiscard]] const CellReference* GetCSVReadSelector() const noexcept { return cell_.get(); }

 private:
    bool Parse(JSONParseContext& context);
    bool ParseCell(JSONParseContext& context);
    bool ParseLine(JSONParseContext& context);

    ReadSelectorType type_ = ReadSelectorType::None;
    int lineNumber_ = 0;
    std::unique_ptr<JSONataExpr> expression_;
    std::unique_ptr<CellReference> cell_;
};
