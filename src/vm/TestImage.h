#pragma once

// What the tests of the machine are written in: instructions as bytes, images, and a machine to run them on. The
// encoders state every number again, so that a changed opcode does not change the tests with it.
#include <cstring>
#include <initializer_list>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diag/Messages.h"
#include "functions/BuiltInFunctions.h"
#include "functions/FunctionContext.h"
#include "platform/BinaryStream.h"
#include "platform/ClientAccess.h"
#include "platform/TextOutput.h"
#include "value/Value.h"
#include "vm/DirectlyLocatedVariables.h"
#include "vm/MemoryBlock.h"
#include "vm/MemoryRef.h"
#include "vm/VirtualMachine.h"
#include "vm/VirtualMachineExec.h"

namespace vmtest {

using Bytes = std::vector<unsigned char>;

/// Type codes.
enum : unsigned char {
    kUndefined = 0,
    kBool = 1,
    kSInt = 2,
    kByte = 4,
    kInt = 5,
    kDInt = 8,
    kUDInt = 9,
    kLInt = 11,
    kReal = 14,
    kLReal = 15,
    kTime = 16,
    kString = 20,
    kWString = 21,
    kPointer = 22,
    kComposite = 23,
    kTypeType = 27,
};

/// Locations of pointers.
enum : unsigned char { kNull = 0, kGlobal = 1, kLocal = 2, kTemp = 3, kTag = 4, kConstant = 5, kMemBlock = 6 };

inline Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline Bytes Join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

template <typename T>
Bytes LittleEndian(T value) {
    Bytes bytes(sizeof(T));
    std::memcpy(bytes.data(), &value, sizeof(T));
    return bytes;
}
inline Bytes U16(unsigned int value) {
    return LittleEndian(static_cast<unsigned short>(value));
}
inline Bytes U32(unsigned int value) {
    return LittleEndian(value);
}
inline Bytes I64(long long value) {
    return LittleEndian(value);
}
inline Bytes Text(const char* text) {
    return Bytes(text, text + std::strlen(text));
}

// --- instructions ---

inline Bytes Ld(unsigned char type, const Bytes& data) {
    return Bytes{1, type} + data;
}
inline Bytes LdBool(bool value) {
    return {1, kBool, value};
}
inline Bytes LdInt(int value) {
    return Ld(kInt, LittleEndian(static_cast<short>(value)));
}
inline Bytes LdDint(int value) {
    return Ld(kDInt, LittleEndian(value));
}
inline Bytes LdString(const char* text) {
    return Ld(kString, U16(static_cast<unsigned int>(std::strlen(text))) + Text(text));
}
inline Bytes LdAddr(unsigned char kind, unsigned int offset) {
    return Bytes{2, kind} + U32(offset);
}
inline Bytes LdTagAddr(unsigned int offset, unsigned int id) {
    return Bytes{3} + U16(offset) + U32(id);
}
inline Bytes PtrLd(unsigned char type, unsigned int size) {
    return Bytes{4, type} + U16(size);
}
inline Bytes PtrSt(unsigned char type, unsigned int size) {
    return Bytes{5, type} + U16(size);
}
inline Bytes LdStack(unsigned char index) {
    return {6, index};
}
inline Bytes StStack(unsigned char index) {
    return {7, index};
}
inline Bytes LdStatus(unsigned char code) {
    return {8, code};
}
inline Bytes PtrLdArray(unsigned char type, unsigned int count) {
    return Bytes{9, type} + U32(count);
}
inline Bytes Push() {
    return {10};
}
inline Bytes Pop() {
    return {11};
}
inline Bytes Ret() {
    return {12};
}
inline Bytes Convert(unsigned char type) {
    return {13, type};
}
inline Bytes Unary(unsigned char operation) {
    return {14, operation};
}
inline Bytes Binary(unsigned char operation) {
    return {15, operation};
}
inline Bytes Jmp(int offset) {
    return Bytes{16} + LittleEndian(offset);
}
inline Bytes Jmpz(int offset) {
    return Bytes{17} + LittleEndian(offset);
}
inline Bytes Jmpnz(int offset) {
    return Bytes{18} + LittleEndian(offset);
}
inline Bytes Jmpu(int offset) {
    return Bytes{19} + LittleEndian(offset);
}
inline Bytes CallFunction(unsigned char group, unsigned char id, unsigned char count) {
    return {20, group, id, count};
}
inline Bytes Call(unsigned char count, unsigned int codeOffset) {
    return Bytes{21, count} + U32(codeOffset);
}
inline Bytes InitTempData(const Bytes& data) {
    return Bytes{22} + U32(static_cast<unsigned int>(data.size())) + data;
}
inline Bytes InitLocalData(unsigned int size) {
    return Bytes{23} + U32(size);
}
inline Bytes CallBlock(unsigned char group, unsigned char id, unsigned char count, unsigned int size) {
    return Bytes{24, group, id, count} + U32(size);
}
inline Bytes PtrStEdge(unsigned char edge) {
    return {25, edge};
}
inline Bytes CallFunctionEno(unsigned char group, unsigned char id, unsigned char count) {
    return {26, group, id, count};
}
inline Bytes Truncate(unsigned char type) {
    return {27, type};
}
inline Bytes Sfc(unsigned char type, unsigned int size) {
    return Bytes{28, type} + U16(size);
}

// --- images ---

struct ImageParts {
    struct Program {
        std::string name;
        unsigned int codeOffset;
        unsigned int secondWord = 0;
    };
    unsigned int magic = 0x4956;
    Bytes identity = {};  ///< written behind the magic number as it is
    unsigned int version = 5;
    Bytes globalData = {};
    Bytes constants = {};
    Bytes code = {};
    std::vector<Program> programs = {};
    std::vector<std::pair<unsigned int, unsigned int>> expressions = {};  ///< id and code offset
    std::vector<std::pair<unsigned int, unsigned int>> codeBlocks = {};
};

inline Bytes Block(const Bytes& data) {
    return U32(static_cast<unsigned int>(data.size()) + 4) + data + Bytes{0xEF, 0xBE, 0x0D, 0x60};
}

inline Bytes MakeImage(const ImageParts& parts) {
    Bytes image = U16(parts.magic) + parts.identity + U16(parts.version) + Block(parts.globalData);
    if (parts.version >= 2) image = image + Block(parts.constants);
    if (parts.version <= 4) image = image + U32(0xDDCCBBAA);
    image = image + U32(static_cast<unsigned int>(parts.code.size())) + parts.code;
    image = image + U32(static_cast<unsigned int>(parts.programs.size()));
    for (const auto& program : parts.programs) {
        image.push_back(static_cast<unsigned char>(program.name.size()));
        image = image + Text(program.name.c_str()) + U32(program.codeOffset) + U32(program.secondWord);
    }
    image = image + U32(static_cast<unsigned int>(parts.expressions.size()));
    for (const auto& [id, codeOffset] : parts.expressions)
        image = image + (parts.version >= 3 ? U32(id) : Bytes()) + U32(codeOffset);
    if (parts.version < 4) return image;
    image = image + U32(static_cast<unsigned int>(parts.codeBlocks.size()));
    for (const auto& [id, codeOffset] : parts.codeBlocks)
        image = image + U32(id) + U32(codeOffset);
    return image;
}

// --- what a host brings ---

/// Function group whose function `id` returns `id` as its status, and sets its result to the number of arguments.
/// kFailingFunction logs message 226.
class ScriptedFunctions final : public CVMFunc {
 public:
    static constexpr unsigned char kFailingFunction = 200;

