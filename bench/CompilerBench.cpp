#include <algorithm>
#include <string>

#include <benchmark/benchmark.h>

#include "compiler/Parser.h"
#include "compiler/TokenStream.h"

namespace {

using namespace tn61131::st;

// Function blocks as control code has them: declarations, conditions, assignments, calls, a selection and a loop.
std::string SourceSample(unsigned int blocks) {
    std::string text;
    for (unsigned int i = 0; i < blocks; ++i) {
        const std::string number = std::to_string(i);
        text += "(* controls unit number " + number + " *)\nFUNCTION_BLOCK Unit_" + number;
        text += R"(
VAR_INPUT
    enable, reset : BOOL;
    setpoint : REAL := 10.5;
    limit : INT := 100;
END_VAR
VAR_OUTPUT
    output : REAL;
    state : INT;
END_VAR
VAR
    timer : TON;
    history : ARRAY[0..15] OF REAL;
    index : INT;
END_VAR
// accumulate while enabled
IF enable AND NOT reset THEN
    output := output + (setpoint - output) * 0.1;
    index := (index + 1) MOD 16;
    history[index] := output;
    timer(IN := output > setpoint, PT := T#1s500ms);
ELSIF reset THEN
    output := 0.0;
    state := 16#FF;
END_IF;
CASE state OF
    0: state := state + 1;
    1..5, 7: IF timer.Q THEN state := 2; END_IF;
ELSE
    state := 0;
END_CASE;
FOR index := 0 TO 15 BY 1 DO
    history[index] := history[index] * 0.99 + LIMIT(0.0, setpoint, 100.0);
END_FOR;
END_FUNCTION_BLOCK
)";
    }
    return text;
}

// Lines per second are reported as items.
void SetCounts(benchmark::State& state, const std::string& text) {
    const auto lines = std::count(text.begin(), text.end(), '\n');
    state.SetItemsProcessed(state.iterations() * lines);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void BM_ReadTokens(benchmark::State& state) {
    const std::string text = SourceSample(1000);
    SourceManager sources;
    std::uint32_t file = 0;
    if (!sources.AddFile("a.st", text, file)) return state.SkipWithError("the sample is too large");
    for (auto _ : state) {
        NameTable names;
        Diagnostics diagnostics(sources);
        benchmark::DoNotOptimize(ReadTokens(sources, file, {}, names, diagnostics));
    }
    SetCounts(state, text);
}
BENCHMARK(BM_ReadTokens)->Unit(benchmark::kMillisecond);

void BM_ParseFile(benchmark::State& state) {
    const std::string text = SourceSample(1000);
    SourceManager sources;
    std::uint32_t file = 0;
    if (!sources.AddFile("a.st", text, file)) return state.SkipWithError("the sample is too large");
    for (auto _ : state) {
        NameTable names;
        Arena arena;
        Diagnostics diagnostics(sources);
        benchmark::DoNotOptimize(ParseFile(sources, file, {}, names, arena, diagnostics));
    }
    SetCounts(state, text);
}
BENCHMARK(BM_ParseFile)->Unit(benchmark::kMillisecond);

}  // namespace
