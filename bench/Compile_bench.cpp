// Whole projects through the compiler. Memory is what a compilation adds to the peak of the process, so only the
// largest project, which comes first, says something about it.
#include <algorithm>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include "compiler/Compiler.h"

namespace {

namespace st = tn61131::st;

constexpr std::int64_t kLargest = 100'000;

/// Types, a function, a function block with instances, timers, loops and selections: 50 lines; $ is its number.
constexpr const char* kUnit = R"(TYPE Sample$ : STRUCT
    time : TIME;
    level, pressure : REAL;
    valid : BOOL;
    codes : ARRAY[0..7] OF WORD;
END_STRUCT END_TYPE
(* Scales a raw value and keeps it
   within its limits. *)
FUNCTION Scale$ : REAL
VAR_INPUT
    raw, low, high : INT;
    span : REAL := 100.0;
END_VAR
IF high = low THEN
    Scale$ := 0.0;
    RETURN;
END_IF;
Scale$ := LIMIT(0.0, INT_TO_REAL(raw - low) / INT_TO_REAL(high - low) * span, span);
END_FUNCTION
FUNCTION_BLOCK Unit$
VAR_INPUT
    enable, reset : BOOL;
    raw : INT;
END_VAR
VAR_OUTPUT
    state : INT;
    alarm : BOOL;
END_VAR
VAR
    delay : TON;
    history : ARRAY[0..15] OF Sample$;
    index : INT;
    sum : LREAL;
END_VAR
// one sample in each scan
IF enable AND NOT reset THEN
    index := (index + 1) MOD 16;
    history[index].level := Scale$(raw := raw, low := 0, high := 27648);
    history[index].valid := raw > 0 AND raw < 27648;
    sum := 0.0;
    FOR index := 0 TO 15 DO
        sum := sum + history[index].level * 0.0625;
    END_FOR;
END_IF;
delay(IN := sum > 90.0, PT := T#1s500ms);
CASE state OF
    0: IF enable THEN state := 1; END_IF;
    1..3, 7: state := state + 1;
    ELSE state := 0;
END_CASE;
alarm := delay.Q OR (state = 7 AND history[0].valid);
END_FUNCTION_BLOCK
)";

/// A project of so many lines, a file for each unit.
std::vector<st::SourceText> MakeProject(std::size_t lines, std::size_t& lineCount) {
    std::vector<st::SourceText> files;
    std::string instances;
    std::string calls;
    lineCount = 4;
    for (std::size_t i = 0; lineCount < lines; ++i) {
        const std::string number = std::to_string(i);
        std::string text;
        for (const char* c = kUnit; *c != 0; ++c) {
            if (*c == '$') {
                text += number;
            } else {
                text += *c;
            }
        }
        instances += "unit" + number + " : Unit" + number + ";\n";
        calls += "unit" + number + "(enable := TRUE, raw := " + std::to_string(i % 20'000) + ");\n";
        lineCount += static_cast<std::size_t>(std::ranges::count(text, '\n')) + 2;
        files.push_back({"unit" + number + ".st", std::move(text)});
    }
    files.push_back({"main.st", "PROGRAM Main\nVAR\n" + instances + "END_VAR\n" + calls + "END_PROGRAM\n"});
    return files;
}

double GetPeakBytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) * 1024;
}

void CompileProject(benchmark::State& state) {
    std::size_t lines = 0;
    const std::vector<st::SourceText> project = MakeProject(static_cast<std::size_t>(state.range(0)), lines);
    static const double before = GetPeakBytes();
    std::size_t codeSize = 0;
    for (auto _ : state) {
        const st::CompileResult compiled = st::Compile(project, {});
        if (!compiled.succeeded) {
            state.SkipWithError("the project is refused");
            break;
        }
        codeSize = compiled.image.code.size();
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(lines) * state.iterations());
    state.counters["lines"] = static_cast<double>(lines);
    state.counters["code bytes"] = static_cast<double>(codeSize);
    if (state.range(0) == kLargest)
        state.counters["peak bytes per line"] = (GetPeakBytes() - before) / static_cast<double>(lines);
}
BENCHMARK(CompileProject)->Arg(kLargest)->Arg(10'000)->Arg(1000)->Unit(benchmark::kMillisecond);

}  // namespace
