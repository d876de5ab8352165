#pragma once

#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "functions/FunctionTable.h"
#include "platform/FormatText.h"
#include "support/FunctionCall.h"
#include "support/TestMachine.h"
#include "vm/MemoryRef.h"

namespace function_test {

/// The row of one of the library's function blocks. An unknown name fails the test.
inline const BlockRow& FindBlockByName(std::string_view name) {
    for (const BlockGroup& group : GetBlockGroups()) {
        for (const BlockRow& row : group.rows) {
            if (name == row.name) return row;
        }
    }
    ADD_FAILURE() << "no function block " << name;
    return GetBlockGroups()[0].rows[0];
}

/// One instance of a block, called as the call instruction would with EN TRUE. Its outputs go to variables of the
/// machine.
class BlockInstance {
 public:
    static constexpr unsigned char kUntouched = 0xA5;

    explicit BlockInstance(std::string_view name) : row_(FindBlockByName(name)) {
        instance_.AllocateNewData(row_.dataSize);
    }

    /// Calls the block at a VM time with literals for its inputs; "TRUE, T#100ms". Returns the outputs in their order,
    /// as they stand in the variables that the block wrote to ("TRUE, T#0ms"), or the status and messages.
    std::string Call(long long timeMs, std::string_view inputs) {
        std::vector<CValue> arguments;
        for (const std::string& literal : SplitList(inputs))
            arguments.push_back(ParseLiteral(literal));
        AddOutputPointers(arguments);
        const CallStatus status = Call(timeMs, std::move(arguments));
        return status == CallStatus::Continue ? DescribeOutputs() : DescribeFailure(status);
    }

    CallStatus Call(long long timeMs, std::vector<CValue> arguments) {
        machine_.SetTime(timeMs);
        log_.Clear();
        context_.SetCurrentFunction(0, true, GetBlockGroups()[0].number, row_.id);
        CMemoryRef instance(instance_, 0);
        return registry_.ExecuteFunctionBlock(machine_.GetExec(), context_, instance, row_.dataSize,
                                              static_cast<unsigned char>(arguments.size()), arguments.data(), log_);
    }

    /// A pointer for each output, to a variable of eight bytes of its own.
    void AddOutputPointers(std::vector<CValue>& arguments) const {
        unsigned int variable = 0;
        for (const BlockField& field : row_.fields) {
            if (field.role == BlockFieldRole::Output) arguments.push_back(TestMachine::PointerTo(8 * variable++));
        }
    }

    /// The instance data from byte 2 on (behind EN and ENO) in hexadecimal, fields separated by blanks.
    [[nodiscard]] std::string DumpState() const {
        std::string text;
        for (const BlockField& field : row_.fields) {
            if (field.role == BlockFieldRole::Control) continue;
            if (!text.empty()) text += ' ';
            const unsigned int size = GetTypeInfo(field.type).size;
            for (unsigned int i = 0; i < size; ++i)
                text += FormatText("%02X", instance_.GetVMData()[field.offset + i]);
        }
        return text;
    }
    [[nodiscard]] CMemoryBlock& GetInstance() { return instance_; }
    [[nodiscard]] CErrorLog& GetLog() { return log_; }
    [[nodiscard]] TestMachine& GetMachine() { return machine_; }
    [[nodiscard]] const BlockRow& GetRow() const { return row_; }

    [[nodiscard]] std::string DescribeOutputs() const {
        std::string text;
        unsigned int variable = 0;
        for (const BlockField& field : row_.fields) {
            if (field.role != BlockFieldRole::Output) continue;
            CTextOutputString output;
            machine_.Read(8 * variable++, field.type).GetAsLiteral(output);
            text += (text.empty() ? "" : ", ") + output.GetText();
        }
        return text;
    }

 private:
    [[nodiscard]] std::string DescribeFailure(CallStatus status) const {
        std::string text = StatusWord(status);
        for (const CErrorLog::Entry& entry : log_.GetEntries()) {
            text += ' ' + std::to_string(entry.id) + " [" + entry.location + ']';
        }
        return text;
    }

    const BlockRow& row_;
    TestMachine machine_;
    CMemoryBlock instance_;
    CErrorLog log_;
    CBuiltInFunctions registry_;
    CBuiltInFunctionContext context_{nullptr, &machine_.GetExec(), registry_};
};

/// One scan of a timeline.
struct Scan {
    long long timeMs;
    const char* inputs;
    const char* outputs;
    const char* state = nullptr;  ///< as BlockInstance::DumpState() has it; null where it does not matter
    const char* why = "";
};

inline void ExpectTimeline(std::string_view block, std::span<const Scan> scans) {
    BlockInstance instance(block);
    int number = 0;
    for (const Scan& scan : scans) {
        SCOPED_TRACE(FormatText("%s scan %d at %lld ms: %s", block, ++number, scan.timeMs, scan.why));
        EXPECT_EQ(instance.Call(scan.timeMs, scan.inputs), scan.outputs);
        if (scan.state != nullptr) {
            EXPECT_EQ(instance.DumpState(), scan.state);
        }
    }
}

}  // namespace function_test
