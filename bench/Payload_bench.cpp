#include <string>

#include <benchmark/benchmark.h>

#include "payload/TextPayload.h"
#include "payload/TextPayloadSelector.h"
#include "platform/TextInput.h"
#include "value/Value.h"

namespace {

std::string LinesSample() {
    std::string text;
    for (int i = 0; i < 10000; ++i)
        text += std::to_string(i) + ",Motor " + std::to_string(i) + "," + std::to_string(i * 0.37) + "\n";
    return text;
}

std::string JSONSample() {
    std::string text = R"({"plant":{"name":"North","motors":[)";
    for (int i = 0; i < 1000; ++i) {
        text += (i == 0 ? "" : ",");
        text += R"({"id":)" + std::to_string(i) + R"(,"name":"Motor )" + std::to_string(i) + R"(","value":)" +
                std::to_string(i * 0.37) + "}";
    }
    return text + "]}}";
}

// The index is the benchmark's argument.
struct Sample {
    const char* selector;
    std::string (*document)();
};

constexpr Sample kSamples[] = {
    {"Line(9000)", LinesSample},
    {"CSV(B9000)", LinesSample},
    {"JSONata(plant.name)", JSONSample},
    {"JSONata(plant.motors[500].value)", JSONSample},
    {"JSONata($sum(plant.motors.value))", JSONSample},
};

// From a document that earlier selections have split or parsed.
void BM_SelectAgain(benchmark::State& state) {
    const Sample& sample = kSamples[state.range(0)];
    state.SetLabel(sample.selector);
    const std::string text = sample.document();
    TextPayload payload("document");
    TextInputTNString input(text);
    payload.SetContentFromTextInput(&input);
    TextPayloadSelector selector;
    CValue value;
    if (!selector.ParseSelector(sample.selector) || payload.SelectValue(selector, value) != SelectStatus::Success)
        return state.SkipWithError("nothing is selected");
    for (auto _ : state)
        benchmark::DoNotOptimize(payload.SelectValue(selector, value));
}
BENCHMARK(BM_SelectAgain)->DenseRange(0, std::size(kSamples) - 1);

void BM_ReceiveAndSelect(benchmark::State& state) {
    const Sample& sample = kSamples[state.range(0)];
    state.SetLabel(sample.selector);
    const std::string text = sample.document();
    TextPayloadSelector selector;
    if (!selector.ParseSelector(sample.selector)) return state.SkipWithError("the selector is none");
    CValue value;
    for (auto _ : state) {
        TextPayload payload("document");
        TextInputTNString input(text);
        payload.SetContentFromTextInput(&input);
        benchmark::DoNotOptimize(payload.SelectValue(selector, value));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(BM_ReceiveAndSelect)->DenseRange(0, 3)->Unit(benchmark::kMicrosecond);

void BM_ParseSelector(benchmark::State& state) {
    const Sample& sample = kSamples[state.range(0)];
    state.SetLabel(sample.selector);
    const std::string text(sample.selector);
    TextPayloadSelector selector;
    for (auto _ : state)
        benchmark::DoNotOptimize(selector.ParseSelector(text));
}
BENCHMARK(BM_ParseSelector)->DenseRange(0, std::size(kSamples) - 1);

}  // namespace
