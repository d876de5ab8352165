#include "platform/CellReference.h"

#include <string>

#include "platform/TextOutput.h"

namespace {

constexpr unsigned int kLetters = 26;

/// 1 to 26; 0 for what is no letter.
unsigned int LetterNumber(char c) noexcept {
    if (c >= 'A' && c <= 'Z') return static_cast<unsigned int>(c - 'A') + 1;
    if (c >= 'a' && c <= 'z') return static_cast<unsigned int>(c - 'a') + 1;
    return 0;
}

/// Takes the letters in front, a number without a zero in base 26; 0 when there are none or they are beyond the last.
unsigned int TakeColumn(std::string_view& text) noexcept {
    unsigned int column = 0;
    for (; !text.empty() && LetterNumber(text.front()) != 0; text.remove_prefix(1)) {
        column = column * kLetters + LetterNumber(text.front());
        if (column > CellReference::kMaxColumns) return 0;
    }
    return column;
}

/// 0 for what is no row.
unsigned int ReadRow(std::string_view digits) noexcept {
    if (digits.starts_with('0')) return 0;
    unsigned int row = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9') return 0;
        row = row * 10 + static_cast<unsigned int>(digit - '0');
        if (row > CellReference::kMaxRows) return 0;
    }
    return row;
}

}  // namespace

std::unique_ptr<CellReference> CellReference::ParseCellReference(std::string_view text) {
    const unsigned int column = TakeColumn(text);
    const unsigned int row = ReadRow(text);
    if (column == 0 || row == 0) return nullptr;
    return std::make_unique<CellReference>(row - 1, column - 1);
}

void CellReference::PrintCellReference(CTextOutput& output) const {
    std::string letters;
    for (unsigned int column = column_ + 1; column != 0; column = (column - 1) / kLetters)
        letters.insert(letters.begin(), static_cast<char>('A' + (column - 1) % kLetters));
    output.Print("%s%u", letters, row_ + 1);
}
