// Loads and stores through pointers into blocks take a short way. A tag over the same bytes takes the general one: both
// must do the same.
#include <random>

#include "vm/TestImage.h"

namespace {

using namespace vmtest;

constexpr unsigned int kSize = 16;

/// What a program leaves behind.
struct End {
    RunResult result;
    std::string value;
    std::vector<unsigned int> messages;
    Bytes memory;

    friend bool operator==(const End&, const End&) = default;
};

End RunOn(const Bytes& memory, const Bytes& code, bool isTag) {
    Machine machine(code, kSize);
    CMemoryBlock& block = isTag ? machine.tags.data : machine.globalData;
    block.CopyData(kSize, memory.data());
    // A run would stop at a damaged guard of global data only, so that is looked at with one instruction at a time.
    machine.exec->StartNewProgram(0, 1000, 0, &machine.timestamp);
    auto result = InstructionResult::Continue;
    while (result == InstructionResult::Continue)
        result = machine.exec->ExecuteInstruction(machine.log);
    return {static_cast<RunResult>(result), Declaration(machine.exec->GetStackTop()), machine.Ids(),
            Bytes(block.GetVMData(), block.GetVMData() + kSize + CMemoryBlock::kGuardSize)};
}

Bytes Address(bool isTag, unsigned int offset) {
    return isTag ? LdTagAddr(offset, 7) : LdAddr(kGlobal, offset);
}

TEST(PointerPaths, LoadsAgreeForEveryTypeAndSize) {
    std::mt19937 random(61131);
    for (unsigned int type = 0; type < 32; ++type) {
        for (unsigned int size = 0; size <= 9; ++size) {
            for (const unsigned int offset : {0U, 3U, kSize - size}) {
                SCOPED_TRACE(testing::Message() << "type " << type << " size " << size << " offset " << offset);
                Bytes memory(kSize);
                for (unsigned char& byte : memory)
                    byte = static_cast<unsigned char>(random());
                const auto code = [&](bool isTag) {
                    return Join({Address(isTag, offset), PtrLd(static_cast<unsigned char>(type), size), Ret()});
                };
                EXPECT_TRUE(RunOn(memory, code(false), false) == RunOn(memory, code(true), true));
            }
        }
    }
}

TEST(PointerPaths, StoresAgreeForEveryTypeAndSize) {
    const Bytes values[] = {LdBool(true),
                            Ld(kSInt, {0xFE}),
                            LdInt(-300),
                            LdDint(0x12345678),
                            Ld(kLInt, I64(0x123456789ABCDEF)),
                            Ld(kReal, LittleEndian(1.5F)),
                            Ld(kLReal, LittleEndian(-2.25)),
                            Ld(kTime, I64(1500)),
                            LdString("abc"),
                            LdAddr(kGlobal, 5),
                            Ld(kTypeType, {kDInt, 0, 0}),
                            Bytes()};
    for (const Bytes& value : values) {
        for (unsigned int type = 0; type < 32; ++type) {
            if (type == kComposite) continue;
            for (const unsigned int size : {0U, 1U, 2U, 4U, 8U, 9U}) {
                for (const unsigned int offset : {0U, 3U, kSize - size}) {
                    SCOPED_TRACE(testing::Message() << "type " << type << " size " << size << " offset " << offset);
                    const auto code = [&](bool isTag) {
                        return Join({value, Push(), Address(isTag, offset),
                                     PtrSt(static_cast<unsigned char>(type), size), Ret()});
                    };
                    const Bytes memory(kSize, 0xAA);
                    EXPECT_TRUE(RunOn(memory, code(false), false) == RunOn(memory, code(true), true));
                }
            }
        }
    }
}

TEST(PointerPaths, ABoolIsTrueForAnyByteButZero) {
    Machine machine(Join({LdAddr(kGlobal, 0), PtrLd(kBool, 1), Convert(kByte), Ret()}));
    machine.globalData.GetVMData()[0] = 0x80;
    EXPECT_EQ(machine.Run(), RunResult::Completed);
    EXPECT_EQ(machine.Result(), "BYTE#16#1");
}

}  // namespace
