// Any bytes as comma-separated text: the counts cover every cell, and the short cut for plain runs reads what the code
// points alone give.
#include <cstdlib>
#include <utility>

#include "literal/CSVDocument.h"
#include "platform/TextInput.h"
#include "value/Value.h"

namespace {

/// The same text one code point at a time.
class SingleStep final : public CTextInput {
 public:
    explicit SingleStep(CTextInput& input) : input_(input) {}

 protected:
    std::optional<char32_t> Decode() override {
        // The base skips one mark, which the input has skipped already.
        return std::exchange(atMark_, false) ? kByteOrderMark : input_.ReadCodePoint();
    }

 private:
    static constexpr char32_t kByteOrderMark = 0xFEFF;

    CTextInput& input_;
    bool atMark_ = true;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    TextInputFromRawData input(data, size);
    CSVDocument document;
    if (document.ReadCSVFileContent(input)) abort();
    TextInputFromRawData again(data, size);
    SingleStep step(again);
    CSVDocument stepped;
    if (stepped.ReadCSVFileContent(step)) abort();
    if (document.GetRowCount() != stepped.GetRowCount()) abort();
    if (document.GetColumnCount() != stepped.GetColumnCount()) abort();
    if (std::uint64_t{document.GetRowCount()} * document.GetColumnCount() > 1000000) return 0;
    for (unsigned int row = 1; row <= document.GetRowCount(); ++row) {
        for (unsigned int column = 1; column <= document.GetColumnCount(); ++column) {
            CValue cell;
            CValue steppedCell;
            if (document.GetValue(row, column, cell) != stepped.GetValue(row, column, steppedCell)) abort();
            if (cell.IsDefined() && !cell.IsEqual(steppedCell)) abort();
        }
    }
    CValue none;
    if (document.GetValue(document.GetRowCount() + 1, 1, none)) abort();
    if (document.GetValue(1, document.GetColumnCount() + 1, none)) abort();
    return 0;
}
