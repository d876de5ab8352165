#include <string>

#include <benchmark/benchmark.h>

#include "literal/LogicParseContext.h"
#include "platform/TextInput.h"

namespace {

constexpr std::size_t kSourceSize = 10U << 20;

/// Copies of a piece until the source is long enough.
std::string Repeat(std::string_view piece) {
    std::string source;
    source.reserve(kSourceSize + piece.size());
    while (source.size() < kSourceSize)
        source.append(piece);
    return source;
}

/// A function block as a plant's program has them.
constexpr std::string_view kProgram = R"(
FUNCTION_BLOCK FillTank (* fills one tank *)
VAR_INPUT
    level : REAL; // per cent
    start, stop : BOOL := FALSE;
END_VAR
VAR
    timer : TON;
    state : INT := 0;
    text : STRING := 'idle$L';
    speeds : ARRAY[1..10] OF LREAL := [10(1.5E-3)];
END_VAR
    timer(IN := start AND NOT stop, PT := T#1m30s);
    CASE state OF
        0: IF start AND (level < 95.0) THEN state := 10; END_IF;
        10: FOR i := 1 TO 10 BY 2 DO
                speeds[i] := speeds[i] * 2.0 + INT_TO_LREAL(state) ** 2;
                IF speeds[i] >= 16#FF THEN EXIT; END_IF;
            END_FOR;
            text := CONCAT(text, 'filling tank');
    END_CASE
END_FUNCTION_BLOCK
)";

void ReadTokens(benchmark::State& state, const std::string& source) {
    std::size_t count = 0;
    for (auto _ : state) {
        TextInputTNString input(source);
        CLogicParseContext context(&input, nullptr);
        CLogicToken token;
        do {
            context.GetNextLogicTokenAfterWhitespace(token);
            ++count;
        } while (!token.IsType(CParseToken::kEndOfInput));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(source.size()));
    state.SetItemsProcessed(static_cast<std::int64_t>(count));
}

void BM_TokensOfAProgram(benchmark::State& state) {
    ReadTokens(state, Repeat(kProgram));
}
BENCHMARK(BM_TokensOfAProgram)->Unit(benchmark::kMillisecond);

// What a careless tokenizer takes long for.
void BM_TokensOfOddSources(benchmark::State& state) {
    struct Odd {
        const char* name;
        const char* start;
        const char* piece;
    };
    static constexpr Odd kOdd[] = {
        {"comment", "(*", "* )"},    {"stars", "(", "*"},   {"string", "'", "$'"},       {"white space", "", " \n"},
        {"names", "", "a_1"},        {"digits", "", "1"},   {"umlauts", "", "\xC3\xA4"}, {"invalid bytes", "", "\xE4"},
        {"hexadecimal", "16#", "F"}, {"points", "T#", "."}, {"quotes", "", "'"},         {"exponents", "", "1e"},
    };
    const Odd& odd = kOdd[state.range(0)];
    state.SetLabel(odd.name);
    ReadTokens(state, odd.start + Repeat(odd.piece));
}
BENCHMARK(BM_TokensOfOddSources)->DenseRange(0, 11)->Unit(benchmark::kMillisecond);

}  // namespace
