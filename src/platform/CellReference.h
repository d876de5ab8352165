#pragma once

#include <memory>
#include <string_view>

#include "platform/Export.h"

class CTextOutput;

/// A cell of a table, written as in a spreadsheet: the letters of the column, A to XFD, then the number of the row, 1
/// to 1048576. Row and column count from 0 in the object: "B3" is row 2, column 1.
class TN61131_API CellReference {
 public:
    static constexpr unsigned int kMaxRows = 1048576;
    static constexpr unsigned int kMaxColumns = 16384;

    /// Both below their maximum.
    CellReference(unsigned int row, unsigned int column) noexcept : row_(row), column_(column) {}

    /// Reads a text that holds a reference and nothing else, letters in either case, no leading zeros; null for any
    /// other text.
    [[nodiscard]] static std::unique_ptr<CellReference> ParseCellReference(std::string_view text);
    /// Writes the reference with capital letters.
    void PrintCellReference(CTextOutput& output) const;

    [[nodiscard]] unsigned int GetRow() const noexcept { return row_; }
    [[nodiscard]] unsigned int GetColumn() const noexcept { return column_; }

    friend bool operator==(const CellReference&, const CellReference&) = default;

 private:
    unsigned int row_;
    unsigned int column_;
};
