#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

#include "functions/BuiltInFunctions.h"
#include "functions/FunctionContext.h"
#include "functions/FunctionTable.h"
#include "platform/ClientAccess.h"
#include "value/Value.h"
#include "vm/MemoryBlock.h"
#include "vm/MemoryRef.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

// Calls per second through the registry, as the call instructions make them. Functions get fresh copies of their
// arguments in every call, because they may change them.

namespace {

struct Machine {
    Machine() { globals.AllocateNewData(64); }
    const CClientAccessContext access;
    CVirtualMachine image;
    CMemoryBlock globals;
    CVirtualMachineExec exec{access, "bench", &image, &globals, nullptr};
    CBuiltInFunctionContext context{access.GetDataFormatSettings(), &exec, exec.GetBuiltInFunctions()};
    CErrorLog log;
};

CValue Text(std::string_view text) {
    return {text.data(), static_cast<unsigned int>(text.size()), ElementaryType::String};
}

std::string Repeat(std::string_view part, int count) {
    std::string text;
    while (count-- > 0)
        text += part;
    return text;
}

void CallFunction(benchmark::State& state, std::string_view name, const std::vector<CValue>& arguments) {
    Machine machine;
    unsigned char groupNumber = 0;
    unsigned char id = 0;
    for (const FunctionGroup& group : GetFunctionGroups()) {
        for (const FunctionRow& row : group.rows) {
            if (name != row.name) continue;
            groupNumber = group.number;
            id = row.id;
        }
    }
    std::vector<CValue> copies(arguments.size());
    CValue result;
    for (auto _ : state) {
        for (std::size_t i = 0; i < arguments.size(); ++i)
            copies[i] = arguments[i];
        machine.context.SetCurrentFunction(0, false, groupNumber, id);
        const CallStatus status = machine.exec.GetBuiltInFunctions().Execute(
            machine.log, machine.context, static_cast<unsigned char>(copies.size()), copies.data(), result);
        if (status != CallStatus::Continue) state.SkipWithError("the call failed");
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(state.iterations());
}

/// A call in every scan of a millisecond; the first input changes every 16 scans.
void CallBlock(benchmark::State& state, const BlockRow& row) {
    Machine machine;
    CMemoryBlock instanceData;
    instanceData.AllocateNewData(row.dataSize);
    CMemoryRef instance(instanceData, 0);
    std::vector<CValue> inputs;
    unsigned int variable = 0;
    for (const BlockField& field : row.fields) {
        // FALSE for BOOL, 20 for presets.
        if (field.role == BlockFieldRole::Input)
            inputs.emplace_back(field.type == ElementaryType::Bool ? 0LL : 20LL, field.type);
        if (field.role != BlockFieldRole::Output) continue;
        inputs.emplace_back();
        inputs.back().SetAddress(static_cast<unsigned short>(LocationKind::Global), 0, 8 * variable++);
    }
    long long now = 0;
    for (auto _ : state) {
        machine.exec.SetCurrentTimestamp(&now);
        inputs[0].SetBool((++now & 16) != 0);
        machine.context.SetCurrentFunction(0, true, 1, row.id);
        const CallStatus status = machine.exec.GetBuiltInFunctions().ExecuteFunctionBlock(
            machine.exec, machine.context, instance, row.dataSize, row.inputCount, inputs.data(), machine.log);
        if (status != CallStatus::Continue) state.SkipWithError("the call failed");
    }
    state.SetItemsProcessed(state.iterations());
}

struct Kernel {
    const char* name;
    const char* function;
    std::vector<CValue> arguments;
};

std::vector<Kernel> MakeKernels() {
    const std::string longText = Repeat("abcdefghij", 2000);
    return {
        {"ABS", "ABS", {CValue(-5)}},
        {"SQRT", "SQRT", {CValue(2.0)}},
        {"ROUND", "ROUND", {CValue(2.675), CValue(2)}},
        {"ADD", "ADD", {CValue(1), CValue(2)}},
        {"ADD/8", "ADD", std::vector<CValue>(8, CValue(1))},
        {"SHL", "SHL", {CValue(1U, ElementaryType::DWord), CValue(3)}},
        {"AND", "AND", {CValue(true), CValue(true)}},
        {"MAX", "MAX", {CValue(1), CValue(2)}},
        {"LIMIT", "LIMIT", {CValue(0), CValue(5), CValue(9)}},
        {"GT", "GT", {CValue(2), CValue(1)}},
        {"LEN", "LEN", {Text("abc")}},
        {"CONCAT/short", "CONCAT", {Text("abc"), Text("def")}},
        {"CONCAT/long", "CONCAT", {Text(longText), Text(longText)}},
        {"FIND/short", "FIND", {Text("abcdefghij"), Text("hij")}},
        {"FIND/long", "FIND", {Text(longText + "x"), Text("jx")}},
        {"MID/short", "MID", {Text("abcdefghij"), CValue(3), CValue(4)}},
        {"MID/long", "MID", {Text(longText), CValue(3), CValue(15000)}},
        {"FORMAT_NUMBER/kept", "FORMAT_NUMBER", {CValue(1234567.891), Text("#,##0.00")}},
        {"FORMAT_DATE_TIME/kept",
         "FORMAT_DATE_TIME",
         {CValue(1700000000123LL, ElementaryType::DateAndTime), Text("yyyy-MM-dd HH:mm:ss")}},
        {"TO_SQL_LITERAL", "TO_SQL_LITERAL", {Text("it's")}},
        {"INT_TO_BCD_WORD", "INT_TO_BCD_WORD", {CValue(static_cast<short>(1234))}},
        {"SYS_GET_TIMESTAMP", "SYS_GET_TIMESTAMP", {}},
        {"CONCAT_DATE", "CONCAT_DATE", {CValue(2024), CValue(1), CValue(31)}},
        {"UPPER/short", "UPPER", {Text("abcdefghij")}},
        {"UPPER/long", "UPPER", {Text(longText)}},
    };
}

bool RegisterKernels() {
    for (const Kernel& kernel : MakeKernels()) {
        benchmark::RegisterBenchmark(
            (std::string("Function/") + kernel.name).c_str(),
            [kernel](benchmark::State& state) { CallFunction(state, kernel.function, kernel.arguments); });
    }
    for (const BlockGroup& group : GetBlockGroups()) {
        for (const BlockRow& row : group.rows) {
            benchmark::RegisterBenchmark((std::string("FunctionBlock/") + row.name).c_str(),
                                         [&row](benchmark::State& state) { CallBlock(state, row); });
        }
    }
    return true;
}

const bool kRegistered = RegisterKernels();

}  // namespace
