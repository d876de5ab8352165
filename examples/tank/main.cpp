// Runs the program of tank.st against a simulated tank and shows, as a table, each scan in which something happens.
//
//     tn61131 build tank.st --tags tags.json -o tank.vmi && tank_demo tank.vmi
//
// The same program in assembler text is tank.tnasm.

#include <cstdio>
#include <vector>

#include "TankPlant.h"
#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "platform/ErrorLog.h"
#include "platform/File.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace {

constexpr int kScans = 300;
constexpr long long kScanTimeMS = 100;

bool LoadImage(const char* path, CVirtualMachine& machine, CErrorLog& log) {
    TNFileUnix file;
    if (!file.OpenFileForRead(CTNFilePath(path))) return false;
    std::vector<unsigned char> bytes(file.GetFileSize());
    if (!file.ReadBytes(bytes.data(), file.GetFileSize())) return false;
    CBinaryInputMemory input(bytes);
    return machine.LoadVMImage(log, input) && !input.HasFailed();
}

/// The operator presses the button twice; while a run is on, nothing comes of it.
bool IsStartPressed(int scan) {
    return (scan >= 5 && scan < 9) || (scan >= 120 && scan < 124);
}

/// What makes a scan worth a line.
struct State {
    bool start, low, high, inlet, mixer, pump;
    friend bool operator==(const State&, const State&) = default;
};

State StateOf(const TankPlant& plant) {
    return {plant.GetBool(TankPlant::kStart), plant.GetBool(TankPlant::kLowLevel), plant.GetBool(TankPlant::kHighLevel),
            plant.GetBool(TankPlant::kInlet), plant.GetBool(TankPlant::kMixer),    plant.GetBool(TankPlant::kPump)};
}

const char* Mark(bool on) {
    return on ? "on" : "-";
}

void PrintLine(int scan, const TankPlant& plant, const State& state) {
    std::printf("%5d %7.1f %8.1f  %-5s %-4s %-4s  %-5s %-5s %-4s  %s\n", scan,
                static_cast<double>(scan) * static_cast<double>(kScanTimeMS) / 1000, plant.GetContents() / 1000.0,
                Mark(state.start), Mark(state.low), Mark(state.high), Mark(state.inlet), Mark(state.mixer),
                Mark(state.pump), plant.GetMessage().c_str());
}

bool RunScans(CVirtualMachine& machine, unsigned int codeOffset, CErrorLog& log) {
    TankPlant plant;
    CMemoryBlock globalData = machine.GetGlobalData();
    const CClientAccessContext access("tank_demo");
    CVirtualMachineExec exec(access, "tank", &machine, &globalData, &plant);
    std::printf(" scan    time   litres  start low  high  inlet mixer pump  message\n");
    State before{};
    for (int scan = 0; scan < kScans; ++scan) {
        plant.PressStart(IsStartPressed(scan));
        plant.UpdateInputs();
        const long long timestampMS = scan * kScanTimeMS;
        exec.StartNewProgram(codeOffset, CVirtualMachineExec::kDefaultInstructionLimit, 0, &timestampMS);
        if (exec.ExecuteUntilCompleteOrSuspended(log) != RunResult::Completed) return false;
        const State state = StateOf(plant);
        if (scan == 0 || state != before) PrintLine(scan, plant, state);
        before = state;
        plant.Advance();
    }
    std::printf("\nAfter %d scans: %.1f litres in the tank, %s\n", kScans, plant.GetContents() / 1000.0,
                plant.GetMessage().c_str());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: tank_demo IMAGE\n");
        return 2;
    }
    CErrorLog log;
    CVirtualMachine machine;
    unsigned int codeOffset = 0;
    const bool good = LoadImage(argv[1], machine, log) && machine.FindProgram("Tank", codeOffset) &&
                      RunScans(machine, codeOffset, log);
    for (const CErrorLog::Entry& entry : log.GetEntries())
        std::fprintf(stderr, "error %u: %s\n", entry.id, entry.text.c_str());
    if (!good) std::fprintf(stderr, "tank_demo: %s cannot be run\n", argv[1]);
    return good ? 0 : 1;
}
