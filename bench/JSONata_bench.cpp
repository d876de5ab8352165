#include <cstddef>
#include <iterator>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "platform/ErrorLog.h"
#include "platform/JSONValue.h"
#include "platform/JSONataExpr.h"

namespace {

struct Selector {
    const char* name;
    const char* text;
};

// What programs typically ask a document for; the index is the benchmark's first argument.
constexpr Selector kSelectors[] = {
    {"member", "plant.name"},
    {"deep member", "plant.lines[0].stations[0].sensor.value"},
    {"index", "plant.lines[-1].id"},
    {"predicate", "plant.lines[id = \"L1\"].stations[0].id"},
    {"all values", "$sum(plant.lines.stations.sensor.value)"},
    {"filter", "plant.lines.stations[sensor.value > 99].id"},
    {"object", "plant.lines[0].stations[0].{\"id\": id, \"value\": sensor.value}"},
    {"higher order", "$count($filter(plant.lines, function($l) { $count($l.stations) > 2 }))"},
    {"sort", "plant.lines^(>id)[0].id"},
    {"descendants", "$count(plant.lines[0].**.value)"},
};

/// About so many bytes of JSON: lines of ten stations each.
std::string MakeText(std::size_t size) {
    std::string text = R"({"plant":{"name":"north","lines":[)";
    for (int line = 0; line == 0 || text.size() < size; ++line) {
        text += line == 0 ? "" : ",";
        text += R"({"id":"L)" + std::to_string(line) + R"(","stations":[)";
        for (int station = 0; station < 10; ++station) {
            const int value = (line * 10 + station) % 100;
            text += station == 0 ? "" : ",";
            text += R"({"id":"S)" + std::to_string(station) + R"(","sensor":{"unit":"degC","value":)" +
                    std::to_string(value) + ".5}}";
        }
        text += "]}";
    }
    return text + "]}}";
}

JSONValue MakeDocument(std::size_t size) {
    const std::string text = MakeText(size);
    COutputLogNull log;
    JSONParseContext context(text, log);
    JSONValue document;
    (void)document.Parse(context);
    return document;
}

const JSONValue& DocumentOf(std::size_t size) {
    static const JSONValue small = MakeDocument(1'000);
    static const JSONValue medium = MakeDocument(100'000);
    static const JSONValue large = MakeDocument(10'000'000);
    return size == 1'000 ? small : size == 100'000 ? medium : large;
}

const Selector& SelectorOf(benchmark::State& state) {
    const Selector& selector = kSelectors[state.range(0)];
    state.SetLabel(selector.name);
    return selector;
}

void BM_JSONataParse(benchmark::State& state) {
    const Selector& selector = SelectorOf(state);
    COutputLogNull log;
    for (auto _ : state)
        benchmark::DoNotOptimize(JSONataExpr::ParseJSONataText(selector.text, log));
}
BENCHMARK(BM_JSONataParse)->DenseRange(0, std::size(kSelectors) - 1);

void BM_JSONataEvaluate(benchmark::State& state) {
    const Selector& selector = SelectorOf(state);
    const JSONValue& document = DocumentOf(static_cast<std::size_t>(state.range(1)));
    COutputLogNull log;
    const std::unique_ptr<JSONataExpr> expr = JSONataExpr::ParseJSONataText(selector.text, log);
    for (auto _ : state) {
        JSONataResult result = expr->Evaluate(document, log);
        if (result.GetOutcome() == JSONataResult::Outcome::Error) state.SkipWithError(result.GetErrorText().c_str());
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(BM_JSONataEvaluate)
    ->ArgsProduct({benchmark::CreateDenseRange(0, std::size(kSelectors) - 1, 1), {1'000, 100'000, 10'000'000}});

}  // namespace
