// The structured-text compiler: what its code costs, and how fast it is.
//
// Programs are counted and not timed: bytes of code and executed instructions, without optimiser passes and with all.
#include <algorithm>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "compiler/Compiler.h"
#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace {

using namespace tn61131::st;

constexpr std::uint32_t kInstructionLimit = 10'000'000;

constexpr const char* kSorting = R"(PROGRAM Main
VAR a : ARRAY[0..63] OF INT; i, j, t : INT; n : DINT; END_VAR
FOR i := 0 TO 63 DO a[i] := (i * 37) MOD 64; END_FOR
FOR i := 0 TO 62 DO
  FOR j := 0 TO 62 - i DO
    IF a[j] > a[j + 1] THEN t := a[j]; a[j] := a[j + 1]; a[j + 1] := t; n := n + 1; END_IF
  END_FOR
END_FOR
END_PROGRAM)";

constexpr const char* kChecksum = R"(FUNCTION Crc16 : WORD
VAR_INPUT data : ARRAY[0..63] OF BYTE; END_VAR
VAR i, k : INT; END_VAR
Crc16 := 16#FFFF;
FOR i := 0 TO 63 DO
  Crc16 := Crc16 XOR BYTE_TO_WORD(data[i]);
  FOR k := 1 TO 8 DO
    IF Crc16.0 THEN Crc16 := SHR(Crc16, 1) XOR 16#A001; ELSE Crc16 := SHR(Crc16, 1); END_IF
  END_FOR
END_FOR
END_FUNCTION
PROGRAM Main
VAR data : ARRAY[0..63] OF BYTE; i : INT; crc : WORD; END_VAR
FOR i := 0 TO 63 DO data[i] := INT_TO_BYTE(i * 7); END_FOR
crc := Crc16(data);
END_PROGRAM)";

constexpr const char* kControl = R"(TYPE Limits : STRUCT low, high : REAL; END_STRUCT END_TYPE
FUNCTION Clamp : REAL VAR_INPUT x, low, high : REAL; END_VAR
IF x < low THEN Clamp := low; ELSIF x > high THEN Clamp := high; ELSE Clamp := x; END_IF
END_FUNCTION
FUNCTION_BLOCK PID
VAR_INPUT set, actual : REAL; kp : REAL := 1.0; ti : REAL := 10.0; dt : REAL := 0.1; limits : Limits; END_VAR
VAR_OUTPUT out : REAL; saturated : BOOL; END_VAR
VAR integral, error : REAL; END_VAR
error := set - actual;
integral := integral + error * dt / ti;
out := Clamp(kp * (error + integral), limits.low, limits.high);
saturated := out = limits.low OR out = limits.high;
END_FUNCTION_BLOCK
PROGRAM Main
VAR loops : ARRAY[1..8] OF PID; levels : ARRAY[1..8] OF REAL; alarm : ARRAY[1..8] OF TON; i : INT; count : INT; END_VAR
FOR i := 1 TO 8 DO
  loops[i].limits.low := 0.0; loops[i].limits.high := 100.0;
  loops[i](set := 50.0, actual := levels[i]);
  levels[i] := levels[i] + loops[i].out * 0.01 - 0.1;
  alarm[i](IN := loops[i].saturated, PT := T#1s);
  IF alarm[i].Q THEN count := count + 1; END_IF
END_FOR
END_PROGRAM)";

constexpr const char* kMachine = R"(TYPE State : (IDLE, FILL, HEAT, STIR, DRAIN, CLEAN, FAULT, DONE); END_TYPE
FUNCTION Next : State VAR_INPUT s : State; go, full, hot, empty, bad : BOOL; END_VAR
Next := s;
IF bad THEN Next := FAULT; RETURN; END_IF
CASE s OF
  IDLE: IF go THEN Next := FILL; END_IF
  FILL: IF full THEN Next := HEAT; END_IF
  HEAT: IF hot THEN Next := STIR; END_IF
  STIR: IF NOT go THEN Next := DRAIN; END_IF
  DRAIN: IF empty THEN Next := CLEAN; END_IF
  CLEAN: IF full AND NOT hot THEN Next := DONE; END_IF
  FAULT: IF NOT bad AND go THEN Next := IDLE; END_IF
  DONE: Next := IDLE;
END_CASE
END_FUNCTION
PROGRAM Main
VAR s : ARRAY[0..15] OF State; i, k : INT; b : BOOL; END_VAR
FOR k := 0 TO 9 DO
  FOR i := 0 TO 15 DO b := (i + k) MOD 3 <> 0; s[i] := Next(s[i], b, NOT b, b, k > 5, i = 15 AND k = 4); END_FOR
END_FOR
END_PROGRAM)";

constexpr const char* kTexts = R"(FUNCTION Trimmed : STRING[40]
VAR_INPUT s : STRING[40]; END_VAR
VAR i, n : INT; END_VAR
n := LEN(s); i := 1;
WHILE i <= n AND_THEN MID(s, 1, i) = ' ' DO i := i + 1; END_WHILE
Trimmed := MID(s, n - i + 1, i);
END_FUNCTION
PROGRAM Main
VAR line : STRING[80]; i : INT; part : STRING[40]; END_VAR
FOR i := 1 TO 20 DO
  part := CONCAT('   item ', INT_TO_STRING(i));
  line := CONCAT(line, Trimmed(part), ';');
  IF LEN(line) > 60 THEN line := RIGHT(line, 20); END_IF
END_FOR
END_PROGRAM)";

Passes SelectPasses(bool isOn) {
    Passes passes;
    passes.foldConstants = isOn;
    passes.commonAddresses = isOn;
    passes.inlineLeaves = isOn;
    passes.deadStores = isOn;
    passes.jumps = isOn;
    return passes;
}

