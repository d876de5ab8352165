#include "literal/CSVDocument.h"

#include <algorithm>
#include <optional>

#include "platform/TextInput.h"
#include "platform/Transcode.h"
#include "value/Value.h"

namespace {

constexpr char kQuote = '"';
constexpr char kSeparator = ',';
constexpr char kLineEnd = '\n';

using CodePoint = std::optional<char32_t>;

/// Reads a cell that began with `first`; what ended it, nothing for the end of the input.
CodePoint ReadUnquoted(CTextInput& input, CodePoint first, std::string& cell) {
    CodePoint next = first;
    for (; next && *next != kSeparator && *next != kLineEnd; next = input.ReadCodePoint()) {
        tn_append_codepoint_to_tnstring(cell, *next);
        input.AppendPlainRun(cell, kSeparator, kLineEnd);
    }
    return next;
}

/// Reads a cell behind its opening quote; what stands behind the closing one, nothing for the end of the input.
CodePoint ReadQuoted(CTextInput& input, std::string& cell) {
    for (;;) {
        input.AppendPlainRun(cell, kQuote, kQuote);
        CodePoint next = input.ReadCodePoint();
        if (next == kQuote) {
            next = input.ReadCodePoint();
            if (next != kQuote) return next;
        }
        if (!next) return next;
        tn_append_codepoint_to_tnstring(cell, *next);
    }
}

}  // namespace

CSVDocument::CSVDocument() : cells_(&memory_) {}
CSVDocument::~CSVDocument() = default;

bool CSVDocument::ReadCSVFileContent(CTextInput& input) {
    cells_.clear();
    memory_.release();
    currentRow_ = currentColumn_ = columnCount_ = rowCount_ = 1;
    int terminator = 0;
    while (ReadCSVFileValue(input, terminator)) {
        if (terminator == kLineEnd) {
            currentColumn_ = 1;
            ++currentRow_;
        } else {
            ++currentColumn_;
        }
    }
    return false;
}

bool CSVDocument::ReadCSVFileValue(CTextInput& input, int& terminator) {
    const CodePoint first = input.ReadCodePoint();
    if (!first) return false;
    std::string cell;
    const CodePoint end = first == kQuote ? ReadQuoted(input, cell) : ReadUnquoted(input, first, cell);
    if (end) terminator = static_cast<int>(*end);
    // Cells arrive in the order of their keys, each behind all that are there.
    cells_.try_emplace(cells_.end(), CSVFileKey{currentRow_, currentColumn_}, std::move(cell));
    rowCount_ = std::max(rowCount_, currentRow_);
    columnCount_ = std::max(columnCount_, currentColumn_);
    return end.has_value();
}

bool CSVDocument::GetValue(unsigned int row, unsigned int column, CValue& value) const {
    const auto cell = cells_.find({row, column});
    if (cell == cells_.end()) return false;
    value.SetString(cell->second, ElementaryType::WString);
    return true;
}