    CallStatus ExecuteFunction(CErrorLog& log, CBuiltInFunctionContext& context, unsigned char argumentCount,
                               CValue* arguments, CValue& result) override {
        ++calls;
        callPosition = context.GetCallPosition();
        lastArguments = arguments;
        result = CValue(static_cast<unsigned int>(argumentCount));
        if (context.GetFunctionId() != kFailingFunction) return static_cast<CallStatus>(context.GetFunctionId());
        tn61131::Fail<Message::DivisionByZero>(log, context);
        return CallStatus::Failed;
    }
    [[nodiscard]] const char* GetFunctionName(unsigned char id) const override { return id == 99 ? nullptr : "TEST"; }

    unsigned int calls = 0;
    unsigned int callPosition = 0;
    CValue* lastArguments = nullptr;
};

/// Block group with instance data of 4 bytes for every id; the block `id` returns `id` as its status, and copies EN to
/// byte 2 and the number of inputs to byte 3.
class ScriptedBlocks final : public CVMFunctionBlock {
 public:
    CallStatus ExecuteFunctionBlock(CVirtualMachineExec& /*exec*/, CBuiltInFunctionContext& context,
                                    CMemoryRef& instance, unsigned int /*dataSize*/, unsigned char inputCount,
                                    CValue* /*inputs*/, CErrorLog& /*log*/) override {
        ++calls;
        instance.SetBOOLAtOffset(2, instance.GetBOOLAtOffset(0));
        instance.SetSINTAtOffset(3, static_cast<signed char>(inputCount));
        return static_cast<CallStatus>(context.GetFunctionId());
    }
    [[nodiscard]] unsigned int GetDataSize(unsigned char id) const override { return id == 99 ? 0 : 4; }
    [[nodiscard]] const char* GetName(unsigned char id) const override { return id == 99 ? nullptr : "BLOCK"; }