void CountProgram(benchmark::State& state, const char* source, bool isOptimised) {
    CompileOptions options;
    options.passes = SelectPasses(isOptimised);
    CompileResult result;
    for ([[maybe_unused]] auto _ : state) {
        std::vector<SourceText> texts;
        texts.push_back({"program.st", source});
        result = Compile(std::move(texts), options);
    }
    if (!result.succeeded) {
        state.SkipWithError(result.diagnostics.empty() ? "failed" : result.diagnostics.front().text.c_str());
        return;
    }
    const std::vector<unsigned char> bytes = CImageWriter::Write(result.image);
    CBinaryInputMemory input(bytes);
    CErrorLog log;
    CVirtualMachine machine;
    if (!machine.LoadVMImage(log, input)) return state.SkipWithError("no image");
    CMemoryBlock memory(machine.GetGlobalData());
    const CClientAccessContext access("bench");
    CVirtualMachineExec exec(access, "bench", &machine, &memory, nullptr);
    const long long timestamp = 1000;
    exec.StartNewProgram(result.image.programs[0].codeOffset, kInstructionLimit, 0, &timestamp);
    if (exec.ExecuteUntilCompleteOrSuspended(log) != RunResult::Completed) return state.SkipWithError("failed to run");
    state.counters["code"] = static_cast<double>(result.image.code.size());
    state.counters["instructions"] = exec.GetInstructionCount();
}

/// A project of blocks, functions and programs with about as many lines as asked for.
std::string MakeProject(std::size_t lines) {
    std::string text = "TYPE Point : STRUCT x, y : REAL; id : INT; END_STRUCT END_TYPE\n";
    for (std::size_t unit = 0, count = 1; count < lines; ++unit) {
        const std::string n = std::to_string(unit);
        std::string pou =
            "FUNCTION Scale" + n +
            " : REAL\nVAR_INPUT x : REAL; k : INT; END_VAR\n"
            "Scale" +
            n +
            " := x * INT_TO_REAL(k) + 0.5;\nEND_FUNCTION\n"
            "FUNCTION_BLOCK Unit" +
            n +
            "\nVAR_INPUT\nenable : BOOL;\nlevel : INT := 5;\nEND_VAR\nVAR_OUTPUT\n"
            "total : DINT;\nEND_VAR\nVAR\nvalues : ARRAY[0..31] OF INT;\np : ARRAY[1..4] OF Point;\ni : INT;\n"
            "timer : TON;\nEND_VAR\n";
        for (int block = 0; block < 8; ++block) {
            pou += "IF enable AND level > " + std::to_string(block) +
                   " THEN\n"
                   "FOR i := 0 TO 31 DO\nvalues[i] := values[i] + level * " +
                   std::to_string(block + 1) +
                   ";\n"
                   "total := total + INT_TO_DINT(values[i]);\nEND_FOR\n"
                   "p[" +
                   std::to_string(block % 4 + 1) + "].x := Scale" + n +
                   "(p[2].y, level);\n"
                   "timer(IN := enable, PT := T#5s);\nELSE\nCASE level OF\n1: total := 1;\n2, 3: total := total - 1;\n"
                   "ELSE\ntotal := 0;\nEND_CASE\nEND_IF\n";
        }
        pou += "END_FUNCTION_BLOCK\nPROGRAM Main" + n + "\nVAR\nu : Unit" + n +
               ";\nt : DINT;\nEND_VAR\n"
               "u(enable := t < 100, level := 7, total => t);\nEND_PROGRAM\n";
        count += static_cast<std::size_t>(std::count(pou.begin(), pou.end(), '\n'));
        text += pou;
    }
    return text;
}

void CompileProject(benchmark::State& state, bool isOptimised) {
    const std::string project = MakeProject(100'000);
    const auto lines = std::count(project.begin(), project.end(), '\n');
    CompileOptions options;
    options.passes = SelectPasses(isOptimised);
    std::size_t code = 0;
    for ([[maybe_unused]] auto _ : state) {
        std::vector<SourceText> texts;
        texts.push_back({"project.st", project});
        const CompileResult result = Compile(std::move(texts), options);
        if (!result.succeeded) return state.SkipWithError("refused");
        code = result.image.code.size();
    }
    state.counters["lines/s"] = benchmark::Counter(static_cast<double>(lines) * static_cast<double>(state.iterations()),
                                                   benchmark::Counter::kIsRate);
    state.counters["code"] = static_cast<double>(code);
}

BENCHMARK_CAPTURE(CountProgram, sorting_plain, kSorting, false);
BENCHMARK_CAPTURE(CountProgram, sorting_optimised, kSorting, true);
BENCHMARK_CAPTURE(CountProgram, checksum_plain, kChecksum, false);
BENCHMARK_CAPTURE(CountProgram, checksum_optimised, kChecksum, true);
BENCHMARK_CAPTURE(CountProgram, control_plain, kControl, false);
BENCHMARK_CAPTURE(CountProgram, control_optimised, kControl, true);
BENCHMARK_CAPTURE(CountProgram, machine_plain, kMachine, false);
BENCHMARK_CAPTURE(CountProgram, machine_optimised, kMachine, true);
BENCHMARK_CAPTURE(CountProgram, texts_plain, kTexts, false);
BENCHMARK_CAPTURE(CountProgram, texts_optimised, kTexts, true);
BENCHMARK_CAPTURE(CompileProject, plain, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(CompileProject, optimised, true)->Unit(benchmark::kMillisecond);

}  // namespace
