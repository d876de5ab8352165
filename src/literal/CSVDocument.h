#pragma once

#include <map>
#include <memory_resource>
#include <string>

#include "platform/Export.h"

class CTextInput;
class CValue;

/// The cells of a comma-separated text, read once and looked up by row and column, which count from 1. The separator
/// is always the comma and the line end always the line feed; there is no header row and nothing is trimmed. Cells are
/// text only; each takes some 80 bytes of memory beside its text. Belongs to its user; look-ups from several threads at
/// a time are safe, reading is not.
class TN61131_API CSVDocument {
 public:
    struct CSVFileKey {
        unsigned int row;
        unsigned int column;
    };
    /// By row, then by column.
    struct CompareCSVFileKey {
        bool operator()(const CSVFileKey& left, const CSVFileKey& right) const noexcept {
            return left.row != right.row ? left.row < right.row : left.column < right.column;
        }
    };

    /// No cells, all counts 0.
    CSVDocument();
    CSVDocument(const CSVDocument&) = delete;
    CSVDocument& operator=(const CSVDocument&) = delete;
    ~CSVDocument();

    /// Replaces the content by the whole input. Any text is a document: the result is that of the last
    /// ReadCSVFileValue(), false for the end of the input.
    bool ReadCSVFileContent(CTextInput& input);
    /// Reads one cell and stores it at the current row and column; a cell that is there already is kept. A cell within
    /// double quotes may hold commas and line feeds, and two quotes for one. True with the code point that ended the
    /// cell in `terminator`: a comma or a line feed, behind a closing quote whatever stands there. False, `terminator`
    /// unchanged, when the input ended: before the cell, then nothing is stored, or within it, then it is.
    bool ReadCSVFileValue(CTextInput& input, int& terminator);
    /// The cell as a WSTRING; false, `value` unchanged, where none was read.
    [[nodiscard]] bool GetValue(unsigned int row, unsigned int column, CValue& value) const;

    /// The largest row that received a cell; 1 for a text without cells.
    [[nodiscard]] unsigned int GetRowCount() const noexcept { return rowCount_; }
    /// The largest column that received a cell in any row; 1 for a text without cells.
    [[nodiscard]] unsigned int GetColumnCount() const noexcept { return columnCount_; }

 private:
    unsigned int currentRow_ = 0;
    unsigned int currentColumn_ = 0;
    unsigned int columnCount_ = 0;
    unsigned int rowCount_ = 0;
    std::pmr::monotonic_buffer_resource memory_;  // of the map's nodes, which are only ever dropped all together
    std::pmr::map<CSVFileKey, std::string, CompareCSVFileKey> cells_;
};