    unsigned int calls = 0;
};

/// One tag, number 7, over a block.
class OneTag final : public CDirectlyLocatedVariables {
 public:
    bool GetTagType(unsigned int tagId, DirectlyLocatedType& /*type*/) const override { return tagId == 7; }
    bool ResolveTagAddress(const PointerValue* pointer, unsigned int size, CMemoryRef& out) const override {
        if (pointer->offset != 7 || !data.IsDataWithinBlock(pointer->frame, size)) return false;
        out = CMemoryRef(data, pointer->frame);
        return true;
    }
    CMemoryBlock data;
};

/// A provider that is no block: plain bytes of the host, with bounds of its own.
class PlainMemory final : public CVMMemoryInterface {
 public:
    explicit PlainMemory(Bytes content) : bytes(std::move(content)) {}
    [[nodiscard]] bool IsDataWithinBlock(unsigned int offset, unsigned int size) const override {
        return size <= bytes.size() && offset <= bytes.size() - size;
    }
    bool GetValueAtOffset(unsigned int offset, ElementaryType type, unsigned int size, CValue& out) const override {
        return IsDataWithinBlock(offset, size) && out.SetFromDataBytes(type, &bytes[offset], size);
    }
    bool GetCompositeValueAtOffset(unsigned int, ElementaryType, unsigned int, CValue&) const override { return false; }
    InstructionResult SetValueAtOffset(const CClientAccessContext& access, unsigned int offset, unsigned int size,
                                       const CValue& value, const ErrorLocation&, CErrorLog&) const override {
        lastClient = access.GetName();
        return IsDataWithinBlock(offset, size) && value.GetRawData(&bytes[offset], size) ? InstructionResult::Continue
                                                                                         : InstructionResult::Failed;
    }
    [[nodiscard]] unsigned int GetOffset() const override { return 0; }
    [[nodiscard]] unsigned char* GetVMData() const override { return bytes.data(); }
    bool CopyDataFrom(unsigned int, const CMemoryRef&, unsigned int) const override { return false; }

    mutable Bytes bytes;
    mutable std::string lastClient;
};

inline std::string Declaration(const CValue& value) {
    CTextOutputString output;
    value.GetDeclaration(output);
    return output.GetText();
}

inline std::vector<unsigned int> MessageIds(const CErrorLog& log) {
    std::vector<unsigned int> ids;
    for (const auto& entry : log.GetEntries())
        ids.push_back(entry.id);
    return ids;
}

/// An image, its global data and a context over them.
class Machine {
 public:
    explicit Machine(const Bytes& code, unsigned int globalSize = 16, const Bytes& constants = {})
        : Machine(ImageParts{.globalData = Bytes(globalSize), .constants = constants, .code = code}) {}
    explicit Machine(const ImageParts& parts) {
        const Bytes bytes = MakeImage(parts);
        CBinaryInputMemory input(bytes);
        CErrorLog loadLog;
        EXPECT_TRUE(image.LoadVMImage(loadLog, input));
        globalData = image.GetGlobalData();
        exec = std::make_unique<CVirtualMachineExec>(access, "HostTag", &image, &globalData, &tags);
        exec->GetBuiltInFunctions().RegisterFunctionGroup(10, &functions);
        exec->GetBuiltInFunctions().RegisterFunctionBlockGroup(2, &blocks);
    }

    /// One run from the start with a fresh log.
    RunResult Run(unsigned int codeOffset = 0, unsigned int limit = 100000) {
        log.Clear();
        exec->StartNewProgram(codeOffset, limit, 77, &timestamp);
        return exec->ExecuteUntilCompleteOrSuspended(log);
    }
    [[nodiscard]] std::string Result() const { return Declaration(exec->GetResultValue()); }
    [[nodiscard]] std::vector<unsigned int> Ids() const { return MessageIds(log); }
    [[nodiscard]] std::string MessageText() const {
        return log.GetEntries().empty() ? std::string() : log.GetEntries().front().text;
    }
    [[nodiscard]] Bytes Global() const {
        return Bytes(globalData.GetVMData(), globalData.GetVMData() + globalData.GetDataSize());
    }

    CClientAccessContext access{"client"};
    CVirtualMachine image;
    CMemoryBlock globalData;
    OneTag tags;
    ScriptedFunctions functions;
    ScriptedBlocks blocks;
    CErrorLog log;
    long long timestamp = 1000;
    std::unique_ptr<CVirtualMachineExec> exec;
};

/// A program and how its run must end; the rows of most tests.
struct RunCase {
    const char* why;
    Bytes code;
    RunResult result;
    std::string value;                   ///< of the stack top at the end, as a declaration
    std::vector<unsigned int> messages;  ///< ids in order
    std::string text = {};               ///< of the first message, where the row cares
    Bytes global = {};                   ///< what the global data must begin with
};

inline void ExpectRuns(const std::vector<RunCase>& cases) {
    for (const RunCase& row : cases) {
        SCOPED_TRACE(row.why);
        Machine machine(row.code);
        machine.tags.data.AllocateNewData(8);
        EXPECT_EQ(machine.Run(), row.result);
        EXPECT_EQ(machine.Result(), row.value);
        EXPECT_EQ(machine.Ids(), row.messages);
        if (!row.text.empty()) {
            EXPECT_EQ(machine.MessageText(), row.text);
        }
        Bytes begin = machine.Global();
        begin.resize(row.global.size());
        EXPECT_EQ(begin, row.global);
    }
}

}  // namespace vmtest
