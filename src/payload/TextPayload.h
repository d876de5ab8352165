#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/Export.h"
#include "platform/JSONValue.h"

class CErrorLog;
class CSVDocument;
class CTextInput;
class CTextOutputString;
class CValue;
class TextPayloadSelector;

/// How a selection ended.
enum class SelectStatus : int {
    Success = 0,
    DocumentInvalid = 1,  ///< a JSON document that cannot be parsed
    Failed = 2            ///< the selector finds nothing
};

/// A document received as text, from which selectors pick values. The first selection by a line, a JSONata expression
/// or a cell splits, parses or reads the whole document; what it made is kept for the ones that follow, until
/// ClearPayload(). New content does not drop it, so a host clears first. Belongs to one thread at a time, for
/// selections too.
class TN61131_API TextPayload {
 public:
    /// With empty content. The name is for the host's own use.
    explicit TextPayload(const std::string& name);
    TextPayload(const TextPayload&) = delete;
    TextPayload& operator=(const TextPayload&) = delete;
    ~TextPayload();

    /// Empties the content and drops what selections have made of it.
    void ClearPayload() noexcept;

    [[nodiscard]] const std::string& GetName() const noexcept { return name_; }
    /// UTF-8, unless a STRING that is none was set.
    [[nodiscard]] const std::string& GetContent() const noexcept { return content_; }
    /// The bytes of a STRING become the content; a value of another type changes nothing.
    void SetContentFromValue(CValue* value);
    /// Appends all that is left of the input, respectively all of the output. What is not valid in its encoding
    /// becomes U+FFFD.
    void SetContentFromTextInput(CTextInput* input);
    void SetContentFromTextOutputString(CTextOutputString& output);
    /// Appends one character; what is no character becomes U+FFFD.
    void AppendCodePoint(int codePoint);

    /// Stores what the selector picks; where it picks nothing `value` is unchanged. By type of the selector:
    /// - none: the whole content as a STRING;
    /// - line: that line as a WSTRING. Lines end at LF or CR LF and count from 1; a number that no line has is message
    ///   253;
    /// - JSONata: a number as LREAL, a boolean as BOOL, a text as WSTRING, anything else as a WSTRING with its JSON
    ///   text. Errors of the document and of the expression go to the log's output log and are counted in `log`;
    /// - CSV: the cell as a WSTRING; one that is not there is no error.
    /// Strings are cut to what a value holds.
    SelectStatus SelectValue(const TextPayloadSelector& selector, CValue& value, CErrorLog& log) const;
    SelectStatus SelectValue(const TextPayloadSelector& selector, CValue& value) const;

 private:
    SelectStatus SelectValueLine(const TextPayloadSelector& selector, CValue& value, CErrorLog& log) const;
    SelectStatus SelectValueJSONata(const TextPayloadSelector& selector, CValue& value, CErrorLog& log) const;
    SelectStatus SelectValueCSV(const TextPayloadSelector& selector, CValue& value) const;

    std::string name_;
    std::string content_;
    // Made on first use.
    mutable std::unique_ptr<std::vector<std::string>> lines_;
    mutable JSONValue::Owner json_;
    mutable std::unique_ptr<CSVDocument> csv_;
};
