#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "platform/BinaryStream.h"
#include "platform/ErrorLog.h"
#include "platform/JSONValue.h"
#include "platform/TextOutput.h"
#include "value/Value.h"

namespace {

// One literal of each family; the index is the benchmark's argument.
struct Sample {
    const char* name;
    ElementaryType type;
    const char* text;
};

constexpr Sample kSamples[] = {
    {"BOOL", ElementaryType::Bool, "TRUE"},
    {"DINT", ElementaryType::DInt, "-1234567"},
    {"LWORD", ElementaryType::LWord, "16#0123_4567_89AB_CDEF"},
    {"REAL", ElementaryType::Real, "3.14159"},
    {"LREAL", ElementaryType::LReal, "2.718281828459045"},
    {"TIME", ElementaryType::Time, "T#1d2h3m4s5ms"},
    {"TIME_OF_DAY", ElementaryType::TimeOfDay, "TOD#12:30:15.5"},
    {"DATE", ElementaryType::Date, "D#2024-01-31"},
    {"DATE_AND_TIME", ElementaryType::DateAndTime, "DT#2024-01-31-13:05:09.25"},
    {"STRING", ElementaryType::String, "'The quick brown fox$Ljumps over the lazy dog'"},
    {"WSTRING", ElementaryType::WString, "\"The quick brown fox$Ljumps over the lazy dog\""},
};

const Sample& SampleOf(benchmark::State& state) {
    const Sample& sample = kSamples[state.range(0)];
    state.SetLabel(sample.name);
    return sample;
}

CValue ParseSample(const Sample& sample) {
    CErrorLogToNull log;
    CValue value;
    (void)value.SetFromText(log, ErrorLocationNull::Get(), sample.text, sample.type);
    return value;
}

void BM_ParseLiteral(benchmark::State& state) {
    const Sample& sample = SampleOf(state);
    const std::string text(sample.text);
    CErrorLogToNull log;
    CValue value;
    for (auto _ : state)
        benchmark::DoNotOptimize(value.SetFromText(log, ErrorLocationNull::Get(), text, sample.type));
}
BENCHMARK(BM_ParseLiteral)->DenseRange(0, std::size(kSamples) - 1);

void BM_PrintLiteral(benchmark::State& state) {
    const CValue value = ParseSample(SampleOf(state));
    for (auto _ : state) {
        CTextOutputString output;
        value.GetAsLiteral(output);
        benchmark::DoNotOptimize(output.GetText().data());
    }
}
BENCHMARK(BM_PrintLiteral)->DenseRange(0, std::size(kSamples) - 1);

void BM_LoadRaw(benchmark::State& state) {
    const Sample& sample = SampleOf(state);
    const CValue source = ParseSample(sample);
    std::vector<unsigned char> bytes(source.GetRawDataSize());
    (void)source.GetRawData(bytes.data(), bytes.size());
    CValue value;
    for (auto _ : state) {
        benchmark::DoNotOptimize(bytes.data());
        benchmark::DoNotOptimize(
            value.SetFromDataBytes(sample.type, bytes.data(), static_cast<unsigned int>(bytes.size())));
    }
}
BENCHMARK(BM_LoadRaw)->DenseRange(0, std::size(kSamples) - 1);

void BM_StoreRaw(benchmark::State& state) {
    const CValue value = ParseSample(SampleOf(state));
    std::vector<unsigned char> bytes(value.GetRawDataSize());
    for (auto _ : state) {
        benchmark::DoNotOptimize(value.GetRawData(bytes.data(), bytes.size()));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_StoreRaw)->DenseRange(0, std::size(kSamples) - 1);

void BM_SaveAndLoadValue(benchmark::State& state) {
    const CValue value = ParseSample(SampleOf(state));
    CValue loaded;
    for (auto _ : state) {
        CBinaryOutputBuffer output;
        (void)value.SaveValue(14, output);
        CBinaryInputMemory input(output.GetData());
        benchmark::DoNotOptimize(loaded.LoadValue(14, input));
    }
}
BENCHMARK(BM_SaveAndLoadValue)->DenseRange(0, std::size(kSamples) - 1);

// A conversion to text and back, as the conversion functions do it.
void BM_ConvertToTextAndBack(benchmark::State& state) {
    const Sample& sample = SampleOf(state);
    const CValue source = ParseSample(sample);
    CErrorLogToNull log;
    for (auto _ : state) {
        CValue value(source);
        (void)value.ChangeType(log, ErrorLocationNull::Get(), ElementaryType::WString);
        benchmark::DoNotOptimize(value.ChangeType(log, ErrorLocationNull::Get(), sample.type));
    }
}
BENCHMARK(BM_ConvertToTextAndBack)->DenseRange(0, 8);

std::string JSONSample() {
    std::string text = "[";
    for (int i = 0; i < 1000; ++i) {
        text += (i == 0 ? "" : ",");
        text += R"({"id":)" + std::to_string(i * 7919) + R"(,"name":"Motor )" + std::to_string(i) + R"(","value":)" +
                std::to_string(i * 0.37) + R"(,"on":true,"tags":["a","b",null]})";
    }
    return text + "]";
}

void BM_ParseJSON(benchmark::State& state) {
    const std::string text = JSONSample();
    COutputLogNull log;
    for (auto _ : state) {
        JSONParseContext context(text, log);
        JSONValue json;
        benchmark::DoNotOptimize(json.Parse(context));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(BM_ParseJSON);

void BM_WriteJSON(benchmark::State& state) {
    const std::string text = JSONSample();
    COutputLogNull log;
    JSONParseContext context(text, log);
    JSONValue json;
    if (!json.Parse(context)) state.SkipWithError("the sample is no JSON");
    for (auto _ : state) {
        CTextOutputString output;
        json.Write(output);
        benchmark::DoNotOptimize(output.GetText().data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(BM_WriteJSON);

}  // namespace
