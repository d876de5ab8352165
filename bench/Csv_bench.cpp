#include <string>

#include <benchmark/benchmark.h>

#include "literal/CSVDocument.h"
#include "platform/TextInput.h"
#include "value/Value.h"

namespace {

constexpr std::size_t kDocumentSize = 10'000'000;

// Ten columns a row, as a plant's recorder writes them; `quoted` puts every cell in quotes, with one pair inside.
std::string CSVSample(bool quoted) {
    std::string text;
    for (unsigned int row = 0; text.size() < kDocumentSize; ++row) {
        for (unsigned int column = 0; column < 10; ++column) {
            const std::string number = std::to_string(row * 7919U + column);
            text += quoted ? "\"pump \"\"" + number + "\"\" on\"" : number + ".25";
            text += column < 9 ? ',' : '\n';
        }
    }
    return text;
}

void BM_ReadCSV(benchmark::State& state) {
    const bool quoted = state.range(0) != 0;
    state.SetLabel(quoted ? "quoted" : "unquoted");
    const std::string text = CSVSample(quoted);
    for (auto _ : state) {
        CSVDocument document;
        TextInputTNString input(text);
        benchmark::DoNotOptimize(document.ReadCSVFileContent(input));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(BM_ReadCSV)->DenseRange(0, 1)->Unit(benchmark::kMillisecond);

void BM_GetCSVCell(benchmark::State& state) {
    const std::string text = CSVSample(false);
    CSVDocument document;
    TextInputTNString input(text);
    document.ReadCSVFileContent(input);
    CValue value;
    unsigned int row = 0;
    for (auto _ : state) {
        row = (row + 7919) % document.GetRowCount();
        benchmark::DoNotOptimize(document.GetValue(row + 1, 5, value));
    }
}
BENCHMARK(BM_GetCSVCell);

}  // namespace
